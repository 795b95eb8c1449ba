// json/json_parser.h: JSON text in, events out. The text is fed in pieces that may be cut anywhere; the
// parser knows no file and no tree. The grammar is RFC 8259, byte by byte; bytes of 127 and above pass
// through strings unchanged.
#pragma once

#include "json/json_event.h"

namespace lumo {

// The numbers show in trace lines and are kept.
enum JsonError : int32_t {
  kJsonNoError = 0,
  kJsonNoMemory = 1,            // an allocation hook is missing or returned null
  kJsonInvalidByte = 2,         // a control character that is not white space, wherever it stands
  kJsonNothingToClose = 3,      // a closing bracket with nothing open
  kJsonClosesOther = 4,         // a closing bracket of the wrong kind
  kJsonNestingLimit = 5,        // more than maxNesting structures open
  kJsonDataLimit = 6,           // a string or number of maxData bytes or more
  kJsonCommentNotAllowed = 7,   // the first byte of a comment whose flag is off
  kJsonUnexpectedByte = 8,      // a byte that cannot stand there
  kJsonHighSurrogateAlone = 9,  // a high surrogate escape without its low one
  kJsonLowSurrogateAlone = 10,  // a low surrogate escape without its high one
  kJsonCommaOutside = 11,       // a comma outside of all structures
  kJsonRefused = 12,            // the tree could not take a structure
};

struct JsonParserConfig {
  uint32_t bufferInitialSize;  // of the token buffer, in bytes; 0 means 4096
  uint32_t maxNesting;         // 0: no limit
  uint32_t maxData;            // size to which the token buffer may grow, terminator included; 0: no limit
  bool allowBlockAndLineComments;  // /* */ and //
  bool allowHashComments;          // # to the line's end
  JsonCallocHook callocHook;       // memory comes from the hooks alone, so both are needed
  JsonReallocHook reallocHook;
};

struct JsonParser {
  JsonParserConfig config;
  JsonCallback callback;
  void *user;
  int32_t error;         // the first error, which stays
  uint8_t state;         // private to json_parser.cpp, like the next five
  uint8_t afterComment;  // the state to go back to
  uint8_t literal;       // which of true, false, null is being read
  uint8_t position;      // in the literal, or in the four digits of a \u escape
  bool stringIsKey;
  uint16_t codeUnit;       // what a \u escape has brought so far
  uint16_t highSurrogate;  // 0 when none is pending
  uint8_t *stack;          // a byte for each open structure: 0 array, 1 object
  uint32_t stackSize;
  uint32_t stackFill;
  char *buffer;  // the token being read; always has room for the terminator
  uint32_t bufferSize;
  uint32_t bufferFill;
};

// Returns 0, or 1 when memory cannot be had: always without a configuration, since that brings the hooks. A
// null callback only checks the grammar. After 0 the parser must be given to JsonParserFree.
int JsonParserInit(JsonParser *parser, const JsonParserConfig *config, JsonCallback callback, void *user);

// Takes the next piece of a document. Returns 0, a JsonError, or what the callback returned; *out_processed
// (may be null) is the number of bytes taken before the one that failed. The first error stays: later feeds
// return it and take nothing. Events and errors do not depend on where the pieces are cut. An opening bracket
// is reported before it counts as open and a closing one before it is checked, so that a closing bracket that
// fails has been reported too. The end of the input is not seen: a document left open is no error, and a
// number at top level is reported only when a byte after it ends it.
int JsonParserFeed(JsonParser *parser, const char *bytes, uint32_t length, uint32_t *out_processed);

void JsonParserFree(JsonParser *parser);

}  // namespace lumo
