// engine/completion.h: what is left of an operation that succeeded: its record in the journals and its mark
// in the transaction.
#pragma once

#include "record/transaction.h"

namespace lumo {

// Appends the operation's record to LOG, and to OFFLINE when the operation was completed offline. Returns 0,
// ERR_OFFLINE_SAVE or ERR_JSON_PRINTER_INIT.
int WriteTransactionRecord(const Transaction *transaction);

// Journals the operation and marks it done, whatever the journal answers. Returns the journal's result.
int CompleteOperation(Transaction *transaction, CompletedOperation operation);

}  // namespace lumo
