// foundation/files.h: the files of the library, by UTF-8 name relative to moduleDirectory. Every open is
// exclusive. Failures are traced as errors and reported by value; none of them stops an operation.
#pragma once

#include <cstdint>

#include "platform/platform.h"

namespace lumo {

// "w+" and "w" create or truncate, "r+" and "r" open what exists, "a+" and "a" open or create for writing,
// both without moving to the end. Letters after these are passed over. Anything else gives the invalid
// handle.
HANDLE FileOpen(const char *name, const char *mode);
int FileIsValid(HANDLE file);
int FileClose(HANDLE file);
uint32_t FileWrite(const void *buffer, uint32_t size, uint32_t count,
                   HANDLE file);  // bytes written; 0 on failure
uint32_t FileRead(void *buffer, uint32_t size, uint32_t count,
                  HANDLE file);  // bytes read; 0 on failure or end

// Deliberate: returns 0 only when the new position is exactly 1; every other seek, a good one included,
// returns 1 and leaves an error line in the trace.
int FileSeek(HANDLE file, int32_t offset, uint32_t origin);

// 0 or the system's error number.
int FileDelete(const char *name);
int FileMove(const char *from, const char *to);  // never replaces an existing file
int FileCopy(const char *from, const char *to);  // replaces an existing file
int FileExists(const char *name);                // 1 for folders too

}  // namespace lumo
