// config/state_file_posix_test.cpp: STATE and CONFIG as files: how they are written, and what a failure
// leaves of them.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "config/lumoconfig.h"
#include "config/lumostate.h"
#include "support/file_traffic.h"
#include "support/folder.h"

namespace {

constexpr char kSaved[] = "{\"reqId\":\"1234512120500008\",\"offline\":0,\"shiftState\":0,\"update\":0}";

class StateFile : public testing::Test {
 protected:
  ~StateFile() override {
    test::EndFileTrouble();
    lumo::ReleaseState();
  }
  void Load(const std::string &bytes) {
    folder.Write("STATE", bytes);
    EXPECT_EQ(lumo::LoadState(), 0);
  }

  test::Folder folder;
};

TEST_F(StateFile, IsSavedInOneWrite) {
  Load("{\"reqId\":\"1234512120500007\",\"offline\":0,\"shiftState\":0,\"update\":0}");
  test::ResetFileTraffic();
  ASSERT_EQ(lumo::SetRequestId("1234512120500008"), 0);
  EXPECT_EQ(test::CountFileTraffic().writes, 1);
  EXPECT_EQ(folder.Read("STATE"), kSaved);
}

TEST_F(StateFile, ThatShrinksIsSavedInOneWriteToo) {
  Load("{\"reqId\":\"1234512120500007\",\"shiftId\":\"a name that is longer than most\",\"shiftState\":0}");
  ASSERT_EQ(lumo::SetRequestId("1234512120500008"), 0);
  test::ResetFileTraffic();
  ASSERT_EQ(lumo::SetShiftId(nullptr), 0);
  EXPECT_EQ(test::CountFileTraffic().writes, 1);
  EXPECT_EQ(folder.Read("STATE"), kSaved);
}

// Until the longer text is written, the old one has blanks behind it.
TEST_F(StateFile, ThatGrowsOnAFullDiskStaysAsItWas) {
  Load("{}");
  for (const uint64_t room : {0U, 1U, 30U}) {
    test::LeaveDiskRoom(room);
    EXPECT_EQ(lumo::SetRequestId("1234512120500008"), -110) << room;
    EXPECT_EQ(folder.Read("STATE"), "{}") << room;
  }
  test::LeaveDiskRoom(UINT64_MAX);
  EXPECT_EQ(lumo::SetRequestId("1234512120500008"), 0);
  EXPECT_EQ(folder.Read("STATE"), kSaved);
}

TEST_F(StateFile, AWriteThatFailsIsReported) {
  Load(kSaved);
  test::LeaveDiskRoom(0);
  EXPECT_EQ(lumo::SetOfflineState(1), -110);
  EXPECT_EQ(folder.Read("STATE"), kSaved);
}

TEST_F(StateFile, AWriteThatComesShortIsCarriedOn) {
  Load(kSaved);
  test::CutNextWrite(7);
  EXPECT_EQ(lumo::SetRequestId("1234512120500009"), 0);
  EXPECT_EQ(folder.Read("STATE"),
            "{\"reqId\":\"1234512120500009\",\"offline\":0,\"shiftState\":0,\"update\":0}");
}

TEST_F(StateFile, AMissingOneIsNeverSeenHalfWritten) {
  test::LeaveDiskRoom(1);
  EXPECT_EQ(lumo::LoadState(), 0);
  EXPECT_FALSE(folder.Exists("STATE"));
  EXPECT_FALSE(folder.Exists("STATE.new"));
  EXPECT_EQ(lumo::SetOfflineState(1), -110);
  test::LeaveDiskRoom(UINT64_MAX);
  EXPECT_EQ(lumo::LoadState(), 0);
  EXPECT_EQ(folder.Read("STATE"), "{}");
  EXPECT_FALSE(folder.Exists("STATE.new"));
}

// A copy of the folder may take longer than an open waits.
TEST_F(StateFile, OneThatWasHeldIsReadOnceItIsFree) {
  folder.Write("STATE", kSaved);
  test::RefuseOpen("STATE", 1);
  EXPECT_EQ(lumo::LoadState(), 0);
  EXPECT_STREQ(lumo::RequestId(), "1234512120500008");
  EXPECT_EQ(folder.Read("STATE"), kSaved);
}

// It is opened to be read, to see whether it is free again, to be read again, and once more to be replaced.
TEST_F(StateFile, OneThatIsHeldTwiceIsNotReplaced) {
  folder.Write("STATE", kSaved);
  test::RefuseSomeOpens("STATE", "x.x.");
  EXPECT_EQ(lumo::LoadState(), -109);
  EXPECT_EQ(folder.Read("STATE"), kSaved);
  EXPECT_EQ(lumo::LoadState(), 0);
  EXPECT_STREQ(lumo::RequestId(), "1234512120500008");
}

TEST_F(StateFile, OneThatIsHeldIsNotReplaced) {
  folder.Write("STATE", kSaved);
  test::RefuseOpen("STATE");
  EXPECT_EQ(lumo::LoadState(), -109);
  EXPECT_EQ(folder.Trace(),
            "LoadState\nparseJsonFile [STATE]\nERROR: CreateFile function failed with error 5\n"
            "ERROR: CreateFile function failed with error 5\n");
  EXPECT_EQ(folder.Read("STATE"), kSaved);
}

TEST_F(StateFile, CannotBeMadeThroughALinkThatLeadsNowhere) {
  std::filesystem::create_symlink("nowhere/STATE", folder.path() + "STATE");
  EXPECT_EQ(lumo::LoadState(), -109);
  EXPECT_FALSE(folder.Exists("STATE.new"));
}

TEST_F(StateFile, CannotBeMadeWhereThereIsNoFolder) {
  std::filesystem::remove_all(folder.path());
  EXPECT_EQ(lumo::LoadState(), -109);
}

TEST_F(StateFile, IsMadeDirectlyWhereTheNameOfANewOneIsTaken) {
  std::filesystem::create_directory(folder.path() + "STATE.new");
  EXPECT_EQ(lumo::LoadState(), 0);
  EXPECT_EQ(folder.Read("STATE"), "{}");
  EXPECT_EQ(lumo::SetOfflineState(1), 0);
  folder.Remove("STATE");
  test::LeaveDiskRoom(1);
  EXPECT_EQ(lumo::SetOfflineState(1), -110);
  EXPECT_FALSE(folder.Exists("STATE"));
  std::filesystem::create_directory(folder.path() + "STATE");
  EXPECT_EQ(lumo::LoadState(), -109);
}

TEST_F(StateFile, ADamagedOneIsReplacedWithoutBeingCutFirst) {
  folder.Write("STATE", "{\"reqId\":damaged}");
  test::ResetFileTraffic();
  EXPECT_EQ(lumo::LoadState(), 0);
  EXPECT_EQ(folder.Read("STATE"), "{}");
  EXPECT_EQ(test::CountFileTraffic().writes, 1);
}

TEST_F(StateFile, AReadThatFailsKeepsWhatIsInMemoryAndOnDisk) {
  Load("{\"reqId\":\"1234512120500008\",\"shiftId\":\"42\",\"shiftState\":1}");
  for (const int reads : {0, 1, 2}) {
    test::FailReadAfter(reads);
    EXPECT_EQ(lumo::GetShiftState(), 1) << reads;
    EXPECT_STREQ(lumo::RequestId(), "1234512120500008") << reads;
  }
  test::FailReadAfter(0);
  EXPECT_EQ(lumo::LoadState(), -108);
  EXPECT_EQ(folder.Read("STATE"), "{\"reqId\":\"1234512120500008\",\"shiftId\":\"42\",\"shiftState\":1}");
}

// The bytes that were looked at for a byte order mark are not lost.
TEST_F(StateFile, ASeekThatFailsIsDoneWithout) {
  folder.Write("STATE", "{\"reqId\":\"1234512120500008\"}");
  test::FailSeekAfter(0);
  EXPECT_EQ(lumo::LoadState(), 0);
  EXPECT_STREQ(lumo::RequestId(), "1234512120500008");
}

TEST_F(StateFile, AShortReadIsNotItsEnd) {
  folder.Write("STATE", "{\"reqId\":\"1234512120500008\"}");
  for (const int reads : {0, 1, 2}) {
    test::ShortenReadAfter(reads);
    EXPECT_EQ(lumo::LoadState(), 0) << reads;
    EXPECT_STREQ(lumo::RequestId(), "1234512120500008") << reads;
  }
}

TEST_F(StateFile, OfTheSettingsIsSavedInOneWrite) {
  folder.Write("CONFIG", "{\"terminalId\":\"1\",\"receiptHeader\":\"Head\",\"timeout\":5}");
  ASSERT_EQ(lumo::LoadConfig(), 0);
  test::ResetFileTraffic();
  ASSERT_EQ(lumo::SaveConfig(), 0);
  EXPECT_EQ(test::CountFileTraffic().writes, 1);
}

}  // namespace
