// platform/process_test.cpp: the calls on the process and the clock, as every host answers them.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "platform/platform.h"

namespace lumo {
namespace {

using Wide = std::basic_string<WCHAR>;

Wide ModuleFile() {
  WCHAR name[1000];
  const DWORD length = GetModuleFileNameW(nullptr, name, 1000);
  return {name, length};
}

TEST(ModuleFileName, IsTheAbsolutePathOfTheFileWithTheLibrarysCode) {
  const Wide name = ModuleFile();
  const std::filesystem::path path(std::u16string(name.begin(), name.end()));
  EXPECT_TRUE(path.is_absolute());
  EXPECT_TRUE(std::filesystem::is_regular_file(path));
  EXPECT_EQ(path.stem(), "platform_test");
  EXPECT_NE(name.rfind(kPathSeparator), Wide::npos);
}

TEST(ModuleFileName, DoesNotFollowTheCurrentFolder) {
  const Wide before = ModuleFile();
  std::filesystem::current_path(std::filesystem::temp_directory_path());
  EXPECT_EQ(ModuleFile(), before);
}

TEST(ModuleFileName, FitsWithItsTerminatorOrIsCutAndSaysSo) {
  const Wide whole = ModuleFile();
  const auto length = static_cast<DWORD>(whole.size());
  WCHAR name[1000];
  EXPECT_EQ(GetModuleFileNameW(nullptr, name, length + 1), length);
  EXPECT_EQ(Wide(name), whole);
  EXPECT_EQ(GetModuleFileNameW(nullptr, name, length), length);
  EXPECT_EQ(GetLastError(), 122u);
  // Whether the last unit is a terminator differs between systems.
  EXPECT_EQ(Wide(name, length - 1), whole.substr(0, length - 1));
  EXPECT_EQ(GetModuleFileNameW(nullptr, name, 2), 2u);
  EXPECT_EQ(Wide(name, 1), whole.substr(0, 1));
}

TEST(SystemTime, IsTheCurrentUtcTime) {
  const std::time_t before = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  SYSTEMTIME now = {};
  GetSystemTime(&now);
  const std::time_t after = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  EXPECT_LT(now.wMilliseconds, 1000);
  char text[64], first[64], last[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d %d", now.wYear, now.wMonth, now.wDay,
                now.wHour, now.wMinute, now.wSecond, now.wDayOfWeek);
  std::strftime(first, sizeof first, "%Y-%m-%d %H:%M:%S %w", std::gmtime(&before));
  std::strftime(last, sizeof last, "%Y-%m-%d %H:%M:%S %w", std::gmtime(&after));
  EXPECT_LE(std::string(first), text);
  EXPECT_LE(std::string(text), last);
}

TEST(DebugText, FormatsWideTextsAndNumbers) {
  testing::internal::CaptureStderr();
  NKDbgPrintfW(LUMO_WIDE("%s(%d): касса 100%% %s\n"), LUMO_WIDE("чек \U0001F9FE"), -42, LUMO_WIDE(""));
  std::string text = testing::internal::GetCapturedStderr();
  const size_t carriage_return = text.find('\r');
  if (carriage_return != std::string::npos) text.erase(carriage_return, 1);
  EXPECT_EQ(text, "чек \U0001F9FE(-42): касса 100% \n");
}

void SayGoodbye() {
  std::fputs("goodbye", stderr);
  std::fflush(stderr);
}

TEST(ExitDeathTest, RunsTheExitHandlersAndGivesTheStatus) {
  EXPECT_EXIT(
      {
        std::atexit(SayGoodbye);
        PlatformExit(3);
      },
      testing::ExitedWithCode(3), "goodbye");
}

TEST(ExitDeathTest, ABreakWithoutADebuggerEndsTheProcess) {
  EXPECT_DEATH(DebugBreak(), "");
}

}  // namespace
}  // namespace lumo
