// support/file_traffic.h: what goes through FileRead and FileWrite, counted. For programs of
// lumo_test(... WATCH FILE_TRAFFIC).
#pragma once

#include <cstdint>

namespace test {

struct FileTraffic {
  int reads = 0;
  int writes = 0;
  uint64_t bytes_read = 0;
  uint64_t bytes_written = 0;
  uint32_t largest_read = 0;  // in bytes asked for
};

void ResetFileTraffic();
FileTraffic CountFileTraffic();

}  // namespace test
