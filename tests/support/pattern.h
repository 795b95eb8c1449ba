// support/pattern.h: texts compared with a regular expression. GoogleTest's own matchers know hardly any of
// them on some systems.
#pragma once

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace test {

MATCHER_P(MatchesPattern, pattern, "matches the pattern " + testing::PrintToString(pattern)) {
  return std::regex_match(std::string(arg), std::regex(pattern));
}

MATCHER_P(ContainsPattern, pattern, "contains the pattern " + testing::PrintToString(pattern)) {
  return std::regex_search(std::string(arg), std::regex(pattern));
}

}  // namespace test
