// foundation/format.h: numbers, amounts and whole lines as text.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

// Lets the compiler check the arguments against the format.
#define LUMO_PRINTF(format_index, first_argument) \
  __attribute__((format(printf, format_index, first_argument)))

namespace lumo {

// printf with what the library's formats use, the same on every system: %d, %x, %X, %s and %%, each with a
// width (in bytes; a 0 before it fills up with zeros), %s also with a precision; both may be "*". A null
// text prints as "(null)". Writes what fits, without a terminator, and returns the length of the whole text.
size_t FormatText(char *out, size_t size, const char *format, va_list arguments) LUMO_PRINTF(3, 0);

// The same with a terminator, into at least one byte: a text as long as `size` or longer is cut.
size_t Format(char *out, size_t size, const char *format, ...) LUMO_PRINTF(3, 4);

// A text of exactly the needed size from the runtime's malloc; the caller frees it with the runtime's free.
// Null without memory.
char *FormatAlloc(const char *format, ...) LUMO_PRINTF(1, 2);

constexpr uint32_t kIntBytes = 12;  // the longest number and its terminator

uint32_t WriteInt(char (&out)[kIntBytes], int32_t value);  // the length, terminator excluded

// These return a shared buffer each, overwritten by their next call: copy the first amount before formatting
// a second one for the same line.
const char *IntToText(int32_t value);

// `text` behind zero digits to exactly `width` characters (at most 49); a longer text loses its rightmost
// characters. A null text gives zeros only.
const char *ZeroPadLeft(const char *text, int32_t width);

// Hundredths as units, a point and two digits: 12345 is "123.45". The sign is not handled: -50 is "-.50",
// -5 is "0.-5".
const char *FormatAmount(int32_t amount);

// A null text prints as the empty text, wherever a customer or the server would read it.
inline const char *TextOrEmpty(const char *text) {
  return text != nullptr ? text : "";
}

}  // namespace lumo
