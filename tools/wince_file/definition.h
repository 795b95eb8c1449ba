// wince_file/definition.h: module definitions: the names that a file exports, or takes from a library.
#pragma once

#include <istream>
#include <string>
#include <vector>

namespace wince_file {

struct Definition {
  std::string library;
  std::vector<std::string> names;  // in the file's order
};

// LIBRARY and a file name, EXPORTS, then a name a line; ";" begins a comment. Throws std::runtime_error for
// anything else, and when there is no library or no name.
Definition ReadDefinition(std::istream &stream);
Definition ReadDefinitionFile(const std::string &path);

}  // namespace wince_file
