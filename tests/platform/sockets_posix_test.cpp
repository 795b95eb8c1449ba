// platform/sockets_posix_test.cpp: what only this implementation can get wrong: signals, time-outs among
// them, and the numbers of errors.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>

#include "platform/client.h"
#include "platform/peer.h"
#include "platform/posix/posix_internal.h"

namespace lumo {
namespace {

using test::Client;
using test::Connection;
using test::Peer;

struct ErrorCase {
  int error, winsock;
};

constexpr ErrorCase kErrors[] = {
    {EINTR, 10004},         {EBADF, 10038},           {ENOTSOCK, 10038},     {EACCES, 10013},
    {EPERM, 10013},         {EFAULT, 10014},          {EINVAL, 10022},       {EMFILE, 10024},
    {ENFILE, 10024},        {EPROTONOSUPPORT, 10043}, {EAFNOSUPPORT, 10047}, {EADDRINUSE, 10048},
    {EADDRNOTAVAIL, 10049}, {ENETDOWN, 10050},        {ENETUNREACH, 10051},  {ENETRESET, 10052},
    {ECONNABORTED, 10053},  {ECONNRESET, 10054},      {ENOBUFS, 10055},      {ENOMEM, 10055},
    {EISCONN, 10056},       {ENOTCONN, 10057},        {EPIPE, 10058},        {ESHUTDOWN, 10058},
    {EAGAIN, 10060},        {EINPROGRESS, 10060},     {ETIMEDOUT, 10060},    {ECONNREFUSED, 10061},
    {EHOSTDOWN, 10065},     {EHOSTUNREACH, 10065},    {EDOM, 10022},
};

TEST(SocketErrors, EachHasItsNumber) {
  for (const ErrorCase &row : kErrors) {
    EXPECT_EQ(SocketErrorOf(row.error), row.winsock) << strerror(row.error);
  }
}

volatile std::sig_atomic_t ticks;
void CountTick(int) {
  ticks = ticks + 1;
}

// A timer signal every few milliseconds for as long as it lives, as a register's own timers may be.
class Ticking {
 public:
  Ticking() {
    struct sigaction action = {};
    action.sa_handler = CountTick;  // no SA_RESTART: every waiting call is interrupted
    sigaction(SIGALRM, &action, nullptr);
    Every(5000);
  }
  ~Ticking() { Every(0); }

 private:
  static void Every(int microseconds) {
    const itimerval interval = {{0, microseconds}, {0, microseconds}};
    setitimer(ITIMER_REAL, &interval, nullptr);
  }
};

TEST(Signals, DoNotEndOrProlongAReceive) {
  Peer peer([](Connection &connection) { connection.ReadToEnd(); });
  const Client client;
  ASSERT_EQ(client.SetTimeout(SO_RCVTIMEO, 300), 0);
  ASSERT_EQ(client.Connect(peer.port()), 0);
  const Ticking ticking;
  std::string answer;
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(client.Receive(&answer, 500), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10060);
  const auto took = std::chrono::steady_clock::now() - before;
  EXPECT_GE(took, std::chrono::milliseconds(299));
  EXPECT_GT(ticks, 0);
}

TEST(Signals, DoNotDisturbAnExchange) {
  std::string request;
  const std::string large(4 << 20, 'x');
  {
    Peer peer([&](Connection &connection) {
      request = connection.Read(large.size());
      connection.Write("answer");
    });
    const Client client;
    const Ticking ticking;
    ASSERT_EQ(client.Connect(peer.port()), 0);
    EXPECT_EQ(client.Send(large), static_cast<int>(large.size()));
    std::string answer;
    EXPECT_EQ(client.Receive(&answer, 500), 6);
  }
  EXPECT_EQ(request, large);
}

TEST(Signals, SendingToABrokenConnectionRaisesNone) {
  // The default answer to a broken pipe is the end of the process.
  std::signal(SIGPIPE, SIG_DFL);
  Peer peer([](Connection &connection) {
    connection.Read(1);
    connection.Reset();
  });
  const Client client;
  ASSERT_EQ(client.Connect(peer.port()), 0);
  EXPECT_EQ(client.Send("x"), 1);
  std::string answer;
  EXPECT_EQ(client.Receive(&answer, 1), SOCKET_ERROR);
  EXPECT_EQ(client.Send("y"), SOCKET_ERROR);
  EXPECT_EQ(client.Send("z"), SOCKET_ERROR);
}

TEST(PosixSockets, AreNotInheritedByPrograms) {
  const Client client;
  EXPECT_EQ(fcntl(static_cast<int>(client.handle), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

// Elsewhere the peer's own library has started the sockets before any test runs.
TEST(PosixSockets, NothingWorksBeforeTheStartOrAfterTheLastCleanup) {
  char byte = 0;
  const sockaddr address = {};
  EXPECT_EQ(WSACleanup(), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10093);
  EXPECT_EQ(socket(AF_INET, SOCK_STREAM, 0), INVALID_SOCKET);
  EXPECT_EQ(WSAGetLastError(), 10093);
  EXPECT_EQ(WSAStartup(MAKEWORD(2, 2), nullptr), 0);
  EXPECT_EQ(WSACleanup(), 0);
  EXPECT_EQ(socket(AF_INET, SOCK_STREAM, 0), INVALID_SOCKET);
  EXPECT_EQ(WSAGetLastError(), 10093);
  EXPECT_EQ(send(3, &byte, 1, 0), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10093);
  EXPECT_EQ(recv(3, &byte, 1, 0), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10093);
  EXPECT_EQ(shutdown(3, SD_BOTH), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10093);
  EXPECT_EQ(connect(3, &address, sizeof address), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10093);
  EXPECT_EQ(setsockopt(3, SOL_SOCKET, SO_RCVTIMEO, "1234", 4), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10093);
}

TEST(PosixSockets, ACloseAfterTheCleanupSaysSoAndStillFreesTheDescriptor) {
  WSADATA data;
  ASSERT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
  const SOCKET made = socket(AF_INET, SOCK_STREAM, 0);
  ASSERT_NE(made, INVALID_SOCKET);
  EXPECT_EQ(WSACleanup(), 0);
  EXPECT_EQ(closesocket(made), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10093);
  EXPECT_EQ(fcntl(static_cast<int>(made), F_GETFD), -1);
}

TEST(PosixSockets, OnlyWhatTheLibraryUsesIsOffered) {
  const Client client;
  const int value = 1;
  const auto bytes = reinterpret_cast<const char *>(&value);
  EXPECT_EQ(socket(23, SOCK_STREAM, 0), INVALID_SOCKET);
  EXPECT_EQ(WSAGetLastError(), 10047);
  EXPECT_EQ(socket(AF_INET, 2, 0), INVALID_SOCKET);
  EXPECT_EQ(WSAGetLastError(), 10043);
  EXPECT_EQ(setsockopt(client.handle, SOL_SOCKET, SO_RCVTIMEO, bytes, 2), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10014);
  EXPECT_EQ(setsockopt(client.handle, SOL_SOCKET, SO_RCVTIMEO, nullptr, 4), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10014);
  EXPECT_EQ(setsockopt(client.handle, SOL_SOCKET, 4, bytes, 4), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10042);
  EXPECT_EQ(setsockopt(client.handle, 6, SO_RCVTIMEO, bytes, 4), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10042);
  sockaddr_in address = {};
  EXPECT_EQ(connect(client.handle, nullptr, sizeof address), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10014);
  EXPECT_EQ(connect(client.handle, reinterpret_cast<const sockaddr *>(&address), 4), SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10014);
  EXPECT_EQ(connect(client.handle, reinterpret_cast<const sockaddr *>(&address), sizeof address),
            SOCKET_ERROR);
  EXPECT_EQ(WSAGetLastError(), 10047);
  EXPECT_EQ(inet_addr(nullptr), INADDR_NONE);
}

}  // namespace
}  // namespace lumo
