// api/transaction_calls_test.cpp: the register's transaction, call by call.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "api/context.h"
#include "config/lumoconfig.h"
#include "config/lumostate.h"
#include "lumo.h"
#include "record/receipt.h"
#include "record/transaction.h"
#include "support/folder.h"
#include "support/scripted_server.h"
#include "support/test_clock.h"

namespace {

using test::ScriptedServer;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr char kNoTransaction[] = "ERROR: Pointer \"trans\" is null\n";

// A register may pass an activation type by its number.
const char *TypeNumber(uintptr_t number) {
  return reinterpret_cast<const char *>(number);
}

class TransactionCalls : public testing::Test {
 protected:
  TransactionCalls() { test::SetClock(2012, 12, 5, 10, 0, 0); }
  ~TransactionCalls() override {
    CloseTransaction();
    lumo::ReleaseState();
    lumo::CopyRequestId();
    lumo::ReleaseSettings();
    test::ReleaseClock();
  }

  // A started library with today's seventh RRN behind it.
  void Start(const std::string &address, const std::string &settings = "") {
    folder.Write("CONFIG",
                 "{\"terminalId\":\"12345\",\"protocolVersion\":\"1.0\",\"serverAddr\":\"" + address +
                     "\",\"serverAltAddr\":\"\",\"retailNetworkName\":\"Net\",\"timeout\":5,\"logSize\":100,"
                     "\"receiptHeader\":\"Head\",\"receiptFooter\":\"Foot\"" +
                     settings + "}");
    folder.Write("STATE", "{\"reqId\":\"1234512120500007\"}");
    ASSERT_EQ(LUMOInit(), 0);
    folder.ClearTrace();
  }
  void StartWithTransaction(const std::string &address, const std::string &settings = "") {
    Start(address, settings);
    ASSERT_EQ(CreateTransaction("9000000001", "7"), 0);
    folder.ClearTrace();
  }

  test::Folder folder;
};

std::string Answer(const std::string &name, const std::string &state, const std::string &code,
                   const std::string &parts = "") {
  return "{\"" + name +
         "\":{\"response\":{\"ver\":\"1.0\",\"requestId\":\"1234512120500008\",\"responseId\":\"r\","
         "\"responseDate\":\"2012-12-05T10:00:01Z\",\"requestState\":\"" +
         state + "\",\"requestStateCode\":\"" + code + "\",\"message\":\"m\",\"isNeedUpdate\":false}" +
         parts + "}}";
}

// ---- Calls without a transaction: their lines, and the engine's answer passed on ----

struct LoneCall {
  const char *name;
  std::function<int()> call;
  int result;
  const char *trace;
};

class WithoutTransaction : public TransactionCalls, public testing::WithParamInterface<LoneCall> {};

TEST_P(WithoutTransaction, TracesAndAnswers) {
  EXPECT_EQ(GetParam().call(), GetParam().result);
  EXPECT_EQ(folder.Trace(), std::string(GetParam().trace) + kNoTransaction);
}

const LoneCall kLoneCalls[] = {
    {"ActivationProc", [] { return ActivationProc("GIFT_CARD", "BILL", 1500, "LOCAL", "9"); }, -100,
     "ActivationProc\n  activation_type [1]\n  amount [1500]\n  type [LOCAL]\n  refer_card_num [9]\n"
     "ActivationProcess\n"},
    {"ActivationProcOfNulls", [] { return ActivationProc(nullptr, nullptr, -1, nullptr, nullptr); }, -100,
     "ActivationProc\n  activation_type [0]\n  amount [-1]\n  type [(null)]\n  refer_card_num [(null)]\n"
     "ActivationProcess\n"},
    {"GetActivationAmount", GetActivationAmount, -100, "GetActivationAmountProcess\n"},
    {"BalanceProc", BalanceProc, -100, "BalanceProc()\nBalanceProcess\n"},
    {"GetBalance", GetBalance, 0, ""},
    {"PaymentProc", [] { return PaymentProc(5, "B"); }, -100, "PaymentProc(5, B)\nPaymentProcess\n"},
    {"PaymentProcOfNull", [] { return PaymentProc(-5, nullptr); }, -100,
     "PaymentProc(-5, (null))\nPaymentProcess\n"},
    {"PaymentAndConfirmProc", [] { return PaymentAndConfirmProc(5, "B"); }, -100,
     "PaymentAndConfirmProc(5, B)\nPaymentAndConfirmProcess spend [5] bill [B]\n"},
    {"PaymentAndConfirmProcOfNull", [] { return PaymentAndConfirmProc(0, nullptr); }, -100,
     "PaymentAndConfirmProc(0, (null))\nPaymentAndConfirmProcess spend [0] bill [(null)]\n"},
    {"PaymentConfirmProc", [] { return PaymentConfirmProc("R"); }, -100,
     "PaymentConfirmProc(R)\nPaymentConfirmProcess confirm [1] rrn [R]\n"},
    {"PaymentConfirmProcOfNull", [] { return PaymentConfirmProc(nullptr); }, -100,
     "PaymentConfirmProc((null))\nPaymentConfirmProcess confirm [1] rrn [(null)]\n"},
    {"PaymentCancelProc", [] { return PaymentCancelProc("R"); }, -100,
     "PaymentCancelProc(R)\nPaymentConfirmProcess confirm [0] rrn [R]\n"},
    {"CashBackProc", [] { return CashBackProc("R", "L"); }, -100,
     "CashBackProc(R, L)\nPaymentConfirmProcess rrn [R] cashback file [L]\n"},
    {"CashBackProcOfNulls", [] { return CashBackProc(nullptr, nullptr); }, -100,
     "CashBackProc((null), (null))\nPaymentConfirmProcess rrn [(null)] cashback file [(null)]\n"},
    {"GetCashBackResult", GetCashBackResult, -100, "GetCashBackResultProcess\n"},
    {"DepositProc", [] { return DepositProc(5); }, -100, "DepositProc(5)\nDepositProcess amount [5]\n"},
    {"ExchangeProc", [] { return ExchangeProc("T"); }, -100, "ExchangeProc(T)\nExchangeProcess token [T]\n"},
    {"ExchangeProcOfNull", [] { return ExchangeProc(nullptr); }, -100,
     "ExchangeProc((null))\nExchangeProcess token [(null)]\n"},
    {"LinkCardProc", [] { return LinkCardProc("C"); }, -100, "LinkCardProc(C)\nLinkCardProcess card [C]\n"},
    {"LinkCardProcOfNull", [] { return LinkCardProc(nullptr); }, -100,
     "LinkCardProc((null))\nLinkCardProcess card [(null)]\n"},
    {"GetEarnBonusAmount", GetEarnBonusAmount, 0, "CountBonuses\n"},
    {"GetSpendBonusAmount", GetSpendBonusAmount, 0, "CountBonuses\n"},
    {"GetDiscountAmount", GetDiscountAmount, 0, "CountBonuses\n"},
    {"GetReceiptHeaderPtr", [] { return getReceiptHeaderPtr() == nullptr ? 0 : 1; }, 0,
     "GetTransReceiptHeader\n"},
    {"GetReceiptBodyPtr", [] { return getReceiptBodyPtr() == nullptr ? 0 : 1; }, 0, "GetTransReceiptBody\n"},
    {"GetReceiptFooterPtr", [] { return getReceiptFooterPtr() == nullptr ? 0 : 1; }, 0,
     "GetTransReceiptFooter\n"},
    {"GetReceiptBody", [] { return getReceiptBody(nullptr); }, -100, "GetTransactionReceiptSize\n"},
    {"GetReceiptBodyIntoABuffer",
     [] {
       char buffer[4] = "abc";
       const int result = getReceiptBody(buffer);
       return std::strcmp(buffer, "abc") == 0 ? result : 1;
     },
     -100, "GetTransactionReceiptSize\n"},
};
INSTANTIATE_TEST_SUITE_P(Calls, WithoutTransaction, testing::ValuesIn(kLoneCalls),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_F(TransactionCalls, ClosingWithoutATransactionIsNoError) {
  EXPECT_EQ(CloseTransaction(), 0);
  EXPECT_EQ(CloseTransaction(), 0);
  EXPECT_EQ(folder.Trace(), "CloseTransaction()\nCloseTransaction()\n");
}

TEST_F(TransactionCalls, WithoutATransactionTheServersStateIsEmpty) {
  EXPECT_STREQ(getResponseState(), "");
  EXPECT_STREQ(getResponseStateCode(), "");
  EXPECT_STREQ(getResponseMessage(), "");
  EXPECT_EQ(folder.Trace(), "getResponseState()\ngetResponseStateCode()\ngetResponseMessage()\n");
}

// ---- Creating and closing ----

TEST_F(TransactionCalls, ATransactionIsCreatedWithItsSlip) {
  Start("http://127.0.0.1:1/a");
  EXPECT_EQ(CreateTransaction("9000000001", "7"), 0);
  EXPECT_THAT(folder.Trace(), StartsWith("CreateTransaction [9000000001] [7]\nLoadState\n"));
  EXPECT_STREQ(
      getReceiptHeaderPtr(),
      "Head\n2012/12/05      10:00:00\nТерминал          12345\n     *** КАРТА ***\n    9000000001\n");
  EXPECT_STREQ(getReceiptBodyPtr(), "");
  EXPECT_STREQ(getReceiptFooterPtr(), "Foot\n");
}

TEST_F(TransactionCalls, NullTextsMakeATransactionWithEmptyFields) {
  Start("http://127.0.0.1:1/a");
  EXPECT_EQ(CreateTransaction(nullptr, nullptr), 0);
  EXPECT_THAT(folder.Trace(),
              StartsWith("CreateTransaction [(null)] [(null)]\n"
                         "ERROR: trans_strcpy src == NULL\nERROR: trans_strcpy src == NULL\n"));
  ASSERT_NE(lumo::current_transaction, nullptr);
  EXPECT_EQ(lumo::current_transaction->request.cardNum, nullptr);
  EXPECT_EQ(lumo::current_transaction->request.employeeId, nullptr);
}

TEST_F(TransactionCalls, TheReceiptCallsTraceTheirEnginesNameAlone) {
  StartWithTransaction("http://127.0.0.1:1/a");
  getReceiptHeaderPtr();
  getReceiptBodyPtr();
  getReceiptFooterPtr();
  EXPECT_EQ(folder.Trace(), "GetTransReceiptHeader\nGetTransReceiptBody\nGetTransReceiptFooter\n");
}

TEST_F(TransactionCalls, ASecondTransactionIsRefusedAndTheFirstStays) {
  StartWithTransaction("http://127.0.0.1:1/a");
  const lumo::Transaction *first = lumo::current_transaction;
  EXPECT_EQ(CreateTransaction("2", "3"), -112);
  EXPECT_EQ(folder.Trace(), "CreateTransaction [2] [3]\nERROR: Transaction created already\n");
  EXPECT_EQ(lumo::current_transaction, first);
  EXPECT_STREQ(first->request.cardNum, "9000000001");
}

TEST_F(TransactionCalls, ShiftModeNeedsAnOpenShift) {
  Start("http://127.0.0.1:1/a", ",\"shiftMode\":1");
  EXPECT_EQ(CreateTransaction("1", "2"), -602);
  EXPECT_EQ(lumo::current_transaction, nullptr);
  EXPECT_THAT(folder.Trace(), StartsWith("CreateTransaction [1] [2]\nLoadState\nparseJsonFile [STATE]\n"));
  EXPECT_THAT(folder.Trace(), EndsWith("ERROR: Shift mode is ON and shift not opened!\n"));
  ASSERT_EQ(OpenShift("42"), 0);
  EXPECT_EQ(CreateTransaction("1", "2"), 0);
  EXPECT_STREQ(lumo::current_transaction->request.shiftId, "42");
}

TEST_F(TransactionCalls, TheShiftIsCheckedBeforeTheOpenTransaction) {
  Start("http://127.0.0.1:1/a", ",\"shiftMode\":2");
  ASSERT_EQ(OpenShift("42"), 0);
  ASSERT_EQ(CreateTransaction("1", "2"), 0);
  folder.Write("STATE", "{\"shiftState\":0}");
  EXPECT_EQ(CreateTransaction("1", "2"), -602);
  folder.Write("STATE", "{\"shiftState\":1}");
  EXPECT_EQ(CreateTransaction("1", "2"), -112);
}

TEST_F(TransactionCalls, AShiftModeOfZeroOrLessNeedsNoShift) {
  Start("http://127.0.0.1:1/a", ",\"shiftMode\":0");
  EXPECT_EQ(CreateTransaction("1", "2"), 0);
  CloseTransaction();
  Start("http://127.0.0.1:1/a", ",\"shiftMode\":-1");
  EXPECT_EQ(CreateTransaction("1", "2"), 0);
}

TEST_F(TransactionCalls, ClosingEndsTheTransaction) {
  StartWithTransaction("http://127.0.0.1:1/a");
  EXPECT_EQ(CloseTransaction(), 0);
  EXPECT_EQ(folder.Trace(), "CloseTransaction()\n");
  EXPECT_EQ(lumo::current_transaction, nullptr);
  EXPECT_EQ(getReceiptBodyPtr(), nullptr);
  EXPECT_EQ(CreateTransaction("1", "2"), 0);
}

// ---- Results ----

TEST_F(TransactionCalls, BeforeTheFirstAnswerTheStateIsOk) {
  StartWithTransaction("http://127.0.0.1:1/a");
  EXPECT_STREQ(getResponseState(), "OK");
  EXPECT_STREQ(getResponseStateCode(), "OK");
  EXPECT_EQ(GetBalance(), 0);
  EXPECT_EQ(GetActivationAmount(), 0);
  EXPECT_EQ(GetCashBackResult(), 0);
  EXPECT_EQ(GetEarnBonusAmount(), 0);
}

TEST_F(TransactionCalls, TheBalanceCountsGlobalAndLocalAccounts) {
  ScriptedServer server(Answer("getBalanceResponse", "SUCCESS", "OK",
                               ",\"balance\":{\"account\":["
                               "{\"accountType\":\"GLOBAL\",\"availableAmount\":1000,\"amount\":1},"
                               "{\"accountType\":\"LOCAL\",\"availableAmount\":250,\"amount\":2},"
                               "{\"accountType\":\"DISCOUNT\",\"availableAmount\":70,\"amount\":3}]}"));
  StartWithTransaction(server.address());
  EXPECT_EQ(BalanceProc(), 0);
  EXPECT_THAT(folder.Trace(), StartsWith("BalanceProc()\nBalanceProcess\nFillRequest(BALANCE)\n"));
  folder.ClearTrace();
  EXPECT_EQ(GetBalance(), 1250);
  EXPECT_EQ(folder.Trace(), "Ignore DISCOUNT 70\n");
  EXPECT_STREQ(getResponseState(), "SUCCESS");
  EXPECT_STREQ(getResponseStateCode(), "OK");
  EXPECT_STREQ(getResponseMessage(), "") << "a placeholder, whatever the server said";
  EXPECT_STREQ(getRRN(), "1234512120500008");
}

TEST_F(TransactionCalls, ARefusalIsToldByStateAndCode) {
  ScriptedServer server(Answer("getBalanceResponse", "ERROR", "LOCKED_CARD"));
  StartWithTransaction(server.address());
  EXPECT_EQ(BalanceProc(), -405);
  EXPECT_STREQ(getResponseState(), "ERROR");
  EXPECT_STREQ(getResponseStateCode(), "LOCKED_CARD");
}

TEST_F(TransactionCalls, AnUnknownStateAndCodeAreEmptyTexts) {
  ScriptedServer server(Answer("getBalanceResponse", "PENDING", "NEW_CODE"));
  StartWithTransaction(server.address());
  EXPECT_EQ(BalanceProc(), -405);
  EXPECT_STREQ(getResponseState(), "");
  EXPECT_STREQ(getResponseStateCode(), "");
}

TEST_F(TransactionCalls, TheRrnIsTheTerminalsLastOneAndNeedsNoTransaction) {
  EXPECT_EQ(getRRN(), nullptr);
  Start("http://127.0.0.1:1/a");
  EXPECT_STREQ(getRRN(), "1234512120500007");
  EXPECT_EQ(folder.Trace(), "getRRN()\n");
}

TEST_F(TransactionCalls, TheRrnHandedOutStaysUntilTheNextIsAskedFor) {
  Start("http://127.0.0.1:1/a");
  const char *rrn = getRRN();
  ASSERT_EQ(CreateTransaction("1", "2"), 0);
  EXPECT_EQ(DepositProc(100), -501);
  EXPECT_STREQ(rrn, "1234512120500007");
  EXPECT_STREQ(getRRN(), "1234512120500008") << "a failed operation has used its number up";
}

TEST_F(TransactionCalls, ThePaidBillsBonusesAreSummedByKind) {
  ScriptedServer server(Answer(
      "putPaymentResponse", "SUCCESS", "OK",
      ",\"bill\":{\"totalSum\":10000,\"billNum\":\"1\",\"orderLen\":1,\"billDate\":\"d\",\"partnerFee\":5,"
      "\"goodList\":{\"good\":[{\"title\":\"t\",\"productCode\":\"p\",\"positionCost\":10000,"
      "\"orderNum\":1,\"cnt\":1,\"bonus\":["
      "{\"earned\":100,\"spend\":2000,\"organizerFee\":1,\"accountType\":\"GLOBAL\"},"
      "{\"earned\":30,\"spend\":400,\"organizerFee\":2,\"accountType\":\"LOCAL\"},"
      "{\"earned\":5,\"spend\":60,\"organizerFee\":3,\"accountType\":\"DISCOUNT\"}]}]}}"));
  StartWithTransaction(server.address());
  ASSERT_EQ(CreateAmountBill(10000, "BILL"), 0);
  folder.ClearTrace();
  EXPECT_EQ(PaymentProc(50, "BILL"), 0);
  EXPECT_THAT(folder.Trace(), StartsWith("PaymentProc(50, BILL)\nPaymentProcess\n"));
  folder.ClearTrace();
  EXPECT_EQ(GetEarnBonusAmount(), 130);
  EXPECT_EQ(folder.Trace(), "CountBonuses\nGood has 3 bonuses\n");
  EXPECT_EQ(GetSpendBonusAmount(), 2400);
  EXPECT_EQ(GetDiscountAmount(), 60);
}

// ---- Activation ----

struct ActivationCase {
  const char *name;
  const char *type;
  int number;
};

class ActivationType : public TransactionCalls, public testing::WithParamInterface<ActivationCase> {};

TEST_P(ActivationType, IsTracedAsItsNumber) {
  EXPECT_EQ(ActivationProc(GetParam().type, nullptr, 1, "a", "c"), -100);
  EXPECT_EQ(folder.Trace(), "ActivationProc\n  activation_type [" + std::to_string(GetParam().number) +
                                "]\n  amount [1]\n  type [a]\n  refer_card_num [c]\nActivationProcess\n" +
                                kNoTransaction);
}

const ActivationCase kActivations[] = {
    {"Null", nullptr, 0},
    {"NumberOne", TypeNumber(1), 1},
    {"NumberTwo", TypeNumber(2), 2},
    {"NumberThree", TypeNumber(3), 3},
    {"TheGreatestNumber", TypeNumber(0xFFFF), 3},
    {"Simple", "SIMPLE_ACTIVATION", 0},
    {"GiftCard", "GIFT_CARD", 1},
    {"ReferAFriend", "REFER_A_FRIEND", 2},
    {"LowerCase", "gift_card", 3},
    {"Longer", "GIFT_CARDS", 3},
    {"Shorter", "GIFT", 3},
    {"Empty", "", 3},
};
INSTANTIATE_TEST_SUITE_P(Types, ActivationType, testing::ValuesIn(kActivations),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_F(TransactionCalls, ATypeGivenAsNumberIsSentAndPrintedAsItsText) {
  ScriptedServer server(Answer("cardActivationResponse", "SUCCESS", "OK",
                               ",\"activationResult\":{\"activationSum\":1,\"activationSumType\":\"GLOBAL\","
                               "\"referralSum\":2,\"referralSumType\":\"LOCAL\",\"giftSum\":700,"
                               "\"giftSumType\":\"LOCAL\"}"));
  StartWithTransaction(server.address());
  EXPECT_EQ(ActivationProc(TypeNumber(1), nullptr, 1500, "LOCAL", nullptr), 0);
  ASSERT_EQ(server.requests().size(), 1U);
  EXPECT_THAT(server.requests()[0],
              HasSubstr("\"activation\":{\"activationType\":\"GIFT_CARD\",\"amount\":1500,"
                        "\"type\":\"LOCAL\"}"));
  EXPECT_STREQ(
      getReceiptBodyPtr(),
      "*** ПОДАРОЧНАЯ КАРТА ***\nRRN: 1234512120500008\nНачислено (бнс.):\n                   15.00\n");
  EXPECT_EQ(GetActivationAmount(), 700);
}

TEST_F(TransactionCalls, AnUnknownActivationTypeIsTheEnginesToRefuse) {
  StartWithTransaction("http://127.0.0.1:1/a");
  EXPECT_EQ(ActivationProc("GIFT", nullptr, 1, "LOCAL", nullptr), -102);
  EXPECT_THAT(folder.Trace(), HasSubstr("ERROR: Unknown enumiratoin for ActivationType [GIFT]\n"));
  EXPECT_EQ(ActivationProc(TypeNumber(3), nullptr, 1, "LOCAL", nullptr), -102);
}

TEST_F(TransactionCalls, AnUnknownAccountTypeIsTheEnginesToRefuse) {
  StartWithTransaction("http://127.0.0.1:1/a");
  EXPECT_EQ(ActivationProc("GIFT_CARD", nullptr, 1, nullptr, nullptr), -103);
}

TEST_F(TransactionCalls, AnActivationsBillIsReadFromItsPath) {
  StartWithTransaction("http://127.0.0.1:1/a");
  EXPECT_EQ(ActivationProc("SIMPLE_ACTIVATION", "NONE", 1, nullptr, nullptr), -106);
  EXPECT_EQ(ActivationProc("SIMPLE_ACTIVATION", "", 1, nullptr, nullptr), -106) << "an empty path is a path";
}

// ---- What the engine is handed, told by what it sends ----

struct SentCall {
  const char *name;
  std::function<int()> call;
  const char *answerName;
  const char *answerParts;
  const char *firstLine;
  const char *method;
  const char *part;
};

class Sent : public TransactionCalls, public testing::WithParamInterface<SentCall> {};

TEST_P(Sent, AsTheRegisterAsked) {
  const SentCall &row = GetParam();
  ScriptedServer server(Answer(row.answerName, "SUCCESS", "OK", row.answerParts));
  StartWithTransaction(server.address());
  EXPECT_EQ(row.call(), 0);
  EXPECT_THAT(folder.Trace(), StartsWith(row.firstLine));
  ASSERT_EQ(server.requests().size(), 1U);
  EXPECT_THAT(server.requests()[0], StartsWith(row.method));
  EXPECT_THAT(server.requests()[0], HasSubstr(row.part));
}

const SentCall kSentCalls[] = {
    {"Confirmation", [] { return PaymentConfirmProc("1234512120500003"); }, "putPaymentConfirmResponse", "",
     "PaymentConfirmProc(1234512120500003)\n", "POST /ws/confirm\n",
     "\"paymentConfirm\":{\"requestId\":\"1234512120500003\",\"isConfirm\":true}"},
    {"Cancellation", [] { return PaymentCancelProc("1234512120500003"); }, "putPaymentConfirmResponse", "",
     "PaymentCancelProc(1234512120500003)\n", "POST /ws/confirm\n",
     "\"paymentConfirm\":{\"requestId\":\"1234512120500003\",\"isConfirm\":false}"},
    {"FullReturn", [] { return CashBackProc("1234512120500003", nullptr); }, "putCashBackResponse",
     ",\"cashBackResult\":{\"returnedSum\":4000}", "CashBackProc(1234512120500003, (null))\n",
     "POST /ws/cashBack\n", "\"cashBack\":{\"requestId\":\"1234512120500003\",\"cashBackType\":\"FULL\"}"},
    {"Deposit", [] { return DepositProc(50000); }, "putDepositResponse", "", "DepositProc(50000)\n",
     "POST /ws/deposit\n", "\"deposit\":{\"amount\":50000}"},
    {"Exchange", [] { return ExchangeProc("token"); }, "cardExchangeResponse", "", "ExchangeProc(token)\n",
     "POST /ws/cardExchange\n", "\"cardExchange\":{\"token\":\"token\"}"},
};
INSTANTIATE_TEST_SUITE_P(Calls, Sent, testing::ValuesIn(kSentCalls),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_F(TransactionCalls, TheReturnedSumIsTheServers) {
  ScriptedServer server(
      Answer("putCashBackResponse", "SUCCESS", "OK", ",\"cashBackResult\":{\"returnedSum\":4000}"));
  StartWithTransaction(server.address());
  EXPECT_EQ(CashBackProc("1234512120500003", nullptr), 0);
  folder.ClearTrace();
  EXPECT_EQ(GetCashBackResult(), 4000);
  EXPECT_EQ(folder.Trace(), "GetCashBackResultProcess\n");
}

TEST_F(TransactionCalls, APaymentsUnreadableBillHasTwoCodes) {
  StartWithTransaction("http://127.0.0.1:1/a");
  EXPECT_EQ(PaymentProc(0, "NONE"), -106);
  EXPECT_EQ(PaymentProc(0, nullptr), -106);
  EXPECT_EQ(PaymentAndConfirmProc(0, "NONE"), -307);
  EXPECT_EQ(PaymentAndConfirmProc(0, nullptr), -307);
  EXPECT_EQ(CashBackProc("1", ""), -113) << "an empty path is a path";
}

TEST_F(TransactionCalls, LinkingInAnOrdinaryTransactionAsksNobody) {
  StartWithTransaction("http://127.0.0.1:1/a");
  EXPECT_EQ(LinkCardProc("2"), 0);
  EXPECT_THAT(folder.Trace(), StartsWith("LinkCardProc(2)\nLinkCardProcess card [2]\n"));
  EXPECT_THAT(folder.Trace(), Not(HasSubstr("Connecting to")));
}

// ---- The body's copy ----

TEST_F(TransactionCalls, AnEmptyBodyHasTheSizeOfItsTerminator) {
  StartWithTransaction("http://127.0.0.1:1/a");
  EXPECT_EQ(getReceiptBody(nullptr), 1);
  char byte = 'x';
  EXPECT_EQ(getReceiptBody(&byte), 1);
  EXPECT_EQ(byte, '\0');
  EXPECT_EQ(folder.Trace(), "GetTransactionReceiptSize\nGetTransactionReceiptSize\n");
}

TEST_F(TransactionCalls, TheBodyIsCopiedIntoABufferOfExactlyItsSize) {
  StartWithTransaction("http://127.0.0.1:1/a");
  for (int i = 0; i < 30; ++i) lumo::ReceiptPrintf(lumo::current_transaction->body, "Line %02d\n", i);
  const int size = getReceiptBody(nullptr);
  ASSERT_EQ(size, 30 * 8 + 1);
  std::vector<char> buffer(static_cast<size_t>(size), '?');
  EXPECT_EQ(getReceiptBody(buffer.data()), size);
  EXPECT_STREQ(buffer.data(), getReceiptBodyPtr());
}

// ---- The amount bill ----

TEST_F(TransactionCalls, AnAmountBillIsOneLine) {
  EXPECT_EQ(CreateAmountBill(15000, "BILL.JSN"), 0);
  EXPECT_EQ(folder.Read("BILL.JSN"),
            "{\"totalSum\":15000,\"orderLen\":1,\"billNum\":\"1\",\"billDate\":\"2012-12-05T10:00:00Z\","
            "\"partnerFee\":1000,\"goodList\":{\"good\":[{\"title\":\"TOTAL_AMOUNT\",\"productCode\":\"008\","
            "\"positionCost\":15000,\"orderNum\":1,\"cnt\":1}]}}");
  EXPECT_EQ(folder.Trace(), "CreateAmountBill\n");
}

TEST_F(TransactionCalls, AnAmountBillOfZeroReplacesALongerFile) {
  folder.Write("BILL.JSN", std::string(1000, 'x'));
  EXPECT_EQ(CreateAmountBill(0, "BILL.JSN"), 0);
  EXPECT_EQ(folder.Read("BILL.JSN"),
            "{\"totalSum\":0,\"orderLen\":1,\"billNum\":\"1\",\"billDate\":\"2012-12-05T10:00:00Z\","
            "\"partnerFee\":1000,\"goodList\":{\"good\":[{\"title\":\"TOTAL_AMOUNT\",\"productCode\":\"008\","
            "\"positionCost\":0,\"orderNum\":1,\"cnt\":1}]}}");
}

TEST_F(TransactionCalls, AnAmountBillIsNotJudged) {
  EXPECT_EQ(CreateAmountBill(-2147483647 - 1, "BILL.JSN"), 0);
  EXPECT_THAT(folder.Read("BILL.JSN"), StartsWith("{\"totalSum\":-2147483648,"));
}

TEST_F(TransactionCalls, AnAmountBillThatCannotBeMade) {
  for (const char *path : {"NONE/BILL.JSN", "", static_cast<const char *>(nullptr)}) {
    folder.ClearTrace();
    EXPECT_EQ(CreateAmountBill(1, path), -105);
    EXPECT_THAT(folder.Trace(), StartsWith("ERROR: CreateFile function failed with error "));
    EXPECT_THAT(folder.Trace(), EndsWith("\nCreateAmountBill\n"));
  }
}

// ---- Offline ----

TEST_F(TransactionCalls, AReplayOfNothingSendsNothing) {
  EXPECT_EQ(SendOfflinePayments(), 0);
  EXPECT_THAT(folder.Trace(),
              StartsWith("SendOfflinePayments()\nOfflinePaymentsProcess\nGetOfflineRecords()\n"));
  EXPECT_FALSE(folder.Exists("OFFLINE"));
}

TEST_F(TransactionCalls, APaymentCompletedOfflineIsReplayedWithoutATransaction) {
  const std::string unreachable = "http://127.0.0.1:" + std::to_string(test::UnusedPort()) + "/ws";
  StartWithTransaction(unreachable, ",\"offlineMode\":1,\"localBonusOffline\":3,\"globalBonusOffline\":2");
  ASSERT_EQ(CreateAmountBill(10000, "BILL"), 0);
  EXPECT_EQ(PaymentProc(500, "BILL"), 0);
  EXPECT_EQ(GetEarnBonusAmount(), 500);
  EXPECT_EQ(GetSpendBonusAmount(), 0);
  EXPECT_EQ(getOfflineState(), 1);
  EXPECT_THAT(getReceiptBodyPtr(), HasSubstr("ОФФЛАЙН"));
  EXPECT_EQ(CloseTransaction(), 0);
  EXPECT_EQ(SendOfflinePayments(), 0) << "still unreachable";
  EXPECT_EQ(getOfflineState(), 1);
  ScriptedServer server(Answer("putPaymentResponse", "SUCCESS", "OK", ",\"bill\":{\"totalSum\":10000}"));
  folder.Write("CONFIG", "{\"serverAddr\":\"" + server.address() + "\",\"timeout\":5,\"offlineMode\":1}");
  ASSERT_EQ(LUMOInit(), 0);
  EXPECT_EQ(SendOfflinePayments(), 1);
  EXPECT_EQ(getOfflineState(), 0);
  ASSERT_EQ(server.requests().size(), 1U);
  EXPECT_THAT(server.requests()[0], HasSubstr("\"requestId\":\"1234512120500008\""));
  EXPECT_THAT(server.requests()[0], HasSubstr("\"isOffline\":true"));
}

TEST_F(TransactionCalls, WithoutATransactionNothingIsOffline) {
  EXPECT_EQ(lumoIsOffline(), 0);
}

}  // namespace
