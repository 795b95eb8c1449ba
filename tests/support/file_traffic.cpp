#ifndef _WIN32
#include "support/file_traffic.h"

#include <algorithm>
#include <utility>

#include "platform/platform.h"

namespace {

constexpr lumo::DWORD kAccessDenied = 5;
constexpr lumo::DWORD kReadFault = 30;
constexpr lumo::DWORD kDiskFull = 112;
constexpr int kNever = -1;

test::FileTraffic traffic;
uint64_t disk_room = UINT64_MAX;
uint64_t next_write = UINT64_MAX;  // the most it takes
int read_fails_after = kNever;
int read_is_short_after = kNever;
int seek_fails_after = kNever;
int refused_opens = 0;
int cut_fails_after = kNever;
int flush_fails_after = kNever;
int look_fails_after = kNever;
int failing_looks = 0;
int open_is_refused_after = 0;
bool look_at_size_fails = false;

// The names that are refused, none at first.
std::string &RefusedOpen() {
  static std::string name;
  return name;
}

// For the next opens of that name, a letter each: 'x' for one that is refused.
std::string &OpensToCome() {
  static std::string letters;
  return letters;
}

std::string &RefusedMove() {
  static std::string name;
  return name;
}

std::function<void()> &WorkBeforeLook() {
  static std::function<void()> work;
  return work;
}

std::string &RefusedDelete() {
  static std::string name;
  return name;
}

bool Refuses(const std::string &refused, const lumo::WCHAR *path) {
  if (refused.empty() || path == nullptr) return false;
  const std::u16string whole(path);
  const std::u16string name = whole.substr(whole.rfind(u'/') + 1);
  return name == std::u16string(refused.begin(), refused.end());
}

bool RefusesOpen(const lumo::WCHAR *path) {
  if (!Refuses(RefusedOpen(), path)) return false;
  std::string &letters = OpensToCome();
  if (!letters.empty()) {
    const char letter = letters.front();
    letters.erase(0, 1);
    return letter == 'x';
  }
  if (open_is_refused_after-- > 0 || refused_opens <= 0) return false;
  --refused_opens;
  return true;
}

// Counts down; true once, when it is the turn of the call that is to fail.
bool IsTurn(int *after) {
  return *after != kNever && (*after)-- == 0;
}

}  // namespace

extern "C" {

lumo::BOOL __real_lumo_MoveFileW(const lumo::WCHAR *from, const lumo::WCHAR *to);
lumo::BOOL __real_lumo_SetEndOfFile(lumo::HANDLE file);
lumo::BOOL __real_lumo_FlushFileBuffers(lumo::HANDLE file);
lumo::DWORD __real_lumo_GetFileAttributesW(const lumo::WCHAR *name);
lumo::BOOL __real_lumo_GetFileAttributesExW(const lumo::WCHAR *name, lumo::GET_FILEEX_INFO_LEVELS level,
                                            void *out_data);
lumo::BOOL __wrap_lumo_MoveFileW(const lumo::WCHAR *from, const lumo::WCHAR *to);
lumo::BOOL __wrap_lumo_SetEndOfFile(lumo::HANDLE file);
lumo::BOOL __wrap_lumo_FlushFileBuffers(lumo::HANDLE file);
lumo::DWORD __wrap_lumo_GetFileAttributesW(const lumo::WCHAR *name);
lumo::BOOL __wrap_lumo_GetFileAttributesExW(const lumo::WCHAR *name, lumo::GET_FILEEX_INFO_LEVELS level,
                                            void *out_data);

lumo::HANDLE __real_lumo_CreateFileW(const lumo::WCHAR *name, lumo::DWORD access, lumo::DWORD share_mode,
                                     void *security, lumo::DWORD creation, lumo::DWORD attributes,
                                     lumo::HANDLE model);
lumo::BOOL __real_lumo_DeleteFileW(const lumo::WCHAR *name);
lumo::BOOL __real_lumo_ReadFile(lumo::HANDLE file, void *buffer, lumo::DWORD count, lumo::DWORD *out_read,
                                void *overlapped);
lumo::BOOL __real_lumo_WriteFile(lumo::HANDLE file, const void *buffer, lumo::DWORD count,
                                 lumo::DWORD *out_written, void *overlapped);
lumo::DWORD __real_lumo_SetFilePointer(lumo::HANDLE file, lumo::LONG offset, lumo::LONG *offset_high,
                                       lumo::DWORD origin);

lumo::HANDLE __wrap_lumo_CreateFileW(const lumo::WCHAR *name, lumo::DWORD access, lumo::DWORD share_mode,
                                     void *security, lumo::DWORD creation, lumo::DWORD attributes,
                                     lumo::HANDLE model);
lumo::BOOL __wrap_lumo_DeleteFileW(const lumo::WCHAR *name);
lumo::BOOL __wrap_lumo_ReadFile(lumo::HANDLE file, void *buffer, lumo::DWORD count, lumo::DWORD *out_read,
                                void *overlapped);
lumo::BOOL __wrap_lumo_WriteFile(lumo::HANDLE file, const void *buffer, lumo::DWORD count,
                                 lumo::DWORD *out_written, void *overlapped);
lumo::DWORD __wrap_lumo_SetFilePointer(lumo::HANDLE file, lumo::LONG offset, lumo::LONG *offset_high,
                                       lumo::DWORD origin);

lumo::HANDLE __wrap_lumo_CreateFileW(const lumo::WCHAR *name, lumo::DWORD access, lumo::DWORD share_mode,
                                     void *security, lumo::DWORD creation, lumo::DWORD attributes,
                                     lumo::HANDLE model) {
  ++traffic.opens;
  if (RefusesOpen(name)) {
    lumo::lumo_SetLastError(kAccessDenied);
    return INVALID_HANDLE_VALUE;
  }
  return __real_lumo_CreateFileW(name, access, share_mode, security, creation, attributes, model);
}

lumo::BOOL __wrap_lumo_DeleteFileW(const lumo::WCHAR *name) {
  traffic.steps += 'D';
  if (Refuses(RefusedDelete(), name)) {
    lumo::lumo_SetLastError(kAccessDenied);
    return 0;
  }
  return __real_lumo_DeleteFileW(name);
}

lumo::BOOL __wrap_lumo_ReadFile(lumo::HANDLE file, void *buffer, lumo::DWORD count, lumo::DWORD *out_read,
                                void *overlapped) {
  if (IsTurn(&read_fails_after)) {
    lumo::lumo_SetLastError(kReadFault);
    *out_read = 0;
    return 0;
  }
  const lumo::DWORD asked = IsTurn(&read_is_short_after) ? std::min<lumo::DWORD>(count, 1) : count;
  const lumo::BOOL succeeded = __real_lumo_ReadFile(file, buffer, asked, out_read, overlapped);
  ++traffic.reads;
  traffic.bytesRead += *out_read;
  traffic.largestRead = std::max(traffic.largestRead, count);
  return succeeded;
}

lumo::BOOL __wrap_lumo_WriteFile(lumo::HANDLE file, const void *buffer, lumo::DWORD count,
                                 lumo::DWORD *out_written, void *overlapped) {
  const auto fitting = static_cast<lumo::DWORD>(std::min<uint64_t>({disk_room, next_write, count}));
  const bool takes_none = next_write == 0;
  next_write = UINT64_MAX;
  ++traffic.writes;
  if (fitting == 0 && count != 0 && !takes_none) {
    lumo::lumo_SetLastError(kDiskFull);
    *out_written = 0;
    return 0;
  }
  const lumo::BOOL succeeded = __real_lumo_WriteFile(file, buffer, fitting, out_written, overlapped);
  if (disk_room != UINT64_MAX) disk_room -= *out_written;
  traffic.bytesWritten += *out_written;
  return succeeded;
}

lumo::DWORD __wrap_lumo_SetFilePointer(lumo::HANDLE file, lumo::LONG offset, lumo::LONG *offset_high,
                                       lumo::DWORD origin) {
  if (IsTurn(&seek_fails_after)) {
    lumo::lumo_SetLastError(kReadFault);
    return lumo::INVALID_SET_FILE_POINTER;
  }
  return __real_lumo_SetFilePointer(file, offset, offset_high, origin);
}

lumo::BOOL __wrap_lumo_MoveFileW(const lumo::WCHAR *from, const lumo::WCHAR *to) {
  traffic.steps += 'M';
  if (Refuses(RefusedMove(), from)) {
    lumo::lumo_SetLastError(kAccessDenied);
    return 0;
  }
  return __real_lumo_MoveFileW(from, to);
}

lumo::BOOL __wrap_lumo_SetEndOfFile(lumo::HANDLE file) {
  traffic.steps += 'C';
  if (IsTurn(&cut_fails_after)) {
    lumo::lumo_SetLastError(kAccessDenied);
    return 0;
  }
  return __real_lumo_SetEndOfFile(file);
}

lumo::BOOL __wrap_lumo_FlushFileBuffers(lumo::HANDLE file) {
  traffic.steps += 'F';
  if (IsTurn(&flush_fails_after)) {
    lumo::lumo_SetLastError(kDiskFull);
    return 0;
  }
  return __real_lumo_FlushFileBuffers(file);
}

lumo::DWORD __wrap_lumo_GetFileAttributesW(const lumo::WCHAR *name) {
  if (look_fails_after != kNever && look_fails_after-- <= 0) {
    look_fails_after = --failing_looks > 0 ? 0 : kNever;
    lumo::lumo_SetLastError(kAccessDenied);
    return lumo::INVALID_FILE_ATTRIBUTES;
  }
  return __real_lumo_GetFileAttributesW(name);
}

lumo::BOOL __wrap_lumo_GetFileAttributesExW(const lumo::WCHAR *name, lumo::GET_FILEEX_INFO_LEVELS level,
                                            void *out_data) {
  if (WorkBeforeLook()) std::exchange(WorkBeforeLook(), {})();
  if (std::exchange(look_at_size_fails, false)) {
    lumo::lumo_SetLastError(kAccessDenied);
    return 0;
  }
  return __real_lumo_GetFileAttributesExW(name, level, out_data);
}

}  // extern "C"

namespace test {

void ResetFileTraffic() {
  traffic = {};
}

FileTraffic CountFileTraffic() {
  return traffic;
}

void RefuseOpen(const std::string &name, int times) {
  RefusedOpen() = name;
  OpensToCome().clear();
  refused_opens = times;
  open_is_refused_after = 0;
}

void RefuseOpenAfter(int opens, const std::string &name) {
  RefuseOpen(name);
  open_is_refused_after = opens;
}

void RefuseSomeOpens(const std::string &name, const std::string &which) {
  RefuseOpen(name, 0);
  OpensToCome() = which;
}

void RefuseMove(const std::string &name) {
  RefusedMove() = name;
}

void RefuseDelete(const std::string &name) {
  RefusedDelete() = name;
}

void LeaveDiskRoom(uint64_t bytes) {
  disk_room = bytes;
}

void CutNextWrite(uint64_t bytes) {
  next_write = bytes;
}

void FailReadAfter(int reads) {
  read_fails_after = reads;
}

void FailSeekAfter(int seeks) {
  seek_fails_after = seeks;
}

void FailCutAfter(int cuts) {
  cut_fails_after = cuts;
}

void FailFlushAfter(int flushes) {
  flush_fails_after = flushes;
}

void FailLookAfter(int looks, int failing) {
  look_fails_after = looks;
  failing_looks = failing;
}

void FailLookAtSize() {
  look_at_size_fails = true;
}

void BeforeLook(std::function<void()> work) {
  WorkBeforeLook() = std::move(work);
}

void ShortenReadAfter(int reads) {
  read_is_short_after = reads;
}

void EndFileTrouble() {
  RefuseOpen("");
  RefuseDelete("");
  RefuseMove("");
  LeaveDiskRoom(UINT64_MAX);
  CutNextWrite(UINT64_MAX);
  FailReadAfter(kNever);
  FailSeekAfter(kNever);
  FailCutAfter(kNever);
  FailFlushAfter(kNever);
  FailLookAfter(kNever);
  look_at_size_fails = false;
  BeforeLook({});
  ShortenReadAfter(kNever);
}

}  // namespace test
#endif
