// register/progress.h: shows how far a call has come that takes longer than a second. The call itself is
// silent until it ends, but the trace grows with each of its steps, so a second thread reads the trace.
#pragma once

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <string>
#include <thread>

namespace reg {

class Progress {
 public:
  // Follows `trace` from its present end. `total` is how many records are expected, 0 for another operation.
  // On standard error: one line that is renewed when a person looks at it, otherwise a line a second when
  // `is_wanted`, otherwise nothing.
  Progress(std::filesystem::path trace, size_t total, bool is_wanted);
  ~Progress();  // stops and takes its line away
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

 private:
  void Follow();
  void Read();
  void TakeLine(const std::string &line);

  std::filesystem::path trace_;
  size_t total_;
  std::streamoff at_ = 0;
  std::string rest_;  // of a line that is not whole yet
  size_t count_ = 0;
  std::string step_;
  bool is_renewed_ = false;
  std::atomic<bool> done_{false};
  std::thread thread_;
};

}  // namespace reg
