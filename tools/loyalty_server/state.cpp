#include "loyalty_server/state.h"

#include <utility>

namespace loyalty {
namespace {

constexpr std::array<const char *, 4> kPaymentStates = {"held", "confirmed", "canceled", "returned"};

// Remembers what a map holds under a key before the first change to it.
template <typename Key, typename Value>
void Remember(const std::map<Key, Value> &map, const Key &key, std::map<Key, std::optional<Value>> *before) {
  if (before->count(key) != 0) return;
  const auto found = map.find(key);
  before->emplace(key, found == map.end() ? std::nullopt : std::optional<Value>(found->second));
}

template <typename Key, typename Value>
void Restore(std::map<Key, std::optional<Value>> *before, std::map<Key, Value> *map) {
  for (auto &entry : *before) {
    if (entry.second) {
      (*map)[entry.first] = std::move(*entry.second);
    } else {
      map->erase(entry.first);
    }
  }
}

}  // namespace

const char *PaymentStateName(PaymentState state) {
  return kPaymentStates.at(static_cast<size_t>(state));
}

bool FindPaymentState(std::string_view name, PaymentState *out_state) {
  for (size_t i = 0; i < kPaymentStates.size(); ++i) {
    if (name != kPaymentStates[i]) continue;
    *out_state = static_cast<PaymentState>(i);
    return true;
  }
  return false;
}

Ledger::Ledger(std::unique_ptr<Store> store) : store_(std::move(store)) {
  if (store_ != nullptr) state_ = store_->Load();
  changes_.accountsBefore = state_.accounts.size();
  changes_.answersBefore = state_.answers;
}

Card &Ledger::EditCard(const std::string &number) {
  Remember(state_.cards, number, &changes_.cards);
  Card &card = state_.cards[number];
  card.number = number;
  return card;
}

Purses &Ledger::EditAccount(size_t account) {
  Purses &purses = state_.accounts.at(account);
  changes_.accounts.emplace(account, purses);
  return purses;
}

size_t Ledger::OpenAccount() {
  state_.accounts.emplace_back();
  EditAccount(state_.accounts.size() - 1);
  return state_.accounts.size() - 1;
}

Payment &Ledger::EditPayment(const std::string &request_id) {
  Remember(state_.payments, request_id, &changes_.payments);
  Payment &payment = state_.payments[request_id];
  payment.requestId = request_id;
  return payment;
}

void Ledger::AcceptId(const std::string &request_id) {
  if (state_.acceptedIds.insert(request_id).second) changes_.acceptedIds.insert(request_id);
}

void Ledger::SetLastId(const std::string &terminal, const std::string &request_id) {
  Remember(state_.lastIds, terminal, &changes_.lastIds);
  state_.lastIds[terminal] = request_id;
}

void Ledger::SetLock(const std::string &terminal, bool is_locked) {
  Remember(state_.locks, terminal, &changes_.locks);
  state_.locks[terminal] = is_locked;
}

void Ledger::UseToken(const std::string &token) {
  if (state_.usedTokens.insert(token).second) changes_.usedTokens.insert(token);
}

void Ledger::CountAnswer() {
  ++state_.answers;
}

void Ledger::Keep() {
  if (store_ != nullptr) {
    try {
      store_->Keep(state_, changes_);
    } catch (...) {
      Undo();
      throw;
    }
  }
  changes_ = Changes();
  changes_.accountsBefore = state_.accounts.size();
  changes_.answersBefore = state_.answers;
}

void Ledger::Undo() {
  Restore(&changes_.cards, &state_.cards);
  for (const auto &entry : changes_.accounts) state_.accounts[entry.first] = entry.second;
  state_.accounts.resize(changes_.accountsBefore);
  Restore(&changes_.payments, &state_.payments);
  for (const std::string &id : changes_.acceptedIds) state_.acceptedIds.erase(id);
  Restore(&changes_.lastIds, &state_.lastIds);
  Restore(&changes_.locks, &state_.locks);
  for (const std::string &token : changes_.usedTokens) state_.usedTokens.erase(token);
  state_.answers = changes_.answersBefore;
  changes_ = Changes();
  changes_.accountsBefore = state_.accounts.size();
  changes_.answersBefore = state_.answers;
}

}  // namespace loyalty
