// The routines that the compiler calls for what the processor has no instruction for, such as dividing. No
// library that could be linked has them. Names and registers are those of each target's convention; the
// dividend comes first.
#include <stdint.h>

namespace {

template <typename Unsigned>
struct Division {
  Unsigned quotient, remainder;
};

// Long division, one bit at a time. By zero everything is left over.
template <typename Unsigned>
Division<Unsigned> Divide(Unsigned dividend, Unsigned divisor) {
  constexpr int kBits = 8 * static_cast<int>(sizeof dividend);
  Division<Unsigned> result = {0, 0};
  for (int i = 0; i < kBits; ++i) {
    const bool carry = result.remainder >> (kBits - 1) != 0;
    result.remainder = result.remainder << 1 | dividend >> (kBits - 1);
    dividend <<= 1;
    result.quotient <<= 1;
    if (carry || result.remainder >= divisor) {
      result.remainder -= divisor;
      result.quotient |= 1;
    }
  }
  return result;
}

// The remainder has the dividend's sign. Everything is computed unsigned, so that the smallest number too
// has its negative.
template <typename Unsigned>
Division<Unsigned> DivideSigned(Unsigned dividend, Unsigned divisor) {
  constexpr int kSign = 8 * static_cast<int>(sizeof dividend) - 1;
  const bool divisor_negative = divisor >> kSign != 0, dividend_negative = dividend >> kSign != 0;
  Division<Unsigned> result =
      Divide(dividend_negative ? 0 - dividend : dividend, divisor_negative ? 0 - divisor : divisor);
  if (divisor_negative != dividend_negative) result.quotient = 0 - result.quotient;
  if (dividend_negative) result.remainder = 0 - result.remainder;
  return result;
}

uint64_t TwoRegisters(uint32_t lower, uint32_t upper) {
  return static_cast<uint64_t>(upper) << 32 | lower;
}

}  // namespace

extern "C" {

// Shifts by 0 to 63, made of 32-bit shifts: a 64-bit one would call these very functions.
uint64_t __ashldi3(uint64_t value, int count) {
  const auto lower = static_cast<uint32_t>(value), upper = static_cast<uint32_t>(value >> 32);
  if (count == 0) return value;
  if (count >= 32) return TwoRegisters(0, lower << (count - 32));
  return TwoRegisters(lower << count, upper << count | lower >> (32 - count));
}

uint64_t __lshrdi3(uint64_t value, int count) {
  const auto lower = static_cast<uint32_t>(value), upper = static_cast<uint32_t>(value >> 32);
  if (count == 0) return value;
  if (count >= 32) return TwoRegisters(upper >> (count - 32), 0);
  return TwoRegisters(lower >> count | upper << (32 - count), upper >> count);
}

uint64_t __ashrdi3(uint64_t value, int count) {
  const auto lower = static_cast<uint32_t>(value), upper = static_cast<uint32_t>(value >> 32);
  const auto with_sign = static_cast<int32_t>(upper);
  const auto sign = static_cast<uint32_t>(with_sign >> 31);
  if (count == 0) return value;
  if (count >= 32) return TwoRegisters(static_cast<uint32_t>(with_sign >> (count - 32)), sign);
  return TwoRegisters(lower >> count | upper << (32 - count), static_cast<uint32_t>(with_sign >> count));
}

#if defined(__i386__)

uint64_t __udivdi3(uint64_t dividend, uint64_t divisor) {
  return Divide(dividend, divisor).quotient;
}

uint64_t __umoddi3(uint64_t dividend, uint64_t divisor) {
  return Divide(dividend, divisor).remainder;
}

uint64_t __divdi3(uint64_t dividend, uint64_t divisor) {
  return DivideSigned(dividend, divisor).quotient;
}

uint64_t __moddi3(uint64_t dividend, uint64_t divisor) {
  return DivideSigned(dividend, divisor).remainder;
}

#else

uint32_t __udivsi3(uint32_t dividend, uint32_t divisor) {
  return Divide(dividend, divisor).quotient;
}

uint32_t __umodsi3(uint32_t dividend, uint32_t divisor) {
  return Divide(dividend, divisor).remainder;
}

uint32_t __divsi3(uint32_t dividend, uint32_t divisor) {
  return DivideSigned(dividend, divisor).quotient;
}

uint32_t __modsi3(uint32_t dividend, uint32_t divisor) {
  return DivideSigned(dividend, divisor).remainder;
}

uint64_t __aeabi_uidivmod(uint32_t dividend, uint32_t divisor) {
  const Division<uint32_t> division = Divide(dividend, divisor);
  return TwoRegisters(division.quotient, division.remainder);
}

uint64_t __aeabi_idivmod(uint32_t dividend, uint32_t divisor) {
  const Division<uint32_t> division = DivideSigned(dividend, divisor);
  return TwoRegisters(division.quotient, division.remainder);
}

void LumoDivide64(uint64_t dividend, uint64_t divisor, Division<uint64_t> *out_division) {
  *out_division = Divide(dividend, divisor);
}

void LumoDivideSigned64(uint64_t dividend, uint64_t divisor, Division<uint64_t> *out_division) {
  *out_division = DivideSigned(dividend, divisor);
}

// The results go back in four registers, which no C++ function can do. So the worker leaves them on the
// stack, at the address that is its fifth argument, which lies at the top of the stack.
#define LUMO_DIVIDE_64(worker)   \
  __asm__(                       \
      "push {r4, lr}\n\t"        \
      "sub sp, sp, #24\n\t"      \
      "add r4, sp, #8\n\t"       \
      "str r4, [sp]\n\t"         \
      "bl " worker               \
      "\n\t"                     \
      "add sp, sp, #8\n\t"       \
      "pop {r0, r1, r2, r3}\n\t" \
      "pop {r4, lr}\n\t"         \
      "bx lr")

__attribute__((naked)) void __aeabi_uldivmod() {
  LUMO_DIVIDE_64("LumoDivide64");
}

__attribute__((naked)) void __aeabi_ldivmod() {
  LUMO_DIVIDE_64("LumoDivideSigned64");
}

// The same by the other convention's names.
uint32_t __aeabi_uidiv(uint32_t dividend, uint32_t divisor) __attribute__((alias("__udivsi3")));
uint32_t __aeabi_idiv(uint32_t dividend, uint32_t divisor) __attribute__((alias("__divsi3")));
uint64_t __aeabi_llsl(uint64_t value, int count) __attribute__((alias("__ashldi3")));
uint64_t __aeabi_llsr(uint64_t value, int count) __attribute__((alias("__lshrdi3")));
uint64_t __aeabi_lasr(uint64_t value, int count) __attribute__((alias("__ashrdi3")));

#endif

}  // extern "C"
