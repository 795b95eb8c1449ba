#include "safe_file.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "shop_files.h"
#include "till.h"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#endif

namespace reg {
namespace {

#ifdef _WIN32
FILE *OpenNew(const std::filesystem::path &file) {
  return _wfopen(file.c_str(), L"wb");
}
bool Sync(FILE *stream) {
  return _commit(_fileno(stream)) == 0;
}
#else
FILE *OpenNew(const std::filesystem::path &file) {
  return std::fopen(file.c_str(), "wb");
}
bool Sync(FILE *stream) {
  return fsync(fileno(stream)) == 0;
}
#endif

#ifdef _WIN32
// Whether somebody else had the file open just now. It is let go at once, since a file that is held cannot be
// replaced.
class Holding {
 public:
  explicit Holding(const std::filesystem::path &file) {
    HANDLE handle =
        CreateFileW(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    is_held_ = handle != INVALID_HANDLE_VALUE;
    if (is_held_) CloseHandle(handle);
  }
  bool IsHeld() const { return is_held_; }

 private:
  bool is_held_ = false;
};
#else
// The lock that the library takes too. A library that waits for it looks for the file of that name
// afterwards.
class Holding {
 public:
  explicit Holding(const std::filesystem::path &file)
      : descriptor_(open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
    is_held_ = descriptor_ >= 0 && flock(descriptor_, LOCK_EX | LOCK_NB) == 0;
  }
  ~Holding() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  Holding(const Holding &) = delete;
  Holding &operator=(const Holding &) = delete;
  bool IsHeld() const { return is_held_; }

 private:
  int descriptor_;
  bool is_held_ = false;
};
#endif

[[noreturn]] void Complain(const std::filesystem::path &file, const std::error_code &error) {
  throw Failure(kNoFile, "cannot write " + file.u8string() + ": " + error.message());
}

}  // namespace

void ReplaceFile(const std::filesystem::path &file, const std::string &bytes) {
  std::filesystem::path fresh = file;
  fresh += ".new";
  FILE *stream = OpenNew(fresh);
  if (stream == nullptr) Complain(fresh, {errno, std::generic_category()});
  const bool is_written = std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size() &&
                          std::fflush(stream) == 0 && Sync(stream);
  std::error_code error(is_written ? 0 : errno, std::generic_category());
  if (std::fclose(stream) != 0 && !error) error.assign(errno, std::generic_category());
  if (!error) std::filesystem::rename(fresh, file, error);
  if (!error) return;
  std::error_code ignored;
  std::filesystem::remove(fresh, ignored);
  Complain(file, error);
}

void EditFile(const std::filesystem::path &file,
              const std::function<std::string(const std::string &)> &edit) {
  const Holding holding(file);
  if (!holding.IsHeld()) throw Failure(kNoFile, file.u8string() + " is missing, or another program holds it");
  const std::string bytes = edit(ReadWhole(file));
  if (!bytes.empty()) {
    ReplaceFile(file, bytes);
    return;
  }
  std::error_code error;
  std::filesystem::remove(file, error);
  if (error) Complain(file, error);
}

}  // namespace reg
