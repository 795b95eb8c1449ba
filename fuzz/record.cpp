// fuzz/record.cpp: any text as a journal record.
#include "protocol/journal_record.h"
#include "record/transaction.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::EmptyFolder();
  lumo::Transaction *transaction = lumo::new_transaction();
  lumo::LoadLogRecord(transaction, std::string(reinterpret_cast<const char *>(data), size).c_str());
  lumo::free_transaction(transaction);
  return 0;
}
