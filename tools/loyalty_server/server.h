// loyalty_server/server.h: the programme behind a socket. Listens in a thread of its own from construction to
// Stop; one client that hangs does not hold up another.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "loyalty_server/fault.h"
#include "loyalty_server/fault_plan.h"
#include "loyalty_server/programme.h"

namespace loyalty {

struct ServerOptions {
  std::string address = "127.0.0.1";
  uint16_t port = 0;  // 0: the system picks one
  size_t mostBodyBytes = 16 * 1024 * 1024;
  size_t mostConnections = 500;
  std::chrono::milliseconds idleTime{30000};  // a client that moves no byte for so long is dropped
  size_t mostKept = 500;                      // exchanges that can be looked at afterwards
  size_t mostBytesKept = 4 * 1024 * 1024;
  // Both are called in the server's thread.
  std::function<void(const std::string &line)> log;  // a line without its end
  std::function<void()> onInterrupt;                 // the process is asked to end: Ctrl+C, SIGTERM
};

// One request and its answer, or something else that happened to a connection: then only the note is there.
struct Exchange {
  uint64_t number = 0;  // from 1
  std::string time;
  // What the request says; empty where it does not.
  std::string terminal;
  std::string operation;
  std::string card;
  std::string requestId;
  std::string details;  // the operation in words
  bool isDone = false;  // the programme was asked
  Code code = Code::kOk;
  std::string fault;  // that was in force
  std::string note;
  // Their first bytes, and how long they were.
  std::string request;
  std::string answer;
  size_t requestBytes = 0;
  size_t answerBytes = 0;
};

class Server {
 public:
  // Throws std::system_error, naming the address, when it cannot be listened on.
  Server(Programme programme, ServerOptions options = ServerOptions());
  ~Server();
  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  uint16_t port() const;
  std::string address() const;  // "127.0.0.1:54321"

  // In force when the call returns; also closes or opens the listening socket, as the fault asks. Throws
  // std::system_error when the port is gone, and std::invalid_argument for a fault that this system has not.
  void SetFaults(FaultPlan faults);
  void SetFault(Fault fault) { SetFaults(FaultPlan(std::move(fault))); }
  FaultPlan faults() const;
  Fault fault() const;  // in force

  // Looks at the programme between two requests, or changes it too.
  void Look(const std::function<void(const Programme &)> &visitor) const;
  void Visit(const std::function<void(Programme &)> &visitor);

  uint64_t exchanges() const;  // requests taken so far, well-formed or not

  // The last of them, oldest first, from behind this number.
  std::vector<Exchange> ExchangesAfter(uint64_t number) const;

  // Grows with everything that can be seen here: exchanges, faults, visits.
  uint64_t revision() const;
  // Waits until it is another than the one that is known, or the time is over; gives the present one.
  uint64_t AwaitChange(uint64_t known, std::chrono::milliseconds most) const;
  void WakeWaiting();

  // Drops every connection. The second call does nothing.
  void Stop();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace loyalty
