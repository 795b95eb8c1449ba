// tests/engine/offline_replay_test.cpp: sending what was completed without the server.
#include "engine/offline_replay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "record/transaction.h"
#include "support/file_traffic.h"
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

// The parts of the payment of this number, as the terminal wrote them another day.
std::string Parts(int number) {
  return R"("request":{"ver":"0.9","type":"PAYMENT","requestId":"TERM01212040000)" + std::to_string(number) +
         R"(","terminalId":"TERM0009","requestDate":"2012-12-04T18:00:0)" + std::to_string(number) +
         R"(Z","employeeId":"cashier1","cardNum":"96430000000000)" + std::to_string(number) +
         R"(","isOffline":true,"shiftId":"11"},"bill":{"totalSum":10000,"spendBonus":false,"orderLen":1,"billNum":"7",)"
         R"("billDate":"2012-12-04T17:59:00Z","partnerFee":1000,"goodList":{"good":[{"title":"ЧАЙ","productCode":"008",)"
         R"("positionCost":10000,"orderNum":1,"cnt":1,"bonus":[{"earned":300,"spend":0,"organizerFee":300,)"
         R"("accountType":"LOCAL"}]}]}})";
}

std::string Record(int number) {
  return "{" + Parts(number) + "}\n";
}

class OfflineReplay : public test::Shop {
 protected:
  static std::string Taken() { return Reply("putPaymentResponse", R"("bill":{"totalSum":10000})"); }
  static std::string Refused() { return Reply("putPaymentResponse", "", kRefusal); }
  void Open(const std::string &offline, const std::string &members = "") {
    OpenShop(members);
    if (!offline.empty()) {
      folder.Write("OFFLINE", offline);
    }
  }
};

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

TEST_F(OfflineReplay, AFullDiskLeavesNoHalfRecordForTheNextReplay) {
  StartServer({Refused(), Refused(), Taken(), Taken()});
  Open(Record(1) + Record(2));
  test::LeaveDiskRoom(0);
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  test::LeaveDiskRoom(UINT64_MAX);
  EXPECT_EQ(folder.Read("OFFLINE"), Record(1) + Record(2));
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 2);
  EXPECT_EQ(folder.Read("OFFLINE"), Record(1) + Record(2));
}

TEST_F(OfflineReplay, AFullDiskKeepsTheRecordsOfAReplayThatNeverEnded) {
  StartServer({Refused()});
  Open(Record(1));
  folder.Write("OFFLINE_TMP", Record(3));
  test::LeaveDiskRoom(0);
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  test::LeaveDiskRoom(UINT64_MAX);
  EXPECT_EQ(folder.Read("OFFLINE"), Record(1));
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), Record(3));
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
  for (int i = 0; i < 300; ++i) {
    journal += Record(i % 10);
  }
  Open(journal);
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), journal);
}

}  // namespace
