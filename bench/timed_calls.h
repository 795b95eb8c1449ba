// bench/timed_calls.h: the time that this process spends in calls on files and sockets, by what they are for.
// A program that links timed_calls.cpp has its own functions in front of the C library's, for all libraries
// in the process.
#pragma once

#include <array>

namespace bench {

enum Part { kTrace, kState, kBillFile, kJournal, kNetwork, kOther, kParts };

constexpr const char *kPartNames[kParts] = {"trace", "state", "bill", "journal", "network", "other files"};

// In microseconds, since the process began.
std::array<double, kParts> TimeInCalls();

}  // namespace bench
