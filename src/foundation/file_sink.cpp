#include "foundation/file_sink.h"

#include <cstring>

#include "foundation/files.h"

namespace lumo {

void FileSinkInit(FileSink *sink, HANDLE file) {
  sink->file = file;
  sink->fill = 0;
}

void FileSinkWrite(void *sink, const char *text, uint32_t length) {
  FileSink *self = static_cast<FileSink *>(sink);
  if (length > sizeof(self->buffer) - self->fill) {
    FileSinkFlush(self);
  }
  if (length > sizeof(self->buffer)) {
    FileWrite(text, 1, length, self->file);
    return;
  }
  if (length != 0) {
    std::memcpy(self->buffer + self->fill, text, length);
    self->fill += length;
  }
}

void FileSinkFlush(FileSink *sink) {
  if (sink->fill != 0) {
    FileWrite(sink->buffer, 1, sink->fill, sink->file);
    sink->fill = 0;
  }
}

}  // namespace lumo
