// json/json_scan.h: the inner loops of parser, printer and tree. Two thirds of a bill are string bytes,
// so the bytes that stand for themselves are copied in runs and not looked at one by one. Nothing here reads
// or writes beyond the lengths given: the last bytes are done once more together with those before them.
#pragma once

#include <cstdint>
#include <cstring>

#include "platform/byte_scan.h"

namespace lumo {

// Copies bytes that stand for themselves, at most `limit` of them, and returns how many they are: the
// next byte ends the run, unless the result is `limit`. What lies in `to` behind them, within
// `limit`, is undefined.
inline uint32_t JsonCopyRun(char *to, const char *from, uint32_t limit) {
  uint32_t at = 0;
  if (limit >= 16) {
    do {
      if (CopyRunBlock(to, from, &at)) return at;
    } while (limit - at >= 16);
    if (at == limit) return at;
    at = limit - 16;
    CopyRunBlock(to, from, &at);
    return at;
  }
  if (limit >= 8) return CopyRunHalfBlock(to, from, limit);
  if (limit >= 4) {
    if (CopyRunWord<uint32_t>(to, from, &at)) return at;
    at = limit - 4;
    CopyRunWord<uint32_t>(to, from, &at);
    return at;
  }
  while (at < limit && !ByteEndsRun(static_cast<unsigned char>(from[at]))) {
    to[at] = from[at];
    ++at;
  }
  return at;
}

// memcpy for texts, most of which are a few bytes long. It reads in the blocks that JsonCopyRun wrote: a read
// that lies across two fresh writes has to wait for both.
inline void JsonCopyBytes(char *to, const char *from, size_t length) {
  while (length >= 16) {
    std::memcpy(to, from, 16);
    to += 16;
    from += 16;
    length -= 16;
  }
  if (length >= 8) {
    std::memcpy(to, from, 8);
    std::memcpy(to + length - 8, from + length - 8, 8);
  } else if (length >= 4) {
    std::memcpy(to, from, 4);
    std::memcpy(to + length - 4, from + length - 4, 4);
  } else {
    for (size_t at = 0; at < length; ++at) to[at] = from[at];
  }
}

}  // namespace lumo
