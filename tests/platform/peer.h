// platform/peer.h: the other end of a connection, in a thread of its own. It uses none of the tested calls.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace test {

class Connection {
 public:
  virtual ~Connection() = default;
  virtual std::string Read(size_t count) = 0;  // so many bytes, fewer when the other side ends
  virtual std::string ReadToEnd() = 0;
  virtual void Write(const std::string &bytes) = 0;
  virtual void Reset() = 0;  // drops the connection without a farewell
};

class Peer {
 public:
  // Listens on a loopback port of the system's choice, takes one connection and does `work` with it.
  explicit Peer(std::function<void(Connection &)> work);
  ~Peer();  // waits for the work's end
  uint16_t port() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// A loopback port that nothing listens on.
uint16_t ClosedPort();

}  // namespace test
