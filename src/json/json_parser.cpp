#include "json/json_parser.h"

#include <cstring>

#include "foundation/arithmetic.h"
#include "foundation/memory.h"
#include "json/json_scan.h"

namespace lumo {
namespace {

constexpr uint32_t kDefaultBufferSize = 4096;
constexpr uint32_t kDefaultStackSize = 256;
constexpr uint32_t kLargestDoubledSize = 0x80000000U;

constexpr uint8_t kArray = 0;
constexpr uint8_t kObject = 1;

// What the parser waits for. It can stop before any byte, so each place in the grammar has a state.
enum State : uint8_t {
  kStart,        // the document's value
  kArrayFirst,   // an element or "]"
  kObjectFirst,  // a key or "}"
  kKey,          // a key, after a comma
  kColon,
  kValue,       // a value, after a colon or a comma
  kAfterValue,  // a comma or a closing bracket; at top level nothing more
  kString,
  kEscape,         // the letter after a backslash
  kHexDigits,      // of a \u escape
  kSecondEscape,   // the backslash of the low surrogate
  kSecondEscapeU,  // its "u"
  kNumberMinus,    // the first digit
  kNumberZero,     // no digit may follow
  kNumberInteger,
  kNumberPoint,  // the first digit of the fraction
  kNumberFraction,
  kNumberE,     // a sign or the first digit of the exponent
  kNumberSign,  // the first digit of the exponent
  kNumberExponent,
  kLiteral,
  kSlash,  // the second byte of a comment's start
  kBlockComment,
  kBlockCommentStar,
  kLineComment,
};
constexpr State kFirstOfNumber = kNumberMinus;
constexpr State kLastOfNumber = kNumberExponent;

struct Literal {
  const char *text;
  uint32_t length;
  JsonEvent event;
};
constexpr Literal kLiterals[] = {{"true", 4, JSON_TRUE}, {"false", 5, JSON_FALSE}, {"null", 4, JSON_NULL}};

// What a byte can be, wherever it stands.
enum ByteClass : uint8_t {
  kInvalid = 1,  // a control character that is not white space
  kSpace = 2,
  kDigit = 4,
  kEndsNumber = 8,  // may stand right behind a number
};

struct ByteClasses {
  uint8_t of[256];
};

constexpr ByteClasses MakeByteClasses() {
  ByteClasses classes{};
  for (int byte = 0; byte < 0x20; ++byte) classes.of[byte] = kInvalid;
  for (const char *byte = " \t\n\r"; *byte != 0; ++byte) {
    classes.of[static_cast<unsigned char>(*byte)] = kSpace | kEndsNumber;
  }
  for (int byte = '0'; byte <= '9'; ++byte) classes.of[byte] = kDigit;
  for (const char *byte = ",]}/#"; *byte != 0; ++byte) {
    classes.of[static_cast<unsigned char>(*byte)] = kEndsNumber;
  }
  return classes;
}

constexpr ByteClasses kByteClasses = MakeByteClasses();

inline bool Is(uint8_t byte_class, char byte) {
  return (kByteClasses.of[static_cast<unsigned char>(byte)] & byte_class) != 0;
}

// A byte's class is judged before its place, so a control character is an invalid byte even where any other
// would be unexpected.
int UnexpectedByte(char byte) {
  return Is(kInvalid, byte) ? kJsonInvalidByte : kJsonUnexpectedByte;
}

int IgnoreEvent(void *, JsonEvent, const char *, uint32_t) {
  return 0;
}

int GrowBuffer(JsonParser *parser) {
  const uint32_t limit = parser->config.maxData;
  uint32_t size = parser->bufferSize;
  if (limit != 0 && size == limit) return kJsonDataLimit;
  if (parser->config.reallocHook == nullptr) return kJsonNoMemory;
  if (size >= kLargestDoubledSize) return kJsonNoMemory;
  size *= 2;
  if (limit != 0 && size > limit) size = limit;
  void *buffer = parser->config.reallocHook(parser->buffer, size);
  if (buffer == nullptr) return kJsonNoMemory;
  parser->buffer = static_cast<char *>(buffer);
  parser->bufferSize = size;
  return kJsonNoError;
}

// Appends to the token piece by piece. On failure *out_taken tells how many bytes found room.
int AppendAndGrow(JsonParser *parser, const char *bytes, uint32_t length, uint32_t *out_taken) {
  *out_taken = 0;
  for (;;) {
    const uint32_t room = parser->bufferSize - 1 - parser->bufferFill;
    const uint32_t rest = length - *out_taken;
    const uint32_t count = Smaller(rest, room);
    JsonCopyBytes(parser->buffer + parser->bufferFill, bytes + *out_taken, count);
    parser->bufferFill += count;
    *out_taken += count;
    if (*out_taken == length) return kJsonNoError;
    const int error = GrowBuffer(parser);
    if (error != kJsonNoError) return error;
  }
}

inline int AppendBytes(JsonParser *parser, const char *bytes, uint32_t length, uint32_t *out_taken) {
  if (length >= parser->bufferSize - parser->bufferFill) {
    return AppendAndGrow(parser, bytes, length, out_taken);
  }
  JsonCopyBytes(parser->buffer + parser->bufferFill, bytes, length);
  parser->bufferFill += length;
  *out_taken = length;
  return kJsonNoError;
}

// Appends string bytes up to the one that ends the run or the piece, and moves *at there; on failure to the
// first byte that found no room.
int AppendRun(JsonParser *parser, const char **at, const char *end) {
  for (;;) {
    const uint32_t room = parser->bufferSize - 1 - parser->bufferFill;
    const auto rest = static_cast<size_t>(end - *at);
    const uint32_t limit = rest < room ? static_cast<uint32_t>(rest) : room;
    const uint32_t count = JsonCopyRun(parser->buffer + parser->bufferFill, *at, limit);
    parser->bufferFill += count;
    *at += count;
    if (count < limit || *at == end || ByteEndsRun(static_cast<unsigned char>(**at))) return kJsonNoError;
    const int error = GrowBuffer(parser);
    if (error != kJsonNoError) return error;
  }
}

// As UTF-8.
int AppendCodePoint(JsonParser *parser, uint32_t code) {
  constexpr uint32_t kFirstByte[] = {0, 0, 0xC0, 0xE0, 0xF0};  // by length
  const uint32_t length = code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
  while (parser->bufferSize - 1 - parser->bufferFill < length) {
    const int error = GrowBuffer(parser);
    if (error != kJsonNoError) return error;
  }
  char *bytes = parser->buffer + parser->bufferFill;
  for (uint32_t i = length - 1; i > 0; --i) {
    bytes[i] = static_cast<char>(0x80 | (code & 0x3F));
    code >>= 6;
  }
  bytes[0] = static_cast<char>(kFirstByte[length] | code);
  parser->bufferFill += length;
  return kJsonNoError;
}

// The value of a hexadecimal digit; 16 for any other byte.
uint32_t HexValue(char byte) {
  if (Is(kDigit, byte)) return static_cast<uint32_t>(byte - '0');
  const char lower = static_cast<char>(byte | 0x20);
  return lower >= 'a' && lower <= 'f' ? static_cast<uint32_t>(lower - 'a' + 10) : 16;
}

// The byte that an escape's letter stands for; 0 for a letter that makes no escape.
char EscapedByte(char letter) {
  switch (letter) {
    case '"':
    case '\\':
    case '/':
      return letter;
    case 'b':
      return '\b';
    case 'f':
      return '\f';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    default:
      return 0;
  }
}

// Takes a complete \u escape and says what may follow it.
int TakeCodeUnit(JsonParser *parser, State *out_next) {
  const uint32_t unit = parser->codeUnit;
  const uint32_t high = parser->highSurrogate;
  const bool is_high = unit >= 0xD800 && unit <= 0xDBFF;
  const bool is_low = unit >= 0xDC00 && unit <= 0xDFFF;
  *out_next = kString;
  if (high != 0) {
    if (!is_low) return kJsonHighSurrogateAlone;
    parser->highSurrogate = 0;
    return AppendCodePoint(parser, 0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00));
  }
  if (is_low) return kJsonLowSurrogateAlone;
  if (is_high) {
    parser->highSurrogate = static_cast<uint16_t>(unit);
    *out_next = kSecondEscape;
    return kJsonNoError;
  }
  return AppendCodePoint(parser, unit);
}

int Emit(JsonParser *parser, JsonEvent event) {
  return parser->callback(parser->user, event, nullptr, 0);
}

int EmitToken(JsonParser *parser, JsonEvent event) {
  parser->buffer[parser->bufferFill] = 0;
  return parser->callback(parser->user, event, parser->buffer, parser->bufferFill);
}

int Open(JsonParser *parser, uint8_t kind) {
  const int refused = Emit(parser, kind == kObject ? JSON_OBJECT_BEGIN : JSON_ARRAY_BEGIN);
  if (refused != 0) return refused;
  if (parser->stackFill == parser->stackSize) {
    if (parser->config.maxNesting != 0) return kJsonNestingLimit;
    if (parser->config.reallocHook == nullptr) return kJsonNoMemory;
    if (parser->stackSize >= kLargestDoubledSize) return kJsonNoMemory;
    void *stack = parser->config.reallocHook(parser->stack, parser->stackSize * size_t{2});
    if (stack == nullptr) return kJsonNoMemory;
    parser->stack = static_cast<uint8_t *>(stack);
    parser->stackSize *= 2;
  }
  parser->stack[parser->stackFill++] = kind;
  return kJsonNoError;
}

int Close(JsonParser *parser, uint8_t kind) {
  const int refused = Emit(parser, kind == kObject ? JSON_OBJECT_END : JSON_ARRAY_END);
  if (refused != 0) return refused;
  if (parser->stackFill == 0) return kJsonNothingToClose;
  if (parser->stack[parser->stackFill - 1] != kind) return kJsonClosesOther;
  --parser->stackFill;
  return kJsonNoError;
}

// One feed on its way through the piece.
struct Feed {
  JsonParser *parser;
  const char *at;  // the next byte
  const char *end;
  const char *number;  // the bytes of a number from here to `at` are not in the buffer yet
  State state;
  int error;
};

// What became of the byte at hand.
enum Step {
  kTaken,       // it, and perhaps others behind it, or it was found to end its token
  kStopped,     // the feed's error says why
  kUnexpected,  // it cannot stand where it does
};

inline Step Take(Feed *feed, State next) {
  ++feed->at;
  feed->state = next;
  return kTaken;
}

inline Step Stop(Feed *feed, int error) {
  feed->error = error;
  return kStopped;
}

// Takes the byte, unless there is an error.
inline Step TakeOrStop(int error, Feed *feed, State next) {
  return error != kJsonNoError ? Stop(feed, error) : Take(feed, next);
}

inline Step SkipSpace(Feed *feed) {
  do {
    ++feed->at;
  } while (feed->at != feed->end && Is(kSpace, *feed->at));
  return kTaken;
}

inline Step BeginComment(Feed *feed, bool is_allowed, State next) {
  if (!is_allowed) return Stop(feed, kJsonCommentNotAllowed);
  feed->parser->afterComment = feed->state;
  return Take(feed, next);
}

// A byte that is not what the state waits for.
inline Step TakeBetweenTokens(Feed *feed, char byte) {
  const JsonParser *parser = feed->parser;
  if (Is(kSpace, byte)) return SkipSpace(feed);
  if (byte == '/') return BeginComment(feed, parser->config.allowBlockAndLineComments, kSlash);
  if (byte == '#') return BeginComment(feed, parser->config.allowHashComments, kLineComment);
  if (byte == ',' && parser->stackFill == 0) return Stop(feed, kJsonCommaOutside);
  return kUnexpected;
}

inline Step OpenStructure(Feed *feed, char bracket) {
  const bool is_object = bracket == '{';
  const int error = Open(feed->parser, is_object ? kObject : kArray);
  return TakeOrStop(error, feed, is_object ? kObjectFirst : kArrayFirst);
}

inline bool IsClosingBracket(char byte) {
  return byte == '}' || byte == ']';
}

inline Step CloseStructure(Feed *feed, char bracket) {
  return TakeOrStop(Close(feed->parser, bracket == '}' ? kObject : kArray), feed, kAfterValue);
}

inline Step BeginString(Feed *feed, bool is_key) {
  feed->parser->bufferFill = 0;
  feed->parser->stringIsKey = is_key;
  return Take(feed, kString);
}

inline Step BeginNumber(Feed *feed, char first) {
  feed->parser->bufferFill = 0;
  feed->number = feed->at;
  return Take(feed, first == '-' ? kNumberMinus : first == '0' ? kNumberZero : kNumberInteger);
}

inline Step BeginLiteral(Feed *feed, char first) {
  feed->parser->literal = first == 't' ? 0 : first == 'f' ? 1 : 2;
  feed->parser->position = 1;
  return Take(feed, kLiteral);
}

inline Step TakeValue(Feed *feed, char byte) {
  if (byte == '"') return BeginString(feed, false);
  if (byte == '{' || byte == '[') return OpenStructure(feed, byte);
  if (byte == '-' || Is(kDigit, byte)) return BeginNumber(feed, byte);
  if (byte == 't' || byte == 'f' || byte == 'n') return BeginLiteral(feed, byte);
  return TakeBetweenTokens(feed, byte);
}

inline Step TakeKey(Feed *feed, char byte) {
  return byte == '"' ? BeginString(feed, true) : TakeBetweenTokens(feed, byte);
}

inline Step TakeAfterValue(Feed *feed, char byte) {
  const JsonParser *parser = feed->parser;
  if (byte == ',' && parser->stackFill != 0) {
    return Take(feed, parser->stack[parser->stackFill - 1] == kObject ? kKey : kValue);
  }
  return IsClosingBracket(byte) ? CloseStructure(feed, byte) : TakeBetweenTokens(feed, byte);
}

inline Step TakeString(Feed *feed) {
  JsonParser *parser = feed->parser;
  const int error = AppendRun(parser, &feed->at, feed->end);
  if (error != kJsonNoError) return Stop(feed, error);
  if (feed->at == feed->end) return kTaken;
  if (*feed->at == '\\') return Take(feed, kEscape);
  if (*feed->at != '"') return kUnexpected;
  if (parser->stringIsKey) return TakeOrStop(EmitToken(parser, JSON_KEY), feed, kColon);
  return TakeOrStop(EmitToken(parser, JSON_STRING), feed, kAfterValue);
}

Step BeginHexDigits(Feed *feed) {
  feed->parser->codeUnit = 0;
  feed->parser->position = 0;
  return Take(feed, kHexDigits);
}

Step TakeEscape(Feed *feed, char letter) {
  if (letter == 'u') return BeginHexDigits(feed);
  const char escaped = EscapedByte(letter);
  if (escaped == 0) return kUnexpected;
  return TakeOrStop(AppendCodePoint(feed->parser, static_cast<uint32_t>(escaped)), feed, kString);
}

Step TakeHexDigit(Feed *feed, char byte) {
  JsonParser *parser = feed->parser;
  const uint32_t digit = HexValue(byte);
  if (digit == 16) return kUnexpected;
  parser->codeUnit = static_cast<uint16_t>(parser->codeUnit * 16U + digit);
  if (++parser->position < 4) return Take(feed, kHexDigits);
  State next = kString;
  const int error = TakeCodeUnit(parser, &next);
  return TakeOrStop(error, feed, next);
}

// A high surrogate stands alone when anything but a \u escape follows.
Step TakeSecondEscape(Feed *feed, char byte) {
  if (byte == '\\') return Take(feed, kSecondEscapeU);
  return static_cast<unsigned char>(byte) >= 0x20 ? Stop(feed, kJsonHighSurrogateAlone) : kUnexpected;
}

Step TakeSecondEscapeU(Feed *feed, char letter) {
  if (letter == 'u') return BeginHexDigits(feed);
  return EscapedByte(letter) != 0 ? Stop(feed, kJsonHighSurrogateAlone) : kUnexpected;
}

// Moves the number's bytes up to `at` into the buffer; on failure `at` goes back to the one that
// found no room.
inline int AppendNumber(Feed *feed) {
  uint32_t taken;
  const auto length = static_cast<uint32_t>(feed->at - feed->number);
  const int error = AppendBytes(feed->parser, feed->number, length, &taken);
  feed->at = feed->number + taken;
  feed->number = feed->at;
  return error;
}

inline Step TakeDigit(Feed *feed, char byte, State next) {
  return Is(kDigit, byte) ? Take(feed, next) : kUnexpected;
}

// The digits at hand and what follows them: a point, an exponent or the end.
inline Step TakeDigits(Feed *feed) {
  const State state = feed->state;
  if (state != kNumberZero) {
    while (feed->at != feed->end && Is(kDigit, *feed->at)) ++feed->at;
    if (feed->at == feed->end) return kTaken;
  }
  const char byte = *feed->at;
  const bool is_integer = state == kNumberZero || state == kNumberInteger;
  if (Is(kEndsNumber, byte)) {
    int error = AppendNumber(feed);
    if (error == kJsonNoError) error = EmitToken(feed->parser, is_integer ? JSON_INT : JSON_FLOAT);
    if (error != kJsonNoError) return Stop(feed, error);
    feed->state = kAfterValue;
    return kTaken;
  }
  if (byte == '.' && is_integer) return Take(feed, kNumberPoint);
  if ((byte == 'e' || byte == 'E') && state != kNumberExponent) return Take(feed, kNumberE);
  return kUnexpected;
}

inline Step TakeLiteral(Feed *feed, char byte) {
  JsonParser *parser = feed->parser;
  const Literal &literal = kLiterals[parser->literal];
  if (byte != literal.text[parser->position]) return kUnexpected;
  if (++parser->position < literal.length) return Take(feed, kLiteral);
  return TakeOrStop(Emit(parser, literal.event), feed, kAfterValue);
}

Step TakeComment(Feed *feed, char byte) {
  if (Is(kInvalid, byte)) return kUnexpected;
  const auto after = static_cast<State>(feed->parser->afterComment);
  switch (feed->state) {
    case kSlash:
      if (byte != '/' && byte != '*') return kUnexpected;
      return Take(feed, byte == '/' ? kLineComment : kBlockComment);
    case kLineComment:
      return Take(feed, byte == '\n' ? after : kLineComment);
    case kBlockComment:
      return Take(feed, byte == '*' ? kBlockCommentStar : kBlockComment);
    default:
      return Take(feed, byte == '/' ? after : byte == '*' ? kBlockCommentStar : kBlockComment);
  }
}

inline Step TakeByte(Feed *feed) {
  const char byte = *feed->at;
  switch (feed->state) {  // GCOVR_EXCL_BR_LINE: there is no other state
    case kStart:
    case kArrayFirst:
      return IsClosingBracket(byte) ? CloseStructure(feed, byte) : TakeValue(feed, byte);
    case kObjectFirst:
      return IsClosingBracket(byte) ? CloseStructure(feed, byte) : TakeKey(feed, byte);
    case kKey:
      return TakeKey(feed, byte);
    case kColon:
      return byte == ':' ? Take(feed, kValue) : TakeBetweenTokens(feed, byte);
    case kValue:
      return TakeValue(feed, byte);
    case kAfterValue:
      return TakeAfterValue(feed, byte);
    case kString:
      return TakeString(feed);
    case kEscape:
      return TakeEscape(feed, byte);
    case kHexDigits:
      return TakeHexDigit(feed, byte);
    case kSecondEscape:
      return TakeSecondEscape(feed, byte);
    case kSecondEscapeU:
      return TakeSecondEscapeU(feed, byte);
    case kNumberMinus:
      return byte == '0' ? Take(feed, kNumberZero) : TakeDigit(feed, byte, kNumberInteger);
    case kNumberPoint:
      return TakeDigit(feed, byte, kNumberFraction);
    case kNumberE:
      return byte == '+' || byte == '-' ? Take(feed, kNumberSign) : TakeDigit(feed, byte, kNumberExponent);
    case kNumberSign:
      return TakeDigit(feed, byte, kNumberExponent);
    case kNumberZero:
    case kNumberInteger:
    case kNumberFraction:
    case kNumberExponent:
      return TakeDigits(feed);
    case kLiteral:
      return TakeLiteral(feed, byte);
    case kSlash:
    case kLineComment:
    case kBlockComment:
    case kBlockCommentStar:
      return TakeComment(feed, byte);
  }
  return kUnexpected;  // GCOVR_EXCL_LINE: there is no other state
}

// Reads from *at to `end`. Returns 0 or the error, and leaves in *at the byte that failed.
int Parse(JsonParser *parser, const char **at, const char *end) {
  Feed feed = {parser, *at, end, *at, static_cast<State>(parser->state), kJsonNoError};
  while (feed.at != feed.end) {
    const Step step = TakeByte(&feed);
    // Not a condition of the loop: compilers then go straight from one state to the next where they know it.
    if (step == kTaken) continue;
    if (step == kUnexpected) feed.error = UnexpectedByte(*feed.at);
    break;
  }

  // A number cut by the end of the piece or by a bad byte. Its room may have run out before that.
  if (feed.state >= kFirstOfNumber && feed.state <= kLastOfNumber && feed.number != feed.at) {
    const int no_room = AppendNumber(&feed);
    if (no_room != kJsonNoError) feed.error = no_room;
  }
  parser->state = feed.state;
  *at = feed.at;
  return feed.error;
}

}  // namespace

int JsonParserInit(JsonParser *parser, const JsonParserConfig *config, JsonCallback callback, void *user) {
  if (parser == nullptr) return kJsonNoMemory;
  *parser = JsonParser();
  if (config != nullptr) parser->config = *config;
  parser->callback = callback != nullptr ? callback : IgnoreEvent;
  parser->user = user;
  parser->state = kStart;
  parser->stackSize = parser->config.maxNesting != 0 ? parser->config.maxNesting : kDefaultStackSize;
  parser->bufferSize =
      parser->config.bufferInitialSize != 0 ? parser->config.bufferInitialSize : kDefaultBufferSize;
  if (parser->config.maxData != 0 && parser->bufferSize > parser->config.maxData) {
    parser->bufferSize = parser->config.maxData;
  }
  if (parser->config.callocHook == nullptr) return kJsonNoMemory;
  parser->stack = static_cast<uint8_t *>(parser->config.callocHook(parser->stackSize, 1));
  if (parser->stack == nullptr) return kJsonNoMemory;
  parser->buffer = static_cast<char *>(parser->config.callocHook(parser->bufferSize, 1));
  if (parser->buffer == nullptr) {
    JsonParserFree(parser);
    return kJsonNoMemory;
  }
  return kJsonNoError;
}

int JsonParserFeed(JsonParser *parser, const char *bytes, uint32_t length, uint32_t *out_processed) {
  const char *at = bytes;
  if (parser->error == kJsonNoError && length != 0) parser->error = Parse(parser, &at, bytes + length);
  if (out_processed != nullptr) *out_processed = static_cast<uint32_t>(at - bytes);
  return parser->error;
}

void JsonParserFree(JsonParser *parser) {
  MemFreeIfAny(parser->stack);
  MemFreeIfAny(parser->buffer);
  parser->stack = nullptr;
  parser->buffer = nullptr;
}

}  // namespace lumo
