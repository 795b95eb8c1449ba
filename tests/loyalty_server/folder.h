// loyalty_server/folder.h: the files that a test gives to the server.
#pragma once

#include <fstream>
#include <string>

#include "support/fresh_folder.h"

namespace bench {

class Folder {
 public:
  std::string Path(const std::string &name) const { return (fresh_.path() / name).string(); }
  // Gives the file's path.
  std::string Write(const std::string &name, const std::string &bytes) const {
    std::ofstream(fresh_.path() / name, std::ios::binary) << bytes;
    return Path(name);
  }

 private:
  test::FreshFolder fresh_;
};

}  // namespace bench
