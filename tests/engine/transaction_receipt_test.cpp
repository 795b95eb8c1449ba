// tests/engine/transaction_receipt_test.cpp: the getters of the slip's pieces.
#include "engine/transaction_receipt.h"

#include <gtest/gtest.h>

#include "record/receipt.h"
#include "record/transaction.h"
#include "support/shop.h"

namespace {

using TransactionReceipt = test::Shop;

TEST_F(TransactionReceipt, GettersTraceTheirNamesAndGiveTheirPieces) {
  OpenShop();
  OpenCard();
  lumo::ReceiptPrintf(card->body, "body\n");
  EXPECT_STREQ(lumo::GetTransReceiptHeader(card), lumo::ReceiptGetText(card->header));
  EXPECT_STREQ(lumo::GetTransReceiptFooter(card), "СПАСИБО\n");
  EXPECT_STREQ(lumo::GetTransReceiptBody(card), "body\n");
  EXPECT_EQ(lumo::GetTransactionReceiptSize(card), 6);
  EXPECT_EQ(folder.Trace(),
            "GetTransReceiptHeader\n"
            "GetTransReceiptFooter\n"
            "GetTransReceiptBody\n"
            "GetTransactionReceiptSize\n");
}

TEST_F(TransactionReceipt, GettersWithoutATransactionTraceTheNullPointer) {
  EXPECT_EQ(lumo::GetTransReceiptHeader(nullptr), nullptr);
  EXPECT_EQ(lumo::GetTransReceiptFooter(nullptr), nullptr);
  EXPECT_EQ(lumo::GetTransReceiptBody(nullptr), nullptr);
  EXPECT_EQ(lumo::GetTransactionReceiptSize(nullptr), -100);
  EXPECT_EQ(folder.Trace(),
            "GetTransReceiptHeader\nERROR: Pointer \"trans\" is null\n"
            "GetTransReceiptFooter\nERROR: Pointer \"trans\" is null\n"
            "GetTransReceiptBody\nERROR: Pointer \"trans\" is null\n"
            "GetTransactionReceiptSize\nERROR: Pointer \"trans\" is null\n");
}

TEST_F(TransactionReceipt, AnEmptyBodyHasSize1) {
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::GetTransactionReceiptSize(card), 1);
}

}  // namespace
