// journal/line_file.h: a file as lines, read in chunks: what the journals are made of. A line ends with a
// line feed; bytes behind the last one belong to no line.
#pragma once

#include <cstdint>

#include "platform/platform.h"

namespace lumo {

// Walks the lines of an open file from its start.
struct LineReader {
  HANDLE file;          // borrowed
  uint32_t lineOffset;  // of the line's first byte
  uint32_t lineLength;  // in bytes, line feed excluded
  bool failed;          // a read failed: what was found is not all
  uint32_t chunkOffset;
  uint32_t chunkLength;
  uint32_t at;  // in the chunk
  char chunk[2048];
};

void LineReaderInit(LineReader *reader, HANDLE file);
// False at the end, and when a read fails.
bool LineReaderNext(LineReader *reader);

// The bytes behind the last line feed of a file of this length. False when they cannot be told.
bool FindTornTail(HANDLE file, uint32_t length, uint32_t *out_bytes);

// Copies what lies behind the first `count` lines; all of it when there are none to skip. False when not all
// of it could be read and written.
bool CopyBehindLines(int32_t count, HANDLE from, HANDLE to);

// Whether so many bytes at the two places are the same. When they cannot be read that is not known: *failed
// is then set, and false returned.
bool HaveSameBytes(HANDLE one, uint32_t one_offset, HANDLE other, uint32_t other_offset, uint32_t count,
                   bool *failed);

}  // namespace lumo
