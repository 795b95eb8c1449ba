// foundation/dates_test.cpp: the device clock as text.
#include "foundation/dates.h"

#include <gtest/gtest.h>

#include <string>

#include "support/test_clock.h"

namespace {

TEST(IsoTimestamp, ShowsTheClock) {
  test::SetClock(2012, 12, 5, 10, 0, 0);
  EXPECT_STREQ(lumo::IsoTimestamp(), "2012-12-05T10:00:00Z");
  test::SetClock(2000, 2, 29, 23, 59, 58);
  EXPECT_STREQ(lumo::IsoTimestamp(), "2000-02-29T23:59:58Z");
}

TEST(ReceiptTimestamp, ShowsTheClockIn24Columns) {
  test::SetClock(2012, 12, 5, 10, 0, 0);
  EXPECT_STREQ(lumo::ReceiptTimestamp(), "2012/12/05      10:00:00");
  test::SetClock(2031, 1, 2, 3, 4, 5);
  EXPECT_STREQ(lumo::ReceiptTimestamp(), "2031/01/02      03:04:05");
}

TEST(Timestamps, GoOnWhenTheClockIsReleased) {
  test::SetClock(2012, 12, 5, 10, 0, 0);
  test::ReleaseClock();
  EXPECT_GT(std::string(lumo::IsoTimestamp()), "2024");
}

struct DateCase {
  const char *date;
  const char *digits;
};

const DateCase kDateCases[] = {
    {"2012-12-05T10:00:00Z", "121205"},
    {"1999-01-31T", "990131"},
    {"2012-12-05", "121205"},  // all three numbers were read before the time is missed
    {"2012-12-05 10:00:00", "121205"},
    {"xx12-12-05T1", "121205"},  // the century is skipped unseen
    {"2012-1-5T1", "120105"},
    {"2012-1-5", "120105"},
    {"2012- 1- 5T1", "120105"},  // blanks before a number are passed over
    {"  2012-12-05T1", "121205"},
    {"2012-12-0555T1", "121205"},  // a number is two characters
    {"20+1-+2-+3T1", "010203"},    // of which one may be a sign
    {"20-1--2--3T1", "-1-2-3"},
    {"20121-12-05T1", "000000"},
    {"2012-123-05T1", "000000"},
    {"", "000000"},
    {" ", "000000"},
    {"20", "000000"},
    {"2012", "000000"},
    {"2012-", "000000"},
    {"2012-12", "000000"},
    {"2012-12-", "000000"},
    {"2012-12-T", "000000"},
    {"20121205T100000Z", "000000"},
    {"2012/12/05T10:00:00Z", "000000"},
    {"05.12.2012", "000000"},
    {"2012-Dec-05T1", "000000"},
    {"2012 -12-05T1", "000000"},
    {"дата", "000000"},
};

TEST(DateToYYMMDD, ReadsThreeTwoDigitNumbersBehindTheCentury) {
  for (const DateCase &row : kDateCases) {
    EXPECT_STREQ(lumo::DateToYYMMDD(row.date), row.digits) << '"' << row.date << '"';
  }
}

TEST(DateToYYMMDD, OfANullTextIsZeros) {
  EXPECT_STREQ(lumo::DateToYYMMDD(nullptr), "000000");
}

TEST(DateToYYMMDD, TakesWhatIsoTimestampGives) {
  test::SetClock(2026, 7, 8, 0, 0, 0);
  EXPECT_STREQ(lumo::DateToYYMMDD(lumo::IsoTimestamp()), "260708");
}

TEST(DateTexts, HaveABufferEach) {
  test::SetClock(2012, 12, 5, 10, 0, 0);
  const char *iso = lumo::IsoTimestamp();
  const char *receipt = lumo::ReceiptTimestamp();
  const char *digits = lumo::DateToYYMMDD("2013-01-02T");
  EXPECT_STREQ(iso, "2012-12-05T10:00:00Z");
  EXPECT_STREQ(receipt, "2012/12/05      10:00:00");
  EXPECT_STREQ(digits, "130102");
  EXPECT_EQ(lumo::DateToYYMMDD(""), digits);
  EXPECT_STREQ(digits, "000000");
}

}  // namespace
