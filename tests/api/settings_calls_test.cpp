// api/settings_calls_test.cpp: what the register may know of the settings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "config/lumoconfig.h"
#include "lumo.h"
#include "support/folder.h"

namespace {

using Host = std::unique_ptr<char, decltype(&std::free)>;

class SettingsCalls : public testing::Test {
 protected:
  ~SettingsCalls() override { lumo::ReleaseSettings(); }

  void Load(const std::string &bytes) {
    folder.Write("CONFIG", bytes);
    ASSERT_EQ(lumo::LoadConfig(), 0);
    folder.ClearTrace();
  }
  static Host PingAddress() { return Host(getPingAddress(), &std::free); }
  static Host PingAltAddress() { return Host(getPingAltAddress(), &std::free); }

  test::Folder folder;
};

TEST_F(SettingsCalls, TheTerminalIdIsHandedOutWithoutALine) {
  Load("{\"terminalId\":\"12345\"}");
  EXPECT_STREQ(getTerminalId(), "12345");
  EXPECT_EQ(getTerminalId(), lumo::Settings().terminalId);
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(SettingsCalls, AnAbsentTerminalIdIsNull) {
  EXPECT_EQ(getTerminalId(), nullptr);
  Load("{}");
  EXPECT_EQ(getTerminalId(), nullptr);
}

TEST_F(SettingsCalls, EachAddressIsSplitAndTraced) {
  Load("{\"serverAddr\":\"http://10.0.0.5:8080/loyalty/\",\"serverAltAddr\":\"http://10.0.0.6:80/\"}");
  EXPECT_STREQ(PingAddress().get(), "10.0.0.5");
  EXPECT_EQ(getPingPort(), 8080);
  EXPECT_STREQ(PingAltAddress().get(), "10.0.0.6");
  EXPECT_EQ(getPingAltPort(), 80);
  EXPECT_EQ(
      folder.Trace(),
      "getPingAddress: http://10.0.0.5:8080/loyalty/ -> [ip: \"10.0.0.5\"] port: 8080 webServ: \"/loyalty\"\n"
      "getPingPort: http://10.0.0.5:8080/loyalty/ -> ip: \"10.0.0.5\" [port: 8080] webServ: \"/loyalty\"\n"
      "getPingAltAddress: http://10.0.0.6:80/ -> [ip: \"10.0.0.6\"] port: 80 webServ: \"/\"\n"
      "getPingAltPort: http://10.0.0.6:80/ -> ip: \"10.0.0.6\" [port: 80] webServ: \"/\"\n");
}

TEST_F(SettingsCalls, AnAddressWithoutAPortIsRefused) {
  Load("{\"serverAddr\":\"http://10.0.0.5/\"}");
  EXPECT_STREQ(PingAddress().get(), "");
  EXPECT_EQ(getPingPort(), 0);
  EXPECT_EQ(folder.Trace(),
            "getPingAddress: http://10.0.0.5/ -> [ip: \"\"] port: 0 webServ: \"\"\n"
            "getPingPort: http://10.0.0.5/ -> ip: \"\" [port: 0] webServ: \"\"\n");
}

TEST_F(SettingsCalls, AbsentAddressesAreEmpty) {
  Load("{}");
  EXPECT_STREQ(PingAddress().get(), "");
  EXPECT_EQ(getPingPort(), 0);
  EXPECT_STREQ(PingAltAddress().get(), "");
  EXPECT_EQ(getPingAltPort(), 0);
  EXPECT_EQ(folder.Trace(),
            "getPingAddress: (null) -> [ip: \"\"] port: 0 webServ: \"\"\n"
            "getPingPort: (null) -> ip: \"\" [port: 0] webServ: \"\"\n"
            "getPingAltAddress: (null) -> [ip: \"\"] port: 0 webServ: \"\"\n"
            "getPingAltPort: (null) -> ip: \"\" [port: 0] webServ: \"\"\n");
}

TEST_F(SettingsCalls, TheHostIsTheCallersForGood) {
  Load("{\"serverAddr\":\"http://10.0.0.5:80/\"}");
  const Host first = PingAddress();
  const Host second = PingAddress();
  EXPECT_NE(first.get(), second.get());
  first.get()[0] = 'x';
  Load("{}");
  EXPECT_STREQ(second.get(), "10.0.0.5");
}

TEST_F(SettingsCalls, ALongAddressIsSplit) {
  const std::string path(3000, 'p');
  Load("{\"serverAddr\":\"http://" + std::string(3000, 'h') + ":1/" + path + "\"}");
  EXPECT_EQ(PingAddress().get(), std::string(3000, 'h'));
  EXPECT_EQ(getPingPort(), 1);
}

}  // namespace
