// register/configure_test.cpp: settings that are named are changed, and nothing else.
#include "register/till.h"

namespace {

using testing::HasSubstr;

class Configure : public test::Till {
 protected:
  // Must change nothing.
  void Refuse(const Words &words, int status, const std::string &complaint) {
    const auto before = Files();
    Words line = {"configure"};
    line.insert(line.end(), words.begin(), words.end());
    const test::Outcome run = Run(line);
    EXPECT_EQ(run.status, status) << testing::PrintToString(words);
    EXPECT_THAT(run.err, HasSubstr(complaint)) << testing::PrintToString(words);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(Files(), before) << testing::PrintToString(words);
  }
};

TEST_F(Configure, MakesANewTerminal) {
  const test::Outcome run = Run({"configure", "--server", "http://10.0.0.5:8080/ws", "--terminal", "12345",
                                 "--header", "Магазин \"Лавка\""});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(Read("CONFIG.JSN"),
            "{\"terminalId\":\"12345\",\"serverAddr\":\"http://10.0.0.5:8080/ws\","
            "\"receiptHeader\":\"Магазин \\\"Лавка\\\"\",\"protocolVersion\":\"1.0\","
            "\"timeout\":10,\"logSize\":3000}\n");
  EXPECT_EQ(run.out,
            "  terminalId \"12345\"\n  serverAddr \"http://10.0.0.5:8080/ws\"\n"
            "  receiptHeader \"Магазин \\\"Лавка\\\"\"\n  protocolVersion \"1.0\"\n  timeout 10\n"
            "  logSize 3000\n  written: " +
                (folder / "CONFIG.JSN").u8string() + "\n");
}

TEST_F(Configure, AsksANewTerminalForItsServerAndNumber) {
  Refuse({"--timeout", "5"}, 2, "a new terminal needs --server and --terminal");
  Refuse({"--server", "http://10.0.0.5:8080/ws"}, 2, "a new terminal needs --server and --terminal");
}

TEST_F(Configure, KeepsEveryOtherByte) {
  using Row = struct {
    const char *before;
    Words words;
    const char *after;
  };
  const Row rows[] = {
      {"{\"timeout\" : 5 , \"mine\":[1,{\"timeout\":2}]}\n",
       {"--timeout", "30"},
       "{\"timeout\" : 30 , \"mine\":[1,{\"timeout\":2}]}\n"},
      {"{\r\n  \"terminalId\": \"12345\"\r\n}",
       {"--timeout", "30"},
       "{\r\n  \"terminalId\": \"12345\",\r\n  \"timeout\": 30\r\n}"},
      {"{}", {"--offline", "1"}, "{\"offlineMode\":1}"},
      {"\xEF\xBB\xBF{\"logSize\":5}", {"--log-size", "500"}, "\xEF\xBB\xBF{\"logSize\":500}"},
      // Bytes that are no UTF-8 are the shop's own.
      {"{\"receiptFooter\":\"\xCF\xF0\",\"timeout\":5}",
       {"--timeout", "6"},
       "{\"receiptFooter\":\"\xCF\xF0\",\"timeout\":6}"},
      // Of two the last counts, and "time" stands for "timeout".
      {"{\"timeout\":5,\"timeout\":6}", {"--timeout", "7"}, "{\"timeout\":5,\"timeout\":7}"},
      {"{\"timeout\":5,\"time\":6}", {"--timeout", "7"}, "{\"timeout\":5,\"time\":6,\"timeout\":7}"},
      {"{\"receiptHeader\":\"a,}\\\"\",\"serverAltAddr\":\"http://10.0.0.6:80/\"}",
       {"--alternate", ""},
       "{\"receiptHeader\":\"a,}\\\"\",\"serverAltAddr\":\"\"}"},
  };
  for (const Row &row : rows) {
    Write("CONFIG", row.before);
    Words line = {"configure"};
    line.insert(line.end(), row.words.begin(), row.words.end());
    EXPECT_EQ(Run(line).status, 0) << row.before;
    EXPECT_EQ(Read("CONFIG"), row.after);
    EXPECT_FALSE(Exists("CONFIG.JSN"));
    EXPECT_FALSE(Exists("CONFIG.new"));
  }
}

TEST_F(Configure, ChangesTheDeliveredFileWhenThereIsOne) {
  Write("CONFIG", R"({"timeout":1})");
  Write("CONFIG.JSN", R"({"timeout":2})");
  EXPECT_EQ(Run({"configure", "--timeout", "30"}).status, 0);
  EXPECT_EQ(Read("CONFIG"), R"({"timeout":1})");
  EXPECT_EQ(Read("CONFIG.JSN"), R"({"timeout":30})");
}

TEST_F(Configure, ChangesAllThatAreNamed) {
  Write("CONFIG", "{}");
  EXPECT_EQ(Run({"configure",
                 "--server",
                 "http://1.2.3.4:5/",
                 "--alternate",
                 "http://1.2.3.4:65535/a",
                 "--terminal",
                 "AB123x",
                 "--protocol",
                 "2",
                 "--network",
                 "n",
                 "--header",
                 "h",
                 "--footer",
                 "f",
                 "--timeout",
                 "1",
                 "--offline",
                 "1",
                 "--shift-mode",
                 "1",
                 "--local-bonus",
                 "2",
                 "--global-bonus",
                 "3",
                 "--fee",
                 "5",
                 "--log-size",
                 "3"})
                .status,
            0);
  EXPECT_EQ(nlohmann::json::parse(Read("CONFIG")),
            nlohmann::json({{"serverAddr", "http://1.2.3.4:5/"},
                            {"serverAltAddr", "http://1.2.3.4:65535/a"},
                            {"terminalId", "AB123x"},
                            {"protocolVersion", "2"},
                            {"retailNetworkName", "n"},
                            {"receiptHeader", "h"},
                            {"receiptFooter", "f"},
                            {"timeout", 1},
                            {"offlineMode", 1},
                            {"shiftMode", 1},
                            {"localBonusOffline", 2},
                            {"globalBonusOffline", 3},
                            {"orgFeeOffline", 5},
                            {"logSize", 3}}));
}

TEST_F(Configure, TellsAProgramWhatItWrote) {
  Write("CONFIG", "{}");
  EXPECT_EQ(Facts({"configure", "--timeout", "30"}),
            nlohmann::json({{"file", (folder / "CONFIG").u8string()}, {"settings", {{"timeout", 30}}}}));
}

TEST_F(Configure, RefusesWhatCannotWork) {
  Write("CONFIG", R"({"localBonusOffline":3,"globalBonusOffline":2})");
  Refuse({}, 2, "which setting?");
  for (const char *address :
       {"foo", "http://foo:80/ws", "http://10.0.0.5/ws", "http://10.0.0.5:8080", "10.0.0.5:80/",
        "http://10.0.0.5:0/", "http://10.0.0.5:65536/", "http://10.0.0.5:80a/", "http://10.0.0.5:/",
        "http://10.0.0.256:80/", "http://10.0.5:80/", "http://:80/", "http://", ""}) {
    Refuse({"--server", address}, 2, "--server: not an address the library can use: " + std::string(address));
  }
  Refuse({"--server", "https://10.0.0.5:443/ws"}, 2, "speaks no TLS");
  Refuse({"--alternate", "foo"}, 2, "--alternate: not an address");
  for (const char *value : {"-1", "0", "3601", "soon", "1.5", ""}) {
    Refuse({"--timeout", value}, 2, "--timeout");
  }
  for (const char *value : {"2", "-1", "yes"}) Refuse({"--offline", value}, 2, "--offline");
  Refuse({"--shift-mode", "2"}, 2, "--shift-mode");
  Refuse({"--local-bonus", "101"}, 2, "--local-bonus");
  Refuse({"--global-bonus", "-1"}, 2, "--global-bonus");
  Refuse({"--log-size", "2"}, 2, "--log-size");
  // What would end the request's line, and an address that is nobody's.
  for (const char *address :
       {"http://10.0.0.5:80/a b", "http://10.0.0.5:80/a\nb", "http://10.0.0.5:80/a\x7F",
        "http://10.0.0.5:80/ HTTP/1.1", "http://0.0.0.0:80/ws", "http://0.00.000.0:80/"}) {
    Refuse({"--server", address}, 2, "--server: not an address the library can use: ");
    Refuse({"--alternate", address}, 2, "--alternate: not an address the library can use: ");
  }
  Refuse({"--server", "http://10.0.0.5:80/" + std::string(3000, 'x')}, 2, "--server: longer than an address");
  Refuse({"--protocol", ""}, 2, "--protocol: the server refuses everything without it");
  for (const char *option : {"--protocol", "--network", "--header", "--footer"}) {
    Refuse({option, "a\tb"}, 2, std::string(option) + ": it has control characters");
    Refuse({option, "a\x7F"}, 2, std::string(option) + ": it has control characters");
  }
  Refuse({"--network", "a\nb"}, 2, "--network: it has control characters");
  Refuse({"--terminal", "12345\n"}, 2, "--terminal: its first five characters");
  Refuse({"--terminal", "123"}, 2, "--terminal: its first five characters");
  Refuse({"--terminal", "12 456"}, 2, "--terminal: its first five characters");
  Refuse({"--header", std::string(1000, 'x')}, 2, "--header: longer than the line of a slip");
  Refuse({"--fee", "6"}, 2, "the fee of 6 % is more than both bonuses together (5 %)");
  Refuse({"--global-bonus", "1", "--fee", "5"}, 2, "together (4 %)");
}

TEST_F(Configure, TakesSeveralLinesForASlip) {
  Write("CONFIG", "{}");
  EXPECT_EQ(Run({"configure", "--header", "a\nb", "--footer", "c\nd"}).status, 0);
  EXPECT_EQ(Read("CONFIG"), "{\"receiptHeader\":\"a\\nb\",\"receiptFooter\":\"c\\nd\"}");
}

TEST_F(Configure, LeavesAloneWhatItCannotRead) {
  for (const char *text : {"", "{", "[]", "{\"timeout\":5", "{\"timeout\":5}}", "nothing"}) {
    Write("CONFIG", text);
    Refuse({"--timeout", "30"}, 3, "CONFIG cannot be read and is left as it is");
  }
  Write("CONFIG", "{}");
  Write("CONFIG.JSN", "{");
  Refuse({"--timeout", "30"}, 3, "CONFIG.JSN cannot be read and is left as it is");
}

TEST_F(Configure, IsReadByTheNextOperation) {
  Configure::Till::Configure("", "http://127.0.0.1:1/ws");
  const test::Outcome run = Run({"interactive"}, "balance --card 1000000001\nconfigure --server " +
                                                     ServerAddress() + "\nbalance --card 1000000001\n");
  EXPECT_THAT(run.err, HasSubstr("error -501"));
  EXPECT_THAT(run.out, HasSubstr("balance 700.00"));
}

}  // namespace
