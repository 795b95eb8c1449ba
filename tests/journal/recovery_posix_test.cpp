// journal/recovery_posix_test.cpp: a recovery whose own calls fail loses nothing: what it could not do is
// done at the next start.
#include <gtest/gtest.h>

#include <string>

#include "foundation/files.h"
#include "journal/logger.h"
#include "journal/recovery.h"
#include "support/file_traffic.h"
#include "support/folder.h"

namespace {

class RecoveryFaults : public testing::Test {
 protected:
  ~RecoveryFaults() override { test::EndFileTrouble(); }

  void Put(const std::string &old_log, const std::string &log) const {
    folder.Write("LOG.old", old_log);
    folder.Write("LOG", log);
  }
  // Two logs of two records each, which are joined.
  void PutTwoLogs() const { Put("1\n2\n", "3\n4\n"); }

  void ExpectBothLogsStay(const std::string &what) const {
    EXPECT_EQ(folder.Read("LOG.old"), "1\n2\n") << what;
    EXPECT_EQ(folder.Read("LOG"), "3\n4\n") << what;
    EXPECT_FALSE(folder.Exists("LOG.new")) << what;
  }
  void ExpectTheNextStartJoinsThem(const std::string &what) const {
    test::EndFileTrouble();
    lumo::RecoverJournals();
    EXPECT_EQ(folder.Read("LOG"), "1\n2\n3\n4\n") << what;
    EXPECT_FALSE(folder.Exists("LOG.old")) << what;
    EXPECT_FALSE(folder.Exists("LOG.new")) << what;
  }

  test::Folder folder;
};

// Either log is opened to be listed, to be compared, and to be copied.
TEST_F(RecoveryFaults, LogsThatCannotBeOpenedWait) {
  for (const char *name : {"LOG.old", "LOG"}) {
    for (const int opens : {0, 1, 2}) {
      PutTwoLogs();
      test::RefuseOpenAfter(opens, name);
      lumo::RecoverJournals();
      const std::string what = name + std::to_string(opens);
      ExpectBothLogsStay(what);
      ExpectTheNextStartJoinsThem(what);
    }
  }
  PutTwoLogs();
  test::RefuseOpen("LOG.new");
  lumo::RecoverJournals();
  ExpectBothLogsStay("LOG.new");
}

// Whichever call fails, both logs stay as they are or are one.
TEST_F(RecoveryFaults, LogsWhosePlacesCannotBeFoundWait) {
  for (int seeks = 0; seeks < 12; ++seeks) {
    PutTwoLogs();
    test::FailSeekAfter(seeks);
    lumo::RecoverJournals();
    const std::string what = "seek " + std::to_string(seeks);
    if (folder.Exists("LOG.old")) ExpectBothLogsStay(what);
    ExpectTheNextStartJoinsThem(what);
  }
}

TEST_F(RecoveryFaults, LogsThatCannotBeReadWait) {
  for (int reads = 0; reads < 30; ++reads) {
    PutTwoLogs();
    test::FailReadAfter(reads);
    lumo::RecoverJournals();
    const std::string what = "read " + std::to_string(reads);
    if (folder.Exists("LOG.old")) ExpectBothLogsStay(what);
    ExpectTheNextStartJoinsThem(what);
  }
}

// Joined with it, its records would be there twice.
TEST_F(RecoveryFaults, ACopyThatCannotBeComparedWithItsOriginalWaits) {
  for (const char *copy : {"2\n", "2\n3\n"}) {
    for (int reads = 0; reads < 20; ++reads) {
      Put("1\n2\n3\n", copy);
      test::FailReadAfter(reads);
      lumo::RecoverJournals();
      const std::string log = folder.Read("LOG");
      EXPECT_TRUE(log == copy || log == "1\n2\n3\n") << copy << reads << log;
    }
  }
}

TEST_F(RecoveryFaults, ACopyOfBothLogsIsWholeOrNone) {
  for (const uint64_t room : {0U, 3U, 4U, 7U}) {
    PutTwoLogs();
    test::LeaveDiskRoom(room);
    lumo::RecoverJournals();
    ExpectBothLogsStay(std::to_string(room));
  }
  test::LeaveDiskRoom(UINT64_MAX);
  test::FailFlushAfter(0);
  lumo::RecoverJournals();
  ExpectBothLogsStay("flush");
  ExpectTheNextStartJoinsThem("flush");
}

TEST_F(RecoveryFaults, ATailThatCannotBeCutOffIsNotCopied) {
  Put("1\n2\ntorn", "3\n4\n");
  test::FailCutAfter(0);
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("LOG.old"), "1\n2\ntorn");
  EXPECT_FALSE(folder.Exists("LOG.new"));
  ExpectTheNextStartJoinsThem("tail");
}

TEST_F(RecoveryFaults, ALogThatCannotBeDeletedStays) {
  PutTwoLogs();
  test::RefuseDelete("LOG");
  lumo::RecoverJournals();
  ExpectBothLogsStay("joined");
  Put("1\n2\n3\n", "2\n");
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("LOG.old"), "1\n2\n3\n");
  EXPECT_EQ(folder.Read("LOG"), "2\n");
}

TEST_F(RecoveryFaults, AJoinedLogThatCannotBeRenamedStaysBesideTheOld) {
  PutTwoLogs();
  test::RefuseMove("LOG.new");
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("LOG.new"), "1\n2\n3\n4\n");
  EXPECT_EQ(folder.Read("LOG.old"), "1\n2\n");
  ExpectTheNextStartJoinsThem("renamed");
}

TEST_F(RecoveryFaults, AJoinedLogIsNotLostWhileNobodyKnowsOfTheOthers) {
  folder.Write("LOG.new", "1\n");
  folder.Write("LOG", "");
  test::FailLookAfter(1, 2);  // the first is at LOG.new
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("LOG"), "1\n");
}

TEST_F(RecoveryFaults, AJoinedLogWaitsWhileAnOtherCannotBeRead) {
  for (const char *name : {"LOG.old", "LOG", "LOG.new"}) {
    folder.Write("LOG.old", "1\n2\n");
    folder.Write("LOG", "5\n");
    folder.Write("LOG.new", "1\n2\n3\n4\n");
    test::RefuseOpen(name);
    lumo::RecoverJournals();
    EXPECT_EQ(folder.Read("LOG.old"), "1\n2\n") << name;
    EXPECT_EQ(folder.Read("LOG"), "5\n") << name;
    EXPECT_EQ(folder.Read("LOG.new"), "1\n2\n3\n4\n") << name;
  }
  test::RefuseOpen("");
  test::RefuseDelete("LOG.old");
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("LOG.new"), "1\n2\n3\n4\n");
  test::EndFileTrouble();
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("LOG"), "1\n2\n3\n4\n5\n");
}

TEST_F(RecoveryFaults, AReplayThatCannotBeFinishedAtTheStartIsWhenItsRecordsAreWanted) {
  folder.Write("OFFLINE_TMP", "1\n");
  test::RefuseMove("OFFLINE_TMP");
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "1\n");
  test::EndFileTrouble();
  bool whole = false;
  const lumo::ScopedRecords records(lumo::GetOfflineRecords(&whole));
  EXPECT_TRUE(whole);
  ASSERT_NE(records.get(), nullptr);
  EXPECT_STREQ(records.get()->text, "1");
  EXPECT_EQ(folder.Read("OFFLINE"), "1\n");
}

}  // namespace
