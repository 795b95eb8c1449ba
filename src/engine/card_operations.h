// engine/card_operations.h: the operations on a card that are not purchases. Each stamps the record with a
// new request id, copies its arguments, asks the server and, on success alone, journals the operation, marks
// it in the record and prints its lines to the receipt's body. Each traces its name first.
//
// Results beside those named: ERR_NO_TRANSACTION without a record, the exchange's code, and after a good
// exchange the journal's.
#pragma once

#include <cstdint>

namespace lumo {

struct Transaction;

// With a bill the amount is the bill's total and `amount` is passed over. ERR_ACTIVATION_TYPE or
// ERR_ACCOUNT_TYPE for an unknown text, ERR_BILL_FORMAT for a bill that cannot be read.
int ActivationProcess(Transaction *transaction, const char *activation_type, const char *bill_path,
                      int32_t amount, const char *account_type, const char *refer_card_num);
// The sum the server gave for the kind of activation asked for.
int GetActivationAmountProcess(const Transaction *transaction);

// Not journalled; does nothing on a record completed offline.
int BalanceProcess(Transaction *transaction);
// What the customer can spend: the available amounts without those of discount accounts. 0 without a record.
int SumBalanceAmounts(const Transaction *transaction);

int GetCashBackResultProcess(const Transaction *transaction);  // what the last return gave back
int LinkCardProcess(Transaction *transaction, const char *card_num);
int DepositProcess(Transaction *transaction, int32_t amount);
int ExchangeProcess(Transaction *transaction, const char *token);
int GetAdProcess(Transaction *transaction);  // the text lands in adText; no journal, no receipt

}  // namespace lumo
