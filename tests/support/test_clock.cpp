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

#else

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

SYSTEMTIME set_time;
bool clock_is_set = false;

void WINAPI TimeOfTheTest(SYSTEMTIME *time) {
  if (clock_is_set) {
    *time = set_time;
    return;
  }
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  FileTimeToSystemTime(&now, time);
}

// The system's own function is overwritten by a jump to the one above, in this process: so the clock is the
// test's for every library file that the test program loads, too.
bool Redirect() {
  const HMODULE base = GetModuleHandleW(L"kernelbase.dll");
  auto *const code = reinterpret_cast<unsigned char *>(GetProcAddress(base, "GetSystemTime"));
  const auto target = reinterpret_cast<uintptr_t>(&TimeOfTheTest);
#if defined(_WIN64)
  unsigned char jump[] = {0x48, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xE0};  // mov rax, target; jmp rax
  std::memcpy(jump + 2, &target, sizeof target);
#else
  unsigned char jump[] = {0xB8, 0, 0, 0, 0, 0xFF, 0xE0};  // mov eax, target; jmp eax
  std::memcpy(jump + 1, &target, sizeof target);
#endif
  DWORD before = 0;
  if (code == nullptr || !VirtualProtect(code, sizeof jump, PAGE_EXECUTE_READWRITE, &before)) return false;
  std::memcpy(code, jump, sizeof jump);
  return FlushInstructionCache(GetCurrentProcess(), code, sizeof jump) != 0;
}

}  // namespace

namespace test {

void SetClock(int year, int month, int day, int hour, int minute, int second) {
  static const bool redirected = Redirect();
  if (!redirected) {
    std::fprintf(stderr, "the clock cannot be set\n");
    std::abort();
  }
  SYSTEMTIME time = {};
  time.wYear = static_cast<WORD>(year);
  time.wMonth = static_cast<WORD>(month);
  time.wDay = static_cast<WORD>(day);
  time.wHour = static_cast<WORD>(hour);
  time.wMinute = static_cast<WORD>(minute);
  time.wSecond = static_cast<WORD>(second);
  // There and back, for the day of the week.
  FILETIME ticks;
  if (SystemTimeToFileTime(&time, &ticks)) FileTimeToSystemTime(&ticks, &time);
  set_time = time;
  clock_is_set = true;
}

void ReleaseClock() {
  clock_is_set = false;
}

}  // namespace test

#endif
