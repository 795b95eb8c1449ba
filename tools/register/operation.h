// register/operation.h: one operation on a card, from its transaction's beginning to its end.
#pragma once

#include <functional>

#include "options.h"
#include "till.h"

namespace reg {

// Runs the operation and shows what a cashier would see; `after` adds to it.
void Operate(Till &till, const CardOptions &options, const std::function<int(Library &)> &operation,
             const std::function<void(Library &)> &after = nullptr);

}  // namespace reg
