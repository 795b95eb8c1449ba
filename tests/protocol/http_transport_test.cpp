// protocol/http_transport_test.cpp: one exchange with the server: what goes over the wire, what is made of
// the answer, and what the trace tells of it.
#include "protocol/http_transport.h"

#include <initializer_list>
#include <string>
#include <utility>

#include "protocol/full_record.h"
#include "record/enumerations.h"
#include "support/record_fixture.h"
#include "support/scripted_server.h"
#include "support/wine.h"

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using End = test::Answer::End;

class Exchange : public ProtocolTest {
 protected:
  Exchange() {
    FillRecord(record);
    record->request.type = lumo::REQUEST_BALANCE;
    record->timeout = 10;
  }

  int Run(const std::string &address, const std::string &alternate = "") {
    Store(&record->serverAddr, address);
    Store(&record->serverAltAddr, alternate);
    folder.ClearTrace();
    return lumo::TransactionProcessJson(record);
  }
};

const std::string kSuccess = "{\"putDepositResponse\":{\"response\":{\"requestState\":\"SUCCESS\"}}}";

// A good answer of exactly `size` bytes, all but the shortest's many of them its message.
const std::string kAnswerBegin =
    "{\"putDepositResponse\":{\"response\":{\"requestState\":\"SUCCESS\",\"message\":\"";
const std::string kAnswerEnd = "\"}}}";
const size_t kShortest = kAnswerBegin.size() + kAnswerEnd.size();

std::string AnswerOfSize(size_t size) {
  return kAnswerBegin + std::string(size - kShortest, 'm') + kAnswerEnd;
}

// What the request of the filled record for a balance is.
std::string BalanceRequest(int port) {
  return "POST /ws/balance\nHost: 127.0.0.1:" + std::to_string(port) +
         "\nContent-Type: application/json-soap;charset=UTF-8\nContent-Length: 236\n\n"
         "{\"getBalanceRequest\":{\"request\":{\"ver\":\"1.2\",\"type\":\"BALANCE\","
         "\"requestId\":\"T000112120500001\",\"terminalId\":\"T0001\",\"requestDate\":\"2012-12-05T10:00:"
         "00Z\","
         "\"employeeId\":\"cashier 7\",\"cardNum\":\"7770001\",\"isOffline\":false,\"shiftId\":\"shift "
         "3\"}}}\n";
}

TEST_F(Exchange, SendsTheRequestByteForByteAndReadsTheAnswer) {
  const test::ScriptedServer server(kSuccess);
  EXPECT_EQ(Run(server.address()), 0);
  ASSERT_EQ(server.requests().size(), 1U);
  EXPECT_EQ(server.requests()[0], BalanceRequest(server.port()));
  EXPECT_EQ(TakeTrace(), "TransactionProcessJson\nConnecting to 127.0.0.1:" + std::to_string(server.port()) +
                             "//ws...\nConnection established!\nCreateOperationRequest\nSending buffer:\n" +
                             BalanceRequest(server.port()) + "\nReceiving \n" + kSuccess +
                             "\nParseOperationResponse\nresponse.state = SUCCESS\nDisconnect\n");
}

TEST_F(Exchange, ContentLengthCountsBytes) {
  const test::ScriptedServer server(kSuccess);
  Store(&record->request.cardNum, "Чай");
  EXPECT_EQ(Run(server.address()), 0);
  // The body's length with its seven digits of card number, less one byte: three letters of two bytes.
  EXPECT_THAT(server.requests()[0], HasSubstr("Content-Length: 235\n"));
}

struct Method {
  int32_t type;
  const char *line;
};

TEST_F(Exchange, EveryTypeHasItsWebMethod) {
  const Method methods[] = {
      {0, "POST /ws/activate\n"}, {1, "POST /ws/payment\n"},      {2, "POST /ws/paymentAndConfirm\n"},
      {3, "POST /ws/confirm\n"},  {4, "POST /ws/balance\n"},      {5, "POST /ws/cashBack\n"},
      {6, "POST /ws/linkCard\n"}, {7, "POST /ws/cardExchange\n"}, {8, "POST /ws/deposit\n"},
      {9, "POST /ws/ad\n"},       {10, "POST /ws/rrn\n"},
  };
  for (const Method &method : methods) {
    const test::ScriptedServer server(kSuccess);
    record->request.type = static_cast<lumo::RequestType>(method.type);
    EXPECT_EQ(Run(server.address()), 0);
    EXPECT_THAT(server.requests()[0], StartsWith(method.line));
  }
}

TEST_F(Exchange, BarePathIsKept) {
  const test::ScriptedServer server(kSuccess);
  EXPECT_EQ(Run("http://127.0.0.1:" + std::to_string(server.port()) + "/"), 0);
  EXPECT_THAT(server.requests()[0], StartsWith("POST //balance\n"));
  EXPECT_THAT(TakeTrace(), HasSubstr("Connecting to 127.0.0.1:" + std::to_string(server.port()) + "//...\n"));
}

TEST_F(Exchange, HeadLinesMayHaveAnyLength) {
  const test::ScriptedServer server(kSuccess);
  const std::string path = "/" + std::string(5000, 'p');
  EXPECT_EQ(Run("http://127.0.0.1:" + std::to_string(server.port()) + path), 0);
  EXPECT_THAT(server.requests()[0], StartsWith("POST " + path + "/balance\nHost: 127.0.0.1:"));
}

TEST_F(Exchange, LongRequestArrivesWhole) {
  const test::ScriptedServer server(kSuccess);
  record->request.type = lumo::REQUEST_EXCHANGE;
  const std::string token(1000000, 't');
  Store(&record->exchangeToken, token);
  EXPECT_EQ(Run(server.address()), 0);
  EXPECT_THAT(server.requests()[0], EndsWith("\"cardExchange\":{\"token\":\"" + token + "\"}}}\n"));
}

TEST_F(Exchange, RefusalOfTheServerIsPassedOn) {
  const test::ScriptedServer server("{\"getBalanceResponse\":{\"response\":{\"requestState\":\"ERROR\"}}}");
  EXPECT_EQ(Run(server.address()), -405);
  EXPECT_THAT(TakeTrace(), EndsWith("response.state = ERROR\nDisconnect\n"));
}

TEST_F(Exchange, ResultsOfTheReaderArePassedOn) {
  const std::pair<const char *, int> answers[] = {
      {"{}", -402},
      {"{\"x\":{}}", -403},
      {"{\"putPaymentResponse\":{\"response\":{\"requestState\":\"SUCCESS\"}}}", -404},
      {"<b>HTTP Status 400 -</b>", -406},
      {"<b>HTTP Status 500 -</b>", -407},
      {"HTTP/1.1 200 OK\r\n\r\n{}", -303},
      {" \n", -402},
  };
  for (const auto &[answer, code] : answers) {
    const test::ScriptedServer server(answer);
    EXPECT_EQ(Run(server.address()), code) << answer;
    EXPECT_THAT(TakeTrace(), EndsWith("Disconnect\n"));
  }
}

// Answers around the size of a piece, all followed by the end of the connection.
TEST_F(Exchange, AnswerOfAnySizeIsReadWhole) {
  for (const size_t size :
       std::initializer_list<size_t>{100, 499, 500, 501, 999, 1000, 1001, 1500, 30000, 30001}) {
    const std::string answer = AnswerOfSize(size);
    const test::ScriptedServer server(answer);
    EXPECT_EQ(Run(server.address()), 0) << size;
    std::string received = "Receiving \n";
    for (size_t at = 0; at < size; at += 500) received += answer.substr(at, 500) + "\n";
    // Only the end of the connection tells that a whole last piece was the last.
    if (size % 500 == 0) received += "Connection closed\nERROR: LUMO_Receive res 0\n";
    EXPECT_THAT(TakeTrace(), HasSubstr(received + "ParseOperationResponse\n")) << size;
    EXPECT_EQ(record->response.message, std::string(size - kShortest, 'm'));
  }
}

TEST_F(Exchange, WholeLastPieceBeforeSilenceIsMinus401) {
  for (const size_t size : std::initializer_list<size_t>{500, 1000}) {
    const test::ScriptedServer server({{{AnswerOfSize(size)}, End::kSilence}});
    record->timeout = 1;
    EXPECT_EQ(Run(server.address()), -401);
    EXPECT_THAT(TakeTrace(),
                EndsWith("\"}}}\nERROR: recv failed with error: 10060\nERROR: LUMO_Receive res -1\n"
                         "ERROR: LUMO_Receive error: -1\nDisconnect\n"));
  }
}

TEST_F(Exchange, ShorterPieceEndsTheAnswerWithoutWaiting) {
  for (const size_t size : std::initializer_list<size_t>{499, 501, 999}) {
    const test::ScriptedServer server({{{AnswerOfSize(size)}, End::kSilence}});
    EXPECT_EQ(Run(server.address()), 0) << size;
  }
}

TEST_F(Exchange, AnswerInWholePiecesIsReadOn) {
  const std::string answer = AnswerOfSize(1300);
  const test::ScriptedServer server(
      {{{answer.substr(0, 500), answer.substr(500, 500), answer.substr(1000)}}});
  EXPECT_EQ(Run(server.address()), 0);
}

TEST_F(Exchange, WhatFollowsAShorterPieceIsNotRead) {
  const std::string answer = AnswerOfSize(900);
  const test::ScriptedServer server({{{answer.substr(0, 499), answer.substr(499)}}});
  EXPECT_EQ(Run(server.address()), -402);
  EXPECT_THAT(TakeTrace(), EndsWith("Receiving \n" + answer.substr(0, 499) +
                                    "\nParseOperationResponse\nERROR: no root element in json response\n"
                                    "Disconnect\n"));
}

TEST_F(Exchange, AnswerCutInTheMiddleIsNoAnswer) {
  const std::string answer = AnswerOfSize(900);
  for (const size_t length : std::initializer_list<size_t>{1, 250, 500, 700, 897}) {
    const test::ScriptedServer server(answer.substr(0, length));
    EXPECT_EQ(Run(server.address()), -402) << length;
  }
}

TEST_F(Exchange, ServerThatClosesAtOnceGaveNoData) {
  const test::ScriptedServer server({{{}, End::kClose}});
  EXPECT_EQ(Run(server.address()), -401);
  EXPECT_THAT(TakeTrace(), EndsWith("Receiving \nConnection closed\nERROR: LUMO_Receive res 0\n"
                                    "ERROR: No data received\nDisconnect\n"));
}

TEST_F(Exchange, ResetIsMinus401) {
  const test::ScriptedServer server({{{}, End::kReset}});
  EXPECT_EQ(Run(server.address()), -401);
  const std::string trace = TakeTrace();
  if (test::EndMayPrecedeReset() && trace.find("Connection closed\n") != std::string::npos) {
    EXPECT_THAT(trace, EndsWith("Receiving \nConnection closed\nERROR: LUMO_Receive res 0\n"
                                "ERROR: No data received\nDisconnect\n"));
    return;
  }
  EXPECT_THAT(trace,
              HasSubstr("Receiving \nERROR: recv failed with error: 10054\nERROR: LUMO_Receive res -1\n"
                        "ERROR: LUMO_Receive error: -1\nDisconnect\n"));
}

TEST_F(Exchange, SilenceIsMinus401) {
  const test::ScriptedServer server({{{}, End::kSilence}});
  record->timeout = 1;
  EXPECT_EQ(Run(server.address()), -401);
  EXPECT_THAT(TakeTrace(),
              EndsWith("Receiving \nERROR: recv failed with error: 10060\nERROR: LUMO_Receive res -1\n"
                       "ERROR: LUMO_Receive error: -1\nDisconnect\n"));
}

TEST_F(Exchange, ZeroByteLosesTheRestOfItsPiece) {
  const std::string zero(1, '\0');
  const test::ScriptedServer server(kSuccess + zero + "garbage");
  EXPECT_EQ(Run(server.address()), 0);
  EXPECT_THAT(TakeTrace(), HasSubstr("Receiving \n" + kSuccess + "\nParseOperationResponse\n"));
}

TEST_F(Exchange, PiecesBehindAZeroByteAreAppended) {
  const std::string zero(1, '\0');
  const std::string answer = AnswerOfSize(600);
  const test::ScriptedServer server(answer.substr(0, 100) + zero + std::string(399, 'x') +
                                    answer.substr(100, 400) + zero + std::string(99, 'y') +
                                    answer.substr(500));
  EXPECT_EQ(Run(server.address()), 0);
  EXPECT_THAT(TakeTrace(), HasSubstr("Receiving \n" + answer.substr(0, 100) + "\n" + answer.substr(100, 400) +
                                     "\n" + answer.substr(500) + "\nParseOperationResponse\n"));
}

TEST_F(Exchange, AnswerOfZeroBytesOnlyIsNoData) {
  const test::ScriptedServer server(std::string(700, '\0'));
  EXPECT_EQ(Run(server.address()), -401);
  EXPECT_THAT(TakeTrace(), EndsWith("Receiving \n\n\nERROR: No data received\nDisconnect\n"));
}

TEST_F(Exchange, AlternateAddressFollowsARefusedConnection) {
  const int unused = test::UnusedPort();
  const test::ScriptedServer server(kSuccess);
  EXPECT_EQ(Run("http://127.0.0.1:" + std::to_string(unused) + "/main", server.address()), 0);
  EXPECT_EQ(server.requests()[0], BalanceRequest(server.port()));
  EXPECT_THAT(TakeTrace(),
              StartsWith("TransactionProcessJson\nConnecting to 127.0.0.1:" + std::to_string(unused) +
                         "//main...\nERROR: Connection Failed 10061\nConnecting to 127.0.0.1:" +
                         std::to_string(server.port()) + "//ws...\nConnection established!\n"));
}

TEST_F(Exchange, AlternateAddressFollowsAnAddressThatCannotBeParsed) {
  const test::ScriptedServer server(kSuccess);
  EXPECT_EQ(Run("ftp://127.0.0.1:80/", server.address()), 0);
  EXPECT_THAT(TakeTrace(),
              StartsWith("TransactionProcessJson\nERROR: ParseAddress res[-504]\nConnecting to 127.0.0.1:" +
                         std::to_string(server.port()) + "//ws...\nConnection established!\n"));
}

TEST_F(Exchange, AlternateAddressIsNotTriedAfterAConnection) {
  const test::ScriptedServer server({{{}, End::kClose}});
  const test::ScriptedServer alternate(kSuccess);
  EXPECT_EQ(Run(server.address(), alternate.address()), -401);
  EXPECT_TRUE(alternate.requests().empty());
}

TEST_F(Exchange, BothServersUnreachableIsMinus501) {
  const std::string main = "127.0.0.1:" + std::to_string(test::UnusedPort());
  const std::string alternate = "127.0.0.1:" + std::to_string(test::UnusedPort());
  EXPECT_EQ(Run("http://" + main + "/a", "http://" + alternate + "/b"), -501);
  EXPECT_EQ(TakeTrace(), "TransactionProcessJson\nConnecting to " + main +
                             "//a...\nERROR: Connection Failed 10061\nConnecting to " + alternate +
                             "//b...\nERROR: Connection Failed 10061\n");
}

TEST_F(Exchange, MissingAlternateAddressIsTracedOnce) {
  const std::string main = "127.0.0.1:" + std::to_string(test::UnusedPort());
  const std::string trace = "TransactionProcessJson\nConnecting to " + main +
                            "//a...\nERROR: Connection Failed 10061\nERROR: ParseAddress res[-504]\n"
                            "ERROR: Connection failed!\n";
  EXPECT_EQ(Run("http://" + main + "/a", ""), -501);
  EXPECT_EQ(TakeTrace(), trace);
  record->serverAltAddr = nullptr;
  EXPECT_EQ(lumo::TransactionProcessJson(record), -501);
  EXPECT_EQ(TakeTrace(), trace);
}

TEST_F(Exchange, RefusedAlternateAfterAMissingMainIsMinus501) {
  const std::string alternate = "127.0.0.1:" + std::to_string(test::UnusedPort());
  EXPECT_EQ(Run("", "http://" + alternate + "/b"), -501);
  EXPECT_EQ(TakeTrace(), "TransactionProcessJson\nERROR: ParseAddress res[-504]\nConnecting to " + alternate +
                             "//b...\nERROR: Connection Failed 10061\n");
}

TEST_F(Exchange, AddressThatCannotBeParsedIsReportedAsNoConnection) {
  for (const char *address :
       {"", "127.0.0.1:80/ws", "https://127.0.0.1:80/ws", " http://127.0.0.1:80/ws", "HTTP://127.0.0.1:80/ws",
        "http://127.0.0.1/ws", "http://127.0.0.1:80", "http://"}) {
    EXPECT_EQ(Run(address, address), -501) << address;
    EXPECT_EQ(TakeTrace(),
              "TransactionProcessJson\nERROR: ParseAddress res[-504]\nERROR: ParseAddress res[-504]\n"
              "ERROR: Connection failed!\n")
        << address;
  }
  record->serverAddr = record->serverAltAddr = nullptr;
  EXPECT_EQ(lumo::TransactionProcessJson(record), -501);
}

TEST_F(Exchange, HostNameIsNotResolved) {
  EXPECT_EQ(Run("http://localhost:80/ws"), -501);
  EXPECT_THAT(TakeTrace(), StartsWith("TransactionProcessJson\nConnecting to localhost:80//ws...\n"
                                      "ERROR: incorrect IP address\nERROR: ParseAddress res[-504]\n"));
}

TEST_F(Exchange, PortIsTracedAsReadAndUsedByItsLow16Bits) {
  const test::ScriptedServer server(kSuccess);
  const std::string port = std::to_string(server.port() + 0x10000);
  EXPECT_EQ(Run("http://127.0.0.1:" + port + "/ws"), 0);
  EXPECT_THAT(TakeTrace(), HasSubstr("Connecting to 127.0.0.1:" + port + "//ws...\n"));
  EXPECT_THAT(server.requests()[0], HasSubstr("\nHost: 127.0.0.1:" + port + "\n"));
}

TEST_F(Exchange, ForgetsTheRequestIdOfAnEarlierAnswerAlone) {
  Store(&record->response.requestId, "old");
  Store(&record->response.message, "old");
  const test::ScriptedServer server(kSuccess);
  EXPECT_EQ(Run(server.address()), 0);
  EXPECT_EQ(record->response.requestId, nullptr);
  EXPECT_STREQ(record->response.message, "old");

  Store(&record->response.requestId, "old");
  EXPECT_EQ(Run("", ""), -501);
  EXPECT_EQ(record->response.requestId, nullptr);
}

TEST_F(Exchange, KeepsTheRequestIdOfItsAnswer) {
  const test::ScriptedServer server(
      "{\"putDepositResponse\":{\"response\":{\"requestState\":\"ERROR\",\"requestId\":\"new\"}}}");
  EXPECT_EQ(Run(server.address()), -405);
  EXPECT_STREQ(record->response.requestId, "new");
}

TEST_F(Exchange, OneAfterAnotherOnOneRecord) {
  const test::ScriptedServer server({{{kSuccess}}, {{}, End::kReset}, {{kSuccess}}});
  EXPECT_EQ(Run(server.address()), 0);
  EXPECT_EQ(Run(server.address()), -401);
  EXPECT_EQ(Run(server.address()), 0);
  EXPECT_EQ(server.requests().size(), 3U);
}

}  // namespace
