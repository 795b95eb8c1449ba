// end_to_end/lost_answer_test.cpp: an operation whose answer was lost: was it carried out? The bench's server
// does it and loses the answer, or never sees the request; the terminal cannot tell the two apart until it
// asks. What docs/terminal.md says about asking, a sentence a test.
#include "end_to_end/bench.h"

namespace {

using test::Answer;
using test::kFirstRrn;
using test::Success;
using testing::HasSubstr;

class LostAnswer : public test::Bench {
 protected:
  void SetUp() override { Start(R"("timeout":2)"); }

  // Once: the operation is done and nothing of the answer arrives.
  void LoseTheAnswer(const std::string &method) {
    bench.SetFault(loyalty::ParseFault("cut 0 on " + method + " times 1"));
  }
  // Once: the operation is not done, and nothing arrives either.
  void LoseTheRequest(const std::string &method) {
    bench.SetFault(loyalty::ParseFault("silence on " + method + " times 1"));
  }
  void Refused(int code, const std::string &state_code) {
    EXPECT_EQ(code, -405);
    EXPECT_EQ(shop.getResponseStateCode(), state_code);
  }
  // What the rich card can spend, asked in a transaction of its own.
  int Balance() {
    NewTransaction();
    EXPECT_EQ(shop.BalanceProc(), 0);
    const int balance = shop.GetBalance();
    NewTransaction();
    return balance;
  }
};

TEST_F(LostAnswer, OfAPaymentThatWasDoneIsCancelled) {
  LoseTheAnswer("payment");
  EXPECT_EQ(Pay(1), -401);
  EXPECT_STREQ(shop.getRRN(), kFirstRrn);
  EXPECT_EQ(StateOf(kFirstRrn), "held");
  EXPECT_EQ(shop.PaymentCancelProc(shop.getRRN()), 0);
  EXPECT_EQ(StateOf(kFirstRrn), "canceled");
  EXPECT_EQ(Balance(), 70000);
}

TEST_F(LostAnswer, OfAPaymentThatWasNeverDoneIsNoPayment) {
  LoseTheRequest("payment");
  EXPECT_EQ(Pay(1), -401);
  Refused(shop.PaymentCancelProc(shop.getRRN()), "BILL_NOT_FOUND");
  EXPECT_EQ(StateOf(kFirstRrn), "unknown");
}

// The cashier sees the same twice: the answer to the question may be lost as well. It is asked again.
TEST_F(LostAnswer, ToTheQuestionIsAskedForAgain) {
  LoseTheAnswer("payment");
  ASSERT_EQ(Pay(1), -401);
  const std::string rrn = shop.getRRN();
  LoseTheRequest("confirm");
  EXPECT_EQ(shop.PaymentCancelProc(rrn.c_str()), -401);
  EXPECT_EQ(StateOf(rrn), "held");
  LoseTheAnswer("confirm");
  EXPECT_EQ(shop.PaymentCancelProc(rrn.c_str()), -401);
  EXPECT_EQ(StateOf(rrn), "canceled");
  Refused(shop.PaymentCancelProc(rrn.c_str()), "BILL_INCORRECT_STATE");
}

// The number of the cancellation is not that of the payment: keep the payment's before asking.
TEST_F(LostAnswer, QuestionHasANumberOfItsOwn) {
  LoseTheRequest("payment");
  ASSERT_EQ(Pay(1), -401);
  ASSERT_EQ(shop.PaymentCancelProc(shop.getRRN()), -405);
  EXPECT_STREQ(shop.getRRN(), test::kSecondRrn);
}

TEST_F(LostAnswer, IsAskedForInALaterTransactionToo) {
  LoseTheAnswer("payment");
  ASSERT_EQ(Pay(1), -401);
  const std::string rrn = shop.getRRN();
  NewTransaction();
  EXPECT_EQ(shop.PaymentCancelProc(rrn.c_str()), 0);
  EXPECT_EQ(StateOf(rrn), "canceled");
}

// Of the payment, the slip shows nothing; of the cancellation, it does. A new transaction has a clean slip.
TEST_F(LostAnswer, SoldAgainInANewTransaction) {
  LoseTheAnswer("payment");
  ASSERT_EQ(Pay(1), -401);
  EXPECT_EQ(Body(), "");
  ASSERT_EQ(shop.PaymentCancelProc(shop.getRRN()), 0);
  EXPECT_THAT(Body(), HasSubstr("ПОКУПКА ОТМЕНЕНА"));
  NewTransaction();
  EXPECT_EQ(Pay(1), 0);
  EXPECT_THAT(Body(), testing::StartsWith("******* ПОКУПКА ********\n"));
  EXPECT_EQ(StateOf(shop.getRRN()), "held");
}

TEST_F(LostAnswer, OfAPaymentInOneGoIsReturned) {
  ASSERT_EQ(shop.CreateAmountBill(10000, "BILL.JSN"), 0);
  LoseTheAnswer("paymentAndConfirm");
  EXPECT_EQ(shop.PaymentAndConfirmProc(1, "BILL.JSN"), -401);
  const std::string rrn = shop.getRRN();
  // Confirmed already: it cannot be cancelled.
  Refused(shop.PaymentCancelProc(rrn.c_str()), "BILL_INCORRECT_STATE");
  EXPECT_EQ(shop.CashBackProc(rrn.c_str(), nullptr), 0);
  EXPECT_EQ(shop.GetCashBackResult(), 5000);
  EXPECT_EQ(StateOf(rrn), "returned");
  EXPECT_EQ(Balance(), 70000);
}

TEST_F(LostAnswer, OfAPaymentInOneGoThatWasNeverDoneIsNoPayment) {
  ASSERT_EQ(shop.CreateAmountBill(10000, "BILL.JSN"), 0);
  LoseTheRequest("paymentAndConfirm");
  EXPECT_EQ(shop.PaymentAndConfirmProc(1, "BILL.JSN"), -401);
  Refused(shop.CashBackProc(shop.getRRN(), nullptr), "BILL_NOT_FOUND");
}

TEST_F(LostAnswer, OfAConfirmationIsConfirmedAgain) {
  ASSERT_EQ(Pay(1), 0);
  const std::string rrn = shop.getRRN();
  LoseTheRequest("confirm");
  EXPECT_EQ(shop.PaymentConfirmProc(rrn.c_str()), -401);
  LoseTheAnswer("confirm");
  EXPECT_EQ(shop.PaymentConfirmProc(rrn.c_str()), -401);
  EXPECT_EQ(StateOf(rrn), "confirmed");
  Refused(shop.PaymentConfirmProc(rrn.c_str()), "BILL_INCORRECT_STATE");
  EXPECT_EQ(StateOf(rrn), "confirmed");
}

TEST_F(LostAnswer, OfADepositShowsInTheBalance) {
  ASSERT_EQ(Balance(), 70000);
  LoseTheRequest("deposit");
  EXPECT_EQ(shop.DepositProc(1500), -401);
  EXPECT_EQ(Balance(), 70000);
  LoseTheAnswer("deposit");
  EXPECT_EQ(shop.DepositProc(1500), -401);
  EXPECT_EQ(Balance(), 71500);
}

TEST_F(LostAnswer, OfAnActivationIsAskedForByActivatingAgain) {
  NewTransaction("1000000003");
  LoseTheRequest("activate");
  EXPECT_EQ(shop.ActivationProc("SIMPLE_ACTIVATION", nullptr, 0, nullptr, nullptr), -401);
  LoseTheAnswer("activate");
  EXPECT_EQ(shop.ActivationProc("SIMPLE_ACTIVATION", nullptr, 0, nullptr, nullptr), -401);
  Refused(shop.ActivationProc("SIMPLE_ACTIVATION", nullptr, 0, nullptr, nullptr), "ALREADY_ACTIVATED");
}

// The card of the transaction is the old one, locked by the exchange.
TEST_F(LostAnswer, OfAnExchangeIsAskedForByExchangingAgain) {
  LoseTheRequest("cardExchange");
  EXPECT_EQ(shop.ExchangeProc("TOKEN7"), -401);
  LoseTheAnswer("cardExchange");
  EXPECT_EQ(shop.ExchangeProc("TOKEN7"), -401);
  Refused(shop.ExchangeProc("TOKEN7"), "LOCKED_CARD");
}

TEST_F(LostAnswer, OfAFullReturnIsAskedForByReturningAgain) {
  ASSERT_EQ(Pay(1), 0);
  const std::string rrn = shop.getRRN();
  ASSERT_EQ(shop.PaymentConfirmProc(rrn.c_str()), 0);
  LoseTheRequest("cashBack");
  EXPECT_EQ(shop.CashBackProc(rrn.c_str(), nullptr), -401);
  LoseTheAnswer("cashBack");
  EXPECT_EQ(shop.CashBackProc(rrn.c_str(), nullptr), -401);
  Refused(shop.CashBackProc(rrn.c_str(), nullptr), "BILL_INCORRECT_STATE");
}

// Three pieces were sold, one comes back, and the answer is lost: returning it again returns a second one.
TEST_F(LostAnswer, OfAReturnOfSomeGoodsIsNotAskedForByReturningAgain) {
  shop.Write("BILL.JSN", R"({"totalSum":9000,"orderLen":1,"billNum":"1","billDate":"2012-12-05T09:59:00Z",)"
                         R"("partnerFee":0,"goodList":{"good":[{"title":"Чай","productCode":"1",)"
                         R"("positionCost":9000,"orderNum":1,"cnt":3}]}})");
  ASSERT_EQ(shop.PaymentAndConfirmProc(1, "BILL.JSN"), 0);
  const std::string rrn = shop.getRRN();
  shop.Write("RETURN.JSN", R"({"cashBackGood":[{"pos":1,"sum":3000,"cnt":1}]})");
  const int before = Balance();
  LoseTheAnswer("cashBack");
  EXPECT_EQ(shop.CashBackProc(rrn.c_str(), "RETURN.JSN"), -401);
  const int after = Balance();
  EXPECT_GT(after, before);
  EXPECT_EQ(shop.CashBackProc(rrn.c_str(), "RETURN.JSN"), 0);
  EXPECT_GT(Balance(), after);
}

// The question itself meets no server: it waits in OFFLINE, whether there is anything to cancel or not.
TEST_F(LostAnswer, AskedForWithoutTheServerWaitsInOffline) {
  Start(R"("timeout":2,"offlineMode":1)");
  LoseTheAnswer("payment");
  ASSERT_EQ(Pay(1), -401);
  GoAway();
  EXPECT_EQ(shop.PaymentCancelProc(shop.getRRN()), 0);
  EXPECT_EQ(shop.lumoIsOffline(), 1);
  ComeBack();
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_EQ(StateOf(kFirstRrn), "canceled");
}

TEST_F(LostAnswer, AskedForWithoutTheServerOfAPaymentThatNeverWasStaysInOffline) {
  Start(R"("timeout":2,"offlineMode":1)");
  LoseTheRequest("payment");
  ASSERT_EQ(Pay(1), -401);
  GoAway();
  EXPECT_EQ(shop.PaymentCancelProc(shop.getRRN()), 0);
  ComeBack();
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  EXPECT_THAT(shop.Trace(), HasSubstr("response.stateCode = BILL_NOT_FOUND\n"));
  EXPECT_EQ(shop.lumoOfflineCount(), 1);
}

// ---- What became of the answer, and the code that tells ----

struct Spoilt {
  const char *name;
  const char *fault;
  int code;
  bool isDone;
};

void PrintTo(const Spoilt &spoilt, std::ostream *out) {
  *out << spoilt.name;
}

const Spoilt kSpoilt[] = {
    {"NothingCame", "cut 0", -401, true},
    {"OneByteCame", "cut 1", -402, true},
    {"HalfOfItCame", "cut", -402, true},
    {"WholePiecesCameAndTheEnd", "cut 500", -402, true},
    {"ItCameInShortPackets", "pieces 100 10000", -402, true},
    {"ItCameTwice", "duplicate", -303, true},
    {"ItHadAnotherName", "name putSomethingResponse", -403, true},
    {"ItHadNoBill", "without bill", -404, true},
    {"ItHadNoState", "without response/requestState", -405, true},
    {"ItSaidProcessed", "extra response/requestState \"PROCESSED\"", -405, true},
    {"ThereWasNone", "silence", -401, false},
    {"ItWasNoJson", "rubbish what?", -303, false},
    {"ItWasAPageOfStatus400", "http 400", -406, false},
    {"ItWasAPageOfStatus500", "http 500", -407, false},
    {"ItRefused", "refusal LOCKED_CARD", -405, false},
};

class SpoiltAnswer : public LostAnswer, public testing::WithParamInterface<Spoilt> {};

TEST_P(SpoiltAnswer, HasItsCodeAndThePaymentIsDoneOrNot) {
  bench.SetFault(loyalty::ParseFault(GetParam().fault));
  EXPECT_EQ(Pay(1), GetParam().code);
  ComeBack();
  EXPECT_EQ(StateOf(kFirstRrn), GetParam().isDone ? "held" : "unknown");
  // Asked for, it is gone in any case, and the terminal sells on.
  const int code = shop.PaymentCancelProc(kFirstRrn);
  if (GetParam().isDone) {
    EXPECT_EQ(code, 0);
  } else {
    Refused(code, "BILL_NOT_FOUND");
  }
  NewTransaction();
  EXPECT_EQ(Pay(1), 0);
}

INSTANTIATE_TEST_SUITE_P(Every, SpoiltAnswer, testing::ValuesIn(kSpoilt),
                         [](const auto &spoilt) { return std::string(spoilt.param.name); });

// Two answers in one go are no document. Where the second comes later, the first is taken.
TEST_F(LostAnswer, ThatCameTwiceInPacketsOfItsOwnIsTaken) {
  const std::string answer = Success("putDepositResponse");
  server =
      std::make_unique<test::ScriptedServer>(std::vector<Answer>{{{answer, answer}, Answer::End::kClose}});
  shop.CloseTransaction();
  shop.Start(server->address());
  NewTransaction();
  EXPECT_EQ(shop.DepositProc(1), 0);
}

}  // namespace
