// support/file_traffic.h: what goes through FileRead and FileWrite, counted, and opens and deletes refused on
// request. For programs of lumo_test(... WATCH FILE_TRAFFIC).
#pragma once

#include <cstdint>
#include <string>

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

// From now on FileOpen of this name gives the invalid handle, and FileDelete of this name the error number 5.
void RefuseOpen(const std::string &name);
void RefuseDelete(const std::string &name);

}  // namespace test
