// fuzz/network.h: a network in memory. Every connect succeeds; what is sent is kept; what is received comes
// from the program, in pieces of its choice.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace fuzz {

// From now on each connection is answered with these bytes, at most so many at a time.
void AnswerWith(const std::string &bytes, size_t piece);
// What was sent since the last call, a text for each connection.
std::vector<std::string> TakeSent();

}  // namespace fuzz
