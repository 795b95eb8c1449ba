// api/header_in_c_test.cpp: lumo.h as a register written in C sees it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/folder.h"

extern "C" int CountCallsInC(void);
extern "C" int CleanInC(void);

namespace {

TEST(HeaderInC, DeclaresEveryCall) {
  EXPECT_EQ(CountCallsInC(), 55);
}

TEST(HeaderInC, CallsTheLibrary) {
  const test::Folder folder;
  EXPECT_EQ(CleanInC(), 0);
  EXPECT_EQ(folder.Trace(), "LUMOClean()\n");
}

}  // namespace
