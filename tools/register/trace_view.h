// register/trace_view.h: how an exchange of a trace looks: in a line, or in full.
#pragma once

#include <string>
#include <string_view>

#include "card_mask.h"
#include "facts.h"
#include "trace_reader.h"

namespace reg {

// The line above the lines.
std::string TraceHeading();
std::string TraceLine(const Exchange &exchange, CardMask &mask);
std::string TraceInFull(const Exchange &exchange, CardMask &mask);

// The same for a program; in full with request and answer.
Facts TraceFacts(const Exchange &exchange, CardMask &mask, bool in_full);

// In words: "SUCCESS OK", "no answer".
std::string Ending(const Exchange &exchange);

// What a result code of an exchange means: "no answer".
std::string CodeInWords(int code);

// A JSON document in lines, two blanks deeper at each level; one that is cut short, or none at all, as far
// as it goes.
std::string Indented(std::string_view document);

// What a screen can show: bytes that are no UTF-8 and those that steer it are "?". Line feeds stay.
std::string Showable(std::string_view text);

}  // namespace reg
