#include "foundation/trace.h"

#include <cstdarg>
#include <cstdlib>

#include "foundation/module_path.h"
#include "platform/platform.h"

namespace lumo {
namespace {

constexpr size_t kLineBytes = 1024;  // of a line that needs no memory

int quiet_scopes = 0;

size_t FormatLine(char *out, size_t size, const char *prefix, const char *format, va_list arguments)
    LUMO_PRINTF(4, 0);
void AppendLine(const char *prefix, const char *format, va_list arguments) LUMO_PRINTF(2, 0);

// Returns the length of the whole line, of which `size` bytes are written. The prefix always fits.
size_t FormatLine(char *out, size_t size, const char *prefix, const char *format, va_list arguments) {
  size_t length = 0;
  for (; prefix[length] != 0; ++length) out[length] = prefix[length];
  return length + FormatText(out + length, size - length, format, arguments);
}

void AppendLine(const char *prefix, const char *format, va_list arguments) {
  if (quiet_scopes != 0) return;
  char line[kLineBytes];
  const size_t length = FormatLine(line, sizeof line, prefix, format, arguments);
  if (length <= sizeof line) {
    AppendToFile(&TraceFileName(), line, length);
    return;
  }
  // Not MemMalloc, which traces when there is no memory.
  char *whole = static_cast<char *>(std::malloc(length));
  if (whole == nullptr) {
    line[sizeof line - 1] = '\n';
    AppendToFile(&TraceFileName(), line, sizeof line);
    return;
  }
  FormatLine(whole, length, prefix, format, arguments);
  AppendToFile(&TraceFileName(), whole, length);
  std::free(whole);
}

}  // namespace

void Trace(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  AppendLine("", format, arguments);
  va_end(arguments);
}

void TraceWarning(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  AppendLine("WARNING: ", format, arguments);
  va_end(arguments);
}

void TraceError(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  AppendLine("ERROR: ", format, arguments);
  va_end(arguments);
}

QuietTrace::QuietTrace() {
  ++quiet_scopes;
}

QuietTrace::~QuietTrace() {
  --quiet_scopes;
}

void Fatal(const char *message, const char *file, int line) {
  quiet_scopes = 0;
  TraceError("ASSERT IN %s LINE %d: %s", file, line, message);
  PlatformExit(-1);
}

}  // namespace lumo
