// register/trace_file.h: the bytes of a trace that a register may be writing, delete and make anew meanwhile.
// It is open only while a piece is read, so that it can be removed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

namespace reg {

class TraceFile {
 public:
  enum class News { kNone, kMore, kAnew, kMissing };

  explicit TraceFile(std::filesystem::path path) : path_(std::move(path)) {}

  // Gives the next bytes, a megabyte at most. kAnew: they are the first of another file of this name.
  News Read(std::string &bytes);

 private:
  std::filesystem::path path_;
  uintmax_t offset_ = 0;
  std::string tail_;  // the bytes before it: another file has others there
};

}  // namespace reg
