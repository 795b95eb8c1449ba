// register/operation.h: one operation on a card, from its transaction's beginning to its end.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "options.h"
#include "till.h"

namespace reg {

using Amounts = std::vector<std::pair<const char *, int32_t>>;

struct Operation {
  std::string name;
  std::function<int(Library &)> call;
  std::function<Amounts(Library &)> amounts;  // what it brought, after a success; may be none
  bool hasSlip = true;
  bool asksServer = true;
  bool isRecorded = true;  // leaves a record in LOG
};

// Runs the operation and shows what a cashier would see.
void Operate(Till &till, const CardOptions &options, const Operation &operation);

}  // namespace reg
