// fuzz/transaction_record.h: what the journals get of a transaction, and that it is read back.
#pragma once

#include <string>

#include "foundation/lumostring.h"
#include "protocol/journal_record.h"
#include "record/transaction.h"
#include "target.h"

namespace fuzz {

inline std::string PrintRecord(const lumo::Transaction *transaction) {
  const lumo::ScopedString record(lumo::StringCreate());
  Promise(lumo::PrintTransactionRecord(transaction, record.get()) == 0, "a record that can be written");
  return lumo::StringGetText(record.get());
}

// A written record is one line, loads, and is then written the same.
inline void PromiseRecordStays(const std::string &written) {
  Promise(written.find('\n') == std::string::npos, "a record of one line");
  const lumo::ScopedTransaction loaded(lumo::TransactionCreate());
  loaded.get()->request.type = lumo::REQUEST_UNKNOWN;
  Promise(lumo::LoadLogRecord(loaded.get(), written.c_str()) == 0, "a written record loads");
  Promise(loaded.get()->request.type < lumo::REQUEST_UNKNOWN, "its operation too");
  Promise(PrintRecord(loaded.get()) == written, "a record that stays the same");
}

}  // namespace fuzz
