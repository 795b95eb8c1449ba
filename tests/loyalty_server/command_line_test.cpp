// loyalty_server/command_line_test.cpp: what is typed: options and commands.
#include "loyalty_server/command_line.h"

#include <gmock/gmock.h>

#include "loyalty_server/bench.h"
#include "loyalty_server/client.h"
#include "loyalty_server/folder.h"

namespace {

using loyalty::RunCommand;
using testing::HasSubstr;

class Console : public testing::Test {
 protected:
  std::string Run(const std::string &line) { return RunCommand(&server, line).text; }

  loyalty::Server server{bench::MakeProgramme()};
};

TEST_F(Console, ShowsTheCardsAndOneCard) {
  EXPECT_THAT(Run("cards"),
              testing::StartsWith("100  active  account 1  GLOBAL 100.00  LOCAL 50.00  DISCOUNT 10.00\n"
                                  "200  active  account 2  GLOBAL 0.00  LOCAL 0.00  DISCOUNT 0.00\n"));
  EXPECT_EQ(Run("card 400"), "400  locked  account 6  GLOBAL 7.00  LOCAL 0.00  DISCOUNT 0.00\n");
  EXPECT_EQ(Run("card 999"), "no such card\n");
}

TEST_F(Console, ShowsWhatAPaymentHolds) {
  EXPECT_EQ(Run("payments"), "no payments\n");
  server.Visit([](loyalty::Programme &programme) {
    bench::Terminal terminal(&programme);
    EXPECT_EQ(terminal.Code("payment", "100", bench::Bill(true)), "OK");
  });
  EXPECT_EQ(Run("payments"), "1234512120500001  card 100  sum 109.99  held\n");
  EXPECT_EQ(Run("card 100"),
            "100  active  account 1  GLOBAL 100.00 (reserved 4.99) (expected 1.10)  "
            "LOCAL 50.00 (reserved 50.00) (expected 1.65)  DISCOUNT 10.00 (expected 0.55)\n");
  EXPECT_EQ(Run("last 12345"), "1234512120500001\n");
  EXPECT_EQ(Run("last 54321"), "none\n");
}

TEST_F(Console, ChangesCardsTerminalsUpdateAndAdvertisement) {
  EXPECT_THAT(Run("card 200 locked"), HasSubstr("200  locked"));
  EXPECT_EQ(Run("card 200 lost"), "card: STATE: lost not in {sold,active,locked}\n");
  EXPECT_EQ(Run("card 999 locked"), "no such card\n");
  EXPECT_EQ(Run("terminal 12345 lock"), "terminal 12345 is locked\n");
  server.Visit([](loyalty::Programme &programme) {
    bench::Terminal terminal(&programme);
    EXPECT_EQ(terminal.Code("balance", "100"), "LOCKED_TERMINAL");
  });
  EXPECT_EQ(Run("terminal 12345 unlock"), "terminal 12345 is open\n");
  EXPECT_EQ(Run("update offered"), "update offered\n");
  EXPECT_EQ(Run("ad Двойные  бонусы \r"), "ad Двойные  бонусы\n");
  server.Visit([](loyalty::Programme &programme) {
    bench::Terminal terminal(&programme);
    EXPECT_EQ(terminal.Code("balance", "200"), "LOCKED_CARD");
    const nlohmann::json answer = terminal.Ask("ad", "200");
    EXPECT_EQ(answer["response"]["isNeedUpdate"], true);
    EXPECT_EQ(answer["ad"]["text"], "Двойные  бонусы");
  });
}

TEST_F(Console, SetsAndShowsTheFault) {
  EXPECT_EQ(Run("fault"), "fault off\n");
  EXPECT_EQ(Run("fault cut 120 times 2"), "fault cut 120 times 2\n");
  EXPECT_EQ(Run("fault explode"), "fault: no such fault: explode\n");
  EXPECT_EQ(Run("fault"), "fault cut 120 times 2\n") << "a wrong command changes nothing";
  EXPECT_EQ(Run("fault refuse"), "fault refuse\n");
  EXPECT_THROW(bench::Client{server.port()}, std::system_error);
  EXPECT_EQ(Run("fault off\r"), "fault off\n");
  bench::Client client(server.port());
}

TEST_F(Console, ShowsTheTerminals) {
  server.Visit([](loyalty::Programme &programme) {
    bench::Terminal terminal(&programme);
    EXPECT_EQ(terminal.Code("balance", "100"), "OK");
  });
  EXPECT_EQ(Run("terminals"), "12345  last 1234512120500001\n54321  last none\n66666  last none  locked\n");
}

// What a terminal sends cannot pass for a line of the console, nor move its cursor.
TEST_F(Console, ShowsWhatTerminalsSentInOneLine) {
  loyalty::Server open(loyalty::Programme(loyalty::BuiltInShop()));
  const auto run = [&open](const std::string &line) { return RunCommand(&open, line).text; };
  open.Visit([](loyalty::Programme &programme) {
    const loyalty::OperationNames &payment = *loyalty::FindOperation("payment");
    bench::Head head;
    head.cardNum = R"("1000000001")";
    head.terminalId = R"("7\nlast\u001b[2J")";
    head.requestId = R"("\nA\u001b[212120500001")";
    EXPECT_EQ(programme.Handle(payment, bench::Document(payment, head, bench::Bill(false))).code,
              loyalty::Code::kOk);
  });
  EXPECT_THAT(run("terminals"), HasSubstr("7?last?[2J  last ?A?[212120500001\n"));
  EXPECT_THAT(run("payments"), testing::StartsWith("?A?[212120500001  card 1000000001 "));
  EXPECT_EQ(run("fault rubbish \x1b[2J"), "fault rubbish ?[2J\n");
}

TEST_F(Console, TakesFaultsAndAdvertisementsAsTheyAreTyped) {
  EXPECT_EQ(Run("fault extra ad {\"text\": \"a  b\"}"), "fault extra ad {\"text\":\"a b\"}\n");
  EXPECT_EQ(Run("fault rubbish --help \"x\" 'y'"), "fault rubbish --help \"x\" 'y'\n");
  EXPECT_EQ(Run("ad --port \"8080\""), "ad --port \"8080\"\n");
  EXPECT_EQ(Run("ad"), "ad \n");
}

TEST_F(Console, ReadsOneFaultAfterAnotherFromAFile) {
  const bench::Folder folder;
  const std::string wrong = folder.Write("wrong", "silence\nexplode\n");
  const std::string missing = folder.Path("missing");
  const std::string place = folder.Path("");
  EXPECT_EQ(Run("faults " + folder.Write("some faults", "cut 120 times 2\nsilence\n")),
            "fault cut 120 times 2  (1 of 2)\n");
  EXPECT_EQ(Run("faults " + wrong), "faults: " + wrong + ": line 2: no such fault: explode\n");
  EXPECT_EQ(Run("faults " + missing), "faults: " + missing + " cannot be read\n");
  EXPECT_EQ(Run("faults " + place), "faults: " + place + " cannot be read\n");
  EXPECT_EQ(Run("fault"), "fault cut 120 times 2  (1 of 2)\n") << "a wrong command changes nothing";
}

TEST_F(Console, KnowsWhenToStopAndWhatItDoesNotKnow) {
  EXPECT_TRUE(RunCommand(&server, "quit").isQuit);
  EXPECT_TRUE(RunCommand(&server, " exit \r").isQuit);
  EXPECT_FALSE(RunCommand(&server, "").isQuit);
  EXPECT_EQ(Run(""), "");
  const std::pair<const char *, const char *> rows[] = {
      {"dance", "no such command: dance; try help\n"},
      {"--help", "no such command: --help; try help\n"},
      {"cards all", "cards: a word too many; try help\n"},
      {"card", "card: NUMBER is required\n"},
      {"terminal 12345", "terminal: CHANGE is required\n"},
      {"terminal 12345 open", "terminal: CHANGE: open not in {lock,unlock}\n"},
      {"update later", "update: VERSION: later not in {none,offered,required}\n"},
      {"last", "last: ID is required\n"},
      {"faults", "faults: FILE is required\n"},
  };
  for (const auto &row : rows) EXPECT_EQ(Run(row.first), row.second);
}

TEST_F(Console, HelpsWithEveryCommandItKnows) {
  const std::string help = Run("help");
  for (const char *word : {"cards", "card", "payments", "terminals", "terminal", "last", "update", "ad",
                           "fault", "faults", "help", "quit"}) {
    EXPECT_THAT("\n" + help, HasSubstr(std::string("\n") + word + " "));
    EXPECT_THAT(Run(word), testing::Not(HasSubstr("no such command")));
  }
  EXPECT_THAT(help, HasSubstr("  cut [BYTES]"));
}

// ---- Options ----

std::optional<loyalty::Settings> Read(const std::vector<const char *> &words, int *out_status) {
  std::vector<const char *> arguments = {"loyalty_server"};
  arguments.insert(arguments.end(), words.begin(), words.end());
  return loyalty::ReadCommandLine(static_cast<int>(arguments.size()), arguments.data(), out_status);
}

TEST(Options, AreReadIntoSettings) {
  int status = 0;
  const auto settings =
      Read({"--address",  "0.0.0.0",         "--port",  "8080",       "--global", "7",        "--terminal",
            "12345",      "--terminal",      "9",       "--protocol", "2",        "--update", "offered",
            "--any-bill", "--no-resume-ids", "--fault", "cut 120",    "--idle",   "5",        "--max-request",
            "1000",       "--log",           "a.log",   "--quiet"},
           &status);
  ASSERT_TRUE(settings.has_value());
  EXPECT_EQ(settings->server.address, "0.0.0.0");
  EXPECT_EQ(settings->server.port, 8080);
  EXPECT_EQ(settings->server.idleTime, std::chrono::seconds(5));
  EXPECT_EQ(settings->server.mostBodyBytes, 1000u);
  EXPECT_EQ(settings->shop.rates.global, 7);
  EXPECT_EQ(settings->shop.rates.local, 3) << "as the shop has it";
  EXPECT_FALSE(settings->shop.isAnyTerminalKnown);
  EXPECT_EQ(settings->shop.terminals.count("12345"), 1u);
  EXPECT_EQ(settings->shop.terminals.count("9"), 1u);
  EXPECT_EQ(settings->shop.protocolVersion, "2");
  EXPECT_EQ(settings->shop.update, loyalty::Update::kOffered);
  EXPECT_FALSE(settings->shop.isBillChecked);
  EXPECT_FALSE(settings->shop.isIdResumedAfterReplay);
  EXPECT_EQ(loyalty::FaultText(settings->faults.fault()), "cut 120");
  EXPECT_EQ(settings->logFile, "a.log");
  EXPECT_TRUE(settings->isQuiet);
}

TEST(Options, LeftOutAreSafe) {
  int status = 0;
  const auto settings = Read({}, &status);
  ASSERT_TRUE(settings.has_value());
  EXPECT_EQ(settings->server.address, "127.0.0.1");
  EXPECT_EQ(settings->server.port, 0);
  EXPECT_EQ(settings->pageAddress, "127.0.0.1");
  EXPECT_FALSE(settings->pagePort.has_value());
  EXPECT_EQ(settings->dataFile, "");
  EXPECT_TRUE(settings->shop.isIdResumedAfterReplay);
  EXPECT_EQ(settings->faults.fault().kind, loyalty::FaultKind::kOff);
}

TEST(Options, ThatCannotBeUsedEndTheProgramWithTwo) {
  const std::vector<std::vector<const char *>> rows = {
      {"--port", "65536"},
      {"--port", "-1"},
      {"--port"},
      {"--global", "101"},
      {"--update", "soon"},
      {"--idle", "0"},
      {"--fault", "explode"},
      {"--faults", "missing"},
      {"--shop", "missing.json"},
      {"--fault", "off", "--faults", "x"},
      {"surplus"},
      {"--teapot"},
  };
  for (const auto &row : rows) {
    int status = 0;
    EXPECT_FALSE(Read(row, &status).has_value()) << row[0];
    EXPECT_EQ(status, 2) << row[0];
  }
  int status = 5;
  EXPECT_FALSE(Read({"--help"}, &status).has_value());
  EXPECT_EQ(status, 0);
}

#if LOYALTY_DATA_AND_PAGE
TEST(Options, OfDataAndPage) {
  int status = 0;
  auto settings = Read({"--data", "bench.db", "--page", "0", "--page-address", "0.0.0.0"}, &status);
  ASSERT_TRUE(settings.has_value());
  EXPECT_EQ(settings->dataFile, "bench.db");
  EXPECT_EQ(settings->pagePort, 0);
  EXPECT_EQ(settings->pageAddress, "0.0.0.0");
  EXPECT_FALSE(Read({"--page-address", "0.0.0.0"}, &status).has_value()) << "an address of no page";
}
#else
TEST(Options, OfDataAndPageAreNotThere) {
  int status = 0;
  EXPECT_FALSE(Read({"--data", "bench.db"}, &status).has_value());
  EXPECT_EQ(status, 2);
  EXPECT_FALSE(Read({"--page", "0"}, &status).has_value());
}
#endif

}  // namespace
