// foundation/format_test.cpp: numbers and amounts as text.
#include "foundation/format.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "support/allocations.h"

namespace {

// A format with its arguments, and the bytes it must give.
#define ROW(text, ...) \
  { Formatted(__VA_ARGS__), text, #__VA_ARGS__ }

template <typename... Arguments>
std::string Formatted(const char *format, Arguments... arguments) {
  char text[400];
  std::memset(text, '*', sizeof text);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  const size_t length = lumo::Format(text, sizeof text, format, arguments...);
#pragma GCC diagnostic pop
  EXPECT_EQ(text[length], '\0') << format;
  EXPECT_EQ(text[length + 1], '*') << format;
  return {text, length};
}

struct FormatCase {
  std::string found;
  std::string text;
  const char *what;
};

const char *volatile no_text = nullptr;

TEST(Format, GivesWhatPrintfGives) {
  const char not_terminated[] = {'a', 'b', 'c'};
  const FormatCase rows[] = {
      ROW("", ""),
      ROW("plain", "plain"),
      ROW("100%", "100%%"),
      ROW("пять 5, шесть [шесть].", "пять %d, %s [%s].", 5, "шесть", "шесть"),
      ROW("0", "%d", 0),
      ROW("-1", "%d", -1),
      ROW("2147483647", "%d", INT32_MAX),
      ROW("-2147483648", "%d", INT32_MIN),
      ROW("05 12 123", "%02d %02d %02d", 5, 12, 123),
      ROW("00007", "%05d", 7),
      ROW("-5 -05 -2147483648", "%02d %03d %04d", -5, -5, INT32_MIN),
      ROW("   -5|-0005|     7", "%5d|%05d|%6d", -5, -5, 7),
      ROW("0", "%x", 0U),
      ROW("0a ff 1234abcd", "%02x %02x %x", 10U, 255U, 0x1234abcdU),
      ROW("0A FFFFFFEF 00FF", "%02X %02X %04X", 10U, 0xffffffefU, 255U),
      ROW("text", "%s", "text"),
      ROW("", "%s", ""),
      ROW("(null)", "%s", no_text),
      ROW("  text|text|text", "%6s|%4s|%3s", "text", "text", "text"),
      ROW("    ж", "%6s", "ж"),
      ROW("  (null)", "%8s", no_text),
      ROW("te|text||", "%.2s|%.9s|%.0s|", "text", "text", "text"),
      ROW("    te", "%6.2s", "text"),
      ROW("abc", "%.3s", not_terminated),
      ROW("abc ab ", "%.*s %.*s %.*s", 3, not_terminated, 2, not_terminated, 0, not_terminated),
      ROW("text", "%.*s", -1, "text"),
      ROW("   text", "%*s", 7, "text"),
      ROW("a1b2c", "%s%d%s%d%s", "a", 1, "b", 2, "c"),
  };
  for (const FormatCase &row : rows) EXPECT_EQ(row.found, row.text) << row.what;
}

TEST(Format, CutsWhatDoesNotFitAndTellsItsLength) {
  for (const size_t size : {1U, 2U, 5U, 8U, 9U, 10U}) {
    char text[12];
    std::memset(text, '*', sizeof text);
    EXPECT_EQ(lumo::Format(text, size, "%s-%03d!", "ab", 12345), 9U) << size;
    EXPECT_EQ(std::string(text, sizeof text), std::string("ab-12345!", size < 10 ? size - 1 : 9) + '\0' +
                                                  std::string(11 - (size < 10 ? size - 1 : 9), '*'))
        << size;
  }
}

struct AmountCase {
  int32_t amount;
  const char *text;
};

const AmountCase kAmountCases[] = {
    {12345, "123.45"},
    {100, "1.00"},
    {99, "0.99"},
    {10, "0.10"},
    {5, "0.05"},
    {0, "0.00"},
    {-12345, "-123.45"},
    {-123, "-1.23"},
    {-100, "-1.00"},
    {-99, "-.99"},
    {-50, "-.50"},
    {-10, "-.10"},
    {-9, "0.-9"},
    {-5, "0.-5"},
    {-1, "0.-1"},
    {INT32_MAX, "21474836.47"},
    {INT32_MIN, "-21474836.48"},
};

TEST(FormatAmount, PutsAPointBeforeTheLastTwoCharacters) {
  for (const AmountCase &row : kAmountCases) {
    EXPECT_STREQ(lumo::FormatAmount(row.amount), row.text) << row.amount;
  }
}

TEST(FormatAmount, LeavesNothingOfALongerAmount) {
  lumo::FormatAmount(INT32_MIN);
  EXPECT_STREQ(lumo::FormatAmount(5), "0.05");
}

struct IntCase {
  int32_t value;
  const char *text;
};

const IntCase kIntCases[] = {
    {0, "0"}, {-7, "-7"}, {15000, "15000"}, {INT32_MAX, "2147483647"}, {INT32_MIN, "-2147483648"},
};

TEST(IntToText, PrintsTheValue) {
  for (const IntCase &row : kIntCases) EXPECT_STREQ(lumo::IntToText(row.value), row.text);
}

struct PadCase {
  const char *text;
  int32_t width;
  const char *padded;
};

const PadCase kPadCases[] = {
    {"123", 6, "000123"},
    {"123", 3, "123"},
    {"1234567", 4, "1234"},
    {"", 3, "000"},
    {nullptr, 3, "000"},
    {nullptr, 0, ""},
    {"123", 0, ""},
    {"123", -1, ""},
    {"123", INT32_MIN, ""},
    {"-5", 4, "00-5"},
    {"7", 49, "0000000000000000000000000000000000000000000000007"},
    {"7", 50, "0000000000000000000000000000000000000000000000007"},
    {nullptr, INT32_MAX, "0000000000000000000000000000000000000000000000000"},
    {"1234567890123456789012345678901234567890123456789012345", 60,
     "1234567890123456789012345678901234567890123456789"},
};

TEST(ZeroPadLeft, GivesExactlyTheWidth) {
  for (const PadCase &row : kPadCases) {
    EXPECT_STREQ(lumo::ZeroPadLeft(row.text, row.width), row.padded)
        << (row.text != nullptr ? row.text : "null") << ", " << row.width;
  }
}

TEST(ZeroPadLeft, PadsANumberText) {
  EXPECT_STREQ(lumo::ZeroPadLeft(lumo::IntToText(42), 5), "00042");
}

TEST(Formatters, HaveABufferEach) {
  const char *number = lumo::IntToText(1);
  const char *padded = lumo::ZeroPadLeft("2", 2);
  const char *amount = lumo::FormatAmount(3);
  EXPECT_STREQ(number, "1");
  EXPECT_STREQ(padded, "02");
  EXPECT_STREQ(amount, "0.03");
}

TEST(Formatters, OverwriteTheirOwnBuffer) {
  const char *first = lumo::FormatAmount(100);
  const char *second = lumo::FormatAmount(200);
  EXPECT_EQ(first, second);
  EXPECT_STREQ(first, "2.00");
}

TEST(FormatAlloc, GivesATextOfExactlyTheNeededSize) {
  const test::Allocations before = test::CountAllocations();
  char *text = lumo::FormatAlloc("%s %d", "version", 12);
  EXPECT_EQ(test::CountAllocations().mallocs, before.mallocs + 1);
  EXPECT_EQ(test::CountAllocations().lastSize, sizeof("version 12"));
  EXPECT_STREQ(text, "version 12");
  std::free(text);
}

TEST(FormatAlloc, TakesAnyLength) {
  const std::string piece(5000, 'p');
  char *text = lumo::FormatAlloc("<%s%s>", piece.c_str(), piece.c_str());
  EXPECT_EQ(text, "<" + piece + piece + ">");
  std::free(text);
}

TEST(FormatAlloc, GivesTheEmptyTextToo) {
  char *text = lumo::FormatAlloc("%s", "");
  EXPECT_STREQ(text, "");
  std::free(text);
}

TEST(FormatAlloc, GivesNullWithoutMemory) {
  test::FailNextAllocation();
  EXPECT_EQ(lumo::FormatAlloc("%d", 1), nullptr);
}

TEST(TextOrEmpty, TurnsNullIntoTheEmptyText) {
  EXPECT_STREQ(lumo::TextOrEmpty(nullptr), "");
  EXPECT_STREQ(lumo::TextOrEmpty("x"), "x");
}

}  // namespace
