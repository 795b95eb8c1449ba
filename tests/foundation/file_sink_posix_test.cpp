// foundation/file_sink_posix_test.cpp: the printer's small pieces reach the file in few writes.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <string>

#include "foundation/file_sink.h"
#include "foundation/files.h"
#include "support/file_traffic.h"
#include "support/folder.h"

namespace {

struct Sink : testing::Test {
  Sink() : file(lumo::FileOpen("F", "w")) {
    lumo::FileSinkInit(&sink, file);
    test::ResetFileTraffic();
  }
  ~Sink() override { test::EndFileTrouble(); }
  void Write(const std::string &text) {
    lumo::FileSinkWrite(&sink, text.data(), static_cast<uint32_t>(text.size()));
    expected += text;
  }
  void ExpectFile(int writes) {
    lumo::FileSinkFlush(&sink);
    lumo::FileClose(file);
    EXPECT_EQ(test::CountFileTraffic().writes, writes);
    EXPECT_EQ(folder.Read("F"), expected);
    EXPECT_EQ(folder.Trace(), "");
  }

  test::Folder folder;
  lumo::HANDLE file;
  lumo::FileSink sink = {};
  std::string expected;
};

TEST_F(Sink, WritesNothingWithoutAPiece) {
  ExpectFile(0);
}

TEST_F(Sink, CollectsSmallPieces) {
  for (int i = 0; i < 100; ++i) Write(std::to_string(i) + ",");
  EXPECT_EQ(test::CountFileTraffic().writes, 0);
  ExpectFile(1);
}

TEST_F(Sink, TakesEmptyPieces) {
  Write("");
  lumo::FileSinkWrite(&sink, nullptr, 0);
  Write("x");
  Write("");
  ExpectFile(1);
}

TEST_F(Sink, KeepsABufferThatIsJustFull) {
  Write(std::string(2000, 'a'));
  Write(std::string(48, 'b'));
  EXPECT_EQ(test::CountFileTraffic().writes, 0);
  Write("c");
  EXPECT_EQ(test::CountFileTraffic().writes, 1);
  ExpectFile(2);
}

TEST_F(Sink, WritesALargePieceInOrder) {
  Write("before ");
  Write(std::string(100000, 'l'));
  Write(" after");
  ExpectFile(3);
}

TEST_F(Sink, WritesInProportionToTheBytes) {
  for (int i = 0; i < 10240; ++i) Write("0123456789");
  // 102,400 bytes through 2,048: pieces of ten fill 2,040 of them.
  ExpectFile(51);
}

TEST_F(Sink, CanGoOnAfterAFlush) {
  Write("one");
  lumo::FileSinkFlush(&sink);
  lumo::FileSinkFlush(&sink);
  Write("two");
  ExpectFile(2);
}

// A file that may not grow takes the beginning of a write, and that is told as a failure.
TEST_F(Sink, EndsWithWhatCouldBeWritten) {
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit = {};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit small = {1000, limit.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  lumo::FileSinkWrite(&sink, std::string(3000, 'x').c_str(), 3000);
  lumo::FileSinkEnd(&sink);
  lumo::FileClose(file);
  setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_EQ(folder.Read("F"), std::string(1000, 'x'));
}

TEST_F(Sink, WritesNothingMoreAfterAFailure) {
  test::LeaveDiskRoom(3);
  Write(std::string(3000, 'a'));
  test::LeaveDiskRoom(UINT64_MAX);
  Write(std::string(3000, 'b'));
  lumo::FileSinkEnd(&sink);
  lumo::FileClose(file);
  EXPECT_EQ(folder.Read("F"), "aaa");
}

TEST_F(Sink, LeavesTheRestWhenTheEndCannotBeFound) {
  folder.Write("OLD", "old text");
  const lumo::HANDLE old_file = lumo::FileOpen("OLD", "a");
  lumo::FileSinkInit(&sink, old_file);
  Write("new");
  test::FailSeekAfter(0);
  lumo::FileSinkEnd(&sink);
  lumo::FileClose(old_file);
  lumo::FileClose(file);
  EXPECT_EQ(folder.Read("OLD"), "new text");
}

TEST(SinkFailure, IsTracedByTheWrite) {
  test::Folder folder;
  lumo::FileSink sink;
  lumo::FileSinkInit(&sink, INVALID_HANDLE_VALUE);
  lumo::FileSinkWrite(&sink, "x", 1);
  EXPECT_EQ(folder.Trace(), "");
  lumo::FileSinkFlush(&sink);
  EXPECT_EQ(folder.Trace(), "ERROR: WriteFile function failed with error 6\n");
}

}  // namespace
