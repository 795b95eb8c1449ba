#include "engine/bill_files.h"

#include <cstdarg>

#include "foundation/dates.h"
#include "foundation/file_sink.h"
#include "foundation/files.h"
#include "foundation/format.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "json/lumojson.h"
#include "platform/platform.h"
#include "protocol/transaction_request_json.h"
#include "record/transaction.h"

namespace lumo {
namespace {

constexpr size_t kFragmentBytes = 2048;

void WriteFormatted(HANDLE file, const char *format, ...) LUMO_PRINTF(2, 3);

void WriteFormatted(HANDLE file, const char *format, ...) {
  char fragment[kFragmentBytes];
  va_list arguments;
  va_start(arguments, format);
  const size_t length = FormatText(fragment, sizeof fragment, format, arguments);
  va_end(arguments);
  if (length < kFragmentBytes) {  // GCOVR_EXCL_BR_LINE: no fragment is longer than a date and its name
    FileWrite(fragment, 1, static_cast<uint32_t>(length), file);
  }
}

}  // namespace

int BillParse(Transaction *transaction, const char *path, GoodBonuses bonuses) {
  const ScopedReader reader(JsonReaderCreate());
  Trace("BillParse\n");
  if (TraceIfNull(transaction)) return ERR_NO_TRANSACTION;
  transaction->bill = BillBlock{};
  const int result = ParseJsonFile(reader.get(), path);
  return result != 0 ? result : LoadBill(transaction, JsonReaderRoot(reader.get()), bonuses);
}

int BillModify(Transaction *transaction, const char *path) {
  Trace("BillModify\n");
  if (TraceIfNull(transaction)) return ERR_NO_TRANSACTION;
  // Written over, not cut and written: cutting first costs a disk many times as much.
  const ScopedFile file(FileOpen(path, "a"));
  if (!FileIsValid(file.get())) {
    TraceError("Cant open file \"%s\"!\n", path);
    return ERR_BILL_OPEN;
  }
  FileSink sink;
  FileSinkInit(&sink, file.get());
  JsonPrinter printer;
  JsonPrinterInit(&printer, FileSinkWrite, &sink);
  WriteBillPart(&printer, &transaction->bill);
  JsonPrinterFree(&printer);
  FileSinkEnd(&sink);
  return 0;
}

int CashbackParse(Transaction *transaction, const char *path) {
  const ScopedReader reader(JsonReaderCreate());
  Trace("CashbackParse\n");
  if (TraceIfNull(transaction)) return ERR_NO_TRANSACTION;
  // Note: a return list, too, starts from an empty bill.
  transaction->bill = BillBlock{};
  int result = ParseJsonFile(reader.get(), path);
  Trace("Cashback File Parse Finished\n");
  if (result == 0) result = LoadCashBack(transaction, JsonReaderRoot(reader.get()));
  Trace("Bill Parse Res %d\n", result);
  return result;
}

int CreateAmountBill(int32_t amount, const char *path) {
  const ScopedFile file(FileOpen(path, "w+"));
  Trace("CreateAmountBill\n");
  if (!FileIsValid(file.get())) return ERR_BILL_OPEN;
  // A fragment a write: one that fails is traced, and the rest are written all the same. The number of the
  // bill, the fee, the code and the title are what the server expects of a bill without goods.
  WriteFormatted(file.get(), "{\"totalSum\":%d,", amount);
  WriteFormatted(file.get(), "\"orderLen\":1,");
  WriteFormatted(file.get(), "\"billNum\":\"1\",");
  WriteFormatted(file.get(), "\"billDate\":\"%s\",", IsoTimestamp());
  WriteFormatted(file.get(), "\"partnerFee\":1000,");
  WriteFormatted(file.get(), "\"goodList\":{");
  WriteFormatted(file.get(), "\"good\":[{");
  WriteFormatted(file.get(), "\"title\":\"TOTAL_AMOUNT\",");
  WriteFormatted(file.get(), "\"productCode\":\"008\",");
  WriteFormatted(file.get(), "\"positionCost\":%d,", amount);
  WriteFormatted(file.get(), "\"orderNum\":1,");
  WriteFormatted(file.get(), "\"cnt\":1");
  WriteFormatted(file.get(), "}]}");
  WriteFormatted(file.get(), "}");
  return 0;
}

}  // namespace lumo
