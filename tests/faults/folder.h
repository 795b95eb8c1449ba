// faults/folder.h: the files of one terminal, and what must hold of them whatever failed.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/fresh_folder.h"

namespace faults {

using Files = std::map<std::string, std::string>;  // names and bytes

class Folder {
 public:
  Folder();

  const std::string &path() const { return path_; }
  // Leaves exactly these files.
  void Fill(const Files &files) const;
  std::string Read(const std::string &name) const;  // "" for a missing file
  bool Exists(const std::string &name) const;

 private:
  test::FreshFolder fresh_;
  std::string path_;  // ends with the separator
};

std::vector<std::string> LinesOf(const std::string &text);  // what stands behind the last line feed is none

// What is wrong with a STATE, a LOG, an OFFLINE; "" when nothing is.
std::string FaultOfState(const Folder &folder);
std::string FaultOfJournal(const Folder &folder, const std::string &name, bool may_be_torn);

// How many records of the journal are payments of this bill.
int CountBill(const Folder &folder, const std::string &name, const std::string &bill);

}  // namespace faults
