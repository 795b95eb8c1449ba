// cost/cost_posix_test.cpp: what the library may ask of the system and of the heap. These counts depend on no
// clock and on no other program.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cost.h"
#include "foundation/trace.h"
#include "json/lumojson.h"
#include "lumo.h"
#include "support/folder.h"
#include "support/scripted_server.h"
#include "workloads.h"

namespace {

// As a register's program does it. The result is that of the payment.
int Pay() {
  CreateTransaction("9000000001", "7");
  const int result = PaymentProc(2000, "BILL.JSN");
  getReceiptHeaderPtr();
  getReceiptBodyPtr();
  getReceiptFooterPtr();
  CloseTransaction();
  return result;
}

}  // namespace

// What instructions.sh counts.
extern "C" __attribute__((noinline)) int MeasuredPayment();
extern "C" __attribute__((noinline)) int MeasuredPayment() {
  return Pay();
}

namespace {

using bench::CountCost;

constexpr int kGoods = 10;

class Payment : public testing::Test {
 protected:
  Payment() {
    const std::string answer =
        R"({"putPaymentResponse":{"response":{"ver":"1.0","requestId":"1234512120500008","responseId":"1",)"
        R"("responseDate":"2024-05-17T10:42:06Z","requestState":"SUCCESS","requestStateCode":"OK",)"
        R"("message":"Операция выполнена успешно","isNeedUpdate":false},"bill":)" +
        bench::MakeBill(kGoods) + "}}";
    server = std::make_unique<test::ScriptedServer>(std::vector<test::Answer>(2, test::Answer{{answer}}));
    folder.Write(
        "CONFIG",
        R"({"terminalId":"12345","protocolVersion":"1.0","serverAddr":")" + server->address() +
            R"(","serverAltAddr":"http://127.0.0.1:1/","retailNetworkName":"Сеть","timeout":5,)"
            R"("offlineMode":1,"logSize":1000,"receiptHeader":"Магазин","receiptFooter":"Спасибо"})");
    folder.Write("STATE",
                 R"({"reqId":"1234512120500007","shiftId":"42","offline":0,"shiftState":1,"update":0})");
    EXPECT_EQ(LUMOInit(), 0);
  }

  void WriteBill() const { folder.Write("BILL.JSN", bench::MakeUnpaidBill(kGoods)); }

  test::Folder folder;
  std::unique_ptr<test::ScriptedServer> server;
};

TEST_F(Payment, OfTenGoodsStaysWithinItsGoals) {
  WriteBill();
  ASSERT_EQ(Pay(), 0);  // what happens only once has happened
  WriteBill();
  folder.ClearTrace();
  const bench::Cost cost = CountCost([] {
    if (Pay() != 0) std::abort();
  });
  RecordProperty("system_calls", static_cast<int>(cost.systemCalls));
  RecordProperty("heap_calls", static_cast<int>(cost.heapCalls));
  EXPECT_LE(cost.systemCalls, 900U);
  EXPECT_LE(cost.heapCalls, 80U);
  // All of it was done: the trace of the payment goes on to its end.
  const std::string trace = folder.Trace();
  EXPECT_NE(trace.find(" title [Кофе натуральный жареный молотый 250 г]\n"), std::string::npos);
  EXPECT_NE(trace.find("Good has 2 bonuses\n"), std::string::npos);
  EXPECT_EQ(trace.substr(trace.size() - 19), "CloseTransaction()\n");
}

TEST_F(Payment, IsMadeOnceToBeginWithAndOnceToBeCounted) {
  WriteBill();
  ASSERT_EQ(Pay(), 0);  // what happens only once has happened
  WriteBill();
  EXPECT_EQ(MeasuredPayment(), 0);
}

TEST(TraceLine, IsThreeSystemCallsAndNoHeapCall) {
  const test::Folder folder;
  lumo::Trace("the first line finds out where the file is\n");
  const bench::Cost cost = CountCost([] {
    for (int i = 0; i < 100; ++i) lumo::TraceError("%s [%d] %.*s\n", "label", i, 3, "texts");
  });
  EXPECT_EQ(cost.systemCalls, 300U);
  EXPECT_EQ(cost.heapCalls, 0U);
}

TEST(TraceLine, OfMoreThanAKilobyteTakesMemoryOnce) {
  const test::Folder folder;
  const std::string text(5000, 't');
  lumo::Trace("the first line finds out where the file is\n");
  const bench::Cost cost = CountCost([&] { lumo::Trace("%s\n", text.c_str()); });
  EXPECT_EQ(cost.systemCalls, 3U);
  EXPECT_EQ(cost.heapCalls, 1U);
}

// A heap that gives a tree's memory back to the system has to fetch it for the next tree, page by page.
void ExpectNoMoreMemory(const std::function<void(lumo::JsonReader *)> &parse, uint64_t file_calls,
                        int goods) {
  const auto build = [&] {
    lumo::JsonReader *reader = lumo::JsonReaderCreate();
    parse(reader);
    lumo::JsonReaderDestroy(reader);
  };
  build();
  build();
  EXPECT_EQ(CountCost(build).systemCalls, file_calls) << goods;
}

TEST(Tree, FindsTheMemoryOfTheOneBefore) {
  for (const int goods : {1, 100, 300, 1000, 3000}) {
    const std::string bill = bench::MakeBill(goods);
    ExpectNoMoreMemory(
        [&](lumo::JsonReader *reader) {
          if (lumo::ParseJsonText(reader, bill.c_str()) != 0) std::abort();
        },
        0, goods);
  }
}

TEST(Tree, OfAFileFindsTheMemoryOfTheOneBefore) {
  const test::Folder folder;
  for (const int goods : {1, 100, 300, 1000}) {
    const std::string bill = bench::MakeBill(goods);
    folder.Write("BILL.JSN", bill);
    // Three lines of the trace; open, size, lock, name and close; the first three bytes and the way back;
    // whole pieces of 1 KB, one that comes short, asked for a second time, and none.
    const uint64_t calls = 3 * 3 + 5 + 2 + bill.size() / 1024 + 3;
    ExpectNoMoreMemory(
        [](lumo::JsonReader *reader) {
          if (lumo::ParseJsonFile(reader, "BILL.JSN") != 0) std::abort();
        },
        calls, goods);
  }
}

}  // namespace
