// faults/server.h: a loyalty server that takes each request once and remembers what it took.
#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace faults {

class Server {
 public:
  Server();  // on a port of the system's choice
  ~Server();
  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  std::string address() const;
  // Forgets everything; refuses the payments of these bills from now on.
  void Reset(const std::set<std::string> &refused_bills = {});
  // While this is held, the server's thread has nothing in hand: a fork copies none of its locks.
  std::unique_lock<std::mutex> AtRest() const { return std::unique_lock<std::mutex>(work_); }
  // How often the payment of this bill was taken.
  int Taken(const std::string &bill) const;

 private:
  void Serve();
  std::string Answer(const std::string &method, const std::string &body);

  int port_ = 0;  // before the listener, which tells it
  int listener_ = -1;
  mutable std::mutex work_;
  mutable std::mutex mutex_;
  std::set<std::string> refused_;
  std::set<std::string> request_ids_;
  std::map<std::string, int> taken_;
  std::thread thread_;
};

// An address that nobody listens at.
std::string DeadAddress();

}  // namespace faults
