// engine/request.h: what every request carries: its type, its date, and the RRN, which is the terminal's own
// number for the operation.
//
//   columns 1-5    the terminal id, cut or padded with zero digits on the left
//   columns 6-11   the request's date, YYMMDD
//   columns 12-16  the request's number within that day, from 00000
//
// The number is not bounded: the one after 99999 makes an id of 17 characters.
#pragma once

#include "record/enumerations.h"

namespace lumo {

struct Transaction;

// Copies the card, the cashier and the settings' identity into the request block and prints the slip's header
// and footer. Returns 0.
int FillTransactionHeader(Transaction *transaction, const char *card_num, const char *employee_id);

// Stamps the record for one operation. The new id is the persistent one before anything is sent, so that a
// request that fails never gives its number to another one. 0 or ERR_NO_TRANSACTION.
int FillRequest(Transaction *transaction, RequestType type);

// The first two steps of every operation: refuses a null record, then FillRequest, whose failure is traced.
int StartOperation(Transaction *transaction, RequestType type);

// Makes the id that follows `last`, the previous one; without a usable one it asks the server. Returns
// 0 or ERR_NO_TRANSACTION.
// Note: when the server cannot tell, and when the clock is behind the previous id's date, it returns 0 and
// leaves `requestId` as it was.
int GenerateRRN(Transaction *transaction, const char *last);

int GetLastRrnProcess(Transaction *transaction);  // asks the server; the answer lands in rrNumber

}  // namespace lumo
