// foundation/arithmetic_test.cpp: 32-bit amounts at the ends of their range.
#include "foundation/arithmetic.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(WrapAdd, WrapsAsTwosComplement) {
  EXPECT_EQ(lumo::WrapAdd(2, 3), 5);
  EXPECT_EQ(lumo::WrapAdd(INT32_MAX, 1), INT32_MIN);
  EXPECT_EQ(lumo::WrapAdd(INT32_MIN, -1), INT32_MAX);
}

TEST(WrapSubtract, WrapsAsTwosComplement) {
  EXPECT_EQ(lumo::WrapSubtract(2, 3), -1);
  EXPECT_EQ(lumo::WrapSubtract(INT32_MIN, 1), INT32_MAX);
  EXPECT_EQ(lumo::WrapSubtract(0, INT32_MIN), INT32_MIN);
}

TEST(WrapMultiply, WrapsAsTwosComplement) {
  EXPECT_EQ(lumo::WrapMultiply(-2, 3), -6);
  EXPECT_EQ(lumo::WrapMultiply(65536, 65536), 0);
  EXPECT_EQ(lumo::WrapMultiply(INT32_MAX, 2), -2);
  EXPECT_EQ(lumo::WrapMultiply(INT32_MIN, -1), INT32_MIN);
}

struct ParseCase {
  const char *text;
  int32_t value;
};

const ParseCase kParseCases[] = {
    {"", 0},
    {"0", 0},
    {"15000", 15000},
    {"-15000", -15000},
    {"+7", 7},
    {"007", 7},
    {" \t\n\v\f\r42", 42},
    {"12.75", 12},
    {"1e3", 1},
    {"12 34", 12},
    {"42abc", 42},
    {"abc", 0},
    {"-", 0},
    {"+", 0},
    {"--5", 0},
    {"+-5", 0},
    {"- 5", 0},
    {"0x10", 0},
    {"\xC2\xA0"
     "5",
     0},
    {"2147483647", INT32_MAX},
    {"2147483648", INT32_MAX},
    {"-2147483648", INT32_MIN},
    {"-2147483649", INT32_MIN},
    {"4294967297", INT32_MAX},
    {"9223372036854775808", INT32_MAX},
    {"-99999999999999999999999999999999", INT32_MIN},
};

TEST(ParseInt32, ReadsLeadingDigitsClampedTo32Bits) {
  for (const ParseCase &row : kParseCases) {
    EXPECT_EQ(lumo::ParseInt32(row.text), row.value) << '"' << row.text << '"';
  }
}

TEST(ParseInt32, OfANullTextIsZero) {
  EXPECT_EQ(lumo::ParseInt32(nullptr), 0);
}

TEST(ParseInt32, OfAVeryLongNumberIsClamped) {
  EXPECT_EQ(lumo::ParseInt32(std::string(100000, '9').c_str()), INT32_MAX);
  EXPECT_EQ(lumo::ParseInt32((std::string(100000, '0') + "5").c_str()), 5);
}

}  // namespace
