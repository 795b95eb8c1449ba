// end_to_end/payment_test.cpp: a bill paid over a real socket, every byte that leaves the library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "end_to_end/shop.h"

namespace {

using test::Answer;
using test::Post;
using test::ScriptedServer;
using test::Shop;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kTwoGoods[] =
    R"({"totalSum":10000,"orderLen":2,"billNum":"77","billDate":"2012-12-05T09:59:00Z","partnerFee":500,)"
    R"("goodList":{"good":[)"
    R"({"title":"Хлеб \"Бородинский\"","productCode":"001","positionCost":4000,"orderNum":1,"cnt":1},)"
    R"({"title":"Молоко","productCode":"002","positionCost":6000,"orderNum":2,"cnt":3}]}})";

constexpr char kRequest[] =
    R"({"putPaymentRequest":{"request":{"ver":"1.0","type":"PAYMENT","requestId":"1234512120500008",)"
    R"("terminalId":"12345","requestDate":"2012-12-05T10:00:00Z","employeeId":"7","cardNum":"9000000001",)"
    R"("isOffline":false,"shiftId":""},"bill":{"totalSum":10000,"spendBonus":true,"orderLen":2,"billNum":"77",)"
    R"("billDate":"2012-12-05T09:59:00Z","partnerFee":500,"goodList":{"good":[)"
    R"({"title":"Хлеб \"Бородинский\"","productCode":"001","positionCost":4000,"orderNum":1,"cnt":1},)"
    R"({"title":"Молоко","productCode":"002","positionCost":6000,"orderNum":2,"cnt":3}]}}}})";

constexpr char kAnswer[] =
    R"({"putPaymentResponse":{"response":{"ver":"1.0","requestId":"1234512120500008","responseId":"r1",)"
    R"("responseDate":"2012-12-05T10:00:01Z","requestState":"SUCCESS","requestStateCode":"OK","message":"Принято",)"
    R"("isNeedUpdate":true},"bill":{"totalSum":10000,"billNum":"77","orderLen":2,"billDate":"2012-12-05T09:59:00Z",)"
    R"("partnerFee":500,"goodList":{"good":[)"
    R"({"title":"Хлеб \"Бородинский\"","productCode":"001","positionCost":4000,"orderNum":1,"cnt":1,)"
    R"("bonus":[{"earned":120,"spend":1500,"organizerFee":11,"accountType":"LOCAL"},)"
    R"({"earned":80,"spend":500,"organizerFee":9,"accountType":"GLOBAL"}]},)"
    R"({"title":"Молоко","productCode":"002","positionCost":6000,"orderNum":2,"cnt":3,)"
    R"("bonus":[{"earned":30,"spend":0,"organizerFee":0,"accountType":"DISCOUNT"}]}]}}}})";

// The bill as the library writes it: its own member order, the server's bonuses.
constexpr char kPaidBill[] =
    R"({"totalSum":10000,"spendBonus":true,"orderLen":2,"billNum":"77","billDate":"2012-12-05T09:59:00Z",)"
    R"("partnerFee":500,"goodList":{"good":[)"
    R"({"title":"Хлеб \"Бородинский\"","productCode":"001","positionCost":4000,"orderNum":1,"cnt":1,)"
    R"("bonus":[{"earned":120,"spend":1500,"organizerFee":11,"accountType":"LOCAL"},)"
    R"({"earned":80,"spend":500,"organizerFee":9,"accountType":"GLOBAL"}]},)"
    R"({"title":"Молоко","productCode":"002","positionCost":6000,"orderNum":2,"cnt":3,)"
    R"("bonus":[{"earned":30,"spend":0,"organizerFee":0,"accountType":"DISCOUNT"}]}]}})";

constexpr char kHeader[] =
    "Магазин\n"
    "2012/12/05      10:00:00\n"
    "Терминал          12345\n"
    "     *** КАРТА ***\n"
    "    9000000001\n";

constexpr char kBody[] =
    "******* ПОКУПКА ********\n"
    "  Полагающиеся бонусы   \n"
    "  будут перечислены в   \n"
    "      Клуб Тавиро       \n"
    "************************\n"
    "RRN: 1234512120500008\n"
    "Сумма (нал.):\n"
    "                   80.00\n"
    "Сумма (бнс.):\n"
    "                   20.00\n"
    "************************\n"
    "Начислено всего:\n"
    "               0.80 бнс.\n"
    "Начислено всего\n"
    "Сеть:\n"
    "               2.00 бнс.\n"
    "Начислено скид бон в\n"
    "Сеть:\n"
    "               0.30 ски.\n"
    "Вознаграждение \n"
    "организатора:\n"
    "               0.20 бнс.\n";

TEST(Payment, LeavesExactlyTheseBytesOnTheWireOnPaperAndOnDisk) {
  Shop shop;
  ScriptedServer server{std::string(kAnswer)};
  shop.Start(server.address());
  shop.Write("BILL.JSN", kTwoGoods);

  ASSERT_EQ(shop.CreateTransaction("9000000001", "7"), 0);
  EXPECT_EQ(shop.PaymentProc(2000, "BILL.JSN"), 0);

  EXPECT_THAT(server.requests(), ElementsAre(Post(server, "payment", kRequest)));
  EXPECT_STREQ(shop.getReceiptHeaderPtr(), kHeader);
  EXPECT_STREQ(shop.getReceiptBodyPtr(), kBody);
  EXPECT_STREQ(shop.getReceiptFooterPtr(), "Спасибо\n");
  EXPECT_STREQ(shop.getRRN(), "1234512120500008");
  EXPECT_STREQ(shop.getResponseState(), "SUCCESS");
  EXPECT_STREQ(shop.getResponseStateCode(), "OK");
  EXPECT_STREQ(shop.getResponseMessage(), "");
  EXPECT_EQ(shop.GetEarnBonusAmount(), 200);
  EXPECT_EQ(shop.GetSpendBonusAmount(), 2000);
  EXPECT_EQ(shop.GetDiscountAmount(), 0);

  EXPECT_EQ(shop.Read("BILL.JSN"), kPaidBill);
  EXPECT_EQ(
      shop.Read("LOG"),
      R"({"request":{"ver":"1.0","type":"PAYMENT","requestId":"1234512120500008","terminalId":"12345",)"
      R"("requestDate":"2012-12-05T10:00:00Z","employeeId":"7","cardNum":"9000000001","isOffline":false,)"
      R"("shiftId":""},"bill":)" +
          std::string(kPaidBill) + "}\n");
  EXPECT_EQ(shop.Read("STATE"), R"({"reqId":"1234512120500008","offline":0,"shiftState":0,"update":1})");
  EXPECT_FALSE(shop.Exists("OFFLINE"));
  EXPECT_EQ(shop.CloseTransaction(), 0);
}

TEST(Payment, TheBodyIsCopiedWithItsTerminator) {
  Shop shop;
  ScriptedServer server{std::string(kAnswer)};
  shop.Start(server.address());
  shop.Write("BILL.JSN", kTwoGoods);
  ASSERT_EQ(shop.CreateTransaction("9000000001", "7"), 0);
  ASSERT_EQ(shop.PaymentProc(2000, "BILL.JSN"), 0);
  ASSERT_EQ(shop.getReceiptBody(nullptr), static_cast<int>(sizeof kBody));
  std::string copy(sizeof kBody + 1, '#');
  EXPECT_EQ(shop.getReceiptBody(copy.data()), static_cast<int>(sizeof kBody));
  EXPECT_EQ(copy, std::string(kBody, sizeof kBody) + "#");
}

}  // namespace
