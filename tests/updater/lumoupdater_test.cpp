// updater/lumoupdater_test.cpp: the update calls.
#include "updater/lumoupdater.h"

#include <gtest/gtest.h>

#include "support/folder.h"

namespace {

TEST(Updater, RunUpdaterFailsAndEndsNoLine) {
  const test::Folder folder;
  EXPECT_EQ(lumo::RunUpdater("pack 1"), -1);
  EXPECT_EQ(lumo::RunUpdater(""), -1);
  EXPECT_EQ(folder.Trace(), "RunUpdater(\"pack 1\")RunUpdater(\"\")");
}

TEST(Updater, RunUpdaterTakesNull) {
  const test::Folder folder;
  EXPECT_EQ(lumo::RunUpdater(nullptr), -1);
  EXPECT_EQ(folder.Trace(), "RunUpdater(\"(null)\")");
}

TEST(Updater, CommitUpdatesFailsAndEndsNoLine) {
  const test::Folder folder;
  EXPECT_EQ(lumo::CommitUpdates(), -1);
  EXPECT_EQ(folder.Trace(), "CommitUpdates()");
}

}  // namespace
