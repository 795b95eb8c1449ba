// loyalty_server/http.h: HTTP for the page. Whoever runs the server without a page needs no library of HTTP:
// the one there is comes with a module, loyalty_server_page.so, that lies beside the program and is loaded
// when it is called for.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace loyalty {

struct HttpCall {
  std::string method;  // "GET"
  std::string path;    // "/api/cards/1000000001", decoded
  std::map<std::string, std::string> query;
  std::string host;  // by what name the server was asked
  std::string body;
};

struct HttpAnswer {
  int status = 200;
  std::string type;
  std::string body;
};

// Called in a thread of its own for each connection, up to kHttpThreads at once.
using HttpHandler = std::function<HttpAnswer(const HttpCall &)>;
constexpr size_t kHttpThreads = 32;

class HttpServer {
 public:
  HttpServer() = default;
  virtual ~HttpServer() = default;  // waits for the calls that are under way
  HttpServer(const HttpServer &) = delete;
  HttpServer &operator=(const HttpServer &) = delete;

  virtual uint16_t port() const = 0;
};

// Serves from now on. Throws std::runtime_error when the module cannot be loaded, and std::system_error,
// naming the address, when it cannot be listened on.
std::unique_ptr<HttpServer> ServeHttp(const std::string &address, uint16_t port, HttpHandler handler);

// What the module exports: the same, under the name "ServeHttp".
using ServeHttpCall = void(const std::string &address, uint16_t port, HttpHandler handler,
                           std::unique_ptr<HttpServer> *out_server);

}  // namespace loyalty
