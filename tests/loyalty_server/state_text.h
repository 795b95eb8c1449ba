// loyalty_server/state_text.h: a state as a text, every member of it, for comparisons.
#pragma once

#include <sstream>
#include <string>

#include "loyalty_server/state.h"

namespace bench {

inline std::string StateText(const loyalty::State &state) {
  std::ostringstream out;
  for (const auto &entry : state.cards) {
    const loyalty::Card &card = entry.second;
    out << "card " << entry.first << " " << card.number << " " << loyalty::CardStateName(card.state) << " "
        << card.account << " " << card.friends << "\n";
  }
  for (const loyalty::Purses &purses : state.accounts) {
    out << "account";
    for (const loyalty::Purse &purse : purses) {
      out << " " << purse.balance << "-" << purse.reserved << "+" << purse.expected;
    }
    out << "\n";
  }
  for (const auto &entry : state.payments) {
    const loyalty::Payment &payment = entry.second;
    out << "payment " << entry.first << " " << payment.requestId << " " << payment.number << " "
        << payment.time << " " << payment.terminal << " " << payment.card << " " << payment.account << " "
        << loyalty::PaymentStateName(payment.state) << " " << payment.totalSum << "\n";
    for (const loyalty::Position &position : payment.positions) {
      out << "  " << position.number << " " << position.cost << " " << position.count;
      for (const auto amount : position.spent) out << " -" << amount;
      for (const auto amount : position.earned) out << " +" << amount;
      out << " " << position.fee << " " << position.returnedSum << " " << position.returnedCount << "\n";
    }
  }
  for (const std::string &id : state.acceptedIds) out << "id " << id << "\n";
  for (const auto &entry : state.lastIds) out << "last " << entry.first << " " << entry.second << "\n";
  for (const auto &entry : state.locks) out << "lock " << entry.first << " " << entry.second << "\n";
  for (const std::string &token : state.usedTokens) out << "token " << token << "\n";
  out << "answers " << state.answers << "\n";
  return out.str();
}

}  // namespace bench
