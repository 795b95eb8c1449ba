// register/library.h: the library file, loaded while the register runs, its calls found by name.
#pragma once

#include <filesystem>

#include "lumo.h"
#include "lumo_calls.h"
#include "running_call.h"

namespace reg {

template <typename Function>
class Call;

// A call of the library; while it runs, RunningCall knows its name.
template <typename Result, typename... Arguments>
class Call<Result(LUMO_CALL *)(Arguments...)> {
 public:
  using Function = Result(LUMO_CALL *)(Arguments...);
  void Set(const char *name, Function function) {
    name_ = name;
    function_ = function;
  }
  Result operator()(Arguments... arguments) const {
    const RunningCall running(name_);
    return function_(arguments...);
  }

 private:
  const char *name_ = nullptr;
  Function function_ = nullptr;
};

class Library {
 public:
  // Throws std::runtime_error when the file cannot be loaded or lacks a call.
  explicit Library(const std::filesystem::path &file);

  const std::filesystem::path &file() const { return file_; }
  std::filesystem::path folder() const { return file_.parent_path(); }

#define REGISTER_DECLARE(name) Call<decltype(&::name)> name;
  LUMO_CALLS(REGISTER_DECLARE)
#undef REGISTER_DECLARE

 private:
  std::filesystem::path file_;
};

}  // namespace reg
