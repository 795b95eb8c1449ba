// record/receipt.h: the slip's text, UTF-8, laid out for 24 columns, in three pieces; and the buffer reports
// are built in.
#pragma once

#include <cstdint>

#include "foundation/trace.h"

namespace lumo {

struct String;

struct ReceiptBuffer {
  String *text;  // owned
};

ReceiptBuffer *ReceiptCreate();
int ReceiptFree(ReceiptBuffer *receipt);  // returns 0
// A formatted text of 1024 bytes or more is fatal.
int ReceiptPrintf(ReceiptBuffer *receipt, const char *format, ...) LUMO_PRINTF(2, 3);
const char *ReceiptGetText(const ReceiptBuffer *receipt);  // until the next print or ReceiptFree
uint32_t ReceiptGetLength(const ReceiptBuffer *receipt);   // bytes, terminator excluded

}  // namespace lumo
