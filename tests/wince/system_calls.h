// wince/system_calls.h: what stands in for coredll.dll and ws2.dll in a program of Linux, by the names under
// which the system exports them. tests/wince/CMakeLists.txt makes the list out of the definitions of what our
// files import: functions of system_calls.cpp, where that has none the POSIX platform's or the C library's.
#pragma once

#include <string>
#include <vector>

namespace wince {

struct SystemCall {
  const char *library;
  const char *name;
  const void *function;
};

extern const std::vector<SystemCall> kSystemCalls;

// A function of a library, whose name may be in any case; null when the library has none of that name.
const void *FindSystemCall(const std::string &library, const std::string &name);

}  // namespace wince
