// api/shift_calls_test.cpp: shifts and state as the register calls them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "config/lumoconfig.h"
#include "config/lumostate.h"
#include "lumo.h"
#include "support/folder.h"
#include "support/test_clock.h"

namespace {

class ShiftCalls : public testing::Test {
 protected:
  ShiftCalls() { test::SetClock(2012, 12, 5, 10, 0, 0); }
  ~ShiftCalls() override {
    CloseTransaction();
    lumo::ReleaseState();
    lumo::ReleaseSettings();
    test::ReleaseClock();
  }

  test::Folder folder;
};

TEST_F(ShiftCalls, AShiftFromOpeningToClosing) {
  EXPECT_EQ(OpenShift("42"), 0);
  EXPECT_EQ(OpenShift("43"), -601);
  test::SetClock(2012, 12, 5, 20, 0, 0);
  EXPECT_EQ(CloseShift(), 0);
  EXPECT_EQ(folder.Read("STATE"),
            "{\"shiftId\":\"42\",\"shiftOpenDate\":\"2012-12-05T10:00:00Z\","
            "\"shiftCloseDate\":\"2012-12-05T20:00:00Z\",\"offline\":0,\"shiftState\":0,\"update\":0}");
  EXPECT_EQ(CloseShift(), 0);
}

TEST_F(ShiftCalls, NoShiftClosesOverAnOpenTransaction) {
  ASSERT_EQ(OpenShift("42"), 0);
  ASSERT_EQ(CreateTransaction("1", "2"), 0);
  folder.ClearTrace();
  EXPECT_EQ(CloseShift(), -603);
  EXPECT_EQ(folder.Trace(), "CloseShift\n");
  ASSERT_EQ(CloseTransaction(), 0);
  EXPECT_EQ(CloseShift(), 0);
}

TEST_F(ShiftCalls, LoadStateReadsTheFile) {
  folder.Write("STATE", "{\"update\":7}");
  EXPECT_EQ(LoadState(), 0);
  EXPECT_EQ(getNeedUpdate(), 7);
  folder.Write("STATE", "[]");
  EXPECT_EQ(LoadState(), -108);
}

TEST_F(ShiftCalls, InitStateEmptiesTheMemory) {
  folder.Write("STATE", "{\"update\":7}");
  ASSERT_EQ(LoadState(), 0);
  EXPECT_EQ(InitState(), 0);
  EXPECT_EQ(getNeedUpdate(), 0);
}

TEST_F(ShiftCalls, TheOfflineFlagComesFromTheFile) {
  EXPECT_EQ(setOfflineState(1), 0);
  EXPECT_EQ(folder.Read("STATE"), "{\"offline\":1,\"shiftState\":0,\"update\":0}");
  EXPECT_EQ(getOfflineState(), 1);
  folder.Write("STATE", "{}");
  EXPECT_EQ(getOfflineState(), 0);
}

TEST_F(ShiftCalls, TheUpdateFlagIsTheOneInMemory) {
  EXPECT_EQ(setNeedUpdate(1), 0);
  EXPECT_EQ(folder.Read("STATE"), "{\"offline\":0,\"shiftState\":0,\"update\":1}");
  folder.Write("STATE", "{}");
  EXPECT_EQ(getNeedUpdate(), 1);
}

}  // namespace
