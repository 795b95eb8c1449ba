// engine/offline_replay_test.cpp: sending what was completed without the server.
#include "engine/offline_replay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "engine/waiting_records.h"
#include "record/transaction.h"
#include "support/shop.h"
#include "support/test_clock.h"

namespace {

using test::InOrder;
using test::kRefusal;
using test::Reply;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// A payment of this number, as the terminal wrote it another day.
std::string Parts(int number) {
  return test::WaitingParts(number);
}

std::string Record(int number) {
  return test::WaitingRecord(number);
}

using OfflineReplay = test::ReplayShop;

TEST_F(OfflineReplay, WithoutAJournalSendsNothingAndChangesNothing) {
  Open("");
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  EXPECT_EQ(folder.Trace(),
            "OfflinePaymentsProcess\n"
            "GetOfflineRecords()\n"
            "ERROR: CreateFile function failed with error 2\n");
  EXPECT_FALSE(folder.Exists("OFFLINE"));
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
}

TEST_F(OfflineReplay, AnEmptyJournalSendsNothing) {
  Open("");
  folder.Write("OFFLINE", "");
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  EXPECT_EQ(folder.Trace(), "OfflinePaymentsProcess\nGetOfflineRecords()\n");
  EXPECT_EQ(folder.Read("OFFLINE"), "");
}

TEST_F(OfflineReplay, SendsARecordAsItWasWritten) {
  StartServer({Taken()});
  Open(Record(1));
  test::SetClock(2013, 1, 1, 0, 0, 0);
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
  EXPECT_EQ(RequestDocument(0), R"({"putPaymentRequest":{)" + Parts(1) + "}}");
}

TEST_F(OfflineReplay, WhenAllAreSentTheJournalStaysAndIsOfferedAgain) {
  StartServer({Taken(), Taken(), Taken(), Taken()});
  Open(Record(1) + Record(2));
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 2);
  EXPECT_EQ(folder.Read("OFFLINE"), Record(1) + Record(2));
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 2);
  EXPECT_EQ(folder.Read("OFFLINE"), Record(1) + Record(2));
  EXPECT_EQ(RequestDocument(2), RequestDocument(0));
}

TEST_F(OfflineReplay, KeepsTheOneOfThreeThatFails) {
  StartServer({Taken(), Refused(), Taken()});
  Open(Record(1) + Record(2) + Record(3));
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 2);
  EXPECT_EQ(folder.Read("OFFLINE"), Record(2));
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
  EXPECT_EQ(test::Count(folder.Trace(), "ERROR: Offline record sending error -405\n"), 1U);
}

TEST_F(OfflineReplay, WithoutAConnectionKeepsAllInTheirOrder) {
  const std::string journal = Record(3) + Record(1) + Record(2);
  Open(journal);
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), journal);
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
  EXPECT_EQ(test::Count(folder.Trace(), "ERROR: Offline record sending error -501\n"), 3U);
}

TEST_F(OfflineReplay, KeepsTheBytesOfARecordThatCannotBeRead) {
  StartServer({Taken()});
  Open("{\"request\": damaged\n" + Record(1));
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
  EXPECT_EQ(folder.Read("OFFLINE"), "{\"request\": damaged\n");
  EXPECT_EQ(RequestCount(), 1U);
  // The line has no end of its own.
  EXPECT_THAT(folder.Trace(), HasSubstr("ERROR: LoadLogRecord returned -303"));
  EXPECT_THAT(folder.Trace(), Not(HasSubstr("ERROR: LoadLogRecord returned -303\n")));

  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), "{\"request\": damaged\n");
}

struct UnsendableCase {
  const char *name;
  const char *record;
};

constexpr UnsendableCase kUnsendable[] = {
    {"a blank line", ""},
    {"a record cut short", R"({"request":{"ver":"1.0","type":"PAYMENT")"},
    {"a record cut before its last bracket", R"({"request":{"type":"PAYMENT"},"bill":{"totalSum":1})"},
    {"no request", R"({"bill":{"totalSum":10000}})"},
    {"no type", R"({"request":{"ver":"1.0","requestId":"TERM012120400001"}})"},
    {"a type that is no text", R"({"request":{"type":1}})"},
    {"an unknown type", R"({"request":{"type":"PAYMEMT"}})"},
    {"an unknown type behind a known one", R"({"request":{"type":"PAYMENT","type":"payment"}})"},
    {"an empty type", R"({"request":{"type":""}})"},
    {"no object", R"(["request"])"},
    {"a value alone", "1"},
};

TEST_F(OfflineReplay, KeepsWhatNamesNoOperationAndSendsTheRest) {
  for (const UnsendableCase &row : kUnsendable) {
    folder.ClearTrace();
    StartServer({Taken()});
    Open(std::string(row.record) + "\n" + Record(1));
    EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1) << row.name;
    EXPECT_EQ(RequestDocument(0), R"({"putPaymentRequest":{)" + Parts(1) + "}}") << row.name;
    EXPECT_EQ(folder.Read("OFFLINE"), std::string(row.record) + "\n") << row.name;
    EXPECT_THAT(folder.Trace(), HasSubstr("ERROR: LoadLogRecord returned -402")) << row.name;
  }
}

TEST_F(OfflineReplay, AKnownTypeBehindAnUnknownOneCounts) {
  StartServer({Reply("getBalanceResponse", R"("balance":{"account":[]})")});
  Open(R"({"request":{"type":"PAYMEMT","type":"BALANCE"}})"
       "\n");
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
}

TEST_F(OfflineReplay, KeepsEveryByteOfARecordWithAZeroByte) {
  const std::string record = std::string(R"({"request":{"type":"PAY)") + '\0' +
                             R"(MENT"}})"
                             "\n";
  Open(record);
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), record);
}

TEST_F(OfflineReplay, AReplayThatWasInterruptedKeepsNoRecordTwice) {
  StartServer({Taken(), Refused(), Refused()});
  Open(Record(1) + Record(2) + Record(3));
  folder.Write("OFFLINE_TMP", Record(2));
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
  EXPECT_EQ(folder.Read("OFFLINE"), Record(2) + Record(3));
}

TEST_F(OfflineReplay, RecordsThatAreSetAsideAndNowhereElseAreKept) {
  StartServer({Taken(), Refused()});
  Open(Record(1) + Record(2));
  folder.Write("OFFLINE_TMP", Record(3) + Record(1) + Record(2));
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
  EXPECT_EQ(folder.Read("OFFLINE"), Record(3) + Record(2));
}

TEST_F(OfflineReplay, BytesBehindTheLastLineFeedAreNoRecord) {
  StartServer({Refused()});
  Open(Record(1) + "{" + Parts(2) + "}");
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  EXPECT_EQ(RequestCount(), 1U);
  EXPECT_EQ(folder.Read("OFFLINE"), Record(1));
}

TEST_F(OfflineReplay, ASuccessSwitchesTheShopBackOnline) {
  StartServer({Taken()});
  Open(Record(1), R"("offlineMode":1)");
  SetState(R"({"reqId":"TERM012120500007","offline":1})");
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
  EXPECT_THAT(State(), HasSubstr(R"("offline":0)"));
  EXPECT_THAT(State(), HasSubstr(R"("reqId":"TERM012120500050")"));
}

TEST_F(OfflineReplay, AFailedConnectionSwitchesTheShopOffline) {
  Open(Record(1), R"("offlineMode":1)");
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  EXPECT_THAT(State(), HasSubstr(R"("offline":1)"));
  EXPECT_THAT(State(), HasSubstr(R"("reqId":"TERM012120500007")"));
}

TEST_F(OfflineReplay, LeavesTheLogAndTheOpenCardAlone) {
  StartServer({Taken()});
  Open(Record(1));
  OpenCard();
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
  EXPECT_FALSE(folder.Exists("LOG"));
  EXPECT_EQ(Body(), "");
  EXPECT_EQ(card->request.requestId, nullptr);
}

TEST_F(OfflineReplay, SendsConfirmationsAndReturnsToo) {
  StartServer({Reply("putPaymentConfirmResponse")});
  const std::string parts =
      R"("request":{"ver":"1.0","type":"PAYMENT_CONFIRM","requestId":"TERM012120400002","terminalId":"TERM0001",)"
      R"("requestDate":"2012-12-04T18:00:02Z","employeeId":"","cardNum":"","isOffline":true,"shiftId":""},)"
      R"("paymentConfirm":{"requestId":"TERM012120400001","isConfirm":true})";
  Open("{" + parts + "}\n");
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
  EXPECT_EQ(RequestDocument(0), R"({"putPaymentConfirmRequest":{)" + parts + "}}");
}

TEST_F(OfflineReplay, AFlushThatFailsIsTraced) {
  Open("");
  folder.Write("OFFLINE_TMP", Record(1));
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  EXPECT_THAT(folder.Trace(), EndsWith("ERROR: Records flush failed [2]\n"));
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), Record(1));
}

TEST_F(OfflineReplay, KeepsTheWholeJournalWhenAFailedRecordCannotBeSetAside) {
  StartServer({Taken(), Refused()});
  Open(Record(1) + Record(2));
  std::filesystem::create_directory(std::filesystem::u8path(folder.path() + "OFFLINE_TMP"));
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
  EXPECT_EQ(folder.Read("OFFLINE"), Record(1) + Record(2));
  EXPECT_THAT(folder.Trace(), Not(HasSubstr("Records flush failed")));
}

TEST_F(OfflineReplay, TracesARecordsStepsInOrder) {
  StartServer({Refused()});
  Open(Record(1));
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  EXPECT_THAT(folder.Trace(), StartsWith("OfflinePaymentsProcess\nGetOfflineRecords()\n"));
  EXPECT_THAT(folder.Trace(),
              InOrder({"Record data: {\"request\"", "\nLoadLogRecord\n", "\nTransactionProcess [PAYMENT]\n",
                       "\nERROR: Offline record sending error -405\n"}));
}

TEST_F(OfflineReplay, ALongJournalIsSentRecordByRecord) {
  std::string journal;
  for (int i = 0; i < 300; ++i) journal += Record(i % 10);
  Open(journal);
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), journal);
}

}  // namespace
