#include "running_call.h"

#include <atomic>

namespace reg {
namespace {

std::atomic<const char *> running{nullptr};

}  // namespace

RunningCall::RunningCall(const char *name) {
  running = name;
}

RunningCall::~RunningCall() {
  running = nullptr;
}

const char *RunningCall::Name() {
  return running;
}

}  // namespace reg
