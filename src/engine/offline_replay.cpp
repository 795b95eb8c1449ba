#include "engine/offline_replay.h"

#include "engine/dispatcher.h"
#include "foundation/trace.h"
#include "journal/logger.h"
#include "lumo.h"
#include "protocol/journal_record.h"
#include "record/transaction.h"

namespace lumo {

namespace {

// Sends one record under the number and date it was written with.
int ReplayRecord(Transaction *transaction, const char *record) {
  // A text that could not be read is not the empty record, which would go to the server as one.
  int result = record != nullptr ? LoadLogRecord(transaction, record) : ERR_JSON_FILE_OPEN;
  if (result != 0) {
    // Deliberate: this line alone has no end.
    TraceError("LoadLogRecord returned %d", result);
    return result;
  }
  result = TransactionProcess(transaction);
  if (result != 0) {
    TraceError("Offline record sending error %d\n", result);
  }
  return result;
}

}  // namespace

int OfflinePaymentsProcess() {
  Trace("OfflinePaymentsProcess\n");
  RecordEntry *records = GetOfflineRecords();
  int sent = 0;
  // A replay that ended between the two steps of its commit left its records there and nowhere else.
  const bool has_earlier_records = OfflineTmpExists();
  bool all_set_aside = true;
  for (RecordEntry *entry = records; entry != nullptr;) {
    Transaction *transaction = new_transaction();
    if (ReplayRecord(transaction, entry->text) == 0) {
      ++sent;
    } else if (AppendOfflineTmpRecord(entry->text) != 0) {
      all_set_aside = false;
    }
    entry = NextOfflineRecord(entry);
    free_transaction(transaction);
  }
  // Deliberate: only a record that failed makes the journal change. When all were sent it stays, and they are
  // offered again.
  // A record that could be neither sent nor set aside stays where it is, and so does the whole journal: the
  // server tells what it has already taken by the request id. What was set aside is then there twice.
  int result = 0;
  if (all_set_aside) {
    result = CommitOfflineTmp();
  } else if (!has_earlier_records) {
    DropOfflineTmp();
  }
  if (result != 0) {
    TraceError("Records flush failed [%d]\n", result);
  }
  FreeRecordList(records);
  return sent;
}

}  // namespace lumo
