// engine/bill_files.h: the register's bill and return-list files.
#pragma once

#include <cstdint>

#include "protocol/transaction_json.h"

namespace lumo {

struct Transaction;

// Read a file into the record, whose bill is emptied first. Each returns 0, ERR_NO_TRANSACTION, a code of
// ParseJsonFile or, for another structure, ERR_RESPONSE_STRUCTURE.
int BillParse(Transaction *transaction, const char *path, GoodBonuses bonuses);
int CashbackParse(Transaction *transaction, const char *path);

int BillModify(Transaction *transaction, const char *path);  // 0, ERR_NO_TRANSACTION or ERR_BILL_OPEN
int CreateAmountBill(int32_t amount, const char *path);      // 0 or ERR_BILL_OPEN

}  // namespace lumo
