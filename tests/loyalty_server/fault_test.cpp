// loyalty_server/fault_test.cpp: the language of faults, and what they do to an answer's text.
#include "loyalty_server/fault.h"

#include <gmock/gmock.h>

#include <set>
#include <stdexcept>

namespace {

using loyalty::Fault;
using loyalty::FaultKind;
using loyalty::FaultText;
using loyalty::ParseFault;

TEST(Faults, AreReadAndWrittenInTheSameWords) {
  const std::pair<const char *, const char *> rows[] = {
      {"off", "off"},
      {"refuse", "refuse"},
      {"  silence  ", "silence"},
      {"silence on payment times 3", "silence on payment times 3"},
      {"silence times 3 on payment", "silence on payment times 3"},
      {"http 500", "http 500"},
      {"refusal LOCKED_CARD", "refusal LOCKED_CARD"},
      {"rubbish {\"a\":  1", "rubbish {\"a\": 1"},
      {"delay 250", "delay 250"},
      {"pieces 7", "pieces 7 0"},
      {"pieces 7 10", "pieces 7 10"},
      {"cut", "cut"},
      {"cut 0", "cut 0"},
      {"cut 120 times 2", "cut 120 times 2"},
      {"reset", "reset"},
      {"reset 10", "reset 10"},
      {"duplicate", "duplicate"},
      {"without bill", "without bill"},
      {"without response/message on ad", "without response/message on ad"},
      {"extra ad", "extra ad {\"text\":\"extra\"}"},
      {"extra strange", "extra strange \"extra\""},
      {"extra response/isNeedUpdate true", "extra response/isNeedUpdate true"},
      {"extra deposit {\"amount\": 5} times 1", "extra deposit {\"amount\":5} times 1"},
      {"name getAdResponse", "name getAdResponse"},
      {"blackhole for 2000", "blackhole for 2000"},
      {"refuse for 1", "refuse for 1"},
      {"hangup times 2", "hangup times 2"},
      {"delay 5 for 100 times 2 on ad", "delay 5 on ad times 2 for 100"},
      {"without /response/message", "without /response/message"},
      {"random 20 seed 7", "random 20 seed 7"},
      {"random 100 among cut,silence seed 4294967295 on payment times 9",
       "random 100 seed 4294967295 among cut,silence on payment times 9"},
  };
  for (const auto &row : rows) {
    const Fault fault = ParseFault(row.first);
    EXPECT_EQ(FaultText(fault), row.second) << row.first;
    EXPECT_EQ(FaultText(ParseFault(FaultText(fault))), row.second) << row.first;
  }
}

TEST(Faults, ThatMakeNoSenseAreRefused) {
  const char *texts[] = {"",
                         "   ",
                         "explode",
                         "cut x",
                         "cut -1",
                         "cut 1 2",
                         "cut 99999999999999999999",
                         "delay",
                         "http",
                         "http 99",
                         "http 600",
                         "pieces 0",
                         "refusal",
                         "refusal OK",
                         "refusal WHATEVER",
                         "without",
                         "name",
                         "extra",
                         "extra ad {",
                         "silence now",
                         "silence times 0",
                         "silence on teapot",
                         "refuse times 2",
                         "refuse on payment",
                         "blackhole times 2",
                         "blackhole on payment",
                         "hangup on payment",
                         "silence for 0",
                         "silence for ever",
                         "without a~2b",
                         "extra a~2b 5",
                         "random",
                         "random 0",
                         "random 101",
                         "random 20 seed",
                         "random 20 seed -1",
                         "random 20 seed 4294967296",
                         "random 20 among",
                         "random 20 among teapot",
                         "random 20 among cut,refuse",
                         "random 20 among off",
                         "random 20 among random",
                         "random 20 of cut",
                         "name \xff",
                         "without response/\xff",
                         "extra response/\xff 5",
                         "off 5"};
  for (const char *text : texts) EXPECT_THROW(ParseFault(text), std::invalid_argument) << text;
}

TEST(Faults, AreOffAfterNothingUnlessTold) {
  EXPECT_EQ(ParseFault("cut 5").times, loyalty::kUntilOff);
  EXPECT_EQ(ParseFault("cut 5 times 4").times, 4);
  EXPECT_EQ(ParseFault("cut 5 on rrn").operation, loyalty::FindOperation("rrn"));
  EXPECT_EQ(ParseFault("cut 5").operation, nullptr);
}

TEST(Faults, ChangeTheAnswer) {
  const char *answer = R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"}}})";
  const std::pair<const char *, const char *> rows[] = {
      {"off", R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"}}})"},
      {"without ad", R"({"getAdResponse":{"response":{"ver":"1","message":"да"}}})"},
      {"without response/message", R"({"getAdResponse":{"response":{"ver":"1"},"ad":{"text":"x"}}})"},
      {"without nothing/here",
       R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"}}})"},
      {"without ad/text/deep",
       R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"}}})"},
      {"extra rrn 5",
       R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"},"rrn":5}})"},
      {"extra a/b/c null",
       R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"},"a":{"b":{"c":null}}}})"},
      {"extra ad/text/deep 7",
       R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"}}})"},
      {"extra list [1,2]",
       R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"},"list":[1,2]}})"},
      {"without /ad/text", R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{}}})"},
      {"extra a~1b 5",
       R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"},"a/b":5}})"},
      {"extra ad/text 7", R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":7}}})"},
      {"name putPaymentResponse",
       R"({"putPaymentResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"}}})"},
      {"duplicate", R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"}}})"
                    R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"}}})"},
      {"rubbish no JSON at all", "no JSON at all"},
      {"silence", ""},
      {"cut 5", R"({"get)"},
      {"reset 5", R"({"get)"},
      {"cut 100000", R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"}}})"},
      {"cut", R"({"getAdResponse":{"response":{"ver":"1)"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(loyalty::Spoil(ParseFault(row.first), answer), row.second) << row.first;
  }
}

TEST(Faults, TakeOneOfAList) {
  EXPECT_EQ(loyalty::Spoil(ParseFault("without bill/good/1"), R"({"a":{"bill":{"good":[1,2,3]}}})"),
            R"({"a":{"bill":{"good":[1,3]}}})");
  EXPECT_EQ(loyalty::Spoil(ParseFault("extra bill/good/0/cnt 7"), R"({"a":{"bill":{"good":[{"cnt":1}]}}})"),
            R"({"a":{"bill":{"good":[{"cnt":7}]}}})");
  EXPECT_EQ(loyalty::Spoil(ParseFault("without bill/good/9"), R"({"a":{"bill":{"good":[1]}}})"),
            R"({"a":{"bill":{"good":[1]}}})");
}

TEST(Faults, AddToTheEndOfAListAndNoFurther) {
  const char *answer = R"({"a":{"good":[1]}})";
  const std::pair<const char *, const char *> rows[] = {
      {"extra good/1 7", R"({"a":{"good":[1,7]}})"},
      {"extra good/- 7", R"({"a":{"good":[1,7]}})"},
      {"extra good/1/0 7", R"({"a":{"good":[1,[7]]}})"},
      {"extra new/0 7", R"({"a":{"good":[1],"new":[7]}})"},
      {"extra good/2 7", answer},
      {"extra good/4000000000 7", answer},
      {"extra good/40000000000/title 7", answer},
      {"extra good/18446744073709551614 7", answer},
      {"extra new/1 7", answer},
      {"extra new/4000000000/title 7", answer},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(loyalty::Spoil(ParseFault(row.first), answer), row.second) << row.first;
  }
}

TEST(Faults, TakeAValueThatIsNotNestedTooDeep) {
  const auto nested = [](size_t depth) {
    return "extra a " + std::string(depth, '[') + std::string(depth, ']');
  };
  EXPECT_EQ(ParseFault(nested(100)).value, std::string(100, '[') + std::string(100, ']'));
  EXPECT_THROW(ParseFault(nested(101)), std::invalid_argument);
  EXPECT_THROW(ParseFault(nested(300000)), std::invalid_argument);
}

TEST(Faults, OfChanceGetASeedWhenNoneIsNamed) {
  const std::string text = FaultText(ParseFault("random 20"));
  EXPECT_THAT(text, testing::StartsWith("random 20 seed "));
  EXPECT_EQ(FaultText(ParseFault(text)), text);
}

TEST(Faults, DrawnByChanceAreOnesThatARequestCanMeet) {
  const Fault every = ParseFault("random 100 seed 1");
  const Fault some = ParseFault("random 100 seed 1 among cut,http");
  std::set<FaultKind> seen;
  for (uint64_t draw = 0; draw < 5000; ++draw) {
    const Fault fault = loyalty::DrawnFault(every, draw * 7919);
    EXPECT_FALSE(loyalty::IsOfConnection(fault.kind));
    EXPECT_NE(fault.kind, FaultKind::kOff);
    EXPECT_EQ(FaultText(ParseFault(FaultText(fault))), FaultText(fault));
    seen.insert(fault.kind);
    const FaultKind kind = loyalty::DrawnFault(some, draw * 7919).kind;
    EXPECT_TRUE(kind == FaultKind::kCut || kind == FaultKind::kHttp);
  }
  EXPECT_EQ(seen.size(), 12u) << "from silence to name";
}

TEST(Faults, AnErrorPageNamesItsStatus) {
  EXPECT_THAT(loyalty::Spoil(ParseFault("http 400"), ""), testing::HasSubstr("HTTP Status 400 "));
  EXPECT_THAT(loyalty::Spoil(ParseFault("http 500"), ""), testing::HasSubstr("HTTP Status 500 "));
}

TEST(Faults, TheHelpNamesEveryOne) {
  for (const char *word :
       {"off", "refuse", "silence", "http", "refusal", "rubbish", "delay", "pieces", "cut", "reset",
        "duplicate", "without", "extra", "name", "blackhole", "hangup", "random"}) {
    EXPECT_THAT("\n" + std::string(loyalty::FaultHelp()),
                testing::HasSubstr(std::string("\n  ") + word + " "))
        << word;
  }
}

}  // namespace
