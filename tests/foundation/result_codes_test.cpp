// foundation/result_codes_test.cpp: the cashier's message of every result code.
#include "foundation/result_codes.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>

#include "support/folder.h"
#include "support/result_codes.h"

namespace {

TEST(ErrorMessage, GivesEachCodesOwn) {
  test::Folder folder;
  for (const test::ResultCode &row : test::kResultCodes) {
    EXPECT_STREQ(lumo::ErrorMessage(row.code), row.message) << row.code;
    EXPECT_EQ(row.name, row.code);
  }
  EXPECT_EQ(folder.Trace(), "");
}

TEST(ErrorMessage, NoOtherCodeHasOne) {
  test::Folder folder;
  size_t known = 0;
  for (int32_t code = -1100; code <= 1100; ++code) {
    folder.ClearTrace();
    const std::string message = lumo::ErrorMessage(code);
    if (folder.Trace().empty()) {
      ++known;
    } else {
      EXPECT_EQ(message, "Неизвестная ошибка " + std::to_string(code));
    }
  }
  EXPECT_EQ(known, std::size(test::kResultCodes));
}

struct UnknownCase {
  int32_t code;
  const char *message;
  const char *trace;
};

const UnknownCase kUnknownCases[] = {
    {0, "Неизвестная ошибка 0", "WARNING: Unknown error code 0\n"},
    {5, "Неизвестная ошибка 5", "WARNING: Unknown error code 5\n"},
    {100, "Неизвестная ошибка 100", "WARNING: Unknown error code 100\n"},
    {-114, "Неизвестная ошибка -114", "WARNING: Unknown error code -114\n"},
    {-408, "Неизвестная ошибка -408", "WARNING: Unknown error code -408\n"},
    {INT32_MAX, "Неизвестная ошибка 2147483647", "WARNING: Unknown error code 2147483647\n"},
    {INT32_MIN, "Неизвестная ошибка -2147483648", "WARNING: Unknown error code -2147483648\n"},
};

TEST(ErrorMessage, OfAnUnknownCodeHoldsTheNumberAndLeavesAWarning) {
  test::Folder folder;
  for (const UnknownCase &row : kUnknownCases) {
    folder.ClearTrace();
    EXPECT_STREQ(lumo::ErrorMessage(row.code), row.message);
    EXPECT_EQ(folder.Trace(), row.trace);
  }
}

TEST(ErrorMessage, OfUnknownCodesSharesOneBuffer) {
  test::Folder folder;
  const char *first = lumo::ErrorMessage(INT32_MIN);
  const char *second = lumo::ErrorMessage(5);
  EXPECT_EQ(first, second);
  EXPECT_STREQ(first, "Неизвестная ошибка 5");
}

}  // namespace
