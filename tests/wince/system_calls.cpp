#include "wince/system_calls.h"

#include <signal.h>
#include <strings.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "platform/posix/posix_calls.h"
#include "wince/loader.h"

namespace wince {

const void *FindSystemCall(const std::string &library, const std::string &name) {
  for (const SystemCall &call : kSystemCalls) {
    if (strcasecmp(call.library, library.c_str()) == 0 && name == call.name) return call.function;
  }
  return nullptr;
}

namespace {

// A system library, as a program that looks its functions up holds it.
struct SystemLibrary {
  const char *name;
};
const SystemLibrary kSystemLibraries[] = {{"coredll.dll"}, {"ws2.dll"}};

const SystemLibrary *FindSystemLibrary(const std::string &name) {
  for (const SystemLibrary &library : kSystemLibraries) {
    if (strcasecmp(library.name, name.c_str()) == 0) return &library;
  }
  return nullptr;
}

std::string Narrow(const lumo::WCHAR *text) {
  lumo::FileName file;
  lumo::lumo_MakeFileName(text, &file);
  return file.bytes;
}

}  // namespace

}  // namespace wince

using lumo::BOOL;
using lumo::DWORD;
using lumo::HANDLE;
using lumo::HMODULE;
using lumo::UINT;
using lumo::WCHAR;

extern "C" {

// On Windows CE the root of all folders is a backslash, and no name begins with a drive.
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

HMODULE ce_LoadLibraryW(const WCHAR *name) {
  const std::string path = wince::Narrow(name);
  if (const auto *const library = wince::FindSystemLibrary(path); library != nullptr) {
    return const_cast<wince::SystemLibrary *>(library);
  }
  if (access(path.c_str(), F_OK) != 0) {
    constexpr DWORD kNoSuchModule = 126;
    lumo::lumo_SetLastError(kNoSuchModule);
    return nullptr;
  }
  try {
    return wince::Load(path);
  } catch (const std::runtime_error &error) {
    std::fprintf(stderr, "%s\n", error.what());
    constexpr DWORD kNoProgramFile = 193;
    lumo::lumo_SetLastError(kNoProgramFile);
    return nullptr;
  }
}

void *ce_GetProcAddressW(HMODULE module, const WCHAR *name) {
  const std::string text = wince::Narrow(name);
  void *function = nullptr;
  const auto *const library = static_cast<const wince::SystemLibrary *>(module);
  if (library == &wince::kSystemLibraries[0] || library == &wince::kSystemLibraries[1]) {
    function = const_cast<void *>(wince::FindSystemCall(library->name, text));
  } else {
    function = wince::Find(static_cast<wince::Module *>(module), text);
  }
  constexpr DWORD kNoSuchFunction = 127;
  if (function == nullptr) lumo::lumo_SetLastError(kNoSuchFunction);
  return function;
}

DWORD ce_GetTickCount() {
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

// Embedded Compact 7.
BOOL ce_GetVersionExW(DWORD *version) {
  constexpr DWORD kSize = 276;
  if (version[0] != kSize) return 0;
  std::memset(version + 1, 0, kSize - sizeof *version);
  version[1] = 7;
  version[3] = 2864;
  version[4] = 3;
  return 1;
}

// Nobody is there to press the button.
int ce_MessageBoxW(HANDLE, const WCHAR *text, const WCHAR *title, UINT) {
  std::printf("%s: %s\n", wince::Narrow(title).c_str(), wince::Narrow(text).c_str());
  std::fflush(stdout);
  return 1;
}

// This number always means the calling process. No exit handler runs.
BOOL ce_TerminateProcess(HANDLE process, DWORD status) {
  if (reinterpret_cast<uintptr_t>(process) != 0x42) return 0;
  _exit(static_cast<int>(status));
}

}  // extern "C"
