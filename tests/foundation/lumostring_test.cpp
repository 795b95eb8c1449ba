// foundation/lumostring_test.cpp: the growable text: its stated growth, its zeros, and what appending costs.
#include "foundation/lumostring.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "support/allocations.h"
#include "support/fatal.h"
#include "support/folder.h"
#include "support/pattern.h"

namespace {

struct TextBuffer : testing::Test {
  TextBuffer() : string(lumo::StringCreate()) {}
  ~TextBuffer() override { lumo::StringFree(string); }
  TextBuffer(const TextBuffer &) = delete;
  TextBuffer &operator=(const TextBuffer &) = delete;

  int Append(size_t count) { return lumo::StringAppend(string, std::string(count, 'a').c_str()); }
  int AppendN(size_t count) {
    return lumo::StringAppendN(string, std::string(count, 'n').c_str(), static_cast<uint32_t>(count));
  }
  void ExpectSize(uint32_t length, uint32_t capacity) const {
    EXPECT_EQ(string->length, length);
    EXPECT_EQ(string->capacity, capacity);
    for (uint32_t i = length; i <= string->capacity; ++i) ASSERT_EQ(string->text[i], 0) << i;
  }

  test::Folder folder;
  lumo::String *string;
};

TEST_F(TextBuffer, BeginsEmptyWithRoomFor256Bytes) {
  ExpectSize(0, 256);
  EXPECT_STREQ(lumo::StringGetText(string), "");
  EXPECT_EQ(lumo::StringGetLength(string), 0U);
}

TEST_F(TextBuffer, HoldsWhatIsAppended) {
  EXPECT_EQ(lumo::StringAppend(string, "Сумма: "), 0);
  EXPECT_EQ(lumo::StringAppendFormat(string, "%d.%02d", 15, 7), 0);
  EXPECT_EQ(lumo::StringAppendN(string, "\nrest", 1), 0);
  EXPECT_STREQ(lumo::StringGetText(string), "Сумма: 15.07\n");
  EXPECT_EQ(lumo::StringGetLength(string), 18U);
}

struct GrowthCase {
  const char *name;
  uint32_t before;  // bytes
  uint32_t count;
  uint32_t append;   // capacity after StringAppend
  uint32_t appendN;  // capacity after StringAppendN
};

const GrowthCase kGrowthCases[] = {
    {"nothing", 0, 0, 256, 256},
    {"one short of full", 0, 255, 256, 256},
    {"full", 0, 256, 256, 512},
    {"one more than full", 0, 257, 512, 512},
    {"large", 0, 1000, 1024, 1024},
    {"large and full", 0, 1024, 1024, 1280},
    {"fills up", 200, 56, 256, 512},
    {"does not fit", 200, 57, 512, 512},
    {"nothing to a full text", 256, 0, 256, 512},
    {"across the exact sizes", 0, 4096, 4096, 4352},
    {"beyond the exact sizes", 4096, 1, 4352, 4352},
    {"far beyond", 0, 100000, 100096, 100096},
    {"far beyond and full", 0, 100096, 100096, 100352},
};

TEST(TextBufferGrowth, GoesInStepsOf256) {
  for (const GrowthCase &row : kGrowthCases) {
    lumo::String *by_append = lumo::StringCreate();
    lumo::StringAppend(by_append, std::string(row.before, 'b').c_str());
    lumo::StringAppend(by_append, std::string(row.count, 'c').c_str());
    EXPECT_EQ(by_append->capacity, row.append) << row.name;
    EXPECT_EQ(by_append->length, row.before + row.count) << row.name;

    lumo::String *by_append_n = lumo::StringCreate();
    lumo::StringAppend(by_append_n, std::string(row.before, 'b').c_str());
    lumo::StringAppendN(by_append_n, std::string(row.count, 'c').c_str(), row.count);
    EXPECT_EQ(by_append_n->capacity, row.appendN) << row.name;
    EXPECT_EQ(by_append_n->length, row.before + row.count) << row.name;

    EXPECT_STREQ(by_append->text, by_append_n->text) << row.name;
    lumo::StringFree(by_append);
    lumo::StringFree(by_append_n);
  }
}

TEST_F(TextBuffer, AppendOf256BytesDoesNotGrowIt) {
  Append(256);
  ExpectSize(256, 256);
}

TEST_F(TextBuffer, AppendNOf256BytesGrowsIt) {
  AppendN(256);
  ExpectSize(256, 512);
}

TEST_F(TextBuffer, AppendFormatOf256BytesDoesNotGrowIt) {
  lumo::StringAppendFormat(string, "%256d", 1);
  ExpectSize(256, 256);
}

TEST_F(TextBuffer, AppendOf1000BytesReallocatesOnceTo1025) {
  const test::Allocations before = test::CountAllocations();
  Append(1000);
  EXPECT_EQ(test::CountAllocations().reallocs, before.reallocs + 1);
  EXPECT_EQ(test::CountAllocations().lastSize, 1025U);
  ExpectSize(1000, 1024);
}

TEST_F(TextBuffer, ReservedRoomTakesOneReallocationAndIsZero) {
  Append(3);
  const test::Allocations before = test::CountAllocations();
  lumo::StringReserve(string, 253);
  ExpectSize(3, 256);
  lumo::StringReserve(string, 1000);
  ExpectSize(3, 1024);
  AppendN(1000);
  ExpectSize(1003, 1024);
  EXPECT_EQ(test::CountAllocations().reallocs, before.reallocs + 1);
}

TEST_F(TextBuffer, BytesBehindTheTextAreZeroAfterEachGrowth) {
  const uint32_t kCapacities[] = {256, 512, 1024, 4096, 4352, 4608, 4864, 8192, 8448, 20224, 70144};
  for (const uint32_t capacity : kCapacities) {
    Append(capacity - string->length - 1);
    ExpectSize(capacity - 1, capacity);
  }
}

TEST_F(TextBuffer, ANullTextAppendsNothing) {
  EXPECT_EQ(lumo::StringAppend(string, nullptr), 0);
  EXPECT_EQ(lumo::StringAppendN(string, nullptr, 5), 0);
  ExpectSize(0, 256);
}

TEST_F(TextBuffer, AppendNStopsCopyingAtAZeroByteYetCountsAll) {
  EXPECT_EQ(lumo::StringAppendN(string, "ab\0cd", 5), 0);
  EXPECT_STREQ(lumo::StringGetText(string), "ab");
  EXPECT_EQ(lumo::StringGetLength(string), 5U);
  EXPECT_EQ(std::memcmp(string->text, "ab\0\0\0\0", 6), 0);
}

TEST_F(TextBuffer, AppendAfterACutOneConcatenates) {
  lumo::StringAppendN(string, "ab\0cd", 5);
  lumo::StringAppend(string, "xyz!");
  EXPECT_STREQ(lumo::StringGetText(string), "abxyz!");
  EXPECT_EQ(lumo::StringGetLength(string), 9U);
  lumo::StringAppendN(string, "\0", 1);
  lumo::StringAppendFormat(string, "%d", 5);
  EXPECT_STREQ(lumo::StringGetText(string), "abxyz!5");
  ExpectSize(11, 256);
}

TEST_F(TextBuffer, AppendNReadsNoMoreThanCounted) {
  const char bytes[3] = {'a', 'b', 'c'};
  lumo::StringAppendN(string, bytes, 3);
  EXPECT_STREQ(lumo::StringGetText(string), "abc");
}

TEST_F(TextBuffer, FormatOf1023BytesIsAppended) {
  EXPECT_EQ(lumo::StringAppendFormat(string, "%s", std::string(1023, 'f').c_str()), 0);
  EXPECT_EQ(lumo::StringGetText(string), std::string(1023, 'f'));
  ExpectSize(1023, 1024);
}

// The line of the message is where the check stands, so it is cut out of the expectation.
void ExpectTooLong(size_t length) {
  test::Folder folder;
  lumo::String *string = lumo::StringCreate();
  const std::string text(length, 'f');
  EXPECT_EXIT(
      {
        test::PrintTraceAtExit(folder);
        lumo::StringAppendFormat(string, "%s", text.c_str());
      },
      test::EndedAsFatal,
      test::ContainsPattern(
          "\\[ERROR: ASSERT IN lumostring.cpp LINE [0-9]+: StringAppendFormat to long message\n\\]"));
  lumo::StringFree(string);
}

TEST(TextBufferFormat, Of1024BytesIsFatal) {
  ExpectTooLong(1024);
}

TEST(TextBufferFormat, OfFarMoreBytesIsFatal) {
  ExpectTooLong(100000);
}

void ExpectNoMemory(uint32_t count) {
  test::Folder folder;
  lumo::String *string = lumo::StringCreate();
  lumo::StringAppend(string, "text");
  EXPECT_EXIT(
      {
        test::PrintTraceAtExit(folder);
        lumo::StringAppendN(string, "a", count);
      },
      test::EndedAsFatal,
      test::ContainsPattern(
          "\\[ERROR: ASSERT IN lumostring.cpp LINE [0-9]+: Memory allocation failed! .realloc.\n\\]"));
  lumo::StringFree(string);
}

TEST(TextBufferLimit, IsWhatALengthOf32BitsCounts) {
  ExpectNoMemory(UINT32_MAX);
  ExpectNoMemory(UINT32_MAX - 4);
  ExpectNoMemory(0xFFFFFF00U - 4);
}

// Rounded up to an eighth as any other, its size would not fit in 32 bits.
TEST_F(TextBuffer, OfNearly4GiBIsAllocatedAsItIs) {
  EXPECT_EXIT(
      {
        std::atexit([] { std::fprintf(stderr, "%zu bytes\n", test::CountAllocations().lastSize); });
        test::FailNextAllocation();
        lumo::StringReserve(string, 0xFFFFFF00U);
      },
      test::EndedAsFatal, testing::HasSubstr("4294967041 bytes"));
}

TEST_F(TextBuffer, GrowthWithoutMemoryIsFatal) {
  EXPECT_EXIT(
      {
        test::PrintTraceAtExit(folder);
        const std::string text(300, 'a');
        test::FailNextAllocation();
        lumo::StringAppend(string, text.c_str());
      },
      test::EndedAsFatal,
      test::ContainsPattern(
          "\\[ERROR: ASSERT IN lumostring.cpp LINE [0-9]+: Memory allocation failed! .realloc.\n\\]"));
}

TEST_F(TextBuffer, NothingIsTraced) {
  Append(5000);
  AppendN(300);
  EXPECT_EQ(folder.Trace(), "");
}

TEST(TextBufferFree, AcceptsATextThatIsGone) {
  test::Folder folder;
  lumo::String *string = lumo::StringCreate();
  std::free(string->text);
  string->text = nullptr;
  lumo::StringFree(string);
  EXPECT_EQ(folder.Trace(), "");
}

// What `length` bytes cost that come one by one.
test::Allocations CostOf(uint32_t length) {
  lumo::String *string = lumo::StringCreate();
  const test::Allocations before = test::CountAllocations();
  for (uint32_t i = 0; i < length; ++i) lumo::StringAppendN(string, "x", 1);
  test::Allocations cost = test::CountAllocations();
  cost.reallocs -= before.reallocs;
  cost.reallocBytes -= before.reallocBytes;
  EXPECT_EQ(string->length, length);
  EXPECT_EQ(string->capacity, (length / 256 + 1) * 256);
  lumo::StringFree(string);
  return cost;
}

TEST(TextBufferCost, PerByteIsTheSameAtAnyLength) {
  const test::Allocations small = CostOf(10000);
  const test::Allocations large = CostOf(1000000);
  // At most eight allocations each time the text doubles, so fewer than seven doublings make at most 56 more.
  EXPECT_LE(large.reallocs, small.reallocs + 56);
  EXPECT_LE(small.reallocBytes, 16U * 10000);
  EXPECT_LE(large.reallocBytes, 16U * 1000000);
}

TEST(TextBufferCost, NoMoreThanAnEighthIsAllocatedInVain) {
  for (uint32_t length = 5000; length < 3000000; length += length / 7) {
    lumo::String *string = lumo::StringCreate();
    lumo::StringAppend(string, std::string(length, 'x').c_str());
    const size_t size = test::CountAllocations().lastSize;
    EXPECT_GT(size, string->capacity);
    EXPECT_LE(size, string->capacity + string->capacity / 8 + 1);
    lumo::StringFree(string);
  }
}

}  // namespace
