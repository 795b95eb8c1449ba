#include "journal/line_file.h"

#include <cstring>

#include "foundation/arithmetic.h"
#include "foundation/files.h"

namespace lumo {
namespace {

constexpr uint32_t kChunkBytes = 1024;

// A file position is a signed 32-bit number: what lies behind its range could not be loaded.
constexpr uint32_t kLastOffset = INT32_MAX;

// Reads so many bytes; false when there are fewer.
bool ReadAll(HANDLE file, char *bytes, uint32_t count) {
  uint32_t length = 0;
  return FileReadAll(file, bytes, count, &length) && length == count;
}

// How many of the bytes stand behind the last line feed among them; `count` when there is none.
uint32_t CountBehindLineFeed(const char *bytes, uint32_t count) {
  uint32_t behind = 0;
  while (behind < count && bytes[count - 1 - behind] != '\n') ++behind;
  return behind;
}

bool ReadChunk(LineReader *reader) {
  reader->chunkOffset += reader->chunkLength;
  reader->chunkLength = 0;
  reader->at = 0;
  if (reader->chunkOffset > kLastOffset - sizeof reader->chunk) {
    reader->failed = true;
    return false;
  }
  reader->failed = !FileReadPiece(reader->file, reader->chunk, sizeof reader->chunk, &reader->chunkLength);
  return reader->chunkLength != 0;
}

}  // namespace

void LineReaderInit(LineReader *reader, HANDLE file) {
  reader->file = file;
  reader->lineOffset = 0;
  reader->lineLength = 0;
  reader->failed = false;
  reader->chunkOffset = 0;
  reader->chunkLength = 0;
  reader->at = 0;
}

bool LineReaderNext(LineReader *reader) {
  const uint32_t start = reader->chunkOffset + reader->at;
  for (;;) {
    const char *rest = reader->chunk + reader->at;
    const auto *line_feed =
        static_cast<const char *>(std::memchr(rest, '\n', reader->chunkLength - reader->at));
    if (line_feed != nullptr) {
      reader->at = static_cast<uint32_t>(line_feed - reader->chunk) + 1;
      reader->lineOffset = start;
      reader->lineLength = reader->chunkOffset + reader->at - 1 - start;
      return true;
    }
    if (!ReadChunk(reader)) return false;
  }
}

bool FindTornTail(HANDLE file, uint32_t length, uint32_t *out_bytes) {
  char chunk[kChunkBytes];
  uint32_t behind = 0;
  // The last byte first: it nearly always is the line feed.
  auto piece = Smaller<uint32_t>(length, 1);
  while (behind < length) {
    if (!FileMoveTo(file, length - behind - piece) || !ReadAll(file, chunk, piece)) return false;
    const uint32_t tail = CountBehindLineFeed(chunk, piece);
    behind += tail;
    if (tail < piece) break;
    piece = Smaller(length - behind, kChunkBytes);
  }
  *out_bytes = behind;
  return true;
}

bool CopyBehindLines(int32_t count, HANDLE from, HANDLE to) {
  char chunk[kChunkBytes];
  for (;;) {
    uint32_t length = 0;
    if (!FileReadPiece(from, chunk, kChunkBytes, &length)) return false;
    if (length == 0) return true;
    const char *rest = chunk;
    const char *end = chunk + length;
    for (; count > 0 && rest != end; --count) {
      const void *line_feed = std::memchr(rest, '\n', static_cast<size_t>(end - rest));
      if (line_feed == nullptr) {
        rest = end;
        break;
      }
      rest = static_cast<const char *>(line_feed) + 1;
    }
    if (!FileWriteAll(to, rest, static_cast<uint32_t>(end - rest))) return false;
  }
}

bool HaveSameBytes(HANDLE one, uint32_t one_offset, HANDLE other, uint32_t other_offset, uint32_t count,
                   bool *failed) {
  char one_chunk[kChunkBytes];
  char other_chunk[kChunkBytes];
  bool read = FileMoveTo(one, one_offset) && FileMoveTo(other, other_offset);
  bool same = true;
  while (read && same && count != 0) {
    const uint32_t piece = Smaller(count, kChunkBytes);
    read = ReadAll(one, one_chunk, piece) && ReadAll(other, other_chunk, piece);
    same = read && std::memcmp(one_chunk, other_chunk, piece) == 0;
    count -= piece;
  }
  if (!read) *failed = true;
  return read && same;
}

}  // namespace lumo
