// end_to_end/away_test.cpp: the server is away: before it ever answered, and after. What docs/terminal.md
// says about it, a sentence a test.
#include <filesystem>

#include "end_to_end/bench.h"

namespace {

using test::Answer;
using test::kFirstRrn;
using test::kSecondRrn;
using test::Success;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr char kOfflineSettings[] =
    R"("offlineMode":1,"localBonusOffline":3,"globalBonusOffline":2,"orgFeeOffline":1)";

// ---- A server that is away ----

class Away : public test::Bench {
 protected:
  void SetUp() override {
    Start(kOfflineSettings);
    GoAway();
  }
};

TEST_F(Away, APaymentIsCompletedFromTheRatesOfConfigAndSpendsNothing) {
  EXPECT_EQ(Pay(5000), 0);
  EXPECT_EQ(shop.lumoIsOffline(), 1);
  EXPECT_EQ(shop.GetSpendBonusAmount(), 0);
  EXPECT_EQ(shop.GetDiscountAmount(), 0);
  EXPECT_EQ(shop.GetEarnBonusAmount(), 500);
  EXPECT_STREQ(shop.getRRN(), kFirstRrn);
  EXPECT_THAT(Body(), HasSubstr("        ОФФЛАЙН\n"));
  EXPECT_THAT(Body(), HasSubstr("Сумма (нал.):\n                  100.00\n"));
  EXPECT_THAT(shop.Read("OFFLINE"), HasSubstr(R"("isOffline":true)"));
  EXPECT_THAT(shop.Read("OFFLINE"), HasSubstr(R"("spendBonus":false)"));
}

TEST_F(Away, WithoutOfflineModeAPaymentIsRefused) {
  Start("");
  GoAway();
  EXPECT_EQ(Pay(0), -501);
  EXPECT_EQ(shop.lumoIsOffline(), 0);
  EXPECT_EQ(shop.getOfflineState(), 0);
  EXPECT_FALSE(shop.Exists("OFFLINE"));
}

TEST_F(Away, WithoutOfflineModeEveryOperationIsRefusedButALink) {
  Start("");
  GoAway();
  ASSERT_EQ(shop.CreateAmountBill(10000, "BILL.JSN"), 0);
  EXPECT_EQ(shop.PaymentAndConfirmProc(0, "BILL.JSN"), -501);
  EXPECT_EQ(shop.PaymentConfirmProc(kFirstRrn), -501);
  EXPECT_EQ(shop.PaymentCancelProc(kFirstRrn), -501);
  EXPECT_EQ(shop.ActivationProc("SIMPLE_ACTIVATION", nullptr, 0, nullptr, nullptr), -501);
  EXPECT_EQ(shop.BalanceProc(), -501);
  EXPECT_EQ(shop.CashBackProc(kFirstRrn, nullptr), -501);
  EXPECT_EQ(shop.DepositProc(100), -501);
  EXPECT_EQ(shop.ExchangeProc("TOKEN7"), -501);
  EXPECT_EQ(Body(), "");
  EXPECT_EQ(shop.LinkCardProc("1000000008"), 0);
  EXPECT_FALSE(shop.Exists("OFFLINE"));
}

TEST_F(Away, NothingTellsItFromAnOnlinePaymentButTheCallTheSlipAndTheRecord) {
  ASSERT_EQ(Pay(0), 0);
  // As before the first answer.
  EXPECT_STREQ(shop.getResponseState(), "OK");
  EXPECT_STREQ(shop.getResponseStateCode(), "OK");
  EXPECT_EQ(shop.lumoIsOffline(), 1);
  NewTransaction();
  EXPECT_EQ(shop.lumoIsOffline(), 0);
  EXPECT_EQ(shop.getOfflineState(), 1);  // tells of the server, not of this transaction
}

TEST_F(Away, ConfirmationsAndCancellationsAreRecordedOnly) {
  ASSERT_EQ(Pay(0), 0);
  NewTransaction();
  EXPECT_EQ(shop.PaymentConfirmProc(kFirstRrn), 0);
  EXPECT_EQ(shop.lumoIsOffline(), 1);
  NewTransaction();
  EXPECT_EQ(shop.PaymentCancelProc(kFirstRrn), 0);
  EXPECT_THAT(Body(), HasSubstr("    В РЕЖИМЕ ОФФЛАЙН!   \n"));
  EXPECT_EQ(shop.lumoOfflineCount(), 3);
  EXPECT_EQ(Exchanges(), 0U);
}

TEST_F(Away, EveryOtherOperationFails) {
  EXPECT_EQ(shop.BalanceProc(), -501);
  EXPECT_EQ(shop.ActivationProc("SIMPLE_ACTIVATION", nullptr, 0, nullptr, nullptr), -501);
  EXPECT_EQ(shop.CashBackProc(kFirstRrn, nullptr), -501);
  EXPECT_EQ(shop.DepositProc(100), -501);
  EXPECT_EQ(shop.ExchangeProc("TOKEN7"), -501);
  EXPECT_EQ(Body(), "");
  EXPECT_FALSE(shop.Exists("OFFLINE"));
  EXPECT_FALSE(shop.Exists("LOG"));
}

TEST_F(Away, LinkingACardReturnsZeroAsItAlwaysDoes) {
  EXPECT_EQ(shop.LinkCardProc("1000000008"), 0);
  EXPECT_FALSE(shop.Exists("OFFLINE"));
  EXPECT_THAT(shop.Read("LOG"), HasSubstr(R"("type":"LINK")"));
}

TEST_F(Away, TheFlagKeepsNoOperationFromTryingTheServer) {
  ASSERT_EQ(Pay(0), 0);
  ASSERT_EQ(shop.getOfflineState(), 1);
  ComeBack();
  NewTransaction();
  EXPECT_EQ(Pay(0), 0);
  EXPECT_EQ(shop.lumoIsOffline(), 0);
  EXPECT_EQ(shop.getOfflineState(), 0);
  EXPECT_EQ(Exchanges(), 1U);
}

// What that costs in time is the system's affair: see `timeout`.
TEST_F(Away, EverySaleTriesBothAddresses) {
  const std::string alternate = "127.0.0.1:" + std::to_string(test::UnusedPort()) + "/";
  Start(R"("offlineMode":1,"serverAltAddr":"http://)" + alternate + "ws\"");
  GoAway();
  ASSERT_EQ(Pay(0), 0);
  for (int sale = 0; sale < 2; ++sale) {
    NewTransaction();
    shop.ClearTrace();
    ASSERT_EQ(Pay(0), 0);
    EXPECT_THAT(shop.Trace(),
                HasSubstr("Connecting to " + bench.address() + "//ws...\nERROR: Connection Failed "));
    EXPECT_THAT(shop.Trace(), HasSubstr("Connecting to " + alternate + "/ws...\nERROR: Connection Failed "));
  }
}

TEST_F(Away, ATransactionThatIsOfflineAsksTheServerForABalanceNoMore) {
  ASSERT_EQ(Pay(0), 0);
  ComeBack();
  const std::string slip = Body();
  EXPECT_EQ(shop.BalanceProc(), 0);
  EXPECT_EQ(shop.GetBalance(), 0);
  EXPECT_EQ(Body(), slip);
  EXPECT_EQ(Exchanges(), 0U);
}

// The deposit is done and its record waits all the same. But for its number, the replay would do it again.
TEST_F(Away, ATransactionThatIsOfflineLeavesRecordsOfWhatTheServerTook) {
  ASSERT_EQ(Pay(0), 0);
  ComeBack();
  EXPECT_EQ(shop.DepositProc(100), 0);
  EXPECT_THAT(shop.Read("OFFLINE"), HasSubstr(R"("type":"DEPOSIT")"));
  EXPECT_EQ(shop.lumoOfflineCount(), 2);
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_THAT(shop.Trace(), HasSubstr("response.stateCode = DUPLICATE_REQUEST_ID\n"));
}

// Its record does not say what comes back.
TEST_F(Away, AReturnInATransactionThatIsOfflineIsRefusedForEver) {
  ASSERT_EQ(Pay(0), 0);
  ComeBack();
  EXPECT_EQ(shop.CashBackProc(kFirstRrn, nullptr), 0);
  EXPECT_EQ(Exchanges(), 0U);
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_EQ(shop.lumoOfflineCount(), 1);
  EXPECT_THAT(shop.Trace(), HasSubstr(R"("cashBack":{"requestId":"","cashBackType":"FULL"})"));
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  EXPECT_THAT(shop.Trace(), HasSubstr("response.stateCode = BILL_NOT_FOUND\n"));
}

TEST_F(Away, RatesThatContradictEachOtherStopTheSale) {
  Start(R"("offlineMode":1,"localBonusOffline":1,"globalBonusOffline":1,"orgFeeOffline":3)");
  GoAway();
  EXPECT_EQ(Pay(0), -104);
  EXPECT_EQ(shop.lumoIsOffline(), 0);
  EXPECT_FALSE(shop.Exists("OFFLINE"));
}

// PAID, and nobody will ever tell the server.
TEST_F(Away, APaymentWhoseRecordCannotBeKeptReturnsZero) {
  std::filesystem::create_directory(std::filesystem::u8path(shop.folder() + "OFFLINE"));
  EXPECT_EQ(Pay(0), 0);
  EXPECT_EQ(shop.lumoIsOffline(), 1);
  EXPECT_EQ(shop.lumoOfflineCount(), -307);
  EXPECT_THAT(shop.Trace(), HasSubstr("[OFFLINE] file is not opened\n"));
  // A confirmation tells.
  EXPECT_EQ(shop.PaymentConfirmProc(kFirstRrn), -201);
}

// The count before and after a sale shows whether its record was kept.
TEST_F(Away, EachOfflineSaleCountsOne) {
  EXPECT_EQ(shop.lumoOfflineCount(), 0);
  ASSERT_EQ(Pay(0), 0);
  EXPECT_EQ(shop.lumoOfflineCount(), 1);
  ASSERT_EQ(shop.PaymentConfirmProc(kFirstRrn), 0);
  EXPECT_EQ(shop.lumoOfflineCount(), 2);
}

// Only a connection that cannot be made is "away".
TEST_F(Away, AnAnswerThatDoesNotComeIsNoReasonToSellOffline) {
  ComeBack();
  bench.SetFault(loyalty::ParseFault("cut 0"));
  EXPECT_EQ(Pay(0), -401);
  EXPECT_EQ(shop.lumoIsOffline(), 0);
  EXPECT_EQ(shop.getOfflineState(), 0);
  EXPECT_FALSE(shop.Exists("OFFLINE"));
}

// ---- The server is back ----

TEST_F(Away, TheReplayGoesOnSendingWhatTheServerTookUntilOfflineIsCleared) {
  SellOffline();
  EXPECT_EQ(shop.lumoOfflineCount(), 2);
  ComeBack();
  EXPECT_EQ(shop.SendOfflinePayments(), 2);
  EXPECT_EQ(StateOf(kFirstRrn), "confirmed");
  EXPECT_EQ(shop.lumoOfflineCount(), 2);
  // Sent again, refused now, and kept.
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  EXPECT_THAT(shop.Trace(), HasSubstr("response.stateCode = DUPLICATE_REQUEST_ID\n"));
  EXPECT_EQ(shop.lumoOfflineCount(), 2);
  EXPECT_EQ(StateOf(kFirstRrn), "confirmed");
}

TEST_F(Away, WhenAllThatWaitedWasSentTheRegisterClears) {
  SellOffline();
  ComeBack();
  const int waiting = shop.lumoOfflineCount();
  EXPECT_EQ(shop.SendOfflinePayments(), waiting);
  EXPECT_EQ(shop.lumoClearOffline(waiting), 0);
  EXPECT_FALSE(shop.Exists("OFFLINE"));
  EXPECT_EQ(shop.lumoOfflineCount(), 0);
  const auto exchanges = Exchanges();
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  EXPECT_EQ(Exchanges(), exchanges);
}

TEST_F(Away, WhenSomeFailedTheOthersAreGoneAlready) {
  SellOffline();
  ComeBack();
  bench.SetFault(loyalty::ParseFault("refusal INTERNAL_ERROR on confirm"));
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_EQ(shop.lumoOfflineCount(), 1);
  EXPECT_THAT(shop.Read("OFFLINE"), HasSubstr(R"("type":"PAYMENT_CONFIRM")"));
  // The number that was sent is not the number that waited: nothing is cleared.
  EXPECT_EQ(shop.lumoClearOffline(2), -202);
  EXPECT_EQ(shop.lumoOfflineCount(), 1);
  ComeBack();
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_EQ(StateOf(kFirstRrn), "confirmed");
}

TEST_F(Away, WhenTheDiskFailsTooNothingIsLostAndSomeIsSentTwice) {
  SellOffline();
  ComeBack();
  const auto tmp = std::filesystem::u8path(shop.folder() + "OFFLINE_TMP");
  std::filesystem::create_directory(tmp);
  bench.SetFault(loyalty::ParseFault("refusal INTERNAL_ERROR on confirm"));
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_EQ(shop.lumoOfflineCount(), 2);
  std::filesystem::remove(tmp);
  ComeBack();
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_THAT(shop.Trace(), HasSubstr("response.stateCode = DUPLICATE_REQUEST_ID\n"));
  EXPECT_EQ(StateOf(kFirstRrn), "confirmed");
  EXPECT_EQ(shop.lumoOfflineCount(), 1);
}

// Taken by the server, its answer lost: the next replay is refused as a duplicate, for ever.
TEST_F(Away, ARecordWhoseAnswerWasLostIsRefusedAsADuplicateAndKept) {
  SellOffline();
  ComeBack();
  bench.SetFault(loyalty::ParseFault("cut 0 on payment times 1"));
  EXPECT_EQ(shop.SendOfflinePayments(), 1);
  EXPECT_EQ(StateOf(kFirstRrn), "confirmed");
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  EXPECT_THAT(shop.Trace(), HasSubstr("response.stateCode = DUPLICATE_REQUEST_ID\n"));
  EXPECT_EQ(shop.lumoOfflineCount(), 1);
}

// ---- Numbers after a replay ----

class ReplayedNumbers : public test::Register {
 protected:
  // Two sales without the server, an online sale, then the replay, answered with this id or each one's own.
  void Replay(const std::string &replay_id) {
    server = std::make_unique<test::ScriptedServer>(std::vector<Answer>{
        Give("putDepositResponse", "", "1234512120500010"),
        Give("putPaymentResponse", R"("bill":{})", replay_id.empty() ? kFirstRrn : replay_id),
        Give("putPaymentResponse", R"("bill":{})", replay_id.empty() ? kSecondRrn : replay_id),
        Give("putDepositResponse", "", ""),
    });
    shop.Start(server->address(), kOfflineSettings);
    const std::string bill = R"("bill":{"totalSum":1,"spendBonus":false,"orderLen":0,"billNum":"1",)"
                             R"("billDate":"d","partnerFee":0})";
    shop.Write("OFFLINE", test::Record("PAYMENT", bill, kFirstRrn, true) +
                              test::Record("PAYMENT", bill, kSecondRrn, true));
    shop.Write("STATE", test::State(kSecondRrn, 1));
    ASSERT_EQ(shop.LoadState(), 0);
    ASSERT_EQ(shop.CreateTransaction(test::kCard, test::kCashier), 0);
    ASSERT_EQ(shop.DepositProc(1), 0);
    ASSERT_STREQ(shop.getRRN(), "1234512120500010");
    ASSERT_EQ(shop.SendOfflinePayments(), 2);
  }
  static Answer Give(const std::string &name, const std::string &part, const std::string &rrn) {
    return Answer{{Success(name, part, rrn)}, Answer::End::kClose};
  }
};

// A server that echoes the id of each record makes the terminal use its numbers twice.
TEST_F(ReplayedNumbers, BeginBehindTheLastRecordReplayed) {
  Replay("");
  EXPECT_STREQ(shop.getRRN(), kSecondRrn);
  EXPECT_EQ(shop.DepositProc(1), 0);
  EXPECT_THAT(server->requests().back(), HasSubstr(R"("requestId":"1234512120500010")"));
}

TEST_F(ReplayedNumbers, GoOnWhenTheServerAnswersWithTheTerminalsHighestId) {
  Replay("1234512120500010");
  EXPECT_STREQ(shop.getRRN(), "1234512120500010");
  EXPECT_EQ(shop.DepositProc(1), 0);
  EXPECT_THAT(server->requests().back(), HasSubstr(R"("requestId":"1234512120500011")"));
}

// ---- A terminal that has no RRN yet ----

class Unnumbered : public test::Bench {
 protected:
  void SetUp() override {
    Start(kOfflineSettings);
    SetState("{}");
  }
};

TEST_F(Unnumbered, TheFirstOperationAsksForTheLastNumberInAnExchangeOfItsOwn) {
  EXPECT_EQ(Pay(0), 0);
  EXPECT_EQ(Exchanges(), 2U);
  EXPECT_THAT(shop.Trace(), HasSubstr("TransactionProcess [LAST_RRN]\n"));
  EXPECT_STREQ(shop.getRRN(), "1234512120500000");
  EXPECT_EQ(shop.PaymentConfirmProc(shop.getRRN()), 0);
  EXPECT_EQ(Exchanges(), 3U);
}

TEST_F(Unnumbered, SellsOfflineWithoutANumber) {
  GoAway();
  EXPECT_EQ(Pay(0), 0);
  EXPECT_EQ(shop.getRRN(), nullptr);
  EXPECT_THAT(Body(), Not(HasSubstr("RRN:")));
  EXPECT_THAT(shop.Read("OFFLINE"), HasSubstr(R"("requestId":"")"));
  // There is nothing to confirm it by.
  EXPECT_EQ(shop.PaymentConfirmProc(shop.getRRN()), 0);
  EXPECT_THAT(shop.Read("OFFLINE"), HasSubstr(R"("paymentConfirm":{"requestId":"")"));
}

TEST_F(Unnumbered, SuchSalesAreRefusedForEver) {
  GoAway();
  ASSERT_EQ(Pay(0), 0);
  ComeBack();
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  EXPECT_THAT(shop.Trace(), HasSubstr("response.stateCode = REQUEST_ID_EMPTY\n"));
  // Also once the terminal has numbers.
  NewTransaction();
  EXPECT_EQ(shop.BalanceProc(), 0);
  EXPECT_STREQ(shop.getRRN(), "1234512120500000");
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  EXPECT_EQ(shop.lumoOfflineCount(), 1);
}

TEST_F(Unnumbered, OneOperationThatReachesTheServerIsTheCure) {
  EXPECT_EQ(shop.BalanceProc(), 0);
  GoAway();
  NewTransaction();
  EXPECT_EQ(Pay(0), 0);
  EXPECT_STREQ(shop.getRRN(), "1234512120500001");
  EXPECT_THAT(shop.Read("OFFLINE"), HasSubstr(R"("requestId":"1234512120500001")"));
}

TEST_F(Unnumbered, AStateWithAnOldNumberIsTheCureWithoutTheServer) {
  SetState(R"({"reqId":"1234512010100000"})");
  GoAway();
  EXPECT_EQ(Pay(0), 0);
  EXPECT_STREQ(shop.getRRN(), "1234512120500000");
}

TEST_F(Unnumbered, IsATerminalWhoseStateWasLost) {
  Start(kOfflineSettings);
  ASSERT_EQ(Pay(0), 0);
  ASSERT_STREQ(shop.getRRN(), kFirstRrn);
  GoAway();
  shop.Remove("STATE");
  NewTransaction();
  EXPECT_EQ(Pay(0), 0);
  EXPECT_EQ(shop.getRRN(), nullptr);
  EXPECT_THAT(shop.Read("OFFLINE"), HasSubstr(R"("requestId":"")"));
  // The last number that LOG has is the cure.
  SetState(R"({"reqId":")" + std::string(kFirstRrn) + R"("})");
  NewTransaction();
  EXPECT_EQ(Pay(0), 0);
  EXPECT_STREQ(shop.getRRN(), kSecondRrn);
}

// The server is there and only this question fails: the operation goes without a number.
TEST_F(Unnumbered, WhenTheQuestionFailsTheOperationIsRefused) {
  bench.SetFault(loyalty::ParseFault("http 500 on rrn"));
  EXPECT_EQ(Pay(0), -405);
  EXPECT_STREQ(shop.getResponseStateCode(), "REQUEST_ID_EMPTY");
  ComeBack();
  EXPECT_EQ(Pay(0), 0);
}

// ---- A clock that is behind ----

class ClockBehind : public test::Bench {
 protected:
  void SetUp() override { Start(kOfflineSettings); }
};

TEST_F(ClockBehind, AnOperationHasNoNumberAndIsRefused) {
  test::SetClock(2012, 12, 4, 23, 59, 59);
  EXPECT_EQ(Pay(0), -405);
  EXPECT_STREQ(shop.getResponseStateCode(), "REQUEST_ID_EMPTY");
  EXPECT_THAT(shop.Trace(),
              HasSubstr("ERROR: Date compare error - old rrn date[121205] request date[121204]\n"));
}

TEST_F(ClockBehind, AnOfflineSaleHasNoNumberAndIsRefusedForEver) {
  test::SetClock(2012, 12, 4, 23, 59, 59);
  GoAway();
  EXPECT_EQ(Pay(0), 0);
  EXPECT_THAT(shop.Read("OFFLINE"), HasSubstr(R"("requestId":"")"));
  test::SetClock(2012, 12, 5, 10, 0, 0);
  ComeBack();
  EXPECT_EQ(shop.SendOfflinePayments(), 0);
  EXPECT_THAT(shop.Trace(), HasSubstr("response.stateCode = REQUEST_ID_EMPTY\n"));
}

// Whoever confirms or cancels by it means one sale and meets another.
TEST_F(ClockBehind, GetRrnTellsAnOlderSalesNumber) {
  ASSERT_EQ(Pay(0), 0);
  NewTransaction();
  test::SetClock(2012, 12, 4, 23, 59, 59);
  GoAway();
  ASSERT_EQ(Pay(0), 0);
  EXPECT_STREQ(shop.getRRN(), kFirstRrn);
  EXPECT_THAT(Body(), Not(HasSubstr("RRN:")));
}

TEST_F(ClockBehind, ASecondOperationOfATransactionBearsTheNumberOfTheFirst) {
  ASSERT_EQ(Pay(0), 0);
  test::SetClock(2012, 12, 4, 23, 59, 59);
  EXPECT_EQ(shop.DepositProc(1), -405);
  EXPECT_STREQ(shop.getResponseStateCode(), "DUPLICATE_REQUEST_ID");
}

TEST_F(ClockBehind, SetRightItSellsOn) {
  test::SetClock(2012, 12, 4, 23, 59, 59);
  ASSERT_EQ(Pay(0), -405);
  test::SetClock(2012, 12, 5, 0, 0, 0);
  EXPECT_EQ(Pay(0), 0);
  EXPECT_STREQ(shop.getRRN(), kFirstRrn);
}

// A clock that ran ahead stops the terminal when it is set right: its last number is of a day to come.
TEST_F(ClockBehind, AfterASaleInTheFutureTheDayMustComeOrStateBeMended) {
  test::SetClock(2013, 1, 1, 0, 0, 0);
  ASSERT_EQ(Pay(0), 0);
  ASSERT_STREQ(shop.getRRN(), "1234513010100000");
  test::SetClock(2012, 12, 5, 10, 0, 0);
  NewTransaction();
  EXPECT_EQ(Pay(0), -405);
  SetState(R"({"reqId":"1234512120500007"})");
  NewTransaction();
  EXPECT_EQ(Pay(0), 0);
  EXPECT_STREQ(shop.getRRN(), kFirstRrn);
}

}  // namespace
