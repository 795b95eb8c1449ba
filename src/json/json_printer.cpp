#include "json/json_printer.h"

#include <cstdarg>
#include <cstring>

#include "foundation/arithmetic.h"
#include "json/json_scan.h"

namespace lumo {
namespace {

constexpr uint32_t kRoom = kJsonPrinterBuffer;

void Flush(JsonPrinter *printer) {
  if (printer->fill != 0) printer->sink(printer->user, printer->buffer, printer->fill);
  printer->fill = 0;
}

inline void PutByte(JsonPrinter *printer, char byte) {
  if (printer->fill == kRoom) Flush(printer);
  printer->buffer[printer->fill++] = byte;
}

void PutBytes(JsonPrinter *printer, const char *bytes, uint32_t length) {
  if (length > kRoom - printer->fill) Flush(printer);
  if (length > kRoom) {
    printer->sink(printer->user, bytes, length);
    return;
  }
  JsonCopyBytes(printer->buffer + printer->fill, bytes, length);
  printer->fill += length;
}

void PutEscape(JsonPrinter *printer, unsigned char byte) {
  constexpr char kHexDigits[] = "0123456789abcdef";
  // The letter after the backslash; 'u' where four digits follow.
  constexpr char kLetters[] = "uuuuuuuubtnufruuuuuuuuuuuuuuuuuu";
  const char letter = byte < 0x20 ? kLetters[byte] : static_cast<char>(byte);
  PutByte(printer, '\\');
  PutByte(printer, letter);
  if (letter != 'u') return;
  PutBytes(printer, "00", 2);
  PutByte(printer, kHexDigits[byte >> 4]);
  PutByte(printer, kHexDigits[byte & 15]);
}

void PutQuoted(JsonPrinter *printer, const char *text, uint32_t length) {
  PutByte(printer, '"');
  uint32_t done = 0;
  while (done < length) {
    if (printer->fill == kRoom) Flush(printer);
    const uint32_t room = kRoom - printer->fill;
    const uint32_t rest = length - done;
    const uint32_t run = JsonCopyRun(printer->buffer + printer->fill, text + done, Smaller(rest, room));
    printer->fill += run;
    done += run;
    if (done < length && ByteEndsRun(static_cast<unsigned char>(text[done]))) {
      PutEscape(printer, static_cast<unsigned char>(text[done++]));
    }
  }
  PutByte(printer, '"');
}

void PutLineEnd(JsonPrinter *printer) {
  const auto length = static_cast<uint32_t>(std::strlen(printer->indent));
  PutByte(printer, '\n');
  for (int32_t level = 0; level < printer->level; ++level) PutBytes(printer, printer->indent, length);
}

// What goes before an item, and the marks that the event leaves for the next one.
template <bool kPretty>
void BeginEvent(JsonPrinter *printer, JsonEvent event) {
  const bool closes = event == JSON_ARRAY_END || event == JSON_OBJECT_END;
  if (closes) {
    --printer->level;
  } else if (!printer->justEntered && !printer->afterKey) {
    PutByte(printer, ',');
  }
  if (kPretty && (closes || (!printer->first && !printer->afterKey))) PutLineEnd(printer);
  printer->afterKey = event == JSON_KEY;
  printer->justEntered = event == JSON_ARRAY_BEGIN || event == JSON_OBJECT_BEGIN;
  printer->first = false;
  if (printer->justEntered) ++printer->level;
}

// A key or string that needs no escape and fits the buffer, as nearly all do: written in one go, without
// asking anew for each byte whether there is room. False: nothing has been written.
bool PutPlainText(JsonPrinter *printer, bool is_key, const char *data, uint32_t length) {
  constexpr uint32_t kAround = 4;  // a comma, two quotes and a colon
  if (size_t{length} + kAround > kRoom - printer->fill) return false;
  char *out = printer->buffer + printer->fill;
  *out = ',';
  if (!printer->justEntered && !printer->afterKey) ++out;
  *out++ = '"';
  if (JsonCopyRun(out, data, length) != length) return false;
  out += length;
  *out++ = '"';
  *out = ':';
  if (is_key) ++out;
  printer->fill = static_cast<uint32_t>(out - printer->buffer);
  printer->afterKey = is_key;
  printer->justEntered = false;
  printer->first = false;
  if (printer->level <= 0) Flush(printer);
  return true;
}

template <bool kPretty>
int Print(JsonPrinter *printer, JsonEvent event, const char *data, uint32_t length) {
  if (data == nullptr) length = 0;
  if (!kPretty && (event == JSON_KEY || event == JSON_STRING) &&
      PutPlainText(printer, event == JSON_KEY, data, length)) {
    return 0;
  }
  BeginEvent<kPretty>(printer, event);
  switch (event) {  // GCOVR_EXCL_BR_LINE: there is no other event
    case JSON_ARRAY_BEGIN:
      PutByte(printer, '[');
      break;
    case JSON_OBJECT_BEGIN:
      PutByte(printer, '{');
      break;
    case JSON_ARRAY_END:
      PutByte(printer, ']');
      break;
    case JSON_OBJECT_END:
      PutByte(printer, '}');
      break;
    case JSON_INT:
    case JSON_FLOAT:
      PutBytes(printer, data, length);
      break;
    case JSON_STRING:
      PutQuoted(printer, data, length);
      break;
    case JSON_KEY:
      PutQuoted(printer, data, length);
      PutByte(printer, ':');
      if (kPretty) PutByte(printer, ' ');
      break;
    case JSON_TRUE:
      PutBytes(printer, "true", 4);
      break;
    case JSON_FALSE:
      PutBytes(printer, "false", 5);
      break;
    case JSON_NULL:
      PutBytes(printer, "null", 4);
      break;
  }
  if (printer->level <= 0) Flush(printer);
  return 0;
}

}  // namespace

int JsonPrinterInit(JsonPrinter *printer, JsonSink sink, void *user) {
  if (printer == nullptr || sink == nullptr) return 1;
  printer->sink = sink;
  printer->user = user;
  printer->indent = "\t";
  printer->level = 0;
  printer->afterKey = false;
  printer->justEntered = true;
  printer->first = true;
  printer->fill = 0;
  return 0;
}

int JsonPrinterRaw(JsonPrinter *printer, JsonEvent event, const char *data, uint32_t length) {
  return Print<false>(printer, event, data, length);
}

int JsonPrinterPretty(JsonPrinter *printer, JsonEvent event, const char *data, uint32_t length) {
  return Print<true>(printer, event, data, length);
}

int JsonPrinterPrint(JsonPrinter *printer, JsonPrinterFunction print, ...) {
  va_list arguments;
  va_start(arguments, print);
  int result = 0;
  for (int type = va_arg(arguments, int); type != -1 && result == 0; type = va_arg(arguments, int)) {
    const bool has_data = type >= JSON_INT && type <= JSON_KEY;
    const char *data = has_data ? va_arg(arguments, const char *) : nullptr;
    const uint32_t length = has_data ? va_arg(arguments, uint32_t) : 0;
    result = print(printer, static_cast<JsonEvent>(type), data, length);
  }
  va_end(arguments);
  return result;
}

int JsonPrinterFree(JsonPrinter *printer) {
  Flush(printer);
  return 0;
}

}  // namespace lumo
