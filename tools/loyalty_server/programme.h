// loyalty_server/programme.h: the rules of the loyalty programme. Takes the document of a request, gives the
// document of the answer; knows no socket, no file and no clock but the one it is given. Not safe for several
// threads at once.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "loyalty_server/shop.h"
#include "loyalty_server/vocabulary.h"

namespace loyalty {

// Seconds since 1970, UTC.
using Clock = std::function<long long()>;
long long SystemClock();

struct Reply {                      // NOLINT(bugprone-exception-escape): moving a JSON value does not throw
  nlohmann::ordered_json document;  // {"putPaymentResponse":{"response":{...},"bill":{...}}}
  Code code = Code::kOk;
  // For the log; empty where the request did not tell. Still the client's bytes: see Printable.
  std::string terminal;
  std::string card;
  std::string requestId;
  std::string details;  // the operation in words: "sum 150.00, spent 10.00, earned 7.00"
};

// Bonuses of one kind, in hundredths. balance + expected always fits 32 bits, 0 <= reserved <= balance.
struct Purse {
  std::int64_t balance = 0;   // what the customer owns
  std::int64_t reserved = 0;  // part of it that unconfirmed payments will take
  std::int64_t expected = 0;  // what unconfirmed payments will bring
  std::int64_t Available() const { return balance - reserved; }
};
using Purses = std::array<Purse, kAccountTypes>;
using Amounts = std::array<std::int64_t, kAccountTypes>;

struct Card {
  std::string number;
  CardState state = CardState::kSold;
  std::size_t account = 0;
  std::int32_t friends = 0;  // how many cards were activated on its recommendation
};

struct Position {
  std::int32_t number = 0;  // "orderNum" of the bill
  std::int64_t cost = 0;
  std::int64_t count = 0;
  Amounts spent{};
  Amounts earned{};
  std::int64_t fee = 0;
  std::int64_t returnedSum = 0;
  std::int64_t returnedCount = 0;
};

enum class PaymentState { kHeld, kConfirmed, kCanceled, kReturned };
const char *PaymentStateName(PaymentState state);

struct Payment {
  std::string requestId;
  std::string card;
  std::size_t account = 0;
  PaymentState state = PaymentState::kHeld;
  std::int64_t totalSum = 0;
  std::vector<Position> positions;
};

class Programme {
 public:
  explicit Programme(Shop shop, Clock clock = SystemClock);

  // Judges one request and, when it is accepted, does what it asks. A refused request changes nothing except
  // that the id counts as seen. Never throws for anything the document holds. With a `refusal` other than kOk
  // a request that can be read at all is refused with that code.
  Reply Handle(const OperationNames &operation, std::string_view document, Code refusal = Code::kOk);

  const std::map<std::string, Card> &cards() const { return cards_; }
  const std::map<std::string, Payment> &payments() const { return payments_; }
  const Card *FindCard(const std::string &number) const;
  const Purses &PursesOf(const Card &card) const;
  std::string LastRequestId(const std::string &terminal) const;  // empty when the terminal has sent none
  std::string Now() const { return DateText(clock_()); }

  // What a bench changes while the programme runs. False: no such card.
  bool SetCardState(const std::string &number, CardState state);
  void LockTerminal(const std::string &terminal, bool is_locked);
  void SetUpdate(Update update) { shop_.update = update; }
  void SetAdvertisement(std::string text) { shop_.advertisement = std::move(text); }

 private:
  using json = nlohmann::json;
  using Parts = nlohmann::ordered_json;
  struct Request;

  void Judge(const OperationNames &operation, std::string_view document, Code refusal, Request *request,
             Reply *reply, Parts *parts);
  void CheckTerminal(const Request &request) const;
  void CheckRequestId(const OperationNames &operation, const Request &request);
  std::string HighestId(const Request &request) const;
  void Perform(const Request &request, const json *part, Reply *reply, Parts *parts);

  void Activate(const Request &request, const json *part, Reply *reply, Parts *parts);
  void Pay(const Request &request, const json &bill, Reply *reply, Parts *parts);
  void ConfirmPayment(const Request &request, const json &part, Reply *reply);
  void Balance(const Request &request, Reply *reply, Parts *parts);
  void ReturnGoods(const Request &request, const json &part, Reply *reply, Parts *parts);
  void Link(const Request &request, const json &part, Reply *reply);
  void Exchange(const Request &request, const json &part, Reply *reply);
  void Deposit(const Request &request, const json &part, Reply *reply);

  Card &CardOf(const std::string &number);
  Card &ActiveCard(const std::string &number);
  Purses &AccountOf(const Card &card) { return accounts_[card.account]; }
  void JoinAccounts(std::size_t from, std::size_t to);
  Payment &PaymentOf(const Request &request, const std::string &request_id);
  std::vector<Position> ReadPositions(const json &bill, std::int64_t total_sum) const;
  void CountBonuses(bool is_spending, Purses available, std::vector<Position> *positions) const;
  void Settle(Payment *payment);

  Shop shop_;
  Clock clock_;
  std::map<std::string, Card> cards_;
  std::vector<Purses> accounts_;
  std::map<std::string, Payment> payments_;
  std::set<std::string> accepted_ids_;
  std::map<std::string, std::string> last_ids_;  // by terminal
  std::uint64_t answers_ = 0;
};

}  // namespace loyalty
