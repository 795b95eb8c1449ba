// end_to_end/shop.h: a shop of the test's own: a fresh folder, a copy of the library file in it, loaded as a
// register loads it. Each copy is a library of its own, as in a process of its own: a second shop is a second
// register, and a shop started again is a register whose first process ended without a word.
#pragma once

#include <set>
#include <string>

#include "lumo.h"
#include "lumo_calls.h"
#include "support/fresh_folder.h"
#include "support/scripted_server.h"
#include "support/test_clock.h"

namespace test {

// A relative path of so many UTF-16 units: folders whose names are this letter again and again.
std::string LongPath(size_t units, const std::string &letter);

class Shop {
 public:
  // The clock stands at 2012-12-05 10:00:00. With a name, the library lies in a folder of that name inside
  // the fresh one.
  explicit Shop(const std::string &folder_name = "");
  // The library lies so deep that its folder's path, the last separator included, has so many UTF-16 units.
  // Its own name is as short as it can be.
  Shop(size_t folder_units, const std::string &letter);
  ~Shop();
  Shop(const Shop &) = delete;
  Shop &operator=(const Shop &) = delete;

#define SHOP_DECLARE(name) decltype(&::name) name = nullptr;
  LUMO_CALLS(SHOP_DECLARE)
#undef SHOP_DECLARE

  // Writes CONFIG for terminal 12345 and this server, with `more` members ("\"offlineMode\":1"), and a STATE
  // whose last request is 1234512120500007; then LUMOInit, which must give 0.
  void Start(const std::string &server_address, const std::string &more = "");

  // From now on the calls are those of a library that has just been loaded in the same folder. The one before
  // was not told.
  void LoadAgain();

  void *module() const {
    return module_;
  }
  const std::string &folder() const {
    return folder_;
  }
  std::string Read(const std::string &name) const;  // a missing file fails the test
  void Write(const std::string &name, const std::string &bytes) const;
  bool Exists(const std::string &name) const;
  void Remove(const std::string &name) const;
  // All there are in the fresh folder, as seen from the library's, but for the library itself.
  std::set<std::string> Files() const;
  // Of TRACE.TXT, lines ended by "\n"; "" without one.
  std::string Trace(const std::string &name = "TRACE.TXT") const;
  void ClearTrace() const;

 private:
  void LoadCopy(const std::string &file_name);

  FreshFolder fresh_;
  std::string root_;
  std::string folder_;
  void *module_ = nullptr;
  int copies_ = 0;
};

// The bytes of one exchange's request: head, body, and the line feed behind it.
std::string Post(const ScriptedServer &server, const std::string &method, const std::string &body);

}  // namespace test
