#include "faults/server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace faults {
namespace {

using Json = nlohmann::json;

// A socket bound to a port of the system's choice.
int Bind(int *out_port) {
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  if (descriptor < 0 || bind(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
      getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &length) != 0) {
    throw std::runtime_error("no port to be had");
  }
  *out_port = ntohs(address.sin_port);
  return descriptor;
}

std::string AddressOf(int port) {
  return "http://127.0.0.1:" + std::to_string(port) + "/ws";
}

// Head and body of a request that came whole; false for one that did not.
bool Receive(int connection, std::string *out_head, std::string *out_body) {
  std::string bytes;
  char piece[4096];
  size_t end = std::string::npos;
  size_t length = 0;
  while (end == std::string::npos || bytes.size() < end + 2 + length) {
    const ssize_t count = recv(connection, piece, sizeof piece, 0);
    if (count <= 0) return false;
    bytes.append(piece, static_cast<size_t>(count));
    if (end == std::string::npos && (end = bytes.find("\n\n")) != std::string::npos) {
      const size_t at = bytes.find("Content-Length: ");
      length = at < end ? std::stoul(bytes.substr(at + 16)) : 0;
    }
  }
  *out_head = bytes.substr(0, end);
  *out_body = bytes.substr(end + 2, length);
  return true;
}

// The last word of the request line's path.
std::string MethodOf(const std::string &head) {
  const std::string line = head.substr(0, head.find('\n'));
  return line.substr(line.rfind('/') + 1);
}

struct Part {
  const char *method;
  const char *response;
  const char *part;
};

constexpr Part kParts[] = {
    {"activate", "cardActivationResponse", R"({"activationResult":{"activationSum":100}})"},
    {"balance", "getBalanceResponse",
     R"({"balance":{"account":[{"accountType":"LOCAL","availableAmount":5,"amount":5}]}})"},
    {"payment", "putPaymentResponse", nullptr},
    {"paymentAndConfirm", "putPaymentAndConfirmResponse", nullptr},
    {"confirm", "putPaymentConfirmResponse", "{}"},
    {"cashBack", "putCashBackResponse", R"({"cashBackResult":{"returnedSum":100}})"},
    {"linkCard", "linkedCardResponse", "{}"},
    {"cardExchange", "cardExchangeResponse", "{}"},
    {"deposit", "putDepositResponse", "{}"},
    {"rrn", "getLastRrnResponse", R"({"rrn":{"rrNumber":"1234512120590000"}})"},
    {"ad", "getAdResponse", R"({"ad":{"text":"ad"}})"},
};

}  // namespace

Server::Server() : listener_(Bind(&port_)) {
  if (listen(listener_, 16) != 0) throw std::runtime_error("no port to listen at");
  thread_ = std::thread([this] { Serve(); });
}

Server::~Server() {
  shutdown(listener_, SHUT_RDWR);
  thread_.join();
  close(listener_);
}

std::string Server::address() const {
  return AddressOf(port_);
}

void Server::Reset(const std::set<std::string> &refused_bills) {
  const std::lock_guard<std::mutex> lock(mutex_);
  refused_ = refused_bills;
  request_ids_.clear();
  taken_.clear();
}

int Server::Taken(const std::string &bill) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto row = taken_.find(bill);
  return row == taken_.end() ? 0 : row->second;
}

void Server::Serve() {
  for (;;) {
    const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) return;
    const std::lock_guard<std::mutex> lock(work_);
    std::string head, body;
    if (Receive(connection, &head, &body)) {
      const std::string answer = Answer(MethodOf(head), body);
      send(connection, answer.data(), answer.size(), MSG_NOSIGNAL);
    }
    close(connection);
  }
}

std::string Server::Answer(const std::string &method, const std::string &body) {
  const Json document = Json::parse(body, nullptr, false);
  if (!document.is_object() || document.empty()) return "not a request";
  const Json &parts = document.begin().value();
  const std::string id = parts["request"].value("requestId", "");
  const std::string bill = parts.contains("bill") ? parts["bill"].value("billNum", "") : "";
  const std::lock_guard<std::mutex> lock(mutex_);
  std::string code = "OK";
  if (method != "rrn" && method != "ad") {
    if (id.empty()) {
      code = "REQUEST_ID_EMPTY";
    } else if (refused_.count(bill) != 0) {
      code = "INCORRECT_BILL";
    } else if (!request_ids_.insert(id).second) {
      code = "DUPLICATE_REQUEST_ID";
    } else if (!bill.empty()) {
      ++taken_[bill];
    }
  }
  for (const Part &row : kParts) {
    if (method != row.method) continue;
    Json answer = row.part != nullptr ? Json::parse(row.part) : Json{{"bill", parts["bill"]}};
    if (code != "OK") answer = Json::object();
    answer["response"] = {{"ver", "1.0"},
                          {"requestId", id},
                          {"requestState", code == "OK" ? "SUCCESS" : "ERROR"},
                          {"requestStateCode", code}};
    return Json{{row.response, answer}}.dump();
  }
  return "no such method";
}

std::string DeadAddress() {
  static int port = 0;
  static const int descriptor = Bind(&port);  // bound, so that nobody else takes it
  return descriptor >= 0 ? AddressOf(port) : "";
}

}  // namespace faults
