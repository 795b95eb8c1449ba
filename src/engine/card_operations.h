// engine/card_operations.h: the operations on a card that are not purchases.
#pragma once

#include <cstdint>

namespace lumo {

struct Transaction;

// Bits of Transaction::completedOperations.
enum CompletedOperation : uint32_t {
  COMPLETED_PAYMENT = 0x01,
  COMPLETED_CONFIRM = 0x02,
  COMPLETED_BALANCE = 0x04,
  COMPLETED_CASHBACK = 0x08,
  COMPLETED_ACTIVATION = 0x10,
  COMPLETED_DEPOSIT = 0x20,
  COMPLETED_LINK = 0x40,
  COMPLETED_EXCHANGE = 0x80,
};

int ActivationProcess(Transaction *transaction, const char *activation_type, const char *bill_path,
                      int32_t amount, const char *account_type, const char *refer_card_num);
int GetActivationAmountProcess(const Transaction *transaction);
int BalanceProcess(Transaction *transaction);
int SumBalanceAmounts(const Transaction *transaction);
int GetCashBackResultProcess(const Transaction *transaction);
int LinkCardProcess(Transaction *transaction, const char *card_num);
int DepositProcess(Transaction *transaction, int32_t amount);
int ExchangeProcess(Transaction *transaction, const char *token);
int GetAdProcess(Transaction *transaction);

// "RRN: " and the request's id; nothing when there is none.
void PrintRrn(Transaction *transaction);

}  // namespace lumo
