#include "support/scripted_server.h"

#define ASIO_STANDALONE
#define ASIO_NO_DEPRECATED
#include <array>
#include <asio.hpp>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace test {

using asio::ip::tcp;
using ErrorCode = asio::error_code;

namespace {

// The client takes at most this much at a time, so that a piece that ends on a multiple of it may follow the
// piece before at once. After any other piece the client is done: it gets the time to close before the next
// piece is sent.
constexpr size_t kClientPiece = 500;
constexpr std::chrono::seconds kTimeToClose(30);

tcp::endpoint LoopbackOfTheSystemsChoice() {
  return {asio::ip::address_v4::loopback(), 0};
}

// The length of the whole request once its head is there, else 0.
size_t WholeLength(const std::string &request) {
  const size_t head_end = request.find("\n\n");
  if (head_end == std::string::npos) return 0;
  const std::string name = "\nContent-Length: ";
  const size_t at = request.find(name);
  const size_t body = at < head_end ? std::strtoul(request.c_str() + at + name.size(), nullptr, 10) : 0;
  return head_end + 2 + body + 1;
}

}  // namespace

struct ScriptedServer::Impl {
  struct Connection : std::enable_shared_from_this<Connection> {
    Connection(Impl *owner, tcp::socket taken, size_t number)
        : server(owner), socket(std::move(taken)), index(number), timer(owner->context) {}

    void ReadRequest() {
      auto self = shared_from_this();
      socket.async_read_some(asio::buffer(buffer), [self](ErrorCode error, size_t count) {
        const bool complete = self->server->Record(self->index, self->buffer, count);
        if (error) return;
        complete ? self->SendPiece() : self->ReadRequest();
      });
    }

    void SendPiece() {
      const Answer &answer = server->answers[index];
      if (piece == answer.pieces.size()) return End(answer.end);
      auto self = shared_from_this();
      const std::string &bytes = answer.pieces[piece++];
      asio::async_write(socket, asio::buffer(bytes), [self](ErrorCode error, size_t count) {
        if (error) return;
        self->sent += count;
        const bool last = self->piece == self->server->answers[self->index].pieces.size();
        last || self->sent % kClientPiece == 0 ? self->SendPiece() : self->AwaitClose();
      });
    }

    void AwaitClose() {
      auto self = shared_from_this();
      timer.expires_after(kTimeToClose);
      timer.async_wait([self](ErrorCode error) {
        if (error) return;  // the client closed first
        ErrorCode ignored;
        self->socket.cancel(ignored);
        self->SendPiece();
      });
      socket.async_read_some(asio::buffer(buffer), [self](ErrorCode error, size_t) {
        if (error != asio::error::operation_aborted) self->timer.cancel();
      });
    }

    void End(Answer::End end) {
      ErrorCode ignored;
      if (end == Answer::End::kSilence) {
        server->silent.push_back(shared_from_this());
        return;
      }
      if (end == Answer::End::kReset) socket.set_option(asio::socket_base::linger(true, 0), ignored);
      socket.close(ignored);
    }

    Impl *server;
    tcp::socket socket;
    size_t index;
    asio::steady_timer timer;
    std::array<char, 4096> buffer{};
    size_t piece = 0;
    size_t sent = 0;
  };

  explicit Impl(std::vector<Answer> given)
      : answers(std::move(given)), acceptor(context, LoopbackOfTheSystemsChoice()) {
    port = acceptor.local_endpoint().port();
    Accept();
    thread = std::thread([this] { context.run(); });
  }

  ~Impl() {
    context.stop();
    thread.join();
    silent.clear();
  }

  void Accept() {
    acceptor.async_accept([this](ErrorCode error, tcp::socket socket) {
      if (error) return;
      if (taken < answers.size()) {
        ErrorCode ignored;
        socket.set_option(tcp::no_delay(true), ignored);
        std::make_shared<Connection>(this, std::move(socket), taken++)->ReadRequest();
      }
      Accept();
    });
  }

  // Appends to what a connection sent; true when its request is complete.
  bool Record(size_t index, const std::array<char, 4096> &buffer, size_t count) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (requests.size() <= index) {
      requests.resize(index + 1);
      wholeLengths.resize(index + 1);
    }
    std::string &request = requests[index];
    request.append(buffer.data(), count);
    if (wholeLengths[index] == 0) wholeLengths[index] = WholeLength(request);
    return wholeLengths[index] != 0 && request.size() >= wholeLengths[index];
  }

  const std::vector<Answer> answers;
  asio::io_context context;
  tcp::acceptor acceptor;
  int port = 0;
  size_t taken = 0;
  std::vector<std::shared_ptr<Connection>> silent;
  mutable std::mutex mutex;
  std::vector<std::string> requests;
  std::vector<size_t> wholeLengths;
  std::thread thread;
};

ScriptedServer::ScriptedServer(std::vector<Answer> answers)
    : impl_(std::make_unique<Impl>(std::move(answers))) {}

ScriptedServer::ScriptedServer(const std::string &answer)
    : ScriptedServer(std::vector<Answer>{Answer{{answer}, Answer::End::kClose}}) {}

ScriptedServer::~ScriptedServer() = default;

int ScriptedServer::port() const {
  return impl_->port;
}

std::string ScriptedServer::address() const {
  return "http://127.0.0.1:" + std::to_string(port()) + "/ws";
}

std::vector<std::string> ScriptedServer::requests() const {
  const std::lock_guard<std::mutex> lock(impl_->mutex);
  return impl_->requests;
}

int UnusedPort() {
  // Bound but not listening: refused for as long as the process lives, and given to no one else.
  static asio::io_context context;
  static std::vector<tcp::socket> bound;
  bound.emplace_back(context, LoopbackOfTheSystemsChoice());
  return bound.back().local_endpoint().port();
}

}  // namespace test
