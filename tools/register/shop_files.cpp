#include "shop_files.h"

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "amount.h"
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

std::string ReadWhole(const std::filesystem::path &file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<Record> ReadJournal(const std::filesystem::path &file) {
  std::vector<Record> records;
  std::ifstream stream(file, std::ios::binary);
  std::string line;
  while (std::getline(stream, line)) {
    if (stream.eof()) break;  // bytes after the last line feed belong to no record
    records.push_back(ReadRecord(line));
  }
  return records;
}

size_t CountRecords(const std::filesystem::path &file) {
  std::ifstream stream(file, std::ios::binary);
  size_t count = 0;
  for (auto at = std::istreambuf_iterator<char>(stream); at != std::istreambuf_iterator<char>(); ++at) {
    if (*at == '\n') ++count;
  }
  return count;
}

ShiftState ReadState(const std::filesystem::path &file) {
  ShiftState state;
  state.present = std::filesystem::exists(file);
  if (!state.present) return state;
  const Json json = Json::parse(Mended(ReadWhole(file)), nullptr, false);
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
