// journal/logger_posix_test.cpp: the journals when files fail, and what they cost: bytes through the files,
// at a thousand and at ten thousand records.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <utility>

#include "foundation/files.h"
#include "journal/line_file.h"
#include "journal/logger.h"
#include "support/file_traffic.h"
#include "support/folder.h"

namespace {

std::string NumberLines(int first, int last) {
  std::string lines;
  for (int i = first; i <= last; ++i) lines += std::to_string(i) + "\n";
  return lines;
}

std::string Records(int count) {
  std::string records;
  for (int i = 0; i < count; ++i) records += std::string(99, 'r') + "\n";
  return records;
}

class JournalFaults : public testing::Test {
 protected:
  ~JournalFaults() override { test::EndFileTrouble(); }

  test::Folder folder;
};

using JournalCost = JournalFaults;

constexpr std::pair<const char *, int (*)(const char *)> kAppends[] = {
    {"LOG", lumo::AppendLogRecord},
    {"OFFLINE", lumo::AppendOfflineRecord},
    {"OFFLINE_TMP", lumo::AppendOfflineTmpRecord},
};

TEST_F(JournalFaults, ARecordThatCannotBeWrittenWholeIsCutOffAgain) {
  lumo::SetLogSize(300);
  for (const auto &[file_name, append] : kAppends) {
    for (const uint64_t room : {6U, 5U, 1U, 0U}) {
      folder.Write(file_name, "1\n");
      test::LeaveDiskRoom(room);
      EXPECT_EQ(append("record"), -201) << room << ", " << file_name;
      test::LeaveDiskRoom(UINT64_MAX);
      EXPECT_EQ(folder.Read(file_name), "1\n") << room << ", " << file_name;
      EXPECT_EQ(lumo::FileDelete(file_name), 0) << file_name << " was left open";
    }
    test::LeaveDiskRoom(7);
    EXPECT_EQ(append("record"), 0);
    test::LeaveDiskRoom(UINT64_MAX);
    EXPECT_EQ(folder.Read(file_name), "record\n");
  }
}

TEST_F(JournalFaults, ATornTailIsCutOffAlsoWhenTheRecordDoesNotFit) {
  folder.Write("OFFLINE", "1\ntorn");
  test::LeaveDiskRoom(3);
  EXPECT_EQ(lumo::AppendOfflineRecord("record"), -201);
  EXPECT_EQ(folder.Read("OFFLINE"), "1\n");
}

TEST_F(JournalFaults, RecordAndLineFeedAreOneWrite) {
  lumo::SetLogSize(300);
  for (const auto &[file_name, append] : kAppends) {
    test::ResetFileTraffic();
    EXPECT_EQ(append("record"), 0) << file_name;
    EXPECT_EQ(test::CountFileTraffic().writes, 1) << file_name;
  }
}

TEST_F(JournalFaults, AWriteThatComesShortIsCarriedOn) {
  test::CutNextWrite(3);
  EXPECT_EQ(lumo::AppendOfflineRecord("first"), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), "first\n");
}

TEST_F(JournalFaults, AWriteOfNothingIsAFailure) {
  folder.Write("OFFLINE_TMP", "1\n");
  test::CutNextWrite(0);
  EXPECT_EQ(lumo::AppendOfflineTmpRecord("2"), -201);
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "1\n");
}

// An append goes to the end, reads the last byte, and goes to the end again.
TEST_F(JournalFaults, NothingIsWrittenWhenTheEndCannotBeFound) {
  for (int seeks = 0; seeks < 3; ++seeks) {
    folder.Write("OFFLINE_TMP", "1\n2\n");
    test::FailSeekAfter(seeks);
    EXPECT_EQ(lumo::AppendOfflineTmpRecord("record"), -201) << seeks;
    EXPECT_EQ(folder.Read("OFFLINE_TMP"), "1\n2\n") << seeks;
  }
  test::FailSeekAfter(-1);
  test::FailReadAfter(0);
  EXPECT_EQ(lumo::AppendOfflineTmpRecord("record"), -201);
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "1\n2\n");
}

// Nobody else knows of a sale without the server, and a payment does not report its loss. The second try
// leaves no line.
TEST_F(JournalFaults, ARecordForTheServerIsTriedTwice) {
  for (int seeks = 0; seeks < 3; ++seeks) {
    folder.Write("OFFLINE", "1\n2\n");
    test::FailSeekAfter(seeks);
    EXPECT_EQ(lumo::AppendOfflineRecord("3"), 0) << seeks;
    EXPECT_EQ(folder.Read("OFFLINE"), "1\n2\n3\n") << seeks;
  }
}

TEST_F(JournalFaults, ASecondTryThatFailsTooLeavesNoLine) {
  test::RefuseOpen("OFFLINE");
  EXPECT_EQ(lumo::AppendOfflineRecord("1"), -201);
  EXPECT_EQ(folder.Trace(),
            "ERROR: CreateFile function failed with error 5\nERROR: [OFFLINE] file is not opened\n");
}

TEST_F(JournalFaults, ATrimPutsTheFileBackWhenItCannotBeCopied) {
  folder.Write("J", NumberLines(1, 5));
  for (const uint64_t room : {0U, 5U}) {
    test::LeaveDiskRoom(room);
    EXPECT_EQ(lumo::TrimOldestLines(2, "J"), -202) << room;
    EXPECT_EQ(folder.Read("J"), NumberLines(1, 5)) << room;
    EXPECT_FALSE(folder.Exists("J.old")) << room;
  }
  test::LeaveDiskRoom(UINT64_MAX);
  for (const int reads : {0, 1}) {
    test::FailReadAfter(reads);
    EXPECT_EQ(lumo::TrimOldestLines(2, "J"), -202) << reads;
    EXPECT_EQ(folder.Read("J"), NumberLines(1, 5)) << reads;
    EXPECT_FALSE(folder.Exists("J.old")) << reads;
  }
  test::ShortenReadAfter(0);
  EXPECT_EQ(lumo::TrimOldestLines(2, "J"), 0);
  EXPECT_EQ(folder.Read("J"), NumberLines(3, 5));
}

// The next start puts both together: what was copied would then be there twice.
TEST_F(JournalFaults, ATrimThatCannotBeUndoneKeepsNoRecordTwice) {
  folder.Write("J", NumberLines(1, 5));
  test::LeaveDiskRoom(5);
  test::RefuseDelete("J");
  EXPECT_EQ(lumo::TrimOldestLines(2, "J"), -202);
  EXPECT_EQ(folder.Read("J"), "");
  EXPECT_EQ(folder.Read("J.old"), NumberLines(1, 5));
}

TEST_F(JournalFaults, ATrimmedFileIsOnTheDiskBeforeItsCopyGoes) {
  folder.Write("J", NumberLines(1, 5));
  test::ResetFileTraffic();
  EXPECT_EQ(lumo::TrimOldestLines(1, "J"), 0);
  EXPECT_EQ(test::CountFileTraffic().steps, "MFD");
  test::FailFlushAfter(0);
  EXPECT_EQ(lumo::TrimOldestLines(1, "J"), 0) << "a disk that cannot has the file all the same";
  EXPECT_EQ(folder.Read("J"), NumberLines(3, 5));
}

TEST_F(JournalFaults, ATrimWithoutANewFileLeavesAllUnderTheCopysName) {
  folder.Write("J", NumberLines(1, 5));
  test::RefuseOpen("J");
  EXPECT_EQ(lumo::TrimOldestLines(1, "J"), -202);
  EXPECT_EQ(folder.Trace(), "ERROR: CreateFile function failed with error 5\nERROR: new file is NULL\n");
  EXPECT_EQ(folder.Read("J.old"), NumberLines(1, 5));
  EXPECT_EQ(lumo::FileDelete("J.old"), 0) << "the copy was left open";
}

TEST_F(JournalFaults, ATrimWithoutTheCopyClosesTheNewFile) {
  folder.Write("J", NumberLines(1, 5));
  test::RefuseOpen("J.old");
  EXPECT_EQ(lumo::TrimOldestLines(1, "J"), -202);
  EXPECT_EQ(folder.Trace(), "ERROR: CreateFile function failed with error 5\nERROR: old file is NULL\n");
  EXPECT_EQ(lumo::FileDelete("J"), 0) << "the new file was left open";
  EXPECT_EQ(folder.Read("J.old"), NumberLines(1, 5));
}

TEST_F(JournalFaults, AListThatARefusedReadEndsIsNotWhole) {
  folder.Write("OFFLINE", Records(100));
  for (const int reads : {0, 1, 4}) {
    test::FailReadAfter(reads);
    bool whole = true;
    lumo::FreeRecordList(lumo::GetOfflineRecords(&whole));
    EXPECT_FALSE(whole) << reads;
  }
  test::FailReadAfter(-1);
}

TEST_F(JournalFaults, ATornTailThatCannotBeCutOffLetsNoRecordBehindIt) {
  folder.Write("OFFLINE_TMP", "1\ntorn");
  test::FailCutAfter(0);
  EXPECT_EQ(lumo::AppendOfflineTmpRecord("2"), -201);
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "1\ntorn");
}

TEST_F(JournalFaults, ARecordThatIsWrittenCountsThoughTheDiskCannotBeFlushed) {
  folder.Write("OFFLINE", "1\n");
  test::FailFlushAfter(0);
  EXPECT_EQ(lumo::AppendOfflineRecord("2"), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), "1\n2\n");
}

TEST_F(JournalFaults, WhatAnInterruptedReplayLeftStaysWhenItCannotBeCompared) {
  folder.Write("OFFLINE", "1\n2\n");
  bool whole = false;
  lumo::RecordEntry *records = lumo::GetOfflineRecords(&whole);
  for (const auto &[name, opens] : {std::pair<const char *, int>{"OFFLINE", 0}, {"OFFLINE_TMP", 1}}) {
    folder.Write("OFFLINE_TMP", "0\n2\n");
    test::RefuseOpenAfter(opens, name);
    EXPECT_FALSE(lumo::DropInterruptedReplay(records)) << name;
    test::RefuseOpen("");
    EXPECT_EQ(folder.Read("OFFLINE_TMP"), "0\n2\n") << name;
  }
  for (const int reads : {0, 2, 3}) {  // of the list, and of either file's record
    test::FailReadAfter(reads);
    EXPECT_FALSE(lumo::DropInterruptedReplay(records)) << reads;
    EXPECT_EQ(folder.Read("OFFLINE_TMP"), "0\n2\n") << reads;
  }
  test::RefuseOpenAfter(2, "OFFLINE_TMP");  // it is opened to be listed, to be compared, and to be cut
  EXPECT_FALSE(lumo::DropInterruptedReplay(records));
  test::RefuseOpen("");
  test::FailCutAfter(0);
  EXPECT_FALSE(lumo::DropInterruptedReplay(records));
  EXPECT_TRUE(lumo::DropInterruptedReplay(records));
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "0\n");
  EXPECT_TRUE(lumo::DropInterruptedReplay(records)) << "nothing of it is in OFFLINE";
  folder.Write("OFFLINE_TMP", "longer\n2\n");
  EXPECT_TRUE(lumo::DropInterruptedReplay(records));
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "longer\n");
  folder.Write("OFFLINE_TMP", "2\n");
  test::RefuseDelete("OFFLINE_TMP");
  EXPECT_FALSE(lumo::DropInterruptedReplay(records));
  test::RefuseDelete("");
  EXPECT_TRUE(lumo::DropInterruptedReplay(records));
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
  EXPECT_TRUE(lumo::DropInterruptedReplay(records)) << "there is none";
  lumo::FreeRecordList(records);
}

// One could not be taken back, and the next was interrupted as well.
TEST_F(JournalFaults, WhatSeveralInterruptedReplaysLeftIsDropped) {
  folder.Write("OFFLINE", "1\n2\n3\n");
  folder.Write("OFFLINE_TMP", "0\n2\n3\n1\n3\n2\n");
  bool whole = false;
  lumo::RecordEntry *records = lumo::GetOfflineRecords(&whole);
  EXPECT_TRUE(lumo::DropInterruptedReplay(records));
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "0\n");
  folder.Write("OFFLINE_TMP", "2\n3\n1\n");
  EXPECT_TRUE(lumo::DropInterruptedReplay(records));
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
  lumo::FreeRecordList(records);
}

TEST_F(JournalFaults, AnOfflineTmpOfUnknownLengthIsNotTakenBack) {
  folder.Write("OFFLINE_TMP", "0\n");
  test::FailLookAtSize();
  const lumo::OfflineTmpMark mark = lumo::MarkOfflineTmp();
  EXPECT_TRUE(mark.exists);
  EXPECT_EQ(lumo::AppendOfflineTmpRecord("1"), 0);
  lumo::TakeBackOfflineTmp(mark);
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "0\n1\n");
  folder.Remove("OFFLINE_TMP");
  EXPECT_FALSE(lumo::MarkOfflineTmp().exists);
}

TEST_F(JournalFaults, AnOfflineJournalThatCannotBeDeletedIsNotCleared) {
  folder.Write("OFFLINE", "1\n");
  test::RefuseDelete("OFFLINE");
  EXPECT_EQ(lumo::ClearOffline(1), -202);
  EXPECT_EQ(folder.Read("OFFLINE"), "1\n");
}

TEST_F(JournalFaults, AFileThatIsShorterThanItsLengthWasHasNoKnownTail) {
  folder.Write("J", "1\n");
  const lumo::HANDLE file = lumo::FileOpen("J", "rb");
  uint32_t torn = 0;
  EXPECT_FALSE(lumo::FindTornTail(file, 5, &torn));
  lumo::FileClose(file);
}

TEST_F(JournalFaults, BytesThatCannotBeReadAreNotTheSame) {
  folder.Write("J", "same");
  folder.Write("K", "same");
  const lumo::HANDLE one = lumo::FileOpen("J", "rb");
  const lumo::HANDLE other = lumo::FileOpen("K", "rb");
  bool failed = false;
  EXPECT_TRUE(lumo::HaveSameBytes(one, 0, other, 0, 4, &failed));
  EXPECT_FALSE(lumo::HaveSameBytes(one, 0, other, 1, 3, &failed));
  EXPECT_FALSE(failed);
  for (const int calls : {0, 1}) {
    test::FailSeekAfter(calls);
    EXPECT_FALSE(lumo::HaveSameBytes(one, 0, other, 0, 4, &failed)) << calls;
    EXPECT_TRUE(failed) << calls;
    failed = false;
    test::FailReadAfter(calls);
    EXPECT_FALSE(lumo::HaveSameBytes(one, 0, other, 0, 4, &failed)) << calls;
    EXPECT_TRUE(failed) << calls;
  }
  lumo::FileClose(one);
  lumo::FileClose(other);
}

// A position in a file is a signed 32-bit number.
TEST_F(JournalFaults, NothingIsListedBehindTwoGigabytes) {
  folder.Write("J", "");
  std::filesystem::resize_file(folder.path() + "J", 0x80000000U);  // takes no room
  const lumo::HANDLE file = lumo::FileOpen("J", "r+");
  lumo::LineReader reader;
  lumo::LineReaderInit(&reader, file);
  reader.chunkOffset = 0x7FFFFFFFU - sizeof reader.chunk;  // as if all before it had been read
  ASSERT_TRUE(lumo::FileMoveTo(file, reader.chunkOffset));
  ASSERT_EQ(lumo::FileWrite("last\n", 1, 5, file), 5U);
  ASSERT_TRUE(lumo::FileMoveTo(file, reader.chunkOffset));
  ASSERT_TRUE(lumo::LineReaderNext(&reader));
  EXPECT_EQ(reader.lineLength, 4U);
  EXPECT_FALSE(lumo::LineReaderNext(&reader));
  EXPECT_TRUE(reader.failed) << "what was found is not all";
  lumo::FileClose(file);
}

TEST_F(JournalFaults, AShortReadIsNotTheEndOfAList) {
  folder.Write("OFFLINE", Records(100));
  test::ShortenReadAfter(1);
  bool whole = false;
  lumo::RecordEntry *first = lumo::GetOfflineRecords(&whole);
  int entries = 0;
  for (const lumo::RecordEntry *entry = first; entry != nullptr; entry = entry->next) ++entries;
  lumo::FreeRecordList(first);
  EXPECT_TRUE(whole);
  EXPECT_EQ(entries, 100);
}

TEST_F(JournalFaults, ARecordThatCannotBeReadHasNoText) {
  folder.Write("LOG", "first\nsecond\nthird\n");
  lumo::RecordEntry *first = lumo::GetLogRecords();
  test::FailReadAfter(0);
  lumo::RecordEntry *second = lumo::NextLogRecord(first);
  EXPECT_EQ(second->text, nullptr);
  test::FailSeekAfter(0);
  lumo::RecordEntry *third = lumo::NextLogRecord(second);
  EXPECT_EQ(third->text, nullptr);
  lumo::FreeRecordList(first);
}

TEST_F(JournalFaults, ARecordThatIsNoLongerThereIsTold) {
  folder.Write("LOG", "first\nsecond\n");
  lumo::RecordEntry *first = lumo::GetLogRecords();
  std::filesystem::resize_file(folder.path() + "LOG", 9);
  folder.ClearTrace();
  EXPECT_EQ(lumo::NextLogRecord(first)->text, nullptr);
  EXPECT_EQ(folder.Trace(),
            "ERROR: SetFilePointer function failed with error 0\nERROR: Can't open log file [LOG]\n");
  lumo::FreeRecordList(first);
}

TEST_F(JournalFaults, AShortReadIsNotTheEndOfARecord) {
  folder.Write("LOG", "first\n");
  test::ShortenReadAfter(2);  // the list takes two
  lumo::RecordEntry *first = lumo::GetLogRecords();
  EXPECT_STREQ(first->text, "first");
  lumo::FreeRecordList(first);
}

TEST_F(JournalFaults, ACountThatARefusedReadEndsIsNoCount) {
  folder.Write("OFFLINE", Records(100));
  EXPECT_EQ(lumo::CountOfflineRecords(), 100);
  test::FailReadAfter(1);
  EXPECT_EQ(lumo::CountOfflineRecords(), -307);
  test::FailReadAfter(1);
  EXPECT_EQ(lumo::ClearOffline(-307), -202);
  test::FailReadAfter(1);
  EXPECT_EQ(lumo::ClearOffline(100), -202);
  EXPECT_EQ(folder.Read("OFFLINE"), Records(100));
  EXPECT_EQ(lumo::ClearOffline(99), -202);
  EXPECT_EQ(lumo::ClearOffline(100), 0);
  EXPECT_FALSE(folder.Exists("OFFLINE"));
}

// A file position has 31 bits.
TEST_F(JournalFaults, AJournalOfMoreThan2GiBIsNotCountedOrListedWhole) {
  folder.Write("OFFLINE", "{}\n");
  std::filesystem::resize_file(folder.path() + "OFFLINE", 0x80000000u);
  EXPECT_EQ(lumo::CountOfflineRecords(), -307);
  bool whole = true;
  lumo::FreeRecordList(lumo::GetOfflineRecords(&whole));
  EXPECT_FALSE(whole);
}

TEST_F(JournalFaults, KeepsAFullLogWholeOnAFullDisk) {
  lumo::SetLogSize(6);
  folder.Write("LOG", NumberLines(1, 5));
  test::LeaveDiskRoom(0);
  EXPECT_EQ(lumo::AppendLogRecord("6"), -201);
  EXPECT_EQ(folder.Read("LOG"), NumberLines(1, 5));
}

TEST_F(JournalFaults, SucceedsThoughTheCopyCannotBeDeleted) {
  folder.Write("J", NumberLines(1, 5));
  test::RefuseDelete("J.old");
  EXPECT_EQ(lumo::TrimOldestLines(1, "J"), 0);
  EXPECT_EQ(folder.Trace(), "ERROR: file [J.old] is not removed!\n");
  EXPECT_EQ(folder.Read("J"), NumberLines(2, 5));
  EXPECT_EQ(folder.Read("J.old"), NumberLines(1, 5));
}

TEST_F(JournalFaults, ThatFailsLetsTheNextAppendStartANewLog) {
  lumo::SetLogSize(6);
  folder.Write("LOG", NumberLines(1, 5));
  test::RefuseOpen("LOG");
  EXPECT_EQ(lumo::TrimOldestLines(2, "LOG"), -202);
  test::RefuseOpen("");
  EXPECT_EQ(lumo::AppendLogRecord("6"), 0);
  EXPECT_EQ(folder.Read("LOG"), "6\n");
  EXPECT_EQ(folder.Read("LOG.old"), NumberLines(1, 5));
}

TEST_F(JournalFaults, KeepsBothWhenTheOldJournalCannotBeDeleted) {
  folder.Write("OFFLINE", "old\n");
  folder.Write("OFFLINE_TMP", "new\n");
  test::RefuseDelete("OFFLINE");
  EXPECT_EQ(lumo::CommitOfflineTmp(), 5);
  EXPECT_EQ(folder.Read("OFFLINE"), "old\n");
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "new\n");
}

TEST_F(JournalCost, OfAWalkIsTwoReadingsOfTheFile) {
  for (const int count : {1000, 10000}) {
    folder.Write("LOG", Records(count));
    test::ResetFileTraffic();
    int walked = 0;
    lumo::RecordEntry *first = lumo::GetLogRecords();
    for (lumo::RecordEntry *entry = first; entry != nullptr; entry = lumo::NextLogRecord(entry)) ++walked;
    lumo::FreeRecordList(first);
    EXPECT_EQ(walked, count);
    const test::FileTraffic traffic = test::CountFileTraffic();
    EXPECT_EQ(traffic.bytesRead, static_cast<uint64_t>(count) * (100 + 99));
    EXPECT_LE(traffic.largestRead, 4096U);
  }
}

TEST_F(JournalCost, AListOf100000RecordsIsListedInOneReading) {
  folder.Write("LOG", Records(100000));
  test::ResetFileTraffic();
  lumo::RecordEntry *first = lumo::GetLogRecords();
  uint32_t entries = 0;
  for (lumo::RecordEntry *entry = first; entry != nullptr; entry = entry->next) {
    ASSERT_EQ(entry->offset, entries * 100);
    ASSERT_EQ(entry->length, 99U);
    ++entries;
  }
  lumo::FreeRecordList(first);
  EXPECT_EQ(entries, 100000U);
  EXPECT_EQ(test::CountFileTraffic().bytesRead, 100000U * 100 + 99);
}

// ---- Cost ----

TEST_F(JournalCost, OfAnAppendToTheLogDoesNotGrowWithIt) {
  lumo::SetLogSize(INT32_MAX);
  for (const int count : {1000, 10000}) {
    folder.Write("LOG", Records(count));
    test::ResetFileTraffic();
    EXPECT_EQ(lumo::AppendLogRecord("the first reads it"), 0);
    EXPECT_EQ(test::CountFileTraffic().bytesRead, static_cast<uint64_t>(count) * 100 + 1);
    EXPECT_LE(test::CountFileTraffic().largestRead, 4096U);
    test::ResetFileTraffic();
    EXPECT_EQ(lumo::AppendLogRecord("new"), 0);
    const test::FileTraffic traffic = test::CountFileTraffic();
    EXPECT_EQ(traffic.bytesRead, 1U);
    EXPECT_EQ(traffic.bytesWritten, 4U);
  }
}

TEST_F(JournalCost, ALogThatSomebodyElseWroteIsCountedAnew) {
  lumo::SetLogSize(6);
  folder.Write("LOG", NumberLines(1, 2));
  EXPECT_EQ(lumo::AppendLogRecord("3"), 0);
  folder.Write("LOG", NumberLines(1, 5));
  EXPECT_EQ(lumo::AppendLogRecord("6"), 0);
  EXPECT_EQ(folder.Read("LOG"), NumberLines(3, 6));
}

TEST_F(JournalCost, ALogOfTheSameLengthThatSomebodyElseWroteIsCountedAnew) {
  lumo::SetLogSize(6);
  folder.Write("LOG", NumberLines(1, 4));
  EXPECT_EQ(lumo::AppendLogRecord("5"), 0);
  folder.Write("LOG", "123456789\n");
  const std::filesystem::path log = folder.path() + "LOG";
  std::filesystem::last_write_time(log, std::filesystem::last_write_time(log) + std::chrono::seconds(1));
  EXPECT_EQ(lumo::AppendLogRecord("2"), 0);
  EXPECT_EQ(folder.Read("LOG"), "123456789\n2\n");
}

// Between an append and the look at what has become of the file.
TEST_F(JournalCost, ALogThatSomebodyElseWritesAtOnceIsCountedAnew) {
  lumo::SetLogSize(6);
  folder.Write("LOG", "");
  test::BeforeLook([this] { folder.Write("LOG", NumberLines(1, 5)); });
  EXPECT_EQ(lumo::AppendLogRecord("1"), 0);
  EXPECT_EQ(lumo::AppendLogRecord("6"), 0);
  EXPECT_EQ(folder.Read("LOG"), NumberLines(3, 6));
  test::BeforeLook([this] { folder.Remove("LOG"); });
  EXPECT_EQ(lumo::AppendLogRecord("7"), 0);
  EXPECT_FALSE(folder.Exists("LOG"));
}

TEST_F(JournalCost, ALogThatIsGoneIsBegunAnew) {
  lumo::SetLogSize(6);
  EXPECT_EQ(lumo::AppendLogRecord("1"), 0);
  EXPECT_EQ(lumo::AppendLogRecord("2"), 0);
  folder.Remove("LOG");
  EXPECT_EQ(lumo::AppendLogRecord("3"), 0);
  EXPECT_EQ(folder.Read("LOG"), "3\n");
}

TEST_F(JournalCost, ACountGoesOnOverAppendsAndTrims) {
  lumo::SetLogSize(6);
  for (int i = 1; i <= 30; ++i) {
    EXPECT_EQ(lumo::AppendLogRecord(std::to_string(i).c_str()), 0);
    // The sixth line never comes: two go before it.
    const int lines = i < 6 ? i : 4 + i % 2;
    EXPECT_EQ(folder.Read("LOG"), NumberLines(i - lines + 1, i)) << i;
  }
}

TEST_F(JournalCost, OfAnAppendToTheOfflineJournalIsTheRecord) {
  folder.Write("OFFLINE", Records(10000));
  test::ResetFileTraffic();
  EXPECT_EQ(lumo::AppendOfflineRecord("new"), 0);
  EXPECT_EQ(test::CountFileTraffic().bytesRead, 1U);
  EXPECT_EQ(test::CountFileTraffic().bytesWritten, 4U);
}

TEST_F(JournalCost, OfATrimIsTwoReadingsAndOneWritingOfWhatStays) {
  for (const int count : {999, 9999}) {
    lumo::SetLogSize(count + 1);
    const int kept = count - (count + 1) / 3;
    folder.Write("LOG", Records(count));
    test::ResetFileTraffic();
    EXPECT_EQ(lumo::AppendLogRecord("new"), 0);
    const test::FileTraffic traffic = test::CountFileTraffic();
    EXPECT_EQ(traffic.bytesRead, static_cast<uint64_t>(count) * 100 * 2 + 1);
    EXPECT_EQ(traffic.bytesWritten, static_cast<uint64_t>(kept) * 100 + 4);
    EXPECT_LE(traffic.largestRead, 4096U);
  }
}

}  // namespace
