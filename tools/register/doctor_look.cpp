#include <algorithm>
#include <chrono>
#include <ctime>
#include <fstream>

#include "doctor.h"
#include "doctor_system.h"

namespace reg {
namespace {

namespace fs = std::filesystem;

constexpr size_t kLongestPath = 259;
constexpr int kPatience = 30;  // seconds, at most, for each step of an exchange

std::string Now() {
  const std::time_t now = std::time(nullptr);
  char text[32] = "";
  if (const std::tm *parts = std::gmtime(&now)) std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", parts);
  return text;
}

bool IsOperation(const std::string &type) {
  constexpr const char *kTypes[] = {
      "ACTIVATION", "PAYMENT", "PAYMENT_AND_CONFIRM", "PAYMENT_CONFIRM", "DEPOSIT", "CASHBACK", "LINK",
      "EXCHANGE",   "BALANCE"};
  return std::find(std::begin(kTypes), std::end(kTypes), type) != std::end(kTypes);
}

Journal LookAtJournal(const fs::path &file) {
  Journal journal;
  std::vector<Record> records;
  try {
    records = ReadJournal(file);
  } catch (const std::exception &) {
    journal.isRead = false;
  }
  for (const Record &record : records) {
    ++journal.records;
    if (!record.readable || !IsOperation(record.type)) {
      ++journal.unreadable;
      continue;
    }
    if (record.rrn.empty()) ++journal.unnumbered;
    journal.last = record;
  }
  return journal;
}

// Makes a file, writes, renames and deletes it, and opens those that are there.
std::vector<std::string> TryRights(const fs::path &folder) {
  std::vector<std::string> problems;
  if ((folder / "OFFLINE_TMP").u16string().size() > kLongestPath) {
    problems.push_back("the folder's path is too long for the library: 259 characters with a file's name");
  }
  const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
  const fs::path probe = folder / ("register-doctor-" + std::to_string(ticks));
  fs::path renamed = probe;
  renamed += "-renamed";
  std::error_code error;
  {
    std::ofstream stream(probe, std::ios::binary);
    if (!stream.is_open()) {
      problems.push_back("no file can be made in " + folder.u8string());
    } else if (!(stream << "probe\n").flush()) {
      problems.push_back("nothing can be written in " + folder.u8string());
    }
  }
  if (fs::exists(probe, error)) {
    fs::rename(probe, renamed, error);
    if (error) problems.push_back("no file can be renamed in " + folder.u8string());
    error.clear();
    fs::remove(probe, error);
    if (!error) fs::remove(renamed, error);
    if (error) problems.push_back("no file can be deleted in " + folder.u8string());
  }
  for (const char *name : {"CONFIG.JSN", "CONFIG", "STATE", "LOG", "OFFLINE", "OFFLINE_TMP", "TRACE.TXT"}) {
    if (!fs::exists(folder / name, error)) continue;
    std::fstream stream;
    OpenPatiently(stream, folder / name, std::ios::binary | std::ios::in | std::ios::out);
    if (!stream.is_open()) {
      problems.push_back(std::string(name) + " cannot be opened for reading and writing");
    }
  }
  return problems;
}

}  // namespace

Terminal LookAt(const fs::path &library_file) {
  Terminal terminal;
  const fs::path file = fs::absolute(library_file);
  terminal.folder = file.parent_path();
  terminal.settings = ReadTerminalSettings(terminal.folder);
  terminal.log = LookAtJournal(terminal.folder / "LOG");
  terminal.offline = LookAtJournal(QueueFile(terminal.folder));
  terminal.now = Now();  // behind no record, though a register may sell meanwhile
  std::error_code error;
  for (const char *name : {"LOG.old", "LOG.new", "STATE.new", "OFFLINE_TMP"}) {
    if (fs::exists(terminal.folder / name, error)) terminal.leftovers.push_back(name);
  }
  terminal.holders = FindHolders(
      file, {"CONFIG.JSN", "CONFIG", "STATE", "LOG", "OFFLINE", "OFFLINE_TMP", "LOG.old", "LOG.new"});
  const fs::space_info space = fs::space(terminal.folder, error);
  if (!error) terminal.freeBytes = space.available;
  for (const auto &entry : fs::directory_iterator(terminal.folder, error)) {
    if (const std::string name = entry.path().filename().u8string(); name.compare(0, 5, "TRACE") == 0) {
      terminal.traceBytes =
          std::max(terminal.traceBytes, entry.is_regular_file(error) ? entry.file_size(error) : 0);
    }
  }
  terminal.rights = TryRights(terminal.folder);
  terminal.libraryProblem = TryLibrary(file, &terminal.libraryVersion);
  const int timeout = terminal.settings.Number("timeout");
  for (const char *key : {"serverAddr", "serverAltAddr"}) {
    if (const auto address = ParseServerAddress(terminal.settings.Text(key))) {
      terminal.servers.push_back(AskServer(*address, terminal.settings, terminal.now,
                                           timeout > 0 ? std::min(timeout, kPatience) : kPatience / 3));
    }
  }
  // The last of all: a register that sells puts a number there before anybody else learns of it.
  terminal.state = ReadState(terminal.folder / "STATE");
  terminal.stateIsWhole =
      !terminal.state.present || !StopsLibrary(TryToRead(terminal.folder / "STATE").value_or(""));
  return terminal;
}

}  // namespace reg
