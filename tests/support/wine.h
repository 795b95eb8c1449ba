// support/wine.h: where Wine's sockets are not those of Windows.
#pragma once

#include <string>

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

inline bool IsUnderWine() {
#if defined(_WIN32)
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
#else
  return false;
#endif
}

// Wine shuts a socket down before it closes it, whatever its linger option says. Where the test's server runs
// under it too, the end may arrive before the reset.
inline bool EndMayPrecedeReset() {
  return IsUnderWine();
}

// Wine 8 fails one `connect` of a 32-bit program in some 100,000, when the machine is busy, with 998, which
// is no number of a socket. A register takes it for an unreachable server. True when the last one did.
inline bool IsConnectLost(const std::string &trace) {
  const size_t last = trace.rfind("Connecting to ");
  return IsUnderWine() && last != std::string::npos &&
         trace.find("ERROR: Connection Failed 998\n", last) != std::string::npos;
}

}  // namespace test
