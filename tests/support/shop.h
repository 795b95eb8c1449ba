// support/shop.h: a shop of a test's own: folder, clock, settings, state, server and one card transaction.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/folder.h"
#include "support/scripted_server.h"

namespace lumo {
struct Transaction;
}

namespace test {

constexpr char kCard[] = "9643001234567890";
constexpr char kCashier[] = "cashier7";

// The id that follows the state of Shop::OpenShop on the shop's day.
constexpr char kNextRrn[] = "TERM012120500008";
// What the server echoes as the request's id; unlike the terminal's own, so that a test sees whose was kept.
constexpr char kEchoedRrn[] = "TERM012120500050";

// The "response" parts of the answers.
extern const char kSuccess[];
extern const char kRefusal[];

// An answer of the server: {"name":{"response":response,part}}; `part` may be empty.
std::string Reply(const std::string &name, const std::string &part = "",
                  const std::string &response = kSuccess);

class Shop : public ::testing::Test {
 protected:
  Shop();  // the clock stands at 2012-12-05 10:00:00
  ~Shop() override;

  // Loads CONFIG with the shop's usual settings; `members` come behind them and so replace them. Loads STATE:
  // shift 12 is open and the last request of the day was number 7. Then clears the trace.
  void OpenShop(const std::string &members = "");
  void SetState(const std::string &text);

  // The next settings' main address: a server that gives these answers in this order, or a port without one.
  void StartServer(const std::vector<std::string> &answers);
  void StopServer();

  // A transaction as the register creates it. Clears the trace.
  void OpenCard(const char *card_num = kCard, const char *employee_id = kCashier);
  void CloseCard();

  std::string Body() const;
  std::string State() const { return folder.Read("STATE"); }
  // The JSON document of the server's request number `index`, from 0.
  std::string RequestDocument(size_t index) const;
  size_t RequestCount() const;
  void MakeLogUnwritable() const;

  Folder folder;
  std::unique_ptr<ScriptedServer> server;
  lumo::Transaction *card = nullptr;

 private:
  std::string address_;
};

// The trace of a reload of STATE that begins with `{"r`.
extern const char kStateReload[];

// The "request" part of the shop's request of this type.
std::string RequestPart(const std::string &type, const std::string &request_id = kNextRrn);

// How often `part` is in `text`.
size_t Count(const std::string &text, const std::string &part);

// A row of a table; a failing one names itself.
struct NamedCase {
  const char *name;
};
inline std::ostream &operator<<(std::ostream &out, const NamedCase &row) {
  return out << row.name;
}
struct CaseName {
  template <typename Case>
  std::string operator()(const ::testing::TestParamInfo<Case> &row) const {
    return row.param.name;
  }
};

// The text holds the parts, one behind the other.
MATCHER_P(HoldsInOrder, parts, "") {
  size_t at = 0;
  for (const std::string &part : parts) {
    at = arg.find(part, at);
    if (at == std::string::npos) {
      *result_listener << "no \"" << part << "\" behind the one before";
      return false;
    }
    at += part.size();
  }
  return true;
}

inline auto InOrder(std::vector<std::string> parts) {
  return HoldsInOrder(std::move(parts));
}

}  // namespace test
