// The program itself: its first line, its commands, its complaints.
#include <gmock/gmock.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

struct Outcome {
  std::string output;
  int status = -1;
};

// Runs the program with the commands on its standard input, both its outputs in one.
Outcome Start(const std::string &arguments, const std::string &commands) {
  const std::string line =
      "printf '" + commands + "' | " + LOYALTY_SERVER_PROGRAM + " " + arguments + " 2>&1";
  Outcome run;
  FILE *pipe = popen(line.c_str(), "r");
  if (pipe == nullptr) return run;
  char buffer[4096];
  for (size_t count; (count = fread(buffer, 1, sizeof(buffer), pipe)) > 0;) run.output.append(buffer, count);
  run.status = WEXITSTATUS(pclose(pipe));
  return run;
}

TEST(Program, SaysWhereItListensAndDoesItsCommands) {
  const Outcome run = Start("--fault 'cut 5'", "fault\\ncard 1000000006\\nquit\\n");
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.output,
              testing::MatchesRegex(
                  "listening on 127\\.0\\.0\\.1:[0-9]+\nfault cut 5\n"
                  "1000000006  locked  account 6  GLOBAL 100\\.00  LOCAL 0\\.00  DISCOUNT 0\\.00\n"));
}

TEST(Program, ComplainsAboutWhatItCannotUse) {
  const std::pair<const char *, const char *> rows[] = {
      {"--fault explode", "no such fault: explode"},
      {"--address nowhere", "loyalty_server: "},
      {"--shop missing.json", "missing.json"},
      {"--global 101", "--global"},
      {"--log no/such/folder/log", "no/such/folder/log cannot be written"},
  };
  for (const auto &row : rows) {
    const Outcome run = Start(row.first, "quit\\n");
    EXPECT_NE(run.status, 0) << row.first;
    EXPECT_THAT(run.output, testing::HasSubstr(row.second)) << row.first;
    EXPECT_THAT(run.output, testing::Not(testing::HasSubstr("listening"))) << row.first;
  }
}

TEST(Program, ReadsItsShopFromAFile) {
  const std::filesystem::path file =
      std::filesystem::temp_directory_path() / ("loyalty_server_shop_" + std::to_string(getpid()) + ".json");
  std::ofstream(file) << R"({"cards":[{"number":"7","state":"active","local":5}]})";
  EXPECT_THAT(Start("--shop " + file.string(), "cards\\nquit\\n").output,
              testing::HasSubstr("7  active  account 1  GLOBAL 0.00  LOCAL 0.05  DISCOUNT 0.00\n"));
  std::ofstream(file) << R"({"card":[]})";
  const Outcome run = Start("--shop " + file.string(), "quit\\n");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, testing::HasSubstr("card: no such setting"));
  std::filesystem::remove(file);
}

TEST(Program, WarnsWhenReplaysAreAnsweredWithTheirOwnIds) {
  const char *warning = "warning: a replayed record is answered with its own id";
  EXPECT_THAT(Start("--no-resume-ids", "quit\\n").output, testing::HasSubstr(warning));
  EXPECT_THAT(Start("", "quit\\n").output, testing::Not(testing::HasSubstr("warning")));
}

TEST(Program, TellsEverythingInItsHelp) {
  const Outcome run = Start("--help", "");
  EXPECT_EQ(run.status, 0);
  for (const char *word : {"--port", "--shop", "--fault", "--quiet", "1000000001", "TOKEN7", "cut [BYTES]"}) {
    EXPECT_THAT(run.output, testing::HasSubstr(word));
  }
}

}  // namespace
