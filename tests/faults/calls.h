// faults/calls.h: the library's calls into the system, counted, so that the n-th can fail or be the last one
// this process makes.
#pragma once

#include <cstddef>
#include <string>

namespace faults {

// How a call fails. Each call knows which of these it can do; the others are as kError.
enum class Way {
  kError,    // refused, with the call's most common error
  kHeld,     // another program holds the file
  kFull,     // no room on the disk
  kHalf,     // half of the bytes, at least one
  kOneByte,  // a single byte
};
constexpr Way kWays[] = {Way::kError, Way::kHeld, Way::kFull, Way::kHalf, Way::kOneByte};
const char *NameOf(Way way);

enum class End { kBefore, kHalfway, kAfter };  // of the process
constexpr End kEnds[] = {End::kBefore, End::kHalfway, End::kAfter};
const char *NameOf(End end);

// From now on calls are counted, the first is number 1. `abilities`, one byte a call and so many at most, is
// told in which ways each can fail.
void StartCounting(unsigned char *abilities, int most);
// What `abilities` tells of a call.
bool CanFail(unsigned char abilities, Way way);
// Counts, and lets call number n fail; `for_ever`: and every one behind it that can fail so.
void FailCall(int n, Way way, bool for_ever);
// Counts, and ends the process at call number n.
void EndAtCall(int n, End end);
// Every line of the trace is lost, and nothing else. Lines of the trace do not count as calls.
void LoseTrace();
// No call fails any more.
void StopCounting();

bool FaultIsForEver();
int CallsCounted();
// Whether the n-th call came and could fail in the way asked for.
bool FaultWasMet();
// The name of the n-th call, once it has come.
std::string FaultyCall();

}  // namespace faults
