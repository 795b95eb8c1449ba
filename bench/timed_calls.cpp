#include "timed_calls.h"

#include <dlfcn.h>
#include <poll.h>
#include <sys/types.h>
#include <time.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <string_view>

// The headers that declare these calls are not included: some declare them with "...", and all are given here
// by one form.
struct stat;
struct stat64;
struct sockaddr;

namespace bench {
namespace {

constexpr int kDescriptors = 1024;

std::array<double, kParts> times;
std::array<uint8_t, kDescriptors> parts;  // by descriptor: a part and 1
std::map<FILE *, Part> streams;

double Now() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

Part PartOfPath(const char *path) {
  const std::string_view text = path;
  const std::string_view name = text.substr(text.rfind('/') + 1);
  if (name == "TRACE.TXT") return kTrace;
  if (name == "STATE") return kState;
  if (name == "BILL.JSN") return kBillFile;
  return name == "LOG" || name.substr(0, 7) == "journal" ? kJournal : kOther;
}

Part PartOf(int descriptor) {
  const bool known =
      descriptor >= 0 && descriptor < kDescriptors && parts[static_cast<size_t>(descriptor)] != 0;
  return known ? static_cast<Part>(parts[static_cast<size_t>(descriptor)] - 1) : kOther;
}

void Remember(int descriptor, Part part) {
  if (descriptor >= 0 && descriptor < kDescriptors) {
    parts[static_cast<size_t>(descriptor)] = static_cast<uint8_t>(part + 1);
  }
}

struct Timer {
  Part part;
  double begin = Now();
  ~Timer() { times[part] += Now() - begin; }
};

}  // namespace

std::array<double, kParts> TimeInCalls() {
  return times;
}

}  // namespace bench

#define NEXT(result, name, parameters) \
  static auto *const next = reinterpret_cast<result(*) parameters>(dlsym(RTLD_NEXT, #name))

#define TIMED(result, name, parameters, arguments, what_for) \
  extern "C" result name parameters;                         \
  extern "C" result name parameters {                        \
    NEXT(result, name, parameters);                          \
    const bench::Timer timer{what_for};                      \
    return next arguments;                                   \
  }

#define TIMED_OPEN(name, parameters, arguments, what_for) \
  extern "C" int name parameters;                         \
  extern "C" int name parameters {                        \
    NEXT(int, name, parameters);                          \
    const bench::Timer timer{what_for};                   \
    const int descriptor = next arguments;                \
    bench::Remember(descriptor, timer.part);              \
    return descriptor;                                    \
  }

using bench::kNetwork;
using bench::PartOf;
using bench::PartOfPath;

TIMED_OPEN(open, (const char *path, int flags, mode_t mode), (path, flags, mode), PartOfPath(path))
TIMED_OPEN(open64, (const char *path, int flags, mode_t mode), (path, flags, mode), PartOfPath(path))
TIMED_OPEN(socket, (int family, int type, int protocol), (family, type, protocol), kNetwork)

TIMED(int, close, (int file), (file), PartOf(file))
TIMED(ssize_t, read, (int file, void *to, size_t count), (file, to, count), PartOf(file))
TIMED(ssize_t, write, (int file, const void *from, size_t count), (file, from, count), PartOf(file))
TIMED(ssize_t, pread64, (int file, void *to, size_t count, off_t at), (file, to, count, at), PartOf(file))
TIMED(ssize_t, pwrite64, (int file, const void *from, size_t count, off_t at), (file, from, count, at),
      PartOf(file))
TIMED(off_t, lseek, (int file, off_t at, int from), (file, at, from), PartOf(file))
TIMED(int, fstat, (int file, struct stat *out) noexcept, (file, out), PartOf(file))
TIMED(int, fstat64, (int file, struct stat64 *out) noexcept, (file, out), PartOf(file))
TIMED(int, flock, (int file, int lock), (file, lock), PartOf(file))
TIMED(int, ftruncate, (int file, off_t size) noexcept, (file, size), PartOf(file))
TIMED(int, ftruncate64, (int file, off_t size) noexcept, (file, size), PartOf(file))
TIMED(int, fsync, (int file), (file), PartOf(file))
TIMED(int, fdatasync, (int file), (file), PartOf(file))
TIMED(int, fcntl, (int file, int command, void *argument), (file, command, argument), PartOf(file))
TIMED(int, fcntl64, (int file, int command, void *argument), (file, command, argument), PartOf(file))
TIMED(int, stat, (const char *path, struct stat *out) noexcept, (path, out), PartOfPath(path))
TIMED(int, stat64, (const char *path, struct stat64 *out) noexcept, (path, out), PartOfPath(path))
TIMED(int, access, (const char *path, int mode) noexcept, (path, mode), PartOfPath(path))
TIMED(int, unlink, (const char *path) noexcept, (path), PartOfPath(path))

TIMED(int, connect, (int socket, const sockaddr *to, unsigned length), (socket, to, length), kNetwork)
TIMED(ssize_t, send, (int socket, const void *from, size_t count, int flags), (socket, from, count, flags),
      kNetwork)
TIMED(ssize_t, recv, (int socket, void *to, size_t count, int flags), (socket, to, count, flags), kNetwork)
TIMED(int, shutdown, (int socket, int how) noexcept, (socket, how), kNetwork)
TIMED(int, getsockopt, (int socket, int level, int option, void *value, unsigned *length) noexcept,
      (socket, level, option, value, length), kNetwork)
TIMED(int, setsockopt, (int socket, int level, int option, const void *value, unsigned length) noexcept,
      (socket, level, option, value, length), kNetwork)
TIMED(int, getsockname, (int socket, sockaddr *out, unsigned *length) noexcept, (socket, out, length),
      kNetwork)
TIMED(int, getpeername, (int socket, sockaddr *out, unsigned *length) noexcept, (socket, out, length),
      kNetwork)
TIMED(int, poll, (pollfd * entries, nfds_t count, int timeout), (entries, count, timeout), kNetwork)

// The C library's streams call the system from inside it.
extern "C" FILE *fopen(const char *path, const char *mode) {
  NEXT(FILE *, fopen, (const char *, const char *));
  const bench::Timer timer{PartOfPath(path)};
  FILE *file = next(path, mode);
  bench::streams[file] = timer.part;
  return file;
}
TIMED(int, fclose, (FILE * file), (file), bench::streams[file])
TIMED(size_t, fread, (void *to, size_t size, size_t count, FILE *file), (to, size, count, file),
      bench::streams[file])
TIMED(size_t, fwrite, (const void *from, size_t size, size_t count, FILE *file), (from, size, count, file),
      bench::streams[file])
