#include "wince/system_calls.h"

#include <signal.h>
#include <strings.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "platform/posix/posix_calls.h"
#include "platform/posix/posix_numbers.h"
#include "wince/loader.h"

namespace wince {

const void *FindSystemCall(const std::string &library, const std::string &name) {
  for (const SystemCall &call : kSystemCalls) {
    if (strcasecmp(call.library, library.c_str()) == 0 && name == call.name) return call.function;
  }
  return nullptr;
}

}  // namespace wince

using lumo::BOOL;
using lumo::DWORD;
using lumo::HANDLE;
using lumo::HMODULE;
using lumo::WCHAR;

extern "C" {

// There the root of all folders is a backslash, and no name begins with a drive.
DWORD ce_GetModuleFileNameW(HMODULE module, WCHAR *name, DWORD capacity) {
  const std::string path = wince::PathOf(module);
  if (path.empty() || capacity == 0) {
    lumo::lumo_SetLastError(path.empty() ? lumo::ERROR_INVALID_HANDLE : lumo::ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  std::u16string wide(path.size() + 1, 0);
  const int units = lumo::lumo_MultiByteToWideChar(lumo::CP_UTF8, 0, path.c_str(), -1, wide.data(),
                                                   static_cast<int>(wide.size()));
  const DWORD length = static_cast<DWORD>(units) - 1, copied = length < capacity ? length : capacity - 1;
  for (DWORD i = 0; i < copied; ++i) name[i] = wide[i] == u'/' ? u'\\' : wide[i];
  name[copied] = 0;
  lumo::lumo_SetLastError(copied == length ? 0 : lumo::ERROR_INSUFFICIENT_BUFFER);
  return copied == length ? length : capacity;
}

FILE *ce__wfopen(const WCHAR *name, const WCHAR *mode) {
  lumo::FileName file;
  lumo::lumo_MakeFileName(name, &file);
  std::string narrow;
  for (; *mode != 0; ++mode) narrow += static_cast<char>(*mode);
  return std::fopen(file.bytes, narrow.c_str());
}

void ce_RaiseException(DWORD code, DWORD, DWORD, const DWORD *) {
  constexpr DWORD kBreakpoint = 0x80000003U;
  raise(code == kBreakpoint ? SIGTRAP : SIGABRT);
}

// This number always means the calling process. No exit handler runs.
BOOL ce_TerminateProcess(HANDLE process, DWORD status) {
  if (reinterpret_cast<uintptr_t>(process) != 0x42) return 0;
  _exit(static_cast<int>(status));
}

}  // extern "C"
