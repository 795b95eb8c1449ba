// loyalty_server/state.h: what the programme remembers from one exchange to the next, and where it is kept.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "loyalty_server/shop.h"
#include "loyalty_server/vocabulary.h"

namespace loyalty {

// Bonuses of one kind, in hundredths. balance + expected always fits 32 bits, 0 <= reserved <= balance.
struct Purse {
  int64_t balance = 0;   // what the customer owns
  int64_t reserved = 0;  // part of it that unconfirmed payments will take
  int64_t expected = 0;  // what unconfirmed payments will bring
  int64_t Available() const { return balance - reserved; }
};
using Purses = std::array<Purse, kAccountTypes>;
using Amounts = std::array<int64_t, kAccountTypes>;

inline int64_t Sum(const Amounts &amounts) {
  return amounts[0] + amounts[1] + amounts[2];
}

struct Card {
  std::string number;
  CardState state = CardState::kSold;
  size_t account = 0;
  int32_t friends = 0;  // how many cards were activated on its recommendation
};

struct Position {
  int32_t number = 0;  // "orderNum" of the bill
  int64_t cost = 0;
  int64_t count = 0;
  Amounts spent{};
  Amounts earned{};
  int64_t fee = 0;
  int64_t returnedSum = 0;
  int64_t returnedCount = 0;
};

enum class PaymentState { kHeld, kConfirmed, kCanceled, kReturned };
const char *PaymentStateName(PaymentState state);
bool FindPaymentState(std::string_view name, PaymentState *out_state);

struct Payment {
  std::string requestId;
  uint64_t number = 0;  // of the answer that accepted it: payments in their order
  std::string time;     // of that answer
  std::string terminal;
  std::string card;
  size_t account = 0;
  PaymentState state = PaymentState::kHeld;
  int64_t totalSum = 0;
  std::vector<Position> positions;
};

struct State {
  std::map<std::string, Card> cards;
  std::vector<Purses> accounts;
  std::map<std::string, Payment> payments;  // by request id
  std::set<std::string> acceptedIds;
  std::map<std::string, std::string> lastIds;  // highest request id of a terminal
  std::map<std::string, bool> locks;           // terminals that were locked, or opened, while the server ran
  std::set<std::string> usedTokens;
  uint64_t answers = 0;
};

// The parts of a state that an exchange has changed, each as it was before: nothing where there was none.
struct Changes {
  std::map<std::string, std::optional<Card>> cards;
  std::map<size_t, Purses> accounts;
  size_t accountsBefore = 0;
  std::map<std::string, std::optional<Payment>> payments;
  std::set<std::string> acceptedIds;  // new ones
  std::map<std::string, std::optional<std::string>> lastIds;
  std::map<std::string, std::optional<bool>> locks;
  std::set<std::string> usedTokens;  // new ones
  uint64_t answersBefore = 0;
};

class Store {
 public:
  Store() = default;
  virtual ~Store() = default;
  Store(const Store &) = delete;
  Store &operator=(const Store &) = delete;

  // What has been kept so far: an empty state at first.
  virtual State Load() = 0;
  // Keeps what has changed in the state, all of it or, where it throws, nothing.
  virtual void Keep(const State &state, const Changes &changes) = 0;
};

// A state that is changed only in ways that can be kept, and undone.
class Ledger {
 public:
  // Goes on from what the store holds. Without a store all is in memory.
  explicit Ledger(std::unique_ptr<Store> store);

  const State &state() const { return state_; }

  Card &EditCard(const std::string &number);  // a new one when there is none
  Purses &EditAccount(size_t account);
  size_t OpenAccount();
  Payment &EditPayment(const std::string &request_id);  // a new one when there is none
  void AcceptId(const std::string &request_id);
  void SetLastId(const std::string &terminal, const std::string &request_id);
  void SetLock(const std::string &terminal, bool is_locked);
  void UseToken(const std::string &token);
  void CountAnswer();

  // Ends an exchange. Throws when the store cannot keep what has changed; it is undone then.
  void Keep();
  // Everything is as after the last Keep.
  void Undo();

 private:
  std::unique_ptr<Store> store_;
  State state_;
  Changes changes_;
};

}  // namespace loyalty
