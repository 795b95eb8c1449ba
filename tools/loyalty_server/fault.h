// loyalty_server/fault.h: the ways in which the server can misbehave on request.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "loyalty_server/vocabulary.h"

namespace loyalty {

enum class FaultKind {
  kOff,
  // The connection suffers:
  kRefuse,     // nothing listens
  kBlackHole,  // it never opens
  kHangUp,     // it is reset as soon as it is open
  // The operation is not done:
  kSilence,  // no answer; the connection stays open
  kHttp,     // an HTTP error page
  kRubbish,  // the answer is the given text
  kRefusal,  // the programme refuses with a given code
  // The operation is done, and the answer suffers:
  kDelay,      // it comes late
  kPieces,     // it comes in small packets
  kCut,        // it ends too early
  kReset,      // the connection is reset in it
  kDuplicate,  // it comes twice
  kWithout,    // a member is missing
  kExtra,      // a member is added or replaced
  kName,       // it bears another name
  // One of those above, by chance:
  kRandom
};

constexpr int kUntilOff = -1;
constexpr int kHalf = -1;

struct Fault {
  FaultKind kind = FaultKind::kOff;
  int number = 0;     // bytes of kCut, kReset (kHalf: half the answer) and kPieces, milliseconds of kDelay,
                      // status of kHttp, percent of kRandom
  int pause = 0;      // milliseconds between the pieces
  std::string text;   // rubbish, the member's path below the answer's name, or the name
  std::string value;  // of kExtra, JSON
  Code code = Code::kOk;                      // of kRefusal
  uint32_t seed = 0;                          // of kRandom
  std::vector<FaultKind> among;               // of kRandom; empty: every one that a request can meet
  int times = kUntilOff;                      // how often it strikes before it is off
  int milliseconds = kUntilOff;               // how long it lasts before it is off
  const OperationNames *operation = nullptr;  // null: strikes at every operation
};

// Reads "cut 120", "extra ad times 2", "silence on payment", "refuse for 5000"; throws std::invalid_argument
// that says what is wrong. A random fault that names no seed gets one.
Fault ParseFault(std::string_view text);

// The same words again, so that ParseFault(FaultText(f)) is f.
std::string FaultText(const Fault &fault);

// Every form that ParseFault knows, in the order of the help.
struct FaultForm {
  FaultKind kind;
  const char *word;
  const char *arguments;  // "BYTES [MS]"
  const char *help;
};
const std::vector<FaultForm> &FaultForms();
std::string FaultHelp();  // a line each

// Whether the fault is met before there is a request.
bool IsOfConnection(FaultKind kind);

// Whether the request reaches the programme, or the fault answers in its place.
bool IsProgrammeAsked(FaultKind kind);

// What a random fault makes of a number drawn for a request: one of its kinds with arguments of its own.
Fault DrawnFault(const Fault &random, uint64_t draw);

std::string HttpErrorPage(int status);

// What goes out instead of the answer, which is empty when the programme was not asked.
std::string Spoil(const Fault &fault, const std::string &answer);

}  // namespace loyalty
