#include "amount.h"

#include <cstdio>
#include <limits>
#include <stdexcept>

namespace reg {

int32_t ParseAmount(const std::string &text) {
  const std::invalid_argument error("not an amount: " + text);
  size_t at = 0;
  const bool negative = !text.empty() && text[0] == '-';
  if (negative) ++at;
  int64_t value = 0;
  int decimals = -1;
  bool digits = false;
  for (; at < text.size(); ++at) {
    if (text[at] == '.' && decimals < 0) {
      decimals = 0;
      continue;
    }
    if (text[at] < '0' || text[at] > '9' || decimals == 2) throw error;
    value = value * 10 + (text[at] - '0');
    digits = true;
    if (decimals >= 0) ++decimals;
    if (value > std::numeric_limits<uint32_t>::max()) throw error;
  }
  if (!digits) throw error;
  for (int missing = decimals < 0 ? 2 : 2 - decimals; missing > 0; --missing) value *= 10;
  if (negative) value = -value;
  if (value < std::numeric_limits<int32_t>::min() || value > std::numeric_limits<int32_t>::max()) throw error;
  return static_cast<int32_t>(value);
}

std::string ShowAmount(int64_t hundredths) {
  const int64_t size = hundredths < 0 ? -hundredths : hundredths;
  char text[32];
  std::snprintf(text, sizeof text, "%s%lld.%02lld", hundredths < 0 ? "-" : "",
                static_cast<long long>(size / 100), static_cast<long long>(size % 100));
  return text;
}

}  // namespace reg
