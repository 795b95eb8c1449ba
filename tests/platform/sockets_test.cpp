// platform/sockets_test.cpp: the calls on sockets, as every host answers them.
#include <chrono>
#include <cstring>
#include <future>
#include <string>
#include <thread>

#include "platform/client.h"
#include "platform/peer.h"
#include "support/wine.h"

namespace lumo {
namespace {

using test::Client;
using test::Connection;
using test::Peer;

struct Address {
  const char *text;
  uint8_t bytes[4];
};

TEST(Addresses, DottedFormsAreTakenInNetworkOrder) {
  constexpr Address kAddresses[] = {
      {"127.0.0.1", {127, 0, 0, 1}},  {"10.0.0.5", {10, 0, 0, 5}}, {"192.168.255.254", {192, 168, 255, 254}},
      {"0.0.0.0", {0, 0, 0, 0}},      {"127.1", {127, 0, 0, 1}},   {"10.1.2", {10, 1, 0, 2}},
      {"0x7F.0.0.1", {127, 0, 0, 1}}, {"010.0.0.1", {8, 0, 0, 1}}, {"2130706433", {127, 0, 0, 1}}};
  for (const Address &row : kAddresses) {
    const uint32_t address = inet_addr(row.text);
    EXPECT_EQ(std::memcmp(&address, row.bytes, 4), 0) << row.text;
  }
}

TEST(Addresses, WhatIsNoAddressIsNone) {
  for (const char *text : {"localhost", "shop.example", "1.2.3.4.5", "256.0.0.1", "1.2.3.", "1..2", "1.2.3.x",
                           "-1.0.0.0", "255.255.255.255"}) {
    EXPECT_EQ(inet_addr(text), INADDR_NONE) << text;
  }
}

TEST(Addresses, PortsAreTurnedIntoNetworkOrder) {
  const uint16_t port = htons(0x1234);
  const uint8_t bytes[] = {0x12, 0x34};
  EXPECT_EQ(std::memcmp(&port, bytes, 2), 0);
}

TEST(Sockets, EachStartHasItsCleanup) {
  WSADATA data;
  ASSERT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
  EXPECT_EQ(data.wVersion, 0x0202);
  ASSERT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
  EXPECT_EQ(WSACleanup(), 0);
  const SOCKET still = socket(AF_INET, SOCK_STREAM, 0);
  EXPECT_NE(still, INVALID_SOCKET);
  EXPECT_EQ(closesocket(still), 0);
  EXPECT_EQ(WSACleanup(), 0);
}

TEST(Sockets, ARequestGoesOutAndAnAnswerComesIn) {
  std::string request;
  {
    Peer peer([&](Connection &connection) {
      request = connection.Read(9);
      connection.Write("an answer");
    });
    const Client client;
    ASSERT_EQ(client.Connect(peer.port()), 0) << WSAGetLastError();
    EXPECT_EQ(client.Send("a request"), 9);
    std::string answer;
    EXPECT_EQ(client.Receive(&answer, 500), 9);
    EXPECT_EQ(answer, "an answer");
    EXPECT_EQ(client.Receive(&answer, 500), 0);
  }
  EXPECT_EQ(request, "a request");
}

TEST(Sockets, AllOfALargeRequestGoesOutInOneCall) {
  const std::string large(8 << 20, 'x');
  size_t received = 0;
  {
    Peer peer([&](Connection &connection) { received = connection.ReadToEnd().size(); });
    const Client client;
    ASSERT_EQ(client.Connect(peer.port()), 0);
    EXPECT_EQ(client.Send(large), static_cast<int>(large.size()));
    EXPECT_EQ(shutdown(client.handle, SD_BOTH), 0);
  }
  EXPECT_EQ(received, large.size());
}

TEST(Sockets, ReceivingTakesNoMoreThanThereIsRoomFor) {
  Peer peer([](Connection &connection) { connection.Write(std::string(501, 'x')); });
  const Client client;
  ASSERT_EQ(client.Connect(peer.port()), 0);
  std::string piece, whole;
  while (whole.size() < 501) {
    const int count = client.Receive(&piece, 500);
    ASSERT_GT(count, 0);
    ASSERT_LE(count, 500);
    whole += piece;
  }
  EXPECT_EQ(whole, std::string(501, 'x'));
}

TEST(Sockets, AClosedPortRefuses) {
  const Client client;
  EXPECT_EQ(client.Connect(test::ClosedPort()), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10061);
}

namespace chrono = std::chrono;

constexpr size_t kMoreThanAnyBuffer = 64 << 20;

// The time-outs here are 200 ms long. A host may be a clock's tick early, or busy and late.
testing::AssertionResult IsOver(chrono::steady_clock::duration waited) {
  if (waited >= chrono::milliseconds(190) && waited < chrono::seconds(60)) return testing::AssertionSuccess();
  return testing::AssertionFailure() << chrono::duration_cast<chrono::milliseconds>(waited).count() << " ms";
}

TEST(Sockets, ReceivingEndsAtItsTimeout) {
  Peer peer([](Connection &connection) { connection.ReadToEnd(); });
  const Client client;
  ASSERT_EQ(client.SetTimeout(SO_RCVTIMEO, 200), 0);
  ASSERT_EQ(client.Connect(peer.port()), 0);
  std::string answer;
  const auto before = chrono::steady_clock::now();
  EXPECT_EQ(client.Receive(&answer, 500), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10060);
  EXPECT_TRUE(IsOver(chrono::steady_clock::now() - before));
}

TEST(Sockets, SendingEndsAtItsTimeout) {
  const std::string more_than_any_buffer(kMoreThanAnyBuffer, 'x');
  std::promise<void> tried;
  Peer peer([&](Connection &) { tried.get_future().wait(); });
  const Client client;
  ASSERT_EQ(client.SetTimeout(SO_SNDTIMEO, 200), 0);
  ASSERT_EQ(client.Connect(peer.port()), 0);
  const auto before = chrono::steady_clock::now();
  EXPECT_EQ(client.Send(more_than_any_buffer), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10060);
  EXPECT_TRUE(IsOver(chrono::steady_clock::now() - before));
  tried.set_value();
}

class NoTimeout : public testing::TestWithParam<int> {};

// No wait can show that there is no end to it. This one outlasts what a host might make of so small a number.
constexpr chrono::milliseconds kSilence(400);

TEST_P(NoTimeout, OutlastsSilence) {
  Peer peer([](Connection &connection) {
    std::this_thread::sleep_for(kSilence);
    connection.Read(kMoreThanAnyBuffer);
    std::this_thread::sleep_for(kSilence);
    connection.Write("answer");
  });
  const Client client;
  EXPECT_EQ(client.SetTimeout(SO_RCVTIMEO, GetParam()), 0);
  EXPECT_EQ(client.SetTimeout(SO_SNDTIMEO, GetParam()), 0);
  ASSERT_EQ(client.Connect(peer.port()), 0);
  EXPECT_EQ(client.Send(std::string(kMoreThanAnyBuffer, 'x')), static_cast<int>(kMoreThanAnyBuffer));
  std::string answer;
  EXPECT_EQ(client.Receive(&answer, 500), 6);
}

INSTANTIATE_TEST_SUITE_P(ZeroAndLess, NoTimeout, testing::Values(0, -1, -30000));

TEST(Sockets, AResetIsAnErrorOfTheReceiver) {
  Peer peer([](Connection &connection) {
    connection.Read(1);
    connection.Reset();
  });
  const Client client;
  ASSERT_EQ(client.Connect(peer.port()), 0);
  EXPECT_EQ(client.Send("x"), 1);
  std::string answer;
  const int received = client.Receive(&answer, 500);
  if (test::EndMayPrecedeReset() && received == 0) return;
  EXPECT_EQ(received, SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10054);
}

TEST(Sockets, NothingIsSentAfterTheShutdown) {
  Peer peer([](Connection &connection) { connection.ReadToEnd(); });
  const Client client;
  ASSERT_EQ(client.Connect(peer.port()), 0);
  EXPECT_EQ(shutdown(client.handle, SD_BOTH), 0);
  EXPECT_EQ(client.Send("x"), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10058);
}

TEST(Sockets, AnUnconnectedSocketNeitherReceivesNorShutsDown) {
  const Client client;
  std::string answer;
  EXPECT_EQ(client.Receive(&answer, 500), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10057);
  EXPECT_EQ(shutdown(client.handle, SD_BOTH), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10057);
}

TEST(Sockets, TheInvalidSocketIsRefusedByEveryCall) {
  const Client started;
  char byte = 0;
  const int milliseconds = 1;
  EXPECT_EQ(send(INVALID_SOCKET, &byte, 1, 0), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10038);
  EXPECT_EQ(recv(INVALID_SOCKET, &byte, 1, 0), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10038);
  EXPECT_EQ(shutdown(INVALID_SOCKET, SD_BOTH), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10038);
  EXPECT_EQ(closesocket(INVALID_SOCKET), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10038);
  EXPECT_EQ(
      setsockopt(INVALID_SOCKET, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char *>(&milliseconds), 4),
      SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10038);
}

}  // namespace
}  // namespace lumo
