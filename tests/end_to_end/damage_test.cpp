// end_to_end/damage_test.cpp: files that are missing, empty, damaged, huge or of the wrong kind.
#include <filesystem>

#include "end_to_end/register.h"

namespace {

using test::kFirstRrn;
using test::kSecondRrn;
using test::Record;
using test::Request;
using test::State;
using test::Success;
using testing::HasSubstr;

constexpr size_t kEnormous = 10'000'000;

std::string Deep(size_t levels, char opening, char closing) {
  return std::string(levels, opening) + std::string(levels, closing);
}

// Texts are made when a test wants them: every test of the program would wait for the large ones.
using Text = std::string (*)();

struct Damage {
  const char *name;
  Text text;
  int code;
  std::string trace;
};

void PrintTo(const Damage &damage, std::ostream *out) {
  *out << damage.name;
}

std::string NameOf(const testing::TestParamInfo<Damage> &damage) {
  return damage.param.name;
}

// ---- Settings ----

class Config : public test::Register, public testing::WithParamInterface<Damage> {
 protected:
  Config() { shop.Write("STATE", State("1234512120500007")); }
};

const Damage kConfigs[] = {
    {"Empty", [] { return std::string(""); }, -111,
     "LoadConfig\nparseJsonFile [CONFIG]\nERROR: Config json root is NULL!\n"},
    {"CutShort", [] { return std::string(R"({"terminalId":"1")"); }, -111,
     "ERROR: Config json root is NULL!\n"},
    {"AnArray", [] { return std::string(R"([{"terminalId":"1"}])"); }, -111, ""},
    {"AText", [] { return std::string(R"("terminalId")"); }, -111, "ERROR: Config json root is NULL!\n"},
    {"Rubbish", [] { return std::string("terminalId = 1\n"); }, -111, "ERROR: parserJsonFile error [-303]\n"},
    {"ATrailingComma", [] { return std::string(R"({"terminalId":"1",})"); }, -111,
     "ERROR: parserJsonFile error [-303]\n"},
    {"TwoDocuments", [] { return std::string("{}{}"); }, -111, "ERROR: parserJsonFile error [-303]\n"},
    {"Zeros", [] { return std::string(std::string(4096, '\0')); }, -111,
     "ERROR: parserJsonFile error [-303]\n"},
    {"DeepNesting", [] { return std::string(Deep(100000, '[', ']')); }, -111, ""},
    {"DeepNestingThatIsCut", [] { return std::string(std::string(100000, '[')); }, -111,
     "ERROR: Config json root is NULL!\n"},
    {"DeepNestingInside", [] { return std::string(R"({"colour":)" + Deep(100000, '[', ']') + "}"); }, 0,
     "WARNING: Unknown config option [colour]\n"},
    {"EnormousBlanks", [] { return std::string(std::string(kEnormous, ' ')); }, -111,
     "ERROR: Config json root is NULL!\n"},
    {"EnormousText",
     [] { return std::string(R"({"colour":")" + std::string(kEnormous, 'x') + R"(","terminalId":"7"})"); }, 0,
     "WARNING: Unknown config option [colour]\nTerminal Id [7]\n"},
    {"ManyMembers",
     [] {
       return std::string([] {
         std::string members = "{";
         for (int i = 0; i < 20000; ++i) members += R"("timeout":1,)";
         return members + R"("timeout":2})";
       }());
     },
     0, "Timeout [1]\nTimeout [2]\n"},
    {"WronglyTyped",
     [] {
       return std::string(
           R"({"terminalId":{},"protocolVersion":[],"serverAddr":null,"timeout":"30s","offlineMode":true,"logSize":{}})");
     },
     0,
     "Terminal Id []\nProtocol Version []\nServer Address []\nTimeout [30]\nOffline Mode [0]\nLog Size "
     "[0]\n"},
    {"NumbersThatDoNotFit",
     [] { return std::string(R"({"timeout":99999999999999999999,"logSize":-99999999999999999999})"); }, 0,
     "Timeout [2147483647]\nLog Size [-2147483648]\n"},
    {"ALongKey", [] { return std::string("{\"" + std::string(100, 'k') + "\":1}"); }, 0,
     "WARNING: Unknown config option [" + std::string(40, 'k') + "]\n"},
    {"ByteOrderMark", [] { return std::string("\xEF\xBB\xBF{\"terminalId\":\"7\"}"); }, 0,
     "parseJsonFile [CONFIG]\nByte Order Mark skipping\nTerminal Id [7]\n"},
};

TEST_P(Config, GivesItsCodeAtTheStart) {
  shop.Write("CONFIG", GetParam().text());
  EXPECT_EQ(shop.LUMOInit(), GetParam().code);
  EXPECT_THAT(shop.Trace(), HasSubstr(GetParam().trace));
  EXPECT_EQ(shop.Read("CONFIG"), GetParam().text());
}

TEST_P(Config, NewlyDeliveredIsMovedOnlyWhenItIsGood) {
  shop.Write("CONFIG.JSN", GetParam().text());
  EXPECT_EQ(shop.LUMOInit(), GetParam().code);
  EXPECT_EQ(shop.Exists("CONFIG"), GetParam().code == 0);
  EXPECT_EQ(shop.Exists("CONFIG.JSN"), GetParam().code != 0);
  EXPECT_EQ(shop.Read(GetParam().code == 0 ? "CONFIG" : "CONFIG.JSN"), GetParam().text());
}

TEST_P(Config, ThatIsNewAndBadGivesWayToTheOneInForce) {
  if (GetParam().code == 0) return;  // the good ones are no subject of this rule
  shop.Write("CONFIG.JSN", GetParam().text());
  shop.Write("CONFIG", R"({"terminalId":"IN FORCE"})");
  EXPECT_EQ(shop.LUMOInit(), 0);
  EXPECT_STREQ(shop.getTerminalId(), "IN FORCE");
  EXPECT_TRUE(shop.Exists("CONFIG.JSN"));
}

INSTANTIATE_TEST_SUITE_P(Every, Config, testing::ValuesIn(kConfigs), NameOf);

class NoConfig : public test::Register {};

TEST_F(NoConfig, IsAFailedStart) {
  shop.Write("STATE", State("1234512120500007"));
  EXPECT_EQ(shop.LUMOInit(), -111);
  EXPECT_STREQ(shop.GetErrorMessage(-111), "Не удалось загрузить конфигурацию");
  EXPECT_EQ(shop.Read("STATE"), State("1234512120500007"));
}

// ---- State ----

class StateFile : public test::Register {
 protected:
  StateFile() { shop.Write("CONFIG", R"({"terminalId":"12345"})"); }
};

// The text is what is left of the file.
struct LeftState {
  const char *name;
  Text text;
  int code;
  bool replaced;
  std::string trace;
};

void PrintTo(const LeftState &state, std::ostream *out) {
  *out << state.name;
}

class DamagedState : public test::Register, public testing::WithParamInterface<LeftState> {};

const LeftState kStates[] = {
    {"Empty", [] { return std::string(""); }, -108, false,
     "LoadState\nparseJsonFile [STATE]\nERROR: State json root is NULL!\n"},
    {"CutShort", [] { return std::string(R"({"reqId":"1")"); }, -108, false,
     "ERROR: State json root is NULL!\n"},
    {"AnArray", [] { return std::string("[1]"); }, -108, false, "ERROR: State json structure error!\n"},
    {"ANumber", [] { return std::string("17"); }, -108, false, "ERROR: State json root is NULL!\n"},
    {"SyntaxError", [] { return std::string(R"({"reqId":})"); }, 0, true, "ERROR: JSON Parser Error res ["},
    {"Zeros", [] { return std::string(std::string(512, '\0')); }, 0, true, "ERROR: JSON Parser Error res ["},
    {"TwoStates", [] { return std::string(R"({"offline":0}{"offline":1})"); }, 0, true,
     "ERROR: JSON Parser Error res ["},
    {"EnormousRubbish", [] { return std::string(std::string(kEnormous, 'x')); }, 0, true,
     "ERROR: JSON Parser Error res ["},
    {"EnormousText", [] { return std::string(R"({"reqId":")" + std::string(kEnormous, '1') + "\"}"); }, 0,
     false, ""},
    {"DeepNesting", [] { return std::string(Deep(100000, '[', ']')); }, -108, false,
     "ERROR: State json structure error!\n"},
    {"WronglyTyped",
     [] {
       return std::string(
           R"({"reqId":{},"shiftId":[],"shiftOpenDate":5,"offline":"1","shiftState":true,"update":1.5})");
     },
     0, false,
     "WARNING: Wrong JSON type for offlineState [7]\n"
     "WARNING: Wrong JSON type for shiftState [9]\n"
     "WARNING: Wrong JSON type for needUpdate [6]\n"},
    {"LongDates", [] { return std::string(R"({"shiftOpenDate":")" + std::string(1000, '2') + "\"}"); }, 0,
     false, ""},
};

TEST_P(DamagedState, GivesItsCodeAndIsReplacedOnlyWhenItCannotBeParsed) {
  const LeftState &state = GetParam();
  shop.Write("CONFIG", R"({"terminalId":"12345"})");
  shop.Write("STATE", state.text());
  EXPECT_EQ(shop.LUMOInit(), state.code);
  EXPECT_THAT(shop.Trace(), HasSubstr(state.trace));
  EXPECT_EQ(shop.Read("STATE"), state.replaced ? "{}" : state.text());
  EXPECT_EQ(shop.LoadState(), state.code);
}

TEST_P(DamagedState, LetsTheShopWorkOn) {
  server = std::make_unique<test::ScriptedServer>(
      std::vector<test::Answer>{{{Success("getLastRrnResponse", R"("rrn":{"rrNumber":"1234512120500041"})")}},
                                {{Success("cardExchangeResponse", "", "1234512120500042")}}});
  shop.Start(server->address());
  shop.Write("STATE", GetParam().text());
  ASSERT_EQ(shop.CreateTransaction(test::kCard, test::kCashier), 0);
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_THAT(shop.Read("STATE"), HasSubstr("\"reqId\":\"1234512120500042\""));
  EXPECT_THAT(shop.Read("LOG"), HasSubstr("\"requestId\":\"1234512120500042\""));
}

INSTANTIATE_TEST_SUITE_P(Every, DamagedState, testing::ValuesIn(kStates),
                         [](const auto &state) { return std::string(state.param.name); });

TEST_F(StateFile, MissingIsMade) {
  EXPECT_EQ(shop.LUMOInit(), 0);
  EXPECT_EQ(shop.Read("STATE"), "{}");
  EXPECT_EQ(shop.OpenShift(nullptr), 0);
  EXPECT_EQ(shop.Read("STATE"),
            R"({"shiftId":"","shiftOpenDate":"2012-12-05T10:00:00Z","offline":0,"shiftState":1,"update":0})");
}

TEST_F(StateFile, ThatIsAFolderCannotBeMade) {
  std::filesystem::create_directory(std::filesystem::u8path(shop.folder() + "STATE"));
  EXPECT_EQ(shop.LUMOInit(), -108);
  EXPECT_EQ(shop.LoadState(), -109);
  EXPECT_EQ(shop.setOfflineState(1), -110);
  EXPECT_EQ(shop.setNeedUpdate(1), -110);
  EXPECT_THAT(shop.Trace(), HasSubstr("SaveState\n"
                                      "ERROR: CreateFile function failed with error 5\n"
                                      "WARNING: SaveState: Cant open file!\n"));
  EXPECT_EQ(shop.OpenShift("42"), 0);
}

// ---- Bills and return lists ----

class BadBill : public test::Register, public testing::WithParamInterface<Damage> {};

// The code is that of PaymentAndConfirmProc, the only one that tells.
const Damage kBills[] = {
    {"Empty", [] { return std::string(""); }, -402, "ERROR: root element is NULL\n"},
    {"CutShort", [] { return std::string(R"({"totalSum":1)"); }, -402, "ERROR: root element is NULL\n"},
    {"AnArray", [] { return std::string("[]"); }, -402, "ERROR: root element is not an object\n"},
    {"Rubbish", [] { return std::string("100.00"); }, -402, "ERROR: root element is NULL\n"},
    {"SyntaxError", [] { return std::string(R"({"totalSum":1,})"); }, -303, "ERROR: JSON Parser Error res ["},
    {"GoodListOfTheWrongKind", [] { return std::string(R"({"goodList":[]})"); }, -402,
     "ERROR: Goods list is not an object\n"},
    {"GoodsOfTheWrongKind", [] { return std::string(R"({"goodList":{"good":{}}})"); }, -402,
     "ERROR: Goods is not an array\n"},
    {"AGoodOfTheWrongKind", [] { return std::string(R"({"goodList":{"good":[{},7]}})"); }, -402,
     "ERROR: Good is not an object\n"},
    {"DeepNesting", [] { return std::string(Deep(100000, '[', ']')); }, -402,
     "ERROR: root element is not an object\n"},
    {"EnormousRubbish", [] { return std::string(std::string(kEnormous, '}')); }, -303,
     "ERROR: JSON Parser Error res ["},
};

TEST_P(BadBill, GivesItsCodeAndIsNotSentAndNotTouched) {
  Open({Success("putPaymentResponse", "\"bill\":{}")});
  shop.Write("BILL.JSN", GetParam().text());
  EXPECT_EQ(shop.PaymentProc(1, "BILL.JSN"), -106);
  EXPECT_THAT(shop.Trace(), HasSubstr(GetParam().trace));
  EXPECT_THAT(shop.Trace(), HasSubstr("ERROR: BillParse res [" + std::to_string(GetParam().code) + "] \""));
  EXPECT_EQ(shop.PaymentAndConfirmProc(1, "BILL.JSN"), GetParam().code);
  EXPECT_EQ(shop.ActivationProc("SIMPLE_ACTIVATION", "BILL.JSN", 1, nullptr, nullptr), -106);
  EXPECT_EQ(Body(), "");
  EXPECT_EQ(server->requests().size(), 0U);
  EXPECT_EQ(shop.Read("BILL.JSN"), GetParam().text());
  EXPECT_FALSE(shop.Exists("LOG"));
}

INSTANTIATE_TEST_SUITE_P(Every, BadBill, testing::ValuesIn(kBills), NameOf);

class OddBill : public test::Register {};

TEST_F(OddBill, MissingGivesItsCode) {
  Open({Success("putPaymentResponse", "\"bill\":{}")});
  EXPECT_EQ(shop.PaymentProc(1, "BILL.JSN"), -106);
  EXPECT_THAT(shop.Trace(), HasSubstr("ERROR: CreateFile function failed with error 2\n"
                                      "ERROR: BillParse res [-307] \"Не удалось открыть JSON-файл\"\n"));
  EXPECT_EQ(shop.PaymentAndConfirmProc(1, "BILL.JSN"), -307);
  EXPECT_EQ(shop.PaymentProc(1, "missing/BILL.JSN"), -106);
  EXPECT_THAT(shop.Trace(), HasSubstr("ERROR: CreateFile function failed with error 3\n"));
  EXPECT_FALSE(shop.Exists("BILL.JSN"));
}

TEST_F(OddBill, WronglyTypedIsReadAsFarAsItGoes) {
  Open({Success("putPaymentResponse", "\"bill\":{}")});
  shop.Write(
      "BILL.JSN",
      R"({"totalSum":"12","orderLen":null,"billNum":5,"billDate":"2012-12-05T10:00:00Z-and-much-longer",)"
      R"("colour":1,"goodList":{"x":1,"good":[{"title":7,"cnt":"3","bonus":5}]}})");
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), 0);
  ASSERT_EQ(server->requests().size(), 1U);
  EXPECT_THAT(server->requests().at(0), HasSubstr(R"("title":"7")"));
  EXPECT_THAT(shop.Trace(), HasSubstr("not a good element [x]\n"));
}

TEST_F(OddBill, OfManyGoodsIsSentAndRewrittenWhole) {
  std::string goods;
  for (int i = 1; i <= 10000; ++i) {
    goods += (i == 1 ? "" : ",") +
             std::string(R"({"title":"ЧАЙ","productCode":"008","positionCost":1,"orderNum":)") +
             std::to_string(i) + R"(,"cnt":1})";
  }
  const std::string rest =
      R"("orderLen":10000,"billNum":"1","billDate":"d","partnerFee":0,"goodList":{"good":[)" + goods + "]}}";
  OpenAlone(R"("offlineMode":1)");
  shop.Write("BILL.JSN", R"({"totalSum":10000,)" + rest);
  EXPECT_EQ(shop.PaymentProc(5, "BILL.JSN"), 0);
  const std::string kept = R"({"totalSum":10000,"spendBonus":false,)" + rest;
  EXPECT_EQ(shop.Read("BILL.JSN"), kept);
  EXPECT_EQ(shop.Read("OFFLINE"), Record("PAYMENT", "\"bill\":" + kept, kFirstRrn, true));
}

class BadReturnList : public test::Register, public testing::WithParamInterface<Damage> {};

const Damage kReturnLists[] = {
    {"Empty", [] { return std::string(""); }, -402, ""},
    {"CutShort", [] { return std::string(R"({"cashBackGood":[)"); }, -402, ""},
    {"AnArray", [] { return std::string(R"([{"pos":1}])"); }, -402, ""},
    {"SyntaxError", [] { return std::string(R"({"cashBackGood":[1 2]})"); }, -303,
     "ERROR: JSON Parser Error res ["},
    {"DeepNesting", [] { return std::string(Deep(100000, '[', ']')); }, -402, ""},
    {"EnormousRubbish", [] { return std::string(std::string(kEnormous, ']')); }, -303,
     "ERROR: JSON Parser Error res ["},
};

TEST_P(BadReturnList, IsNotSent) {
  Open({Success("putCashBackResponse", R"("cashBackResult":{"returnedSum":1})")});
  shop.Write("RETURN.JSN", GetParam().text());
  EXPECT_EQ(shop.CashBackProc("1", "RETURN.JSN"), -113);
  EXPECT_THAT(shop.Trace(), HasSubstr(GetParam().trace));
  EXPECT_THAT(shop.Trace(), HasSubstr("Bill Parse Res " + std::to_string(GetParam().code) + "\n"));
  EXPECT_EQ(shop.CashBackProc("1", "MISSING.JSN"), -113);
  EXPECT_THAT(
      shop.Trace(),
      HasSubstr(
          "CreateFile function failed with error 2\nCashback File Parse Finished\nBill Parse Res -307\n"));
  EXPECT_EQ(Body(), "");
  EXPECT_EQ(server->requests().size(), 0U);
  EXPECT_EQ(shop.Read("RETURN.JSN"), GetParam().text());
  EXPECT_FALSE(shop.Exists("LOG"));
}

INSTANTIATE_TEST_SUITE_P(Every, BadReturnList, testing::ValuesIn(kReturnLists), NameOf);

// ---- Journals ----

class Journal : public test::Register {};

TEST_F(Journal, OpenTailIsCutOff) {
  Open({Success("cardExchangeResponse")});
  shop.Write("LOG", "{\"request\":{}}\n{\"requ");
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(shop.Read("LOG"), "{\"request\":{}}\n" + Record("EXCHANGE", ""));
}

TEST_F(Journal, LosesItsOldestThirdWhenItIsFull) {
  Open({Success("cardExchangeResponse"), Success("putDepositResponse", "", kSecondRrn)}, R"("logSize":6)");
  shop.Write("LOG", "1\n2\n3\n4\n");
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(shop.Read("LOG"), "1\n2\n3\n4\n" + Record("EXCHANGE", ""));
  EXPECT_EQ(shop.DepositProc(1), 0);
  EXPECT_EQ(shop.Read("LOG"),
            "3\n4\n" + Record("EXCHANGE", "") + Record("DEPOSIT", R"("deposit":{"amount":1})", kSecondRrn));
  EXPECT_FALSE(shop.Exists("LOG.old"));
}

TEST_F(Journal, ThatIsAFolderIsAnOperationDoneWithoutARecord) {
  Open({Success("cardExchangeResponse"), Success("putPaymentResponse", R"("bill":{})", kSecondRrn)});
  std::filesystem::create_directory(std::filesystem::u8path(shop.folder() + "LOG"));
  EXPECT_EQ(shop.ExchangeProc("t"), -201);
  EXPECT_THAT(shop.Trace(), HasSubstr("[LOG] file is not opened\n"));
  EXPECT_EQ(Body(), "******** ЗАМЕНА ********\nRRN: 1234512120500008\n");
  // A payment does not tell.
  ASSERT_EQ(shop.CreateAmountBill(100, "BILL.JSN"), 0);
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), 0);
  EXPECT_EQ(shop.GenerateReport("1", "3"), 0);
}

TEST_F(Journal, LeftoverOfATrimStopsTheNextTrimAndNotTheRecord) {
  Open({Success("cardExchangeResponse")}, R"("logSize":3)");
  shop.Write("LOG", "1\n2\n");
  shop.Write("LOG.old", "old\n");
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(shop.Read("LOG"), "1\n2\n" + Record("EXCHANGE", ""));
  EXPECT_EQ(shop.Read("LOG.old"), "old\n");
  EXPECT_THAT(shop.Trace(), HasSubstr("rename function failed with code 183 \"LOG\" => \"LOG.old\"\n"));
}

TEST_F(Journal, OfflineThatCannotBeWrittenIsToldOfAConfirmation) {
  OpenAlone(R"("offlineMode":1)");
  std::filesystem::create_directory(std::filesystem::u8path(shop.folder() + "OFFLINE"));
  EXPECT_EQ(shop.PaymentConfirmProc("1"), -201);
  EXPECT_EQ(Body(), "");
}

TEST_F(Journal, RecordsOfAnyLengthAreKept) {
  Open({Success("cardExchangeResponse")});
  const std::string line(kEnormous, 'x');
  shop.Write("LOG", line + "\n");
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_TRUE(shop.Read("LOG") == line + "\n" + Record("EXCHANGE", ""));
}

// ---- Trace ----

TEST_F(Journal, TraceThatCannotBeWrittenIsLostAndNothingElse) {
  Open({Success("cardExchangeResponse")});
  std::filesystem::create_directory(std::filesystem::u8path(shop.folder() + "TRACE.TXT"));
  EXPECT_EQ(shop.ExchangeProc("t"), 0);
  EXPECT_EQ(Body(), "******** ЗАМЕНА ********\nRRN: 1234512120500008\n");
}

}  // namespace
