// end_to_end/server_trouble_test.cpp: everything that a server can do wrong, as the register sees it.
#include "end_to_end/register.h"
#include "support/wine.h"

namespace {

using test::Answer;
using test::kFirstRrn;
using test::kSecondRrn;
using test::State;
using test::Success;
using testing::HasSubstr;
using End = test::Answer::End;

// A whole answer of `size` bytes.
std::string AnswerOf(size_t size) {
  const std::string begin = R"({"putDepositResponse":{"response":{"requestState":"SUCCESS","message":")";
  const std::string end = "\"}}}";
  return begin + std::string(size - begin.size() - end.size(), 'm') + end;
}

std::string Cut(const std::string &answer, size_t bytes) {
  return answer.substr(0, bytes);
}

// As the client takes it: what a server sends at once may be received in any pieces.
std::vector<std::string> Pieces(const std::string &answer) {
  std::vector<std::string> pieces;
  for (size_t at = 0; at < answer.size(); at += 500) pieces.push_back(answer.substr(at, 500));
  return pieces;
}

std::string DeepObjects(int depth) {
  std::string deep;
  for (int i = 0; i < depth; ++i) deep += "{\"a\":";
  return deep + "1" + std::string(static_cast<size_t>(depth), '}');
}

struct TroubleCase {
  const char *name;
  Answer answer;
  int code;
  std::string trace;  // somewhere in the trace, in one piece
};

void PrintTo(const TroubleCase &trouble, std::ostream *out) {
  *out << trouble.name;
}

// What the answer of one byte less than a whole one is: no document, so no root.
constexpr char kNoRoot[] = "ParseOperationResponse\nERROR: no root element in json response\nDisconnect\n";

const TroubleCase kTroubles[] = {
    {"ClosedWithoutAnAnswer",
     {{}, End::kClose},
     -401,
     "Receiving \n"
     "Connection closed\n"
     "ERROR: LUMO_Receive res 0\n"
     "ERROR: No data received\n"
     "Disconnect\n"},
    {"SilentWithoutAnAnswer",
     {{}, End::kSilence},
     -401,
     "Receiving \n"
     "ERROR: recv failed with error: 10060\n"
     "ERROR: LUMO_Receive res -1\n"
     "ERROR: LUMO_Receive error: -1\n"
     "Disconnect\n"},
    {"CutInTheMiddle", {{Cut(AnswerOf(300), 150)}, End::kClose}, -402, kNoRoot},
    {"CutBehindAPiece",
     {{Cut(AnswerOf(600), 500)}, End::kClose},
     -402,
     "\nConnection closed\nERROR: LUMO_Receive res 0\n" + std::string(kNoRoot)},
    {"SilentBehindAPiece",
     {{AnswerOf(500)}, End::kSilence},
     -401,
     "ERROR: recv failed with error: 10060\n"
     "ERROR: LUMO_Receive res -1\n"
     "ERROR: LUMO_Receive error: -1\n"
     "Disconnect\n"},
    {"OneByteShort", {{Cut(AnswerOf(300), 299)}, End::kClose}, -402, kNoRoot},
    {"Blanks", {{" \r\n\t"}, End::kClose}, -402, kNoRoot},
    {"AZeroByte", {{std::string(1, '\0')}, End::kClose}, -401, "\nERROR: No data received\nDisconnect\n"},
    {"Rubbish", {{"\xFF\xFE\x01 what?"}, End::kClose}, -303, "\nERROR: JSON Parser Error "},
    {"AnHttpHead",
     {{"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}"}, End::kClose},
     -303,
     "ERROR: JSON Parser Error "},
    {"SomethingBehindTheDocument", {{"{\"a\":{}}{}"}, End::kClose}, -303, "ERROR: JSON Parser Error "},
    {"DeepNesting", {{std::string(400000, '[')}, End::kClose}, -402, kNoRoot},
    {"DeepObjects", {Pieces(DeepObjects(5000)), End::kClose}, -403, "ERROR: No parts in transaction [a]\n"},
    {"Status400",
     {{"<html>HTTP Status 400 - Bad</html>"}, End::kClose},
     -406,
     "\nParseOperationResponse\nERROR: HTTP status 400\nDisconnect\n"},
    {"Status500",
     {{"<html>HTTP Status 500 - Broken</html>"}, End::kClose},
     -407,
     "\nParseOperationResponse\nERROR: HTTP status 500\nDisconnect\n"},
    {"Status404",
     {{"<html>HTTP Status 404 - None</html>"}, End::kClose},
     -303,
     "ParseOperationResponse\nERROR: HTTP status 404\nERROR: JSON Parser Error "},
    {"Status400InsideAMessage",
     {{R"({"putDepositResponse":{"response":{"requestState":"SUCCESS","message":"HTTP Status 400"}}})"},
      End::kClose},
     -406,
     "ERROR: HTTP status 400\n"},
    {"ANumber", {{"17"}, End::kClose}, -402, kNoRoot},
    {"AnArray",
     {{"[{\"putDepositResponse\":{}}]"}, End::kClose},
     -402,
     "ERROR: root element is not an object\n"},
    {"AnEmptyObject", {{"{}"}, End::kClose}, -402, "ERROR: root element is empty!\n"},
    {"AnUnknownName",
     {{R"({"putdepositresponse":{"response":{"requestState":"SUCCESS"}}})"}, End::kClose},
     -403,
     "WARNING: Unsupport Response Name: putdepositresponse\n"
     "ERROR: No parts in transaction [putdepositresponse]\n"},
    {"ALongName",
     {{"{\"" + std::string(101, 'n') + "\":{}}"}, End::kClose},
     -403,
     "\nParseOperationResponse\nERROR: No parts in transaction [" + std::string(101, 'n') + "]\n"},
    {"NoParts",
     {{R"({"putDepositResponse":{}})"}, End::kClose},
     -404,
     "ERROR: Response is not full [0x0001 | 0x0000] [putDepositResponse]\n"},
    {"PartsThatAreNoObject",
     {{R"({"putDepositResponse":[1,2]})"}, End::kClose},
     -404,
     "ERROR: Response is not full [0x0001 | 0x0000] [putDepositResponse]\n"},
    {"AMissingPart",
     {{R"({"putPaymentResponse":{"response":{"requestState":"SUCCESS"}}})"}, End::kClose},
     -404,
     "ERROR: Response is not full [0x0005 | 0x0001] [putPaymentResponse]\n"},
    {"ARefusal",
     {{R"({"putDepositResponse":{"response":{"requestState":"ERROR","requestStateCode":"INCORRECT_SUM"}}})"},
      End::kClose},
     -405,
     "response.state = ERROR\nresponse.stateCode = INCORRECT_SUM\n"},
};

class ServerTrouble : public test::Register, public testing::WithParamInterface<TroubleCase> {};

TEST_P(ServerTrouble, GivesItsCodeAndNothingElseAndTheNextOperationWorks) {
  const TroubleCase &trouble = GetParam();
  Open({trouble.answer, Answer{{Success("putDepositResponse", "", kSecondRrn)}, End::kClose}},
       "\"timeout\":3,\"offlineMode\":1");
  EXPECT_EQ(shop.DepositProc(100), trouble.code);
  EXPECT_THAT(shop.Trace(), HasSubstr(trouble.trace));
  EXPECT_EQ(Body(), "");
  EXPECT_FALSE(shop.Exists("LOG"));
  EXPECT_FALSE(shop.Exists("OFFLINE"));
  EXPECT_EQ(shop.Read("STATE"), State(kFirstRrn));

  EXPECT_EQ(shop.DepositProc(100), 0);
  EXPECT_EQ(Body(),
            "******* ДЕПОЗИТ *******\n"
            "RRN: 1234512120500009\n"
            "Зачислено (бнс.):\n"
            "                    1.00");
  EXPECT_EQ(shop.Read("LOG"), test::Record("DEPOSIT", R"("deposit":{"amount":100})", kSecondRrn));
}

INSTANTIATE_TEST_SUITE_P(Every, ServerTrouble, testing::ValuesIn(kTroubles),
                         [](const auto &trouble) { return std::string(trouble.param.name); });

class AnswerSize : public test::Register, public testing::WithParamInterface<size_t> {};

// An answer ends with the first piece shorter than 500 bytes; one of whole pieces ends with the connection.
TEST_P(AnswerSize, DoesNotMatterToAServerThatCloses) {
  Open({Answer{Pieces(AnswerOf(GetParam())), End::kClose}});
  EXPECT_EQ(shop.DepositProc(0), 0);
  EXPECT_EQ(shop.Trace().find("ERROR: LUMO_Receive res 0\n") != std::string::npos, GetParam() % 500 == 0);
}

INSTANTIATE_TEST_SUITE_P(AroundAPiece, AnswerSize,
                         testing::Values(499, 500, 501, 999, 1000, 1001, 5000, 50001));

class AnyAnswer : public test::Register {};

TEST_F(AnyAnswer, EndsWithItsFirstShortPiece) {
  Open({Answer{{Cut(AnswerOf(300), 100), AnswerOf(300).substr(100)}, End::kClose}});
  EXPECT_EQ(shop.DepositProc(0), -402);
}

TEST_F(AnyAnswer, ForAnotherOperationIsTakenByItsName) {
  Open({Success("getBalanceResponse", R"("balance":{"account":[]})")});
  EXPECT_EQ(shop.DepositProc(0), 0);
  EXPECT_EQ(Body(), "******* ДЕПОЗИТ *******\nRRN: 1234512120500008\n");
}

TEST_F(AnyAnswer, MayHaveMoreThanItNeeds) {
  Open({Success("putDepositResponse", R"("ad":{"text":"Купите чай"},"colour":"red")")});
  EXPECT_EQ(shop.DepositProc(0), 0);
  EXPECT_THAT(
      shop.Trace(),
      HasSubstr("ERROR: Unsupported part of activation [colour]\n"
                "WARNING: Response has extra parts [0x0001 | 0x2001] [putDepositResponse]\nDisconnect\n"));
}

class Reset : public test::Register {
 protected:
  // True on a host where the reset may arrive as an ordinary end, when it has.
  bool HasArrivedAsEnd() {
    return test::EndMayPrecedeReset() && shop.Trace().find("Connection closed\n") != std::string::npos;
  }
};

TEST_F(Reset, ConnectionIsNoAnswer) {
  Open({Answer{{}, End::kReset}, Answer{{Success("putDepositResponse", "", kSecondRrn)}, End::kClose}});
  EXPECT_EQ(shop.DepositProc(0), -401);
  EXPECT_THAT(shop.Trace(), HasSubstr(HasArrivedAsEnd() ? "Receiving \n"
                                                          "Connection closed\n"
                                                          "ERROR: LUMO_Receive res 0\n"
                                                          "ERROR: No data received\n"
                                                          "Disconnect\n"
                                                        : "Receiving \n"
                                                          "ERROR: recv failed with error: 10054\n"
                                                          "ERROR: LUMO_Receive res -1\n"
                                                          "ERROR: LUMO_Receive error: -1\n"
                                                          "Disconnect\n"));
  EXPECT_EQ(Body(), "");
  EXPECT_FALSE(shop.Exists("LOG"));
  EXPECT_EQ(shop.DepositProc(0), 0);
}

// Whole pieces that were received do not make an answer either; the same ones are one when the server closes.
TEST_F(Reset, BehindADocumentMakesItNoAnswer) {
  Open({Answer{{AnswerOf(500)}, End::kReset}});
  const int code = shop.DepositProc(0);
  EXPECT_EQ(code, HasArrivedAsEnd() ? 0 : -401);
  EXPECT_EQ(shop.Exists("LOG"), code == 0);
}

struct Address {
  const char *name;
  const char *address;
  const char *trace;
};

void PrintTo(const Address &address, std::ostream *out) {
  *out << address.name;
}

const Address kAddresses[] = {
    {"Empty", "", "ERROR: ParseAddress res[-504]\n"},
    {"NoScheme", "127.0.0.1:80/ws", "ERROR: ParseAddress res[-504]\n"},
    {"AnotherScheme", "https://127.0.0.1:80/ws", "ERROR: ParseAddress res[-504]\n"},
    {"UpperCase", "HTTP://127.0.0.1:80/ws", "ERROR: ParseAddress res[-504]\n"},
    {"LeadingBlank", " http://127.0.0.1:80/ws", "ERROR: ParseAddress res[-504]\n"},
    {"NoPort", "http://127.0.0.1/ws", "ERROR: ParseAddress res[-504]\n"},
    {"NoPath", "http://127.0.0.1:80", "ERROR: ParseAddress res[-504]\n"},
    {"AName", "http://localhost:80/ws", "Connecting to localhost:80//ws...\nERROR: incorrect IP address\n"},
    {"NoHost", "http://:80/ws", "Connecting to :80//ws...\nERROR: incorrect IP address\n"},
    {"TooManyNumbers", "http://127.0.0.1.2:80/ws",
     "Connecting to 127.0.0.1.2:80//ws...\nERROR: incorrect IP address\n"},
    {"NumbersTooLarge", "http://127.0.0.256:80/ws",
     "Connecting to 127.0.0.256:80//ws...\nERROR: incorrect IP address\n"},
};

class WrongAddress : public test::Register, public testing::WithParamInterface<Address> {};

TEST_P(WrongAddress, OfTheServerIsPassedOverForTheAlternateOne) {
  const test::ScriptedServer alternate(Success("putDepositResponse"));
  shop.Start(GetParam().address, R"("serverAltAddr":")" + alternate.address() + "\"");
  ASSERT_EQ(shop.CreateTransaction(test::kCard, test::kCashier), 0);
  EXPECT_EQ(shop.DepositProc(0), 0);
  EXPECT_THAT(shop.Trace(), HasSubstr("TransactionProcessJson\n" + std::string(GetParam().trace) +
                                      "Connecting to 127.0.0.1:" + std::to_string(alternate.port()) +
                                      "//ws...\n"
                                      "Connection established!\n"));
}

TEST_P(WrongAddress, OfBothServersIsNoConnection) {
  shop.Start(GetParam().address, R"("serverAltAddr":")" + std::string(GetParam().address) + "\"");
  ASSERT_EQ(shop.CreateTransaction(test::kCard, test::kCashier), 0);
  EXPECT_EQ(shop.DepositProc(0), -501);
  EXPECT_EQ(Body(), "");
  EXPECT_FALSE(shop.Exists("LOG"));
  EXPECT_EQ(shop.Read("STATE"), State(kFirstRrn));
}

INSTANTIATE_TEST_SUITE_P(Every, WrongAddress, testing::ValuesIn(kAddresses),
                         [](const auto &address) { return std::string(address.param.name); });

class Refused : public test::Register {};

TEST_F(Refused, AlternateServerIsAskedAndNamedInTheRequest) {
  server = std::make_unique<test::ScriptedServer>(Success("putDepositResponse"));
  shop.Start("http://127.0.0.1:" + std::to_string(test::UnusedPort()) + "/main",
             R"("serverAltAddr":")" + server->address() + "\"");
  ASSERT_EQ(shop.CreateTransaction(test::kCard, test::kCashier), 0);
  EXPECT_EQ(shop.DepositProc(100), 0);
  EXPECT_THAT(shop.Trace(), HasSubstr("/main...\nERROR: Connection Failed 10061\nConnecting to 127.0.0.1:"));
  EXPECT_EQ(server->requests().at(0),
            Post("deposit", test::Request("putDepositRequest", "DEPOSIT", R"("deposit":{"amount":100})")));
}

TEST_F(Refused, ConnectionWithoutAnAlternateServerIsTracedOnce) {
  OpenAlone();
  EXPECT_EQ(shop.DepositProc(100), -501);
  EXPECT_THAT(shop.Trace(), HasSubstr("//ws...\n"
                                      "ERROR: Connection Failed 10061\n"
                                      "ERROR: ParseAddress res[-504]\n"
                                      "ERROR: Connection failed!\n"));
  EXPECT_EQ(shop.Trace().find("Disconnect"), std::string::npos);
}

// The connection ends without an answer: the alternate server is not asked a second time.
TEST_F(Refused, AnswerIsNotAskedForElsewhere) {
  const test::ScriptedServer alternate(Success("putDepositResponse"));
  Open({Answer{{}, End::kClose}}, R"("serverAltAddr":")" + alternate.address() + "\"");
  EXPECT_EQ(shop.DepositProc(100), -401);
  EXPECT_EQ(alternate.requests().size(), 0U);
}

// Only a connection that cannot be made is offline; an answer that does not come is not.
TEST_F(Refused, AnswerIsNoReasonToPayOffline) {
  Open({Answer{{}, End::kClose}, Answer{{"HTTP Status 500"}, End::kClose}},
       R"("offlineMode":1,"localBonusOffline":3)");
  ASSERT_EQ(shop.CreateAmountBill(100, "BILL.JSN"), 0);
  const std::string bill = shop.Read("BILL.JSN");
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), -401);
  EXPECT_EQ(shop.PaymentConfirmProc("1"), -407);
  EXPECT_EQ(shop.Read("BILL.JSN"), bill);
  EXPECT_FALSE(shop.Exists("OFFLINE"));
  EXPECT_EQ(shop.getOfflineState(), 0);
}

// A day on which the server goes away and comes back.
TEST_F(Refused, ConnectionSwitchesTheShopOfflineAndTheNextExchangeBack) {
  OpenAlone(R"("offlineMode":1)");
  EXPECT_EQ(shop.DepositProc(1), -501);
  EXPECT_EQ(shop.getOfflineState(), 1);
  EXPECT_EQ(shop.DepositProc(1), -501);
  EXPECT_EQ(shop.getOfflineState(), 1);
  shop.CloseTransaction();
  const std::string state = shop.Read("STATE");
  Open({Success("putDepositResponse", "", kSecondRrn)}, R"("offlineMode":1)");
  shop.Write("STATE", state);
  EXPECT_EQ(shop.getOfflineState(), 1);
  EXPECT_EQ(shop.DepositProc(1), 0);
  EXPECT_EQ(shop.getOfflineState(), 0);
}

}  // namespace
