// foundation/debug_check_posix_test.cpp: where no debugger is attached, a failed check ends the process; its
// line is on the error stream.
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

// As under a debugger that goes on.
TEST(DebugCheck, ThatIsPassedOverGoesOn) {
  signal(SIGTRAP, SIG_IGN);
  testing::internal::CaptureStderr();
  lumo::DebugCheckFailed("transaction", 7);
  lumo::DebugCheckFailed(nullptr, 8);
  signal(SIGTRAP, SIG_DFL);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Unknown: DEBUGCHK failed in file transaction at line 7 \r\n"
            "Unknown: DEBUGCHK failed in file  at line 8 \r\n");
}

}  // namespace
