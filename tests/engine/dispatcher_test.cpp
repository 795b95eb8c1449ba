// engine/dispatcher_test.cpp: what an exchange's outcome means for the persistent state.
#include "engine/dispatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "config/lumostate.h"
#include "engine/request.h"
#include "record/transaction.h"
#include "support/shop.h"

namespace {

using test::Count;
using test::Reply;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr auto kAd = lumo::REQUEST_AD;
constexpr auto kLastRrn = lumo::REQUEST_LAST_RRN;
constexpr auto kDeposit = lumo::REQUEST_DEPOSIT;

class Dispatcher : public test::Shop {
 protected:
  // The state as FillRequest left it, then the outcome of `type`.
  int Process(lumo::RequestType type) {
    card->request.type = type;
    folder.ClearTrace();
    return lumo::TransactionProcess(card);
  }
};

TEST_F(Dispatcher, RefusesAMissingRecord) {
  EXPECT_EQ(lumo::TransactionProcess(nullptr), -100);
  EXPECT_EQ(folder.Trace(), "ERROR: trans pointer is null\n");
}

TEST_F(Dispatcher, TracesTheTypeAndExchanges) {
  StartServer({Reply("putDepositResponse")});
  OpenShop();
  OpenCard();
  lumo::FillRequest(card, kDeposit);
  card->depositAmount = 700;
  EXPECT_EQ(Process(kDeposit), 0);
  EXPECT_THAT(folder.Trace(), StartsWith("TransactionProcess [DEPOSIT]\nTransactionProcessJson\n"));
  EXPECT_EQ(RequestDocument(0),
            "{\"putDepositRequest\":{" + test::RequestPart("DEPOSIT") + ",\"deposit\":{\"amount\":700}}}");
  EXPECT_STREQ(card->response.responseId, "5");
}

TEST_F(Dispatcher, WritesNoJournalAndNoReceipt) {
  StartServer({Reply("putDepositResponse")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(Process(kDeposit), 0);
  EXPECT_FALSE(folder.Exists("LOG"));
  EXPECT_EQ(Body(), "");
  EXPECT_EQ(card->completedOperations, 0U);
}

// ---- The offline switch ----

enum class Outcome { kSuccess, kRefused, kUnreachable, kBadAnswer };

struct OfflineCase : test::NamedCase {
  lumo::RequestType type;
  int offlineMode;
  int offlineBefore;
  Outcome outcome;
  int result;
  int offlineAfter;
  size_t questions;  // how often the state's file is read for it
};
const OfflineCase kOfflineCases[] = {
    {"FirstFailureSwitchesOn", kDeposit, 1, 0, Outcome::kUnreachable, -501, 1, 1},
    {"SecondFailureLeavesItOn", kDeposit, 1, 1, Outcome::kUnreachable, -501, 1, 1},
    {"SuccessSwitchesOff", kDeposit, 1, 1, Outcome::kSuccess, 0, 0, 1},
    {"SuccessLeavesItOff", kDeposit, 1, 0, Outcome::kSuccess, 0, 0, 1},
    {"RefusalLeavesItOn", kDeposit, 1, 1, Outcome::kRefused, -405, 1, 0},
    {"RefusalLeavesItOff", kDeposit, 1, 0, Outcome::kRefused, -405, 0, 0},
    {"BadAnswerLeavesItOn", kDeposit, 1, 1, Outcome::kBadAnswer, -303, 1, 0},
    {"BadAnswerLeavesItOff", kDeposit, 1, 0, Outcome::kBadAnswer, -303, 0, 0},
    {"WithoutTheModeFailureChangesNothing", kDeposit, 0, 0, Outcome::kUnreachable, -501, 0, 0},
    {"WithoutTheModeSuccessChangesNothing", kDeposit, 0, 1, Outcome::kSuccess, 0, 1, 0},
    {"Mode2IsNotOn", kDeposit, 2, 0, Outcome::kUnreachable, -501, 0, 0},
    {"AnotherStateIsNeither", kDeposit, 1, 2, Outcome::kUnreachable, -501, 2, 1},
    {"AnotherStateStaysAfterSuccess", kDeposit, 1, 2, Outcome::kSuccess, 0, 2, 1},
    {"AdFailureChangesNothing", kAd, 1, 0, Outcome::kUnreachable, -501, 0, 0},
    {"AdSuccessChangesNothing", kAd, 1, 1, Outcome::kSuccess, 0, 1, 0},
    {"LastRrnFailureChangesNothing", kLastRrn, 1, 0, Outcome::kUnreachable, -501, 0, 0},
    {"LastRrnSuccessChangesNothing", kLastRrn, 1, 1, Outcome::kSuccess, 0, 1, 0},
};

class OfflineSwitch : public Dispatcher, public testing::WithParamInterface<OfflineCase> {};

TEST_P(OfflineSwitch, FollowsTheOutcome) {
  switch (GetParam().outcome) {
    case Outcome::kSuccess:
      StartServer({Reply("putDepositResponse")});
      break;
    case Outcome::kRefused:
      StartServer({Reply("putDepositResponse", "", test::kRefusal)});
      break;
    case Outcome::kBadAnswer:
      StartServer({"nonsense"});
      break;
    case Outcome::kUnreachable:
      StopServer();
      break;
  }
  OpenShop("\"offlineMode\":" + std::to_string(GetParam().offlineMode));
  SetState("{\"offline\":" + std::to_string(GetParam().offlineBefore) + "}");
  OpenCard();
  EXPECT_EQ(Process(GetParam().type), GetParam().result);
  EXPECT_EQ(Count(folder.Trace(), "LoadState\n"), GetParam().questions);
  EXPECT_EQ(lumo::GetOfflineState(), GetParam().offlineAfter);
}

INSTANTIATE_TEST_SUITE_P(Cases, OfflineSwitch, testing::ValuesIn(kOfflineCases), test::CaseName());

TEST_F(Dispatcher, GoesOfflineAtTheFirstFailureAndBackAtTheFirstSuccess) {
  OpenShop(R"("offlineMode":1)");
  OpenCard();
  EXPECT_EQ(Process(kDeposit), -501);
  EXPECT_EQ(lumo::GetOfflineState(), 1);
  EXPECT_EQ(Process(kDeposit), -501);
  EXPECT_EQ(lumo::GetOfflineState(), 1);

  StartServer({Reply("putDepositResponse")});
  OpenShop(R"("offlineMode":1)");
  SetState(R"({"offline":1})");
  OpenCard();
  EXPECT_EQ(Process(kDeposit), 0);
  EXPECT_EQ(lumo::GetOfflineState(), 0);
}

TEST_F(Dispatcher, SwitchesBeforeItStoresIdAndUpdateFlag) {
  StartServer({Reply("putDepositResponse")});
  OpenShop(R"("offlineMode":1)");
  SetState(R"({"reqId":"1","offline":1})");
  OpenCard();
  EXPECT_EQ(Process(kDeposit), 0);
  EXPECT_THAT(folder.Trace(), EndsWith(std::string("Disconnect\n") + test::kStateReload +
                                       "SaveState\nSaveState\nSaveState\n"));
  EXPECT_EQ(State(), R"({"reqId":"TERM012120500050","offline":0,"shiftState":0,"update":0})");
}

// ---- Request id and update flag ----

struct OutcomeCase : test::NamedCase {
  const char *response;
  int result;
  const char *state;
};
const OutcomeCase kOutcomeCases[] = {
    {"SuccessStoresTheEchoedId", R"({"requestId":"TERM012120500050","requestState":"SUCCESS"})", 0,
     R"({"reqId":"TERM012120500050","offline":0,"shiftState":0,"update":0})"},
    {"RefusalStoresTheEchoedId", R"({"requestId":"TERM012120500050","requestState":"ERROR"})", -405,
     R"({"reqId":"TERM012120500050","offline":0,"shiftState":0,"update":0})"},
    {"SuccessWithoutIdKeepsTheOwn", R"({"requestState":"SUCCESS"})", 0,
     R"({"reqId":"TERM012120500008","offline":0,"shiftState":0,"update":0})"},
    {"RefusalWithoutIdKeepsTheOwn", R"({"requestState":"ERROR"})", -405,
     R"({"reqId":"TERM012120500008","offline":0,"shiftState":0,"update":0})"},
    {"AnEmptyIdIsStored", R"({"requestId":"","requestState":"SUCCESS"})", 0,
     R"({"reqId":"","offline":0,"shiftState":0,"update":0})"},
    {"SuccessSetsTheUpdateFlag", R"({"requestState":"SUCCESS","isNeedUpdate":true})", 0,
     R"({"reqId":"TERM012120500008","offline":0,"shiftState":0,"update":1})"},
    {"RefusalSetsTheUpdateFlag", R"({"requestState":"ERROR","isNeedUpdate":true})", -405,
     R"({"reqId":"TERM012120500008","offline":0,"shiftState":0,"update":1})"},
};

class ExchangeOutcome : public Dispatcher, public testing::WithParamInterface<OutcomeCase> {};

TEST_P(ExchangeOutcome, IsKeptInTheState) {
  StartServer({Reply("putDepositResponse", "", GetParam().response)});
  OpenShop();
  SetState(R"({"reqId":"TERM012120500008"})");
  OpenCard();
  EXPECT_EQ(Process(kDeposit), GetParam().result);
  EXPECT_EQ(State(), GetParam().state);
}

INSTANTIATE_TEST_SUITE_P(Cases, ExchangeOutcome, testing::ValuesIn(kOutcomeCases), test::CaseName());

TEST_F(Dispatcher, AnAnswerThatNeedsNoUpdateClearsTheFlag) {
  StartServer({Reply("putDepositResponse", "", R"({"requestState":"SUCCESS","isNeedUpdate":false})")});
  OpenShop();
  SetState(R"({"update":1})");
  OpenCard();
  EXPECT_EQ(Process(kDeposit), 0);
  EXPECT_EQ(State(), R"({"offline":0,"shiftState":0,"update":0})");
}

TEST_F(Dispatcher, OnAReusedRecordAnEarlierAnswersIdIsNotTaken) {
  StartServer(
      {Reply("putDepositResponse"), Reply("putDepositResponse", "", R"({"requestState":"SUCCESS"})")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(Process(kDeposit), 0);
  lumo::SetRequestId("TERM012120500051");
  EXPECT_EQ(Process(kDeposit), 0);
  EXPECT_EQ(card->response.requestId, nullptr);
  EXPECT_STREQ(card->response.responseId, "5") << "the rest of the earlier answer stays";
  EXPECT_THAT(State(), HasSubstr(R"("reqId":"TERM012120500051")"));
}

struct NoEffectCase : test::NamedCase {
  const char *answer;
  int result;
};
const NoEffectCase kNoEffectCases[] = {
    {"NoData", "", -401},
    {"NoJson", "nonsense", -303},
    {"UnknownName",
     R"({"other":{"response":{"requestId":"X","requestState":"SUCCESS","isNeedUpdate":true}}})", -403},
    {"PartMissing",
     R"({"getBalanceResponse":{"response":{"requestId":"X","requestState":"SUCCESS","isNeedUpdate":true}}})",
     -404},
    {"Rejected", "HTTP Status 400 -", -406},
    {"ServerFailure", "HTTP Status 500 -", -407},
};

class OtherOutcome : public Dispatcher, public testing::WithParamInterface<NoEffectCase> {};

TEST_P(OtherOutcome, PassesThroughAndChangesNothing) {
  StartServer({GetParam().answer});
  OpenShop(R"("offlineMode":1)");
  OpenCard();
  const std::string state = State();
  EXPECT_EQ(Process(kDeposit), GetParam().result);
  EXPECT_EQ(State(), state);
  EXPECT_EQ(Count(folder.Trace(), "SaveState\n"), 0U);
}

INSTANTIATE_TEST_SUITE_P(Cases, OtherOutcome, testing::ValuesIn(kNoEffectCases), test::CaseName());

}  // namespace
