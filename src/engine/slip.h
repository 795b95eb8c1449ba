// engine/slip.h: the customer's slip, UTF-8, laid out for 24 columns: its head and foot, the lines of each
// operation, and its pieces as the register fetches them.
#pragma once

#include <cstdint>

#include "record/enumerations.h"

namespace lumo {

struct Transaction;

void PrintSlipHeader(Transaction *transaction, const char *card_num);
void PrintSlipFooter(Transaction *transaction);
void PrintRrn(Transaction *transaction);  // a line of an operation's own; none without a request id

// The lines of an operation that succeeded, behind those of earlier ones in the body. PrintActivation shows
// `amount`, as it was sent, for a gift card alone.
void PrintActivation(Transaction *transaction, ActivationType type, int32_t amount);
void PrintBalance(Transaction *transaction);
void PrintLink(Transaction *transaction);
void PrintDeposit(Transaction *transaction, int32_t amount);  // no amount line for 0
void PrintExchange(Transaction *transaction);
void PrintPayment(Transaction *transaction);
void PrintConfirm(Transaction *transaction);  // of a cancellation, too
void PrintCashBack(Transaction *transaction);

// Each traces its name. Without a transaction: the pointer's error line, and null or ERR_NO_TRANSACTION.
const char *GetTransReceiptHeader(const Transaction *transaction);
const char *GetTransReceiptFooter(const Transaction *transaction);
const char *GetTransReceiptBody(const Transaction *transaction);
int GetTransactionReceiptSize(const Transaction *transaction);  // of the body, terminator included

}  // namespace lumo
