#include "shop_files.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "amount.h"
#include "till.h"
#include "utf8.h"

namespace reg {
namespace {

using Json = nlohmann::json;

std::string Text(const Json &object, const char *key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

int64_t Number(const Json &object, const char *key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_number_integer() ? found->get<int64_t>() : 0;
}

bool Flag(const Json &object, const char *key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_boolean() && found->get<bool>();
}

// The part of this name; null when it is no object.
const Json *Part(const Json &record, const char *name) {
  const auto found = record.find(name);
  return found != record.end() && found->is_object() ? &*found : nullptr;
}

void ReadBill(const Json &bill, Record *record) {
  record->amount = Number(bill, "totalSum");
  record->detail = "total " + ShowAmount(record->amount);
  const Json *list = Part(bill, "goodList");
  if (list == nullptr || !list->contains("good") || !(*list)["good"].is_array()) return;
  for (const Json &good : (*list)["good"]) {
    if (!good.is_object() || !good.contains("bonus") || !good["bonus"].is_array()) continue;
    for (const Json &bonus : good["bonus"]) {
      if (!bonus.is_object()) continue;
      if (Text(bonus, "accountType") == "DISCOUNT") {
        record->discount += Number(bonus, "spend");
      } else {
        record->earned += Number(bonus, "earned");
        record->spent += Number(bonus, "spend");
      }
    }
  }
}

// There is no such file, though its folder is there. A link to nothing is a file that cannot be read.
bool IsMissing(const std::filesystem::path &file) {
  std::error_code error;
  return std::filesystem::symlink_status(file, error).type() == std::filesystem::file_type::not_found &&
         std::filesystem::is_directory(std::filesystem::absolute(file).parent_path(), error);
}

Failure MissingFolder(const std::filesystem::path &folder) {
  return {kNoFile, "there is no folder " + folder.u8string()};
}

// Not open when the file is missing. Throws Failure when it cannot be read: some systems open a folder too.
std::ifstream Open(const std::filesystem::path &file) {
  std::ifstream stream;
  if (IsMissing(file)) return stream;
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::absolute(file).parent_path();
  if (!IsThere(folder)) throw MissingFolder(folder);
  if (!std::filesystem::is_directory(file, error)) {
    OpenPatiently(stream, file, std::ios::binary | std::ios::in);
  }
  if (!stream.is_open()) throw Failure(kNoFile, file.u8string() + " cannot be read");
  return stream;
}

// All at once, and let go of before it is looked at: on Windows a register that sells cannot open a file that
// somebody else is reading.
std::string Contents(const std::filesystem::path &file) {
  std::ifstream stream = Open(file);
  std::string bytes;
  std::vector<char> piece(1 << 20);
  while (stream.is_open() &&
         (stream.read(piece.data(), static_cast<std::streamsize>(piece.size())), stream.gcount() > 0)) {
    bytes.append(piece.data(), static_cast<size_t>(stream.gcount()));
  }
  return bytes;
}

int Flagged(const Json &object, const char *key) {
  return Number(object, key) != 0 ? 1 : 0;
}

}  // namespace

Record ReadRecord(const std::string &line) {
  Record record;
  record.line = line;
  const Json json = Json::parse(Mended(line), nullptr, false);
  const Json *request = json.is_object() ? Part(json, "request") : nullptr;
  if (request == nullptr) return record;
  record.readable = true;
  record.type = Text(*request, "type");
  record.rrn = Text(*request, "requestId");
  record.date = Text(*request, "requestDate");
  record.card = Text(*request, "cardNum");
  record.shift = Text(*request, "shiftId");
  record.offline = Flag(*request, "isOffline");
  if (const Json *bill = Part(json, "bill")) ReadBill(*bill, &record);
  if (const Json *deposit = Part(json, "deposit")) {
    record.amount = Number(*deposit, "amount");
    record.detail = "amount " + ShowAmount(record.amount);
  }
  if (const Json *activation = Part(json, "activation")) {
    record.amount = Number(*activation, "amount");
    record.detail = Text(*activation, "activationType") + " " + ShowAmount(record.amount);
  }
  if (const Json *confirm = Part(json, "paymentConfirm")) {
    record.detail = (Flag(*confirm, "isConfirm") ? "confirms " : "cancels ") + Text(*confirm, "requestId");
  }
  return record;
}

bool IsThere(const std::filesystem::path &file) {
  std::error_code error;
  return std::filesystem::status(file, error).type() != std::filesystem::file_type::not_found;
}

std::filesystem::path QueueFile(const std::filesystem::path &folder) {
  const std::filesystem::path file = folder / "OFFLINE";
  return IsMissing(file) && !IsMissing(ReplayFile(folder)) ? ReplayFile(folder) : file;
}

std::filesystem::path ReplayFile(const std::filesystem::path &folder) {
  return folder / "OFFLINE_TMP";
}

std::string ReadWhole(const std::filesystem::path &file) {
  std::optional<std::string> bytes = TryToRead(file);
  if (!bytes) throw Failure(kNoFile, file.u8string() + " cannot be read");
  return *std::move(bytes);
}

std::vector<Record> ReadJournal(const std::filesystem::path &file) {
  std::vector<Record> records;
  const std::string bytes = Contents(file);
  size_t begin = 0;
  for (size_t end; (end = bytes.find('\n', begin)) != std::string::npos; begin = end + 1) {
    records.push_back(ReadRecord(bytes.substr(begin, end - begin)));
  }
  return records;
}

size_t CountRecords(const std::filesystem::path &file) {
  const std::string bytes = Contents(file);
  return static_cast<size_t>(std::count(bytes.begin(), bytes.end(), '\n'));
}

JournalEnd EndOfJournal(const std::filesystem::path &file) {
  JournalEnd end;
  std::ifstream stream;
  std::error_code error;
  if (!std::filesystem::is_directory(file, error)) stream.open(file, std::ios::binary | std::ios::ate);
  if (!stream.is_open()) return end;
  end.bytes = static_cast<uint64_t>(stream.tellg());
  // More and more of the end, until it holds a line from its beginning.
  for (uint64_t length = std::min<uint64_t>(end.bytes, 4096);; length = std::min(end.bytes, length * 4)) {
    std::string piece(static_cast<size_t>(length), '\0');
    stream.seekg(static_cast<std::streamoff>(end.bytes - length));
    if (!stream.read(piece.data(), static_cast<std::streamsize>(length))) return end;
    const size_t feed = piece.rfind('\n');
    const size_t before =
        feed == std::string::npos || feed == 0 ? std::string::npos : piece.rfind('\n', feed - 1);
    if (before != std::string::npos || length == end.bytes) {
      if (feed != std::string::npos) end.line = piece.substr(before + 1, feed - before - 1);
      return end;
    }
  }
}

std::optional<std::string> TryToRead(const std::filesystem::path &file) {
  try {
    return Contents(file);
  } catch (const std::exception &) {
    return std::nullopt;
  }
}

ShiftState ReadState(const std::filesystem::path &file) {
  ShiftState state;
  state.present = IsThere(file);
  if (!state.present) return state;
  const std::optional<std::string> bytes = TryToRead(file);
  state.opened = bytes.has_value();
  const Json json = Json::parse(Mended(bytes.value_or("")), nullptr, false);
  state.readable = json.is_object();
  if (!state.readable) return state;
  state.requestId = Text(json, "reqId");
  state.shiftId = Text(json, "shiftId");
  state.openDate = Text(json, "shiftOpenDate");
  state.closeDate = Text(json, "shiftCloseDate");
  state.offline = Flagged(json, "offline");
  state.shiftState = Flagged(json, "shiftState");
  state.update = Flagged(json, "update");
  return state;
}

}  // namespace reg
