// register/words_test.cpp: what holds for the whole command line.
#include <fstream>
#include <iterator>
#include <sstream>

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
  std::ofstream(library) << "none";
  EXPECT_EQ(Run({"--version"}).out, "register 1.1.0\nlibrary cannot be loaded\n");
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

TEST_F(CommandLine, NamesTheWordThatIsNoCommand) {
  EXPECT_THAT(Run({"teapot"}).err, HasSubstr("there is no command teapot\n"));
  EXPECT_EQ(Facts({"teapot", "5"}, 2)["error"], "there is no command teapot");
}

// A value would look like the sum that is spent.
TEST_F(CommandLine, TakesNoValuesForFlags) {
  Configure();
  const auto before = Files();
  EXPECT_EQ(Facts({"pay", "--card", "1", "--spend=50"}, 2)["error"], "--spend takes no value");
  EXPECT_EQ(Run({"pay", "--card", "1", "--confirm=false"}).status, 2);
  EXPECT_EQ(Run({"queue", "drop", "1", "--yes=1"}).status, 2);
  EXPECT_THAT(Run({"interactive"}, "pay --card 1 --spend=50\n").err, HasSubstr("--spend takes no value\n"));
  EXPECT_EQ(Files(), before);
}

TEST_F(CommandLine, TakesNoTagThatIsNoPartOfAName) {
  Configure();
  for (const std::string &tag : {std::string("a/b"), std::string("..\\b"), std::string(201, 'x')}) {
    const test::Outcome run = Run({"--tag", tag, "balance", "--card", "1"});
    EXPECT_EQ(run.status, 2) << tag;
    EXPECT_THAT(run.err, HasSubstr("--tag: ")) << tag;
  }
}

// Every command and option of the help, down to the last command.
TEST_F(CommandLine, HasADocumentOfEveryCommandAndOption) {
  std::ifstream file(REGISTER_SOURCE_DIR "/docs/register.md", std::ios::binary);
  const std::string document{std::istreambuf_iterator<char>(file), {}};
  ASSERT_FALSE(document.empty());
  std::istringstream help(Run({"--help"}).out);
  bool is_command = false;
  int commands = 0;
  for (std::string line; std::getline(help, line);) {
    is_command = line == "Subcommands:" || (is_command && !line.empty());
    if (line.rfind("  --", 0) == 0 || line.rfind("  -l,", 0) == 0) {
      const std::string option =
          line.substr(line.find("--"), line.find(' ', line.find("--")) - line.find("--"));
      EXPECT_THAT(document, HasSubstr("| `" + option));
    }
    if (!is_command || line.rfind("  ", 0) != 0 || line[2] == ' ') continue;
    ++commands;
    EXPECT_THAT(document, HasSubstr("`" + line.substr(2, line.find(' ', 2) - 2))) << line;
  }
  EXPECT_GT(commands, 15);
}

}  // namespace
