#include "terminal_settings.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <nlohmann/json.hpp>

#include "shop_files.h"
#include "utf8.h"

namespace reg {
namespace {

using Json = nlohmann::ordered_json;

// In the order in which a key that is the beginning of one looks for its name.
constexpr const char *kKeys[] = {
    "terminalId",
    "protocolVersion",
    "serverAddr",
    "serverAltAddr",
    "retailNetworkName",
    "offlinePath",
    "logPath",
    "receiptPath",
    "timeout",
    "offlineMode",
    "shiftMode",
    "localBonusOffline",
    "globalBonusOffline",
    "orgFeeOffline",
    "logSize",
    "receiptHeader",
    "receiptFooter",
    "sslMode",
    "sslKey",
};

std::string TextOf(const Json &value) {
  if (value.is_string()) return value.get<std::string>();
  return value.is_structured() || value.is_null() ? "" : value.dump();
}

bool Load(const std::filesystem::path &file, TerminalSettings *settings) {
  const std::optional<std::string> read = TryToRead(file);
  if (!read && settings->unopened.empty()) settings->unopened = file.filename().u8string();
  const std::string bytes = read.value_or("");
  const std::string text = Mended(bytes);
  const Json json = Json::parse(text, nullptr, false);
  if (!json.is_object()) return false;
  settings->file = file.filename().u8string();
  settings->hasForeignBytes = text != bytes;
  for (const auto &member : json.items()) {
    const std::string &name = member.key();
    const auto *key = std::find_if(std::begin(kKeys), std::end(kKeys), [&](const std::string &known) {
      return known.compare(0, name.size(), name) == 0;
    });
    if (key == std::end(kKeys)) {
      settings->unknown.push_back(name);
      continue;
    }
    if (member.value().is_boolean()) settings->truths.push_back(name);
    const auto there = std::find_if(settings->values.begin(), settings->values.end(),
                                    [key](const auto &value) { return value.first == *key; });
    if (there != settings->values.end()) settings->values.erase(there);
    settings->values.emplace_back(*key, TextOf(member.value()));
  }
  std::stable_sort(settings->values.begin(), settings->values.end(), [](const auto &a, const auto &b) {
    const auto place = [](const std::string &key) {
      return std::find(std::begin(kKeys), std::end(kKeys), key);
    };
    return place(a.first) < place(b.first);
  });
  return true;
}

bool IsDotted(const std::string &host) {
  int parts = 1, value = 0, digits = 0;
  for (const char byte : host + ".") {
    if (byte != '.') {
      if (byte < '0' || byte > '9' || ++digits > 3) return false;
      value = value * 10 + (byte - '0');
      continue;
    }
    if (digits == 0 || value > 255 || parts++ > 4) return false;
    value = digits = 0;
  }
  return parts == 5;
}

}  // namespace

std::string TerminalSettings::Text(const char *key) const {
  for (const auto &[name, value] : values) {
    if (name == key) return value;
  }
  return "";
}

int32_t TerminalSettings::Number(const char *key) const {
  const int64_t value = std::strtoll(Text(key).c_str(), nullptr, 10);
  return static_cast<int32_t>(
      std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

bool IsNumberSetting(const std::string &key) {
  constexpr const char *kNumbers[] = {
      "timeout",       "offlineMode", "shiftMode", "localBonusOffline", "globalBonusOffline",
      "orgFeeOffline", "logSize",     "sslMode"};
  return std::find(std::begin(kNumbers), std::end(kNumbers), key) != std::end(kNumbers);
}

bool StopsLibrary(const std::string &state) {
  const std::string text = Mended(state);
  try {
    return !Json::parse(text).is_object();
  } catch (const Json::parse_error &error) {
    return error.byte > text.size();  // cut short, which is no syntax error to the library
  }
}

TerminalSettings ReadTerminalSettings(const std::filesystem::path &folder) {
  TerminalSettings settings;
  settings.isDelivered = IsThere(folder / "CONFIG.JSN");
  settings.isKept = IsThere(folder / "CONFIG");
  if (!Load(folder / "CONFIG.JSN", &settings)) Load(folder / "CONFIG", &settings);
  return settings;
}

std::optional<ServerAddress> ParseServerAddress(const std::string &address) {
  constexpr char kScheme[] = "http://";
  const size_t begin = sizeof kScheme - 1;
  const size_t colon = address.find(':', begin);
  const size_t slash = address.find('/', std::min(colon, address.size()));
  if (address.compare(0, begin, kScheme) != 0 || slash == std::string::npos) return std::nullopt;
  // They would end the request's first line, or its path.
  const auto breaks_line = [](char byte) { return (byte >= 0 && byte <= ' ') || byte == '\x7F'; };
  if (std::any_of(address.begin(), address.end(), breaks_line)) return std::nullopt;
  ServerAddress parsed;
  parsed.host = address.substr(begin, colon - begin);
  const std::string port = address.substr(colon + 1, slash - colon - 1);
  parsed.port = std::atoi(port.substr(0, 8).c_str());
  parsed.path = address.substr(slash);
  if (parsed.path.size() > 1 && (parsed.path.back() == '/' || parsed.path.back() == '\\')) {
    parsed.path.pop_back();
  }
  // 0.0.0.0 is an address to listen at, and nobody's, however its zeros are written.
  if (!IsDotted(parsed.host) || parsed.host.find_first_not_of("0.") == std::string::npos) return std::nullopt;
  if (parsed.port <= 0 || parsed.port > 65535) return std::nullopt;
  return parsed;
}

}  // namespace reg
