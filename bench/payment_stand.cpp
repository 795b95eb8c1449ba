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
    : name(name), folder(where + "/" + name + "/"), bill(MakeUnpaidBill(goods)) {
  fs::remove_all(folder);
  fs::create_directories(folder);
  if (name == "lumo") till = OpenLumo(LUMO_LIBRARY_FILE, folder, port);
  if (name == "stdio") till = OpenByHand(folder, port, TraceBy::kStdio);
  if (name == "posix") till = OpenByHand(folder, port, TraceBy::kPosix);
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

void Require(bool works, const char *what) {
  if (works) return;
  std::fprintf(stderr, "payment: %s failed\n", what);
  std::exit(1);
}

}  // namespace bench
