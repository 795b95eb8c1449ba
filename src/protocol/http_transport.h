// protocol/http_transport.h: one operation, one exchange: connect, POST, read the bare JSON answer, close.
#pragma once

namespace lumo {

struct Transaction;

// 0, ERR_CONNECT, ERR_REQUEST_BUILD, ERR_REQUEST_SEND, ERR_NO_RESPONSE, what ParseOperationResponse returns,
// or -1 when the system's sockets do not start.
int TransactionProcessJson(Transaction *transaction);

}  // namespace lumo
