// register/end_posix_test.cpp: how the register ends when it is interrupted, and when the library crashes.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "register/till.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class End : public test::Till {
 protected:
  // A payment, and the signal when its request is sent. The server, visited, answers nothing before the
  // register has said what it does.
  test::Outcome InterruptAPayment(int signal) {
    Configure(R"("timeout":60)");
    Run({"balance", "--card", test::kRichCard});
    Run({"bill", "100"});
    std::filesystem::remove(folder / "TRACE.TXT");
    std::unique_ptr<test::Process> process;
    server.Visit([&](loyalty::Programme &) {
      process = Start({"pay", "--card", test::kRichCard});
      EXPECT_TRUE(test::Eventually([&] { return IsSent(); }));
      process->Signal(signal);
      EXPECT_TRUE(test::Eventually([&] { return !process->Err().empty(); }));
    });
    return process->Wait();
  }

  // Whether the trace, which the test removed, tells of a request.
  bool IsSent() const {
    return Exists("TRACE.TXT") && Read("TRACE.TXT").find("Sending buffer") != std::string::npos;
  }
};

TEST_F(End, WaitsForThePaymentThatRuns) {
  struct Row {
    int signal;
    int status;
  };
  for (const Row &row : {Row{SIGINT, 130}, Row{SIGTERM, 143}, Row{SIGHUP, 129}}) {
    const test::Outcome run = InterruptAPayment(row.signal);
    EXPECT_EQ(run.status, row.status);
    EXPECT_EQ(run.err, "register: interrupted; what runs is finished first\n");
    EXPECT_THAT(run.out, HasSubstr("SUCCESS"));
    EXPECT_THAT(Read("TRACE.TXT"), EndsWith("CloseTransaction()\nLUMOClean()\n"));
  }
  server.Visit([](loyalty::Programme &programme) { EXPECT_EQ(programme.payments().size(), 3U); });
}

TEST_F(End, ComesAtOnceWhenNothingRuns) {
  Configure();
  const std::filesystem::path input = fresh.path() / "stdin";
  ASSERT_EQ(mkfifo(input.c_str(), 0600), 0);
  const int held_open = open(input.c_str(), O_RDWR);
  const auto process = Start({"interactive"}, "shift open 42\n");
  EXPECT_TRUE(test::Eventually([&] { return process->Out().find("shift open") != std::string::npos; }));
  process->Signal(SIGTERM);
  const test::Outcome run = process->Wait();
  close(held_open);
  EXPECT_EQ(run.status, 143);
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(Read("TRACE.TXT"), EndsWith("LUMOClean()\n"));
}

TEST_F(End, OfACrashIsTold) {
  Configure(R"("timeout":60)");
  Run({"balance", "--card", test::kRichCard});
  server.SetFault(loyalty::ParseFault("silence"));
  Run({"bill", "100"});
  std::filesystem::remove(folder / "TRACE.TXT");
  const auto process = Start({"pay", "--card", test::kRichCard});
  EXPECT_TRUE(test::Eventually([&] { return IsSent(); }));
  process->Signal(SIGSEGV);
  const test::Outcome run = process->Wait();
  EXPECT_EQ(run.status, 4);
  EXPECT_THAT(run.err, HasSubstr("inside PaymentProc\n"));
  EXPECT_THAT(run.err, HasSubstr("That is a fault of the library"));
  EXPECT_THAT(run.err, HasSubstr("ask by its RRN"));
}

TEST_F(End, OfItsTerminalIsNotItsOwnUnderNohup) {
  Configure();
  Write("TRACE.TXT", "");
  const std::string line =
      "trap '' HUP; exec " REGISTER_PROGRAM " --library '" + library.string() + "' trace --follow";
  test::Process process("/bin/sh", {"-c", line}, fresh.path());
  EXPECT_TRUE(test::Eventually([&] { return process.Out().find("how it ended") != std::string::npos; }));
  process.Signal(SIGHUP);
  EXPECT_EQ(Run({"balance", "--card", test::kRichCard}).status, 0);
  EXPECT_TRUE(test::Eventually([&] { return process.Out().find("BALANCE") != std::string::npos; }));
  process.Signal(SIGTERM);
  EXPECT_EQ(process.Wait().status, 143);
}

// The system ends a process that reads a file behind its end.
TEST_F(End, InALibraryFileThatIsCutShortIsTold) {
  Configure();
  for (const uintmax_t part : {uintmax_t{2}, uintmax_t{4}, uintmax_t{8}}) {
    std::filesystem::copy_file(LUMO_LIBRARY_FILE, library, std::filesystem::copy_options::overwrite_existing);
    std::filesystem::resize_file(library, std::filesystem::file_size(library) / part);
    for (const Words &words : {Words{"balance", "--card", "1"}, Words{"queue", "replay"}}) {
      const test::Outcome run = Run(words);
      EXPECT_EQ(run.status, 3);
      EXPECT_THAT(run.err, StartsWith("register: cannot load the library: "));
      EXPECT_EQ(run.out, "");
    }
    EXPECT_THAT(Facts({"shift", "close"}, 3)["error"], StartsWith("cannot load the library: "));
  }
}

}  // namespace
