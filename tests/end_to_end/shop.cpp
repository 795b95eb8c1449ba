#include "end_to_end/shop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>

#include "support/wine.h"

#if defined(LUMO_LOADER)
#include "wince/loader.h"
#elif !defined(_WIN32)
#include <dlfcn.h>
#endif

namespace test {
namespace {

namespace fs = std::filesystem;

// The file under test: the one that the environment names, otherwise the one built with this program.
fs::path LibraryFile() {
  const char *const named = std::getenv("LUMO_LIBRARY_FILE");
  return fs::u8path(named == nullptr ? LUMO_LIBRARY_FILE : named);
}

size_t Units(const fs::path &path) {
  return path.u16string().size();
}

#ifdef _WIN32
// A path near the system's limit makes a folder only in this form, which knows no limit.
void MakeFolders(const fs::path &folder) {
  fs::path made = folder.root_path();
  for (const fs::path &name : folder.relative_path()) {
    made /= name;
    made.make_preferred();
    CreateDirectoryW((L"\\\\?\\" + made.wstring()).c_str(), nullptr);
  }
}
void *Load(const fs::path &file) {
  return LoadLibraryW(file.c_str());
}
void *Find(void *module, const char *name) {
  return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(module), name));
}
#else
void MakeFolders(const fs::path &folder) {
  fs::create_directories(folder);
}
#if defined(LUMO_LOADER)
void *Load(const fs::path &file) {
  return wince::Load(file.u8string());
}
void *Find(void *module, const char *name) {
  return wince::Find(static_cast<wince::Module *>(module), name);
}
#else
void *Load(const fs::path &file) {
  return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}
void *Find(void *module, const char *name) {
  return dlsym(module, name);
}
#endif
#endif

template <typename Function>
void Resolve(void *module, const char *name, Function &function) {
  function = reinterpret_cast<Function>(Find(module, name));
  if (function == nullptr) throw std::runtime_error(std::string("no export named ") + name);
}

}  // namespace

std::string LongPath(size_t units, const std::string &letter) {
  constexpr size_t kNameUnits = 40;
  const size_t letter_units = Units(fs::u8path(letter));
  std::string path;
  while (units != 0) {
    // What is left for the names behind this one is a separator and more, or nothing.
    const size_t name_units = units <= kNameUnits       ? units
                              : units == kNameUnits + 1 ? kNameUnits - 1
                                                        : kNameUnits;
    for (size_t i = 0; i < name_units / letter_units; ++i) path += letter;
    path += std::string(name_units % letter_units, 'x');
    units -= name_units;
    if (units != 0) {
      path += '/';
      --units;
    }
  }
  return path;
}

Shop::Shop(const std::string &folder_name) {
  SetClock(2012, 12, 5, 10, 0, 0);
  const fs::path &root = fresh_.path();
  root_ = root.u8string();
  const fs::path folder = folder_name.empty() ? root : root / fs::u8path(folder_name);
  fs::create_directories(folder);
  folder_ = folder.u8string() + "/";
  LoadCopy(LibraryFile().filename().u8string());
}

Shop::Shop(size_t folder_units, const std::string &letter) {
  SetClock(2012, 12, 5, 10, 0, 0);
  const fs::path root = fs::canonical(fresh_.path());
  root_ = root.u8string();
  // A separator is between the two and another one behind them.
  const size_t root_units = Units(root) + 2;
  if (folder_units <= root_units) throw std::runtime_error("the folder for temporary files is too deep");
  const fs::path folder = root / fs::u8path(LongPath(folder_units - root_units, letter));
  MakeFolders(folder);
  folder_ = folder.u8string() + "/";
  LoadCopy("l" + LibraryFile().extension().u8string());
}

// The library stays loaded until the process ends, as in a register; only its folder goes.
Shop::~Shop() {
  ReleaseClock();
}

void Shop::LoadAgain() {
  const fs::path built = LibraryFile();
  LoadCopy(built.stem().u8string() + std::to_string(++copies_) + built.extension().u8string());
}

void Shop::LoadCopy(const std::string &file_name) {
  const fs::path library = fs::u8path(folder_ + file_name);
  fs::copy_file(LibraryFile(), library);
  module_ = Load(library);
  if (module_ == nullptr) throw std::runtime_error("the library file does not load");
#define SHOP_RESOLVE(name) Resolve(module_, #name, name);
  LUMO_CALLS(SHOP_RESOLVE)
#undef SHOP_RESOLVE
}

void Shop::Start(const std::string &server_address, const std::string &more) {
  Write("CONFIG", R"({"terminalId":"12345","protocolVersion":"1.0","serverAddr":")" + server_address +
                      R"(","retailNetworkName":"Сеть","timeout":5,"logSize":1000,)" +
                      R"("receiptHeader":"Магазин","receiptFooter":"Спасибо")" +
                      (more.empty() ? "" : "," + more) + "}");
  Write("STATE", R"({"reqId":"1234512120500007","offline":0,"shiftState":0,"update":0})");
  ASSERT_EQ(LUMOInit(), 0);
  ClearTrace();
}

std::string Shop::Read(const std::string &name) const {
  std::ifstream stream(fs::u8path(folder_ + name), std::ios::binary);
  EXPECT_TRUE(stream.is_open()) << name << " is missing";
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void Shop::Write(const std::string &name, const std::string &bytes) const {
  std::ofstream stream(fs::u8path(folder_ + name), std::ios::binary);
  stream << bytes;
  ASSERT_TRUE(stream.flush()) << name;
}

bool Shop::Exists(const std::string &name) const {
  return fs::exists(fs::u8path(folder_ + name));
}

void Shop::Remove(const std::string &name) const {
  std::error_code ignored;
  fs::remove(fs::u8path(folder_ + name), ignored);
}

std::string Shop::Trace(const std::string &name) const {
  if (!Exists(name)) return "";
  std::string trace = Read(name);
#ifdef _WIN32
  // The trace is a text file, and a seek that succeeds leaves the last error as it was.
  for (size_t at; (at = trace.find("\r\n")) != std::string::npos;) trace.erase(at, 1);
  trace = std::regex_replace(trace, std::regex("(SetFilePointer function failed with error )[0-9]+"), "$010");
#endif
  return trace;
}

std::set<std::string> Shop::Files() const {
  std::set<std::string> files;
  const fs::path folder = fs::u8path(folder_);
  for (const fs::directory_entry &entry : fs::recursive_directory_iterator(fs::u8path(root_))) {
    if (entry.is_directory() || entry.path().extension() == LibraryFile().extension()) continue;
    files.insert(entry.path().lexically_relative(folder).generic_u8string());
  }
  return files;
}

void Shop::ClearTrace() const {
  Remove("TRACE.TXT");
}

std::string Post(const ScriptedServer &server, const std::string &method, const std::string &body) {
  return "POST /ws/" + method + "\nHost: 127.0.0.1:" + std::to_string(server.port()) +
         "\nContent-Type: application/json-soap;charset=UTF-8\nContent-Length: " +
         std::to_string(body.size()) + "\n\n" + body + "\n";
}

}  // namespace test
