#include "support/file_traffic.h"

#include <algorithm>

#include "foundation/files.h"

namespace {

test::FileTraffic traffic;
uint64_t disk_room = UINT64_MAX;
uint64_t next_write = UINT64_MAX;  // the most it takes

// The names that are refused, none at first.
std::string &RefusedOpen() {
  static std::string name;
  return name;
}

std::string &RefusedDelete() {
  static std::string name;
  return name;
}

bool Refuses(const std::string &refused, const char *name) {
  return name != nullptr && !refused.empty() && refused == name;
}

}  // namespace

// The names behind __wrap_ and __real_ are those of the functions in namespace lumo as the linker knows them.
extern "C" {

lumo::HANDLE __real__ZN4lumo8FileOpenEPKcS1_(const char *name, const char *mode);
int __real__ZN4lumo10FileDeleteEPKc(const char *name);
uint32_t __real__ZN4lumo8FileReadEPvjjS0_(void *buffer, uint32_t size, uint32_t count, lumo::HANDLE file);
uint32_t __real__ZN4lumo9FileWriteEPKvjjPv(const void *buffer, uint32_t size, uint32_t count,
                                           lumo::HANDLE file);

lumo::HANDLE __wrap__ZN4lumo8FileOpenEPKcS1_(const char *name, const char *mode);
int __wrap__ZN4lumo10FileDeleteEPKc(const char *name);
uint32_t __wrap__ZN4lumo8FileReadEPvjjS0_(void *buffer, uint32_t size, uint32_t count, lumo::HANDLE file);
uint32_t __wrap__ZN4lumo9FileWriteEPKvjjPv(const void *buffer, uint32_t size, uint32_t count,
                                           lumo::HANDLE file);

lumo::HANDLE __wrap__ZN4lumo8FileOpenEPKcS1_(const char *name, const char *mode) {
  if (Refuses(RefusedOpen(), name)) {
    return INVALID_HANDLE_VALUE;
  }
  return __real__ZN4lumo8FileOpenEPKcS1_(name, mode);
}

int __wrap__ZN4lumo10FileDeleteEPKc(const char *name) {
  return Refuses(RefusedDelete(), name) ? 5 : __real__ZN4lumo10FileDeleteEPKc(name);
}

uint32_t __wrap__ZN4lumo8FileReadEPvjjS0_(void *buffer, uint32_t size, uint32_t count, lumo::HANDLE file) {
  const uint32_t bytes = __real__ZN4lumo8FileReadEPvjjS0_(buffer, size, count, file);
  ++traffic.reads;
  traffic.bytes_read += bytes;
  traffic.largest_read = std::max(traffic.largest_read, size * count);
  return bytes;
}

uint32_t __wrap__ZN4lumo9FileWriteEPKvjjPv(const void *buffer, uint32_t size, uint32_t count,
                                           lumo::HANDLE file) {
  const auto fitting =
      static_cast<uint32_t>(std::min<uint64_t>({disk_room, next_write, uint64_t{size} * count}));
  next_write = UINT64_MAX;
  const uint32_t bytes = __real__ZN4lumo9FileWriteEPKvjjPv(buffer, 1, fitting, file);
  disk_room -= bytes;
  ++traffic.writes;
  traffic.bytes_written += bytes;
  return bytes;
}

}  // extern "C"

namespace test {

void ResetFileTraffic() {
  traffic = {};
}

FileTraffic CountFileTraffic() {
  return traffic;
}

void RefuseOpen(const std::string &name) {
  RefusedOpen() = name;
}

void RefuseDelete(const std::string &name) {
  RefusedDelete() = name;
}

void LeaveDiskRoom(uint64_t bytes) {
  disk_room = bytes;
}

void CutNextWrite(uint64_t bytes) {
  next_write = bytes;
}

}  // namespace test
