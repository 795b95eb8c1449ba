// support/folder.h: a fresh directory of a test's own, as the library's moduleDirectory, removed at the end.
#pragma once

#include <string>

#include "support/fresh_folder.h"

namespace test {

class Folder {
 public:
  Folder();  // makes the directory and sets it as moduleDirectory; clears the trace tag
  Folder(const Folder &) = delete;
  Folder &operator=(const Folder &) = delete;

  const std::string &path() const { return path_; }  // ends with the separator
  std::string Read(const std::string &name) const;   // the file's bytes; a missing file fails the test
  void Write(const std::string &name, const std::string &bytes) const;
  bool Exists(const std::string &name) const;
  void Remove(const std::string &name) const;
  // Lines ended by "\n"; "" without one. After a seek that succeeded some systems still have the number of
  // the trace's own open, 183: it reads as the 0 of the others.
  std::string Trace(const std::string &name = "TRACE.TXT") const;
  void ClearTrace() const;

 private:
  FreshFolder fresh_;
  std::string path_;
};

}  // namespace test
