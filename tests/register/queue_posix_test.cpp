// A record is taken out of the queue only when nobody else can be writing it.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "register/till.h"

namespace {

class HeldQueue : public test::Till {};

TEST_F(HeldQueue, IsLeftAlone) {
  Write("OFFLINE", "rubbish\nmore\n");
  const int held = open((folder / "OFFLINE").c_str(), O_RDWR);
  ASSERT_EQ(flock(held, LOCK_EX), 0);
  const test::Outcome run = Run({"queue", "drop", "1", "--yes"});
  close(held);
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, testing::HasSubstr("another program holds it"));
  EXPECT_EQ(Read("OFFLINE"), "rubbish\nmore\n");
}

TEST_F(HeldQueue, StaysWhenTheFolderCannotBeWritten) {
  Write("OFFLINE", "rubbish\nmore\n");
  if (geteuid() == 0) {
    // Whom no right stops, a folder in the place of the new file does.
    std::filesystem::create_directory(folder / "OFFLINE.new");
  } else {
    std::filesystem::permissions(folder,
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  }
  const test::Outcome run = Run({"queue", "drop", "1", "--yes"});
  std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, testing::HasSubstr("register: cannot write "));
  EXPECT_EQ(Read("OFFLINE"), "rubbish\nmore\n");
}

}  // namespace
