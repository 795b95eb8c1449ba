#include "foundation/format.h"

#include <cstdlib>
#include <cstring>

namespace lumo {
namespace {

// A text under construction. What does not fit is counted all the same.
struct Output {
  char *at;
  size_t room;
  size_t length;
};

void Put(Output *output, const char *bytes, size_t count) {
  const size_t fitting = count < output->room ? count : output->room;
  if (fitting != 0) {
    std::memcpy(output->at, bytes, fitting);
    output->at += fitting;
    output->room -= fitting;
  }
  output->length += count;
}

void PutRepeated(Output *output, char byte, size_t count) {
  for (; count != 0; --count) Put(output, &byte, 1);
}

// The arguments of a format, in a form that can be handed on.
struct Arguments {
  va_list list;
};

// What stands between "%" and the letter.
struct Directive {
  bool zeros;
  int width;
  int precision;  // negative when there is none
};

int TakeNumber(const char **format, Arguments *arguments) {
  if (**format == '*') {
    ++*format;
    return va_arg(arguments->list, int);
  }
  int number = 0;
  for (; **format >= '0' && **format <= '9'; ++*format) number = number * 10 + (**format - '0');
  return number;
}

Directive TakeDirective(const char **format, Arguments *arguments) {
  Directive directive = {**format == '0', 0, -1};
  directive.width = TakeNumber(format, arguments);
  if (**format == '.') {
    ++*format;
    directive.precision = TakeNumber(format, arguments);
  }
  return directive;
}

void PutPadded(Output *output, const Directive &directive, bool negative, const char *text, size_t length) {
  const size_t shown = length + (negative ? 1 : 0);
  const size_t width = directive.width > 0 ? static_cast<size_t>(directive.width) : 0;
  const size_t padding = width > shown ? width - shown : 0;
  if (!directive.zeros) PutRepeated(output, ' ', padding);
  if (negative) Put(output, "-", 1);
  if (directive.zeros) PutRepeated(output, '0', padding);
  Put(output, text, length);
}

void PutText(Output *output, const Directive &directive, const char *text) {
  const char *shown = text != nullptr ? text : "(null)";
  size_t length = 0;
  if (directive.precision < 0) {
    length = std::strlen(shown);
  } else {
    // Behind its precision a text need not be readable.
    const auto limit = static_cast<size_t>(directive.precision);
    while (length < limit && shown[length] != 0) ++length;
  }
  PutPadded(output, directive, false, shown, length);
}

// The digits of a number, written backwards so that they end where `end` points. Returns the first.
char *WriteDecimal(char *end, uint32_t value) {
  do {
    *--end = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value != 0);
  return end;
}

char *WriteHex(char *end, uint32_t value, const char *digits) {
  do {
    *--end = digits[value & 15];
    value >>= 4;
  } while (value != 0);
  return end;
}

uint32_t Magnitude(int32_t value) {
  return value < 0 ? 0U - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
}

void PutNumber(Output *output, const Directive &directive, int32_t value) {
  char digits[kIntBytes];
  char *const end = digits + sizeof digits;
  const char *first = WriteDecimal(end, Magnitude(value));
  PutPadded(output, directive, value < 0, first, static_cast<size_t>(end - first));
}

void PutHex(Output *output, const Directive &directive, uint32_t value, const char *hex_digits) {
  char digits[kIntBytes];
  char *const end = digits + sizeof digits;
  const char *first = WriteHex(end, value, hex_digits);
  PutPadded(output, directive, false, first, static_cast<size_t>(end - first));
}

}  // namespace

size_t FormatText(char *out, size_t size, const char *format, va_list arguments) {
  Output output = {out, size, 0};
  Arguments rest;
  va_copy(rest.list, arguments);
  for (;;) {
    const char *run = format;
    while (*format != '%' && *format != 0) ++format;
    Put(&output, run, static_cast<size_t>(format - run));
    if (*format == 0) break;
    ++format;
    const Directive directive = TakeDirective(&format, &rest);
    switch (*format++) {
      case 's':
        PutText(&output, directive, va_arg(rest.list, const char *));
        break;
      case 'd':
        PutNumber(&output, directive, va_arg(rest.list, int));
        break;
      case 'x':
        PutHex(&output, directive, va_arg(rest.list, unsigned int), "0123456789abcdef");
        break;
      case 'X':
        PutHex(&output, directive, va_arg(rest.list, unsigned int), "0123456789ABCDEF");
        break;
      default:
        Put(&output, format - 1, 1);  // "%%"
        break;
    }
  }
  va_end(rest.list);
  return output.length;
}

size_t Format(char *out, size_t size, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const size_t length = FormatText(out, size, format, arguments);
  va_end(arguments);
  out[length < size ? length : size - 1] = 0;
  return length;
}

char *FormatAlloc(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const size_t length = FormatText(nullptr, 0, format, arguments);
  char *text = static_cast<char *>(std::malloc(length + 1));
  if (text != nullptr) {
    FormatText(text, length, format, arguments);
    text[length] = 0;
  }
  va_end(arguments);
  return text;
}

uint32_t WriteInt(char (&out)[kIntBytes], int32_t value) {
  char digits[kIntBytes];
  char *const end = digits + sizeof digits;
  char *first = WriteDecimal(end, Magnitude(value));
  if (value < 0) *--first = '-';
  const auto length = static_cast<size_t>(end - first);
  std::memcpy(out, first, length);
  out[length] = 0;
  return static_cast<uint32_t>(length);
}

const char *IntToText(int32_t value) {
  static char buffer[kIntBytes];
  WriteInt(buffer, value);
  return buffer;
}

const char *ZeroPadLeft(const char *text, int32_t width) {
  static char buffer[50];
  constexpr int32_t kLongest = static_cast<int32_t>(sizeof buffer) - 1;
  const auto room = static_cast<size_t>(width < 0 ? 0 : width > kLongest ? kLongest : width);
  const size_t length = std::strlen(TextOrEmpty(text));
  const size_t kept = length < room ? length : room;
  std::memset(buffer, 0, sizeof buffer);
  std::memset(buffer, '0', room - kept);
  if (kept != 0) std::memcpy(buffer + (room - kept), text, kept);
  return buffer;
}

const char *FormatAmount(int32_t amount) {
  static char buffer[kIntBytes + 1];
  char number[kIntBytes];
  const uint32_t length = WriteInt(number, amount);
  if (length < 3) {
    Format(buffer, sizeof buffer, "0.%02d", amount);
    return buffer;
  }
  const uint32_t units = length - 2;
  std::memcpy(buffer, number, units);
  buffer[units] = '.';
  std::memcpy(buffer + units + 1, number + units, 3);  // with the terminating zero
  return buffer;
}

}  // namespace lumo
