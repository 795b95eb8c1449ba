// lumo_check/system.h: what this program takes from the system to start with, on Windows and Windows CE. Its
// file imports nothing else: everything else is looked up while it runs, so that it runs and tells where the
// library file could not be loaded.
#pragma once

#include "platform/platform.h"

namespace lumo {

#if defined(LUMO_PLATFORM_WINCE)

constexpr WCHAR kCoreLibrary[] = L"coredll.dll", kTextLibrary[] = L"coredll.dll",
                kSocketLibrary[] = L"ws2.dll";

struct OSVERSIONINFOW {
  DWORD dwOSVersionInfoSize, dwMajorVersion, dwMinorVersion, dwBuildNumber, dwPlatformId;
  WCHAR szCSDVersion[128];
};

extern "C" HMODULE LoadLibraryW(const WCHAR *name);
extern "C" void *GetProcAddressW(HMODULE module, const WCHAR *name);
extern "C" DWORD GetTickCount();
extern "C" BOOL GetVersionExW(OSVERSIONINFOW *version);

#else

constexpr WCHAR kCoreLibrary[] = L"kernel32.dll", kTextLibrary[] = L"msvcrt.dll",
                kSocketLibrary[] = L"ws2_32.dll";

using ::GetTickCount;
using ::GetVersionExW;
using ::LoadLibraryW;
using ::OSVERSIONINFOW;

#endif

namespace check {

// The function of that name; null when the module has none.
void *Find(HMODULE module, const char *name);

// Shows the text to whoever started the program, where that can be done.
void Tell(HMODULE core_library, const char *text);

[[noreturn]] void End(int status);

}  // namespace check
}  // namespace lumo
