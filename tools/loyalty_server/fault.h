// loyalty_server/fault.h: the ways in which the server can misbehave on request.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "loyalty_server/vocabulary.h"

namespace loyalty {

enum class FaultKind {
  kOff,
  // Nothing listens.
  kRefuse,
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
  kName        // it bears another name
};

constexpr int kUntilOff = -1;
constexpr int kHalf = -1;

struct Fault {  // NOLINT(bugprone-exception-escape): moving a JSON value does not throw
  FaultKind kind = FaultKind::kOff;
  int number = 0;    // bytes of kCut, kReset (kHalf: half the answer) and kPieces, milliseconds of kDelay,
                     // status of kHttp
  int pause = 0;     // milliseconds between the pieces
  std::string text;  // rubbish, the member's path below the answer's name, or the name
  nlohmann::ordered_json value;               // of kExtra
  Code code = Code::kOk;                      // of kRefusal
  int times = kUntilOff;                      // how often it strikes before it is off
  const OperationNames *operation = nullptr;  // null: strikes at every operation
};

// Reads "cut 120", "extra ad times 2", "silence on payment"; throws std::invalid_argument that says what is
// wrong.
Fault ParseFault(std::string_view text);

// The same words again, so that ParseFault(FaultText(f)) is f.
std::string FaultText(const Fault &fault);

// Every form ParseFault knows, a line each.
const char *FaultHelp();

// Whether the request reaches the programme, or the fault answers in its place.
bool IsProgrammeAsked(FaultKind kind);

std::string HttpErrorPage(int status);

// What goes out instead of the answer's text; `answer` is null when the programme was not asked.
std::string Spoil(const Fault &fault, nlohmann::ordered_json answer);

}  // namespace loyalty
