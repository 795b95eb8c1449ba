// register/amount.h: money as a cashier writes it.
#pragma once

#include <cstdint>
#include <string>

namespace reg {

// "150", "150.5" and "150.50" are 15000, 15050 and 15050 hundredths. Throws std::invalid_argument for
// anything else, and for what does not fit 32 bits.
int32_t ParseAmount(const std::string &text);
std::string ShowAmount(int64_t hundredths);

}  // namespace reg
