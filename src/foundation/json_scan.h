// foundation/json_scan.h: the inner loop of parser and printer. Two thirds of a bill are string bytes, so the
// bytes that stand for themselves are copied in runs and not looked at one by one.
#pragma once

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace lumo {

// Inside a JSON string these bytes do not stand for themselves: the quote, the backslash and the control
// characters.
inline bool JsonEndsRun(unsigned char byte) {
  return byte < 0x20 || byte == '"' || byte == '\\';
}

// The same question for eight bytes at once; not 0 when one of them ends a run. A borrow may mark a byte
// behind the first real one as well, never one before it.
inline uint64_t JsonRunEnds(uint64_t bytes) {
  constexpr uint64_t kOnes = 0x0101010101010101u;
  constexpr uint64_t kHighs = 0x8080808080808080u;
  const uint64_t quotes = bytes ^ (kOnes * '"');
  const uint64_t backslashes = bytes ^ (kOnes * '\\');
  return (((bytes - kOnes * 0x20) & ~bytes) | ((quotes - kOnes) & ~quotes) |
          ((backslashes - kOnes) & ~backslashes)) &
         kHighs;
}

// Copies bytes that stand for themselves, at most `limit` of them, and returns how many it copied: the next
// byte ends the run, unless the result is `limit`. Reads and writes nothing beyond `limit` bytes.
inline uint32_t JsonCopyRun(char *to, const char *from, uint32_t limit) {
  uint32_t done = 0;
#if defined(__SSE2__)
  const __m128i quote = _mm_set1_epi8('"');
  const __m128i backslash = _mm_set1_epi8('\\');
  const __m128i last_control = _mm_set1_epi8(0x1f);
  while (limit - done >= 16) {
    __m128i bytes;
    std::memcpy(&bytes, from + done, sizeof bytes);
    std::memcpy(to + done, &bytes, sizeof bytes);
    const __m128i control = _mm_cmpeq_epi8(_mm_max_epu8(bytes, last_control), last_control);
    const __m128i escape = _mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, backslash));
    const unsigned ends = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(control, escape)));
    if (ends != 0) return done + static_cast<uint32_t>(__builtin_ctz(ends));
    done += 16;
  }
#endif
  while (limit - done >= 8) {
    uint64_t bytes;
    std::memcpy(&bytes, from + done, sizeof bytes);
    if (JsonRunEnds(bytes) != 0) break;
    std::memcpy(to + done, &bytes, sizeof bytes);
    done += 8;
  }
  while (done < limit && !JsonEndsRun(static_cast<unsigned char>(from[done]))) {
    to[done] = from[done];
    ++done;
  }
  return done;
}

}  // namespace lumo
