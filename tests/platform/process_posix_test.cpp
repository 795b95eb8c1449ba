#include <gtest/gtest.h>

#include <csignal>

#include "platform/platform.h"

namespace lumo {
namespace {

TEST(PosixExitDeathTest, StatusMinusOneIs255) {
  EXPECT_EXIT(PlatformExit(-1), testing::ExitedWithCode(255), "");
}

TEST(PosixExitDeathTest, ABreakIsTheTrapSignal) {
  EXPECT_EXIT(DebugBreak(), testing::KilledBySignal(SIGTRAP), "");
}

TEST(PosixDebugText, ANullTextAndAnUnknownConversionSurvive) {
  testing::internal::CaptureStderr();
  NKDbgPrintfW(u"%s %q %", static_cast<const WCHAR *>(nullptr));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "(null) %q %");
}

}  // namespace
}  // namespace lumo
