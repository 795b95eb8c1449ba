// register/fatal_end_test.cpp: the library ends the process: it says so.
#include "register/till.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class FatalEnd : public test::Till {};

TEST_F(FatalEnd, OfALibraryThatEndsTheProcessIsTold) {
  Configure();
  const test::Outcome run = Run({"balance", "--card", std::string(1100, '7')});
  EXPECT_EQ(run.status, 4);
  EXPECT_THAT(run.err, HasSubstr("register: the library ended the process inside CreateTransaction\n"
                                 "  the trace ends: ERROR: ASSERT IN "));
  EXPECT_THAT(run.err, HasSubstr("look at the card number"));
  EXPECT_THAT(Read("TRACE.TXT"), Not(HasSubstr("LUMOClean")));
}

TEST_F(FatalEnd, AtABreakIntoTheDebuggerIsTold) {
  Configure();
  Write("LOG", R"({"request":{"type":"ACTIVATION","requestDate":"2012-12-05T10:00:00Z","cardNum":"7"},)"
               R"("activation":{"activationType":"NONE"}})"
               "\n");
  const test::Outcome run = Run({"report", "detailed", "--all"});
  EXPECT_EQ(run.status, 4);
  EXPECT_THAT(run.err, HasSubstr("inside GenerateReport\n"));
  EXPECT_THAT(run.err, HasSubstr("take its line out of LOG"));
}

}  // namespace
