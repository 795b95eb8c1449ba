// engine/request_test.cpp: the stamp of a request and the sequence of the terminal's own numbers.
#include "engine/request.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "config/lumoconfig.h"
#include "config/lumostate.h"
#include "record/receipt.h"
#include "record/transaction.h"
#include "support/shop.h"
#include "support/test_clock.h"

namespace {

using test::InOrder;
using test::Reply;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string RrnReply(const std::string &rr_number) {
  return Reply("getLastRrnResponse", R"("rrn":{"rrNumber":")" + rr_number + R"("})");
}

// ---- Identity ----

class Identity : public test::Shop {
 protected:
  std::string Header() const { return lumo::ReceiptGetText(card->header); }
  std::string Footer() const { return lumo::ReceiptGetText(card->footer); }
};

TEST_F(Identity, FillsTheRequestBlock) {
  OpenShop();
  OpenCard();
  EXPECT_STREQ(card->request.cardNum, "9643001234567890");
  EXPECT_STREQ(card->request.employeeId, "cashier7");
  EXPECT_STREQ(card->request.terminalId, "TERM0001");
  EXPECT_STREQ(card->request.ver, "1.0");
  EXPECT_STREQ(card->request.shiftId, "12");
  EXPECT_EQ(card->request.requestId, nullptr);
}

TEST_F(Identity, TheShiftIsReadFromItsFile) {
  OpenShop();
  folder.Write("STATE", R"({"reqId":"1","shiftId":"13"})");
  card = lumo::TransactionCreate();
  EXPECT_EQ(lumo::FillTransactionHeader(card, test::kCard, test::kCashier), 0);
  EXPECT_STREQ(card->request.shiftId, "13");
  EXPECT_EQ(folder.Trace(), test::kStateReload);
}

TEST_F(Identity, ANullCardAndCashierStayNull) {
  OpenShop();
  card = lumo::TransactionCreate();
  EXPECT_EQ(lumo::FillTransactionHeader(card, nullptr, nullptr), 0);
  EXPECT_EQ(card->request.cardNum, nullptr);
  EXPECT_EQ(card->request.employeeId, nullptr);
  EXPECT_EQ(
      folder.Trace(),
      std::string("ERROR: trans_strcpy src == NULL\nERROR: trans_strcpy src == NULL\n") + test::kStateReload);
  EXPECT_EQ(Header(),
            "МАГАЗИН\n"
            "2012/12/05      10:00:00\n"
            "Терминал       TERM0001\n"
            "     *** КАРТА ***\n"
            "    \n");
}

TEST_F(Identity, AbsentSettingsPrintEmptyAndStayNull) {
  folder.Write("CONFIG", "{}");
  ASSERT_EQ(lumo::LoadConfig(), 0);
  SetState(R"({"reqId":"1"})");
  card = lumo::TransactionCreate();
  folder.ClearTrace();
  EXPECT_EQ(lumo::FillTransactionHeader(card, "1", "2"), 0);
  EXPECT_EQ(card->request.terminalId, nullptr);
  EXPECT_EQ(card->request.ver, nullptr);
  EXPECT_EQ(card->request.shiftId, nullptr);
  EXPECT_EQ(folder.Trace(), std::string("ERROR: trans_strcpy src == NULL\n"
                                        "ERROR: trans_strcpy src == NULL\n") +
                                test::kStateReload + "ERROR: trans_strcpy src == NULL\n");
  EXPECT_EQ(Header(),
            "\n"
            "2012/12/05      10:00:00\n"
            "Терминал               \n"
            "     *** КАРТА ***\n"
            "    1\n");
  EXPECT_EQ(Footer(), "\n");
}

// ---- Filling ----

class FillRequest : public test::Shop {};

TEST_F(FillRequest, StampsTypeDateAndId) {
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::FillRequest(card, lumo::REQUEST_DEPOSIT), 0);
  EXPECT_EQ(card->request.type, 8);
  EXPECT_STREQ(card->request.requestDate, "2012-12-05T10:00:00Z");
  EXPECT_STREQ(card->request.requestId, "TERM012120500008");
  EXPECT_EQ(folder.Trace(),
            "FillRequest(DEPOSIT)\n"
            "GenerateRRN: TERM012120500007\n"
            "Last RRN: TERM012120500007\n"
            "Scanf result: 2 121205 7\n"
            "Parse old RRN [121205][7]\n"
            "Next RRN generation [TERM012120500008]\n"
            "SaveState\n");
}

TEST_F(FillRequest, StoresTheNewIdBeforeAnythingIsSent) {
  OpenShop();
  OpenCard();
  lumo::FillRequest(card, lumo::REQUEST_DEPOSIT);
  EXPECT_EQ(State(), R"({"reqId":"TERM012120500008","shiftId":"12","offline":0,"shiftState":1,"update":0})");
}

TEST_F(FillRequest, AServiceRequestTakesNoNumber) {
  OpenShop();
  OpenCard();
  const std::string state = State();
  for (const int type : {9, 10}) {
    folder.ClearTrace();
    EXPECT_EQ(lumo::FillRequest(card, static_cast<lumo::RequestType>(type)), 0);
    EXPECT_EQ(card->request.type, type);
    EXPECT_STREQ(card->request.requestId, "0000000000000000");
    EXPECT_STREQ(card->request.requestDate, "2012-12-05T10:00:00Z");
    EXPECT_EQ(folder.Trace(), type == 9 ? "FillRequest(AD)\n" : "FillRequest(LAST_RRN)\n");
    EXPECT_EQ(State(), state);
  }
}

TEST_F(FillRequest, EveryOtherTypeTakesTheNextNumber) {
  OpenShop();
  OpenCard();
  const char *const ids[] = {"TERM012120500008", "TERM012120500009", "TERM012120500010",
                             "TERM012120500011", "TERM012120500012", "TERM012120500013",
                             "TERM012120500014", "TERM012120500015", "TERM012120500016"};
  for (int type = 0; type <= 8; ++type) {
    EXPECT_EQ(lumo::FillRequest(card, static_cast<lumo::RequestType>(type)), 0);
    EXPECT_STREQ(card->request.requestId, ids[type]);
  }
}

TEST_F(FillRequest, ASecondOperationOverwritesTheStampAndKeepsTheOldTexts) {
  OpenShop();
  OpenCard();
  lumo::FillRequest(card, lumo::REQUEST_DEPOSIT);
  const char *first_id = card->request.requestId;
  test::SetClock(2012, 12, 5, 11, 30, 15);
  lumo::FillRequest(card, lumo::REQUEST_BALANCE);
  EXPECT_EQ(card->request.type, 4);
  EXPECT_STREQ(card->request.requestDate, "2012-12-05T11:30:15Z");
  EXPECT_STREQ(card->request.requestId, "TERM012120500009");
  EXPECT_STREQ(first_id, "TERM012120500008");
}

TEST_F(FillRequest, ALongerDateOfALoadedRecordLeavesNoRest) {
  OpenShop();
  OpenCard();
  std::memset(card->request.requestDate, 'x', sizeof card->request.requestDate);
  lumo::FillRequest(card, lumo::REQUEST_AD);
  EXPECT_STREQ(card->request.requestDate, "2012-12-05T10:00:00Z");
}

TEST_F(FillRequest, RefusesAMissingRecord) {
  OpenShop();
  const std::string state = State();
  EXPECT_EQ(lumo::FillRequest(nullptr, lumo::REQUEST_DEPOSIT), -100);
  EXPECT_EQ(folder.Trace(), "FillRequest(DEPOSIT)\nERROR: Pointer \"trans\" is null\n");
  EXPECT_EQ(State(), state);
}

TEST_F(FillRequest, LeavesTheRegistersCopyOfTheLastIdAlone) {
  OpenShop();
  OpenCard();
  const char *held = lumo::CopyRequestId();
  lumo::FillRequest(card, lumo::REQUEST_PAYMENT_CONFIRM);
  EXPECT_STREQ(held, "TERM012120500007");
}

TEST_F(FillRequest, AnOperationDoesNotStartWithoutARecord) {
  OpenShop();
  EXPECT_EQ(lumo::StartOperation(nullptr, lumo::REQUEST_DEPOSIT), -100);
  EXPECT_EQ(folder.Trace(), "ERROR: Pointer \"trans\" is null\n");
}

// Without an answer the id stays as it was: null on a fresh record, which stores nothing.
TEST_F(FillRequest, AFreshRecordWithoutAnswerHasNoIdAndStoresNone) {
  OpenShop();
  SetState(R"({"shiftId":"12"})");
  OpenCard();
  EXPECT_EQ(lumo::FillRequest(card, lumo::REQUEST_DEPOSIT), 0);
  EXPECT_EQ(card->request.requestId, nullptr);
  EXPECT_EQ(State(), R"({"shiftId":"12"})") << "nothing was saved";
  EXPECT_THAT(folder.Trace(), StartsWith("FillRequest(DEPOSIT)\n"
                                         "GenerateRRN: (null)\n"
                                         "Generate default RRN: 0000000000000000\n"
                                         "Scanf result: 2 000000 0\n"
                                         "GetLastRrnProcess\n"));
  EXPECT_THAT(folder.Trace(), EndsWith("ERROR: GetLastRrnProcess error -501\n"
                                       "First RRN generation [TERM012120500000]\n"));
}

TEST_F(FillRequest, AReusedRecordWithoutAnswerStoresItsOldIdAgain) {
  OpenShop();
  OpenCard();
  lumo::FillRequest(card, lumo::REQUEST_DEPOSIT);
  SetState("{}");
  EXPECT_EQ(lumo::FillRequest(card, lumo::REQUEST_DEPOSIT), 0);
  EXPECT_STREQ(card->request.requestId, "TERM012120500008");
  EXPECT_EQ(State(), R"({"reqId":"TERM012120500008","offline":0,"shiftState":0,"update":0})");
}

// ---- The sequence from the local history ----

struct LocalCase : test::NamedCase {
  const char *terminalId;
  const char *last;
  const char *rrn;
  const char *trace;
};
const LocalCase kLocalCases[] = {
    {"SameDayGoesOn", "TERM0", "TERM012120500007", "TERM012120500008",
     "GenerateRRN: TERM012120500007\n"
     "Last RRN: TERM012120500007\n"
     "Scanf result: 2 121205 7\n"
     "Parse old RRN [121205][7]\n"
     "Next RRN generation [TERM012120500008]\n"},
    {"EarlierDayStartsAgain", "TERM0", "TERM012120499998", "TERM012120500000",
     "GenerateRRN: TERM012120499998\n"
     "Last RRN: TERM012120499998\n"
     "Scanf result: 2 121204 99998\n"
     "Parse old RRN [121204][99998]\n"
     "Next RRN generation [TERM012120500000]\n"},
    {"EarlierYearStartsAgain", "TERM0", "TERM011123100007", "TERM012120500000", nullptr},
    {"TerminalIdOf7IsCut", "ABCDEFG", "ABCDE12120500000", "ABCDE12120500001", nullptr},
    {"TerminalIdOf2IsPadded", "12", "0001212120500008", "0001212120500009", nullptr},
    {"EmptyTerminalIdIsZeros", "", "0000012120500008", "0000012120500009", nullptr},
    {"AbsentTerminalIdIsZeros", nullptr, "0000012120500008", "0000012120500009", nullptr},
    {"OtherTerminalsIdIsRead", "TERM0", "9999912120500041", "TERM012120500042", nullptr},
    {"NumberIsNotBounded", "TERM0", "TERM012120599999", "TERM0121205100000",
     "GenerateRRN: TERM012120599999\n"
     "Last RRN: TERM012120599999\n"
     "Scanf result: 2 121205 99999\n"
     "Parse old RRN [121205][99999]\n"
     "Next RRN generation [TERM0121205100000]\n"},
    {"OfAnUnboundedNumberFiveDigitsAreRead", "TERM0", "TERM0121205100000", "TERM012120510001", nullptr},
    {"NineteenCharactersAreRead", "TERM0", "TERM012120500007XYZ", "TERM012120500008", nullptr},
    {"NumberMayBeShort", "TERM0", "TERM01212057", "TERM012120500008", nullptr},
    {"NumberMayBeNegative", "TERM0", "TERM0121205-0009", "TERM0121205-0008", nullptr},
    {"NumberEndsAtALetter", "TERM0", "TERM01212050003x", "TERM012120500004", nullptr},
    {"BlanksStandBeforeEachPart", "TERM0", " TERM0 121205 12", "TERM012120500013", nullptr},
    {"AShortTerminalPartEndsAtItsBlank", "TERM0", "T 121205 00012", "TERM012120500013", nullptr},
};

class RrnFromHistory : public test::Shop, public testing::WithParamInterface<LocalCase> {};

TEST_P(RrnFromHistory, FollowsThePreviousId) {
  OpenShop();
  OpenCard();
  card->request.terminalId = GetParam().terminalId;
  std::strcpy(card->request.requestDate, "2012-12-05T10:00:00Z");
  EXPECT_EQ(lumo::GenerateRRN(card, GetParam().last), 0);
  EXPECT_STREQ(card->request.requestId, GetParam().rrn);
  if (GetParam().trace != nullptr) {
    EXPECT_EQ(folder.Trace(), GetParam().trace);
  }
  EXPECT_THAT(folder.Trace(), Not(HasSubstr("GetLastRrnProcess")));
}

INSTANTIATE_TEST_SUITE_P(Cases, RrnFromHistory, testing::ValuesIn(kLocalCases), test::CaseName());

class GenerateRRN : public test::Shop {
 protected:
  void OpenCardAtTen() {
    OpenCard();
    std::strcpy(card->request.requestDate, "2012-12-05T10:00:00Z");
  }
};

TEST_F(GenerateRRN, RefusesAMissingRecord) {
  EXPECT_EQ(lumo::GenerateRRN(nullptr, "TERM012120500007"), -100);
  EXPECT_EQ(folder.Trace(), "GenerateRRN: TERM012120500007\nERROR: Pointer \"trans\" is null\n");
}

TEST_F(GenerateRRN, AClockBehindTheLastIdLeavesTheIdAsItWas) {
  OpenShop();
  OpenCardAtTen();
  EXPECT_EQ(lumo::GenerateRRN(card, "TERM012120600003"), 0);
  EXPECT_EQ(card->request.requestId, nullptr);
  EXPECT_EQ(folder.Trace(),
            "GenerateRRN: TERM012120600003\n"
            "Last RRN: TERM012120600003\n"
            "Scanf result: 2 121206 3\n"
            "Parse old RRN [121206][3]\n"
            "ERROR: Date compare error - old rrn date[121206] request date[121205]\n"
            "First RRN generation [TERM012120500000]\n");

  lumo::TransactionCopyText(card, &card->request.requestId, "TERM012120500001");
  EXPECT_EQ(lumo::GenerateRRN(card, "TERM013010100000"), 0);
  EXPECT_STREQ(card->request.requestId, "TERM012120500001");
}

TEST_F(GenerateRRN, DatesAreComparedAsTexts) {
  OpenShop();
  OpenCardAtTen();
  EXPECT_EQ(lumo::GenerateRRN(card, "TERM0ABCDEF00003"), 0);
  EXPECT_EQ(card->request.requestId, nullptr) << "letters are behind digits";
  EXPECT_EQ(lumo::GenerateRRN(card, "TERM0+2120500003"), 0);
  EXPECT_STREQ(card->request.requestId, "TERM012120500000") << "a plus sign is before digits";
}

TEST_F(GenerateRRN, ARequestDateThatDoesNotParseIsBeforeEveryOther) {
  OpenShop();
  OpenCardAtTen();
  std::strcpy(card->request.requestDate, "yesterday");
  EXPECT_EQ(lumo::GenerateRRN(card, "TERM012120500007"), 0);
  EXPECT_EQ(card->request.requestId, nullptr);
  EXPECT_THAT(folder.Trace(),
              EndsWith("ERROR: Date compare error - old rrn date[121205] request date[000000]\n"
                       "First RRN generation [TERM000000000000]\n"));
}

// ---- The sequence from the server ----

struct UnusableCase : test::NamedCase {
  const char *last;
};
const UnusableCase kUnusableCases[] = {
    {"Null", nullptr},
    {"Empty", ""},
    {"TerminalPartOnly", "TERM0"},
    {"NoNumber", "TERM0121205"},
    {"NumberIsALetter", "TERM0121205x0007"},
    {"NoDate", "TERM000000000007"},
    {"Blanks", "                "},
    {"TwentyCharacters", "TERM012120500041ABCD"},
    {"ManyCharacters", "TERM012120500041TERM012120500041TERM012120500041TERM012120500041"},
};

class RrnWithoutHistory : public test::Shop, public testing::WithParamInterface<UnusableCase> {};

TEST_P(RrnWithoutHistory, GoesOnFromTheServersLastId) {
  StartServer({RrnReply("9999912120500007")});
  OpenShop(R"("terminalId":"12")");
  OpenCard();
  std::strcpy(card->request.requestDate, "2012-12-05T10:00:00Z");
  EXPECT_EQ(lumo::GenerateRRN(card, GetParam().last), 0);
  EXPECT_STREQ(card->request.requestId, "0001212120500008");
  EXPECT_STREQ(card->rrNumber, "9999912120500007");
  EXPECT_THAT(folder.Trace(),
              InOrder({"GetLastRrnProcess\n", "Scanf result: 2 121205 7\n", "Parse old RRN [121205][7]\n",
                       "Next RRN generation [0001212120500008]\n"}));
}

INSTANTIATE_TEST_SUITE_P(Cases, RrnWithoutHistory, testing::ValuesIn(kUnusableCases), test::CaseName());

TEST_F(GenerateRRN, TracesTheDefaultItReadsInPlaceOfALongId) {
  StartServer({RrnReply("TERM012120500007")});
  OpenShop();
  OpenCardAtTen();
  lumo::GenerateRRN(card, "TERM012120500041ABCD");
  EXPECT_THAT(folder.Trace(), StartsWith("GenerateRRN: TERM012120500041ABCD\n"
                                         "Generate default RRN: 0000000000000000\n"
                                         "Scanf result: 2 000000 0\n"
                                         "GetLastRrnProcess\n"));
}

struct ServerCase : test::NamedCase {
  const char *reply;
  const char *rrn;  // null: the id stays as it was
  const char *traceEnd;
};
const char kUntouched[] = "TERM012120500001";
const ServerCase kServerCases[] = {
    {"SameDay", R"("rrn":{"rrNumber":"TERM012120500041"})", "TERM012120500042",
     "Scanf result: 2 121205 41\n"
     "Parse old RRN [121205][41]\n"
     "Next RRN generation [TERM012120500042]\n"},
    {"EarlierDay", R"("rrn":{"rrNumber":"TERM012120400041"})", "TERM012120500000",
     "Scanf result: 2 121204 41\n"
     "Parse old RRN [121204][41]\n"
     "Next RRN generation [TERM012120500000]\n"},
    {"LaterDay", R"("rrn":{"rrNumber":"TERM012120600041"})", nullptr,
     "Scanf result: 2 121206 41\n"
     "Parse old RRN [121206][41]\n"
     "ERROR: Date compare error - old rrn date[121206] request date[121205]\n"
     "First RRN generation [TERM012120500000]\n"},
    {"ZerosAreAnEarlierDay", R"("rrn":{"rrNumber":"0000000000000000"})", "TERM012120500000",
     "Scanf result: 2 000000 0\n"
     "Parse old RRN [000000][0]\n"
     "Next RRN generation [TERM012120500000]\n"},
    {"TwentyCharactersAreRead", R"("rrn":{"rrNumber":"TERM012120500041ABCD"})", "TERM012120500042",
     "Scanf result: 2 121205 41\n"
     "Parse old RRN [121205][41]\n"
     "Next RRN generation [TERM012120500042]\n"},
    {"Unreadable", R"("rrn":{"rrNumber":"TERM0121205"})", "TERM012120500000",
     "Scanf result: 1 121205 0\n"
     "First RRN generation [TERM012120500000]\n"},
    {"Empty", R"("rrn":{"rrNumber":""})", "TERM012120500000",
     "Scanf result: -1  0\n"
     "First RRN generation [TERM012120500000]\n"},
    {"Absent", R"("rrn":{})", nullptr,
     "ERROR: trans_strcpy src == NULL\n"
     "ERROR: GetLastRrnProcess error 0\n"
     "First RRN generation [TERM012120500000]\n"},
    {"NoText", R"("rrn":{"rrNumber":null})", nullptr,
     "ERROR: trans_strcpy src == NULL\n"
     "ERROR: GetLastRrnProcess error 0\n"
     "First RRN generation [TERM012120500000]\n"},
    {"NoRrnPart", "", nullptr,
     "ERROR: GetLastRrnProcess error -404\n"
     "First RRN generation [TERM012120500000]\n"},
};

class RrnFromServer : public test::Shop, public testing::WithParamInterface<ServerCase> {};

TEST_P(RrnFromServer, FollowsTheAnswer) {
  StartServer({Reply("getLastRrnResponse", GetParam().reply)});
  OpenShop();
  OpenCard();
  std::strcpy(card->request.requestDate, "2012-12-05T10:00:00Z");
  lumo::TransactionCopyText(card, &card->request.requestId, kUntouched);
  EXPECT_EQ(lumo::GenerateRRN(card, nullptr), 0);
  EXPECT_STREQ(card->request.requestId, GetParam().rrn != nullptr ? GetParam().rrn : kUntouched);
  EXPECT_THAT(folder.Trace(), EndsWith(GetParam().traceEnd));
}

INSTANTIATE_TEST_SUITE_P(Cases, RrnFromServer, testing::ValuesIn(kServerCases), test::CaseName());

TEST_F(GenerateRRN, ARefusedQuestionLeavesTheIdAsItWas) {
  StartServer({Reply("getLastRrnResponse", "", test::kRefusal)});
  OpenShop();
  OpenCardAtTen();
  EXPECT_EQ(lumo::GenerateRRN(card, nullptr), 0);
  EXPECT_EQ(card->request.requestId, nullptr);
  EXPECT_THAT(folder.Trace(), EndsWith("ERROR: GetLastRrnProcess error -405\n"
                                       "First RRN generation [TERM012120500000]\n"));
}

TEST_F(GenerateRRN, ANumberFromAnEarlierAnswerIsNotTakenForOneFromARefusal) {
  StartServer({RrnReply("TERM012120500007"), Reply("getLastRrnResponse", "", test::kRefusal)});
  OpenShop();
  OpenCardAtTen();
  EXPECT_EQ(lumo::GenerateRRN(card, nullptr), 0);
  EXPECT_EQ(lumo::GenerateRRN(card, nullptr), 0);
  EXPECT_STREQ(card->request.requestId, "TERM012120500008") << "the first question's";
  EXPECT_THAT(folder.Trace(), EndsWith("ERROR: GetLastRrnProcess error -405\n"
                                       "First RRN generation [TERM012120500000]\n"));
}

TEST_F(GenerateRRN, ARequestDateThatDoesNotParseMeetsTheServersZeros) {
  StartServer({RrnReply("TERM000000000005")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::GenerateRRN(card, "TERM000000000001"), 0);
  EXPECT_STREQ(card->request.requestId, "TERM000000000006");
}

TEST_F(FillRequest, AnIdFromTheServerBecomesThePersistentOne) {
  StartServer({RrnReply("TERM012120500007")});
  OpenShop();
  SetState("{}");
  OpenCard();
  EXPECT_EQ(lumo::FillRequest(card, lumo::REQUEST_DEPOSIT), 0);
  EXPECT_EQ(State(), R"({"reqId":"TERM012120500008","offline":0,"shiftState":0,"update":0})");
}

// ---- The question ----

class LastRrnQuestion : public test::Shop {};

TEST_F(LastRrnQuestion, RefusesAMissingRecord) {
  EXPECT_EQ(lumo::GetLastRrnProcess(nullptr), -100);
  EXPECT_EQ(folder.Trace(), "GetLastRrnProcess\nERROR: Pointer \"trans\" is null\n");
}

TEST_F(LastRrnQuestion, IsARequestOfItsOwnForTheSameCard) {
  StartServer({RrnReply("TERM012120500007")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::GetLastRrnProcess(card), 0);
  EXPECT_STREQ(card->rrNumber, "TERM012120500007");
  EXPECT_EQ(RequestDocument(0),
            "{\"getLastRrnRequest\":{" + test::RequestPart("LAST_RRN", "0000000000000000") + "}}");
  EXPECT_THAT(folder.Trace(), StartsWith(std::string("GetLastRrnProcess\n") + test::kStateReload +
                                         "FillRequest(LAST_RRN)\n"
                                         "TransactionProcess [LAST_RRN]\n"));
}

TEST_F(LastRrnQuestion, LeavesTheRecordItselfAlone) {
  StartServer({RrnReply("TERM012120500007")});
  OpenShop();
  OpenCard();
  lumo::FillRequest(card, lumo::REQUEST_DEPOSIT);
  const lumo::Transaction before = *card;
  const std::string header = lumo::ReceiptGetText(card->header);
  EXPECT_EQ(lumo::GetLastRrnProcess(card), 0);
  EXPECT_EQ(std::memcmp(&card->request, &before.request, sizeof before.request), 0);
  EXPECT_EQ(std::memcmp(&card->response, &before.response, sizeof before.response), 0);
  EXPECT_EQ(lumo::ReceiptGetText(card->header), header);
  EXPECT_EQ(Body(), "");
}

TEST_F(LastRrnQuestion, ItsAnswersIdBecomesThePersistentOne) {
  StartServer({Reply("getLastRrnResponse", R"("rrn":{"rrNumber":"TERM012120500007"})",
                     R"({"requestId":"TERM012120500077","requestState":"SUCCESS","isNeedUpdate":true})")});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::GetLastRrnProcess(card), 0);
  EXPECT_EQ(State(), R"({"reqId":"TERM012120500077","shiftId":"12","offline":0,"shiftState":1,"update":1})");
}

TEST_F(LastRrnQuestion, ARefusalsIdBecomesThePersistentOneToo) {
  StartServer({Reply("getLastRrnResponse", R"("rrn":{"rrNumber":"TERM012120500007"})", test::kRefusal)});
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::GetLastRrnProcess(card), -405);
  EXPECT_EQ(card->rrNumber, nullptr) << "only a good answer's number is taken";
  EXPECT_EQ(State(), R"({"reqId":"TERM012120500050","shiftId":"12","offline":0,"shiftState":1,"update":0})");
}

TEST_F(LastRrnQuestion, DoesNotSwitchTheShopOffline) {
  OpenShop(R"("offlineMode":1)");
  OpenCard();
  const std::string state = State();
  EXPECT_EQ(lumo::GetLastRrnProcess(card), -501);
  EXPECT_EQ(State(), state);
}

TEST_F(LastRrnQuestion, AnAnswerWithoutNumberLeavesNone) {
  StartServer({Reply("getLastRrnResponse", R"("rrn":{})")});
  OpenShop();
  OpenCard();
  lumo::TransactionCopyText(card, &card->rrNumber, "TERM012120500001");
  EXPECT_EQ(lumo::GetLastRrnProcess(card), 0);
  EXPECT_EQ(card->rrNumber, nullptr);
  EXPECT_THAT(folder.Trace(), EndsWith("ERROR: trans_strcpy src == NULL\n"));
}

TEST_F(LastRrnQuestion, ACardWithoutNumberAsksWithoutOne) {
  StartServer({RrnReply("TERM012120500007")});
  OpenShop();
  OpenCard(nullptr, nullptr);
  EXPECT_EQ(lumo::GetLastRrnProcess(card), 0);
  EXPECT_THAT(RequestDocument(0), HasSubstr(R"("employeeId":"","cardNum":"",)"));
}

}  // namespace
