// foundation/arithmetic.h: 32-bit amounts without undefined behaviour: sums and products wrap.
#pragma once

#include <cstdint>

namespace lumo {

inline int32_t WrapAdd(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t WrapSubtract(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
inline int32_t WrapMultiply(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

template <typename Number>
constexpr Number Smaller(Number a, Number b) {
  return a < b ? a : b;
}

// Leading white space, a sign and decimal digits, as atoi reads them; clamped to 32 bits. No digits,
// or null: 0.
int32_t ParseInt32(const char *text);

}  // namespace lumo
