// bench/payment.cpp: one online payment, lumo beside the register written by hand.
//   payment check GOODS FOLDER              ends with 1 unless all leave the same bill, record, slip and
//   payment once TILL GOODS FOLDER          one payment, for callgrind to count its instructions
//   payment race GOODS FOLDER PAYMENTS      till, processor time and wall time of a payment, in microseconds
#include "payment.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <regex>
#include <vector>

namespace {

using bench::Stand;

constexpr const char *kTills[] = {"lumo", "posix", "stdio", "waiting", "trace"};

// The second in which a payment was made is not the same for all.
std::string WithoutTimes(const std::string &text) {
  static const std::regex time("[0-9]{2}:[0-9]{2}:[0-9]{2}");
  return std::regex_replace(text, time, "time");
}

struct Outcome {
  std::string slip, record, bill, trace;
};

Outcome PayTwice(const Stand &stand) {
  stand.WriteBill();
  stand.till->Pay();
  stand.ClearTrace();
  stand.WriteBill();
  Outcome outcome;
  outcome.slip = WithoutTimes(stand.till->Pay());
  outcome.record = WithoutTimes(stand.till->LastRecord());
  outcome.bill = stand.Read(bench::kBill);
  outcome.trace = WithoutTimes(stand.Read("TRACE.TXT"));
  return outcome;
}

bool Same(const char *what, const std::string &name, const std::string &expected, const std::string &found) {
  if (expected == found && !expected.empty()) return true;
  const auto at = std::mismatch(expected.begin(), expected.end(), found.begin(), found.end()).second;
  std::cerr << name << ": another " << what
            << " than lumo from here on: " << found.substr(static_cast<size_t>(at - found.begin()), 80)
            << "\n";
  return false;
}

int Check(const bench::PaymentServer &server, int goods, const std::string &where) {
  const Outcome lumo = PayTwice(Stand("lumo", where, goods, server.port()));
  bool same = true;
  for (const char *name : {"posix", "stdio", "waiting"}) {
    const Outcome other = PayTwice(Stand(name, where, goods, server.port()));
    same = Same("slip", name, lumo.slip, other.slip) && same;
    same = Same("record", name, lumo.record, other.record) && same;
    same = Same("bill", name, lumo.bill, other.bill) && same;
    same = Same("trace", name, lumo.trace, other.trace) && same;
  }
  return same ? 0 : 1;
}

// Turn by turn, and another first each time, so that what else the machine does meets all alike.
void Race(const bench::PaymentServer &server, int goods, const std::string &where, int payments) {
  struct Runner {
    Stand stand;
    std::vector<double> processor, wall;
  };
  std::vector<Runner> runners;
  for (const char *name : kTills) runners.push_back({Stand(name, where, goods, server.port()), {}, {}});
  constexpr int kWarmUps = 3;
  for (int payment = 0; payment < kWarmUps + payments; ++payment) {
    for (size_t turn = 0; turn < runners.size(); ++turn) {
      Runner &runner = runners[(turn + static_cast<size_t>(payment)) % runners.size()];
      runner.stand.WriteBill();
      const double processor = bench::Now(CLOCK_PROCESS_CPUTIME_ID), wall = bench::Now(CLOCK_MONOTONIC);
      runner.stand.till->Pay();
      if (payment < kWarmUps) continue;
      runner.wall.push_back(bench::Now(CLOCK_MONOTONIC) - wall);
      runner.processor.push_back(bench::Now(CLOCK_PROCESS_CPUTIME_ID) - processor);
    }
  }
  for (const Runner &runner : runners) {
    std::cout << runner.stand.name << "," << bench::FastestQuarter(runner.processor) << ","
              << bench::FastestQuarter(runner.wall) << "\n";
  }
}

}  // namespace

// callgrind collects inside this function alone.
extern "C" __attribute__((noinline)) void Measured(const Stand &stand) {
  stand.till->Pay();
}

int main(int argc, char **argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  const auto is = [&](const char *command, size_t count) {
    return words.size() == count && words[0] == command;
  };
  if (is("once", 4)) {
    const bench::PaymentServer server(std::stoi(words[2]));
    const Stand stand(words[1], words[3], std::stoi(words[2]), server.port());
    stand.WriteBill();
    stand.till->Pay();  // what happens only once has happened
    stand.WriteBill();
    Measured(stand);
    return 0;
  }
  if (is("check", 3)) {
    const bench::PaymentServer server(std::stoi(words[1]));
    return Check(server, std::stoi(words[1]), words[2]);
  }
  if (is("race", 4)) {
    const bench::PaymentServer server(std::stoi(words[1]));
    Race(server, std::stoi(words[1]), words[2], std::stoi(words[3]));
    return 0;
  }
  std::cerr << "usage: see bench/payment.cpp\n";
  return 2;
}
