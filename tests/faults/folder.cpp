#include "faults/folder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

namespace faults {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

}  // namespace

Folder::Folder() : path_((fresh_.path() / "").string()) {}

void Folder::Fill(const Files &files) const {
  for (const fs::directory_entry &entry : fs::directory_iterator(path_)) fs::remove_all(entry.path());
  for (const auto &[name, bytes] : files) std::ofstream(path_ + name, std::ios::binary) << bytes;
}

std::string Folder::Read(const std::string &name) const {
  std::ifstream stream(path_ + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

bool Folder::Exists(const std::string &name) const {
  return fs::exists(path_ + name);
}

std::vector<std::string> LinesOf(const std::string &text) {
  std::vector<std::string> lines;
  size_t start = 0;
  for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
    lines.push_back(text.substr(start, end - start));
  }
  return lines;
}

namespace {

// Whether it is one object. Bytes of texts are kept as they are, also those that are no UTF-8.
bool IsWholeObject(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; }, '?');
  return Json::parse(text, nullptr, false).is_object();
}

}  // namespace

std::string FaultOfState(const Folder &folder) {
  if (!folder.Exists("STATE")) return "";
  const std::string text = folder.Read("STATE");
  return IsWholeObject(text) ? "" : "STATE is not whole: " + text;
}

std::string FaultOfJournal(const Folder &folder, const std::string &name, bool may_be_torn) {
  const std::string text = folder.Read(name);
  if (!may_be_torn && !text.empty() && text.back() != '\n') return name + " has an open tail: " + text;
  for (const std::string &line : LinesOf(text)) {
    if (!IsWholeObject(line)) return name + " has a line that is no record: " + line;
  }
  return "";
}

int CountBill(const Folder &folder, const std::string &name, const std::string &bill) {
  int count = 0;
  for (const std::string &line : LinesOf(folder.Read(name))) {
    const Json record = Json::parse(line, nullptr, false);
    if (record.is_object() && record.contains("bill") && record["bill"].value("billNum", "") == bill) ++count;
  }
  return count;
}

}  // namespace faults
