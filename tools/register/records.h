// register/records.h: records of a journal as they are shown, and their sums.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "facts.h"
#include "shop_files.h"

namespace reg {

struct Sums {
  struct Kind {
    uint64_t count = 0;
    int64_t amount = 0;
  };
  std::map<std::string, Kind> kinds;  // by type; a cancellation is one of its own
  uint64_t unreadable = 0;
  int64_t earned = 0, spent = 0, discount = 0;

  void Add(const Record &record);
  Facts AsFacts() const;
  void Print() const;
};

Facts FactsOf(size_t number, const Record &record);
// One line, without its end.
std::string LineOf(size_t number, const Record &record);

}  // namespace reg
