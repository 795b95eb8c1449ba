// register/status_test.cpp: a glance at the terminal, from its files alone.
#include "register/till.h"
#include "support/scripted_server.h"

namespace {

using testing::HasSubstr;

class Status : public test::Till {};

TEST_F(Status, TellsHowTheTerminalStands) {
  const std::string away = "http://127.0.0.1:" + std::to_string(test::UnusedPort()) + "/ws";
  Configure("\"serverAltAddr\":\"" + away + "\"");
  Write("STATE",
        R"({"reqId":"1234512120500008","shiftId":"42","shiftOpenDate":"2012-12-05T08:00:00Z","offline":1,)"
        R"("shiftState":1,"update":1})");
  Write("LOG", "{}\n{}\n");
  Write("OFFLINE", "{}\n{\"torn");
  const auto before = Files();
  const test::Outcome run = Run({"status"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "  folder      " + folder.u8string() +
                         "\n"
                         "  settings    CONFIG\n"
                         "  terminal    12345\n"
                         "  server      " +
                         ServerAddress() +
                         "  answers\n"
                         "  alternate   " +
                         away +
                         "  DOES NOT ANSWER\n"
                         "  shift       open since 2012-12-05T08:00:00Z, id 42\n"
                         "  last RRN    1234512120500008\n"
                         "  mode        OFFLINE\n"
                         "  log         2 records\n"
                         "  waiting     1 offline records\n"
                         "  update      announced by the server\n");
  EXPECT_EQ(Files(), before);
}

TEST_F(Status, TellsAProgram) {
  Configure();
  Write("STATE", R"({"reqId":"1234512120500008","shiftCloseDate":"2012-12-05T18:00:00Z","shiftState":0})");
  const auto before = Files();
  EXPECT_EQ(Facts({"status"}),
            nlohmann::json(
                {{"folder", folder.u8string()},
                 {"settings", "CONFIG"},
                 {"terminal", "12345"},
                 {"server", {{"address", ServerAddress()}, {"usable", true}, {"answers", true}}},
                 {"alternate", {{"address", ""}, {"usable", false}, {"answers", false}}},
                 {"shift", {{"open", false}, {"id", ""}, {"opened", ""}, {"closed", "2012-12-05T18:00:00Z"}}},
                 {"lastRrn", "1234512120500008"},
                 {"offline", false},
                 {"log", 0},
                 {"waiting", 0},
                 {"updateAnnounced", false}}));
  EXPECT_EQ(Files(), before);
}

TEST_F(Status, SaysWhatCannotBeRead) {
  EXPECT_THAT(Run({"status"}).out, HasSubstr("settings    NONE that can be read"));
  EXPECT_EQ(Run({"status"}).status, 3);
  EXPECT_EQ(Run({"status"}).err, "register: there is no CONFIG.JSN and no CONFIG\n");
  Write("CONFIG", "{");
  Write("STATE", "[");
  EXPECT_EQ(Run({"status"}).err, "register: the settings cannot be read; STATE cannot be read\n");
  std::filesystem::remove(folder / "STATE");
  Configure("", "http://example:80/");
  EXPECT_EQ(Run({"status"}).status, 0);
  EXPECT_THAT(Run({"status"}).out, HasSubstr("http://example:80/  NOT USABLE"));
  Write("STATE", "{\"shiftSt");
  EXPECT_THAT(Run({"status"}).out, HasSubstr("shift       STATE CANNOT BE READ"));
  EXPECT_EQ(Run({"status"}).status, 3);
  EXPECT_EQ(Run({"status"}).err, "register: STATE cannot be read\n");
  const std::filesystem::path elsewhere = folder / "none" / "liblumo.so";
  for (const char *command : {"status", "journal", "queue"}) {
    const test::Outcome run = test::Process(std::filesystem::u8path(REGISTER_PROGRAM),
                                            {"-l", elsewhere.u8string(), command}, fresh.path())
                                  .Wait();
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err, "register: there is no folder " + elsewhere.parent_path().u8string() + "\n");
  }
  for (const std::string &word : {folder.u8string(), std::string()}) {
    const test::Outcome run =
        test::Process(std::filesystem::u8path(REGISTER_PROGRAM), {"--library", word, "status"}, fresh.path())
            .Wait();
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err,
                HasSubstr(word.empty() ? "--library: it must not be empty\n"
                                       : "--library: that is a folder: name the library file in it\n"));
  }
}

TEST_F(Status, AndTheOthersSayWhichFileIsAFolder) {
  Configure();
  std::filesystem::create_directory(folder / "STATE");
  EXPECT_EQ(Run({"status"}).status, 3);
  EXPECT_THAT(Run({"status"}).out, HasSubstr("STATE CANNOT BE READ"));
  EXPECT_EQ(Run({"report"}).err, "register: STATE cannot be read\n");
  EXPECT_EQ(Run({"report"}).status, 3);
  std::filesystem::create_directory(folder / "LOG");
  Write("OFFLINE", "{}\n");
  const nlohmann::json facts = Facts({"status"}, 3);
  EXPECT_EQ(facts["error"], "STATE cannot be read; LOG cannot be read");
  EXPECT_EQ(facts["log"], nullptr);
  EXPECT_EQ(facts["waiting"], 1);
  EXPECT_EQ(Run({"status"}).err, "register: STATE cannot be read; LOG cannot be read\n");
  EXPECT_THAT(Run({"status"}).out,
              HasSubstr("\n  log         CANNOT BE READ\n  waiting     1 offline records\n"));
  EXPECT_THAT(Run({"journal"}).err, HasSubstr("LOG cannot be read\n"));
  std::filesystem::create_directory(folder / "CONFIG.JSN");
  EXPECT_THAT(Run({"configure", "--timeout", "5"}).err, HasSubstr("CONFIG.JSN cannot be read\n"));
  const test::Outcome run = Run({"doctor"});
  EXPECT_EQ(run.status, 1) << run.err;
  EXPECT_THAT(run.out, HasSubstr("trouble log: LOG cannot be read\n"));
  EXPECT_THAT(run.out, HasSubstr("trouble folder: STATE cannot be opened for reading and writing\n"));
  EXPECT_THAT(run.out, HasSubstr("warning settings: CONFIG.JSN cannot be read; CONFIG is in force\n"));
}

}  // namespace
