// engine/bill_files.h: the register's bill and return-list files.
#pragma once

#include <cstdint>

namespace lumo {

struct Transaction;

int BillParse(Transaction *transaction, const char *path,
              int load_mode);                                // load_mode 1 also reads the goods' bonuses
int BillModify(Transaction *transaction, const char *path);  // 0, -100 or -105
int CashbackParse(Transaction *transaction, const char *path);
int CreateAmountBill(int32_t amount, const char *path);  // 0 or -105

}  // namespace lumo
