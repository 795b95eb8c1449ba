// register/till.h: a terminal's folder with the library file in it, the bench's server, and the register that
// is run there.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "loyalty_server/server.h"
#include "register/process.h"
#include "support/fresh_folder.h"

namespace test {

// An active card of the built-in shop: 500.00 GLOBAL, 200.00 LOCAL, 50.00 DISCOUNT.
constexpr char kRichCard[] = "1000000001";

class Till : public testing::Test {
 protected:
  using Words = std::vector<std::string>;

  Till();

  // Runs the register beside the library file to its end.
  Outcome Run(const Words &words, const std::string &input = "") const;
  // The same while the test goes on.
  std::unique_ptr<Process> Start(const Words &words, const std::string &input = "") const;
  // Runs it with --json; gives what it printed, which must be one line of JSON.
  nlohmann::json Facts(const Words &words, int status = 0) const;

  // Writes a CONFIG with the bench's server, or another address, and more members: "\"offlineMode\":1".
  void Configure(const std::string &more = "", const std::string &address = "") const;
  // Both addresses without a server, from now on.
  void GoAway() { server.SetFault(loyalty::ParseFault("refuse")); }
  void ComeBack() { server.SetFault(loyalty::Fault()); }
  std::string ServerAddress() const { return "http://" + server.address() + "/ws"; }

  bool Exists(const std::string &name) const { return std::filesystem::exists(folder / name); }
  std::string Read(const std::string &name) const;  // a missing file fails the test
  void Write(const std::string &name, const std::string &bytes) const;
  // Every file of the folder but the library, its bytes and when it was written: what a look must not change.
  using Snapshot = std::map<std::string, std::pair<std::string, std::filesystem::file_time_type>>;
  Snapshot Files() const;

  FreshFolder fresh;             // its outputs lie here
  std::filesystem::path folder;  // the terminal's
  std::filesystem::path library;
  loyalty::Server server{loyalty::Programme(loyalty::BuiltInShop())};
};

}  // namespace test
