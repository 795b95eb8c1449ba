// fuzz/record.cpp: any text as a journal record. Loaded and written, then once more, it is the same text.
#include "transaction_record.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::EmptyFolder();
  const std::string text(reinterpret_cast<const char *>(data), size);
  const lumo::ScopedTransaction transaction(lumo::TransactionCreate());
  const bool loads = lumo::LoadLogRecord(transaction.get(), text.c_str()) == 0;
  // One of no known operation is never written.
  if (loads && transaction.get()->request.type < lumo::REQUEST_UNKNOWN) {
    fuzz::PromiseRecordStays(fuzz::PrintRecord(transaction.get()));
  }
  return 0;
}
