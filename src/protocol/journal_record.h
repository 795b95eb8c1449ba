// protocol/journal_record.h: one operation as a line of the journals, written and read back.
#pragma once

namespace lumo {

struct String;
struct Transaction;

// Appends the record's text, without a line end, to `output`: 0 or ERR_JSON_PRINTER_INIT. A record whose type
// of operation is unknown ends the process.
int PrintTransactionRecord(const Transaction *transaction, String *output);

// Fills the record from one journal record's text; the result of the JSON parse.
int LoadLogRecord(Transaction *transaction, const char *record);

}  // namespace lumo
