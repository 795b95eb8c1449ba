// journal/logger_test.cpp: the journals as files of lines: appending and trimming, counting, listing, and the
// commit of a replay.
#include "journal/logger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "foundation/files.h"
#include "support/folder.h"
#include "support/pattern.h"

namespace {

std::string Lines(int first, int last) {
  std::string lines;
  for (int i = first; i <= last; ++i) lines += std::to_string(i) + "\n";
  return lines;
}

struct Journal : testing::Test {
  void MakeFolder(const std::string &name) const {
    std::filesystem::create_directory(std::filesystem::u8path(folder.path() + name));
  }

  test::Folder folder;
};

using Append = Journal;
using Trim = Journal;
using Count = Journal;
using List = Journal;
using Commit = Journal;

// The list of an OFFLINE that is read whole.
lumo::RecordEntry *OfflineRecords() {
  bool whole = false;
  lumo::RecordEntry *records = lumo::GetOfflineRecords(&whole);
  EXPECT_TRUE(whole);
  return records;
}

// ---- Appending ----

TEST_F(Append, MakesTheFile) {
  EXPECT_EQ(lumo::SetLogSize(300), 0);
  EXPECT_EQ(lumo::AppendLogRecord("{\"request\":{}}"), 0);
  EXPECT_EQ(lumo::AppendOfflineRecord("{\"offline\":1}"), 0);
  EXPECT_EQ(lumo::AppendOfflineTmpRecord("{\"offline\":2}"), 0);
  EXPECT_EQ(folder.Read("LOG"), "{\"request\":{}}\n");
  EXPECT_EQ(folder.Read("OFFLINE"), "{\"offline\":1}\n");
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "{\"offline\":2}\n");
}

struct AppendCase {
  const char *name;
  int32_t logSize;
  std::string before;
  std::string after;
};

const AppendCase kAppendCases[] = {
    {"an empty log", 6, "", "new\n"},
    {"below the limit keeps all", 6, Lines(1, 4), Lines(1, 4) + "new\n"},
    {"the record that would fill it cuts a third", 6, Lines(1, 5), Lines(3, 5) + "new\n"},
    {"a log that is full already", 6, Lines(1, 6), Lines(3, 6) + "new\n"},
    {"a log far beyond the limit loses a third of the limit", 6, Lines(1, 20), Lines(3, 20) + "new\n"},
    {"299 lines of 300", 300, Lines(1, 299), Lines(101, 299) + "new\n"},
    {"298 lines of 300", 300, Lines(1, 298), Lines(1, 298) + "new\n"},
    {"a third is rounded down", 5, Lines(1, 4), Lines(2, 4) + "new\n"},
    {"size 3 keeps two", 3, Lines(1, 2), "2\nnew\n"},
    {"size 2 never shrinks", 2, Lines(1, 4), Lines(1, 4) + "new\n"},
    {"size 1 never shrinks", 1, Lines(1, 4), Lines(1, 4) + "new\n"},
    {"size 0 never shrinks", 0, Lines(1, 4), Lines(1, 4) + "new\n"},
    {"a negative size never shrinks", -300, Lines(1, 4), Lines(1, 4) + "new\n"},
    {"the least size never shrinks", INT32_MIN, Lines(1, 4), Lines(1, 4) + "new\n"},
    {"the greatest size keeps all", INT32_MAX, Lines(1, 4), Lines(1, 4) + "new\n"},
    {"an open tail is not counted and is cut off", 6, Lines(1, 4) + "5", Lines(1, 4) + "new\n"},
    {"an open tail is cut off after the trim", 6, Lines(1, 5) + "6", Lines(3, 5) + "new\n"},
    {"an open tail alone is cut off", 6, "{\"request\"", "new\n"},
    {"an open tail of a chunk", 6, "1\n" + std::string(1024, 't'), "1\nnew\n"},
    {"an open tail of many chunks", 6, "1\n" + std::string(5000, 't'), "1\nnew\n"},
    {"an open tail of many chunks alone", 6, std::string(5000, 't'), "new\n"},
    {"blank lines count", 6, "\n\n\n4\n\n", "\n4\n\nnew\n"},
};

TEST_F(Append, KeepsTheLogBelowItsSize) {
  for (const AppendCase &row : kAppendCases) {
    folder.Write("LOG", row.before);
    lumo::SetLogSize(row.logSize);
    EXPECT_EQ(lumo::AppendLogRecord("new"), 0) << row.name;
    EXPECT_EQ(folder.Read("LOG"), row.after) << row.name;
    EXPECT_FALSE(folder.Exists("LOG.old")) << row.name;
  }
}

TEST_F(Append, KeepsTheLogBelowItsSizeForEver) {
  lumo::SetLogSize(10);
  for (int i = 1; i <= 100; ++i) {
    ASSERT_EQ(lumo::AppendLogRecord(std::to_string(i).c_str()), 0);
    ASSERT_LT(lumo::CountLines("LOG"), 10);
  }
  EXPECT_EQ(folder.Read("LOG"), Lines(94, 100));
}

TEST_F(Append, GrowsALogOfSize1WithoutBound) {
  lumo::SetLogSize(1);
  for (int i = 1; i <= 20; ++i) ASSERT_EQ(lumo::AppendLogRecord(std::to_string(i).c_str()), 0);
  EXPECT_EQ(folder.Read("LOG"), Lines(1, 20));
}

TEST_F(Append, TriesToTrimAtEveryAppendToALogOfSize0) {
  lumo::SetLogSize(0);
  EXPECT_EQ(lumo::AppendLogRecord("1"), 0);
  EXPECT_THAT(folder.Trace(),
              testing::HasSubstr("ERROR: rename function failed with code 2 \"LOG\" => \"LOG.old\"\n"));
  EXPECT_EQ(folder.Read("LOG"), "1\n");
}

TEST_F(Append, GoesOnWhenTheTrimFails) {
  lumo::SetLogSize(6);
  folder.Write("LOG", Lines(1, 5));
  folder.Write("LOG.old", "left over\n");
  EXPECT_EQ(lumo::AppendLogRecord("6"), 0);
  EXPECT_THAT(folder.Trace(),
              testing::HasSubstr("ERROR: rename function failed with code 183 \"LOG\" => \"LOG.old\"\n"));
  EXPECT_EQ(folder.Read("LOG"), Lines(1, 6));
  EXPECT_EQ(folder.Read("LOG.old"), "left over\n");
}

TEST_F(Append, NeverTrimsTheOfflineJournals) {
  lumo::SetLogSize(6);
  folder.Write("OFFLINE", Lines(1, 999));
  folder.Write("OFFLINE_TMP", Lines(1, 999));
  EXPECT_EQ(lumo::AppendOfflineRecord("1000"), 0);
  EXPECT_EQ(lumo::AppendOfflineTmpRecord("1000"), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), Lines(1, 1000));
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), Lines(1, 1000));
}

TEST_F(Append, RefusesANullRecordAndTracesIt) {
  lumo::SetLogSize(2);
  folder.Write("LOG", Lines(1, 5));
  for (const auto append : {lumo::AppendLogRecord, lumo::AppendOfflineRecord, lumo::AppendOfflineTmpRecord}) {
    folder.ClearTrace();
    EXPECT_EQ(append(nullptr), -201);
    EXPECT_EQ(folder.Trace(), "ERROR: Record string is null pointer\n");
  }
  EXPECT_EQ(folder.Read("LOG"), Lines(1, 5));
  EXPECT_FALSE(folder.Exists("OFFLINE"));
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
}

TEST_F(Append, RefusesAFileThatCannotBeOpened) {
  lumo::SetLogSize(300);
  for (const char *name : {"LOG", "OFFLINE", "OFFLINE_TMP"}) MakeFolder(name);
  EXPECT_EQ(lumo::AppendLogRecord("x"), -201);
  EXPECT_THAT(folder.Trace(), testing::EndsWith("ERROR: [LOG] file is not opened\n"));
  EXPECT_EQ(lumo::AppendOfflineRecord("x"), -201);
  EXPECT_THAT(folder.Trace(), testing::EndsWith("ERROR: [OFFLINE] file is not opened\n"));
  EXPECT_EQ(lumo::AppendOfflineTmpRecord("x"), -201);
  EXPECT_THAT(folder.Trace(), testing::EndsWith("ERROR: [OFFLINE_TMP] file is not opened\n"));
}

TEST_F(Append, WaitsOnceForAFileThatIsHeld) {
  lumo::HANDLE open = lumo::FileOpen("OFFLINE", "w");
  EXPECT_EQ(lumo::AppendOfflineRecord("1"), -201);
  lumo::FileClose(open);
  EXPECT_EQ(folder.Trace(),
            "ERROR: CreateFile function failed with error 32\nERROR: [OFFLINE] file is not opened\n");
  EXPECT_EQ(folder.Read("OFFLINE"), "");
}

TEST_F(Append, LeavesTheLineOfItsSeekInTheTrace) {
  folder.Write("OFFLINE", "1\n");
  EXPECT_EQ(lumo::AppendOfflineRecord("2"), 0);
  EXPECT_THAT(folder.Trace(),
              test::MatchesPattern("ERROR: SetFilePointer function failed with error [0-9]+\n"));
}

TEST_F(Append, TakesAnEmptyRecord) {
  EXPECT_EQ(lumo::AppendOfflineRecord(""), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), "\n");
}

TEST_F(Append, TakesARecordOfAnyLength) {
  const std::string record(1000000, 'r');
  EXPECT_EQ(lumo::AppendOfflineRecord(record.c_str()), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), record + "\n");
}

TEST_F(Append, LeavesNoFileOpen) {
  EXPECT_EQ(lumo::AppendOfflineRecord("1"), 0);
  EXPECT_EQ(lumo::FileDelete("OFFLINE"), 0);
}

// ---- Counting ----

struct CountCase {
  const char *name;
  std::string bytes;
  int32_t lines;
};

const CountCase kCountCases[] = {
    {"nothing", "", 0},
    {"one line", "1\n", 1},
    {"an open line", "1", 0},
    {"an open last line", "1\n2\n3", 2},
    {"blank lines", "\n\n\n", 3},
    {"carriage returns", "1\r\n2\r", 1},
    {"zero bytes",
     std::string("1\0\n\0"
                 "2\n",
                 6),
     2},
    {"1022 bytes", std::string(1021, 'x') + "\n", 1},
    {"1023 bytes", std::string(1022, 'x') + "\n", 1},
    {"1024 bytes", std::string(1023, 'x') + "\n", 1},
    {"2047 bytes", std::string(2046, 'x') + "\n", 1},
    {"2048 bytes", std::string(2047, 'x') + "\n", 1},
    {"2049 bytes", std::string(2048, 'x') + "\n", 1},
    {"4096 line feeds", std::string(4096, '\n'), 4096},
    {"100000 line feeds", std::string(100000, '\n'), 100000},
};

TEST_F(Count, CountsLineFeeds) {
  for (const CountCase &row : kCountCases) {
    folder.Write("J", row.bytes);
    EXPECT_EQ(lumo::CountLines("J"), row.lines) << row.name;
  }
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(Count, OfAFileThatCannotBeOpenedIsZero) {
  EXPECT_EQ(lumo::CountLines("J"), 0);
  EXPECT_EQ(lumo::CountLines(nullptr), 0);
}

// ---- Trimming ----

struct TrimCase {
  const char *name;
  int32_t count;
  std::string before;
  std::string after;
};

const TrimCase kTrimCases[] = {
    {"the oldest lines", 2, Lines(1, 5), Lines(3, 5)},
    {"no line", 0, Lines(1, 5), Lines(1, 5)},
    {"less than no line", -1, Lines(1, 5), Lines(1, 5)},
    {"every line", 5, Lines(1, 5), ""},
    {"more than there are", 6, Lines(1, 5), ""},
    {"far more than there are", INT32_MAX, Lines(1, 5), ""},
    {"before an open tail", 5, Lines(1, 5) + "6", "6"},
    {"an open line only", 1, "1", ""},
    {"nothing of nothing", 1, "", ""},
    {"blank lines", 2, "\n\n\n4\n", "\n4\n"},
    {"zero bytes", 1,
     std::string("1\0\n\0"
                 "2\n",
                 6),
     std::string("\0"
                 "2\n",
                 3)},
    {"up to the last byte of a chunk", 1, std::string(1023, 'x') + "\nrest\n", "rest\n"},
    {"up to the first byte of a chunk", 1, std::string(1024, 'x') + "\nrest\n", "rest\n"},
    {"up to the last byte of 2048", 1, std::string(2047, 'x') + "\nrest\n", "rest\n"},
    {"up to the first byte behind 2048", 1, std::string(2048, 'x') + "\nrest\n", "rest\n"},
    {"a line of many chunks", 1, std::string(100000, 'x') + "\nrest\n", "rest\n"},
    {"before a line of many chunks", 1, "1\n" + std::string(100000, 'x') + "\n",
     std::string(100000, 'x') + "\n"},
    {"of many lines", 60000, Lines(1, 100000), Lines(60001, 100000)},
};

TEST_F(Trim, DropsTheFirstLines) {
  for (const TrimCase &row : kTrimCases) {
    folder.Write("J", row.before);
    EXPECT_EQ(lumo::TrimOldestLines(row.count, "J"), 0) << row.name;
    EXPECT_TRUE(folder.Read("J") == row.after) << row.name;
    EXPECT_FALSE(folder.Exists("J.old")) << row.name;
  }
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(Trim, OfAMissingFileFails) {
  EXPECT_EQ(lumo::TrimOldestLines(1, "J"), -202);
  EXPECT_EQ(folder.Trace(), "ERROR: rename function failed with code 2 \"J\" => \"J.old\"\n");
}

TEST_F(Trim, FailsOverALeftoverCopyAndKeepsBoth) {
  folder.Write("J", Lines(1, 5));
  folder.Write("J.old", "left over");
  EXPECT_EQ(lumo::TrimOldestLines(1, "J"), -202);
  EXPECT_EQ(folder.Trace(), "ERROR: rename function failed with code 183 \"J\" => \"J.old\"\n");
  EXPECT_EQ(folder.Read("J"), Lines(1, 5));
  EXPECT_EQ(folder.Read("J.old"), "left over");
}

TEST_F(Trim, OfWhatIsNoFileLeavesItUnderTheCopysName) {
  MakeFolder("J");
  EXPECT_EQ(lumo::TrimOldestLines(1, "J"), -202);
  EXPECT_THAT(folder.Trace(), test::MatchesPattern("ERROR: CreateFile function failed with error [0-9]+\n"
                                                   "ERROR: old file is NULL\n"));
  EXPECT_TRUE(folder.Exists("J.old"));
  EXPECT_EQ(folder.Read("J"), "");
}

TEST_F(Trim, KeepsATooLongNameWholeAndFails) {
  const std::string name(257, 'n');
  EXPECT_EQ(lumo::TrimOldestLines(1, name.c_str()), -202);
  EXPECT_THAT(
      folder.Trace(),
      test::MatchesPattern("WARNING: too long name specified\n"
                           "ERROR: rename function failed with code [1-9][0-9]* \"n+\" => \"n+.old\"\n"));
  EXPECT_THAT(folder.Trace(), testing::HasSubstr(" \"" + name + "\" => \"" + name + ".old\"\n"));
}

TEST_F(Trim, OfANameThatFitsItsSuffixJustIsNotWarned) {
  const std::string name(256, 'n');
  EXPECT_EQ(lumo::TrimOldestLines(1, name.c_str()), -202);
  EXPECT_THAT(folder.Trace(), testing::Not(testing::HasSubstr("too long")));
}

TEST_F(Trim, OfANullNameFails) {
  EXPECT_EQ(lumo::TrimOldestLines(1, nullptr), -202);
}

// ---- Listing ----

struct Entry {
  uint32_t offset;
  uint32_t length;
  std::string text;
};

bool operator==(const Entry &a, const Entry &b) {
  return a.offset == b.offset && a.length == b.length && a.text == b.text;
}

void PrintTo(const Entry &entry, std::ostream *out) {
  *out << entry.offset << '+' << entry.length << ' ' << entry.text.substr(0, 50);
}

// Walks a list to its end. Before and after, only the current record's text is loaded.
std::vector<Entry> Walk(lumo::RecordEntry *first, lumo::RecordEntry *(*next)(lumo::RecordEntry *)) {
  std::vector<Entry> entries;
  for (lumo::RecordEntry *entry = first; entry != nullptr;) {
    entries.push_back({entry->offset, entry->length, entry->text != nullptr ? entry->text : "(not loaded)"});
    lumo::RecordEntry *following = next(entry);
    EXPECT_EQ(entry->text, nullptr);
    EXPECT_EQ(following, entry->next);
    entry = following;
  }
  lumo::FreeRecordList(first);
  return entries;
}

struct ListCase {
  const char *name;
  std::string bytes;
  std::vector<Entry> entries;
};

const ListCase kListCases[] = {
    {"nothing", "", {}},
    {"an open line", "open", {}},
    {"one line", "1\n", {{0, 1, "1"}}},
    {"lines in file order", "first\nsecond\n3\n", {{0, 5, "first"}, {6, 6, "second"}, {13, 1, "3"}}},
    {"an open last line", "1\n2\nopen", {{0, 1, "1"}, {2, 1, "2"}}},
    {"blank lines", "\n\n3\n", {{0, 0, ""}, {1, 0, ""}, {2, 1, "3"}}},
    {"a carriage return belongs to the record", "1\r\n", {{0, 2, "1\r"}}},
    {"a zero byte ends the text", std::string("ab\0cd\n2\n", 8), {{0, 5, "ab"}, {6, 1, "2"}}},
    {"a line up to the end of a chunk",
     std::string(2047, 'x') + "\n2\n",
     {{0, 2047, std::string(2047, 'x')}, {2048, 1, "2"}}},
    {"a line into the next chunk",
     std::string(2048, 'x') + "\n2\n",
     {{0, 2048, std::string(2048, 'x')}, {2049, 1, "2"}}},
    {"a line of many chunks",
     "1\n" + std::string(100000, 'x') + "\n3\n",
     {{0, 1, "1"}, {2, 100000, std::string(100000, 'x')}, {100003, 1, "3"}}},
    {"UTF-8", "{\"a\":\"Карта\"}\n", {{0, 18, "{\"a\":\"Карта\"}"}}},
};

TEST_F(List, HoldsOneEntryALine) {
  for (const ListCase &row : kListCases) {
    folder.Write("LOG", row.bytes);
    EXPECT_EQ(Walk(lumo::GetLogRecords(), lumo::NextLogRecord), row.entries) << row.name;
    folder.Write("OFFLINE", row.bytes);
    EXPECT_EQ(Walk(OfflineRecords(), lumo::NextOfflineRecord), row.entries) << row.name;
  }
}

TEST_F(List, OfAnEmptyFileIsNull) {
  folder.Write("LOG", "");
  EXPECT_EQ(lumo::GetLogRecords(), nullptr);
  EXPECT_EQ(folder.Trace(), "GetLogRecords()\n");
}

TEST_F(List, OfAMissingFileIsNull) {
  EXPECT_EQ(lumo::GetLogRecords(), nullptr);
  EXPECT_EQ(folder.Trace(), "GetLogRecords()\nERROR: CreateFile function failed with error 2\n");
  folder.ClearTrace();
  EXPECT_EQ(OfflineRecords(), nullptr);
  EXPECT_EQ(folder.Trace(), "GetOfflineRecords()\nERROR: CreateFile function failed with error 2\n");
}

TEST_F(List, LoadsTheFirstRecordOnly) {
  folder.Write("LOG", "first\nsecond\n");
  lumo::RecordEntry *first = lumo::GetLogRecords();
  ASSERT_NE(first, nullptr);
  EXPECT_STREQ(first->text, "first");
  ASSERT_NE(first->next, nullptr);
  EXPECT_EQ(first->next->text, nullptr);
  EXPECT_EQ(first->next->next, nullptr);
  EXPECT_THAT(folder.Trace(), test::MatchesPattern("GetLogRecords\\(\\)\n"
                                                   "ERROR: SetFilePointer function failed with error [0-9]+\n"
                                                   "Record data: first\n"));
  lumo::FreeRecordList(first);
}

TEST_F(List, LoadsARecordOnce) {
  folder.Write("LOG", "first\nsecond\n");
  lumo::RecordEntry *first = lumo::GetLogRecords();
  const char *text = lumo::NextLogRecord(first)->text;
  folder.Remove("LOG");
  EXPECT_EQ(lumo::NextLogRecord(first)->text, text);
  EXPECT_STREQ(text, "second");
  lumo::FreeRecordList(first);
}

TEST_F(List, TracesEachRecordItLoads) {
  folder.Write("OFFLINE", "first\nsecond\n");
  lumo::RecordEntry *first = OfflineRecords();
  folder.ClearTrace();
  lumo::RecordEntry *second = lumo::NextOfflineRecord(first);
  EXPECT_THAT(folder.Trace(), test::MatchesPattern("ERROR: SetFilePointer function failed with error [0-9]+\n"
                                                   "Record data: second\n"));
  folder.ClearTrace();
  EXPECT_EQ(lumo::NextOfflineRecord(second), nullptr);
  EXPECT_EQ(folder.Trace(), "");
  lumo::FreeRecordList(first);
  EXPECT_EQ(folder.Trace(), "");
}

// The one place where a seek counts as a success.
TEST_F(List, TracesNoSeekLineForARecordAtOffset1) {
  folder.Write("LOG", "\nsecond\n");
  lumo::RecordEntry *first = lumo::GetLogRecords();
  folder.ClearTrace();
  lumo::NextLogRecord(first);
  EXPECT_EQ(folder.Trace(), "Record data: second\n");
  lumo::FreeRecordList(first);
}

TEST_F(List, DoesNotChangeWhenRecordsAreAppended) {
  lumo::SetLogSize(300);
  folder.Write("LOG", "first\nsecond\n");
  lumo::RecordEntry *first = lumo::GetLogRecords();
  EXPECT_EQ(lumo::AppendLogRecord("third"), 0);
  const std::vector<Entry> expected = {{0, 5, "first"}, {6, 6, "second"}};
  EXPECT_EQ(Walk(first, lumo::NextLogRecord), expected);
}

TEST_F(List, MayCoexistWithAnother) {
  folder.Write("LOG", "first\nsecond\n");
  lumo::RecordEntry *one = lumo::GetLogRecords();
  lumo::RecordEntry *two = lumo::GetLogRecords();
  const std::vector<Entry> expected = {{0, 5, "first"}, {6, 6, "second"}};
  EXPECT_EQ(Walk(one, lumo::NextLogRecord), expected);
  EXPECT_EQ(Walk(two, lumo::NextLogRecord), expected);
}

TEST_F(List, LoadsNoTextOnceTheFileIsGone) {
  folder.Write("LOG", "first\nsecond\nthird\n");
  lumo::RecordEntry *first = lumo::GetLogRecords();
  folder.Remove("LOG");
  folder.ClearTrace();
  lumo::RecordEntry *second = lumo::NextLogRecord(first);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->text, nullptr);
  EXPECT_EQ(folder.Trace(),
            "ERROR: CreateFile function failed with error 2\nERROR: Can't open log file [LOG]\n");
  EXPECT_NE(lumo::NextLogRecord(second), nullptr);
  lumo::FreeRecordList(first);
}

TEST_F(List, NamesTheFileThatCannotBeOpened) {
  folder.Write("OFFLINE", "first\nsecond\n");
  lumo::RecordEntry *first = OfflineRecords();
  folder.Remove("OFFLINE");
  lumo::NextOfflineRecord(first);
  EXPECT_THAT(folder.Trace(), testing::EndsWith("ERROR: Can't open log file [OFFLINE]\n"));
  lumo::FreeRecordList(first);
}

TEST_F(List, HasNoTextOfARecordThatTheFileNoLongerHolds) {
  folder.Write("LOG", "first\nsecond\nthird\n");
  lumo::RecordEntry *first = lumo::GetLogRecords();
  folder.Write("LOG", "first\nsec");
  folder.ClearTrace();
  lumo::RecordEntry *second = lumo::NextLogRecord(first);
  EXPECT_EQ(second->text, nullptr);
  EXPECT_THAT(folder.Trace(), testing::Not(testing::HasSubstr("Record data")));
  EXPECT_EQ(lumo::NextLogRecord(second)->text, nullptr);
  lumo::FreeRecordList(first);
}

TEST_F(List, OfAMissingJournalIsWhole) {
  EXPECT_EQ(OfflineRecords(), nullptr);
}

TEST_F(List, OfAJournalThatCannotBeOpenedIsNot) {
  MakeFolder("OFFLINE");
  bool whole = true;
  EXPECT_EQ(lumo::GetOfflineRecords(&whole), nullptr);
  EXPECT_FALSE(whole);
}

TEST_F(List, MayBeFreedAnywhereAndWhenThereIsNone) {
  folder.Write("LOG", "first\nsecond\nthird\n");
  lumo::RecordEntry *first = lumo::GetLogRecords();
  lumo::NextLogRecord(first);
  folder.ClearTrace();
  lumo::FreeRecordList(first);
  lumo::FreeRecordList(nullptr);
  EXPECT_EQ(lumo::NextLogRecord(nullptr), nullptr);
  EXPECT_EQ(lumo::NextOfflineRecord(nullptr), nullptr);
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(List, LeavesNoFileOpen) {
  folder.Write("LOG", "first\nsecond\n");
  lumo::RecordEntry *first = lumo::GetLogRecords();
  lumo::NextLogRecord(first);
  EXPECT_EQ(lumo::FileDelete("LOG"), 0);
  lumo::FreeRecordList(first);
}

// ---- The commit of a replay ----

TEST_F(Commit, DoesNothingWithoutARebuiltJournal) {
  folder.Write("OFFLINE", "old\n");
  EXPECT_EQ(lumo::CommitOfflineTmp(), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), "old\n");
}

TEST_F(Commit, PutsTheRebuiltJournalInThePlaceOfTheOld) {
  folder.Write("OFFLINE", "sent\nunsent\n");
  folder.Write("OFFLINE_TMP", "unsent\n");
  EXPECT_EQ(lumo::CommitOfflineTmp(), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), "unsent\n");
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
}

TEST_F(Commit, GivesTheErrorNumberWhenTheOldJournalCannotBeDeleted) {
  folder.Write("OFFLINE_TMP", "unsent\n");
  EXPECT_EQ(lumo::CommitOfflineTmp(), 2);
  EXPECT_FALSE(folder.Exists("OFFLINE"));
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "unsent\n");
}

TEST_F(Commit, GivesTheErrorNumberWhenTheRebuiltJournalCannotBeMoved) {
  folder.Write("OFFLINE", "old\n");
  folder.Write("OFFLINE_TMP", "new\n");
  lumo::HANDLE open = lumo::FileOpen("OFFLINE_TMP", "r");
  EXPECT_EQ(lumo::CommitOfflineTmp(), 32);
  lumo::FileClose(open);
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "new\n");
  EXPECT_EQ(lumo::AppendOfflineRecord("newer"), 0);
  EXPECT_EQ(folder.Read("OFFLINE"), "new\nnewer\n");
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
}

TEST_F(Commit, ThatSomebodyElseFinishedIsNotMadeAgain) {
  folder.Write("OFFLINE", "old\n");
  folder.Write("OFFLINE_TMP", "new\n");
  lumo::HANDLE open = lumo::FileOpen("OFFLINE_TMP", "r");
  EXPECT_EQ(lumo::CommitOfflineTmp(), 32);
  lumo::FileClose(open);
  folder.Write("OFFLINE", "somebody else's\n");
  EXPECT_EQ(lumo::CountOfflineRecords(), 1);
  folder.Remove("OFFLINE");
  folder.Remove("OFFLINE_TMP");
  EXPECT_EQ(lumo::CountOfflineRecords(), 0);
  folder.Write("OFFLINE_TMP", "of another replay\n");
  EXPECT_EQ(lumo::CountOfflineRecords(), 0);
  EXPECT_FALSE(folder.Exists("OFFLINE"));
}

TEST_F(Commit, IsFinishedBeforeTheRecordsAreCounted) {
  folder.Write("OFFLINE", "old\n");
  folder.Write("OFFLINE_TMP", "new\nnewer\n");
  lumo::HANDLE open = lumo::FileOpen("OFFLINE_TMP", "r");
  EXPECT_EQ(lumo::CommitOfflineTmp(), 32);
  EXPECT_EQ(lumo::CountOfflineRecords(), 0);
  lumo::FileClose(open);
  EXPECT_EQ(lumo::CountOfflineRecords(), 2);
  open = lumo::FileOpen("OFFLINE", "r");
  folder.Write("OFFLINE_TMP", "of another replay\n");
  EXPECT_EQ(lumo::CommitOfflineTmp(), 32);
  lumo::FileClose(open);
  folder.Remove("OFFLINE");
  EXPECT_EQ(lumo::CountOfflineRecords(), 0);
  EXPECT_FALSE(folder.Exists("OFFLINE"));
}

}  // namespace
