// register/end_windows_test.cpp: how the register ends at Ctrl-C and Ctrl-Break on its console.
#include "register/till.h"
#include "support/wine.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;

BOOL WINAPI StayAlive(DWORD) {
  return TRUE;
}

class ConsoleEnd : public test::Till {
 protected:
  // The registers of this test, and the test itself, have a console of their own: whoever is at it gets what
  // is pressed there.
  ConsoleEnd() {
    FreeConsole();
    EXPECT_TRUE(AllocConsole()) << GetLastError();
    EXPECT_TRUE(SetConsoleCtrlHandler(StayAlive, TRUE));
  }
  ~ConsoleEnd() override { FreeConsole(); }

  static void Press(int event) {
    EXPECT_TRUE(GenerateConsoleCtrlEvent(static_cast<DWORD>(event), 0)) << GetLastError();
  }

  bool IsSent() const {
    return Exists("TRACE.TXT") && Read("TRACE.TXT").find("Sending buffer") != std::string::npos;
  }
};

TEST_F(ConsoleEnd, WaitsForThePaymentThatRuns) {
  Configure();
  Run({"balance", "--card", test::kRichCard});
  Run({"bill", "100"});
  server.SetFault(loyalty::ParseFault("delay 1000"));
  std::vector<int> events = {CTRL_C_EVENT};
  if (!test::IsUnderWine()) events.push_back(CTRL_BREAK_EVENT);  // Wine 8 sends none: the call fails there
  for (const int event : events) {
    std::filesystem::remove(folder / "TRACE.TXT");
    const auto process = Start({"pay", "--card", test::kRichCard});
    EXPECT_TRUE(test::Eventually([&] { return IsSent(); }));
    Press(event);
    const test::Outcome run = process->Wait();
    EXPECT_EQ(run.status, 130);
    EXPECT_EQ(run.err, "register: interrupted; what runs is finished first\n");
    EXPECT_THAT(run.out, HasSubstr("SUCCESS"));
    EXPECT_THAT(Read("TRACE.TXT"), EndsWith("CloseTransaction()\r\nLUMOClean()\r\n"));
  }
  server.Visit(
      [&events](loyalty::Programme &programme) { EXPECT_EQ(programme.payments().size(), events.size()); });
}

TEST_F(ConsoleEnd, ComesAtOnceWhenNothingRuns) {
  Configure();
  Run({"balance", "--card", test::kRichCard});
  const auto process = Start({"trace", "--follow"});
  EXPECT_TRUE(test::Eventually([&] { return process->Out().find("BALANCE") != std::string::npos; }));
  Press(CTRL_C_EVENT);
  const test::Outcome run = process->Wait();
  EXPECT_EQ(run.status, 130);
  EXPECT_EQ(run.err, "");
}

}  // namespace
