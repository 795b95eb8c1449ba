// engine/payment_operations.h: the purchase side of a card.
#pragma once

#include <cstdint>

namespace lumo {

struct Transaction;

int PaymentProcess(Transaction *transaction, int32_t spend, const char *bill_path);
int PaymentAndConfirmProcess(Transaction *transaction, int32_t spend, const char *bill_path);
int PaymentConfirmProcess(Transaction *transaction, bool is_confirm, const char *rrn);
int CashBackProcess(Transaction *transaction, const char *rrn, const char *return_list_path);

}  // namespace lumo
