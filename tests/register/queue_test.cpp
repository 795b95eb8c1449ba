// register/queue_test.cpp: what waits to be sent.
#include "register/till.h"

namespace {

using testing::HasSubstr;

// As the library writes them.
std::string WaitingPayment(const std::string &rrn, int total) {
  return R"({"request":{"ver":"1.0","type":"PAYMENT","requestId":")" + rrn +
         R"(","terminalId":"12345","requestDate":"2012-12-05T10:00:00Z","employeeId":"1","cardNum":"1000000001",)" +
         R"("isOffline":true,"shiftId":"42"},"bill":{"totalSum":)" + std::to_string(total) +
         R"(,"spendBonus":false,"orderLen":1,"billNum":"1","billDate":"2012-12-05T10:00:00Z","partnerFee":1000,)" +
         R"("goodList":{"good":[{"title":"TOTAL_AMOUNT","productCode":"008","positionCost":)" +
         std::to_string(total) +
         R"(,"orderNum":1,"cnt":1,"bonus":[{"earned":300,"spend":0,"organizerFee":0,"accountType":"LOCAL"}]}]}}})";
}

class Queue : public test::Till {
 protected:
  Queue() {
    Configure("\"offlineMode\":1,\"localBonusOffline\":3");
    Write("STATE", R"({"reqId":"1234512120500009","offline":1,"shiftState":0,"update":0})");
    Write("OFFLINE", first + "\n" + second + "\n");
  }

  const std::string first = WaitingPayment("1234512120500008", 10000);
  const std::string second = WaitingPayment("1234512120500009", 20050);
};

TEST_F(Queue, ListsWhatWaitsAndWritesNothing) {
  const auto before = Files();
  const test::Outcome run = Run({"queue"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out,
            "  1  2012-12-05T10:00:00Z  1234512120500008  PAYMENT  card 1000000001  offline  total 100.00\n"
            "     not sent yet\n"
            "  2  2012-12-05T10:00:00Z  1234512120500009  PAYMENT  card 1000000001  offline  total 200.50\n"
            "     not sent yet\n"
            "  2 records wait\n"
            "  PAYMENT                   2          300.50\n"
            "  bonuses earned 6.00, spent 0.00, discount 0.00\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(Run({"queue", "list"}).out, run.out);
  const nlohmann::json facts = Facts({"queue", "list"}, 1);
  EXPECT_EQ(facts["waiting"], 2);
  EXPECT_EQ(facts["records"][1], nlohmann::json({{"number", 2},
                                                 {"readable", true},
                                                 {"date", "2012-12-05T10:00:00Z"},
                                                 {"rrn", "1234512120500009"},
                                                 {"type", "PAYMENT"},
                                                 {"card", "1000000001"},
                                                 {"shift", "42"},
                                                 {"offline", true},
                                                 {"amount", 20050},
                                                 {"detail", "total 200.50"},
                                                 {"why", "not sent yet"}}));
  EXPECT_EQ(facts["sums"]["types"]["PAYMENT"], nlohmann::json({{"count", 2}, {"amount", 30050}}));
  EXPECT_EQ(Files(), before);
}

TEST_F(Queue, MayBeEmpty) {
  std::filesystem::remove(folder / "OFFLINE");
  const test::Outcome run = Run({"queue"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "  nothing waits\n");
  EXPECT_EQ(Facts({"queue", "replay"})["sent"], 0);
  EXPECT_EQ(Run({"queue", "drop", "1", "--yes"}).status, 2);
}

TEST_F(Queue, ReplaysAndClearsWhatTheServerHasTaken) {
  const test::Outcome run = Run({"queue", "replay"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "  2 of 2 records sent\n  nothing waits\n");
  EXPECT_FALSE(Exists("OFFLINE"));
  server.Visit([](loyalty::Programme &programme) { EXPECT_EQ(programme.payments().size(), 2U); });
}

TEST_F(Queue, KeepsWhatFailedAndSaysWhy) {
  Write("OFFLINE", first + "\nrubbish\n" + WaitingPayment("", 500) + "\n");
  EXPECT_THAT(Run({"queue"}).out, HasSubstr("has no number: the server will refuse it"));
  test::Outcome run = Run({"queue", "replay"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out, testing::StartsWith("  1 of 3 records sent\n"
                                           "  1  UNREADABLE\n     no record: it can never be sent\n  2  "));
  EXPECT_THAT(run.out, HasSubstr("\n     REQUEST_ID_EMPTY\n  2 records wait\n"));
  Write("OFFLINE", first + "\n");
  EXPECT_THAT(Run({"queue", "replay"}).out, HasSubstr("     DUPLICATE_REQUEST_ID\n"));
  EXPECT_EQ(Read("OFFLINE"), first + "\n");
  GoAway();
  EXPECT_THAT(Run({"queue", "replay"}).out, HasSubstr("     no server reached\n"));
  ComeBack();
  server.SetFault(loyalty::ParseFault("cut 5"));
  const nlohmann::json facts = Facts({"queue", "replay"}, 1);
  EXPECT_EQ(facts["sent"], 0);
  EXPECT_EQ(facts["of"], 1);
  EXPECT_EQ(facts["records"][0]["why"], "an answer cut off, or none of this protocol");
  EXPECT_THAT(Run({"queue"}).out, HasSubstr("     an answer cut off, or none of this protocol\n"));
}

TEST_F(Queue, DropsOneRecordAndKeepsEveryOtherByte) {
  const std::string damaged = "rubbish \xFF";
  const std::string all = first + "\n" + damaged + "\n" + second + "\ntorn";
  Write("OFFLINE", all);
  test::Outcome run = Run({"queue", "drop", "1", "--rrn", "1234512120500008"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("dropped; it was\n" + first + "\n"));
  EXPECT_EQ(Read("OFFLINE"), damaged + "\n" + second + "\ntorn");
  EXPECT_EQ(Run({"queue", "drop", "1", "--yes"}).status, 0);
  EXPECT_EQ(Read("OFFLINE"), second + "\ntorn");
  EXPECT_EQ(Facts({"queue", "drop", "1", "--yes"})["record"]["bill"]["totalSum"], 20050);
  EXPECT_EQ(Read("OFFLINE"), "torn");
  EXPECT_FALSE(Exists("OFFLINE.new"));
}

TEST_F(Queue, HandsOutARecordByteForByte) {
  const std::string twice = R"({"request":{"a":1.50,"a":2}})";
  Write("OFFLINE", twice + "\nrubbish \xFF\n\xFF\xFE\n");
  EXPECT_EQ(Facts({"queue", "drop", "1", "--yes"})["line"], twice);
  nlohmann::json facts = Facts({"queue", "drop", "1", "--yes"});
  EXPECT_EQ(facts["lineBase64"], "cnViYmlzaCD/");
  EXPECT_FALSE(facts.contains("line"));
  facts = Facts({"queue", "drop", "1", "--yes"});
  EXPECT_EQ(facts["lineBase64"], "//4=");
}

TEST_F(Queue, TellsAProgramWhatWasNotUnderstood) {
  for (const Words &words : {Words{"queue", "teapot"},
                             {"queue", "drop"},
                             {"queue", "drop", "0"},
                             {"queue", "clear", "-1"},
                             {"queue", "drop", "1", "--rrn"},
                             {}}) {
    EXPECT_NE(Facts(words, 2)["error"].get<std::string>(), "") << testing::PrintToString(words);
  }
  EXPECT_THAT(Run({"queue", "drop", "0", "--yes"}).err, HasSubstr("1 to 2147483647\n"));
}

TEST_F(Queue, IsGoneWithItsLastRecord) {
  Write("OFFLINE", first + "\n");
  EXPECT_EQ(Run({"queue", "drop", "1", "--yes"}).status, 0);
  EXPECT_FALSE(Exists("OFFLINE"));
}

TEST_F(Queue, DropsNothingUnlessItIsSure) {
  struct Row {
    Words words;
    const char *complaint;
  };
  const Row rows[] = {
      {{"1"}, "this would lose\n  1  2012-12-05T10:00:00Z  1234512120500008"},
      {{"2", "--rrn", "1234512120500008"}, "record 2 has another RRN: 1234512120500009"},
      {{"3", "--yes"}, "there is no record number 3"},
      {{"0", "--yes"}, "number"},
      {{"-1", "--yes"}, ""},
      {{"all", "--yes"}, "number"},
      {{"--yes"}, "number is required"},
  };
  const auto before = Files();
  for (const Row &row : rows) {
    Words line = {"queue", "drop"};
    line.insert(line.end(), row.words.begin(), row.words.end());
    const test::Outcome run = Run(line);
    EXPECT_EQ(run.status, 2) << testing::PrintToString(row.words);
    EXPECT_THAT(run.err, HasSubstr(row.complaint));
    EXPECT_EQ(Files(), before);
  }
}

TEST_F(Queue, IsThereUnderItsOtherName) {
  std::filesystem::rename(folder / "OFFLINE", folder / "OFFLINE_TMP");
  EXPECT_THAT(Run({"queue"}).out, HasSubstr("  2 records wait\n"));
  EXPECT_THAT(Run({"journal", "--offline"}).out, HasSubstr("  2 records\n"));
  EXPECT_THAT(Run({"status"}).out, HasSubstr("  waiting     2 offline records\n"));
  EXPECT_THAT(Run({"doctor"}).out, HasSubstr("warning queue: 2 records to be sent to the server\n"));
}

TEST_F(Queue, DropsNothingWhileAReplayIsNotFinished) {
  Write("OFFLINE_TMP", first + "\n");
  const auto before = Files();
  const test::Outcome run = Run({"queue", "drop", "1", "--yes"});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr("a replay runs or was interrupted: run register queue replay first\n"));
  EXPECT_EQ(Files(), before);
  EXPECT_EQ(Run({"queue", "replay"}).status, 0);
  EXPECT_FALSE(Exists("OFFLINE_TMP"));
}

TEST_F(Queue, IsNotEmptyWithoutItsFolder) {
  const test::Outcome run =
      test::Process(std::filesystem::u8path(REGISTER_PROGRAM),
                    {"-l", (folder / "none" / "liblumo.so").u8string(), "queue"}, fresh.path())
          .Wait();
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, HasSubstr("there is no folder "));
}

TEST_F(Queue, ClearsWhatAnotherProgramHasSent) {
  test::Outcome run = Run({"queue", "clear", "1"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("error -202"));
  EXPECT_EQ(Read("OFFLINE"), first + "\n" + second + "\n");
  run = Run({"queue", "clear", "2"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "  2 records cleared\n");
  EXPECT_FALSE(Exists("OFFLINE"));
  EXPECT_EQ(Facts({"queue", "clear", "0"})["cleared"], 0);
  EXPECT_EQ(Run({"queue", "clear", "-1"}).status, 2);
  EXPECT_EQ(Run({"queue", "clear"}).status, 2);
  EXPECT_EQ(Run({"queue", "teapot"}).status, 2);
}

TEST_F(Queue, ShowsHowFarAReplayHasCome) {
  server.SetFault(loyalty::ParseFault("delay 2000"));
  const test::Outcome run = Run({"--progress", "queue", "replay"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.err, HasSubstr(" s  1 of 2 records  waiting for the answer\n"));
  EXPECT_THAT(run.err, HasSubstr(" s  2 of 2 records  waiting for the answer\n"));
  // Nobody asked, and no person looks.
  EXPECT_EQ(Run({"balance", "--card", test::kRichCard}).err, "");
}

TEST_F(Queue, ShowsWhatAnOperationWaitsFor) {
  server.SetFault(loyalty::ParseFault("delay 2000"));
  const test::Outcome run = Run({"--progress", "balance", "--card", test::kRichCard});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.err, HasSubstr(" s  waiting for the answer\n"));
}

}  // namespace
