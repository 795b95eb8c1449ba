// loyalty_server/shop_test.cpp: the shop file.
#include "loyalty_server/shop.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace {

using loyalty::AccountType;
using loyalty::CardState;
using loyalty::ShopFromJson;

TEST(Shop, ReadsEverySetting) {
  const loyalty::Shop shop = ShopFromJson(R"({
    "protocolVersion": "2",
    "terminals": [{"id": "A"}, {"id": "B", "locked": true}],
    "users": ["7", "8"],
    "cards": [{"number": "1"}, {"number": "2", "state": "active", "global": 1, "local": 2, "discount": 2147483647}],
    "tokens": {"T": "9"},
    "rates": {"global": 5, "local": 6, "discount": 7, "organizerFee": 8, "spendLimit": 100},
    "activation": {"sum": 11, "account": "DISCOUNT"},
    "referral": {"sum": 12, "account": "LOCAL"},
    "referralLimit": 13,
    "depositAccount": "LOCAL",
    "advertisement": "Чай",
    "update": "offered",
    "checkBills": false,
    "resumeIds": false
  })");
  EXPECT_EQ(shop.protocolVersion, "2");
  EXPECT_FALSE(shop.isAnyTerminalKnown);
  EXPECT_EQ(shop.terminals, (std::map<std::string, bool>{{"A", false}, {"B", true}}));
  EXPECT_EQ(shop.users, (std::vector<std::string>{"7", "8"}));
  ASSERT_EQ(shop.cards.size(), 2u);
  EXPECT_EQ(shop.cards[0].state, CardState::kSold);
  EXPECT_EQ(shop.cards[1].state, CardState::kActive);
  EXPECT_EQ(shop.cards[1].balance, (std::array<int32_t, 3>{1, 2, 2147483647}));
  EXPECT_EQ(shop.tokens, (std::map<std::string, std::string>{{"T", "9"}}));
  EXPECT_EQ(shop.rates.global, 5);
  EXPECT_EQ(shop.rates.local, 6);
  EXPECT_EQ(shop.rates.discount, 7);
  EXPECT_EQ(shop.rates.organizerFee, 8);
  EXPECT_EQ(shop.rates.spendLimit, 100);
  EXPECT_EQ(shop.activation.sum, 11);
  EXPECT_EQ(shop.activation.account, AccountType::kDiscount);
  EXPECT_EQ(shop.referral.sum, 12);
  EXPECT_EQ(shop.referral.account, AccountType::kLocal);
  EXPECT_EQ(shop.referralLimit, 13);
  EXPECT_EQ(shop.depositAccount, AccountType::kLocal);
  EXPECT_EQ(shop.advertisement, "Чай");
  EXPECT_EQ(shop.update, loyalty::Update::kOffered);
  EXPECT_FALSE(shop.isBillChecked);
  EXPECT_FALSE(shop.isIdResumedAfterReplay);
}

TEST(Shop, AnEmptyFileIsAShopForEveryTerminalWithoutCards) {
  const loyalty::Shop shop = ShopFromJson("{}");
  EXPECT_TRUE(shop.isAnyTerminalKnown);
  EXPECT_TRUE(shop.cards.empty());
  EXPECT_TRUE(shop.isBillChecked);
  EXPECT_TRUE(shop.isIdResumedAfterReplay);
}

TEST(Shop, NamesTheMemberThatIsWrong) {
  const std::pair<const char *, const char *> rows[] = {
      {"", "not a JSON document, byte 1"},
      {"{,}", "not a JSON document, byte 2"},
      {"[]", "an object is expected"},
      {R"({"protocolVersion":""})", "protocolVersion: is empty"},
      {R"({"terminals":[{"locked":true}]})", "terminals[0]: the terminal has no id"},
      {R"({"terminals":[{"id":""}]})", "terminals[0]: the terminal has no id"},
      {R"({"tokens":{"T":""}})", "tokens.T: is empty"},
      {R"({"card":[]})", "card: no such setting"},
      {R"({"cards":{}})", "cards: a list is expected"},
      {R"({"cards":[5]})", "cards[0]: an object is expected"},
      {R"({"cards":[{"number":"1"},{"state":"sold"}]})", "cards[1]: the card has no number"},
      {R"({"cards":[{"number":"1"},{"number":"1"}]})", "cards[1]: the card is listed twice"},
      {R"({"cards":[{"number":"1","state":"open"}]})", "cards[0].state: sold, active or locked is expected"},
      {R"({"cards":[{"number":"1","global":-1}]})", "cards[0].global: not below 0"},
      {R"({"cards":[{"number":"1","global":2147483648}]})", "cards[0].global: at most 2147483647"},
      {R"({"cards":[{"number":"1","global":18446744073709551615}]})", "cards[0].global: at most 2147483647"},
      {R"({"cards":[{"number":"1","global":1.5}]})", "cards[0].global: a whole number is expected"},
      {R"({"terminals":[{"id":"A"},{"id":"A"}]})", "terminals[1]: the terminal is listed twice"},
      {R"({"rates":{"local":101}})", "rates.local: at most 100"},
      {R"({"activation":{"account":"local"}})", "activation.account: GLOBAL, LOCAL or DISCOUNT is expected"},
      {R"({"update":"soon"})", "update: none, offered or required is expected"},
      {R"({"checkBills":1})", "checkBills: true or false is expected"},
      {R"({"tokens":{"T":9}})", "tokens.T: a text is expected"},
  };
  for (const auto &row : rows) {
    try {
      ShopFromJson(row.first);
      ADD_FAILURE() << row.first << " was accepted";
    } catch (const std::invalid_argument &error) {
      EXPECT_STREQ(error.what(), row.second) << row.first;
    }
  }
}

TEST(Shop, TheBuiltInOneHasACardOfEveryState) {
  const loyalty::Shop shop = loyalty::BuiltInShop();
  int counts[3] = {};
  for (const loyalty::CardSetup &card : shop.cards) ++counts[static_cast<int>(card.state)];
  EXPECT_EQ(counts[0], 5);
  EXPECT_EQ(counts[1], 2);
  EXPECT_EQ(counts[2], 1);
  EXPECT_EQ(shop.tokens.at("TOKEN7"), "1000000007");
  EXPECT_TRUE(shop.terminals.at("99999"));
}

}  // namespace
