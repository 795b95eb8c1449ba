// fuzz/replay.cpp: runs a fuzz program over the files of a directory, each also cut short and with single
// bytes changed, so that every test run sees what a fuzzing engine once found.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "target.h"

namespace {

void Run(const std::string &bytes) {
  // A copy of the exact size lets the sanitizer see a read beyond the input.
  const std::vector<uint8_t> copy(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(copy.data(), copy.size());
}

void RunWithVariations(const std::string &bytes) {
  constexpr size_t kVariations = 64;
  Run(bytes);
  const size_t step = std::max<size_t>(1, bytes.size() / kVariations);
  for (size_t at = 0; at < bytes.size(); at += step) {
    Run(bytes.substr(0, at));
    for (const char byte : {'\0', '"', '}', '9', '\\', '\x80'}) {
      std::string changed = bytes;
      changed[at] = byte;
      Run(changed);
    }
  }
}

}  // namespace

int main(int argc, char **argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    for (const auto &entry : std::filesystem::directory_iterator(argv[i])) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  for (const std::filesystem::path &file : files) {
    std::ifstream stream(file, std::ios::binary);
    std::printf("%s\n", file.filename().string().c_str());
    std::fflush(stdout);
    RunWithVariations(std::string(std::istreambuf_iterator<char>(stream), {}));
  }
  std::printf("%zu files\n", files.size());
  return files.empty() ? 1 : 0;
}
