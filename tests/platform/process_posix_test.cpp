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

TEST(PosixModuleFileName, ACutNameIsTerminated) {
  WCHAR name[4] = {u'*', u'*', u'*', u'*'};
  EXPECT_EQ(GetModuleFileNameW(nullptr, name, 3), 3u);
  EXPECT_EQ(name[0], u'/');
  EXPECT_EQ(name[2], 0);
  EXPECT_EQ(name[3], u'*');
  EXPECT_EQ(GetModuleFileNameW(nullptr, name, 0), 0u);
  EXPECT_EQ(GetLastError(), 122u);
}

}  // namespace
}  // namespace lumo
