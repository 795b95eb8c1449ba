#include "progress.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <utility>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace reg {
namespace {

constexpr char kLoadLine[] = "LoadLogRecord\n";

// Only a person looks at progress; a log would fill with it.
bool IsPersonLooking() {
#ifdef _WIN32
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(STDERR_FILENO) != 0;
#endif
}

uintmax_t SizeOf(const std::filesystem::path &file) {
  std::error_code error;
  const uintmax_t size = std::filesystem::file_size(file, error);
  return error ? 0 : size;
}

}  // namespace

Progress::Progress(std::filesystem::path trace, size_t total) : trace_(std::move(trace)), total_(total) {
  if (total_ > 0 && IsPersonLooking()) thread_ = std::thread([this] { Follow(); });
}

Progress::~Progress() {
  done_ = true;
  if (thread_.joinable()) thread_.join();
}

void Progress::Follow() {
  auto at = static_cast<std::streamoff>(SizeOf(trace_));
  std::string seen;
  size_t count = 0;
  bool shown = false;
  while (!done_) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    std::ifstream stream(trace_, std::ios::binary);
    stream.seekg(at);
    std::string piece(1 << 16, '\0');
    while (stream.read(piece.data(), static_cast<std::streamsize>(piece.size())), stream.gcount() > 0) {
      at += stream.gcount();
      seen.append(piece, 0, static_cast<size_t>(stream.gcount()));
      size_t line = 0;
      for (size_t end; (end = seen.find('\n', line)) != std::string::npos; line = end + 1) {
        if (seen.compare(line, end + 1 - line, kLoadLine) == 0) ++count;
      }
      seen.erase(0, line);
    }
    if (count > 0) {
      std::fprintf(stderr, "\r  %zu of %zu records", std::min(count, total_), total_);
      std::fflush(stderr);
      shown = true;
    }
  }
  if (shown) std::fprintf(stderr, "\r%*s\r", 40, "");
}

}  // namespace reg
