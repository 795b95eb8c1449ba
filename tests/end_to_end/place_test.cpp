// end_to_end/place_test.cpp: where the library lies does not matter, nor where the register stands; and a
// register that starts again goes on where it stopped.
#include <filesystem>
#include <set>
#include <string>
#include <vector>

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
using testing::ElementsAre;
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

// The longest path that a system takes, in UTF-16 units; one unit more and there is no such file.
constexpr size_t kLongestPath = 259;

// The folder whose file of this name has the longest path.
size_t LongestFor(const std::string &file_name) {
  return kLongestPath - file_name.size();
}

class Depth : public testing::TestWithParam<const char *> {
 protected:
  static std::string Lines(int count) {
    std::string lines;
    for (int i = 0; i < count; ++i) lines += std::to_string(i) + "\n";
    return lines;
  }
};

constexpr char kNoSuchPath[] = "ERROR: CreateFile function failed with error 3\n";

const std::string kFirstDeposit = Record("DEPOSIT", R"("deposit":{"amount":1})", kFirstRrn, true);
const std::string kSecondDeposit = Record("DEPOSIT", R"("deposit":{"amount":2})", kSecondRrn, true);

TEST_P(Depth, LeavesRoomForEveryFile) {
  Shop shop(LongestFor("OFFLINE_TMP"), GetParam());
  const ScriptedServer server(std::vector<Answer>{{{test::Refusal("putDepositResponse", "LOCKED_CARD")}},
                                                  {{Success("putDepositResponse", "", kSecondRrn)}}});
  shop.Start(server.address());
  shop.Write("OFFLINE", kFirstDeposit + kSecondDeposit);
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_EQ(shop.Read("OFFLINE"), kFirstDeposit);
  EXPECT_THAT(shop.Files(), ElementsAre("CONFIG", "OFFLINE", "STATE", "TRACE.TXT"));
}

TEST_P(Depth, WithoutRoomForAReplaysFailuresKeepsTheJournal) {
  Shop shop(LongestFor("OFFLINE_TMP") + 1, GetParam());
  const ScriptedServer server(std::vector<Answer>{{{test::Refusal("putDepositResponse", "LOCKED_CARD")}},
                                                  {{Success("putDepositResponse", "", kSecondRrn)}}});
  shop.Start(server.address());
  shop.Write("OFFLINE", kFirstDeposit + kSecondDeposit);
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_THAT(shop.Trace(),
              HasSubstr(std::string(kNoSuchPath) + "ERROR: [OFFLINE_TMP] file is not opened\n"));
  EXPECT_EQ(shop.Read("OFFLINE"), kFirstDeposit + kSecondDeposit);
  EXPECT_THAT(shop.Files(), ElementsAre("CONFIG", "OFFLINE", "STATE", "TRACE.TXT"));
}

TEST_P(Depth, LeavesRoomForTheTrace) {
  Shop shop(LongestFor("TRACE.TXT"), GetParam());
  shop.Start("http://127.0.0.1:1/");
  EXPECT_EQ(shop.CloseTransaction(), 0);
  EXPECT_THAT(shop.Trace(), StartsWith("CloseTransaction()\n"));
}

TEST_P(Depth, WithoutRoomForTheTraceLosesItAlone) {
  Shop shop(LongestFor("TRACE.TXT") + 1, GetParam());
  const ScriptedServer server(Success("cardExchangeResponse"));
  shop.Start(server.address());
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_THAT(shop.Files(), ElementsAre("CONFIG", "LOG", "STATE"));
}

TEST_P(Depth, LeavesRoomToTrimTheLog) {
  Shop shop(LongestFor("LOG.old"), GetParam());
  const ScriptedServer server(Success("cardExchangeResponse"));
  shop.Start(server.address());
  shop.Write("LOG", Lines(1000));
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(shop.Read("LOG"), Lines(1000).substr(Lines(333).size()) + Record("EXCHANGE", ""));
  EXPECT_THAT(shop.Files(), ElementsAre("CONFIG", "LOG", "STATE"));
}

TEST_P(Depth, WithoutRoomToTrimTheLogLetsItGrow) {
  Shop shop(LongestFor("LOG.old") + 1, GetParam());
  const ScriptedServer server(Success("cardExchangeResponse"));
  shop.Start(server.address());
  shop.Write("LOG", Lines(1000));
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(shop.Read("LOG"), Lines(1000) + Record("EXCHANGE", ""));
  EXPECT_THAT(shop.Files(), ElementsAre("CONFIG", "LOG", "STATE"));
}

TEST_P(Depth, LeavesRoomForTheOfflineJournal) {
  Shop shop(LongestFor("OFFLINE"), GetParam());
  shop.Start("http://127.0.0.1:" + std::to_string(test::UnusedPort()) + "/ws", R"("offlineMode":1)");
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  EXPECT_EQ(shop.CreateAmountBill(1, "B"), 0);
  EXPECT_EQ(shop.PaymentProc(0, "B"), 0);
  EXPECT_EQ(shop.PaymentConfirmProc(kFirstRrn), 0);
  EXPECT_EQ(shop.Read("OFFLINE"), shop.Read("LOG"));
  EXPECT_THAT(shop.Files(), ElementsAre("B", "CONFIG", "LOG", "OFFLINE", "STATE"));
}

// This is also the folder of the longest path of CONFIG.
TEST_P(Depth, WithoutRoomForTheOfflineJournalConfirmsNothing) {
  Shop shop(LongestFor("OFFLINE") + 1, GetParam());
  shop.Start("http://127.0.0.1:" + std::to_string(test::UnusedPort()) + "/ws", R"("offlineMode":1)");
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  EXPECT_EQ(shop.CreateAmountBill(1, "B"), 0);
  EXPECT_EQ(shop.PaymentProc(0, "B"), 0);
  EXPECT_EQ(shop.PaymentConfirmProc(kFirstRrn), -201);
  EXPECT_THAT(shop.Files(), ElementsAre("B", "CONFIG", "LOG", "STATE"));
}

TEST_P(Depth, WithoutRoomForTheSettingsIsAFailedStart) {
  Shop shop(LongestFor("CONFIG") + 1, GetParam());
  shop.Write("STATE", State());
  EXPECT_EQ(shop.LUMOInit(), -111);
  EXPECT_EQ(shop.LoadState(), 0);
  EXPECT_EQ(shop.setNeedUpdate(1), 0);
  EXPECT_EQ(shop.Read("STATE"), State(kFirstRrn, 0, 1));
  EXPECT_THAT(shop.Files(), ElementsAre("STATE"));
}

TEST_P(Depth, OfARegistersFolderLeavesRoomForABill) {
  Shop shop(100, GetParam());
  const ScriptedServer server(Success("putPaymentResponse", R"("bill":{"totalSum":100})"));
  shop.Start(server.address());
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  const std::string longest = test::LongPath(kLongestPath - 100, GetParam());
  fs::create_directories(fs::u8path(shop.folder() + longest).parent_path());
  EXPECT_EQ(shop.CreateAmountBill(100, longest.c_str()), 0);
  EXPECT_EQ(shop.PaymentProc(0, longest.c_str()), 0);
  EXPECT_THAT(shop.Read(longest), StartsWith(R"({"totalSum":100,"spendBonus":false,)"));
}

// The file that a name cut by its last unit would mean is there.
TEST_P(Depth, OfARegistersFolderWithoutRoomForABillIsNoBill) {
  Shop shop(100, GetParam());
  const ScriptedServer server(Success("putPaymentResponse", R"("bill":{"totalSum":100})"));
  shop.Start(server.address());
  ASSERT_EQ(shop.CreateTransaction(kCard, kCashier), 0);
  const std::string longest = test::LongPath(kLongestPath - 100, GetParam());
  fs::create_directories(fs::u8path(shop.folder() + longest).parent_path());
  ASSERT_EQ(shop.CreateAmountBill(100, longest.c_str()), 0);
  const std::string bill = shop.Read(longest);
  const std::set<std::string> files = shop.Files();
  for (const std::string &end : {std::string("x"), std::string(GetParam()), std::string(1000, 'x')}) {
    const std::string too_long = longest + end;
    EXPECT_EQ(shop.CreateAmountBill(1, too_long.c_str()), -105);
    EXPECT_THAT(shop.Trace(), HasSubstr(std::string(kNoSuchPath) + "CreateAmountBill\n"));
    EXPECT_EQ(shop.PaymentProc(0, too_long.c_str()), -106);
    EXPECT_EQ(shop.PaymentAndConfirmProc(0, too_long.c_str()), -307);
    EXPECT_EQ(shop.ActivationProc("SIMPLE_ACTIVATION", too_long.c_str(), 1, nullptr, nullptr), -106);
    EXPECT_EQ(shop.CashBackProc("1", too_long.c_str()), -113);
    EXPECT_EQ(shop.RunUpdater(too_long.c_str()), -1);
    shop.ClearTrace();
  }
  EXPECT_EQ(shop.CloseTransaction(), 0);
  EXPECT_EQ(shop.Files(), files);
  EXPECT_EQ(shop.Read(longest), bill);
  EXPECT_EQ(server.requests().size(), 0U);
}

TEST_P(Depth, OfATraceWithATagIsTheSame) {
  Shop shop(200, GetParam());
  shop.Start("http://127.0.0.1:1/");
  std::string tag;
  for (const std::string &name = GetParam(); fs::u8path(tag + name).u16string().size() <= 49;) tag += name;
  tag += std::string(49 - fs::u8path(tag).u16string().size(), 'x');
  const std::string longest = "TRACE_" + tag + ".TXT";
  EXPECT_EQ(shop.LUMOInitExt(tag.c_str()), 0);
  EXPECT_THAT(shop.Trace(longest), StartsWith("LUMOInit()\n"));
  EXPECT_THAT(shop.Files(), ElementsAre("CONFIG", "STATE", longest));
  shop.Remove(longest);
  EXPECT_EQ(shop.LUMOInitExt((tag + "x").c_str()), 0);
  EXPECT_THAT(shop.Files(), ElementsAre("CONFIG", "STATE"));
}

constexpr const char *kLetters[] = {"n", "я", "\xF0\x9F\x9B\x92"};
constexpr const char *kAlphabets[] = {"Latin", "Cyrillic", "Pairs"};

INSTANTIATE_TEST_SUITE_P(In, Depth, testing::ValuesIn(kLetters),
                         [](const auto &letter) { return std::string(kAlphabets[letter.index]); });

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

// The register's process ends with a transaction and a shift open, and starts again.
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
