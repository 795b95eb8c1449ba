// loyalty_server/client.h: a client on a raw socket: what it sends and when is up to the test.
#pragma once

#include <asio.hpp>
#include <chrono>
#include <stdexcept>
#include <string>

#include "loyalty_server/server.h"
#include "support/wine.h"

namespace bench {

class Client {
 public:
  explicit Client(uint16_t port) : socket_(context_) {
    socket_.connect(asio::ip::tcp::endpoint(asio::ip::make_address("127.0.0.1"), port));
    socket_.set_option(asio::ip::tcp::no_delay(true));
  }

  void Send(const std::string &bytes) { asio::write(socket_, asio::buffer(bytes)); }

  // Everything up to the server's end of the connection; throws std::system_error when it is reset.
  std::string ReceiveAll() {
    std::string bytes;
    for (;;) {
      const std::string piece = Receive();
      if (piece.empty()) return bytes;
      bytes += piece;
    }
  }

  // At most 500 bytes, as a terminal reads; empty at the end.
  std::string Receive() {
    char buffer[500];
    asio::error_code error;
    const size_t count = socket_.read_some(asio::buffer(buffer), error);
    if (error == asio::error::eof) return std::string();
    if (error) throw std::system_error(error);
    return std::string(buffer, count);
  }

  // Everything up to the reset of the connection; throws std::runtime_error when it ends in order.
  std::string ReceiveUntilReset() {
    std::string bytes;
    try {
      for (;;) {
        const std::string piece = Receive();
        if (piece.empty() && !test::EndMayPrecedeReset()) {
          throw std::runtime_error("the connection ended in order");
        }
        if (piece.empty()) return bytes;
        bytes += piece;
      }
    } catch (const std::system_error &) {
      return bytes;
    }
  }

  size_t available() { return socket_.available(); }
  void Close() { socket_.close(); }
  void CloseSending() { socket_.shutdown(asio::ip::tcp::socket::shutdown_send); }

 private:
  asio::io_context context_;
  asio::ip::tcp::socket socket_;
};

// A connection that is being opened.
class Opening {
 public:
  explicit Opening(uint16_t port) : socket_(context_) {
    socket_.async_connect(asio::ip::tcp::endpoint(asio::ip::make_address("127.0.0.1"), port),
                          [this](const asio::error_code &) { is_over_ = true; });
  }

  // Whether it is open, or has failed, before so much time has gone by.
  bool IsOver(std::chrono::milliseconds most) {
    context_.run_for(most);
    return is_over_;
  }

 private:
  asio::io_context context_;
  asio::ip::tcp::socket socket_;
  bool is_over_ = false;
};

// As a terminal writes it: bare line feeds, no protocol version, one line feed behind the body.
inline std::string Post(const std::string &method, const std::string &body) {
  return "POST /loyalty/ws/" + method +
         "\nHost: 127.0.0.1:8080\nContent-Type: application/json-soap;charset=UTF-8\nContent-Length: " +
         std::to_string(body.size()) + "\n\n" + body + "\n";
}

inline std::string Exchange(uint16_t port, const std::string &method, const std::string &body) {
  Client client(port);
  client.Send(Post(method, body));
  return client.ReceiveAll();
}

}  // namespace bench
