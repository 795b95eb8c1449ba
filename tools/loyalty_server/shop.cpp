#include "loyalty_server/shop.h"

#include <functional>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace loyalty {
namespace {

using nlohmann::json;

constexpr std::array<const char *, 3> kCardStates = {"sold", "active", "locked"};
constexpr std::array<const char *, 3> kUpdates = {"none", "offered", "required"};

[[noreturn]] void Wrong(const std::string &where, const std::string &what) {
  throw std::invalid_argument((where.empty() ? "" : where + ": ") + what);
}

std::string TextOf(const json &value, const std::string &where) {
  if (!value.is_string()) Wrong(where, "a text is expected");
  return value.get<std::string>();
}

std::string NameOf(const json &value, const std::string &where) {
  std::string name = TextOf(value, where);
  if (name.empty()) Wrong(where, "is empty");
  return name;
}

bool FlagOf(const json &value, const std::string &where) {
  if (!value.is_boolean()) Wrong(where, "true or false is expected");
  return value.get<bool>();
}

int32_t NumberOf(const json &value, const std::string &where, int64_t most) {
  if (!value.is_number_integer()) Wrong(where, "a whole number is expected");
  if (value.is_number_unsigned() && value.get<uint64_t>() > static_cast<uint64_t>(most)) {
    Wrong(where, "at most " + std::to_string(most));
  }
  const int64_t number = value.get<int64_t>();
  if (number < 0) Wrong(where, "not below 0");
  return static_cast<int32_t>(number);
}

constexpr int64_t kMostAmount = std::numeric_limits<int32_t>::max();

int32_t AmountOf(const json &value, const std::string &where) {
  return NumberOf(value, where, kMostAmount);
}

int32_t PercentOf(const json &value, const std::string &where) {
  return NumberOf(value, where, 100);
}

AccountType AccountOf(const json &value, const std::string &where) {
  AccountType type;
  if (!FindAccountType(TextOf(value, where), &type)) Wrong(where, "GLOBAL, LOCAL or DISCOUNT is expected");
  return type;
}

using Reader = std::function<void(const json &value, const std::string &where)>;

// A misspelt member must not pass for a setting that was made.
void ReadObject(const json &object, const std::string &where, const std::map<std::string, Reader> &readers) {
  if (!object.is_object()) Wrong(where, "an object is expected");
  for (const auto &member : object.items()) {
    const std::string member_where = where.empty() ? member.key() : where + "." + member.key();
    const auto reader = readers.find(member.key());
    if (reader == readers.end()) Wrong(member_where, "no such setting");
    reader->second(member.value(), member_where);
  }
}

void ReadArray(const json &array, const std::string &where, const Reader &reader) {
  if (!array.is_array()) Wrong(where, "a list is expected");
  for (size_t i = 0; i < array.size(); ++i) reader(array[i], where + "[" + std::to_string(i) + "]");
}

CardSetup CardOf(const json &object, const std::string &where) {
  CardSetup card;
  ReadObject(object, where,
             {{"number", [&](const json &v, const std::string &w) { card.number = TextOf(v, w); }},
              {"state",
               [&](const json &v, const std::string &w) {
                 if (!FindCardState(TextOf(v, w), &card.state)) {
                   Wrong(w, "sold, active or locked is expected");
                 }
               }},
              {"global", [&](const json &v, const std::string &w) { card.balance[0] = AmountOf(v, w); }},
              {"local", [&](const json &v, const std::string &w) { card.balance[1] = AmountOf(v, w); }},
              {"discount", [&](const json &v, const std::string &w) { card.balance[2] = AmountOf(v, w); }}});
  if (card.number.empty()) Wrong(where, "the card has no number");
  return card;
}

void ReadTerminal(const json &object, const std::string &where, Shop *shop) {
  std::string id;
  bool is_locked = false;
  ReadObject(object, where,
             {{"id", [&](const json &v, const std::string &w) { id = TextOf(v, w); }},
              {"locked", [&](const json &v, const std::string &w) { is_locked = FlagOf(v, w); }}});
  if (id.empty()) Wrong(where, "the terminal has no id");
  if (!shop->terminals.emplace(id, is_locked).second) Wrong(where, "the terminal is listed twice");
}

Reader RewardReader(Reward *reward) {
  return [reward](const json &value, const std::string &where) {
    ReadObject(
        value, where,
        {{"sum", [&](const json &v, const std::string &w) { reward->sum = AmountOf(v, w); }},
         {"account", [&](const json &v, const std::string &w) { reward->account = AccountOf(v, w); }}});
  };
}

template <size_t kCount, typename Enum>
bool FindName(const std::array<const char *, kCount> &names, std::string_view name, Enum *out) {
  for (size_t i = 0; i < kCount; ++i) {
    if (name == names[i]) {
      *out = static_cast<Enum>(i);
      return true;
    }
  }
  return false;
}

}  // namespace

const char *CardStateName(CardState state) {
  return kCardStates.at(static_cast<size_t>(state));
}

bool FindCardState(std::string_view name, CardState *out_state) {
  return FindName(kCardStates, name, out_state);
}

const char *UpdateName(Update update) {
  return kUpdates.at(static_cast<size_t>(update));
}

bool FindUpdate(std::string_view name, Update *out_update) {
  return FindName(kUpdates, name, out_update);
}

Shop BuiltInShop() {
  Shop shop;
  shop.terminals["99999"] = true;
  shop.cards = {
      {"1000000001", CardState::kActive, {50000, 20000, 5000}},
      {"1000000002", CardState::kActive, {}},
      {"1000000003", CardState::kSold, {}},
      {"1000000004", CardState::kSold, {}},
      {"1000000005", CardState::kSold, {}},
      {"1000000006", CardState::kLocked, {10000, 0, 0}},
      {"1000000007", CardState::kSold, {}},
      {"1000000008", CardState::kSold, {}},
  };
  shop.tokens["TOKEN7"] = "1000000007";
  return shop;
}

Shop ShopFromJson(const std::string &text) {
  json document;
  try {
    document = json::parse(text);
  } catch (const json::parse_error &error) {
    throw std::invalid_argument("not a JSON document, byte " + std::to_string(error.byte));
  }
  Shop shop;
  std::map<std::string, bool> card_numbers;
  ReadObject(
      document, "",
      {{"protocolVersion", [&](const json &v, const std::string &w) { shop.protocolVersion = NameOf(v, w); }},
       {"terminals",
        [&](const json &v, const std::string &w) {
          shop.isAnyTerminalKnown = false;
          ReadArray(v, w, [&](const json &e, const std::string &ew) { ReadTerminal(e, ew, &shop); });
        }},
       {"users",
        [&](const json &v, const std::string &w) {
          ReadArray(v, w, [&](const json &e, const std::string &ew) { shop.users.push_back(TextOf(e, ew)); });
        }},
       {"cards",
        [&](const json &v, const std::string &w) {
          ReadArray(v, w, [&](const json &e, const std::string &ew) {
            shop.cards.push_back(CardOf(e, ew));
            if (!card_numbers.emplace(shop.cards.back().number, true).second) {
              Wrong(ew, "the card is listed twice");
            }
          });
        }},
       {"tokens",
        [&](const json &v, const std::string &w) {
          if (!v.is_object()) Wrong(w, "an object of token and card number is expected");
          for (const auto &token : v.items()) {
            shop.tokens[token.key()] = NameOf(token.value(), w + "." + token.key());
          }
        }},
       {"rates",
        [&](const json &v, const std::string &w) {
          Rates &rates = shop.rates;
          ReadObject(
              v, w,
              {{"global", [&](const json &n, const std::string &nw) { rates.global = PercentOf(n, nw); }},
               {"local", [&](const json &n, const std::string &nw) { rates.local = PercentOf(n, nw); }},
               {"discount", [&](const json &n, const std::string &nw) { rates.discount = PercentOf(n, nw); }},
               {"organizerFee",
                [&](const json &n, const std::string &nw) { rates.organizerFee = PercentOf(n, nw); }},
               {"spendLimit",
                [&](const json &n, const std::string &nw) { rates.spendLimit = PercentOf(n, nw); }}});
        }},
       {"activation", RewardReader(&shop.activation)},
       {"referral", RewardReader(&shop.referral)},
       {"referralLimit", [&](const json &v, const std::string &w) { shop.referralLimit = AmountOf(v, w); }},
       {"depositAccount",
        [&](const json &v, const std::string &w) { shop.depositAccount = AccountOf(v, w); }},
       {"advertisement", [&](const json &v, const std::string &w) { shop.advertisement = TextOf(v, w); }},
       {"update",
        [&](const json &v, const std::string &w) {
          if (!FindUpdate(TextOf(v, w), &shop.update)) Wrong(w, "none, offered or required is expected");
        }},
       {"checkBills", [&](const json &v, const std::string &w) { shop.isBillChecked = FlagOf(v, w); }},
       {"resumeIds",
        [&](const json &v, const std::string &w) { shop.isIdResumedAfterReplay = FlagOf(v, w); }}});
  return shop;
}

}  // namespace loyalty
