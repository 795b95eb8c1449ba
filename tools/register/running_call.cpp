#include "running_call.h"

namespace reg {
namespace {

thread_local const char *running = nullptr;

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
