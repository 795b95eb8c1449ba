// platform/process_posix_test.cpp: what only this implementation decides: how a process ends, its texts for a
// debugger, and a name that is cut.
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

TEST(PosixDebugText, HalfAPairIsAReplacementCharacter) {
  const WCHAR texts[][3] = {
      {0xD83D, 0}, {0xDE00, u'a', 0}, {0xD83D, u'a', 0}, {0xD83D, 0x0436, 0}, {0xE000, 0}};
  testing::internal::CaptureStderr();
  for (const WCHAR *text : texts) NKDbgPrintfW(u"%s,", text);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "\xEF\xBF\xBD,\xEF\xBF\xBD"
            "a,\xEF\xBF\xBD"
            "a,\xEF\xBF\xBD\xD0\xB6,\xEE\x80\x80,");
}

// As under a debugger that goes on.
TEST(PosixBreak, MayBePassedOver) {
  std::signal(SIGTRAP, SIG_IGN);
  DebugBreak();
  std::signal(SIGTRAP, SIG_DFL);
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
