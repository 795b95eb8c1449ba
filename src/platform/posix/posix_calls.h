// platform/posix/posix_calls.h: the system calls that the library is written against, as this platform
// implements them: each call under the name lumo_ and its own, and so the types that this system knows too. A
// bare name inside this folder is always the operating system's. The layers above take the calls from
// posix_platform.h, under their own names. Tests put functions of theirs in front of them at the link.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "platform/win_types.h"

namespace lumo {

using WCHAR = char16_t;

struct WSADATA {
  WORD wVersion, wHighVersion;
};
struct lumo_in_addr {
  uint32_t s_addr;  // network byte order
};
struct lumo_sockaddr {
  uint16_t sa_family;
  char sa_data[14];
};
struct lumo_sockaddr_in {
  int16_t sin_family;
  uint16_t sin_port;  // network byte order
  lumo_in_addr sin_addr;
  char sin_zero[8];
};

// Where a file is, as the system takes it.
struct FileName {
  char bytes[3 * MAX_PATH];  // a unit is at most three bytes
};

extern "C" {

DWORD lumo_GetLastError();
void lumo_SetLastError(DWORD error);

// Files. Share mode 0 excludes every other open of the file; it is the only one the library uses. A success
// of SetFilePointer sets the last error to 0. MoveFileW never replaces: ERROR_ALREADY_EXISTS.
HANDLE lumo_CreateFileW(const WCHAR *name, DWORD access, DWORD share_mode, void *security, DWORD creation,
                        DWORD attributes, HANDLE model);
BOOL lumo_ReadFile(HANDLE file, void *buffer, DWORD count, DWORD *out_read, void *overlapped);
BOOL lumo_WriteFile(HANDLE file, const void *buffer, DWORD count, DWORD *out_written, void *overlapped);
DWORD lumo_SetFilePointer(HANDLE file, LONG offset, LONG *offset_high, DWORD origin);
BOOL lumo_SetEndOfFile(HANDLE file);
BOOL lumo_FlushFileBuffers(HANDLE file);
BOOL lumo_CloseHandle(HANDLE handle);
BOOL lumo_DeleteFileW(const WCHAR *name);
BOOL lumo_MoveFileW(const WCHAR *from, const WCHAR *to);
BOOL lumo_CopyFileW(const WCHAR *from, const WCHAR *to, BOOL fail_if_exists);
DWORD lumo_GetFileAttributesW(const WCHAR *name);
// Gives the attributes, the size and the time of the last write; the other times are 0.
BOOL lumo_GetFileAttributesExW(const WCHAR *name, GET_FILEEX_INFO_LEVELS level, void *out_data);

// See platform.h.
void lumo_MakeFileName(const WCHAR *name, FileName *out_name);
BOOL lumo_AppendToFile(const FileName *name, const char *text, size_t length);

// Texts. A length of -1 means up to and with the terminating zero. A byte that is no UTF-8 becomes U+FFFD.
int lumo_MultiByteToWideChar(UINT code_page, DWORD flags, const char *text, int length, WCHAR *wide,
                             int capacity);
int lumo_WideCharToMultiByte(UINT code_page, DWORD flags, const WCHAR *wide, int length, char *text,
                             int capacity, const char *default_char, BOOL *used_default);

// Process and clock. %s in a debug text is a WCHAR text.
DWORD lumo_GetModuleFileNameW(HMODULE module, WCHAR *name, DWORD capacity);
void lumo_GetSystemTime(SYSTEMTIME *time);
void lumo_Sleep(DWORD milliseconds);
void lumo_NKDbgPrintfW(const WCHAR *format, ...);
void lumo_DebugBreak();

// Sockets.
int lumo_WSAStartup(WORD version, WSADATA *data);
int lumo_WSACleanup();
int lumo_WSAGetLastError();
uint32_t lumo_inet_addr(const char *text);
uint16_t lumo_htons(uint16_t value);
SOCKET lumo_socket(int family, int type, int protocol);
int lumo_setsockopt(SOCKET socket, int level, int option, const char *value, int length);
int lumo_connect(SOCKET socket, const lumo_sockaddr *address, int length);
int lumo_send(SOCKET socket, const char *data, int length, int flags);
int lumo_recv(SOCKET socket, char *buffer, int capacity, int flags);
int lumo_shutdown(SOCKET socket, int how);
int lumo_closesocket(SOCKET socket);

}  // extern "C"

[[noreturn]] void PlatformExit(int status);

}  // namespace lumo
