// foundation/format.h: numbers and amounts as text. Each function returns its own shared buffer, overwritten
// by its next call: copy the first amount before formatting a second one for the same line.
#pragma once

#include <cstdint>

#include "foundation/trace.h"

namespace lumo {

const char *IntToText(int32_t value);

// `text` behind zero digits to exactly `width` characters (at most 49); a longer text loses its rightmost
// characters. A null text gives zeros only.
const char *ZeroPadLeft(const char *text, int32_t width);

// Hundredths as units, a point and two digits: 12345 is "123.45". The sign is not handled: -50 is "-.50", -5
// is "0.-5".
const char *FormatAmount(int32_t amount);

// A text of exactly the needed size from the runtime's malloc; the caller frees it with the runtime's free.
char *FormatAlloc(const char *format, ...) LUMO_PRINTF(1, 2);

// A null text prints as the empty text, wherever a customer or the server would read it.
inline const char *TextOrEmpty(const char *text) {
  return text != nullptr ? text : "";
}

}  // namespace lumo
