// engine/transaction_receipt.h: the pieces of a transaction's slip, as the register fetches them.
#pragma once

namespace lumo {

struct Transaction;

// Each traces its name. Without a transaction: the pointer's error line, and null or -100.
const char *GetTransReceiptHeader(const Transaction *transaction);
const char *GetTransReceiptFooter(const Transaction *transaction);
const char *GetTransReceiptBody(const Transaction *transaction);
int GetTransactionReceiptSize(const Transaction *transaction);  // of the body, terminator included

}  // namespace lumo
