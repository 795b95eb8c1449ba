#include "target.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "foundation/module_path.h"
#include "support/fresh_folder.h"

namespace fuzz {
namespace {

namespace fs = std::filesystem;

// The library's folder: all inputs have it in turn.
struct Folder {
  Folder() { lumo::SetModuleDirectory((fresh.path() / "").string<lumo::WCHAR>().c_str()); }
  test::FreshFolder fresh;
};

const fs::path &OwnFolder() {
  static const Folder folder;
  return folder.fresh.path();
}

}  // namespace

void Promise(bool kept, const char *what) {
  if (kept) return;
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}

void EmptyFolder() {
  for (const fs::directory_entry &entry : fs::directory_iterator(OwnFolder())) fs::remove_all(entry.path());
}

void WriteFile(const char *name, const std::string &bytes) {
  std::ofstream(OwnFolder() / name, std::ios::binary) << bytes;
}

std::string ReadFile(const char *name) {
  std::ifstream stream(OwnFolder() / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace fuzz
