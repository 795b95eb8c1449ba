// bench/workloads.h: the texts that the benchmarks read and write.
#pragma once

#include <string>

namespace bench {

std::string MakeBill(
    int goods);  // a bill as the server sends it back: Cyrillic titles, bonuses; 280 bytes a good
std::string MakeUnpaidBill(int goods);      // the same goods as the register writes them, without bonuses
std::string MakeBills(size_t least_bytes);  // an array of bills of 100 goods
std::string MakeAnswer();                   // the answer to a payment with two goods: about 1 KB

struct Workload {
  const char *name;
  std::string text;
};

// "bill", "bills" and "answer"; "bills" only when asked for, it has 10 MB.
const Workload &FindWorkload(const std::string &name);

}  // namespace bench
