// support/scripted_server.h: a server on a loopback port of the system's choice that records what it is sent
// and answers what the test says, piece by piece.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace test {

struct Answer {
  std::vector<std::string> pieces;  // sent one after another, each in a packet of its own
  enum class End {
    kClose,
    kReset,
    kSilence
  } end = End::kClose;  // kSilence keeps the connection open until the server ends
};

class ScriptedServer {
 public:
  // Takes one connection for each answer, in order; further ones are closed at once.
  explicit ScriptedServer(std::vector<Answer> answers);
  explicit ScriptedServer(const std::string &answer);  // one answer, one piece
  ~ScriptedServer();

  int port() const;
  std::string address() const;                // "http://127.0.0.1:port/ws"
  std::vector<std::string> requests() const;  // the bytes of each connection: head, body, last line feed

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// A loopback port that refuses connections until the process ends.
int UnusedPort();

}  // namespace test
