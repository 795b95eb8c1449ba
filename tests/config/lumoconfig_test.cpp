// config/lumoconfig_test.cpp: the settings, from and to their file.
#include "config/lumoconfig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/allocations.h"
#include "support/folder.h"

namespace {

using testing::HasSubstr;
using testing::Not;

const std::string kConfigBom = "\xEF\xBB\xBF";  // spares the reader's seek and the line it leaves

class Config : public testing::Test {
 protected:
  ~Config() override { lumo::ReleaseSettings(); }

  // Loads CONFIG with these bytes.
  int Load(const std::string &bytes) {
    folder.Write("CONFIG", kConfigBom + bytes);
    return lumo::LoadConfig();
  }
  void MakeDirectory(const std::string &name) {
    std::filesystem::create_directory(std::filesystem::u8path(folder.path() + name));
  }
  // What a load of CONFIG traces after the reader's own lines.
  std::string SettingLines(const std::string &bytes) {
    folder.ClearTrace();
    Load(bytes);
    const std::string head = "LoadConfig\nparseJsonFile [CONFIG]\nByte Order Mark skipping\n";
    const std::string trace = folder.Trace();
    EXPECT_EQ(trace.substr(0, head.size()), head);
    return trace.size() > head.size() ? trace.substr(head.size()) : "";
  }

  test::Folder folder;
};

TEST_F(Config, EverySettingIsStoredAndTraced) {
  const std::string lines = SettingLines(
      "{\"terminalId\":\"12345\",\"protocolVersion\":\"1.0\",\"serverAddr\":\"http://10.0.0.5:8080/a\","
      "\"serverAltAddr\":\"http://10.0.0.6:8080/"
      "a\",\"retailNetworkName\":\"\xD0\xA1\xD0\xB5\xD1\x82\xD1\x8C\","
      "\"offlinePath\":\"off\",\"logPath\":\"log\",\"receiptPath\":\"rec\",\"timeout\":30,\"offlineMode\":1,"
      "\"shiftMode\":2,\"localBonusOffline\":3,\"globalBonusOffline\":4,\"orgFeeOffline\":5,\"logSize\":300,"
      "\"receiptHeader\":\"Head\",\"receiptFooter\":\"\xD0\x94\xD0\xB0\",\"sslMode\":6,\"sslKey\":\"key."
      "pem\"}");
  EXPECT_EQ(lines,
            "Terminal Id [12345]\n"
            "Protocol Version [1.0]\n"
            "Server Address [http://10.0.0.5:8080/a]\n"
            "Server Alt Address [http://10.0.0.6:8080/a]\n"
            "Retail Network Name [\xD0\xA1\xD0\xB5\xD1\x82\xD1\x8C]\n"
            "Offline Path [off]\n"
            "Log Path [log]\n"
            "Receipt Path [rec]\n"
            "Timeout [30]\n"
            "Offline Mode [1]\n"
            "Shift Mode [2]\n"
            "Local Bonus Offline [3]\n"
            "Global Bonus Offline [4]\n"
            "Org Fee Offline [5]\n"
            "Log Size [300]\n"
            "Receipt Header [Head]\n"
            "Receipt Footer [\xD0\x94\xD0\xB0]\n"
            "SSL Mode [6]\n"
            "SSL Key File [key.pem]\n");
  const lumo::SettingsRecord &settings = lumo::Settings();
  EXPECT_STREQ(settings.terminalId, "12345");
  EXPECT_STREQ(settings.protocolVersion, "1.0");
  EXPECT_STREQ(settings.serverAddr, "http://10.0.0.5:8080/a");
  EXPECT_STREQ(settings.serverAltAddr, "http://10.0.0.6:8080/a");
  EXPECT_STREQ(settings.retailNetworkName, "\xD0\xA1\xD0\xB5\xD1\x82\xD1\x8C");
  EXPECT_STREQ(settings.offlinePath, "off");
  EXPECT_STREQ(settings.logPath, "log");
  EXPECT_STREQ(settings.receiptPath, "rec");
  EXPECT_EQ(settings.timeout, 30);
  EXPECT_EQ(settings.offlineMode, 1);
  EXPECT_EQ(settings.shiftMode, 2);
  EXPECT_EQ(settings.localBonusOffline, 3);
  EXPECT_EQ(settings.globalBonusOffline, 4);
  EXPECT_EQ(settings.orgFeeOffline, 5);
  EXPECT_EQ(settings.logSize, 300);
  EXPECT_STREQ(settings.receiptHeader, "Head");
  EXPECT_EQ(settings.receiptHeaderLength, 4U);
  EXPECT_STREQ(settings.receiptFooter, "\xD0\x94\xD0\xB0");
  EXPECT_EQ(settings.receiptFooterLength, 4U);
  EXPECT_EQ(settings.sslMode, 6);
  EXPECT_STREQ(settings.sslKey, "key.pem");
}

TEST_F(Config, AbsentTextsAreNullAndAbsentNumbersZero) {
  ASSERT_EQ(Load("{}"), 0);
  const lumo::SettingsRecord &settings = lumo::Settings();
  EXPECT_EQ(settings.terminalId, nullptr);
  EXPECT_EQ(settings.protocolVersion, nullptr);
  EXPECT_EQ(settings.serverAddr, nullptr);
  EXPECT_EQ(settings.serverAltAddr, nullptr);
  EXPECT_EQ(settings.retailNetworkName, nullptr);
  EXPECT_EQ(settings.offlinePath, nullptr);
  EXPECT_EQ(settings.logPath, nullptr);
  EXPECT_EQ(settings.receiptPath, nullptr);
  EXPECT_EQ(settings.timeout, 0);
  EXPECT_EQ(settings.offlineMode, 0);
  EXPECT_EQ(settings.shiftMode, 0);
  EXPECT_EQ(settings.localBonusOffline, 0);
  EXPECT_EQ(settings.globalBonusOffline, 0);
  EXPECT_EQ(settings.orgFeeOffline, 0);
  EXPECT_EQ(settings.logSize, 0);
  EXPECT_EQ(settings.receiptHeader, nullptr);
  EXPECT_EQ(settings.receiptHeaderLength, 0U);
  EXPECT_EQ(settings.receiptFooter, nullptr);
  EXPECT_EQ(settings.receiptFooterLength, 0U);
  EXPECT_EQ(settings.sslMode, 0);
  EXPECT_EQ(settings.sslKey, nullptr);
}

struct ConfigLine {
  const char *name;
  const char *member;
  const char *trace;
};

class ConfigMember : public Config, public testing::WithParamInterface<ConfigLine> {};

TEST_P(ConfigMember, IsTakenAs) {
  EXPECT_EQ(SettingLines(std::string("{") + GetParam().member + "}"), GetParam().trace);
}

const ConfigLine kKeys[] = {
    {"EmptyKeyIsTheTerminal", "\"\":\"7\"", "Terminal Id [7]\n"},
    {"TIsTheTerminalBeforeTheTimeout", "\"t\":\"7\"", "Terminal Id [7]\n"},
    {"TimeIsTheTimeout", "\"time\":7", "Timeout [7]\n"},
    {"ServerIsTheMainAddress", "\"server\":\"a\"", "Server Address [a]\n"},
    {"ServerAIsTheMainAddress", "\"serverA\":\"a\"", "Server Address [a]\n"},
    {"ServerAltIsTheOther", "\"serverAlt\":\"a\"", "Server Alt Address [a]\n"},
    {"LogIsTheLogPathNotItsSize", "\"log\":\"a\"", "Log Path [a]\n"},
    {"LogSIsTheSize", "\"logS\":5", "Log Size [5]\n"},
    {"LIsTheLogPathBeforeTheLocalBonus", "\"l\":\"a\"", "Log Path [a]\n"},
    {"LoIsTheLogPathBeforeTheLocalBonus", "\"lo\":\"a\"", "Log Path [a]\n"},
    {"LocIsTheLocalBonus", "\"loc\":5", "Local Bonus Offline [5]\n"},
    {"OfflineIsThePathNotTheMode", "\"offline\":\"a\"", "Offline Path [a]\n"},
    {"OfflineMIsTheMode", "\"offlineM\":1", "Offline Mode [1]\n"},
    {"ReceiptIsThePath", "\"receipt\":\"a\"", "Receipt Path [a]\n"},
    {"SslIsTheMode", "\"ssl\":1", "SSL Mode [1]\n"},
    {"ALongerKeyIsUnknown", "\"timeoutX\":7", "WARNING: Unknown config option [timeoutX]\n"},
    {"AnotherCaseIsUnknown", "\"Timeout\":7", "WARNING: Unknown config option [Timeout]\n"},
    {"AnUnknownKeyOf40BytesIsTracedWhole", "\"0123456789012345678901234567890123456789\":1",
     "WARNING: Unknown config option [0123456789012345678901234567890123456789]\n"},
    {"AnUnknownKeyOf41BytesIsCut", "\"01234567890123456789012345678901234567890\":1",
     "WARNING: Unknown config option [0123456789012345678901234567890123456789]\n"},
    {"AnUnknownObjectIsSkipped", "\"x\":{\"timeout\":7},\"logSize\":1",
     "WARNING: Unknown config option [x]\nLog Size [1]\n"},
};
INSTANTIATE_TEST_SUITE_P(Keys, ConfigMember, testing::ValuesIn(kKeys),
                         [](const auto &row) { return std::string(row.param.name); });

const ConfigLine kValues[] = {
    {"DigitsOfATextCount", "\"timeout\":\"12abc\"", "Timeout [12]\n"},
    {"ATextWithoutDigitsIsZero", "\"timeout\":\"abc\"", "Timeout [0]\n"},
    {"ANumberAsText", "\"timeout\":\"30\"", "Timeout [30]\n"},
    {"AFractionIsCut", "\"timeout\":2.9", "Timeout [2]\n"},
    {"ANegativeNumber", "\"shiftMode\":-1", "Shift Mode [-1]\n"},
    {"ALargeNumberIsClamped", "\"timeout\":99999999999", "Timeout [2147483647]\n"},
    {"ALargeNegativeNumberIsClamped", "\"timeout\":-99999999999", "Timeout [-2147483648]\n"},
    {"TrueIsOff", "\"offlineMode\":true", "Offline Mode [0]\n"},
    {"NullIsZero", "\"timeout\":null", "Timeout [0]\n"},
    {"AnObjectIsZero", "\"timeout\":{\"a\":1}", "Timeout [0]\n"},
    {"AnArrayIsTheEmptyText", "\"terminalId\":[1]", "Terminal Id []\n"},
    {"ANumberIsAText", "\"terminalId\":12345", "Terminal Id [12345]\n"},
    {"TrueIsTheEmptyText", "\"terminalId\":true", "Terminal Id []\n"},
    {"ATextIsCutAtAZeroByte", "\"terminalId\":\"1\\u00002\"", "Terminal Id [1]\n"},
    {"TheLastOfTwoStays", "\"timeout\":1,\"timeout\":2", "Timeout [1]\nTimeout [2]\n"},
};
INSTANTIATE_TEST_SUITE_P(Values, ConfigMember, testing::ValuesIn(kValues),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_F(Config, AKeyGivenTwiceTakesItsLastValue) {
  ASSERT_EQ(Load("{\"terminalId\":\"1\",\"timeout\":1,\"terminalId\":\"2\",\"timeout\":2}"), 0);
  EXPECT_STREQ(lumo::Settings().terminalId, "2");
  EXPECT_EQ(lumo::Settings().timeout, 2);
}

TEST_F(Config, ANegativeShiftModeIsStoredAsItStands) {
  ASSERT_EQ(Load("{\"shiftMode\":-1}"), 0);
  EXPECT_EQ(lumo::Settings().shiftMode, -1);
}

TEST_F(Config, EveryLoadBeginsWithEmptySettings) {
  ASSERT_EQ(Load("{\"terminalId\":\"1\",\"receiptHeader\":\"abc\",\"timeout\":5}"), 0);
  ASSERT_EQ(Load("{\"protocolVersion\":\"2\"}"), 0);
  EXPECT_EQ(lumo::Settings().terminalId, nullptr);
  EXPECT_EQ(lumo::Settings().receiptHeaderLength, 0U);
  EXPECT_EQ(lumo::Settings().timeout, 0);
  EXPECT_STREQ(lumo::Settings().protocolVersion, "2");
}

TEST_F(Config, ALoadThatFailsHasClearedTheSettings) {
  ASSERT_EQ(Load("{\"terminalId\":\"1\"}"), 0);
  EXPECT_EQ(Load("{\"terminalId\":"), -111) << "cut short: no document";
  EXPECT_EQ(lumo::Settings().terminalId, nullptr);
}

TEST_F(Config, TextsOfAnEarlierLoadStayReadable) {
  ASSERT_EQ(Load("{\"terminalId\":\"first\"}"), 0);
  const char *first = lumo::Settings().terminalId;
  ASSERT_EQ(Load("{\"terminalId\":\"second\"}"), 0);
  EXPECT_STREQ(first, "first");
  EXPECT_STREQ(lumo::Settings().terminalId, "second");
}

TEST_F(Config, LoadingTheSameTextsAgainTakesNoMemory) {
  ASSERT_EQ(Load("{\"terminalId\":\"first\",\"sslKey\":\"\"}"), 0);
  const char *terminal = lumo::Settings().terminalId;
  const char *key = lumo::Settings().sslKey;
  ASSERT_EQ(Load("{\"terminalId\":\"second\"}"), 0);
  ASSERT_EQ(Load("{\"terminalId\":\"first\",\"sslKey\":\"\"}"), 0);
  EXPECT_EQ(lumo::Settings().terminalId, terminal);
  EXPECT_EQ(lumo::Settings().sslKey, key);
}

TEST_F(Config, SetSettingStringStoresACopy) {
  char text[] = "abc";
  const char *field = nullptr;
  const char *copy = lumo::SetSettingString(&field, text);
  text[0] = 'x';
  EXPECT_STREQ(copy, "abc");
  EXPECT_EQ(field, copy);
}

TEST_F(Config, SetSettingStringTakesTheFieldsOwnText) {
  const char *field = nullptr;
  lumo::SetSettingString(&field, "abc");
  EXPECT_STREQ(lumo::SetSettingString(&field, field), "abc");
}

TEST_F(Config, SetSettingStringStoresNullForNull) {
  const char *field = "abc";
  EXPECT_EQ(lumo::SetSettingString(&field, nullptr), nullptr);
  EXPECT_EQ(field, nullptr);
}

TEST_F(Config, ReleaseSettingsLeavesNoText) {
  ASSERT_EQ(Load("{\"terminalId\":\"1\",\"receiptFooter\":\"abc\",\"sslKey\":\"k\"}"), 0);
  lumo::ReleaseSettings();
  EXPECT_EQ(lumo::Settings().terminalId, nullptr);
  EXPECT_EQ(lumo::Settings().receiptFooter, nullptr);
  EXPECT_EQ(lumo::Settings().sslKey, nullptr);
}

TEST_F(Config, InitConfigOnlyTraces) {
  ASSERT_EQ(Load("{\"timeout\":5}"), 0);
  folder.ClearTrace();
  EXPECT_EQ(lumo::InitConfig(), 0);
  EXPECT_EQ(folder.Trace(), "InitConfig()\n");
  EXPECT_EQ(lumo::Settings().timeout, 5);
}

// ---- Files ----

TEST_F(Config, AGoodDeliveryIsMoved) {
  folder.Write("CONFIG.JSN", kConfigBom + "{\"timeout\":5}");
  EXPECT_EQ(lumo::LoadNewConfig(), 0);
  EXPECT_EQ(lumo::Settings().timeout, 5);
  EXPECT_FALSE(folder.Exists("CONFIG.JSN"));
  EXPECT_EQ(folder.Read("CONFIG"), kConfigBom + "{\"timeout\":5}");
  EXPECT_EQ(folder.Trace(),
            "LoadNewConfig\nparseJsonFile [CONFIG.JSN]\nByte Order Mark skipping\nTimeout [5]\n");
}

TEST_F(Config, ADeliveryDoesNotReplaceTheSettingsInForceButIsUsed) {
  folder.Write("CONFIG", "{\"timeout\":1}");
  folder.Write("CONFIG.JSN", kConfigBom + "{\"timeout\":5}");
  EXPECT_EQ(lumo::LoadNewConfig(), 0);
  EXPECT_EQ(lumo::Settings().timeout, 5);
  EXPECT_TRUE(folder.Exists("CONFIG.JSN"));
  EXPECT_EQ(folder.Read("CONFIG"), "{\"timeout\":1}");
  EXPECT_EQ(folder.Trace(),
            "LoadNewConfig\nparseJsonFile [CONFIG.JSN]\nByte Order Mark skipping\nTimeout [5]\n"
            "ERROR: Cant save new config!\n");
}

TEST_F(Config, ABadDeliveryStaysWhereItIs) {
  folder.Write("CONFIG.JSN", kConfigBom + "[]");
  EXPECT_EQ(lumo::LoadNewConfig(), -111);
  EXPECT_TRUE(folder.Exists("CONFIG.JSN"));
  EXPECT_FALSE(folder.Exists("CONFIG"));
}

TEST_F(Config, AMissingDelivery) {
  EXPECT_EQ(lumo::LoadNewConfig(), -307);
  EXPECT_EQ(folder.Trace(),
            "LoadNewConfig\nparseJsonFile [CONFIG.JSN]\nERROR: CreateFile function failed with error 2\n"
            "ERROR: parserJsonFile error [-307]\n");
}

TEST_F(Config, AMissingConfig) {
  EXPECT_EQ(lumo::LoadConfig(), -307);
  EXPECT_EQ(folder.Trace(),
            "LoadConfig\nparseJsonFile [CONFIG]\nERROR: CreateFile function failed with error 2\n"
            "ERROR: parserJsonFile error [-307]\n");
}

TEST_F(Config, LoadConfigMovesNothing) {
  ASSERT_EQ(Load("{}"), 0);
  EXPECT_TRUE(folder.Exists("CONFIG"));
  EXPECT_FALSE(folder.Exists("CONFIG.JSN"));
}

TEST_F(Config, ASyntaxError) {
  EXPECT_EQ(Load("{\"timeout\":5,}"), -303);
  EXPECT_THAT(folder.Trace(), HasSubstr("ERROR: parserJsonFile error [-303]\n"));
}

TEST_F(Config, AnEmptyFile) {
  folder.Write("CONFIG", "");
  EXPECT_EQ(lumo::LoadConfig(), -111);
  EXPECT_EQ(folder.Trace(), "LoadConfig\nparseJsonFile [CONFIG]\nERROR: Config json root is NULL!\n");
}

TEST_F(Config, ATextAlone) {
  EXPECT_EQ(Load("\"terminalId\""), -111);
  EXPECT_THAT(folder.Trace(), HasSubstr("ERROR: Config json root is NULL!\n"));
}

TEST_F(Config, AnArrayFailsWithoutALine) {
  EXPECT_EQ(SettingLines("[\"terminalId\"]"), "");
  EXPECT_EQ(lumo::LoadConfig(), -111);
}

TEST_F(Config, SavesInItsOwnOrder) {
  ASSERT_EQ(
      Load("{\"sslKey\":\"k\",\"sslMode\":6,\"receiptFooter\":\"F\",\"receiptHeader\":\"H\",\"logSize\":300,"
           "\"orgFeeOffline\":5,\"globalBonusOffline\":4,\"localBonusOffline\":3,\"shiftMode\":2,"
           "\"offlineMode\":7,\"timeout\":30,\"receiptPath\":\"rec\",\"logPath\":\"log\","
           "\"offlinePath\":\"off\",\"retailNetworkName\":\"net\",\"serverAltAddr\":\"alt\","
           "\"serverAddr\":\"main\",\"protocolVersion\":\"1.0\",\"terminalId\":\"12\\\"345\"}"),
      0);
  folder.ClearTrace();
  EXPECT_EQ(lumo::SaveConfig(), 0);
  EXPECT_EQ(folder.Read("CONFIG"),
            "{\"serverAddr\":\"main\",\"serverAltAddr\":\"alt\",\"retailNetworkName\":\"net\","
            "\"terminalId\":\"12\\\"345\",\"protocolVersion\":\"1.0\",\"offlineMode\":1,"
            "\"localBonusOffline\":3,\"globalBonusOffline\":4,\"orgFeeOffline\":5,\"offlinePath\":\"off\","
            "\"timeout\":30,\"logPath\":\"log\",\"logSize\":300,\"receiptPath\":\"rec\",\"shiftMode\":1,"
            "\"receiptHeader\":\"H\",\"receiptFooter\":\"F\"}");
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(Config, SavesTheFlagsAloneWhenNothingIsSet) {
  ASSERT_EQ(Load("{\"sslMode\":1,\"sslKey\":\"k\"}"), 0);
  EXPECT_EQ(lumo::SaveConfig(), 0);
  EXPECT_EQ(folder.Read("CONFIG"), "{\"offlineMode\":0,\"shiftMode\":0}");
}

TEST_F(Config, SavesAnEmptyTextAndANegativeFlag) {
  ASSERT_EQ(Load("{\"terminalId\":\"\",\"shiftMode\":-1,\"timeout\":-5}"), 0);
  EXPECT_EQ(lumo::SaveConfig(), 0);
  EXPECT_EQ(folder.Read("CONFIG"), "{\"terminalId\":\"\",\"offlineMode\":0,\"timeout\":-5,\"shiftMode\":1}");
}

TEST_F(Config, WhatIsSavedLoadsAgain) {
  const std::string long_text(5000, 'x');
  ASSERT_EQ(Load("{\"terminalId\":\"\\u0001\xD0\xA1\\\\\",\"receiptHeader\":\"" + long_text + "\"}"), 0);
  ASSERT_EQ(lumo::SaveConfig(), 0);
  ASSERT_EQ(lumo::LoadConfig(), 0);
  EXPECT_STREQ(lumo::Settings().terminalId, "\x01\xD0\xA1\\");
  EXPECT_EQ(lumo::Settings().receiptHeader, long_text);
  EXPECT_EQ(lumo::Settings().receiptHeaderLength, 5000U);
}

TEST_F(Config, CannotSaveOverAFolder) {
  MakeDirectory("CONFIG");
  EXPECT_EQ(lumo::SaveConfig(), -107);
  EXPECT_THAT(folder.Trace(), HasSubstr("ERROR: CreateFile function failed with error "));
  EXPECT_THAT(folder.Trace(), Not(HasSubstr("WARNING")));
}

TEST_F(Config, OfATextGivenManyTimesOnlyTheLastIsKept) {
  const auto mallocs_of_load = [&](int first, int last) {
    std::string bytes = "{\"x\":0";
    for (int i = first; i <= last; ++i) bytes += ",\"terminalId\":\"" + std::to_string(i) + "\"";
    folder.Write("CONFIG", bytes + "}");
    const int before = test::CountAllocations().mallocs;
    EXPECT_EQ(lumo::LoadConfig(), 0);
    EXPECT_EQ(lumo::Settings().terminalId, std::to_string(last));
    return test::CountAllocations().mallocs - before;
  };
  const int of_one = mallocs_of_load(1, 1);
  EXPECT_GT(of_one, 0);
  EXPECT_LT(mallocs_of_load(2, 1000), of_one + 100) << "of 999 texts";
  EXPECT_LT(mallocs_of_load(1000, 1000), of_one) << "an equal text is not kept twice";
}

}  // namespace
