// foundation/dates_posix_test.cpp: the time zone of the device does not matter, to the receipt neither.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include "foundation/dates.h"
#include "support/test_clock.h"

namespace {

TEST(Timestamps, AreUtcInATimeZoneEastOfIt) {
  ASSERT_EQ(setenv("TZ", "EAST-5", 1), 0);
  tzset();
  test::SetClock(2012, 12, 4, 22, 30, 0);  // there it is half past three of the fifth
  EXPECT_STREQ(lumo::ReceiptTimestamp(), "2012/12/04      22:30:00");
  EXPECT_STREQ(lumo::IsoTimestamp(), "2012-12-04T22:30:00Z");
}

}  // namespace
