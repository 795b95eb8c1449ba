// end_to_end/report_test.cpp: both reports over a log that holds every kind of record, and over damaged ones.
#include "end_to_end/register.h"

namespace {

using test::Success;
using testing::HasSubstr;
using testing::Not;

class Report : public test::Register {
 protected:
  void Start() { shop.Start("http://127.0.0.1:1/"); }
};

// A record of the second `second` of the day; the second is its number too.
std::string Line(const std::string &type, const std::string &second, const std::string &part = "") {
  return R"({"request":{"ver":"1.0","type":")" + type + R"(","requestId":"12345121205000)" + second +
         R"(","terminalId":"12345","requestDate":"2012-12-05T10:00:)" + second +
         R"(Z","employeeId":"7","cardNum":"9000000001","isOffline":false,"shiftId":""})" +
         (part.empty() ? "" : ",") + part + "}\n";
}

std::string Activation(const std::string &type, int amount) {
  return R"("activation":{"activationType":")" + type + R"(","amount":)" + std::to_string(amount) +
         R"(,"type":"GLOBAL"},"activationResult":{"activationSum":1500,"activationSumType":"GLOBAL",)"
         R"("referralSum":700,"referralSumType":"LOCAL","giftSum":900,"giftSumType":"DISCOUNT"})";
}

std::string PaidBill(int total, int earned, int spent, int discount) {
  return R"("bill":{"totalSum":)" + std::to_string(total) +
         R"(,"spendBonus":true,"orderLen":1,"billNum":"5","billDate":"2012-12-05T09:59:00Z","partnerFee":1000,)"
         R"("goodList":{"good":[{"title":"ЧАЙ","productCode":"008","positionCost":100,"orderNum":1,"cnt":1,)"
         R"("bonus":[{"earned":)" +
         std::to_string(earned) + R"(,"spend":)" + std::to_string(spent) +
         R"(,"organizerFee":1,"accountType":"GLOBAL"},)"
         R"({"earned":20,"spend":5,"organizerFee":1,"accountType":"LOCAL"},)"
         R"({"earned":7777,"spend":)" +
         std::to_string(discount) + R"(,"organizerFee":1,"accountType":"DISCOUNT"}]}]}})";
}

std::string Confirm(const std::string &second, bool confirms) {
  return R"("paymentConfirm":{"requestId":"12345121205000)" + second + R"(","isConfirm":)" +
         (confirms ? "true" : "false") + "}";
}

const std::string kDay =
    Line("ACTIVATION", "01", Activation("SIMPLE_ACTIVATION", 2500)) +
    Line("ACTIVATION", "02", Activation("GIFT_CARD", 50000)) +
    Line("ACTIVATION", "03", Activation("REFER_A_FRIEND", 100)) +
    Line("PAYMENT", "04", PaidBill(10000, 180, 1995, 30)) +
    Line("PAYMENT", "05", PaidBill(20000, 380, 0, 0)) + Line("PAYMENT_CONFIRM", "06", Confirm("04", true)) +
    Line("PAYMENT_CONFIRM", "07", Confirm("05", false)) + Line("PAYMENT", "08", PaidBill(12345, 0, 0, 9)) +
    Line("PAYMENT_AND_CONFIRM", "09", PaidBill(500, 1000000, 100, 0)) +
    Line("DEPOSIT", "10", R"("deposit":{"amount":123456})") +
    Line("DEPOSIT", "11", R"("deposit":{"amount":-50})") + Line("CASHBACK", "12") + Line("LINK", "13") +
    Line("EXCHANGE", "14");

constexpr char kSummary[] =
    "ПОДТВЕРЖДЕННЫЕ ПЛАТЕЖИ:\n"
    "Кол-во: 2\n"
    "Начислено бнс:  10002.20\n"
    "Потрачено бнс:     21.05\n"
    "Скидка бнс:         0.30\n"
    "\n"
    "-----------------------\n"
    "ОТМЕНЕННЫЕ ПЛАТЕЖИ:\n"
    "Кол-во: 1\n"
    "Начислено бнс:      4.00\n"
    "Потрачено бнс:      0.05\n"
    "Скидка бнс:         0.00\n"
    "\n"
    "-----------------------\n"
    "НЕПОДТВЕРЖД. ПЛАТЕЖИ:\n"
    "Кол-во: 1\n"
    "Начислено бнс:      0.20\n"
    "Потрачено бнс:      0.05\n"
    "Скидка бнс:         0.09\n"
    "\n"
    "-----------------------\n"
    "ПОДАРОЧНЫЕ КАРТЫ:\n"
    "Кол-во: 1\n"
    "Сумма бнс:        500.00\n"
    "\n"
    "-----------------------\n"
    "ПРИВЕДИ ДРУГА:\n"
    "Кол-во: 1\n"
    "Сумма бнс:          7.00\n"
    "\n"
    "-----------------------\n"
    "АКТИВАЦИИ:\n"
    "Кол-во: 1\n"
    "Сумма бнс:         25.00\n"
    "\n"
    "-----------------------\n"
    "ДЕПОЗИТЫ:\n"
    "Кол-во: 2\n"
    "Сумма бнс:       1234.06\n"
    "\n"
    "-----------------------\n"
    "ВОЗВРАТЫ:\n"
    "Кол-во: 1\n"
    "Сумма бнс:          0.00\n"
    "\n"
    "-----------------------\n";

constexpr char kDetails[] =
    "АКТИВАЦИЯ\n"
    "    1234512120500001\n"
    "2012-12-05T10:00:01Z\n"
    "Сумма: 15.00\n"
    "------------------------\n"
    "ПОДАРОЧНАЯ КАРТА\n"
    "    1234512120500002\n"
    "2012-12-05T10:00:02Z\n"
    "Сумма: 9.00\n"
    "------------------------\n"
    "ПРИВЕДИ ДРУГА\n"
    "    1234512120500003\n"
    "2012-12-05T10:00:03Z\n"
    "Сумма: 7.00\n"
    "------------------------\n"
    "ПЛАТЕЖ\n"
    "    1234512120500004\n"
    "2012-12-05T10:00:04Z\n"
    "Сумма: 100.00\n"
    "Потрачено бнс:     20.00\n"
    "Начислено бнс:      2.00\n"
    "Скидка бнс:      0.30\n"
    "------------------------\n"
    "ПЛАТЕЖ\n"
    "    1234512120500005\n"
    "2012-12-05T10:00:05Z\n"
    "Сумма: 200.00\n"
    "Потрачено бнс:      0.05\n"
    "Начислено бнс:      4.00\n"
    "Скидка бнс:      0.00\n"
    "------------------------\n"
    "ПОДТВЕРЖДЕНИЕ ПЛАТЕЖА\n"
    "    1234512120500006\n"
    "2012-12-05T10:00:06Z\n"
    "------------------------\n"
    "ОТМЕНА ПЛАТЕЖА\n"
    "    1234512120500007\n"
    "2012-12-05T10:00:07Z\n"
    "------------------------\n"
    "ПЛАТЕЖ\n"
    "    1234512120500008\n"
    "2012-12-05T10:00:08Z\n"
    "Сумма: 123.45\n"
    "Потрачено бнс:      0.05\n"
    "Начислено бнс:      0.20\n"
    "Скидка бнс:      0.09\n"
    "------------------------\n"
    "ПЛАТЕЖ И ПОДТВЕРЖДЕНИЕ\n"
    "    1234512120500009\n"
    "2012-12-05T10:00:09Z\n"
    "Сумма: 5.00\n"
    "Потрачено бнс:      1.05\n"
    "Начислено бнс:  10000.20\n"
    "Скидка бнс:      0.00\n"
    "------------------------\n"
    "ДЕПОЗИТ\n"
    "    1234512120500010\n"
    "2012-12-05T10:00:10Z\n"
    "Зачислено бнс:   1234.56\n"
    "------------------------\n"
    "ДЕПОЗИТ\n"
    "    1234512120500011\n"
    "2012-12-05T10:00:11Z\n"
    "Зачислено бнс:      -.50\n"
    "------------------------\n"
    "ВОЗВРАТ\n"
    "    1234512120500012\n"
    "2012-12-05T10:00:12Z\n"
    "Зачислено бнс:      0.00\n"
    "------------------------\n";

TEST_F(Report, SumsUpADay) {
  Start();
  shop.Write("LOG", kDay);
  EXPECT_EQ(shop.GenerateSummaryReport("2012-12-05T00:00:00Z", "2012-12-06T00:00:00Z"),
            static_cast<int>(sizeof kSummary - 1));
  EXPECT_STREQ(shop.GetReportPtr(), kSummary);
  EXPECT_THAT(shop.Trace(), HasSubstr("WARNING: Unsupported request type 6\n"));
  EXPECT_THAT(shop.Trace(), HasSubstr("WARNING: Unsupported request type 7\n"));
  EXPECT_EQ(shop.Read("LOG"), kDay);
}

TEST_F(Report, ListsADay) {
  Start();
  shop.Write("LOG", kDay);
  EXPECT_EQ(shop.GenerateReport("2012-12-05T00:00:00Z", "2012-12-06T00:00:00Z"),
            static_cast<int>(sizeof kDetails - 1));
  EXPECT_STREQ(shop.GetReportPtr(), kDetails);
}

TEST_F(Report, LeavesBothBoundsOut) {
  Start();
  shop.Write("LOG", kDay);
  EXPECT_GT(shop.GenerateReport("2012-12-05T10:00:09Z", "2012-12-05T10:00:11Z"), 0);
  EXPECT_STREQ(shop.GetReportPtr(),
               "ДЕПОЗИТ\n"
               "    1234512120500010\n"
               "2012-12-05T10:00:10Z\n"
               "Зачислено бнс:   1234.56\n"
               "------------------------\n");
}

TEST_F(Report, WithoutOrderedBoundsLeavesThePreviousOne) {
  Start();
  EXPECT_EQ(shop.GetReportPtr(), nullptr);
  EXPECT_EQ(shop.GenerateReport("b", "a"), -701);
  EXPECT_EQ(shop.GetReportPtr(), nullptr);
  shop.Write("LOG", kDay);
  ASSERT_GT(shop.GenerateReport("2012-12-05T10:00:09Z", "2012-12-05T10:00:11Z"), 0);
  const std::string previous = shop.GetReportPtr();
  shop.ClearTrace();
  EXPECT_EQ(shop.GenerateReport("2012-12-05", "2012-12-05"), -701);
  EXPECT_EQ(shop.GenerateSummaryReport("2012-12-06", "2012-12-05"), -701);
  EXPECT_EQ(shop.GenerateSummaryReport("2012", nullptr), -701);
  EXPECT_EQ(shop.GenerateSummaryReport(nullptr, nullptr), -701);
  EXPECT_EQ(shop.GetReportPtr(), previous);
  EXPECT_EQ(shop.Trace(), "");
}

TEST_F(Report, OfAnythingFromTheBeginningHasANullBound) {
  Start();
  shop.Write("LOG", kDay);
  EXPECT_EQ(shop.GenerateSummaryReport(nullptr, "9"), static_cast<int>(sizeof kSummary - 1));
  EXPECT_STREQ(shop.GetReportPtr(), kSummary);
}

TEST_F(Report, OfNothingIsEmpty) {
  Start();
  EXPECT_EQ(shop.GenerateSummaryReport("1", "3"), 0);
  EXPECT_STREQ(shop.GetReportPtr(), "");
  shop.Write("LOG", "");
  EXPECT_EQ(shop.GenerateReport("1", "3"), 0);
  shop.Write("LOG", kDay);
  EXPECT_EQ(shop.GenerateReport("1", "2"), 0);
  EXPECT_STREQ(shop.GetReportPtr(), "");
  EXPECT_THAT(shop.Trace(), HasSubstr("ERROR: Previous report resources not free. Deleting.\n"));
}

// Lines that somebody damaged, a blank one, one of 100,000 characters, and a last one without its line feed.
TEST_F(Report, PassesOverLinesThatAreNoRecords) {
  Start();
  shop.Write("LOG", "}\n\n[]\n{\"request\":7}\n" + Line("ACTIVATION", "20", Activation("GIFT", 1)) +
                        std::string(100000, 'x') + "\n" + Line("DEPOSIT", "10", R"("deposit":{"amount":5})") +
                        Line("DEPOSIT", "11", R"("deposit":{"amount":7})").substr(0, 100));
  EXPECT_GT(shop.GenerateSummaryReport("2012", "2013"), 0);
  EXPECT_STREQ(shop.GetReportPtr(),
               "ДЕПОЗИТЫ:\n"
               "Кол-во: 1\n"
               "Сумма бнс:          0.05\n"
               "\n"
               "-----------------------\n");
  EXPECT_THAT(shop.Trace(), HasSubstr("ERROR: LoadLogRecord returned -303\n"));
  EXPECT_THAT(shop.Trace(), HasSubstr("WARNING: Unsupported activation type 3\n"));
}

// A journal full of numbers that do not fit.
TEST_F(Report, WrapsSumsBeyondTheRange) {
  Start();
  const std::string most = R"("deposit":{"amount":99999999999999999999})";
  shop.Write("LOG", Line("DEPOSIT", "10", most) + Line("DEPOSIT", "11", most));
  EXPECT_GT(shop.GenerateSummaryReport("2012", "2013"), 0);
  EXPECT_STREQ(shop.GetReportPtr(),
               "ДЕПОЗИТЫ:\n"
               "Кол-во: 2\n"
               "Сумма бнс:          0.-2\n"
               "\n"
               "-----------------------\n");
}

// The report of what the register itself did.
TEST_F(Report, TellsOfTheOperationsOfThisRegister) {
  Open({Success(
            "putPaymentResponse",
            R"("bill":{"totalSum":15000,"goodList":{"good":[{"title":"A","bonus":[{"earned":150,"spend":0,)"
            R"("organizerFee":0,"accountType":"GLOBAL"}]}]}})"),
        Success("putPaymentConfirmResponse", "", test::kSecondRrn)});
  ASSERT_EQ(shop.CreateAmountBill(15000, "BILL.JSN"), 0);
  ASSERT_EQ(shop.PaymentProc(0, "BILL.JSN"), 0);
  ASSERT_EQ(shop.PaymentConfirmProc("1234512120500008"), 0);
  EXPECT_GT(shop.GenerateSummaryReport("2012-12-05T09:59:59Z", "2012-12-05T10:00:01Z"), 0);
  EXPECT_STREQ(shop.GetReportPtr(),
               "ПОДТВЕРЖДЕННЫЕ ПЛАТЕЖИ:\n"
               "Кол-во: 1\n"
               "Начислено бнс:      1.50\n"
               "Потрачено бнс:      0.00\n"
               "Скидка бнс:         0.00\n"
               "\n"
               "-----------------------\n");
  EXPECT_GT(shop.GenerateReport("2012-12-05T09:59:59Z", "2012-12-05T10:00:01Z"), 0);
  EXPECT_STREQ(shop.GetReportPtr(),
               "ПЛАТЕЖ\n"
               "    1234512120500008\n"
               "2012-12-05T10:00:00Z\n"
               "Сумма: 150.00\n"
               "Потрачено бнс:      0.00\n"
               "Начислено бнс:      1.50\n"
               "Скидка бнс:      0.00\n"
               "------------------------\n"
               "ПОДТВЕРЖДЕНИЕ ПЛАТЕЖА\n"
               "    1234512120500009\n"
               "2012-12-05T10:00:00Z\n"
               "------------------------\n");
}

}  // namespace
