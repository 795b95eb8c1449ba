// platform/win_types.h: the types and numbers of the calls, for the platforms that have no header of the
// system for them. Some names are macros in other systems' headers. Those are behind the prefix WIN_ here,
// and win_names.h gives them their own.
#pragma once

#include <cstdint>

namespace lumo {

using BOOL = int;
using DWORD = uint32_t;
using LONG = int32_t;
using UINT = uint32_t;
using WORD = uint16_t;
using HANDLE = void *;
using HMODULE = void *;
using SOCKET = uintptr_t;

// INVALID_HANDLE_VALUE is all bits set, as a pointer.
#define INVALID_HANDLE_VALUE (reinterpret_cast<::lumo::HANDLE>(static_cast<intptr_t>(-1)))

struct SYSTEMTIME {
  WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};
struct FILETIME {
  DWORD dwLowDateTime, dwHighDateTime;
};
struct WIN32_FILE_ATTRIBUTE_DATA {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime, ftLastAccessTime, ftLastWriteTime;
  DWORD nFileSizeHigh, nFileSizeLow;
};
enum GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard };

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
constexpr DWORD MAX_PATH = 260;  // units of a path, terminator included
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

constexpr SOCKET INVALID_SOCKET = ~static_cast<SOCKET>(0);
constexpr int SOCKET_ERROR = -1;
constexpr int WIN_AF_INET = 2;
constexpr int WIN_SOCK_STREAM = 1;
constexpr int WIN_SOL_SOCKET = 0xFFFF;
constexpr int WIN_SO_SNDTIMEO = 0x1005;  // milliseconds, 4 bytes
constexpr int WIN_SO_RCVTIMEO = 0x1006;
constexpr uint32_t WIN_INADDR_NONE = 0xFFFFFFFFU;
constexpr int SD_BOTH = 2;

constexpr WORD MAKEWORD(int low, int high) {
  return static_cast<WORD>((low & 0xFF) | ((high & 0xFF) << 8));
}

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

}  // namespace lumo
