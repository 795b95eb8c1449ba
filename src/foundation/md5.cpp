#include "foundation/md5.h"

#include <cstdint>
#include <cstring>

#include "foundation/format.h"
#include "foundation/lumostring.h"

namespace lumo {
namespace {

constexpr size_t kBlockBytes = 64;
constexpr size_t kLengthBytes = 8;  // the message length that ends the last block

struct Md5State {
  uint32_t words[4];
};

constexpr Md5State kInitialState = {{0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476}};

constexpr uint32_t kSines[kBlockBytes] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};

constexpr uint32_t kShifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

uint32_t RotateLeft(uint32_t value, uint32_t bits) {
  return (value << bits) | (value >> (32 - bits));
}

uint32_t WordAt(const unsigned char *bytes) {
  return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
         static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

void Md5Block(Md5State *state, const unsigned char *block) {
  uint32_t a = state->words[0];
  uint32_t b = state->words[1];
  uint32_t c = state->words[2];
  uint32_t d = state->words[3];
  for (uint32_t step = 0; step < kBlockBytes; ++step) {
    const uint32_t round = step / 16;
    uint32_t mixed = 0;
    uint32_t word = 0;
    switch (round) {
      case 0:
        mixed = (b & c) | (~b & d);
        word = step;
        break;
      case 1:
        mixed = (b & d) | (c & ~d);
        word = 5 * step + 1;
        break;
      case 2:
        mixed = b ^ c ^ d;
        word = 3 * step + 5;
        break;
      default:
        mixed = c ^ (b | ~d);
        word = 7 * step;
        break;
    }
    const uint32_t sum = a + mixed + kSines[step] + WordAt(block + word % 16 * 4);
    a = d;
    d = c;
    c = b;
    b += RotateLeft(sum, kShifts[round][step % 4]);
  }
  state->words[0] += a;
  state->words[1] += b;
  state->words[2] += c;
  state->words[3] += d;
}

// The message ends with a one bit, zeros, and its length in bits; that takes one block more or two.
void Md5Finish(Md5State *state, const unsigned char *rest, size_t rest_length, uint64_t total_length) {
  unsigned char blocks[2 * kBlockBytes] = {};
  std::memcpy(blocks, rest, rest_length);
  blocks[rest_length] = 0x80;
  const size_t size = rest_length + 1 + kLengthBytes <= kBlockBytes ? kBlockBytes : 2 * kBlockBytes;
  const uint64_t bits = total_length * 8;
  for (size_t i = 0; i < kLengthBytes; ++i) {
    blocks[size - kLengthBytes + i] = static_cast<unsigned char>(bits >> (8 * i));
  }
  for (size_t done = 0; done < size; done += kBlockBytes) Md5Block(state, blocks + done);
}

}  // namespace

const char *Md5Hex(const char *text) {
  static char buffer[33];
  const auto *bytes = reinterpret_cast<const unsigned char *>(TextOrEmpty(text));
  const size_t length = std::strlen(TextOrEmpty(text));
  Md5State state = kInitialState;
  size_t done = 0;
  for (; length - done >= kBlockBytes; done += kBlockBytes) Md5Block(&state, bytes + done);
  Md5Finish(&state, bytes + done, length - done, length);
  for (uint32_t i = 0; i < 16; ++i) {
    Format(buffer + 2 * i, 3, "%02x", (state.words[i / 4] >> (8 * (i % 4))) & 0xFF);
  }
  return buffer;
}

const char *DoubleMd5Hex(const char *a, const char *b, const char *c) {
  static char buffer[33];
  const ScopedString inner(StringCreate());
  StringAppend(inner.get(), b);
  StringAppend(inner.get(), c);
  const ScopedString outer(StringCreate());
  StringAppend(outer.get(), a);
  StringAppend(outer.get(), Md5Hex(StringGetText(inner.get())));
  std::memcpy(buffer, Md5Hex(StringGetText(outer.get())), sizeof buffer);
  return buffer;
}

}  // namespace lumo
