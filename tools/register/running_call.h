// register/running_call.h: which call of the library runs, for those that must know when the process is
// about to end.
#pragma once

namespace reg {

class RunningCall {
 public:
  explicit RunningCall(const char *name);
  ~RunningCall();
  RunningCall(const RunningCall &) = delete;
  RunningCall &operator=(const RunningCall &) = delete;

  // Of this thread; null when none runs.
  static const char *Name();

  // Stands for a call while the library file is loaded, which ends the process when the file is cut short.
  static constexpr char kLoading[] = "the loading of its file";
};

}  // namespace reg
