// loyalty_server/state_test.cpp: the ledger: changes that are kept, or undone.
#include "loyalty_server/state.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "loyalty_server/bench.h"
#include "loyalty_server/state_text.h"

namespace {

using bench::StateText;
using bench::Terminal;

// Keeps a copy of the state, or fails.
class FakeStore : public loyalty::Store {
 public:
  struct Content {
    loyalty::State state;
    int count = 0;
    bool isFull = false;
  };
  explicit FakeStore(Content *content) : content_(content) {}
  loyalty::State Load() override { return content_->state; }
  void Keep(const loyalty::State &state, const loyalty::Changes &changes) override {
    if (content_->isFull) throw std::runtime_error("the disk is full");
    // Only what is said to have changed is taken over, as a file would.
    for (const auto &change : changes.cards) {
      content_->state.cards[change.first] = state.cards.at(change.first);
    }
    content_->state.accounts.resize(state.accounts.size());
    for (const auto &change : changes.accounts) {
      content_->state.accounts[change.first] = state.accounts[change.first];
    }
    for (const auto &change : changes.payments) {
      content_->state.payments[change.first] = state.payments.at(change.first);
    }
    content_->state.acceptedIds.insert(changes.acceptedIds.begin(), changes.acceptedIds.end());
    for (const auto &change : changes.lastIds) {
      content_->state.lastIds[change.first] = state.lastIds.at(change.first);
    }
    for (const auto &change : changes.locks) {
      content_->state.locks[change.first] = state.locks.at(change.first);
    }
    content_->state.usedTokens.insert(changes.usedTokens.begin(), changes.usedTokens.end());
    content_->state.answers = state.answers;
    ++content_->count;
  }

 private:
  Content *content_;
};

class Ledgers : public testing::Test {
 protected:
  loyalty::Programme Start() {
    return loyalty::Programme(
        loyalty::ShopFromJson(bench::kShop), [] { return bench::kMorning; },
        std::make_unique<FakeStore>(&content));
  }
  FakeStore::Content content;
};

void ChangeEverything(loyalty::Ledger *ledger) {
  ledger->EditCard("1").state = loyalty::CardState::kActive;
  ledger->EditCard("2").account = ledger->OpenAccount();
  ledger->EditAccount(0)[0].balance += 5;
  ledger->EditPayment("a").state = loyalty::PaymentState::kCanceled;
  ledger->EditPayment("b").totalSum = 7;
  ledger->AcceptId("a");
  ledger->AcceptId("b");
  ledger->SetLastId("T", "b");
  ledger->SetLastId("U", "b");
  ledger->SetLock("T", true);
  ledger->SetLock("U", true);
  ledger->UseToken("TOKEN-1");
  ledger->UseToken("TOKEN-2");
  ledger->CountAnswer();
}

TEST_F(Ledgers, UndoEverythingSinceTheLastTimeItWasKept) {
  loyalty::Ledger ledger(std::make_unique<FakeStore>(&content));
  ledger.EditCard("1").account = ledger.OpenAccount();
  ledger.EditPayment("a").totalSum = 5;
  ledger.AcceptId("a");
  ledger.SetLastId("T", "a");
  ledger.SetLock("T", false);
  ledger.UseToken("TOKEN-1");
  ledger.CountAnswer();
  ledger.Keep();
  const std::string before = StateText(ledger.state());

  ChangeEverything(&ledger);
  const std::string after = StateText(ledger.state());
  EXPECT_NE(after, before);
  ledger.Undo();
  EXPECT_EQ(StateText(ledger.state()), before);

  ChangeEverything(&ledger);
  content.isFull = true;
  EXPECT_THROW(ledger.Keep(), std::runtime_error);
  EXPECT_EQ(StateText(ledger.state()), before) << "what cannot be kept has not happened";

  content.isFull = false;
  ChangeEverything(&ledger);
  ledger.Keep();
  ledger.Undo();
  EXPECT_EQ(StateText(ledger.state()), after);
  EXPECT_EQ(StateText(content.state), after);
}

TEST_F(Ledgers, TheProgrammeKeepsEachExchangeOnce) {
  loyalty::Programme programme = Start();
  EXPECT_EQ(content.count, 1) << "the cards of the shop";
  Terminal terminal(&programme);
  EXPECT_EQ(terminal.Code("deposit", "200", R"({"amount":500})"), "OK");
  EXPECT_EQ(content.count, 2);
  EXPECT_EQ(terminal.Code("deposit", "300", R"({"amount":500})"), "ACTIVATION_REQUIRED");
  EXPECT_EQ(content.count, 3);
  EXPECT_EQ(content.state.lastIds["12345"], "1234512120500002");
  EXPECT_EQ(content.state.acceptedIds, std::set<std::string>{"1234512120500001"});
  EXPECT_TRUE(programme.SetCardState("200", loyalty::CardState::kLocked));
  programme.LockTerminal("12345", true);
  EXPECT_EQ(content.state.cards["200"].state, loyalty::CardState::kLocked);
  EXPECT_TRUE(content.state.locks["12345"]);
}

TEST_F(Ledgers, WhatCannotBeKeptIsRefusedAndChangesNothing) {
  loyalty::Programme programme = Start();
  Terminal terminal(&programme);
  EXPECT_EQ(terminal.Code("payment", "100", bench::Bill(true)), "OK");
  const std::string payment = terminal.lastId;
  const std::string before = bench::Purses(programme, "100");

  content.isFull = true;
  const nlohmann::json answer = terminal.Ask("payment", "100", bench::Bill(true));
  EXPECT_EQ(answer["response"]["requestState"], "ERROR");
  EXPECT_EQ(answer["response"]["requestStateCode"], "INTERNAL_ERROR");
  EXPECT_EQ(answer["response"]["requestId"], terminal.lastId);
  EXPECT_FALSE(answer.contains("bill"));
  EXPECT_EQ(terminal.Code("confirm", "100", R"({"requestId":")" + payment + R"(","isConfirm":true})"),
            "INTERNAL_ERROR");
  EXPECT_EQ(bench::Purses(programme, "100"), before);
  EXPECT_EQ(programme.payments().size(), 1u);
  EXPECT_EQ(programme.LastRequestId("12345"), payment);
  EXPECT_THROW(programme.SetCardState("100", loyalty::CardState::kLocked), std::runtime_error);
  EXPECT_EQ(programme.FindCard("100")->state, loyalty::CardState::kActive);

  content.isFull = false;
  EXPECT_EQ(terminal.Code("payment", "100", bench::Bill(true), terminal.lastId), "OK")
      << "its id is still good";
}

TEST_F(Ledgers, TheProgrammeGoesOnWhereItWas) {
  {
    loyalty::Programme programme = Start();
    Terminal terminal(&programme);
    EXPECT_EQ(terminal.Code("payment", "100", bench::Bill(true), "1234512120500001"), "OK");
    EXPECT_EQ(terminal.Code("cardExchange", "200", R"({"token":"TOKEN-1"})", "1234512120500002"), "OK");
    programme.LockTerminal("54321", true);
  }
  loyalty::Programme programme = Start();
  Terminal terminal(&programme);
  EXPECT_EQ(bench::Purses(programme, "100"), "10000(-499)(+110)/5000(-5000)(+165)/1000(+55)");
  EXPECT_EQ(terminal.Code("balance", "100", "", "1234512120500001"), "DUPLICATE_REQUEST_ID");
  EXPECT_EQ(terminal.Ask("rrn", "")["rrn"]["rrNumber"], "1234512120500002");
  EXPECT_EQ(terminal.Code("confirm", "100", R"({"requestId":"1234512120500001","isConfirm":true})",
                          "1234512120500003"),
            "OK");
  EXPECT_EQ(terminal.Code("cardExchange", "500", R"({"token":"TOKEN-1"})", "1234512120500004"),
            "INCORRECT_TOKEN");
  EXPECT_EQ(terminal.Ask("balance", "500", "", "1234512120500005")["response"]["responseId"], "7");
  EXPECT_EQ(Terminal(&programme, "54321").Code("balance", "500"), "LOCKED_TERMINAL");
}

TEST_F(Ledgers, CardsThatTheShopHasNewAreAddedAndTheOthersStayAsTheyAre) {
  Start().SetCardState("100", loyalty::CardState::kLocked);
  const loyalty::Programme programme(
      loyalty::ShopFromJson(R"({"cards":[{"number":"100","state":"active"},{"number":"7","local":9}]})"),
      loyalty::SystemClock, std::make_unique<FakeStore>(&content));
  EXPECT_EQ(programme.FindCard("100")->state, loyalty::CardState::kLocked);
  EXPECT_EQ(bench::Purses(programme, "100"), "10000/5000/1000");
  EXPECT_EQ(bench::Purses(programme, "7"), "0/9/0");
  EXPECT_EQ(content.state.cards.count("7"), 1u);
}

}  // namespace
