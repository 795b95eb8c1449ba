// library.h: the library file, loaded while the register runs, its calls found by name.
#pragma once

#include <filesystem>

#include "lumo.h"
#include "lumo_calls.h"

namespace reg {

class Library {
 public:
  // Throws std::runtime_error when the file cannot be loaded or lacks a call.
  explicit Library(const std::filesystem::path &file);

  const std::filesystem::path &file() const { return file_; }
  std::filesystem::path folder() const { return file_.parent_path(); }

#define REGISTER_DECLARE(name) decltype(&::name) name;
  LUMO_CALLS(REGISTER_DECLARE)
#undef REGISTER_DECLARE

 private:
  std::filesystem::path file_;
};

}  // namespace reg
