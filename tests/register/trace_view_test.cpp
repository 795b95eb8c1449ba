// register/trace_view_test.cpp: how an exchange looks.
#include "trace_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

namespace {

using testing::HasSubstr;
using testing::Not;

TEST(TraceView, IndentsADocument) {
  EXPECT_EQ(reg::Indented(R"({"a":1,"b":[],"c":{},"d":[1,{"e":"x, {\"y\": 1}"}]})"),
            "{\n"
            "  \"a\": 1,\n"
            "  \"b\": [],\n"
            "  \"c\": {},\n"
            "  \"d\": [\n"
            "    1,\n"
            "    {\n"
            "      \"e\": \"x, {\\\"y\\\": 1}\"\n"
            "    }\n"
            "  ]\n"
            "}");
}

TEST(TraceView, IndentsWhatIsNoDocument) {
  EXPECT_EQ(reg::Indented("{\"a\":{\"b"), "{\n  \"a\": {\n    \"b");
  EXPECT_EQ(reg::Indented("]}"), "\n]\n}");
  EXPECT_EQ(reg::Indented(""), "");
  EXPECT_EQ(reg::Indented("\"\\"), "\"\\");
  // However deep: a line for each bracket, and no deeper than a screen.
  EXPECT_LT(reg::Indented(std::string(100000, '[')).size(), 100000u * 82u);
}

TEST(TraceView, ShowsWhatAScreenCanShow) {
  EXPECT_EQ(reg::Showable("Хлеб\n"), "Хлеб\n");
  EXPECT_EQ(reg::Showable("a\x1b[2Jb\tc\x7f"), "a?[2Jb?c?");
  EXPECT_EQ(reg::Showable("\xD0"), "?");
  EXPECT_EQ(reg::Showable("\xFF\xC0\xAF\xED\xA0\x80"), "??????");
  EXPECT_EQ(reg::Showable("\xC2\x9B"), "??");
  EXPECT_EQ(reg::Showable(std::string("\0", 1)), "?");
}

TEST(TraceView, HidesCardsInEveryMember) {
  reg::Exchange exchange;
  exchange.operation = "LINK";
  exchange.call = "LinkCardProc(1000000008)";
  exchange.cards = {"1000000008"};
  exchange.request = R"({"r":{"cardNum":"1000000001"}})";
  exchange.answer = R"({"message":"1000000001 1000000008"})";
  exchange.stateCode = "1000000001";
  exchange.problems = {"ERROR: 1000000001"};
  exchange.slip = "  1000000001\n";
  exchange.fatal = "ERROR: ASSERT IN x LINE 1: 1000000001";
  reg::CardMask mask;
  for (const std::string &text : {reg::TraceInFull(exchange, mask), reg::TraceLine(exchange, mask),
                                  reg::TraceFacts(exchange, mask, true).Text()}) {
    EXPECT_THAT(text, Not(HasSubstr("100000000"))) << text;
  }
  reg::CardMask open(true);
  EXPECT_THAT(reg::TraceInFull(exchange, open), HasSubstr("LinkCardProc(1000000008)"));
}

TEST(TraceView, TellsAProgramAnAnswerThatNoProgramCouldRead) {
  reg::Exchange exchange;
  reg::CardMask mask;
  for (const std::string &answer :
       {std::string("{\"a\":"), std::string("\xFF"), std::string(1000000, '[') + std::string(1000000, ']')}) {
    exchange.answer = answer;
    const nlohmann::json facts = nlohmann::json::parse(reg::TraceFacts(exchange, mask, true).Text());
    EXPECT_TRUE(facts["answer"].is_string());
  }
  exchange.answer = R"({"a":[1]})";
  EXPECT_EQ(nlohmann::json::parse(reg::TraceFacts(exchange, mask, true).Text())["answer"],
            nlohmann::json::parse(exchange.answer));
}

TEST(TraceView, SaysHowAnExchangeEnded) {
  reg::Exchange exchange;
  EXPECT_EQ(reg::Ending(exchange), "the trace ends before a server is reached");
  exchange.sent = true;
  EXPECT_EQ(reg::Ending(exchange), "the trace has no end of it");
  exchange.code = -405;
  exchange.state = "CANCELED";
  exchange.stateCode = "OK";
  EXPECT_EQ(reg::Ending(exchange), "refused: CANCELED OK");
  exchange.code = -401;
  exchange.replayed = true;
  EXPECT_EQ(reg::Ending(exchange), "no answer (replay)");
  exchange.code = -501;
  exchange.replayed = false;
  exchange.offline = reg::Offline::kRefused;
  EXPECT_EQ(reg::Ending(exchange), "no server, not done offline: -104");
  exchange.offline = reg::Offline::kRecorded;
  exchange.fatal = "ERROR: ASSERT IN x";
  EXPECT_EQ(reg::Ending(exchange), "no server, recorded offline; the library ended the register");
}

}  // namespace
