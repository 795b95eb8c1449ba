// platform/posix/posix_platform.h: the library's system calls, implemented over POSIX with the results and
// error numbers of the system they come from. Names are UTF-16; "\" in a name stands for "/". The names
// are those of namespace lumo, so that nobody mistakes send, connect and the like for the C library's.
#pragma once

#include "platform/posix/posix_calls.h"
#include "platform/win_names.h"

#define LUMO_WIDE(text) u##text

namespace lumo {

constexpr WCHAR kPathSeparator = u'/';

using in_addr = lumo_in_addr;
using sockaddr = lumo_sockaddr;
using sockaddr_in = lumo_sockaddr_in;

static constexpr auto &GetLastError = lumo_GetLastError;

static constexpr auto &CreateFileW = lumo_CreateFileW;
static constexpr auto &ReadFile = lumo_ReadFile;
static constexpr auto &WriteFile = lumo_WriteFile;
static constexpr auto &SetFilePointer = lumo_SetFilePointer;
static constexpr auto &SetEndOfFile = lumo_SetEndOfFile;
static constexpr auto &FlushFileBuffers = lumo_FlushFileBuffers;
static constexpr auto &CloseHandle = lumo_CloseHandle;
static constexpr auto &DeleteFileW = lumo_DeleteFileW;
static constexpr auto &MoveFileW = lumo_MoveFileW;
static constexpr auto &CopyFileW = lumo_CopyFileW;
static constexpr auto &GetFileAttributesW = lumo_GetFileAttributesW;
static constexpr auto &GetFileAttributesExW = lumo_GetFileAttributesExW;
static constexpr auto &MakeFileName = lumo_MakeFileName;
static constexpr auto &AppendToFile = lumo_AppendToFile;

static constexpr auto &MultiByteToWideChar = lumo_MultiByteToWideChar;
static constexpr auto &WideCharToMultiByte = lumo_WideCharToMultiByte;

static constexpr auto &GetModuleFileNameW = lumo_GetModuleFileNameW;
static constexpr auto &GetSystemTime = lumo_GetSystemTime;
static constexpr auto &Sleep = lumo_Sleep;
static constexpr auto &NKDbgPrintfW = lumo_NKDbgPrintfW;
static constexpr auto &DebugBreak = lumo_DebugBreak;

static constexpr auto &WSAStartup = lumo_WSAStartup;
static constexpr auto &WSACleanup = lumo_WSACleanup;
static constexpr auto &WSAGetLastError = lumo_WSAGetLastError;
static constexpr auto &inet_addr = lumo_inet_addr;
static constexpr auto &htons = lumo_htons;
static constexpr auto &socket = lumo_socket;
static constexpr auto &setsockopt = lumo_setsockopt;
static constexpr auto &connect = lumo_connect;
static constexpr auto &send = lumo_send;
static constexpr auto &recv = lumo_recv;
static constexpr auto &shutdown = lumo_shutdown;
static constexpr auto &closesocket = lumo_closesocket;

}  // namespace lumo
