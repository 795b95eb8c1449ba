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
  String *record = StringCreate();
  StringReserve(record, kRecordBytes);
  int result = PrintTransactionRecord(transaction, record);
  if (result == 0) {
    result = AppendLogRecord(StringGetText(record));
    if (isOffline(transaction)) {
      // Deliberate: the offline journal's result takes the place of the log's.
      result = AppendOfflineRecord(StringGetText(record));
    }
  }
  StringFree(record);
  return result;
}

int CompleteOperation(Transaction *transaction, CompletedOperation operation) {
  const int result = WriteTransactionRecord(transaction);
  transaction->completedOperations |= operation;
  return result;
}

}  // namespace lumo
