#include "protocol/journal_record.h"

#include "foundation/format.h"
#include "foundation/lumostring.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "json/lumojson.h"
#include "protocol/transaction_json.h"
#include "protocol/transaction_request_json.h"

namespace lumo {

int PrintTransactionRecord(const Transaction *transaction, String *output) {
  JsonPrinter printer;
  const int result = JsonPrinterInit(&printer, StringSink, output);
  if (result != 0) {
    TraceError("Create operation request JSON printer init failed [%d]", result);
    return ERR_JSON_PRINTER_INIT;
  }
  JsonPrinterRaw(&printer, JSON_OBJECT_BEGIN, nullptr, 0);
  WriteKey(&printer, "request");
  WriteRequestPart(&printer, transaction);
  if (!WriteOperationRecordParts(&printer, transaction)) {
    // The name under which service staff know this line.
    Fatal("Unhandled request type!", "transaction_json.cpp", __LINE__);
  }
  JsonPrinterRaw(&printer, JSON_OBJECT_END, nullptr, 0);
  JsonPrinterFree(&printer);
  return 0;
}

int LoadLogRecord(Transaction *transaction, const char *record) {
  const ScopedReader reader(JsonReaderCreate());
  Trace("LoadLogRecord\n");
  const int result = ParseJsonText(reader.get(), TextOrEmpty(record));
  if (result == 0) LoadParts(transaction, JsonReaderRoot(reader.get()), PartSource::kRecord);
  return result;
}

}  // namespace lumo
