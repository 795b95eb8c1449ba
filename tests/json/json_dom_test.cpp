// json/json_dom_test.cpp: events in, calls that build a tree out. The tree here writes down what it is asked.
#include "json/json_dom.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace lumo {
namespace {

struct FakeTree {
  using Structure = int;
  using Value = std::string;

  std::vector<std::string> calls;
  std::vector<std::string> keys;  // owns the copies
  int structures = 0;
  bool refuseStructures = false;
  bool refuseValues = false;
  bool refuseKeys = false;
  int appendResult = 0;

  bool CreateStructure(uint32_t depth, bool is_object, int *created) {
    calls.push_back(std::string("create ") + (is_object ? "object" : "array") + " at depth " +
                    std::to_string(depth));
    *created = ++structures;
    return !refuseStructures;
  }
  bool CreateValue(JsonEvent type, const char *text, uint32_t length, std::string *created) {
    *created = std::to_string(type) + "(" +
               std::string(text != nullptr ? text : "", text != nullptr ? length : 0) + ")";
    return !refuseValues;
  }
  std::string CloseStructure(int structure) { return "structure " + std::to_string(structure); }
  int Append(int structure, const char *key, uint32_t key_length, const std::string &value) {
    const std::string name = key != nullptr ? "[" + std::string(key, key_length) + "]" : "";
    calls.push_back("append to " + std::to_string(structure) + name + ": " + value);
    return appendResult;
  }
  const char *CopyKey(const char *key, uint32_t length) {
    if (refuseKeys) return nullptr;
    keys.emplace_back(key, length);
    return keys.back().c_str();
  }
};

class JsonDom : public testing::Test {
 protected:
  JsonDom() {
    tree.keys.reserve(1000);  // so that a key's text stays where it is
    builder.reallocHook = std::realloc;
    EXPECT_EQ(JsonDomInit(&builder, &tree), 0);
  }
  ~JsonDom() override { JsonDomFree(&builder); }

  int Give(JsonEvent event, const std::string &data = "") {
    return JsonDomCallback<FakeTree>(&builder, event, data.c_str(), static_cast<uint32_t>(data.size()));
  }

  FakeTree tree;
  JsonDomBuilder<FakeTree> builder;
};

TEST_F(JsonDom, AppendsEachValueToTheStructureAroundIt) {
  EXPECT_EQ(Give(JSON_OBJECT_BEGIN), 0);
  EXPECT_EQ(Give(JSON_KEY, "a"), 0);
  EXPECT_EQ(Give(JSON_ARRAY_BEGIN), 0);
  EXPECT_EQ(Give(JSON_INT, "1"), 0);
  EXPECT_EQ(Give(JSON_STRING, "x"), 0);
  EXPECT_FALSE(builder.hasRoot);
  EXPECT_EQ(Give(JSON_ARRAY_END), 0);
  EXPECT_EQ(Give(JSON_KEY, "b"), 0);
  EXPECT_EQ(Give(JSON_NULL), 0);
  EXPECT_EQ(Give(JSON_OBJECT_END), 0);
  EXPECT_EQ(tree.calls, (std::vector<std::string>{"create object at depth 0", "create array at depth 1",
                                                  "append to 2: 5(1)", "append to 2: 7(x)",
                                                  "append to 1[a]: structure 2", "append to 1[b]: 11()"}));
  EXPECT_TRUE(builder.hasRoot);
  EXPECT_EQ(builder.root, "structure 1");
}

TEST_F(JsonDom, HasNoRootWhenTheDocumentIsLeftOpen) {
  Give(JSON_OBJECT_BEGIN);
  EXPECT_FALSE(builder.hasRoot);
}

TEST_F(JsonDom, TakesNoScalarAsRoot) {
  EXPECT_EQ(Give(JSON_INT, "1"), 0);
  EXPECT_FALSE(builder.hasRoot);
  EXPECT_TRUE(tree.calls.empty());
}

TEST_F(JsonDom, SurvivesABracketThatClosesNothing) {
  EXPECT_EQ(Give(JSON_ARRAY_END), 0);
  EXPECT_EQ(Give(JSON_KEY, "a"), 0);
  EXPECT_FALSE(builder.hasRoot);
}

TEST_F(JsonDom, RefusedStructureIsTwelve) {
  tree.refuseStructures = true;
  EXPECT_EQ(Give(JSON_OBJECT_BEGIN), 12);
  EXPECT_EQ(Give(JSON_ARRAY_BEGIN), 12);
}

TEST_F(JsonDom, KeyThatCannotBeCopiedIsOne) {
  Give(JSON_OBJECT_BEGIN);
  tree.refuseKeys = true;
  EXPECT_EQ(Give(JSON_KEY, "a"), 1);
}

TEST_F(JsonDom, ValueThatCannotBeMadeIsOne) {
  Give(JSON_ARRAY_BEGIN);
  tree.refuseValues = true;
  EXPECT_EQ(Give(JSON_INT, "1"), 1);
}

TEST_F(JsonDom, HandsOnTheResultOfAnAppend) {
  Give(JSON_ARRAY_BEGIN);
  tree.appendResult = -306;
  EXPECT_EQ(Give(JSON_INT, "1"), -306);
  Give(JSON_ARRAY_BEGIN);
  EXPECT_EQ(Give(JSON_ARRAY_END), -306);
}

TEST_F(JsonDom, StartsWith1024LevelsAndGrows) {
  EXPECT_EQ(builder.stackSize, 1024U);
  for (int i = 0; i < 3000; ++i) EXPECT_EQ(Give(i % 2 == 0 ? JSON_ARRAY_BEGIN : JSON_OBJECT_BEGIN), 0);
  EXPECT_EQ(builder.stackFill, 3000U);
  EXPECT_EQ(builder.stackSize, 4096U);
  for (int i = 3000; i > 0; --i) EXPECT_EQ(Give(i % 2 == 0 ? JSON_OBJECT_END : JSON_ARRAY_END), 0);
  EXPECT_EQ(builder.root, "structure 1");
}

TEST_F(JsonDom, KeepsTheKeyOfEveryLevelThroughGrowth) {
  for (int i = 0; i < 1500; ++i) {
    ASSERT_EQ(Give(JSON_OBJECT_BEGIN), 0);
    if (i < 900) {
      ASSERT_EQ(Give(JSON_KEY, "k" + std::to_string(i)), 0);
    }
  }
  for (int i = 0; i < 1500; ++i) Give(JSON_OBJECT_END);
  EXPECT_EQ(tree.calls.back(), "append to 1[k0]: structure 2");
  EXPECT_EQ(tree.calls[tree.calls.size() - 2], "append to 2[k1]: structure 3");
}

TEST(JsonDomMemory, InitFailsWithoutHookOrMemory) {
  FakeTree tree;
  JsonDomBuilder<FakeTree> builder;
  builder.reallocHook = nullptr;
  EXPECT_EQ(JsonDomInit(&builder, &tree), 1);
  JsonDomFree(&builder);
  builder.reallocHook = [](void *, size_t) -> void * { return nullptr; };
  EXPECT_EQ(JsonDomInit(&builder, &tree), 1);
  JsonDomFree(&builder);
}

TEST(JsonDomMemory, IsNotDoubledBeyondWhat32BitsCount) {
  FakeTree tree;
  JsonDomBuilder<FakeTree> builder;
  builder.reallocHook = std::realloc;
  ASSERT_EQ(JsonDomInit(&builder, &tree), 0);
  builder.reallocHook = [](void *, size_t) -> void * {
    ADD_FAILURE() << "the size would not fit in its 32 bits";
    return nullptr;
  };
  builder.stackSize = builder.stackFill = 0x80000000U;
  EXPECT_EQ(JsonDomCallback<FakeTree>(&builder, JSON_ARRAY_BEGIN, nullptr, 0), 1);
  JsonDomFree(&builder);
}

TEST(JsonDomMemory, GrowthThatFailsIsOneAndLosesNothing) {
  static int calls;
  calls = 0;
  FakeTree tree;
  JsonDomBuilder<FakeTree> builder;
  builder.reallocHook = [](void *pointer, size_t size) {
    return ++calls == 1 ? std::realloc(pointer, size) : nullptr;
  };
  ASSERT_EQ(JsonDomInit(&builder, &tree), 0);
  for (int i = 0; i < 1024; ++i) {
    ASSERT_EQ(JsonDomCallback<FakeTree>(&builder, JSON_ARRAY_BEGIN, nullptr, 0), 0);
  }
  EXPECT_EQ(JsonDomCallback<FakeTree>(&builder, JSON_ARRAY_BEGIN, nullptr, 0), 1);
  JsonDomFree(&builder);  // the leak checker sees the rest
}

}  // namespace
}  // namespace lumo
