#include "end_to_end/bench.h"

namespace test {

void Bench::Start(const std::string &more) {
  shop.CloseTransaction();
  address = "http://" + bench.address() + "/ws";
  shop.Start(address, more);
  NewTransaction();
  shop.ClearTrace();
}

void Bench::SetState(const std::string &text) {
  shop.Write("STATE", text);
  ASSERT_EQ(shop.LoadState(), 0);
  shop.ClearTrace();
}

void Bench::NewTransaction(const std::string &card) {
  shop.CloseTransaction();
  ASSERT_EQ(shop.CreateTransaction(card.c_str(), kCashier), 0);
}

int Bench::Pay(int amount) {
  EXPECT_EQ(shop.CreateAmountBill(10000, "BILL.JSN"), 0);
  return shop.PaymentProc(amount, "BILL.JSN");
}

void Bench::SellOffline() {
  NewTransaction();
  ASSERT_EQ(Pay(0), 0);
  ASSERT_EQ(shop.lumoIsOffline(), 1);
  ASSERT_EQ(shop.PaymentConfirmProc(shop.getRRN()), 0);
  shop.CloseTransaction();
}

std::string Bench::StateOf(const std::string &rrn) {
  std::string state = "unknown";
  bench.Visit([&](loyalty::Programme &programme) {
    const auto payment = programme.payments().find(rrn);
    if (payment != programme.payments().end()) state = loyalty::PaymentStateName(payment->second.state);
  });
  return state;
}

}  // namespace test
