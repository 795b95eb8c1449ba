#include "foundation/lumostring.h"

#include <cstdarg>
#include <cstring>

#include "foundation/format.h"
#include "foundation/memory.h"

namespace lumo {
namespace {

constexpr uint32_t kStep = 256;
constexpr uint32_t kExactLimit = 4096;
constexpr uint32_t kFormatBytes = 1024;

// The bytes allocated for a capacity. Capacity grows in small steps however long the text is; a long text is
// therefore allocated in sizes an eighth apart, so that appending costs the same per byte at any length.
size_t AllocationSize(uint32_t capacity) {
  const uint64_t needed = static_cast<uint64_t>(capacity) + 1;
  if (capacity <= kExactLimit) return static_cast<size_t>(needed);
  uint64_t power = kExactLimit;
  while (power * 2 <= needed) power *= 2;
  const uint64_t unit = power / 8;
  const uint64_t rounded = (needed + unit - 1) / unit * unit;
  // Only a text of nearly 4 GiB is allocated as it is.
  const bool is_32_bits = rounded <= UINT32_MAX;
  return static_cast<size_t>(is_32_bits ? rounded : needed);
}

// `needed` bytes of text call for this capacity, the smallest multiple of the step that holds them.
uint64_t RoundUp(uint64_t needed) {
  return (needed + kStep - 1) / kStep * kStep;
}

void SetCapacity(String *string, uint64_t capacity) {
  if (capacity > UINT32_MAX) Fatal("Memory allocation failed! (realloc)\n", LUMO_HERE);
  const size_t old_size = AllocationSize(string->capacity);
  string->capacity = static_cast<uint32_t>(capacity);
  const size_t new_size = AllocationSize(string->capacity);
  if (new_size != old_size) {
    string->text = static_cast<char *>(MemRealloc(string->text, new_size, LUMO_HERE));
    std::memset(string->text + old_size, 0, new_size - old_size);
  }
}

// A bounded concatenation: the bytes go behind the last one of the text, which lies before `length` when an
// earlier append was cut at a zero byte. The string's length grows by `count` whatever is copied.
void Concatenate(String *string, const char *bytes, size_t copied, uint32_t count) {
  size_t end = string->length;
  while (end > 0 && string->text[end - 1] == 0) --end;
  std::memcpy(string->text + end, bytes, copied);
  string->length += count;
}

}  // namespace

String *StringCreate() {
  auto *string = static_cast<String *>(MemCalloc(1, sizeof(String), LUMO_HERE));
  string->capacity = kStep;
  string->text = static_cast<char *>(MemCalloc(1, AllocationSize(kStep), LUMO_HERE));
  return string;
}

void StringFree(String *string) {
  MemFreeIfAny(string->text);
  *string = {};
  MemFree(string, LUMO_HERE);
}

void StringReserve(String *string, uint32_t count) {
  const uint64_t needed = static_cast<uint64_t>(string->length) + count;
  if (needed > string->capacity) SetCapacity(string, RoundUp(needed));
}

int StringAppend(String *string, const char *text) {
  if (text == nullptr) return 0;
  const size_t count = std::strlen(text);
  const uint64_t needed = static_cast<uint64_t>(string->length) + count;
  if (needed > string->capacity) SetCapacity(string, RoundUp(needed));
  Concatenate(string, text, count, static_cast<uint32_t>(count));
  return 0;
}

int StringAppendN(String *string, const char *bytes, uint32_t count) {
  if (bytes == nullptr) return 0;
  // Note: unlike StringAppend, an append that fills the text exactly to its capacity takes one more step.
  const uint64_t needed = static_cast<uint64_t>(string->length) + count;
  if (needed >= string->capacity) SetCapacity(string, RoundUp(needed + 1));
  const void *zero = std::memchr(bytes, 0, count);
  const size_t copied =
      zero != nullptr ? static_cast<size_t>(static_cast<const char *>(zero) - bytes) : count;
  Concatenate(string, bytes, copied, count);
  return 0;
}

void StringSink(void *string, const char *bytes, uint32_t count) {
  StringAppendN(static_cast<String *>(string), bytes, count);
}

int StringAppendFormat(String *string, const char *format, ...) {
  char formatted[kFormatBytes];
  va_list arguments;
  va_start(arguments, format);
  const size_t length = FormatText(formatted, sizeof formatted, format, arguments);
  va_end(arguments);
  if (length >= sizeof formatted) Fatal("StringAppendFormat to long message\n", LUMO_HERE);
  formatted[length] = 0;
  return StringAppend(string, formatted);
}

const char *StringGetText(const String *string) {
  return string->text;
}

uint32_t StringGetLength(const String *string) {
  return string->length;
}

}  // namespace lumo
