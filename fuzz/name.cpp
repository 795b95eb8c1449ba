// fuzz/name.cpp: any text as the name of a file.
#include <algorithm>

#include "foundation/files.h"
#include "foundation/module_path.h"
#include "target.h"

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
    const bool is_plain = std::all_of(name.begin(), name.end(), [](char c) { return c > 0 && c != '\\'; });
    fuzz::Promise(!is_plain || fuzz::ReadFile(("./" + name).c_str()) == "x", "its plain name in the folder");
    fuzz::Promise(lumo::FileExists(name.c_str()), "a file found again by its name");
    fuzz::Promise(lumo::FileDelete(name.c_str()) == 0, "a file deleted by its name");
  }
  return 0;
}
