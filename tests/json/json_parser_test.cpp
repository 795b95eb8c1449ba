// json/json_parser_test.cpp: JSON text in, events out.
#include "json/json_parser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace lumo {
namespace {

void *Calloc(size_t count, size_t size) {
  return std::calloc(count, size);
}
void *Realloc(void *pointer, size_t size) {
  return std::realloc(pointer, size);
}

JsonParserConfig PlainConfig() {
  JsonParserConfig config{};
  config.callocHook = Calloc;
  config.reallocHook = Realloc;
  return config;
}

// What a document gave: its events as "number" or "number:data", the result, and the bytes that were taken.
struct Outcome {
  std::vector<std::string> events;
  int code = 0;
  size_t taken = 0;
  bool terminated = true;  // every data was followed by a zero byte
};

bool operator==(const Outcome &a, const Outcome &b) {
  return a.events == b.events && a.code == b.code && a.taken == b.taken && a.terminated && b.terminated;
}

std::ostream &operator<<(std::ostream &out, const Outcome &outcome) {
  return out << testing::PrintToString(outcome.events) << " code " << outcome.code << " taken "
             << outcome.taken << (outcome.terminated ? "" : " not terminated");
}

int Record(void *user, JsonEvent event, const char *data, uint32_t length) {
  auto *outcome = static_cast<Outcome *>(user);
  std::string text = std::to_string(event);
  if (data != nullptr) {
    text += ":" + std::string(data, length);
    if (data[length] != 0) outcome->terminated = false;
  }
  outcome->events.push_back(text);
  return 0;
}

Outcome Feed(const std::string &text, size_t piece, const JsonParserConfig &config = PlainConfig()) {
  Outcome outcome;
  JsonParser parser;
  EXPECT_EQ(JsonParserInit(&parser, &config, Record, &outcome), 0);
  for (size_t at = 0; at < text.size() && outcome.code == 0; at += piece) {
    // A copy of the exact size lets the sanitizer see a read beyond the piece.
    const std::vector<char> bytes(text.begin() + static_cast<ptrdiff_t>(at),
                                  text.begin() + static_cast<ptrdiff_t>(std::min(at + piece, text.size())));
    uint32_t processed = 0;
    outcome.code = JsonParserFeed(&parser, bytes.data(), static_cast<uint32_t>(bytes.size()), &processed);
    if (outcome.code == 0) {
      EXPECT_EQ(processed, bytes.size());
    }
    outcome.taken += processed;
  }
  JsonParserFree(&parser);
  return outcome;
}

// Feeds the text whole and in pieces of every size; all must tell the same.
Outcome FeedEveryWay(const std::string &text, const JsonParserConfig &config = PlainConfig()) {
  const Outcome whole = Feed(text, std::max<size_t>(text.size(), 1), config);
  for (size_t piece = 1; piece < text.size(); ++piece) {
    const Outcome cut = Feed(text, piece, config);
    EXPECT_EQ(cut, whole) << "in pieces of " << piece << ": " << testing::PrintToString(text);
    if (!(cut == whole)) break;
  }
  return whole;
}

using Events = std::vector<std::string>;

TEST(JsonParser, GivesTheEventsOfADocumentInOrder) {
  const Outcome outcome = Feed("{\"a\":[1,2.5,\"x\\u00e9\"],\"b\":null}", 1000);
  EXPECT_EQ(outcome.events, (Events{"2", "8:a", "1", "5:1", "6:2.5", "7:x\xC3\xA9", "3", "8:b", "11", "4"}));
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.taken, 32U);
}

TEST(JsonParser, GivesTheSameEventsByteByByte) {
  const Outcome outcome = Feed("{\"a\":[1,2.5,\"x\\u00e9\"],\"b\":null}", 1);
  EXPECT_EQ(outcome.events, (Events{"2", "8:a", "1", "5:1", "6:2.5", "7:x\xC3\xA9", "3", "8:b", "11", "4"}));
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.taken, 32U);
}

struct AcceptedCase {
  const char *name;
  std::string text;
  Events events;
};

const std::string kZero(1, '\0');

const AcceptedCase kAccepted[] = {
    {"Nothing", "", {}},
    {"WhiteSpaceOnly", " \t\r\n", {}},
    {"EmptyObject", "{}", {"2", "4"}},
    {"EmptyArray", "[]", {"1", "3"}},
    {"WhiteSpaceEverywhere",
     " { \"a\"\t:\r[ 1 , 2 ]\n, \"b\" : { } } \n",
     {"2", "8:a", "1", "5:1", "5:2", "3", "8:b", "2", "4", "4"}},
    {"LongRunOfWhiteSpace",
     "[" + std::string(100, ' ') + "1" + std::string(100, '\n') + "]",
     {"1", "5:1", "3"}},
    {"Literals", "[true,false,null]", {"1", "9", "10", "11", "3"}},
    {"LiteralAtTopLevel", "true", {"9"}},
    {"FalseAtTopLevel", " false ", {"10"}},
    {"NullAtTopLevel", "null\n", {"11"}},
    {"StringAtTopLevel", "\"a\"", {"7:a"}},
    {"NumberAtTopLevelEndedByWhiteSpace", "12 ", {"5:12"}},
    {"NumberAtTopLevelNotEndedYet", "12", {}},
    {"EmptyString", "[\"\"]", {"1", "7:", "3"}},
    {"EmptyKey", "{\"\":1}", {"2", "8:", "5:1", "4"}},
    {"KeysTwiceAreKept", "{\"a\":1,\"a\":2}", {"2", "8:a", "5:1", "8:a", "5:2", "4"}},
    {"StringValueIsNoKey", "{\"a\":\"b\",\"c\":[\"d\"]}", {"2", "8:a", "7:b", "8:c", "1", "7:d", "3", "4"}},
    {"Integers",
     "[0,-0,7,-12,1234567890123456789012]",
     {"1", "5:0", "5:-0", "5:7", "5:-12", "5:1234567890123456789012", "3"}},
    {"Floats",
     "[0.5,-1.25,1e5,1E+5,0e-0,12.5e10]",
     {"1", "6:0.5", "6:-1.25", "6:1e5", "6:1E+5", "6:0e-0", "6:12.5e10", "3"}},
    {"NumberEndedByEachByte",
     "{\"a\":1,\"b\":2 ,\"c\":[3],\"d\":4}",
     {"2", "8:a", "5:1", "8:b", "5:2", "8:c", "1", "5:3", "3", "8:d", "5:4", "4"}},
    {"ShortEscapes", "[\"\\\"\\/\\\\\\b\\f\\n\\r\\t\"]", {"1", "7:\"/\\\b\f\n\r\t", "3"}},
    {"EscapeBetweenBytes", "[\"ab\\ncd\"]", {"1", "7:ab\ncd", "3"}},
    {"OneByteCodePoint", "[\"\\u0041\\u007f\"]", {"1", "7:A\x7F", "3"}},
    {"TwoByteCodePoint", "[\"\\u0080\\u07FF\\u0416\"]", {"1", "7:\xC2\x80\xDF\xBF\xD0\x96", "3"}},
    {"ThreeByteCodePoint",
     "[\"\\u0800\\u20ac\\uD7FF\\ue000\\uFFFF\"]",
     {"1", "7:\xE0\xA0\x80\xE2\x82\xAC\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", "3"}},
    {"FourByteCodePoint",
     "[\"\\ud800\\udc00\\uDBFF\\uDFFF\"]",
     {"1", "7:\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", "3"}},
    {"TwoPairsInOneString",
     "[\"\\ud83d\\ude00-\\ud83d\\ude01\"]",
     {"1", "7:\xF0\x9F\x98\x80-\xF0\x9F\x98\x81", "3"}},
    {"ZeroByteInAString", "[\"a\\u0000b\"]", {"1", "7:a" + kZero + "b", "3"}},
    {"EscapesInAKey", "{\"a\\u0062\\n\":1}", {"2", "8:ab\n", "5:1", "4"}},
    {"HighBytesPassAsTheyAre", "[\"\xD0\x96\x80\xFF\x7F\"]", {"1", "7:\xD0\x96\x80\xFF\x7F", "3"}},
    {"LongString",
     "[\"" + std::string(70, 'x') + "\\\"" + std::string(33, 'y') + "\"]",
     {"1", "7:" + std::string(70, 'x') + "\"" + std::string(33, 'y'), "3"}},
    {"LeftOpenIsNoError", "{\"a\":[", {"2", "8:a", "1"}},
    {"LeftOpenInAString", "[\"abc", {"1"}},
    {"LeftOpenInAnEscape", "[\"abc\\", {"1"}},
    {"LeftOpenInASurrogatePair", "[\"\\ud800", {"1"}},
    {"LeftOpenInANumber", "[-", {"1"}},
    {"LeftOpenInALiteral", "[tru", {"1"}},
};

TEST(JsonParser, AcceptsTheseTextsHoweverTheyAreCut) {
  for (const AcceptedCase &row : kAccepted) {
    SCOPED_TRACE(row.name);

    const Outcome outcome = FeedEveryWay(row.text);
    EXPECT_EQ(outcome.events, row.events);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.taken, row.text.size());
  }
}

struct RefusedCase {
  const char *name;
  std::string text;
  int code;
  size_t taken;
  Events events;
};

const RefusedCase kRefused[] = {
    // Brackets.
    {"ClosingSquareBracketAlone", "]", 3, 0, {"3"}},
    {"ClosingBraceAlone", "}", 3, 0, {"4"}},
    {"SquareBracketClosedByBrace", "[}", 4, 1, {"1", "4"}},
    {"BraceClosedBySquareBracket", "{]", 4, 1, {"2", "3"}},
    {"BraceClosesAnArrayWithElements", "[1}", 4, 2, {"1", "5:1", "4"}},
    {"SquareBracketClosesAnObjectWithMembers", "{\"a\":1]", 4, 6, {"2", "8:a", "5:1", "3"}},
    {"OneBracketTooMany", "{}}", 3, 2, {"2", "4", "4"}},
    {"BracketAfterAScalar", "1]", 3, 1, {"5:1", "3"}},
    // Commas and colons.
    {"CommaAtTopLevel", ",", 11, 0, {}},
    {"CommaAfterTheDocument", "[],", 11, 2, {"1", "3"}},
    {"CommaAfterATopLevelNumber", "1,", 11, 1, {"5:1"}},
    {"CommaAfterWhiteSpace", " \n,", 11, 2, {}},
    {"CommaFirstInAnArray", "[,", 8, 1, {"1"}},
    {"CommaFirstInAnObject", "{,", 8, 1, {"2"}},
    {"CommaLastInAnArray", "[1,]", 8, 3, {"1", "5:1"}},
    {"CommaLastInAnObject", "{\"a\":1,}", 8, 7, {"2", "8:a", "5:1"}},
    {"TwoCommas", "[1,,2]", 8, 3, {"1", "5:1"}},
    {"NoComma", "[1 2]", 8, 3, {"1", "5:1"}},
    {"NoCommaBetweenMembers", "{\"a\":1 \"b\":2}", 8, 7, {"2", "8:a", "5:1"}},
    {"ColonInAnArray", "[\"a\":1]", 8, 4, {"1", "7:a"}},
    {"ColonAtTopLevel", "\"a\":1", 8, 3, {"7:a"}},
    {"NoColon", "{\"a\" 1}", 8, 5, {"2", "8:a"}},
    {"NoValue", "{\"a\":}", 8, 5, {"2", "8:a"}},
    {"KeyOnly", "{\"a\"}", 8, 4, {"2", "8:a"}},
    {"NumberAsKey", "{1:2}", 8, 1, {"2"}},
    {"LiteralAsKey", "{null:2}", 8, 1, {"2"}},
    // After the document.
    {"SecondDocument", "{}{}", 8, 2, {"2", "4"}},
    {"SecondScalar", "1 2", 8, 2, {"5:1"}},
    {"StrayLetterAfterTheDocument", "[] x", 8, 3, {"1", "3"}},
    {"StringAfterTheDocument", "[]\"\"", 8, 2, {"1", "3"}},
    {"HighByteAfterTheDocument", "[]\xC3", 8, 2, {"1", "3"}},
    // Literals.
    {"CapitalLiteral", "[True]", 8, 1, {"1"}},
    {"MisspeltLiteral", "[trye]", 8, 3, {"1"}},
    {"CutLiteral", "[nul]", 8, 4, {"1"}},
    {"LiteralGoesOn", "[truex]", 8, 5, {"1", "9"}},
    {"TwoLiterals", "[truefalse]", 8, 5, {"1", "9"}},
    {"BareWord", "abc", 8, 0, {}},
    {"SingleQuotes", "['a']", 8, 1, {"1"}},
    // Numbers.
    {"LeadingZero", "[01]", 8, 2, {"1"}},
    {"LeadingZeroAfterMinus", "[-01]", 8, 3, {"1"}},
    {"PlusSign", "[+1]", 8, 1, {"1"}},
    {"MinusAlone", "[-]", 8, 2, {"1"}},
    {"MinusLetter", "[-a]", 8, 2, {"1"}},
    {"PointFirst", "[.5]", 8, 1, {"1"}},
    {"PointLast", "[1.]", 8, 3, {"1"}},
    {"TwoPoints", "[1.2.3]", 8, 4, {"1"}},
    {"PointThenE", "[1.e5]", 8, 3, {"1"}},
    {"EWithoutDigits", "[1e]", 8, 3, {"1"}},
    {"ESignWithoutDigits", "[1e+]", 8, 4, {"1"}},
    {"TwoE", "[1e5e5]", 8, 4, {"1"}},
    {"PointInExponent", "[1e5.0]", 8, 4, {"1"}},
    {"Hexadecimal", "[0x10]", 8, 2, {"1"}},
    {"NumberGoesOnAsAWord", "[1a]", 8, 2, {"1"}},
    {"NumberThenString", "[1\"a\"]", 8, 2, {"1"}},
    {"NumberThenColon", "[1:2]", 8, 2, {"1"}},
    {"NumberThenOpeningBracket", "[1[", 8, 2, {"1"}},
    {"NumberThenControlByte", "[1\x01", 2, 2, {"1"}},
    // Strings.
    {"RawTabInAString", "[\"a\tb\"]", 8, 3, {"1"}},
    {"RawLineFeedInAString", "[\"a\nb\"]", 8, 3, {"1"}},
    {"RawReturnInAString", "[\"a\rb\"]", 8, 3, {"1"}},
    {"RawControlByteInAString",
     "[\"a\x1F"
     "b\"]",
     2,
     3,
     {"1"}},
    {"RawZeroByteInAString", "[\"a" + kZero + "b\"]", 2, 3, {"1"}},
    {"RawTabAfterALongRun", "[\"" + std::string(40, 'x') + "\t", 8, 42, {"1"}},
    {"RawTabInAKey", "{\"\t\":1}", 8, 2, {"2"}},
    {"UnknownEscape", "[\"\\x41\"]", 8, 3, {"1"}},
    {"CapitalEscape", "[\"\\N\"]", 8, 3, {"1"}},
    {"EscapedLineFeed", "[\"\\\n\"]", 8, 3, {"1"}},
    {"EscapedControlByte", "[\"\\\x01\"]", 2, 3, {"1"}},
    {"ShortUnicodeEscape", "[\"\\u12\"]", 8, 6, {"1"}},
    {"BadDigitInUnicodeEscape", "[\"\\u00g0\"]", 8, 6, {"1"}},
    {"ControlByteInUnicodeEscape", "[\"\\u00\x02", 2, 6, {"1"}},
    {"CapitalUnicodeEscape", "[\"\\U0041\"]", 8, 3, {"1"}},
    // Surrogates.
    {"HighSurrogateThenLetter", "[\"\\ud800a\"]", 9, 8, {"1"}},
    {"HighSurrogateThenHighByte", "[\"\\ud800\xC3", 9, 8, {"1"}},
    {"HighSurrogateThenEndOfString", "[\"\\ud800\"]", 9, 8, {"1"}},
    {"HighSurrogateThenOtherEscape", "[\"\\ud800\\n\"]", 9, 9, {"1"}},
    {"HighSurrogateThenUnknownEscape", "[\"\\ud800\\q\"]", 8, 9, {"1"}},
    {"HighSurrogateThenRawTab", "[\"\\ud800\t", 8, 8, {"1"}},
    {"HighSurrogateThenControlByte", "[\"\\ud800\x01", 2, 8, {"1"}},
    {"HighSurrogateThenOtherCodePoint", "[\"\\ud800\\u0041\"]", 9, 13, {"1"}},
    {"TwoHighSurrogates", "[\"\\ud800\\udbff\"]", 9, 13, {"1"}},
    {"LowSurrogateAlone", "[\"\\udc00\"]", 10, 7, {"1"}},
    {"LowSurrogateAfterAPair", "[\"\\ud800\\udc00\\udfff\"]", 10, 19, {"1"}},
    // Comments, with both flags off.
    {"BlockCommentAtTopLevel", "/*", 7, 0, {}},
    {"LineCommentAtTopLevel", "//", 7, 0, {}},
    {"HashCommentAtTopLevel", "#", 7, 0, {}},
    {"SlashAtTopLevel", "/", 7, 0, {}},
    {"SlashThatBeginsNoComment", "/x", 7, 0, {}},
    {"BlockCommentInAnObject", "{/* a */}", 7, 1, {"2"}},
    {"HashCommentAfterAValue", "[1 #", 7, 3, {"1", "5:1"}},
    {"CommentRightAfterANumber", "[1/*", 7, 2, {"1", "5:1"}},
    {"CommentAfterTheDocument", "{} //", 7, 3, {"2", "4"}},
    {"SlashAsTheLastByte", "{\"a\":1}/", 7, 7, {"2", "8:a", "5:1", "4"}},
    {"SlashAsTheLastByteOfAnOpenDocument", "[/", 7, 1, {"1"}},
    {"HashAsTheLastByte", "{\"a\":1}#", 7, 7, {"2", "8:a", "5:1", "4"}},
    {"SlashInsideALiteral", "[tr/**/ue]", 8, 3, {"1"}},
    // Other bytes.
    {"ByteOrderMark", "\xEF\xBB\xBF{}", 8, 0, {}},
    {"ControlByteAtTopLevel", "\x01", 2, 0, {}},
    {"ZeroByteAtTopLevel", kZero, 2, 0, {}},
    {"VerticalTab", "[\v1]", 2, 1, {"1"}},
    {"FormFeed", "[\f1]", 2, 1, {"1"}},
    {"ControlByteAfterTheDocument", "[]\x1B", 2, 2, {"1", "3"}},
    {"ControlByteInALiteral", "[t\x01", 2, 2, {"1"}},
    {"ControlByteWhereAColonBelongs", "{\"a\"\x01", 2, 4, {"2", "8:a"}},
    {"DeleteByteOutsideAString", "[\x7F]", 8, 1, {"1"}},
};

TEST(JsonParser, RefusesTheseTextsWithCodeAndPositionHoweverTheyAreCut) {
  for (const RefusedCase &row : kRefused) {
    SCOPED_TRACE(row.name);

    const Outcome outcome = FeedEveryWay(row.text);
    EXPECT_EQ(outcome.code, row.code);
    EXPECT_EQ(outcome.taken, row.taken);
    EXPECT_EQ(outcome.events, row.events);
  }
}

TEST(JsonParser, TakesEveryByteFrom32InAStringButQuoteAndBackslash) {
  for (int byte = 32; byte < 256; ++byte) {
    if (byte == '"' || byte == '\\') continue;
    const std::string data = std::string(20, 'a') + static_cast<char>(byte) + std::string(20, 'b');
    const Outcome outcome = Feed("\"" + data + "\"", 1000);
    EXPECT_EQ(outcome.code, 0) << byte;
    EXPECT_EQ(outcome.events, Events{"7:" + data}) << byte;
  }
}

TEST(JsonParser, FindsAControlByteAtEveryPlaceInAString) {
  for (int byte = 0; byte < 32; ++byte) {
    const int code = byte == '\t' || byte == '\n' || byte == '\r' ? 8 : 2;
    for (size_t place = 0; place < 40; ++place) {
      std::string text = "\"" + std::string(40, 'a') + "\"";
      text[1 + place] = static_cast<char>(byte);
      const Outcome outcome = Feed(text, 1000);
      EXPECT_EQ(outcome.code, code) << byte << " at " << place;
      EXPECT_EQ(outcome.taken, 1 + place) << byte << " at " << place;
    }
  }
}

TEST(JsonParser, FindsQuoteAndBackslashAtEveryPlaceInAString) {
  for (size_t place = 0; place < 40; ++place) {
    const std::string before(place, 'a');
    EXPECT_EQ(Feed("[\"" + before + "\"]", 1000).events, (Events{"1", "7:" + before, "3"}));
    const std::string after(40 - place, 'b');
    EXPECT_EQ(Feed("[\"" + before + "\\t" + after + "\"]", 1000).events,
              (Events{"1", "7:" + before + "\t" + after, "3"}));
  }
}

// ---- Comments ----

struct CommentCase {
  const char *name;
  const char *text;
  bool blockAndLine;
  bool hash;
  int code;
  size_t taken;
  Events events;
};

const CommentCase kComments[] = {
    {"BlockBetweenAllTokens",
     "/*a*/{/*b*/\"k\"/*c*/:/*d*/1/*e*/,/*f*/\"l\":[/*g*/]/*h*/}/*i*/",
     true,
     false,
     0,
     59,
     {"2", "8:k", "5:1", "8:l", "1", "3", "4"}},
    {"LineCommentEndsAtTheLineFeed", "[//a\n1//b\r\n]", true, false, 0, 12, {"1", "5:1", "3"}},
    {"StarsAndSlashesInABlock", "[/***/1,/* * / ** // */2]", true, false, 0, 25, {"1", "5:1", "5:2", "3"}},
    {"HighBytesInComments", "[/*\xD0\x96*/]//\xD0\x96\n", true, false, 0, 13, {"1", "3"}},
    {"Hash", "#a\n[#b\n1]#", false, true, 0, 10, {"1", "5:1", "3"}},
    {"HashInsideAStringIsData", "[\"#\"]", false, true, 0, 5, {"1", "7:#", "3"}},
    {"CommentStartInsideAStringIsData", "[\"/*\"]", true, false, 0, 6, {"1", "7:/*", "3"}},
    {"OpenBlockIsNoError", "[/*", true, false, 0, 3, {"1"}},
    {"BlockWhenOnlyHashIsAllowed", "[/*", false, true, 7, 1, {"1"}},
    {"HashWhenOnlyBlockIsAllowed", "[#", true, false, 7, 1, {"1"}},
    {"SlashAloneStaysUnexpected", "[/1", true, true, 8, 2, {"1"}},
    {"OpenSlashIsNoError", "[/", true, false, 0, 2, {"1"}},
    {"ControlByteInABlock", "/*\x01", true, false, 2, 2, {}},
    {"ControlByteAfterAStar", "/**\x01", true, false, 2, 3, {}},
    {"ControlByteInALine", "#\x01", false, true, 2, 1, {}},
    {"CommentEndsNoToken", "[1/**/2]", true, false, 8, 6, {"1", "5:1"}},
    {"CommaAfterACommentAtTopLevel", "/**/,", true, false, 11, 4, {}},
};

TEST(JsonParser, AllowsCommentsByTheirFlagsHoweverTheyAreCut) {
  for (const CommentCase &row : kComments) {
    SCOPED_TRACE(row.name);

    JsonParserConfig config = PlainConfig();
    config.allowBlockAndLineComments = row.blockAndLine;
    config.allowHashComments = row.hash;
    const Outcome outcome = FeedEveryWay(row.text, config);
    EXPECT_EQ(outcome.code, row.code);
    EXPECT_EQ(outcome.taken, row.taken);
    EXPECT_EQ(outcome.events, row.events);
  }
}

// ---- Limits ----

TEST(JsonParser, ReportsTheBracketThatGoesBeyondTheNestingLimit) {
  JsonParserConfig config = PlainConfig();
  config.maxNesting = 3;
  EXPECT_EQ(FeedEveryWay("[{\"a\":[]}]", config).code, 0);
  const Outcome outcome = FeedEveryWay("[[[[", config);
  EXPECT_EQ(outcome.code, 5);
  EXPECT_EQ(outcome.taken, 3U);
  EXPECT_EQ(outcome.events, (Events{"1", "1", "1", "1"}));
  EXPECT_EQ(FeedEveryWay("[[[]],[[]],[[{}]]]", config).code, 5);
}

TEST(JsonParser, NestsWithoutLimitWhenNoneIsSet) {
  const size_t depth = 100000;
  Outcome outcome = Feed(std::string(depth, '[') + std::string(depth, ']'), 1000);
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.events.size(), 2 * depth);
  outcome = Feed(std::string(depth, '[') + std::string(depth + 1, ']'), 1000);
  EXPECT_EQ(outcome.code, 3);
  EXPECT_EQ(outcome.taken, 2 * depth);
}

TEST(JsonParser, ChecksTheKindOfEveryOpenStructure) {
  std::string text;
  for (int i = 0; i < 300; ++i) text += i % 3 == 0 ? "{\"a\":" : "[";
  for (int i = 299; i >= 0; --i) text += i % 3 == 0 ? "}" : "]";
  EXPECT_EQ(Feed(text, 7).code, 0);
  text.back() = ']';
  const Outcome outcome = Feed(text, 7);
  EXPECT_EQ(outcome.code, 4);
  EXPECT_EQ(outcome.taken, text.size() - 1);
}

TEST(JsonParser, RefusesATokenThatDoesNotFitTheDataLimit) {
  JsonParserConfig config = PlainConfig();
  config.maxData = 20;  // 19 bytes and the terminator
  for (const uint32_t initial : {0U, 1U, 7U, 16U, 20U, 100U}) {
    config.bufferInitialSize = initial;
    EXPECT_EQ(FeedEveryWay("[\"" + std::string(19, 'x') + "\"]", config).events,
              (Events{"1", "7:" + std::string(19, 'x'), "3"}));
    Outcome outcome = FeedEveryWay("[\"" + std::string(20, 'x') + "\"]", config);
    EXPECT_EQ(outcome.code, 6);
    EXPECT_EQ(outcome.taken, 21U);
    EXPECT_EQ(outcome.events, Events{"1"});
    EXPECT_EQ(FeedEveryWay("[1234567890123456789]", config).code, 0);
    outcome = FeedEveryWay("[12345678901234567890]", config);
    EXPECT_EQ(outcome.code, 6);
    EXPECT_EQ(outcome.taken, 20U);
    // The byte that found no room comes before the bad one behind it.
    outcome = FeedEveryWay("[12345678901234567890.x", config);
    EXPECT_EQ(outcome.code, 6);
    EXPECT_EQ(outcome.taken, 20U);
    outcome = FeedEveryWay("[1234567890123456789x", config);
    EXPECT_EQ(outcome.code, 8);
    EXPECT_EQ(outcome.taken, 20U);
    // An escape that finds no room fails at its last byte.
    outcome = FeedEveryWay("[\"" + std::string(19, 'x') + "\\n\"]", config);
    EXPECT_EQ(outcome.code, 6);
    EXPECT_EQ(outcome.taken, 22U);
    outcome = FeedEveryWay("[\"" + std::string(18, 'x') + "\\u0416\"]", config);
    EXPECT_EQ(outcome.code, 6);
    EXPECT_EQ(outcome.taken, 25U);
    // The limit is a token's, not the document's.
    EXPECT_EQ(FeedEveryWay("[\"0123456789\",\"0123456789\",\"0123456789\"]", config).code, 0);
  }
}

TEST(JsonParser, GrowsTheTokenBufferByDoubling) {
  static std::vector<size_t> sizes;
  sizes.clear();
  JsonParserConfig config = PlainConfig();
  config.reallocHook = [](void *pointer, size_t size) {
    sizes.push_back(size);
    return std::realloc(pointer, size);
  };
  const std::string data(20000, 'x');
  EXPECT_EQ(Feed("\"" + data + "\"", 999, config).events, Events{"7:" + data});
  EXPECT_EQ(sizes, (std::vector<size_t>{8192, 16384, 32768}));
}

TEST(JsonParser, TakesATokenThatJustFitsTheFirstBuffer) {
  static int growths;
  growths = 0;
  JsonParserConfig config = PlainConfig();
  config.reallocHook = [](void *pointer, size_t size) {
    ++growths;
    return std::realloc(pointer, size);
  };
  const std::string data(4095, 'x');
  for (const size_t piece : {1U, 500U, 5000U}) {
    EXPECT_EQ(Feed("\"" + data + "\"", piece, config).events, Events{"7:" + data});
    EXPECT_EQ(growths, 0);
  }
  EXPECT_EQ(Feed("\"" + data + "y\"", 5000, config).events, Events{"7:" + data + "y"});
  EXPECT_EQ(growths, 1);
}

TEST(JsonParser, ReadsALargeDocumentInPieces) {
  std::string text = "[";
  size_t numbers = 0;
  while (text.size() < 10000000) {
    if (numbers++ != 0) text += ",";
    text +=
        "{\"title\":\"\xD0\xA2\xD0\xBE\xD0\xB2\xD0\xB0\xD1\x80\",\"price\":" + std::to_string(numbers) + "}";
  }
  text += "]";
  static size_t ints;
  ints = 0;
  JsonParser parser;
  const JsonParserConfig config = PlainConfig();
  ASSERT_EQ(JsonParserInit(
                &parser, &config,
                [](void *, JsonEvent event, const char *, uint32_t) {
                  if (event == JSON_INT) ++ints;
                  return 0;
                },
                nullptr),
            0);
  for (size_t at = 0; at < text.size(); at += 500) {
    ASSERT_EQ(JsonParserFeed(&parser, text.data() + at,
                             static_cast<uint32_t>(std::min<size_t>(500, text.size() - at)), nullptr),
              0);
  }
  JsonParserFree(&parser);
  EXPECT_EQ(ints, numbers);
}

// ---- Failures of callback and memory ----

TEST(JsonParser, StopsWithTheCallbacksResult) {
  const std::string text = "{\"a\":[1,\"b\",true]}";
  // The byte at which each of the eight events is reported.
  const size_t places[] = {0, 3, 5, 7, 10, 15, 16, 17};
  for (int stop = 0; stop < 8; ++stop) {
    for (size_t piece = 1; piece <= text.size(); ++piece) {
      int left = stop;
      JsonParser parser;
      const JsonParserConfig config = PlainConfig();
      ASSERT_EQ(JsonParserInit(
                    &parser, &config,
                    [](void *user, JsonEvent, const char *, uint32_t) {
                      return (*static_cast<int *>(user))-- == 0 ? -77 : 0;
                    },
                    &left),
                0);
      size_t taken = 0;
      int code = 0;
      for (size_t at = 0; at < text.size() && code == 0; at += piece) {
        uint32_t processed = 0;
        code = JsonParserFeed(&parser, text.data() + at,
                              static_cast<uint32_t>(std::min(piece, text.size() - at)), &processed);
        taken += processed;
      }
      EXPECT_EQ(code, -77);
      EXPECT_EQ(taken, places[stop]) << "event " << stop << " in pieces of " << piece;
      EXPECT_EQ(left, -1) << "no event after the refused one";
      JsonParserFree(&parser);
    }
  }
}

TEST(JsonParser, KeepsItsFirstError) {
  Outcome outcome;
  JsonParser parser;
  const JsonParserConfig config = PlainConfig();
  ASSERT_EQ(JsonParserInit(&parser, &config, Record, &outcome), 0);
  uint32_t processed = 99;
  EXPECT_EQ(JsonParserFeed(&parser, "[?", 2, &processed), 8);
  EXPECT_EQ(processed, 1U);
  EXPECT_EQ(JsonParserFeed(&parser, "1]", 2, &processed), 8);
  EXPECT_EQ(processed, 0U);
  EXPECT_EQ(outcome.events, Events{"1"});
  JsonParserFree(&parser);
}

TEST(JsonParser, TakesAnEmptyPieceAndNoPlaceForTheCount) {
  Outcome outcome;
  JsonParser parser;
  const JsonParserConfig config = PlainConfig();
  ASSERT_EQ(JsonParserInit(&parser, &config, Record, &outcome), 0);
  EXPECT_EQ(JsonParserFeed(&parser, nullptr, 0, nullptr), 0);
  EXPECT_EQ(JsonParserFeed(&parser, "[]", 2, nullptr), 0);
  JsonParserFree(&parser);
  EXPECT_EQ(outcome.events, (Events{"1", "3"}));
}

TEST(JsonParser, ChecksTheGrammarWithoutACallback) {
  JsonParser parser;
  const JsonParserConfig config = PlainConfig();
  ASSERT_EQ(JsonParserInit(&parser, &config, nullptr, nullptr), 0);
  EXPECT_EQ(JsonParserFeed(&parser, "[1}", 3, nullptr), 4);
  JsonParserFree(&parser);
}

TEST(JsonParser, NeedsItsHooks) {
  JsonParser parser;
  EXPECT_EQ(JsonParserInit(&parser, nullptr, Record, nullptr), 1);
  JsonParserConfig config = PlainConfig();
  config.callocHook = nullptr;
  EXPECT_EQ(JsonParserInit(&parser, &config, Record, nullptr), 1);
  config = PlainConfig();
  config.reallocHook = nullptr;
  const Outcome outcome = Feed("\"" + std::string(5000, 'x') + "\"", 100, config);
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.taken, 4096U);
  EXPECT_EQ(Feed(std::string(300, '['), 300, config).code, 1);
}

TEST(JsonParser, InitFreesTheStackWhenTheBufferCannotBeHad) {
  static int calls;
  calls = 0;
  JsonParserConfig config = PlainConfig();
  config.callocHook = [](size_t count, size_t size) {
    return ++calls == 2 ? nullptr : std::calloc(count, size);
  };
  JsonParser parser;
  EXPECT_EQ(JsonParserInit(&parser, &config, Record, nullptr), 1);  // the leak checker sees the rest
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(parser.stack, nullptr);
  calls = 1;
  EXPECT_EQ(JsonParserInit(&parser, &config, Record, nullptr), 1);
}

TEST(JsonParser, ReportsMemoryThatCannotBeHad) {
  JsonParserConfig config = PlainConfig();
  config.reallocHook = [](void *, size_t) -> void * { return nullptr; };
  Outcome outcome = Feed("\"" + std::string(5000, 'x') + "\"", 100, config);
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.taken, 4096U);
  outcome = Feed(std::string(300, '['), 100, config);
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.taken, 256U);
}

TEST(JsonParserMemory, IsNotDoubledBeyondWhat32BitsCount) {
  static int reallocs;
  reallocs = 0;
  JsonParserConfig config = PlainConfig();
  config.reallocHook = [](void *, size_t) -> void * {
    ++reallocs;
    return nullptr;
  };
  JsonParser parser;
  ASSERT_EQ(JsonParserInit(&parser, &config, nullptr, nullptr), 0);
  ASSERT_EQ(JsonParserFeed(&parser, "[\"", 2, nullptr), 0);
  parser.bufferSize = 0x80000000U;  // as after 2 GiB of the token
  parser.bufferFill = parser.bufferSize - 1;
  EXPECT_EQ(JsonParserFeed(&parser, "x", 1, nullptr), 1);
  JsonParserFree(&parser);
  ASSERT_EQ(JsonParserInit(&parser, &config, nullptr, nullptr), 0);
  parser.stackSize = parser.stackFill = 0x80000000U;  // as after as many brackets
  EXPECT_EQ(JsonParserFeed(&parser, "[", 1, nullptr), 1);
  JsonParserFree(&parser);
  EXPECT_EQ(reallocs, 0);
}

TEST(JsonParserMemory, ThereIsNoneForNoParserAndItIsFreedOnce) {
  const JsonParserConfig config = PlainConfig();
  EXPECT_EQ(JsonParserInit(nullptr, &config, nullptr, nullptr), 1);
  JsonParser parser;
  ASSERT_EQ(JsonParserInit(&parser, &config, nullptr, nullptr), 0);
  JsonParserFree(&parser);
  JsonParserFree(&parser);
  EXPECT_EQ(parser.buffer, nullptr);
}

}  // namespace
}  // namespace lumo
