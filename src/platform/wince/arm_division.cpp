// The processor cannot divide, and no library that could be linked does: these are the routines that the
// compiler calls for it, by the names and registers of the system's ABI. The divisor comes first; quotient
// and remainder go back together. A division by zero never arrives here: the compiled code stops at an
// undefined instruction first.
#include <stdint.h>

namespace {

template <typename Unsigned>
struct Division {
  Unsigned quotient, remainder;
};

// Long division, one bit at a time.
template <typename Unsigned>
Division<Unsigned> Divide(Unsigned divisor, Unsigned dividend) {
  Division<Unsigned> result = {0, 0};
  for (int bit = 8 * static_cast<int>(sizeof dividend) - 1; bit >= 0; --bit) {
    const bool carry = result.remainder >> (8 * sizeof dividend - 1) != 0;
    result.remainder = result.remainder << 1 | (dividend >> bit & 1);
    if (carry || result.remainder >= divisor) {
      result.remainder -= divisor;
      result.quotient |= static_cast<Unsigned>(1) << bit;
    }
  }
  return result;
}

// The remainder has the dividend's sign. Everything is done unsigned, so that the smallest number has its
// negative too.
template <typename Unsigned>
Division<Unsigned> DivideSigned(Unsigned divisor, Unsigned dividend) {
  constexpr int kSign = 8 * static_cast<int>(sizeof dividend) - 1;
  const bool divisor_negative = divisor >> kSign != 0, dividend_negative = dividend >> kSign != 0;
  Division<Unsigned> result =
      Divide(divisor_negative ? 0 - divisor : divisor, dividend_negative ? 0 - dividend : dividend);
  if (divisor_negative != dividend_negative) result.quotient = 0 - result.quotient;
  if (dividend_negative) result.remainder = 0 - result.remainder;
  return result;
}

// Two registers: the quotient in the lower half, the remainder in the upper one.
uint64_t InTwoRegisters(Division<uint32_t> division) {
  return static_cast<uint64_t>(division.remainder) << 32 | division.quotient;
}

}  // namespace

extern "C" {

uint64_t __rt_udiv(uint32_t divisor, uint32_t dividend) {
  return InTwoRegisters(Divide(divisor, dividend));
}

uint64_t __rt_sdiv(uint32_t divisor, uint32_t dividend) {
  return InTwoRegisters(DivideSigned(divisor, dividend));
}

void LumoDivide64(uint64_t divisor, uint64_t dividend, Division<uint64_t> *out_division) {
  *out_division = Divide(divisor, dividend);
}

void LumoDivideSigned64(uint64_t divisor, uint64_t dividend, Division<uint64_t> *out_division) {
  *out_division = DivideSigned(divisor, dividend);
}

// Four registers, which no function of this language returns: the worker leaves its results on the stack. Its
// fifth argument, where to, lies at the top of the stack.
#define LUMO_DIVIDE_64(worker)     \
  __asm__(                         \
      "push {r4, lr}\n\t"          \
      "sub sp, sp, #24\n\t"        \
      "add r4, sp, #8\n\t"         \
      "str r4, [sp]\n\t"           \
      "bl " worker                 \
      "\n\t"                       \
      "ldrd r0, r1, [sp, #8]\n\t"  \
      "ldrd r2, r3, [sp, #16]\n\t" \
      "add sp, sp, #24\n\t"        \
      "pop {r4, pc}")

__attribute__((naked)) void __rt_udiv64() {
  LUMO_DIVIDE_64("LumoDivide64");
}

__attribute__((naked)) void __rt_sdiv64() {
  LUMO_DIVIDE_64("LumoDivideSigned64");
}

}  // extern "C"
