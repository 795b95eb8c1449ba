#include "record/receipt.h"

#include <cstdarg>

#include "foundation/format.h"
#include "foundation/lumostring.h"
#include "foundation/memory.h"

namespace lumo {
namespace {

constexpr size_t kLineBytes = 1024;  // the longest line and its terminator

}  // namespace

ReceiptBuffer *ReceiptCreate() {
  auto *receipt = static_cast<ReceiptBuffer *>(MemCalloc(1, sizeof(ReceiptBuffer), LUMO_HERE));
  receipt->text = StringCreate();
  return receipt;
}

int ReceiptFree(ReceiptBuffer *receipt) {
  if (receipt->text != nullptr) StringFree(receipt->text);
  MemFree(receipt, LUMO_HERE);
  return 0;
}

int ReceiptPrintf(ReceiptBuffer *receipt, const char *format, ...) {
  char line[kLineBytes];
  if (receipt->text == nullptr) receipt->text = StringCreate();
  va_list arguments;
  va_start(arguments, format);
  const size_t length = FormatText(line, sizeof line, format, arguments);
  va_end(arguments);
  if (length >= kLineBytes) Fatal("Stack overflow!\n", LUMO_HERE);
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
