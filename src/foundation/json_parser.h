// foundation/json_parser.h: JSON text in, events out; fed in pieces that may be cut anywhere.
#pragma once

#include "foundation/json_event.h"

namespace lumo {

struct JsonParser;

}  // namespace lumo
