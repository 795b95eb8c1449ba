#include "foundation/arithmetic.h"

namespace lumo {

int32_t ParseInt32(const char *text) {
  if (text == nullptr) return 0;
  while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  const int64_t limit = negative ? -static_cast<int64_t>(INT32_MIN) : INT32_MAX;
  int64_t value = 0;
  for (; *text >= '0' && *text <= '9'; ++text) {
    value = value * 10 + (*text - '0');
    if (value > limit) {
      value = limit;
      break;
    }
  }
  return static_cast<int32_t>(negative ? -value : value);
}

}  // namespace lumo
