#include "doctor_system.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <thread>

#include "lumo.h"
#include "lumo_calls.h"
#include "shop_files.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace reg {
namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
using Module = HMODULE;
Module Open(const fs::path &file) {
  return LoadLibraryW(file.c_str());
}
std::string WhyNot() {
  return "system error " + std::to_string(GetLastError());
}
bool Has(Module module, const char *name) {
  return GetProcAddress(module, name) != nullptr;
}
auto Version(Module module) {
  return reinterpret_cast<decltype(&::lumoVersion)>(
      reinterpret_cast<void *>(GetProcAddress(module, "lumoVersion")));
}
void LetGo(Module module) {
  FreeLibrary(module);
}
#else
using Module = void *;
Module Open(const fs::path &file) {
  return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}
std::string WhyNot() {
  const char *text = dlerror();
  return text != nullptr ? text : "unknown";
}
bool Has(Module module, const char *name) {
  return dlsym(module, name) != nullptr;
}
auto Version(Module module) {
  return reinterpret_cast<decltype(&::lumoVersion)>(dlsym(module, "lumoVersion"));
}
void LetGo(Module module) {
  dlclose(module);
}
#endif

std::string VersionOfCopy(const fs::path &library_file) {
  std::error_code error;
  const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
  const fs::path folder = fs::temp_directory_path(error) / ("register-doctor-" + std::to_string(ticks));
  if (error || !fs::create_directory(folder, error)) return "";
  std::string version;
  if (fs::copy_file(library_file, folder / library_file.filename(), error)) {
    if (Module module = Open(folder / library_file.filename()); module != nullptr) {
      version = Version(module)();
      LetGo(module);
    }
  }
  fs::remove_all(folder, error);
  return version;
}

// Why it cannot be used; empty when it can.
std::string Load(const fs::path &library_file) {
  Module module = Open(library_file);
  if (module == nullptr) return "it cannot be loaded: " + WhyNot();
  std::string problem;
  const auto check = [&](const char *name) {
    if (problem.empty() && !Has(module, name)) problem = std::string("it has no call named ") + name;
  };
#define REGISTER_CHECK(name) check(#name);
  LUMO_CALLS(REGISTER_CHECK)
#undef REGISTER_CHECK
  LetGo(module);
  return problem;
}

const std::string kLoads = "loads ";

#ifdef _WIN32
std::string Apart(const std::function<std::string()> &what) {
  return what();
}
#else
// Runs `what` in a process of its own: loading a file that is cut short ends the process.
std::string Apart(const std::function<std::string()> &what) {
  int ends[2];
  if (pipe(ends) != 0) return "it cannot be tried: no pipe";
  const pid_t child = fork();
  if (child == 0) {
    const std::string said = what();
    const bool written = write(ends[1], said.data(), said.size()) == static_cast<ssize_t>(said.size());
    _exit(written ? 0 : 1);
  }
  close(ends[1]);
  std::string said;
  char piece[1000];
  for (ssize_t count; child > 0 && (count = read(ends[0], piece, sizeof piece)) > 0;) {
    said.append(piece, static_cast<size_t>(count));
  }
  close(ends[0]);
  if (child < 0) return "it cannot be tried: no process";
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? said : "it cannot be loaded: it is damaged";
}

// The number of a process, or "".
std::string ProcessNumber(const fs::path &path) {
  const std::string name = path.filename().string();
  return std::all_of(name.begin(), name.end(), [](char byte) { return byte >= '0' && byte <= '9'; }) ? name
                                                                                                     : "";
}

std::string ProcessName(const std::string &number) {
  std::string name;
  std::getline(std::ifstream("/proc/" + number + "/comm"), name);
  return (name.empty() ? "a program" : name) + " (" + number + ")";
}

bool Maps(const std::string &number, const std::string &file) {
  std::ifstream maps("/proc/" + number + "/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.size() > file.size() && line.compare(line.size() - file.size(), file.size(), file) == 0 &&
        line[line.size() - file.size() - 1] == ' ') {
      return true;
    }
  }
  return false;
}

// Which processes have locked which file, as "major:minor:inode" in the form of /proc/locks.
std::multimap<std::string, std::string> Locks() {
  std::multimap<std::string, std::string> locks;
  std::ifstream stream("/proc/locks");
  for (std::string line; std::getline(stream, line);) {
    std::istringstream words(line);
    std::string number, kind, advisory, access, process, file;
    words >> number >> kind >> advisory >> access >> process >> file;
    if (kind == "FLOCK") locks.emplace(file, process);
  }
  return locks;
}

std::string LockName(const fs::path &file) {
  struct stat about = {};
  if (stat(file.c_str(), &about) != 0) return "";
  char text[64];
  std::snprintf(text, sizeof text, "%02x:%02x:%llu", major(about.st_dev), minor(about.st_dev),
                static_cast<unsigned long long>(about.st_ino));
  return text;
}
#endif

}  // namespace

std::string TryLibrary(const fs::path &library_file, std::string *version) {
  version->clear();
  if (!IsThere(library_file)) return "there is no " + library_file.u8string();
  std::string said = Apart([file = fs::absolute(library_file)] {
    const std::string problem = Load(file);
    return problem.empty() ? kLoads + VersionOfCopy(file) : problem;
  });
  if (said.compare(0, kLoads.size(), kLoads) != 0) return said;
  *version = said.substr(kLoads.size());
  return "";
}

#ifdef _WIN32
// The system does not tell who; only that nobody else may open the file.
std::vector<Holder> FindHolders(const fs::path &library_file, const std::vector<std::string> &names) {
  std::vector<Holder> holders;
  for (const std::string &name : names) {
    const fs::path path = library_file.parent_path() / fs::u8path(name);
    for (int tries = 0;; ++tries) {
      const HANDLE file =
          CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
      if (file != INVALID_HANDLE_VALUE) {
        CloseHandle(file);
        break;
      }
      if (GetLastError() != ERROR_SHARING_VIOLATION) break;
      if (tries == 10) {
        holders.push_back({"", name, true});
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(25));  // a register's own call lets go by then
    }
  }
  return holders;
}
#else
namespace {

std::vector<Holder> LookForHolders(const fs::path &library_file, const std::vector<std::string> &names) {
  std::vector<Holder> holders;
  std::error_code error;
  const fs::path folder = fs::canonical(fs::absolute(library_file).parent_path(), error);
  std::map<std::string, std::string> files;  // their names, by path
  for (const std::string &name : names) files[(folder / name).string()] = name;
  // A library file that a link leads to serves other folders too.
  const bool own = fs::canonical(library_file, error).parent_path() == folder;
  const std::string library = (folder / library_file.filename()).string();
  const std::multimap<std::string, std::string> locks = Locks();
  for (const auto &process : fs::directory_iterator("/proc", error)) {
    const std::string number = ProcessNumber(process.path());
    if (number.empty() || number == std::to_string(getpid())) continue;
    if (own && Maps(number, library)) {
      holders.push_back({ProcessName(number), library_file.filename().string(), false});
    }
    std::error_code unseen;
    for (const auto &open : fs::directory_iterator(process.path() / "fd", unseen)) {
      const auto file = files.find(fs::read_symlink(open.path(), unseen).string());
      if (unseen || file == files.end()) continue;
      const auto [begin, end] = locks.equal_range(LockName(file->first));
      const bool locks_it = std::any_of(begin, end, [&](const auto &lock) { return lock.second == number; });
      const Holder holder = {ProcessName(number), file->second, locks_it};
      const auto same = std::find_if(holders.begin(), holders.end(), [&](const Holder &other) {
        return other.program == holder.program && other.file == holder.file;
      });
      if (same == holders.end()) holders.push_back(holder);
    }
  }
  return holders;
}

}  // namespace

std::vector<Holder> FindHolders(const fs::path &library_file, const std::vector<std::string> &names) {
  std::vector<Holder> holders = LookForHolders(library_file, names);
  // A register's own call lets go of a file soon.
  const auto excludes = [](const Holder &holder) { return holder.excludes; };
  for (int tries = 0; tries < 10 && std::any_of(holders.begin(), holders.end(), excludes); ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(25));
    holders = LookForHolders(library_file, names);
  }
  return holders;
}
#endif

}  // namespace reg
