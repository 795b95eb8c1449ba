// platform/own_folder.h: a fresh current folder for a test of the system calls, removed at the end.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "support/fresh_folder.h"

namespace test {

class OwnFolder : public testing::Test {
 protected:
  OwnFolder() {
    before_ = std::filesystem::current_path();
    std::filesystem::current_path(folder());
  }
  ~OwnFolder() override { std::filesystem::current_path(before_); }

  static void Write(const std::filesystem::path &name, const std::string &bytes) {
    std::ofstream(name, std::ios::binary) << bytes;
    ASSERT_TRUE(std::filesystem::is_regular_file(name));
  }
  static std::string Read(const std::filesystem::path &name) {
    std::ifstream file(name, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << name;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  const std::filesystem::path &folder() const { return fresh_.path(); }

 private:
  FreshFolder fresh_;
  std::filesystem::path before_;
};

}  // namespace test
