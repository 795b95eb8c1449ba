// platform/posix/posix_platform.h: the library's system calls, implemented over POSIX with the results and
// error numbers of the system they come from. Names are UTF-16; "\" in a name stands for "/". The functions
// live in namespace lumo, so that send, connect and the like are not mistaken for the C library's.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace lumo {

using WCHAR = char16_t;
using BOOL = int;
using DWORD = uint32_t;
using LONG = int32_t;
using UINT = uint32_t;
using WORD = uint16_t;
using HANDLE = void *;
using HMODULE = void *;

#define LUMO_WIDE(text) u##text
constexpr WCHAR kPathSeparator = u'/';

// INVALID_HANDLE_VALUE is all bits set, as a pointer.
#define INVALID_HANDLE_VALUE (reinterpret_cast<::lumo::HANDLE>(static_cast<intptr_t>(-1)))

constexpr DWORD GENERIC_READ = 0x80000000U;
constexpr DWORD GENERIC_WRITE = 0x40000000U;
constexpr DWORD CREATE_ALWAYS = 2;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD OPEN_ALWAYS = 4;
constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFFU;
constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFFU;
constexpr DWORD FILE_BEGIN = 0;
constexpr DWORD FILE_CURRENT = 1;
constexpr DWORD FILE_END = 2;
constexpr UINT CP_UTF8 = 65001;

constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;
constexpr DWORD ERROR_WRITE_FAULT = 29;
constexpr DWORD ERROR_READ_FAULT = 30;
constexpr DWORD ERROR_GEN_FAILURE = 31;
constexpr DWORD ERROR_SHARING_VIOLATION = 32;
constexpr DWORD ERROR_FILE_EXISTS = 80;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
constexpr DWORD ERROR_DISK_FULL = 112;
constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
constexpr DWORD ERROR_INVALID_NAME = 123;
constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
constexpr DWORD ERROR_ALREADY_EXISTS = 183;
constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;

struct SYSTEMTIME {
  WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};

DWORD GetLastError();

// Files. Share mode 0 excludes every other open of the file; it is the only one the library uses.
HANDLE CreateFileW(const WCHAR *name, DWORD access, DWORD share_mode, void *security, DWORD creation,
                   DWORD attributes, HANDLE model);
BOOL ReadFile(HANDLE file, void *buffer, DWORD count, DWORD *out_read, void *overlapped);
BOOL WriteFile(HANDLE file, const void *buffer, DWORD count, DWORD *out_written, void *overlapped);
DWORD SetFilePointer(HANDLE file, LONG offset, LONG *offset_high,
                     DWORD origin);  // success sets the last error to 0
BOOL CloseHandle(HANDLE handle);
BOOL DeleteFileW(const WCHAR *name);
BOOL MoveFileW(const WCHAR *from, const WCHAR *to);  // never replaces: ERROR_ALREADY_EXISTS
BOOL CopyFileW(const WCHAR *from, const WCHAR *to, BOOL fail_if_exists);
DWORD GetFileAttributesW(const WCHAR *name);
FILE *_wfopen(const WCHAR *name, const WCHAR *mode);

// Texts. A length of -1 means up to and with the terminating zero. A byte that is no UTF-8 becomes U+FFFD.
int MultiByteToWideChar(UINT code_page, DWORD flags, const char *text, int length, WCHAR *wide, int capacity);
int WideCharToMultiByte(UINT code_page, DWORD flags, const WCHAR *wide, int length, char *text, int capacity,
                        const char *default_char, BOOL *used_default);
// A null buffer measures. A text that fills the buffer has no terminator, a longer one is cut and gives -1.
int _vsnprintf(char *buffer, size_t capacity, const char *format, va_list arguments)
    __attribute__((format(printf, 3, 0)));

// Process and clock.
DWORD GetModuleFileNameW(HMODULE module, WCHAR *name, DWORD capacity);
void GetSystemTime(SYSTEMTIME *time);
void NKDbgPrintfW(const WCHAR *format, ...);  // %s is a WCHAR text
void DebugBreak();
[[noreturn]] void PlatformExit(int status);

// Sockets.
using SOCKET = uintptr_t;
constexpr SOCKET INVALID_SOCKET = ~static_cast<SOCKET>(0);
constexpr int SOCKET_ERROR = -1;
constexpr int AF_INET = 2;
constexpr int SOCK_STREAM = 1;
constexpr int SOL_SOCKET = 0xFFFF;
constexpr int SO_SNDTIMEO = 0x1005;  // milliseconds, 4 bytes
constexpr int SO_RCVTIMEO = 0x1006;
constexpr int SD_BOTH = 2;
constexpr uint32_t INADDR_NONE = 0xFFFFFFFFU;

constexpr int WSAEINTR = 10004;
constexpr int WSAEACCES = 10013;
constexpr int WSAEFAULT = 10014;
constexpr int WSAEINVAL = 10022;
constexpr int WSAEMFILE = 10024;
constexpr int WSAENOTSOCK = 10038;
constexpr int WSAENOPROTOOPT = 10042;
constexpr int WSAEPROTONOSUPPORT = 10043;
constexpr int WSAEAFNOSUPPORT = 10047;
constexpr int WSAEADDRINUSE = 10048;
constexpr int WSAEADDRNOTAVAIL = 10049;
constexpr int WSAENETDOWN = 10050;
constexpr int WSAENETUNREACH = 10051;
constexpr int WSAENETRESET = 10052;
constexpr int WSAECONNABORTED = 10053;
constexpr int WSAECONNRESET = 10054;
constexpr int WSAENOBUFS = 10055;
constexpr int WSAEISCONN = 10056;
constexpr int WSAENOTCONN = 10057;
constexpr int WSAESHUTDOWN = 10058;
constexpr int WSAETIMEDOUT = 10060;
constexpr int WSAECONNREFUSED = 10061;
constexpr int WSAEHOSTUNREACH = 10065;
constexpr int WSANOTINITIALISED = 10093;

struct WSADATA {
  WORD wVersion, wHighVersion;
};
struct in_addr {
  uint32_t s_addr;  // network byte order
};
struct sockaddr {
  uint16_t sa_family;
  char sa_data[14];
};
struct sockaddr_in {
  int16_t sin_family;
  uint16_t sin_port;  // network byte order
  in_addr sin_addr;
  char sin_zero[8];
};

constexpr WORD MAKEWORD(int low, int high) {
  return static_cast<WORD>((low & 0xFF) | ((high & 0xFF) << 8));
}

int WSAStartup(WORD version, WSADATA *data);
int WSACleanup();
int WSAGetLastError();
uint32_t inet_addr(const char *text);
uint16_t htons(uint16_t value);
SOCKET socket(int family, int type, int protocol);
int setsockopt(SOCKET socket, int level, int option, const char *value, int length);
int connect(SOCKET socket, const sockaddr *address, int length);
int send(SOCKET socket, const char *data, int length, int flags);
int recv(SOCKET socket, char *buffer, int capacity, int flags);
int shutdown(SOCKET socket, int how);
int closesocket(SOCKET socket);

}  // namespace lumo
