#include "engine/offline_payment.h"

#include <cstring>

#include "foundation/arithmetic.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "record/enumerations.h"
#include "record/transaction.h"

namespace lumo {
namespace {

// Without the part below a hundredth; a product beyond 32 bits wraps.
int32_t PercentOf(int32_t amount, int32_t percent) {
  return WrapMultiply(amount, percent) / 100;
}

// Room for `added` entries behind those the good has.
void GrowBonuses(Transaction *transaction, Good *good, int32_t added) {
  const size_t old_bytes = static_cast<size_t>(good->bonusCount) * sizeof(Bonus);
  const size_t added_bytes = static_cast<size_t>(added) * sizeof(Bonus);
  auto *bonuses = static_cast<Bonus *>(TransactionAllocate(transaction, old_bytes + added_bytes));
  if (old_bytes != 0) std::memcpy(bonuses, good->bonuses, old_bytes);
  good->bonuses = bonuses;
}

void AppendBonus(Good *good, int32_t earned, int32_t fee, AccountType account) {
  good->bonuses[good->bonusCount] = Bonus{0, earned, fee, account};
  ++good->bonusCount;
}

// The organizer's fee is taken from the local earning first, and what is left of it from the global one.
void EarnOffline(Transaction *transaction, Good *good, int32_t global_percent, int32_t local_percent,
                 int32_t fee_percent) {
  const int32_t added = (local_percent > 0 ? 1 : 0) + (global_percent > 0 ? 1 : 0);
  if (added == 0) return;
  GrowBonuses(transaction, good, added);
  const int32_t cost = good->positionCost;
  int32_t pool = fee_percent > 0 ? PercentOf(cost, fee_percent) : 0;
  if (local_percent > 0) {
    const int32_t earned = PercentOf(cost, local_percent);
    const int32_t fee = pool >= earned ? earned : pool;
    pool = WrapSubtract(pool, fee);
    AppendBonus(good, earned, fee, ACCOUNT_LOCAL);
  }
  if (global_percent > 0) AppendBonus(good, PercentOf(cost, global_percent), pool, ACCOUNT_GLOBAL);
}

void AddBonus(const Bonus &bonus, BonusTotals *totals) {
  switch (bonus.accountType) {
    case ACCOUNT_GLOBAL:
      totals->spendGlobal = WrapAdd(totals->spendGlobal, bonus.spend);
      totals->earnedGlobal = WrapAdd(totals->earnedGlobal, bonus.earned);
      break;
    case ACCOUNT_LOCAL:
      totals->spendLocal = WrapAdd(totals->spendLocal, bonus.spend);
      totals->earnedLocal = WrapAdd(totals->earnedLocal, bonus.earned);
      break;
    case ACCOUNT_DISCOUNT:
      totals->spendDiscount = WrapAdd(totals->spendDiscount, bonus.spend);
      totals->earnedDiscount = WrapAdd(totals->earnedDiscount, bonus.earned);
      break;
    default:
      break;
  }
  // The fee of an unknown account counts all the same.
  totals->organizerFee = WrapAdd(totals->organizerFee, bonus.organizerFee);
}

}  // namespace

int PaymentProcessOffline(Transaction *transaction, int32_t global_percent, int32_t local_percent,
                          int32_t fee_percent) {
  Trace("PaymentProcessOffline()\n");
  if (transaction == nullptr) {
    TraceError("Pointer \"%s\" is null\n", "p_trans");
    return ERR_NO_TRANSACTION;
  }
  if (fee_percent > WrapAdd(global_percent, local_percent)) {
    TraceError("Organizer fee is greater than local + global bonusing\n");
    return ERR_ORG_FEE_EXCEEDS_BONUS;
  }
  transaction->bill.spendAmount = 0;
  transaction->request.isOffline = true;
  for (int32_t i = 0; i < transaction->bill.goodCount; ++i) {
    EarnOffline(transaction, &transaction->bill.goods[i], global_percent, local_percent, fee_percent);
  }
  return 0;
}

int CountBonuses(const Transaction *transaction, BonusTotals *totals) {
  Trace("CountBonuses\n");
  if (TraceIfNull(transaction)) return ERR_NO_TRANSACTION;
  for (int32_t i = 0; i < transaction->bill.goodCount; ++i) {
    const Good &good = transaction->bill.goods[i];
    Trace("Good has %d bonuses\n", good.bonusCount);
    for (int32_t k = 0; k < good.bonusCount; ++k) AddBonus(good.bonuses[k], totals);
  }
  return 0;
}

}  // namespace lumo
