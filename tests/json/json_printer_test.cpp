// json/json_printer_test.cpp: events in, JSON text out.
#include "json/json_printer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "json/json_parser.h"

namespace lumo {
namespace {

void Collect(void *user, const char *text, uint32_t length) {
  static_cast<std::string *>(user)->append(text, length);
}

struct Event {
  JsonEvent type;
  std::string data;
};

std::string Print(const std::vector<Event> &events, JsonPrinterFunction print = JsonPrinterRaw) {
  std::string text;
  JsonPrinter printer;
  EXPECT_EQ(JsonPrinterInit(&printer, Collect, &text), 0);
  for (const Event &event : events) {
    // A copy of the exact size, without a terminator.
    const std::vector<char> data(event.data.begin(), event.data.end());
    EXPECT_EQ(print(&printer, event.type, data.data(), static_cast<uint32_t>(data.size())), 0);
  }
  EXPECT_EQ(JsonPrinterFree(&printer), 0);
  return text;
}

const Event kArray{JSON_ARRAY_BEGIN, ""};
const Event kArrayEnd{JSON_ARRAY_END, ""};
const Event kObject{JSON_OBJECT_BEGIN, ""};
const Event kObjectEnd{JSON_OBJECT_END, ""};
Event Key(const std::string &key) {
  return {JSON_KEY, key};
}
Event Text(const std::string &text) {
  return {JSON_STRING, text};
}
Event Int(const std::string &text) {
  return {JSON_INT, text};
}

struct PrintCase {
  const char *name;
  std::vector<Event> events;
  std::string text;
};

const PrintCase kCases[] = {
    {"QuoteInAStringIsEscaped", {kObject, Key("k"), Text("a\"b"), kObjectEnd}, "{\"k\":\"a\\\"b\"}"},
    {"CommaBetweenElements", {kArray, Int("1"), Int("2"), kArrayEnd}, "[1,2]"},
    {"EmptyObject", {kObject, kObjectEnd}, "{}"},
    {"EmptyArray", {kArray, kArrayEnd}, "[]"},
    {"CommaBetweenMembers",
     {kObject, Key("a"), Int("1"), Key("b"), Int("2"), kObjectEnd},
     "{\"a\":1,\"b\":2}"},
    {"CommaAfterAStructure",
     {kArray, kArray, kArrayEnd, kObject, kObjectEnd, Int("1"), kArrayEnd},
     "[[],{},1]"},
    {"StructureAsMember",
     {kObject, Key("a"), kArray, kArrayEnd, Key("b"), kObject, kObjectEnd, kObjectEnd},
     "{\"a\":[],\"b\":{}}"},
    {"Literals",
     {kArray, {JSON_TRUE, ""}, {JSON_FALSE, ""}, {JSON_NULL, ""}, kArrayEnd},
     "[true,false,null]"},
    {"NumbersAreGivenUnchanged",
     {kArray, Int("-12"), {JSON_FLOAT, "1.50e+07"}, Int("007"), kArrayEnd},
     "[-12,1.50e+07,007]"},
    {"ScalarAlone", {Int("1")}, "1"},
    {"EmptyTexts", {kObject, Key(""), Text(""), kObjectEnd}, "{\"\":\"\"}"},
    {"EscapesInAKey", {kObject, Key("a\\\n"), Int("1"), kObjectEnd}, "{\"a\\\\\\n\":1}"},
    {"SlashAndHighBytesPass", {Text("/\xC3\xA9\x7F\x80\xFF")}, "\"/\xC3\xA9\x7F\x80\xFF\""},
    {"ByteOne", {Text("\x01")}, "\"\\u0001\""},
    {"EscapesAmongOtherBytes", {Text("a\"b\\c\nd")}, "\"a\\\"b\\\\c\\nd\""},
};

TEST(JsonPrinter, WritesTheseEventsCompactly) {
  for (const PrintCase &row : kCases) {
    SCOPED_TRACE(row.name);

    EXPECT_EQ(Print(row.events), row.text);
  }
}

TEST(JsonPrinter, EscapesEachByteByItsTable) {
  const char *const escapes[32] = {
      "\\u0000", "\\u0001", "\\u0002", "\\u0003", "\\u0004", "\\u0005", "\\u0006", "\\u0007",
      "\\b",     "\\t",     "\\n",     "\\u000b", "\\f",     "\\r",     "\\u000e", "\\u000f",
      "\\u0010", "\\u0011", "\\u0012", "\\u0013", "\\u0014", "\\u0015", "\\u0016", "\\u0017",
      "\\u0018", "\\u0019", "\\u001a", "\\u001b", "\\u001c", "\\u001d", "\\u001e", "\\u001f"};
  for (int byte = 0; byte < 256; ++byte) {
    std::string want(1, static_cast<char>(byte));
    if (byte < 32) want = escapes[byte];
    if (byte == 34) want = "\\\"";
    if (byte == 92) want = "\\\\";
    for (const size_t before : {0U, 7U, 15U, 16U, 31U}) {
      const std::string around(before, 'x');
      EXPECT_EQ(Print({Text(around + static_cast<char>(byte) + around)}),
                "\"" + around + want + around + "\"")
          << byte;
    }
  }
}

TEST(JsonPrinter, WritesTextsOfEveryLength) {
  for (size_t length = 0; length < 1600; ++length) {
    const std::string text(length, 'x');
    ASSERT_EQ(Print({kArray, Text(text), Int("1"), kArrayEnd}), "[\"" + text + "\",1]");
    const std::string breaks(length, '\x02');
    std::string escaped;
    for (size_t i = 0; i < length; ++i) escaped += "\\u0002";
    ASSERT_EQ(Print({Text(breaks)}), "\"" + escaped + "\"");
    ASSERT_EQ(Print({kArray, Int(std::string(length + 1, '7')), kArrayEnd}),
              "[" + std::string(length + 1, '7') + "]");
  }
}

TEST(JsonPrinter, WritesNullDataAsTheEmptyText) {
  std::string text;
  JsonPrinter printer;
  ASSERT_EQ(JsonPrinterInit(&printer, Collect, &text), 0);
  JsonPrinterRaw(&printer, JSON_STRING, nullptr, 5);
  EXPECT_EQ(text, "\"\"");
}

TEST(JsonPrinter, StartsWithATabAtLevelZeroJustEntered) {
  std::string text;
  JsonPrinter printer;
  ASSERT_EQ(JsonPrinterInit(&printer, Collect, &text), 0);
  EXPECT_STREQ(printer.indent, "\t");
  EXPECT_EQ(printer.level, 0);
  EXPECT_TRUE(printer.justEntered);
  EXPECT_TRUE(printer.first);
  EXPECT_FALSE(printer.afterKey);
  EXPECT_EQ(JsonPrinterInit(nullptr, Collect, &text), 1);
  EXPECT_EQ(JsonPrinterInit(&printer, nullptr, &text), 1);
}

// What the sink got so far, and in how many calls.
struct Taken {
  std::string text;
  int calls = 0;
};

void Take(void *user, const char *text, uint32_t length) {
  auto *taken = static_cast<Taken *>(user);
  taken->text.append(text, length);
  ++taken->calls;
}

TEST(JsonPrinter, HandsADocumentOnWhenItIsComplete) {
  Taken taken;
  JsonPrinter printer;
  ASSERT_EQ(JsonPrinterInit(&printer, Take, &taken), 0);
  JsonPrinterRaw(&printer, JSON_OBJECT_BEGIN, nullptr, 0);
  JsonPrinterRaw(&printer, JSON_KEY, "a", 1);
  JsonPrinterRaw(&printer, JSON_INT, "1", 1);
  JsonPrinterRaw(&printer, JSON_OBJECT_END, nullptr, 0);
  EXPECT_EQ(taken.text, "{\"a\":1}");
  EXPECT_EQ(taken.calls, 1);
}

TEST(JsonPrinter, HandsADocumentLeftOpenOnWhenItIsFreed) {
  Taken taken;
  JsonPrinter printer;
  ASSERT_EQ(JsonPrinterInit(&printer, Take, &taken), 0);
  JsonPrinterRaw(&printer, JSON_ARRAY_BEGIN, nullptr, 0);
  JsonPrinterRaw(&printer, JSON_TRUE, nullptr, 0);
  EXPECT_EQ(JsonPrinterFree(&printer), 0);
  EXPECT_EQ(taken.text, "[true");
}

TEST(JsonPrinter, CallsItsSinkForLargePiecesOnly) {
  Taken taken;
  JsonPrinter printer;
  ASSERT_EQ(JsonPrinterInit(&printer, Take, &taken), 0);
  JsonPrinterRaw(&printer, JSON_ARRAY_BEGIN, nullptr, 0);
  for (int i = 0; i < 10000; ++i) JsonPrinterRaw(&printer, JSON_STRING, "0123456", 7);
  JsonPrinterRaw(&printer, JSON_ARRAY_END, nullptr, 0);
  EXPECT_EQ(taken.text.size(), 100001U);
  EXPECT_LE(taken.calls, 200);
}

TEST(JsonPrinter, PrettyPutsEachItemOnALineWithATabForEachLevel) {
  EXPECT_EQ(Print({kObject, Key("a"), kArray, Int("1"), kObject, Key("b"), Text("c"), kObjectEnd, kArrayEnd,
                   Key("d"), Int("2"), kObjectEnd},
                  JsonPrinterPretty),
            "{\n\t\"a\": [\n\t\t1,\n\t\t{\n\t\t\t\"b\": \"c\"\n\t\t}\n\t],\n\t\"d\": 2\n}");
}

TEST(JsonPrinter, PrettyBreaksTheLineBeforeTheBracketOfAnEmptyStructure) {
  EXPECT_EQ(Print({kArray, kObject, kObjectEnd, kArrayEnd}, JsonPrinterPretty), "[\n\t{\n\t}\n]");
}

TEST(JsonPrinter, PrintsSeveralEventsInARow) {
  std::string text;
  JsonPrinter printer;
  ASSERT_EQ(JsonPrinterInit(&printer, Collect, &text), 0);
  EXPECT_EQ(JsonPrinterPrint(&printer, JsonPrinterRaw, int{JSON_OBJECT_BEGIN}, int{JSON_KEY}, "a",
                             uint32_t{1}, int{JSON_ARRAY_BEGIN}, int{JSON_INT}, "12", uint32_t{2},
                             int{JSON_TRUE}, int{JSON_ARRAY_END}, int{JSON_OBJECT_END}, -1),
            0);
  EXPECT_EQ(text, "{\"a\":[12,true]}");
}

// ---- What is printed reads back as the same events ----

void AppendEvent(std::string *events, JsonEvent event, const char *data, uint32_t length) {
  *events += std::to_string(event) + ":" +
             std::string(data != nullptr ? data : "", data != nullptr ? length : 0) + ";";
}

// A random document; depth is bounded by hand since tests may recurse.
void MakeValue(std::mt19937 *random, int depth, std::vector<Event> *events) {
  const auto pick = [&](unsigned count) { return static_cast<unsigned>((*random)() % count); };
  const auto text = [&] {
    std::string bytes;
    for (unsigned i = pick(2) == 0 ? pick(8) : pick(60); i > 0; --i) {
      bytes += static_cast<char>(pick(3) == 0 ? pick(256) : 'a' + pick(26));
    }
    return bytes;
  };
  switch (pick(depth > 0 ? 8 : 6)) {
    case 0:
      events->push_back(Int(std::to_string(static_cast<int>((*random)()))));
      break;
    case 1:
      events->push_back({JSON_FLOAT, std::to_string(pick(1000)) + "." + std::to_string(pick(1000))});
      break;
    case 2:
      events->push_back({pick(2) == 0 ? JSON_TRUE : JSON_FALSE, ""});
      break;
    case 3:
      events->push_back({JSON_NULL, ""});
      break;
    case 4:
    case 5:
      events->push_back(Text(text()));
      break;
    case 6:
      events->push_back(kArray);
      for (unsigned i = pick(5); i > 0; --i) MakeValue(random, depth - 1, events);
      events->push_back(kArrayEnd);
      break;
    default:
      events->push_back(kObject);
      for (unsigned i = pick(5); i > 0; --i) {
        events->push_back(Key(text()));
        MakeValue(random, depth - 1, events);
      }
      events->push_back(kObjectEnd);
      break;
  }
}

TEST(JsonPrinter, ReadsBackAsTheSameEvents) {
  std::mt19937 random(20240);
  JsonParserConfig config{};
  config.callocHook = std::calloc;
  config.reallocHook = std::realloc;
  for (int round = 0; round < 2000; ++round) {
    std::vector<Event> events{kArray};
    MakeValue(&random, 6, &events);
    events.push_back(kArrayEnd);
    std::string want;
    for (const Event &event : events) {
      AppendEvent(&want, event.type, event.data.data(), static_cast<uint32_t>(event.data.size()));
    }
    for (const JsonPrinterFunction print : {JsonPrinterRaw, JsonPrinterPretty}) {
      const std::string text = Print(events, print);
      std::string got;
      JsonParser parser;
      ASSERT_EQ(JsonParserInit(
                    &parser, &config,
                    [](void *user, JsonEvent event, const char *data, uint32_t length) {
                      AppendEvent(static_cast<std::string *>(user), event, data, length);
                      return 0;
                    },
                    &got),
                0);
      ASSERT_EQ(JsonParserFeed(&parser, text.data(), static_cast<uint32_t>(text.size()), nullptr), 0) << text;
      JsonParserFree(&parser);
      ASSERT_EQ(got, want) << text;
    }
  }
}

TEST(JsonPrinterEvents, EndAtTheFirstThatIsRefused) {
  static int printed;
  printed = 0;
  const auto refuse = [](JsonPrinter *, JsonEvent, const char *, uint32_t) {
    ++printed;
    return 7;
  };
  JsonPrinter printer;
  EXPECT_EQ(JsonPrinterPrint(&printer, refuse, JSON_ARRAY_BEGIN, JSON_ARRAY_END, -1), 7);
  EXPECT_EQ(printed, 1);
}

}  // namespace
}  // namespace lumo
