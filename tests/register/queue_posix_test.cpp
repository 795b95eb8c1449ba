// register/queue_posix_test.cpp: a record is taken out of the queue only when nobody else can be writing it.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
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

TEST_F(HeldQueue, KeepsTheRecordThatCannotBeHandedOut) {
  const std::filesystem::path out = fresh.path() / "stdout";
  for (const char *rest : {"", "more\n"}) {
    const std::string all = std::string("rubbish\n") + rest;
    Write("OFFLINE", all);
    std::filesystem::remove(out);
    std::filesystem::create_symlink("/dev/full", out);
    const auto process = Start({"queue", "drop", "1", "--yes"});
    EXPECT_TRUE(test::Eventually([&] { return process->HasEnded(); }));
    std::filesystem::remove(out);
    const test::Outcome run = process->Wait();
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.err, testing::HasSubstr("cannot be handed out, so it stays in the queue\n"));
    EXPECT_EQ(Read("OFFLINE"), all);
    EXPECT_FALSE(Exists("OFFLINE.new"));
  }
}

TEST_F(HeldQueue, IsNotShownInVain) {
  const std::filesystem::path out = fresh.path() / "stdout";
  std::filesystem::create_symlink("/dev/full", out);
  const auto process = Start({"queue"});
  EXPECT_TRUE(test::Eventually([&] { return process->HasEnded(); }));
  std::filesystem::remove(out);
  const test::Outcome run = process->Wait();
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err, "register: standard output cannot be written\n");
}

TEST_F(HeldQueue, IsNotPrintedIntoWhenStandardOutputIsClosed) {
  Write("OFFLINE", "rubbish\nmore\n");
  const test::Outcome run = test::Process("/bin/sh",
                                          {"-c", "exec \"$0\" --library \"$1\" queue drop 1 --yes >&-",
                                           REGISTER_PROGRAM, library.string()},
                                          fresh.path())
                                .Wait();
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.err, testing::HasSubstr("cannot be handed out"));
  EXPECT_EQ(Read("OFFLINE"), "rubbish\nmore\n");
}

TEST_F(HeldQueue, KeepsOwnerRightsAndLink) {
  Configure();
  std::filesystem::create_directory(fresh.path() / "kept");
  for (const char *name : {"OFFLINE", "CONFIG"}) {
    const std::filesystem::path target = fresh.path() / "kept" / name;
    if (Exists(name)) std::filesystem::rename(folder / name, target);
    std::filesystem::create_symlink(target, folder / name);
  }
  Write("OFFLINE", "rubbish\nmore\n");
  for (const char *name : {"OFFLINE", "CONFIG"}) {
    const std::filesystem::path target = fresh.path() / "kept" / name;
    const bool is_alike = geteuid() != 0 || chown(target.c_str(), 1234, 2345) == 0;
    ASSERT_TRUE(is_alike);
    ASSERT_EQ(chmod(target.c_str(), 0642), 0);
    struct stat before = {}, after = {};
    ASSERT_EQ(stat(target.c_str(), &before), 0);
    const test::Outcome run =
        name[0] == 'O' ? Run({"queue", "drop", "1", "--yes"}) : Run({"configure", "--timeout", "7"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(std::filesystem::is_symlink(folder / name));
    ASSERT_EQ(stat(target.c_str(), &after), 0);
    EXPECT_NE(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
  }
  EXPECT_EQ(Read("OFFLINE"), "more\n");
  EXPECT_THAT(Read("CONFIG"), testing::HasSubstr("\"timeout\":7"));
  EXPECT_EQ(Run({"queue", "drop", "1", "--yes"}).status, 0);
  EXPECT_FALSE(std::filesystem::is_symlink(folder / "OFFLINE"));
  EXPECT_FALSE(std::filesystem::exists(fresh.path() / "kept" / "OFFLINE"));
}

TEST_F(HeldQueue, IsNeverCalledEmptyWhenItCannotBeRead) {
  Configure();
  const auto look = [&](const Words &words) {
    const test::Outcome run = Run(words);
    EXPECT_EQ(run.status, 3) << testing::PrintToString(words);
    EXPECT_THAT(run.err, testing::HasSubstr("OFFLINE cannot be read\n"));
    if (words[0] == "status") {
      EXPECT_THAT(run.out, testing::HasSubstr("  waiting     CANNOT BE READ\n"));
    } else {
      EXPECT_EQ(run.out, "");
    }
  };
  const auto look_at_all = [&] {
    for (const Words &words :
         {Words{"queue"}, {"journal", "--offline"}, {"status"}, {"queue", "drop", "1", "--yes"}}) {
      look(words);
    }
    const test::Outcome run = Run({"doctor"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, testing::HasSubstr("  trouble queue: what waits cannot be read\n"));
    EXPECT_THAT(run.out, testing::Not(testing::HasSubstr("nothing waits")));
  };
  std::filesystem::create_symlink("away", folder / "OFFLINE");
  look_at_all();
  std::filesystem::remove(folder / "OFFLINE");
  std::filesystem::create_directory(folder / "OFFLINE");
  look_at_all();
}

}  // namespace
