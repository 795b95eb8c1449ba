// register/doctor.h: is this terminal fit to sell? Looks at all that a sale needs, without the library's
// start, which would write, and names the cure of what is found. It changes nothing of the terminal: a file
// of its own comes and goes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "server_probe.h"
#include "shop_files.h"
#include "terminal_settings.h"

namespace reg {

enum class Level { kOk, kWarning, kTrouble };

const char *LevelName(Level level);

struct Finding {
  Level level;
  std::string check;  // what was looked at
  std::string text;
  std::string cure;  // empty when nothing is wrong
};

class Findings {
 public:
  void Ok(const char *check, const std::string &text) { list_.push_back({Level::kOk, check, text, ""}); }
  void Warn(const char *check, const std::string &text, const std::string &cure) {
    list_.push_back({Level::kWarning, check, text, cure});
  }
  void Trouble(const char *check, const std::string &text, const std::string &cure) {
    list_.push_back({Level::kTrouble, check, text, cure});
  }
  const std::vector<Finding> &list() const { return list_; }
  size_t Count(Level level) const;
  bool IsFit() const { return Count(Level::kTrouble) == 0; }

 private:
  std::vector<Finding> list_;
};

// A program that has the library or a file open.
struct Holder {
  std::string program;  // "name (number)"; empty: unknown
  std::string file;
  bool excludes = false;  // the library cannot open it meanwhile
};

// What stands in the journals. `last` is the last record that can be read, by its place.
struct Journal {
  bool isRead = true;  // or not there
  size_t records = 0;
  size_t unreadable = 0;  // no records, or of no operation
  size_t unnumbered = 0;
  Record last;
};

// All that is seen of a terminal.
struct Terminal {
  std::filesystem::path folder;
  std::string now;  // UTC, "2012-12-05T10:00:00Z"
  TerminalSettings settings;
  ShiftState state;
  bool stateIsWhole = true;  // it can be read at all, though perhaps it is no JSON
  Journal log;
  Journal offline;
  std::vector<std::string> leftovers;
  std::vector<Holder> holders;
  std::optional<uintmax_t> freeBytes;  // nothing: the disk does not tell
  uintmax_t traceBytes = 0;
  std::vector<std::string> rights;  // what may not be done in the folder
  std::string libraryProblem;
  std::string libraryVersion;  // empty: unknown
  std::vector<ServerAnswer>
      servers;  // of the addresses that can be used: the server's, then the alternate one's
};

Terminal LookAt(const std::filesystem::path &library_file);

Findings Judge(const Terminal &terminal);

}  // namespace reg
