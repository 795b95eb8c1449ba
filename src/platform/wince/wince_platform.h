// platform/wince/wince_platform.h: the library's system calls on Windows CE, as coredll.dll and ws2.dll
// export them. What is not declared here cannot be used; coredll.def and ws2.def name what the file imports.
// Every call is __cdecl, which is the compiler's own convention. What belongs to the C library comes from
// the standard headers.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cwchar>

#include "platform/win_names.h"

#define LUMO_WIDE(text) L##text
#define LUMO_IMPORT extern "C" __declspec(dllimport)

namespace lumo {

using WCHAR = wchar_t;

static_assert(sizeof(WCHAR) == 2 && sizeof(HANDLE) == 4);

constexpr WCHAR kPathSeparator = L'\\';

LUMO_IMPORT DWORD GetLastError();

LUMO_IMPORT HANDLE CreateFileW(const WCHAR *name, DWORD access, DWORD share_mode, void *security,
                               DWORD creation, DWORD attributes, HANDLE model);
LUMO_IMPORT BOOL ReadFile(HANDLE file, void *buffer, DWORD count, DWORD *out_read, void *overlapped);
LUMO_IMPORT BOOL WriteFile(HANDLE file, const void *buffer, DWORD count, DWORD *out_written,
                           void *overlapped);
LUMO_IMPORT DWORD SetFilePointer(HANDLE file, LONG offset, LONG *offset_high, DWORD origin);
LUMO_IMPORT BOOL SetEndOfFile(HANDLE file);
LUMO_IMPORT BOOL FlushFileBuffers(HANDLE file);
LUMO_IMPORT BOOL CloseHandle(HANDLE handle);
LUMO_IMPORT BOOL DeleteFileW(const WCHAR *name);
LUMO_IMPORT BOOL MoveFileW(const WCHAR *from, const WCHAR *to);
LUMO_IMPORT BOOL CopyFileW(const WCHAR *from, const WCHAR *to, BOOL fail_if_exists);
LUMO_IMPORT DWORD GetFileAttributesW(const WCHAR *name);
LUMO_IMPORT BOOL GetFileAttributesExW(const WCHAR *name, GET_FILEEX_INFO_LEVELS level, void *out_data);

LUMO_IMPORT int MultiByteToWideChar(UINT code_page, DWORD flags, const char *text, int length, WCHAR *wide,
                                    int capacity);
LUMO_IMPORT int WideCharToMultiByte(UINT code_page, DWORD flags, const WCHAR *wide, int length, char *text,
                                    int capacity, const char *default_char, BOOL *used_default);

LUMO_IMPORT DWORD GetModuleFileNameW(HMODULE module, WCHAR *name, DWORD capacity);
LUMO_IMPORT void GetSystemTime(SYSTEMTIME *time);
LUMO_IMPORT void Sleep(DWORD milliseconds);
LUMO_IMPORT void NKDbgPrintfW(const WCHAR *format, ...);
LUMO_IMPORT void RaiseException(DWORD code, DWORD flags, DWORD count, const DWORD *arguments);
LUMO_IMPORT BOOL TerminateProcess(HANDLE process, DWORD status);

struct FileName {
  WCHAR units[MAX_PATH];
};
void MakeFileName(const WCHAR *name, FileName *out_name);
BOOL AppendToFile(const FileName *name, const char *text, size_t length);

void DebugBreak();
[[noreturn]] void PlatformExit(int status);

struct WSADATA {
  WORD wVersion, wHighVersion;
  char szDescription[257];
  char szSystemStatus[129];
  unsigned short iMaxSockets, iMaxUdpDg;
  char *lpVendorInfo;
};
struct in_addr {
  unsigned long s_addr;  // network byte order
};
struct sockaddr {
  unsigned short sa_family;
  char sa_data[14];
};
struct sockaddr_in {
  short sin_family;
  unsigned short sin_port;  // network byte order
  in_addr sin_addr;
  char sin_zero[8];
};

LUMO_IMPORT int WSAStartup(WORD version, WSADATA *data);
LUMO_IMPORT int WSACleanup();
LUMO_IMPORT int WSAGetLastError();
LUMO_IMPORT unsigned long inet_addr(const char *text);
LUMO_IMPORT unsigned short htons(unsigned short value);
LUMO_IMPORT SOCKET socket(int family, int type, int protocol);
LUMO_IMPORT int setsockopt(SOCKET socket, int level, int option, const char *value, int length);
LUMO_IMPORT int connect(SOCKET socket, const sockaddr *address, int length);
LUMO_IMPORT int send(SOCKET socket, const char *data, int length, int flags);
LUMO_IMPORT int recv(SOCKET socket, char *buffer, int capacity, int flags);
LUMO_IMPORT int shutdown(SOCKET socket, int how);
LUMO_IMPORT int closesocket(SOCKET socket);

}  // namespace lumo

#undef LUMO_IMPORT
