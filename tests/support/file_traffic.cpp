#include "support/file_traffic.h"

#include <algorithm>

#include "foundation/files.h"

namespace {

test::FileTraffic traffic;

}  // namespace

// The names behind __wrap_ and __real_ are those of lumo::FileRead and lumo::FileWrite as the linker knows
// them.
extern "C" {

uint32_t __real__ZN4lumo8FileReadEPvjjS0_(void *buffer, uint32_t size, uint32_t count, lumo::HANDLE file);
uint32_t __real__ZN4lumo9FileWriteEPKvjjPv(const void *buffer, uint32_t size, uint32_t count,
                                           lumo::HANDLE file);

uint32_t __wrap__ZN4lumo8FileReadEPvjjS0_(void *buffer, uint32_t size, uint32_t count, lumo::HANDLE file);
uint32_t __wrap__ZN4lumo9FileWriteEPKvjjPv(const void *buffer, uint32_t size, uint32_t count,
                                           lumo::HANDLE file);

uint32_t __wrap__ZN4lumo8FileReadEPvjjS0_(void *buffer, uint32_t size, uint32_t count, lumo::HANDLE file) {
  const uint32_t bytes = __real__ZN4lumo8FileReadEPvjjS0_(buffer, size, count, file);
  ++traffic.reads;
  traffic.bytes_read += bytes;
  traffic.largest_read = std::max(traffic.largest_read, size * count);
  return bytes;
}

uint32_t __wrap__ZN4lumo9FileWriteEPKvjjPv(const void *buffer, uint32_t size, uint32_t count,
                                           lumo::HANDLE file) {
  const uint32_t bytes = __real__ZN4lumo9FileWriteEPKvjjPv(buffer, size, count, file);
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

}  // namespace test
