// Numbers and amounts as text.
#include "foundation/format.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "support/allocations.h"

namespace {

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
  for (const IntCase &row : kIntCases) {
    EXPECT_STREQ(lumo::IntToText(row.value), row.text);
  }
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
  EXPECT_EQ(test::CountAllocations().last_size, sizeof("version 12"));
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
