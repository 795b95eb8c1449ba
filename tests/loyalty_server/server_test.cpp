// loyalty_server/server_test.cpp: the server on a real socket: bytes in and out, faults, bad clients.
#include "loyalty_server/server.h"

#include <gmock/gmock.h>

#include <asio.hpp>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "loyalty_server/bench.h"
#include "loyalty_server/client.h"

namespace {

using bench::Client;
using bench::Exchange;
using bench::Head;
using bench::Post;
using loyalty::FindOperation;
using loyalty::ParseFault;
using testing::HasSubstr;

class BenchServer : public testing::Test {
 protected:
  BenchServer() {
    options.log = [this](const std::string &line) {
      const std::lock_guard<std::mutex> lock(mutex);
      lines.push_back(line);
      changed.notify_all();
    };
  }

  void Start() { server = std::make_unique<loyalty::Server>(bench::MakeProgramme(), options); }
  void SetUp() override { Start(); }

  // The lines of the log once there are so many.
  std::vector<std::string> Lines(size_t count) {
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait(lock, [&] { return lines.size() >= count; });
    return lines;
  }

  std::string Request(const char *method, const std::string &part = "", const std::string &card = "100") {
    Head head;
    char id[32];
    std::snprintf(id, sizeof id, "\"12345121205%05d\"", ++lastNumber);
    head.requestId = id;
    head.cardNum = bench::Quoted(card);
    return bench::Document(*FindOperation(method), head, part);
  }

  std::string Ask(const char *method, const std::string &part = "", const std::string &card = "100") {
    return Exchange(server->port(), method, Request(method, part, card));
  }

  void AwaitFault(const std::string &text) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < end) {
      const uint64_t revision = server->revision();
      if (loyalty::FaultText(server->fault()) == text) return;
      server->AwaitChange(revision, std::chrono::seconds(20));
    }
    FAIL() << "the fault is " << loyalty::FaultText(server->fault());
  }

  // Whether a send fails, once the client knows that the connection is gone. A reset may come before the
  // client has been told that the connection is open; then there is nothing to send by.
  bool IsHungUp() {
    try {
      Client client(server->port());
      client.ReceiveUntilReset();
      client.Send(Post("ad", Request("ad")));
    } catch (const std::system_error &error) {
      return error.code() != asio::error::connection_refused;
    }
    return false;
  }

  std::string Balance(const std::string &card) {
    std::string text;
    server->Visit([&](loyalty::Programme &programme) { text = bench::Purses(programme, card); });
    return text;
  }

  loyalty::ServerOptions options;
  std::unique_ptr<loyalty::Server> server;
  int lastNumber = 0;
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::string> lines;
};

// Takes the port as a program would that shares it with nobody.
void Claim(uint16_t port) {
  asio::io_context context;
  asio::ip::tcp::acceptor(context, {asio::ip::make_address("127.0.0.1"), port}, false);
}

const char *const kFirstAd =
    R"({"getAdResponse":{"response":{"ver":"1.0","requestId":"1234512120500001","responseId":"1",)"
    R"("responseDate":"2012-12-05T10:30:30Z","requestState":"SUCCESS","requestStateCode":"OK",)"
    R"("message":"Операция выполнена","isNeedUpdate":false},"ad":{"text":"Скидки"}}})";

// ---- The exchange ----

TEST_F(BenchServer, AnswersWithTheBareDocumentAndCloses) {
  EXPECT_EQ(Ask("ad"), kFirstAd);
}

TEST_F(BenchServer, TheSystemPicksAPortWhenNoneIsGiven) {
  EXPECT_NE(server->port(), 0);
  EXPECT_EQ(server->address(), "127.0.0.1:" + std::to_string(server->port()));
  loyalty::ServerOptions taken;
  taken.port = server->port();
  EXPECT_THROW(loyalty::Server(bench::MakeProgramme(), taken), std::system_error);
  taken.address = "no address";
  EXPECT_THROW(loyalty::Server(bench::MakeProgramme(), taken), std::system_error);
}

TEST_F(BenchServer, TakesTheHeadWithCarriageReturnsToo) {
  const std::string body = Request("ad");
  Client client(server->port());
  client.Send("POST /ws/ad HTTP/1.1\r\nHost: x\r\ncontent-length: " + std::to_string(body.size()) +
              "\r\n\r\n" + body);
  EXPECT_EQ(client.ReceiveAll(), kFirstAd);
}

TEST_F(BenchServer, TakesARequestByteByByte) {
  Client client(server->port());
  for (const char byte : Post("ad", Request("ad"))) client.Send(std::string(1, byte));
  EXPECT_EQ(client.ReceiveAll(), kFirstAd);
}

TEST_F(BenchServer, AnAnswerOfAnyLengthAroundMultiplesOfFiveHundredEndsInOrder) {
  for (size_t length : {499u, 500u, 501u, 999u, 1000u, 1001u, 1500u, 50000u}) {
    std::string rubbish(length, 'x');
    server->SetFault(ParseFault("rubbish " + rubbish));
    Client client(server->port());
    client.Send(Post("ad", Request("ad")));
    EXPECT_EQ(client.ReceiveAll(), rubbish);
  }
}

TEST_F(BenchServer, ALineFeedThatComesAfterTheAnswerMeetsNoReset) {
  Client client(server->port());
  std::string request = Post("ad", Request("ad"));
  ASSERT_EQ(request.back(), '\n');
  request.pop_back();
  client.Send(request);
  EXPECT_EQ(client.ReceiveAll(), kFirstAd);
  client.Send("\n");
  client.Send("\n");  // fails when the first one was answered with a reset
  EXPECT_EQ(client.Receive(), "");
}

TEST_F(BenchServer, ARequestOfMegabytesIsTaken) {
  const std::string title(3 * 1024 * 1024, 'x');
  const std::string goods =
      R"({"good":[{"title":")" + title + R"(","productCode":"b","positionCost":100,"orderNum":1,"cnt":1}]})";
  EXPECT_THAT(Ask("payment", bench::Bill(false, goods, 100, 1)), HasSubstr("\"title\":\"" + title + "\""));
}

TEST_F(BenchServer, KeepsItsProgrammeFromOneConnectionToTheNext) {
  EXPECT_THAT(Ask("paymentAndConfirm", bench::Bill(true)), HasSubstr("SUCCESS"));
  EXPECT_EQ(Balance("100"), "9611/165/1055");
  EXPECT_EQ(server->exchanges(), 1u);
}

TEST_F(BenchServer, LogsEachExchangeReadably) {
  const auto sizes = [this](const char *method, const std::string &request) {
    const std::string answer = Exchange(server->port(), method, request);
    return "  in " + std::to_string(request.size()) + " out " + std::to_string(answer.size());
  };
  const std::string payment = sizes("payment", Request("payment", bench::Bill(true)));
  const std::string balance = sizes("balance", Request("balance", "", "4\\n0"));
  const std::string parsing = sizes("rrn", "{");
  server->SetFault(ParseFault("cut 10"));
  const std::string ad = sizes("ad", Request("ad"));
  server->SetFault(ParseFault("http 500 on ad"));
  const std::string error_page = sizes("ad", Request("ad"));
  const std::vector<std::string> log = Lines(5);
  EXPECT_EQ(log[0],
            "2012-12-05T10:30:30Z terminal 12345  payment  card 100  id 1234512120500001  "
            "sum 109.99, spent 54.99, earned 3.30  SUCCESS OK" +
                payment);
  EXPECT_EQ(log[1],
            "2012-12-05T10:30:30Z terminal 12345  balance  card 4?0  id 1234512120500002  "
            "ERROR CARD_NUMBER_INCORRECT" +
                balance);
  EXPECT_EQ(log[2],
            "2012-12-05T10:30:30Z terminal -  rrn  card -  id -  ERROR REQUEST_PARSING_ERROR" + parsing);
  EXPECT_EQ(log[3],
            "2012-12-05T10:30:30Z terminal 12345  ad  card 100  id 1234512120500003  Скидки  SUCCESS OK" +
                ad + "  [cut 10]");
  EXPECT_THAT(ad, testing::EndsWith(" out 10"));
  EXPECT_EQ(log[4], "2012-12-05T10:30:30Z ad  not done" + error_page + "  [http 500]");
}

TEST_F(BenchServer, TheExchangesAreRemembered) {
  const std::string request = Request("deposit", R"({"amount":5})", "200");
  const std::string answer = Exchange(server->port(), "deposit", request);
  server->SetFault(ParseFault("http 500"));
  Ask("ad");
  Exchange(server->port(), "teapot", "{}");
  const std::vector<loyalty::Exchange> exchanges = server->ExchangesAfter(0);
  ASSERT_EQ(exchanges.size(), 3u);
  EXPECT_EQ(exchanges[0].number, 1u);
  EXPECT_EQ(exchanges[0].time, "2012-12-05T10:30:30Z");
  EXPECT_EQ(exchanges[0].terminal, "12345");
  EXPECT_EQ(exchanges[0].operation, "deposit");
  EXPECT_EQ(exchanges[0].card, "200");
  EXPECT_EQ(exchanges[0].requestId, "1234512120500001");
  EXPECT_EQ(exchanges[0].details, "amount 0.05");
  EXPECT_TRUE(exchanges[0].isDone);
  EXPECT_EQ(exchanges[0].code, loyalty::Code::kOk);
  EXPECT_EQ(exchanges[0].fault, "");
  EXPECT_EQ(exchanges[0].request, request);
  EXPECT_EQ(exchanges[0].answer, answer);
  EXPECT_EQ(exchanges[0].requestBytes, request.size());
  EXPECT_EQ(exchanges[0].answerBytes, answer.size());
  EXPECT_FALSE(exchanges[1].isDone);
  EXPECT_EQ(exchanges[1].fault, "http 500");
  EXPECT_THAT(exchanges[1].answer, HasSubstr("HTTP Status 500"));
  EXPECT_THAT(exchanges[2].note, HasSubstr("no operation teapot"));
  ASSERT_EQ(server->ExchangesAfter(2).size(), 1u);
  EXPECT_EQ(server->ExchangesAfter(2)[0].number, 3u);
  EXPECT_TRUE(server->ExchangesAfter(3).empty());
}

TEST_F(BenchServer, TheOldestExchangesAreForgotten) {
  server.reset();
  options.mostKept = 2;
  Start();
  for (int i = 0; i < 3; ++i) Ask("ad");
  ASSERT_EQ(server->ExchangesAfter(0).size(), 2u);
  EXPECT_EQ(server->ExchangesAfter(0)[0].number, 2u);
  server.reset();
  options.mostBytesKept = 100000;
  Start();
  const std::string title(70000, 'x');
  const std::string goods =
      R"({"good":[{"title":")" + title + R"(","productCode":"b","positionCost":100,"orderNum":1,"cnt":1}]})";
  Ask("ad");
  Ask("payment", bench::Bill(false, goods, 100, 1));
  EXPECT_TRUE(server->ExchangesAfter(0).empty()) << "more than may be kept by itself";
  Ask("ad");
  EXPECT_EQ(server->ExchangesAfter(0).size(), 1u);
}

TEST_F(BenchServer, OnlyTheBeginningOfALongTextIsRemembered) {
  const std::string rubbish(100000, 'x');
  server->SetFault(ParseFault("rubbish " + rubbish));
  Ask("ad");
  const loyalty::Exchange exchange = server->ExchangesAfter(0).at(0);
  EXPECT_EQ(exchange.answer.size(), 65536u);
  EXPECT_EQ(exchange.answerBytes, 100000u);
}

TEST_F(BenchServer, WhoWaitsForAChangeIsWoken) {
  const uint64_t revision = server->revision();
  EXPECT_EQ(server->AwaitChange(revision, std::chrono::milliseconds(1)), revision) << "nothing has changed";
  EXPECT_EQ(server->AwaitChange(revision + 1, std::chrono::hours(1)), revision) << "of another server's life";
  std::thread waiting([&] { EXPECT_GT(server->AwaitChange(revision, std::chrono::hours(1)), revision); });
  Ask("ad");
  waiting.join();
  const std::function<void()> changes[] = {
      [&] { server->SetFault(ParseFault("off")); },
      [&] { server->Visit([](loyalty::Programme &) {}); },
      [&] { server->WakeWaiting(); },
  };
  for (const auto &change : changes) {
    const uint64_t before = server->revision();
    change();
    EXPECT_GT(server->revision(), before);
  }
  const uint64_t before = server->revision();
  server->Look([](const loyalty::Programme &) {});
  EXPECT_EQ(server->revision(), before) << "a look changes nothing";
}

TEST_F(BenchServer, AnAddressThatCannotBeListenedOnIsNamed) {
  const auto complaint = [](const loyalty::ServerOptions &wrong) -> std::string {
    try {
      loyalty::Server(bench::MakeProgramme(), wrong);
    } catch (const std::system_error &error) {
      return error.what();
    }
    return "none";
  };
  loyalty::ServerOptions wrong;
  wrong.port = server->port();
  EXPECT_THAT(complaint(wrong), testing::StartsWith("cannot listen on " + server->address() + ": "));
  wrong.address = "nowhere";
  wrong.port = 8080;
  EXPECT_THAT(complaint(wrong), testing::StartsWith("cannot listen on nowhere:8080: "));
}

// ---- Clients that misbehave ----

TEST_F(BenchServer, WhatIsNoRequestGetsAnErrorPage) {
  const std::pair<const char *, const char *> rows[] = {
      {"GET / HTTP/1.1\r\n\r\n", "HTTP Status 405"},
      {"\x16\x03\x01\n", "HTTP Status 400"},
      {"POST /ws/ad\n\n", "HTTP Status 411"},
      {"POST /ws/ad\nContent-Length: 99999999999\n\n", "HTTP Status 413"},
      {"POST /ws/teapot\nContent-Length: 2\n\n{}", "HTTP Status 404"},
  };
  for (const auto &row : rows) {
    Client client(server->port());
    client.Send(row.first);
    EXPECT_THAT(client.ReceiveAll(), HasSubstr(row.second)) << row.first;
  }
  EXPECT_EQ(server->exchanges(), 5u);
}

TEST_F(BenchServer, AClientThatSendsOnAfterARefusalReadsItUndisturbed) {
  Client client(server->port());
  client.Send("POST /ws/ad\nContent-Length: 99999999999\n\n");
  for (int i = 0; i < 100; ++i) client.Send(std::string(10000, 'x'));
  EXPECT_THAT(client.ReceiveAll(), HasSubstr("HTTP Status 413"));
}

TEST_F(BenchServer, ASilentClientHoldsUpNobody) {
  Client silent(server->port());
  Client half(server->port());
  half.Send("POST /ws/ad\nContent-Length: 100\n\n{");
  EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS"));
  EXPECT_THAT(Ask("balance"), HasSubstr("SUCCESS"));
}

TEST_F(BenchServer, ASilentClientIsDroppedInTheEnd) {
  server.reset();
  options.idleTime = std::chrono::milliseconds(20);
  Start();
  Client client(server->port());
  client.Send("POST /ws/ad\n");
  try {
    EXPECT_EQ(client.ReceiveAll(), "");
  } catch (const std::system_error &) {  // a reset would be as good
  }
  EXPECT_THAT(Lines(1)[0], HasSubstr("dropped: no byte came or went for too long"));
}

TEST_F(BenchServer, AClientThatLeavesInTheMiddleIsNoted) {
  {
    Client client(server->port());
    client.Send("POST /ws/ad\nContent-Length: 10\n\n{}");
  }
  EXPECT_THAT(Lines(1)[0], HasSubstr("the client left in the middle of its request"));
  EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS"));
}

TEST_F(BenchServer, AClientThatOnlyListensToTheEndGetsItsAnswer) {
  Client client(server->port());
  client.Send(Post("ad", Request("ad")));
  client.CloseSending();
  EXPECT_EQ(client.ReceiveAll(), kFirstAd);
}

TEST_F(BenchServer, ManyClientsAtOnceAreAllAnswered) {
  std::vector<std::unique_ptr<Client>> clients;
  std::vector<std::string> requests;
  for (int i = 0; i < 200; ++i) {
    clients.push_back(std::make_unique<Client>(server->port()));
    requests.push_back(Post("deposit", Request("deposit", R"({"amount":1})", "200")));
    clients.back()->Send(requests.back().substr(0, 100));
  }
  for (size_t i = clients.size(); i-- > 0;) clients[i]->Send(requests[i].substr(100));
  for (const auto &client : clients) EXPECT_THAT(client->ReceiveAll(), HasSubstr("SUCCESS"));
  EXPECT_EQ(Balance("200"), "200/0/0");
}

TEST_F(BenchServer, ConnectionsBeyondTheLimitAreDropped) {
  server.reset();
  options.mostConnections = 2;
  Start();
  Client first(server->port());
  Client second(server->port());
  Client third(server->port());
  try {
    EXPECT_EQ(third.ReceiveAll(), "");
  } catch (const std::system_error &) {  // a reset is as good
  }
  EXPECT_THAT(Lines(1)[0], HasSubstr("too many"));
  first.Send(Post("ad", Request("ad")));
  EXPECT_EQ(first.ReceiveAll(), kFirstAd);
}

TEST_F(BenchServer, StopsWithClientsInEveryState) {
  Client idle(server->port());
  Client half(server->port());
  half.Send("POST /ws/ad\nContent-Le");
  server->SetFault(ParseFault("silence times 1"));
  Client unanswered(server->port());
  unanswered.Send(Post("ad", Request("ad")));
  Lines(1);
  server->SetFault(ParseFault("delay 1000000"));
  Client late(server->port());
  late.Send(Post("ad", Request("ad")));
  Lines(2);
  const uint16_t port = server->port();
  server->Stop();
  server->Stop();
  server->SetFault(ParseFault("off"));
  EXPECT_THROW(Client{port}, std::system_error);
}

// ---- Faults ----

TEST_F(BenchServer, RefuseTurnsClientsAwayKeepsThePortAndOffOpensIt) {
  for (int i = 0; i < 3; ++i) {
    server->SetFault(ParseFault("refuse"));
    EXPECT_THROW(Client{server->port()}, std::system_error);
    EXPECT_THROW(Claim(server->port()), std::system_error) << "the port stays the server's";
    server->SetFault(ParseFault("refuse"));
    server->SetFault(ParseFault("off"));
    EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS"));
  }
}

// What must still last is to last an hour, and what must be over is short: however busy the machine is.
TEST_F(BenchServer, AFaultThatLastsForAWhileIsOffAfterwards) {
  server->SetFault(ParseFault("refuse for 3600000"));
  EXPECT_THROW(Client{server->port()}, std::system_error);
  EXPECT_EQ(loyalty::FaultText(server->fault()), "refuse for 3600000");
  server->SetFault(ParseFault("refuse for 20"));
  AwaitFault("off");
  EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS"));
  server->SetFault(ParseFault("http 500 for 3600000"));
  EXPECT_THAT(Ask("ad"), HasSubstr("HTTP Status 500"));
  server->SetFault(ParseFault("http 500 for 20"));
  AwaitFault("off");
  EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS"));
}

TEST_F(BenchServer, ANewFaultEndsTheTimeOfTheOneBefore) {
  server->SetFault(ParseFault("http 500 for 50"));
  server->SetFault(ParseFault("http 400"));
  server->SetFault(ParseFault("refuse for 3600000"));
  const uint64_t revision = server->revision();
  EXPECT_EQ(server->AwaitChange(revision, std::chrono::milliseconds(100)), revision) << "cut short";
  EXPECT_THROW(Client{server->port()}, std::system_error) << "not cut short by the first one";
  const auto start = std::chrono::steady_clock::now();
  server->SetFault(ParseFault("refuse for 100"));
  AwaitFault("off");
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
}

TEST_F(BenchServer, OneFaultAfterAnotherAsTheScriptSays) {
  server->SetFaults(loyalty::ParseFaultScript("http 500\noff\nrefuse for 3600000\n"));
  EXPECT_THAT(Ask("ad"), HasSubstr("HTTP Status 500"));
  EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS"));
  EXPECT_THROW(Client{server->port()}, std::system_error);
  server->SetFaults(loyalty::ParseFaultScript("http 500\noff\nrefuse for 20\nhangup\ncut 5\n"));
  EXPECT_THAT(Ask("ad"), HasSubstr("HTTP Status 500"));
  EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS"));
  AwaitFault("hangup times 1");
  EXPECT_TRUE(IsHungUp());
  EXPECT_EQ(Ask("ad").size(), 5u);
  EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS"));
  EXPECT_EQ(server->faults().step_count(), 0u);
}

TEST_F(BenchServer, HangUpMakesTheSendFail) {
  server->SetFault(ParseFault("hangup"));
  EXPECT_TRUE(IsHungUp());
  EXPECT_TRUE(IsHungUp());
  EXPECT_THAT(Lines(2)[0], HasSubstr("connection reset before its request  [hangup]"));
  EXPECT_EQ(server->exchanges(), 0u);
  server->SetFault(ParseFault("off"));
  EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS"));
}

TEST_F(BenchServer, ABlackHoleLetsNoConnectionOpenOrFail) {
#if defined(__linux__)
  Client open(server->port());
  server->SetFault(ParseFault("blackhole"));
  bench::Opening opening(server->port());
  EXPECT_FALSE(opening.IsOver(std::chrono::milliseconds(100)));
  server->SetFault(ParseFault("off"));
  EXPECT_TRUE(opening.IsOver(std::chrono::seconds(60))) << "the client's next attempt gets through";
  EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS"));
  server->SetFault(ParseFault("blackhole"));
  open.Send(Post("ad", Request("ad")));
  EXPECT_THAT(open.ReceiveAll(), HasSubstr("SUCCESS")) << "what is open stays open";
  server->SetFault(ParseFault("refuse"));
  EXPECT_THROW(Client{server->port()}, std::system_error);
  server->SetFault(ParseFault("blackhole for 100"));
  AwaitFault("off");
  EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS"));
#else
  EXPECT_THROW(server->SetFault(ParseFault("blackhole")), std::invalid_argument);
  EXPECT_THROW(server->SetFaults(loyalty::ParseFaultScript("off\nblackhole for 5\n")), std::invalid_argument);
  EXPECT_EQ(loyalty::FaultText(server->fault()), "off");
#endif
}

TEST_F(BenchServer, SilenceTakesTheRequestAndKeepsTheConnection) {
  server->SetFault(ParseFault("silence times 1"));
  Client silent(server->port());
  silent.Send(Post("deposit", Request("deposit", R"({"amount":5})", "200")));
  EXPECT_THAT(Lines(1)[0], HasSubstr("deposit  not done"));
  EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS")) << "one time, and for one client";
  EXPECT_EQ(silent.available(), 0u);
  EXPECT_EQ(Balance("200"), "0/0/0");
  server->Stop();
  try {
    EXPECT_EQ(silent.ReceiveAll(), "");
  } catch (const std::system_error &) {  // the end of the server may reset it
  }
}

TEST_F(BenchServer, DelayAnswersLaterAndHoldsUpNobody) {
  server->SetFault(ParseFault("delay 300 times 1"));
  Client late(server->port());
  const auto start = std::chrono::steady_clock::now();
  late.Send(Post("ad", Request("ad")));
  Lines(1);
  EXPECT_THAT(Ask("ad"), HasSubstr("\"responseId\":\"2\""));
  EXPECT_EQ(late.ReceiveAll(), kFirstAd);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
}

TEST_F(BenchServer, CutEndsTheAnswerInOrderAfterSoManyBytes) {
  const std::string answer = kFirstAd;
  struct Row {
    const char *fault;
    size_t length;
  };
  // The answers are equally long as long as their numbers are.
  for (const Row &row : {Row{"cut 0", 0}, Row{"cut 1", 1}, Row{"cut 120", 120}, Row{"cut", answer.size() / 2},
                         Row{"cut 100000", answer.size()}}) {
    server->SetFault(ParseFault(row.fault));
    const std::string cut = Ask("ad");
    EXPECT_EQ(cut.size(), row.length) << row.fault;
    EXPECT_EQ(cut.substr(0, 60), answer.substr(0, std::min<size_t>(row.length, 60))) << row.fault;
  }
}

TEST_F(BenchServer, TheOperationIsDoneThoughItsAnswerIsCut) {
  server->SetFault(ParseFault("cut 0"));
  EXPECT_EQ(Ask("deposit", R"({"amount":5})", "200"), "");
  EXPECT_EQ(Balance("200"), "5/0/0");
}

TEST_F(BenchServer, ResetBreaksTheConnectionInTheAnswer) {
  for (const char *fault : {"reset 0", "reset 40", "reset"}) {
    server->SetFault(ParseFault(fault));
    Client client(server->port());
    client.Send(Post("ad", Request("ad")));
    EXPECT_LE(client.ReceiveUntilReset().size(), std::string(kFirstAd).size() / 2) << fault;
  }
}

TEST_F(BenchServer, PiecesSendTheWholeAnswer) {
  server->SetFault(ParseFault("pieces 1"));
  EXPECT_EQ(Ask("ad"), kFirstAd);
  server->SetFault(ParseFault("pieces 100 1"));
  EXPECT_EQ(Ask("ad").size(), std::string(kFirstAd).size());
}

TEST_F(BenchServer, ErrorPagesRubbishAndRefusalsStandInForTheProgramme) {
  const std::pair<const char *, const char *> rows[] = {
      {"http 400", "HTTP Status 400"},
      {"http 500", "HTTP Status 500"},
      {"rubbish {\"a\":", "{\"a\":"},
      {"refusal SMS_AUTH_FAILED", "\"requestStateCode\":\"SMS_AUTH_FAILED\""},
  };
  for (const auto &row : rows) {
    server->SetFault(ParseFault(row.first));
    EXPECT_THAT(Ask("deposit", R"({"amount":5})", "200"), HasSubstr(row.second));
  }
  EXPECT_EQ(Balance("200"), "0/0/0");
}

TEST_F(BenchServer, WrongAndExtraPartsAndDuplicatesComeInTheAnswer) {
  std::string answer = kFirstAd;
  server->SetFault(ParseFault("extra rrn"));
  std::string extra = answer;
  extra.insert(extra.size() - 2, R"(,"rrn":{"rrNumber":"0000012120500000"})");
  EXPECT_EQ(Ask("ad"), extra);

  server->SetFault(ParseFault("without ad"));
  EXPECT_THAT(Ask("ad"), Not(HasSubstr("\"ad\"")));
  server->SetFault(ParseFault("name getBalanceResponse"));
  EXPECT_THAT(Ask("ad"), testing::StartsWith(R"({"getBalanceResponse":{)"));
  server->SetFault(ParseFault("duplicate"));
  EXPECT_EQ(Ask("ad").size(), 2 * answer.size());
}

TEST_F(BenchServer, AFaultStrikesItsTimesAndItsOperationOnly) {
  server->SetFault(ParseFault("http 500 on ad times 2"));
  EXPECT_THAT(Ask("balance"), HasSubstr("SUCCESS"));
  EXPECT_THAT(Ask("ad"), HasSubstr("HTTP Status 500"));
  EXPECT_EQ(loyalty::FaultText(server->fault()), "http 500 on ad times 1");
  EXPECT_THAT(Ask("balance"), HasSubstr("SUCCESS"));
  EXPECT_THAT(Ask("ad"), HasSubstr("HTTP Status 500"));
  EXPECT_EQ(loyalty::FaultText(server->fault()), "off");
  EXPECT_THAT(Ask("ad"), HasSubstr("SUCCESS"));
}

}  // namespace
