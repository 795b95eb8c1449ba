#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "payment.h"
#include "workloads.h"

namespace bench {

namespace fs = std::filesystem;

Stand::Stand(const std::string &name, const std::string &where, int goods, int port)
    // The library knows its folder by the whole path. A shorter one is found faster, so all have that.
    : name(name), folder(fs::absolute(where).string() + "/" + name + "/"), bill(MakeUnpaidBill(goods)) {
  fs::remove_all(folder);
  fs::create_directories(folder);
  if (name == "lumo") till = OpenLumo(LUMO_LIBRARY_FILE, folder, port);
  if (name == "posix") till = OpenByHand(folder, port, TraceBy::kPosix, Journal::kUnhurried);
  if (name == "stdio") till = OpenByHand(folder, port, TraceBy::kStdio, Journal::kUnhurried);
  if (name == "waiting") till = OpenByHand(folder, port, TraceBy::kStdio, Journal::kDefault);
  if (name == "trace") till = OpenTraceAlone(folder, port);
  Require(till != nullptr, "finding that till");
}

void Stand::WriteBill() const {
  std::ofstream(folder + kBill, std::ios::binary) << bill;
}

void Stand::ClearTrace() const {
  fs::remove(folder + "TRACE.TXT");
}

std::string Stand::Read(const char *file) const {
  std::ifstream stream(folder + file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

double Now(clockid_t clock) {
  timespec now = {};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

double FastestQuarter(std::vector<double> times) {
  const auto quarter = times.begin() + static_cast<ptrdiff_t>(times.size() / 4);
  std::nth_element(times.begin(), quarter, times.end());
  return *quarter;
}

void Fail(const char *what) {
  std::fprintf(stderr, "payment: %s failed\n", what);
  std::exit(1);
}

}  // namespace bench
