// end_to_end/setup_test.cpp: settings that are missing, and two registers in one folder. What docs/files.md
// and docs/terminal.md say about them, a sentence a test.
#include "end_to_end/bench.h"

namespace {

using test::Answer;
using test::kFirstRrn;
using test::Record;
using test::Success;
using testing::HasSubstr;
using testing::Not;

// ---- Settings that are missing ----

class MissingSetting : public test::Bench {
 protected:
  // The settings of a shop but for one.
  void StartWithout(const std::string &key) {
    const std::pair<const char *, std::string> settings[] = {
        {"terminalId", "\"12345\""},
        {"protocolVersion", "\"1.0\""},
        {"serverAddr", "\"http://" + bench.address() + "/ws\""},
        {"retailNetworkName", "\"Сеть\""},
        {"timeout", "5"},
        {"offlineMode", "1"},
        {"logSize", "1000"},
        {"receiptHeader", "\"Магазин\""},
        {"receiptFooter", "\"Спасибо\""},
    };
    std::string config;
    for (const auto &setting : settings) {
      if (setting.first == key) continue;
      config += (config.empty() ? "{\"" : ",\"") + std::string(setting.first) + "\":" + setting.second;
    }
    shop.Write("CONFIG", config + "}");
    shop.Write("STATE", test::State("1234512120500007"));
    ASSERT_EQ(shop.LUMOInit(), 0);
    NewTransaction();
    shop.ClearTrace();
  }
};

TEST_F(MissingSetting, LogSizeNeverCutsTheLogAndCopiesItAtEveryOperation) {
  StartWithout("logSize");
  std::string log;
  for (int i = 0; i < 5; ++i) log += Record("EXCHANGE", "");
  shop.Write("LOG", log);
  EXPECT_EQ(shop.DepositProc(100), 0);
  EXPECT_THAT(shop.Read("LOG"), testing::StartsWith(log + "{\"request\""));
  // What stands in the way of the copy shows that it is made.
  shop.Write("LOG.old", "x");
  EXPECT_EQ(shop.DepositProc(100), 0);
  EXPECT_THAT(shop.Trace(), HasSubstr("rename function failed with code 183 \"LOG\" => \"LOG.old\"\n"));
}

// An answer that is later than any `timeout` of this test is waited for.
TEST_F(MissingSetting, TimeoutWaits) {
  StartWithout("timeout");
  bench.SetFault(loyalty::ParseFault("delay 1500"));
  EXPECT_EQ(shop.DepositProc(100), 0);
}

TEST_F(MissingSetting, TimeoutOfASecondDoesNot) {
  Start(R"("timeout":1)");
  bench.SetFault(loyalty::ParseFault("delay 10000"));
  EXPECT_EQ(shop.DepositProc(100), -401);
}

TEST_F(MissingSetting, TerminalIdIsFiveZerosInTheNumberAndUnknownToTheServer) {
  StartWithout("terminalId");
  EXPECT_EQ(shop.getTerminalId(), nullptr);
  EXPECT_EQ(shop.DepositProc(100), -405);
  EXPECT_STREQ(shop.getResponseStateCode(), "UNKNOWN_TERMINAL");
  EXPECT_STREQ(shop.getRRN(), "0000012120500008");
}

TEST_F(MissingSetting, ProtocolVersionIsRefused) {
  StartWithout("protocolVersion");
  EXPECT_EQ(shop.DepositProc(100), -405);
  EXPECT_STREQ(shop.getResponseStateCode(), "UNSUPPORTED_PROTOCOL_VERSION");
}

TEST_F(MissingSetting, ServerAddressIsAServerThatIsAway) {
  StartWithout("serverAddr");
  EXPECT_EQ(shop.DepositProc(100), -501);
  EXPECT_THAT(shop.Trace(), HasSubstr("ERROR: ParseAddress res[-504]\n"));
  EXPECT_EQ(Pay(0), 0);
  EXPECT_EQ(shop.lumoIsOffline(), 1);
}

TEST_F(MissingSetting, OfflineModeIsOff) {
  StartWithout("offlineMode");
  GoAway();
  EXPECT_EQ(Pay(0), -501);
}

TEST_F(MissingSetting, ReceiptTextsAreEmptyLines) {
  StartWithout("receiptHeader");
  EXPECT_THAT(shop.getReceiptHeaderPtr(), testing::StartsWith("\n2012/12/05"));
  shop.CloseTransaction();  // a start would forget it
  StartWithout("receiptFooter");
  EXPECT_STREQ(shop.getReceiptFooterPtr(), "\n");
}

// ---- Terminals whose ids begin alike ----

class TwoTerminals : public test::Bench {};

// Only the first five characters are in the number.
TEST_F(TwoTerminals, WhoseIdsBeginAlikeUseTheSameNumbers) {
  Start(R"("terminalId":"12345-1")");
  ASSERT_EQ(Pay(0), 0);
  shop.CloseTransaction();
  Start(R"("terminalId":"12345-2")");
  EXPECT_EQ(Pay(0), -405);
  EXPECT_STREQ(shop.getResponseStateCode(), "DUPLICATE_REQUEST_ID");
}

// A number is taken apart again to make the next one, and a blank parts it.
TEST_F(TwoTerminals, AnIdWithABlankIsGoodForOneNumber) {
  Start(R"("terminalId":"1 345")");
  EXPECT_EQ(shop.DepositProc(100), 0);
  EXPECT_STREQ(shop.getRRN(), "1 34512120500008");
  NewTransaction();
  EXPECT_EQ(shop.DepositProc(100), -405);
  EXPECT_STREQ(shop.getResponseStateCode(), "REQUEST_ID_EMPTY");
  EXPECT_THAT(shop.Trace(), HasSubstr("ERROR: Date compare error - old rrn date[345121]"));
}

// ---- Members of a bill ----

class BillMember : public test::Register {
 protected:
  // The bill of the request that this file makes.
  std::string Sent(const std::string &bill) {
    Open({Success("putPaymentResponse", "\"bill\":{}")});
    shop.Write("BILL.JSN", bill);
    EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), 0);
    const std::string request = server->requests().at(0);
    return request.substr(request.find("\"bill\":"));
  }
};

TEST_F(BillMember, ThatIsMissingIsZeroOrEmpty) {
  EXPECT_EQ(
      Sent(R"({"goodList":{"good":[{}]}})"),
      R"("bill":{"totalSum":0,"spendBonus":false,"orderLen":0,"billNum":"","billDate":"","partnerFee":0,)"
      R"("goodList":{"good":[{"title":"","productCode":"","positionCost":0,"orderNum":0,"cnt":0}]}}}})"
      "\n");
}

TEST_F(BillMember, ThatIsANumberInQuotesIsMissingInTheBillAndReadInAPosition) {
  EXPECT_EQ(
      Sent(R"({"totalSum":"12","billNum":"7","goodList":{"good":[{"positionCost":"12","cnt":"3"}]}})"),
      R"("bill":{"totalSum":0,"spendBonus":false,"orderLen":0,"billNum":"7","billDate":"","partnerFee":0,)"
      R"("goodList":{"good":[{"title":"","productCode":"","positionCost":12,"orderNum":0,"cnt":3}]}}}})"
      "\n");
}

TEST_F(BillMember, ThatIsUnknownOrCutShortIsPassedOver) {
  EXPECT_EQ(
      Sent(R"({"total":12,"totalSum":7,"colour":1,"spendBonus":true})"),
      R"("bill":{"totalSum":7,"spendBonus":false,"orderLen":0,"billNum":"","billDate":"","partnerFee":0}}})"
      "\n");
}

TEST_F(BillMember, DateKeeps31Bytes) {
  EXPECT_THAT(Sent(R"({"billDate":"0123456789012345678901234567890123456789"})"),
              HasSubstr(R"("billDate":"0123456789012345678901234567890")"));
}

// ---- Two registers in one folder ----

class TwoRegisters : public test::Bench {
 protected:
  void SetUp() override { Start(R"("offlineMode":1)"); }
  // The calls of the second register in the same folder from now on; those of the first are in `first`.
  void LoadSecond() {
    firstClose = shop.CloseTransaction;
    firstDeposit = shop.DepositProc;
    shop.LoadAgain();
    ASSERT_EQ(shop.LUMOInit(), 0);
    ASSERT_EQ(shop.CreateTransaction(test::kRichCard, test::kCashier), 0);
  }
  decltype(&::CloseTransaction) firstClose = nullptr;
  decltype(&::DepositProc) firstDeposit = nullptr;
};

// Each remembers the last number as it was when its transaction began.
TEST_F(TwoRegisters, UseTheSameNumbers) {
  LoadSecond();
  EXPECT_EQ(firstDeposit(100), 0);
  EXPECT_EQ(shop.DepositProc(100), -405);
  EXPECT_STREQ(shop.getResponseStateCode(), "DUPLICATE_REQUEST_ID");
  firstClose();
}

TEST_F(TwoRegisters, ShareOneShift) {
  ASSERT_EQ(shop.OpenShift("42"), 0);
  LoadSecond();
  EXPECT_EQ(shop.OpenShift("43"), -601);
  firstClose();
}

}  // namespace
