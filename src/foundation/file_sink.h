// foundation/file_sink.h: collects the printer's small pieces so that a file is written in few calls.
#pragma once

#include <cstdint>

#include "platform/platform.h"

namespace lumo {

struct FileSink {
  HANDLE file;       // borrowed
  uint32_t written;  // bytes in the file
  bool failed;       // a write did; nothing is written behind it
  uint32_t fill;
  char buffer[2048];
};

void FileSinkInit(FileSink *sink, HANDLE file);
void FileSinkWrite(void *sink, const char *text, uint32_t length);  // fits JsonSink
void FileSinkFlush(FileSink *sink);                                 // call before closing the file
void FileSinkEnd(FileSink *sink);  // flushes, and cuts what an older text has behind this one

}  // namespace lumo
