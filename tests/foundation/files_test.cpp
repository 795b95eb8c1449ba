// foundation/files_test.cpp: the files of the library: opens, their modes, and how failures are told.
#include "foundation/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/folder.h"
#include "support/pattern.h"

namespace {

constexpr char kOpenError2[] = "ERROR: CreateFile function failed with error 2\n";

constexpr uint32_t kBegin = 0;
constexpr uint32_t kCurrent = 1;
constexpr uint32_t kEnd = 2;

struct Files : testing::Test {
  void MakeFolder(const std::string &name) const {
    std::filesystem::create_directory(std::filesystem::u8path(folder.path() + name));
  }

  test::Folder folder;
};

struct ModeCase {
  const char *mode;
  bool makes;      // a file that does not exist
  bool truncates;  // one that does
  bool reads;
  bool writes;
};

const ModeCase kModeCases[] = {
    {"w+", true, true, true, true},     {"w", true, true, false, true},    {"r+", false, false, true, true},
    {"r", false, false, true, false},   {"a+", true, false, false, true},  {"a", true, false, false, true},
    {"wb", true, true, false, true},    {"rb", false, false, true, false}, {"ab", true, false, false, true},
    {"w+b", true, true, true, true},    {"r+b", false, false, true, true}, {"a+b", true, false, false, true},
    {"wb+", true, true, false, true},  // the plus counts as the second character only
    {"rb+", false, false, true, false}, {"rw", false, false, true, false},
};

TEST_F(Files, OpenByTheFirstCharactersOfTheMode) {
  for (const ModeCase &row : kModeCases) {
    SCOPED_TRACE(row.mode);
    folder.Remove("F");
    lumo::HANDLE file = lumo::FileOpen("F", row.mode);
    EXPECT_EQ(lumo::FileIsValid(file), row.makes);
    EXPECT_EQ(folder.Exists("F"), row.makes);
    if (lumo::FileIsValid(file)) lumo::FileClose(file);

    folder.Write("F", "old text");
    file = lumo::FileOpen("F", row.mode);
    ASSERT_TRUE(lumo::FileIsValid(file));
    char byte = 0;
    EXPECT_EQ(lumo::FileRead(&byte, 1, 1, file), row.reads && !row.truncates ? 1U : 0U);
    folder.ClearTrace();
    lumo::FileRead(&byte, 1, 1, file);
    EXPECT_EQ(folder.Trace().empty(), row.reads) << folder.Trace();
    folder.ClearTrace();
    EXPECT_EQ(lumo::FileWrite("N", 1, 1, file), row.writes ? 1U : 0U);
    EXPECT_EQ(folder.Trace().empty(), row.writes) << folder.Trace();
    EXPECT_EQ(lumo::FileClose(file), 1);

    // Neither "a" form moves to the end. "r+" has read two bytes before it writes.
    const std::string mode = row.mode;
    EXPECT_EQ(folder.Read("F"), row.truncates         ? "N"
                                : !row.writes         ? "old text"
                                : mode.front() == 'r' ? "olN text"
                                                      : "Nld text");
  }
}

TEST_F(Files, OpenNothingWithAnUnknownMode) {
  folder.Write("F", "text");
  const char *const kModes[] = {"q", "", "+", "R", " r", "b"};
  for (const char *mode : kModes) {
    folder.ClearTrace();
    EXPECT_EQ(lumo::FileOpen("F", mode), INVALID_HANDLE_VALUE) << mode;
    EXPECT_THAT(folder.Trace(), test::MatchesPattern("ERROR: CreateFile function failed with error [0-9]+\n"))
        << mode;
  }
  EXPECT_EQ(lumo::FileOpen("F", nullptr), INVALID_HANDLE_VALUE);
  EXPECT_EQ(folder.Read("F"), "text");
}

TEST_F(Files, OpenOfAnUnknownModeTracesTheLatestErrorNumber) {
  EXPECT_EQ(lumo::FileDelete("absent"), 2);
  lumo::FileOpen("F", "q");
  EXPECT_EQ(folder.Trace(), kOpenError2);
}

TEST_F(Files, OpenOfAMissingFileTracesTheErrorNumber) {
  EXPECT_EQ(lumo::FileOpen("absent", "rb"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(folder.Trace(), kOpenError2);
}

TEST_F(Files, OpenInAMissingFolderTracesTheErrorNumber) {
  EXPECT_EQ(lumo::FileOpen("absent/F", "w"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(folder.Trace(), "ERROR: CreateFile function failed with error 3\n");
}

TEST_F(Files, OpenOfNamesThatMakeNoPathFailsWithATracedError) {
  const std::string too_long(300, 'n');
  const std::string far_too_long(100000, 'n');
  const char *const kNames[] = {nullptr, "", too_long.c_str(), far_too_long.c_str()};
  for (const char *name : kNames) {
    folder.ClearTrace();
    EXPECT_EQ(lumo::FileOpen(name, "w"), INVALID_HANDLE_VALUE);
    EXPECT_THAT(folder.Trace(),
                test::MatchesPattern("ERROR: CreateFile function failed with error [1-9][0-9]*\n"));
  }
}

TEST_F(Files, ANullNameIsAMissingFile) {
  EXPECT_EQ(lumo::FileOpen(nullptr, "r"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(folder.Trace(), "ERROR: CreateFile function failed with error 2\n");
}

TEST_F(Files, OpenOfAFolderFails) {
  MakeFolder("SUB");
  EXPECT_EQ(lumo::FileOpen("SUB", "r"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(lumo::FileOpen("SUB", "a"), INVALID_HANDLE_VALUE);
}

TEST_F(Files, OpenExcludesEveryOtherOpen) {
  folder.Write("F", "text");
  lumo::HANDLE file = lumo::FileOpen("F", "r");
  ASSERT_TRUE(lumo::FileIsValid(file));
  for (const char *mode : {"r", "r+", "w", "w+", "a", "a+"}) {
    folder.ClearTrace();
    EXPECT_EQ(lumo::FileOpen("F", mode), INVALID_HANDLE_VALUE) << mode;
    EXPECT_EQ(folder.Trace(), "ERROR: CreateFile function failed with error 32\n") << mode;
  }
  lumo::FileClose(file);
  EXPECT_EQ(folder.Read("F"), "text");
  file = lumo::FileOpen("F", "r");
  EXPECT_TRUE(lumo::FileIsValid(file));
  lumo::FileClose(file);
}

TEST_F(Files, OpenThatSucceedsIsNotTraced) {
  lumo::FileClose(lumo::FileOpen("F", "w"));
  lumo::FileClose(lumo::FileOpen("F", "w"));  // truncating sets the system's error number, and is no error
  lumo::FileClose(lumo::FileOpen("F", "a"));
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(Files, NamesAreUtf8AndRelative) {
  MakeFolder("Чеки");
  lumo::FileClose(lumo::FileOpen("Чеки/счёт.jsn", "w"));
  EXPECT_TRUE(folder.Exists("Чеки/счёт.jsn"));
  lumo::FileClose(lumo::FileOpen("/ROOT", "w"));
  EXPECT_TRUE(folder.Exists("ROOT"));
}

TEST_F(Files, NamesMayHaveBackslashes) {
  MakeFolder("SUB");
  lumo::FileClose(lumo::FileOpen("SUB\\F", "w"));
  EXPECT_TRUE(folder.Exists("SUB/F"));
  EXPECT_TRUE(lumo::FileExists("SUB\\F"));
}

TEST_F(Files, OnlyTheInvalidHandleIsInvalid) {
  EXPECT_FALSE(lumo::FileIsValid(INVALID_HANDLE_VALUE));
  EXPECT_TRUE(lumo::FileIsValid(nullptr));
}

TEST_F(Files, TransferSizeTimesCountBytes) {
  lumo::HANDLE file = lumo::FileOpen("F", "w");
  EXPECT_EQ(lumo::FileWrite("abcdefghij", 3, 2, file), 6U);
  EXPECT_EQ(lumo::FileWrite("", 1, 0, file), 0U);
  lumo::FileClose(file);
  EXPECT_EQ(folder.Read("F"), "abcdef");

  file = lumo::FileOpen("F", "r");
  char buffer[16] = {};
  EXPECT_EQ(lumo::FileRead(buffer, 2, 2, file), 4U);
  EXPECT_STREQ(buffer, "abcd");
  EXPECT_EQ(lumo::FileRead(buffer, 1, 16, file), 2U);
  EXPECT_STREQ(buffer, "efcd");
  EXPECT_EQ(lumo::FileRead(buffer, 1, 16, file), 0U);
  lumo::FileClose(file);
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(Files, TransferThatFailsIsTracedAndGivesZero) {
  char byte = 0;
  EXPECT_EQ(lumo::FileRead(&byte, 1, 1, INVALID_HANDLE_VALUE), 0U);
  EXPECT_EQ(folder.Trace(), "ERROR: ReadFile function failed with error 6\n");
  folder.ClearTrace();
  EXPECT_EQ(lumo::FileWrite(&byte, 1, 1, INVALID_HANDLE_VALUE), 0U);
  EXPECT_EQ(folder.Trace(), "ERROR: WriteFile function failed with error 6\n");
}

// The invalid handle itself means the calling process on some systems.
TEST_F(Files, CloseOfAClosedHandleFails) {
  folder.Write("F", "text");
  const lumo::HANDLE file = lumo::FileOpen("F", "r");
  EXPECT_EQ(lumo::FileClose(file), 1);
  EXPECT_EQ(lumo::FileClose(file), 0);
}

// Note: what every seek leaves behind.
TEST_F(Files, SeekToTheStartReturns1AndLeavesAnErrorLine) {
  folder.Write("F", "text");
  lumo::HANDLE file = lumo::FileOpen("F", "r");
  EXPECT_EQ(lumo::FileSeek(file, 0, kBegin), 1);
  lumo::FileClose(file);
  EXPECT_THAT(folder.Trace(),
              test::MatchesPattern("ERROR: SetFilePointer function failed with error [0-9]+\n"));
}

TEST_F(Files, SeekToPosition1Returns0AndIsNotTraced) {
  folder.Write("F", "text");
  lumo::HANDLE file = lumo::FileOpen("F", "r");
  EXPECT_EQ(lumo::FileSeek(file, 1, kBegin), 0);
  EXPECT_EQ(folder.Trace(), "");
  EXPECT_EQ(lumo::FileSeek(file, 2, kCurrent), 1);
  EXPECT_EQ(lumo::FileSeek(file, -2, kCurrent), 0);
  EXPECT_EQ(lumo::FileSeek(file, -3, kEnd), 0);
  lumo::FileClose(file);
}

TEST_F(Files, SeekMovesAllTheSame) {
  folder.Write("F", "0123456789");
  lumo::HANDLE file = lumo::FileOpen("F", "r+");
  char byte = 0;
  lumo::FileSeek(file, 4, kBegin);
  lumo::FileRead(&byte, 1, 1, file);
  EXPECT_EQ(byte, '4');
  lumo::FileSeek(file, 0, kEnd);
  lumo::FileWrite("!", 1, 1, file);
  lumo::FileClose(file);
  EXPECT_EQ(folder.Read("F"), "0123456789!");
}

TEST_F(Files, SeekThatFailsReturns1AndLeavesAnErrorLine) {
  folder.Write("F", "text");
  lumo::HANDLE file = lumo::FileOpen("F", "r");
  EXPECT_EQ(lumo::FileSeek(file, -1, kBegin), 1);
  EXPECT_EQ(folder.Trace(), "ERROR: SetFilePointer function failed with error 131\n");
  lumo::FileClose(file);
}

TEST_F(Files, DeleteRemovesTheFile) {
  folder.Write("F", "text");
  EXPECT_EQ(lumo::FileDelete("F"), 0);
  EXPECT_FALSE(folder.Exists("F"));
}

TEST_F(Files, DeleteOfAMissingFileGivesTheErrorNumber) {
  EXPECT_EQ(lumo::FileDelete("absent"), 2);
}

TEST_F(Files, MoveRenames) {
  folder.Write("FROM", "text");
  EXPECT_EQ(lumo::FileMove("FROM", "TO"), 0);
  EXPECT_FALSE(folder.Exists("FROM"));
  EXPECT_EQ(folder.Read("TO"), "text");
}

TEST_F(Files, MoveReplacesNothing) {
  folder.Write("FROM", "new");
  folder.Write("TO", "old");
  EXPECT_EQ(lumo::FileMove("FROM", "TO"), 183);
  EXPECT_EQ(folder.Read("FROM"), "new");
  EXPECT_EQ(folder.Read("TO"), "old");
}

TEST_F(Files, MoveOfAMissingFileGivesTheErrorNumber) {
  EXPECT_EQ(lumo::FileMove("absent", "TO"), 2);
}

TEST_F(Files, CopyMakesASecondFile) {
  folder.Write("FROM", "text");
  EXPECT_EQ(lumo::FileCopy("FROM", "TO"), 0);
  EXPECT_EQ(folder.Read("FROM"), "text");
  EXPECT_EQ(folder.Read("TO"), "text");
}

TEST_F(Files, CopyReplacesAnExistingFile) {
  folder.Write("FROM", "new");
  folder.Write("TO", "an older and longer text");
  EXPECT_EQ(lumo::FileCopy("FROM", "TO"), 0);
  EXPECT_EQ(folder.Read("TO"), "new");
}

TEST_F(Files, CopyOfAMissingFileGivesTheErrorNumber) {
  EXPECT_EQ(lumo::FileCopy("absent", "TO"), 2);
  EXPECT_FALSE(folder.Exists("TO"));
}

TEST_F(Files, ExistsForFilesAndFoldersOnly) {
  folder.Write("F", "");
  MakeFolder("SUB");
  EXPECT_TRUE(lumo::FileExists("F"));
  EXPECT_TRUE(lumo::FileExists("SUB"));
  EXPECT_FALSE(lumo::FileExists("absent"));
  EXPECT_TRUE(lumo::FileIsPlain("F"));
  EXPECT_FALSE(lumo::FileIsPlain("SUB"));
  EXPECT_FALSE(lumo::FileIsPlain("absent"));
}

TEST_F(Files, NamesThatMakeNoPathExistNowhere) {
  const std::string too_long(300, 'n');
  for (const char *name : {static_cast<const char *>(nullptr), too_long.c_str()}) {
    folder.Write("F", "text");
    EXPECT_FALSE(lumo::FileExists(name));
    EXPECT_NE(lumo::FileDelete(name), 0);
    EXPECT_NE(lumo::FileMove("F", name), 0);
    EXPECT_NE(lumo::FileMove(name, "F2"), 0);
    EXPECT_NE(lumo::FileCopy("F", name), 0);
    EXPECT_NE(lumo::FileCopy(name, "F2"), 0);
    EXPECT_EQ(folder.Read("F"), "text");
    EXPECT_FALSE(folder.Exists("F2"));
  }
}

TEST_F(Files, ByNameHelpersTraceNothing) {
  lumo::FileDelete("absent");
  lumo::FileMove("absent", "TO");
  lumo::FileCopy("absent", "TO");
  lumo::FileExists("absent");
  EXPECT_EQ(folder.Trace(), "");
}

}  // namespace
