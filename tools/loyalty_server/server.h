// loyalty_server/server.h: the programme behind a socket. Listens in a thread of its own from construction to
// Stop; one client that hangs does not hold up another.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "loyalty_server/fault.h"
#include "loyalty_server/programme.h"

namespace loyalty {

struct ServerOptions {
  std::string address = "127.0.0.1";
  std::uint16_t port = 0;  // 0: the system picks one
  std::size_t mostBodyBytes = 16 * 1024 * 1024;
  std::size_t mostConnections = 500;
  std::chrono::milliseconds idleTime{30000};         // a client that moves no byte for so long is dropped
  std::function<void(const std::string &line)> log;  // called in the server's thread, a line without its end
};

class Server {
 public:
  // Throws std::system_error when the address cannot be listened on.
  Server(Programme programme, ServerOptions options = ServerOptions());
  ~Server();
  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  std::uint16_t port() const;
  std::string address() const;  // "127.0.0.1:54321"

  // In force when the call returns; also closes or opens the listening socket, as the fault asks.
  // Throws std::system_error when the port is gone.
  void SetFault(Fault fault);
  Fault fault() const;

  // Looks at the programme or changes it between two requests.
  void Visit(const std::function<void(Programme &)> &visitor);

  std::uint64_t exchanges() const;  // requests taken so far, well-formed or not

  // Drops every connection. The second call does nothing.
  void Stop();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace loyalty
