// foundation/file_sink.h: collects the printer's small pieces so that a file is written in few calls.
#pragma once

#include <cstdint>

#include "platform/platform.h"

namespace lumo {

struct FileSink {
  HANDLE file;       // borrowed
  uint32_t written;  // bytes in the file
  bool failed;       // a write failed; nothing more is written
  uint32_t fill;
  char buffer[2048];
};

void FileSinkInit(FileSink *sink, HANDLE file);
void FileSinkWrite(void *sink, const char *text, uint32_t length);  // a JsonSink
// To be called before the file is closed. FileSinkEnd also cuts off what an older, longer text left behind.
void FileSinkFlush(FileSink *sink);
void FileSinkEnd(FileSink *sink);

}  // namespace lumo
