// wince/arm_division_check.cpp: the division routines of the ARM file, run as a program of ARM Linux under an
// emulator. There is no C library here: it starts, checks and ends on its own. A quotient and a remainder are
// right when together they make up the dividend again and the remainder is small enough; that needs no other
// division to compare with.
#include <stdint.h>

extern "C" {
uint64_t __rt_udiv(uint32_t divisor, uint32_t dividend);
uint64_t __rt_sdiv(uint32_t divisor, uint32_t dividend);
// Their results in four registers, stored.
void StoreUnsigned64(uint64_t divisor, uint64_t dividend, uint64_t *out_pair);
void StoreSigned64(uint64_t divisor, uint64_t dividend, uint64_t *out_pair);
}

#define STORE(name, routine)                                      \
  __asm__(".thumb\n.global " name "\n.thumb_func\n" name          \
          ":\n\tpush {r4, lr}\n\tldr r4, [sp, #8]\n\tbl " routine \
          "\n\tstrd r0, r1, [r4]\n\tstrd r2, r3, [r4, #8]\n\tpop {r4, pc}\n")
STORE("StoreUnsigned64", "__rt_udiv64");
STORE("StoreSigned64", "__rt_sdiv64");

namespace {

int Call(int number, int first, const void *second, int third) {
  register int r7 __asm__("r7") = number;
  register int r0 __asm__("r0") = first;
  register const void *r1 __asm__("r1") = second;
  register int r2 __asm__("r2") = third;
  __asm__ volatile("svc #0" : "+r"(r0) : "r"(r7), "r"(r1), "r"(r2) : "memory");
  return r0;
}

void Say(const char *text) {
  int length = 0;
  while (text[length] != 0) ++length;
  Call(4, 1, text, length);
}

void Fail(const char *routine) {
  Say(routine);
  Say(": wrong quotient or remainder\n");
  Call(1, 1, nullptr, 0);
}

template <typename Unsigned>
Unsigned Magnitude(Unsigned value) {
  return value >> (8 * sizeof value - 1) != 0 ? 0 - value : value;
}

template <typename Unsigned>
bool IsNegative(Unsigned value) {
  return value >> (8 * sizeof value - 1) != 0;
}

template <typename Unsigned>
bool IsRight(Unsigned divisor, Unsigned dividend, Unsigned quotient, Unsigned remainder) {
  Unsigned product = 0, sum = 0;
  return remainder < divisor && !__builtin_mul_overflow(quotient, divisor, &product) &&
         !__builtin_add_overflow(product, remainder, &sum) && sum == dividend;
}

template <typename Unsigned>
bool IsRightSigned(Unsigned divisor, Unsigned dividend, Unsigned quotient, Unsigned remainder) {
  if (remainder != 0 && IsNegative(remainder) != IsNegative(dividend)) return false;
  const Unsigned smallest = static_cast<Unsigned>(1) << (8 * sizeof(Unsigned) - 1);
  // The one quotient that does not fit wraps to itself.
  if (quotient != 0 && quotient != smallest &&
      IsNegative(quotient) != (IsNegative(divisor) != IsNegative(dividend))) {
    return false;
  }
  return IsRight(Magnitude(divisor), Magnitude(dividend), Magnitude(quotient), Magnitude(remainder));
}

void Check32(uint32_t divisor, uint32_t dividend) {
  const uint64_t plain = __rt_udiv(divisor, dividend);
  if (!IsRight(divisor, dividend, static_cast<uint32_t>(plain), static_cast<uint32_t>(plain >> 32)))
    Fail("__rt_udiv");
  const uint64_t with_sign = __rt_sdiv(divisor, dividend);
  if (!IsRightSigned(divisor, dividend, static_cast<uint32_t>(with_sign),
                     static_cast<uint32_t>(with_sign >> 32))) {
    Fail("__rt_sdiv");
  }
}

void Check64(uint64_t divisor, uint64_t dividend) {
  uint64_t pair[2];
  StoreUnsigned64(divisor, dividend, pair);
  if (!IsRight(divisor, dividend, pair[0], pair[1])) Fail("__rt_udiv64");
  StoreSigned64(divisor, dividend, pair);
  if (!IsRightSigned(divisor, dividend, pair[0], pair[1])) Fail("__rt_sdiv64");
}

uint64_t random_state = 88172645463325252U;
uint64_t Random() {
  random_state ^= random_state << 13;
  random_state ^= random_state >> 7;
  random_state ^= random_state << 17;
  // Of all lengths, short ones as often as long ones.
  return random_state >> (random_state & 63);
}

constexpr uint64_t kEdges[] = {1,          2,          3,          10,         0x7FFFFFFF,
                               0x80000000, 0x80000001, 0xFFFFFFFE, 0xFFFFFFFF, 1ULL << 32,
                               ~0ULL >> 1, 1ULL << 63, ~0ULL - 1,  ~0ULL};

}  // namespace

extern "C" void _start() {
  for (const uint64_t divisor : kEdges) {
    Check64(divisor, 0);
    for (const uint64_t dividend : kEdges) {
      Check64(divisor, dividend);
      if (static_cast<uint32_t>(divisor) != 0)
        Check32(static_cast<uint32_t>(divisor), static_cast<uint32_t>(dividend));
    }
  }
  for (int i = 0; i < 300000; ++i) {
    const uint64_t divisor = Random(), dividend = Random();
    if (divisor != 0) Check64(divisor, dividend);
    if (static_cast<uint32_t>(divisor) != 0)
      Check32(static_cast<uint32_t>(divisor), static_cast<uint32_t>(dividend));
  }
  Say("divisions are right\n");
  Call(1, 0, nullptr, 0);
}
