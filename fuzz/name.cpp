// fuzz/name.cpp: any text as the name of a file.
#include <algorithm>

#include "foundation/files.h"
#include "foundation/module_path.h"
#include "target.h"

namespace {

// Nothing overlong, no half of a pair, nothing beyond U+10FFFF.
bool IsUtf8(const std::string &text) {
  size_t length = 0;
  for (size_t at = 0; at < text.size(); at += length) {
    uint32_t code = static_cast<unsigned char>(text[at]);
    length = code < 0x80 ? 1 : code < 0xC2 ? 0 : code < 0xE0 ? 2 : code < 0xF0 ? 3 : code < 0xF5 ? 4 : 0;
    if (length == 0 || text.size() - at < length) return false;
    code &= 0x7FU >> (length - 1);
    for (size_t i = 1; i < length; ++i) {
      const auto byte = static_cast<unsigned char>(text[at + i]);
      if (byte < 0x80 || byte > 0xBF) return false;
      code = code << 6 | (byte & 0x3FU);
    }
    if ((length == 3 && code < 0x800) || (code >= 0xD800 && code <= 0xDFFF)) return false;
    if ((length == 4 && code < 0x10000) || code > 0x10FFFF) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string name = std::string(reinterpret_cast<const char *>(data), size).c_str();
  if (name.find("..") != std::string::npos) return 0;  // leads out of the folder
  fuzz::EmptyFolder();
  lumo::WCHAR path[lumo::kPathUnits];
  const bool fits = lumo::BuildPath(name.c_str(), path);
  size_t units = 0;
  while (path[units] != 0) ++units;
  fuzz::Promise(units < lumo::kPathUnits, "a path that ends in its buffer");
  fuzz::Promise(fits || units == 0, "no part of a path that does not fit");
  lumo::HANDLE file = lumo::FileOpen(name.c_str(), "w+");
  const bool made = lumo::FileIsValid(file);
  fuzz::Promise(!made || fits, "no file without a path");
  if (made) {
    fuzz::Promise(lumo::FileWrite("x", 1, 1, file) == 1, "a file that takes a byte");
    lumo::FileClose(file);
    std::string own_name = "./" + name;
    std::replace(own_name.begin(), own_name.end(), '\\', '/');
    fuzz::Promise(fuzz::ReadFile(own_name.c_str()) == (IsUtf8(name) ? "x" : ""),
                  "its own name where that is UTF-8, and another where not");
    fuzz::Promise(lumo::FileExists(name.c_str()), "a file found again by its name");
    fuzz::Promise(lumo::FileDelete(name.c_str()) == 0, "a file deleted by its name");
  }
  return 0;
}
