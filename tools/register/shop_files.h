// register/shop_files.h: a look at the files the library keeps in its folder, for an engineer. Nothing
// here writes them.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <ios>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace reg {

struct Record {
  std::string line;  // as it stands in the file
  bool readable = false;
  std::string type;
  std::string rrn;
  std::string date;
  std::string card;
  bool offline = false;
  std::string shift;
  int64_t amount = 0;  // the operation's, in hundredths: of the bill, the deposit, the activation
  int64_t earned = 0, spent = 0, discount = 0;  // of a bill
  std::string detail;                           // what the operation was about
};

struct ShiftState {
  bool present = false;
  bool opened = true;  // or not there
  bool readable = false;
  std::string requestId;
  std::string shiftId;
  std::string openDate;
  std::string closeDate;
  int offline = 0;
  int shiftState = 0;
  int update = 0;
};

Record ReadRecord(const std::string &line);

// What waits to be sent: OFFLINE, or what the end of a replay left under another name, which the library's
// next start makes OFFLINE.
std::filesystem::path QueueFile(const std::filesystem::path &folder);
// OFFLINE_TMP: it stands beside OFFLINE when a replay runs, or ended in the middle.
std::filesystem::path ReplayFile(const std::filesystem::path &folder);

// On Windows a register that sells holds its files for moments: those are waited for, a quarter of a second.
template <typename Stream>
void OpenPatiently(Stream &stream, const std::filesystem::path &file, std::ios::openmode mode) {
  stream.open(file, mode);
#ifdef _WIN32
  for (int tries = 0; !stream.is_open() && tries < 10; ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(25));
    stream.open(file, mode);
  }
#endif
}

// Whether there is such a file, be it only that nobody may look.
bool IsThere(const std::filesystem::path &file);

// Nothing of a file that is missing. Throws Failure for one that is there and cannot be read, and for a
// folder that is missing.
std::string ReadWhole(const std::filesystem::path &file);
// Records of LOG or OFFLINE, in file order; after the last line feed there is none. Throws like ReadWhole.
std::vector<Record> ReadJournal(const std::filesystem::path &file);
size_t CountRecords(const std::filesystem::path &file);

struct JournalEnd {
  uint64_t bytes = 0;
  std::string line;  // the last whole one
};
// Nothing of a journal that is missing or cannot be read.
JournalEnd EndOfJournal(const std::filesystem::path &file);

// As ReadWhole, but never throws; nothing when it would.
std::optional<std::string> TryToRead(const std::filesystem::path &file);
ShiftState ReadState(const std::filesystem::path &file);

}  // namespace reg
