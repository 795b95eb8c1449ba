// Where no debugger is attached, a failed check ends the process; its line is on the error stream.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "foundation/debug_check.h"

namespace {

TEST(DebugCheck, PrintsItsPlaceAndBreaks) {
  EXPECT_EXIT(lumo::DebugCheckFailed("transaction", 1234), testing::KilledBySignal(SIGTRAP),
              testing::StrEq("Unknown: DEBUGCHK failed in file transaction at line 1234 \r\n"));
}

TEST(DebugCheck, BreaksWithoutAFileNameToo) {
  EXPECT_EXIT(lumo::DebugCheckFailed(nullptr, 1), testing::KilledBySignal(SIGTRAP),
              testing::StrEq("Unknown: DEBUGCHK failed in file  at line 1 \r\n"));
}

}  // namespace
