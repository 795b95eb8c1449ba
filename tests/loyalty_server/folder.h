// A folder of a test's own, gone at its end.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace bench {

class Folder {
 public:
  Folder() {
    std::random_device random;
    do {
      path_ = std::filesystem::temp_directory_path() / ("loyalty_server_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Folder(const Folder &) = delete;
  Folder &operator=(const Folder &) = delete;

  std::string Path(const std::string &name) const { return (path_ / name).string(); }
  // Gives the file's path.
  std::string Write(const std::string &name, const std::string &bytes) const {
    std::ofstream(path_ / name, std::ios::binary) << bytes;
    return Path(name);
  }

 private:
  std::filesystem::path path_;
};

}  // namespace bench
