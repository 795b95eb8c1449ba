// engine/slip_test.cpp: the slip's head, foot and RRN line, and the getters of its pieces.
#include "engine/slip.h"

#include <gtest/gtest.h>

#include "record/receipt.h"
#include "record/transaction.h"
#include "support/shop.h"

namespace {

using Slip = test::Shop;

TEST_F(Slip, HeaderPrintsFiveLinesAndTheFooterOne) {
  OpenShop();
  OpenCard();
  EXPECT_STREQ(lumo::ReceiptGetText(card->header),
               "МАГАЗИН\n"
               "2012/12/05      10:00:00\n"
               "Терминал       TERM0001\n"
               "     *** КАРТА ***\n"
               "    9643001234567890\n");
  EXPECT_STREQ(lumo::ReceiptGetText(card->footer), "СПАСИБО\n");
  EXPECT_EQ(Body(), "");
}

TEST_F(Slip, RrnLineIsRightAlignedIn16Columns) {
  OpenShop();
  OpenCard();
  lumo::TransactionCopyText(card, &card->request.requestId, "123");
  lumo::PrintRrn(card);
  lumo::TransactionCopyText(card, &card->request.requestId, "TERM0121205100000");
  lumo::PrintRrn(card);
  lumo::TransactionCopyText(card, &card->request.requestId, "");
  lumo::PrintRrn(card);
  EXPECT_EQ(Body(),
            "RRN:              123\n"
            "RRN: TERM0121205100000\n"
            "RRN:                 \n");
}

TEST_F(Slip, GettersTraceTheirNamesAndGiveTheirPieces) {
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

TEST_F(Slip, GettersWithoutATransactionTraceTheNullPointer) {
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

TEST_F(Slip, AnEmptyBodyHasSize1) {
  OpenShop();
  OpenCard();
  EXPECT_EQ(lumo::GetTransactionReceiptSize(card), 1);
}

}  // namespace
