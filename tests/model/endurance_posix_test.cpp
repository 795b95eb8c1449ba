// model/endurance_posix_test.cpp: a register that is never switched off. The other end is a few lines of
// sockets that remember nothing, so that what grows is the library's.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "end_to_end/shop.h"
#include "model/heap.h"

namespace {

using test::HeapInUse;
using test::Shop;

size_t ResidentKilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmRSS:", 0) == 0) return static_cast<size_t>(std::strtoul(line.c_str() + 6, nullptr, 10));
  }
  return 0;
}

// Answers whatever it is asked with a paid bill.
class Answerer {
 public:
  Answerer() : listener_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(listener_, reinterpret_cast<const sockaddr *>(&address), size), 0);
    EXPECT_EQ(listen(listener_, 16), 0);
    EXPECT_EQ(getsockname(listener_, reinterpret_cast<sockaddr *>(&address), &size), 0);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { Serve(); });
  }
  ~Answerer() {
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
  }
  Answerer(const Answerer &) = delete;
  Answerer &operator=(const Answerer &) = delete;

  std::string address() const { return "http://127.0.0.1:" + std::to_string(port_) + "/ws"; }
  // While this is held, the thread has closed whatever it answered.
  std::unique_lock<std::mutex> AtRest() const { return std::unique_lock<std::mutex>(work_); }

 private:
  void Serve() const {
    static const std::string kAnswer =
        R"({"putPaymentResponse":{"response":{"ver":"1.0","responseId":"r","responseDate":"2012-12-05T10:00:00Z",)"
        R"("requestState":"SUCCESS","requestStateCode":"OK","message":"","isNeedUpdate":false},)"
        R"("bill":{"totalSum":100,"billNum":"1","goodList":{"good":[{"title":"Хлеб","productCode":"1","positionCost":100,)"
        R"("bonus":[{"earned":1,"spend":0,"organizerFee":0,"accountType":"LOCAL"}]}]}}}})";
    for (int client; (client = accept(listener_, nullptr, nullptr)) >= 0;) {
      const std::lock_guard<std::mutex> lock(work_);
      char buffer[8192];
      std::string request;
      size_t body = std::string::npos;
      // Head, body, and the line feed behind it.
      for (ssize_t count; (count = recv(client, buffer, sizeof buffer, 0)) > 0;) {
        request.append(buffer, static_cast<size_t>(count));
        if (body == std::string::npos) {
          const size_t end = request.find("\n\n");
          if (end == std::string::npos) continue;
          body = end + 2 + std::strtoul(request.c_str() + request.find("Length: ") + 8, nullptr, 10) + 1;
        }
        if (request.size() >= body) break;
      }
      send(client, kAnswer.data(), kAnswer.size(), MSG_NOSIGNAL);
      close(client);
    }
  }

  int listener_;
  int port_ = 0;
  mutable std::mutex work_;
  std::thread thread_;
};

// What the process holds: the library's, while the server rests.
struct Holdings {
  explicit Holdings(const Answerer &server) {
    const std::unique_lock<std::mutex> rest = server.AtRest();
    heap = HeapInUse();
    handles = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  }

  size_t heap;
  std::ptrdiff_t handles;
};

void Print(int operations, const Holdings &holdings) {
  std::printf("after %d operations: %zu bytes of heap, %zu KB resident\n", operations, holdings.heap,
              ResidentKilobytes());
}

void Operate(int operations) {
  Shop shop;
  const Answerer server;
  shop.Start(server.address(), R"("logSize":100,"offlineMode":1,"serverAltAddr":"")");
  const std::string bill =
      R"({"totalSum":100,"goodList":{"good":[{"title":"Хлеб","productCode":"1","positionCost":100,"orderNum":1,"cnt":1}]}})";
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  std::optional<Holdings> settled;
  for (int i = 0; i < operations; ++i) {
    if (i == operations / 3) {
      settled = Holdings(server);
      Print(i, *settled);
    }
    if (i % 1000 == 0) {
      shop.ClearTrace();
      ASSERT_EQ(shop.LUMOInit(), 0);
    }
    ASSERT_EQ(shop.CreateTransaction("9000000001", "7"), 0);
    switch (i % 5) {
      case 0:
        shop.Write("BILL.JSN", bill);
        ASSERT_EQ(shop.PaymentProc(0, "BILL.JSN"), 0);
        break;
      case 1:
        ASSERT_EQ(shop.DepositProc(i), 0);
        break;
      case 2:
        ASSERT_EQ(shop.BalanceProc(), 0);
        break;
      case 3:
        ASSERT_EQ(shop.PaymentConfirmProc(shop.getRRN()), 0);
        break;
      default:
        ASSERT_EQ(shop.PaymentProc(0, "MISSING"), -106);
        break;
    }
    ASSERT_EQ(shop.CloseTransaction(), 0);
    if (i % 500 == 0) {
      ASSERT_GT(shop.GenerateSummaryReport("", "9"), 0);
    }
  }
  const Holdings last(server);
  Print(operations, last);
  EXPECT_LT(last.heap, settled->heap + 16384);
  EXPECT_EQ(last.handles, settled->handles);
}

TEST(Endurance, MemoryAndHandlesStayFlat) {
  Operate(3000);
}

TEST(LongEndurance, MemoryAndHandlesStayFlat) {
  Operate(100000);
}

}  // namespace
