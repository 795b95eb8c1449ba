// lumo_check/lumo_check_test.cpp: lumo_check.exe started in a folder of its own, and the report that it
// leaves there. In an expected line "#" is a number, and "*" at its end is anything.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "loyalty_server/server.h"
#include "lumo.h"
#include "support/fresh_folder.h"

#if defined(_WIN32)
#include <process.h>
#else
#include <sys/wait.h>
#include <unistd.h>

#include "wince/loader.h"
#endif

namespace {

namespace fs = std::filesystem;

#if defined(_WIN32)
class Starter {
 public:
  explicit Starter(fs::path program) : program_(std::move(program)) {}
  int Start() { return static_cast<int>(_wspawnl(_P_WAIT, program_.c_str(), program_.c_str(), nullptr)); }

 private:
  fs::path program_;
};
#else
// Starts the program from a process that is forked before the test's server has a thread: a lock that this
// thread holds at a fork stays taken in the child for ever.
class Starter {
 public:
  explicit Starter(const fs::path &program) {
    if (pipe(asked_) != 0 || pipe(told_) != 0) throw std::runtime_error("no pipe");
    process_ = fork();
    if (process_ == 0) {
      close(asked_[1]);
      Serve(program.string());
    }
    close(asked_[0]);
    close(told_[1]);
  }
  ~Starter() {
    close(asked_[1]);
    waitpid(process_, nullptr, 0);
    close(told_[0]);
  }
  Starter(const Starter &) = delete;
  Starter &operator=(const Starter &) = delete;

  // Gives the exit status, or the number of the signal that ended it below 0.
  int Start() {
    int status = 0;
    EXPECT_EQ(write(asked_[1], "", 1), 1);
    EXPECT_EQ(read(told_[0], &status, sizeof status), static_cast<ssize_t>(sizeof status));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  [[noreturn]] void Serve(const std::string &program) const {
    for (char byte; read(asked_[0], &byte, 1) == 1;) {
      const pid_t child = fork();
      if (child == 0) {
        try {
          _exit(wince::Run(program));
        } catch (const std::exception &error) {
          std::fprintf(stderr, "%s\n", error.what());
          _exit(99);
        }
      }
      int status = 0;
      waitpid(child, &status, 0);
      if (write(told_[1], &status, sizeof status) != sizeof status) _exit(1);
    }
    _exit(0);
  }

  int asked_[2];
  int told_[2];
  pid_t process_;
};
#endif

bool Matches(const char *line, const char *expected) {
  for (; *expected != 0; ++expected) {
    if (*expected == '*' && expected[1] == 0) return true;
    if (*expected == '#') {
      if (std::isdigit(static_cast<unsigned char>(*line)) == 0) return false;
      while (std::isdigit(static_cast<unsigned char>(*line)) != 0) ++line;
    } else if (*line++ != *expected) {
      return false;
    }
  }
  return *line == 0;
}

class LumoCheck : public testing::Test {
 protected:
  LumoCheck() {
    const fs::path library = fs::u8path(std::getenv("LUMO_LIBRARY_FILE"));
    for (const fs::path &file : {library, library.parent_path() / "lumo_check.exe"}) {
      fs::copy_file(file, folder_.path() / file.filename());
    }
  }

  void StartServer() {
    server_ = std::make_unique<loyalty::Server>(loyalty::Programme(loyalty::BuiltInShop()));
  }
  void GoAway() { server_->SetFault(loyalty::ParseFault("refuse")); }
  void ComeBack() { server_->SetFault(loyalty::Fault()); }

  void WriteConfig() {
    std::ofstream(Path("CONFIG.JSN"), std::ios::binary)
        << R"({"terminalId":"12345","protocolVersion":"1.0","serverAddr":"http://)" << server_->address()
        << R"(/ws","retailNetworkName":"Сеть","timeout":30,"offlineMode":1,"localBonusOffline":3,)"
        << R"("globalBonusOffline":2,"orgFeeOffline":1,"logSize":100,"receiptHeader":"Магазин",)"
        << R"("receiptFooter":"Спасибо"})";
  }

  fs::path Path(const char *name = "lumo_check.txt") const { return folder_.path() / name; }
  int Run() { return starter_.Start(); }

  // The report's lines, each without the milliseconds before it.
  std::vector<std::string> Report() const {
    std::ifstream stream(Path(), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    std::vector<std::string> lines;
    for (size_t at = 0, end; (end = text.find("\r\n", at)) != std::string::npos; at = end + 2) {
      std::string line = text.substr(at, end - at);
      if (line.size() > 11 && line.compare(6, 5, " ms  ") == 0) line.erase(0, 11);
      lines.push_back(line);
    }
    return lines;
  }

  // The report is these lines.
  void ExpectReport(const std::vector<std::string> &expected) const {
    const std::vector<std::string> lines = Report();
    for (size_t i = 0; i < lines.size() && i < expected.size(); ++i) {
      ASSERT_TRUE(Matches(lines[i].c_str(), expected[i].c_str())) << lines[i] << "\n  instead of\n"
                                                                  << expected[i];
    }
    EXPECT_EQ(lines.size(), expected.size());
  }

  test::FreshFolder folder_;
  Starter starter_{Path("lumo_check.exe")};
  std::unique_ptr<loyalty::Server> server_;
};

std::vector<std::string> Together(std::initializer_list<std::vector<std::string>> parts) {
  std::vector<std::string> all;
  for (const std::vector<std::string> &part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

const std::vector<std::string> kSystem = {
    "lumo_check 1.1.0 *",
    "#-#-#T#:#:#Z, # ms after the system's start",
    "system #.#, build #, platform *",
    "folder *",
    "ok      lumo.dll takes # functions from the system, of which 0 are missing",
    "ok      Sleep(200) takes # ms",
    "ok      UTF-8 as a code page: 3 units",
    "ok      sscanf of a date: 3 items, 12 12 5",
    "ok      sscanf of an RRN: 2 items, 121205 7",
    "ok      20 lines appended one by one: # bytes",
    "note    lines of text files end with *",
    "ok      written: 1000 of 1000 bytes",
    "ok      a file that is open is opened again: error 32",
    "ok      read back: 1000 bytes, 0 of them wrong",
    "ok      read at the end: 1, 0 bytes",
    "ok      a place before the beginning: error 131",
    "ok      cut off at 100 bytes: 100",
    "ok      attributes of a missing file: error 2",
    "ok      moved: 1",
    "ok      moved onto another file: error 183",
    "ok      deleted: 1",
    "note    20 times 1000 bytes, each written through to the disk",
    "ok      WSAStartup: 0, version 2.2",
    "ok      connected to where nobody is: error 10061",
};

const std::vector<std::string> kLibrary = {
    "ok      lumo.dll is loaded",
    "ok      lumo.dll is version 1.1.0",
    "ok      LUMOInit: 0",
    "note    terminal 12345, servers 127.0.0.1:# and :0",
};

// With the server. 2 and 3 per cent of 10.00, 100.00 and 1000.00 are earned.
const std::vector<std::string> kBalance = {
    "ok      BalanceProc: 0",
    "note    on the card: #",
    "ok      CloseTransaction: 0",
};
const std::vector<std::string> kSales = {
    "note    a bill of 1 goods, and a transaction",
    "ok      PaymentProc: 0, at the server, RRN #, earned 50, spent 0",
    "----",
    "Магазин",
    "#/#/#      #:#:#",
    "Терминал          12345",
    "     *** КАРТА ***",
    "    1000000001",
    "******* ПОКУПКА ********",
    "  Полагающиеся бонусы   ",
    "  будут перечислены в   ",
    "      Клуб Тавиро       ",
    "************************",
    "RRN: #",
    "Сумма (нал.):",
    "                   10.00",
    "************************",
    "Начислено всего:",
    "               0.20 бнс.",
    "Начислено всего",
    "Сеть:",
    "               0.50 бнс.",
    "Вознаграждение ",
    "организатора:",
    "               0.10 бнс.",
    "Спасибо",
    "----",
    "ok      PaymentConfirmProc: 0",
    "ok      CloseTransaction: 0",
    "note    a bill of 10 goods, and a transaction",
    "ok      PaymentProc: 0, at the server, RRN #, earned 500, spent 0",
    "ok      PaymentConfirmProc: 0",
    "ok      CloseTransaction: 0",
    "note    a bill of 100 goods, and a transaction",
    "ok      PaymentProc: 0, at the server, RRN #, earned 5000, spent 0",
    "ok      PaymentConfirmProc: 0",
    "ok      CloseTransaction: 0",
    "ok      a report of # bytes",
};
const std::vector<std::string> kSilence = {
    "ok      a time-out of 1000 ms is set: error 0",
    "note    waiting for an answer that never comes",
    "ok      given up: error 10060",
};

// Without it, by the rates of CONFIG.
const std::vector<std::string> kSalesAlone = {
    "FAILED  BalanceProc: -501 Ошибка соединения с сервером",
    "ok      CloseTransaction: 0",
    "note    a bill of 1 goods, and a transaction",
    "ok      PaymentProc: 0, without the server, RRN #, earned 50, spent 0",
    "----",
    "Магазин",
    "#/#/#      #:#:#",
    "Терминал          12345",
    "     *** КАРТА ***",
    "    1000000001",
    "******* ПОКУПКА ********",
    "  Полагающиеся бонусы   ",
    "  будут перечислены в   ",
    "      Клуб Тавиро       ",
    "************************",
    "        ОФФЛАЙН",
    "************************",
    "RRN: #",
    "Сумма (нал.):",
    "                   10.00",
    "************************",
    "Начислено всего:",
    "               0.20 бнс.",
    "Начислено всего",
    "Сеть:",
    "               0.50 бнс.",
    "Вознаграждение ",
    "организатора:",
    "               0.10 бнс.",
    "Спасибо",
    "----",
    "ok      PaymentConfirmProc: 0",
    "ok      CloseTransaction: 0",
    "note    a bill of 10 goods, and a transaction",
    "ok      PaymentProc: 0, without the server, RRN #, earned 500, spent 0",
    "ok      PaymentConfirmProc: 0",
    "ok      CloseTransaction: 0",
    "note    a bill of 100 goods, and a transaction",
    "ok      PaymentProc: 0, without the server, RRN #, earned 5000, spent 0",
    "ok      PaymentConfirmProc: 0",
    "ok      CloseTransaction: 0",
    "ok      a report of # bytes",
};

const std::vector<std::string> kConnected = {"ok      connected to the server"};
const std::vector<std::string> kAllRight = {"All # steps came as they should.", ""};

TEST_F(LumoCheck, SaysThatAllIsAsItShouldBe) {
  StartServer();
  WriteConfig();
  EXPECT_EQ(Run(), 0);
  ExpectReport(Together(
      {kSystem, kLibrary, kConnected, {"ok      OpenShift: 0"}, kBalance, kSales, kSilence, kAllRight}));
  server_->Visit([](loyalty::Programme &programme) {
    EXPECT_EQ(programme.payments().size(), 3U);
    for (const auto &[rrn, payment] : programme.payments()) {
      EXPECT_STREQ(loyalty::PaymentStateName(payment.state), "confirmed") << rrn;
    }
  });
}

// Each run goes on in the same report, and the sales that waited are sent by the next one.
TEST_F(LumoCheck, GoesOnWithoutTheServerAndSendsWhatWaits) {
  StartServer();
  WriteConfig();
  EXPECT_EQ(Run(), 0);
  fs::remove(Path());
  GoAway();
  EXPECT_EQ(Run(), 1);
  const std::vector<std::string> alone = Together({kSystem,
                                                   kLibrary,
                                                   {"FAILED  connected to the server: error 10061"},
                                                   kSalesAlone,
                                                   {"FAILED: 2 of # steps.", ""}});
  ExpectReport(alone);
  ComeBack();
  EXPECT_EQ(Run(), 0);
  ExpectReport(Together({alone,
                         kSystem,
                         kLibrary,
                         kConnected,
                         {"ok      sent what waited: 6 of 6", "ok      lumoClearOffline: 0"},
                         kBalance,
                         kSales,
                         kSilence,
                         kAllRight}));
}

TEST_F(LumoCheck, TellsThatTheLibraryIsMissing) {
  fs::remove(Path("lumo.dll"));
  EXPECT_EQ(Run(), 1);
  ExpectReport(Together({kSystem, {"FAILED  lumo.dll: not loaded, error 126", "FAILED: 1 of # steps.", ""}}));
}

// A library file of another processor.
TEST_F(LumoCheck, TellsThatTheLibraryIsNotForThisTerminal) {
  std::fstream file(Path("lumo.dll"), std::ios::binary | std::ios::in | std::ios::out);
  char place[4] = "";
  file.seekg(0x3C).read(place, 4);
  const int header = static_cast<unsigned char>(place[0]) + 256 * static_cast<unsigned char>(place[1]);
  file.seekp(header + 4).write("\x66\x01", 2);
  file.close();
  EXPECT_EQ(Run(), 1);
  ExpectReport(Together({kSystem, {"FAILED  lumo.dll: not loaded, error 193", "FAILED: 1 of # steps.", ""}}));
}

// Without settings nothing is sold.
TEST_F(LumoCheck, TellsThatTheSettingsAreMissing) {
  EXPECT_EQ(Run(), 1);
  ExpectReport(
      Together({kSystem,
                {"ok      lumo.dll is loaded", "ok      lumo.dll is version 1.1.0",
                 "FAILED  LUMOInit: -111 Не удалось загрузить конфигурацию", "FAILED: 1 of # steps.", ""}}));
}

// A call that the library file lacks is named.
TEST_F(LumoCheck, NamesAMissingCall) {
  std::ifstream stream(Path("lumo.dll"), std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  const size_t name = bytes.find(std::string("\0lumoVersion\0", 13));
  ASSERT_NE(name, std::string::npos);
  bytes[name + 11] = 'm';  // lumoVersiom, which keeps the names' order
  std::ofstream(Path("lumo.dll"), std::ios::binary) << bytes;
  EXPECT_EQ(Run(), 1);
  ExpectReport(Together(
      {kSystem,
       {"ok      lumo.dll is loaded", "FAILED  lumoVersion is missing", "FAILED: 1 of # steps.", ""}}));
}

}  // namespace
