// end_to_end/bench.h: a register and the bench's server, which can be away or lose requests and answers.
#pragma once

#include <cstdint>
#include <string>

#include "end_to_end/register.h"
#include "loyalty_server/server.h"

namespace test {

// An active card of the built-in shop: 500.00 GLOBAL, 200.00 LOCAL, 50.00 DISCOUNT.
constexpr char kRichCard[] = "1000000001";

class Bench : public Register {
 protected:
  // The shop with this server, from the beginning, and a transaction of the rich card.
  void Start(const std::string &more);
  // STATE as an engineer leaves it.
  void SetState(const std::string &text);
  void GoAway() { bench.SetFault(loyalty::ParseFault("refuse")); }
  // Whatever fault there was is over.
  void ComeBack() { bench.SetFault(loyalty::Fault()); }
  void NewTransaction(const std::string &card = kRichCard);
  // PaymentProc with a new bill of 100.00.
  int Pay(int amount);
  // A payment and its confirmation that wait in OFFLINE.
  void SellOffline();
  // What the server holds of a payment: "held", "confirmed", "canceled", "returned"; "unknown" without one.
  std::string StateOf(const std::string &rrn);
  uint64_t Exchanges() const { return bench.exchanges(); }

  loyalty::Server bench{loyalty::Programme(loyalty::BuiltInShop())};
};

}  // namespace test
