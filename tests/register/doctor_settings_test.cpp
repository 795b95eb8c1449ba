// register/doctor_settings_test.cpp: settings as the library reads them, and the addresses in them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "support/fresh_folder.h"
#include "terminal_settings.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class TerminalSettings : public testing::Test {
 protected:
  reg::TerminalSettings ReadFrom(const std::string &config, const std::string &name = "CONFIG") const {
    std::ofstream(folder.path() / name, std::ios::binary) << config;
    return reg::ReadTerminalSettings(folder.path());
  }
  test::FreshFolder folder;
};

TEST_F(TerminalSettings, AreMissingWithoutAFile) {
  const reg::TerminalSettings settings = reg::ReadTerminalSettings(folder.path());
  EXPECT_EQ(settings.file, "");
  EXPECT_FALSE(settings.isDelivered || settings.isKept);
  EXPECT_EQ(settings.Text("terminalId"), "");
  EXPECT_EQ(settings.Number("timeout"), 0);
}

TEST_F(TerminalSettings, ComeFromTheDeliveryFirst) {
  ReadFrom(R"({"terminalId":"1"})");
  const reg::TerminalSettings settings = ReadFrom(R"({"terminalId":"2"})", "CONFIG.JSN");
  EXPECT_EQ(settings.file, "CONFIG.JSN");
  EXPECT_EQ(settings.Text("terminalId"), "2");
  const reg::TerminalSettings kept = ReadFrom(R"({"terminalId":"2")", "CONFIG.JSN");
  EXPECT_EQ(kept.file, "CONFIG");
  EXPECT_TRUE(kept.isDelivered);
  EXPECT_EQ(kept.Text("terminalId"), "1");
}

TEST_F(TerminalSettings, AreNoneOfWhatIsNoObject) {
  for (const char *config : {"", " ", "[]", "{\"a\":1", "{\"a\":1}}", "text"}) {
    EXPECT_EQ(ReadFrom(config).file, "") << config;
  }
}

TEST_F(TerminalSettings, TakeTheBeginningOfAKey) {
  const reg::TerminalSettings settings = ReadFrom(R"({"time":5,"server":"x","timeouts":6,"receiptF":"y"})");
  EXPECT_THAT(settings.values,
              ElementsAre(Pair("serverAddr", "x"), Pair("timeout", "5"), Pair("receiptFooter", "y")));
  EXPECT_THAT(settings.unknown, ElementsAre("timeouts"));
}

TEST_F(TerminalSettings, ReadValuesAsTheLibraryDoes) {
  const reg::TerminalSettings settings = ReadFrom(
      R"({"terminalId":12345,"timeout":"30 s","logSize":99999999999,"shiftMode":true,"offlineMode":[1],"sslMode":null})");
  EXPECT_EQ(settings.Text("terminalId"), "12345");
  EXPECT_EQ(settings.Number("timeout"), 30);
  EXPECT_EQ(settings.Number("logSize"), 2147483647);
  EXPECT_EQ(settings.Number("shiftMode"), 0);
  EXPECT_EQ(settings.Number("offlineMode"), 0);
  EXPECT_EQ(settings.Number("sslMode"), 0);
  EXPECT_THAT(settings.truths, ElementsAre("shiftMode"));
  EXPECT_THAT(settings.unknown, IsEmpty());
}

TEST_F(TerminalSettings, MayHoldForeignBytes) {
  const reg::TerminalSettings settings =
      ReadFrom("\xEF\xBB\xBF{\"receiptHeader\":\"\xCC\xE0\xE3\",\"timeout\":5}");
  EXPECT_TRUE(settings.hasForeignBytes);
  EXPECT_EQ(settings.Text("receiptHeader"), "???");
  EXPECT_EQ(settings.Number("timeout"), 5);
  EXPECT_FALSE(ReadFrom("{\"receiptHeader\":\"Магазин\"}").hasForeignBytes);
}

TEST(ServerAddress, IsTakenApart) {
  const auto address = reg::ParseServerAddress("http://10.0.0.5:8080/a/b/");
  ASSERT_TRUE(address);
  EXPECT_EQ(address->host, "10.0.0.5");
  EXPECT_EQ(address->port, 8080);
  EXPECT_EQ(address->path, "/a/b");
  EXPECT_EQ(reg::ParseServerAddress("http://255.255.255.255:65535/")->path, "/");
}

TEST(ServerAddress, IsRefusedWhenTheLibraryCouldNotUseIt) {
  for (const char *address : {"",
                              "foo",
                              "http://",
                              "http://10.0.0.5",
                              "http://10.0.0.5/ws",
                              "http://10.0.0.5:80",
                              "https://10.0.0.5:80/ws",
                              "http://localhost:80/ws",
                              "http://10.0.0:80/ws",
                              "http://10.0.0.0.5:80/ws",
                              "http://10.0.0.256:80/ws",
                              "http://10.0..5:80/ws",
                              "http://10.0.0.5:0/ws",
                              "http://10.0.0.5:65536/ws",
                              "http://10.0.0.5:x/ws",
                              "http://10.0.0.5:-1/ws",
                              "http://:80/ws",
                              "http://10.0.0.5:80/a b",
                              "http://10.0.0.5:80/a\r\n",
                              "http://10.0.0.5:80/\x7F",
                              "http://0.0.0.0:80/ws"}) {
    EXPECT_FALSE(reg::ParseServerAddress(address)) << address;
  }
}

TEST(StateFile, StopsTheLibraryWhenItIsCutOrNoObject) {
  for (const char *state :
       {"", "  ", "{\"offline\":0", "{\"offline\":0,\"reqId\":\"12", "{\"offline\":fal", "[]", "5"}) {
    EXPECT_TRUE(reg::StopsLibrary(state)) << state;
  }
  for (const char *state :
       {"{}", "{\"offline\":0}   ", "{\"offline\":0}}", "text", "{\"shiftId\":\"\xCC\"}"}) {
    EXPECT_FALSE(reg::StopsLibrary(state)) << state;
  }
}

}  // namespace
