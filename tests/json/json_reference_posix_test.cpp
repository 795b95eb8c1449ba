// json/json_reference_posix_test.cpp: our parser against another one, on random texts. The other parser's
// headers are there on the host only.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "json/json_parser.h"
#include "json/lumojson.h"

namespace lumo {
namespace {

// Both sides write down what they read in one form: integers and floats as the value's canonical text.
struct Notes {
  std::string text;
  bool Note(const std::string &what) {
    text += what + ";";
    return true;
  }
};

std::string FloatText(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "f%.17g", value);
  return text;
}

// What does not fit 64 bits is a float to the reference.
std::string IntegerText(const std::string &digits) {
  errno = 0;
  std::string text = digits[0] == '-' ? "i" + std::to_string(std::strtoll(digits.c_str(), nullptr, 10))
                                      : "i" + std::to_string(std::strtoull(digits.c_str(), nullptr, 10));
  return errno == 0 ? text : FloatText(std::strtod(digits.c_str(), nullptr));
}

struct ReferenceNotes : nlohmann::json_sax<nlohmann::json>, Notes {
  bool null() override { return Note("null"); }
  bool boolean(bool value) override { return Note(value ? "true" : "false"); }
  bool number_integer(number_integer_t value) override { return Note("i" + std::to_string(value)); }
  bool number_unsigned(number_unsigned_t value) override { return Note("i" + std::to_string(value)); }
  bool number_float(number_float_t value, const string_t &) override { return Note(FloatText(value)); }
  bool string(string_t &value) override { return Note("s" + value); }
  bool binary(binary_t &) override { return false; }
  bool start_object(size_t) override { return Note("{"); }
  bool key(string_t &value) override { return Note("k" + value); }
  bool end_object() override { return Note("}"); }
  bool start_array(size_t) override { return Note("["); }
  bool end_array() override { return Note("]"); }
  bool parse_error(size_t, const std::string &, const nlohmann::detail::exception &error) override {
    numberTooLarge = error.id == 406;
    return false;
  }
  bool numberTooLarge = false;
};

int NoteEvent(void *user, JsonEvent event, const char *data, uint32_t length) {
  auto *notes = static_cast<Notes *>(user);
  const std::string text = data != nullptr ? std::string(data, length) : "";
  switch (event) {
    case JSON_ARRAY_BEGIN:
      notes->Note("[");
      break;
    case JSON_ARRAY_END:
      notes->Note("]");
      break;
    case JSON_OBJECT_BEGIN:
      notes->Note("{");
      break;
    case JSON_OBJECT_END:
      notes->Note("}");
      break;
    case JSON_INT:
      notes->Note(IntegerText(text));
      break;
    case JSON_FLOAT:
      notes->Note(FloatText(std::strtod(text.c_str(), nullptr)));
      break;
    case JSON_STRING:
      notes->Note("s" + text);
      break;
    case JSON_KEY:
      notes->Note("k" + text);
      break;
    case JSON_TRUE:
      notes->Note("true");
      break;
    case JSON_FALSE:
      notes->Note("false");
      break;
    case JSON_NULL:
      notes->Note("null");
      break;
  }
  return 0;
}

struct Read {
  bool accepted;
  bool judged;  // false for a number beyond the range of double, which only the reference minds
  std::string notes;
};

bool operator==(const Read &a, const Read &b) {
  return a.accepted == b.accepted && (!a.accepted || a.notes == b.notes);
}

std::ostream &operator<<(std::ostream &out, const Read &read) {
  return out << (read.accepted ? "accepted " : "refused ") << read.notes;
}

Read ByReference(const std::string &text) {
  ReferenceNotes notes;
  const bool accepted = nlohmann::json::sax_parse(text, &notes);
  return {accepted, !notes.numberTooLarge, notes.text};
}

// A line feed ends a number at top level. Depth and values tell whether the document is complete, which the
// parser itself does not ask.
Read ByLumo(const std::string &text, size_t piece) {
  Notes notes;
  JsonParserConfig config{};
  config.callocHook = std::calloc;
  config.reallocHook = std::realloc;
  JsonParser parser;
  EXPECT_EQ(JsonParserInit(&parser, &config, NoteEvent, &notes), 0);
  const std::string ended = text + "\n";
  int code = 0;
  for (size_t at = 0; at < ended.size() && code == 0; at += piece) {
    const std::vector<char> bytes(ended.begin() + static_cast<ptrdiff_t>(at),
                                  ended.begin() + static_cast<ptrdiff_t>(std::min(at + piece, ended.size())));
    code = JsonParserFeed(&parser, bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr);
  }
  // A complete document takes nothing more: a further "0" is refused.
  const bool complete = code == 0 && !notes.text.empty() && JsonParserFeed(&parser, "0 ", 2, nullptr) != 0;
  const uint32_t open = parser.stackFill;
  JsonParserFree(&parser);
  return {complete && open == 0, true, notes.text};
}

class Maker {
 public:
  explicit Maker(unsigned seed) : random_(seed) {}

  unsigned Pick(unsigned count) { return static_cast<unsigned>(random_() % count); }

  std::string Document() {
    std::string text = Space() + Value(5) + Space();
    return text;
  }

  // Takes out, puts in, swaps or repeats a few bytes.
  std::string Damage(std::string text) {
    static const char kBytes[] = "{}[]:,\"\\u0123456789abcdefDd8+-.eEtrunlsx/*# \t\n\r\x01\x7F\xC3";
    for (unsigned times = 1 + Pick(3); times > 0 && !text.empty(); --times) {
      const size_t at = Pick(static_cast<unsigned>(text.size()));
      const char byte = kBytes[Pick(sizeof kBytes - 1)];
      switch (Pick(5)) {
        case 0:
          text.erase(at, 1 + Pick(3));
          break;
        case 1:
          text.insert(at, 1, byte);
          break;
        case 2:
          text[at] = byte;
          break;
        case 3:
          text.insert(at, text.substr(at, 1 + Pick(4)));
          break;
        default:
          text.resize(at);
          break;
      }
    }
    return text;
  }

 private:
  std::string Space() {
    static const char *const kSpaces[] = {"", "", "", " ", "\n", "\t ", "\r\n", "      "};
    return kSpaces[Pick(8)];
  }

  std::string Digits(unsigned most) {
    std::string text;
    for (unsigned count = 1 + Pick(most); count > 0; --count) text += static_cast<char>('0' + Pick(10));
    return text;
  }

  std::string Number() {
    std::string text = Pick(3) == 0 ? "-" : "";
    text += Pick(4) == 0 ? std::string("0") : std::to_string(1 + Pick(9)) + (Pick(2) == 0 ? Digits(15) : "");
    if (Pick(4) == 0) text += "." + Digits(6);
    if (Pick(5) == 0) {
      text += (Pick(2) == 0 ? "e" : "E") +
              std::string(Pick(3) == 0   ? "+"
                          : Pick(2) == 0 ? "-"
                                         : "") +
              Digits(2);
    }
    return text;
  }

  std::string Text() {
    static const char *const kPieces[] = {"a",        "bcd",          " ",
                                          "\xD0\x96", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
                                          "\\n",      "\\\"",         "\\\\",
                                          "\\/",      "\\b\\f\\r\\t", "\\u0041",
                                          "\\u0416",  "\\u20AC",      "\\ud83d\\ude00",
                                          "\\u0000",  "\x7F",         "longer text without any escape in it"};
    std::string text;
    for (unsigned count = Pick(6); count > 0; --count) {
      text += kPieces[Pick(sizeof kPieces / sizeof *kPieces)];
    }
    return "\"" + text + "\"";
  }

  std::string Value(int depth) {
    switch (Pick(depth > 0 ? 9 : 6)) {
      case 0:
      case 1:
        return Number();
      case 2:
      case 3:
        return Text();
      case 4:
        return Pick(2) == 0 ? "true" : "false";
      case 5:
        return "null";
      case 6: {
        std::string text = "[" + Space();
        for (unsigned count = Pick(5), i = 0; i < count; ++i) {
          text += (i == 0 ? "" : ",") + Space() + Value(depth - 1) + Space();
        }
        return text + "]";
      }
      default: {
        std::string text = "{" + Space();
        for (unsigned count = Pick(5), i = 0; i < count; ++i) {
          text +=
              (i == 0 ? "" : ",") + Space() + Text() + Space() + ":" + Space() + Value(depth - 1) + Space();
        }
        return text + "}";
      }
    }
  }

  std::mt19937 random_;
};

TEST(JsonAgainstReference, ReadsRandomDocumentsAlike) {
  Maker maker(1);
  for (int round = 0; round < 5000; ++round) {
    const std::string text = maker.Document();
    const Read want = ByReference(text);
    if (!want.judged) continue;
    ASSERT_TRUE(want.accepted) << text;
    ASSERT_EQ(ByLumo(text, text.size() + 1), want) << text;
    ASSERT_EQ(ByLumo(text, 1 + maker.Pick(20)), want) << text;
  }
}

// The reference checks that strings are UTF-8, which we do not; damage that may make them bad is told apart
// by asking it again with every byte from 128 replaced.
TEST(JsonAgainstReference, RefusesDamagedDocumentsAlike) {
  Maker maker(2);
  int refused = 0;
  for (int round = 0; round < 40000; ++round) {
    std::string text = maker.Damage(maker.Document());
    std::replace_if(
        text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) >= 128; }, '~');
    const Read want = ByReference(text);
    if (!want.judged) continue;
    if (!want.accepted) ++refused;
    ASSERT_EQ(ByLumo(text, text.size() + 1), want) << text;
    ASSERT_EQ(ByLumo(text, 1 + maker.Pick(20)), want) << text;
  }
  EXPECT_GT(refused, 20000);
  EXPECT_LT(refused, 39000);
}

std::string Dump(const JsonNode &node) {
  std::string text;
  switch (node.type) {
    case JSON_OBJECT_BEGIN:
      for (uint32_t i = 0; i < node.count; ++i) {
        text += "k" + std::string(node.members[i].key, node.members[i].keyLength) + ";" +
                Dump(node.members[i].value);
      }
      return "{;" + text + "};";
    case JSON_ARRAY_BEGIN:
      for (uint32_t i = 0; i < node.count; ++i) text += Dump(node.elements[i]);
      return "[;" + text + "];";
    default: {
      Notes notes;
      NoteEvent(&notes, node.type, node.text, node.count);
      return notes.text;
    }
  }
}

TEST(JsonAgainstReference, BuildsTheTreeOfRandomDocuments) {
  Maker maker(3);
  for (int round = 0; round < 3000; ++round) {
    const std::string text = "[" + maker.Document() + "," + maker.Document() + "]";
    JsonReader *reader = JsonReaderCreate();
    ASSERT_EQ(ParseJsonText(reader, text.c_str()), 0);
    ASSERT_EQ(Dump(*JsonReaderRoot(reader)), ByReference(text).notes) << text;
    JsonReaderDestroy(reader);
  }
}

}  // namespace
}  // namespace lumo
