// platform/byte_scan.h: how many bytes are looked at in one step, which differs between processors. The
// quote, the backslash and the control characters end a run of bytes; all others are copied. With SSE2 a
// block of sixteen bytes is one step, without it the block is two words of eight.
#pragma once

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace lumo {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "the first byte in memory is taken as the lowest of a word");

inline bool ByteEndsRun(unsigned char byte) {
  return byte < 0x20 || byte == '"' || byte == '\\';
}

// Marks the high bit of the bytes in a word that end a run. A borrow may also mark bytes behind the first
// such byte, never one before it.
template <class Word>
inline Word MarkRunEnds(Word bytes) {
  constexpr Word kOnes = static_cast<Word>(~Word{0}) / 0xFF;
  const Word quotes = bytes ^ (kOnes * '"');
  const Word backslashes = bytes ^ (kOnes * '\\');
  return (((bytes - kOnes * 0x20) & ~bytes) | ((quotes - kOnes) & ~quotes) |
          ((backslashes - kOnes) & ~backslashes)) &
         (kOnes * 0x80);
}

inline uint32_t FirstMark(uint64_t marks) {
  return static_cast<uint32_t>(__builtin_ctzll(marks)) / 8;
}
inline uint32_t FirstMark(uint32_t marks) {
  return static_cast<uint32_t>(__builtin_ctz(marks)) / 8;
}

// Copies the word at *at. False when no byte of it ends the run: *at is then behind the word. True when one
// does: *at is then the place of that byte.
template <class Word>
inline bool CopyRunWord(char *to, const char *from, uint32_t *at) {
  Word bytes;
  std::memcpy(&bytes, from + *at, sizeof bytes);
  std::memcpy(to + *at, &bytes, sizeof bytes);
  const Word marks = MarkRunEnds(bytes);
  *at += marks != 0 ? FirstMark(marks) : static_cast<uint32_t>(sizeof bytes);
  return marks != 0;
}

#if defined(__SSE2__)
// A bit for each of sixteen bytes, set where a byte ends a run.
inline unsigned MarkRunEndsOfBlock(__m128i bytes) {
  const __m128i quote = _mm_set1_epi8('"');
  const __m128i backslash = _mm_set1_epi8('\\');
  const __m128i last_control = _mm_set1_epi8(0x1f);
  const __m128i control = _mm_cmpeq_epi8(_mm_max_epu8(bytes, last_control), last_control);
  const __m128i escape = _mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, backslash));
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(control, escape)));
}

inline bool CopyRunBlock(char *to, const char *from, uint32_t *at) {
  __m128i bytes;
  std::memcpy(&bytes, from + *at, sizeof bytes);
  std::memcpy(to + *at, &bytes, sizeof bytes);
  const unsigned marks = MarkRunEndsOfBlock(bytes);
  *at += marks != 0 ? static_cast<uint32_t>(__builtin_ctz(marks)) : 16;
  return marks != 0;
}

// 8 to 15 bytes, judged at once as two words that may overlap.
inline uint32_t CopyRunHalfBlock(char *to, const char *from, uint32_t limit) {
  long long first;
  long long last;
  std::memcpy(&first, from, sizeof first);
  std::memcpy(&last, from + limit - 8, sizeof last);
  std::memcpy(to, &first, sizeof first);
  std::memcpy(to + limit - 8, &last, sizeof last);
  const unsigned marks = MarkRunEndsOfBlock(_mm_set_epi64x(last, first));
  if (marks == 0) return limit;
  const auto mark = static_cast<uint32_t>(__builtin_ctz(marks));
  return mark < 8 ? mark : limit - 16 + mark;
}
#else
inline bool CopyRunBlock(char *to, const char *from, uint32_t *at) {
  for (int half = 0; half < 2; ++half) {
    if (CopyRunWord<uint64_t>(to, from, at)) return true;
  }
  return false;
}

inline uint32_t CopyRunHalfBlock(char *to, const char *from, uint32_t limit) {
  uint32_t at = 0;
  if (CopyRunWord<uint64_t>(to, from, &at)) return at;
  at = limit - 8;
  CopyRunWord<uint64_t>(to, from, &at);
  return at;
}
#endif

}  // namespace lumo
