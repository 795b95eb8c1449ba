// loyalty_server/fault_plan_test.cpp: which fault strikes which request.
#include "loyalty_server/fault_plan.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace {

using loyalty::FaultPlan;
using loyalty::FaultText;
using loyalty::FindOperation;
using loyalty::ParseFault;
using loyalty::ParseFaultScript;
using testing::ElementsAre;

// What strikes so many requests of an operation, one after another.
std::vector<std::string> Take(FaultPlan *plan, int count, const char *method = "payment") {
  std::vector<std::string> taken;
  for (int i = 0; i < count; ++i) taken.push_back(FaultText(plan->Take(FindOperation(method))));
  return taken;
}

TEST(FaultPlans, AnEmptyOneBehaves) {
  FaultPlan plan;
  EXPECT_THAT(Take(&plan, 2), ElementsAre("off", "off"));
  EXPECT_FALSE(plan.TakeHangUp());
  plan.Advance();
  EXPECT_EQ(FaultText(plan.fault()), "off");
}

TEST(FaultPlans, OneFaultStrikesUntilItIsOff) {
  FaultPlan plan(ParseFault("cut 5"));
  EXPECT_THAT(Take(&plan, 3), ElementsAre("cut 5", "cut 5", "cut 5"));
  plan.Advance();
  EXPECT_THAT(Take(&plan, 1), ElementsAre("off"));
}

TEST(FaultPlans, AFaultStrikesItsTimesAndItsOperation) {
  FaultPlan plan(ParseFault("cut 5 on payment times 2"));
  EXPECT_THAT(Take(&plan, 2, "ad"), ElementsAre("off", "off"));
  EXPECT_THAT(Take(&plan, 1), ElementsAre("cut 5"));
  EXPECT_EQ(FaultText(plan.fault()), "cut 5 on payment times 1");
  EXPECT_THAT(Take(&plan, 2), ElementsAre("cut 5", "off"));
}

TEST(FaultPlans, AScriptGoesFromLineToLine) {
  FaultPlan plan = ParseFaultScript(
      "# a bad morning\n"
      "\n"
      "cut 5\r\n"
      "  off times 2\n"
      "silence on ad\n"
      "http 500 times 2");
  EXPECT_EQ(plan.step_count(), 4u);
  EXPECT_THAT(Take(&plan, 3), ElementsAre("cut 5", "off", "off"));
  EXPECT_EQ(plan.step(), 2u);
  EXPECT_THAT(Take(&plan, 2), ElementsAre("off", "off")) << "the third line waits for its operation";
  EXPECT_THAT(Take(&plan, 1, "ad"), ElementsAre("silence"));
  EXPECT_THAT(Take(&plan, 4), ElementsAre("http 500", "http 500", "off", "off"));
  EXPECT_EQ(plan.step_count(), 0u);
}

TEST(FaultPlans, AScriptIsRepeatedWhenItSaysSo) {
  FaultPlan plan = ParseFaultScript("cut 5\noff\nrepeat\n");
  EXPECT_THAT(Take(&plan, 5), ElementsAre("cut 5", "off", "cut 5", "off", "cut 5"));
}

TEST(FaultPlans, AConnectionThatIsHungUpIsCounted) {
  FaultPlan plan = ParseFaultScript("hangup times 2\ncut 5\n");
  EXPECT_THAT(Take(&plan, 1), ElementsAre("off")) << "a request that came before is not concerned";
  EXPECT_TRUE(plan.TakeHangUp());
  EXPECT_TRUE(plan.TakeHangUp());
  EXPECT_FALSE(plan.TakeHangUp());
  EXPECT_THAT(Take(&plan, 1), ElementsAre("cut 5"));
}

TEST(FaultPlans, AScriptThatMakesNoSenseNamesItsLine) {
  const std::pair<const char *, const char *> rows[] = {
      {"off\n\nexplode\n", "line 3: no such fault: explode"},
      {"refuse\n", "line 1: say how long it lasts, for MS"},
      {"off\nblackhole\n", "line 2: say how long it lasts, for MS"},
      {"repeat\n", "line 1: there is nothing to repeat"},
      {"cut 5\nrepeat\ncut 6\n", "line 3: repeat is the last line"},
  };
  for (const auto &row : rows) {
    try {
      ParseFaultScript(row.first);
      ADD_FAILURE() << row.first << " was accepted";
    } catch (const std::invalid_argument &error) {
      EXPECT_STREQ(error.what(), row.second);
    }
  }
}

TEST(FaultPlans, ChanceIsTheSameForTheSameSeed) {
  FaultPlan plan(ParseFault("random 30 seed 7"));
  FaultPlan again(ParseFault("random 30 seed 7"));
  FaultPlan other(ParseFault("random 30 seed 8"));
  const std::vector<std::string> taken = Take(&plan, 1000);
  EXPECT_EQ(Take(&again, 1000), taken);
  EXPECT_NE(Take(&other, 1000), taken);
  const auto spared = std::count(taken.begin(), taken.end(), "off");
  EXPECT_GT(spared, 600);
  EXPECT_LT(spared, 800);
}

// The 64-bit Mersenne Twister, two numbers a request: whether it is struck, and by what. A script that
// somebody keeps means the same on every system.
TEST(FaultPlans, ChanceIsTheSameEverywhere) {
  FaultPlan plan(ParseFault("random 50 seed 7 among cut,http"));
  EXPECT_THAT(Take(&plan, 8),
              ElementsAre("cut 494", "off", "cut 617", "cut 462", "off", "http 500", "cut 155", "off"));
}

TEST(FaultPlans, ChanceStrikesItsTimes) {
  FaultPlan plan(ParseFault("random 50 seed 7 among silence times 3"));
  const std::vector<std::string> taken = Take(&plan, 100);
  EXPECT_EQ(std::count(taken.begin(), taken.end(), "silence"), 3);
  FaultPlan always(ParseFault("random 100 seed 7 among silence on ad"));
  EXPECT_THAT(Take(&always, 2), ElementsAre("off", "off"));
  EXPECT_THAT(Take(&always, 2, "ad"), ElementsAre("silence", "silence"));
}

TEST(FaultPlans, ChanceInARepeatedScriptThrowsItsDiceOn) {
  FaultPlan plan = ParseFaultScript("random 100 seed 7 among cut\nrepeat\n");
  const std::vector<std::string> taken = Take(&plan, 3);
  EXPECT_NE(taken[0], taken[1]);
  EXPECT_NE(taken[1], taken[2]);
}

}  // namespace
