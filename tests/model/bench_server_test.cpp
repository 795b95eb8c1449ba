// model/bench_server_test.cpp: what a register sees when the bench's server does one thing or another.
#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <string>

#include "end_to_end/shop.h"
#include "loyalty_server/server.h"
#include "support/wine.h"

namespace {

using test::Shop;

constexpr char kBill[] =
    R"({"totalSum":1000,"orderLen":1,"billNum":"1","billDate":"2012-12-05T10:00:00Z","partnerFee":0,)"
    R"("goodList":{"good":[{"title":"a","productCode":"1","positionCost":1000,"orderNum":1,"cnt":1}]}})";

class BenchServer : public testing::Test {
 protected:
  void Open(const loyalty::Shop &programme, const std::string &more = "") {
    server = std::make_unique<loyalty::Server>(loyalty::Programme(programme));
    shop.Start("http://" + server->address() + "/ws", more);
  }
  void SetFault(const char *text) { server->SetFault(loyalty::ParseFault(text)); }

  // Pays a bill of 10.00; the calls' codes and, when there is none, the server's.
  std::string Pay() {
    shop.Write("BILL.JSN", kBill);
    EXPECT_EQ(shop.CreateTransaction("1000000001", "7"), 0);
    const int code = shop.PaymentAndConfirmProc(0, "BILL.JSN");
    const std::string outcome =
        code == 0 || code == -405 ? shop.getResponseStateCode() : std::to_string(code);
    shop.CloseTransaction();
    return outcome;
  }

  // Sells online, offline while the server is away, online again; replays; and sells on.
  std::string PayAfterReplay() {
    EXPECT_EQ(Pay(), "OK");
    SetFault("refuse");
    EXPECT_EQ(Pay(), "OK");
    SetFault("off");
    EXPECT_EQ(shop.setOfflineState(0), 0);
    EXPECT_EQ(Pay(), "OK");
    EXPECT_EQ(shop.SendOfflinePayments(), 1);
    return Pay();
  }

  Shop shop;
  std::unique_ptr<loyalty::Server> server;
};

TEST_F(BenchServer, ARegisterSellsOnAfterAReplay) {
  Open(loyalty::BuiltInShop(), R"("offlineMode":1)");
  EXPECT_EQ(PayAfterReplay(), "OK");
}

TEST_F(BenchServer, ARegisterRepeatsItsIdsWhereAReplayIsAnsweredWithTheRecordsOwn) {
  loyalty::Shop programme = loyalty::BuiltInShop();
  programme.isIdResumedAfterReplay = false;
  Open(programme, R"("offlineMode":1)");
  EXPECT_EQ(PayAfterReplay(), "DUPLICATE_REQUEST_ID");
}

// The reset is on its way as soon as the connection is open. A register that has sent before it arrives meets
// it when it reads, and one that has not yet been told of the open connection meets it there.
TEST_F(BenchServer, ARegisterMeetsAConnectionThatIsHungUp) {
  Open(loyalty::BuiltInShop());
#ifdef _WIN32
  // This process has sockets of its own, the server's: ERR_REQUEST_SEND ends one WSAStartup too many.
  WSADATA ignored;
  EXPECT_EQ(WSAStartup(0x0202, &ignored), 0);
#endif
  SetFault("hangup");
  const std::string outcome = Pay();
  EXPECT_THAT(outcome, testing::AnyOf("-410", "-401", "-501"));
  if (outcome == "-501") {
    EXPECT_THAT(shop.Trace(), testing::HasSubstr("ERROR: Connection Failed 10054\n"));
  }
  server->Look([](const loyalty::Programme &programme) { EXPECT_TRUE(programme.payments().empty()); });
  SetFault("off");
  EXPECT_EQ(Pay(), "OK");
}

#if defined(__linux__)
TEST_F(BenchServer, ARegisterWaitsItsTimeOutForABlackHole) {
  Open(loyalty::BuiltInShop(), R"("timeout":1)");
  SetFault("blackhole");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Pay(), "-501");
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}
#endif

}  // namespace
