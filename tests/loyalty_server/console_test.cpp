// The commands of the running server.
#include "loyalty_server/console.h"

#include <gmock/gmock.h>

#include "loyalty_server/bench.h"
#include "loyalty_server/client.h"

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
  EXPECT_EQ(Run("card 200 lost"), "a card is sold, active or locked\n");
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
  EXPECT_EQ(Run("fault explode"), "no such fault: explode\n");
  EXPECT_EQ(Run("fault"), "fault cut 120 times 2\n") << "a wrong command changes nothing";
  EXPECT_EQ(Run("fault refuse"), "fault refuse\n");
  EXPECT_THROW(bench::Client{server.port()}, std::system_error);
  EXPECT_EQ(Run("fault off\r"), "fault off\n");
  bench::Client client(server.port());
}

TEST_F(Console, KnowsWhenToStopAndWhatItDoesNotKnow) {
  EXPECT_TRUE(RunCommand(&server, "quit").isQuit);
  EXPECT_FALSE(RunCommand(&server, "").isQuit);
  EXPECT_EQ(Run(""), "");
  for (const char *line :
       {"dance", "card", "terminal 12345", "terminal 12345 open", "update later", "last"}) {
    EXPECT_EQ(Run(line), "no such command, or a word is missing; try help\n") << line;
  }
  EXPECT_THAT(Run("help"), HasSubstr("fault [FAULT]"));
}

}  // namespace
