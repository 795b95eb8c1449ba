#include "cost.h"

#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "heap_calls.h"

namespace bench {
namespace {

// What counts lies between two of these.
void ShowPlace() {
  kill(getpid(), SIGSTOP);
}

[[noreturn]] void DoWatched(const std::function<void()> &work, int out) {
  ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  ShowPlace();
  const uint64_t before = HeapCalls();
  work();
  const uint64_t heap_calls = HeapCalls() - before;
  ShowPlace();
  _exit(write(out, &heap_calls, sizeof heap_calls) == sizeof heap_calls ? 0 : 1);
}

// The stops at the beginning and end of system calls up to the child's next place.
uint64_t CountStops(pid_t child) {
  constexpr int kSystemCall = SIGTRAP | 0x80;
  uint64_t stops = 0;
  for (int signal = 0;;) {
    int status = 0;
    ptrace(PTRACE_SYSCALL, child, nullptr, signal);
    if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) {
      throw std::runtime_error("the child died");
    }
    signal = 0;
    if (WSTOPSIG(status) == SIGSTOP) return stops;
    if (WSTOPSIG(status) == kSystemCall) {
      ++stops;
    } else {
      signal = WSTOPSIG(status);
    }
  }
}

Cost CountWith(const std::function<void()> &work) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) DoWatched(work, ends[1]);
  close(ends[1]);
  int status = 0;
  if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status) ||
      ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0) {
    throw std::runtime_error("the child cannot be watched");
  }
  Cost cost = {};
  cost.systemCalls = CountStops(child) / 2;
  ptrace(PTRACE_DETACH, child, nullptr, nullptr);
  const bool told = read(ends[0], &cost.heapCalls, sizeof cost.heapCalls) == sizeof cost.heapCalls;
  close(ends[0]);
  waitpid(child, &status, 0);
  if (!told) throw std::runtime_error("the child died");
  return cost;
}

}  // namespace

Cost CountCost(const std::function<void()> &work) {
  const Cost nothing = CountWith([] {});
  Cost cost = CountWith(work);
  cost.systemCalls -= nothing.systemCalls;
  return cost;
}

}  // namespace bench
