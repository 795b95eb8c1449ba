#include "support/fatal.h"

#include <cstdio>
#include <cstdlib>

namespace test {
namespace {

const Folder *ending_folder = nullptr;

void PrintTrace() {
  std::fprintf(stderr, "[%s]\n", ending_folder->Trace().c_str());
}

}  // namespace

bool EndedAsFatal(int status) {
  return testing::ExitedWithCode(255)(status) || testing::ExitedWithCode(-1)(status);
}

void PrintTraceAtExit(const Folder &folder) {
  ending_folder = &folder;
  std::atexit(PrintTrace);
}

}  // namespace test
