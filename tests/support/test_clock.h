// support/test_clock.h: the clock the library reads, in the test's hands.
#pragma once

namespace test {

// From now on the system clock stands at this UTC time.
void SetClock(int year, int month, int day, int hour, int minute, int second);
// Back to the system's own clock.
void ReleaseClock();

}  // namespace test
