// The module that serves HTTP: see loyalty_server/http.h.
#include <httplib.h>

#include <cerrno>
#include <filesystem>
#include <future>
#include <system_error>
#include <thread>

#include "loyalty_server/http.h"

namespace loyalty {
namespace {

constexpr size_t kMostBodyBytes = 1024 * 1024;

// The local port of a connection; 0 for what is none.
int LocalPort(int file) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  if (getsockname(file, reinterpret_cast<sockaddr *>(&address), &size) != 0) return 0;
  if (address.ss_family == AF_INET) return ntohs(reinterpret_cast<sockaddr_in *>(&address)->sin_port);
  if (address.ss_family == AF_INET6) return ntohs(reinterpret_cast<sockaddr_in6 *>(&address)->sin6_port);
  return 0;
}

// The library waits for the requests that are still coming in, and a client that sends a byte now and then
// would keep it waiting for ever. What has come in whole is still answered.
void EndRequests(int port) {
  std::error_code ignored;  // a root without /proc
  for (const auto &file : std::filesystem::directory_iterator("/proc/self/fd", ignored)) {
    const int number = std::stoi(file.path().filename().string());
    if (LocalPort(number) == port) shutdown(number, SHUT_RD);
  }
}

class LibraryServer : public HttpServer {
 public:
  LibraryServer(const std::string &address, uint16_t port, HttpHandler handler)
      : handler_(std::move(handler)) {
    // The library's own options would let two programs serve one port.
    http_.set_socket_options([](socket_t socket) {
      const int yes = 1;
      setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    errno = 0;
    port_ = port == 0 ? http_.bind_to_any_port(address) : (http_.bind_to_port(address, port) ? port : -1);
    if (port_ < 0) {
      const std::error_code why(errno != 0 ? errno : EADDRNOTAVAIL, std::generic_category());
      throw std::system_error(why, "cannot listen on " + address + ":" + std::to_string(port));
    }
    http_.set_payload_max_length(kMostBodyBytes);
    http_.set_keep_alive_max_count(1);
    http_.set_keep_alive_timeout(1);
    http_.set_tcp_nodelay(true);
    http_.set_default_headers(
        {{"Cache-Control", "no-store"},
         {"X-Content-Type-Options", "nosniff"},
         {"Content-Security-Policy",
          "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
          "img-src 'self' data:; base-uri 'none'; frame-ancestors 'none'"}});
    const auto answer = [this](const httplib::Request &request, httplib::Response &response) {
      Answer(request, &response);
    };
    http_.Get(".*", answer);
    http_.Put(".*", answer);
    http_.Post(".*", answer);
    http_.Delete(".*", answer);
    http_.Patch(".*", answer);

    std::promise<void> is_listening;
    http_.new_task_queue = [&is_listening] {
      is_listening.set_value();
      return new httplib::ThreadPool(kHttpThreads);
    };
    thread_ = std::thread([this] { http_.listen_after_bind(); });
    is_listening.get_future().get();
  }

  ~LibraryServer() override {
    http_.stop();
    EndRequests(port_);
    thread_.join();
  }

  uint16_t port() const override { return static_cast<uint16_t>(port_); }

 private:
  void Answer(const httplib::Request &request, httplib::Response *response) const {
    HttpCall call;
    call.method = request.method;
    call.path = request.path;
    for (const auto &parameter : request.params) call.query[parameter.first] = parameter.second;
    call.host = request.get_header_value("Host");
    call.body = request.body;
    const HttpAnswer answer = handler_(call);
    response->status = answer.status;
    response->set_content(answer.body, answer.type);
  }

  HttpHandler handler_;
  int port_ = -1;
  httplib::Server http_;
  std::thread thread_;
};

}  // namespace
}  // namespace loyalty

extern "C" __attribute__((visibility("default"))) void ServeHttp(
    const std::string &address, uint16_t port, loyalty::HttpHandler handler,
    std::unique_ptr<loyalty::HttpServer> *out_server) {
  *out_server = std::make_unique<loyalty::LibraryServer>(address, port, std::move(handler));
}
