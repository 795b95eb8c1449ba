// engine/payment_operations.h: the purchase side of a card.
#pragma once

#include <cstdint>

namespace lumo {

struct Transaction;

// Each stamps the record, asks the server, journals the operation and prints its lines. Returns the
// exchange's code, ERR_NO_TRANSACTION without a record, or what lumo.h says of the call.
int PaymentProcess(Transaction *transaction, int32_t spend, const char *bill_path);
int PaymentAndConfirmProcess(Transaction *transaction, int32_t spend, const char *bill_path);
int PaymentConfirmProcess(Transaction *transaction, bool is_confirm, const char *rrn);
int CashBackProcess(Transaction *transaction, const char *rrn, const char *return_list_path);

}  // namespace lumo
