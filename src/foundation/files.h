// foundation/files.h: the files of the library, by UTF-8 name relative to moduleDirectory. Every open is
// exclusive. Failures are traced as errors and reported by value; none of them stops an operation.
#pragma once

#include <cstdint>

#include "platform/platform.h"

namespace lumo {

// "w+" and "w" create or truncate, "r+" and "r" open what exists, "a+" and "a" open or create for writing,
// both without moving to the end. Letters after these are passed over. Anything else gives the invalid
// handle. A file of the library's own that another program holds is tried again for a quarter of a second,
// here and in FileDelete and FileMove.
HANDLE FileOpen(const char *name, const char *mode);
// Opens a file to read and write it, made anew when there is none. Traced like FileOpen. *out_held: it could
// not be opened because another program holds it.
HANDLE FileOpenShared(const char *name, bool *out_held);
bool FileIsValid(HANDLE file);
int FileClose(HANDLE file);
// The bytes written or read: size * count, or fewer. 0 after a failure, and at the end of the file.
uint32_t FileWrite(const void *buffer, uint32_t size, uint32_t count, HANDLE file);
uint32_t FileRead(void *buffer, uint32_t size, uint32_t count, HANDLE file);

// Reads up to `capacity` bytes; *out_read is 0 at the end of the file alone. False when the read failed.
bool FileReadPiece(HANDLE file, void *buffer, uint32_t capacity, uint32_t *out_read);
// Reads so many bytes, or up to the end of the file; a read that comes short is carried on. False when a read
// failed; *out_read counts what was read.
bool FileReadAll(HANDLE file, void *bytes, uint32_t count, uint32_t *out_read);
// Writes all the bytes; a write that comes short is carried on. False when not all could be written;
// *out_written counts what could.
bool FileWriteAll(HANDLE file, const void *bytes, uint32_t count, uint32_t *out_written = nullptr);

// Note: returns 0 only when the new position is exactly 1; every other seek, a good one included, returns 1
// and leaves an error line in the trace. Whether it went well, *out_moved says.
int FileSeek(HANDLE file, int32_t offset, uint32_t origin, bool *out_moved = nullptr);

// These leave no line in the trace, and return false when the system refuses.
bool FileMoveTo(HANDLE file, uint32_t position);
bool FileMoveToEnd(HANDLE file, uint32_t *out_length);
bool FileCut(HANDLE file, uint32_t length);  // the position is then the end
bool FileFlush(HANDLE file);                 // to the disk, so that it survives a power cut

// Whether what is written must be on the disk when the call that writes it returns.
enum class Durable { kNo, kYes };

// What tells one content of a file from another.
struct FileStamp {
  uint64_t length;
  uint64_t writeTime;  // the system's own unit
};
bool ReadFileStamp(const char *name, FileStamp *out_stamp);  // false when there is no such file

// Writes a small file over as a whole, so that a process that ends at any moment leaves a whole text: the old
// one or the new one, perhaps with blanks behind it. A missing file is made under the name + ".new" first,
// unless something stands there that cannot be written.
enum class Replaced { kDone, kNotOpened, kNotWritten };
Replaced FileReplace(const char *name, const char *text, uint32_t length);

// These three return 0 or the system's error number.
int FileDelete(const char *name);
int FileMove(const char *from, const char *to);  // never replaces an existing file
int FileCopy(const char *from, const char *to);  // replaces an existing file; no call uses it yet
bool FileExists(const char *name);               // a file or a folder
bool FileIsPlain(const char *name);              // a file, not a folder
bool FileIsMissing(const char *name);            // for certain: not when the system cannot tell

// A file that is closed, if it is one, at the end of the scope.
class ScopedFile {
 public:
  explicit ScopedFile(HANDLE file) : file_(file) {}
  ~ScopedFile() {
    if (FileIsValid(file_)) FileClose(file_);
  }
  ScopedFile(const ScopedFile &) = delete;
  ScopedFile &operator=(const ScopedFile &) = delete;

  HANDLE get() const { return file_; }

 private:
  const HANDLE file_;
};

}  // namespace lumo
