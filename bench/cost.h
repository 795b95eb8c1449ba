// bench/cost.h: what a piece of work asks of the system and of the heap. Neither depends on what else runs.
#pragma once

#include <cstdint>
#include <functional>

namespace bench {

struct Cost {
  uint64_t systemCalls;
  uint64_t heapCalls;  // malloc, calloc and realloc, those of the C library included
};

// Does the work in a child process that is watched from system call to system call; what it does to files and
// servers stays, what it does to memory is gone. The work must not wait for another thread of this process
// that waits for this call. Throws std::runtime_error when the child dies or cannot be watched.
Cost CountCost(const std::function<void()> &work);

}  // namespace bench
