#include "engine/completion.h"

#include "foundation/lumostring.h"
#include "journal/logger.h"
#include "protocol/journal_record.h"

namespace lumo {
namespace {

// What an ordinary record takes, so that its text need not grow piece by piece.
constexpr uint32_t kRecordBytes = 4000;

}  // namespace

int WriteTransactionRecord(const Transaction *transaction) {
  const ScopedString record(StringCreate());
  StringReserve(record.get(), kRecordBytes);
  const int result = PrintTransactionRecord(transaction, record.get());
  if (result != 0) return result;
  const char *text = StringGetText(record.get());
  const int log_result = AppendLogRecord(text);
  // Note: the offline journal's result takes the place of the log's.
  return IsOffline(transaction) ? AppendOfflineRecord(text) : log_result;
}

int CompleteOperation(Transaction *transaction, CompletedOperation operation) {
  const int result = WriteTransactionRecord(transaction);
  transaction->completedOperations |= operation;
  return result;
}

}  // namespace lumo
