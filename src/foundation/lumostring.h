// foundation/lumostring.h: the growable text that requests, records and receipts are built in.
#pragma once

#include <cstdint>

#include "foundation/scoped.h"
#include "foundation/trace.h"

namespace lumo {

// length <= capacity; the byte at `length` and all bytes after it are zero. The bytes are never interpreted.
struct String {
  char *text;         // owned
  uint32_t capacity;  // in bytes, terminator excluded; a multiple of 256
  uint32_t length;    // in bytes, terminator excluded
};

String *StringCreate();  // capacity 256, length 0; free with StringFree
void StringFree(String *string);
void StringReserve(String *string, uint32_t count);  // room for so many more bytes, in one step
int StringAppend(String *string, const char *text);  // a null text appends nothing
int StringAppendN(String *string, const char *bytes, uint32_t count);  // stops copying at a zero byte
void StringSink(void *string, const char *bytes, uint32_t count);      // the same, as a JsonSink
// A formatted text of 1024 bytes or more is fatal.
int StringAppendFormat(String *string, const char *format, ...) LUMO_PRINTF(2, 3);
const char *StringGetText(const String *string);  // until the next append or StringFree
uint32_t StringGetLength(const String *string);

using ScopedString = Scoped<String, StringFree>;

}  // namespace lumo
