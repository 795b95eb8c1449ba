// end_to_end/place_test.cpp: where the library lies does not matter, nor where the register stands; and a
// register that starts again goes on where it stopped.
#include <filesystem>

#include "end_to_end/register.h"

namespace {

namespace fs = std::filesystem;

using test::Answer;
using test::kCard;
using test::kCashier;
using test::kFirstRrn;
using test::kSecondRrn;
using test::kThirdRrn;
using test::Record;
using test::ScriptedServer;
using test::Shop;
using test::State;
using test::Success;
using testing::HasSubstr;
using testing::StartsWith;

class Place : public testing::TestWithParam<const char *> {};

// Letters, and characters beyond the basic plane.
constexpr const char *kFolders[] = {"POS", "Касса № 1", "касса \xF0\x9F\x9B\x92", "a b.c'd", "глубже/и ещё"};

TEST_P(Place, OfTheLibraryHoldsAllItsFiles) {
  Shop shop(GetParam());
  const ScriptedServer server(Success("putPaymentResponse", R"("bill":{"totalSum":100})"));
  shop.Start(server.address());
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  ASSERT_EQ(shop.CreateAmountBill(100, "счёт \xF0\x9F\xA7\xBE.JSN"), 0);
  EXPECT_EQ(shop.PaymentProc(0, "счёт \xF0\x9F\xA7\xBE.JSN"), 0);
  EXPECT_THAT(shop.Read("счёт \xF0\x9F\xA7\xBE.JSN"), StartsWith(R"({"totalSum":100,"spendBonus":false,)"));
  EXPECT_EQ(shop.Read("STATE"), State());
  EXPECT_THAT(shop.Read("LOG"), StartsWith(R"({"request":{"ver":"1.0","type":"PAYMENT",)"));
  EXPECT_THAT(shop.Trace(), StartsWith("CreateTransaction [9000000001] [7]\n"));
}

TEST_P(Place, OfTheRegisterDoesNotMatter) {
  const fs::path before = fs::current_path();
  Shop shop(GetParam());
  const fs::path elsewhere = fs::u8path(shop.folder() + "elsewhere");
  fs::create_directory(elsewhere);
  fs::current_path(elsewhere);
  const ScriptedServer server(Success("cardExchangeResponse"));
  shop.Start(server.address());
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(shop.CreateAmountBill(1, "BILL.JSN"), 0);
  EXPECT_EQ(shop.CreateAmountBill(1, "/ROOTED.JSN"), 0);
  EXPECT_TRUE(shop.Exists("BILL.JSN"));
  EXPECT_TRUE(shop.Exists("ROOTED.JSN"));
  EXPECT_TRUE(fs::is_empty(elsewhere));
  fs::current_path(before);
}

TEST_P(Place, StaysThatOfTheFileWhenItIsAttachedAgain) {
  Shop shop(GetParam());
  EXPECT_EQ(shop.DllAttach(shop.module()), 1);
  EXPECT_EQ(shop.CreateAmountBill(1, "BILL.JSN"), 0);
  EXPECT_TRUE(shop.Exists("BILL.JSN"));
}

INSTANTIATE_TEST_SUITE_P(Every, Place, testing::ValuesIn(kFolders),
                         [](const auto &folder) { return "Folder" + std::to_string(folder.index); });

class Neighbours : public testing::Test {};

TEST_F(Neighbours, KeepTheirFilesApartAndNameTheirTraces) {
  Shop first("первая"), second("вторая");
  const ScriptedServer first_server(Success("cardExchangeResponse")),
      second_server(Success("putDepositResponse"));
  first.Start(first_server.address());
  second.Start(second_server.address());
  second.ClearTrace();
  ASSERT_EQ(second.LUMOInitExt("Касса 2 \xF0\x9F\x9B\x92"), 0);
  ASSERT_EQ(first.CreateTransaction(kCard, kCashier), 0);
  ASSERT_EQ(second.CreateTransaction(kCard, kCashier), 0);
  EXPECT_EQ(first.ExchangeProc("t"), 0);
  EXPECT_EQ(second.DepositProc(5), 0);
  EXPECT_EQ(first.Read("LOG"), Record("EXCHANGE", ""));
  EXPECT_EQ(second.Read("LOG"), Record("DEPOSIT", R"("deposit":{"amount":5})"));
  EXPECT_FALSE(second.Exists("TRACE.TXT"));
  EXPECT_THAT(second.Trace("TRACE_Касса 2 \xF0\x9F\x9B\x92.TXT"), StartsWith("LUMOInit()\nLoadNewConfig\n"));
  EXPECT_THAT(second.Trace("TRACE_Касса 2 \xF0\x9F\x9B\x92.TXT"), HasSubstr("DepositProc(5)\n"));
  EXPECT_THAT(first.Trace(), HasSubstr("ExchangeProc(t)\n"));
  EXPECT_EQ(first.CloseTransaction(), 0);
  EXPECT_EQ(second.CloseTransaction(), 0);
}

TEST_F(Neighbours, TagIsClearedByANullOneAndKeptByAPlainStart) {
  Shop shop;
  shop.Start("http://127.0.0.1:1/");
  ASSERT_EQ(shop.LUMOInitExt("K2"), 0);
  ASSERT_EQ(shop.LUMOInit(), 0);
  EXPECT_FALSE(shop.Exists("TRACE.TXT"));
  shop.Remove("TRACE_K2.TXT");
  ASSERT_EQ(shop.LUMOInitExt(nullptr), 0);
  EXPECT_FALSE(shop.Exists("TRACE_K2.TXT"));
  EXPECT_THAT(shop.Trace(), StartsWith("LUMOInit()\n"));
}

// The register's process ends in the middle of the day, with a transaction and a shift open, and starts
// again.
class Restart : public test::Register {};

TEST_F(Restart, GoesOnWithTheNextRrnInTheSameShift) {
  server = std::make_unique<ScriptedServer>(std::vector<Answer>{
      {{Success("cardExchangeResponse")}}, {{Success("putDepositResponse", "", kSecondRrn)}}});
  shop.Start(server->address(), R"("shiftMode":1)");
  ASSERT_EQ(shop.OpenShift("42"), 0);
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  ASSERT_EQ(shop.ExchangeProc("t"), 0);

  shop.LoadAgain();
  EXPECT_EQ(shop.LUMOInit(), 0);
  EXPECT_STREQ(shop.getRRN(), kFirstRrn);
  EXPECT_EQ(shop.getReceiptBodyPtr(), nullptr);
  EXPECT_EQ(shop.OpenShift("43"), -601);
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  EXPECT_EQ(shop.DepositProc(5), 0);
  EXPECT_STREQ(shop.getRRN(), kSecondRrn);
  EXPECT_EQ(shop.Read("LOG"), Record("EXCHANGE", "", kFirstRrn, false, "42") +
                                  Record("DEPOSIT", R"("deposit":{"amount":5})", kSecondRrn, false, "42"));
  EXPECT_EQ(shop.CloseTransaction(), 0);
  EXPECT_EQ(shop.CloseShift(), 0);
}

TEST_F(Restart, SendsWhatTheProcessBeforeDidOffline) {
  OpenAlone(R"("offlineMode":1,"localBonusOffline":3)");
  ASSERT_EQ(shop.CreateAmountBill(10000, "BILL.JSN"), 0);
  ASSERT_EQ(shop.PaymentProc(0, "BILL.JSN"), 0);
  ASSERT_EQ(shop.PaymentConfirmProc(kFirstRrn), 0);
  const std::string journal = shop.Read("OFFLINE"), state = shop.Read("STATE");

  shop.LoadAgain();
  const ScriptedServer back({Answer{{Success("putPaymentResponse", "\"bill\":{}")}},
                             Answer{{Success("putPaymentConfirmResponse", "", kSecondRrn)}}});
  shop.Start(back.address(), R"("offlineMode":1)");
  shop.Write("STATE", state);
  EXPECT_EQ(shop.getOfflineState(), 1);
  EXPECT_EQ(shop.SendOfflinePayments(), 2);
  EXPECT_EQ(shop.getOfflineState(), 0);
  EXPECT_EQ(shop.Read("OFFLINE"), journal);
  EXPECT_STREQ(shop.getRRN(), kSecondRrn);
  EXPECT_GT(shop.GenerateSummaryReport("2012", "2013"), 0);
  EXPECT_STREQ(shop.GetReportPtr(),
               "ПОДТВЕРЖДЕННЫЕ ПЛАТЕЖИ:\n"
               "Кол-во: 1\n"
               "Начислено бнс:      3.00\n"
               "Потрачено бнс:      0.00\n"
               "Скидка бнс:         0.00\n"
               "\n"
               "-----------------------\n");
}

}  // namespace
