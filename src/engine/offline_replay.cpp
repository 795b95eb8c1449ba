#include "engine/offline_replay.h"

#include "engine/dispatcher.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "journal/logger.h"
#include "protocol/journal_record.h"
#include "record/enumerations.h"
#include "record/transaction.h"

namespace lumo {
namespace {

// Loads a record that waits to be sent. 0, or why it cannot be.
int LoadWaitingRecord(Transaction *transaction, const char *record) {
  if (record == nullptr) return ERR_JSON_FILE_OPEN;
  transaction->request.type = REQUEST_UNKNOWN;
  const int result = LoadLogRecord(transaction, record);
  // A record cut short has no operation, and one of an unknown operation cannot be written as a request.
  return result == 0 && transaction->request.type == REQUEST_UNKNOWN ? ERR_RESPONSE_STRUCTURE : result;
}

// Sends one record under the number and date it was written with.
int ReplayRecord(Transaction *transaction, const char *record) {
  int result = LoadWaitingRecord(transaction, record);
  if (result != 0) {
    // Note: this line alone has no line feed.
    TraceError("LoadLogRecord returned %d", result);
    return result;
  }
  result = TransactionProcess(transaction);
  if (result != 0) TraceError("Offline record sending error %d\n", result);
  return result;
}

}  // namespace

int OfflinePaymentsProcess() {
  Trace("OfflinePaymentsProcess\n");
  bool all_listed = false;
  const ScopedRecords records(GetOfflineRecords(&all_listed));
  bool all_set_aside = all_listed && DropInterruptedReplay(records.get());
  const OfflineTmpMark mark = MarkOfflineTmp();
  int sent = 0;
  bool all_sent = true;
  for (RecordEntry *entry = records.get(); entry != nullptr;) {
    const ScopedTransaction transaction(TransactionCreate());
    if (ReplayRecord(transaction.get(), entry->text) == 0) {
      ++sent;
    } else {
      all_sent = false;
      if (AppendOfflineTmpEntry(entry) != 0) all_set_aside = false;
    }
    entry = NextOfflineRecord(entry);
  }
  // Note: only a record that failed makes the journal change. When all were sent it stays, and they are
  // offered again. So they are when one could be neither sent nor set aside, or was not even listed, or when
  // an interrupted replay's could not be told from them: the server knows by the request id what it took.
  if (!all_set_aside) {
    TakeBackOfflineTmp(mark);
    return sent;
  }
  const int result = CommitOfflineTmp();
  if (result != 0) TraceError("Records flush failed [%d]\n", result);
  // The register sees that as many were sent as it counted. What is in OFFLINE now was not among them.
  if (all_sent && mark.exists) OthersTookPlaceOfOffline();
  return sent;
}

}  // namespace lumo
