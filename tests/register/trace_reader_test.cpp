// register/trace_reader_test.cpp: exchanges out of a trace, however it is cut and whatever lies in it.
#include "trace_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using reg::Exchange;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::vector<Exchange> ReadTrace(const std::string &trace, size_t piece = std::string::npos) {
  std::vector<Exchange> exchanges;
  reg::TraceReader reader([&](const Exchange &exchange) { exchanges.push_back(exchange); });
  for (size_t at = 0; at < trace.size(); at += std::min(piece, trace.size() - at)) {
    reader.Feed(std::string_view(trace).substr(at, piece));
  }
  reader.Finish();
  return exchanges;
}

// The only exchange of the trace.
Exchange ReadOne(const std::string &trace) {
  const std::vector<Exchange> exchanges = ReadTrace(trace);
  EXPECT_THAT(exchanges, SizeIs(1)) << trace;
  return exchanges.empty() ? Exchange() : exchanges[0];
}

const std::string kBegin =
    "CreateTransaction [1000000001] [1]\n"
    "DepositProc(500)\n"
    "FillRequest(DEPOSIT)\n"
    "Next RRN generation [1234512120500009]\n"
    "TransactionProcess [DEPOSIT]\n"
    "TransactionProcessJson\n";
const std::string kSent =
    "Connecting to 10.0.0.5:8080//ws...\n"
    "Connection established!\n"
    "CreateOperationRequest\n"
    "Sending buffer:\n"
    "POST /ws/deposit\n"
    "Host: 10.0.0.5:8080\n"
    "\n"
    "{\"putDepositRequest\":{\"request\":{\"type\":\"DEPOSIT\",\"requestId\":\"1234512120500009\","
    "\"requestDate\":\"2012-12-05T10:00:00Z\",\"cardNum\":\"1000000001\"}}}\n"
    "\n"
    "Receiving \n";
const std::string kTaken =
    "{\"putDepositResponse\":{}}\n"
    "ParseOperationResponse\n"
    "response.requestId = 1234512120500009\n"
    "response.state = SUCCESS\n"
    "response.stateCode = OK\n"
    "Disconnect\n";
const std::string kEnd = "CloseTransaction()\n";

TEST(TraceReader, TellsWhatTheLinesTell) {
  const Exchange exchange = ReadOne(kBegin + kSent + kTaken + kEnd);
  EXPECT_EQ(exchange.number, 1u);
  EXPECT_EQ(exchange.operation, "DEPOSIT");
  EXPECT_EQ(exchange.call, "DepositProc(500)");
  EXPECT_EQ(exchange.rrn, "1234512120500009");
  EXPECT_EQ(exchange.time, "2012-12-05T10:00:00Z");
  EXPECT_EQ(exchange.head, "POST /ws/deposit\nHost: 10.0.0.5:8080\n");
  EXPECT_EQ(exchange.answer, "{\"putDepositResponse\":{}}");
  EXPECT_EQ(exchange.state + " " + exchange.stateCode, "SUCCESS OK");
  EXPECT_EQ(exchange.code, 0);
  EXPECT_THAT(exchange.cards, ElementsAre("1000000001"));
  ASSERT_NE(exchange.Reached(), nullptr);
  EXPECT_EQ(exchange.Reached()->server, "10.0.0.5:8080");
}

TEST(TraceReader, TakesPiecesOfAnySize) {
  const std::string trace = kBegin + kSent + kTaken + kEnd + kBegin + kSent + kTaken + kEnd;
  for (size_t piece = 1; piece < 200; ++piece) {
    const std::vector<Exchange> exchanges = ReadTrace(trace, piece);
    ASSERT_THAT(exchanges, SizeIs(2)) << piece;
    EXPECT_EQ(exchanges[1].code, 0) << piece;
    EXPECT_EQ(exchanges[1].answer, "{\"putDepositResponse\":{}}") << piece;
  }
}

TEST(TraceReader, TakesTheLineEndsOfWindows) {
  std::string trace;
  for (const char byte : kBegin + kSent + kTaken + kEnd) {
    trace += byte == '\n' ? "\r\n" : std::string(1, byte);
  }
  const Exchange exchange = ReadOne(trace);
  EXPECT_EQ(exchange.code, 0);
  EXPECT_EQ(exchange.head, "POST /ws/deposit\nHost: 10.0.0.5:8080\n");
}

struct EndingCase {
  const char *name;
  std::string lines;  // behind the connection's begin
  int code;
};

TEST(TraceReader, KnowsTheCodeOfEachEnding) {
  const std::string connect = "Connecting to 10.0.0.5:8080//ws...\n";
  const std::string parse = kSent + "{}\nParseOperationResponse\n";
  const EndingCase cases[] = {
      {"Refused", parse + "response.state = ERROR\nresponse.stateCode = LOCKED_CARD\nDisconnect\n", -405},
      {"NoJson", parse + "ERROR: JSON Parser Error 7 0\nDisconnect\n", -303},
      {"Nothing",
       kSent + "Connection closed\nERROR: LUMO_Receive res 0\nERROR: No data received\nDisconnect\n", -401},
      {"InTime",
       kSent + "ERROR: recv failed with error: 10060\nERROR: LUMO_Receive res -1\n"
               "ERROR: LUMO_Receive error: -1\nDisconnect\n",
       -401},
      {"Cut", parse + "ERROR: no root element in json response\nDisconnect\n", -402},
      {"Array", parse + "ERROR: root element is not an object\nDisconnect\n", -402},
      {"Empty", parse + "ERROR: root element is empty!\nDisconnect\n", -402},
      {"BillOfAnotherKind",
       parse + "response.state = SUCCESS\nERROR: root element is not an object\nDisconnect\n", 0},
      {"BillBeforeTheState",
       parse + "ERROR: root element is not an object\nresponse.state = SUCCESS\nDisconnect\n", 0},
      {"Name",
       parse + "WARNING: Unsupport Response Name: x\nERROR: No parts in transaction [x]\nDisconnect\n", -403},
      {"Part",
       parse + "response.state = SUCCESS\nERROR: Response is not full [0x0005 | 0x0001] [x]\nDisconnect\n",
       -404},
      {"Status400", parse + "ERROR: HTTP status 400\nDisconnect\n", -406},
      {"Status500", parse + "ERROR: HTTP status 500\nDisconnect\n", -407},
      {"Status404", parse + "ERROR: HTTP status 404\nERROR: JSON Parser Error 7 0\nDisconnect\n", -303},
      {"NotSent",
       connect + "Connection established!\nCreateOperationRequest\nSending buffer:\nPOST /\n\n{}\n\n"
                 "ERROR: send failed with error: 10054\nERROR: LUMO_Send error: -1\nDisconnect\n",
       -410},
      {"NotMade",
       connect + "Connection established!\nCreateOperationRequest\n"
                 "ERROR: Create operation request JSON printer init failed [1]Disconnect\n",
       -411},
      {"NoServer",
       connect + "ERROR: Connection Failed 10061\nERROR: ParseAddress res[-504]\n"
                 "ERROR: Connection failed!\n",
       -501},
      {"NoAddress",
       "ERROR: ParseAddress res[-504]\nERROR: ParseAddress res[-504]\nERROR: Connection failed!\n", -501},
      {"Names", connect + "ERROR: incorrect IP address\n" + connect + "ERROR: incorrect IP address\n", -501},
      {"NoSockets",
       connect + "ERROR: WSAStartup failed with error: 10091\n" + connect +
           "ERROR: WSAStartup failed with error: 10091\n",
       -1},
  };
  for (const EndingCase &row : cases) {
    EXPECT_EQ(ReadOne(kBegin + row.lines + kEnd).code, row.code) << row.name;
  }
}

TEST(TraceReader, TellsWhyEachServerWasNotReached) {
  const Exchange exchange = ReadOne(kBegin +
                                    "Connecting to 10.0.0.5:8080//ws...\n"
                                    "ERROR: Connection Failed 10060\n"
                                    "Connecting to 10.0.0.6:8080//ws...\n"
                                    "ERROR: Connection Failed 10065\n" +
                                    kEnd);
  ASSERT_THAT(exchange.attempts, SizeIs(2));
  EXPECT_EQ(exchange.attempts[0].problem, "no connection in time");
  EXPECT_EQ(exchange.attempts[1].problem, "unreachable");
  EXPECT_EQ(exchange.Reached(), nullptr);
}

TEST(TraceReader, PutsThePiecesOfAnAnswerTogether) {
  const std::string answer = "{\"a\":\"" + std::string(1200, 'x') + "\"}";
  const std::string pieces =
      answer.substr(0, 500) + "\n" + answer.substr(500, 500) + "\n" + answer.substr(1000) + "\n";
  EXPECT_EQ(ReadOne(kBegin + kSent + pieces + "ParseOperationResponse\nDisconnect\n").answer, answer);
}

TEST(TraceReader, KeepsAnAnswersOwnLineFeeds) {
  // The 500th byte of the answer is a line feed.
  const std::string answer = "{\n" + std::string(497, ' ') + "\n\"a\":1}";
  const std::string pieces = answer.substr(0, 500) + "\n" + answer.substr(500) + "\n";
  EXPECT_EQ(ReadOne(kBegin + kSent + pieces + "ParseOperationResponse\nDisconnect\n").answer, answer);
}

TEST(TraceReader, ShowsTheQuestionForTheLastNumberBesideItsOperation) {
  const std::vector<Exchange> exchanges = ReadTrace(
      "CreateTransaction [1000000001] [1]\nBalanceProc()\nFillRequest(BALANCE)\nGetLastRrnProcess\n"
      "FillRequest(LAST_RRN)\nTransactionProcess [LAST_RRN]\n" +
      kSent + kTaken +
      "First RRN generation [1234512120500000]\nTransactionProcess [BALANCE]\n"
      "Connecting to 10.0.0.5:8080//ws...\n");
  ASSERT_THAT(exchanges, SizeIs(2));
  EXPECT_EQ(exchanges[0].operation, "LAST_RRN");
  EXPECT_EQ(exchanges[0].rrn, "");
  EXPECT_EQ(exchanges[1].operation, "BALANCE");
  EXPECT_EQ(exchanges[1].rrn, "1234512120500000");
  EXPECT_EQ(exchanges[1].call, "BalanceProc()");
  EXPECT_EQ(exchanges[1].code, std::nullopt);
}

TEST(TraceReader, ShowsNoNumberThatWasMadeAndNotUsed) {
  const Exchange exchange = ReadOne(
      "DepositProc(500)\nFillRequest(DEPOSIT)\n"
      "ERROR: Date compare error - old rrn date[130101] request date[121205]\n"
      "First RRN generation [1234512120500000]\nTransactionProcess [DEPOSIT]\n"
      "ERROR: ParseAddress res[-504]\nERROR: ParseAddress res[-504]\n");
  EXPECT_EQ(exchange.rrn, "");
  EXPECT_THAT(exchange.problems,
              ElementsAre("ERROR: Date compare error - old rrn date[130101] request date[121205]"));
}

TEST(TraceReader, KnowsARecordThatNoServerHeardAgain) {
  const Exchange exchange = ReadOne(
      "SendOfflinePayments()\nLoadLogRecord\nrequest.requestId = 1234512120500008\n"
      "request.requestDate = 2012-12-05T10:00:00Z\nrequest.cardNum = 1000000001\nTransactionProcess "
      "[PAYMENT]\n"
      "ERROR: ParseAddress res[-504]\nERROR: ParseAddress res[-504]\nERROR: Offline record sending error "
      "-501\n");
  EXPECT_TRUE(exchange.replayed);
  EXPECT_EQ(exchange.rrn, "1234512120500008");
  EXPECT_EQ(exchange.time, "2012-12-05T10:00:00Z");
  EXPECT_THAT(exchange.cards, ElementsAre("1000000001"));
  EXPECT_THAT(exchange.problems, ElementsAre("ERROR: Offline record sending error -501"));
}

TEST(TraceReader, KnowsWhatWasDoneWithoutAServer) {
  const std::string away =
      "ERROR: ParseAddress res[-504]\nERROR: ParseAddress res[-504]\nERROR: Connection failed!\n";
  const std::string state =
      "LoadState\nNo BOM found 7B 22 72\nERROR: SetFilePointer function failed with error 0\n";
  EXPECT_EQ(ReadOne("TransactionProcess [PAYMENT]\n" + away + state + "PaymentProcessOffline()\n").offline,
            reg::Offline::kCompleted);
  EXPECT_EQ(ReadOne("TransactionProcess [PAYMENT]\n" + away + state +
                    "PaymentProcessOffline()\n"
                    "ERROR: Organizer fee is greater than local + global bonusing\n")
                .offline,
            reg::Offline::kRefused);
  EXPECT_EQ(ReadOne("TransactionProcess [PAYMENT_CONFIRM]\n" + away + state +
                    "ERROR: SetFilePointer function failed with error 0\n")
                .offline,
            reg::Offline::kRecorded);
  EXPECT_EQ(ReadOne("TransactionProcess [PAYMENT_CONFIRM]\n" + away + state).offline, reg::Offline::kNo);
  EXPECT_EQ(ReadOne("TransactionProcess [BALANCE]\n" + away + state).offline, reg::Offline::kNo);
}

TEST(TraceReader, BeginsInTheMiddleOfAnExchange) {
  const std::string trace = kBegin + kSent + kTaken + kEnd + kBegin + kSent + kTaken + kEnd;
  for (size_t at = 0; at < trace.size() / 2; ++at) {
    const std::vector<Exchange> exchanges = ReadTrace(trace.substr(at));
    ASSERT_FALSE(exchanges.empty()) << at;
    EXPECT_EQ(exchanges.back().code, 0) << at;
    EXPECT_EQ(exchanges.back().operation, "DEPOSIT") << at;
    EXPECT_EQ(exchanges.back().rrn, "1234512120500009") << at;
  }
  EXPECT_EQ(ReadOne(kSent + kTaken).operation, "DEPOSIT");
}

TEST(TraceReader, EndsInTheMiddleOfAnExchange) {
  const std::string trace = kBegin + kSent + kTaken;
  for (size_t at = 0; at < trace.size(); ++at) {
    const std::vector<Exchange> exchanges = ReadTrace(trace.substr(0, at));
    EXPECT_LE(exchanges.size(), 1u) << at;
    if (exchanges.empty() || at >= trace.size() - 1) continue;
    EXPECT_EQ(exchanges[0].code, std::nullopt) << at;
  }
}

TEST(TraceReader, GoesOnBehindAKilledProcess) {
  const std::string trace = kBegin + kSent + kTaken;
  for (size_t at = kBegin.size(); at < trace.size(); ++at) {
    const std::vector<Exchange> exchanges = ReadTrace(trace.substr(0, at) + "LUMOInit()\n" + trace + kEnd);
    ASSERT_THAT(exchanges, SizeIs(2)) << at;
    EXPECT_EQ(exchanges[1].code, 0) << at;
    EXPECT_EQ(exchanges[1].number, 2u) << at;
  }
}

TEST(TraceReader, KeepsTheLibrarysLastLine) {
  const Exchange exchange =
      ReadOne(kBegin + kSent + kTaken + "ERROR: ASSERT IN memory.cpp LINE 12: no memory\n" + "LUMOInit()\n");
  EXPECT_EQ(exchange.fatal, "ERROR: ASSERT IN memory.cpp LINE 12: no memory");
}

TEST(TraceReader, PassesOverForeignBytes) {
  std::string bytes;
  for (int i = 0; i < 100000; ++i) bytes += static_cast<char>(i * 7 + i / 256);
  EXPECT_THAT(ReadTrace(bytes), IsEmpty());
  const Exchange exchange = ReadOne(bytes + "\n" + kBegin + kSent + kTaken + kEnd + bytes);
  EXPECT_EQ(exchange.code, 0);
}

TEST(TraceReader, HoldsNoMoreOfABottomlessAnswerThanOneCanHave) {
  size_t held = 0;
  reg::TraceReader reader([&](const Exchange &exchange) { held = exchange.answer.size(); });
  reader.Feed(kBegin + kSent);
  const std::string line = std::string(99999, 'x') + "\n";
  for (int i = 0; i < 200; ++i) reader.Feed(line);
  reader.Finish();
  EXPECT_EQ(held, 8u << 20);
}

TEST(TraceReader, PassesOverALineWithoutAnEnd) {
  std::vector<Exchange> exchanges;
  reg::TraceReader reader([&](const Exchange &exchange) { exchanges.push_back(exchange); });
  const std::string piece(1 << 20, 'x');
  for (int i = 0; i < 20; ++i) reader.Feed(piece);
  reader.Feed("\n" + kBegin + kSent + kTaken + kEnd);
  reader.Finish();
  ASSERT_THAT(exchanges, SizeIs(1));
  EXPECT_EQ(exchanges[0].code, 0);
}

TEST(TraceReader, HandsOutWhatIsOverWhenNothingComes) {
  int count = 0;
  reg::TraceReader reader([&](const Exchange &) { ++count; });
  reader.Feed(kBegin + kSent);
  reader.Settle();
  EXPECT_EQ(count, 0);
  reader.Feed(kTaken);
  reader.Settle();
  EXPECT_EQ(count, 1);
  reader.Feed(kEnd);
  reader.Finish();
  EXPECT_EQ(count, 1);
}

}  // namespace
