// support/reset.h: how a reset by a test's own server arrives.
#pragma once

#if defined(_WIN32)
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef NOGDI
#define NOGDI
#endif
#include <winsock2.h>
// After winsock2.h, which it would otherwise replace by its older self.
#include <windows.h>
#endif

namespace test {

// Wine shuts a socket down before it closes it, whatever its linger option says. Where the test's server runs
// under it too, the end may arrive before the reset.
inline bool EndMayPrecedeReset() {
#if defined(_WIN32)
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
#else
  return false;
#endif
}

}  // namespace test
