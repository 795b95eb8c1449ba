// register/doctor_command_test.cpp: `register doctor`: a terminal on the disk, and its servers.
#include "register/till.h"
#include "support/scripted_server.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Doctor : public test::Till {
 protected:
  // A terminal that has reached its server.
  void BeginToSell(const std::string &more = "") const {
    Configure(more);
    ASSERT_EQ(Run({"balance", "--card", test::kRichCard}).status, 0);
  }
  // What is said of a check, a line each: "level: finding".
  std::string Said(const std::string &check, int status) const {
    std::string text;
    const auto before = Files();
    const nlohmann::json facts = Facts({"doctor"}, status);
    EXPECT_EQ(Files(), before) << "it changes nothing";
    EXPECT_EQ(facts["fit"], status == 0);
    for (const nlohmann::json &finding : facts["findings"]) {
      if (finding["check"] == check) {
        text += finding["level"].get<std::string>() + ": " + finding["finding"].get<std::string>() + "\n";
      }
    }
    return text;
  }
};

TEST_F(Doctor, FindsATerminalFitAndChangesNothing) {
  BeginToSell();
  const auto before = Files();
  const test::Outcome run = Run({"doctor"});
  EXPECT_EQ(run.status, 0) << run.out;
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(
      run.out,
      StartsWith("Settings in force, of CONFIG\n  terminalId         12345\n  protocolVersion    1.0\n"));
  EXPECT_THAT(run.out, HasSubstr("  receiptHeader      Магазин\n"));
  EXPECT_THAT(run.out, HasSubstr("  ok      library: loads, version 1.1.0\n"));
  EXPECT_THAT(run.out,
              HasSubstr("  ok      server: serverAddr, " + server.address() + "/ws, answers after "));
  EXPECT_THAT(run.out, testing::EndsWith("This terminal is fit to sell; troubles: 0, warnings: 0\n"));
  EXPECT_EQ(Files(), before);
}

TEST_F(Doctor, LeavesTheServerAsItIs) {
  BeginToSell();
  const nlohmann::json first = Facts({"doctor"});
  EXPECT_EQ(Facts({"doctor"})["findings"].size(), first["findings"].size());
  // The next operation gets the next number, as without a doctor.
  EXPECT_THAT(Run({"balance", "--card", test::kRichCard}).out, HasSubstr("00001\n"));
}

// A shop is open while the engineer looks: nothing of its sales is lost, and each look tells what was true.
TEST_F(Doctor, DisturbsNoRegisterThatSells) {
  BeginToSell("\"offlineMode\":1,\"localBonusOffline\":3");
  constexpr size_t kSales = 40;
  std::string lines = "bill 1\ncard 1000000001\n";
  for (size_t i = 0; i < kSales; ++i) lines += "pay --confirm\n";
  for (const bool is_away : {false, true}) {
    if (is_away) GoAway();
    std::filesystem::remove(folder / "LOG");
    const auto shop = Start({"interactive"}, lines);
    int looks = 0;
    for (; !shop->HasEnded(); ++looks) {
      const test::FreshFolder desk;
      const test::Outcome look = test::Process(std::filesystem::u8path(REGISTER_PROGRAM),
                                               {"-l", library.u8string(), "doctor"}, desk.path())
                                     .Wait();
      EXPECT_EQ(look.status, is_away ? 1 : 0) << look.out;
      EXPECT_THAT(look.out, Not(HasSubstr("trouble folder")));
      EXPECT_THAT(look.out, Not(HasSubstr("trouble holders")));
      EXPECT_THAT(look.out, Not(HasSubstr("trouble log")));
      EXPECT_THAT(look.out, Not(HasSubstr("trouble state")));
      EXPECT_THAT(look.out, Not(HasSubstr("trouble queue")));
    }
    EXPECT_GT(looks, 0);
    const test::Outcome run = shop->Wait();
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(Facts({"journal"})["records"].size(), kSales);
  }
  size_t sold = 0;
  server.Visit([&sold](loyalty::Programme &programme) { sold = programme.payments().size(); });
  EXPECT_EQ(sold, kSales);
  EXPECT_EQ(Facts({"queue"}, 1)["waiting"], kSales);
}

TEST_F(Doctor, TellsAProgram) {
  BeginToSell("\"offlineMode\":0");
  const nlohmann::json facts = Facts({"doctor"});
  EXPECT_EQ(facts["fit"], true);
  EXPECT_EQ(facts["settingsFile"], "CONFIG");
  EXPECT_EQ(facts["settings"]["terminalId"], "12345");
  EXPECT_EQ(facts["settings"]["timeout"], 5);
  const nlohmann::json first = {
      {"level", "ok"}, {"check", "library"}, {"finding", "loads, version 1.1.0"}, {"cure", nullptr}};
  EXPECT_EQ(facts["findings"][0], first);
}

TEST_F(Doctor, WorksWhereTheLibraryDoesNotStart) {
  EXPECT_THAT(Said("settings", 1), StartsWith("trouble: there is no CONFIG.JSN and no CONFIG"));
  Write("CONFIG", "{");
  EXPECT_THAT(Said("settings", 1), StartsWith("trouble: no settings can be read"));
  std::filesystem::create_directory(folder / "CONFIG.JSN");
  EXPECT_THAT(
      Run({"doctor"}).out,
      HasSubstr(
          "  trouble settings: CONFIG.JSN cannot be opened: LUMOInit returns -111\n            cure: give "));
  std::filesystem::remove(folder / "CONFIG.JSN");
  const test::Outcome run = Run({"doctor"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out,
              HasSubstr("            cure: repair or remove it, then register configure --server ... "
                        "--terminal ...\n"));
  EXPECT_THAT(run.out, HasSubstr("This terminal is NOT fit to sell; troubles: 2, warnings: 0\n"));
}

TEST_F(Doctor, LooksAtState) {
  BeginToSell();
  Write("STATE", "");
  EXPECT_THAT(Said("state", 1), HasSubstr("STATE is empty or cut short: LUMOInit returns -108"));
  Write("STATE", "{]");
  EXPECT_THAT(Said("state", 1), HasSubstr("STATE is damaged"));
  Write("STATE", R"({"reqId":"1234598010100000","offline":0,"shiftState":0,"update":0})");
  EXPECT_THAT(Said("clock", 1), HasSubstr("the last number is of a later day: 1234598010100000"));
  Write("STATE", R"({"reqId":"1234512120500000","offline":0,"shiftState":0,"update":1})");
  EXPECT_THAT(Said("number", 1), HasSubstr("the server knows 12345"));
  EXPECT_EQ(Said("update", 1), "warning: the server announced one\n");
  std::filesystem::remove(folder / "STATE");
  std::filesystem::create_directory(folder / "STATE");
  EXPECT_THAT(
      Run({"doctor"}).out,
      HasSubstr("  trouble state: STATE cannot be opened: LUMOInit returns -108\n            cure: give "));
}

TEST_F(Doctor, LooksAtTheQueue) {
  BeginToSell();
  const std::string record =
      R"({"request":{"type":"PAYMENT","requestId":"1234512120500001","requestDate":"2012-12-05T10:00:00Z"}})";
  Write("OFFLINE", record + "\n" + R"({"request":{"type":"PAYMENT","requestId":""}})" + "\nnothing\n" +
                       R"({"request":{"type":"SALE","requestId":"1"}})" + "\n" + record);
  EXPECT_EQ(Said("queue", 0),
            "warning: 2 lines of OFFLINE no replay can send\n"
            "warning: 1 record of OFFLINE without a number, which the server refuses for ever\n"
            "warning: 1 record to be sent to the server\n");
}

TEST_F(Doctor, LooksAtWhatTheLogEndsWith) {
  BeginToSell();
  Write(
      "LOG",
      R"({"request":{"type":"DEPOSIT","requestId":"1234599123100000","requestDate":"2099-12-31T00:00:00Z","cardNum":")"
      "\xCC"
      R"("}})"
      "\nx\n");
  EXPECT_THAT(Said("number", 1), StartsWith("trouble: the last record has 1234599123100000, STATE only "));
  EXPECT_THAT(Said("clock", 1), HasSubstr("and the last record is of 2099-12-31T00:00:00Z"));
  EXPECT_EQ(Said("log", 1), "warning: 1 line of LOG that no report can read\n");
}

TEST_F(Doctor, LooksForLeftovers) {
  BeginToSell();
  for (const char *name : {"LOG.old", "LOG.new", "STATE.new", "OFFLINE_TMP"}) Write(name, "");
  const std::string said = Said("leftovers", 0);
  for (const char *name : {"LOG.old", "LOG.new", "STATE.new", "OFFLINE_TMP"}) {
    EXPECT_THAT(said, HasSubstr("warning: " + std::string(name) + " is there: a process ended"));
  }
}

TEST_F(Doctor, LooksAtTheLibraryFile) {
  BeginToSell();
  std::filesystem::resize_file(library, 1000);
  EXPECT_THAT(Said("library", 1), StartsWith("trouble: it cannot be loaded: "));
  std::filesystem::remove(library);
  EXPECT_EQ(Said("library", 1), "trouble: there is no " + library.u8string() + "\n");
}

TEST_F(Doctor, LooksWhetherFilesCanBeOpened) {
  BeginToSell();
  std::filesystem::create_directory(folder / "LOG");
  const test::Outcome run = Run({"doctor"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(
      run.out,
      HasSubstr("  trouble folder: LOG cannot be opened for reading and writing\n            cure: give "));
}

TEST_F(Doctor, AsksTheServer) {
  BeginToSell("\"offlineMode\":1,\"localBonusOffline\":1");
  GoAway();
  EXPECT_THAT(Said("server", 1),
              testing::ContainsRegex(
                  "^trouble: serverAddr, .*/ws: no connection: .*\\. Sales are completed offline"));
}

struct ServerCase {
  const char *fault;
  const char *said;
};

class DoctorAndServer : public Doctor, public testing::WithParamInterface<ServerCase> {};

TEST_P(DoctorAndServer, SaysWhatCameBack) {
  BeginToSell("\"timeout\":3");
  server.SetFault(loyalty::ParseFault(GetParam().fault));
  EXPECT_THAT(Said("server", 1), HasSubstr(GetParam().said));
}

INSTANTIATE_TEST_SUITE_P(Faults, DoctorAndServer,
                         testing::Values(ServerCase{"silence", "/ws: no answer: nothing within 3 s"},
                                         ServerCase{"cut 0", "/ws: no answer: it ends the connection"},
                                         ServerCase{"cut 20", "/ws: its answer is cut off, or no JSON"},
                                         ServerCase{"reset 0", "/ws: no answer: "}));

TEST_F(Doctor, SaysWhatOtherServersSay) {
  const std::pair<const char *, const char *> cases[] = {
      {"HTTP/1.1 404 Not Found\r\n\r\n", "it answers as a web server, with a head"},
      {"<html>HTTP Status 400</html>", "it says HTTP Status 400"},
      {"<html>HTTP Status 500</html>", "it says HTTP Status 500"},
      {"no JSON", "its answer is no JSON"},
      {"   ", "its answer is no JSON"},
      {"[1]", "its answer is none of this protocol"},
      {"{}", "its answer is none of this protocol"},
      {R"({"getAdResponse":{}})", "it answers another question: getAdResponse"},
      {R"({"getLastRrnResponse":{}})", "its answer has no response"},
      {R"({"getLastRrnResponse":{"response":{"requestState":"SUCCESS"}}})", "its answer has no rrn"},
      {R"({"getLastRrnResponse":{"response":{"requestState":"ERROR","requestStateCode":"LOCKED_TERMINAL"}}})",
       "it refuses: ERROR LOCKED_TERMINAL"},
  };
  for (const auto &[answer, said] : cases) {
    const test::ScriptedServer other{std::string(answer)};
    Configure("", other.address());
    EXPECT_THAT(Said("server", 1), HasSubstr(said)) << answer;
    ASSERT_EQ(other.requests().size(), 1u);
    EXPECT_THAT(other.requests()[0], StartsWith("POST /ws/rrn\nHost: 127.0.0.1:"));
    EXPECT_THAT(other.requests()[0], HasSubstr("\n\n{\"getLastRrnRequest\":{\"request\":{\"ver\":\"1.0\","
                                               "\"type\":\"LAST_RRN\",\"requestId\":\"0000000000000000\","
                                               "\"terminalId\":\"12345\",\"requestDate\":\"20"));
  }
}

TEST_F(Doctor, TakesTheAlternateServerForTheFirst) {
  Configure("\"serverAltAddr\":\"" + ServerAddress() + "\"",
            "http://127.0.0.1:" + std::to_string(test::UnusedPort()) + "/ws");
  ASSERT_EQ(Run({"balance", "--card", test::kRichCard}).status, 0);
  const std::string said = Said("server", 0);
  EXPECT_THAT(said, StartsWith("warning: serverAddr, 127.0.0.1:"));
  EXPECT_THAT(said, HasSubstr("ok: serverAltAddr, " + server.address() + "/ws, answers after "));
}

TEST_F(Doctor, TakesNoWords) {
  EXPECT_EQ(Run({"doctor", "nurse"}).status, 2);
}

}  // namespace
