#include "loyalty_server/request_reader.h"

#include <algorithm>

namespace loyalty {
namespace {

constexpr size_t kMostHeadBytes = 16 * 1024;

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsSameIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return Lower(x) == Lower(y); });
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

}  // namespace

RequestReader::RequestReader(size_t most_body_bytes) : most_body_bytes_(most_body_bytes) {}

RequestReader::Status RequestReader::Complain(int http_status, const char *complaint) {
  http_status_ = http_status;
  complaint_ = complaint;
  return Status::kBad;
}

RequestReader::Status RequestReader::Feed(std::string_view bytes) {
  while (status_ == Status::kMore && !bytes.empty()) {
    if (is_in_body_) {
      const size_t count = std::min(bytes.size(), length_ - body_.size());
      body_.append(bytes.substr(0, count));
      if (body_.size() == length_) status_ = Status::kComplete;
      break;
    }
    const size_t end = bytes.find('\n');
    const size_t count = end == std::string_view::npos ? bytes.size() : end;
    head_bytes_ += count + 1;
    if (head_bytes_ > kMostHeadBytes) {
      status_ = Complain(431, "the head has no end");
      break;
    }
    line_.append(bytes.substr(0, count));
    if (end == std::string_view::npos) break;
    bytes.remove_prefix(count + 1);
    if (!line_.empty() && line_.back() == '\r') line_.pop_back();
    status_ = TakeLine();
    line_.clear();
  }
  return status_;
}

RequestReader::Status RequestReader::TakeLine() {
  if (path_.empty()) {
    std::string_view line = line_;
    if (line.substr(0, 5) != "POST ") return Complain(line.find(' ') < 10 ? 405 : 400, "not a POST");
    line.remove_prefix(5);
    line = line.substr(0, line.find(' '));  // a protocol version may follow
    if (line.empty()) return Complain(400, "no path");
    path_ = line;
    return Status::kMore;
  }
  if (line_.empty()) {
    if (!is_length_known_) return Complain(411, "no Content-Length");
    is_in_body_ = true;
    return length_ == 0 ? Status::kComplete : Status::kMore;
  }
  const size_t colon = line_.find(':');
  if (colon == std::string::npos) return Complain(400, "a head line without a colon");
  if (!IsSameIgnoringCase(std::string_view(line_).substr(0, colon), "Content-Length")) return Status::kMore;
  const std::string_view digits = Trimmed(std::string_view(line_).substr(colon + 1));
  const bool is_number = !digits.empty() && std::all_of(digits.begin(), digits.end(),
                                                        [](char c) { return c >= '0' && c <= '9'; });
  if (!is_number || is_length_known_) return Complain(400, "bad Content-Length");
  for (const char digit : digits) {
    length_ = length_ * 10 + static_cast<size_t>(digit - '0');
    if (length_ > most_body_bytes_) return Complain(413, "the body is too long");
  }
  is_length_known_ = true;
  return Status::kMore;
}

std::string_view RequestReader::method() const {
  const size_t slash = path_.rfind('/');
  return slash == std::string::npos ? std::string_view(path_) : std::string_view(path_).substr(slash + 1);
}

}  // namespace loyalty
