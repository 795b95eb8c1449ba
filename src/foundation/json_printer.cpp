#include "foundation/json_printer.h"

#include <cstdarg>
#include <cstring>

#include "foundation/json_scan.h"

namespace lumo {
namespace {

// Collects what one event writes, so that the sink is called once for most of them.
struct Output {
  JsonPrinter *printer;
  uint32_t fill;
  char bytes[512];
};

void Flush(Output *out) {
  if (out->fill != 0) out->printer->sink(out->printer->user, out->bytes, out->fill);
  out->fill = 0;
}

void PutByte(Output *out, char byte) {
  if (out->fill == sizeof out->bytes) Flush(out);
  out->bytes[out->fill++] = byte;
}

void PutBytes(Output *out, const char *bytes, uint32_t length) {
  if (length > sizeof out->bytes - out->fill) Flush(out);
  if (length > sizeof out->bytes) {
    out->printer->sink(out->printer->user, bytes, length);
    return;
  }
  if (length != 0) std::memcpy(out->bytes + out->fill, bytes, length);
  out->fill += length;
}

void PutEscape(Output *out, unsigned char byte) {
  constexpr char kHexDigits[] = "0123456789abcdef";
  // The letter after the backslash; 'u' where four digits follow.
  constexpr char kLetters[] = "uuuuuuuubtnufruuuuuuuuuuuuuuuuuu";
  const char letter = byte < 0x20 ? kLetters[byte] : static_cast<char>(byte);
  PutByte(out, '\\');
  PutByte(out, letter);
  if (letter != 'u') return;
  PutBytes(out, "00", 2);
  PutByte(out, kHexDigits[byte >> 4]);
  PutByte(out, kHexDigits[byte & 15]);
}

void PutQuoted(Output *out, const char *text, uint32_t length) {
  PutByte(out, '"');
  uint32_t done = 0;
  while (done < length) {
    if (out->fill == sizeof out->bytes) Flush(out);
    const uint32_t room = static_cast<uint32_t>(sizeof out->bytes) - out->fill;
    const uint32_t rest = length - done;
    const uint32_t run = JsonCopyRun(out->bytes + out->fill, text + done, rest < room ? rest : room);
    out->fill += run;
    done += run;
    if (done < length && JsonEndsRun(static_cast<unsigned char>(text[done]))) {
      PutEscape(out, static_cast<unsigned char>(text[done++]));
    }
  }
  PutByte(out, '"');
}

void PutLineEnd(Output *out) {
  const uint32_t length = static_cast<uint32_t>(std::strlen(out->printer->indent));
  PutByte(out, '\n');
  for (int32_t level = 0; level < out->printer->level; ++level) PutBytes(out, out->printer->indent, length);
}

int Print(JsonPrinter *printer, JsonEvent event, const char *data, uint32_t length, bool pretty) {
  Output out;
  out.printer = printer;
  out.fill = 0;
  if (data == nullptr) length = 0;
  const bool closes = event == JSON_ARRAY_END || event == JSON_OBJECT_END;
  if (closes) {
    --printer->level;
  } else if (!printer->justEntered && !printer->afterKey) {
    PutByte(&out, ',');
  }
  if (pretty && (closes || (!printer->first && !printer->afterKey))) PutLineEnd(&out);
  printer->afterKey = false;
  printer->justEntered = false;
  printer->first = false;

  switch (event) {
    case JSON_ARRAY_BEGIN:
    case JSON_OBJECT_BEGIN:
      PutByte(&out, event == JSON_OBJECT_BEGIN ? '{' : '[');
      ++printer->level;
      printer->justEntered = true;
      break;
    case JSON_ARRAY_END:
      PutByte(&out, ']');
      break;
    case JSON_OBJECT_END:
      PutByte(&out, '}');
      break;
    case JSON_INT:
    case JSON_FLOAT:
      PutBytes(&out, data, length);
      break;
    case JSON_STRING:
      PutQuoted(&out, data, length);
      break;
    case JSON_KEY:
      PutQuoted(&out, data, length);
      PutByte(&out, ':');
      if (pretty) PutByte(&out, ' ');
      printer->afterKey = true;
      break;
    case JSON_TRUE:
      PutBytes(&out, "true", 4);
      break;
    case JSON_FALSE:
      PutBytes(&out, "false", 5);
      break;
    case JSON_NULL:
      PutBytes(&out, "null", 4);
      break;
  }
  Flush(&out);
  return 0;
}

}  // namespace

int JsonPrinterInit(JsonPrinter *printer, JsonSink sink, void *user) {
  if (printer == nullptr || sink == nullptr) return 1;
  *printer = JsonPrinter();
  printer->sink = sink;
  printer->user = user;
  printer->indent = "\t";
  printer->justEntered = true;
  printer->first = true;
  return 0;
}

int JsonPrinterRaw(JsonPrinter *printer, JsonEvent event, const char *data, uint32_t length) {
  return Print(printer, event, data, length, false);
}

int JsonPrinterPretty(JsonPrinter *printer, JsonEvent event, const char *data, uint32_t length) {
  return Print(printer, event, data, length, true);
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

int JsonPrinterFree(JsonPrinter *) {
  return 0;
}

}  // namespace lumo
