#include "engine/request.h"

#include <cstdio>
#include <cstring>

#include "config/lumoconfig.h"
#include "config/lumostate.h"
#include "engine/dispatcher.h"
#include "engine/slip.h"
#include "foundation/dates.h"
#include "foundation/format.h"
#include "foundation/memory.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "record/enumerations.h"
#include "record/transaction.h"

namespace lumo {
namespace {

constexpr char kNoRrn[] = "0000000000000000";
constexpr char kNoDate[] = "000000";
constexpr size_t kDateColumns = 6;
constexpr size_t kUnreadableLength = 20;  // a persistent id of this many bytes is not read any more
constexpr int kTerminalColumns = 5;
constexpr size_t kRrnBytes = 24;  // 5 + 6 + a number of at most 6 characters, and the terminator

struct ParsedRrn {
  int items;  // as sscanf counts them: date, number
  char date[kDateColumns + 1];
  int number;
};

ParsedRrn ScanRrn(const char *rrn) {
  ParsedRrn parsed = {};
  parsed.items = std::sscanf(rrn, "%*5s%6s%5d", parsed.date, &parsed.number);
  Trace("Scanf result: %d %s %d\n", parsed.items, parsed.date, parsed.number);
  return parsed;
}

bool IsComplete(const ParsedRrn &parsed) {
  return parsed.items == 2;
}

int CompareDates(const char *a, const char *b) {
  return std::strncmp(a, b, kDateColumns);
}

void BuildFirstRrn(const Transaction *transaction, char (&rrn)[kRrnBytes]) {
  Format(rrn, sizeof rrn, "%5s%6s00000", ZeroPadLeft(transaction->request.terminalId, kTerminalColumns),
         DateToYYMMDD(transaction->request.requestDate));
  Trace("First RRN generation [%s]\n", rrn);
}

}  // namespace

int FillTransactionHeader(Transaction *transaction, const char *card_num, const char *employee_id) {
  RequestBlock &request = transaction->request;
  TransactionCopyText(transaction, &request.cardNum, card_num);
  TransactionCopyText(transaction, &request.employeeId, employee_id);
  TransactionCopyText(transaction, &request.terminalId, Settings().terminalId);
  TransactionCopyText(transaction, &request.ver, Settings().protocolVersion);
  TransactionCopyText(transaction, &request.shiftId, GetShiftId());
  PrintSlipHeader(transaction, card_num);
  PrintSlipFooter(transaction);
  return 0;
}

int FillRequest(Transaction *transaction, RequestType type) {
  Trace("FillRequest(%s)\n", RequestTypeToString(type));
  if (TraceIfNull(transaction)) return ERR_NO_TRANSACTION;
  RequestBlock &request = transaction->request;
  std::strcpy(request.requestDate, IsoTimestamp());  // 21 bytes, 22 from the year 10000 on
  request.type = type;
  if (type == REQUEST_AD || type == REQUEST_LAST_RRN) {
    TransactionCopyText(transaction, &request.requestId, kNoRrn);
    return 0;
  }
  // A copy of our own: asking the server reloads the state, and the register may hold CopyRequestId's text
  // and pass it to the very operation that is being filled.
  const ScopedText last(MemCopyText(RequestId(), LUMO_HERE));
  const int result = GenerateRRN(transaction, last.get());
  if (result != 0) {  // GCOVR_EXCL_START: only a null record has no RRN
    TraceError("GenerateRRN res[%d]\n", result);
    return result;
  }  // GCOVR_EXCL_STOP
  SetRequestId(request.requestId);
  return 0;
}

int StartOperation(Transaction *transaction, RequestType type) {
  if (TraceIfNull(transaction)) return ERR_NO_TRANSACTION;
  const int result = FillRequest(transaction, type);
  if (result != 0) {  // GCOVR_EXCL_START: only a null record cannot be filled
    TraceError("FillRequest res[%d]\n", result);
  }  // GCOVR_EXCL_STOP
  return result;
}

int GenerateRRN(Transaction *transaction, const char *last) {
  Trace("GenerateRRN: %s\n", last);
  if (TraceIfNull(transaction)) return ERR_NO_TRANSACTION;
  RequestBlock &request = transaction->request;
  char rrn[kRrnBytes] = {};

  const char *previous = last;
  if (last != nullptr && std::strlen(last) < kUnreadableLength) {
    Trace("Last RRN: %s\n", last);
  } else {
    previous = kNoRrn;
    Trace("Generate default RRN: %s\n", previous);
  }
  ParsedRrn parsed = ScanRrn(previous);

  if (!IsComplete(parsed) || CompareDates(parsed.date, kNoDate) == 0) {
    const int result = GetLastRrnProcess(transaction);
    if (result != 0 || transaction->rrNumber == nullptr) {
      TraceError("GetLastRrnProcess error %d\n", result);
      // Note: traced, not stored. The operation goes on with the id the record holds.
      BuildFirstRrn(transaction, rrn);
      return 0;
    }
    parsed = ScanRrn(transaction->rrNumber);
  }

  if (!IsComplete(parsed)) {
    BuildFirstRrn(transaction, rrn);
  } else {
    Trace("Parse old RRN [%s][%d]\n", parsed.date, parsed.number);
    const char *date = DateToYYMMDD(request.requestDate);
    const int order = CompareDates(parsed.date, date);
    if (order > 0) {
      TraceError("Date compare error - old rrn date[%s] request date[%s]\n", parsed.date, date);
      // Note: not stored, as above.
      BuildFirstRrn(transaction, rrn);
      return 0;
    }
    const int number = order == 0 ? parsed.number + 1 : 0;
    Format(rrn, sizeof rrn, "%5s%6s%05d", ZeroPadLeft(request.terminalId, kTerminalColumns), date, number);
    Trace("Next RRN generation [%s]\n", rrn);
  }
  TransactionCopyText(transaction, &request.requestId, rrn);
  return 0;
}

int GetLastRrnProcess(Transaction *transaction) {
  Trace("GetLastRrnProcess\n");
  if (TraceIfNull(transaction)) return ERR_NO_TRANSACTION;
  // A record of its own, so that the question leaves the operation's blocks and receipts alone. The
  // recursion ends here: a request of this type makes no RRN.
  const ScopedTransaction scoped_question(TransactionCreate());
  Transaction *question = scoped_question.get();
  FillTransactionHeader(question, transaction->request.cardNum, transaction->request.employeeId);
  StartOperation(question, REQUEST_LAST_RRN);
  const int result = TransactionProcess(question);
  if (result == 0) TransactionCopyText(transaction, &transaction->rrNumber, question->rrNumber);
  return result;
}

}  // namespace lumo
