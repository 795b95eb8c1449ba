// The language of faults, and what they do to an answer's text.
#include "loyalty_server/fault.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace {

using loyalty::Fault;
using loyalty::FaultKind;
using loyalty::FaultText;
using loyalty::ParseFault;
using nlohmann::ordered_json;

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
      {"extra ad/text 7", R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":7}}})"},
      {"name putPaymentResponse",
       R"({"putPaymentResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"}}})"},
      {"duplicate", R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"}}})"
                    R"({"getAdResponse":{"response":{"ver":"1","message":"да"},"ad":{"text":"x"}}})"},
      {"rubbish no JSON at all", "no JSON at all"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(loyalty::Spoil(ParseFault(row.first), ordered_json::parse(answer)), row.second) << row.first;
  }
}

TEST(Faults, AnErrorPageNamesItsStatus) {
  EXPECT_THAT(loyalty::Spoil(ParseFault("http 400"), ordered_json()), testing::HasSubstr("HTTP Status 400 "));
  EXPECT_THAT(loyalty::Spoil(ParseFault("http 500"), ordered_json()), testing::HasSubstr("HTTP Status 500 "));
}

TEST(Faults, TheHelpNamesEveryOne) {
  for (const char *word : {"off", "refuse", "silence", "http", "refusal", "rubbish", "delay", "pieces", "cut",
                           "reset", "duplicate", "without", "extra", "name"}) {
    EXPECT_THAT("\n" + std::string(loyalty::FaultHelp()),
                testing::HasSubstr(std::string("\n  ") + word + " "))
        << word;
  }
}

}  // namespace
