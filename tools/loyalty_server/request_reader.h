// loyalty_server/request_reader.h: takes the bytes of a connection as they come and finds the
// request in them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace loyalty {

class RequestReader {
 public:
  explicit RequestReader(size_t most_body_bytes);

  enum class Status { kMore, kComplete, kBad };
  // Bytes behind a complete request are not looked at; after kBad everything is ignored.
  Status Feed(std::string_view bytes);

  // Of a complete request.
  const std::string &path() const { return path_; }
  std::string_view method() const;  // last segment of the path
  const std::string &body() const { return body_; }

  // Of a bad one: the HTTP status that tells the sender, and why in words.
  int http_status() const { return http_status_; }
  const std::string &complaint() const { return complaint_; }

 private:
  Status TakeLine();
  Status Complain(int http_status, const char *complaint);

  size_t most_body_bytes_;
  Status status_ = Status::kMore;
  bool is_in_body_ = false;
  bool is_length_known_ = false;
  size_t head_bytes_ = 0;
  size_t length_ = 0;
  std::string line_;
  std::string path_;
  std::string body_;
  int http_status_ = 0;
  std::string complaint_;
};

}  // namespace loyalty
