#include "library.h"

#include <stdexcept>
#include <string>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace reg {
namespace {

#ifdef _WIN32
void *Load(const std::filesystem::path &file) {
  HMODULE module = LoadLibraryW(file.c_str());
  if (module == nullptr) {
    throw std::runtime_error("cannot load " + file.string() + ": error " + std::to_string(GetLastError()));
  }
  return module;
}

void *Find(void *module, const char *name) {
  return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(module), name));
}
#else
void *Load(const std::filesystem::path &file) {
  const RunningCall loading(RunningCall::kLoading);
  void *module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) throw std::runtime_error(std::string("cannot load the library: ") + dlerror());
  return module;
}

void *Find(void *module, const char *name) {
  return dlsym(module, name);
}
#endif

template <typename Function>
void Resolve(void *module, const char *name, Call<Function> &call) {
  void *found = Find(module, name);
  if (found == nullptr) throw std::runtime_error(std::string("the library has no call named ") + name);
  call.Set(name, reinterpret_cast<Function>(found));
}

}  // namespace

// The library is never unloaded: a register keeps it for as long as it runs.
Library::Library(const std::filesystem::path &file) : file_(std::filesystem::absolute(file)) {
  void *module = Load(file_);
#define REGISTER_RESOLVE(name) Resolve(module, #name, name);
  LUMO_CALLS(REGISTER_RESOLVE)
#undef REGISTER_RESOLVE
}

}  // namespace reg
