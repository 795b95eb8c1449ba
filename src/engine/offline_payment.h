// engine/offline_payment.h: bonuses computed by the terminal itself, and the totals of a bill's bonuses.
#pragma once

#include <cstdint>

namespace lumo {

struct Transaction;

struct BonusTotals {
  int32_t spendGlobal;
  int32_t earnedGlobal;
  int32_t spendLocal;
  int32_t earnedLocal;
  int32_t spendDiscount;
  int32_t earnedDiscount;
  int32_t organizerFee;
};

// Completes a payment by the rates: earns per good, spends nothing, marks the record offline. 0,
// ERR_NO_TRANSACTION or ERR_ORG_FEE_EXCEEDS_BONUS.
int PaymentProcessOffline(Transaction *transaction, int32_t global_percent, int32_t local_percent,
                          int32_t fee_percent);
// Adds to the totals; 0 or ERR_NO_TRANSACTION.
int CountBonuses(const Transaction *transaction, BonusTotals *totals);

}  // namespace lumo
