// What holds for the whole command line.
#include "register/till.h"

namespace {

using testing::HasSubstr;

class CommandLine : public test::Till {};

TEST_F(CommandLine, TellsTheVersions) {
  EXPECT_EQ(Run({"--version"}).out, "register 1.1.0\nlibrary 1.1.0\n");
  EXPECT_EQ(Facts({"--version"}), nlohmann::json({{"register", "1.1.0"}, {"library", "1.1.0"}}));
  std::filesystem::remove(library);
  const test::Outcome run = Run({"--version"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "register 1.1.0\nlibrary not found\n");
}

TEST_F(CommandLine, TellsItsExitStatuses) {
  const test::Outcome run = Run({"--help"});
  EXPECT_EQ(run.status, 0);
  for (const char *line : {"Exit status:", "  1    refused", "  2    the", "  3    a file",
                           "  4    the library", "  130  interrupted"}) {
    EXPECT_THAT(run.out, HasSubstr(line));
  }
}

TEST_F(CommandLine, ComplainsAboutWhatItDoesNotUnderstand) {
  const Words lines[] = {{}, {"teapot"}, {"--teapot"}, {"message", "1", "2"}, {"message", "1", "--teapot"}};
  for (const Words &words : lines) {
    const test::Outcome run = Run(words);
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err, "");
    EXPECT_EQ(run.out, "");
  }
}

}  // namespace
