// json/json_printer.h: events in, JSON text out through a sink.
#pragma once

#include "json/json_event.h"

namespace lumo {

// Takes the next `length` bytes of the text; they are not zero-terminated and valid only during the call.
using JsonSink = void (*)(void *user, const char *text, uint32_t length);

constexpr uint32_t kJsonPrinterBuffer = 512;

struct JsonPrinter {
  JsonSink sink;
  void *user;
  const char *indent;  // one tab
  int32_t level;
  bool afterKey;     // no comma and no line end belongs before the next item
  bool justEntered;  // no comma belongs before the next item
  bool first;        // no line end belongs before the next item
  // Text on its way to the sink. It goes there when it fills the buffer, at the end of an event at level 0
  // and at the latest with JsonPrinterFree.
  uint32_t fill;
  char buffer[kJsonPrinterBuffer];
};

// Returns 0, or 1 when there is no printer or sink. C linkage: tests put a failing one in its place.
extern "C" int JsonPrinterInit(JsonPrinter *printer, JsonSink sink, void *user);

// Write one event: Raw as compact text, Pretty on lines of their own, with one tab a level. `data` is used by
// numbers, strings and keys only; null is the empty text. Return 0.
int JsonPrinterRaw(JsonPrinter *printer, JsonEvent event, const char *data, uint32_t length);
int JsonPrinterPretty(JsonPrinter *printer, JsonEvent event, const char *data, uint32_t length);

using JsonPrinterFunction = int (*)(JsonPrinter *printer, JsonEvent event, const char *data, uint32_t length);

// Writes several events through one of the two above, up to a type of -1. Each type is an int; those with
// data are followed by a const char * and a uint32_t. Returns the first result that is not 0.
int JsonPrinterPrint(JsonPrinter *printer, JsonPrinterFunction print, ...);

// Hands the sink what is still in the buffer of a document left open. Returns 0.
int JsonPrinterFree(JsonPrinter *printer);

}  // namespace lumo
