// wince/system_calls.h: what stands in for coredll.dll and ws2.dll in a program of Linux, by the names under
// which the system exports them. tests/wince/CMakeLists.txt makes the list out of the definitions of what our
// files import: a function of system_calls.cpp when it has one, otherwise the POSIX platform's, otherwise the
// C library's.
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

// The function of that library, whatever the letters' case in the library's name; null when it has none of
// that name.
const void *FindSystemCall(const std::string &library, const std::string &name);

}  // namespace wince
