// register/completion_posix_test.cpp: the shell completes the register's words.
#include "register/till.h"

namespace {

class Completion : public test::Till {
 protected:
  // What a shell offers behind these words, the last of which is not whole.
  std::string Choices(const std::string &words) const {
    const std::string script = std::string("eval \"$('") + REGISTER_PROGRAM +
                               "' completion bash)\"; COMP_WORDS=(" + words +
                               " ); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _register; echo ${COMPREPLY[*]}";
    const test::Outcome run = test::Process("/bin/bash", {"-c", script}, fresh.path()).Wait();
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    return run.out;
  }
};

TEST_F(Completion, OffersCommandsAndOptions) {
  EXPECT_EQ(Choices("register jou"), "journal\n");
  EXPECT_EQ(Choices("register --vers"), "--version\n");
  EXPECT_EQ(Choices("register --json queue ''"), "--help list replay drop clear\n");
  EXPECT_EQ(Choices("register queue drop --r"), "--rrn\n");
  EXPECT_EQ(Choices("register pay --s"), "--spend\n");
  EXPECT_EQ(Choices("register teapo"), "\n");
}

TEST_F(Completion, KnowsItsShells) {
  EXPECT_EQ(Run({"completion", "teapot"}).status, 2);
  EXPECT_EQ(Run({"completion"}).status, 2);
}

}  // namespace
