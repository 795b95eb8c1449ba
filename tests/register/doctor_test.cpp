// register/doctor_test.cpp: every finding of a doctor, without the terminal.
#include "doctor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using reg::Level;
using reg::Terminal;

constexpr uintmax_t kMegabyte = uintmax_t{1} << 20;

// A terminal that has sold today and lacks nothing.
Terminal Healthy() {
  Terminal terminal;
  terminal.now = "2026-03-01T10:00:00Z";
  terminal.settings.file = "CONFIG";
  terminal.settings.isKept = true;
  terminal.settings.values = {{"terminalId", "12345"},
                              {"protocolVersion", "1.0"},
                              {"serverAddr", "http://10.0.0.5:8080/ws"},
                              {"serverAltAddr", "http://10.0.0.6:8080/ws"},
                              {"timeout", "30"},
                              {"offlineMode", "1"},
                              {"localBonusOffline", "3"},
                              {"logSize", "3000"}};
  terminal.state.present = terminal.state.readable = true;
  terminal.state.requestId = "1234526030100007";
  terminal.log.records = 7;
  terminal.log.last.readable = true;
  terminal.log.last.rrn = "1234526030100007";
  terminal.log.last.date = "2026-03-01T09:59:00Z";
  terminal.freeBytes = 1000 * kMegabyte;
  terminal.libraryVersion = "1.1.0";
  reg::ServerAnswer answer;
  answer.lastNumber = "1234526030100007";
  answer.date = "2026-03-01T10:00:10Z";
  terminal.servers = {answer, answer};
  return terminal;
}

void Set(Terminal &terminal, const std::string &key, const std::string &value) {
  for (auto &setting : terminal.settings.values) {
    if (setting.first != key) continue;
    setting.second = value;
    return;
  }
  terminal.settings.values.emplace_back(key, value);
}

void Fail(reg::ServerAnswer &answer, int code, const std::string &problem) {
  answer = reg::ServerAnswer();
  answer.code = code;
  answer.problem = problem;
}

// What is wrong, a line each: "warning queue: text | cure".
std::string Wrong(const Terminal &terminal) {
  std::string text;
  const reg::Findings findings = reg::Judge(terminal);
  for (const reg::Finding &finding : findings.list()) {
    EXPECT_EQ(finding.level == Level::kOk, finding.cure.empty()) << finding.text;
    if (finding.level != Level::kOk) {
      text += std::string(reg::LevelName(finding.level)) + " " + finding.check + ": " + finding.text + " | " +
              finding.cure + "\n";
    }
  }
  return text;
}

TEST(DoctorJudges, FindsNothingWrongWithAHealthyTerminal) {
  EXPECT_EQ(Wrong(Healthy()), "");
  EXPECT_TRUE(reg::Judge(Healthy()).IsFit());
}

struct FindingCase {
  const char *name;
  std::function<void(Terminal &)> spoil;
  const char *line;  // how the only finding begins
};

TEST(DoctorJudges, NamesWhatIsWrong) {
  const FindingCase cases[] = {
      {"LibraryMissing", [](Terminal &t) { t.libraryProblem = "there is no liblumo.so"; },
       "trouble library: there is no liblumo.so | put the library file"},
      {"LibraryOlder", [](Terminal &t) { t.libraryVersion = "1.0.0"; },
       "warning library: it is of version 1.0.0, this register of 1.1.0 | take both"},
      {"NoSettings",
       [](Terminal &t) {
         t.settings = reg::TerminalSettings();
         t.servers.clear();
       },
       "trouble settings: there is no CONFIG.JSN and no CONFIG: LUMOInit returns -111 | register configure "
       "--server ... --terminal ..., or put"},
      {"BadSettings",
       [](Terminal &t) {
         t.settings = reg::TerminalSettings();
         t.settings.isKept = true;
         t.servers.clear();
       },
       "trouble settings: no settings can be read: LUMOInit returns -111 | repair or remove it, then "
       "register configure --server ... --terminal ..."},
      {"ClosedSettings",
       [](Terminal &t) {
         t.settings = reg::TerminalSettings();
         t.settings.isKept = true;
         t.settings.unopened = "CONFIG";
         t.servers.clear();
       },
       "trouble settings: CONFIG cannot be opened: LUMOInit returns -111 | give the register's user"},
      {"ClosedDelivery",
       [](Terminal &t) {
         t.settings.isDelivered = true;
         t.settings.unopened = "CONFIG.JSN";
       },
       "warning settings: CONFIG.JSN cannot be read; CONFIG is in force | give the register's user"},
      {"ClosedState",
       [](Terminal &t) {
         t.state = reg::ShiftState();
         t.state.present = true;
         t.state.opened = false;
         t.stateIsWhole = false;
       },
       "trouble state: STATE cannot be opened: LUMOInit returns -108 | give the register's user"},
      {"LongHeader", [](Terminal &t) { Set(t, "receiptHeader", std::string(2000, 'x')); },
       "trouble settings: receiptHeader has 2000 bytes: the library ends the process when it prints a slip | "
       "keep it below 1000"},
      {"LongFooter", [](Terminal &t) { Set(t, "receiptFooter", std::string(1000, 'x')); },
       "trouble settings: receiptFooter has 1000 bytes: "},
      {"LongNetwork", [](Terminal &t) { Set(t, "retailNetworkName", std::string(1000, 'x')); },
       "trouble settings: retailNetworkName has 1000 bytes: "},
      {"LongTerminal", [](Terminal &t) { Set(t, "terminalId", "12345" + std::string(995, 'x')); },
       "trouble settings: terminalId has 1000 bytes: "},
      {"BadDelivery", [](Terminal &t) { t.settings.isDelivered = true; },
       "warning settings: CONFIG.JSN cannot be read; CONFIG is in force | correct CONFIG.JSN"},
      {"DeliveryBesideConfig",
       [](Terminal &t) {
         t.settings.isDelivered = true;
         t.settings.file = "CONFIG.JSN";
       },
       "warning settings: CONFIG.JSN is read at every start, since it never replaces a CONFIG | remove "
       "CONFIG"},
      {"TerminalIdWithBlank",
       [](Terminal &t) {
         Set(t, "terminalId", "12 45");
         t.state.requestId = "12 4526030100007";
       },
       "trouble settings: terminalId begins with other characters than digits and Latin letters: 12 45 | "
       "correct"},
      {"NoProtocolVersion", [](Terminal &t) { Set(t, "protocolVersion", ""); },
       "trouble settings: there is no protocolVersion: the server refuses everything | set protocolVersion"},
      {"NoServer",
       [](Terminal &t) {
         Set(t, "serverAddr", "");
         Set(t, "serverAltAddr", "");
         t.servers.clear();
       },
       "trouble settings: there is no serverAddr: the server is always away | set serverAddr"},
      {"BadAddress",
       [](Terminal &t) {
         Set(t, "serverAltAddr", "https://10.0.0.6:80/ws");
         t.servers.pop_back();
       },
       "trouble settings: serverAltAddr cannot be used: https://10.0.0.6:80/ws | http://a.b.c.d:port/path"},
      {"NoTimeout", [](Terminal &t) { Set(t, "timeout", ""); },
       "trouble settings: there is no timeout: the register hangs when an answer does not come | set "
       "timeout"},
      {"NegativeTimeout", [](Terminal &t) { Set(t, "timeout", "-1"); },
       "trouble settings: there is no timeout"},
      {"NoLogSize", [](Terminal &t) { Set(t, "logSize", ""); },
       "warning settings: there is no logSize of 3 or more: LOG grows"},
      {"FeeAboveRates", [](Terminal &t) { Set(t, "orgFeeOffline", "4"); },
       "trouble settings: orgFeeOffline is above localBonusOffline and globalBonusOffline together: every "
       "offline sale is refused, -104"},
      {"NoRates", [](Terminal &t) { Set(t, "localBonusOffline", "0"); },
       "warning settings: localBonusOffline and globalBonusOffline are 0: an offline sale earns nothing"},
      {"Truth", [](Terminal &t) { t.settings.truths = {"shiftMode"}; },
       "warning settings: shiftMode is true or false, which reads as 0 | 1 or 0"},
      {"UnknownKey", [](Terminal &t) { t.settings.unknown = {"timeOut"}; },
       "warning settings: no setting is named timeOut | correct"},
      {"ForeignBytes", [](Terminal &t) { t.settings.hasForeignBytes = true; },
       "warning settings: there are bytes that are no UTF-8 | save CONFIG"},
      {"FirstServerAway", [](Terminal &t) { Fail(t.servers[0], -501, "no connection: refused"); },
       "warning server: serverAddr, 10.0.0.5:8080/ws: no connection: refused | look at address"},
      {"SecondServerAway", [](Terminal &t) { Fail(t.servers[1], -501, "no connection: refused"); },
       "warning server: serverAltAddr, 10.0.0.6:8080/ws: no connection: refused | look at address"},
      {"OnlyServerAway",
       [](Terminal &t) {
         Set(t, "serverAltAddr", "");
         t.servers.pop_back();
         Fail(t.servers[0], -501, "no connection");
       },
       "trouble server: serverAddr, 10.0.0.5:8080/ws: no connection. Sales are completed offline | look"},
      {"NoSaleWithoutServer",
       [](Terminal &t) {
         Set(t, "offlineMode", "0");
         Set(t, "serverAltAddr", "");
         t.servers.pop_back();
         Fail(t.servers[0], -501, "no connection");
       },
       "trouble server: serverAddr, 10.0.0.5:8080/ws: no connection. No sale without it: offlineMode is off "
       "| look"},
      {"FirstServerSilent", [](Terminal &t) { Fail(t.servers[0], -401, "no answer"); },
       "trouble server: serverAddr, 10.0.0.5:8080/ws: no answer | look at the server"},
      {"SecondServerSilent", [](Terminal &t) { Fail(t.servers[1], -401, "no answer"); },
       "warning server: serverAltAddr, 10.0.0.6:8080/ws: no answer | look at the server"},
      {"UnknownTerminal",
       [](Terminal &t) {
         Fail(t.servers[0], -405, "it refuses: ERROR UNKNOWN_TERMINAL");
         t.servers[0].stateCode = "UNKNOWN_TERMINAL";
       },
       "trouble server: serverAddr, 10.0.0.5:8080/ws: it refuses: ERROR UNKNOWN_TERMINAL | correct "
       "terminalId"},
      {"OtherRefusal",
       [](Terminal &t) {
         Fail(t.servers[0], -405, "it refuses: ERROR X");
         t.servers[0].stateCode = "X";
       },
       "trouble server: serverAddr, 10.0.0.5:8080/ws: it refuses: ERROR X | see the state codes"},
      {"ClocksApart", [](Terminal &t) { t.servers[1].date = "2026-03-01T10:05:01Z"; },
       "warning clock: the server's says 2026-03-01T10:05:01Z, this one 2026-03-01T10:00:00Z | set the "
       "clock"},
      {"ClockNeverSet",
       [](Terminal &t) {
         t.now = "2006-01-01T00:00:00Z";
         t.state.requestId = "1234506010100000";
         t.log = reg::Journal();
         t.servers = {reg::ServerAnswer(), reg::ServerAnswer()};
       },
       "trouble clock: it says 2006-01-01T00:00:00Z | set the clock"},
      {"ClockBehindLastRecord", [](Terminal &t) { t.log.last.date = "2026-03-01T10:00:01Z"; },
       "warning clock: it says 2026-03-01T10:00:00Z, and the last record is of 2026-03-01T10:00:01Z | set"},
      {"ClockBehindOfflineRecord", [](Terminal &t) { t.offline.last.date = "2026-03-01T10:00:01Z"; },
       "warning clock: it says 2026-03-01T10:00:00Z, and"},
      {"ClockBehindLastNumber", [](Terminal &t) { t.state.requestId = "1234526030200000"; },
       "trouble clock: it says 2026-03-01T10:00:00Z, and the last number is of a later day: "
       "1234526030200000. No operation gets a number | set"},
      {"StateCut", [](Terminal &t) { t.state.readable = t.stateIsWhole = false; },
       "trouble state: STATE is empty or cut short: LUMOInit returns -108 | remove STATE"},
      {"StateDamaged", [](Terminal &t) { t.state.readable = false; },
       "trouble state: STATE is damaged: the shift counts as closed, and the last number is lost | remove "
       "STATE"},
      {"NoShift", [](Terminal &t) { Set(t, "shiftMode", "1"); },
       "warning shift: none is open, and shiftMode wants one | register shift open"},
      {"Update", [](Terminal &t) { t.state.update = 1; }, "warning update: the server announced one | bring"},
      {"NoNumber", [](Terminal &t) { t.state.requestId = ""; },
       "warning number: there is none: a sale without the server"},
      {"NoNumberAtAll", [](Terminal &t) { t.state.requestId = "7"; },
       "trouble number: reqId of STATE is none: 7 | remove reqId"},
      {"AnothersNumber", [](Terminal &t) { t.state.requestId = "1234626030100007"; },
       "warning number: the last one, 1234626030100007, is another terminal's: this one is 12345 | never "
       "copy"},
      {"NumberBehindRecord", [](Terminal &t) { t.log.last.rrn = "1234526030100008"; },
       "trouble number: the last record has 1234526030100008, STATE only 1234526030100007: numbers are used "
       "a second time | put 1234526030100008"},
      {"NumberBehindOfflineRecord", [](Terminal &t) { t.offline.last.rrn = "1234526030100009"; },
       "trouble number: the last record has 1234526030100009, STATE only"},
      {"NumberBehindServer", [](Terminal &t) { t.servers[0].lastNumber = "1234526030100008"; },
       "trouble number: the server knows 1234526030100008, STATE only 1234526030100007: numbers are used a "
       "second time | is another"},
      {"Waiting", [](Terminal &t) { t.offline.records = 2; },
       "warning queue: 2 records to be sent to the server | register queue replay"},
      {"OneWaiting", [](Terminal &t) { t.offline.records = 1; }, "warning queue: 1 record to be sent"},
      {"Unnumbered", [](Terminal &t) { t.offline.records = t.offline.unnumbered = 1; },
       "warning queue: 1 record of OFFLINE without a number, which the server refuses for ever | take them "
       "out"},
      {"Unreadable", [](Terminal &t) { t.offline.records = t.offline.unreadable = 2; },
       "warning queue: 2 lines of OFFLINE no replay can send | register queue list"},
      {"UnreadableLog", [](Terminal &t) { t.log.unreadable = 1; },
       "warning log: 1 line of LOG that no report can read | nothing"},
      {"NoRights", [](Terminal &t) { t.rights = {"no file can be made in /x"}; },
       "trouble folder: no file can be made in /x | give"},
      {"DiskFull", [](Terminal &t) { t.freeBytes = kMegabyte - 1; },
       "trouble disk: it is full: records and state cannot be kept | make room"},
      {"DiskUnknown", [](Terminal &t) { t.freeBytes.reset(); },
       "warning disk: how much is free cannot be told | look at the folder"},
      {"DiskNearlyFull", [](Terminal &t) { t.freeBytes = 50 * kMegabyte - 1; },
       "warning disk: 49 MB are free | make room"},
      {"LargeTrace", [](Terminal &t) { t.traceBytes = 101 * kMegabyte; },
       "warning trace: 101 MB | remove it, or move it out of the folder"},
      {"Leftover", [](Terminal &t) { t.leftovers = {"LOG.old"}; },
       "warning leftovers: LOG.old is there: a process ended in the middle of something | nothing: the next "
       "LUMOInit finishes it"},
      {"LeftoverState", [](Terminal &t) { t.leftovers = {"STATE.new"}; },
       "warning leftovers: STATE.new is there: a process ended in the middle of something | nothing: it is "
       "written over"},
      {"Holder",
       [](Terminal &t) {
         t.holders = {{"till (7)", "liblumo.so", false}};
       },
       "warning holders: till (7) uses liblumo.so | one process at a time"},
      {"ExcludingHolder",
       [](Terminal &t) {
         t.holders = {{"", "STATE", true}};
       },
       "trouble holders: another program holds STATE, which the library cannot open meanwhile | end that "
       "program"},
  };
  for (const FindingCase &row : cases) {
    Terminal terminal = Healthy();
    row.spoil(terminal);
    const std::string wrong = Wrong(terminal);
    EXPECT_THAT(wrong, testing::HasSubstr(row.line)) << row.name;
    const bool is_trouble = std::string(row.line).compare(0, 7, "trouble") == 0;
    EXPECT_EQ(reg::Judge(terminal).IsFit(), !is_trouble && wrong.find("trouble") == std::string::npos)
        << row.name << "\n"
        << wrong;
    // Nothing else is wrong, but where one thing leads to another.
    const auto lines = std::count(wrong.begin(), wrong.end(), '\n');
    EXPECT_TRUE(lines == 1 || terminal.settings.file.empty()) << row.name << "\n" << wrong;
  }
}

TEST(DoctorJudges, TellsANumberApartFromAnOlderOne) {
  Terminal terminal = Healthy();
  terminal.state.requestId = "1234526030100009";
  terminal.servers[0].lastNumber = "";
  EXPECT_EQ(Wrong(terminal), "");
  // The journals may still hold what was done under another terminalId.
  terminal.log.last.rrn = "9999926030199999";
  EXPECT_EQ(Wrong(terminal), "");
}

TEST(DoctorJudges, WantsANumberMoreWhereNoServerAnswers) {
  Terminal terminal = Healthy();
  terminal.state.requestId = "";
  for (reg::ServerAnswer &answer : terminal.servers) Fail(answer, -501, "no connection");
  EXPECT_THAT(Wrong(terminal), testing::HasSubstr("trouble number: there is none"));
}

TEST(DoctorJudges, FillsAShortTerminalIdWithZeros) {
  Terminal terminal = Healthy();
  Set(terminal, "terminalId", "12");
  terminal.state.requestId = "0001226030100007";
  EXPECT_EQ(Wrong(terminal), "");
}

TEST(DoctorJudges, LeavesAClosedShiftToWhoWantsNone) {
  Terminal terminal = Healthy();
  EXPECT_EQ(Wrong(terminal), "");
  Set(terminal, "shiftMode", "1");
  terminal.state.shiftState = 1;
  EXPECT_EQ(Wrong(terminal), "");
}

}  // namespace
