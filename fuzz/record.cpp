// fuzz/record.cpp: any text as a journal record. Loaded and written, then once more, it is the same text.
#include "foundation/lumostring.h"
#include "protocol/journal_record.h"
#include "record/transaction.h"
#include "target.h"

namespace {

// Whether the text can be loaded, and the record that is written of it: empty when no operation is known.
bool LoadAndWrite(const std::string &text, std::string *out_record) {
  lumo::Transaction *transaction = lumo::TransactionCreate();
  const bool loaded = lumo::LoadLogRecord(transaction, text.c_str()) == 0;
  if (loaded && transaction->request.type < lumo::REQUEST_UNKNOWN) {
    lumo::String *record = lumo::StringCreate();
    fuzz::Promise(lumo::PrintTransactionRecord(transaction, record) == 0, "a record that can be written");
    *out_record = lumo::StringGetText(record);
    lumo::StringFree(record);
  }
  lumo::TransactionFree(transaction);
  return loaded;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::EmptyFolder();
  std::string written, again;
  if (!LoadAndWrite(std::string(reinterpret_cast<const char *>(data), size), &written) || written.empty()) {
    return 0;
  }
  fuzz::Promise(written.find('\n') == std::string::npos, "a record of one line");
  fuzz::Promise(LoadAndWrite(written, &again), "a written record loads");
  fuzz::Promise(again == written, "a record that stays the same");
  return 0;
}
