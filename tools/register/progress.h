// progress.h: shows how far a replay has come. The call itself is silent until it ends, but the trace grows a
// line with each record, so a second thread follows the trace.
#pragma once

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <thread>

namespace reg {

class Progress {
 public:
  // Follows `trace` from its present end; `total` records are expected.
  Progress(std::filesystem::path trace, size_t total);
  ~Progress();  // stops and ends the line
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

 private:
  void Follow();

  std::filesystem::path trace_;
  size_t total_;
  std::atomic<bool> done_{false};
  std::thread thread_;
};

}  // namespace reg
