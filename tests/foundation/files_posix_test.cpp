// foundation/files_posix_test.cpp: files when the system's calls fail: a text that is written over keeps a
// whole file wherever it can.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>

#include "foundation/files.h"
#include "support/file_traffic.h"
#include "support/folder.h"

namespace {

class FileTrouble : public testing::Test {
 protected:
  ~FileTrouble() override { test::EndFileTrouble(); }

  static lumo::Replaced Replace(const std::string &text) {
    return lumo::FileReplace("F", text.data(), static_cast<uint32_t>(text.size()));
  }

  test::Folder folder;
};

// The end is found first, then the start; what is left over of a longer text is cut off at last.
TEST_F(FileTrouble, AReplacementWhosePlaceCannotBeFoundIsNone) {
  for (const char *text : {"new", "longer new text"}) {
    for (const int seeks : {0, 1}) {
      folder.Write("F", "old text");
      test::FailSeekAfter(seeks);
      EXPECT_EQ(Replace(text), lumo::Replaced::kNotWritten) << text << " " << seeks;
      EXPECT_EQ(folder.Read("F").substr(0, 8), "old text") << text << " " << seeks;
    }
  }
}

TEST_F(FileTrouble, AReplacementThatIsCutShortIsNone) {
  folder.Write("F", "old text");
  test::LeaveDiskRoom(0);
  EXPECT_EQ(Replace("new"), lumo::Replaced::kNotWritten);
  EXPECT_EQ(folder.Read("F"), "old text");
  test::LeaveDiskRoom(10);  // seven blanks, and three bytes of the text
  EXPECT_EQ(Replace("longer new text"), lumo::Replaced::kNotWritten);
  EXPECT_EQ(folder.Read("F"), "lon text       ");
}

TEST_F(FileTrouble, BlanksThatCannotBeCutOffStay) {
  folder.Write("F", "old text");
  test::FailCutAfter(0);
  EXPECT_EQ(Replace("new"), lumo::Replaced::kDone);
  EXPECT_EQ(folder.Read("F"), "new     ");
  test::FailSeekAfter(2);
  EXPECT_EQ(Replace("newer"), lumo::Replaced::kDone);
  EXPECT_EQ(folder.Read("F"), "newer   ");
}

TEST_F(FileTrouble, ATextIsOnTheDiskBeforeItsFileHasItsNameOrLength) {
  for (const auto &[text, steps] : {std::pair<const char *, const char *>{"old text", "FM"},
                                    {"new", "FC"},
                                    {"newer", ""},
                                    {"newly", ""}}) {
    test::ResetFileTraffic();
    EXPECT_EQ(Replace(text), lumo::Replaced::kDone);
    EXPECT_EQ(test::CountFileTraffic().steps, steps) << text;
    test::FailFlushAfter(0);
    EXPECT_EQ(Replace(text), lumo::Replaced::kDone);
    EXPECT_EQ(folder.Read("F"), text);
  }
}

// A damaged file may have any length: it is not taken into memory to be written over.
TEST_F(FileTrouble, TheRestOfAHugeFileIsCutOffAtOnce) {
  folder.Write("F", "old text");
  std::filesystem::resize_file(folder.path() + "F", 0x7FFFFFFF);
  test::ResetFileTraffic();
  EXPECT_EQ(Replace("new"), lumo::Replaced::kDone);
  EXPECT_EQ(folder.Read("F"), "new");
  EXPECT_EQ(test::CountFileTraffic().writes, 1);
  EXPECT_EQ(test::CountFileTraffic().bytesWritten, 3 + 1024 * 1024U);
}

TEST_F(FileTrouble, TheRestOfAHugeFileThatCannotBeCutOffIsNoReplacement) {
  folder.Write("F", std::string(2000000, 'o'));
  test::FailCutAfter(0);
  EXPECT_EQ(Replace("new"), lumo::Replaced::kNotWritten);
}

// It would be offered the same bytes for ever.
TEST_F(FileTrouble, AWriteThatTakesNothingEndsTheReplacement) {
  folder.Write("F", "old text");
  test::CutNextWrite(0);
  EXPECT_EQ(Replace("new"), lumo::Replaced::kNotWritten);
  EXPECT_EQ(folder.Read("F"), "old text");
  EXPECT_EQ(folder.Trace(), "");
}

// Something else stands where it would be made first.
TEST_F(FileTrouble, AFirstTextThatIsMadeDirectlyIsWholeOrNone) {
  std::filesystem::create_directory(folder.path() + "F.new");
  test::RefuseOpenAfter(1, "F");  // it is looked for, then made
  EXPECT_EQ(Replace("text"), lumo::Replaced::kNotOpened);
  EXPECT_EQ(folder.Trace(), "ERROR: CreateFile function failed with error 5\n");
  test::RefuseOpen("");
  test::LeaveDiskRoom(3);
  EXPECT_EQ(Replace("text"), lumo::Replaced::kNotWritten);
  EXPECT_FALSE(folder.Exists("F"));
  test::LeaveDiskRoom(UINT64_MAX);
  EXPECT_EQ(Replace("text"), lumo::Replaced::kDone);
  EXPECT_EQ(folder.Read("F"), "text");
}

TEST_F(FileTrouble, AFirstTextThatCannotBeMadeLeavesNothing) {
  test::RefuseMove("F.new");
  EXPECT_EQ(Replace("text"), lumo::Replaced::kNotWritten);
  EXPECT_FALSE(folder.Exists("F"));
  EXPECT_FALSE(folder.Exists("F.new"));
}

TEST_F(FileTrouble, AFirstTextNeedsRoomForItsNameOnTheWay) {
  std::string name;
  for (int i = 0; i < 85; ++i) name += "ж";
  std::filesystem::create_directory(folder.path() + name);
  name += "/";
  for (int i = 0; i < 43; ++i) name += "ж";  // 257 bytes in all
  EXPECT_EQ(lumo::FileReplace(name.c_str(), "text", 4), lumo::Replaced::kNotOpened);
  EXPECT_FALSE(folder.Exists(name));
}

TEST_F(FileTrouble, OnlyAFileThatIsKnownNotToBeThereIsMissing) {
  EXPECT_TRUE(lumo::FileIsMissing("F"));
  EXPECT_TRUE(lumo::FileIsMissing("no folder/F"));
  test::FailLookAfter(0);
  EXPECT_FALSE(lumo::FileIsMissing("F"));
}

}  // namespace
