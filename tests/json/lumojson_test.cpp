// json/lumojson_test.cpp: a JSON file or text as a tree.
#include "json/lumojson.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "foundation/files.h"
#include "support/allocations.h"
#include "support/folder.h"

namespace lumo {
namespace {

void AppendTo(void *user, const char *text, uint32_t length) {
  static_cast<std::string *>(user)->append(text, length);
}

// The tree as compact text, by its own walk.
std::string Show(const JsonNode &node) {
  std::string text;
  switch (node.type) {
    case JSON_OBJECT_BEGIN:
      for (uint32_t i = 0; i < node.count; ++i) {
        const JsonMember &member = node.members[i];
        text += (i == 0 ? "" : ",") + std::string(member.key, member.keyLength) + "=" + Show(member.value);
      }
      return "{" + text + "}";
    case JSON_ARRAY_BEGIN:
      for (uint32_t i = 0; i < node.count; ++i) text += (i == 0 ? "" : ",") + Show(node.elements[i]);
      return "[" + text + "]";
    default:
      return std::to_string(node.type) + ":" + std::string(node.text, node.count);
  }
}

class Reader : public testing::Test {
 protected:
  Reader() : reader(JsonReaderCreate()) {}
  ~Reader() override { JsonReaderDestroy(reader); }

  std::string Root() const {
    const JsonNode *root = JsonReaderRoot(reader);
    return root != nullptr ? Show(*root) : "none";
  }

  test::Folder folder;
  JsonReader *reader;
};

using ReadText = Reader;
using ReadFile = Reader;

TEST_F(ReadText, BuildsTheTree) {
  EXPECT_EQ(
      ParseJsonText(reader,
                    "{\"a\":[1,2.5,\"x\",[],{}],\"b\":{\"c\":null,\"d\":true,\"e\":false},\"a\":\"again\"}"),
      0);
  EXPECT_EQ(Root(), "{a=[5:1,6:2.5,7:x,[],{}],b={c=11:,d=9:,e=10:},a=7:again}");
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(ReadText, TerminatesEveryKeyAndText) {
  ASSERT_EQ(ParseJsonText(reader, "{\"key\":\"text\",\"n\":12,\"t\":true,\"empty\":\"\"}"), 0);
  const JsonNode *root = JsonReaderRoot(reader);
  ASSERT_NE(root, nullptr);
  ASSERT_EQ(root->count, 4U);
  EXPECT_STREQ(root->members[0].key, "key");
  EXPECT_STREQ(root->members[0].value.text, "text");
  EXPECT_STREQ(root->members[1].value.text, "12");
  EXPECT_STREQ(root->members[2].value.text, "");
  EXPECT_STREQ(root->members[3].value.text, "");
  EXPECT_EQ(root->members[3].value.count, 0U);
}

TEST_F(ReadText, KeepsExactBytes) {
  ASSERT_EQ(ParseJsonText(reader, "{\"a\\u0000b\":\"c\\u0000d\xD0\x96\\\"\"}"), 0);
  const JsonMember &member = JsonReaderRoot(reader)->members[0];
  EXPECT_EQ(std::string(member.key, member.keyLength), std::string("a\0b", 3));
  EXPECT_EQ(std::string(member.value.text, member.value.count), std::string("c\0d\xD0\x96\"", 6));
}

TEST_F(ReadText, ScalarAndOpenAndEmptyTextsHaveNoRoot) {
  for (const char *text : {"", " ", "1 ", "1", "\"a\"", "true", "{", "{\"a\":1", "[[]"}) {
    EXPECT_EQ(ParseJsonText(reader, text), 0) << text;
    EXPECT_EQ(JsonReaderRoot(reader), nullptr) << text;
  }
  EXPECT_EQ(ParseJsonText(reader, nullptr), 0);
  EXPECT_EQ(JsonReaderRoot(reader), nullptr);
  EXPECT_EQ(folder.Trace(), "");
}

struct SyntaxCase {
  const char *text;
  const char *trace;
};

TEST_F(ReadText, TracesCodeAndPositionOfAnError) {
  const SyntaxCase cases[] = {
      {"{\"a\":1}x", "ERROR: JSON Parser Error 8 7\n"},  {"]", "ERROR: JSON Parser Error 3 0\n"},
      {"[}", "ERROR: JSON Parser Error 4 1\n"},          {" ,", "ERROR: JSON Parser Error 11 1\n"},
      {"[/*", "ERROR: JSON Parser Error 7 1\n"},         {"[\"\\ud800x", "ERROR: JSON Parser Error 9 8\n"},
      {"[\"\\udc00", "ERROR: JSON Parser Error 10 7\n"}, {"[\x02", "ERROR: JSON Parser Error 2 1\n"},
  };
  for (const SyntaxCase &row : cases) {
    folder.ClearTrace();
    EXPECT_EQ(ParseJsonText(reader, row.text), -303) << row.text;
    EXPECT_EQ(folder.Trace(), row.trace) << row.text;
    EXPECT_EQ(JsonReaderRoot(reader), nullptr) << row.text;
  }
}

TEST_F(ReadText, KeepsTheRootThatWasThereWhenAParseFails) {
  ASSERT_EQ(ParseJsonText(reader, "[1]"), 0);
  ASSERT_EQ(ParseJsonText(reader, "[2}"), -303);
  EXPECT_EQ(Root(), "[5:1]");
  ASSERT_EQ(ParseJsonText(reader, "{\"a\":\"b\"}"), 0);
  EXPECT_EQ(Root(), "{a=7:b}");
}

TEST_F(ReadText, NullReaderIs304) {
  EXPECT_EQ(ParseJsonText(nullptr, "{}"), -304);
  EXPECT_EQ(folder.Trace(), "");
  EXPECT_EQ(JsonReaderRoot(nullptr), nullptr);
  JsonReaderDestroy(nullptr);
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(ReadText, TakesADepthOf100000) {
  const size_t depth = 100000;
  std::string text;
  for (size_t i = 0; i < depth; ++i) text += i % 2 == 1 ? "[" : "{\"a\":";
  for (size_t i = depth; i > 0; --i) text += i % 2 == 0 ? "]" : "}";
  ASSERT_EQ(ParseJsonText(reader, text.c_str()), 0);
  const JsonNode *node = JsonReaderRoot(reader);
  ASSERT_NE(node, nullptr);
  size_t found = 1;
  while (node->count != 0) {
    node = node->type == JSON_ARRAY_BEGIN ? &node->elements[0] : &node->members[0].value;
    ++found;
  }
  EXPECT_EQ(found, depth);
}

TEST_F(ReadText, KeepsEveryItemOfALargeDocument) {
  std::string text = "[";
  const uint32_t goods = 150000;
  for (uint32_t i = 0; i < goods; ++i) {
    text +=
        (i == 0 ? "" : ",") + ("{\"id\":" + std::to_string(i) + ",\"title\":\"" + std::string(i % 50, 't') +
                               "\",\"bonus\":[" + std::to_string(i % 7) + "]}");
  }
  text += ",\"" + std::string(1000000, 'z') + "\"]";
  ASSERT_GT(text.size(), 10000000U);
  ASSERT_EQ(ParseJsonText(reader, text.c_str()), 0);
  const JsonNode *root = JsonReaderRoot(reader);
  ASSERT_EQ(root->count, goods + 1);
  for (uint32_t i = 0; i < goods; ++i) {
    const JsonNode &good = root->elements[i];
    ASSERT_EQ(good.count, 3U);
    ASSERT_EQ(JsonInt32(good.members[0].value), static_cast<int32_t>(i));
    ASSERT_EQ(good.members[1].value.count, i % 50);
    ASSERT_EQ(std::strlen(good.members[1].value.text), i % 50);
    ASSERT_EQ(JsonInt32(good.members[2].value.elements[0]), static_cast<int32_t>(i % 7));
  }
  EXPECT_EQ(std::strlen(root->elements[goods].text), 1000000U);
}

TEST_F(ReadText, TakesFewPiecesOfMemoryHoweverManyItemsThereAre) {
  const auto calls = [](int goods) {
    std::string text = "[";
    for (int i = 0; i < goods; ++i) {
      text += std::string(i == 0 ? "" : ",") + "{\"title\":\"a title\",\"cnt\":[1,2,3]}";
    }
    text += "]";
    const test::Allocations before = test::CountAllocations();
    JsonReader *own = JsonReaderCreate();
    EXPECT_EQ(ParseJsonText(own, text.c_str()), 0);
    EXPECT_EQ(JsonReaderRoot(own)->count, static_cast<uint32_t>(goods));
    JsonReaderDestroy(own);
    const test::Allocations after = test::CountAllocations();
    return after.mallocs + after.callocs + after.reallocs - before.mallocs - before.callocs - before.reallocs;
  };
  EXPECT_LE(calls(1), 6);
  EXPECT_LE(calls(100), 8);
  EXPECT_LE(calls(1000), 12);
  EXPECT_LE(calls(10000), 40);
}

// ---- Files ----

TEST_F(ReadFile, TracesTheNameAndTheBytesOfAFileWithoutMark) {
  folder.Write("A.JSN", "{\"a\":1}");
  EXPECT_EQ(ParseJsonFile(reader, "A.JSN"), 0);
  EXPECT_EQ(Root(), "{a=5:1}");
  EXPECT_EQ(folder.Trace(),
            "parseJsonFile [A.JSN]\n"
            "No BOM found 7B 22 61\n"
            "ERROR: SetFilePointer function failed with error 0\n");
}

TEST_F(ReadFile, SkipsAByteOrderMark) {
  folder.Write("A.JSN", "\xEF\xBB\xBF{\"a\":1}");
  EXPECT_EQ(ParseJsonFile(reader, "A.JSN"), 0);
  EXPECT_EQ(Root(), "{a=5:1}");
  EXPECT_EQ(folder.Trace(), "parseJsonFile [A.JSN]\nByte Order Mark skipping\n");
}

TEST_F(ReadFile, PrintsHighBytesWithTheirSign) {
  folder.Write("A.JSN", "\xEF\xBB\x7F");
  EXPECT_EQ(ParseJsonFile(reader, "A.JSN"), -303);
  EXPECT_EQ(folder.Trace(),
            "parseJsonFile [A.JSN]\n"
            "No BOM found FFFFFFEF FFFFFFBB 7F\n"
            "ERROR: SetFilePointer function failed with error 0\n"
            "ERROR: JSON Parser Error res [8] last character [0]\n" +
                std::string(997, ' ') + "\xEF\xBB\x7F\n");
}

TEST_F(ReadFile, ShortFilesPrintZerosForTheMissingBytes) {
  folder.Write("A.JSN", "{}");
  EXPECT_EQ(ParseJsonFile(reader, "A.JSN"), 0);
  EXPECT_EQ(Root(), "{}");
  EXPECT_EQ(folder.Trace(),
            "parseJsonFile [A.JSN]\n"
            "No BOM found 7B 7D 00\n"
            "ERROR: SetFilePointer function failed with error 0\n");
}

TEST_F(ReadFile, EmptyFileHasNoRootAndNoMarkLine) {
  folder.Write("A.JSN", "");
  EXPECT_EQ(ParseJsonFile(reader, "A.JSN"), 0);
  EXPECT_EQ(JsonReaderRoot(reader), nullptr);
  EXPECT_EQ(folder.Trace(), "parseJsonFile [A.JSN]\n");
}

TEST_F(ReadFile, MissingFileIs307) {
  EXPECT_EQ(ParseJsonFile(reader, "A.JSN"), -307);
  EXPECT_EQ(folder.Trace(), "parseJsonFile [A.JSN]\nERROR: CreateFile function failed with error 2\n");
}

TEST_F(ReadFile, NullNameIs307) {
  EXPECT_EQ(ParseJsonFile(reader, nullptr), -307);
  EXPECT_EQ(folder.Trace().rfind("parseJsonFile [(null)]\nERROR: CreateFile function failed with error ", 0),
            0U);
}

TEST_F(ReadFile, NullReaderIs304AfterTheNameWasTraced) {
  folder.Write("A.JSN", "{}");
  EXPECT_EQ(ParseJsonFile(nullptr, "A.JSN"), -304);
  EXPECT_EQ(folder.Trace(), "parseJsonFile [A.JSN]\n");
}

TEST_F(ReadFile, StrayCharacterIsTracedWithItsChunk) {
  folder.Write("A.JSN", "{\"a\":1} x");
  EXPECT_EQ(ParseJsonFile(reader, "A.JSN"), -303);
  EXPECT_EQ(JsonReaderRoot(reader), nullptr);
  EXPECT_EQ(folder.Trace(),
            "parseJsonFile [A.JSN]\n"
            "No BOM found 7B 22 61\n"
            "ERROR: SetFilePointer function failed with error 0\n"
            "ERROR: JSON Parser Error res [8] last character [8]\n" +
                std::string(991, ' ') + "{\"a\":1} x\n");
}

TEST_F(ReadFile, PositionAndTextOfAnErrorAreThoseOfItsChunk) {
  // The chunks are 1,024 bytes long, counted behind the mark.
  folder.Write("A.JSN", "\xEF\xBB\xBF[" + std::string(1023, ' ') + " 1 ?]");
  EXPECT_EQ(ParseJsonFile(reader, "A.JSN"), -303);
  EXPECT_EQ(folder.Trace(),
            "parseJsonFile [A.JSN]\nByte Order Mark skipping\n"
            "ERROR: JSON Parser Error res [8] last character [3]\n" +
                std::string(995, ' ') + " 1 ?]\n");
}

TEST_F(ReadFile, LongChunkIsTracedWholeAndCutAtAZeroByte) {
  folder.Write("A.JSN", "\xEF\xBB\xBF" + std::string(1023, '[') + "?[[[");
  EXPECT_EQ(ParseJsonFile(reader, "A.JSN"), -303);
  EXPECT_EQ(folder.Trace(),
            "parseJsonFile [A.JSN]\nByte Order Mark skipping\n"
            "ERROR: JSON Parser Error res [8] last character [1023]\n" +
                std::string(1023, '[') + "?\n");
  folder.ClearTrace();
  folder.Write("A.JSN", std::string("\xEF\xBB\xBF[1]\0[2]", 10));
  EXPECT_EQ(ParseJsonFile(reader, "A.JSN"), -303);
  EXPECT_EQ(folder.Trace(),
            "parseJsonFile [A.JSN]\nByte Order Mark skipping\n"
            "ERROR: JSON Parser Error res [2] last character [3]\n" +
                std::string(997, ' ') + "[1]\n");
}

TEST_F(ReadFile, IsClosedAfterwards) {
  for (const char *text : {"{}", "{x", ""}) {
    folder.Write("A.JSN", text);
    ParseJsonFile(reader, "A.JSN");
    EXPECT_EQ(FileDelete("A.JSN"), 0);
  }
}

TEST_F(ReadFile, ReadsTokensThatLieAcrossChunks) {
  std::string text = "[";
  std::string want = "[";
  for (int i = 0; i < 2000; ++i) {
    text += (i == 0 ? "\"" : ",\"") + std::string(static_cast<size_t>(i % 13), 'a') + "\\u0416\"," +
            std::to_string(i * 7919);
    want += (i == 0 ? "7:" : ",7:") + std::string(static_cast<size_t>(i % 13), 'a') +
            "\xD0\x96,5:" + std::to_string(i * 7919);
  }
  folder.Write("A.JSN", text + "]");
  EXPECT_EQ(ParseJsonFile(reader, "A.JSN"), 0);
  EXPECT_EQ(Root(), want + "]");
}

// ---- Values ----

TEST_F(ReadText, StructuresReadAsTheEmptyTextAndZero) {
  ASSERT_EQ(
      ParseJsonText(reader,
                    "[[1],{\"a\":1},\"12\",7,true,null,1.9,\"-3x\",99999999999,-99999999999,\"1\\u00002\"]"),
      0);
  const JsonNode *items = JsonReaderRoot(reader)->elements;
  const char *const texts[] = {"", "", "12", "7", "", "", "1.9", "-3x", "99999999999", "-99999999999", "1"};
  const int32_t numbers[] = {0, 0, 12, 7, 0, 0, 1, -3, INT32_MAX, INT32_MIN, 1};
  for (size_t i = 0; i < 11; ++i) {
    EXPECT_STREQ(JsonText(items[i]), texts[i]) << i;
    EXPECT_EQ(JsonInt32(items[i]), numbers[i]) << i;
    EXPECT_EQ(JsonIsNumber(items[i]), i == 3 || i == 6 || i == 8 || i == 9) << i;
  }
}

TEST(KeyPrefix, MatchesAKeyThatBeginsTheName) {
  const auto matches = [](const char *key, uint32_t length, const char *name) {
    return KeyIsPrefixOf(JsonMember{key, length, JsonNode{}}, name);
  };
  EXPECT_TRUE(matches("timeout", 7, "timeout"));
  EXPECT_TRUE(matches("time", 4, "timeout"));
  EXPECT_TRUE(matches("", 0, "timeout"));
  EXPECT_FALSE(matches("timeouts", 8, "timeout"));
  EXPECT_FALSE(matches("Time", 4, "timeout"));
  EXPECT_FALSE(matches("x", 1, ""));
  EXPECT_TRUE(matches("time\0x", 6, "timeout"));
  EXPECT_TRUE(matches("\0x", 2, "timeout"));
  EXPECT_FALSE(matches("tame\0x", 6, "timeout"));
}

TEST(TracedKey, IsCutTo40Bytes) {
  const std::string key(60, 'k');
  EXPECT_EQ(TracedKeyLength(JsonMember{key.c_str(), 39, JsonNode{}}), 39);
  EXPECT_EQ(TracedKeyLength(JsonMember{key.c_str(), 40, JsonNode{}}), 40);
  EXPECT_EQ(TracedKeyLength(JsonMember{key.c_str(), 60, JsonNode{}}), 40);
  EXPECT_EQ(TracedKeyLength(JsonMember{key.c_str(), 0, JsonNode{}}), 0);
}

// ---- Member writers ----

TEST(MemberWriters, PrintKeyAndValue) {
  std::string text;
  JsonPrinter printer;
  ASSERT_EQ(JsonPrinterInit(&printer, AppendTo, &text), 0);
  JsonPrinterRaw(&printer, JSON_OBJECT_BEGIN, nullptr, 0);
  EXPECT_EQ(WriteIntMember(&printer, "a", 0), 0);
  EXPECT_EQ(WriteIntMember(&printer, "b", INT32_MIN), 0);
  EXPECT_EQ(WriteIntMember(&printer, "c", INT32_MAX), 0);
  EXPECT_EQ(WriteStringMember(&printer, "d", "x\"y"), 0);
  EXPECT_EQ(WriteStringMember(&printer, "e", nullptr), 0);
  EXPECT_EQ(WriteBoolMember(&printer, "f", false), 0);
  EXPECT_EQ(WriteBoolMember(&printer, "g", true), 0);
  WriteKey(&printer, "h");
  JsonPrinterRaw(&printer, JSON_NULL, nullptr, 0);
  JsonPrinterRaw(&printer, JSON_OBJECT_END, nullptr, 0);
  EXPECT_EQ(text,
            "{\"a\":0,\"b\":-2147483648,\"c\":2147483647,\"d\":\"x\\\"y\",\"e\":\"\",\"f\":false,\"g\":true,"
            "\"h\":null}");
}

TEST(MemberWriters, TheFlagIsHandedBackAndChangesNothing) {
  EXPECT_EQ(SetPrinterFlag(7), 7);
  std::string text;
  JsonPrinter printer;
  ASSERT_EQ(JsonPrinterInit(&printer, AppendTo, &text), 0);
  WriteIntMember(&printer, "a", 1);
  EXPECT_EQ(text, "\"a\":1");
  EXPECT_EQ(SetPrinterFlag(0), 0);
}

TEST(LumoJsonReader, WithoutOneNoReadHasFailed) {
  EXPECT_FALSE(JsonReaderReadFailed(nullptr));
}

}  // namespace
}  // namespace lumo
