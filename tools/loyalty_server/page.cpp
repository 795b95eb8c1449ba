#include "loyalty_server/page.h"

#include "loyalty_server/api.h"
#include "loyalty_server/page_files.h"

namespace loyalty {
namespace {

// Each call that waits holds a thread; some stay free for those that do not.
constexpr int kMostWaiting = kHttpThreads * 3 / 4;

constexpr const char *kJson = "application/json";

bool IsLoopback(const std::string &host) {
  return host.substr(0, 4) == "127." || host == "::1" || host == "localhost";
}

}  // namespace

Page::Page(Server *server, const std::string &host, uint16_t port)
    : server_(server),
      host_(host),
      http_(ServeHttp(host, port, [this](const HttpCall &call) { return Answer(call); })) {}

Page::~Page() {
  is_ending_ = true;
  server_->WakeWaiting();
  http_.reset();
}

std::string Page::address() const {
  const bool is_six = host_.find(':') != std::string::npos;
  return "http://" + (is_six ? "[" + host_ + "]" : host_) + ":" + std::to_string(port()) + "/";
}

// A name that somebody else's page has let point here is not ours.
bool Page::IsOurs(const std::string &name) const {
  if (!IsLoopback(host_)) return true;
  const std::string host = name.substr(0, name.rfind(':'));
  return host == host_ || host == "127.0.0.1" || host == "localhost" || host == "[" + host_ + "]";
}

HttpAnswer Page::Answer(const HttpCall &call) {
  if (!IsOurs(call.host)) return {403, kJson, "{\"error\":\"the page is for this machine alone\"}\n"};
  constexpr const char *kApi = "/api/";
  if (call.path.rfind(kApi, 0) == 0) return AnswerApi(call);
  if (call.method == "GET") {
    if (call.path == "/") return {200, "text/html; charset=utf-8", kPageHtml};
    if (call.path == "/page.css") return {200, "text/css; charset=utf-8", kPageCss};
    if (call.path == "/page.js") return {200, "text/javascript; charset=utf-8", kPageJs};
  }
  return {404, kJson, "{\"error\":\"no such page\"}\n"};
}

HttpAnswer Page::AnswerApi(const HttpCall &call) {
  ApiCall api_call{call.method, call.path.substr(call.path.find('/', 1) + 1), call.query, call.body};
  const bool is_waiting = call.query.count("wait") != 0;
  if (is_waiting && ++waiting_ > kMostWaiting) api_call.query.erase("wait");
  const ApiAnswer answer = CallApi(server_, api_call, [this] { return is_ending_.load(); });
  if (is_waiting) --waiting_;
  return {answer.status, kJson, answer.body};
}

}  // namespace loyalty
