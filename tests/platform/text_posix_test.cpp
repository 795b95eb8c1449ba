// platform/text_posix_test.cpp: what only this implementation decides of a text: halves of characters, and
// arguments the library never gives.
#include <gtest/gtest.h>

#include <string>

#include "platform/platform.h"

namespace lumo {
namespace {

TEST(PosixText, ACharacterThatTheLengthCutsIsReplaced) {
  WCHAR wide[4];
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "\xD0\xB6", 1, wide, 4), 1);
  EXPECT_EQ(wide[0], 0xFFFD);
}

TEST(PosixText, HalfAPairIsReplaced) {
  struct {
    WCHAR wide[2];
    int length;
    const char *narrow;
  } const rows[] = {
      {{0xD83D, 0}, 1, "\xEF\xBF\xBD"},
      {{0xDE00, 0}, 1, "\xEF\xBF\xBD"},
      {{0xD83D, u'a'},
       2,
       "\xEF\xBF\xBD"
       "a"},
      {{0xD83D, 0xE000}, 2, "\xEF\xBF\xBD\xEE\x80\x80"},
  };
  for (const auto &row : rows) {
    char narrow[8] = {};
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, row.wide, row.length, narrow, 8, nullptr, nullptr),
              static_cast<int>(std::string(row.narrow).size()));
    EXPECT_STREQ(narrow, row.narrow);
  }
}

TEST(PosixText, OnlyWhatTheLibraryUsesIsOffered) {
  constexpr UINT kCyrillic = 1251;
  char narrow[4];
  WCHAR wide[4];
  BOOL used_default = 0;
  EXPECT_EQ(MultiByteToWideChar(kCyrillic, 0, "a", 1, wide, 4), 0);
  EXPECT_EQ(GetLastError(), 87U);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", 1, nullptr, 4), 0);
  EXPECT_EQ(GetLastError(), 87U);
  EXPECT_EQ(WideCharToMultiByte(kCyrillic, 0, u"a", 1, narrow, 4, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), 87U);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a", 1, nullptr, 4, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), 87U);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a", 1, narrow, -1, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), 87U);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a", 1, narrow, 4, "?", nullptr), 0);
  EXPECT_EQ(GetLastError(), 87U);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a", 1, narrow, 4, nullptr, &used_default), 0);
  EXPECT_EQ(GetLastError(), 87U);
}

}  // namespace
}  // namespace lumo
