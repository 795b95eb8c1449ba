// register/facts.h: what a command has to tell, for a program that reads it: members in the order in which
// they were added. Texts that are no UTF-8 are shown with a mark in place of the bytes that are none.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace reg {

class Facts {
 public:
  Facts();
  ~Facts();
  Facts(const Facts &other);
  Facts(Facts &&other) noexcept;
  Facts &operator=(const Facts &) = delete;

  // Each returns the facts, for the next one. A null text or an empty optional is null.
  Facts &Add(const char *name, std::nullptr_t);
  Facts &Add(const char *name, const char *text);
  Facts &Add(const char *name, const std::string &text);
  Facts &Add(const char *name, std::string_view text);
  Facts &Add(const char *name, const std::optional<std::string> &text);
  Facts &Add(const char *name, bool value);
  Facts &Add(const char *name, int value) { return Add(name, int64_t{value}); }
  Facts &Add(const char *name, int64_t value);
  Facts &Add(const char *name, uint64_t value);
  Facts &Add(const char *name, const Facts &facts);
  Facts &Add(const char *name, const std::vector<Facts> &list);
  Facts &Add(const char *name, const std::vector<std::string> &list);
  // A text that is JSON already; as a text when it is none.
  Facts &AddJson(const char *name, std::string_view json);

  std::string Text() const;            // in one line
  std::string Text(int indent) const;  // in lines, so many blanks deeper at each level

 private:
  std::unique_ptr<nlohmann::ordered_json> object_;
};

}  // namespace reg
