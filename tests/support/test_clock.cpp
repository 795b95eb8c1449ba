#include "support/test_clock.h"

#if !defined(_WIN32)

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

namespace {

bool clock_is_set = false;
time_t clock_time = 0;

}  // namespace

// Stands before the C library's own in the whole process, so also for a library file that the test program
// loads, as long as the program exports its symbols. Only the wall clock stands still.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec *out_time) noexcept {
  if (clock == CLOCK_REALTIME && clock_is_set) {
    out_time->tv_sec = clock_time;
    out_time->tv_nsec = 0;
    return 0;
  }
  return static_cast<int>(syscall(SYS_clock_gettime, clock, out_time));
}

namespace test {

void SetClock(int year, int month, int day, int hour, int minute, int second) {
  tm parts = {};
  parts.tm_year = year - 1900;
  parts.tm_mon = month - 1;
  parts.tm_mday = day;
  parts.tm_hour = hour;
  parts.tm_min = minute;
  parts.tm_sec = second;
  clock_time = timegm(&parts);
  clock_is_set = true;
}

void ReleaseClock() {
  clock_is_set = false;
}

}  // namespace test

#endif
