// platform/failing_calls_posix_test.cpp: the platform's functions when the operating system's own calls fail,
// are interrupted, or find that another process was there first.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <filesystem>
#include <string>

#include "platform/client.h"
#include "platform/open.h"
#include "platform/own_folder.h"
#include "platform/peer.h"
#include "platform/posix/posix_internal.h"
#include "platform/system_calls.h"

namespace lumo {
namespace {

namespace fs = std::filesystem;
using test::BeforeCall;
using test::Client;
using test::Connection;
using test::FailCall;
using test::Open;
using test::Peer;

class FailingFiles : public test::OwnFolder {
 protected:
  ~FailingFiles() override { EXPECT_EQ(test::EndTrouble(), 0) << "not all that was asked for came about"; }

  HANDLE OpenToWrite() const {
    const HANDLE file = Open(u"file", GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    return file;
  }
  static BOOL WriteByte(HANDLE file) {
    DWORD written = 0;
    return WriteFile(file, "x", 1, &written, nullptr);
  }
};

struct FileErrorCase {
  int error;
  DWORD number;
};

constexpr FileErrorCase kFileErrors[] = {
    {ENOENT, 2},  {ENOTDIR, 3},        {EMFILE, 4},   {ENFILE, 4},  {EACCES, 5},   {EPERM, 5},
    {EISDIR, 5},  {EROFS, 5},          {EBADF, 5},    {ENOMEM, 8},  {EXDEV, 17},   {EWOULDBLOCK, 32},
    {EBUSY, 32},  {ETXTBSY, 32},       {EEXIST, 183}, {EINVAL, 87}, {ENOSPC, 112}, {EDQUOT, 112},
    {EFBIG, 112}, {ENAMETOOLONG, 206}, {EIO, 29},
};

TEST_F(FailingFiles, EachErrorOfAWriteHasItsNumber) {
  const HANDLE file = OpenToWrite();
  for (const FileErrorCase &row : kFileErrors) {
    FailCall("write", row.error);
    EXPECT_FALSE(WriteByte(file)) << strerror(row.error);
    EXPECT_EQ(GetLastError(), row.number) << strerror(row.error);
  }
  CloseHandle(file);
}

TEST_F(FailingFiles, InterruptedCallsAreMadeAgain) {
  FailCall("open", EINTR);
  FailCall("flock", EINTR);
  const HANDLE file = OpenToWrite();
  FailCall("write", EINTR);
  EXPECT_TRUE(WriteByte(file));
  SetFilePointer(file, 0, nullptr, FILE_BEGIN);
  FailCall("read", EINTR);
  char byte = 0;
  DWORD count = 0;
  EXPECT_TRUE(ReadFile(file, &byte, 1, &count, nullptr));
  EXPECT_EQ(byte, 'x');
  SetFilePointer(file, 0, nullptr, FILE_BEGIN);
  FailCall("ftruncate", EINTR);
  EXPECT_TRUE(SetEndOfFile(file));
  EXPECT_EQ(Read("file"), "");
  FailCall("close", EINTR);
  EXPECT_TRUE(CloseHandle(file));
  FailCall("flock", EINTR);
  EXPECT_TRUE(DeleteFileW(u"file"));
  EXPECT_FALSE(fs::exists("file"));
}

TEST_F(FailingFiles, AHandleBeyondAllDescriptorsIsNone) {
  EXPECT_FALSE(CloseHandle(reinterpret_cast<HANDLE>(INTPTR_MAX)));
  EXPECT_EQ(GetLastError(), 6U);
  EXPECT_EQ(SetFilePointer(INVALID_HANDLE_VALUE, 0, nullptr, FILE_END), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), 6U);
  EXPECT_FALSE(SetEndOfFile(INVALID_HANDLE_VALUE));
  EXPECT_EQ(GetLastError(), 6U);
}

TEST_F(FailingFiles, ANameLongerThanAllPathsIsRefused) {
  const std::u16string name(800, u'a');
  EXPECT_EQ(Open(name.c_str(), GENERIC_WRITE, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 206U);
}

TEST_F(FailingFiles, WhatIsMissingAtTheRootIsAFile) {
  EXPECT_EQ(GetFileAttributesW(u"/there is no such file"), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), 2U);
}

TEST_F(FailingFiles, AnUnknownDispositionIsRefused) {
  for (const DWORD creation : {0U, 1U, 5U}) {
    EXPECT_EQ(Open(u"file", GENERIC_WRITE, creation), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), 87U);
  }
  EXPECT_FALSE(fs::exists("file"));
}

TEST_F(FailingFiles, AFileThatCannotBeLookedAtIsNotOpened) {
  FailCall("fstat", EIO);
  EXPECT_EQ(Open(u"file", GENERIC_WRITE, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 5U);
}

TEST_F(FailingFiles, AFileMadeBySomebodyElseInBetweenIsOpened) {
  Write("file", "bytes");
  FailCall("open", ENOENT);
  const HANDLE file = Open(u"file", GENERIC_WRITE, OPEN_ALWAYS);
  EXPECT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 183U);
  CloseHandle(file);
  EXPECT_EQ(Read("file"), "bytes");
}

TEST_F(FailingFiles, AFileReplacedInFrontOfTheLockIsOpenedAnew) {
  Write("file", "old");
  BeforeCall("flock", [] {
    fs::rename("file", "moved");
    Write("file", "new");
  });
  const HANDLE file = OpenToWrite();
  EXPECT_TRUE(WriteByte(file));
  CloseHandle(file);
  EXPECT_EQ(Read("file"), "xew");
  EXPECT_EQ(Read("moved"), "old");
}

TEST_F(FailingFiles, AFileDeletedInFrontOfTheLockIsMadeAnew) {
  Write("file", "old");
  BeforeCall("flock", [] { fs::remove("file"); });
  const HANDLE file = OpenToWrite();
  EXPECT_TRUE(WriteByte(file));
  CloseHandle(file);
  EXPECT_EQ(Read("file"), "x");
}

TEST_F(FailingFiles, ANumberOnAnotherDeviceIsAnotherFile) {
  Write("file", "old");
  test::AliasFiles(test::Alias::kDevice, 1);
  CloseHandle(OpenToWrite());
}

// There are file systems that never give a file the same number twice.
TEST_F(FailingFiles, AFileWhoseNumberNeverStandsIsTakenAsItIsInTheEnd) {
  Write("file", "old");
  test::AliasFiles(test::Alias::kNumber, 19);
  const HANDLE file = OpenToWrite();
  EXPECT_TRUE(WriteByte(file));
  CloseHandle(file);
  EXPECT_EQ(Read("file"), "xld");
}

TEST_F(FailingFiles, AFileThatCannotBeCutIsNotOpened) {
  Write("file", "bytes");
  FailCall("ftruncate", EIO);
  EXPECT_EQ(Open(u"file", GENERIC_WRITE, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 31U);
  EXPECT_EQ(Read("file"), "bytes");
}

TEST_F(FailingFiles, ACutThatFailsSaysWhy) {
  const HANDLE file = OpenToWrite();
  for (const auto &[error, number] : {FileErrorCase{EBADF, 5}, {EINVAL, 5}, {EIO, 31}}) {
    FailCall("ftruncate", error);
    EXPECT_FALSE(SetEndOfFile(file));
    EXPECT_EQ(GetLastError(), number);
  }
  CloseHandle(file);
}

TEST_F(FailingFiles, AFlushThatFailsSaysWhyUnlessThereIsNothingToFlush) {
  const HANDLE file = OpenToWrite();
  FailCall("fdatasync", EIO);
  EXPECT_FALSE(FlushFileBuffers(file));
  EXPECT_EQ(GetLastError(), 29U);
  for (const int error : {EINVAL, EROFS}) {
    FailCall("fdatasync", error);
    EXPECT_TRUE(FlushFileBuffers(file));
  }
  CloseHandle(file);
}

TEST_F(FailingFiles, ACloseThatFailsSaysWhy) {
  const HANDLE file = OpenToWrite();
  FailCall("close", EIO);
  EXPECT_FALSE(CloseHandle(file));
  EXPECT_EQ(GetLastError(), 31U);
}

TEST_F(FailingFiles, APositionThatIsNoneIsRefused) {
  const HANDLE file = OpenToWrite();
  LONG high = INT32_MAX;
  EXPECT_TRUE(WriteByte(file));
  EXPECT_EQ(SetFilePointer(file, -1, &high, FILE_END), INVALID_SET_FILE_POINTER);  // 1 byte past the largest
  EXPECT_EQ(GetLastError(), 87U);
  high = 0;
  EXPECT_EQ(SetFilePointer(file, -1, &high, FILE_BEGIN), 0xFFFFFFFFU);
  EXPECT_EQ(GetLastError(), 0U);
  EXPECT_EQ(SetFilePointer(file, 1, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);  // has no upper half
  EXPECT_EQ(GetLastError(), 87U);
  FailCall("lseek", EINVAL);
  EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), 87U);
  CloseHandle(file);
}

TEST_F(FailingFiles, ADeletionThatFailsSaysWhy) {
  Write("file", "bytes");
  FailCall("unlink", EPERM);
  EXPECT_FALSE(DeleteFileW(u"file"));
  EXPECT_EQ(GetLastError(), 5U);
  // What cannot be looked at is no folder.
  FailCall("fstat", EIO);
  EXPECT_TRUE(DeleteFileW(u"file"));
}

TEST_F(FailingFiles, WhereAMoveCannotRefuseATargetALinkDoes) {
  for (const int error : {EINVAL, ENOSYS}) {
    Write("file", "bytes");
    FailCall("renameat2", error);
    EXPECT_TRUE(MoveFileW(u"file", u"moved"));
    EXPECT_FALSE(fs::exists("file"));
    EXPECT_EQ(Read("moved"), "bytes");
    Write("file", "others");
    FailCall("renameat2", error);
    EXPECT_FALSE(MoveFileW(u"file", u"moved"));
    EXPECT_EQ(GetLastError(), 183U);
    EXPECT_EQ(Read("moved"), "bytes");
    fs::remove("moved");
  }
  FailCall("renameat2", EINVAL);
  FailCall("unlink", EPERM);
  EXPECT_FALSE(MoveFileW(u"file", u"moved"));
  EXPECT_EQ(GetLastError(), 5U);
}

TEST_F(FailingFiles, ACopyThatFailsLeavesNoTarget) {
  Write("file", "bytes");
  FailCall("read", EIO);
  EXPECT_FALSE(CopyFileW(u"file", u"copy", 0));
  EXPECT_EQ(GetLastError(), 30U);
  EXPECT_FALSE(fs::exists("copy"));
  FailCall("write", ENOSPC);
  FailCall("close", EIO);
  EXPECT_FALSE(CopyFileW(u"file", u"copy", 0));
  EXPECT_EQ(GetLastError(), 112U);
  EXPECT_FALSE(fs::exists("copy"));
}

TEST_F(FailingFiles, ACopyWhoseCloseFailsSaysSo) {
  Write("file", "bytes");
  FailCall("close", EIO);
  EXPECT_FALSE(CopyFileW(u"file", u"copy", 0));
  EXPECT_EQ(GetLastError(), 29U);
  FailCall("close", EINTR);
  EXPECT_TRUE(CopyFileW(u"file", u"copy", 0));
  EXPECT_EQ(Read("copy"), "bytes");
}

TEST_F(FailingFiles, ACopyOfWhatCannotBeLookedAtHasTheUsualRights) {
  Write("file", "bytes");
  fs::permissions("file", fs::perms::owner_read | fs::perms::owner_write);
  const mode_t before = umask(0);
  FailCall("fstat", EIO, 1);
  EXPECT_TRUE(CopyFileW(u"file", u"copy", 0));
  umask(before);
  EXPECT_EQ(fs::status("copy").permissions(), static_cast<fs::perms>(0666));
}

TEST_F(FailingFiles, AttributesOfAnotherKindAreRefused) {
  Write("file", "bytes");
  WIN32_FILE_ATTRIBUTE_DATA data;
  EXPECT_FALSE(GetFileAttributesExW(u"file", static_cast<GET_FILEEX_INFO_LEVELS>(1), &data));
  EXPECT_EQ(GetLastError(), 87U);
  EXPECT_FALSE(GetFileAttributesExW(u"file", GetFileExInfoStandard, nullptr));
  EXPECT_EQ(GetLastError(), 87U);
}

class FailingSockets : public testing::Test {
 protected:
  ~FailingSockets() override { EXPECT_EQ(test::EndTrouble(), 0) << "not all that was asked for came about"; }
};

TEST_F(FailingSockets, ASocketThatCannotBeHadSaysWhy) {
  const Client client;
  FailCall("socket", EMFILE);
  EXPECT_EQ(socket(AF_INET, SOCK_STREAM, 0), INVALID_SOCKET);
  EXPECT_EQ(WSAGetLastError(), 10024);
}

TEST_F(FailingSockets, AnInterruptedConnectGoesOn) {
  std::string request;
  {
    Peer peer([&](Connection &connection) { request = connection.Read(5); });
    const Client client;
    FailCall("connect", EINTR);
    EXPECT_EQ(client.Connect(peer.port()), 0);
    FailCall("send", EINTR);
    EXPECT_EQ(client.Send("bytes"), 5);
  }
  EXPECT_EQ(request, "bytes");
}

TEST_F(FailingSockets, AnInterruptedConnectThatCannotBeWaitedForFails) {
  Peer peer([](Connection &connection) { connection.ReadToEnd(); });
  const Client client;
  FailCall("connect", EINTR);
  FailCall("poll", ENOMEM);
  EXPECT_EQ(client.Connect(peer.port()), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10055);
}

TEST_F(FailingSockets, AnInterruptedConnectWhoseEndCannotBeAskedForFails) {
  Peer peer([](Connection &connection) { connection.ReadToEnd(); });
  const Client client;
  FailCall("connect", EINTR);
  FailCall("getsockopt", ENOBUFS, 1);  // the first asks for the time limit
  EXPECT_EQ(client.Connect(peer.port()), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10055);
}

// Between the two the answer has come, or not yet.
TEST_F(FailingSockets, AnInterruptedReceiveIsCarriedOn) {
  Peer peer([](Connection &connection) { connection.Write("answer"); });
  const Client client;
  ASSERT_EQ(client.Connect(peer.port()), 0);
  FailCall("recv", EINTR);
  FailCall("recv", EAGAIN);
  std::string answer;
  EXPECT_EQ(client.Receive(&answer, 500), 6);
  EXPECT_EQ(answer, "answer");
}

TEST_F(FailingSockets, AReceiveWithoutAKnownTimeLimitHasNone) {
  Peer peer([](Connection &connection) { connection.Write("answer"); });
  const Client client;
  ASSERT_EQ(client.Connect(peer.port()), 0);
  FailCall("recv", EINTR);
  FailCall("getsockopt", ENOMEM);
  std::string answer;
  EXPECT_EQ(client.Receive(&answer, 500), 6);
}

TEST_F(FailingSockets, AReceiveThatCannotBeWaitedForFails) {
  Peer peer([](Connection &connection) { connection.ReadToEnd(); });
  const Client client;
  ASSERT_EQ(client.Connect(peer.port()), 0);
  FailCall("recv", EINTR);
  FailCall("poll", ENOMEM);
  std::string answer;
  EXPECT_EQ(client.Receive(&answer, 500), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10055);
}

TEST_F(FailingSockets, AnInterruptedCloseHasClosed) {
  const Client client;
  const SOCKET made = socket(AF_INET, SOCK_STREAM, 0);
  FailCall("close", EINTR);
  EXPECT_EQ(closesocket(made), 0);
  const SOCKET other = socket(AF_INET, SOCK_STREAM, 0);
  FailCall("close", EIO);
  EXPECT_EQ(closesocket(other), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10022);
}

TEST(InterruptedSleep, GoesOn) {
  const auto before = std::chrono::steady_clock::now();
  FailCall("nanosleep", EINTR);
  lumo_Sleep(20);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(20));
  FailCall("nanosleep", EINVAL);
  lumo_Sleep(20);
  EXPECT_EQ(test::EndTrouble(), 0);
}

// The file is found once, so each of these is a process's first question.
class FileOfTheLibrary : public testing::Test {
 protected:
  ~FileOfTheLibrary() override {
    EXPECT_EQ(test::EndTrouble(), 0) << "not all that was asked for came about";
  }
};

TEST_F(FileOfTheLibrary, IsTheProgramWhenTheLoaderKnowsNone) {
  FailCall("dladdr", EINVAL);
  EXPECT_EQ(LibraryFile(), fs::read_symlink("/proc/self/exe").string());
}

TEST_F(FileOfTheLibrary, IsTheProgramWhenItHasNoName) {
  test::NameLibraryFile(nullptr);
  EXPECT_EQ(LibraryFile(), fs::read_symlink("/proc/self/exe").string());
}

TEST_F(FileOfTheLibrary, IsTheProgramWhenItsNameHasNoFolder) {
  test::NameLibraryFile("program");
  EXPECT_EQ(LibraryFile(), fs::read_symlink("/proc/self/exe").string());
}

TEST_F(FileOfTheLibrary, IsBelowTheCurrentFolder) {
  test::NameLibraryFile("folder/library");
  EXPECT_EQ(LibraryFile(), (fs::current_path() / "folder/library").string());
}

TEST_F(FileOfTheLibrary, IsNoneWhenTheCurrentFolderIsNot) {
  test::NameLibraryFile("folder/library");
  FailCall("getcwd", ENOENT);
  EXPECT_STREQ(LibraryFile(), "");
}

TEST_F(FileOfTheLibrary, IsNoneWhenItsPathIsLongerThanAny) {
  const std::string name = "folder/" + std::string(PATH_MAX, 'l');
  test::NameLibraryFile(name.c_str());
  EXPECT_STREQ(LibraryFile(), "");
}

TEST_F(FileOfTheLibrary, IsNoneWhenNobodyKnows) {
  FailCall("dladdr", EINVAL);
  FailCall("readlink", EACCES);
  WCHAR name[300];
  EXPECT_EQ(lumo_GetModuleFileNameW(nullptr, name, 300), 0U);
  EXPECT_EQ(lumo_GetLastError(), 2U);
}

}  // namespace
}  // namespace lumo
