// register/trace_command_test.cpp: `register trace`: the exchanges of a trace as an engineer sees them.
#include <csignal>
#include <fstream>
#include <iterator>

#include "register/till.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

std::string ReadGolden(const std::string &name) {
  std::ifstream stream(std::filesystem::u8path(REGISTER_GOLDEN_DIR) / name, std::ios::binary);
  EXPECT_TRUE(stream.is_open()) << name;
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

class TraceCommand : public test::Till {
 protected:
  void Put(const std::string &name) const { Write("TRACE.TXT", ReadGolden(name + ".trace")); }
};

class GoldenTrace : public TraceCommand, public testing::WithParamInterface<const char *> {};

TEST_P(GoldenTrace, LooksAsItShould) {
  Put(GetParam());
  const auto before = Files();
  const test::Outcome list = Run({"trace"});
  EXPECT_EQ(list.status, 0);
  EXPECT_EQ(list.out, ReadGolden(std::string(GetParam()) + ".list"));
  EXPECT_EQ(list.err, "");
  const test::Outcome full = Run({"trace", "--exchange", "1"});
  EXPECT_EQ(full.status, 0);
  EXPECT_EQ(full.out, ReadGolden(std::string(GetParam()) + ".full"));
  EXPECT_EQ(full.err, "");
  EXPECT_EQ(Files(), before);
}

INSTANTIATE_TEST_SUITE_P(Traces, GoldenTrace,
                         testing::Values("online_payment", "offline_payment", "replay", "lost_answer",
                                         "refused", "cut_answer", "second_server"),
                         [](const testing::TestParamInfo<const char *> &row) {
                           return std::string(row.param);
                         });

TEST_F(TraceCommand, ShowsWhatTheLibraryWrote) {
  Configure();
  ASSERT_EQ(Run({"balance", "--card", test::kRichCard}).status, 0);
  ASSERT_EQ(Run({"balance", "--card", "9999999999"}).status, 1);
  const std::string list = Run({"trace"}).out;
  EXPECT_THAT(list, HasSubstr("    1  20"));
  EXPECT_THAT(list, HasSubstr("LAST_RRN"));
  EXPECT_THAT(list, HasSubstr("  " + server.address() + " "));
  EXPECT_THAT(list, EndsWith("   -405  refused: ERROR CARD_NOT_FOUND\n"));
}

TEST_F(TraceCommand, ShowsCardsWhenAsked) {
  Put("refused");
  EXPECT_THAT(Run({"trace", "-e", "1", "--show-cards"}).out, HasSubstr("\"cardNum\": \"9999999999\""));
}

TEST_F(TraceCommand, ShowsTheLastOnes) {
  Write("TRACE.TXT",
        ReadGolden("refused.trace") + ReadGolden("lost_answer.trace") + ReadGolden("replay.trace"));
  const std::string list = Run({"trace", "--last", "2"}).out;
  EXPECT_EQ(list.find("    1  "), std::string::npos) << list;
  EXPECT_THAT(list, HasSubstr("    2  2012-12-05 10:00:00  DEPOSIT "));
  EXPECT_THAT(list, HasSubstr("    3  2012-12-05 10:00:00  PAYMENT "));
}

TEST_F(TraceCommand, CountsFromOne) {
  Put("refused");
  for (const char *option : {"--last", "--exchange"}) {
    for (const char *number : {"0", "-1", "x"}) {
      const test::Outcome run = Run({"trace", option, number});
      EXPECT_EQ(run.status, 2) << option << number;
      EXPECT_THAT(run.err, HasSubstr(option));
      EXPECT_LT(run.err.size(), 200U) << run.err;
    }
  }
}

TEST_F(TraceCommand, ReadsATagsTraceOrAnotherFile) {
  Write("TRACE_2.TXT", ReadGolden("refused.trace"));
  EXPECT_EQ(Run({"--tag", "2", "trace"}).out, ReadGolden("refused.list"));
  EXPECT_EQ(Run({"trace", (folder / "TRACE_2.TXT").u8string()}).out, ReadGolden("refused.list"));
}

TEST_F(TraceCommand, NamesTheTracesThereAre) {
  Write("TRACE_2.TXT", "");
  const test::Outcome run = Run({"trace"});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "register: there is no " + (folder / "TRACE.TXT").u8string() +
                         ", or it cannot be read; there is --tag 2\n");
}

TEST_F(TraceCommand, NeedsNoLibraryFile) {
  std::filesystem::remove(library);
  Put("refused");
  EXPECT_EQ(Run({"trace"}).out, ReadGolden("refused.list"));
}

TEST_F(TraceCommand, RefusesWhatIsNoTrace) {
  EXPECT_THAT(Run({"trace", folder.u8string()}).err, EndsWith(" is a folder\n"));
  EXPECT_EQ(Run({"trace", folder.u8string()}).status, 3);
  Write("TRACE.TXT", std::string("\0\xFF\n\n", 4));
  const test::Outcome run = Run({"trace"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "    #  time, UTC            operation            RRN               server                      "
            "code  how it ended\n");
}

TEST_F(TraceCommand, RefusesANumberThatIsNotThere) {
  Put("refused");
  const test::Outcome run = Run({"trace", "--exchange", "2"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "register: the trace has 1 exchanges\n");
  for (const char *number : {"0", "-1", "x"}) {
    EXPECT_EQ(Run({"trace", "--exchange", number}).status, 2) << number;
  }
  EXPECT_EQ(Run({"trace", "--last", "0"}).status, 2);
  EXPECT_EQ(Run({"trace", "--exchange", "1", "--follow"}).status, 2);
  EXPECT_EQ(Run({"trace", "--exchange", "1", "--last", "1"}).status, 2);
}

TEST_F(TraceCommand, TellsAProgram) {
  Put("second_server");
  EXPECT_EQ(Facts({"trace"}), nlohmann::json::parse(R"({
    "exchange":1,"operation":"DEPOSIT","replay":false,"rrn":"1234512120500012","time":"2012-12-05T10:00:00Z",
    "server":"10.0.0.6:8080","attempts":[{"server":"10.0.0.5:8080","reached":false,"problem":"refused"},
    {"server":"10.0.0.6:8080","reached":true}],"code":0,"state":"SUCCESS","stateCode":"OK","ended":"SUCCESS OK",
    "offline":false})"));
  const nlohmann::json full = Facts({"trace", "--exchange", "1"});
  EXPECT_EQ(full["request"]["putDepositRequest"]["request"]["cardNum"], "******0002");
  EXPECT_EQ(full["answer"]["putDepositResponse"]["response"]["requestStateCode"], "OK");
  EXPECT_EQ(full["call"], "DepositProc(700)");
  EXPECT_EQ(full["trouble"], nlohmann::json::array());
  EXPECT_EQ(full["slip"], nullptr);
}

TEST_F(TraceCommand, TellsAProgramOfEachExchangeInALine) {
  Write("TRACE.TXT", ReadGolden("offline_payment.trace") + ReadGolden("cut_answer.trace"));
  const std::string out = Run({"--json", "trace"}).out;
  const size_t end = out.find('\n');
  const nlohmann::json first = nlohmann::json::parse(out.substr(0, end));
  EXPECT_EQ(first["offline"], true);
  EXPECT_EQ(first["server"], nullptr);
  EXPECT_EQ(nlohmann::json::parse(out.substr(end))["code"], -402);
}

#ifndef _WIN32
TEST_F(TraceCommand, FollowsATraceThatGrowsAndIsMadeAnew) {
  Put("refused");
  const std::unique_ptr<test::Process> follow = Start({"trace", "--follow"});
  EXPECT_TRUE(test::Eventually([&] { return follow->Out() == ReadGolden("refused.list"); })) << follow->Out();

  // A line that has not come to its end yet.
  const std::string more = ReadGolden("lost_answer.trace");
  std::ofstream(folder / "TRACE.TXT", std::ios::binary | std::ios::app) << more.substr(0, more.size() / 2);
  std::ofstream(folder / "TRACE.TXT", std::ios::binary | std::ios::app) << more.substr(more.size() / 2);
  EXPECT_TRUE(test::Eventually([&] { return follow->Out().find("    2  ") != std::string::npos; }));
  EXPECT_THAT(follow->Out(), EndsWith("-401  no answer\n"));

  std::filesystem::remove(folder / "TRACE.TXT");
  EXPECT_TRUE(test::Eventually([&] { return follow->Err().find("there is no trace") != std::string::npos; }));
  Put("second_server");
  EXPECT_TRUE(test::Eventually([&] { return follow->Out().find("    3  ") != std::string::npos; }));
  EXPECT_THAT(follow->Out(), EndsWith("10.0.0.6:8080 2nd              0  SUCCESS OK\n"));

  // Another of the same name, longer than the one before.
  Write("TRACE.TXT", ReadGolden("replay.trace") + ReadGolden("online_payment.trace"));
  EXPECT_TRUE(test::Eventually([&] { return follow->Out().find("    5  ") != std::string::npos; }));
  EXPECT_THAT(follow->Err(), EndsWith("a new trace\n"));
  EXPECT_FALSE(follow->HasEnded());
  follow->Signal(SIGINT);
  EXPECT_EQ(follow->Wait().status, 128 + SIGINT);
}

TEST_F(TraceCommand, FollowsForNobody) {
  Put("refused");
  const std::string line = REGISTER_PROGRAM " --library '" + library.string() + "' trace --follow >/dev/full";
  const test::Outcome run = test::Process("/bin/sh", {"-c", line}, fresh.path()).Wait();
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err, "register: standard output cannot be written\n");
}
#endif

TEST_F(TraceCommand, FollowsATraceThatIsNotThereYet) {
  const std::unique_ptr<test::Process> follow = Start({"trace", "--follow"});
  EXPECT_TRUE(test::Eventually([&] { return !follow->Err().empty(); }));
  EXPECT_THAT(follow->Err(), StartsWith("register: there is no trace"));
  Put("refused");
  EXPECT_TRUE(test::Eventually([&] { return follow->Out() == ReadGolden("refused.list"); })) << follow->Out();
}

}  // namespace
