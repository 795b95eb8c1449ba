// protocol/socket_layer_posix_test.cpp: what the socket layer and the exchange ask of the system, and the
// failures that a loopback network does not bring about. Every socket call of this test program goes through
// the functions here.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "engine/completion.h"
#include "platform/platform.h"
#include "protocol/http_transport.h"
#include "protocol/socket_layer.h"
#include "record/enumerations.h"
#include "support/record_fixture.h"
#include "support/scripted_server.h"

namespace {

std::vector<std::string> calls;
std::string failing;   // the name of the call that fails
std::string incoming;  // when not empty, what recv hands out, as much as fits each time
size_t incoming_taken = 0;

// Notes a call; true when it is to fail.
bool Note(const std::string &name, const std::string &arguments = "") {
  calls.push_back(name + arguments);
  return name == failing;
}

constexpr int kError = 10050;

}  // namespace

// The linker turns the library's calls into these, and these names back into the platform's own.
extern "C" {
int __real_lumo_WSAStartup(lumo::WORD version, lumo::WSADATA *data);
int __real_lumo_WSACleanup();
lumo::SOCKET __real_lumo_socket(int family, int type, int protocol);
int __real_lumo_setsockopt(lumo::SOCKET socket, int level, int option, const char *value, int length);
int __real_lumo_connect(lumo::SOCKET socket, const lumo::sockaddr *address, int length);
int __real_lumo_send(lumo::SOCKET socket, const char *data, int length, int flags);
int __real_lumo_recv(lumo::SOCKET socket, char *buffer, int capacity, int flags);
int __real_lumo_shutdown(lumo::SOCKET socket, int how);
int __real_lumo_closesocket(lumo::SOCKET socket);
int __real_JsonPrinterInit(lumo::JsonPrinter *printer, lumo::JsonSink sink, void *user);

int __wrap_lumo_WSAStartup(lumo::WORD version, lumo::WSADATA *data) {
  return Note("WSAStartup", " " + std::to_string(version)) ? kError : __real_lumo_WSAStartup(version, data);
}
int __wrap_lumo_WSACleanup() {
  Note("WSACleanup");
  return __real_lumo_WSACleanup();
}
lumo::SOCKET __wrap_lumo_socket(int family, int type, int protocol) {
  const std::string arguments =
      " " + std::to_string(family) + " " + std::to_string(type) + " " + std::to_string(protocol);
  if (!Note("socket", arguments)) return __real_lumo_socket(family, type, protocol);
  lumo::lumo_SetLastError(kError);
  return lumo::INVALID_SOCKET;
}
int __wrap_lumo_setsockopt(lumo::SOCKET socket, int level, int option, const char *value, int length) {
  int32_t number = 0;
  if (length == 4) std::memcpy(&number, value, 4);
  Note("setsockopt",
       " " + std::to_string(level) + " " + std::to_string(option) + " " + std::to_string(number));
  return __real_lumo_setsockopt(socket, level, option, value, length);
}
int __wrap_lumo_connect(lumo::SOCKET socket, const lumo::sockaddr *address, int length) {
  if (!Note("connect")) return __real_lumo_connect(socket, address, length);
  lumo::lumo_SetLastError(kError);
  return -1;
}
int __wrap_lumo_send(lumo::SOCKET socket, const char *data, int length, int flags) {
  if (!Note("send", " " + std::to_string(flags))) return __real_lumo_send(socket, data, length, flags);
  lumo::lumo_SetLastError(kError);
  return -1;
}
int __wrap_lumo_recv(lumo::SOCKET socket, char *buffer, int capacity, int flags) {
  if (!incoming.empty()) {
    const size_t count = std::min(incoming.size() - incoming_taken, static_cast<size_t>(capacity));
    std::memcpy(buffer, incoming.data() + incoming_taken, count);
    incoming_taken += count;
    if (incoming_taken == incoming.size()) {
      incoming.clear();
      incoming_taken = 0;
    }
    return static_cast<int>(count);
  }
  if (!Note("recv", " " + std::to_string(capacity) + " " + std::to_string(flags))) {
    return __real_lumo_recv(socket, buffer, capacity, flags);
  }
  lumo::lumo_SetLastError(kError);
  return -1;
}
int __wrap_lumo_shutdown(lumo::SOCKET socket, int how) {
  if (!Note("shutdown", " " + std::to_string(how))) return __real_lumo_shutdown(socket, how);
  lumo::lumo_SetLastError(kError);
  return -1;
}
int __wrap_lumo_closesocket(lumo::SOCKET socket) {
  Note("closesocket");
  return __real_lumo_closesocket(socket);
}
int __wrap_JsonPrinterInit(lumo::JsonPrinter *printer, lumo::JsonSink sink, void *user) {
  return failing == "JsonPrinterInit" ? 1 : __real_JsonPrinterInit(printer, sink, user);
}
}

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;

const std::string kAnswer = "{\"putDepositResponse\":{\"response\":{\"requestState\":\"SUCCESS\"}}}";

class SocketCalls : public ProtocolTest {
 protected:
  SocketCalls() {
    while (__real_lumo_WSACleanup() == 0) {
    }
    record->request.type = lumo::REQUEST_DEPOSIT;
    record->timeout = 30;
  }
  ~SocketCalls() override { failing.clear(); }

  int Exchange(const std::string &address, const std::string &alternate = "") {
    Store(&record->serverAddr, address);
    Store(&record->serverAltAddr, alternate);
    folder.ClearTrace();
    calls.clear();
    return lumo::TransactionProcessJson(record);
  }
};

TEST_F(SocketCalls, AnExchangeMakesEachCallOnceInOrder) {
  const test::ScriptedServer server(kAnswer);
  EXPECT_EQ(Exchange(server.address()), 0);
  EXPECT_THAT(calls, ElementsAre("WSAStartup 514", "socket 2 1 0", "setsockopt 65535 4102 30000",
                                 "setsockopt 65535 4101 30000", "connect", "send 0", "recv 500 0",
                                 "shutdown 2", "closesocket", "WSACleanup"));
}

TEST_F(SocketCalls, ALongRequestIsOneSendToo) {
  const test::ScriptedServer server(kAnswer);
  Store(&record->request.cardNum, std::string(3000000, '7'));
  EXPECT_EQ(Exchange(server.address()), 0);
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "send 0"), 1);
  ASSERT_EQ(server.requests().size(), 1U);
  EXPECT_THAT(server.requests()[0], HasSubstr(std::string(3000000, '7')));
}

TEST_F(SocketCalls, TimeOutsWrapAndMayBeNegative) {
  const test::ScriptedServer server({{{kAnswer}}, {{kAnswer}}, {{kAnswer}}});
  for (const auto &[timeout, milliseconds] :
       {std::make_pair(0, "0"), std::make_pair(-1, "-1000"), std::make_pair(INT32_MAX, "-1000")}) {
    record->timeout = timeout;
    EXPECT_EQ(Exchange(server.address()), 0);
    EXPECT_THAT(calls, ::testing::Contains(std::string("setsockopt 65535 4102 ") + milliseconds));
    EXPECT_THAT(calls, ::testing::Contains(std::string("setsockopt 65535 4101 ") + milliseconds));
  }
}

TEST_F(SocketCalls, WithoutWinsockTheExchangeFailsAndStillCloses) {
  failing = "WSAStartup";
  EXPECT_EQ(Exchange("http://127.0.0.1:1/a", "http://127.0.0.1:2/b"), -1);
  EXPECT_EQ(
      TakeTrace(),
      "TransactionProcessJson\nConnecting to 127.0.0.1:1//a...\nERROR: WSAStartup failed with error: 10050\n"
      "Connecting to 127.0.0.1:2//b...\nERROR: WSAStartup failed with error: 10050\n"
      "Disconnect\nERROR: shutdown failed with error: 10093\nERROR: LUMO_Disconnect error: -1\n");
  EXPECT_THAT(calls,
              ElementsAre("WSAStartup 514", "WSAStartup 514", "shutdown 2", "closesocket", "WSACleanup"));
}

TEST_F(SocketCalls, LastAttemptDecidesWhatIsReported) {
  failing = "WSAStartup";
  EXPECT_EQ(Exchange("http://127.0.0.1:1/a", ""), -501);
  EXPECT_THAT(TakeTrace(), EndsWith("ERROR: ParseAddress res[-504]\nERROR: Connection failed!\n"));
  EXPECT_THAT(calls, ElementsAre("WSAStartup 514"));
}

TEST_F(SocketCalls, SocketThatCannotBeMadeCleansUp) {
  failing = "socket";
  EXPECT_EQ(Exchange("http://127.0.0.1:1/a"), -501);
  EXPECT_THAT(TakeTrace(), HasSubstr("ERROR: socket failed with error: 10050\n"));
  EXPECT_THAT(calls, ElementsAre("WSAStartup 514", "socket 2 1 0", "WSACleanup"));
}

TEST_F(SocketCalls, RefusedSocketIsLetGoOfUnclosed) {
  failing = "connect";
  EXPECT_EQ(Exchange("http://127.0.0.1:1/a"), -501);
  EXPECT_THAT(TakeTrace(), HasSubstr("ERROR: Connection Failed 10050\n"));
  EXPECT_THAT(calls, ElementsAre("WSAStartup 514", "socket 2 1 0", "setsockopt 65535 4102 30000",
                                 "setsockopt 65535 4101 30000", "connect"));
}

TEST_F(SocketCalls, TheNextConnectClosesTheRefusedSocket) {
  failing = "connect";
  EXPECT_EQ(Exchange("http://127.0.0.1:1/a"), -501);
  calls.clear();
  EXPECT_EQ(Exchange("http://127.0.0.1:1/a"), -501);
  EXPECT_THAT(calls, ElementsAre("WSAStartup 514", "closesocket", "socket 2 1 0",
                                 "setsockopt 65535 4102 30000", "setsockopt 65535 4101 30000", "connect"));
}

TEST_F(SocketCalls, FailedSendIsMinus410) {
  const test::ScriptedServer server(kAnswer);
  failing = "send";
  EXPECT_EQ(Exchange(server.address()), -410);
  EXPECT_THAT(
      TakeTrace(),
      EndsWith("\n\nERROR: send failed with error: 10050\nERROR: LUMO_Send error: -1\n"
               "Disconnect\nERROR: shutdown failed with error: 10093\nERROR: LUMO_Disconnect error: -410\n"));
  EXPECT_THAT(calls, ElementsAre("WSAStartup 514", "socket 2 1 0", "setsockopt 65535 4102 30000",
                                 "setsockopt 65535 4101 30000", "connect", "send 0", "WSACleanup",
                                 "shutdown 2", "closesocket", "WSACleanup"));
}

TEST_F(SocketCalls, RequestThatCannotBeWrittenIsMinus411AndNotSent) {
  const test::ScriptedServer server(kAnswer);
  failing = "JsonPrinterInit";
  EXPECT_EQ(Exchange(server.address()), -411);
  EXPECT_THAT(TakeTrace(),
              EndsWith("Connection established!\nCreateOperationRequest\n"
                       "ERROR: Create operation request JSON printer init failed [1]Disconnect\n"));
  EXPECT_THAT(calls, ::testing::Not(::testing::Contains("send 0")));
  EXPECT_THAT(calls, ::testing::Contains("closesocket"));
}

TEST_F(SocketCalls, RecordThatCannotBeWrittenIsMinus305AndNotKept) {
  failing = "JsonPrinterInit";
  record->request.isOffline = 1;
  EXPECT_EQ(lumo::WriteTransactionRecord(record), -305);
  EXPECT_EQ(TakeTrace(), "ERROR: Create operation request JSON printer init failed [1]");
  EXPECT_FALSE(folder.Exists("LOG"));
  EXPECT_FALSE(folder.Exists("OFFLINE"));
}

TEST_F(SocketCalls, FailedReceiveIsMinus401) {
  const test::ScriptedServer server(kAnswer);
  failing = "recv";
  EXPECT_EQ(Exchange(server.address()), -401);
  EXPECT_THAT(TakeTrace(),
              EndsWith("Receiving \nERROR: recv failed with error: 10050\nERROR: LUMO_Receive res -1\n"
                       "ERROR: LUMO_Receive error: -1\nDisconnect\n"));
}

// A network may cut a long answer anywhere, and the first short piece ends it: here all pieces are whole.
TEST_F(SocketCalls, LongAnswerIsReadWhole) {
  constexpr int kGoods = 2000;
  incoming =
      "{\"putPaymentResponse\":{\"response\":{\"requestState\":\"SUCCESS\"},\"bill\":{\"goodList\":{\"good\":"
      "[";
  for (int i = 0; i < kGoods; ++i) {
    incoming +=
        std::string(i > 0 ? "," : "") + "{\"title\":\"" + std::to_string(i) + std::string(100, 't') + "\"}";
  }
  incoming += "]}}}}";
  ASSERT_NE(incoming.size() % 500, 0U);
  const test::ScriptedServer server(kAnswer);
  EXPECT_EQ(Exchange(server.address()), 0);
  ASSERT_EQ(record->bill.goodCount, kGoods);
  EXPECT_EQ(record->bill.goods[kGoods - 1].title, "1999" + std::string(100, 't'));
}

TEST_F(SocketCalls, AnAnswerOf4MiBIsTakenAndOneByteMoreIsNot) {
  constexpr size_t kLargest = 4 * 1024 * 1024;
  const std::string document(kAnswer);
  const test::ScriptedServer server({{{kAnswer}}, {{kAnswer}}});
  incoming = document + std::string(kLargest - document.size(), ' ');
  EXPECT_EQ(Exchange(server.address()), 0);
  TakeTrace();
  incoming = document + std::string(kLargest + 1 - document.size(), ' ');
  EXPECT_EQ(Exchange(server.address()), -401);
  EXPECT_THAT(TakeTrace(), EndsWith(" \nERROR: LUMO_Receive error: -1\nDisconnect\n"));
}

TEST_F(SocketCalls, FailedShutdownKeepsTheResult) {
  const test::ScriptedServer server(kAnswer);
  failing = "shutdown";
  EXPECT_EQ(Exchange(server.address()), 0);
  EXPECT_THAT(
      TakeTrace(),
      EndsWith("Disconnect\nERROR: shutdown failed with error: 10050\nERROR: LUMO_Disconnect error: 0\n"));
  EXPECT_THAT(std::vector<std::string>(calls.end() - 2, calls.end()),
              ElementsAre("closesocket", "WSACleanup"));
}

TEST_F(SocketCalls, ClosingTwiceDoesNotCloseAnothersHandle) {
  const test::ScriptedServer server(kAnswer);
  ASSERT_EQ(lumo::SocketConnect("127.0.0.1", server.port(), 10), 0);
  EXPECT_EQ(lumo::SocketClose(), 0);
  const std::string name = folder.path() + "another";
  std::FILE *file = std::fopen(name.c_str(), "wb");  // takes the number that has become free
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(lumo::SocketClose(), -1);
  std::fputs("still open", file);
  EXPECT_EQ(std::fclose(file), 0);
  EXPECT_EQ(folder.Read("another"), "still open");
}

}  // namespace
