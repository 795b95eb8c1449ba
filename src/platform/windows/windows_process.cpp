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

// Raises the exception that the system's own DebugBreak causes by an instruction. Under some systems a 32-bit
// process that runs into that instruction ends with status 0.
void DebugBreak() {
  RaiseException(static_cast<DWORD>(EXCEPTION_BREAKPOINT), 0, 0, nullptr);
}

void PlatformExit(int status) {
  std::exit(status);
}

}  // namespace lumo
