// end_to_end/shift_test.cpp: starting, settings, shifts and the flags of the state, through the exports.
#include "end_to_end/register.h"

namespace {

using test::State;
using test::Success;
using testing::HasSubstr;

// Hosts are the register's to keep.
const char *Kept(char *host) {
  static auto *const kept = new std::vector<char *>;
  kept->push_back(host);
  return host;
}

class Shift : public test::Register {
 protected:
  void Start(const std::string &more = "") { shop.Start("http://127.0.0.1:1/", more); }
};

TEST_F(Shift, IsOpenedAndClosed) {
  Start();
  EXPECT_EQ(shop.OpenShift("42"), 0);
  EXPECT_EQ(shop.Read("STATE"),
            R"({"reqId":"1234512120500007","shiftId":"42","shiftOpenDate":"2012-12-05T10:00:00Z",)"
            R"("offline":0,"shiftState":1,"update":0})");
  test::SetClock(2012, 12, 5, 22, 30, 0);
  EXPECT_EQ(shop.OpenShift("43"), -601);
  EXPECT_STREQ(shop.GetErrorMessage(-601), "Смена уже открыта");
  EXPECT_EQ(shop.CloseShift(), 0);
  EXPECT_EQ(shop.Read("STATE"),
            R"({"reqId":"1234512120500007","shiftId":"42","shiftOpenDate":"2012-12-05T10:00:00Z",)"
            R"("shiftCloseDate":"2012-12-05T22:30:00Z","offline":0,"shiftState":0,"update":0})");
  const std::string closed = shop.Read("STATE");
  test::SetClock(2012, 12, 6, 8, 0, 0);
  EXPECT_EQ(shop.CloseShift(), 0);
  EXPECT_EQ(shop.Read("STATE"), closed);
  EXPECT_EQ(shop.OpenShift(nullptr), 0);
  EXPECT_EQ(shop.Read("STATE"),
            R"({"reqId":"1234512120500007","shiftId":"2012-12-05T10:00:00Z",)"
            R"("shiftOpenDate":"2012-12-06T08:00:00Z","shiftCloseDate":"2012-12-05T22:30:00Z",)"
            R"("offline":0,"shiftState":1,"update":0})");
}

TEST_F(Shift, IsRequiredWhenTheSettingsSaySo) {
  Start(R"("shiftMode":1)");
  EXPECT_EQ(shop.CreateTransaction("9000000001", "7"), -602);
  EXPECT_STREQ(shop.getResponseState(), "");
  EXPECT_EQ(shop.getReceiptHeaderPtr(), nullptr);
  EXPECT_EQ(shop.BalanceProc(), -100);
  EXPECT_EQ(shop.OpenShift(""), 0);
  EXPECT_EQ(shop.CreateTransaction("9000000001", "7"), 0);
  EXPECT_EQ(shop.CloseShift(), -603);
  EXPECT_STREQ(shop.GetErrorMessage(-603), "Закрытие смены не возможно, закройте транзакцию");
  EXPECT_EQ(shop.CloseTransaction(), 0);
  EXPECT_EQ(shop.CloseShift(), 0);
  EXPECT_EQ(shop.CreateTransaction("9000000001", "7"), -602);
}

TEST_F(Shift, IsNamedInRequestsAndRecords) {
  server = std::make_unique<test::ScriptedServer>(Success("putDepositResponse"));
  shop.Start(server->address());
  ASSERT_EQ(shop.OpenShift("смена \"1\""), 0);
  ASSERT_EQ(shop.CreateTransaction("9000000001", "7"), 0);
  EXPECT_EQ(shop.DepositProc(100), 0);
  const std::string record =
      test::Record("DEPOSIT", R"("deposit":{"amount":100})", test::kFirstRrn, false, "смена \\\"1\\\"");
  EXPECT_EQ(shop.Read("LOG"), record);
  EXPECT_THAT(server->requests().at(0), HasSubstr(record.substr(0, record.size() - 1)));
}

TEST_F(Shift, FlagsAreStoredAsGiven) {
  Start();
  EXPECT_EQ(shop.getOfflineState(), 0);
  EXPECT_EQ(shop.getNeedUpdate(), 0);
  EXPECT_EQ(shop.setOfflineState(-5), 0);
  EXPECT_EQ(shop.setNeedUpdate(2147483647), 0);
  EXPECT_EQ(shop.getOfflineState(), -5);
  EXPECT_EQ(shop.getNeedUpdate(), 2147483647);
  EXPECT_EQ(shop.Read("STATE"),
            R"({"reqId":"1234512120500007","offline":-5,"shiftState":0,"update":2147483647})");
  shop.Write("STATE", State("1", 1, 1));
  EXPECT_EQ(shop.getNeedUpdate(), 2147483647);
  EXPECT_EQ(shop.getOfflineState(), 1);
  EXPECT_EQ(shop.getNeedUpdate(), 1);
  EXPECT_EQ(shop.InitState(), 0);
  EXPECT_EQ(shop.getRRN(), nullptr);
  EXPECT_EQ(shop.getNeedUpdate(), 0);
  EXPECT_EQ(shop.Read("STATE"), State("1", 1, 1));
  EXPECT_EQ(shop.LoadState(), 0);
  EXPECT_STREQ(shop.getRRN(), "1");
}

TEST_F(Shift, SettingsAreReadOnceAndAnswered) {
  shop.Start("http://10.0.0.5:8080/loyalty/", R"("serverAltAddr":"http://10.0.0.6:80/")");
  EXPECT_STREQ(shop.getTerminalId(), "12345");
  EXPECT_STREQ(Kept(shop.getPingAddress()), "10.0.0.5");
  EXPECT_EQ(shop.getPingPort(), 8080);
  EXPECT_STREQ(Kept(shop.getPingAltAddress()), "10.0.0.6");
  EXPECT_EQ(shop.getPingAltPort(), 80);
  EXPECT_EQ(shop.Trace(),
            "getPingAddress: http://10.0.0.5:8080/loyalty/ -> [ip: \"10.0.0.5\"] port: 8080 webServ: "
            "\"/loyalty\"\n"
            "getPingPort: http://10.0.0.5:8080/loyalty/ -> ip: \"10.0.0.5\" [port: 8080] webServ: "
            "\"/loyalty\"\n"
            "getPingAltAddress: http://10.0.0.6:80/ -> [ip: \"10.0.0.6\"] port: 80 webServ: \"/\"\n"
            "getPingAltPort: http://10.0.0.6:80/ -> ip: \"10.0.0.6\" [port: 80] webServ: \"/\"\n");
}

TEST_F(Shift, SettingsThatAreAbsentAreEmpty) {
  shop.Write("CONFIG", "{}");
  ASSERT_EQ(shop.LUMOInit(), 0);
  EXPECT_EQ(shop.Read("STATE"), "{}");
  EXPECT_EQ(shop.getTerminalId(), nullptr);
  EXPECT_STREQ(Kept(shop.getPingAddress()), "");
  EXPECT_EQ(shop.getPingPort(), 0);
  EXPECT_STREQ(Kept(shop.getPingAltAddress()), "");
  EXPECT_EQ(shop.getPingAltPort(), 0);
  EXPECT_EQ(shop.CreateTransaction("1", "2"), 0);
  EXPECT_STREQ(shop.getReceiptHeaderPtr(),
               "\n"
               "2012/12/05      10:00:00\n"
               "Терминал               \n"
               "     *** КАРТА ***\n"
               "    1\n");
  EXPECT_STREQ(shop.getReceiptFooterPtr(), "\n");
  EXPECT_EQ(shop.BalanceProc(), -501);
}

TEST_F(Shift, NewSettingsTakeThePlaceOfMissingOnes) {
  shop.Write("CONFIG.JSN", R"({"terminalId":"A"})");
  EXPECT_EQ(shop.LUMOInit(), 0);
  EXPECT_FALSE(shop.Exists("CONFIG.JSN"));
  EXPECT_EQ(shop.Read("CONFIG"), R"({"terminalId":"A"})");
  EXPECT_STREQ(shop.getTerminalId(), "A");
  shop.Write("CONFIG.JSN", R"({"terminalId":"B"})");
  shop.ClearTrace();
  EXPECT_EQ(shop.LUMOInit(), 0);
  EXPECT_STREQ(shop.getTerminalId(), "B");
  EXPECT_TRUE(shop.Exists("CONFIG.JSN"));
  EXPECT_EQ(shop.Read("CONFIG"), R"({"terminalId":"A"})");
  EXPECT_THAT(shop.Trace(), HasSubstr("ERROR: Cant save new config!\n"));
}

TEST_F(Shift, UpdatesAreNotThereYet) {
  EXPECT_EQ(shop.RunUpdater("пакет"), -1);
  EXPECT_EQ(shop.CommitUpdates(), -1);
  EXPECT_EQ(shop.RunUpdater(nullptr), -1);
  EXPECT_EQ(shop.LUMOClean(), 0);
  EXPECT_EQ(shop.Trace(), "RunUpdater(\"пакет\")CommitUpdates()RunUpdater(\"(null)\")LUMOClean()\n");
}

TEST_F(Shift, CodesHaveTheirMessages) {
  EXPECT_STREQ(shop.GetErrorMessage(-410), "Ошибка при отправке запроса");
  EXPECT_EQ(shop.Trace(), "");
  const char *unknown = shop.GetErrorMessage(0);
  EXPECT_STREQ(unknown, "Неизвестная ошибка 0");
  EXPECT_EQ(shop.GetErrorMessage(-2147483647 - 1), unknown);
  EXPECT_STREQ(unknown, "Неизвестная ошибка -2147483648");
  EXPECT_EQ(shop.Trace(), "WARNING: Unknown error code 0\nWARNING: Unknown error code -2147483648\n");
}

}  // namespace
