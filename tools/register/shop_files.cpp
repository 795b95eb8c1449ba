#include "shop_files.h"

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "amount.h"

namespace reg {
namespace {

using Json = nlohmann::json;

std::string Text(const Json &object, const char *key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

int Number(const Json &object, const char *key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_number_integer() ? static_cast<int>(found->get<int64_t>()) : 0;
}

std::string Amount(const Json &record, const char *part, const char *key) {
  const auto found = record.find(part);
  if (found == record.end() || !found->is_object() || !found->contains(key)) return "";
  return ShowAmount(Number(*found, key));
}

std::string Detail(const Json &record) {
  if (const std::string total = Amount(record, "bill", "totalSum"); !total.empty()) return "total " + total;
  if (const std::string sum = Amount(record, "deposit", "amount"); !sum.empty()) return "amount " + sum;
  if (const auto confirm = record.find("paymentConfirm"); confirm != record.end() && confirm->is_object()) {
    const auto flag = confirm->find("isConfirm");
    const bool is_confirm = flag != confirm->end() && flag->is_boolean() && flag->get<bool>();
    return (is_confirm ? "confirms " : "cancels ") + Text(*confirm, "requestId");
  }
  if (const auto activation = record.find("activation");
      activation != record.end() && activation->is_object()) {
    return Text(*activation, "activationType") + " " + ShowAmount(Number(*activation, "amount"));
  }
  return "";
}

Record Read(const std::string &line) {
  Record record;
  const Json json = Json::parse(line, nullptr, false);
  if (!json.is_object() || !json.contains("request") || !json["request"].is_object()) return record;
  const Json &request = json["request"];
  record.readable = true;
  record.type = Text(request, "type");
  record.rrn = Text(request, "requestId");
  record.date = Text(request, "requestDate");
  record.card = Text(request, "cardNum");
  record.offline =
      request.contains("isOffline") && request["isOffline"].is_boolean() && request["isOffline"].get<bool>();
  record.detail = Detail(json);
  return record;
}

}  // namespace

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
    records.push_back(Read(line));
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
  const Json json = Json::parse(ReadWhole(file), nullptr, false);
  state.readable = json.is_object();
  if (!state.readable) return state;
  state.requestId = Text(json, "reqId");
  state.shiftId = Text(json, "shiftId");
  state.openDate = Text(json, "shiftOpenDate");
  state.closeDate = Text(json, "shiftCloseDate");
  state.offline = Number(json, "offline");
  state.shiftState = Number(json, "shiftState");
  state.update = Number(json, "update");
  return state;
}

}  // namespace reg
