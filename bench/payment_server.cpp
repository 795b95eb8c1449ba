#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "payment.h"
#include "workloads.h"

namespace bench {
namespace {

constexpr size_t kClientPiece = 500;  // an answer ends at the first piece shorter than this

std::string MakeAnswer(int goods, const std::string &request_id) {
  std::string answer = R"({"putPaymentResponse":{"response":{"ver":"1.0","requestId":")" + request_id +
                       R"(","responseId":"8812736450","responseDate":"2024-05-17T10:42:06Z",)" +
                       R"("requestState":"SUCCESS","requestStateCode":"OK",)" +
                       R"("message":"Операция выполнена успешно","isNeedUpdate":false},"bill":)" +
                       MakeBill(goods) + "}}";
  if (answer.size() % kClientPiece == 0) answer += ' ';
  return answer;
}

std::string Between(const std::string &text, const std::string &begin, char end) {
  const size_t at = text.find(begin);
  if (at == std::string::npos) return "";
  return text.substr(at + begin.size(), text.find(end, at + begin.size()) - at - begin.size());
}

// A whole request, head and body; empty when the client goes first.
std::string Receive(int client) {
  std::string request;
  char piece[16384];
  for (;;) {
    const ssize_t count = recv(client, piece, sizeof piece, 0);
    if (count <= 0) return "";
    request.append(piece, static_cast<size_t>(count));
    size_t head = request.find("\r\n\r\n");
    head = head != std::string::npos ? head + 4 : request.find("\n\n") + 2;
    if (head < 4) continue;
    if (request.size() - head >=
        std::strtoul(Between(request, "Content-Length: ", '\n').c_str(), nullptr, 10)) {
      return request;
    }
  }
}

[[noreturn]] void Serve(int listener, int goods) {
  for (;;) {
    const int client = accept(listener, nullptr, nullptr);
    const int on = 1;
    setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const std::string request = Receive(client);
    if (!request.empty()) {
      std::string answer = MakeAnswer(goods, Between(request, "\"requestId\":\"", '"'));
      // The terminals' protocol has no head in answers; a client of the common kind wants one.
      if (request.find(" HTTP/1.1\r\n") != std::string::npos) {
        answer =
            "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: close\r\nContent-Length: " +
            std::to_string(answer.size()) + "\r\n\r\n" + answer;
      }
      send(client, answer.data(), answer.size(), MSG_NOSIGNAL);
      // The client closes first.
      char rest[64];
      shutdown(client, SHUT_WR);
      while (recv(client, rest, sizeof rest, 0) > 0) {
      }
    }
    close(client);
  }
}

}  // namespace

PaymentServer::PaymentServer(int goods) {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  Require(bind(listener, reinterpret_cast<sockaddr *>(&address), length) == 0 && listen(listener, 16) == 0 &&
              getsockname(listener, reinterpret_cast<sockaddr *>(&address), &length) == 0,
          "the server's port");
  port_ = ntohs(address.sin_port);
  process_ = fork();
  Require(process_ >= 0, "a process for the server");
  if (process_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    Serve(listener, goods);
  }
  close(listener);
}

PaymentServer::~PaymentServer() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

}  // namespace bench
