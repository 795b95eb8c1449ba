// wince/arithmetic_helpers_check.cpp: the compiler's helper routines of the Windows CE files, run as a
// program of Linux under an emulator, once for each calling convention. There is no C library here: it
// starts, checks and ends on its own. A quotient and a remainder are right when together they make up the
// dividend again and the remainder is small enough; that needs no other division to compare with. A shift is
// compared with doubling.
#include <stdint.h>

extern "C" {
uint64_t __ashldi3(uint64_t value, int count);
uint64_t __lshrdi3(uint64_t value, int count);
uint64_t __ashrdi3(uint64_t value, int count);
#if defined(__i386__)
uint64_t __udivdi3(uint64_t dividend, uint64_t divisor);
uint64_t __umoddi3(uint64_t dividend, uint64_t divisor);
uint64_t __divdi3(uint64_t dividend, uint64_t divisor);
uint64_t __moddi3(uint64_t dividend, uint64_t divisor);
#else
uint32_t __udivsi3(uint32_t dividend, uint32_t divisor);
uint32_t __umodsi3(uint32_t dividend, uint32_t divisor);
uint32_t __divsi3(uint32_t dividend, uint32_t divisor);
uint32_t __modsi3(uint32_t dividend, uint32_t divisor);
uint32_t __aeabi_uidiv(uint32_t dividend, uint32_t divisor);
uint32_t __aeabi_idiv(uint32_t dividend, uint32_t divisor);
uint64_t __aeabi_uidivmod(uint32_t dividend, uint32_t divisor);
uint64_t __aeabi_idivmod(uint32_t dividend, uint32_t divisor);
uint64_t __aeabi_llsl(uint64_t value, int count);
uint64_t __aeabi_llsr(uint64_t value, int count);
uint64_t __aeabi_lasr(uint64_t value, int count);
// Results in four registers, stored.
void StoreUnsigned64(uint64_t dividend, uint64_t divisor, uint64_t *out_pair);
void StoreSigned64(uint64_t dividend, uint64_t divisor, uint64_t *out_pair);

#if defined(__thumb__)
#define FUNCTION(name) ".thumb\n.thumb_func\n" name ":\n\t"
#else
#define FUNCTION(name) ".arm\n" name ":\n\t"
#endif
#define STORE(name, routine)                                                                \
  __asm__(".text\n.balign 4\n.global " name "\n.type " name                                 \
          ", %function\n" FUNCTION(name) "push {r4, lr}\n\tldr r4, [sp, #8]\n\tbl " routine \
                                         "\n\tstmia r4, {r0, r1, r2, r3}\n\tpop {r4, lr}\n\tbx lr\n")
STORE("StoreUnsigned64", "__aeabi_uldivmod");
STORE("StoreSigned64", "__aeabi_ldivmod");
#endif
}

namespace {

int Call(int number, int first, const void *second, int third) {
#if defined(__i386__)
  int result = 0;
  __asm__ volatile("int $0x80" : "=a"(result) : "a"(number), "b"(first), "c"(second), "d"(third) : "memory");
  return result;
#else
  register int r7 __asm__("r7") = number;
  register int r0 __asm__("r0") = first;
  register const void *r1 __asm__("r1") = second;
  register int r2 __asm__("r2") = third;
  __asm__ volatile("svc #0" : "+r"(r0) : "r"(r7), "r"(r1), "r"(r2) : "memory");
  return r0;
#endif
}

void Say(const char *text) {
  int length = 0;
  while (text[length] != 0) ++length;
  Call(4, 1, text, length);
}

void Fail(const char *routine) {
  Say(routine);
  Say(": a wrong result\n");
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

#if defined(__i386__)

void Check32(uint32_t, uint32_t) {}

void Check64(uint64_t divisor, uint64_t dividend) {
  if (!IsRight(divisor, dividend, __udivdi3(dividend, divisor), __umoddi3(dividend, divisor))) {
    Fail("__udivdi3, __umoddi3");
  }
  if (!IsRightSigned(divisor, dividend, __divdi3(dividend, divisor), __moddi3(dividend, divisor))) {
    Fail("__divdi3, __moddi3");
  }
}

#else

bool IsPair(uint64_t pair, uint32_t quotient, uint32_t remainder) {
  return pair == (static_cast<uint64_t>(remainder) << 32 | quotient);
}

void Check32(uint32_t divisor, uint32_t dividend) {
  const uint32_t quotient = __udivsi3(dividend, divisor), remainder = __umodsi3(dividend, divisor);
  if (!IsRight(divisor, dividend, quotient, remainder)) Fail("__udivsi3, __umodsi3");
  if (__aeabi_uidiv(dividend, divisor) != quotient) Fail("__aeabi_uidiv");
  if (!IsPair(__aeabi_uidivmod(dividend, divisor), quotient, remainder)) Fail("__aeabi_uidivmod");

  const uint32_t with_sign = __divsi3(dividend, divisor), rest = __modsi3(dividend, divisor);
  if (!IsRightSigned(divisor, dividend, with_sign, rest)) Fail("__divsi3, __modsi3");
  if (__aeabi_idiv(dividend, divisor) != with_sign) Fail("__aeabi_idiv");
  if (!IsPair(__aeabi_idivmod(dividend, divisor), with_sign, rest)) Fail("__aeabi_idivmod");
}

void Check64(uint64_t divisor, uint64_t dividend) {
  uint64_t pair[2];
  StoreUnsigned64(dividend, divisor, pair);
  if (!IsRight(divisor, dividend, pair[0], pair[1])) Fail("__aeabi_uldivmod");
  StoreSigned64(dividend, divisor, pair);
  if (!IsRightSigned(divisor, dividend, pair[0], pair[1])) Fail("__aeabi_ldivmod");
}

#endif

uint64_t Doubled(uint64_t value, int times) {
  while (times-- > 0) value += value;
  return value;
}

// Doubled as often, what was shifted to the right is the value without its lowest bits.
void CheckShift(uint64_t value, int count) {
  const uint64_t left = __ashldi3(value, count), right = __lshrdi3(value, count);
  if (left != Doubled(value, count)) Fail("__ashldi3");
  if (Doubled(right, count) != (value & ~(Doubled(1, count) - 1))) Fail("__lshrdi3");
  if (count != 0 && right > Doubled(1, 64 - count) - 1) Fail("__lshrdi3");
  const uint64_t with_sign = __ashrdi3(value, count);
  if (with_sign != (IsNegative(value) ? ~__lshrdi3(~value, count) : right)) Fail("__ashrdi3");
#if defined(__arm__)
  if (__aeabi_llsl(value, count) != left) Fail("__aeabi_llsl");
  if (__aeabi_llsr(value, count) != right) Fail("__aeabi_llsr");
  if (__aeabi_lasr(value, count) != with_sign) Fail("__aeabi_lasr");
#endif
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
    for (int count = 0; count < 64; ++count) CheckShift(divisor, count);
    for (const uint64_t dividend : kEdges) {
      Check64(divisor, dividend);
      if (static_cast<uint32_t>(divisor) != 0) {
        Check32(static_cast<uint32_t>(divisor), static_cast<uint32_t>(dividend));
      }
    }
  }
  for (int i = 0; i < 300000; ++i) {
    const uint64_t divisor = Random(), dividend = Random();
    if (divisor != 0) Check64(divisor, dividend);
    if (static_cast<uint32_t>(divisor) != 0) {
      Check32(static_cast<uint32_t>(divisor), static_cast<uint32_t>(dividend));
    }
    CheckShift(dividend, static_cast<int>(divisor & 63));
  }
  Say("the helpers are right\n");
  Call(1, 0, nullptr, 0);
}
