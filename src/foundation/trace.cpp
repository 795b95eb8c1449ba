#include "foundation/trace.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "foundation/module_path.h"
#include "platform/platform.h"

namespace lumo {
namespace {

void AppendLine(const char *prefix, const char *format, va_list arguments) LUMO_PRINTF(2, 0);

void AppendLine(const char *prefix, const char *format, va_list arguments) {
  WCHAR path[kPathUnits];
  BuildTracePath(path);
  FILE *file = _wfopen(path, LUMO_WIDE("a"));
  if (file == nullptr) {
    return;
  }
  std::fwrite(prefix, 1, std::strlen(prefix), file);
  std::vfprintf(file, format, arguments);
  std::fclose(file);
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
