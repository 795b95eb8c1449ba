// register/place_posix_test.cpp: which library file the register takes when nobody names one.
#include "register/till.h"

namespace {

using testing::HasSubstr;

class Place : public test::Till {
 protected:
  // The folder that `status` tells of, of a register that is called by this path.
  std::string FolderOf(const std::filesystem::path &program) const {
    const test::Outcome run = test::Process(program, {"--json", "status"}, fresh.path()).Wait();
    EXPECT_EQ(run.status, 0) << run.err;
    return nlohmann::json::parse(run.out).value("folder", "");
  }
};

TEST_F(Place, IsTheFolderThatTheRegisterWasCalledIn) {
  Configure();
  const std::filesystem::path link = folder / "register";
  std::filesystem::create_symlink(REGISTER_PROGRAM, link);
  EXPECT_EQ(FolderOf(link), folder);
  // Of an installed library a terminal has a link, under the name that says the version.
  std::filesystem::rename(library, folder / "liblumo.so.1");
  EXPECT_EQ(FolderOf(link), folder);
  std::filesystem::remove(folder / "liblumo.so.1");
  const test::Outcome run = test::Process(link, {"balance", "--card", "1"}, fresh.path()).Wait();
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, HasSubstr((folder / "liblumo.so: ").string()));
}

}  // namespace
