// register/card_mask.h: hides card numbers in what is shown of a trace: the members of a document that hold
// them, whole or torn, and the same numbers wherever else they stand.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace reg {

class CardMask {
 public:
  // With `shows`, nothing is hidden.
  explicit CardMask(bool shows = false) : shows_(shows) {}

  // The numbers of what is shown next, in place of those before.
  void Learn(const std::vector<std::string> &cards, const std::vector<std::string_view> &documents);

  // "1000000001" is "******0001". Numbers of less than 4 characters are hidden in their members alone.
  std::string Hide(std::string text) const;

 private:
  void Add(std::string_view card);

  bool shows_;
  std::vector<std::string> cards_;         // of what is shown, the longest first
  std::vector<std::string> torn_;          // beginnings of these, where a document is cut off
  std::unordered_set<std::string> known_;  // all that were ever learnt
};

}  // namespace reg
