// api/context.h: what lives between calls and belongs to no lower layer.
#pragma once

namespace lumo {

struct Transaction;

extern Transaction *current_transaction;  // null when no transaction exists

}  // namespace lumo
