// protocol/socket_layer_test.cpp: the one connection of the process.
#include "protocol/socket_layer.h"

#include <cstring>
#include <string>

#include "support/record_fixture.h"
#include "support/scripted_server.h"
#include "support/wine.h"

namespace {

using ::testing::StartsWith;

class SocketLayer : public ::testing::Test {
 protected:
  std::string TakeTrace() {
    std::string trace = folder.Trace();
    folder.ClearTrace();
    return trace;
  }

  test::Folder folder;
};

constexpr char kHost[] = "127.0.0.1";
constexpr char kRequest[] = "POST /\nContent-Length: 2\n\n{}\n";
constexpr int kRequestLength = sizeof kRequest - 1;

TEST_F(SocketLayer, SendsAndReceives) {
  const test::ScriptedServer server("answer");
  EXPECT_EQ(lumo::SocketConnect(kHost, server.port(), 10), 0);
  EXPECT_EQ(lumo::SocketSend(kRequest, kRequestLength), kRequestLength);
  char buffer[100] = {};
  EXPECT_EQ(lumo::SocketReceive(buffer, sizeof buffer), 6);
  EXPECT_STREQ(buffer, "answer");
  EXPECT_EQ(TakeTrace(), "");
  EXPECT_EQ(lumo::SocketReceive(buffer, sizeof buffer), 0);
  EXPECT_EQ(TakeTrace(), "Connection closed\n");
  EXPECT_EQ(lumo::SocketClose(), 0);
  EXPECT_EQ(TakeTrace(), "Disconnect\n");
  ASSERT_EQ(server.requests().size(), 1U);
  EXPECT_EQ(server.requests()[0], kRequest);
}

TEST_F(SocketLayer, ReceivesAtMostTheCapacity) {
  const test::ScriptedServer server("answer");
  EXPECT_EQ(lumo::SocketConnect(kHost, server.port(), 10), 0);
  EXPECT_EQ(lumo::SocketSend(kRequest, kRequestLength), kRequestLength);
  char buffer[5] = {};
  EXPECT_EQ(lumo::SocketReceive(buffer, 4), 4);
  EXPECT_STREQ(buffer, "answ");
  EXPECT_EQ(lumo::SocketReceive(buffer, 4), 2);
  EXPECT_EQ(lumo::SocketClose(), 0);
}

TEST_F(SocketLayer, UsesTheLow16BitsOfThePort) {
  const test::ScriptedServer server("answer");
  EXPECT_EQ(lumo::SocketConnect(kHost, server.port() + 0x10000, 10), 0);
  EXPECT_EQ(lumo::SocketClose(), 0);
  EXPECT_EQ(lumo::SocketConnect(kHost, server.port() - 0x10000, 10), 0);
  EXPECT_EQ(lumo::SocketClose(), 0);
}

TEST_F(SocketLayer, RefusedConnectionIsTraced) {
  EXPECT_EQ(lumo::SocketConnect(kHost, test::UnusedPort(), 10), -501);
  EXPECT_EQ(TakeTrace(), "ERROR: Connection Failed 10061\n");
}

TEST_F(SocketLayer, HostIsNeverResolved) {
  for (const char *host : {"localhost", "server.example", "256.1.1.1", "::1", "1.2.3.4.5", "x"}) {
    EXPECT_EQ(lumo::SocketConnect(host, 80, 10), -501) << host;
    EXPECT_EQ(TakeTrace(), "ERROR: incorrect IP address\n") << host;
  }
}

TEST_F(SocketLayer, SilenceEndsWithTheTimeOut) {
  const test::ScriptedServer server({{{}, test::Answer::End::kSilence}});
  EXPECT_EQ(lumo::SocketConnect(kHost, server.port(), 1), 0);
  EXPECT_EQ(lumo::SocketSend(kRequest, kRequestLength), kRequestLength);
  char byte = 0;
  EXPECT_LT(lumo::SocketReceive(&byte, 1), 0);
  EXPECT_EQ(TakeTrace(), "ERROR: recv failed with error: 10060\n");
  EXPECT_EQ(lumo::SocketClose(), 0);
}

TEST_F(SocketLayer, ResetIsAReceiveError) {
  const test::ScriptedServer server({{{}, test::Answer::End::kReset}});
  EXPECT_EQ(lumo::SocketConnect(kHost, server.port(), 10), 0);
  EXPECT_EQ(lumo::SocketSend(kRequest, kRequestLength), kRequestLength);
  char byte = 0;
  const int received = lumo::SocketReceive(&byte, 1);
  if (test::EndMayPrecedeReset() && received == 0) {
    EXPECT_EQ(TakeTrace(), "Connection closed\n");
  } else {
    EXPECT_LT(received, 0);
    EXPECT_EQ(TakeTrace(), "ERROR: recv failed with error: 10054\n");
  }
  lumo::SocketClose();
}

TEST_F(SocketLayer, WithoutAConnectionEveryCallFails) {
  char byte = 0;
  EXPECT_EQ(lumo::SocketSend(&byte, 1), -1);
  EXPECT_THAT(TakeTrace(), StartsWith("ERROR: send failed with error: 100"));
  EXPECT_LT(lumo::SocketReceive(&byte, 1), 0);
  EXPECT_THAT(TakeTrace(), StartsWith("ERROR: recv failed with error: 100"));
  EXPECT_EQ(lumo::SocketDisconnect(), -1);
  EXPECT_THAT(TakeTrace(), StartsWith("Disconnect\nERROR: shutdown failed with error: 100"));
  EXPECT_EQ(lumo::SocketClose(), -1);
  EXPECT_THAT(TakeTrace(), StartsWith("Disconnect\nERROR: shutdown failed with error: 100"));
}

TEST_F(SocketLayer, ClosedConnectionIsForgotten) {
  const test::ScriptedServer server("answer");
  EXPECT_EQ(lumo::SocketConnect(kHost, server.port(), 10), 0);
  EXPECT_EQ(lumo::SocketClose(), 0);
  EXPECT_EQ(lumo::SocketClose(), -1);
}

}  // namespace
