// engine/request.h: what every request carries: type, date and the RRN, the terminal's own number for the
// operation.
//
//   columns 1-5    the terminal id, cut or padded with zero digits on the left
//   columns 6-11   the request's date, YYMMDD
//   columns 12-16  the request's number within that day, from 00000
#pragma once

#include <cstdint>

namespace lumo {

struct Transaction;

int FillRequest(Transaction *transaction, int32_t type);  // 0 or -100
int GenerateRRN(Transaction *transaction, const char *last);
int GetLastRrnProcess(Transaction *transaction);  // asks the server; the answer lands in rrNumber

}  // namespace lumo
