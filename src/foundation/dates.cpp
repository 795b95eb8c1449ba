#include "foundation/dates.h"

#include <cstdio>

#include "foundation/format.h"
#include "platform/platform.h"

namespace lumo {

const char *IsoTimestamp() {
  static char buffer[48];
  SYSTEMTIME now;
  GetSystemTime(&now);
  Format(buffer, sizeof buffer, "%04d-%02d-%02dT%02d:%02d:%02dZ", now.wYear, now.wMonth, now.wDay, now.wHour,
         now.wMinute, now.wSecond);
  return buffer;
}

const char *ReceiptTimestamp() {
  static char buffer[48];
  SYSTEMTIME now;
  GetSystemTime(&now);
  Format(buffer, sizeof buffer, "%04d/%02d/%02d      %02d:%02d:%02d", now.wYear, now.wMonth, now.wDay,
         now.wHour, now.wMinute, now.wSecond);
  return buffer;
}

const char *DateToYYMMDD(const char *date) {
  static char buffer[8];
  int year = 0;
  int month = 0;
  int day = 0;
  // Two characters hold at most 99 and at least -9, so each number prints as two characters again.
  if (date == nullptr || std::sscanf(date, "%*2s%2d-%2d-%2dT%*s", &year, &month, &day) != 3) {
    year = month = day = 0;
  }
  Format(buffer, sizeof buffer, "%02d%02d%02d", year, month, day);
  return buffer;
}

}  // namespace lumo
