#include "json/json_parser.h"

#include <cstring>

#include "foundation/memory.h"
#include "json/json_scan.h"

namespace lumo {
namespace {

constexpr uint32_t kDefaultBufferSize = 4096;
constexpr uint32_t kDefaultStackSize = 256;
constexpr uint32_t kLargestDoubledSize = 0x80000000u;

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
constexpr State kLastBetweenTokens = kAfterValue;
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
  for (const char *byte = " \t\n\r"; *byte != 0; ++byte)
    classes.of[static_cast<unsigned char>(*byte)] = kSpace | kEndsNumber;
  for (int byte = '0'; byte <= '9'; ++byte) classes.of[byte] = kDigit;
  for (const char *byte = ",]}/#"; *byte != 0; ++byte)
    classes.of[static_cast<unsigned char>(*byte)] = kEndsNumber;
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
  if (size >= kLargestDoubledSize || parser->config.reallocHook == nullptr) return kJsonNoMemory;
  size *= 2;
  if (limit != 0 && size > limit) size = limit;
  void *buffer = parser->config.reallocHook(parser->buffer, size);
  if (buffer == nullptr) return kJsonNoMemory;
  parser->buffer = static_cast<char *>(buffer);
  parser->bufferSize = size;
  return kJsonNoError;
}

// Appends to the token piece by piece. On failure *taken tells how many bytes found room.
int AppendAndGrow(JsonParser *parser, const char *bytes, uint32_t length, uint32_t *taken) {
  *taken = 0;
  for (;;) {
    const uint32_t room = parser->bufferSize - 1 - parser->bufferFill;
    const uint32_t rest = length - *taken;
    const uint32_t count = rest < room ? rest : room;
    JsonCopyBytes(parser->buffer + parser->bufferFill, bytes + *taken, count);
    parser->bufferFill += count;
    *taken += count;
    if (*taken == length) return kJsonNoError;
    const int error = GrowBuffer(parser);
    if (error != kJsonNoError) return error;
  }
}

inline int AppendBytes(JsonParser *parser, const char *bytes, uint32_t length, uint32_t *taken) {
  if (length >= parser->bufferSize - parser->bufferFill) return AppendAndGrow(parser, bytes, length, taken);
  JsonCopyBytes(parser->buffer + parser->bufferFill, bytes, length);
  parser->bufferFill += length;
  *taken = length;
  return kJsonNoError;
}

// Appends string bytes up to the one that ends the run or the piece, and moves *at there; on failure to the
// first byte that found no room.
int AppendRun(JsonParser *parser, const char **at, const char *end) {
  for (;;) {
    const uint32_t room = parser->bufferSize - 1 - parser->bufferFill;
    const size_t rest = static_cast<size_t>(end - *at);
    const uint32_t limit = rest < room ? static_cast<uint32_t>(rest) : room;
    const uint32_t count = JsonCopyRun(parser->buffer + parser->bufferFill, *at, limit);
    parser->bufferFill += count;
    *at += count;
    if (count < limit || *at == end || ByteEndsRun(static_cast<unsigned char>(**at))) return kJsonNoError;
    const int error = GrowBuffer(parser);
    if (error != kJsonNoError) return error;
  }
}

int AppendCodePoint(JsonParser *parser, uint32_t code) {
  char bytes[4];
  uint32_t length;
  if (code < 0x80) {
    bytes[0] = static_cast<char>(code);
    length = 1;
  } else if (code < 0x800) {
    bytes[0] = static_cast<char>(0xC0 | (code >> 6));
    bytes[1] = static_cast<char>(0x80 | (code & 0x3F));
    length = 2;
  } else if (code < 0x10000) {
    bytes[0] = static_cast<char>(0xE0 | (code >> 12));
    bytes[1] = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    bytes[2] = static_cast<char>(0x80 | (code & 0x3F));
    length = 3;
  } else {
    bytes[0] = static_cast<char>(0xF0 | (code >> 18));
    bytes[1] = static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    bytes[2] = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    bytes[3] = static_cast<char>(0x80 | (code & 0x3F));
    length = 4;
  }
  uint32_t taken;
  return AppendBytes(parser, bytes, length, &taken);
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
int TakeCodeUnit(JsonParser *parser, State *next) {
  const uint32_t unit = parser->codeUnit;
  const uint32_t high = parser->highSurrogate;
  const bool is_high = unit >= 0xD800 && unit <= 0xDBFF;
  const bool is_low = unit >= 0xDC00 && unit <= 0xDFFF;
  *next = kString;
  if (high != 0) {
    if (!is_low) return kJsonHighSurrogateAlone;
    parser->highSurrogate = 0;
    return AppendCodePoint(parser, 0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00));
  }
  if (is_low) return kJsonLowSurrogateAlone;
  if (is_high) {
    parser->highSurrogate = static_cast<uint16_t>(unit);
    *next = kSecondEscape;
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
    if (parser->stackSize >= kLargestDoubledSize || parser->config.reallocHook == nullptr)
      return kJsonNoMemory;
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

// Takes the number that ends before `p`; on failure moves *p to the byte that found no room.
int AppendNumber(JsonParser *parser, const char *number, const char **p) {
  uint32_t taken;
  const int error = AppendBytes(parser, number, static_cast<uint32_t>(*p - number), &taken);
  *p = number + taken;
  return error;
}

// Reads from *at to `end`. Returns 0 or the error, and leaves in *at the byte that failed.
int Parse(JsonParser *parser, const char **at, const char *const end) {
  const char *p = *at;
  State state = static_cast<State>(parser->state);
  int error = kJsonNoError;
  const char *number = p;  // the number's bytes from here on are not in the buffer yet

  // A case that takes its byte, or hands it to the next state, continues. One that leaves the switch has set
  // an error or met a byte that its state does not know.
  while (p != end) {
    const char byte = *p;
    switch (state) {
      case kArrayFirst:
        if (byte == ']' || byte == '}') {
          error = Close(parser, byte == '}' ? kObject : kArray);
          if (error != kJsonNoError) break;
          ++p;
          state = kAfterValue;
          continue;
        }
        [[fallthrough]];
      case kStart:
      case kValue:
        if (byte == '"') {
          ++p;
          parser->bufferFill = 0;
          parser->stringIsKey = false;
          state = kString;
          continue;
        }
        if (byte == '{' || byte == '[') {
          error = Open(parser, byte == '{' ? kObject : kArray);
          if (error != kJsonNoError) break;
          ++p;
          state = byte == '{' ? kObjectFirst : kArrayFirst;
          continue;
        }
        if (byte == '-' || Is(kDigit, byte)) {
          number = p++;
          parser->bufferFill = 0;
          state = byte == '-' ? kNumberMinus : byte == '0' ? kNumberZero : kNumberInteger;
          continue;
        }
        if (byte == 't' || byte == 'f' || byte == 'n') {
          ++p;
          parser->literal = byte == 't' ? 0 : byte == 'f' ? 1 : 2;
          parser->position = 1;
          state = kLiteral;
          continue;
        }
        break;

      case kObjectFirst:
        if (byte == '}' || byte == ']') {
          error = Close(parser, byte == '}' ? kObject : kArray);
          if (error != kJsonNoError) break;
          ++p;
          state = kAfterValue;
          continue;
        }
        [[fallthrough]];
      case kKey:
        if (byte == '"') {
          ++p;
          parser->bufferFill = 0;
          parser->stringIsKey = true;
          state = kString;
          continue;
        }
        break;

      case kColon:
        if (byte == ':') {
          ++p;
          state = kValue;
          continue;
        }
        break;

      case kAfterValue:
        if (parser->stackFill == 0) break;
        if (byte == ',') {
          ++p;
          state = parser->stack[parser->stackFill - 1] == kObject ? kKey : kValue;
          continue;
        }
        if (byte == '}' || byte == ']') {
          error = Close(parser, byte == '}' ? kObject : kArray);
          if (error != kJsonNoError) break;
          ++p;
          continue;
        }
        break;

      case kString:
        error = AppendRun(parser, &p, end);
        if (error != kJsonNoError) break;
        if (p == end) continue;
        if (*p == '"') {
          error = EmitToken(parser, parser->stringIsKey ? JSON_KEY : JSON_STRING);
          if (error != kJsonNoError) break;
          ++p;
          state = parser->stringIsKey ? kColon : kAfterValue;
          continue;
        }
        if (*p == '\\') {
          ++p;
          state = kEscape;
          continue;
        }
        break;

      case kEscape:
        if (byte == 'u') {
          ++p;
          parser->codeUnit = 0;
          parser->position = 0;
          state = kHexDigits;
          continue;
        }
        if (const char escaped = EscapedByte(byte)) {
          uint32_t taken;
          error = AppendBytes(parser, &escaped, 1, &taken);
          if (error != kJsonNoError) break;
          ++p;
          state = kString;
          continue;
        }
        break;

      case kHexDigits: {
        const uint32_t digit = HexValue(byte);
        if (digit == 16) break;
        parser->codeUnit = static_cast<uint16_t>(parser->codeUnit * 16u + digit);
        if (++parser->position == 4) {
          error = TakeCodeUnit(parser, &state);
          if (error != kJsonNoError) break;
        }
        ++p;
        continue;
      }

      case kSecondEscape:
        if (byte == '\\') {
          ++p;
          state = kSecondEscapeU;
          continue;
        }
        if (static_cast<unsigned char>(byte) >= 0x20) error = kJsonHighSurrogateAlone;
        break;

      case kSecondEscapeU:
        if (byte == 'u') {
          ++p;
          parser->codeUnit = 0;
          parser->position = 0;
          state = kHexDigits;
          continue;
        }
        if (EscapedByte(byte) != 0) error = kJsonHighSurrogateAlone;
        break;

      case kNumberMinus:
        if (!Is(kDigit, byte)) break;
        ++p;
        state = byte == '0' ? kNumberZero : kNumberInteger;
        continue;

      case kNumberPoint:
        if (!Is(kDigit, byte)) break;
        ++p;
        state = kNumberFraction;
        continue;

      case kNumberE:
        if (byte == '+' || byte == '-') {
          ++p;
          state = kNumberSign;
          continue;
        }
        [[fallthrough]];
      case kNumberSign:
        if (!Is(kDigit, byte)) break;
        ++p;
        state = kNumberExponent;
        continue;

      case kNumberInteger:
      case kNumberFraction:
      case kNumberExponent:
        while (p != end && Is(kDigit, *p)) ++p;
        if (p == end) continue;
        [[fallthrough]];
      case kNumberZero:
        if (Is(kEndsNumber, *p)) {
          error = AppendNumber(parser, number, &p);
          number = p;
          if (error != kJsonNoError) break;
          error = EmitToken(parser, state == kNumberZero || state == kNumberInteger ? JSON_INT : JSON_FLOAT);
          if (error != kJsonNoError) break;
          state = kAfterValue;
          continue;
        }
        if (*p == '.' && (state == kNumberZero || state == kNumberInteger)) {
          ++p;
          state = kNumberPoint;
          continue;
        }
        if ((*p == 'e' || *p == 'E') && state != kNumberExponent) {
          ++p;
          state = kNumberE;
          continue;
        }
        break;

      case kLiteral: {
        const Literal &literal = kLiterals[parser->literal];
        if (byte != literal.text[parser->position]) break;
        if (parser->position + 1u == literal.length) {
          error = Emit(parser, literal.event);
          if (error != kJsonNoError) break;
          state = kAfterValue;
        }
        ++parser->position;
        ++p;
        continue;
      }

      case kSlash:
        if (byte == '/' || byte == '*') {
          ++p;
          state = byte == '/' ? kLineComment : kBlockComment;
          continue;
        }
        break;

      case kLineComment:
        if (UnexpectedByte(byte) == kJsonInvalidByte) break;
        ++p;
        if (byte == '\n') state = static_cast<State>(parser->afterComment);
        continue;

      case kBlockComment:
        if (UnexpectedByte(byte) == kJsonInvalidByte) break;
        ++p;
        if (byte == '*') state = kBlockCommentStar;
        continue;

      case kBlockCommentStar:
        if (UnexpectedByte(byte) == kJsonInvalidByte) break;
        ++p;
        if (byte != '*') state = byte == '/' ? static_cast<State>(parser->afterComment) : kBlockComment;
        continue;
    }
    if (error != kJsonNoError) break;

    // Between two tokens.
    if (state <= kLastBetweenTokens) {
      if (Is(kSpace, byte)) {
        do ++p;
        while (p != end && Is(kSpace, *p));
        continue;
      }
      if (byte == '/') {
        if (!parser->config.allowBlockAndLineComments) {
          error = kJsonCommentNotAllowed;
          break;
        }
        ++p;
        parser->afterComment = state;
        state = kSlash;
        continue;
      }
      if (byte == '#') {
        if (!parser->config.allowHashComments) {
          error = kJsonCommentNotAllowed;
          break;
        }
        ++p;
        parser->afterComment = state;
        state = kLineComment;
        continue;
      }
      // Nothing is open here: inside structures these states know the comma and the closing brackets
      // themselves.
      if (state == kStart || (state == kAfterValue && parser->stackFill == 0)) {
        if (byte == ',') error = kJsonCommaOutside;
        if (byte == ']' || byte == '}') error = Close(parser, byte == '}' ? kObject : kArray);
        if (error != kJsonNoError) break;
      }
    }
    error = UnexpectedByte(*p);
    break;
  }

  // A number cut by the end of the piece or by a bad byte. Its room may have run out before that.
  if (state >= kFirstOfNumber && state <= kLastOfNumber && number != p) {
    const int no_room = AppendNumber(parser, number, &p);
    if (no_room != kJsonNoError) error = no_room;
  }
  parser->state = state;
  *at = p;
  return error;
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

int JsonParserFeed(JsonParser *parser, const char *bytes, uint32_t length, uint32_t *processed) {
  const char *at = bytes;
  if (parser->error == kJsonNoError && length != 0) parser->error = Parse(parser, &at, bytes + length);
  if (processed != nullptr) *processed = static_cast<uint32_t>(at - bytes);
  return parser->error;
}

void JsonParserFree(JsonParser *parser) {
  if (parser->stack != nullptr) MemFree(parser->stack, LUMO_HERE);
  if (parser->buffer != nullptr) MemFree(parser->buffer, LUMO_HERE);
  parser->stack = nullptr;
  parser->buffer = nullptr;
}

}  // namespace lumo
