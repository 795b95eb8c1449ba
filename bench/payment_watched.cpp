// bench/payment_watched.cpp: what one online payment asks for, in a program that watches its own calls.
//   payment_watched count TILL GOODS FOLDER               system calls, heap calls
//   payment_watched parts TILL GOODS FOLDER PAYMENTS      what the time goes into, and microseconds
#include <iostream>
#include <vector>

#include "cost.h"
#include "payment.h"
#include "timed_calls.h"

namespace {

// A payment as `count` sees it follows one that has done what is done only once.
void Count(const bench::Stand &stand) {
  stand.WriteBill();
  stand.till->Pay();
  stand.WriteBill();
  const bench::Cost cost = bench::CountCost([&] { stand.till->Pay(); });
  std::cout << cost.systemCalls << "," << cost.heapCalls << "\n";
}

void ShowParts(const bench::Stand &stand, int payments) {
  std::vector<double> parts[bench::kParts], rest;
  for (int payment = -3; payment < payments; ++payment) {
    stand.WriteBill();
    const auto before = bench::TimeInCalls();
    const double begin = bench::Now(CLOCK_MONOTONIC);
    stand.till->Pay();
    double left = bench::Now(CLOCK_MONOTONIC) - begin;
    if (payment < 0) continue;
    const auto after = bench::TimeInCalls();
    for (size_t part = 0; part < bench::kParts; ++part) {
      parts[part].push_back(after[part] - before[part]);
      left -= parts[part].back();
    }
    rest.push_back(left);
  }
  for (size_t part = 0; part < bench::kParts; ++part) {
    std::cout << bench::kPartNames[part] << "," << bench::FastestQuarter(parts[part]) << "\n";
  }
  std::cout << "computing," << bench::FastestQuarter(rest) << "\n";
}

}  // namespace

int main(int argc, char **argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  const bool counts = words.size() == 4 && words[0] == "count";
  if (!counts && (words.size() != 5 || words[0] != "parts")) {
    std::cerr << "usage: see bench/payment_watched.cpp\n";
    return 2;
  }
  const int goods = std::stoi(words[2]);
  const bench::PaymentServer server(goods);
  const bench::Stand stand(words[1], words[3], goods, server.port());
  if (counts) {
    Count(stand);
  } else {
    ShowParts(stand, std::stoi(words[4]));
  }
  return 0;
}
