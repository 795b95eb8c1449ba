#include "foundation/files.h"

#include <cstring>

#include "foundation/arithmetic.h"
#include "foundation/file_names.h"
#include "foundation/memory.h"
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
// Note: "a+" cannot read, and neither "a" form moves to the end.
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
      if (std::strncmp(mode, row.letters, std::strlen(row.letters)) == 0) return &row;
    }
  }
  return nullptr;
}

// The files that must not fail because somebody copies the folder at that moment.
constexpr const char *kPatientFiles[] = {kStateFile, kLogFile, kOfflineFile, kOfflineTmpFile};
constexpr uint32_t kPauseMilliseconds = 25;
constexpr int kPauses = 10;

bool IsPatient(const char *name) {
  for (const char *patient : kPatientFiles) {
    if (name != nullptr && std::strcmp(name, patient) == 0) return true;
  }
  return false;
}

// Makes the call, and again after a pause as long as another program holds the file. `call` tells success.
template <typename Call>
bool TryPatiently(bool is_patient, Call call) {
  for (int pauses = is_patient ? kPauses : 0;; --pauses) {
    if (call()) return true;
    if (pauses == 0 || GetLastError() != ERROR_SHARING_VIOLATION) return false;
    Sleep(kPauseMilliseconds);
  }
}

// A name that makes no path is not refused here or below: with the empty path the system's call fails, and
// has an error number for it.
HANDLE OpenPath(const char *name, DWORD access, DWORD creation) {
  WCHAR path[kPathUnits];
  BuildPath(name, path);
  HANDLE file = INVALID_HANDLE_VALUE;
  TryPatiently(IsPatient(name), [&] {
    file = CreateFileW(path, access, 0, nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr);
    return file != INVALID_HANDLE_VALUE;
  });
  return file;
}

// A null name counts as a missing file.
void TraceOpenFailure(const char *name) {
  const DWORD error = name != nullptr ? GetLastError() : ERROR_FILE_NOT_FOUND;
  TraceError("CreateFile function failed with error %d\n", static_cast<int>(error));
}

// Blanks behind the text of a file are no part of it. False when they could not all be written.
bool AppendBlanks(HANDLE file, uint32_t count) {
  char blanks[256];
  std::memset(blanks, ' ', sizeof blanks);
  while (count != 0) {
    const auto piece = Smaller<uint32_t>(count, sizeof blanks);
    if (!FileWriteAll(file, blanks, piece)) return false;
    count -= piece;
  }
  return true;
}

// A longer text is none that was ever written here: its rest need not be blank, and is not worth the memory.
constexpr uint32_t kMostBlanks = 1024 * 1024;

// Writes the text and, where the old one was longer, blanks over its rest, in one write, and cuts the blanks.
bool WriteOver(HANDLE file, const char *text, uint32_t length, uint32_t old_length) {
  if (old_length <= length) return FileMoveTo(file, 0) && FileWriteAll(file, text, length);
  const uint32_t blanks = Smaller(old_length - length, kMostBlanks);
  const uint32_t padded_length = length + blanks;
  const ScopedText padded(static_cast<char *>(MemMalloc(padded_length, LUMO_HERE)));
  std::memcpy(padded.get(), text, length);
  std::memset(padded.get() + length, ' ', blanks);
  if (!FileMoveTo(file, 0) || !FileWriteAll(file, padded.get(), padded_length)) return false;
  FileFlush(file);  // a power cut must not find the old text cut
  return FileCut(file, length) || padded_length == old_length;
}

// Makes a file of this text, which is closed when this returns: only then can it be moved or deleted.
Replaced WriteAnew(const char *name, const char *text, uint32_t length, Durable durable) {
  const ScopedFile file(OpenPath(name, GENERIC_WRITE, CREATE_ALWAYS));
  if (!FileIsValid(file.get())) return Replaced::kNotOpened;
  if (!FileWriteAll(file.get(), text, length)) return Replaced::kNotWritten;
  if (durable == Durable::kYes) FileFlush(file.get());
  return Replaced::kDone;
}

// Makes the file under its own name: for when name + ".new" cannot be made.
Replaced MakeDirectly(const char *name, const char *text, uint32_t length) {
  const Replaced made = WriteAnew(name, text, length, Durable::kNo);
  if (made == Replaced::kNotOpened) TraceOpenFailure(name);
  if (made == Replaced::kNotWritten) FileDelete(name);
  return made;
}

// A file comes into being under its name only when its text is whole.
Replaced MakeWhole(const char *name, const char *text, uint32_t length) {
  char new_name[kPathUnits];
  if (std::strlen(name) + sizeof kNewSuffix > sizeof new_name) return Replaced::kNotOpened;
  std::strcpy(new_name, name);
  std::strcpy(new_name + std::strlen(name), kNewSuffix);
  // Durable: a power cut must not find the name without the text.
  const Replaced made = WriteAnew(new_name, text, length, Durable::kYes);
  if (made == Replaced::kNotOpened) return MakeDirectly(name, text, length);
  const int move_code = made == Replaced::kDone ? FileMove(new_name, name) : -1;
  if (move_code == 0) return Replaced::kDone;
  FileDelete(new_name);
  // Something has the name all the same, such as a link that leads nowhere.
  return move_code == ERROR_ALREADY_EXISTS ? MakeDirectly(name, text, length) : Replaced::kNotWritten;
}

DWORD FileAttributes(const char *name) {
  WCHAR path[kPathUnits];
  BuildPath(name, path);
  return GetFileAttributesW(path);
}

int ErrorUnless(bool succeeded) {
  return succeeded ? 0 : static_cast<int>(GetLastError());
}

// *out_written counts what reached the file, also when the rest could not.
bool WritePiece(HANDLE file, const void *bytes, uint32_t count, DWORD *out_written) {
  *out_written = 0;
  if (WriteFile(file, bytes, count, out_written, nullptr) == 0) {
    TraceError("WriteFile function failed with error %d\n", static_cast<int>(GetLastError()));
    return false;
  }
  return true;
}

}  // namespace

HANDLE FileOpen(const char *name, const char *mode) {
  HANDLE file = INVALID_HANDLE_VALUE;
  const OpenMode *row = FindMode(mode);
  if (row != nullptr) file = OpenPath(name, row->access, row->creation);
  if (!FileIsValid(file)) TraceOpenFailure(name);
  return file;
}

HANDLE FileOpenShared(const char *name, bool *out_held) {
  HANDLE file = OpenPath(name, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
  *out_held = !FileIsValid(file) && GetLastError() == ERROR_SHARING_VIOLATION;
  if (!FileIsValid(file)) TraceOpenFailure(name);
  return file;
}

bool FileIsValid(HANDLE file) {
  return file != INVALID_HANDLE_VALUE;
}

int FileClose(HANDLE file) {
  return CloseHandle(file);
}

uint32_t FileWrite(const void *buffer, uint32_t size, uint32_t count, HANDLE file) {
  DWORD written = 0;
  return WritePiece(file, buffer, size * count, &written) ? written : 0;
}

bool FileWriteAll(HANDLE file, const void *bytes, uint32_t count, uint32_t *out_written) {
  uint32_t written = 0;
  DWORD piece = 1;
  bool goes_on = true;
  while (goes_on && written < count && piece != 0) {
    goes_on = WritePiece(file, static_cast<const char *>(bytes) + written, count - written, &piece);
    written += piece;
  }
  if (out_written != nullptr) *out_written = written;
  return written == count;
}

bool FileReadPiece(HANDLE file, void *buffer, uint32_t capacity, uint32_t *out_read) {
  DWORD read = 0;
  const BOOL succeeded = ReadFile(file, buffer, capacity, &read, nullptr);
  if (succeeded == 0) {
    TraceError("ReadFile function failed with error %d\n", static_cast<int>(GetLastError()));
    read = 0;
  }
  *out_read = read;
  return succeeded != 0;
}

bool FileReadAll(HANDLE file, void *bytes, uint32_t count, uint32_t *out_read) {
  uint32_t piece = 1;
  *out_read = 0;
  while (*out_read < count && piece != 0) {
    if (!FileReadPiece(file, static_cast<char *>(bytes) + *out_read, count - *out_read, &piece)) return false;
    *out_read += piece;
  }
  return true;
}

uint32_t FileRead(void *buffer, uint32_t size, uint32_t count, HANDLE file) {
  uint32_t read = 0;
  FileReadPiece(file, buffer, size * count, &read);
  return read;
}

int FileSeek(HANDLE file, int32_t offset, uint32_t origin, bool *out_moved) {
  const DWORD position = SetFilePointer(file, offset, nullptr, origin);
  if (out_moved != nullptr) *out_moved = position != INVALID_SET_FILE_POINTER;
  // Note: position 1 alone counts as success, so nearly every seek leaves its error line.
  if (position == 1) return 0;
  TraceError("SetFilePointer function failed with error %d\n", static_cast<int>(GetLastError()));
  return 1;
}

bool FileMoveTo(HANDLE file, uint32_t position) {
  LONG high = 0;
  return SetFilePointer(file, static_cast<LONG>(position), &high, FILE_BEGIN) == position;
}

bool FileMoveToEnd(HANDLE file, uint32_t *out_length) {
  const DWORD length = SetFilePointer(file, 0, nullptr, FILE_END);
  *out_length = length;
  return length != INVALID_SET_FILE_POINTER;
}

bool FileCut(HANDLE file, uint32_t length) {
  return FileMoveTo(file, length) && SetEndOfFile(file) != 0;
}

bool FileFlush(HANDLE file) {
  return FlushFileBuffers(file) != 0;
}

bool ReadFileStamp(const char *name, FileStamp *out_stamp) {
  WCHAR path[kPathUnits];
  BuildPath(name, path);
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (GetFileAttributesExW(path, GetFileExInfoStandard, &data) == 0) return false;
  out_stamp->length = static_cast<uint64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
  out_stamp->writeTime =
      static_cast<uint64_t>(data.ftLastWriteTime.dwHighDateTime) << 32 | data.ftLastWriteTime.dwLowDateTime;
  return true;
}

Replaced FileReplace(const char *name, const char *text, uint32_t length) {
  const ScopedFile file(OpenPath(name, GENERIC_WRITE, OPEN_EXISTING));
  if (!FileIsValid(file.get())) {
    if (GetLastError() == ERROR_FILE_NOT_FOUND) return MakeWhole(name, text, length);
    TraceOpenFailure(name);
    return Replaced::kNotOpened;
  }
  uint32_t old_length = 0;
  if (!FileMoveToEnd(file.get(), &old_length)) return Replaced::kNotWritten;
  // A longer text needs room first: on a full disk the old text is then still there.
  if (old_length < length && !AppendBlanks(file.get(), length - old_length)) {
    FileCut(file.get(), old_length);
    return Replaced::kNotWritten;
  }
  return WriteOver(file.get(), text, length, old_length) ? Replaced::kDone : Replaced::kNotWritten;
}

int FileDelete(const char *name) {
  WCHAR path[kPathUnits];
  BuildPath(name, path);
  return ErrorUnless(TryPatiently(IsPatient(name), [&] { return DeleteFileW(path) != 0; }));
}

int FileMove(const char *from, const char *to) {
  WCHAR from_path[kPathUnits];
  WCHAR to_path[kPathUnits];
  BuildPath(from, from_path);
  BuildPath(to, to_path);
  return ErrorUnless(
      TryPatiently(IsPatient(from) || IsPatient(to), [&] { return MoveFileW(from_path, to_path) != 0; }));
}

bool FileExists(const char *name) {
  return FileAttributes(name) != INVALID_FILE_ATTRIBUTES;
}

bool FileIsPlain(const char *name) {
  const DWORD attributes = FileAttributes(name);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool FileIsMissing(const char *name) {
  if (FileExists(name)) return false;
  const DWORD error = GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

}  // namespace lumo
