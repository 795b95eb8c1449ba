// register/interactive_test.cpp: commands one after another.
#include "register/till.h"

namespace {

using testing::HasSubstr;

class Interactive : public test::Till {};

TEST_F(Interactive, ListsItsCommands) {
  const test::Outcome run = Run({"interactive"}, "help\nquit\nfoo\n");
  EXPECT_EQ(run.status, 0);
  for (const char *word : {"  pay ", "  journal ", "  card ", "  quit "}) {
    EXPECT_THAT(run.out, HasSubstr(word));
  }
  EXPECT_EQ(run.err, "");
}

TEST_F(Interactive, TellsOfOneCommand) {
  EXPECT_THAT(Run({"interactive"}, "help balance\n").out, HasSubstr("--card"));
  const test::Outcome run = Run({"interactive"}, "help teapot\n");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "register: no such command: teapot\n");
}

TEST_F(Interactive, KeepsTheCardAndEndsInOrder) {
  Configure();
  const test::Outcome run = Run({"interactive"}, "card 1000000001\r\n\r\nbalance\r\n");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("balance 700.00"));
  EXPECT_THAT(Read("TRACE.TXT"), testing::ContainsRegex("LUMOClean..\r?\n$"));
}

TEST_F(Interactive, GoesOnAfterALineItCannotUse) {
  Configure();
  const test::Outcome run = Run({"interactive"}, "teapot\nbalance\nshift open 42\n");
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr("teapot"));
  EXPECT_THAT(run.err, HasSubstr("register: which card? --card NUMBER\n"));
  EXPECT_THAT(run.out, HasSubstr("shift open"));
}

TEST_F(Interactive, RefusesAQuoteThatIsNotClosed) {
  Configure();
  const test::Outcome run = Run({"interactive"}, "configure --header \"a b\nconfigure --footer 'c d'\n");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "register: a quote is not closed: configure --header \"a b\n");
  EXPECT_THAT(Read("CONFIG"), HasSubstr("\"receiptHeader\":\"Магазин\",\"receiptFooter\":\"c d\""));
  // An apostrophe is a letter.
  EXPECT_EQ(Run({"interactive"}, "configure --footer O'Hara\n").status, 0);
  EXPECT_THAT(Read("CONFIG"), HasSubstr("\"receiptFooter\":\"O'Hara\""));
}

TEST_F(Interactive, TellsAProgramOneLineForEachCommand) {
  Configure();
  const test::Outcome run = Run({"--json", "interactive"}, "message -405\nbalance\n");
  EXPECT_EQ(run.out,
            "{\"code\":-405,\"message\":\"Ошибка с сервера\"}\n{\"error\":\"which card? --card NUMBER\"}\n");
}

}  // namespace
