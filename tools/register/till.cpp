#include "till.h"

#include <algorithm>
#include <iostream>

#include "fatal_end.h"

namespace reg {
namespace {

// CONFIG, STATE.new, log, TRACE_2.TXT: on Windows the case does not count, nor do dots and blanks at the end.
bool IsKeptName(std::string name) {
  name.erase(name.find_last_not_of(". ") + 1);
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char byte) { return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 32) : byte; });
  const size_t end = name.find_first_of("._:");
  const std::string stem = name.substr(0, end);
  return stem == "CONFIG" || stem == "STATE" || stem == "LOG" || stem == "OFFLINE" || stem == "TRACE";
}

bool IsSame(const std::filesystem::path &one, const std::filesystem::path &other) {
  std::error_code error;
  return std::filesystem::equivalent(one, other, error) && !error;
}

}  // namespace

std::filesystem::path Till::Folder() const {
  return std::filesystem::absolute(libraryFile).parent_path();
}

std::filesystem::path Till::TraceFile() const {
  return Folder() / (tag.empty() ? "TRACE.TXT" : "TRACE_" + tag + ".TXT");
}

void Till::RefuseKeptFile(const std::string &name) const {
  const std::filesystem::path folder = Folder();
  // A name that begins with a separator does not leave the folder either.
  const std::filesystem::path file = std::filesystem::u8path(folder.u8string() + "/" + name);
  bool is_kept = IsSame(file, libraryFile) ||
                 (IsKeptName(file.filename().u8string()) && IsSame(file.parent_path(), folder));
  std::error_code error;
  // Another name may lead to the same file.
  for (const auto &entry : std::filesystem::directory_iterator(folder, error)) {
    if (is_kept) break;
    is_kept = IsKeptName(entry.path().filename().u8string()) && IsSame(file, entry.path());
  }
  if (is_kept) throw Failure(kBadWords, name + " is a file of the terminal's own: a bill needs another name");
}

Library &Till::Loaded() {
  if (!busy) busy = std::make_unique<Busy>();
  WatchForFatalEnds(TraceFile(), asJson);
  if (!library) {
    try {
      library = std::make_unique<Library>(libraryFile);
    } catch (const std::runtime_error &error) {
      throw Failure(kNoFile, error.what());
    }
  }
  return *library;
}

Library &Till::Started() {
  Loaded();
  if (!started) {
    Check(tag.empty() ? library->LUMOInit() : library->LUMOInitExt(tag.c_str()));
    started = true;
  }
  return *library;
}

void Till::End() {
  if (started) library->LUMOClean();
  started = false;
}

void Till::Check(int code) {
  if (code < 0) throw Refused{code, Loaded().GetErrorMessage(code), Facts()};
}

void Till::Show(const Facts &facts, const std::function<void()> &text) const {
  if (asJson) {
    std::cout << facts.Text() << '\n';
  } else {
    text();
  }
}

const char *OrDash(const char *text) {
  return text != nullptr && *text != '\0' ? text : "-";
}

const char *OrDash(const std::string &text) {
  return OrDash(text.c_str());
}

}  // namespace reg
