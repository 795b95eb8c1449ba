// wince/payment_cost.cpp: one payment of so many goods by a library file, between two marks for the plugin
// that counts instructions (count.c).
//
//   payment_cost FILE GOODS
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "lumo.h"
#include "support/fresh_folder.h"
#include "support/scripted_server.h"
#include "support/test_clock.h"
#include "wince/loader.h"

namespace {

namespace fs = std::filesystem;

constexpr int kGoodCents = 15000;

// The bill, or what the server answers with: with its bonuses.
std::string Bill(int goods, bool is_answer) {
  std::string list;
  for (int i = 1; i <= goods; ++i) {
    const std::string number = std::to_string(i);
    list += list.empty() ? "" : ",";
    list += R"({"title":"Молоко 3,2% «Деревенское»","productCode":"46000)" + number + R"(","positionCost":)" +
            std::to_string(kGoodCents) + R"(,"orderNum":)" + number + R"(,"cnt":2)";
    if (is_answer) {
      list += R"(,"bonus":[{"earned":450,"spend":100,"organizerFee":15,"accountType":"LOCAL"},)"
              R"({"earned":300,"spend":0,"organizerFee":15,"accountType":"GLOBAL"}])";
    }
    list += "}";
  }
  return R"({"totalSum":)" + std::to_string(goods * kGoodCents) + R"(,"orderLen":)" + std::to_string(goods) +
         R"(,"billNum":"77","billDate":"2012-12-05T09:59:00Z","partnerFee":500,"goodList":{"good":[)" + list +
         "]}}";
}

std::string Answer(int goods) {
  return R"({"putPaymentResponse":{"response":{"ver":"1.0","requestId":"1234512120500008","responseId":"r1",)"
         R"("responseDate":"2012-12-05T10:00:01Z","requestState":"SUCCESS","requestStateCode":"OK",)"
         R"("message":"","isNeedUpdate":false},"bill":)" +
         Bill(goods, true) + "}}";
}

void Write(const fs::path &file, const std::string &bytes) {
  std::ofstream stream(file, std::ios::binary);
  stream << bytes;
  if (!stream.flush()) throw std::runtime_error(file.string() + " cannot be written");
}

// A system call that nobody has.
void Mark(bool begins) {
  constexpr long kMark = 600;
  syscall(kMark, begins ? 1L : 0L);
}

void Expect(int code, int expected, const char *call) {
  if (code != expected) throw std::runtime_error(std::string(call) + " gives " + std::to_string(code));
}

void Pay(const std::string &file, int goods) {
  test::SetClock(2012, 12, 5, 10, 0, 0);
  const test::FreshFolder fresh;
  const fs::path &folder = fresh.path();
  fs::copy_file(file, folder / "lumo.dll");
  const test::ScriptedServer server(Answer(goods));
  Write(folder / "CONFIG", R"({"terminalId":"12345","protocolVersion":"1.0","serverAddr":")" +
                               server.address() +
                               R"(","retailNetworkName":"Сеть","timeout":30,"logSize":1000,)"
                               R"("receiptHeader":"Магазин","receiptFooter":"Спасибо"})");
  Write(folder / "STATE", R"({"reqId":"1234512120500007","offline":0,"shiftState":0,"update":0})");
  Write(folder / "BILL.JSN", Bill(goods, false));

  wince::Module *const module = wince::Load((folder / "lumo.dll").string());
#define CALL(name) reinterpret_cast<decltype(&name)>(wince::Find(module, #name))
  Expect(CALL(LUMOInit)(), 0, "LUMOInit");
  Expect(CALL(CreateTransaction)("9000000001", "7"), 0, "CreateTransaction");
  const auto pay = CALL(PaymentProc);
  Mark(true);
  const int code = pay(100 * goods, "BILL.JSN");
  Mark(false);
  Expect(code, 0, "PaymentProc");
  Expect(CALL(GetSpendBonusAmount)(), 100 * goods, "GetSpendBonusAmount");
  Expect(CALL(GetEarnBonusAmount)(), 750 * goods, "GetEarnBonusAmount");
#undef CALL
}

}  // namespace

int main(int count, char **words) {
  try {
    if (count != 3) throw std::runtime_error("payment_cost FILE GOODS");
    Pay(words[1], std::atoi(words[2]));
  } catch (const std::exception &error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
