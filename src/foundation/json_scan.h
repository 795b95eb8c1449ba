// foundation/json_scan.h: the inner loops of parser, printer and tree. Two thirds of a bill are string bytes,
// so the bytes that stand for themselves are copied in runs and not looked at one by one. Nothing here reads
// or writes beyond the lengths given: the last bytes are done once more together with those before them.
#pragma once

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace lumo {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "the first byte in memory is taken as the lowest of a word");

// Inside a JSON string these bytes do not stand for themselves: the quote, the backslash and the control
// characters.
inline bool JsonEndsRun(unsigned char byte) {
  return byte < 0x20 || byte == '"' || byte == '\\';
}

// Marks the high bit of the bytes in a word that end a run. A borrow may also mark bytes behind the first
// such byte, never one before it.
template <class Word>
inline Word JsonMarkRunEnds(Word bytes) {
  constexpr Word kOnes = static_cast<Word>(~Word{0}) / 0xFF;
  const Word quotes = bytes ^ (kOnes * '"');
  const Word backslashes = bytes ^ (kOnes * '\\');
  return (((bytes - kOnes * 0x20) & ~bytes) | ((quotes - kOnes) & ~quotes) |
          ((backslashes - kOnes) & ~backslashes)) &
         (kOnes * 0x80);
}

inline uint32_t JsonFirstMark(uint64_t marks) {
  return static_cast<uint32_t>(__builtin_ctzll(marks)) / 8;
}
inline uint32_t JsonFirstMark(uint32_t marks) {
  return static_cast<uint32_t>(__builtin_ctz(marks)) / 8;
}

// Copies one word at `at` and moves `at` behind it, or to the byte in it that ends the run; true for the
// latter.
template <class Word>
inline bool JsonCopyWord(char *to, const char *from, uint32_t *at) {
  Word bytes;
  std::memcpy(&bytes, from + *at, sizeof bytes);
  std::memcpy(to + *at, &bytes, sizeof bytes);
  const Word marks = JsonMarkRunEnds(bytes);
  *at += marks != 0 ? JsonFirstMark(marks) : static_cast<uint32_t>(sizeof bytes);
  return marks != 0;
}

#if defined(__SSE2__)
// A bit for each of sixteen bytes, set where a byte ends a run.
inline unsigned JsonMarkBlock(__m128i bytes) {
  const __m128i quote = _mm_set1_epi8('"');
  const __m128i backslash = _mm_set1_epi8('\\');
  const __m128i last_control = _mm_set1_epi8(0x1f);
  const __m128i control = _mm_cmpeq_epi8(_mm_max_epu8(bytes, last_control), last_control);
  const __m128i escape = _mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, backslash));
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(control, escape)));
}

inline bool JsonCopyBlock(char *to, const char *from, uint32_t *at) {
  __m128i bytes;
  std::memcpy(&bytes, from + *at, sizeof bytes);
  std::memcpy(to + *at, &bytes, sizeof bytes);
  const unsigned marks = JsonMarkBlock(bytes);
  *at += marks != 0 ? static_cast<uint32_t>(__builtin_ctz(marks)) : 16;
  return marks != 0;
}

// 8 to 15 bytes, judged at once as two words that may overlap.
inline uint32_t JsonCopyHalfBlock(char *to, const char *from, uint32_t limit) {
  long long first;
  long long last;
  std::memcpy(&first, from, sizeof first);
  std::memcpy(&last, from + limit - 8, sizeof last);
  std::memcpy(to, &first, sizeof first);
  std::memcpy(to + limit - 8, &last, sizeof last);
  const unsigned marks = JsonMarkBlock(_mm_set_epi64x(last, first));
  if (marks == 0) return limit;
  const auto mark = static_cast<uint32_t>(__builtin_ctz(marks));
  return mark < 8 ? mark : limit - 16 + mark;
}
#else
inline bool JsonCopyBlock(char *to, const char *from, uint32_t *at) {
  for (int half = 0; half < 2; ++half) {
    if (JsonCopyWord<uint64_t>(to, from, at)) return true;
  }
  return false;
}

inline uint32_t JsonCopyHalfBlock(char *to, const char *from, uint32_t limit) {
  uint32_t at = 0;
  if (JsonCopyWord<uint64_t>(to, from, &at)) return at;
  at = limit - 8;
  JsonCopyWord<uint64_t>(to, from, &at);
  return at;
}
#endif

// Copies bytes that stand for themselves, at most `limit` of them, and returns how many they are: the next
// byte ends the run, unless the result is `limit`. What lies in `to` behind them, within `limit`, is
// undefined.
inline uint32_t JsonCopyRun(char *to, const char *from, uint32_t limit) {
  uint32_t at = 0;
  if (limit >= 16) {
    do {
      if (JsonCopyBlock(to, from, &at)) return at;
    } while (limit - at >= 16);
    if (at == limit) return at;
    at = limit - 16;
    JsonCopyBlock(to, from, &at);
    return at;
  }
  if (limit >= 8) return JsonCopyHalfBlock(to, from, limit);
  if (limit >= 4) {
    if (JsonCopyWord<uint32_t>(to, from, &at)) return at;
    at = limit - 4;
    JsonCopyWord<uint32_t>(to, from, &at);
    return at;
  }
  while (at < limit && !JsonEndsRun(static_cast<unsigned char>(from[at]))) {
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
