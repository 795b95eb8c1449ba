#include "support/folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "foundation/module_path.h"

namespace test {
namespace {

namespace fs = std::filesystem;

fs::path Inside(const std::string &folder, const std::string &name) {
  return fs::u8path(folder + name);
}

}  // namespace

Folder::Folder() {
  fs::path path = fresh_.path();
  path += fs::path::preferred_separator;
  path_ = path.u8string();
  lumo::SetModuleDirectory(path.string<lumo::WCHAR>().c_str());
  lumo::SetTraceTag(nullptr);
}

std::string Folder::Read(const std::string &name) const {
  std::ifstream file(Inside(path_, name), std::ios::binary);
  if (!file) {
    ADD_FAILURE() << "no file " << name;
    return "";
  }
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void Folder::Write(const std::string &name, const std::string &bytes) const {
  std::ofstream file(Inside(path_, name), std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) {
    ADD_FAILURE() << "cannot write " << name;
  }
}

bool Folder::Exists(const std::string &name) const {
  return fs::exists(Inside(path_, name));
}

void Folder::Remove(const std::string &name) const {
  fs::remove_all(Inside(path_, name));
}

std::string Folder::Trace(const std::string &name) const {
  std::ifstream file(Inside(path_, name));
  std::string trace{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const std::string seek = "SetFilePointer function failed with error ";
  for (size_t at = 0; (at = trace.find(seek + "183\n", at)) != std::string::npos; at += seek.size()) {
    trace.replace(at + seek.size(), 3, "0");
  }
  return trace;
}

void Folder::ClearTrace() const {
  Remove("TRACE.TXT");
}

}  // namespace test
