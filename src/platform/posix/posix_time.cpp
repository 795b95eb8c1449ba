#include <errno.h>
#include <time.h>

#include "platform/posix/posix_internal.h"

namespace lumo {

void lumo_GetSystemTime(SYSTEMTIME *time) {
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

void lumo_Sleep(DWORD milliseconds) {
  timespec rest = {static_cast<time_t>(milliseconds / 1000),
                   static_cast<long>(milliseconds % 1000) * 1000000};
  while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
  }
}

}  // namespace lumo
