// protocol/transaction_request_json_test.cpp: the request document and its parts, byte for byte.
#include "protocol/transaction_request_json.h"

#include <cstring>
#include <ostream>
#include <string>
#include <utility>

#include "foundation/lumostring.h"
#include "protocol/full_record.h"
#include "record/enumerations.h"
#include "support/fatal.h"
#include "support/record_fixture.h"

namespace {

class RequestWriter : public ProtocolTest {
 protected:
  std::string Request() {
    lumo::String *output = lumo::StringCreate();
    EXPECT_EQ(lumo::CreateOperationRequest(record, output), 0);
    std::string text(lumo::StringGetText(output), lumo::StringGetLength(output));
    lumo::StringFree(output);
    return text;
  }

  // What a part writer prints.
  template <typename Write>
  std::string Printed(Write write) {
    lumo::String *output = lumo::StringCreate();
    lumo::JsonPrinter printer;
    EXPECT_EQ(lumo::JsonPrinterInit(&printer, lumo::StringSink, output), 0);
    EXPECT_EQ(write(&printer), 0);
    lumo::JsonPrinterFree(&printer);
    std::string text(lumo::StringGetText(output), lumo::StringGetLength(output));
    lumo::StringFree(output);
    return text;
  }
};

struct OperationCase {
  int32_t number;
  const char *typeText;
  const char *requestName;
  const char *webMethod;
  const char *parts;  // behind the request part

  lumo::RequestType type() const { return static_cast<lumo::RequestType>(number); }
};

std::ostream &operator<<(std::ostream &out, const OperationCase &operation) {
  return out << operation.typeText;
}

const OperationCase kOperations[] = {
    {0, "ACTIVATION", "cardActivationRequest", "activate", ",\"activation\":" FULL_ACTIVATION},
    {1, "PAYMENT", "putPaymentRequest", "payment", ",\"bill\":" FULL_BILL},
    {2, "PAYMENT_AND_CONFIRM", "putPaymentAndConfirmRequest", "paymentAndConfirm", ",\"bill\":" FULL_BILL},
    {3, "PAYMENT_CONFIRM", "putPaymentConfirmRequest", "confirm",
     ",\"paymentConfirm\":{\"requestId\":\"T000112120400009\",\"isConfirm\":true}"},
    {4, "BALANCE", "getBalanceRequest", "balance", ""},
    {5, "CASHBACK", "putCashBackRequest", "cashBack",
     ",\"cashBack\":{\"requestId\":\"T000112120400008\",\"cashBackType\":\"SEQ\",\"cashBackGood\":["
     "{\"pos\":1,\"sum\":1250,\"cnt\":2},{\"pos\":3,\"sum\":-5,\"cnt\":1}]}"},
    {6, "LINK", "linkedCardRequest", "linkCard", ",\"linkedCard\":{\"linkedCardNum\":\"7770003\"}"},
    {7, "EXCHANGE", "cardExchangeRequest", "cardExchange", ",\"cardExchange\":{\"token\":\"tok-9\"}"},
    {8, "DEPOSIT", "putDepositRequest", "deposit", ",\"deposit\":{\"amount\":7500}"},
    {9, "AD", "getAdRequest", "ad", ""},
    {10, "LAST_RRN", "getLastRrnRequest", "rrn", ""},
};

class OperationRequest : public RequestWriter, public ::testing::WithParamInterface<OperationCase> {};

TEST_P(OperationRequest, HoldsTheRequestAndItsOwnPart) {
  FillRecord(record);
  record->request.type = GetParam().type();
  folder.ClearTrace();
  EXPECT_EQ(Request(), std::string("{\"") + GetParam().requestName + "\":{\"request\":" +
                           FullRequest(GetParam().typeText, "false") + GetParam().parts + "}}");
  EXPECT_EQ(TakeTrace(), "CreateOperationRequest\n");
}

TEST_P(OperationRequest, HasItsNames) {
  EXPECT_STREQ(lumo::RequestRootName(GetParam().type()), GetParam().requestName);
  EXPECT_STREQ(lumo::WebMethodName(GetParam().type()), GetParam().webMethod);
}

INSTANTIATE_TEST_SUITE_P(Operations, OperationRequest, ::testing::ValuesIn(kOperations),
                         [](const auto &test_case) { return std::string(test_case.param.typeText); });

TEST(OperationNames, AreEmptyOutsideTheTable) {
  for (const int32_t type : {-1, 11, INT32_MIN, INT32_MAX}) {
    EXPECT_STREQ(lumo::RequestRootName(static_cast<lumo::RequestType>(type)), "");
    EXPECT_STREQ(lumo::WebMethodName(static_cast<lumo::RequestType>(type)), "");
  }
}

TEST_F(RequestWriter, PrintsEveryAbsentTextAsTheEmptyOne) {
  record->request.type = lumo::REQUEST_PAYMENT;
  EXPECT_EQ(
      Request(),
      "{\"putPaymentRequest\":{\"request\":{\"ver\":\"\",\"type\":\"PAYMENT\",\"requestId\":\"\","
      "\"terminalId\":\"\",\"requestDate\":\"\",\"employeeId\":\"\",\"cardNum\":\"\",\"isOffline\":false,"
      "\"shiftId\":\"\"},\"bill\":{\"totalSum\":0,\"spendBonus\":false,\"orderLen\":0,\"billNum\":\"\","
      "\"billDate\":\"\",\"partnerFee\":0}}}");
}

TEST_F(RequestWriter, EveryPartSurvivesAnEmptyRecord) {
  const std::pair<lumo::RequestType, const char *> parts[] = {
      {lumo::REQUEST_ACTIVATION,
       "\"activation\":{\"activationType\":\"SIMPLE_ACTIVATION\",\"amount\":0,\"type\":\"GLOBAL\"}"},
      {lumo::REQUEST_PAYMENT_CONFIRM, "\"paymentConfirm\":{\"requestId\":\"\",\"isConfirm\":false}"},
      {lumo::REQUEST_CASHBACK, "\"cashBack\":{\"requestId\":\"\",\"cashBackType\":\"FULL\"}"},
      {lumo::REQUEST_LINK, "\"linkedCard\":{\"linkedCardNum\":\"\"}"},
      {lumo::REQUEST_EXCHANGE, "\"cardExchange\":{\"token\":\"\"}"},
      {lumo::REQUEST_DEPOSIT, "\"deposit\":{\"amount\":0}"},
  };
  for (const auto &[type, part] : parts) {
    record->request.type = type;
    EXPECT_THAT(Request(), ::testing::EndsWith(std::string("\"shiftId\":\"\"},") + part + "}}"));
  }
}

TEST_F(RequestWriter, MarksAnOfflineOperation) {
  FillRecord(record);
  record->request.type = lumo::REQUEST_BALANCE;
  record->request.isOffline = 1;
  EXPECT_EQ(Request(), "{\"getBalanceRequest\":{\"request\":" + FullRequest("BALANCE", "true") + "}}");
}

TEST_F(RequestWriter, EscapesQuotesBackslashesAndControlBytesOnly) {
  record->request.type = lumo::REQUEST_EXCHANGE;
  Store(&record->exchangeToken, "\"\\/\b\t\n\f\r\x01\x1f\x7f Чай \xff");
  EXPECT_THAT(Request(), ::testing::EndsWith(
                             "\"cardExchange\":{\"token\":\"\\\"\\\\/\\b\\t\\n\\f\\r\\u0001\\u001f\x7f Чай "
                             "\xff\"}}}"));
}

TEST_F(RequestWriter, WritesTheWholeRangeOfNumbers) {
  const auto print = [&](lumo::JsonPrinter *printer) { return lumo::WriteDepositPart(printer, record); };
  record->depositAmount = INT32_MIN;
  EXPECT_EQ(Printed(print), "{\"amount\":-2147483648}");
  record->depositAmount = INT32_MAX;
  EXPECT_EQ(Printed(print), "{\"amount\":2147483647}");
}

TEST_F(RequestWriter, TextsOfAnyLengthFit) {
  record->request.type = lumo::REQUEST_EXCHANGE;
  const std::string token(100000, 't');
  Store(&record->exchangeToken, token);
  EXPECT_THAT(Request(), ::testing::EndsWith("\"cardExchange\":{\"token\":\"" + token + "\"}}}"));
}

TEST_F(RequestWriter, BillWithoutGoodsHasNoGoodList) {
  lumo::BillBlock bill = {};
  Store(&bill.billNum, "7");
  bill.totalSum = 100;
  bill.orderLen = 3;
  EXPECT_EQ(Printed([&](lumo::JsonPrinter *printer) { return lumo::WriteBillPart(printer, &bill); }),
            "{\"totalSum\":100,\"spendBonus\":false,\"orderLen\":3,\"billNum\":\"7\",\"billDate\":\"\","
            "\"partnerFee\":0}");
}

TEST_F(RequestWriter, BillOfOneGoodListsIt) {
  lumo::Good good = {};
  lumo::BillBlock bill = {};
  bill.goods = &good;
  bill.goodCount = 1;
  EXPECT_THAT(
      Printed([&](lumo::JsonPrinter *printer) { return lumo::WriteBillPart(printer, &bill); }),
      ::testing::EndsWith(",\"partnerFee\":0,\"goodList\":{\"good\":[{\"title\":\"\",\"productCode\":\"\","
                          "\"positionCost\":0,\"orderNum\":0,\"cnt\":0}]}}"));
}

TEST_F(RequestWriter, AnySpendAmountButZeroAsksToSpend) {
  lumo::BillBlock bill = {};
  for (const int32_t amount : {1, -1, INT32_MAX}) {
    bill.spendAmount = amount;
    EXPECT_THAT(Printed([&](lumo::JsonPrinter *printer) { return lumo::WriteBillPart(printer, &bill); }),
                ::testing::HasSubstr(",\"spendBonus\":true,"));
  }
}

TEST_F(RequestWriter, GoodWithoutBonusesHasNoBonusKey) {
  lumo::Good good = {};
  good.cnt = 2;
  EXPECT_EQ(Printed([&](lumo::JsonPrinter *printer) { return lumo::WriteGoodPart(printer, &good); }),
            "{\"title\":\"\",\"productCode\":\"\",\"positionCost\":0,\"orderNum\":0,\"cnt\":2}");
}

TEST_F(RequestWriter, BonusWritesEarnedBeforeSpent) {
  const lumo::Bonus bonus = {1, 2, 3, lumo::ACCOUNT_DISCOUNT};
  EXPECT_EQ(Printed([&](lumo::JsonPrinter *printer) { return lumo::WriteBonusPart(printer, &bonus); }),
            "{\"earned\":2,\"spend\":1,\"organizerFee\":3,\"accountType\":\"DISCOUNT\"}");
}

TEST_F(RequestWriter, UnknownValuesAreWrittenAsTheEmptyText) {
  const lumo::Bonus bonus = {0, 0, 0, lumo::ACCOUNT_UNKNOWN};
  EXPECT_EQ(Printed([&](lumo::JsonPrinter *printer) { return lumo::WriteBonusPart(printer, &bonus); }),
            "{\"earned\":0,\"spend\":0,\"organizerFee\":0,\"accountType\":\"\"}");
  lumo::ActivationResultBlock result = {};
  result.activationSumType = result.referralSumType = result.giftSumType = lumo::ACCOUNT_UNKNOWN;
  EXPECT_EQ(
      Printed([&](lumo::JsonPrinter *printer) { return lumo::WriteActivationResultPart(printer, &result); }),
      "{\"activationSum\":0,\"activationSumType\":\"\",\"referralSum\":0,\"referralSumType\":\"\","
      "\"giftSum\":0,"
      "\"giftSumType\":\"\"}");
}

TEST_F(RequestWriter, ActivationWithoutAReferringCardHasNoKeyForIt) {
  lumo::ActivationBlock activation = {500, lumo::ACCOUNT_LOCAL, lumo::ACTIVATION_GIFT_CARD, nullptr};
  const auto print = [&](lumo::JsonPrinter *printer) {
    return lumo::WriteActivationPart(printer, &activation);
  };
  EXPECT_EQ(Printed(print), "{\"activationType\":\"GIFT_CARD\",\"amount\":500,\"type\":\"LOCAL\"}");
  activation.referParentCardNum = "";
  EXPECT_EQ(
      Printed(print),
      "{\"activationType\":\"GIFT_CARD\",\"amount\":500,\"type\":\"LOCAL\",\"referParentCardNum\":\"\"}");
}

TEST_F(RequestWriter, OnlyAPartialReturnWithPositionsListsThem) {
  lumo::CashBackGood goods[] = {{2, 300, 1}};
  lumo::CashBackBlock cash_back = {lumo::CASHBACK_FULL, "R", 1, goods};
  const auto print = [&](lumo::JsonPrinter *printer) { return lumo::WriteCashBackPart(printer, &cash_back); };
  EXPECT_EQ(Printed(print), "{\"requestId\":\"R\",\"cashBackType\":\"FULL\"}");
  cash_back.cashBackType = lumo::CASHBACK_SEQ;
  EXPECT_EQ(
      Printed(print),
      "{\"requestId\":\"R\",\"cashBackType\":\"SEQ\",\"cashBackGood\":[{\"pos\":2,\"sum\":300,\"cnt\":1}]}");
  cash_back.goodCount = 0;
  EXPECT_EQ(Printed(print), "{\"requestId\":\"R\",\"cashBackType\":\"SEQ\"}");
  cash_back.goodCount = 1;
  cash_back.cashBackType = lumo::CASHBACK_UNKNOWN;
  EXPECT_EQ(Printed(print), "{\"requestId\":\"R\",\"cashBackType\":\"\"}");
}

TEST_F(RequestWriter, RefusesToWriteNowhere) {
  FillRecord(record);
  folder.ClearTrace();
  EXPECT_EQ(lumo::CreateOperationRequest(record, nullptr), -305);
  EXPECT_EQ(TakeTrace(),
            "CreateOperationRequest\nERROR: Create operation request JSON printer init failed [1]");
}

TEST_F(RequestWriter, TenThousandGoodsAreWritten) {
  constexpr int32_t kGoods = 10000;
  record->request.type = lumo::REQUEST_PAYMENT;
  record->bill.goods =
      static_cast<lumo::Good *>(lumo::TransactionAllocate(record, sizeof(lumo::Good) * kGoods));
  record->bill.goodCount = kGoods;
  std::string expected = "\"goodList\":{\"good\":[";
  for (int32_t i = 0; i < kGoods; ++i) {
    record->bill.goods[i].orderNum = i;
    expected += std::string(i > 0 ? "," : "") +
                "{\"title\":\"\",\"productCode\":\"\",\"positionCost\":0,\"orderNum\":" + std::to_string(i) +
                ",\"cnt\":0}";
  }
  EXPECT_THAT(Request(), ::testing::EndsWith(expected + "]}}}}"));
}

using RequestWriterDeathTest = RequestWriter;

TEST_F(RequestWriterDeathTest, UnhandledTypeEndsTheProcess) {
  const auto request_of_type = [&](int32_t type) {
    test::PrintTraceAtExit(folder);
    record->request.type = static_cast<lumo::RequestType>(type);
    Request();
  };
  const char *const line = "ERROR: ASSERT IN transaction_request_json.* LINE .*: Unhandled request type!";
  EXPECT_EXIT(request_of_type(11), ::testing::ExitedWithCode(kExitMinusOne), line);
  EXPECT_EXIT(request_of_type(-1), ::testing::ExitedWithCode(kExitMinusOne), line);
}

}  // namespace
