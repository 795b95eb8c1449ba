// foundation/json_printer.h: events in, JSON text out through a sink.
#pragma once

#include "foundation/json_event.h"

namespace lumo {

using JsonSink = void (*)(void *user, const char *text, uint32_t length);

struct JsonPrinter {
  JsonSink sink;
  void *user;
  const char *indent;  // one tab
  int32_t level;
  bool afterKey;
  bool justEntered;
  bool first;
};

int JsonPrinterInit(JsonPrinter *printer, JsonSink sink,
                    void *user);  // 0, or 1 when there is no printer or sink

// Writes one event. `data` is used by numbers, strings and keys only. Returns 0.
int JsonPrinterRaw(JsonPrinter *printer, JsonEvent event, const char *data, uint32_t length);  // compact
int JsonPrinterPretty(JsonPrinter *printer, JsonEvent event, const char *data,
                      uint32_t length);  // one tab a level

int JsonPrinterFree(JsonPrinter *printer);

}  // namespace lumo
