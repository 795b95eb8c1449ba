#include "till.h"

#include <iostream>

#include "fatal_end.h"

namespace reg {

std::filesystem::path Till::Folder() const {
  return std::filesystem::absolute(libraryFile).parent_path();
}

std::filesystem::path Till::TraceFile() const {
  return Folder() / (tag.empty() ? "TRACE.TXT" : "TRACE_" + tag + ".TXT");
}

Library &Till::Loaded() {
  if (!busy) busy = std::make_unique<Busy>();
  WatchForFatalEnds(TraceFile());
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
