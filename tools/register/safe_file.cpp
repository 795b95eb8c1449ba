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
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace reg {
namespace {

#ifdef _WIN32
// The rights are the folder's.
FILE *OpenNew(const std::filesystem::path &file, const std::filesystem::path &) {
  return _wfopen(file.c_str(), L"wb");
}
bool Sync(FILE *stream) {
  return _commit(_fileno(stream)) == 0;
}
#else
// With the owner and the rights of the old file, if there is one.
FILE *OpenNew(const std::filesystem::path &file, const std::filesystem::path &old_file) {
  struct stat old = {};
  const bool is_there = stat(old_file.c_str(), &old) == 0;
  const int descriptor =
      open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC,
           is_there ? S_IRUSR | S_IWUSR : S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH);
  if (descriptor < 0) return nullptr;
  struct stat fresh = {};
  // Another owner takes rights away, so the rights come last.
  const bool is_alike = !is_there || (fstat(descriptor, &fresh) == 0 &&
                                      ((fresh.st_uid == old.st_uid && fresh.st_gid == old.st_gid) ||
                                       fchown(descriptor, old.st_uid, old.st_gid) == 0) &&
                                      fchmod(descriptor, old.st_mode & ~static_cast<mode_t>(S_IFMT)) == 0);
  FILE *const stream = is_alike ? fdopen(descriptor, "wb") : nullptr;
  if (stream == nullptr) {
    const int problem = errno;
    close(descriptor);
    unlink(file.c_str());
    errno = problem;
  }
  return stream;
}
bool Sync(FILE *stream) {
  return fsync(fileno(stream)) == 0;
}
#endif

#ifdef _WIN32
// Whether somebody else had the file open just now. It is let go at once: a held file cannot be replaced.
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
// The lock that the library takes too. A library that had to wait for it looks up the name afterwards.
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

// The file that a link leads to; of anything else itself.
std::filesystem::path Target(const std::filesystem::path &file) {
  std::error_code error;
  if (!std::filesystem::is_symlink(file, error)) return file;
  std::filesystem::path target = std::filesystem::canonical(file, error);
  if (error) Complain(file, error);
  return target;
}

}  // namespace

void ReplaceFile(const std::filesystem::path &file, const std::string &bytes,
                 const std::function<void()> &before_it) {
  const std::filesystem::path target = Target(file);
  std::filesystem::path fresh = target;
  fresh += ".new";
  FILE *stream = OpenNew(fresh, target);
  if (stream == nullptr) Complain(fresh, {errno, std::generic_category()});
  const bool is_written = std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size() &&
                          std::fflush(stream) == 0 && Sync(stream);
  std::error_code error(is_written ? 0 : errno, std::generic_category());
  if (std::fclose(stream) != 0 && !error) error.assign(errno, std::generic_category());
  std::error_code ignored;
  try {
    if (!error && before_it) before_it();
  } catch (...) {
    std::filesystem::remove(fresh, ignored);
    throw;
  }
  if (!error) std::filesystem::rename(fresh, target, error);
  if (!error) return;
  std::filesystem::remove(fresh, ignored);
  Complain(file, error);
}

void EditFile(const std::filesystem::path &file, const std::function<std::string(const std::string &)> &edit,
              const std::function<void()> &before_it) {
  const Holding holding(file);
  if (!holding.IsHeld()) throw Failure(kNoFile, file.u8string() + " is missing, or another program holds it");
  const std::string bytes = edit(ReadWhole(file));
  if (!bytes.empty()) {
    ReplaceFile(file, bytes, before_it);
    return;
  }
  const std::filesystem::path target = Target(file);
  if (before_it) before_it();
  std::error_code error;
  std::filesystem::remove(target, error);
  if (!error && target != file) std::filesystem::remove(file, error);  // the link that led to it
  if (error) Complain(file, error);
}

}  // namespace reg
