// support/fresh_folder.h: a folder that nobody else has, removed with all that is in it at the end.
#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

namespace test {

class FreshFolder {
 public:
  FreshFolder() {
    std::random_device random;
    do {
      path_ = std::filesystem::temp_directory_path() / ("lumo-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
  }
  ~FreshFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  FreshFolder(const FreshFolder &) = delete;
  FreshFolder &operator=(const FreshFolder &) = delete;

  const std::filesystem::path &path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace test
