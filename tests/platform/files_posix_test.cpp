// platform/files_posix_test.cpp: what only this implementation can get wrong: locks between processes, links,
// descriptors, disks that fill.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "platform/open.h"
#include "platform/own_folder.h"
#include "platform/platform.h"

namespace lumo {
namespace {

namespace fs = std::filesystem;
using test::Open;

class PosixFiles : public test::OwnFolder {};

// Runs `call` in a process of its own and gives what it returns.
template <typename Call>
int InAnotherProcess(Call call) {
  const pid_t child = fork();
  if (child == 0) _exit(call());
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
  return WEXITSTATUS(status);
}

TEST_F(PosixFiles, AnOpenFileIsHeldAgainstOtherProcesses) {
  const HANDLE file = Open(u"file", GENERIC_WRITE, CREATE_ALWAYS);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  const auto attempt = [] {
    return Open(u"file", GENERIC_READ, OPEN_EXISTING) == INVALID_HANDLE_VALUE
               ? static_cast<int>(GetLastError())
               : 0;
  };
  EXPECT_EQ(InAnotherProcess(attempt), 32);
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(InAnotherProcess(attempt), 0);
}

TEST_F(PosixFiles, AProcessThatDiesLeavesNothingHeld) {
  EXPECT_EQ(InAnotherProcess(
                [] { return Open(u"file", GENERIC_WRITE, CREATE_ALWAYS) == INVALID_HANDLE_VALUE ? 1 : 0; }),
            0);
  const HANDLE file = Open(u"file", GENERIC_WRITE, OPEN_EXISTING);
  EXPECT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(PosixFiles, HandlesAreNotInheritedByPrograms) {
  const HANDLE file = Open(u"file", GENERIC_WRITE, CREATE_ALWAYS);
  bool found = false;
  for (int descriptor = 3; descriptor < 64; ++descriptor) {
    struct stat opened, named;
    if (fstat(descriptor, &opened) != 0 || stat("file", &named) != 0 || opened.st_ino != named.st_ino ||
        opened.st_dev != named.st_dev) {
      continue;
    }
    found = true;
    EXPECT_EQ(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
  }
  EXPECT_TRUE(found);
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(PosixFiles, ARefusedCreateAlwaysHasNotEmptiedTheFile) {
  Write("file", "bytes");
  const int held = open("file", O_RDONLY);
  ASSERT_EQ(flock(held, LOCK_EX), 0);
  EXPECT_EQ(Open(u"file", GENERIC_WRITE, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 32u);
  close(held);
  EXPECT_EQ(Read("file"), "bytes");
}

FileName NameOf(const WCHAR *name) {
  FileName converted;
  MakeFileName(name, &converted);
  return converted;
}

TEST_F(PosixFiles, AnAppendMeetsNoLockAndTakesNone) {
  Write("file", "one");
  const HANDLE file = Open(u"file", GENERIC_WRITE, OPEN_EXISTING);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  const FileName name = NameOf(u"file");
  EXPECT_TRUE(AppendToFile(&name, "two", 3));
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(Read("file"), "onetwo");
}

TEST_F(PosixFiles, AnAppendClosesWhatItOpens) {
  const FileName name = NameOf(u"file");
  const int before = open(".", O_RDONLY);
  close(before);
  for (int i = 0; i < 10; ++i) EXPECT_TRUE(AppendToFile(&name, "x", 1));
  const int after = open(".", O_RDONLY);
  close(after);
  EXPECT_EQ(after, before);
}

TEST_F(PosixFiles, AnAppendThatDoesNotFitIsSaid) {
  const FileName name = NameOf(u"/dev/full");
  EXPECT_FALSE(AppendToFile(&name, "x", 1));
  EXPECT_EQ(InAnotherProcess([] {
              signal(SIGXFSZ, SIG_IGN);
              const rlimit limit = {5, 5};
              setrlimit(RLIMIT_FSIZE, &limit);
              const FileName file = NameOf(u"file");
              return AppendToFile(&file, "bytes and more", 14) ? 1 : 0;
            }),
            0);
  EXPECT_EQ(Read("file"), "bytes");
}

// A pipe that is full until the third signal has come.
int pipe_end;
volatile sig_atomic_t alarms;

void DrainThePipeAtLast(int) {
  char bytes[65536];
  // Not at the next one: then the append may have been made.
  if (++alarms != 3) return;
  while (read(pipe_end, bytes, sizeof bytes) > 0) {
  }
}

TEST_F(PosixFiles, AnInterruptedAppendIsCarriedOn) {
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  pipe_end = open("pipe", O_RDWR | O_NONBLOCK);
  const std::string filling(4096, 'x');
  while (write(pipe_end, filling.data(), filling.size()) > 0) {
  }
  struct sigaction action = {};
  action.sa_handler = DrainThePipeAtLast;
  ASSERT_EQ(sigaction(SIGALRM, &action, nullptr), 0);
  const itimerval every_so_often = {{0, 5000}, {0, 5000}};
  ASSERT_EQ(setitimer(ITIMER_REAL, &every_so_often, nullptr), 0);
  const FileName name = NameOf(u"pipe");
  EXPECT_TRUE(AppendToFile(&name, "bytes", 5));
  const itimerval never = {};
  setitimer(ITIMER_REAL, &never, nullptr);
  EXPECT_GE(alarms, 3);
  char bytes[8];
  EXPECT_EQ(read(pipe_end, bytes, sizeof bytes), 5);
  close(pipe_end);
}

TEST_F(PosixFiles, AFileIsNotCopiedOntoItselfUnderAnotherName) {
  Write("file", "bytes");
  fs::create_hard_link("file", "second");
  fs::create_symlink("file", "third");
  for (const WCHAR *name : {u"second", u"third", u".\\file"}) {
    EXPECT_FALSE(CopyFileW(u"file", name, 0));
    EXPECT_EQ(GetLastError(), 32u);
  }
  EXPECT_EQ(Read("file"), "bytes");
}

TEST_F(PosixFiles, ALinkThatLeadsNowhereIsAMissingFile) {
  fs::create_symlink("nowhere", "link");
  EXPECT_EQ(Open(u"link", GENERIC_READ, OPEN_EXISTING), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_EQ(Open(u"link", GENERIC_WRITE, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetFileAttributesW(u"link"), INVALID_FILE_ATTRIBUTES);
}

TEST_F(PosixFiles, AFullDiskIsSaid) {
  if (!fs::exists("/dev/full")) {
    FAIL() << "this host has no /dev/full";
  }
  const HANDLE file = Open(u"/dev/full", GENERIC_WRITE, OPEN_EXISTING);
  ASSERT_NE(file, INVALID_HANDLE_VALUE);
  DWORD written = 1;
  EXPECT_FALSE(WriteFile(file, "x", 1, &written, nullptr));
  EXPECT_EQ(GetLastError(), 112u);
  EXPECT_EQ(written, 0u);
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(PosixFiles, ACopyThatDoesNotFitLeavesNoHalfFile) {
  Write("file", std::string(100000, 'x'));
  EXPECT_EQ(InAnotherProcess([] {
              signal(SIGXFSZ, SIG_IGN);
              const rlimit limit = {50000, 50000};
              setrlimit(RLIMIT_FSIZE, &limit);
              return CopyFileW(u"file", u"new", 0) ? 0 : static_cast<int>(GetLastError());
            }),
            112);
  EXPECT_FALSE(fs::exists("new"));
  EXPECT_EQ(Read("file").size(), 100000u);
}

TEST_F(PosixFiles, TooManyOpenFilesAreSaid) {
  EXPECT_EQ(InAnotherProcess([] {
              const rlimit limit = {3, 3};
              setrlimit(RLIMIT_NOFILE, &limit);
              return Open(u"file", GENERIC_WRITE, CREATE_ALWAYS) == INVALID_HANDLE_VALUE
                         ? static_cast<int>(GetLastError())
                         : 0;
            }),
            4);
}

TEST_F(PosixFiles, NamesThatCannotBeAreRefused) {
  const std::u16string too_long(260, u'a'), too_long_a_part(200, u'ж');
  EXPECT_EQ(Open(too_long.c_str(), GENERIC_WRITE, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 206u);
  EXPECT_EQ(Open(too_long_a_part.c_str(), GENERIC_WRITE, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 206u);
  EXPECT_EQ(Open(nullptr, GENERIC_WRITE, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 3u);
  for (const WCHAR *name : {too_long.c_str(), too_long_a_part.c_str(), static_cast<const WCHAR *>(nullptr)}) {
    FileName converted;
    MakeFileName(name, &converted);
    EXPECT_FALSE(AppendToFile(&converted, "x", 1));
  }
  EXPECT_TRUE(fs::is_empty("."));
}

TEST_F(PosixFiles, ManyProcessesNeverLoseARecord) {
  // Each takes the file when it is free, appends one line and lets it go.
  constexpr int kProcesses = 8, kLines = 50;
  pid_t children[kProcesses];
  for (pid_t &child : children) {
    child = fork();
    if (child != 0) continue;
    for (int line = 0; line < kLines;) {
      const HANDLE file = Open(u"file", GENERIC_WRITE, OPEN_ALWAYS);
      if (file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_SHARING_VIOLATION) continue;
      if (file == INVALID_HANDLE_VALUE) _exit(1);
      DWORD written = 0;
      SetFilePointer(file, 0, nullptr, FILE_END);
      if (!WriteFile(file, "line\n", 5, &written, nullptr)) _exit(1);
      CloseHandle(file);
      ++line;
    }
    _exit(0);
  }
  for (const pid_t child : children) {
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(Read("file").size(), 5u * kProcesses * kLines);
}

TEST_F(PosixFiles, OfManyMovesToOneNameOneWins) {
  constexpr int kProcesses = 8;
  pid_t children[kProcesses];
  for (int i = 0; i < kProcesses; ++i) Write("file" + std::to_string(i), std::to_string(i));
  for (int i = 0; i < kProcesses; ++i) {
    children[i] = fork();
    if (children[i] != 0) continue;
    const WCHAR name[] = {u'f', u'i', u'l', u'e', static_cast<WCHAR>(u'0' + i), 0};
    _exit(MoveFileW(name, u"target") ? 0 : static_cast<int>(GetLastError()));
  }
  int moved = 0;
  for (const pid_t child : children) {
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 0) {
      ++moved;
    } else {
      EXPECT_EQ(WEXITSTATUS(status), 183);
    }
  }
  EXPECT_EQ(moved, 1);
  EXPECT_EQ(std::distance(fs::directory_iterator("."), fs::directory_iterator()), kProcesses);
}

}  // namespace
}  // namespace lumo
