#include "engine/transaction_receipt.h"

#include "foundation/trace.h"
#include "lumo.h"
#include "record/receipt.h"
#include "record/transaction.h"

namespace lumo {

const char *GetTransReceiptHeader(const Transaction *transaction) {
  Trace("GetTransReceiptHeader\n");
  return TraceIfNull(transaction) ? nullptr : ReceiptGetText(transaction->header);
}

const char *GetTransReceiptFooter(const Transaction *transaction) {
  Trace("GetTransReceiptFooter\n");
  return TraceIfNull(transaction) ? nullptr : ReceiptGetText(transaction->footer);
}

const char *GetTransReceiptBody(const Transaction *transaction) {
  Trace("GetTransReceiptBody\n");
  return TraceIfNull(transaction) ? nullptr : ReceiptGetText(transaction->body);
}

int GetTransactionReceiptSize(const Transaction *transaction) {
  Trace("GetTransactionReceiptSize\n");
  return TraceIfNull(transaction) ? ERR_NO_TRANSACTION
                                  : static_cast<int>(ReceiptGetLength(transaction->body)) + 1;
}

}  // namespace lumo
