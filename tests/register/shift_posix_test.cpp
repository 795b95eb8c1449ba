// register/shift_posix_test.cpp: a shift when STATE cannot be written, which the library does not report.
#include "register/till.h"

namespace {

using testing::HasSubstr;

class UnwrittenShift : public test::Till {
 protected:
  // What the register prints where no file can be written, and its status in brackets.
  std::string RunOnAFullDisk(const std::string &command) const {
    const std::string line = "(trap '' XFSZ; ulimit -f 0; " REGISTER_PROGRAM " --library " +
                             library.string() + " " + command + "; echo \"[$?]\") 2>&1 | cat";
    return test::Process("/bin/sh", {"-c", line}, fresh.path()).Wait().out;
  }
};

TEST_F(UnwrittenShift, IsNotCalledOpenOrClosed) {
  Configure();
  ASSERT_EQ(Run({"shift", "close"}).status, 0);
  EXPECT_EQ(RunOnAFullDisk("shift open 42"),
            "register: STATE could not be written: the shift is not open\n[3]\n");
  EXPECT_THAT(RunOnAFullDisk("--json shift open 42"),
              HasSubstr("{\"error\":\"STATE could not be written: the shift is not open\"}\n[3]\n"));
  ASSERT_EQ(Run({"shift", "open", "42"}).status, 0);
  EXPECT_EQ(RunOnAFullDisk("shift close"),
            "register: STATE could not be written: the shift is not closed\n[3]\n");
  EXPECT_EQ(Facts({"shift", "close"})["open"], false);
}

}  // namespace
