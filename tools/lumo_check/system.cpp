#include "lumo_check/system.h"

namespace lumo {
namespace check {

#if defined(LUMO_PLATFORM_WINCE)

namespace {

constexpr size_t kShown = 200;

// Of letters that ASCII has.
void Widen(const char *text, WCHAR (&wide)[kShown]) {
  size_t i = 0;
  for (; text[i] != 0 && i + 1 < kShown; ++i) wide[i] = static_cast<WCHAR>(text[i]);
  wide[i] = 0;
}

}  // namespace

void *Find(HMODULE module, const char *name) {
  WCHAR wide[kShown];
  Widen(name, wide);
  return module == nullptr ? nullptr : GetProcAddressW(module, wide);
}

// A terminal without a screen has no such call.
void Tell(HMODULE core_library, const char *text) {
  using MessageBox = int (*)(HANDLE window, const WCHAR *text, const WCHAR *title, UINT kind);
  const auto show = reinterpret_cast<MessageBox>(Find(core_library, "MessageBoxW"));
  if (show == nullptr) return;
  WCHAR wide[kShown];
  Widen(text, wide);
  show(nullptr, wide, L"lumo_check", 0);
}

// This number always means the calling process.
void End(int status) {
  for (;;) {
    TerminateProcess(reinterpret_cast<HANDLE>(static_cast<uintptr_t>(0x42)), static_cast<DWORD>(status));
  }
}

#else

void *Find(HMODULE module, const char *name) {
  return module == nullptr ? nullptr : reinterpret_cast<void *>(GetProcAddress(module, name));
}

void Tell(HMODULE, const char *text) {
  DWORD length = 0, written;
  while (text[length] != 0) ++length;
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  WriteFile(output, text, length, &written, nullptr);
  WriteFile(output, "\r\n", 2, &written, nullptr);
}

void End(int status) {
  ExitProcess(static_cast<UINT>(status));
}

#endif

}  // namespace check
}  // namespace lumo

// What the compiler calls, since no C library is linked in. Compiled so that none becomes a call of itself.
extern "C" {

void *memcpy(void *to, const void *from, size_t size) {
  for (size_t i = 0; i < size; ++i) static_cast<char *>(to)[i] = static_cast<const char *>(from)[i];
  return to;
}

void *memset(void *to, int byte, size_t size) {
  for (size_t i = 0; i < size; ++i) static_cast<char *>(to)[i] = static_cast<char>(byte);
  return to;
}

}  // extern "C"
