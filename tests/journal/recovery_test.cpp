// journal/recovery_test.cpp: what a process that ended in the middle of a trim or a commit left, and what the
// next start makes of it.
#include "journal/recovery.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "journal/logger.h"
#include "support/folder.h"

namespace {

struct Leftover {
  const char *name;
  const char *oldLog;  // null: there is none
  const char *log;
  const char *expected;
};

constexpr Leftover kLeftovers[] = {
    {"no log yet", "1\n2\n3\n", nullptr, "1\n2\n3\n"},
    {"no log yet, and an open tail", "1\n2\n3", nullptr, "1\n2\n3"},
    {"a copy just begun", "1\n2\n3\n", "", "1\n2\n3\n"},
    {"a copy with a line", "1\n2\n3\n", "2\n", "1\n2\n3\n"},
    {"a copy with half a line", "1\n22\n3\n", "2", "1\n22\n3\n"},
    {"a copy with a line and a half", "1\n22\n33\n", "22\n3", "1\n22\n33\n"},
    {"a copy that lacks the open tail", "1\n2\n3\n4", "2\n3\n", "2\n3\n"},
    {"a whole copy", "1\n2\n3\n", "2\n3\n", "2\n3\n"},
    {"a whole copy and a later record", "1\n2\n3\n", "2\n3\n4\n", "2\n3\n4\n"},
    {"nothing in the old log", "", "4\n", "4\n"},
    {"only an open tail in the old log", "3", "4\n", "4\n"},
    {"records of a log begun anew", "1\n2\n3\n", "4\n5\n", "1\n2\n3\n4\n5\n"},
    {"the old log's open tail goes", "1\n2\n3", "4\n5\n", "1\n2\n4\n5\n"},
    {"a first line that is in the old log, and others", "1\n2\n3\n", "2\n5\n", "1\n2\n3\n2\n5\n"},
    {"blank lines", "\n\n1\n", "\n", "\n\n1\n"},
    {"a last record that begins like another", "1\n22\n", "221\n", "1\n22\n221\n"},
    {"lines of the old log and a tail longer than its rest", "1\n2\n", "1\nlong", "1\n2\n1\nlong"},
    {"lines of the old log and another tail", "1\n2\n3\n", "2\n4", "1\n2\n3\n2\n4"},
};

class Recovery : public testing::Test {
 protected:
  void Put(const std::string &name, const char *bytes) const {
    if (bytes != nullptr) {
      folder.Write(name, bytes);
    } else if (folder.Exists(name)) {
      folder.Remove(name);
    }
  }

  test::Folder folder;
};

TEST_F(Recovery, OfATrim) {
  for (const Leftover &row : kLeftovers) {
    Put("LOG.old", row.oldLog);
    Put("LOG", row.log);
    lumo::RecoverJournals();
    EXPECT_EQ(folder.Read("LOG"), row.expected) << row.name;
    EXPECT_FALSE(folder.Exists("LOG.old")) << row.name;
    EXPECT_FALSE(folder.Exists("LOG.new")) << row.name;
    EXPECT_EQ(folder.Trace(), "") << row.name;
  }
}

TEST_F(Recovery, OfLinesLongerThanAChunk) {
  const std::string one(5000, 'a'), two(5000, 'b');
  folder.Write("LOG.old", one + "\n" + two + "\n");
  folder.Write("LOG", two.substr(0, 4000));
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("LOG"), one + "\n" + two + "\n");
  EXPECT_FALSE(folder.Exists("LOG.old"));
}

// The two logs are joined in a third file, and all three may be found in the middle of that.
TEST_F(Recovery, OfItsOwnJoining) {
  for (const char *unfinished : {"", "1\n2", "1\n2\n3", "1\n2\n3\n4\n"}) {
    folder.Write("LOG.old", "1\n2\n");
    folder.Write("LOG", "3\n4\n");
    folder.Write("LOG.new", unfinished);
    lumo::RecoverJournals();
    EXPECT_EQ(folder.Read("LOG"), "1\n2\n3\n4\n");
    EXPECT_FALSE(folder.Exists("LOG.old"));
    EXPECT_FALSE(folder.Exists("LOG.new"));
  }
  folder.Write("LOG.old", "1\n2\n");
  folder.Write("LOG.new", "1\n2\n3\n4\n");
  folder.Remove("LOG");
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("LOG"), "1\n2\n3\n4\n");
  EXPECT_FALSE(folder.Exists("LOG.old"));
}

// LOG had made way for the third file, which could not be given its name; then a new LOG was begun.
TEST_F(Recovery, OfAJoiningThatLogWentOnWithout) {
  for (const char *old_log : {"1\n2\n", static_cast<const char *>(nullptr)}) {
    Put("LOG.old", old_log);
    folder.Write("LOG", "5\n");
    folder.Write("LOG.new", "1\n2\n3\n4\n");
    lumo::RecoverJournals();
    EXPECT_EQ(folder.Read("LOG"), "1\n2\n3\n4\n5\n");
    EXPECT_FALSE(folder.Exists("LOG.old"));
    EXPECT_FALSE(folder.Exists("LOG.new"));
    EXPECT_EQ(folder.Trace(), "");
  }
}

TEST_F(Recovery, KeepsThreeLogsThatDoNotBelongTogether) {
  folder.Write("LOG.old", "1\n2\n");
  folder.Write("LOG", "5\n");
  folder.Write("LOG.new", "7\n");
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("LOG"), "5\n");
  EXPECT_EQ(folder.Read("LOG.old"), "1\n2\n");
  EXPECT_EQ(folder.Read("LOG.new"), "7\n");
}

TEST_F(Recovery, DropsAnOldLogWithoutARecord) {
  for (const char *old_log : {"", "torn"}) {
    folder.Write("LOG.old", old_log);
    lumo::RecoverJournals();
    EXPECT_FALSE(folder.Exists("LOG"));
    EXPECT_FALSE(folder.Exists("LOG.old"));
  }
}

TEST_F(Recovery, LetsTheNextTrimWork) {
  lumo::SetLogSize(6);
  folder.Write("LOG.old", "1\n2\n3\n4\n5\n");
  lumo::RecoverJournals();
  EXPECT_EQ(lumo::AppendLogRecord("6"), 0);
  EXPECT_EQ(folder.Read("LOG"), "3\n4\n5\n6\n");
}

TEST_F(Recovery, OfACommit) {
  folder.Write("OFFLINE_TMP", "unsent\n");
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("OFFLINE"), "unsent\n");
  EXPECT_FALSE(folder.Exists("OFFLINE_TMP"));
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(Recovery, LeavesAFolderAlone) {
  for (const char *name : {"LOG.new", "LOG.old", "OFFLINE_TMP"}) {
    std::filesystem::create_directory(std::filesystem::u8path(folder.path() + name));
    lumo::RecoverJournals();
    EXPECT_TRUE(folder.Exists(name));
    EXPECT_FALSE(folder.Exists("LOG")) << name;
    EXPECT_FALSE(folder.Exists("OFFLINE")) << name;
    std::filesystem::remove(std::filesystem::u8path(folder.path() + name));
  }
}

TEST_F(Recovery, LeavesAnUnfinishedReplayBesideItsJournal) {
  folder.Write("OFFLINE", "sent\nunsent\n");
  folder.Write("OFFLINE_TMP", "unsent\n");
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("OFFLINE"), "sent\nunsent\n");
  EXPECT_EQ(folder.Read("OFFLINE_TMP"), "unsent\n");
}

TEST_F(Recovery, DoesNothingAfterAnOrderlyEnd) {
  folder.Write("LOG", "1\n");
  folder.Write("OFFLINE", "2\n");
  lumo::RecoverJournals();
  EXPECT_EQ(folder.Read("LOG"), "1\n");
  EXPECT_EQ(folder.Read("OFFLINE"), "2\n");
  EXPECT_EQ(folder.Trace(), "");
}

}  // namespace
