// loyalty_server/page.h: the page in the browser, and the calls behind it for test scripts.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "loyalty_server/http.h"
#include "loyalty_server/server.h"

namespace loyalty {

class Page {
 public:
  // Serves until its destructor, which comes before the server's. Throws what ServeHttp throws.
  Page(Server *server, const std::string &host, uint16_t port);
  ~Page();
  Page(const Page &) = delete;
  Page &operator=(const Page &) = delete;

  uint16_t port() const { return http_->port(); }
  std::string address() const;  // "http://127.0.0.1:8081/"

 private:
  HttpAnswer Answer(const HttpCall &call);
  HttpAnswer AnswerApi(const HttpCall &call);
  bool IsOurs(const std::string &name) const;

  Server *server_;
  std::string host_;
  std::atomic<bool> is_ending_{false};
  std::atomic<int> waiting_{0};
  std::unique_ptr<HttpServer> http_;
};

}  // namespace loyalty
