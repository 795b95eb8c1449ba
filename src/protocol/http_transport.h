// protocol/http_transport.h: one operation, one exchange: connect, POST, read the bare JSON answer, close.
#pragma once

namespace lumo {

struct Transaction;

// 0, -1, -401, -410, -411, -501, or what ParseOperationResponse returns.
int TransactionProcessJson(Transaction *transaction);

}  // namespace lumo
