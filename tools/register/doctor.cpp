#include "doctor.h"

#include <algorithm>
#include <cstdlib>

#include "lumo.h"

namespace reg {
namespace {

constexpr uintmax_t kMegabyte = uintmax_t{1} << 20;
constexpr size_t kTerminalColumns = 5;  // of a number
constexpr size_t kNumberBytes = 16;
constexpr char kEarliest[] = "2025-01-01";  // a clock that says less was never set
constexpr char kLatest[] = "2100-01-01";
constexpr int64_t kClocksApart = 300;  // seconds
constexpr char kGiveRights[] =
    "give the register's user the right to read it; where it is a folder, move that away";

std::string Count(size_t count, const char *what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// "121205" of "2012-12-05T10:00:00Z"
std::string ShortDay(const std::string &time) {
  return time.size() < 10 ? "" : time.substr(2, 2) + time.substr(5, 2) + time.substr(8, 2);
}

bool IsNumber(const std::string &rrn) {
  return rrn.size() == kNumberBytes && std::all_of(rrn.begin() + kTerminalColumns, rrn.end(),
                                                   [](char byte) { return byte >= '0' && byte <= '9'; });
}

// Seconds since the year 0, or -1 for what is no time.
int64_t Seconds(const std::string &time) {
  if (time.size() < 20 || time[4] != '-' || time[10] != 'T' || time[13] != ':') return -1;
  const auto part = [&time](size_t at, size_t count) {
    return int64_t{std::atoi(time.substr(at, count).c_str())};
  };
  int64_t year = part(0, 4);
  const int64_t month = (part(5, 2) + 9) % 12;  // March is 0, so that February is the last
  if (month >= 10) --year;
  const int64_t days = 365 * year + year / 4 - year / 100 + year / 400 + (month * 306 + 5) / 10 + part(8, 2);
  return ((days * 24 + part(11, 2)) * 60 + part(14, 2)) * 60 + part(17, 2);
}

void JudgeLibrary(const Terminal &terminal, Findings &findings) {
  const std::string ours = std::to_string(LUMO_VERSION_MAJOR) + "." + std::to_string(LUMO_VERSION_MINOR) +
                           "." + std::to_string(LUMO_VERSION_PATCH);
  if (!terminal.libraryProblem.empty()) {
    findings.Trouble("library", terminal.libraryProblem,
                     "put the library file of this system's package into the folder");
  } else if (terminal.libraryVersion.empty()) {
    findings.Ok("library", "loads; its version cannot be asked without a trace of it");
  } else if (terminal.libraryVersion != ours) {
    findings.Warn("library", "it is of version " + terminal.libraryVersion + ", this register of " + ours,
                  "take both out of one package");
  } else {
    findings.Ok("library", "loads, version " + ours);
  }
}

void JudgeAddress(const TerminalSettings &settings, const char *key, Findings &findings) {
  const std::string address = settings.Text(key);
  if (!address.empty() && !ParseServerAddress(address)) {
    findings.Trouble("settings", std::string(key) + " cannot be used: " + address,
                     "http://a.b.c.d:port/path: the address dotted, with its port and the path's /");
  }
}

void JudgeOfflineRates(const TerminalSettings &settings, Findings &findings) {
  const int local = settings.Number("localBonusOffline");
  const int global = settings.Number("globalBonusOffline");
  if (settings.Number("offlineMode") != 1) return;
  if (int64_t{settings.Number("orgFeeOffline")} > int64_t{local} + global) {
    findings.Trouble("settings",
                     "orgFeeOffline is above localBonusOffline and globalBonusOffline together: every "
                     "offline sale is refused, -104",
                     "correct the three rates");
  } else if (local == 0 && global == 0) {
    findings.Warn("settings", "localBonusOffline and globalBonusOffline are 0: an offline sale earns nothing",
                  "set the rates");
  }
}

void JudgeSlipTexts(const TerminalSettings &settings, Findings &findings) {
  for (const char *key : {"terminalId", "retailNetworkName", "receiptHeader", "receiptFooter"}) {
    const size_t length = settings.Text(key).size();
    if (length < kSlipTextLimit) continue;
    findings.Trouble("settings",
                     std::string(key) + " has " + std::to_string(length) +
                         " bytes: the library ends the process when it prints a slip",
                     "keep it below " + std::to_string(kSlipTextLimit) + " bytes");
  }
}

void JudgeSettings(const Terminal &terminal, Findings &findings) {
  const TerminalSettings &settings = terminal.settings;
  if (settings.file.empty()) {
    const bool any = settings.isDelivered || settings.isKept;
    // It may be good, so it is not to be thrown away.
    if (any && !settings.unopened.empty()) {
      findings.Trouble("settings", settings.unopened + " cannot be opened: LUMOInit returns -111",
                       kGiveRights);
      return;
    }
    findings.Trouble(
        "settings",
        any ? "no settings can be read: LUMOInit returns -111"
            : "there is no CONFIG.JSN and no CONFIG: LUMOInit returns -111",
        any ? "repair or remove it, then register configure --server ... --terminal ..."
            : "register configure --server ... --terminal ..., or put a good CONFIG.JSN into the "
              "folder");
    return;
  }
  const size_t before = findings.list().size();
  if (settings.isDelivered && settings.file == "CONFIG") {
    findings.Warn("settings", "CONFIG.JSN cannot be read; CONFIG is in force",
                  settings.unopened == "CONFIG.JSN" ? kGiveRights : "correct CONFIG.JSN, or remove it");
  }
  if (settings.file == "CONFIG.JSN" && settings.isKept) {
    findings.Warn("settings", "CONFIG.JSN is read at every start, since it never replaces a CONFIG",
                  "remove CONFIG, and the next start puts CONFIG.JSN in its place");
  }
  const std::string id = settings.Text("terminalId");
  const auto is_plain = [](char byte) {
    return (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
  };
  if (id.empty()) {
    findings.Trouble("settings",
                     "there is no terminalId: numbers begin with 00000 and no server knows the terminal",
                     "set terminalId");
  } else if (!std::all_of(id.begin(),
                          id.begin() + static_cast<std::ptrdiff_t>(std::min(id.size(), kTerminalColumns)),
                          is_plain)) {
    findings.Trouble("settings",
                     "terminalId begins with other characters than digits and Latin letters: " + id,
                     "correct terminalId");
  }
  if (settings.Text("protocolVersion").empty()) {
    findings.Trouble("settings", "there is no protocolVersion: the server refuses everything",
                     "set protocolVersion");
  }
  if (settings.Text("serverAddr").empty() && settings.Text("serverAltAddr").empty()) {
    findings.Trouble("settings", "there is no serverAddr: the server is always away", "set serverAddr");
  }
  JudgeAddress(settings, "serverAddr", findings);
  JudgeAddress(settings, "serverAltAddr", findings);
  if (settings.Number("timeout") <= 0) {
    findings.Trouble("settings", "there is no timeout: the register hangs when an answer does not come",
                     "set timeout, in seconds");
  }
  if (settings.Number("logSize") < 3) {
    findings.Warn(
        "settings",
        "there is no logSize of 3 or more: LOG grows without bound, and every operation becomes slower",
        "set logSize, 3000 say");
  }
  JudgeSlipTexts(settings, findings);
  JudgeOfflineRates(settings, findings);
  for (const std::string &key : settings.truths) {
    findings.Warn("settings", key + " is true or false, which reads as 0", "1 or 0");
  }
  for (const std::string &key : settings.unknown) {
    findings.Warn("settings", "no setting is named " + key, "correct its name, or remove it");
  }
  if (settings.hasForeignBytes) {
    findings.Warn("settings", "there are bytes that are no UTF-8", "save " + settings.file + " as UTF-8");
  }
  if (findings.list().size() == before) findings.Ok("settings", settings.file + " is good");
}

const char *RefusalCure(const std::string &code) {
  struct Row {
    const char *code;
    const char *cure;
  };
  constexpr Row kRows[] = {
      {"UNKNOWN_TERMINAL", "correct terminalId, or have the server register the terminal"},
      {"LOCKED_TERMINAL", "ask whoever locked it"},
      {"UNSUPPORTED_PROTOCOL_VERSION", "correct protocolVersion"},
      {"UPDATE_REQUIRED", "bring the register's software up to date"},
      {"INTERNAL_ERROR", "look into the server's log"},
      {"INCORRECT_REQUEST", "correct the path of the address: another server, or another path, answers"},
  };
  for (const Row &row : kRows) {
    if (code == row.code) return row.cure;
  }
  return "see the state codes in docs/terminal.md";
}

void JudgeServers(const Terminal &terminal, Findings &findings) {
  const bool any = std::any_of(terminal.servers.begin(), terminal.servers.end(),
                               [](const ServerAnswer &answer) { return answer.code == 0; });
  auto next = terminal.servers.begin();
  for (const char *key : {"serverAddr", "serverAltAddr"}) {
    const auto address = ParseServerAddress(terminal.settings.Text(key));
    if (!address || next == terminal.servers.end()) continue;
    const ServerAnswer &answer = *next++;
    const std::string name =
        std::string(key) + ", " + address->host + ":" + std::to_string(address->port) + address->path;
    if (answer.code == 0) {
      findings.Ok("server", name + ", answers after " + std::to_string(answer.milliseconds) + " ms");
      const int64_t its_time = Seconds(answer.date);
      if (its_time >= 0 && std::abs(its_time - Seconds(terminal.now)) > kClocksApart) {
        findings.Warn("clock", "the server's says " + answer.date + ", this one " + terminal.now,
                      "set the clock that is wrong, in UTC");
      }
      continue;
    }
    const bool away = answer.code == -501;
    std::string text = name + ": " + answer.problem;
    const char *cure =
        answer.code == -405 ? RefusalCure(answer.stateCode)
        : away              ? "look at address, cable, firewall and server"
               : "look at the server; a web server or proxy in between cannot speak this protocol";
    // The alternate server is tried only when there is no connection to the first.
    if (any && (away || next - terminal.servers.begin() == 2)) {
      findings.Warn("server", text, cure);
      continue;
    }
    if (away) {
      text += terminal.settings.Number("offlineMode") == 1 ? ". Sales are completed offline"
                                                           : ". No sale without it: offlineMode is off";
    }
    findings.Trouble("server", text, cure);
  }
}

// Where the numbers stand: the later of the journals' last ones.
std::string LastRecorded(const Terminal &terminal) {
  const std::string &log = terminal.log.last.rrn;
  const std::string &offline = terminal.offline.last.rrn;
  if (!IsNumber(log) || !IsNumber(offline)) return IsNumber(log) ? log : IsNumber(offline) ? offline : "";
  return std::max(log, offline);
}

void JudgeState(const Terminal &terminal, Findings &findings) {
  const ShiftState &state = terminal.state;
  if (!state.opened) {
    findings.Trouble("state", "STATE cannot be opened: LUMOInit returns -108", kGiveRights);
    return;
  }
  if (state.present && !state.readable) {
    findings.Trouble(
        "state",
        terminal.stateIsWhole ? "STATE is damaged: the shift counts as closed, and the last number is lost"
                              : "STATE is empty or cut short: LUMOInit returns -108",
        "remove STATE while no register runs; the next operation asks the server for the last number");
    return;
  }
  if (terminal.settings.Number("shiftMode") > 0 && state.shiftState == 0) {
    findings.Warn("shift", "none is open, and shiftMode wants one", "register shift open");
  } else {
    findings.Ok("shift", state.shiftState == 0 ? "none is open" : "open since " + state.openDate);
  }
  if (state.update != 0) {
    findings.Warn("update", "the server announced one", "bring the register's software up to date");
  }
}

void JudgeNumbers(const Terminal &terminal, Findings &findings) {
  if (terminal.state.present && !terminal.state.readable) return;
  const std::string &number = terminal.state.requestId;
  const bool answered = std::any_of(terminal.servers.begin(), terminal.servers.end(),
                                    [](const ServerAnswer &answer) { return answer.code == 0; });
  if (number.empty()) {
    const std::string text =
        "there is none: a sale without the server would have no number, and its record be refused for ever";
    if (answered) {
      findings.Warn("number", text,
                    "register balance, or any operation that reaches the server, before the first sale");
    } else {
      findings.Trouble("number", text,
                       "reach the server once; or see docs/terminal.md, Before the server ever answered");
    }
    return;
  }
  if (!IsNumber(number)) {
    findings.Trouble("number", "reqId of STATE is none: " + number,
                     "remove reqId from STATE while no register runs");
    return;
  }
  const size_t before = findings.list().size();
  if (const std::string day = number.substr(kTerminalColumns, 6); day > ShortDay(terminal.now)) {
    findings.Trouble("clock",
                     "it says " + terminal.now + ", and the last number is of a later day: " + number +
                         ". No operation gets a number",
                     "set the clock; or, when it is right, see docs/terminal.md, A clock that is behind");
  }
  const std::string id = terminal.settings.Text("terminalId").substr(0, kTerminalColumns);
  const std::string padded = std::string(kTerminalColumns - id.size(), '0') + id;
  if (!id.empty() && number.compare(0, kTerminalColumns, padded) != 0) {
    findings.Warn("number", "the last one, " + number + ", is another terminal's: this one is " + padded,
                  "never copy a STATE from another terminal: remove it while no register runs");
    return;
  }
  const auto is_later = [&](const std::string &other) {
    return IsNumber(other) && other.compare(0, kTerminalColumns, padded) == 0 && other > number;
  };
  if (const std::string recorded = LastRecorded(terminal); is_later(recorded)) {
    findings.Trouble(
        "number",
        "the last record has " + recorded + ", STATE only " + number + ": numbers are used a second time",
        "put " + recorded + " into STATE as reqId while no register runs");
  }
  for (const ServerAnswer &answer : terminal.servers) {
    if (is_later(answer.lastNumber)) {
      findings.Trouble(
          "number",
          "the server knows " + answer.lastNumber + ", STATE only " + number +
              ": numbers are used a second time",
          "is another register in use with this terminalId? Otherwise put the server's into STATE as reqId");
    }
  }
  if (findings.list().size() == before) findings.Ok("number", "the last one is " + number);
}

void JudgeClock(const Terminal &terminal, Findings &findings) {
  const std::string day = terminal.now.substr(0, 10);
  const std::string last = std::max(terminal.log.last.date, terminal.offline.last.date);
  if (day < kEarliest || day >= kLatest) {
    findings.Trouble("clock", "it says " + terminal.now, "set the clock, in UTC");
  } else if (last.size() == terminal.now.size() && last > terminal.now) {
    findings.Warn("clock", "it says " + terminal.now + ", and the last record is of " + last,
                  "set the clock, in UTC");
  } else {
    findings.Ok("clock", terminal.now);
  }
}

void JudgeQueue(const Terminal &terminal, Findings &findings) {
  const Journal &queue = terminal.offline;
  if (queue.unreadable > 0) {
    findings.Warn(
        "queue", Count(queue.unreadable, "line") + " of OFFLINE no replay can send",
        "register queue list shows them, register queue drop takes them out while no other register runs");
  }
  if (queue.unnumbered > 0) {
    findings.Warn(
        "queue",
        Count(queue.unnumbered, "record") + " of OFFLINE without a number, which the server refuses for ever",
        "take them out while no register runs");
  }
  if (const size_t waiting = queue.records - queue.unreadable - queue.unnumbered; waiting > 0) {
    findings.Warn("queue", Count(waiting, "record") + " to be sent to the server", "register queue replay");
  }
  if (!queue.isRead) {
    findings.Trouble("queue", "what waits cannot be read", kGiveRights);
  } else if (queue.records == 0) {
    findings.Ok("queue", "nothing waits");
  }
  if (!terminal.log.isRead) findings.Trouble("log", "LOG cannot be read", kGiveRights);
  if (terminal.log.unreadable > 0) {
    findings.Warn("log", Count(terminal.log.unreadable, "line") + " of LOG that no report can read",
                  "nothing: they go with the oldest third");
  }
}

void JudgeFolder(const Terminal &terminal, Findings &findings) {
  constexpr char kAsk[] =
      "give the register's user the right to read, write, create, rename and delete there";
  for (const std::string &right : terminal.rights) findings.Trouble("folder", right, kAsk);
  if (terminal.rights.empty()) findings.Ok("folder", "files can be made, written, renamed and deleted");
  const std::string free = std::to_string(terminal.freeBytes.value_or(0) / kMegabyte) + " MB are free";
  if (!terminal.freeBytes) {
    findings.Warn("disk", "how much is free cannot be told", "look at the folder and its disk");
  } else if (*terminal.freeBytes < kMegabyte) {
    findings.Trouble("disk", "it is full: records and state cannot be kept", "make room");
  } else if (*terminal.freeBytes < 50 * kMegabyte) {
    findings.Warn("disk", free, "make room: an hour of a hundred sales takes half a megabyte of trace");
  } else {
    findings.Ok("disk", free);
  }
  if (terminal.traceBytes > 100 * kMegabyte) {
    findings.Warn("trace", std::to_string(terminal.traceBytes / kMegabyte) + " MB",
                  "remove it, or move it out of the folder, also while the register runs");
  }
  for (const std::string &name : terminal.leftovers) {
    findings.Warn("leftovers", name + " is there: a process ended in the middle of something",
                  name == "STATE.new" ? "nothing: it is written over when STATE is made"
                                      : "nothing: the next LUMOInit finishes it. Do not remove it");
  }
  for (const Holder &holder : terminal.holders) {
    const std::string program = holder.program.empty() ? "another program" : holder.program;
    if (holder.excludes) {
      findings.Trouble("holders",
                       program + " holds " + holder.file + ", which the library cannot open meanwhile",
                       "end that program, or let it go on elsewhere");
    } else {
      findings.Warn("holders", program + " uses " + holder.file,
                    "one process at a time in this folder: end that one before another register sells here");
    }
  }
}

}  // namespace

const char *LevelName(Level level) {
  return level == Level::kOk ? "ok" : level == Level::kWarning ? "warning" : "trouble";
}

size_t Findings::Count(Level level) const {
  return static_cast<size_t>(std::count_if(
      list_.begin(), list_.end(), [level](const Finding &finding) { return finding.level == level; }));
}

Findings Judge(const Terminal &terminal) {
  Findings findings;
  JudgeLibrary(terminal, findings);
  JudgeSettings(terminal, findings);
  JudgeServers(terminal, findings);
  JudgeClock(terminal, findings);
  JudgeState(terminal, findings);
  JudgeNumbers(terminal, findings);
  JudgeQueue(terminal, findings);
  JudgeFolder(terminal, findings);
  return findings;
}

}  // namespace reg
