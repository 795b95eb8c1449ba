// support/file_traffic.h: the system's file calls as the library makes them: reads and writes counted, and
// each refused or cut on request. For programs of lumo_test(... WATCH FILE_TRAFFIC), on POSIX hosts.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace test {

struct FileTraffic {
  int opens = 0;
  int reads = 0;
  int writes = 0;
  uint64_t bytesRead = 0;
  uint64_t bytesWritten = 0;
  uint32_t largestRead = 0;  // in bytes asked for
  std::string steps;         // F a flush, C a cut, D a deletion, M a renaming, in their order
};

void ResetFileTraffic();
FileTraffic CountFileTraffic();

// From now on an open of this file of the folder, as often as told or once so many have gone well, a deletion
// of this one and a renaming of this one fail with ERROR_ACCESS_DENIED; no name refuses none.
void RefuseOpen(const std::string &name, int times = INT32_MAX);
void RefuseOpenAfter(int opens, const std::string &name);
// So do those of its next opens that have an 'x' in `which`, one letter an open.
void RefuseSomeOpens(const std::string &name, const std::string &which);
void RefuseDelete(const std::string &name);
void RefuseMove(const std::string &name);

// From now on this many bytes can be written in all; the write that does not fit is cut there, and one that
// finds no room fails with ERROR_DISK_FULL.
void LeaveDiskRoom(uint64_t bytes);

// The next write takes no more than this many bytes, and succeeds also when that is none.
void CutNextWrite(uint64_t bytes);

// After so many more that go well, one read, one change of the position, one cut or one flush fails, or so
// many looks at a file's attributes.
void FailReadAfter(int reads);
void FailSeekAfter(int seeks);
void FailCutAfter(int cuts);
void FailFlushAfter(int flushes);
void FailLookAfter(int looks, int failing = 1);

// The next look at a file's size and time fails.
void FailLookAtSize();

// Is done in front of the next look at a file's size and time.
void BeforeLook(std::function<void()> work);

// After so many more, one read takes a single byte.
void ShortenReadAfter(int reads);

// From now on nothing fails.
void EndFileTrouble();

}  // namespace test
