#include "progress.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <utility>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace reg {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

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

Progress::Progress(std::filesystem::path trace, size_t total, bool is_wanted)
    : trace_(std::move(trace)), total_(total), is_renewed_(IsPersonLooking()) {
  at_ = static_cast<std::streamoff>(SizeOf(trace_));
  if (is_wanted || is_renewed_) thread_ = std::thread([this] { Follow(); });
}

Progress::~Progress() {
  done_ = true;
  if (thread_.joinable()) thread_.join();
}

void Progress::Read() {
  std::ifstream stream(trace_, std::ios::binary);
  if (SizeOf(trace_) < static_cast<uintmax_t>(at_)) at_ = 0;  // somebody removed it
  stream.seekg(at_);
  std::string piece(1 << 16, '\0');
  while (stream.read(piece.data(), static_cast<std::streamsize>(piece.size())), stream.gcount() > 0) {
    at_ += stream.gcount();
    rest_.append(piece, 0, static_cast<size_t>(stream.gcount()));
    size_t line = 0;
    for (size_t end; (end = rest_.find('\n', line)) != std::string::npos; line = end + 1) {
      TakeLine(rest_.substr(line, end - line));
    }
    rest_.erase(0, line);
  }
}

void Progress::TakeLine(const std::string &line) {
  const auto begins = [&line](const char *text) { return line.rfind(text, 0) == 0; };
  if (begins("LoadLogRecord")) {
    ++count_;
  } else if (begins("Connecting to ")) {
    step_ = "connecting to " + line.substr(14, line.find("//") - 14);
  } else if (begins("Receiving")) {
    step_ = "waiting for the answer";
  } else if (begins("ParseOperationResponse")) {
    step_ = "reading the answer";
  }
}

void Progress::Follow() {
  const auto begin = steady_clock::now();
  auto shown = begin;
  while (!done_) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const auto now = steady_clock::now();
    if (now - shown < (shown == begin || !is_renewed_ ? seconds(1) : std::chrono::milliseconds(200))) {
      continue;
    }
    shown = now;
    Read();
    std::string text = "  " + std::to_string(std::chrono::duration_cast<seconds>(now - begin).count()) + " s";
    if (total_ != 0) {
      text += "  " + std::to_string(std::min(count_, total_)) + " of " + std::to_string(total_) + " records";
    }
    if (!step_.empty()) text += "  " + step_;
    std::fprintf(stderr, is_renewed_ ? "\r%-78s" : "%s\n", text.c_str());
    std::fflush(stderr);
  }
  if (shown != begin && is_renewed_) std::fprintf(stderr, "\r%78s\r", "");
}

}  // namespace reg
