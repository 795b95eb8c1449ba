// foundation/result_codes.h: the result codes of lumo.h, for every layer to take from here, and the message
// for the cashier that belongs to each.
#pragma once

#include <cstdint>

#include "lumo.h"

namespace lumo {

// The message of `code`, UTF-8, never null. A code without a message, 0 included, traces a warning and gives
// "Неизвестная ошибка" with the number, in one shared buffer that the next unknown code overwrites.
const char *ErrorMessage(int32_t code);

}  // namespace lumo
