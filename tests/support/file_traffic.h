// support/file_traffic.h: what goes through FileRead and FileWrite, counted, opens and deletes refused and
// writes cut on request. For programs of lumo_test(... WATCH FILE_TRAFFIC).
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

// From now on this many bytes can be written in all; the write that does not fit is cut there.
void LeaveDiskRoom(uint64_t bytes);

// The next FileWrite takes no more than this many bytes.
void CutNextWrite(uint64_t bytes);

}  // namespace test
