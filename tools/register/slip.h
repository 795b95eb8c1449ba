// register/slip.h: a receipt or report as the printer would give it, on paper drawn in the terminal.
#pragma once

#include <iosfwd>
#include <string>

namespace reg {

// The paper is 24 columns wide; a longer line goes on below, as it does on the printer.
void DrawSlip(std::ostream &out, const std::string &utf8_text);

}  // namespace reg
