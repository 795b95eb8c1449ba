// bench/payment_watched.cpp: what one online payment asks for, in a program that watches its own calls.
//   payment_watched count TILL GOODS FOLDER       system calls, heap calls
#include <iostream>
#include <vector>

#include "cost.h"
#include "payment.h"

int main(int argc, char **argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() != 4) {
    std::cerr << "usage: see bench/payment_watched.cpp\n";
    return 2;
  }
  const int goods = std::stoi(words[2]);
  const bench::PaymentServer server(goods);
  const bench::Stand stand(words[1], words[3], goods, server.port());
  stand.WriteBill();
  stand.till->Pay();
  stand.WriteBill();
  const bench::Cost cost = bench::CountCost([&] { stand.till->Pay(); });
  std::cout << cost.systemCalls << "," << cost.heapCalls << "\n";
  return 0;
}
