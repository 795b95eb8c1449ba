#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "platform/posix/posix_internal.h"

// Exclusive opens are flock locks: they hold between descriptors of one process too, end with the descriptor
// and leave nothing behind after a crash. Share mode 0 takes the exclusive lock. Whatever else touches a
// file's contents or its name takes a lock as well, and so meets the same sharing violation as on Windows.

namespace lumo {
namespace {

// A handle is the descriptor's number plus one, since on Windows 0 is never a handle.
HANDLE HandleOf(int descriptor) {
  return reinterpret_cast<HANDLE>(static_cast<intptr_t>(descriptor) + 1);
}
int DescriptorOf(HANDLE handle) {
  const auto value = reinterpret_cast<intptr_t>(handle);
  return value > 0 && value <= INT32_MAX ? static_cast<int>(value - 1) : -1;
}

BOOL Fail(DWORD error) {
  lumo_SetLastError(error);
  return 0;
}

// `rest` is the answer to an error that has no number of its own here.
DWORD ErrorOf(int error, DWORD rest = ERROR_GEN_FAILURE) {
  switch (error) {
    case ENOENT:
      return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
      return ERROR_PATH_NOT_FOUND;
    case EMFILE:
    case ENFILE:
      return ERROR_TOO_MANY_OPEN_FILES;
    case EACCES:
    case EPERM:
    case EISDIR:
    case EROFS:
      return ERROR_ACCESS_DENIED;
    case EBADF:
      return ERROR_INVALID_HANDLE;
    case ENOMEM:
      return ERROR_NOT_ENOUGH_MEMORY;
    case EXDEV:
      return ERROR_NOT_SAME_DEVICE;
    case EWOULDBLOCK:
    case EBUSY:
    case ETXTBSY:
      return ERROR_SHARING_VIOLATION;
    case EEXIST:
      return ERROR_ALREADY_EXISTS;
    case EINVAL:
      return ERROR_INVALID_PARAMETER;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return ERROR_DISK_FULL;
    case ENAMETOOLONG:
      return ERROR_FILENAME_EXCED_RANGE;
    default:
      return rest;
  }
}

using Name = decltype(FileName::bytes);

// Converts a name. False, with the error set, for one that no file can have.
bool Convert(const WCHAR *wide, Name &name) {
  if (wide == nullptr || *wide == 0) return Fail(ERROR_PATH_NOT_FOUND) != 0;
  if (lumo_WideCharToMultiByte(CP_UTF8, 0, wide, -1, name, sizeof name, nullptr, nullptr) == 0) {
    return Fail(ERROR_FILENAME_EXCED_RANGE) != 0;
  }
  for (char *at = name; (at = std::strchr(at, '\\')) != nullptr;) *at = '/';
  return true;
}

// Why `name` cannot be had: a missing file and a missing folder are told apart.
DWORD ErrorOfName(int error, const Name &name) {
  if (error != ENOENT) return ErrorOf(error);
  const char *const separator = std::strrchr(name, '/');
  if (separator == nullptr || separator == name) return ERROR_FILE_NOT_FOUND;
  Name folder;
  const auto length = static_cast<size_t>(separator - name);
  std::memcpy(folder, name, length);
  folder[length] = 0;
  struct stat status;
  return stat(folder, &status) == 0 ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

int OpenAgain(const Name &name, int flags, mode_t mode) {
  int descriptor;
  do {
    descriptor = open(name, flags | O_CLOEXEC | O_NOCTTY, mode);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

constexpr int kTries = 20;

enum Missing { kFail, kCreate };
enum Existing { kKeep, kTruncate, kRefuse };

// Opens and locks a file. -1, with the error set, when it cannot be had; *out_created tells a new
// file from an old one. The file is cut only once it is locked: a refused open must not have emptied
// what another holds.
int OpenLocked(const Name &name, int access, Missing missing, Existing existing, int lock, mode_t mode,
               bool *out_created) {
  for (int tries = 1;; ++tries) {
    *out_created = false;
    int descriptor = existing == kRefuse ? -1 : OpenAgain(name, access, 0);
    if (descriptor < 0 && missing == kCreate && (existing == kRefuse || errno == ENOENT)) {
      descriptor = OpenAgain(name, access | O_CREAT | O_EXCL, mode);
      *out_created = descriptor >= 0;
      struct stat link;
      // Somebody made it in between: look again. (A link that leads nowhere is not made by anybody.)
      if (descriptor < 0 && errno == EEXIST && existing != kRefuse && stat(name, &link) == 0) continue;
    }
    if (descriptor < 0) {
      lumo_SetLastError(errno == EEXIST ? ERROR_FILE_EXISTS : ErrorOfName(errno, name));
      return -1;
    }
    struct stat opened, named;
    if (fstat(descriptor, &opened) != 0 || S_ISDIR(opened.st_mode)) {
      close(descriptor);
      lumo_SetLastError(ERROR_ACCESS_DENIED);
      return -1;
    }
    if (flock(descriptor, lock | LOCK_NB) != 0) {
      const int error = errno;
      close(descriptor);
      if (error == EINTR) continue;
      lumo_SetLastError(ErrorOf(error));
      return -1;
    }
    // Between the open and the lock the file may have been deleted or moved: then this is not the file of
    // that name. (On a file system that gives a file another number at each look, the last try takes it
    // as it is.)
    if (tries < kTries &&
        (stat(name, &named) != 0 || named.st_ino != opened.st_ino || named.st_dev != opened.st_dev)) {
      close(descriptor);
      continue;
    }
    // Devices and pipes have no size.
    if (existing == kTruncate && opened.st_size != 0 && ftruncate(descriptor, 0) != 0) {
      const int error = errno;
      close(descriptor);
      lumo_SetLastError(ErrorOf(error));
      return -1;
    }
    return descriptor;
  }
}

// A file's name is about to change or go: nobody may have the file open. -1, with the error set,
// when somebody has.
int LockName(const Name &name, bool folders) {
  for (;;) {
    const int descriptor = OpenAgain(name, O_RDONLY | O_NONBLOCK, 0);
    if (descriptor < 0) {
      lumo_SetLastError(ErrorOfName(errno, name));
      return -1;
    }
    struct stat status;
    const bool is_folder = fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
    if (is_folder && folders) return descriptor;
    const int error = is_folder ? EISDIR : flock(descriptor, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
    if (error == 0) return descriptor;
    close(descriptor);
    if (error == EINTR) continue;
    lumo_SetLastError(ErrorOf(error));
    return -1;
  }
}

// Reads or writes all of it unless the end of the file, or an error, comes first.
template <typename Byte, typename Call>
BOOL Transfer(HANDLE file, Byte *buffer, DWORD count, DWORD *out_done, DWORD rest, Call call) {
  DWORD done = 0;
  *out_done = 0;
  const int descriptor = DescriptorOf(file);
  do {
    const ssize_t result = call(descriptor, buffer + done, count - done);
    if (result < 0 && errno == EINTR) continue;
    if (result < 0) {
      // The descriptor is there: it was opened for the other direction.
      if (errno == EBADF && fcntl(descriptor, F_GETFL) != -1) return Fail(ERROR_ACCESS_DENIED);
      return Fail(ErrorOf(errno, rest));
    }
    if (result == 0) break;
    done += static_cast<DWORD>(result);
    *out_done = done;
  } while (done < count);
  return 1;
}

}  // namespace

HANDLE lumo_CreateFileW(const WCHAR *name, DWORD access, DWORD, void *, DWORD creation, DWORD, HANDLE) {
  Name file;
  if (!Convert(name, file)) return INVALID_HANDLE_VALUE;
  if (creation < CREATE_ALWAYS || creation > OPEN_ALWAYS) {
    lumo_SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_HANDLE_VALUE;
  }
  const bool reads = (access & GENERIC_READ) != 0, writes = (access & GENERIC_WRITE) != 0;
  bool created = false;
  const int descriptor = OpenLocked(file,
                                    reads && writes ? O_RDWR
                                    : writes        ? O_WRONLY
                                                    : O_RDONLY,
                                    creation == OPEN_EXISTING ? kFail : kCreate,
                                    creation == CREATE_ALWAYS ? kTruncate : kKeep, LOCK_EX, 0666, &created);
  if (descriptor < 0) return INVALID_HANDLE_VALUE;
  lumo_SetLastError(creation == OPEN_EXISTING || created ? 0 : ERROR_ALREADY_EXISTS);
  return HandleOf(descriptor);
}

BOOL lumo_ReadFile(HANDLE file, void *buffer, DWORD count, DWORD *out_read, void *) {
  return Transfer(file, static_cast<char *>(buffer), count, out_read, ERROR_READ_FAULT,
                  [](int descriptor, char *bytes, size_t size) { return read(descriptor, bytes, size); });
}

BOOL lumo_WriteFile(HANDLE file, const void *buffer, DWORD count, DWORD *out_written, void *) {
  return Transfer(
      file, static_cast<const char *>(buffer), count, out_written, ERROR_WRITE_FAULT,
      [](int descriptor, const char *bytes, size_t size) { return write(descriptor, bytes, size); });
}

DWORD lumo_SetFilePointer(HANDLE file, LONG offset, LONG *offset_high, DWORD origin) {
  const int descriptor = DescriptorOf(file);
  if (origin > FILE_END) {
    lumo_SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_SET_FILE_POINTER;
  }
  int64_t base = 0;
  if (origin == FILE_CURRENT) base = lseek(descriptor, 0, SEEK_CUR);
  if (origin == FILE_END) {
    struct stat status;
    base = fstat(descriptor, &status) == 0 ? status.st_size : -1;
  }
  if (base < 0) {
    lumo_SetLastError(ErrorOf(errno));
    return INVALID_SET_FILE_POINTER;
  }
  int64_t distance = offset;
  if (offset_high != nullptr) {
    distance = static_cast<int64_t>(static_cast<uint64_t>(static_cast<uint32_t>(*offset_high)) << 32 |
                                    static_cast<uint32_t>(offset));
  }
  int64_t position = 0;
  if (__builtin_add_overflow(base, distance, &position) ||
      (offset_high == nullptr && position > 0xFFFFFFFFLL)) {
    lumo_SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_SET_FILE_POINTER;
  }
  if (position < 0) {
    lumo_SetLastError(ERROR_NEGATIVE_SEEK);
    return INVALID_SET_FILE_POINTER;
  }
  if (lseek(descriptor, static_cast<off_t>(position), SEEK_SET) < 0) {
    lumo_SetLastError(ErrorOf(errno));
    return INVALID_SET_FILE_POINTER;
  }
  if (offset_high != nullptr) *offset_high = static_cast<LONG>(position >> 32);
  lumo_SetLastError(0);
  return static_cast<DWORD>(position);
}

BOOL lumo_SetEndOfFile(HANDLE file) {
  const int descriptor = DescriptorOf(file);
  const off_t position = lseek(descriptor, 0, SEEK_CUR);
  if (position < 0) return Fail(ErrorOf(errno));
  int result;
  do {
    result = ftruncate(descriptor, position);
  } while (result != 0 && errno == EINTR);
  if (result == 0) return 1;
  // A descriptor that cannot be cut was opened for reading.
  return Fail(errno == EINVAL || errno == EBADF ? ERROR_ACCESS_DENIED : ErrorOf(errno));
}

BOOL lumo_FlushFileBuffers(HANDLE file) {
  const int descriptor = DescriptorOf(file);
  if (fdatasync(descriptor) == 0) return 1;
  // What has no disk behind it has nothing to flush.
  return errno == EINVAL || errno == EROFS ? 1 : Fail(ErrorOf(errno, ERROR_WRITE_FAULT));
}

BOOL lumo_CloseHandle(HANDLE handle) {
  // An interrupted close has closed.
  if (close(DescriptorOf(handle)) != 0 && errno != EINTR) return Fail(ErrorOf(errno));
  return 1;
}

BOOL lumo_DeleteFileW(const WCHAR *name) {
  Name file;
  if (!Convert(name, file)) return 0;
  const int descriptor = LockName(file, false);
  if (descriptor < 0) return 0;
  const int error = unlink(file) == 0 ? 0 : errno;
  close(descriptor);
  return error == 0 ? 1 : Fail(ErrorOfName(error, file));
}

BOOL lumo_MoveFileW(const WCHAR *from, const WCHAR *to) {
  Name source, target;
  if (!Convert(from, source) || !Convert(to, target)) return 0;
  const int descriptor = LockName(source, true);
  if (descriptor < 0) return 0;
  int error = renameat2(AT_FDCWD, source, AT_FDCWD, target, RENAME_NOREPLACE) == 0 ? 0 : errno;
  if (error == EINVAL || error == ENOSYS) {
    // Not every file system has it. A link refuses an existing target just as surely, and for a moment there
    // are two names.
    error = link(source, target) == 0 && unlink(source) == 0 ? 0 : errno;
  }
  close(descriptor);
  return error == 0 ? 1 : Fail(ErrorOfName(error, target));
}

BOOL lumo_CopyFileW(const WCHAR *from, const WCHAR *to, BOOL fail_if_exists) {
  Name source_name, target_name;
  if (!Convert(from, source_name) || !Convert(to, target_name)) return 0;
  bool created = false;
  const int source = OpenLocked(source_name, O_RDONLY, kFail, kKeep, LOCK_SH, 0, &created);
  if (source < 0) return 0;
  struct stat status = {};
  const mode_t mode = fstat(source, &status) == 0 ? status.st_mode & 0777 : 0666;
  // The lock also refuses a file as its own copy, before anything is cut.
  const int target = OpenLocked(target_name, O_WRONLY, kCreate, fail_if_exists ? kRefuse : kTruncate, LOCK_EX,
                                mode, &created);
  BOOL copied = target >= 0;
  char buffer[3072];
  DWORD count = 0;
  while (copied && (copied = lumo_ReadFile(HandleOf(source), buffer, sizeof buffer, &count, nullptr)) != 0 &&
         count != 0) {
    copied = lumo_WriteFile(HandleOf(target), buffer, count, &count, nullptr);
  }
  // Half a file under the name of a whole one helps nobody.
  if (target >= 0 && !copied) unlink(target_name);
  if (target >= 0 && close(target) != 0 && errno != EINTR && copied) {
    copied = Fail(ErrorOf(errno, ERROR_WRITE_FAULT));
  }
  close(source);
  return copied;
}

DWORD lumo_GetFileAttributesW(const WCHAR *name) {
  Name file;
  if (!Convert(name, file)) return INVALID_FILE_ATTRIBUTES;
  struct stat status;
  if (stat(file, &status) != 0) {
    lumo_SetLastError(ErrorOfName(errno, file));
    return INVALID_FILE_ATTRIBUTES;
  }
  return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}

BOOL lumo_GetFileAttributesExW(const WCHAR *name, GET_FILEEX_INFO_LEVELS level, void *out_data) {
  Name file;
  if (level != GetFileExInfoStandard || out_data == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  if (!Convert(name, file)) return 0;
  struct stat status;
  if (stat(file, &status) != 0) return Fail(ErrorOfName(errno, file));
  auto *const data = static_cast<WIN32_FILE_ATTRIBUTE_DATA *>(out_data);
  *data = {};
  data->dwFileAttributes = S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
  const auto size = static_cast<uint64_t>(status.st_size);
  data->nFileSizeHigh = static_cast<DWORD>(size >> 32);
  data->nFileSizeLow = static_cast<DWORD>(size);
  // In tenths of a microsecond since 1601.
  const uint64_t time = (static_cast<uint64_t>(status.st_mtim.tv_sec) + 11644473600U) * 10000000U +
                        static_cast<uint64_t>(status.st_mtim.tv_nsec) / 100;
  data->ftLastWriteTime = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
  return 1;
}

void lumo_MakeFileName(const WCHAR *name, FileName *out_name) {
  if (!Convert(name, out_name->bytes)) out_name->bytes[0] = 0;
}

// Note: it takes no lock and heeds none.
BOOL lumo_AppendToFile(const FileName *name, const char *text, size_t length) {
  const int descriptor = OpenAgain(name->bytes, O_WRONLY | O_APPEND | O_CREAT, 0666);
  if (descriptor < 0) return 0;
  size_t done = 0;
  while (done < length) {
    const ssize_t result = write(descriptor, text + done, length - done);
    if (result < 0 && errno == EINTR) continue;
    if (result <= 0) break;
    done += static_cast<size_t>(result);
  }
  close(descriptor);
  return done == length;
}

}  // namespace lumo
