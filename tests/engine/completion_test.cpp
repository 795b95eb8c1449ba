// engine/completion_test.cpp: which journals take a record, and the mark of an operation that succeeded.
#include "engine/completion.h"

#include <filesystem>
#include <string>

#include "journal/logger.h"
#include "record/enumerations.h"
#include "support/record_fixture.h"

namespace {

constexpr char kEmptyDeposit[] =
    R"({"request":{"ver":"","type":"DEPOSIT","requestId":"","terminalId":"","requestDate":"",)"
    R"("employeeId":"","cardNum":"","isOffline":false,"shiftId":""},"deposit":{"amount":0}})"
    "\n";
constexpr char kEmptyOfflineDeposit[] =
    R"({"request":{"ver":"","type":"DEPOSIT","requestId":"","terminalId":"","requestDate":"",)"
    R"("employeeId":"","cardNum":"","isOffline":true,"shiftId":""},"deposit":{"amount":0}})"
    "\n";

class Completion : public ProtocolTest {
 protected:
  Completion() {
    lumo::SetLogSize(1000);
    record->request.type = lumo::REQUEST_DEPOSIT;
  }

  // No record can be appended to a folder.
  void MakeUnwritable(const std::string &journal) const {
    std::filesystem::create_directory(std::filesystem::u8path(folder.path() + journal));
  }
};

TEST_F(Completion, RecordIsOneLineOfTheLog) {
  EXPECT_EQ(lumo::WriteTransactionRecord(record), 0);
  EXPECT_EQ(folder.Read("LOG"), kEmptyDeposit);
  EXPECT_FALSE(folder.Exists("OFFLINE"));
}

TEST_F(Completion, RecordOfAnOfflineOperationGoesToBothJournals) {
  record->request.isOffline = 1;
  EXPECT_EQ(lumo::WriteTransactionRecord(record), 0);
  EXPECT_EQ(folder.Read("LOG"), kEmptyOfflineDeposit);
  EXPECT_EQ(folder.Read("OFFLINE"), kEmptyOfflineDeposit);
}

TEST_F(Completion, LogThatCannotBeOpenedIsReported) {
  MakeUnwritable("LOG");
  EXPECT_EQ(lumo::WriteTransactionRecord(record), -201);
}

TEST_F(Completion, ResultOfTheOfflineJournalReplacesThatOfTheLog) {
  record->request.isOffline = 1;
  MakeUnwritable("LOG");
  EXPECT_EQ(lumo::WriteTransactionRecord(record), 0);
  folder.Remove("LOG");
  folder.Remove("OFFLINE");
  MakeUnwritable("OFFLINE");
  EXPECT_EQ(lumo::WriteTransactionRecord(record), -201);
  EXPECT_TRUE(folder.Exists("LOG"));
}

TEST_F(Completion, MarksTheOperationBesideEarlierOnes) {
  record->completedOperations = lumo::COMPLETED_BALANCE;
  EXPECT_EQ(lumo::CompleteOperation(record, lumo::COMPLETED_DEPOSIT), 0);
  EXPECT_EQ(record->completedOperations, 0x24U);
  EXPECT_EQ(folder.Read("LOG"), kEmptyDeposit);
}

TEST_F(Completion, MarksAnOperationThatCannotBeJournalled) {
  MakeUnwritable("LOG");
  EXPECT_EQ(lumo::CompleteOperation(record, lumo::COMPLETED_DEPOSIT), -201);
  EXPECT_EQ(record->completedOperations, 0x20U);
}

}  // namespace
