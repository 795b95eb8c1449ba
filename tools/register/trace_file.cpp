#include "trace_file.h"

#include <algorithm>
#include <fstream>
#include <utility>

namespace reg {
namespace {

constexpr size_t kPieceBytes = size_t{1} << 20;
constexpr size_t kTailBytes = 4096;

// As many bytes from `offset` on as there are.
std::string ReadAt(std::ifstream &stream, uintmax_t offset, size_t count) {
  std::string bytes(count, '\0');
  stream.clear();
  stream.seekg(static_cast<std::streamoff>(offset));
  stream.read(bytes.data(), static_cast<std::streamsize>(count));
  bytes.resize(static_cast<size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
  return bytes;
}

}  // namespace

TraceFile::News TraceFile::Read(std::string &bytes) {
  bytes.clear();
  std::ifstream stream(path_, std::ios::binary);
  if (!stream.is_open()) return News::kMissing;
  bool anew = false;
  if (ReadAt(stream, offset_ - tail_.size(), tail_.size()) != tail_) {
    offset_ = 0;
    tail_.clear();
    anew = true;
  }
  bytes = ReadAt(stream, offset_, kPieceBytes);
  if (bytes.empty()) return anew ? News::kAnew : News::kNone;
  offset_ += bytes.size();
  tail_ = bytes.size() >= kTailBytes ? bytes.substr(bytes.size() - kTailBytes) : tail_ + bytes;
  if (tail_.size() > kTailBytes) tail_.erase(0, tail_.size() - kTailBytes);
  return anew ? News::kAnew : News::kMore;
}

}  // namespace reg
