// register/full_disk_posix_test.cpp: a full disk, which the library does not report everywhere.
#include "register/till.h"

namespace {

using testing::HasSubstr;

class FullDisk : public test::Till {
 protected:
  // What the register prints where no file can be written, and its status in brackets.
  std::string RunOnAFullDisk(const std::string &command) const {
    const std::string line = "(trap '' XFSZ; ulimit -f 0; " REGISTER_PROGRAM " --library " +
                             library.string() + " " + command + "; echo \"[$?]\") 2>&1 | cat";
    return test::Process("/bin/sh", {"-c", line}, fresh.path()).Wait().out;
  }
};

TEST_F(FullDisk, OpensAndClosesNoShift) {
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

TEST_F(FullDisk, TakesNoBill) {
  Configure();
  ASSERT_EQ(Run({"bill", "100"}).status, 0);
  EXPECT_EQ(RunOnAFullDisk("bill 200"), "register: BILL.JSN could not be written: do not pay it\n[3]\n");
  EXPECT_EQ(Facts({"bill", "200"})["total"], 20000);
}

}  // namespace
