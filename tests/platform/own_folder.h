// platform/own_folder.h: a fresh current folder for a test of the system calls, removed at the end.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace test {

class OwnFolder : public testing::Test {
 protected:
  OwnFolder() {
    const auto parent = std::filesystem::temp_directory_path();
    std::random_device random;
    do {
      folder_ = parent / ("lumo_platform_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(folder_));
    before_ = std::filesystem::current_path();
    std::filesystem::current_path(folder_);
  }
  ~OwnFolder() override {
    std::filesystem::current_path(before_);
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  static void Write(const std::filesystem::path &name, const std::string &bytes) {
    std::ofstream(name, std::ios::binary) << bytes;
    ASSERT_TRUE(std::filesystem::is_regular_file(name));
  }
  static std::string Read(const std::filesystem::path &name) {
    std::ifstream file(name, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << name;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  const std::filesystem::path &folder() const { return folder_; }

 private:
  std::filesystem::path folder_, before_;
};

}  // namespace test
