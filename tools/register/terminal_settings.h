// register/terminal_settings.h: the settings of a terminal, read from its files the way the library does it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace reg {

struct TerminalSettings {
  std::string file;          // the one in force: "CONFIG.JSN" or "CONFIG"; empty: neither can be read
  bool isDelivered = false;  // there is a CONFIG.JSN
  bool isKept = false;       // there is a CONFIG
  std::string unopened;      // the one of them that is there and cannot be opened, were it good or not
  std::vector<std::pair<std::string, std::string>> values;  // of the known settings that are there
  std::vector<std::string> unknown;                         // keys
  std::vector<std::string> truths;  // settings that are true or false, and so read as 0
  bool hasForeignBytes = false;     // that are no UTF-8

  // What the library takes for a setting that is missing: nothing, 0.
  std::string Text(const char *key) const;
  int32_t Number(const char *key) const;
};

// Beyond it a line of a slip may be longer than the library's 1023 bytes, which ends the process.
constexpr size_t kSlipTextLimit = 1000;

bool IsNumberSetting(const std::string &key);

// Whether the library refuses to start with such a STATE. It makes a new one of one with a syntax error.
bool StopsLibrary(const std::string &state);

TerminalSettings ReadTerminalSettings(const std::filesystem::path &folder);

struct ServerAddress {
  std::string host;
  int port = 0;
  std::string path;
};

// "http://a.b.c.d:port/path"; nothing when the library could not use it.
std::optional<ServerAddress> ParseServerAddress(const std::string &address);

}  // namespace reg
