// foundation/memory_test.cpp: allocation that never fails towards the caller.
#include "foundation/memory.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/allocations.h"
#include "support/fatal.h"
#include "support/folder.h"

namespace {

struct Memory : testing::Test {
  test::Folder folder;
};

TEST_F(Memory, MallocThatFailsIsFatal) {
  EXPECT_FATAL(
      folder,
      {
        test::FailNextAllocation();
        lumo::MemMalloc(10, "bill.cpp", 7);
      },
      "ERROR: ASSERT IN bill.cpp LINE 7: Memory allocation failed! (malloc)\n");
}

TEST_F(Memory, CallocThatFailsIsFatal) {
  EXPECT_FATAL(
      folder,
      {
        test::FailNextAllocation();
        lumo::MemCalloc(2, 10, "bill.cpp", 8);
      },
      "ERROR: ASSERT IN bill.cpp LINE 8: Memory allocation failed! (calloc)\n");
}

TEST_F(Memory, ReallocThatFailsIsFatal) {
  EXPECT_FATAL(
      folder,
      {
        void *pointer = lumo::MemMalloc(10, "bill.cpp", 1);
        test::FailNextAllocation();
        lumo::MemRealloc(pointer, 20, "bill.cpp", 9);
      },
      "ERROR: ASSERT IN bill.cpp LINE 9: Memory allocation failed! (realloc)\n");
}

TEST_F(Memory, ShortCallocNamesNoPlace) {
  EXPECT_FATAL(
      folder,
      {
        test::FailNextAllocation();
        lumo::MemCallocShort(2, 10);
      },
      "ERROR: ASSERT IN --- LINE 0: Memory allocation failed! (calloc)\n");
}

TEST_F(Memory, ShortReallocNamesNoPlace) {
  EXPECT_FATAL(
      folder,
      {
        test::FailNextAllocation();
        lumo::MemReallocShort(nullptr, 10);
      },
      "ERROR: ASSERT IN --- LINE 0: Memory allocation failed! (realloc)\n");
}

TEST_F(Memory, FreeingNullIsTracedAndGoesOn) {
  lumo::MemFree(nullptr, "bill.cpp", 11);
  EXPECT_EQ(folder.Trace(), "ERROR: ERROR IN bill.cpp AT 11:  free null pointer\n");
}

TEST_F(Memory, FreeingIsNotTraced) {
  lumo::MemFree(lumo::MemMalloc(10, "a", 1), "a", 1);
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(Memory, PlaceIsTheBareFileName) {
  lumo::MemFree(nullptr, LUMO_HERE);
  EXPECT_EQ(folder.Trace().rfind("ERROR: ERROR IN memory_test.cpp AT ", 0), 0U);
}

TEST_F(Memory, CallocFillsWithZeros) {
  char *bytes = static_cast<char *>(lumo::MemCalloc(100, 3, "a", 1));
  for (int i = 0; i < 300; ++i) ASSERT_EQ(bytes[i], 0) << i;
  bytes = static_cast<char *>(std::memset(bytes, 1, 300));
  lumo::MemFree(bytes, "a", 1);
  char *again = static_cast<char *>(lumo::MemCallocShort(3, 100));
  for (int i = 0; i < 300; ++i) ASSERT_EQ(again[i], 0) << i;
  lumo::MemFree(again, "a", 1);
}

TEST_F(Memory, ReallocKeepsTheBytes) {
  char *bytes = static_cast<char *>(lumo::MemRealloc(nullptr, 6, "a", 1));
  std::memcpy(bytes, "bytes", 6);
  bytes = static_cast<char *>(lumo::MemReallocShort(bytes, 60000));
  EXPECT_STREQ(bytes, "bytes");
  lumo::MemFree(bytes, "a", 1);
}

TEST_F(Memory, ARequestForNothingIsNoFailure) {
  void *pointers[] = {lumo::MemMalloc(0, "a", 1), lumo::MemCalloc(0, 8, "a", 1),
                      lumo::MemCalloc(8, 0, "a", 1), lumo::MemRealloc(lumo::MemMalloc(1, "a", 1), 0, "a", 1)};
  for (void *pointer : pointers) {
    EXPECT_NE(pointer, nullptr);
    lumo::MemFree(pointer, "a", 1);
  }
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(Memory, CopiesATextWithItsTerminator) {
  const char text[] = "карта";
  const test::Allocations before = test::CountAllocations();
  char *copy = lumo::MemCopyText(text, "a", 1);
  EXPECT_EQ(test::CountAllocations().mallocs, before.mallocs + 1);
  EXPECT_EQ(test::CountAllocations().lastSize, sizeof text);
  EXPECT_NE(copy, text);
  EXPECT_STREQ(copy, text);
  lumo::MemFree(copy, "a", 1);
}

TEST_F(Memory, CopyOfANullTextIsNull) {
  EXPECT_EQ(lumo::MemCopyText(nullptr, "a", 1), nullptr);
}

TEST_F(Memory, FreeingATextLeavesNullAndAMissingOneIsNoTrouble) {
  char *text = lumo::MemCopyText("карта", "a", 1);
  lumo::MemFreeText(&text);
  EXPECT_EQ(text, nullptr);
  lumo::MemFreeText(&text);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(folder.Trace(), "");
}

}  // namespace
