#include "target.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "foundation/module_path.h"

namespace fuzz {
namespace {

namespace fs = std::filesystem;

struct Folder {
  Folder() {
    std::random_device random;
    do path = fs::temp_directory_path() / ("lumo-fuzz-" + std::to_string(random()));
    while (!fs::create_directory(path));
    lumo::SetModuleDirectory((path / "").string<lumo::WCHAR>().c_str());
  }
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
  }
  fs::path path;
};

Folder &OwnFolder() {
  static Folder folder;
  return folder;
}

}  // namespace

void Promise(bool kept, const char *what) {
  if (kept) return;
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}

void EmptyFolder() {
  for (const fs::directory_entry &entry : fs::directory_iterator(OwnFolder().path))
    fs::remove_all(entry.path());
}

void WriteFile(const char *name, const std::string &bytes) {
  std::ofstream(OwnFolder().path / name, std::ios::binary) << bytes;
}

std::string ReadFile(const char *name) {
  std::ifstream stream(OwnFolder().path / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace fuzz
