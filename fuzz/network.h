// fuzz/network.h: a network in memory. Every connect succeeds; what is sent is kept; what is received comes
// from the program, in pieces of its choice.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace fuzz {

// From now on each connection is answered with these bytes, at most so many at a time. It breaks after
// `pieces` of them; kNeverBreaks lets it end as the server closes it.
constexpr size_t kNeverBreaks = static_cast<size_t>(-1);
void AnswerWith(const std::string &bytes, size_t piece, size_t pieces = kNeverBreaks);
// The connections are answered with these in turn, each in one piece.
void AnswerInTurn(const std::vector<std::string> &answers);
// Whether the last connection broke.
bool Broke();
// What was sent since the last call, a text for each connection.
std::vector<std::string> TakeSent();

}  // namespace fuzz
