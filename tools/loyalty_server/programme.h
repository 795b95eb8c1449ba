// loyalty_server/programme.h: the rules of the loyalty programme. Takes the document of a request, gives the
// document of the answer; knows no socket, and no store and no clock but those it is given. Not safe for
// several threads at once.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "loyalty_server/shop.h"
#include "loyalty_server/state.h"
#include "loyalty_server/vocabulary.h"

namespace loyalty {

// Seconds since 1970, UTC.
using Clock = std::function<long long()>;
long long SystemClock();

struct Reply {
  std::string answer;  // {"putPaymentResponse":{"response":{...},"bill":{...}}}
  Code code = Code::kOk;
  // For the log; empty where the request did not tell. Still the client's bytes: see Printable.
  std::string terminal;
  std::string card;
  std::string requestId;
  std::string details;  // the operation in words: "sum 150.00, spent 10.00, earned 7.00"
};

struct TerminalState {
  std::string lastId;  // empty when it has sent none
  bool isLocked = false;
};

class Programme {
 public:
  // Goes on from what the store holds, and keeps every exchange in it before it is answered. Cards of the
  // shop that the store does not know yet are added to it.
  explicit Programme(Shop shop, Clock clock = SystemClock, std::unique_ptr<Store> store = nullptr);

  // Judges one request and, when it is accepted, does what it asks. A refused request changes nothing except
  // that the id counts as seen. Never throws for anything the document holds; what the store cannot keep is
  // not done and gets INTERNAL_ERROR. With a `refusal` other than kOk a request that can be read at all is
  // refused with that code.
  Reply Handle(const OperationNames &operation, std::string_view document, Code refusal = Code::kOk);

  const std::map<std::string, Card> &cards() const { return ledger_.state().cards; }
  const std::map<std::string, Payment> &payments() const { return ledger_.state().payments; }
  const Card *FindCard(const std::string &number) const;
  const Purses &PursesOf(const Card &card) const;
  std::string LastRequestId(const std::string &terminal) const;  // empty when the terminal has sent none
  // Those that the shop lists, that have sent a request or were locked.
  std::map<std::string, TerminalState> Terminals() const;
  std::string Now() const { return DateText(clock_()); }
  Update update() const { return shop_.update; }
  const std::string &advertisement() const { return shop_.advertisement; }

  // What a bench changes while the programme runs. False: no such card. Cards and terminals are kept in the
  // store; they throw when it cannot keep them.
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

  const Card &CardOf(const std::string &number) const;
  const Card &ActiveCard(const std::string &number) const;
  const Payment &PaymentOf(const Request &request, const std::string &request_id) const;
  bool IsLocked(const std::string &terminal) const;
  void JoinAccounts(size_t from, size_t to);
  std::vector<Position> ReadPositions(const json &bill, int64_t total_sum) const;
  void CountBonuses(bool is_spending, Purses purses, std::vector<Position> *positions) const;
  void Settle(const std::string &request_id);

  Shop shop_;
  Clock clock_;
  Ledger ledger_;
};

}  // namespace loyalty
