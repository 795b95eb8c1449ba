// register/doctor_posix_test.cpp: `register doctor` where /proc tells who uses what.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include "register/till.h"

namespace {

using testing::HasSubstr;

class Holders : public test::Till {};

TEST_F(Holders, AreNamed) {
  Configure();
  ASSERT_EQ(Run({"balance", "--card", test::kRichCard}).status, 0);
  const std::string self = " (" + std::to_string(getpid()) + ")";
  const int state = open((folder / "STATE").c_str(), O_RDONLY);
  const test::Outcome reads = Run({"doctor"});
  EXPECT_EQ(reads.status, 0) << reads.out;
  EXPECT_THAT(reads.out, testing::ContainsRegex("  warning holders: .* \\(" + std::to_string(getpid()) +
                                                "\\) uses STATE\n"));
  ASSERT_EQ(flock(state, LOCK_EX), 0);
  const test::Outcome locks = Run({"doctor"});
  EXPECT_EQ(locks.status, 1) << locks.out;
  EXPECT_THAT(locks.out, HasSubstr(self + " holds STATE, which the library cannot open meanwhile\n"));
  close(state);
  EXPECT_EQ(Run({"doctor"}).status, 0);
}

TEST_F(Holders, MayBeAnotherRegister) {
  Configure();
  ASSERT_EQ(Run({"balance", "--card", test::kRichCard}).status, 0);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
    close(ends[1]);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    execl(REGISTER_PROGRAM, REGISTER_PROGRAM, "--library", library.c_str(), "interactive", nullptr);
    _exit(127);
  }
  close(ends[0]);
  const std::string line = "message 0\n";
  ASSERT_EQ(write(ends[1], line.data(), line.size()), static_cast<ssize_t>(line.size()));
  const std::string said =
      "  warning holders: register (" + std::to_string(child) + ") uses " + library.filename().string();
  EXPECT_TRUE(test::Eventually([&] { return Run({"doctor"}).out.find(said) != std::string::npos; }));
  close(ends[1]);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(Run({"doctor"}).out.find("holders"), std::string::npos);
}

TEST_F(Holders, DoNotCountThroughALinkedLibraryFile) {
  const std::filesystem::path shared = fresh.path() / "shared.so";
  std::filesystem::rename(library, shared);
  std::filesystem::create_symlink(shared, library);
  Configure();
  ASSERT_EQ(Run({"balance", "--card", test::kRichCard}).status, 0);
  EXPECT_EQ(Run({"doctor"}).status, 0);
}

TEST(Folder, MayForbidEverything) {
  const test::FreshFolder outputs;
  const test::Outcome run =
      test::Process(REGISTER_PROGRAM, {"--library", "/proc/liblumo.so", "doctor"}, outputs.path()).Wait();
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out, HasSubstr("  trouble library: there is no /proc/liblumo.so\n"));
  EXPECT_THAT(run.out, HasSubstr("  trouble folder: no file can be made in /proc\n"));
  EXPECT_THAT(run.out, HasSubstr("  trouble disk: it is full: records and state cannot be kept\n"));
}

}  // namespace
