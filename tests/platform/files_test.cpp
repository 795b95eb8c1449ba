// platform/files_test.cpp: the calls on files, as every host answers them.
#include <filesystem>
#include <string>

#include "platform/open.h"
#include "platform/own_folder.h"
#include "platform/platform.h"
#include "support/wine.h"

namespace lumo {
namespace {

using Wide = std::basic_string<WCHAR>;
namespace fs = std::filesystem;
using test::Open;

constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kCreations[] = {OPEN_EXISTING, OPEN_ALWAYS, CREATE_ALWAYS};

std::string ReadSome(HANDLE file, DWORD count) {
  std::string bytes(count, '?');
  DWORD read = count + 1;
  EXPECT_TRUE(ReadFile(file, bytes.data(), count, &read, nullptr));
  EXPECT_LE(read, count);
  bytes.resize(read);
  return bytes;
}

void WriteSome(HANDLE file, const std::string &bytes) {
  DWORD written = 0;
  EXPECT_TRUE(WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
  EXPECT_EQ(written, bytes.size());
}

BOOL Append(const WCHAR *name, const std::string &text) {
  FileName converted;
  MakeFileName(name, &converted);
  return AppendToFile(&converted, text.data(), text.size());
}

class Files : public test::OwnFolder {};

struct Refusal {
  const char *what;
  const WCHAR *name;
  DWORD error;
};

constexpr Refusal kMissing[] = {
    {"a missing file", LUMO_WIDE("none"), 2},
    {"a missing file in a folder that is there", LUMO_WIDE("folder\\none"), 2},
    {"a missing folder", LUMO_WIDE("nowhere\\none"), 3},
    {"a missing folder in a folder that is there", LUMO_WIDE("folder\\nowhere\\none"), 3},
    {"a file where a folder should be", LUMO_WIDE("file\\none"), 3},
    {"an empty name", LUMO_WIDE(""), 3},
};

void PrintTo(const Refusal &row, std::ostream *out) {
  *out << row.what;
}

class MissingNames : public Files, public testing::WithParamInterface<Refusal> {
 protected:
  MissingNames() {
    fs::create_directory("folder");
    Write("file", "bytes");
  }
};

TEST_P(MissingNames, CannotBeOpened) {
  EXPECT_EQ(Open(GetParam().name, GENERIC_READ, OPEN_EXISTING), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), GetParam().error) << GetParam().what;
}

TEST_P(MissingNames, CannotBeDeleted) {
  EXPECT_FALSE(DeleteFileW(GetParam().name));
  EXPECT_EQ(GetLastError(), GetParam().error) << GetParam().what;
}

TEST_P(MissingNames, CannotBeMoved) {
  EXPECT_FALSE(MoveFileW(GetParam().name, LUMO_WIDE("new")));
  EXPECT_EQ(GetLastError(), GetParam().error) << GetParam().what;
  EXPECT_FALSE(fs::exists("new"));
}

TEST_P(MissingNames, CannotBeCopied) {
  EXPECT_FALSE(CopyFileW(GetParam().name, LUMO_WIDE("new"), 0));
  EXPECT_EQ(GetLastError(), GetParam().error) << GetParam().what;
  EXPECT_FALSE(fs::exists("new"));
}

TEST_P(MissingNames, HaveNoAttributes) {
  EXPECT_EQ(GetFileAttributesW(GetParam().name), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), GetParam().error) << GetParam().what;
}

INSTANTIATE_TEST_SUITE_P(, MissingNames, testing::ValuesIn(kMissing),
                         [](const auto &row) { return "row" + std::to_string(row.index); });

TEST_F(Files, NothingIsMadeInAMissingFolder) {
  EXPECT_EQ(Open(LUMO_WIDE("nowhere\\new"), GENERIC_WRITE, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 3u);
  EXPECT_EQ(Open(LUMO_WIDE("nowhere\\new"), GENERIC_WRITE, OPEN_ALWAYS), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 3u);
  EXPECT_FALSE(Append(LUMO_WIDE("nowhere\\new"), "x"));
  Write("file", "bytes");
  EXPECT_FALSE(MoveFileW(LUMO_WIDE("file"), LUMO_WIDE("nowhere\\new")));
  EXPECT_EQ(GetLastError(), 3u);
  EXPECT_FALSE(CopyFileW(LUMO_WIDE("file"), LUMO_WIDE("nowhere\\new"), 0));
  EXPECT_EQ(GetLastError(), 3u);
  EXPECT_EQ(Read("file"), "bytes");
}

TEST_F(Files, AFolderCannotBeOpened) {
  fs::create_directory("folder");
  for (const DWORD access : {static_cast<DWORD>(GENERIC_READ), static_cast<DWORD>(GENERIC_WRITE), kBoth}) {
    for (const DWORD creation : kCreations) {
      EXPECT_EQ(Open(LUMO_WIDE("folder"), access, creation), INVALID_HANDLE_VALUE);
      EXPECT_EQ(GetLastError(), 5u) << access << " " << creation;
    }
  }
  EXPECT_FALSE(Append(LUMO_WIDE("folder"), "x"));
}

TEST_F(Files, AFolderCannotBeDeletedOrCopied) {
  fs::create_directory("folder");
  EXPECT_FALSE(DeleteFileW(LUMO_WIDE("folder")));
  EXPECT_EQ(GetLastError(), 5u);
  EXPECT_FALSE(CopyFileW(LUMO_WIDE("folder"), LUMO_WIDE("new"), 0));
  EXPECT_EQ(GetLastError(), 5u);
  EXPECT_TRUE(fs::is_directory("folder"));
  EXPECT_FALSE(fs::exists("new"));
}

TEST_F(Files, OpeningWhatIsThereKeepsItAndLeavesNoError) {
  Write("file", "bytes");
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_READ, OPEN_EXISTING);
  EXPECT_EQ(GetLastError(), 0u);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_EQ(ReadSome(file, 100), "bytes");
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(Files, CreateAlwaysMakesANewFileWithoutAnError) {
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_WRITE, CREATE_ALWAYS);
  EXPECT_EQ(GetLastError(), 0u);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  WriteSome(file, "new");
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(Read("file"), "new");
}

TEST_F(Files, CreateAlwaysEmptiesAnOldFileAndSaysThatItWasThere) {
  Write("file", "older bytes");
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_WRITE, CREATE_ALWAYS);
  EXPECT_EQ(GetLastError(), 183u);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  WriteSome(file, "new");
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(Read("file"), "new");
}

TEST_F(Files, OpenAlwaysMakesANewFileWithoutAnError) {
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_WRITE, OPEN_ALWAYS);
  EXPECT_EQ(GetLastError(), 0u);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(Read("file"), "");
}

TEST_F(Files, OpenAlwaysKeepsAnOldFileStandsAtItsStartAndSaysThatItWasThere) {
  Write("file", "older bytes");
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_WRITE, OPEN_ALWAYS);
  EXPECT_EQ(GetLastError(), 183u);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  WriteSome(file, "newer");
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(Read("file"), "newer bytes");
}

TEST_F(Files, AnOpenFileExcludesEveryOtherOpen) {
  Write("file", "bytes");
  for (const DWORD held : {static_cast<DWORD>(GENERIC_READ), static_cast<DWORD>(GENERIC_WRITE), kBoth}) {
    const HANDLE first = Open(LUMO_WIDE("file"), held, OPEN_EXISTING);
    ASSERT_NE(first, INVALID_HANDLE_VALUE);
    for (const DWORD access : {static_cast<DWORD>(GENERIC_READ), static_cast<DWORD>(GENERIC_WRITE), kBoth}) {
      for (const DWORD creation : kCreations) {
        EXPECT_EQ(Open(LUMO_WIDE("file"), access, creation), INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), 32u) << held << " " << access << " " << creation;
      }
    }
    EXPECT_TRUE(CloseHandle(first));
    EXPECT_EQ(Read("file"), "bytes");
  }
}

TEST_F(Files, AClosedFileMayBeOpenedAgain) {
  for (int i = 0; i < 3; ++i) {
    const HANDLE file = Open(LUMO_WIDE("file"), kBoth, OPEN_ALWAYS);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(CloseHandle(file));
  }
}

TEST_F(Files, AnOpenFileCannotBeDeletedMovedOrCopied) {
  Write("file", "bytes");
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_READ, OPEN_EXISTING);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_FALSE(DeleteFileW(LUMO_WIDE("file")));
  EXPECT_EQ(GetLastError(), 32u);
  EXPECT_FALSE(MoveFileW(LUMO_WIDE("file"), LUMO_WIDE("new")));
  EXPECT_EQ(GetLastError(), 32u);
  EXPECT_FALSE(CopyFileW(LUMO_WIDE("file"), LUMO_WIDE("new"), 0));
  EXPECT_EQ(GetLastError(), 32u);
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(Read("file"), "bytes");
  EXPECT_FALSE(fs::exists("new"));
}

TEST_F(Files, AnOpenFileCannotBeCopiedOver) {
  Write("file", "bytes");
  Write("source", "other");
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_READ, OPEN_EXISTING);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_FALSE(CopyFileW(LUMO_WIDE("source"), LUMO_WIDE("file"), 0));
  EXPECT_EQ(GetLastError(), 32u);
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(Read("file"), "bytes");
}

TEST_F(Files, AttributesOfAnOpenFileCanBeAsked) {
  Write("file", "bytes");
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_READ, OPEN_EXISTING);
  EXPECT_NE(GetFileAttributesW(LUMO_WIDE("file")), INVALID_FILE_ATTRIBUTES);
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(Files, ReadingTakesWhatIsThereAndNothingAtTheEndIsNoFailure) {
  Write("file", "0123456789");
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_READ, OPEN_EXISTING);
  EXPECT_EQ(ReadSome(file, 4), "0123");
  EXPECT_EQ(ReadSome(file, 0), "");
  EXPECT_EQ(ReadSome(file, 100), "456789");
  EXPECT_EQ(ReadSome(file, 100), "");
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(Files, WritingThroughAReadHandleIsRefused) {
  Write("file", "bytes");
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_READ, OPEN_EXISTING);
  DWORD written = 9;
  EXPECT_FALSE(WriteFile(file, "new", 3, &written, nullptr));
  EXPECT_EQ(GetLastError(), 5u);
  EXPECT_EQ(written, 0u);
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(Read("file"), "bytes");
}

TEST_F(Files, ReadingThroughAWriteHandleIsRefused) {
  Write("file", "bytes");
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_WRITE, OPEN_EXISTING);
  char buffer[8];
  DWORD read = 9;
  EXPECT_FALSE(ReadFile(file, buffer, sizeof buffer, &read, nullptr));
  EXPECT_EQ(GetLastError(), 5u);
  EXPECT_EQ(read, 0u);
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(Files, BytesPassUnchanged) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
  bytes += "\r\n\n\x1a";
  const HANDLE file = Open(LUMO_WIDE("file"), kBoth, CREATE_ALWAYS);
  WriteSome(file, bytes);
  EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_BEGIN), 0u);
  EXPECT_EQ(ReadSome(file, 1000), bytes);
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(Read("file"), bytes);
}

TEST_F(Files, AnInvalidHandleIsRefusedByEveryCall) {
  char buffer[4];
  DWORD count = 0;
  EXPECT_FALSE(ReadFile(INVALID_HANDLE_VALUE, buffer, 4, &count, nullptr));
  EXPECT_EQ(GetLastError(), 6u);
  EXPECT_FALSE(WriteFile(INVALID_HANDLE_VALUE, buffer, 4, &count, nullptr));
  EXPECT_EQ(GetLastError(), 6u);
  EXPECT_EQ(SetFilePointer(INVALID_HANDLE_VALUE, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), 6u);
}

struct Seek {
  LONG start, offset;
  DWORD origin, position;
};

TEST_F(Files, SeekingGivesTheNewPosition) {
  Write("file", "0123456789");
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_READ, OPEN_EXISTING);
  constexpr Seek kSeeks[] = {{0, 0, FILE_BEGIN, 0},   {5, 1, FILE_BEGIN, 1},
                             {3, 4, FILE_CURRENT, 7}, {3, -3, FILE_CURRENT, 0},
                             {0, 0, FILE_END, 10},    {0, -4, FILE_END, 6},
                             {0, 20, FILE_BEGIN, 20}, {0, 0x7FFFFFFF, FILE_BEGIN, 0x7FFFFFFF}};
  for (const Seek &row : kSeeks) {
    SetFilePointer(file, row.start, nullptr, FILE_BEGIN);
    EXPECT_EQ(SetFilePointer(file, row.offset, nullptr, row.origin), row.position)
        << row.start << " " << row.offset;
  }
  SetFilePointer(file, -4, nullptr, FILE_END);
  EXPECT_EQ(ReadSome(file, 100), "6789");
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(Files, TheEndOfAFileIsWhereItIsSet) {
  const HANDLE file = Open(LUMO_WIDE("f"), kBoth, CREATE_ALWAYS);
  WriteSome(file, "0123456789");
  EXPECT_EQ(SetFilePointer(file, 4, nullptr, FILE_BEGIN), 4U);
  EXPECT_TRUE(SetEndOfFile(file));
  EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_END), 4U);
  EXPECT_EQ(SetFilePointer(file, 6, nullptr, FILE_BEGIN), 6U);
  EXPECT_TRUE(SetEndOfFile(file));
  EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_BEGIN), 0U);
  EXPECT_EQ(ReadSome(file, 100), std::string("0123\0\0", 6));
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(Files, TheEndIsNotSetThroughAReadHandle) {
  CloseHandle(Open(LUMO_WIDE("f"), GENERIC_WRITE, CREATE_ALWAYS));
  const HANDLE file = Open(LUMO_WIDE("f"), GENERIC_READ, OPEN_EXISTING);
  EXPECT_FALSE(SetEndOfFile(file));
  // Wine takes the handle for none.
  EXPECT_EQ(GetLastError(), test::IsUnderWine() ? 6U : 5U);
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(Files, WhatIsWrittenCanBeFlushed) {
  const HANDLE file = Open(LUMO_WIDE("f"), GENERIC_WRITE, CREATE_ALWAYS);
  WriteSome(file, "x");
  EXPECT_TRUE(FlushFileBuffers(file));
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_FALSE(FlushFileBuffers(INVALID_HANDLE_VALUE));
  EXPECT_EQ(GetLastError(), 6U);
}

TEST_F(Files, SizeAndTimeOfTheLastWriteCanBeAsked) {
  const HANDLE file = Open(LUMO_WIDE("f"), GENERIC_WRITE, CREATE_ALWAYS);
  WriteSome(file, "12345");
  EXPECT_TRUE(CloseHandle(file));
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  ASSERT_TRUE(GetFileAttributesExW(LUMO_WIDE("f"), GetFileExInfoStandard, &data));
  EXPECT_EQ(data.nFileSizeLow, 5U);
  EXPECT_EQ(data.nFileSizeHigh, 0U);
  // In tenths of a microsecond since 1601: after the year 2020 and before 2200.
  const uint64_t time =
      static_cast<uint64_t>(data.ftLastWriteTime.dwHighDateTime) << 32 | data.ftLastWriteTime.dwLowDateTime;
  EXPECT_GT(time, 132223104000000000U);
  EXPECT_LT(time, 189027648000000000U);
  EXPECT_FALSE(GetFileAttributesExW(LUMO_WIDE("none"), GetFileExInfoStandard, &data));
  EXPECT_EQ(GetLastError(), 2U);
  EXPECT_FALSE(GetFileAttributesExW(LUMO_WIDE("nowhere\\none"), GetFileExInfoStandard, &data));
  EXPECT_EQ(GetLastError(), 3U);
}

TEST_F(Files, SeekingBeforeTheStartIsRefusedAndMovesNothing) {
  Write("file", "0123456789");
  const HANDLE file = Open(LUMO_WIDE("file"), GENERIC_READ, OPEN_EXISTING);
  constexpr Seek kSeeks[] = {{3, -1, FILE_BEGIN, 0}, {3, -4, FILE_CURRENT, 0}, {3, -11, FILE_END, 0}};
  for (const Seek &row : kSeeks) {
    SetFilePointer(file, row.start, nullptr, FILE_BEGIN);
    EXPECT_EQ(SetFilePointer(file, row.offset, nullptr, row.origin), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), 131u) << row.offset;
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_CURRENT), 3u);
  }
  EXPECT_EQ(SetFilePointer(file, 0, nullptr, 3), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), 87u);
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(Files, DeletingRemovesTheFile) {
  Write("file", "bytes");
  EXPECT_TRUE(DeleteFileW(LUMO_WIDE("file")));
  EXPECT_FALSE(fs::exists("file"));
}

TEST_F(Files, MovingRenames) {
  Write("file", "bytes");
  fs::create_directory("folder");
  EXPECT_TRUE(MoveFileW(LUMO_WIDE("file"), LUMO_WIDE("folder\\new")));
  EXPECT_FALSE(fs::exists("file"));
  EXPECT_EQ(Read("folder/new"), "bytes");
}

TEST_F(Files, MovingRenamesAFolder) {
  fs::create_directory("folder");
  Write("folder/file", "bytes");
  EXPECT_TRUE(MoveFileW(LUMO_WIDE("folder"), LUMO_WIDE("new")));
  EXPECT_EQ(Read("new/file"), "bytes");
}

TEST_F(Files, MovingNeverReplaces) {
  Write("file", "bytes");
  Write("other", "old");
  fs::create_directory("folder");
  EXPECT_FALSE(MoveFileW(LUMO_WIDE("file"), LUMO_WIDE("other")));
  EXPECT_EQ(GetLastError(), 183u);
  EXPECT_FALSE(MoveFileW(LUMO_WIDE("file"), LUMO_WIDE("folder")));
  EXPECT_EQ(GetLastError(), 183u);
  EXPECT_EQ(Read("file"), "bytes");
  EXPECT_EQ(Read("other"), "old");
}

TEST_F(Files, CopyingMakesASecondFile) {
  const std::string bytes(100000, 'x');
  Write("file", bytes);
  EXPECT_TRUE(CopyFileW(LUMO_WIDE("file"), LUMO_WIDE("new"), 0));
  EXPECT_EQ(Read("file"), bytes);
  EXPECT_EQ(Read("new"), bytes);
}

TEST_F(Files, CopyingReplacesALongerFile) {
  Write("file", "bytes");
  Write("old", "much longer than that");
  EXPECT_TRUE(CopyFileW(LUMO_WIDE("file"), LUMO_WIDE("old"), 0));
  EXPECT_EQ(Read("old"), "bytes");
}

TEST_F(Files, CopyingAnEmptyFileEmptiesTheTarget) {
  Write("file", "");
  Write("old", "bytes");
  EXPECT_TRUE(CopyFileW(LUMO_WIDE("file"), LUMO_WIDE("old"), 0));
  EXPECT_EQ(Read("old"), "");
}

TEST_F(Files, CopyingCanBeToldNotToReplace) {
  Write("file", "bytes");
  Write("old", "other");
  EXPECT_FALSE(CopyFileW(LUMO_WIDE("file"), LUMO_WIDE("old"), 1));
  EXPECT_EQ(GetLastError(), 80u);
  EXPECT_EQ(Read("old"), "other");
  EXPECT_TRUE(CopyFileW(LUMO_WIDE("file"), LUMO_WIDE("new"), 1));
  EXPECT_EQ(Read("new"), "bytes");
}

TEST_F(Files, AFileIsNotCopiedOntoItself) {
  Write("file", "bytes");
  EXPECT_FALSE(CopyFileW(LUMO_WIDE("file"), LUMO_WIDE("file"), 0));
  EXPECT_EQ(GetLastError(), 32u);
  EXPECT_EQ(Read("file"), "bytes");
}

TEST_F(Files, AFolderIsNotCopiedOver) {
  Write("file", "bytes");
  fs::create_directory("folder");
  EXPECT_FALSE(CopyFileW(LUMO_WIDE("file"), LUMO_WIDE("folder"), 0));
  EXPECT_EQ(GetLastError(), 5u);
}

TEST_F(Files, AttributesTellFoldersFromFiles) {
  Write("file", "bytes");
  fs::create_directory("folder");
  EXPECT_NE(GetFileAttributesW(LUMO_WIDE("file")), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetFileAttributesW(LUMO_WIDE("file")) & FILE_ATTRIBUTE_DIRECTORY, 0u);
  EXPECT_NE(GetFileAttributesW(LUMO_WIDE("folder")), INVALID_FILE_ATTRIBUTES);
  EXPECT_NE(GetFileAttributesW(LUMO_WIDE("folder")) & FILE_ATTRIBUTE_DIRECTORY, 0u);
}

#ifdef _WIN32
#define LINE_END "\r\n"
#else
#define LINE_END "\n"
#endif

TEST_F(Files, AnAppendMakesTheFileAndGoesBehindWhatIsThere) {
  EXPECT_TRUE(Append(LUMO_WIDE("file"), "one\n"));
  EXPECT_EQ(Read("file"), "one" LINE_END);
  EXPECT_TRUE(Append(LUMO_WIDE("file"), "two\nthree"));
  EXPECT_TRUE(Append(LUMO_WIDE("file"), ""));
  EXPECT_TRUE(Append(LUMO_WIDE("file"), "\n"));
  EXPECT_EQ(Read("file"), "one" LINE_END "two" LINE_END "three" LINE_END);
}

TEST_F(Files, AnAppendTakesAnyLength) {
  const std::string text(100000, 'x');
  EXPECT_TRUE(Append(LUMO_WIDE("file"), text));
  EXPECT_EQ(Read("file"), text);
}

TEST_F(Files, NothingIsAppendedToAnEmptyName) {
  EXPECT_FALSE(Append(LUMO_WIDE(""), "x"));
  EXPECT_TRUE(fs::is_empty("."));
}

TEST_F(Files, AFileNameIsKeptFromAppendToAppend) {
  FileName name;
  MakeFileName(LUMO_WIDE("file"), &name);
  EXPECT_TRUE(AppendToFile(&name, "one", 3));
  EXPECT_TRUE(AppendToFile(&name, "two", 3));
  EXPECT_EQ(Read("file"), "onetwo");
  EXPECT_TRUE(DeleteFileW(LUMO_WIDE("file")));
  EXPECT_TRUE(AppendToFile(&name, "three", 5));
  EXPECT_EQ(Read("file"), "three");
}

// Names, each tried in every call: created, found, read back, copied, moved, deleted.
struct NameCase {
  const char *what;
  Wide name;
};

const NameCase kNames[] = {
    {"Plain", LUMO_WIDE("CONFIG.JSN")},
    {"Spaces", LUMO_WIDE("a name with spaces")},
    {"Cyrillic", LUMO_WIDE("Касса № 1.jsn")},
    {"BeyondTheBasicPlane", LUMO_WIDE("чек \U0001F600\U0001F9FE.jsn")},
    {"InAFolder", LUMO_WIDE("folder\\file")},
    {"InAFolderWithTheOtherSeparator", LUMO_WIDE("folder/file")},
    {"ThroughTheFolderItself", LUMO_WIDE("folder\\..\\folder\\.\\file")},
    {"LongestComponent", Wide(120, LUMO_WIDE("ж")[0])},
};

void PrintTo(const NameCase &row, std::ostream *out) {
  *out << row.what;
}

class Names : public Files, public testing::WithParamInterface<NameCase> {};

TEST_P(Names, WorkInEveryCall) {
  fs::create_directory("folder");
  const WCHAR *const name = GetParam().name.c_str();
  HANDLE file = Open(name, GENERIC_WRITE, CREATE_ALWAYS);
  ASSERT_NE(file, INVALID_HANDLE_VALUE) << GetLastError();
  WriteSome(file, "bytes");
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_NE(GetFileAttributesW(name), INVALID_FILE_ATTRIBUTES);
  EXPECT_TRUE(Append(name, "+"));
  EXPECT_TRUE(CopyFileW(name, LUMO_WIDE("copy"), 1));
  EXPECT_EQ(Read("copy"), "bytes+");
  EXPECT_TRUE(DeleteFileW(name));
  EXPECT_EQ(GetFileAttributesW(name), INVALID_FILE_ATTRIBUTES);
  EXPECT_TRUE(MoveFileW(LUMO_WIDE("copy"), name));
  file = Open(name, GENERIC_READ, OPEN_EXISTING);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_EQ(ReadSome(file, 100), "bytes+");
  EXPECT_TRUE(CloseHandle(file));
}

INSTANTIATE_TEST_SUITE_P(, Names, testing::ValuesIn(kNames),
                         [](const auto &row) { return std::string(row.param.what); });

TEST_F(Files, APathMayHave259UnitsBesideItsTerminator) {
  // An absolute path made of folders of 40 units and a name that fills it up.
  Wide path;
  for (const char16_t unit : folder().u16string()) path += static_cast<WCHAR>(unit);
  ASSERT_LT(path.size(), 200u);
  while (path.size() + 41 < 240) {
    path += kPathSeparator;
    path += Wide(40, static_cast<WCHAR>('d'));
    ASSERT_TRUE(fs::create_directory(fs::path(std::u16string(path.begin(), path.end()))));
  }
  path += kPathSeparator;
  path += Wide(259 - path.size(), static_cast<WCHAR>('f'));
  ASSERT_EQ(path.size(), 259u);
  HANDLE file = Open(path.c_str(), GENERIC_WRITE, CREATE_ALWAYS);
  ASSERT_NE(file, INVALID_HANDLE_VALUE) << GetLastError();
  WriteSome(file, "bytes");
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_NE(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_TRUE(CopyFileW(path.c_str(), LUMO_WIDE("copy"), 0));
  EXPECT_EQ(Read("copy"), "bytes");
  EXPECT_TRUE(DeleteFileW(path.c_str()));
}

}  // namespace
}  // namespace lumo
