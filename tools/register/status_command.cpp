#include <CLI/CLI.hpp>
#include <iostream>
#include <optional>

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

// From the files alone: a look changes nothing, not even the trace.
void ShowStatus(Till &till) {
  const std::filesystem::path folder = till.Folder();
  const TerminalSettings settings = ReadTerminalSettings(folder);
  const ShiftState state = ReadState(folder / "STATE");
  const ServerView server = Look(settings, "serverAddr"), alternate = Look(settings, "serverAltAddr");
  const size_t log = CountRecords(folder / "LOG"), waiting = CountRecords(QueueFile(folder));
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
      .Add("log", uint64_t{log})
      .Add("waiting", uint64_t{waiting})
      .Add("updateAnnounced", state.update != 0);
  till.Show(facts, [&] {
    std::cout << "  folder      " << folder.u8string() << '\n'
              << "  settings    " << (settings.file.empty() ? "NONE that can be read" : settings.file) << '\n'
              << "  terminal    " << OrDash(settings.Text("terminalId")) << '\n'
              << "  server      " << server.Text() << '\n'
              << "  alternate   " << alternate.Text() << '\n'
              << "  shift       "
              << (state.present && !state.readable ? "STATE CANNOT BE READ" : ShiftText(state)) << '\n'
              << "  last RRN    " << OrDash(state.requestId) << '\n'
              << "  mode        " << (state.offline != 0 ? "OFFLINE" : "online") << '\n'
              << "  log         " << log << " records\n"
              << "  waiting     " << waiting << " offline records\n"
              << "  update      " << (state.update != 0 ? "announced by the server" : "none announced")
              << '\n';
  });
  std::string unreadable;
  if (settings.file.empty()) {
    unreadable = settings.isDelivered || settings.isKept ? "the settings cannot be read"
                                                         : "there is no CONFIG.JSN and no CONFIG";
  }
  if (state.present && !state.readable) {
    unreadable += unreadable.empty() ? "STATE cannot be read" : "; STATE cannot be read";
  }
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
