#include "loyalty_server/fault_plan.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace loyalty {
namespace {

const Fault kNothing;

}  // namespace

FaultPlan::FaultPlan(std::vector<Fault> steps, bool is_repeated)
    : steps_(std::move(steps)), is_repeated_(is_repeated) {
  Begin(0);
}

void FaultPlan::Begin(size_t step) {
  step_ = step;
  ++steps_begun_;
  present_ = step_ < steps_.size() ? steps_[step_] : Fault();
  // A random fault that comes again goes on with its dice, or a repeated script would repeat its throws.
  if (present_.kind == FaultKind::kRandom && steps_begun_ <= steps_.size()) dice_.seed(present_.seed);
}

const Fault &FaultPlan::fault() const {
  return steps_.empty() ? kNothing : present_;
}

bool FaultPlan::Has(FaultKind kind) const {
  return std::any_of(steps_.begin(), steps_.end(), [kind](const Fault &step) { return step.kind == kind; });
}

void FaultPlan::Advance() {
  if (steps_.empty()) return;
  const bool is_last = step_ + 1 >= steps_.size();
  if (is_last && !is_repeated_) {
    steps_.clear();
    Begin(0);
  } else {
    Begin(is_last ? 0 : step_ + 1);
  }
}

void FaultPlan::Count() {
  if (present_.times != kUntilOff && --present_.times == 0) Advance();
}

Fault FaultPlan::Take(const OperationNames *operation) {
  if (steps_.empty() || IsOfConnection(present_.kind)) return Fault();
  if (present_.operation != nullptr && present_.operation != operation) return Fault();
  Fault taken = present_;
  taken.times = kUntilOff;
  taken.milliseconds = kUntilOff;
  taken.operation = nullptr;
  if (present_.kind == FaultKind::kRandom) {
    // Both are drawn each time, so that a request's fate hangs on the seed and its number alone.
    const uint64_t chance = dice_() % 100;
    const uint64_t draw = dice_();
    if (chance >= static_cast<uint64_t>(present_.number)) return Fault();
    taken = DrawnFault(present_, draw);
  }
  Count();
  return taken;
}

bool FaultPlan::TakeHangUp() {
  if (steps_.empty() || present_.kind != FaultKind::kHangUp) return false;
  Count();
  return true;
}

FaultPlan ParseFaultScript(std::string_view text) {
  std::vector<Fault> steps;
  bool is_repeated = false;
  std::istringstream stream{std::string(text)};
  size_t number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    const size_t begin = line.find_first_not_of(" \t\r");
    if (begin == std::string::npos || line[begin] == '#') continue;
    line = line.substr(begin, line.find_last_not_of(" \t\r") + 1 - begin);
    const std::string where = "line " + std::to_string(number) + ": ";
    if (is_repeated) throw std::invalid_argument(where + "repeat is the last line");
    if (line == "repeat") {
      if (steps.empty()) throw std::invalid_argument(where + "there is nothing to repeat");
      is_repeated = true;
      continue;
    }
    try {
      steps.push_back(ParseFault(line));
    } catch (const std::invalid_argument &error) {
      throw std::invalid_argument(where + error.what());
    }
    Fault &fault = steps.back();
    if (fault.times != kUntilOff || fault.milliseconds != kUntilOff) continue;
    if (fault.kind == FaultKind::kRefuse || fault.kind == FaultKind::kBlackHole) {
      throw std::invalid_argument(where + "say how long it lasts, for MS");
    }
    fault.times = 1;
  }
  return FaultPlan(std::move(steps), is_repeated);
}

}  // namespace loyalty
