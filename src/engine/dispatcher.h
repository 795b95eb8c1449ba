// engine/dispatcher.h: the one road from a filled transaction to the server and back.
#pragma once

namespace lumo {

struct Transaction;

// Exchanges the record with the server, then applies the outcome to the persistent state: offline flag,
// request id, update flag. Returns the exchange's code.
int TransactionProcess(Transaction *transaction);

}  // namespace lumo
