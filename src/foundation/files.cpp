#include "foundation/files.h"

#include <cstring>

#include "foundation/module_path.h"
#include "foundation/trace.h"

namespace lumo {
namespace {

struct OpenMode {
  char letters[3];
  DWORD access;
  DWORD creation;
};

// The first row whose letters begin the mode text decides.
// Deliberate: "a+" cannot read, and neither "a" form moves to the end.
constexpr OpenMode kOpenModes[] = {
    {"w+", GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS},
    {"w", GENERIC_WRITE, CREATE_ALWAYS},
    {"r+", GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING},
    {"r", GENERIC_READ, OPEN_EXISTING},
    {"a+", GENERIC_WRITE, OPEN_ALWAYS},
    {"a", GENERIC_WRITE, OPEN_ALWAYS},
};

const OpenMode *FindMode(const char *mode) {
  if (mode != nullptr) {
    for (const OpenMode &row : kOpenModes) {
      if (std::strncmp(mode, row.letters, std::strlen(row.letters)) == 0) {
        return &row;
      }
    }
  }
  return nullptr;
}

int ErrorUnless(BOOL succeeded) {
  return succeeded != 0 ? 0 : static_cast<int>(GetLastError());
}

}  // namespace

// A name that makes no path is not refused here or below: the empty path lets the system's call fail, with
// its error number. A null name is a missing file.
HANDLE FileOpen(const char *name, const char *mode) {
  HANDLE file = INVALID_HANDLE_VALUE;
  const OpenMode *row = FindMode(mode);
  if (row != nullptr) {
    WCHAR path[kPathUnits];
    BuildPath(name, path);
    file = CreateFileW(path, row->access, 0, nullptr, row->creation, FILE_ATTRIBUTE_NORMAL, nullptr);
  }
  if (file == INVALID_HANDLE_VALUE) {
    const DWORD error = name != nullptr ? GetLastError() : ERROR_FILE_NOT_FOUND;
    TraceError("CreateFile function failed with error %d\n", static_cast<int>(error));
  }
  return file;
}

int FileIsValid(HANDLE file) {
  return file != INVALID_HANDLE_VALUE ? 1 : 0;
}

int FileClose(HANDLE file) {
  return CloseHandle(file);
}

uint32_t FileWrite(const void *buffer, uint32_t size, uint32_t count, HANDLE file) {
  DWORD written = 0;
  if (WriteFile(file, buffer, size * count, &written, nullptr) == 0) {
    TraceError("WriteFile function failed with error %d\n", static_cast<int>(GetLastError()));
    return 0;
  }
  return written;
}

uint32_t FileRead(void *buffer, uint32_t size, uint32_t count, HANDLE file) {
  DWORD read = 0;
  if (ReadFile(file, buffer, size * count, &read, nullptr) == 0) {
    TraceError("ReadFile function failed with error %d\n", static_cast<int>(GetLastError()));
    return 0;
  }
  return read;
}

int FileSeek(HANDLE file, int32_t offset, uint32_t origin) {
  // Deliberate: position 1 alone counts as success, so nearly every seek leaves its error line.
  if (SetFilePointer(file, offset, nullptr, origin) == 1) {
    return 0;
  }
  TraceError("SetFilePointer function failed with error %d\n", static_cast<int>(GetLastError()));
  return 1;
}

int FileDelete(const char *name) {
  WCHAR path[kPathUnits];
  BuildPath(name, path);
  return ErrorUnless(DeleteFileW(path));
}

int FileMove(const char *from, const char *to) {
  WCHAR from_path[kPathUnits];
  WCHAR to_path[kPathUnits];
  BuildPath(from, from_path);
  BuildPath(to, to_path);
  return ErrorUnless(MoveFileW(from_path, to_path));
}

int FileCopy(const char *from, const char *to) {
  WCHAR from_path[kPathUnits];
  WCHAR to_path[kPathUnits];
  BuildPath(from, from_path);
  BuildPath(to, to_path);
  return ErrorUnless(CopyFileW(from_path, to_path, 0));
}

int FileExists(const char *name) {
  WCHAR path[kPathUnits];
  BuildPath(name, path);
  return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES ? 1 : 0;
}

}  // namespace lumo
