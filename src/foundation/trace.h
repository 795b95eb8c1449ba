// foundation/trace.h: the library's diary, one text file beside the library file. Each call opens the file,
// appends and closes it, so that a crash loses nothing. Nothing is added to a line; formats carry their own
// "\n". When the trace file cannot be opened, the line is lost and nothing else. Of a line of more than 1 KB
// for which there is no memory, the first 1 KB is written. A null text prints as "(null)". Formats are
// those of FormatText.
#pragma once

#include "foundation/format.h"

namespace lumo {

void Trace(const char *format, ...) LUMO_PRINTF(1, 2);
void TraceWarning(const char *format, ...) LUMO_PRINTF(1, 2);  // the line begins "WARNING: "
void TraceError(const char *format, ...) LUMO_PRINTF(1, 2);    // the line begins "ERROR: "

// While one lives nothing is traced but a fatal error: for steps beside an operation's own, which
// leave no line.
class QuietTrace {
 public:
  QuietTrace();
  ~QuietTrace();
  QuietTrace(const QuietTrace &) = delete;
  QuietTrace &operator=(const QuietTrace &) = delete;
};

// Traces the error "ASSERT IN file LINE line: message" and ends the host process with status -1.
[[noreturn]] void Fatal(const char *message, const char *file, int line);

}  // namespace lumo

// The source file's bare name and the line, for calls that trace where they were made.
#define LUMO_HERE __FILE_NAME__, __LINE__
