#include <time.h>

#include "platform/platform.h"

namespace lumo {

void GetSystemTime(SYSTEMTIME *time) {
  timespec now = {};
  tm utc = {};
  clock_gettime(CLOCK_REALTIME, &now);
  gmtime_r(&now.tv_sec, &utc);
  time->wYear = static_cast<WORD>(utc.tm_year + 1900);
  time->wMonth = static_cast<WORD>(utc.tm_mon + 1);
  time->wDayOfWeek = static_cast<WORD>(utc.tm_wday);
  time->wDay = static_cast<WORD>(utc.tm_mday);
  time->wHour = static_cast<WORD>(utc.tm_hour);
  time->wMinute = static_cast<WORD>(utc.tm_min);
  time->wSecond = static_cast<WORD>(utc.tm_sec);
  time->wMilliseconds = static_cast<WORD>(now.tv_nsec / 1000000);
}

}  // namespace lumo
