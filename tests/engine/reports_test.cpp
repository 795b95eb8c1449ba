// engine/reports_test.cpp: the summary and the detailed report over the transaction log.
#include "engine/reports.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "lumo.h"
#include "support/shop.h"

namespace {

using testing::HasSubstr;
using testing::Not;

const char kFrom[] = "2012-12-05T00:00:00Z";
const char kTo[] = "2012-12-06T00:00:00Z";
const char kNoon[] = "2012-12-05T12:00:00Z";

const char kSummaryDashes[] = "-----------------------\n";
const char kDetailDashes[] = "------------------------\n";

std::string Request(const std::string &type, const std::string &rrn, const std::string &date = kNoon) {
  return R"("request":{"type":")" + type + R"(","requestId":")" + rrn + R"(","requestDate":")" + date + "\"}";
}

std::string Bonus(const std::string &account, int32_t spend, int32_t earned) {
  return R"({"earned":)" + std::to_string(earned) + R"(,"spend":)" + std::to_string(spend) +
         R"(,"organizerFee":0,"accountType":")" + account + "\"}";
}

// A payment whose bonuses, `earned` and `spent`, are spread over the global and the local account.
std::string Bill(int32_t total, int32_t earned, int32_t spent, int32_t discount) {
  return R"("bill":{"totalSum":)" + std::to_string(total) + R"(,"goodList":{"good":[{"title":"a","bonus":[)" +
         Bonus("GLOBAL", spent - 1, 2) + "," + Bonus("DISCOUNT", discount, 77777) +
         R"(]},{"title":"b","bonus":[)" + Bonus("LOCAL", 1, earned - 2) + "," + Bonus("OTHER", 9999, 9999) +
         "]}]}}";
}

std::string PaymentRecord(const std::string &rrn, int32_t earned = 200, int32_t spent = 300,
                          int32_t discount = 400, const std::string &date = kNoon) {
  return "{" + Request("PAYMENT", rrn, date) + "," + Bill(10000, earned, spent, discount) + "}\n";
}

std::string PaymentAndConfirmRecord(const std::string &rrn, const std::string &date = kNoon) {
  return "{" + Request("PAYMENT_AND_CONFIRM", rrn, date) + "," + Bill(10000, 200, 300, 400) + "}\n";
}

std::string ConfirmRecord(const std::string &rrn, bool confirms, const std::string &date = kNoon) {
  return "{" + Request("PAYMENT_CONFIRM", "TERM012120500099", date) + R"(,"paymentConfirm":{"requestId":")" +
         rrn + R"(","isConfirm":)" + (confirms ? "true" : "false") + "}}\n";
}

std::string ActivationRecord(const std::string &type, int32_t amount, const std::string &date = kNoon) {
  return "{" + Request("ACTIVATION", "TERM012120500003", date) + R"(,"activation":{"activationType":")" +
         type + R"(","amount":)" + std::to_string(amount) +
         R"(,"type":"GLOBAL"},"activationResult":{"activationSum":1101,"referralSum":2202,"giftSum":3303}})" +
         "\n";
}

std::string DepositRecord(int32_t amount, const std::string &date = kNoon) {
  return "{" + Request("DEPOSIT", "TERM012120500004", date) + R"(,"deposit":{"amount":)" +
         std::to_string(amount) + "}}\n";
}

std::string CashBackRecord(const std::string &parts = "", const std::string &date = kNoon) {
  return "{" + Request("CASHBACK", "TERM012120500005", date) + parts + "}\n";
}

class Reports : public test::Shop {
 protected:
  Reports() { OpenShop(); }

  std::string Summary(const std::string &log, const char *from = kFrom, const char *to = kTo) {
    folder.Write("LOG", log);
    folder.ClearTrace();
    const int length = lumo::GenerateSummaryReport(from, to);
    const std::string text = lumo::GetReportPtr();
    EXPECT_EQ(length, static_cast<int>(text.size()));
    return text;
  }
  std::string Detail(const std::string &log, const char *from = kFrom, const char *to = kTo) {
    folder.Write("LOG", log);
    folder.ClearTrace();
    const int length = lumo::GenerateReport(from, to);
    const std::string text = lumo::GetReportPtr();
    EXPECT_EQ(length, static_cast<int>(text.size()));
    return text;
  }
  // The trace without the lines of a record's loading and counting, nor those of a record without settings.
  std::string ReportTrace() const {
    std::istringstream trace(folder.Trace());
    std::string lines;
    for (std::string line; std::getline(trace, line);) {
      for (const char *start :
           {"Get", "GenerateReport", "ERROR: Previous", "ERROR: LoadLogRecord", "ERROR: Payment",
            "WARNING: Unsupported request type", "WARNING: Unsupported activation type", "Begin", "-Stack",
            "Payment ", "Gift", "Refer", "Activation ", "Deposit ", "Cashback ", "Returning"}) {
        if (line.rfind(start, 0) == 0) lines += line + "\n";
      }
    }
    return lines;
  }
};

std::string PaymentBlock(const std::string &title, int count, const char *earned, const char *spent,
                         const char *discount) {
  const auto right = [](const std::string &text, size_t width) {
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
  };
  return title + "\nКол-во: " + std::to_string(count) + "\nНачислено бнс:" + right(earned, 10) +
         "\nПотрачено бнс:" + right(spent, 10) + "\nСкидка бнс:" + right(discount, 13) + "\n\n" +
         kSummaryDashes;
}

// ---- Bounds ----

struct BoundsCase : test::NamedCase {
  const char *from;
  const char *to;
  bool good;
};

const BoundsCase kBounds[] = {
    {"Equal", kFrom, kFrom, false},
    {"Reversed", kTo, kFrom, false},
    {"BothNull", nullptr, nullptr, false},
    {"NullAndEmpty", nullptr, "", false},
    {"EmptyAndNull", "", nullptr, false},
    {"NullEnd", kFrom, nullptr, false},
    {"NullStart", nullptr, kTo, true},
    {"ComparedAsBytesNotAsDates", "9", "A", true},
    {"PrefixIsLess", "2012", "2012-12", true},
    {"BytesOf128AndAboveAreGreater", "z", "я", true},
};

class ReportBounds : public Reports, public testing::WithParamInterface<BoundsCase> {};

TEST_P(ReportBounds, AreStrictlyInOrder) {
  for (int (*report)(const char *, const char *) : {lumo::GenerateSummaryReport, lumo::GenerateReport}) {
    ASSERT_NE(Summary(DepositRecord(100)), "");
    const std::string before = lumo::GetReportPtr();
    folder.Remove("LOG");
    folder.ClearTrace();
    if (GetParam().good) {
      EXPECT_EQ(report(GetParam().from, GetParam().to), 0);
      EXPECT_STREQ(lumo::GetReportPtr(), "");
    } else {
      EXPECT_EQ(report(GetParam().from, GetParam().to), -701);
      EXPECT_EQ(folder.Trace(), "");
      EXPECT_EQ(lumo::GetReportPtr(), before);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, ReportBounds, testing::ValuesIn(kBounds), test::CaseName());

TEST_F(Reports, BeforeTheFirstReportThereIsNoText) {
  EXPECT_EQ(lumo::GetReportPtr(), nullptr);
  EXPECT_EQ(lumo::GenerateReport(kTo, kFrom), -701);
  EXPECT_EQ(lumo::GetReportPtr(), nullptr);
}

TEST_F(Reports, WithoutALogTheReportIsEmpty) {
  EXPECT_EQ(lumo::GenerateSummaryReport(kFrom, kTo), 0);
  EXPECT_STREQ(lumo::GetReportPtr(), "");
  EXPECT_EQ(folder.Trace(),
            "GetLogRecords()\n"
            "ERROR: CreateFile function failed with error 2\n"
            "Begin stack processing\n"
            "GetReceiptLength\n"
            "Returning Report Length 0\n");
}

TEST_F(Reports, WithoutALogTheDetailedReportIsEmpty) {
  EXPECT_EQ(lumo::GenerateReport(kFrom, kTo), 0);
  EXPECT_STREQ(lumo::GetReportPtr(), "");
  EXPECT_EQ(folder.Trace(),
            "GenerateReport\n"
            "GetLogRecords()\n"
            "ERROR: CreateFile function failed with error 2\n");
}

TEST_F(Reports, ANewReportReplacesTheOldOneAndSaysSo) {
  ASSERT_NE(Summary(DepositRecord(100)), "");
  EXPECT_EQ(Summary(""), "");
  EXPECT_EQ(folder.Trace(),
            "GetLogRecords()\n"
            "ERROR: Previous report resources not free. Deleting.\n"
            "Begin stack processing\n"
            "GetReceiptLength\n"
            "Returning Report Length 0\n");
  EXPECT_EQ(Detail(""), "");
  EXPECT_EQ(folder.Trace(),
            "GenerateReport\n"
            "GetLogRecords()\n"
            "ERROR: Previous report resources not free. Deleting.\n");
}

TEST_F(Reports, RecordsOnTheBoundsAreLeftOut) {
  const std::string log = DepositRecord(1, "2012-12-04T23:59:59Z") + DepositRecord(20, kFrom) +
                          DepositRecord(300, "2012-12-05T00:00:01Z") +
                          DepositRecord(4000, "2012-12-05T23:59:59Z") + DepositRecord(50000, kTo) +
                          DepositRecord(600000, "2012-12-06T00:00:01Z") + DepositRecord(7000000, "");
  EXPECT_EQ(Summary(log), std::string("ДЕПОЗИТЫ:\nКол-во: 2\nСумма бнс:         43.00\n\n") + kSummaryDashes);
  EXPECT_EQ(test::Count(Detail(log), "ДЕПОЗИТ\n"), 2U);
}

// ---- The summary ----

TEST_F(Reports, EveryCategoryInItsOrder) {
  EXPECT_EQ(Summary(CashBackRecord(R"(,"cashBackResult":{"returnedSum":150})") + CashBackRecord() +
                    DepositRecord(1250) + DepositRecord(50) + ActivationRecord("SIMPLE_ACTIVATION", 100) +
                    ActivationRecord("SIMPLE_ACTIVATION", 23) + ActivationRecord("REFER_A_FRIEND", 5) +
                    ActivationRecord("GIFT_CARD", 7) + PaymentRecord("C") + PaymentRecord("B", 2, 3, 4) +
                    ConfirmRecord("B", false) + PaymentRecord("A", 1234567, 7, 100000) +
                    ConfirmRecord("A", true) + PaymentAndConfirmRecord("D")),
            "ПОДТВЕРЖДЕННЫЕ ПЛАТЕЖИ:\n"
            "Кол-во: 2\n"
            "Начислено бнс:  12347.67\n"
            "Потрачено бнс:      3.07\n"
            "Скидка бнс:      1004.00\n\n"
            "-----------------------\n"
            "ОТМЕНЕННЫЕ ПЛАТЕЖИ:\n"
            "Кол-во: 1\n"
            "Начислено бнс:      0.02\n"
            "Потрачено бнс:      0.03\n"
            "Скидка бнс:         0.04\n\n"
            "-----------------------\n"
            "НЕПОДТВЕРЖД. ПЛАТЕЖИ:\n"
            "Кол-во: 1\n"
            "Начислено бнс:      2.00\n"
            "Потрачено бнс:      3.00\n"
            "Скидка бнс:         4.00\n\n"
            "-----------------------\n"
            "ПОДАРОЧНЫЕ КАРТЫ:\n"
            "Кол-во: 1\n"
            "Сумма бнс:          0.07\n\n"
            "-----------------------\n"
            "ПРИВЕДИ ДРУГА:\n"
            "Кол-во: 1\n"
            "Сумма бнс:         22.02\n\n"
            "-----------------------\n"
            "АКТИВАЦИИ:\n"
            "Кол-во: 2\n"
            "Сумма бнс:          1.23\n\n"
            "-----------------------\n"
            "ДЕПОЗИТЫ:\n"
            "Кол-во: 2\n"
            "Сумма бнс:         13.00\n\n"
            "-----------------------\n"
            "ВОЗВРАТЫ:\n"
            "Кол-во: 2\n"
            "Сумма бнс:          1.50\n\n"
            "-----------------------\n");
  EXPECT_EQ(ReportTrace(),
            "GetLogRecords()\n"
            "Begin stack processing\n"
            "-Stack item\n"
            "-Stack item\n"
            "-Stack item\n"
            "-Stack item\n"
            "Payment Confirmed report\n"
            "Payment Canceled report\n"
            "Payment Unknown report\n"
            "Gift Card report\n"
            "Refer A Friend Report\n"
            "Activation Report\n"
            "Deposit Report\n"
            "Cashback Report\n"
            "GetReceiptLength\n"
            "Returning Report Length " +
                std::to_string(std::string(lumo::GetReportPtr()).size()) + "\n");
}

TEST_F(Reports, SumsWrapAt32Bits) {
  EXPECT_EQ(Summary(DepositRecord(2147483647) + DepositRecord(1)),
            std::string("ДЕПОЗИТЫ:\nКол-во: 2\nСумма бнс:  -21474836.48\n\n") + kSummaryDashes);
}

struct FateCase : test::NamedCase {
  std::string log;
  int confirmed, canceled, unanswered;
};

const std::string kLongRrn = "12345678901234567890";  // all the bytes that are compared

const FateCase kFates[] = {
    {"PaymentAlone", PaymentRecord("A"), 0, 0, 1},
    {"PaymentAndConfirmAlone", PaymentAndConfirmRecord("A"), 1, 0, 0},
    {"Confirmed", PaymentRecord("A") + ConfirmRecord("A", true), 1, 0, 0},
    {"Canceled", PaymentRecord("A") + ConfirmRecord("A", false), 0, 1, 0},
    {"PaymentAndConfirmCanceled", PaymentAndConfirmRecord("A") + ConfirmRecord("A", false), 0, 1, 0},
    {"LaterCancelOverrides", PaymentRecord("A") + ConfirmRecord("A", true) + ConfirmRecord("A", false), 0, 1,
     0},
    {"LaterConfirmOverrides", PaymentRecord("A") + ConfirmRecord("A", false) + ConfirmRecord("A", true), 1, 0,
     0},
    {"ConfirmBeforeThePaymentMatchesNothing", ConfirmRecord("A", true) + PaymentRecord("A"), 0, 0, 1},
    {"TwoPaymentsOfOneRrnAreBothSet", PaymentRecord("A") + PaymentRecord("A") + ConfirmRecord("A", true), 2,
     0, 0},
    {"APaymentBehindTheConfirmationIsNotSet",
     PaymentRecord("A") + ConfirmRecord("A", false) + PaymentRecord("A"), 0, 1, 1},
    {"OtherRrn", PaymentRecord("A") + ConfirmRecord("B", true), 0, 0, 1},
    {"RrnThatBeginsAlike", PaymentRecord("AB") + ConfirmRecord("A", true), 0, 0, 1},
    {"TwentyBytesAreCompared", PaymentRecord(kLongRrn + "X") + ConfirmRecord(kLongRrn + "Y", true), 1, 0, 0},
    {"TheTwentiethByteIsCompared", PaymentRecord(kLongRrn) + ConfirmRecord("1234567890123456789X", true), 0,
     0, 1},
    {"EmptyRrns", PaymentRecord("") + ConfirmRecord("", true), 1, 0, 0},
    {"PaymentOutsideTheRange", PaymentRecord("A", 1, 1, 1, kFrom) + ConfirmRecord("A", true), 0, 0, 0},
    {"ConfirmationOutsideTheRange", PaymentRecord("A") + ConfirmRecord("A", true, kTo), 0, 0, 1},
    {"ConfirmationDatedBeforeThePayment",
     PaymentRecord("A") + ConfirmRecord("A", true, "2012-12-05T01:00:00Z"), 1, 0, 0},
};

class PaymentFate : public Reports, public testing::WithParamInterface<FateCase> {};

TEST_P(PaymentFate, DecidesTheCategory) {
  const FateCase &row = GetParam();
  const std::string report = Summary(row.log);
  EXPECT_EQ(
      report,
      (row.confirmed == 0 ? ""
       : row.confirmed == 1 ? PaymentBlock("ПОДТВЕРЖДЕННЫЕ ПЛАТЕЖИ:", 1, "2.00", "3.00", "4.00")
                            : PaymentBlock("ПОДТВЕРЖДЕННЫЕ ПЛАТЕЖИ:", 2, "4.00", "6.00", "8.00")) +
          (row.canceled == 0 ? "" : PaymentBlock("ОТМЕНЕННЫЕ ПЛАТЕЖИ:", 1, "2.00", "3.00", "4.00")) +
          (row.unanswered == 0 ? "" : PaymentBlock("НЕПОДТВЕРЖД. ПЛАТЕЖИ:", 1, "2.00", "3.00", "4.00")));
}

INSTANTIATE_TEST_SUITE_P(Cases, PaymentFate, testing::ValuesIn(kFates), test::CaseName());

TEST_F(Reports, APaymentWithoutAnRrnIsTracedAndCounted) {
  const std::string payment = "{\"request\":{\"type\":\"PAYMENT\",\"requestDate\":\"" + std::string(kNoon) +
                              "\"}," + Bill(10000, 200, 300, 400) + "}\n";
  EXPECT_EQ(Summary(payment), PaymentBlock("НЕПОДТВЕРЖД. ПЛАТЕЖИ:", 1, "2.00", "3.00", "4.00"));
  EXPECT_EQ(test::Count(folder.Trace(), "ERROR: Payment without RRN\n"), 1U);
  // A confirmation that names no payment names the payments without an RRN.
  const std::string confirm =
      "{" + Request("PAYMENT_CONFIRM", "X") + R"(,"paymentConfirm":{"isConfirm":true}})" + "\n";
  EXPECT_EQ(Summary(payment + confirm), PaymentBlock("ПОДТВЕРЖДЕННЫЕ ПЛАТЕЖИ:", 1, "2.00", "3.00", "4.00"));
}

TEST_F(Reports, AnEmptyRrnIsAnRrnLikeAnyOther) {
  const std::string payment = "{" + Request("PAYMENT", "") + "," + Bill(10000, 200, 300, 400) + "}\n";
  EXPECT_EQ(Summary(payment), PaymentBlock("НЕПОДТВЕРЖД. ПЛАТЕЖИ:", 1, "2.00", "3.00", "4.00"));
  EXPECT_EQ(test::Count(folder.Trace(), "Payment without RRN"), 0U);
}

TEST_F(Reports, UnsupportedRecordsAreTracedAndNotCounted) {
  EXPECT_EQ(Summary("{" + Request("BALANCE", "A") + "}\n{" + Request("LINK", "A") + "}\n{" +
                    Request("EXCHANGE", "A") + "}\n{" + Request("SOMETHING", "A") + "}\n" +
                    ActivationRecord("OTHER", 100)),
            "");
  EXPECT_EQ(ReportTrace(),
            "GetLogRecords()\n"
            "WARNING: Unsupported request type 4\n"
            "WARNING: Unsupported request type 6\n"
            "WARNING: Unsupported request type 7\n"
            "WARNING: Unsupported request type 11\n"
            "WARNING: Unsupported activation type 3\n"
            "Begin stack processing\n"
            "GetReceiptLength\n"
            "Returning Report Length 0\n");
}

TEST_F(Reports, ARecordThatCannotBeLoadedIsTracedAndSkipped) {
  const std::string log = "damaged\n" + DepositRecord(100);
  EXPECT_EQ(Summary(log), std::string("ДЕПОЗИТЫ:\nКол-во: 1\nСумма бнс:          1.00\n\n") + kSummaryDashes);
  EXPECT_EQ(ReportTrace(),
            "GetLogRecords()\n"
            "ERROR: LoadLogRecord returned -303\n"
            "Begin stack processing\n"
            "Deposit Report\n"
            "GetReceiptLength\n"
            "Returning Report Length 91\n");
  EXPECT_EQ(test::Count(Detail(log), "ДЕПОЗИТ\n"), 1U);
  EXPECT_THAT(ReportTrace(), HasSubstr("ERROR: LoadLogRecord returned -303\n"));
}

TEST_F(Reports, BlankLinesAreRecordsWithoutADate) {
  // Which no range holds.
  EXPECT_EQ(Summary("\n\n", "", kTo), "");
  EXPECT_THAT(ReportTrace(), Not(HasSubstr("Unsupported")));
}

// ---- The detailed report ----

struct BlockCase : test::NamedCase {
  std::string record;
  const char *title;
  const char *rrnLine;
  const char *lines;
};

const char kBonusLines[] =
    "Сумма: 100.00\n"
    "Потрачено бнс:      3.00\n"
    "Начислено бнс:      2.00\n"
    "Скидка бнс:      4.00\n";

const BlockCase kBlocks[] = {
    {"SimpleActivation", ActivationRecord("SIMPLE_ACTIVATION", 100), "АКТИВАЦИЯ\n", "    TERM012120500003\n",
     "Сумма: 11.01\n"},
    {"GiftCard", ActivationRecord("GIFT_CARD", 100), "ПОДАРОЧНАЯ КАРТА\n", "    TERM012120500003\n",
     "Сумма: 33.03\n"},
    {"ReferAFriend", ActivationRecord("REFER_A_FRIEND", 100), "ПРИВЕДИ ДРУГА\n", "    TERM012120500003\n",
     "Сумма: 22.02\n"},
    {"Payment", PaymentRecord("TERM012120500001"), "ПЛАТЕЖ\n", "    TERM012120500001\n", kBonusLines},
    {"PaymentAndConfirm", PaymentAndConfirmRecord("TERM012120500002"), "ПЛАТЕЖ И ПОДТВЕРЖДЕНИЕ\n",
     "    TERM012120500002\n", kBonusLines},
    {"Confirmation", ConfirmRecord("TERM012120500001", true), "ПОДТВЕРЖДЕНИЕ ПЛАТЕЖА\n",
     "    TERM012120500099\n", ""},
    {"Cancellation", ConfirmRecord("TERM012120500001", false), "ОТМЕНА ПЛАТЕЖА\n", "    TERM012120500099\n",
     ""},
    {"Deposit", DepositRecord(1250), "ДЕПОЗИТ\n", "    TERM012120500004\n", "Зачислено бнс:     12.50\n"},
    {"Refund", CashBackRecord(), "ВОЗВРАТ\n", "    TERM012120500005\n", "Зачислено бнс:      0.00\n"},
    {"RefundWithAResult", CashBackRecord(R"(,"cashBackResult":{"returnedSum":150})"), "ВОЗВРАТ\n",
     "    TERM012120500005\n", "Зачислено бнс:      1.50\n"},
    {"ShortRrnIsRightAligned", PaymentRecord("123"), "ПЛАТЕЖ\n", "                 123\n", kBonusLines},
    {"LongRrnIsPrintedWhole", PaymentRecord("TERM0121205100000"), "ПЛАТЕЖ\n", "    TERM0121205100000\n",
     kBonusLines},
};

class ReportBlock : public Reports, public testing::WithParamInterface<BlockCase> {};

TEST_P(ReportBlock, IsPrintedForTheRecord) {
  const std::string block =
      std::string(GetParam().title) + GetParam().rrnLine + kNoon + "\n" + GetParam().lines + kDetailDashes;
  EXPECT_EQ(Detail(GetParam().record), block);
  EXPECT_EQ(Detail(GetParam().record + GetParam().record), block + block);
}

INSTANTIATE_TEST_SUITE_P(Cases, ReportBlock, testing::ValuesIn(kBlocks), test::CaseName());

TEST_F(Reports, ARecordWithoutAnRrnHasABlankRrnLine) {
  EXPECT_EQ(Detail(R"({"request":{"type":"PAYMENT_CONFIRM","requestDate":")" + std::string(kNoon) + "\"}}\n"),
            "ОТМЕНА ПЛАТЕЖА\n"
            "                    \n"
            "2012-12-05T12:00:00Z\n"
            "------------------------\n");
}

TEST_F(Reports, BlocksComeInTheLogsOrder) {
  const std::string report =
      Detail(DepositRecord(100) + CashBackRecord() + ConfirmRecord("A", true) + DepositRecord(200));
  EXPECT_THAT(report, test::InOrder({"ДЕПОЗИТ\n", "1.00\n", "ВОЗВРАТ\n", "ПОДТВЕРЖДЕНИЕ ПЛАТЕЖА\n",
                                     "ДЕПОЗИТ\n", "2.00\n"}));
  EXPECT_EQ(ReportTrace(), "GenerateReport\nGetLogRecords()\n");
}

TEST_F(Reports, UnsupportedRecordsHaveNoBlock) {
  EXPECT_EQ(Detail("{" + Request("BALANCE", "A") + "}\n{" + Request("SOMETHING", "A") + "}\n"), "");
  EXPECT_EQ(ReportTrace(),
            "GenerateReport\n"
            "GetLogRecords()\n"
            "WARNING: Unsupported request type 4\n"
            "WARNING: Unsupported request type 11\n");
}

using ReportsDeathTest = Reports;

TEST_F(ReportsDeathTest, AnActivationOfUnknownTypeFailsTheDebugCheck) {
  EXPECT_DEATH(Detail(ActivationRecord("OTHER", 100)),
               HasSubstr("Unknown: DEBUGCHK failed in file transaction at line "));
}

// The report straight from its rules, walking all payments for each confirmation.
class Model {
 public:
  void Add(const std::string &kind, const std::string &rrn, const std::string &date, uint32_t earned,
           uint32_t spent, uint32_t discount, bool confirms) {
    if (!(kFrom < date && date < kTo)) return;
    if (kind == "CONFIRM") {
      for (Item &item : items_) {
        if (item.rrn.substr(0, 20) == rrn.substr(0, 20)) item.state = confirms ? 1 : 0;
      }
    } else {
      items_.insert(items_.begin(), Item{rrn, earned, spent, discount, kind == "PAYMENT" ? -1 : 1});
    }
  }

  std::string Text() const {
    return Block("ПОДТВЕРЖДЕННЫЕ ПЛАТЕЖИ:", 1) + Block("ОТМЕНЕННЫЕ ПЛАТЕЖИ:", 0) +
           Block("НЕПОДТВЕРЖД. ПЛАТЕЖИ:", -1);
  }

 private:
  struct Item {
    std::string rrn;
    uint32_t earned, spent, discount;
    int state;
  };

  static std::string Amount(uint32_t amount) {
    const std::string cents = std::to_string(amount % 100);
    return std::to_string(amount / 100) + (cents.size() < 2 ? ".0" : ".") + cents;
  }

  std::string Block(const std::string &title, int state) const {
    int count = 0;
    uint32_t earned = 0, spent = 0, discount = 0;
    for (const Item &item : items_) {
      if (item.state == state) {
        ++count;
        earned += item.earned;
        spent += item.spent;
        discount += item.discount;
      }
    }
    return count == 0 ? ""
                      : PaymentBlock(title, count, Amount(earned).c_str(), Amount(spent).c_str(),
                                     Amount(discount).c_str());
  }

  std::vector<Item> items_;
};

class RandomLogs : public Reports, public testing::WithParamInterface<uint32_t> {};

TEST_P(RandomLogs, AreSummedAsTheRulesSay) {
  std::mt19937 random(GetParam());
  const auto pick = [&random](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
  const std::vector<std::string> rrns = {
      "", "A", "B", kLongRrn, kLongRrn + "X", "TERM012120500001", "TERM012120500002"};
  const std::vector<std::string> dates = {kFrom, kTo, kNoon, "2012-12-05T00:00:01Z", "2012-12-05T23:59:59Z",
                                          kNoon};
  const std::vector<std::string> kinds = {"PAYMENT", "PAYMENT", "PAYMENT_AND_CONFIRM", "CONFIRM", "CONFIRM"};
  for (int round = 0; round < 250; ++round) {
    Model model;
    std::string log;
    const uint32_t records = pick(12);
    for (uint32_t i = 0; i < records; ++i) {
      const std::string &kind = kinds[pick(5)];
      const std::string &rrn = rrns[pick(7)];
      const std::string &date = dates[pick(6)];
      const uint32_t earned = pick(100000), spent = pick(100000), discount = pick(100000);
      const bool confirms = pick(2) == 0;
      model.Add(kind, rrn, date, earned, spent, discount, confirms);
      log += kind == "CONFIRM" ? ConfirmRecord(rrn, confirms, date)
                               : "{" + Request(kind, rrn, date) + "," +
                                     Bill(1, static_cast<int32_t>(earned), static_cast<int32_t>(spent),
                                          static_cast<int32_t>(discount)) +
                                     "}\n";
    }
    ASSERT_EQ(Summary(log), model.Text()) << "round " << round << "\n" << log;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomLogs, testing::Range(1U, 9U));

}  // namespace
