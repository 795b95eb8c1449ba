// foundation/trace_test.cpp: the diary: what a line looks like, which file it goes to, and what happens when
// there is none.
#include "foundation/trace.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "foundation/module_path.h"
#include "support/allocations.h"
#include "support/fatal.h"
#include "support/folder.h"

namespace {

struct TraceFile : testing::Test {
  test::Folder folder;
};

TEST_F(TraceFile, IsMadeByTheFirstLine) {
  EXPECT_FALSE(folder.Exists("TRACE.TXT"));
  lumo::Trace("LUMOInit()\n");
  EXPECT_EQ(folder.Trace(), "LUMOInit()\n");
}

TEST_F(TraceFile, GetsAWarningBehindItsPrefix) {
  lumo::TraceWarning("x\n");
  EXPECT_EQ(folder.Trace(), "WARNING: x\n");
}

TEST_F(TraceFile, GetsAnErrorBehindItsPrefix) {
  lumo::TraceError("x\n");
  EXPECT_EQ(folder.Trace(), "ERROR: x\n");
}

TEST_F(TraceFile, GetsWhatTheFormatSaysAndNothingElse) {
  lumo::Trace("%d %s|", -5, "пять");
  lumo::TraceError("%02X", 14);
  lumo::TraceWarning("100%%");
  EXPECT_EQ(folder.Trace(), "-5 пять|ERROR: 0EWARNING: 100%");
}

TEST_F(TraceFile, IsAppendedTo) {
  folder.Write("TRACE.TXT", "yesterday\n");
  lumo::Trace("today\n");
  EXPECT_EQ(folder.Trace(), "yesterday\ntoday\n");
}

TEST_F(TraceFile, IsClosedAfterEachLine) {
  lumo::Trace("first\n");
  folder.Remove("TRACE.TXT");
  lumo::Trace("second\n");
  EXPECT_EQ(folder.Trace(), "second\n");
}

TEST_F(TraceFile, ShowsANullTextAsNull) {
  const char *volatile absent = nullptr;
  lumo::Trace("  card_num [%s]\n", absent);
  EXPECT_EQ(folder.Trace(), "  card_num [(null)]\n");
}

TEST_F(TraceFile, TakesLinesOfAnyLength) {
  const std::string text(100000, 't');
  lumo::TraceError("%s\n", text.c_str());
  EXPECT_EQ(folder.Trace(), "ERROR: " + text + "\n");
}

// A line of up to 1 KB is put together without memory.
TEST_F(TraceFile, TakesLinesAroundAKilobyte) {
  std::string expected;
  for (const size_t length : {1015U, 1016U, 1017U, 1018U, 1024U, 1025U}) {
    const std::string text(length, 't');
    lumo::TraceError("%s\n", text.c_str());
    expected += "ERROR: " + text + "\n";
  }
  EXPECT_EQ(folder.Trace(), expected);
}

TEST_F(TraceFile, LosesTheEndOfALongLineWithoutMemory) {
  const std::string text(2000, 't');
  test::FailNextAllocation();
  lumo::TraceError("%s\n", text.c_str());
  lumo::Trace("next\n");
  EXPECT_EQ(folder.Trace(), "ERROR: " + std::string(1016, 't') + "\nnext\n");
}

TEST_F(TraceFile, FollowsTheDirectoryAndTheTag) {
  lumo::Trace("one");
  lumo::SetTraceTag("K2");
  lumo::Trace("two");
  lumo::SetTraceTag("");
  const std::string inner = folder.path() + "inner/";
  std::filesystem::create_directory(std::filesystem::u8path(inner));
  lumo::SetModuleDirectory(std::filesystem::u8path(inner).string<lumo::WCHAR>().c_str());
  lumo::Trace("three");
  EXPECT_EQ(folder.Trace(), "one");
  EXPECT_EQ(folder.Read("TRACE_K2.TXT"), "two");
  EXPECT_EQ(folder.Read("inner/TRACE.TXT"), "three");
}

TEST_F(TraceFile, IsNamedWithTheTag) {
  lumo::SetTraceTag("K2");
  lumo::Trace("tagged");
  EXPECT_EQ(folder.Read("TRACE_K2.TXT"), "tagged");
  EXPECT_FALSE(folder.Exists("TRACE.TXT"));
}

TEST_F(TraceFile, LosesTheLineWhenItCannotBeOpened) {
  std::filesystem::create_directory(std::filesystem::u8path(folder.path() + "TRACE.TXT"));
  lumo::Trace("lost %d\n", 1);
  lumo::TraceError("lost %d\n", 2);
  folder.Remove("TRACE.TXT");
  lumo::Trace("kept\n");
  EXPECT_EQ(folder.Trace(), "kept\n");
}

TEST_F(TraceFile, LosesTheLineWhenItsPathIsTooLong) {
  lumo::SetTraceTag(std::string(250, 't').c_str());
  lumo::Trace("lost\n");
  lumo::SetTraceTag(nullptr);
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(TraceFile, LosesTheLineWithoutItsFolder) {
  const std::string gone = folder.path() + "gone/";
  lumo::SetModuleDirectory(std::filesystem::u8path(gone).string<lumo::WCHAR>().c_str());
  lumo::Trace("lost\n");
  EXPECT_FALSE(folder.Exists("gone"));
}

TEST_F(TraceFile, HoldsTheReasonOfAFatalEnd) {
  EXPECT_FATAL(folder, lumo::Fatal("no way on\n", "somewhere.cpp", 12),
               "ERROR: ASSERT IN somewhere.cpp LINE 12: no way on\n");
}

TEST(FatalEnd, ComesWithoutATraceFileToo) {
  test::Folder folder;
  std::filesystem::create_directory(std::filesystem::u8path(folder.path() + "TRACE.TXT"));
  EXPECT_EXIT(lumo::Fatal("no way on\n", "somewhere.cpp", 12), test::EndedAsFatal, "");
}

}  // namespace
