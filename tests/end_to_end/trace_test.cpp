// end_to_end/trace_test.cpp: the whole trace of a payment and of an offline payment, line by line.
#include "end_to_end/register.h"

namespace {

using test::State;

class Trace : public test::Register {
 protected:
  std::string port() const { return std::to_string(server->port()); }
};

const std::string kStateReload =
    "LoadState\n"
    "parseJsonFile [STATE]\n"
    "No BOM found 7B 22 72\n"
    "ERROR: SetFilePointer function failed with error 0\n";

const std::string kCount =
    "CountBonuses\n"
    "Good has 2 bonuses\n"
    "Good has 0 bonuses\n";

constexpr char kTracedBill[] =
    R"({"totalSum":10000,"orderLen":2,"billNum":"77","billDate":"2012-12-05T09:59:00Z","partnerFee":500,)"
    R"("goodList":{"good":[)"
    R"({"title":"Хлеб","productCode":"001","positionCost":4000,"orderNum":1,"cnt":1},)"
    R"({"title":"Молоко","productCode":"002","positionCost":6000,"orderNum":2,"cnt":3}]}})";

constexpr char kTracedBillLines[] =
    " totalSum [10000]\n"
    " orderLen [2]\n"
    " billNum [77]\n"
    " billDate [2012-12-05T09:59:00Z]\n"
    " partnerFee [500]\n"
    " title [Хлеб]\n"
    " productCode [001]\n"
    " positionCost [4000]\n"
    " orderNum [1]\n"
    " cnt [1]\n"
    " title [Молоко]\n"
    " productCode [002]\n"
    " positionCost [6000]\n"
    " orderNum [2]\n"
    " cnt [3]\n";

// 500 bytes, and the rest of the answer: it is traced in the pieces in which it is received.
constexpr char kAnswerBegin[] =
    R"({"putPaymentResponse":{"response":{"ver":"1.0","requestId":"1234512120500008","responseId":"r100000",)"
    R"("responseDate":"2012-12-05T10:00:01Z","requestState":"SUCCESS","requestStateCode":"OK","message":"Ok",)"
    R"("isNeedUpdate":true},"bill":{"totalSum":10000,"billNum":"77","goodList":{"good":[)"
    R"({"title":"A","bonus":[{"earned":120,"spend":1500,"organizerFee":11,"accountType":"LOCAL"},)"
    R"({"earned":80,"spend":500,"organizerFee":9,"accountType":"GLOBAL"}]},{"title":"B","productCode":"002",)"
    R"("positionCost":6000,"orde)";
constexpr char kAnswerEnd[] = R"(rNum":2,"cnt":3}]}}}})";
static_assert(sizeof kAnswerBegin == 501);

TEST_F(Trace, OfADayWithAPayment) {
  server = std::make_unique<test::ScriptedServer>(std::string(kAnswerBegin) + kAnswerEnd);
  address = server->address();
  shop.Write(
      "CONFIG",
      R"({"terminalId":"12345","protocolVersion":"1.0","serverAddr":")" + address +
          R"(","serverAltAddr":"http://127.0.0.1:1/","retailNetworkName":"Сеть","offlinePath":"a",)"
          R"("logPath":"b","receiptPath":"c","timeout":5,"offlineMode":1,"shiftMode":1,)"
          R"("localBonusOffline":3,"globalBonusOffline":2,"orgFeeOffline":4,"logSize":1000,)"
          R"("receiptHeader":"Магазин","receiptFooter":"Спасибо","sslMode":0,"sslKey":"k","colour":"red"})");
  shop.Write("STATE", R"({"reqId":"1234512120500007","offline":0,"shiftState":0,"update":0,"x":{}})");
  shop.Write("BILL.JSN", kTracedBill);

  ASSERT_EQ(shop.LUMOInit(), 0);
  ASSERT_EQ(shop.OpenShift("42"), 0);
  ASSERT_EQ(shop.CreateTransaction("9000000001", "7"), 0);
  ASSERT_EQ(shop.PaymentProc(2000, "BILL.JSN"), 0);
  shop.getResponseState();
  shop.getResponseStateCode();
  shop.getResponseMessage();
  shop.getRRN();
  shop.GetEarnBonusAmount();
  shop.getReceiptHeaderPtr();
  shop.getReceiptFooterPtr();
  shop.getReceiptBodyPtr();
  shop.getReceiptBody(nullptr);
  ASSERT_EQ(shop.CloseTransaction(), 0);
  ASSERT_EQ(shop.CloseShift(), 0);
  ASSERT_EQ(shop.LUMOClean(), 0);

  const std::string request =
      "POST /ws/payment\nHost: 127.0.0.1:" + port() +
      "\nContent-Type: application/json-soap;charset=UTF-8\nContent-Length: 539\n\n"
      R"({"putPaymentRequest":{"request":{"ver":"1.0","type":"PAYMENT","requestId":"1234512120500008",)"
      R"("terminalId":"12345","requestDate":"2012-12-05T10:00:00Z","employeeId":"7","cardNum":"9000000001",)"
      R"("isOffline":false,"shiftId":"42"},"bill":{"totalSum":10000,"spendBonus":true,"orderLen":2,)"
      R"("billNum":"77","billDate":"2012-12-05T09:59:00Z","partnerFee":500,"goodList":{"good":[)"
      R"({"title":"Хлеб","productCode":"001","positionCost":4000,"orderNum":1,"cnt":1},)"
      R"({"title":"Молоко","productCode":"002","positionCost":6000,"orderNum":2,"cnt":3}]}}}})"
      "\n";
  EXPECT_EQ(shop.Trace(),
            "LUMOInit()\n"
            "LoadNewConfig\n"
            "parseJsonFile [CONFIG.JSN]\n"
            "ERROR: CreateFile function failed with error 2\n"
            "ERROR: parserJsonFile error [-307]\n"
            "LoadConfig\n"
            "parseJsonFile [CONFIG]\n"
            "No BOM found 7B 22 74\n"
            "ERROR: SetFilePointer function failed with error 0\n"
            "Terminal Id [12345]\n"
            "Protocol Version [1.0]\n"
            "Server Address [" +
                address +
                "]\n"
                "Server Alt Address [http://127.0.0.1:1/]\n"
                "Retail Network Name [Сеть]\n"
                "Offline Path [a]\n"
                "Log Path [b]\n"
                "Receipt Path [c]\n"
                "Timeout [5]\n"
                "Offline Mode [1]\n"
                "Shift Mode [1]\n"
                "Local Bonus Offline [3]\n"
                "Global Bonus Offline [2]\n"
                "Org Fee Offline [4]\n"
                "Log Size [1000]\n"
                "Receipt Header [Магазин]\n"
                "Receipt Footer [Спасибо]\n"
                "SSL Mode [0]\n"
                "SSL Key File [k]\n"
                "WARNING: Unknown config option [colour]\n" +
                kStateReload +
                "WARNING: Unsupported state element [x]\n"
                "OpenShift \n" +
                kStateReload +
                "WARNING: Unsupported state element [x]\n"
                "SaveState\n"
                "SaveState\n"
                "SaveState\n"
                "CreateTransaction [9000000001] [7]\n" +
                kStateReload + kStateReload +
                "PaymentProc(2000, BILL.JSN)\n"
                "PaymentProcess\n"
                "FillRequest(PAYMENT)\n"
                "GenerateRRN: 1234512120500007\n"
                "Last RRN: 1234512120500007\n"
                "Scanf result: 2 121205 7\n"
                "Parse old RRN [121205][7]\n"
                "Next RRN generation [1234512120500008]\n"
                "SaveState\n"
                "BillParse\n"
                "parseJsonFile [BILL.JSN]\n"
                "No BOM found 7B 22 74\n"
                "ERROR: SetFilePointer function failed with error 0\n" +
                kTracedBillLines +
                "TransactionProcess [PAYMENT]\n"
                "TransactionProcessJson\n"
                "Connecting to 127.0.0.1:" +
                port() +
                "//ws...\n"
                "Connection established!\n"
                "CreateOperationRequest\n"
                "Sending buffer:\n" +
                request +
                "\n"
                "Receiving \n" +
                kAnswerBegin + "\n" + kAnswerEnd +
                "\n"
                "ParseOperationResponse\n"
                "response.ver = 1.0\n"
                "response.requestId = 1234512120500008\n"
                "response.responseId = r100000\n"
                "response.responseDate = 2012-12-05T10:00:01Z\n"
                "response.state = SUCCESS\n"
                "response.stateCode = OK\n"
                "response.message = Ok\n"
                "response.needUpdate = 1\n"
                " totalSum [10000]\n"
                " billNum [77]\n"
                " title [A]\n"
                "  earned [120]\n"
                "  spend [1500]\n"
                "  organizerFee [11]\n"
                "  accountType [1]\n"
                "  earned [80]\n"
                "  spend [500]\n"
                "  organizerFee [9]\n"
                "  accountType [0]\n"
                " title [B]\n"
                " productCode [002]\n"
                " positionCost [6000]\n"
                " orderNum [2]\n"
                " cnt [3]\n"
                "Disconnect\n" +
                kStateReload +
                "SaveState\n"
                "SaveState\n"
                "ERROR: CreateFile function failed with error 2\n"
                "ERROR: SetFilePointer function failed with error 0\n"
                "BillModify\n" +
                kCount +
                "earnedLocal = 120\n"
                "earnedGlobal = 80\n"
                "earnedDiscount = 0\n"
                "spendLocal = 1500\n"
                "spendGlobal = 500\n"
                "spendDiscount = 0\n"
                "Bill:\n"
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
                "Вознаграждение \n"
                "организатора:\n"
                "               0.20 бнс.\n"
                "\n"
                "getResponseState()\n"
                "getResponseStateCode()\n"
                "getResponseMessage()\n"
                "getRRN()\n" +
                kCount +
                "GetTransReceiptHeader\n"
                "GetTransReceiptFooter\n"
                "GetTransReceiptBody\n"
                "GetTransactionReceiptSize\n"
                "CloseTransaction()\n"
                "CloseShift\n" +
                kStateReload +
                "SaveState\n"
                "SaveState\n"
                "LUMOClean()\n");
  EXPECT_EQ(shop.Read("STATE"),
            R"({"reqId":"1234512120500008","shiftId":"42","shiftOpenDate":"2012-12-05T10:00:00Z",)"
            R"("shiftCloseDate":"2012-12-05T10:00:00Z","offline":0,"shiftState":0,"update":1})");
}

// Neither address answers: the main one is no address of this protocol, nobody listens at the other.
TEST_F(Trace, OfAPaymentWithoutTheServer) {
  const std::string port = std::to_string(test::UnusedPort());
  shop.Start("loyalty.example",
             R"("serverAltAddr":"http://127.0.0.1:)" + port +
                 R"(/ws/","offlineMode":1,"localBonusOffline":3,"globalBonusOffline":2,"orgFeeOffline":4)");
  shop.Write("BILL.JSN", kTracedBill);
  ASSERT_EQ(shop.CreateTransaction("9000000001", "7"), 0);
  ASSERT_EQ(shop.PaymentAndConfirmProc(2000, "BILL.JSN"), 0);
  EXPECT_EQ(shop.Trace(), "CreateTransaction [9000000001] [7]\n" + kStateReload +
                              "ERROR: trans_strcpy src == NULL\n"
                              "PaymentAndConfirmProc(2000, BILL.JSN)\n"
                              "PaymentAndConfirmProcess spend [2000] bill [BILL.JSN]\n"
                              "FillRequest(PAYMENT_AND_CONFIRM)\n"
                              "GenerateRRN: 1234512120500007\n"
                              "Last RRN: 1234512120500007\n"
                              "Scanf result: 2 121205 7\n"
                              "Parse old RRN [121205][7]\n"
                              "Next RRN generation [1234512120500008]\n"
                              "SaveState\n"
                              "BillParse\n"
                              "parseJsonFile [BILL.JSN]\n"
                              "No BOM found 7B 22 74\n"
                              "ERROR: SetFilePointer function failed with error 0\n" +
                              kTracedBillLines +
                              "TransactionProcess [PAYMENT_AND_CONFIRM]\n"
                              "TransactionProcessJson\n"
                              "ERROR: ParseAddress res[-504]\n"
                              "Connecting to 127.0.0.1:" +
                              port +
                              "//ws...\n"
                              "ERROR: Connection Failed 10061\n" +
                              kStateReload +
                              "SaveState\n"
                              "PaymentProcessOffline()\n"
                              "ERROR: CreateFile function failed with error 2\n"
                              "ERROR: SetFilePointer function failed with error 0\n"
                              "ERROR: SetFilePointer function failed with error 0\n"
                              "BillModify\n"
                              "CountBonuses\n"
                              "Good has 2 bonuses\n"
                              "Good has 2 bonuses\n"
                              "earnedLocal = 300\n"
                              "earnedGlobal = 200\n"
                              "earnedDiscount = 0\n"
                              "spendLocal = 0\n"
                              "spendGlobal = 0\n"
                              "spendDiscount = 0\n"
                              "Bill:\n"
                              "******* ПОКУПКА ********\n"
                              "  Полагающиеся бонусы   \n"
                              "  будут перечислены в   \n"
                              "      Клуб Тавиро       \n"
                              "************************\n"
                              "        ОФФЛАЙН\n"
                              "************************\n"
                              "RRN: 1234512120500008\n"
                              "Сумма (нал.):\n"
                              "                  100.00\n"
                              "************************\n"
                              "Начислено всего:\n"
                              "               2.00 бнс.\n"
                              "Начислено всего\n"
                              "Сеть:\n"
                              "               5.00 бнс.\n"
                              "Вознаграждение \n"
                              "организатора:\n"
                              "               4.00 бнс.\n"
                              "\n");
  EXPECT_EQ(shop.Read("STATE"), State("1234512120500008", 1));
}

}  // namespace
