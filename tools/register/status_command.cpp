#include <CLI/CLI.hpp>
#include <initializer_list>
#include <iostream>
#include <optional>
#include <utility>

#include "commands.h"
#include "connection.h"
#include "shop_files.h"
#include "terminal_settings.h"

namespace reg {
namespace {

// How a server looks from here.
struct ServerView {
  std::string address;
  bool isUsable = false;
  bool answers = false;

  std::string Text() const {
    if (address.empty()) return "none";
    if (!isUsable) return address + "  NOT USABLE";
    return address + (answers ? "  answers" : "  DOES NOT ANSWER");
  }
  Facts AsFacts() const {
    return Facts().Add("address", address).Add("usable", isUsable).Add("answers", answers);
  }
};

ServerView Look(const TerminalSettings &settings, const char *key) {
  ServerView view;
  view.address = settings.Text(key);
  if (const auto address = ParseServerAddress(view.address)) {
    view.isUsable = true;
    view.answers = Connects(address->host, address->port);
  }
  return view;
}

std::string ShiftText(const ShiftState &state) {
  if (state.shiftState != 0) {
    return "open since " + std::string(OrDash(state.openDate)) + ", id " + OrDash(state.shiftId);
  }
  return state.closeDate.empty() ? "closed" : "closed at " + state.closeDate;
}

// None when the journal cannot be read.
std::optional<uint64_t> Count(const std::filesystem::path &journal) {
  try {
    return CountRecords(journal);
  } catch (const Failure &) {
    return std::nullopt;
  }
}

std::string CountText(const std::optional<uint64_t> &count, const char *what) {
  return count ? std::to_string(*count) + what : "CANNOT BE READ";
}

void AddCount(Facts &facts, const char *name, const std::optional<uint64_t> &count) {
  if (count) {
    facts.Add(name, *count);
  } else {
    facts.Add(name, nullptr);
  }
}

// What cannot be read, in words; nothing when all can be.
std::string Unreadable(const TerminalSettings &settings,
                       std::initializer_list<std::pair<const char *, bool>> files) {
  std::string text;
  if (settings.file.empty()) {
    text = settings.isDelivered || settings.isKept ? "the settings cannot be read"
                                                   : "there is no CONFIG.JSN and no CONFIG";
  }
  for (const auto &[name, is_read] : files) {
    if (!is_read) text += (text.empty() ? "" : "; ") + std::string(name) + " cannot be read";
  }
  return text;
}

// From the files alone: a look changes nothing, not even the trace.
void ShowStatus(Till &till) {
  const std::filesystem::path folder = till.Folder();
  if (!std::filesystem::is_directory(folder)) {
    throw Failure(kNoFile, "there is no folder " + folder.u8string());
  }
  const TerminalSettings settings = ReadTerminalSettings(folder);
  const ShiftState state = ReadState(folder / "STATE");
  const ServerView server = Look(settings, "serverAddr"), alternate = Look(settings, "serverAltAddr");
  const std::optional<uint64_t> log = Count(folder / "LOG"), waiting = Count(QueueFile(folder));
  const bool is_state_read = !state.present || state.readable;
  const std::string unreadable = Unreadable(
      settings, {{"STATE", is_state_read}, {"LOG", log.has_value()}, {"OFFLINE", waiting.has_value()}});
  Facts facts;
  facts.Add("folder", folder.u8string())
      .Add("settings", settings.file.empty() ? nullptr : settings.file.c_str())
      .Add("terminal", settings.Text("terminalId"))
      .Add("server", server.AsFacts())
      .Add("alternate", alternate.AsFacts())
      .Add("shift", Facts()
                        .Add("open", state.shiftState != 0)
                        .Add("id", state.shiftId)
                        .Add("opened", state.openDate)
                        .Add("closed", state.closeDate))
      .Add("lastRrn", state.requestId)
      .Add("offline", state.offline != 0)
      .Add("updateAnnounced", state.update != 0);
  AddCount(facts, "log", log);
  AddCount(facts, "waiting", waiting);
  if (!unreadable.empty()) facts.Add("error", unreadable);
  till.Show(facts, [&] {
    std::cout << "  folder      " << folder.u8string() << '\n'
              << "  settings    " << (settings.file.empty() ? "NONE that can be read" : settings.file) << '\n'
              << "  terminal    " << OrDash(settings.Text("terminalId")) << '\n'
              << "  server      " << server.Text() << '\n'
              << "  alternate   " << alternate.Text() << '\n'
              << "  shift       " << (is_state_read ? ShiftText(state) : "STATE CANNOT BE READ") << '\n'
              << "  last RRN    " << OrDash(state.requestId) << '\n'
              << "  mode        " << (state.offline != 0 ? "OFFLINE" : "online") << '\n'
              << "  log         " << CountText(log, " records") << '\n'
              << "  waiting     " << CountText(waiting, " offline records") << '\n'
              << "  update      " << (state.update != 0 ? "announced by the server" : "none announced")
              << '\n';
  });
  if (unreadable.empty()) return;
  std::cerr << "register: " << unreadable << '\n';
  till.status = kNoFile;
}

}  // namespace

void AddStatusCommand(CLI::App &app, Till &till) {
  app.add_subcommand("status", "Settings, servers, shift and journals at a glance; writes nothing")
      ->callback([&till] { ShowStatus(till); });
}

}  // namespace reg
