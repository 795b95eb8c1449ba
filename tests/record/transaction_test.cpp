// record/transaction_test.cpp: the record, what it starts with, and its memory.
#include "record/transaction.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "config/lumoconfig.h"
#include "record/receipt.h"
#include "support/allocations.h"
#include "support/fatal.h"
#include "support/shop.h"

namespace {

using lumo::Transaction;

using TransactionRecord = test::Shop;

TEST_F(TransactionRecord, StartsWithTheConnectionSettings) {
  OpenShop(R"("serverAddr":"http://10.0.0.5:80/ws","serverAltAddr":"http://10.0.0.6:80/ws","timeout":17,)"
           R"("sslMode":1)");
  card = lumo::TransactionCreate();
  EXPECT_STREQ(card->serverAddr, "http://10.0.0.5:80/ws");
  EXPECT_STREQ(card->serverAltAddr, "http://10.0.0.6:80/ws");
  EXPECT_NE(card->serverAddr, lumo::Settings().serverAddr) << "the record owns a copy";
  EXPECT_EQ(card->timeout, 17);
  EXPECT_EQ(card->sslMode, 1);
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(TransactionRecord, StartsWithAllElseZeroAndEmptyReceipts) {
  OpenShop();
  card = lumo::TransactionCreate();
  EXPECT_STREQ(lumo::ReceiptGetText(card->header), "");
  EXPECT_STREQ(lumo::ReceiptGetText(card->body), "");
  EXPECT_STREQ(lumo::ReceiptGetText(card->footer), "");

  std::vector<char> bytes(offsetof(Transaction, serverAddr));
  std::memcpy(bytes.data(), static_cast<const void *>(card), bytes.size());
  EXPECT_EQ(bytes, std::vector<char>(bytes.size(), '\0'));
  EXPECT_EQ(card->completedOperations, 0U);
}

TEST_F(TransactionRecord, LeavesAbsentAddressesNullAndTracesThem) {
  folder.Write("CONFIG", R"({"timeout":3})");
  ASSERT_EQ(lumo::LoadConfig(), 0);
  folder.ClearTrace();
  card = lumo::TransactionCreate();
  EXPECT_EQ(card->serverAddr, nullptr);
  EXPECT_EQ(card->serverAltAddr, nullptr);
  EXPECT_EQ(folder.Trace(), "ERROR: trans_strcpy src == NULL\nERROR: trans_strcpy src == NULL\n");
}

TEST_F(TransactionRecord, FreeingReturns0AlsoWithoutARecord) {
  OpenShop();
  EXPECT_EQ(lumo::TransactionFree(nullptr), 0);
  EXPECT_EQ(lumo::TransactionFree(lumo::TransactionCreate()), 0);
  EXPECT_EQ(folder.Trace(), "");
}

TEST_F(TransactionRecord, PiecesAreZeroFilledAlignedAndApart) {
  OpenShop();
  OpenCard();
  const size_t sizes[] = {0, 1, 15, 16, 17, 40, 500, 511, 512, 513, 2000, 2047, 2048, 2049, 5000, 100000};
  struct Piece {
    unsigned char *bytes;
    size_t size;
    unsigned char mark;
  };
  std::vector<Piece> pieces;
  for (int round = 0; round < 20; ++round) {
    for (const size_t size : sizes) {
      auto *bytes = static_cast<unsigned char *>(lumo::TransactionAllocate(card, size));
      ASSERT_NE(bytes, nullptr);
      EXPECT_EQ(reinterpret_cast<uintptr_t>(bytes) % alignof(int64_t), 0U) << size;
      for (size_t i = 0; i < size; ++i) ASSERT_EQ(bytes[i], 0) << size;
      const auto mark = static_cast<unsigned char>(pieces.size() % 255 + 1);
      std::memset(bytes, mark, size);
      pieces.push_back({bytes, size, mark});
    }
  }
  for (const Piece &piece : pieces) {
    for (size_t i = 0; i < piece.size; ++i) ASSERT_EQ(piece.bytes[i], piece.mark) << piece.size;
  }
}

TEST_F(TransactionRecord, ManySmallPiecesTakeFewAllocations) {
  OpenShop();
  OpenCard();
  const int before = test::CountAllocations().callocs;
  for (int i = 0; i < 10000; ++i) lumo::TransactionAllocate(card, 16);
  EXPECT_LT(test::CountAllocations().callocs - before, 100);
}

TEST_F(TransactionRecord, ALargePieceTakesOneAllocationOfItsSize) {
  OpenShop();
  OpenCard();
  const test::Allocations before = test::CountAllocations();
  lumo::TransactionAllocate(card, 100000);
  const test::Allocations after = test::CountAllocations();
  EXPECT_EQ(after.callocs - before.callocs, 1);
  EXPECT_LT(after.lastSize, 100100U);
}

TEST_F(TransactionRecord, ALargePieceLeavesRoomForSmallOnesBesideTheLast) {
  OpenShop();
  OpenCard();
  const auto *before = static_cast<const char *>(lumo::TransactionAllocate(card, 16));
  lumo::TransactionAllocate(card, 100000);
  const auto *behind = static_cast<const char *>(lumo::TransactionAllocate(card, 16));
  EXPECT_EQ(behind, before + 16);
}

TEST_F(TransactionRecord, TextsAreCopied) {
  OpenShop();
  OpenCard();
  char source[] = "token";
  const char *copy = lumo::TransactionCopyText(card, &card->exchangeToken, source);
  source[0] = 'X';
  EXPECT_EQ(copy, card->exchangeToken);
  EXPECT_STREQ(copy, "token");
}

TEST_F(TransactionRecord, AnOverwrittenTextLivesOn) {
  OpenShop();
  OpenCard();
  const char *first = lumo::TransactionCopyText(card, &card->exchangeToken, "first");
  lumo::TransactionCopyText(card, &card->exchangeToken, "second");
  EXPECT_STREQ(first, "first");
  EXPECT_STREQ(card->exchangeToken, "second");
}

TEST_F(TransactionRecord, ATextCanBeCopiedIntoItsOwnField) {
  OpenShop();
  OpenCard();
  lumo::TransactionCopyText(card, &card->exchangeToken, "again");
  lumo::TransactionCopyText(card, &card->exchangeToken, card->exchangeToken);
  EXPECT_STREQ(card->exchangeToken, "again");
}

TEST_F(TransactionRecord, TextsOfAnyLengthAreKeptWhole) {
  OpenShop();
  OpenCard();
  for (const size_t length : {0U, 1U, 511U, 512U, 2047U, 2048U, 1000000U}) {
    const std::string text(length, 'x');
    lumo::TransactionCopyText(card, &card->exchangeToken, text.c_str());
    EXPECT_EQ(card->exchangeToken, text);
  }
}

TEST_F(TransactionRecord, ANullTextClearsTheFieldAndIsTraced) {
  OpenShop();
  OpenCard();
  lumo::TransactionCopyText(card, &card->exchangeToken, "old");
  EXPECT_EQ(lumo::TransactionCopyText(card, &card->exchangeToken, nullptr), nullptr);
  EXPECT_EQ(card->exchangeToken, nullptr);
  EXPECT_EQ(folder.Trace(), "ERROR: trans_strcpy src == NULL\n");
}

TEST_F(TransactionRecord, OfflineIsTheRequestsFlag) {
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::IsOffline(card), 0);
  card->request.isOffline = 1;
  EXPECT_EQ(lumo::IsOffline(card), 1);
}

TEST_F(TransactionRecord, OnlyAMissingRecordIsTraced) {
  OpenShop();
  OpenCard();
  EXPECT_FALSE(lumo::TraceIfNull(card));
  EXPECT_EQ(folder.Trace(), "");
  EXPECT_TRUE(lumo::TraceIfNull(nullptr));
  EXPECT_EQ(folder.Trace(), "ERROR: Pointer \"trans\" is null\n");
}

TEST(TransactionRecordDeathTest, TheLargestSizesEndTheProcess) {
  const test::Folder folder;
  lumo::Transaction *record = lumo::TransactionCreate();
  EXPECT_EXIT(lumo::TransactionAllocate(record, SIZE_MAX), test::EndedAsFatal, "");
  lumo::TransactionFree(record);
}

}  // namespace
