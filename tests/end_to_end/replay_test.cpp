// end_to_end/replay_test.cpp: the offline journal goes to the server when it is back.
#include "end_to_end/register.h"

namespace {

using test::Answer;
using test::kFirstRrn;
using test::kSecondRrn;
using test::kThirdRrn;
using test::Record;
using test::Refusal;
using test::State;
using test::Success;
using testing::ElementsAre;
using testing::HasSubstr;

class Replay : public test::Register {
 protected:
  void Start(const std::vector<std::string> &answers, const std::string &more = R"("offlineMode":1)") {
    std::vector<Answer> whole;
    for (const std::string &answer : answers) whole.push_back(Answer{{answer}, Answer::End::kClose});
    server = std::make_unique<test::ScriptedServer>(whole);
    shop.Start(server->address(), more);
  }
};

const std::string kBillPart =
    R"("bill":{"totalSum":100,"spendBonus":false,"orderLen":1,"billNum":"1","billDate":"d","partnerFee":3,)"
    R"("goodList":{"good":[{"title":"ЧАЙ","productCode":"008","positionCost":100,"orderNum":1,"cnt":1,)"
    R"("bonus":[{"earned":3,"spend":0,"organizerFee":1,"accountType":"LOCAL"}]}]}})";
const std::string kConfirmPart = R"("paymentConfirm":{"requestId":"1234512120500008","isConfirm":true})";

const std::string kPayment = Record("PAYMENT", kBillPart, kFirstRrn, true);
const std::string kConfirm = Record("PAYMENT_CONFIRM", kConfirmPart, kSecondRrn, true);
const std::string kSecondPayment = Record("PAYMENT_AND_CONFIRM", kBillPart, kThirdRrn, true);

// A record as a request: the same bytes under the name of the request.
std::string Sent(const std::string &name, const std::string &record) {
  return "{\"" + name + "\":" + record.substr(0, record.size() - 1) + "}";
}

TEST_F(Replay, SendsEachRecordAsItWasRecordedAndKeepsAJournalThatWasSentWhole) {
  Start({Success("putPaymentResponse", "\"bill\":{}"), Success("putPaymentConfirmResponse", "", kSecondRrn),
         Success("putPaymentAndConfirmResponse", "\"bill\":{}", kThirdRrn)});
  shop.Write("STATE", State(kThirdRrn, 1));
  shop.Write("OFFLINE", kPayment + kConfirm + kSecondPayment);
  EXPECT_EQ(shop.SendOfflinePayments(), 3);
  EXPECT_THAT(server->requests(),
              ElementsAre(Post("payment", Sent("putPaymentRequest", kPayment)),
                          Post("confirm", Sent("putPaymentConfirmRequest", kConfirm)),
                          Post("paymentAndConfirm", Sent("putPaymentAndConfirmRequest", kSecondPayment))));
  EXPECT_EQ(shop.Read("OFFLINE"), kPayment + kConfirm + kSecondPayment);
  EXPECT_FALSE(shop.Exists("OFFLINE_TMP"));
  EXPECT_FALSE(shop.Exists("LOG"));
  EXPECT_EQ(shop.Read("STATE"), State(kThirdRrn, 0));
  EXPECT_EQ(shop.getOfflineState(), 0);
}

TEST_F(Replay, KeepsTheRecordsThatFail) {
  Start({Success("putPaymentResponse", "\"bill\":{}"), Refusal("putPaymentConfirmResponse", "BILL_NOT_FOUND"),
         Success("putPaymentAndConfirmResponse", "\"bill\":{}", kThirdRrn)});
  shop.Write("OFFLINE", kPayment + kConfirm + kSecondPayment);
  EXPECT_EQ(shop.SendOfflinePayments(), 2);
  EXPECT_EQ(shop.Read("OFFLINE"), kConfirm);
  EXPECT_FALSE(shop.Exists("OFFLINE_TMP"));
  EXPECT_THAT(shop.Trace(), HasSubstr("ERROR: Offline record sending error -405\n"));
}

TEST_F(Replay, KeepsEverythingWithoutTheServer) {
  shop.Start("http://127.0.0.1:" + std::to_string(test::UnusedPort()) + "/ws", R"("offlineMode":1)");
  shop.Write("OFFLINE", kPayment + kConfirm);
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  EXPECT_EQ(shop.Read("OFFLINE"), kPayment + kConfirm);
  EXPECT_EQ(shop.getOfflineState(), 1);
}

TEST_F(Replay, OfNothingSendsNothing) {
  Start({Success("putPaymentResponse", "\"bill\":{}")});
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  shop.Write("OFFLINE", "");
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  EXPECT_EQ(shop.Read("OFFLINE"), "");
  EXPECT_EQ(server->requests().size(), 0U);
}

// What is no record waits for ever; a tail without its line feed is no record yet, and goes with the journal.
TEST_F(Replay, KeepsLinesThatAreNoRecords) {
  Start({Success("putPaymentResponse", "\"bill\":{}")});
  shop.Write("OFFLINE", "{\"request\":}\n" + kPayment + "[1,\n" + kConfirm.substr(0, 50));
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_EQ(server->requests().size(), 1U);
  EXPECT_THAT(shop.Trace(), HasSubstr("ERROR: LoadLogRecord returned -303"));
  EXPECT_THAT(shop.Read("OFFLINE"), testing::StartsWith("{\"request\":}\n"));
}

// A sale of this register, from the shop without a connection to the server.
TEST_F(Replay, SendsWhatThisRegisterDidOffline) {
  OpenAlone(R"("offlineMode":1,"localBonusOffline":3)");
  ASSERT_EQ(shop.CreateAmountBill(10000, "BILL.JSN"), 0);
  ASSERT_EQ(shop.PaymentProc(500, "BILL.JSN"), 0);
  ASSERT_EQ(shop.CloseTransaction(), 0);
  ASSERT_EQ(shop.getOfflineState(), 1);

  const std::string journal = shop.Read("OFFLINE"), log = shop.Read("LOG"), state = shop.Read("STATE");
  Start({Success("putPaymentResponse", "\"bill\":{}")});
  shop.Write("STATE", state);
  ASSERT_EQ(shop.LoadState(), 0);
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_THAT(server->requests(), ElementsAre(Post("payment", Sent("putPaymentRequest", journal))));
  EXPECT_EQ(shop.Read("LOG"), log);
  EXPECT_EQ(shop.Read("STATE"), State(kFirstRrn, 0));
}

// A transaction that is open meanwhile is not touched.
TEST_F(Replay, LeavesTheCurrentTransactionAlone) {
  Start({Success("putPaymentResponse", "\"bill\":{}"), Success("cardExchangeResponse", "", kSecondRrn)});
  shop.Write("OFFLINE", kPayment);
  ASSERT_EQ(shop.CreateTransaction(test::kCard, test::kCashier), 0);
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_EQ(Body(), "");
  EXPECT_STREQ(shop.getResponseState(), "OK");
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(Body(), "******** ЗАМЕНА ********\nRRN: 1234512120500009\n");
}

}  // namespace
