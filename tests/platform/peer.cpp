#include "platform/peer.h"

#include <asio.hpp>
#include <csignal>
#include <thread>

namespace test {
namespace {

using asio::ip::tcp;

const tcp::endpoint kAnyPort(asio::ip::address_v4::loopback(), 0);

// The signals of a test are for the calls under test: here one would end a read.
void TakeNoSignals() {
#ifndef _WIN32
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
#endif
}

class AsioConnection : public Connection {
 public:
  explicit AsioConnection(tcp::socket socket) : socket_(std::move(socket)) {}
  std::string Read(size_t count) override {
    std::string bytes(count, 0);
    std::error_code ended;
    bytes.resize(asio::read(socket_, asio::buffer(bytes), ended));
    return bytes;
  }
  std::string ReadToEnd() override {
    std::string bytes;
    std::error_code ended;
    asio::read(socket_, asio::dynamic_buffer(bytes), ended);
    return bytes;
  }
  void Write(const std::string &bytes) override {
    std::error_code ended;
    asio::write(socket_, asio::buffer(bytes), ended);
  }
  void Reset() override {
    socket_.set_option(asio::socket_base::linger(true, 0));
    socket_.close();
  }

 private:
  tcp::socket socket_;
};

}  // namespace

struct Peer::Impl {
  asio::io_context context;
  tcp::acceptor acceptor{context, kAnyPort};
  std::thread thread;
};

Peer::Peer(std::function<void(Connection &)> work) : impl_(std::make_unique<Impl>()) {
  impl_->thread = std::thread([this, work = std::move(work)] {
    TakeNoSignals();
    std::error_code ended;
    tcp::socket socket = impl_->acceptor.accept(ended);
    if (ended) return;
    AsioConnection connection(std::move(socket));
    work(connection);
  });
}

Peer::~Peer() {
  impl_->thread.join();
}

uint16_t Peer::port() const {
  return impl_->acceptor.local_endpoint().port();
}

uint16_t ClosedPort() {
  // Bound and not listening: given to nobody else while the process lives.
  static asio::io_context context;
  static const tcp::socket bound(context, kAnyPort);
  return bound.local_endpoint().port();
}

}  // namespace test
