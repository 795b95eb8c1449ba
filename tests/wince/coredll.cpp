// wince/coredll.cpp: stands in for Windows CE's core library where its files are tried on desktop Windows.
// The same calls, with the calling convention of Windows CE. coredll.def forwards what the C library gives.
#include <windows.h>

#include <cstdarg>
#include <cstdio>
#include <cwchar>

extern "C" {

DWORD ce_GetLastError() {
  return GetLastError();
}

HANDLE ce_CreateFileW(const wchar_t *name, DWORD access, DWORD share_mode, SECURITY_ATTRIBUTES *security,
                      DWORD creation, DWORD attributes, HANDLE model) {
  return CreateFileW(name, access, share_mode, security, creation, attributes, model);
}

BOOL ce_ReadFile(HANDLE file, void *buffer, DWORD count, DWORD *out_read, OVERLAPPED *overlapped) {
  return ReadFile(file, buffer, count, out_read, overlapped);
}

BOOL ce_WriteFile(HANDLE file, const void *buffer, DWORD count, DWORD *out_written, OVERLAPPED *overlapped) {
  return WriteFile(file, buffer, count, out_written, overlapped);
}

DWORD ce_SetFilePointer(HANDLE file, LONG offset, LONG *offset_high, DWORD origin) {
  return SetFilePointer(file, offset, offset_high, origin);
}

BOOL ce_SetEndOfFile(HANDLE file) {
  return SetEndOfFile(file);
}

BOOL ce_FlushFileBuffers(HANDLE file) {
  return FlushFileBuffers(file);
}

BOOL ce_GetFileAttributesExW(const wchar_t *name, GET_FILEEX_INFO_LEVELS level, void *out_data) {
  return GetFileAttributesExW(name, level, out_data);
}

void ce_Sleep(DWORD milliseconds) {
  Sleep(milliseconds);
}

BOOL ce_CloseHandle(HANDLE handle) {
  return CloseHandle(handle);
}

BOOL ce_DeleteFileW(const wchar_t *name) {
  return DeleteFileW(name);
}

BOOL ce_MoveFileW(const wchar_t *from, const wchar_t *to) {
  return MoveFileW(from, to);
}

BOOL ce_CopyFileW(const wchar_t *from, const wchar_t *to, BOOL fail_if_exists) {
  return CopyFileW(from, to, fail_if_exists);
}

DWORD ce_GetFileAttributesW(const wchar_t *name) {
  return GetFileAttributesW(name);
}

DWORD ce_GetModuleFileNameW(HMODULE module, wchar_t *name, DWORD capacity) {
  return GetModuleFileNameW(module, name, capacity);
}

int ce_MultiByteToWideChar(UINT code_page, DWORD flags, const char *text, int length, wchar_t *wide,
                           int capacity) {
  return MultiByteToWideChar(code_page, flags, text, length, wide, capacity);
}

int ce_WideCharToMultiByte(UINT code_page, DWORD flags, const wchar_t *wide, int length, char *text,
                           int capacity, const char *default_char, BOOL *used_default) {
  return WideCharToMultiByte(code_page, flags, wide, length, text, capacity, default_char, used_default);
}

void ce_GetSystemTime(SYSTEMTIME *time) {
  GetSystemTime(time);
}

void ce_NKDbgPrintfW(const wchar_t *format, ...) {
  wchar_t text[1024];
  va_list arguments;
  va_start(arguments, format);
  const int length = _vsnwprintf(text, 1023, format, arguments);
  va_end(arguments);
  text[length < 0 ? 1023 : length] = 0;
  char bytes[3 * 1024];
  WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes, sizeof bytes, nullptr, nullptr);
  std::fputs(bytes, stderr);
  std::fflush(stderr);
}

void ce_RaiseException(DWORD code, DWORD flags, DWORD count, const ULONG_PTR *arguments) {
  RaiseException(code, flags, count, arguments);
}

// On Windows CE the number 0x42 always means the calling process.
BOOL ce_TerminateProcess(HANDLE process, DWORD status) {
  const auto number = reinterpret_cast<ULONG_PTR>(process);
  return TerminateProcess(number == 0x42 ? GetCurrentProcess() : process, status);
}

}  // extern "C"
