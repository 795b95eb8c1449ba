#include "record/receipt.h"

#include <cstdarg>

#include "foundation/lumostring.h"
#include "foundation/memory.h"
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

}  // namespace lumo
