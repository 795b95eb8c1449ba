#include "engine/receipt.h"

#include <cstdarg>

#include "engine/transaction.h"
#include "foundation/lumostring.h"
#include "foundation/memory.h"
#include "foundation/result_codes.h"
#include "platform/platform.h"

namespace lumo {

namespace {

constexpr int kLineBytes = 1024;  // the longest line and its terminator

}  // namespace

ReceiptBuffer *ReceiptCreate() {
  auto *receipt = static_cast<ReceiptBuffer *>(MemCalloc(1, sizeof(ReceiptBuffer), LUMO_HERE));
  receipt->text = StringCreate();
  return receipt;
}

int ReceiptFree(ReceiptBuffer *receipt) {
  if (receipt->text != nullptr) {
    StringFree(receipt->text);
  }
  MemFree(receipt, LUMO_HERE);
  return 0;
}

int ReceiptPrintf(ReceiptBuffer *receipt, const char *format, ...) {
  char line[kLineBytes] = {};
  if (receipt->text == nullptr) {
    receipt->text = StringCreate();
  }
  va_list arguments;
  va_start(arguments, format);
  const int length = _vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  // The device's runtime answers a line that does not fit with a negative number.
  if (length < 0 || length >= kLineBytes) {
    Fatal("Stack overflow!\n", LUMO_HERE);
  }
  StringAppendN(receipt->text, line, static_cast<uint32_t>(length));
  return 0;
}

const char *ReceiptGetText(const ReceiptBuffer *receipt) {
  return receipt->text != nullptr ? StringGetText(receipt->text) : "";
}

uint32_t ReceiptGetLength(const ReceiptBuffer *receipt) {
  return receipt->text != nullptr ? StringGetLength(receipt->text) : 0;
}

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
