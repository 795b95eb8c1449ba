// loyalty_server/shop.h: what the programme starts with: cards, terminals, rates.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "loyalty_server/vocabulary.h"

namespace loyalty {

enum class CardState { kSold, kActive, kLocked };
const char *CardStateName(CardState state);
bool FindCardState(std::string_view name, CardState *out_state);

// What terminals are told of a new version of their software: nothing, that there is one, or that they
// must have it.
enum class Update { kNone, kOffered, kRequired };
const char *UpdateName(Update update);
bool FindUpdate(std::string_view name, Update *out_update);

struct CardSetup {
  std::string number;
  CardState state = CardState::kSold;
  std::array<int32_t, kAccountTypes> balance{};
};

// In whole percent of what is paid in money for a position; spendLimit is the share of a position's cost that
// bonuses may pay.
struct Rates {
  int32_t global = 2;
  int32_t local = 3;
  int32_t discount = 0;
  int32_t organizerFee = 1;
  int32_t spendLimit = 50;
};

struct Reward {
  int32_t sum = 0;
  AccountType account = AccountType::kGlobal;
};

struct Shop {
  std::string protocolVersion = "1";      // "1" takes "1" and every "1.x"
  std::map<std::string, bool> terminals;  // id, is locked
  bool isAnyTerminalKnown = true;         // also terminals that are not in the list
  std::vector<std::string> users;         // cashiers; empty: everybody
  std::vector<CardSetup> cards;
  std::map<std::string, std::string> tokens;  // exchange token, number of the new card
  Rates rates;
  Reward activation{5000, AccountType::kGlobal};  // to a card at its activation
  Reward referral{10000, AccountType::kGlobal};   // to the card that brought a friend
  int32_t referralLimit = 3;                      // friends a card may bring
  AccountType depositAccount = AccountType::kGlobal;
  std::string advertisement = "Двойные бонусы по выходным!";
  Update update = Update::kNone;
  bool isBillChecked = true;  // total and position count must agree with the positions
  // Answers to offline records carry the terminal's highest id, from which it goes on; otherwise their own.
  bool isIdResumedAfterReplay = true;
};

// The shop of a server that is given no file: a card of every state, for demonstrations.
Shop BuiltInShop();

// Reads the text of a shop file over an empty shop. Throws std::invalid_argument, naming the member
// that is wrong.
Shop ShopFromJson(const std::string &text);

}  // namespace loyalty
