// api/update_calls_test.cpp: the update calls as the register calls them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lumo.h"
#include "support/folder.h"

namespace {

TEST(UpdateCalls, FailAndLeaveTheNextLineBehindTheirs) {
  const test::Folder folder;
  EXPECT_EQ(RunUpdater("pack"), -1);
  EXPECT_EQ(CommitUpdates(), -1);
  EXPECT_EQ(LUMOClean(), 0);
  EXPECT_EQ(folder.Trace(), "RunUpdater(\"pack\")CommitUpdates()LUMOClean()\n");
}

}  // namespace
