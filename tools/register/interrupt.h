// register/interrupt.h: an interrupt (SIGINT, SIGTERM, SIGHUP; on Windows Ctrl-C, a closed window) ends the
// register between two commands, never inside a call of the library.
#pragma once

#include <functional>

namespace reg {

// While one lives, the end is put off.
class Busy {
 public:
  Busy();
  ~Busy();
  Busy(const Busy &) = delete;
  Busy &operator=(const Busy &) = delete;
};

// Call it before there is a second thread. `before_end` runs when nothing is busy, in a thread of its own or
// in the one that was busy last; then the process ends with 128 and the signal's number.
void WatchForInterrupts(std::function<void()> before_end);

// Ends the process with this status, after `before_end`.
[[noreturn]] void EndProcess(int status);

}  // namespace reg
