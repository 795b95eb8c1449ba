// platform/text_test.cpp: conversions and formatting, as every host answers them.
#include <gtest/gtest.h>

#include <cstdarg>
#include <string>

#include "platform/platform.h"

namespace lumo {
namespace {

using Wide = std::basic_string<WCHAR>;

struct TextCase {
  const char *what;
  std::string narrow;
  Wide wide;
};

const TextCase kTexts[] = {
    {"Ascii", "CONFIG.JSN", LUMO_WIDE("CONFIG.JSN")},
    {"LastOfOneByte", "\x7F", LUMO_WIDE("\x7F")},
    {"TwoBytes", "\xC2\x80\xDF\xBF", {0x0080, 0x07FF}},
    {"Cyrillic", "\xD0\x9A\xD0\xB0\xD1\x81\xD1\x81\xD0\xB0", LUMO_WIDE("Касса")},
    {"ThreeBytes", "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", {0x0800, 0xD7FF, 0xE000, 0xFFFF}},
    {"FirstPair", "\xF0\x90\x80\x80", {0xD800, 0xDC00}},
    {"Pair", "\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
    {"LastPair", "\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
};

void PrintTo(const TextCase &row, std::ostream *out) {
  *out << row.what;
}

class Texts : public testing::TestWithParam<TextCase> {};

TEST_P(Texts, BecomeWide) {
  const std::string &narrow = GetParam().narrow;
  const Wide &wide = GetParam().wide;
  WCHAR buffer[40];
  const int measured = MultiByteToWideChar(CP_UTF8, 0, narrow.c_str(), -1, nullptr, 0);
  EXPECT_EQ(measured, static_cast<int>(wide.size() + 1));
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, narrow.c_str(), -1, buffer, 40), measured);
  EXPECT_EQ(Wide(buffer), wide);
  const int length = static_cast<int>(narrow.size());
  buffer[wide.size()] = 0x2A;
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, narrow.c_str(), length, buffer, measured - 1), measured - 1);
  EXPECT_EQ(Wide(buffer, wide.size()), wide);
  EXPECT_EQ(buffer[wide.size()], 0x2A);
}

TEST_P(Texts, BecomeNarrow) {
  const std::string &narrow = GetParam().narrow;
  const Wide &wide = GetParam().wide;
  char buffer[40];
  const int measured = WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), -1, nullptr, 0, nullptr, nullptr);
  EXPECT_EQ(measured, static_cast<int>(narrow.size() + 1));
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), -1, buffer, 40, nullptr, nullptr), measured);
  EXPECT_EQ(std::string(buffer), narrow);
  const int length = static_cast<int>(wide.size());
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), length, buffer, measured - 1, nullptr, nullptr),
            measured - 1);
  EXPECT_EQ(std::string(buffer, narrow.size()), narrow);
}

TEST_P(Texts, NeedRoomForTheLastUnit) {
  WCHAR wide[40];
  const int needed = MultiByteToWideChar(CP_UTF8, 0, GetParam().narrow.c_str(), -1, nullptr, 0);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, GetParam().narrow.c_str(), -1, wide, needed), needed);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, GetParam().narrow.c_str(), -1, wide, needed - 1), 0);
  EXPECT_EQ(GetLastError(), 122u);
  char narrow[40];
  const int bytes =
      WideCharToMultiByte(CP_UTF8, 0, GetParam().wide.c_str(), -1, nullptr, 0, nullptr, nullptr);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, GetParam().wide.c_str(), -1, narrow, bytes - 1, nullptr, nullptr),
            0);
  EXPECT_EQ(GetLastError(), 122u);
}

INSTANTIATE_TEST_SUITE_P(, Texts, testing::ValuesIn(kTexts),
                         [](const auto &row) { return std::string(row.param.what); });

TEST(Text, BytesThatAreNoUtf8BecomeTheReplacementCharacter) {
  const TextCase cases[] = {
      {"a byte that only follows", "a\x80z", {'a', 0xFFFD, 'z'}},
      {"a byte of no use", "a\xFFz", {'a', 0xFFFD, 'z'}},
      {"a cut two-byte character", "a\xD0z", {'a', 0xFFFD, 'z'}},
      {"a cut three-byte character", "a\xE2\x82z", {'a', 0xFFFD, 'z'}},
      {"a cut four-byte character", "a\xF0\x9F\x98z", {'a', 0xFFFD, 'z'}},
      {"a text of another code page", "\xCA\xE0\xF1 1234", {0xFFFD, 0xFFFD, 0xFFFD, ' ', '1', '2', '3', '4'}},
      {"a cut at the end", "a\xD0", {'a', 0xFFFD}},
  };
  for (const TextCase &row : cases) {
    WCHAR buffer[40];
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, row.narrow.c_str(), -1, buffer, 40),
              static_cast<int>(row.wide.size() + 1))
        << row.what;
    EXPECT_EQ(Wide(buffer), row.wide) << row.what;
  }
}

TEST(Text, BytesThatLookLikeCharactersThatDoNotExistAreNotTakenForThem) {
  // Longer forms than needed, halves of pairs, what lies beyond the last character: at least one replacement,
  // and no more than one for each byte.
  for (const std::string text : {"\xC0\xAF", "\xC1\xBF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xED\xBF\xBF",
                                 "\xF0\x80\x80\xAF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"}) {
    WCHAR buffer[40];
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, buffer, 40) - 1;
    ASSERT_GE(length, 1);
    ASSERT_LE(length, static_cast<int>(text.size()));
    for (int i = 0; i < length; ++i) EXPECT_EQ(buffer[i], 0xFFFD) << testing::PrintToString(text);
  }
}

TEST(Text, HalfAPairBecomesTheReplacementCharacter) {
  for (const Wide &wide : {Wide{'a', 0xD83D, 'z'}, Wide{'a', 0xDE00, 'z'}}) {
    char buffer[40];
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), -1, buffer, 40, nullptr, nullptr), 6);
    EXPECT_STREQ(buffer, "a\xEF\xBF\xBDz");
  }
}

TEST(Text, AGivenLengthStopsAtItAndTakesZerosAlong) {
  WCHAR wide[8] = {};
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a\0b", 3, wide, 8), 3);
  EXPECT_EQ(Wide(wide, 3), (Wide{'a', 0, 'b'}));
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", 2, nullptr, 0), 2);
}

TEST(Text, WhatMakesNoSenseIsRefused) {
  WCHAR wide[8];
  char narrow[8];
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, nullptr, -1, wide, 8), 0);
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", 0, wide, 8), 0);
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", -1, nullptr, 8), 0);
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", -1, wide, -1), 0);
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, nullptr, -1, narrow, 8, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, LUMO_WIDE("a"), 0, narrow, 8, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), 87u);
}

}  // namespace
}  // namespace lumo
