#include "wince_file/definition.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace wince_file {

Definition ReadDefinition(std::istream &stream) {
  constexpr char kBlanks[] = " \t\r", kLibrary[] = "LIBRARY ";
  Definition definition;
  bool is_list = false;
  for (std::string line; std::getline(stream, line);) {
    line.erase(std::min(line.find(';'), line.size()));
    line.erase(line.find_last_not_of(kBlanks) + 1);
    line.erase(0, line.find_first_not_of(kBlanks));
    if (line.empty()) continue;
    if (!is_list && line.rfind(kLibrary, 0) == 0) {
      definition.library = line.substr(sizeof kLibrary - 1);
    } else if (!is_list && line == "EXPORTS") {
      is_list = true;
    } else if (is_list && line.find_first_of(" \t=@") == std::string::npos) {
      definition.names.push_back(line);
    } else {
      throw std::runtime_error("cannot read \"" + line + "\"");
    }
  }
  if (definition.library.empty() || definition.names.empty()) throw std::runtime_error("defines nothing");
  return definition;
}

Definition ReadDefinitionFile(const std::string &path) {
  std::ifstream stream(path);
  try {
    return ReadDefinition(stream);
  } catch (const std::runtime_error &error) {
    throw std::runtime_error(path + ": " + error.what());
  }
}

}  // namespace wince_file
