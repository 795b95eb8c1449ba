#include "foundation/file_sink.h"

#include <cstring>

#include "foundation/files.h"

namespace lumo {
namespace {

void WriteThrough(FileSink *sink, const char *bytes, uint32_t count) {
  uint32_t written = 0;
  if (!sink->failed) {
    sink->failed = !FileWriteAll(sink->file, bytes, count, &written);
    sink->written += written;
  }
}

}  // namespace

void FileSinkInit(FileSink *sink, HANDLE file) {
  sink->file = file;
  sink->written = 0;
  sink->failed = false;
  sink->fill = 0;
}

void FileSinkWrite(void *sink, const char *text, uint32_t length) {
  auto *self = static_cast<FileSink *>(sink);
  if (length > sizeof self->buffer - self->fill) FileSinkFlush(self);
  if (length > sizeof self->buffer) {
    WriteThrough(self, text, length);
    return;
  }
  if (length != 0) {
    std::memcpy(self->buffer + self->fill, text, length);
    self->fill += length;
  }
}

void FileSinkFlush(FileSink *sink) {
  if (sink->fill != 0) {
    WriteThrough(sink, sink->buffer, sink->fill);
    sink->fill = 0;
  }
}

void FileSinkEnd(FileSink *sink) {
  FileSinkFlush(sink);
  uint32_t length = 0;
  if (FileMoveToEnd(sink->file, &length) && length > sink->written) FileCut(sink->file, sink->written);
}

}  // namespace lumo
