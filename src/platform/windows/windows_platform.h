// platform/windows/windows_platform.h: the library's system calls, as the system's own headers declare them.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef NOGDI
#define NOGDI  // it would define ERROR, which is a word of ours
#endif
#include <winsock2.h>
// After winsock2.h: included first it would bring the older winsock.h.
#include <windows.h>

#include <cstdarg>
#include <cstdio>

#define LUMO_WIDE(text) L##text

namespace lumo {

using ::BOOL;
using ::DWORD;
using ::FILETIME;
using ::GET_FILEEX_INFO_LEVELS;
using ::HANDLE;
using ::HMODULE;
using ::LONG;
using ::SYSTEMTIME;
using ::UINT;
using ::WCHAR;
using ::WIN32_FILE_ATTRIBUTE_DATA;
using ::WORD;

using ::CloseHandle;
using ::CopyFileW;
using ::CreateFileW;
using ::DeleteFileW;
using ::FlushFileBuffers;
using ::GetFileAttributesExW;
using ::GetFileAttributesW;
using ::GetLastError;
using ::MoveFileW;
using ::ReadFile;
using ::SetEndOfFile;
using ::SetFilePointer;
using ::WriteFile;

using ::MultiByteToWideChar;
using ::WideCharToMultiByte;

using ::GetModuleFileNameW;
using ::GetSystemTime;
using ::Sleep;

using ::in_addr;
using ::sockaddr;
using ::sockaddr_in;
using ::SOCKET;
using ::WSADATA;

using ::closesocket;
using ::connect;
using ::htons;
using ::inet_addr;
using ::recv;
using ::send;
using ::setsockopt;
using ::shutdown;
using ::socket;
using ::WSACleanup;
using ::WSAGetLastError;
using ::WSAStartup;

constexpr WCHAR kPathSeparator = L'\\';

struct FileName {
  WCHAR units[MAX_PATH];
};
void MakeFileName(const WCHAR *name, FileName *out_name);
BOOL AppendToFile(const FileName *name, const char *text, size_t length);

// Windows CE's call: here the text goes to the debugger and to the standard error output.
void NKDbgPrintfW(const WCHAR *format, ...);
void DebugBreak();
[[noreturn]] void PlatformExit(int status);

}  // namespace lumo
