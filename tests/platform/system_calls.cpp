#ifndef _WIN32
#include "platform/system_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <utility>
#include <vector>

namespace {

struct Trouble {
  std::string call;
  int error;  // 0: none
  int calls;  // that go well before
  std::function<void()> work;
};

std::vector<Trouble> &Troubles() {
  static std::vector<Trouble> troubles;
  return troubles;
}

test::Alias alias;
int aliased_calls;
bool library_file_is_named;
const char *library_file;

// Whether the call is to fail; errno is then set.
bool Fails(const char *call) {
  std::vector<Trouble> &troubles = Troubles();
  for (size_t i = 0; i < troubles.size(); ++i) {
    if (troubles[i].call != call || troubles[i].calls-- != 0) continue;
    const Trouble trouble = std::move(troubles[i]);
    troubles.erase(troubles.begin() + static_cast<std::ptrdiff_t>(i));
    if (trouble.work) trouble.work();
    errno = trouble.error;
    return trouble.error != 0;
  }
  return false;
}

}  // namespace

extern "C" {

#define TEST_CALL(result, name, parameters) \
  result __real_##name parameters;          \
  result __wrap_##name parameters;          \
  result __wrap_##name parameters

TEST_CALL(int, fstat, (int descriptor, struct stat *status)) {
  return Fails("fstat") ? -1 : __real_fstat(descriptor, status);
}
TEST_CALL(int, stat, (const char *name, struct stat *status)) {
  if (Fails("stat")) return -1;
  const int result = __real_stat(name, status);
  if (aliased_calls > 0) {
    --aliased_calls;
    if (alias == test::Alias::kNumber) ++status->st_ino;
    if (alias == test::Alias::kDevice) ++status->st_dev;
  }
  return result;
}
TEST_CALL(int, flock, (int descriptor, int operation)) {
  return Fails("flock") ? -1 : __real_flock(descriptor, operation);
}
TEST_CALL(ssize_t, read, (int descriptor, void *bytes, size_t size)) {
  return Fails("read") ? -1 : __real_read(descriptor, bytes, size);
}
TEST_CALL(ssize_t, write, (int descriptor, const void *bytes, size_t size)) {
  return Fails("write") ? -1 : __real_write(descriptor, bytes, size);
}
TEST_CALL(off_t, lseek, (int descriptor, off_t offset, int origin)) {
  return Fails("lseek") ? -1 : __real_lseek(descriptor, offset, origin);
}
TEST_CALL(int, ftruncate, (int descriptor, off_t length)) {
  return Fails("ftruncate") ? -1 : __real_ftruncate(descriptor, length);
}
TEST_CALL(int, fdatasync, (int descriptor)) {
  return Fails("fdatasync") ? -1 : __real_fdatasync(descriptor);
}
TEST_CALL(int, close, (int descriptor)) {
  const int result = __real_close(descriptor);
  return Fails("close") ? -1 : result;
}
TEST_CALL(int, unlink, (const char *name)) {
  return Fails("unlink") ? -1 : __real_unlink(name);
}
TEST_CALL(int, link, (const char *from, const char *to)) {
  return Fails("link") ? -1 : __real_link(from, to);
}
TEST_CALL(int, renameat2, (int folder, const char *from, int other, const char *to, unsigned flags)) {
  return Fails("renameat2") ? -1 : __real_renameat2(folder, from, other, to, flags);
}

int __real_open(const char *name, int flags, mode_t mode);
int __wrap_open(const char *name, int flags, ...);
int __wrap_open(const char *name, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return Fails("open") ? -1 : __real_open(name, flags, mode);
}

TEST_CALL(int, socket, (int family, int type, int protocol)) {
  return Fails("socket") ? -1 : __real_socket(family, type, protocol);
}
TEST_CALL(int, getsockopt, (int descriptor, int level, int option, void *value, socklen_t *length)) {
  return Fails("getsockopt") ? -1 : __real_getsockopt(descriptor, level, option, value, length);
}
TEST_CALL(int, connect, (int descriptor, const struct sockaddr *address, socklen_t length)) {
  const int result = __real_connect(descriptor, address, length);
  return Fails("connect") ? -1 : result;
}
TEST_CALL(ssize_t, send, (int descriptor, const void *bytes, size_t size, int flags)) {
  return Fails("send") ? -1 : __real_send(descriptor, bytes, size, flags);
}
TEST_CALL(ssize_t, recv, (int descriptor, void *bytes, size_t size, int flags)) {
  return Fails("recv") ? -1 : __real_recv(descriptor, bytes, size, flags);
}
TEST_CALL(int, poll, (struct pollfd * entries, nfds_t count, int milliseconds)) {
  return Fails("poll") ? -1 : __real_poll(entries, count, milliseconds);
}
TEST_CALL(int, nanosleep, (const struct timespec *time, struct timespec *rest)) {
  if (!Fails("nanosleep")) return __real_nanosleep(time, rest);
  *rest = *time;
  return -1;
}

TEST_CALL(int, dladdr, (const void *address, Dl_info *info)) {
  if (Fails("dladdr")) return 0;
  const int result = __real_dladdr(address, info);
  if (library_file_is_named) info->dli_fname = library_file;
  library_file_is_named = false;
  return result;
}
TEST_CALL(ssize_t, readlink, (const char *name, char *target, size_t size)) {
  return Fails("readlink") ? -1 : __real_readlink(name, target, size);
}
TEST_CALL(char *, getcwd, (char *folder, size_t size)) {
  return Fails("getcwd") ? nullptr : __real_getcwd(folder, size);
}

}  // extern "C"

namespace test {

void FailCall(const std::string &name, int error, int calls) {
  Troubles().push_back({name, error, calls, {}});
}

void BeforeCall(const std::string &name, std::function<void()> work) {
  Troubles().push_back({name, 0, 0, std::move(work)});
}

void AliasFiles(Alias new_alias, int calls) {
  alias = new_alias;
  aliased_calls = calls;
}

void NameLibraryFile(const char *name) {
  library_file_is_named = true;
  library_file = name;
}

int EndTrouble() {
  const auto left = static_cast<int>(Troubles().size()) + aliased_calls;
  Troubles().clear();
  aliased_calls = 0;
  return left;
}

}  // namespace test
#endif
