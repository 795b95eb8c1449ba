#include <cstdio>
#include <cstdlib>
#include <cwchar>

#include "platform/platform.h"

namespace lumo {

void NKDbgPrintfW(const WCHAR *format, ...) {
  WCHAR text[512];
  va_list arguments;
  va_start(arguments, format);
  const int length = _vsnwprintf(text, 511, format, arguments);
  va_end(arguments);
  text[length < 0 ? 511 : length] = 0;
  OutputDebugStringW(text);
  char bytes[3 * 512];
  WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes, sizeof bytes, nullptr, nullptr);
  std::fputs(bytes, stderr);
  std::fflush(stderr);
}

// The exception that the system's own call causes, but raised and not run into: the 32-bit side of some
// systems loses the instruction and ends the process with status 0.
void DebugBreak() {
  RaiseException(static_cast<DWORD>(EXCEPTION_BREAKPOINT), 0, 0, nullptr);
}

void PlatformExit(int status) {
  std::exit(status);
}

}  // namespace lumo
