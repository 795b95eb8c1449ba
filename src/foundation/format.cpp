#include "foundation/format.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/platform.h"

namespace lumo {

const char *IntToText(int32_t value) {
  static char buffer[32];
  std::sprintf(buffer, "%d", value);
  return buffer;
}

const char *ZeroPadLeft(const char *text, int32_t width) {
  static char buffer[50];
  constexpr int32_t kLongest = static_cast<int32_t>(sizeof(buffer)) - 1;
  const size_t room = static_cast<size_t>(width < 0 ? 0 : width > kLongest ? kLongest : width);
  const size_t length = std::strlen(TextOrEmpty(text));
  const size_t kept = length < room ? length : room;
  std::memset(buffer, 0, sizeof(buffer));
  std::memset(buffer, '0', room - kept);
  if (kept != 0) {
    std::memcpy(buffer + (room - kept), text, kept);
  }
  return buffer;
}

const char *FormatAmount(int32_t amount) {
  static char buffer[50];
  const int length = std::sprintf(buffer, "%d", amount);
  if (length < 3) {
    std::sprintf(buffer, "0.%02d", amount);
    return buffer;
  }
  char *fraction = buffer + length - 2;
  std::memmove(fraction + 1, fraction, 3);  // with the terminating zero
  *fraction = '.';
  return buffer;
}

namespace {

char *FormatAllocWithList(const char *format, va_list arguments) LUMO_PRINTF(1, 0);

char *FormatAllocWithList(const char *format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = _vsnprintf(nullptr, 0, format, arguments);
  const size_t size = static_cast<size_t>(length) + 1;
  char *text = length >= 0 ? static_cast<char *>(std::malloc(size)) : nullptr;
  if (text != nullptr) {
    _vsnprintf(text, size, format, again);
  }
  va_end(again);
  return text;
}

}  // namespace

char *FormatAlloc(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  char *text = FormatAllocWithList(format, arguments);
  va_end(arguments);
  return text;
}

}  // namespace lumo
