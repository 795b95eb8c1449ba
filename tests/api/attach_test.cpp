// api/attach_test.cpp: the folder of the library file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "foundation/files.h"
#include "foundation/module_path.h"
#include "lumo.h"
#include "support/folder.h"

namespace {

using Wide = std::basic_string<lumo::WCHAR>;

// In a test program the module is the program itself.
TEST(Attach, FindsTheFolderOfTheModule) {
  const test::Folder elsewhere;
  const Wide before = lumo::ModuleDirectory();
  EXPECT_EQ(DllAttach(nullptr), 1);
  const Wide folder = lumo::ModuleDirectory();
  EXPECT_NE(folder, before);
  ASSERT_FALSE(folder.empty());
  EXPECT_EQ(folder.back(), lumo::kPathSeparator);
  EXPECT_TRUE(lumo::FileExists("api_test") || lumo::FileExists("api_test.exe"));
}

TEST(Attach, FindsTheSameFolderEachTime) {
  const test::Folder elsewhere;
  EXPECT_EQ(DllAttach(nullptr), 1);
  const Wide folder = lumo::ModuleDirectory();
  EXPECT_EQ(DllAttach(nullptr), 1);
  EXPECT_EQ(folder, lumo::ModuleDirectory());
}

TEST(Attach, LeavesNoTrace) {
  const test::Folder folder;
  EXPECT_EQ(DllAttach(nullptr), 1);
  EXPECT_FALSE(folder.Exists("TRACE.TXT"));
}

}  // namespace
