// engine/payment_operations_test.cpp: payments, confirmations and returns, from the call to the slip.
#include "engine/payment_operations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "engine/card_operations.h"
#include "record/enumerations.h"
#include "record/transaction.h"
#include "support/shop.h"

namespace {

using test::InOrder;
using test::kNextRrn;
using test::kRefusal;
using test::Reply;
using test::RequestPart;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const char kPaidBill[] =
    R"({"totalSum":10000,"orderLen":1,"billNum":"7","billDate":"2012-12-05T09:59:00Z","partnerFee":1000,)"
    R"("goodList":{"good":[{"title":"ЧАЙ","productCode":"008","positionCost":10000,"orderNum":1,"cnt":1}]}})";

const char kRrnLine[] = "RRN: TERM012120500008\n";
const char kSeparator[] = "************************\n";

const std::string kPaymentTitle =
    "******* ПОКУПКА ********\n"
    "  Полагающиеся бонусы   \n"
    "  будут перечислены в   \n"
    "      Клуб Тавиро       \n"
    "************************\n";

const std::string kOfflineBlock =
    "        ОФФЛАЙН\n"
    "************************\n";

// The "bill" part with one good that has these bonuses.
std::string BillPart(int32_t total, const std::string &bonuses, bool spend = false, bool with_spend = false) {
  return R"("bill":{"totalSum":)" + std::to_string(total) +
         (with_spend ? std::string(R"(,"spendBonus":)") + (spend ? "true" : "false") : std::string()) +
         R"(,"orderLen":1,"billNum":"7","billDate":"2012-12-05T09:59:00Z","partnerFee":1000,"goodList":{"good":[)"
         R"({"title":"ЧАЙ","productCode":"008","positionCost":10000,"orderNum":1,"cnt":1)" +
         (bonuses.empty() ? "" : R"(,"bonus":[)" + bonuses + "]") + "}]}}";
}

std::string BonusEntry(const std::string &account, int32_t spend, int32_t earned, int32_t fee) {
  return R"({"earned":)" + std::to_string(earned) + R"(,"spend":)" + std::to_string(spend) +
         R"(,"organizerFee":)" + std::to_string(fee) + R"(,"accountType":")" + account + "\"}";
}

std::string OfflineRequestPart(const std::string &type) {
  std::string part = RequestPart(type);
  const std::string online = R"("isOffline":false)";
  return part.replace(part.find(online), online.size(), R"("isOffline":true)");
}

// The two kinds of payment, which differ in little.
struct Kind : test::NamedCase {
  int (*process)(lumo::Transaction *, int32_t, const char *);
  const char *type;
  const char *requestName;
  const char *responseName;
  const char *traceLine;      // of a payment of 300 with BILL.JSN
  const char *nullTraceLine;  // of a payment of 0 without a path
  const char *badBillLine;    // for the code -303
  int badBillCode;
  const char *missingBillLine;
  int missingBillCode;
};

const Kind kKinds[] = {
    {"Payment", lumo::PaymentProcess, "PAYMENT", "putPaymentRequest", "putPaymentResponse",
     "PaymentProcess\n", "PaymentProcess\n", "ERROR: BillParse res [-303] \"Ошибка в файле JSON\"\n", -106,
     "ERROR: BillParse res [-307] \"Не удалось открыть JSON-файл\"\n", -106},
    {"PaymentAndConfirm", lumo::PaymentAndConfirmProcess, "PAYMENT_AND_CONFIRM",
     "putPaymentAndConfirmRequest", "putPaymentAndConfirmResponse",
     "PaymentAndConfirmProcess spend [300] bill [BILL.JSN]\n",
     "PaymentAndConfirmProcess spend [0] bill [(null)]\n", "ERROR: BillParse res [-303]\n", -303,
     "ERROR: BillParse res [-307]\n", -307},
};

class PaymentBase : public test::Shop {
 protected:
  void Open(const std::string &members = "") {
    OpenShop(members);
    OpenCard();
    folder.Write("BILL.JSN", kPaidBill);
  }
  void ExpectNothingDone() const {
    EXPECT_EQ(Body(), "");
    EXPECT_FALSE(folder.Exists("LOG"));
    EXPECT_FALSE(folder.Exists("OFFLINE"));
    EXPECT_EQ(card->completedOperations, 0U);
  }
};

class Payment : public PaymentBase, public testing::WithParamInterface<Kind> {
 protected:
  // A server that answers the payment with these bonuses.
  void OpenWithAnswer(int32_t total, const std::string &bonuses, const std::string &members = "") {
    StartServer({Reply(GetParam().responseName, BillPart(total, bonuses))});
    Open(members);
  }
  int Pay(int32_t spend = 0, const char *path = "BILL.JSN") { return GetParam().process(card, spend, path); }
};

TEST_P(Payment, SendsTheBill) {
  OpenWithAnswer(10000, "");
  EXPECT_EQ(Pay(), 0);
  EXPECT_EQ(RequestDocument(0), std::string("{\"") + GetParam().requestName + "\":{" +
                                    RequestPart(GetParam().type) + "," + BillPart(10000, "", false, true) +
                                    "}}");
}

TEST_P(Payment, TellsTheServerThatTheCustomerSpends) {
  OpenWithAnswer(10000, "");
  EXPECT_EQ(Pay(300), 0);
  EXPECT_EQ(card->bill.spendAmount, 300);
  EXPECT_THAT(RequestDocument(0), HasSubstr(R"("bill":{"totalSum":10000,"spendBonus":true,"orderLen":1)"));
}

TEST_P(Payment, DoesNotSendBonusesThatTheFileHolds) {
  StartServer({Reply(GetParam().responseName, BillPart(10000, ""))});
  Open();
  folder.Write("BILL.JSN", "{" + BillPart(10000, BonusEntry("LOCAL", 1, 2, 3)).substr(8));
  EXPECT_EQ(Pay(), 0);
  EXPECT_THAT(RequestDocument(0), Not(HasSubstr("bonus\"")));
}

TEST_P(Payment, LeavesTheJournalRecordAndTheRewrittenBill) {
  const std::string bonuses = BonusEntry("GLOBAL", 500, 200, 10);
  OpenWithAnswer(10000, bonuses);
  EXPECT_EQ(Pay(500), 0);
  const std::string bill = BillPart(10000, bonuses, true, true);
  EXPECT_EQ(folder.Read("LOG"), "{" + RequestPart(GetParam().type) + "," + bill + "}\n");
  EXPECT_EQ(folder.Read("BILL.JSN"), bill.substr(7));
  EXPECT_FALSE(folder.Exists("OFFLINE"));
  EXPECT_EQ(card->completedOperations, 0x01U);
}

TEST_P(Payment, PrintsEveryLineOfAFullReceipt) {
  OpenWithAnswer(10000, BonusEntry("LOCAL", 1500, 30, 1) + "," + BonusEntry("GLOBAL", 500, 200, 20) + "," +
                            BonusEntry("DISCOUNT", 1000, 45, 300));
  EXPECT_EQ(Pay(2000), 0);
  EXPECT_EQ(Body(), kPaymentTitle + kRrnLine +
                        "Сумма (нал.):\n"
                        "                   70.00\n"
                        "Сумма (бнс.):\n"
                        "                   20.00\n"
                        "Скидка (бнс.):\n"
                        "                   10.00\n"
                        "************************\n"
                        "Начислено всего:\n"
                        "               2.00 бнс.\n"
                        "Начислено всего\n"
                        "ЛАВКА:\n"
                        "               2.30 бнс.\n"
                        "Начислено скид бон в\n"
                        "ЛАВКА:\n"
                        "               0.45 ски.\n"
                        "Вознаграждение \n"
                        "организатора:\n"
                        "               3.21 бнс.\n");
}

TEST_P(Payment, WithoutSumsPrintsTitleRrnAndSeparator) {
  OpenWithAnswer(0, "");
  EXPECT_EQ(Pay(), 0);
  EXPECT_EQ(Body(), kPaymentTitle + kRrnLine + kSeparator);
}

TEST_P(Payment, TracesEachStepInOrder) {
  OpenWithAnswer(10000, BonusEntry("LOCAL", 1500, 30, 1) + "," + BonusEntry("GLOBAL", 500, 200, 20) + "," +
                            BonusEntry("DISCOUNT", 1000, 45, 300));
  EXPECT_EQ(Pay(300), 0);
  EXPECT_THAT(folder.Trace(),
              StartsWith(GetParam().traceLine + std::string("FillRequest(") + GetParam().type + ")\n"));
  EXPECT_THAT(folder.Trace(),
              InOrder({"\nBillParse\n", "\nTransactionProcess [" + std::string(GetParam().type) + "]\n",
                       "\nBillModify\n"}));
  EXPECT_THAT(folder.Trace(), EndsWith("BillModify\n"
                                       "CountBonuses\n"
                                       "Good has 3 bonuses\n"
                                       "earnedLocal = 30\n"
                                       "earnedGlobal = 200\n"
                                       "earnedDiscount = 45\n"
                                       "spendLocal = 1500\n"
                                       "spendGlobal = 500\n"
                                       "spendDiscount = 1000\n"
                                       "Bill:\n" +
                                       Body() + "\n"));
}

TEST_P(Payment, WithoutARequestIdPrintsNoRrnLine) {
  // The server refuses to tell the last id, so that the operation has none.
  StartServer({Reply("getLastRrnResponse", "", kRefusal), Reply(GetParam().responseName, BillPart(0, ""))});
  Open();
  SetState("{}");
  EXPECT_EQ(Pay(), 0);
  EXPECT_EQ(Body(), kPaymentTitle + kSeparator);
}

TEST_P(Payment, WithoutANetworkNamePrintsTheColonAlone) {
  StartServer({Reply(GetParam().responseName, BillPart(0, BonusEntry("LOCAL", 0, 30, 0)))});
  // An object is no text.
  Open(R"("retailNetworkName":{})");
  EXPECT_EQ(Pay(), 0);
  EXPECT_EQ(Body(), kPaymentTitle + kRrnLine + kSeparator + "Начислено всего\n:\n               0.30 бнс.\n");
}

TEST_P(Payment, ASecondPaymentPrintsBehindTheFirst) {
  const std::string answer = Reply(GetParam().responseName, BillPart(0, ""));
  StartServer({answer, answer});
  Open();
  EXPECT_EQ(Pay(), 0);
  folder.Write("BILL.JSN", kPaidBill);
  EXPECT_EQ(Pay(), 0);
  EXPECT_EQ(Body(),
            kPaymentTitle + kRrnLine + kSeparator + kPaymentTitle + "RRN: TERM012120500051\n" + kSeparator);
  EXPECT_THAT(folder.Trace(), EndsWith("Bill:\n" + Body() + "\n"));
}

TEST_P(Payment, WithoutARecordTracesThePointer) {
  EXPECT_EQ(GetParam().process(nullptr, 0, nullptr), -100);
  EXPECT_EQ(folder.Trace(), GetParam().nullTraceLine + std::string("ERROR: Pointer \"trans\" is null\n"));
}

TEST_P(Payment, ADamagedBillIsNotSent) {
  OpenWithAnswer(10000, "");
  folder.Write("BILL.JSN", "damaged");
  EXPECT_EQ(Pay(300), GetParam().badBillCode);
  EXPECT_THAT(folder.Trace(), EndsWith(GetParam().badBillLine));
  EXPECT_EQ(RequestCount(), 0U);
  EXPECT_EQ(card->bill.spendAmount, 300);
  EXPECT_EQ(folder.Read("BILL.JSN"), "damaged");
  ExpectNothingDone();
}

TEST_P(Payment, AMissingBillIsNotSent) {
  OpenWithAnswer(10000, "");
  for (const char *path : {"NONE.JSN", static_cast<const char *>(nullptr), ""}) {
    folder.ClearTrace();
    EXPECT_EQ(Pay(300, path), GetParam().missingBillCode);
    EXPECT_THAT(folder.Trace(), EndsWith(GetParam().missingBillLine));
  }
  EXPECT_EQ(RequestCount(), 0U);
  ExpectNothingDone();
}

TEST_P(Payment, ABillThatIsNoObjectIsNotSent) {
  OpenWithAnswer(10000, "");
  folder.Write("BILL.JSN", "[]");
  EXPECT_EQ(Pay(), GetParam().badBillCode == -106 ? -106 : -402);
  EXPECT_EQ(RequestCount(), 0U);
}

TEST_P(Payment, ARefusedPaymentLeavesNoTraceOfItself) {
  StartServer({Reply(GetParam().responseName, "", kRefusal)});
  Open();
  EXPECT_EQ(Pay(), -405);
  ExpectNothingDone();
  EXPECT_EQ(folder.Read("BILL.JSN"), kPaidBill);
}

TEST_P(Payment, AnAnswerWithoutItsBillIsNoPayment) {
  StartServer({Reply(GetParam().responseName)});
  Open();
  EXPECT_EQ(Pay(), -404);
  ExpectNothingDone();
}

TEST_P(Payment, AJournalThatCannotBeWrittenDoesNotFailThePayment) {
  OpenWithAnswer(0, "");
  MakeLogUnwritable();
  EXPECT_EQ(Pay(), 0);
  EXPECT_THAT(folder.Trace(), HasSubstr("ERROR: [LOG] file is not opened\n"));
  EXPECT_EQ(Body(), kPaymentTitle + kRrnLine + kSeparator);
  EXPECT_EQ(card->completedOperations, 0x01U);
}

TEST_P(Payment, WithoutAConnectionFailsUnlessOfflineModeIs1) {
  for (const char *mode : {"0", "2", "-1"}) {
    Open(std::string(R"("offlineMode":)") + mode);
    EXPECT_EQ(Pay(), -501) << mode;
    ExpectNothingDone();
  }
}

TEST_P(Payment, WithoutAConnectionIsCompletedByTheTerminal) {
  Open(R"("offlineMode":1,"localBonusOffline":3,"globalBonusOffline":2,"orgFeeOffline":4)");
  EXPECT_EQ(Pay(5000), 0);
  EXPECT_EQ(Body(), kPaymentTitle + kOfflineBlock + kRrnLine +
                        "Сумма (нал.):\n"
                        "                  100.00\n"
                        "************************\n"
                        "Начислено всего:\n"
                        "               2.00 бнс.\n"
                        "Начислено всего\n"
                        "ЛАВКА:\n"
                        "               5.00 бнс.\n"
                        "Вознаграждение \n"
                        "организатора:\n"
                        "               4.00 бнс.\n");
  const std::string bill = BillPart(
      10000, BonusEntry("LOCAL", 0, 300, 300) + "," + BonusEntry("GLOBAL", 0, 200, 100), false, true);
  const std::string record = "{" + OfflineRequestPart(GetParam().type) + "," + bill + "}\n";
  EXPECT_EQ(folder.Read("LOG"), record);
  EXPECT_EQ(folder.Read("OFFLINE"), record);
  EXPECT_EQ(folder.Read("BILL.JSN"), bill.substr(7));
  EXPECT_EQ(card->bill.spendAmount, 0);
  EXPECT_EQ(card->completedOperations, 0x01U);
  EXPECT_THAT(State(), HasSubstr(R"("offline":1)"));
}

TEST_P(Payment, WithoutAConnectionAndRatesEarnsNothing) {
  Open(R"("offlineMode":1)");
  EXPECT_EQ(Pay(5000), 0);
  EXPECT_EQ(Body(), kPaymentTitle + kOfflineBlock + kRrnLine + "Сумма (нал.):\n                  100.00\n" +
                        kSeparator);
}

TEST_P(Payment, RatesThatContradictEachOtherRefuseTheFallback) {
  Open(R"("offlineMode":1,"localBonusOffline":3,"globalBonusOffline":2,"orgFeeOffline":6)");
  EXPECT_EQ(Pay(5000), -104);
  ExpectNothingDone();
  EXPECT_EQ(card->request.isOffline, 0);
  EXPECT_EQ(folder.Read("BILL.JSN"), kPaidBill);
}

TEST_P(Payment, ARefusalIsNoReasonToGoOffline) {
  StartServer({Reply(GetParam().responseName, "", kRefusal)});
  Open(R"("offlineMode":1)");
  EXPECT_EQ(Pay(), -405);
  ExpectNothingDone();
}

TEST_P(Payment, AnOfflineRecordTriesTheServerAgainAndStaysOffline) {
  OpenWithAnswer(0, "");
  card->request.isOffline = 1;
  EXPECT_EQ(Pay(), 0);
  EXPECT_EQ(RequestCount(), 1U);
  EXPECT_EQ(Body(), kPaymentTitle + kOfflineBlock + kRrnLine + kSeparator);
  EXPECT_EQ(folder.Read("OFFLINE"), folder.Read("LOG"));
}

INSTANTIATE_TEST_SUITE_P(Kinds, Payment, testing::ValuesIn(kKinds), test::CaseName());

struct ReceiptCase : test::NamedCase {
  int32_t total;
  std::string bonuses;
  const char *lines;  // behind the RRN line
};

const ReceiptCase kReceiptCases[] = {
    {"Nothing", 0, "", "************************\n"},
    {"CashAlone", 15000, "", "Сумма (нал.):\n                  150.00\n************************\n"},
    {"CashAndBonuses", 10000, BonusEntry("LOCAL", 1500, 0, 0) + "," + BonusEntry("GLOBAL", 500, 0, 0),
     "Сумма (нал.):\n                   80.00\n"
     "Сумма (бнс.):\n                   20.00\n"
     "************************\n"},
    {"BonusesAlone", 2000, BonusEntry("GLOBAL", 2000, 0, 0),
     "Сумма (бнс.):\n                   20.00\n************************\n"},
    {"DiscountAlone", 2000, BonusEntry("DISCOUNT", 2000, 0, 0),
     "Скидка (бнс.):\n                   20.00\n************************\n"},
    {"SpentMoreThanTheTotal", 1000, BonusEntry("GLOBAL", 2000, 0, 0),
     "Сумма (нал.):\n                  -10.00\n"
     "Сумма (бнс.):\n                   20.00\n"
     "************************\n"},
    {"SpentSumsThatCancelOut", 0, BonusEntry("GLOBAL", 2000, 0, 0) + "," + BonusEntry("LOCAL", -2000, 0, 0),
     "************************\n"},
    {"EarnedGlobal", 0, BonusEntry("GLOBAL", 0, 1250, 0),
     "************************\n"
     "Начислено всего:\n              12.50 бнс.\n"
     "Начислено всего\nЛАВКА:\n              12.50 бнс.\n"},
    {"EarnedLocal", 0, BonusEntry("LOCAL", 0, 1250, 0),
     "************************\n"
     "Начислено всего\nЛАВКА:\n              12.50 бнс.\n"},
    {"EarnedSumsThatCancelOut", 0, BonusEntry("GLOBAL", 0, 1250, 0) + "," + BonusEntry("LOCAL", 0, -1250, 0),
     "************************\n"
     "Начислено всего:\n              12.50 бнс.\n"},
    {"EarnedDiscount", 0, BonusEntry("DISCOUNT", 0, 1250, 0),
     "************************\n"
     "Начислено скид бон в\nЛАВКА:\n              12.50 ски.\n"},
    {"FeeOfAnUnknownAccount", 0, BonusEntry("OTHER", 100, 1250, 75),
     "************************\n"
     "Вознаграждение \nорганизатора:\n               0.75 бнс.\n"},
    {"SumsWrap", INT32_MAX,
     BonusEntry("GLOBAL", INT32_MAX, 0, 0) + "," + BonusEntry("LOCAL", INT32_MAX, 0, 0),
     // What is spent wraps to -2, and 2147483647 + 2 to -2147483647.
     "Сумма (нал.):\n            -21474836.47\n"
     "Сумма (бнс.):\n                    0.-2\n"
     "************************\n"},
};

class PaymentReceipt : public PaymentBase, public testing::WithParamInterface<ReceiptCase> {};

TEST_P(PaymentReceipt, PrintsWhatIsNotZero) {
  StartServer({Reply("putPaymentResponse", BillPart(GetParam().total, GetParam().bonuses)),
               Reply("putPaymentAndConfirmResponse", BillPart(GetParam().total, GetParam().bonuses))});
  Open();
  EXPECT_EQ(lumo::PaymentProcess(card, 0, "BILL.JSN"), 0);
  EXPECT_EQ(Body(), kPaymentTitle + kRrnLine + GetParam().lines);

  SetState(R"({"reqId":"TERM012120500007","shiftId":"12","shiftState":1})");
  OpenCard();
  folder.Write("BILL.JSN", kPaidBill);
  EXPECT_EQ(lumo::PaymentAndConfirmProcess(card, 0, "BILL.JSN"), 0);
  EXPECT_EQ(Body(), kPaymentTitle + kRrnLine + GetParam().lines);
}

INSTANTIATE_TEST_SUITE_P(Cases, PaymentReceipt, testing::ValuesIn(kReceiptCases), test::CaseName());

const char kPaidRrn[] = "TERM012120500001";

const std::string kConfirmReceipt =
    "**** ОТМЕНА ПОКУПКИ ****\n"
    "RRN: TERM012120500008\n"
    "    ПОКУПКА ОТМЕНЕНА    \n";

std::string ConfirmPart(const char *flag) {
  return std::string(R"("paymentConfirm":{"requestId":"TERM012120500001","isConfirm":)") + flag + "}";
}

struct ConfirmCase : test::NamedCase {
  int32_t flag;
  const char *json;
  const char *traceLine;
};

const ConfirmCase kConfirmCases[] = {
    {"Confirm", 1, "true", "PaymentConfirmProcess confirm [1] rrn [TERM012120500001]\n"},
    {"Cancel", 0, "false", "PaymentConfirmProcess confirm [0] rrn [TERM012120500001]\n"},
};

class PaymentConfirm : public PaymentBase, public testing::WithParamInterface<ConfirmCase> {
 protected:
  int Confirm() { return lumo::PaymentConfirmProcess(card, GetParam().flag, kPaidRrn); }
  void OpenWithAnswer() {
    StartServer({Reply("putPaymentConfirmResponse")});
    Open();
  }
};

TEST_P(PaymentConfirm, SendsAndJournalsTheFlagAndThePaymentsRrn) {
  OpenWithAnswer();
  EXPECT_EQ(Confirm(), 0);
  const std::string parts = RequestPart("PAYMENT_CONFIRM") + "," + ConfirmPart(GetParam().json);
  EXPECT_EQ(RequestDocument(0), R"({"putPaymentConfirmRequest":{)" + parts + "}}");
  EXPECT_EQ(folder.Read("LOG"), "{" + parts + "}\n");
  EXPECT_FALSE(folder.Exists("OFFLINE"));
  EXPECT_EQ(card->completedOperations, 0x02U);
  EXPECT_THAT(folder.Trace(),
              StartsWith(GetParam().traceLine + std::string("FillRequest(PAYMENT_CONFIRM)\n")));
}

TEST_P(PaymentConfirm, PrintsTheSlipOfACancellation) {
  OpenWithAnswer();
  EXPECT_EQ(Confirm(), 0);
  EXPECT_EQ(Body(), kConfirmReceipt);
}

TEST_P(PaymentConfirm, WithoutAConnectionWaitsInTheOfflineJournal) {
  Open(R"("offlineMode":1)");
  EXPECT_EQ(Confirm(), 0);
  const std::string record =
      "{" + OfflineRequestPart("PAYMENT_CONFIRM") + "," + ConfirmPart(GetParam().json) + "}\n";
  EXPECT_EQ(folder.Read("OFFLINE"), record);
  EXPECT_EQ(folder.Read("LOG"), record);
  EXPECT_EQ(Body(), kConfirmReceipt + "    В РЕЖИМЕ ОФФЛАЙН!   \n");
  EXPECT_EQ(card->completedOperations, 0x02U);
}

TEST_P(PaymentConfirm, OfAnOfflineRecordIsNotSent) {
  OpenWithAnswer();
  card->request.isOffline = 1;
  EXPECT_EQ(Confirm(), 0);
  EXPECT_EQ(RequestCount(), 0U);
  EXPECT_THAT(folder.Read("OFFLINE"), HasSubstr(ConfirmPart(GetParam().json)));
  EXPECT_EQ(Body(), kConfirmReceipt + "    В РЕЖИМЕ ОФФЛАЙН!   \n");
}

TEST_P(PaymentConfirm, WithoutAConnectionFailsUnlessOfflineModeIs1) {
  for (const char *mode : {"0", "2"}) {
    Open(std::string(R"("offlineMode":)") + mode);
    EXPECT_EQ(Confirm(), -501) << mode;
    EXPECT_EQ(card->request.isOffline, 0);
    ExpectNothingDone();
  }
}

TEST_P(PaymentConfirm, ARefusalIsPassedOn) {
  StartServer({Reply("putPaymentConfirmResponse", "", kRefusal)});
  Open(R"("offlineMode":1)");
  EXPECT_EQ(Confirm(), -405);
  ExpectNothingDone();
}

TEST_P(PaymentConfirm, AJournalThatCannotBeWrittenFailsItWithoutAReceipt) {
  OpenWithAnswer();
  MakeLogUnwritable();
  EXPECT_EQ(Confirm(), -201);
  EXPECT_EQ(Body(), "");
  EXPECT_EQ(card->completedOperations, 0U);
}

TEST_P(PaymentConfirm, ANullRrnIsSentEmpty) {
  OpenWithAnswer();
  EXPECT_EQ(lumo::PaymentConfirmProcess(card, GetParam().flag, nullptr), 0);
  EXPECT_EQ(card->paymentConfirm.requestId, nullptr);
  EXPECT_THAT(folder.Trace(), StartsWith("PaymentConfirmProcess confirm [" + std::to_string(GetParam().flag) +
                                         "] rrn [(null)]\n"));
  EXPECT_THAT(RequestDocument(0), HasSubstr(R"("paymentConfirm":{"requestId":"","isConfirm":)"));
}

TEST_P(PaymentConfirm, WithoutARecordTracesThePointer) {
  EXPECT_EQ(lumo::PaymentConfirmProcess(nullptr, GetParam().flag, kPaidRrn), -100);
  EXPECT_EQ(folder.Trace(), GetParam().traceLine + std::string("ERROR: Pointer \"trans\" is null\n"));
}

INSTANTIATE_TEST_SUITE_P(Cases, PaymentConfirm, testing::ValuesIn(kConfirmCases), test::CaseName());

class CashBack : public PaymentBase {
 protected:
  void OpenWithAnswer(const std::string &returned_sum = "0") {
    StartServer({Reply("putCashBackResponse", R"("cashBackResult":{"returnedSum":)" + returned_sum + "}")});
    Open();
  }
  std::string SentPart() const {
    const std::string document = RequestDocument(0);
    const std::string head = R"({"putCashBackRequest":{)" + RequestPart("CASHBACK") + ",";
    EXPECT_THAT(document, StartsWith(head));
    return document.size() > head.size() ? document.substr(head.size()) : "";
  }
};

TEST_F(CashBack, WithoutAListReturnsEverything) {
  OpenWithAnswer("2000");
  EXPECT_EQ(lumo::CashBackProcess(card, kPaidRrn, nullptr), 0);
  EXPECT_EQ(SentPart(), R"("cashBack":{"requestId":"TERM012120500001","cashBackType":"FULL"}}})");
  EXPECT_EQ(Body(),
            "**** ВОЗВРАТ ТОВАРА ****\n"
            "RRN: TERM012120500008\n"
            "     ПОЛНЫЙ ВОЗВРАТ     \n"
            "Возвращено (бнс.):\n"
            "                   20.00\n");
  EXPECT_EQ(folder.Read("LOG"), "{" + RequestPart("CASHBACK") + "}\n");
  EXPECT_EQ(card->completedOperations, 0x08U);
  EXPECT_THAT(folder.Trace(),
              StartsWith("PaymentConfirmProcess rrn [TERM012120500001] cashback file [(null)]\n"
                         "FillRequest(CASHBACK)\n"));
}

TEST_F(CashBack, WithAListReturnsItsPositions) {
  OpenWithAnswer();
  folder.Write("RETURN.JSN", R"({"cashBackGood":[{"pos":1,"sum":500,"cnt":1},{"pos":3,"sum":70,"cnt":2}]})");
  EXPECT_EQ(lumo::CashBackProcess(card, kPaidRrn, "RETURN.JSN"), 0);
  EXPECT_EQ(SentPart(), R"("cashBack":{"requestId":"TERM012120500001","cashBackType":"SEQ","cashBackGood":[)"
                        R"({"pos":1,"sum":500,"cnt":1},{"pos":3,"sum":70,"cnt":2}]}}})");
  EXPECT_EQ(Body(),
            "**** ВОЗВРАТ ТОВАРА ****\n"
            "RRN: TERM012120500008\n"
            "   ЧАСТИЧНЫЙ ВОЗВРАТ    \n");
  EXPECT_THAT(folder.Trace(),
              StartsWith("PaymentConfirmProcess rrn [TERM012120500001] cashback file [RETURN.JSN]\n"));
}

TEST_F(CashBack, TheListsOwnTypeAndRrnHold) {
  OpenWithAnswer();
  folder.Write("RETURN.JSN", R"({"cashBackType":"FULL","requestId":"TERM012120500002"})");
  EXPECT_EQ(lumo::CashBackProcess(card, kPaidRrn, "RETURN.JSN"), 0);
  EXPECT_EQ(SentPart(), R"("cashBack":{"requestId":"TERM012120500002","cashBackType":"FULL"}}})");
  EXPECT_THAT(Body(), HasSubstr("     ПОЛНЫЙ ВОЗВРАТ     \n"));
}

TEST_F(CashBack, AnUnknownTypePrintsNeitherLine) {
  OpenWithAnswer();
  folder.Write("RETURN.JSN", R"({"cashBackType":"HALF"})");
  EXPECT_EQ(lumo::CashBackProcess(card, kPaidRrn, "RETURN.JSN"), 0);
  EXPECT_EQ(SentPart(), R"("cashBack":{"requestId":"TERM012120500001","cashBackType":""}}})");
  EXPECT_EQ(Body(), "**** ВОЗВРАТ ТОВАРА ****\nRRN: TERM012120500008\n");
}

TEST_F(CashBack, AFullReturnBehindAPartialOneForgetsItsPositions) {
  const std::string answer = Reply("putCashBackResponse", R"("cashBackResult":{"returnedSum":0})");
  StartServer({answer, answer});
  Open();
  folder.Write("RETURN.JSN", R"({"cashBackGood":[{"pos":1,"sum":500,"cnt":1}]})");
  EXPECT_EQ(lumo::CashBackProcess(card, kPaidRrn, "RETURN.JSN"), 0);
  EXPECT_EQ(lumo::CashBackProcess(card, kPaidRrn, nullptr), 0);
  EXPECT_THAT(RequestDocument(1),
              EndsWith(R"("cashBack":{"requestId":"TERM012120500001","cashBackType":"FULL"}}})"));
}

TEST_F(CashBack, AListThatCannotBeReadSendsNothing) {
  OpenWithAnswer();
  folder.Write("RETURN.JSN", "damaged");
  folder.Write("ARRAY.JSN", "[]");
  for (const char *path : {"RETURN.JSN", "ARRAY.JSN", "NONE.JSN", ""}) {
    EXPECT_EQ(lumo::CashBackProcess(card, kPaidRrn, path), -113) << path;
  }
  EXPECT_EQ(RequestCount(), 0U);
  ExpectNothingDone();
}

TEST_F(CashBack, HasNoOfflineFallback) {
  Open(R"("offlineMode":1)");
  EXPECT_EQ(lumo::CashBackProcess(card, kPaidRrn, nullptr), -501);
  EXPECT_EQ(card->request.isOffline, 0);
  ExpectNothingDone();
}

TEST_F(CashBack, ARefusalIsPassedOn) {
  StartServer({Reply("putCashBackResponse", "", kRefusal)});
  Open();
  EXPECT_EQ(lumo::CashBackProcess(card, kPaidRrn, nullptr), -405);
  ExpectNothingDone();
}

TEST_F(CashBack, OfAnOfflineRecordIsNotSent) {
  OpenWithAnswer();
  card->request.isOffline = 1;
  EXPECT_EQ(lumo::CashBackProcess(card, kPaidRrn, nullptr), 0);
  EXPECT_EQ(RequestCount(), 0U);
  EXPECT_EQ(folder.Read("OFFLINE"), "{" + OfflineRequestPart("CASHBACK") + "}\n");
  EXPECT_EQ(Body(), "**** ВОЗВРАТ ТОВАРА ****\nRRN: TERM012120500008\n     ПОЛНЫЙ ВОЗВРАТ     \n");
}

TEST_F(CashBack, AJournalThatCannotBeWrittenFailsItButThereIsAReceipt) {
  OpenWithAnswer();
  MakeLogUnwritable();
  EXPECT_EQ(lumo::CashBackProcess(card, kPaidRrn, nullptr), -201);
  EXPECT_EQ(Body(), "**** ВОЗВРАТ ТОВАРА ****\nRRN: TERM012120500008\n     ПОЛНЫЙ ВОЗВРАТ     \n");
  EXPECT_EQ(card->completedOperations, 0x08U);
}

TEST_F(CashBack, ANegativeReturnedSumIsPrinted) {
  OpenWithAnswer("-1250");
  EXPECT_EQ(lumo::CashBackProcess(card, kPaidRrn, nullptr), 0);
  EXPECT_THAT(Body(), EndsWith("Возвращено (бнс.):\n                  -12.50\n"));
}

TEST_F(CashBack, ANullRrnIsSentEmpty) {
  OpenWithAnswer();
  EXPECT_EQ(lumo::CashBackProcess(card, nullptr, nullptr), 0);
  EXPECT_EQ(SentPart(), R"("cashBack":{"requestId":"","cashBackType":"FULL"}}})");
}

TEST_F(CashBack, WithoutARecordTracesThePointer) {
  EXPECT_EQ(lumo::CashBackProcess(nullptr, kPaidRrn, "RETURN.JSN"), -100);
  EXPECT_EQ(folder.Trace(),
            "PaymentConfirmProcess rrn [TERM012120500001] cashback file [RETURN.JSN]\n"
            "ERROR: Pointer \"trans\" is null\n");
}

TEST_F(PaymentBase, OneRecordGathersTheOperationsItCompleted) {
  StartServer({Reply("putPaymentResponse", BillPart(0, "")), Reply("putPaymentConfirmResponse"),
               Reply("putCashBackResponse", R"("cashBackResult":{"returnedSum":0})")});
  Open();
  EXPECT_EQ(lumo::PaymentProcess(card, 0, "BILL.JSN"), 0);
  EXPECT_EQ(lumo::PaymentConfirmProcess(card, 1, kNextRrn), 0);
  EXPECT_EQ(lumo::CashBackProcess(card, kNextRrn, nullptr), 0);
  EXPECT_EQ(card->completedOperations, 0x0BU);
  EXPECT_EQ(Body(), kPaymentTitle + kRrnLine + kSeparator +
                        "**** ОТМЕНА ПОКУПКИ ****\n"
                        "RRN: TERM012120500051\n"
                        "    ПОКУПКА ОТМЕНЕНА    \n"
                        "**** ВОЗВРАТ ТОВАРА ****\n"
                        "RRN: TERM012120500051\n"
                        "     ПОЛНЫЙ ВОЗВРАТ     \n");
}

}  // namespace
