// engine/offline_replay_posix_test.cpp: sending what was completed without the server, when files fail.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "engine/offline_replay.h"
#include "engine/waiting_records.h"
#include "journal/logger.h"
#include "support/file_traffic.h"

namespace {

using test::WaitingRecord;

class ReplayTrouble : public test::ReplayShop {
 protected:
  ~ReplayTrouble() override { test::EndFileTrouble(); }
};

TEST_F(ReplayTrouble, AFullDiskLeavesNoHalfRecordForTheNextReplay) {
  StartServer({Refused(), Refused(), Taken(), Taken()});
  Open(WaitingRecord(1) + WaitingRecord(2));
  test::LeaveDiskRoom(0);
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  test::LeaveDiskRoom(UINT64_MAX);
  EXPECT_EQ(folder.Read("OFFLINE"), WaitingRecord(1) + WaitingRecord(2));
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 2);
  EXPECT_EQ(folder.Read("OFFLINE"), WaitingRecord(1) + WaitingRecord(2));
}

TEST_F(ReplayTrouble, AFullDiskKeepsTheRecordsOfAReplayThatNeverEnded) {
  StartServer({Refused()});
  Open(WaitingRecord(1));
  folder.Write("OFFLINE_TMP", WaitingRecord(3));
  test::LeaveDiskRoom(0);
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  test::LeaveDiskRoom(UINT64_MAX);
  EXPECT_EQ(folder.Read("OFFLINE"), WaitingRecord(1));
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), WaitingRecord(3));
}

// The first read of a replay lists OFFLINE, the second finds its end, the third takes the first text.
TEST_F(ReplayTrouble, ARefusedReadOfTheListIsNotItsEnd) {
  for (const int reads : {0, 1}) {
    StartServer({Refused(), Refused()});
    Open(WaitingRecord(1) + WaitingRecord(2));
    test::FailReadAfter(reads);
    EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
    EXPECT_EQ(folder.Read("OFFLINE"), WaitingRecord(1) + WaitingRecord(2)) << reads;
    EXPECT_FALSE(folder.Exists("OFFLINE_TMP")) << reads;
  }
}

TEST_F(ReplayTrouble, ARefusedReadOfATextLosesNothing) {
  StartServer({Refused()});
  Open(WaitingRecord(1) + WaitingRecord(2));
  test::FailReadAfter(2);
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  EXPECT_EQ(RequestCount(), 1U);
  EXPECT_EQ(folder.Read("OFFLINE"), WaitingRecord(1) + WaitingRecord(2));
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
  EXPECT_THAT(folder.Trace(), testing::HasSubstr("ERROR: LoadLogRecord returned -307"));
}

TEST_F(ReplayTrouble, AJournalThatCannotBeOpenedIsNotDeleted) {
  Open(WaitingRecord(1));
  folder.Write("OFFLINE_TMP", WaitingRecord(3));
  test::RefuseOpen("OFFLINE");
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  test::EndFileTrouble();
  EXPECT_EQ(folder.Read("OFFLINE"), WaitingRecord(1));
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), WaitingRecord(3));
}

TEST_F(ReplayTrouble, ACommitThatCouldNotBeFinishedIsFinishedByTheNextReplay) {
  StartServer({Refused(), Taken()});
  Open(WaitingRecord(1));
  test::RefuseMove("OFFLINE_TMP");
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  test::EndFileTrouble();
  EXPECT_FALSE(folder.Exists("OFFLINE"));
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
  EXPECT_EQ(folder.Read("OFFLINE"), WaitingRecord(1));
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
}

TEST_F(ReplayTrouble, RecordsOfAnEarlierReplayOutliveALookThatFails) {
  StartServer({Refused()});
  Open(WaitingRecord(1));
  folder.Write("OFFLINE_TMP", WaitingRecord(3));
  test::LeaveDiskRoom(0);
  test::FailLookAtSize();
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 0);
  test::EndFileTrouble();
  EXPECT_EQ(folder.Read("OFFLINE"), WaitingRecord(1));
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), WaitingRecord(3));
}

TEST_F(ReplayTrouble, RecordsOfAnEarlierReplayAreNotClearedAfterALookThatFails) {
  StartServer({Taken()});
  Open(WaitingRecord(1));
  folder.Write("OFFLINE_TMP", WaitingRecord(3));
  EXPECT_EQ(lumo::CountOfflineRecords(), 1);
  test::FailLookAtSize();
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
  EXPECT_EQ(lumo::ClearOffline(1), -202);
  EXPECT_EQ(folder.Read("OFFLINE"), WaitingRecord(3));
}

// As many records wait as were sent, and none of them has been.
TEST_F(ReplayTrouble, RecordsOfAnEarlierReplayAreNotClearedForThoseSent) {
  StartServer({Taken(), Taken()});
  Open(WaitingRecord(1));
  folder.Write("OFFLINE_TMP", WaitingRecord(3));
  EXPECT_EQ(lumo::CountOfflineRecords(), 1);
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
  EXPECT_EQ(lumo::ClearOffline(1), -202);
  EXPECT_EQ(folder.Read("OFFLINE"), WaitingRecord(3));
  EXPECT_EQ(lumo::CountOfflineRecords(), 1);
  EXPECT_EQ(lumo::OfflinePaymentsProcess(), 1);
  EXPECT_EQ(lumo::ClearOffline(1), 0);
  EXPECT_FALSE(folder.Exists("OFFLINE"));
}

}  // namespace
