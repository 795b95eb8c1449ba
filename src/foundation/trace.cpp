#include "foundation/trace.h"

#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include "foundation/module_path.h"
#include "platform/platform.h"

namespace lumo {
namespace {

constexpr size_t kLineBytes = 1024;  // of a line that needs no memory

void AppendLine(const char *prefix, const char *format, va_list arguments) LUMO_PRINTF(2, 0);

void AppendLine(const char *prefix, const char *format, va_list arguments) {
  char line[kLineBytes];
  const size_t prefix_length = std::strlen(prefix);
  std::memcpy(line, prefix, prefix_length);
  const size_t length =
      prefix_length + FormatText(line + prefix_length, kLineBytes - prefix_length, format, arguments);
  if (length <= kLineBytes) {
    AppendToFile(&TraceFileName(), line, length);
    return;
  }
  // Not MemMalloc, which traces when there is no memory.
  char *whole = static_cast<char *>(std::malloc(length));
  if (whole == nullptr) {
    line[kLineBytes - 1] = '\n';
    AppendToFile(&TraceFileName(), line, kLineBytes);
    return;
  }
  std::memcpy(whole, prefix, prefix_length);
  FormatText(whole + prefix_length, length - prefix_length, format, arguments);
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

void Fatal(const char *message, const char *file, int line) {
  TraceError("ASSERT IN %s LINE %d: %s", file, line, message);
  PlatformExit(-1);
}

}  // namespace lumo
