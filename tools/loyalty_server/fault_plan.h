// loyalty_server/fault_plan.h: which fault strikes which request: one for all, one after another,
// or by chance.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "loyalty_server/fault.h"

namespace loyalty {

class FaultPlan {
 public:
  FaultPlan() = default;
  explicit FaultPlan(Fault fault) : FaultPlan(std::vector<Fault>{std::move(fault)}, false) {}
  // One after another, each until it is off; then nothing, or the first again.
  FaultPlan(std::vector<Fault> steps, bool is_repeated);

  // The fault in force.
  const Fault &fault() const;
  // Counts the steps begun, so that a change of the fault in force can be seen.
  uint64_t steps_begun() const { return steps_begun_; }
  size_t step() const { return step_; }
  size_t step_count() const { return steps_.size(); }
  bool Has(FaultKind kind) const;

  // What strikes this request: counted, drawn where chance decides, without its limits.
  Fault Take(const OperationNames *operation);
  // Whether the connection that has just opened is to be hung up; counted.
  bool TakeHangUp();
  // The time of the fault in force is over.
  void Advance();

 private:
  void Begin(size_t step);
  void Count();

  std::vector<Fault> steps_;
  bool is_repeated_ = false;
  size_t step_ = 0;
  uint64_t steps_begun_ = 0;
  Fault present_;  // the step in force, with what is left of its times
  std::mt19937_64 dice_;
};

// A script: a fault on each line, which strikes once unless it says "times N" or "for MS"; "off" lets a
// request pass; "repeat" as the last line begins anew; a line that begins with "#" is a comment. Throws
// std::invalid_argument that names the line.
FaultPlan ParseFaultScript(std::string_view text);

}  // namespace loyalty
