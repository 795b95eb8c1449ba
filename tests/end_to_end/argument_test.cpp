// end_to_end/argument_test.cpp: what a register hands over by mistake, and calls out of their order.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>

#include "end_to_end/register.h"

namespace {

using test::Answer;
using test::kCard;
using test::kCashier;
using test::kFirstRrn;
using test::Record;
using test::Request;
using test::Shop;
using test::State;
using test::Success;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char kNoTransaction[] = "ERROR: Pointer \"trans\" is null\n";

struct Call {
  const char *name;
  std::function<int(Shop &)> run;
  int result;
  std::string trace;
};

void PrintTo(const Call &call, std::ostream *out) {
  *out << call.name;
}

// ---- Without a transaction ----

const Call kWithoutATransaction[] = {
    {"Activation", [](Shop &s) { return s.ActivationProc("GIFT_CARD", "B", 5, "LOCAL", "2"); }, -100,
     "ActivationProc\n  activation_type [1]\n  amount [5]\n  type [LOCAL]\n  refer_card_num [2]\n"
     "ActivationProcess\n"},
    {"ActivationAmount", [](Shop &s) { return s.GetActivationAmount(); }, -100,
     "GetActivationAmountProcess\n"},
    {"Balance", [](Shop &s) { return s.BalanceProc(); }, -100, "BalanceProc()\nBalanceProcess\n"},
    {"BalanceAmount", [](Shop &s) { return s.GetBalance(); }, 0, ""},
    {"Payment", [](Shop &s) { return s.PaymentProc(7, "B"); }, -100, "PaymentProc(7, B)\nPaymentProcess\n"},
    {"PaymentAndConfirm", [](Shop &s) { return s.PaymentAndConfirmProc(7, "B"); }, -100,
     "PaymentAndConfirmProc(7, B)\nPaymentAndConfirmProcess spend [7] bill [B]\n"},
    {"Confirm", [](Shop &s) { return s.PaymentConfirmProc("1"); }, -100,
     "PaymentConfirmProc(1)\nPaymentConfirmProcess confirm [1] rrn [1]\n"},
    {"Cancel", [](Shop &s) { return s.PaymentCancelProc("1"); }, -100,
     "PaymentCancelProc(1)\nPaymentConfirmProcess confirm [0] rrn [1]\n"},
    {"CashBack", [](Shop &s) { return s.CashBackProc("1", "L"); }, -100,
     "CashBackProc(1, L)\nPaymentConfirmProcess rrn [1] cashback file [L]\n"},
    {"CashBackResult", [](Shop &s) { return s.GetCashBackResult(); }, -100, "GetCashBackResultProcess\n"},
    {"Deposit", [](Shop &s) { return s.DepositProc(9); }, -100,
     "DepositProc(9)\nDepositProcess amount [9]\n"},
    {"Exchange", [](Shop &s) { return s.ExchangeProc("t"); }, -100,
     "ExchangeProc(t)\nExchangeProcess token [t]\n"},
    {"Link", [](Shop &s) { return s.LinkCardProc("2"); }, -100,
     "LinkCardProc(2)\nLinkCardProcess card [2]\n"},
    {"EarnedBonuses", [](Shop &s) { return s.GetEarnBonusAmount(); }, 0, "CountBonuses\n"},
    {"SpentBonuses", [](Shop &s) { return s.GetSpendBonusAmount(); }, 0, "CountBonuses\n"},
    {"Discount", [](Shop &s) { return s.GetDiscountAmount(); }, 0, "CountBonuses\n"},
    {"Body", [](Shop &s) { return s.getReceiptBody(nullptr); }, -100, "GetTransactionReceiptSize\n"},
    {"Header", [](Shop &s) { return s.getReceiptHeaderPtr() == nullptr ? 1 : 0; }, 1,
     "GetTransReceiptHeader\n"},
    {"BodyText", [](Shop &s) { return s.getReceiptBodyPtr() == nullptr ? 1 : 0; }, 1,
     "GetTransReceiptBody\n"},
    {"Footer", [](Shop &s) { return s.getReceiptFooterPtr() == nullptr ? 1 : 0; }, 1,
     "GetTransReceiptFooter\n"},
};

class WithoutATransaction : public test::Register, public testing::WithParamInterface<Call> {
 protected:
  void ExpectAnswer() {
    shop.ClearTrace();
    EXPECT_EQ(GetParam().run(shop), GetParam().result);
    EXPECT_EQ(shop.Trace(), GetParam().trace + kNoTransaction);
  }
};

TEST_P(WithoutATransaction, CallAnswersAndTouchesNothing) {
  shop.Start("http://127.0.0.1:1/");
  ExpectAnswer();
  EXPECT_EQ(shop.Read("STATE"), State("1234512120500007"));
  EXPECT_FALSE(shop.Exists("LOG"));
}

TEST_P(WithoutATransaction, CallAnswersAfterCloseAndBeforeTheStart) {
  ExpectAnswer();
  OpenAlone();
  EXPECT_EQ(shop.CloseTransaction(), 0);
  ExpectAnswer();
}

TEST_P(WithoutATransaction, CallAnswersAfterAStartThatForgotTheTransaction) {
  {
    const test::Forgetting forgetting;
    OpenAlone();
  }
  EXPECT_EQ(shop.LUMOInit(), 0);
  ExpectAnswer();
}

INSTANTIATE_TEST_SUITE_P(Every, WithoutATransaction, testing::ValuesIn(kWithoutATransaction),
                         [](const auto &call) { return std::string(call.param.name); });

class Order : public test::Register {};

TEST_F(Order, TextsOfNoTransactionAreEmptyOrNull) {
  EXPECT_STREQ(shop.getResponseState(), "");
  EXPECT_STREQ(shop.getResponseStateCode(), "");
  EXPECT_STREQ(shop.getResponseMessage(), "");
  EXPECT_EQ(shop.getRRN(), nullptr);
  EXPECT_EQ(shop.getTerminalId(), nullptr);
  EXPECT_EQ(shop.GetReportPtr(), nullptr);
  char body = '#';
  EXPECT_EQ(shop.getReceiptBody(&body), -100);
  EXPECT_EQ(body, '#');
}

TEST_F(Order, ReportsAndReplayNeedNoStart) {
  EXPECT_EQ(shop.GenerateReport("1", "2"), 0);
  EXPECT_EQ(shop.GenerateSummaryReport("1", "2"), 0);
  EXPECT_STREQ(shop.GetReportPtr(), "");
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  EXPECT_EQ(shop.CloseTransaction(), 0);
  EXPECT_EQ(shop.LUMOClean(), 0);
  EXPECT_FALSE(shop.Exists("STATE"));
}

TEST_F(Order, CloseTwiceIsNoError) {
  OpenAlone();
  EXPECT_EQ(shop.CloseTransaction(), 0);
  EXPECT_EQ(shop.CloseTransaction(), 0);
}

TEST_F(Order, CreateTwiceLeavesTheFirstTransaction) {
  OpenAlone();
  EXPECT_EQ(shop.CreateTransaction("other", "8"), -112);
  EXPECT_EQ(shop.Trace(), "CreateTransaction [other] [8]\nERROR: Transaction created already\n");
  EXPECT_THAT(shop.getReceiptHeaderPtr(), HasSubstr("    9000000001\n"));
}

TEST_F(Order, StartWithATransactionForgetsIt) {
  {
    const test::Forgetting forgetting;
    Open({Success("cardExchangeResponse")});
  }
  const char *header = shop.getReceiptHeaderPtr();
  const std::string text = header;
  EXPECT_EQ(shop.LUMOInit(), 0);
  EXPECT_EQ(shop.CloseShift(), 0);
  EXPECT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  EXPECT_EQ(text, header);  // what the register holds of the forgotten one stays valid
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(Body(), "******** ЗАМЕНА ********\nRRN: 1234512120500008\n");
}

TEST_F(Order, CloseShiftWithATransactionIsRefused) {
  OpenAlone();
  ASSERT_EQ(shop.OpenShift("42"), 0);
  EXPECT_EQ(shop.CloseShift(), -603);
  EXPECT_THAT(shop.Read("STATE"), HasSubstr("\"shiftState\":1"));
  EXPECT_EQ(shop.CloseTransaction(), 0);
  EXPECT_EQ(shop.CloseShift(), 0);
}

TEST_F(Order, WorkGoesOnAfterClean) {
  Open({Success("cardExchangeResponse")});
  EXPECT_EQ(shop.LUMOClean(), 0);
  EXPECT_EQ(shop.LUMOClean(), 0);
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
}

TEST_F(Order, OperationsBeforeTheStartFindNoServer) {
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  EXPECT_EQ(shop.DepositProc(1), -501);
  EXPECT_EQ(Body(), "");
}

// Results of an earlier answer stay until another one brings new ones.
TEST_F(Order, ResultsStayAfterAFailure) {
  Open({Answer{{Success("putCashBackResponse", R"("cashBackResult":{"returnedSum":70})")}},
        Answer{{"rubbish"}}});
  EXPECT_EQ(shop.CashBackProc("1", nullptr), 0);
  EXPECT_EQ(shop.DepositProc(1), -303);
  EXPECT_EQ(shop.GetCashBackResult(), 70);
  EXPECT_STREQ(shop.getResponseState(), "SUCCESS");
}

// ---- Null and long texts ----

// Every argument of every call is null; the server agrees to everything.
struct NullCall {
  const char *name;
  std::function<int(Shop &)> run;
  int result;
};

void PrintTo(const NullCall &call, std::ostream *out) {
  *out << call.name;
}

const NullCall kNullCalls[] = {
    {"LUMOInitExt",
     [](Shop &s) {
       s.CloseTransaction();
       return s.LUMOInitExt(nullptr);
     },
     0},
    {"OpenShift", [](Shop &s) { return s.OpenShift(nullptr); }, 0},
    {"CreateTransaction",
     [](Shop &s) {
       s.CloseTransaction();
       return s.CreateTransaction(nullptr, nullptr);
     },
     0},
    {"ActivationProc", [](Shop &s) { return s.ActivationProc(nullptr, nullptr, 1, nullptr, nullptr); }, 0},
    {"ActivationProcOfAGiftCard",
     [](Shop &s) { return s.ActivationProc("GIFT_CARD", nullptr, 1, nullptr, nullptr); }, -103},
    {"ActivationProcOfAFriend",
     [](Shop &s) { return s.ActivationProc("REFER_A_FRIEND", nullptr, 1, nullptr, nullptr); }, 0},
    {"PaymentProc", [](Shop &s) { return s.PaymentProc(1, nullptr); }, -106},
    {"PaymentAndConfirmProc", [](Shop &s) { return s.PaymentAndConfirmProc(1, nullptr); }, -307},
    {"PaymentConfirmProc", [](Shop &s) { return s.PaymentConfirmProc(nullptr); }, 0},
    {"PaymentCancelProc", [](Shop &s) { return s.PaymentCancelProc(nullptr); }, 0},
    {"CashBackProc", [](Shop &s) { return s.CashBackProc(nullptr, nullptr); }, 0},
    {"ExchangeProc", [](Shop &s) { return s.ExchangeProc(nullptr); }, 0},
    {"LinkCardProc", [](Shop &s) { return s.LinkCardProc(nullptr); }, 0},
    {"CreateAmountBill", [](Shop &s) { return s.CreateAmountBill(1, nullptr); }, -105},
    {"GenerateSummaryReport", [](Shop &s) { return s.GenerateSummaryReport(nullptr, nullptr); }, -701},
    {"GenerateReport", [](Shop &s) { return s.GenerateReport(nullptr, nullptr); }, -701},
    {"RunUpdater", [](Shop &s) { return s.RunUpdater(nullptr); }, -1},
};

class NullTexts : public test::Register, public testing::WithParamInterface<NullCall> {};

TEST_P(NullTexts, AreHarmless) {
  Open({Success("putDepositResponse"), Success("cardExchangeResponse", "", test::kSecondRrn)});
  EXPECT_EQ(GetParam().run(shop), GetParam().result);
  shop.CloseTransaction();
  EXPECT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
}

INSTANTIATE_TEST_SUITE_P(OfEveryCall, NullTexts, testing::ValuesIn(kNullCalls),
                         [](const auto &call) { return std::string(call.param.name); });

TEST_F(Order, TextsThatAreNullAreEmptyInTheRequestAndOnTheSlip) {
  server = std::make_unique<test::ScriptedServer>(Success("putPaymentConfirmResponse"));
  shop.Start(server->address());
  EXPECT_EQ(shop.CreateTransaction(nullptr, nullptr), 0);
  EXPECT_THAT(shop.Trace(), StartsWith("CreateTransaction [(null)] [(null)]\n"));
  EXPECT_STREQ(shop.getReceiptHeaderPtr(),
               "Магазин\n"
               "2012/12/05      10:00:00\n"
               "Терминал          12345\n"
               "     *** КАРТА ***\n"
               "    \n");
  EXPECT_EQ(shop.PaymentConfirmProc(nullptr), 0);
  EXPECT_EQ(
      server->requests().at(0),
      Post("confirm",
           R"({"putPaymentConfirmRequest":{"request":{"ver":"1.0","type":"PAYMENT_CONFIRM",)"
           R"("requestId":"1234512120500008","terminalId":"12345","requestDate":"2012-12-05T10:00:00Z",)"
           R"("employeeId":"","cardNum":"","isOffline":false,"shiftId":""},)"
           R"("paymentConfirm":{"requestId":"","isConfirm":true}}})"));
}

// What does not get onto a slip may have any length.
TEST_F(Order, LongTextsAreSentWhole) {
  const std::string text(100000, 'x');
  server = std::make_unique<test::ScriptedServer>(std::vector<Answer>{
      {{Success("cardExchangeResponse")}},
      {{Success("putPaymentConfirmResponse", "", test::kSecondRrn)}},
      {{Success("putCashBackResponse", R"("cashBackResult":{"returnedSum":1})", test::kThirdRrn)}}});
  shop.Start(server->address());
  ASSERT_EQ(shop.OpenShift(text.c_str()), 0);
  ASSERT_EQ(shop.CreateTransaction(kCard, text.c_str()), 0);
  EXPECT_EQ(shop.ExchangeProc(text.c_str()), 0);
  EXPECT_EQ(shop.PaymentConfirmProc(text.c_str()), 0);
  EXPECT_EQ(shop.CashBackProc(text.c_str(), nullptr), 0);
  EXPECT_THAT(server->requests().at(0), HasSubstr("\"employeeId\":\"" + text + "\",\"cardNum\""));
  EXPECT_THAT(server->requests().at(0), HasSubstr("\"shiftId\":\"" + text + "\"}"));
  EXPECT_THAT(server->requests().at(0), HasSubstr("\"token\":\"" + text + "\"}"));
  EXPECT_THAT(server->requests().at(1), HasSubstr("\"requestId\":\"" + text + "\",\"isConfirm\""));
  EXPECT_THAT(server->requests().at(2), HasSubstr("\"requestId\":\"" + text + "\",\"cashBackType\""));
}

TEST_F(Order, LongNamesAreUnknownOrCannotBeOpened) {
  Open({Success("putDepositResponse")});
  const std::string text(100000, 'x');
  const char *const name = text.c_str();
  EXPECT_EQ(shop.ActivationProc(name, nullptr, 1, nullptr, nullptr), -102);
  EXPECT_EQ(shop.ActivationProc("GIFT_CARD", nullptr, 1, name, nullptr), -103);
  EXPECT_EQ(shop.ActivationProc("SIMPLE_ACTIVATION", name, 1, nullptr, nullptr), -106);
  EXPECT_EQ(shop.PaymentProc(1, name), -106);
  EXPECT_EQ(shop.PaymentAndConfirmProc(1, name), -307);
  EXPECT_EQ(shop.CashBackProc("1", name), -113);
  EXPECT_EQ(shop.CreateAmountBill(1, name), -105);
  EXPECT_EQ(shop.RunUpdater(name), -1);
  EXPECT_EQ(shop.GenerateReport(name, "y"), 0);
  EXPECT_EQ(shop.GenerateReport("a", name), 0);
  EXPECT_EQ(server->requests().size(), 0U);
  EXPECT_EQ(shop.DepositProc(1), 0);
}

TEST_F(Order, EmptyPathIsNoMissingOne) {
  Open({Success("putDepositResponse")});
  EXPECT_EQ(shop.PaymentProc(1, ""), -106);
  EXPECT_EQ(shop.ActivationProc("SIMPLE_ACTIVATION", "", 1, nullptr, nullptr), -106);
  EXPECT_EQ(shop.CashBackProc("1", ""), -113);
  EXPECT_EQ(shop.CreateAmountBill(1, ""), -105);
  EXPECT_EQ(server->requests().size(), 0U);
}

// Format directives, quotes, control characters and broken UTF-8 go through as they are.
TEST_F(Order, TextsAreNeverInterpreted) {
  server = std::make_unique<test::ScriptedServer>(Success("cardExchangeResponse"));
  shop.Start(server->address());
  ASSERT_EQ(shop.CreateTransaction("%s%n%d\"\\", "\x01\xFF\n"), 0);
  EXPECT_THAT(shop.getReceiptHeaderPtr(), HasSubstr("    %s%n%d\"\\\n"));
  EXPECT_THAT(shop.Trace(), StartsWith("CreateTransaction [%s%n%d\"\\] [\x01\xFF\n]\n"));
  EXPECT_EQ(shop.ExchangeProc("%s%s%s%n"), 0);
  EXPECT_THAT(shop.Read("LOG"), HasSubstr(R"("employeeId":"\u0001)"
                                          "\xFF"
                                          R"(\n","cardNum":"%s%n%d\"\\",)"));
  EXPECT_THAT(server->requests().at(0), HasSubstr(R"("token":"%s%s%s%n")"));
}

TEST_F(Order, AmountsMayHaveAnySize) {
  Open({Success("putDepositResponse"), Success("putDepositResponse", "", test::kSecondRrn)});
  EXPECT_EQ(shop.DepositProc(2147483647), 0);
  EXPECT_EQ(shop.DepositProc(-2147483647 - 1), 0);
  EXPECT_EQ(Body(),
            "******* ДЕПОЗИТ *******\n"
            "RRN: 1234512120500008\n"
            "Зачислено (бнс.):\n"
            "             21474836.47"
            "******* ДЕПОЗИТ *******\n"
            "RRN: 1234512120500009\n"
            "Зачислено (бнс.):\n"
            "            -21474836.48");
  EXPECT_EQ(shop.CreateAmountBill(-2147483647 - 1, "BILL.JSN"), 0);
  EXPECT_THAT(shop.Read("BILL.JSN"), HasSubstr(R"("positionCost":-2147483648,)"));
}

// ---- Texts that end the process ----

// The process that ends says where its shop is, and its trace is read from there: Windows CE runs no exit
// handlers. It is a new process with a shop and a server of its own, since a fork copies the locks that the
// server's thread holds; on an emulated processor it can only be forked.
class Fatal : public test::Register {
 protected:
#ifndef LUMO_LOADER
  Fatal() {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
  }
#endif

  ~Fatal() override {
    std::error_code ignored;
    if (!childsFolder.empty()) std::filesystem::remove_all(std::filesystem::u8path(childsFolder), ignored);
  }

  std::string TraceOf(const std::string &said) {
    const size_t from = said.rfind('[') + 1;
    const std::string folder = said.substr(from, said.rfind(']') - from);
    if (folder != shop.folder()) childsFolder = folder;
    std::ifstream trace(std::filesystem::u8path(folder + "TRACE.TXT"));
    return {std::istreambuf_iterator<char>(trace), std::istreambuf_iterator<char>()};
  }

  // The last line of the trace.
  auto LongLine() {
    return testing::ResultOf([this](const std::string &said) { return TraceOf(said); },
                             testing::AllOf(HasSubstr("\nERROR: ASSERT IN "), HasSubstr("receipt"),
                                            testing::EndsWith(": Stack overflow!\n")));
  }

  std::string childsFolder;
};

bool EndedAsFatal(int status) {
  return testing::ExitedWithCode(255)(status) || testing::ExitedWithCode(-1)(status);
}

#define EXPECT_END(statement, how, said)                       \
  EXPECT_EXIT(                                                 \
      {                                                        \
        std::cerr << "[" << shop.folder() << "]" << std::endl; \
        statement;                                             \
      },                                                       \
      how, said)

#define EXPECT_FATAL(statement, line) EXPECT_END(statement, EndedAsFatal, line)

TEST_F(Fatal, CardNumberOf1100Bytes) {
  shop.Start("http://127.0.0.1:1/");
  const std::string card(1100, '9');
  EXPECT_FATAL(shop.CreateTransaction(card.c_str(), "7"), LongLine());
}

// Four blanks, the number and the line feed: 1023 bytes are a line, 1024 are none.
TEST_F(Fatal, LineOfASlipHasAtMost1023Bytes) {
  shop.Start("http://127.0.0.1:1/");
  const std::string longest(1018, '9');
  EXPECT_FATAL(shop.CreateTransaction((longest + "9").c_str(), "7"), LongLine());
  EXPECT_EQ(shop.CreateTransaction(longest.c_str(), "7"), 0);
  EXPECT_THAT(shop.getReceiptHeaderPtr(), HasSubstr("    " + longest + "\n"));
}

TEST_F(Fatal, LinkedCardOf1100Bytes) {
  OpenAlone();
  const std::string card(1100, '9');
  EXPECT_FATAL(shop.LinkCardProc(card.c_str()), LongLine());
}

// A server can end the register too, with a "request" part of its own.
TEST_F(Fatal, NumberOf1100BytesInAnAnswer) {
  Open({Success("putDepositResponse", R"("request":{"requestId":")" + std::string(1100, '9') + "\"}")});
  EXPECT_FATAL(shop.DepositProc(100), LongLine());
}

TEST_F(Fatal, NameOfTheNetworkOf1100Bytes) {
  Open({Success("getBalanceResponse", R"("balance":{"account":[]})")},
       R"("retailNetworkName":")" + std::string(1100, 'N') + "\"");
  EXPECT_FATAL(shop.BalanceProc(), LongLine());
}

#ifdef _WIN32
bool EndedInADebugCheck(int status) {
  return static_cast<unsigned>(status) == 0x80000003U;
}
#else
bool EndedInADebugCheck(int status) {
  return testing::KilledBySignal(SIGTRAP)(status);
}
#endif

// No debugger is attached, so the check that fails ends the process.
TEST_F(Fatal, ReportOfAnActivationThatIsNone) {
  shop.Start("http://127.0.0.1:1/");
  shop.Write("LOG", Record("ACTIVATION", R"("activation":{"activationType":"OTHER","amount":100})"));
  const auto trace = testing::ResultOf([this](const std::string &said) { return TraceOf(said); },
                                       StartsWith("GenerateReport"));
  EXPECT_END(shop.GenerateReport("2012", "2013"), EndedInADebugCheck,
             testing::AllOf(HasSubstr("Unknown: DEBUGCHK failed in file transaction at line "), trace));
}

TEST_F(Fatal, HeaderOfTheSlipOf1100Bytes) {
  shop.Start("http://127.0.0.1:1/", R"("receiptHeader":")" + std::string(1100, 'H') + "\"");
  EXPECT_FATAL(shop.CreateTransaction(kCard, "7"), LongLine());
}

}  // namespace
