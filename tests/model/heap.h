// model/heap.h: the heap that the process has in use, in bytes.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
extern "C" size_t __sanitizer_get_current_allocated_bytes();  // of the sanitizer's runtime
#elif defined(_WIN32)
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// After windows.h, which it needs.
#include <psapi.h>

#include <algorithm>
#else
#include <malloc.h>
#endif

namespace test {

inline size_t HeapInUse() {
#if defined(__SANITIZE_ADDRESS__)
  return __sanitizer_get_current_allocated_bytes();
#elif defined(_WIN32)
  // Of these two, which are the same, some systems fill in only one.
  PROCESS_MEMORY_COUNTERS_EX counters = {};
  K32GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS *>(&counters),
                          sizeof counters);
  return std::max(counters.PrivateUsage, counters.PagefileUsage);
#else
  return mallinfo2().uordblks;
#endif
}

}  // namespace test
