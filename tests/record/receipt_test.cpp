// record/receipt_test.cpp: the buffers that slips and reports are built in.
#include "record/receipt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "foundation/lumostring.h"
#include "record/transaction.h"
#include "support/fatal.h"
#include "support/shop.h"

namespace {

using lumo::ReceiptBuffer;
using testing::AllOf;
using testing::HasSubstr;

class Receipt : public test::Shop {
 protected:
  Receipt() : receipt(lumo::ReceiptCreate()) {}
  ~Receipt() override { lumo::ReceiptFree(receipt); }

  ReceiptBuffer *receipt;
};

TEST_F(Receipt, StartsEmptyInABufferOf256Bytes) {
  EXPECT_STREQ(lumo::ReceiptGetText(receipt), "");
  EXPECT_EQ(lumo::ReceiptGetLength(receipt), 0U);
  EXPECT_EQ(receipt->text->capacity, 256U);
}

TEST_F(Receipt, FreeingReturns0AlsoWithoutAText) {
  EXPECT_EQ(lumo::ReceiptFree(lumo::ReceiptCreate()), 0);
  ReceiptBuffer *bare = lumo::ReceiptCreate();
  lumo::StringFree(bare->text);
  bare->text = nullptr;
  EXPECT_EQ(lumo::ReceiptFree(bare), 0);
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(Receipt, PrintsAppendAndAddNoLineEnd) {
  EXPECT_EQ(lumo::ReceiptPrintf(receipt, "RRN: %16s\n", "123"), 0);
  EXPECT_EQ(lumo::ReceiptPrintf(receipt, "%d %s", 5, "КАРТА"), 0);
  EXPECT_STREQ(lumo::ReceiptGetText(receipt), "RRN:              123\n5 КАРТА");
}

TEST_F(Receipt, LengthIsInBytes) {
  lumo::ReceiptPrintf(receipt, "КАРТА\n");
  EXPECT_EQ(lumo::ReceiptGetLength(receipt), 11U);
}

TEST_F(Receipt, PrintingMakesAMissingText) {
  lumo::StringFree(receipt->text);
  receipt->text = nullptr;
  EXPECT_STREQ(lumo::ReceiptGetText(receipt), "");
  EXPECT_EQ(lumo::ReceiptGetLength(receipt), 0U);
  EXPECT_EQ(lumo::ReceiptPrintf(receipt, "x"), 0);
  EXPECT_STREQ(lumo::ReceiptGetText(receipt), "x");
}

TEST_F(Receipt, ManyLinesGrowTheText) {
  std::string expected;
  for (int i = 0; i < 500; ++i) {
    lumo::ReceiptPrintf(receipt, "%24d\n", i);
    const std::string number = std::to_string(i);
    expected += std::string(24 - number.size(), ' ') + number + "\n";
  }
  EXPECT_EQ(lumo::ReceiptGetText(receipt), expected);
}

TEST_F(Receipt, ALineOf1023BytesIsTaken) {
  const std::string line(1023, 'x');
  EXPECT_EQ(lumo::ReceiptPrintf(receipt, "%s", line.c_str()), 0);
  EXPECT_EQ(lumo::ReceiptGetText(receipt), line);
}

// A line of this length, in a process that ends.
void ExpectFatal(const test::Folder &folder, ReceiptBuffer *receipt, size_t length) {
  const std::string line(length, 'x');
  EXPECT_EXIT(
      {
        test::PrintTraceAtExit(folder);
        lumo::ReceiptPrintf(receipt, "%s", line.c_str());
      },
      test::EndedAsFatal, AllOf(HasSubstr("[ERROR: ASSERT IN receipt"), HasSubstr(": Stack overflow!\n]")));
}

using ReceiptDeathTest = Receipt;

TEST_F(ReceiptDeathTest, ALineOf1024BytesEndsTheProcess) {
  ExpectFatal(folder, receipt, 1024);
}

TEST_F(ReceiptDeathTest, AMuchLongerLineEndsTheProcessToo) {
  ExpectFatal(folder, receipt, 100000);
}

TEST_F(Receipt, AnEmptyConfiguredHeaderIsStillALine) {
  OpenShop(R"("receiptHeader":"")");
  OpenCard();
  const std::string header = lumo::ReceiptGetText(card->header);
  EXPECT_EQ(header.front(), '\n');
  EXPECT_EQ(test::Count(header, "\n"), 5U);
}

struct TerminalCase : test::NamedCase {
  const char *terminalId;
  const char *line;
};
const TerminalCase kTerminalCases[] = {
    {"EightCharactersBehindSixBlanks", "TERM0001", "Терминал       TERM0001\n"},
    {"Empty", "", "Терминал               \n"},
    {"Fourteen", "12345678901234", "Терминал 12345678901234\n"},
    {"LongerIsNotCut", "1234567890123456", "Терминал 1234567890123456\n"},
};

class ReceiptTerminal : public test::Shop, public testing::WithParamInterface<TerminalCase> {};

TEST_P(ReceiptTerminal, IsRightAlignedIn14Columns) {
  OpenShop(std::string(R"("terminalId":")") + GetParam().terminalId + "\"");
  OpenCard();
  EXPECT_THAT(lumo::ReceiptGetText(card->header), HasSubstr(std::string("\n") + GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(Cases, ReceiptTerminal, testing::ValuesIn(kTerminalCases), test::CaseName());

}  // namespace
