// engine/offline_payment_test.cpp: what a payment earns without the server, and the totals of a bill.
#include "engine/offline_payment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "record/enumerations.h"
#include "record/transaction.h"
#include "support/folder.h"
#include "support/shop.h"

namespace {

using lumo::ACCOUNT_DISCOUNT;
using lumo::ACCOUNT_GLOBAL;
using lumo::ACCOUNT_LOCAL;
using lumo::ACCOUNT_UNKNOWN;

using Entry = std::vector<int32_t>;  // spend, earned, fee, account
using Entries = std::vector<Entry>;

constexpr int32_t kMost = INT32_MAX;
constexpr int32_t kLeast = INT32_MIN;

class OfflinePayment : public testing::Test {
 protected:
  OfflinePayment() : card(lumo::TransactionCreate()) { folder.ClearTrace(); }
  ~OfflinePayment() override { lumo::TransactionFree(card); }

  void FillGoods(const std::vector<int32_t> &costs) {
    card->bill.goodCount = static_cast<int32_t>(costs.size());
    card->bill.goods =
        static_cast<lumo::Good *>(lumo::TransactionAllocate(card, costs.size() * sizeof(lumo::Good)));
    for (size_t i = 0; i < costs.size(); ++i) card->bill.goods[i].positionCost = costs[i];
  }
  void GiveBonuses(size_t good, const Entries &entries) {
    auto *bonuses =
        static_cast<lumo::Bonus *>(lumo::TransactionAllocate(card, entries.size() * sizeof(lumo::Bonus)));
    for (size_t i = 0; i < entries.size(); ++i) {
      bonuses[i] = lumo::Bonus{entries[i][0], entries[i][1], entries[i][2],
                               static_cast<lumo::AccountType>(entries[i][3])};
    }
    card->bill.goods[good].bonuses = bonuses;
    card->bill.goods[good].bonusCount = static_cast<int32_t>(entries.size());
  }
  Entries Bonuses(size_t good) const {
    const lumo::Good &holder = card->bill.goods[good];
    Entries entries;
    for (int32_t i = 0; i < holder.bonusCount; ++i) {
      const lumo::Bonus &bonus = holder.bonuses[i];
      entries.push_back({bonus.spend, bonus.earned, bonus.organizerFee, bonus.accountType});
    }
    return entries;
  }

  test::Folder folder;
  lumo::Transaction *card;
};

Entry Totals(const lumo::BonusTotals &totals) {
  return {totals.spendGlobal,   totals.earnedGlobal,   totals.spendLocal,  totals.earnedLocal,
          totals.spendDiscount, totals.earnedDiscount, totals.organizerFee};
}

struct EarningCase : test::NamedCase {
  int32_t global, local, fee;  // percent
  int32_t cost;
  Entries entries;
};

const EarningCase kEarningCases[] = {
    {"BothWithFeeOverBoth", 2, 3, 4, 10000, {{0, 300, 300, ACCOUNT_LOCAL}, {0, 200, 100, ACCOUNT_GLOBAL}}},
    {"GlobalAloneDropsTheRemainder", 5, 0, 5, 999, {{0, 49, 49, ACCOUNT_GLOBAL}}},
    {"LocalAlone", 0, 5, 5, 999, {{0, 49, 49, ACCOUNT_LOCAL}}},
    {"FeeBelowTheLocalEarning", 2, 3, 1, 10000, {{0, 300, 100, ACCOUNT_LOCAL}, {0, 200, 0, ACCOUNT_GLOBAL}}},
    {"FeeEqualToTheLocalEarning",
     2,
     3,
     3,
     10000,
     {{0, 300, 300, ACCOUNT_LOCAL}, {0, 200, 0, ACCOUNT_GLOBAL}}},
    {"FeeOfBothTogether", 2, 3, 5, 10000, {{0, 300, 300, ACCOUNT_LOCAL}, {0, 200, 200, ACCOUNT_GLOBAL}}},
    {"NoFee", 2, 3, 0, 10000, {{0, 300, 0, ACCOUNT_LOCAL}, {0, 200, 0, ACCOUNT_GLOBAL}}},
    {"NegativeFeeIsNone", 2, 3, -4, 10000, {{0, 300, 0, ACCOUNT_LOCAL}, {0, 200, 0, ACCOUNT_GLOBAL}}},
    {"NegativeLocalEarnsNothing", 5, -2, 3, 10000, {{0, 500, 300, ACCOUNT_GLOBAL}}},
    {"NegativeGlobalEarnsNothing", -2, 5, 3, 10000, {{0, 500, 300, ACCOUNT_LOCAL}}},
    {"NothingEarned", 0, 0, 0, 10000, {}},
    // 99 * 3 / 100 = 2, 99 * 2 / 100 = 1, 99 * 5 / 100 = 4: the pool may be more than both earnings.
    {"EachDivisionDropsItsOwnRemainder", 2, 3, 5, 99, {{0, 2, 2, ACCOUNT_LOCAL}, {0, 1, 2, ACCOUNT_GLOBAL}}},
    {"CostOfZero", 2, 3, 4, 0, {{0, 0, 0, ACCOUNT_LOCAL}, {0, 0, 0, ACCOUNT_GLOBAL}}},
    {"SmallestCost", 2, 3, 4, 1, {{0, 0, 0, ACCOUNT_LOCAL}, {0, 0, 0, ACCOUNT_GLOBAL}}},
    // -150 * 3 / 100 = -4, toward zero; the pool of -150 * 1 / 100 = -1 is the greater.
    {"NegativeCostDividesTowardZero",
     2,
     3,
     1,
     -150,
     {{0, -4, -4, ACCOUNT_LOCAL}, {0, -3, 3, ACCOUNT_GLOBAL}}},
    // The pool of -400 is less than the earning of -300 and goes to the local entry whole.
    {"NegativePoolBelowTheEarning",
     2,
     3,
     4,
     -10000,
     {{0, -300, -400, ACCOUNT_LOCAL}, {0, -200, 0, ACCOUNT_GLOBAL}}},
    // 2147483647 * 2 = -2 and 2147483647 * 3 = 2147483645 in 32 bits.
    {"LargestCostWraps", 2, 3, 0, kMost, {{0, 21474836, 0, ACCOUNT_LOCAL}, {0, 0, 0, ACCOUNT_GLOBAL}}},
    // In 32 bits -2147483648 * 3 = -2147483648 and -2147483648 * 2 = 0: a pool above a negative earning.
    {"SmallestCostWraps",
     2,
     3,
     0,
     kLeast,
     {{0, -21474836, -21474836, ACCOUNT_LOCAL}, {0, 0, 21474836, ACCOUNT_GLOBAL}}},
    // 50000000 * 100 = 705032704 in 32 bits.
    {"HundredPercentWraps", 0, 100, 0, 50000000, {{0, 7050327, 0, ACCOUNT_LOCAL}}},
};

class OfflineEarning : public OfflinePayment, public testing::WithParamInterface<EarningCase> {};

TEST_P(OfflineEarning, FollowsTheRates) {
  const EarningCase &row = GetParam();
  FillGoods({row.cost});
  EXPECT_EQ(lumo::PaymentProcessOffline(card, row.global, row.local, row.fee), 0);
  EXPECT_EQ(Bonuses(0), row.entries);
  EXPECT_EQ(card->request.isOffline, 1);
}

INSTANTIATE_TEST_SUITE_P(Cases, OfflineEarning, testing::ValuesIn(kEarningCases), test::CaseName());

TEST_F(OfflinePayment, TotalsOfTheExampleAreCounted) {
  FillGoods({10000});
  ASSERT_EQ(lumo::PaymentProcessOffline(card, 2, 3, 4), 0);
  lumo::BonusTotals totals = {};
  EXPECT_EQ(lumo::CountBonuses(card, &totals), 0);
  EXPECT_EQ(Totals(totals), (Entry{0, 200, 0, 300, 0, 0, 400}));
}

TEST_F(OfflinePayment, SpendsNothing) {
  FillGoods({10000});
  card->bill.spendAmount = 5000;
  EXPECT_EQ(lumo::PaymentProcessOffline(card, 2, 3, 4), 0);
  EXPECT_EQ(card->bill.spendAmount, 0);
  EXPECT_EQ(folder.Trace(), "PaymentProcessOffline()\n");
}

TEST_F(OfflinePayment, WithoutRatesStillGoesOfflineAndSpendsNothing) {
  FillGoods({10000});
  card->bill.spendAmount = 5000;
  EXPECT_EQ(lumo::PaymentProcessOffline(card, 0, 0, 0), 0);
  EXPECT_EQ(Bonuses(0), Entries());
  EXPECT_EQ(card->bill.spendAmount, 0);
  EXPECT_EQ(card->request.isOffline, 1);
}

TEST_F(OfflinePayment, WithoutGoodsGoesOffline) {
  EXPECT_EQ(lumo::PaymentProcessOffline(card, 2, 3, 4), 0);
  EXPECT_EQ(card->request.isOffline, 1);
}

TEST_F(OfflinePayment, RefusesAFeeAboveTheRatesAndChangesNothing) {
  FillGoods({10000});
  card->bill.spendAmount = 5000;
  EXPECT_EQ(lumo::PaymentProcessOffline(card, 2, 3, 6), -104);
  EXPECT_EQ(Bonuses(0), Entries());
  EXPECT_EQ(card->bill.spendAmount, 5000);
  EXPECT_EQ(card->request.isOffline, 0);
  EXPECT_EQ(folder.Trace(),
            "PaymentProcessOffline()\nERROR: Organizer fee is greater than local + global bonusing\n");
}

TEST_F(OfflinePayment, SumOfTheRatesWraps) {
  FillGoods({});
  EXPECT_EQ(lumo::PaymentProcessOffline(card, kMost, 1, 0), -104);
  EXPECT_EQ(lumo::PaymentProcessOffline(card, kLeast, -1, kMost), 0);
}

TEST_F(OfflinePayment, WithoutARecordTracesItsOwnName) {
  EXPECT_EQ(lumo::PaymentProcessOffline(nullptr, 2, 3, 4), -100);
  EXPECT_EQ(folder.Trace(), "PaymentProcessOffline()\nERROR: Pointer \"p_trans\" is null\n");
}

TEST_F(OfflinePayment, AppendsBehindTheEntriesAGoodHas) {
  FillGoods({10000, 10000});
  GiveBonuses(0, {{1, 2, 3, ACCOUNT_DISCOUNT}, {4, 5, 6, ACCOUNT_GLOBAL}});
  EXPECT_EQ(lumo::PaymentProcessOffline(card, 2, 3, 4), 0);
  EXPECT_EQ(Bonuses(0), (Entries{{1, 2, 3, ACCOUNT_DISCOUNT},
                                 {4, 5, 6, ACCOUNT_GLOBAL},
                                 {0, 300, 300, ACCOUNT_LOCAL},
                                 {0, 200, 100, ACCOUNT_GLOBAL}}));
  EXPECT_EQ(Bonuses(1), (Entries{{0, 300, 300, ACCOUNT_LOCAL}, {0, 200, 100, ACCOUNT_GLOBAL}}));
}

TEST_F(OfflinePayment, WithoutRatesKeepsTheEntriesAGoodHas) {
  FillGoods({10000});
  GiveBonuses(0, {{1, 2, 3, ACCOUNT_DISCOUNT}});
  EXPECT_EQ(lumo::PaymentProcessOffline(card, 0, 0, 0), 0);
  EXPECT_EQ(Bonuses(0), (Entries{{1, 2, 3, ACCOUNT_DISCOUNT}}));
}

TEST_F(OfflinePayment, MoreGoodsThan65535AllEarn) {
  FillGoods(std::vector<int32_t>(65540, 10000));
  EXPECT_EQ(lumo::PaymentProcessOffline(card, 2, 3, 4), 0);
  for (size_t i = 0; i < 65540; ++i) ASSERT_EQ(card->bill.goods[i].bonusCount, 2) << i;
  EXPECT_EQ(Bonuses(65539), (Entries{{0, 300, 300, ACCOUNT_LOCAL}, {0, 200, 100, ACCOUNT_GLOBAL}}));
}

TEST_F(OfflinePayment, CountsEachAccountAndTheFeesOfAll) {
  FillGoods({100, 200, 300});
  GiveBonuses(0, {{1, 10, 100, ACCOUNT_GLOBAL}, {2, 20, 200, ACCOUNT_LOCAL}});
  GiveBonuses(2,
              {{3, 30, 300, ACCOUNT_DISCOUNT}, {4, 40, 400, ACCOUNT_UNKNOWN}, {5, 50, 500, ACCOUNT_GLOBAL}});
  lumo::BonusTotals totals = {};
  EXPECT_EQ(lumo::CountBonuses(card, &totals), 0);
  EXPECT_EQ(Totals(totals), (Entry{6, 60, 2, 20, 3, 30, 1500}));
  EXPECT_EQ(folder.Trace(), "CountBonuses\nGood has 2 bonuses\nGood has 0 bonuses\nGood has 3 bonuses\n");
}

TEST_F(OfflinePayment, CountingAddsToWhatTheTotalsHold) {
  FillGoods({100});
  GiveBonuses(0, {{1, 10, 100, ACCOUNT_GLOBAL}});
  lumo::BonusTotals totals = {1, 2, 3, 4, 5, 6, 7};
  EXPECT_EQ(lumo::CountBonuses(card, &totals), 0);
  EXPECT_EQ(Totals(totals), (Entry{2, 12, 3, 4, 5, 6, 107}));
}

TEST_F(OfflinePayment, CountingWraps) {
  FillGoods({100});
  GiveBonuses(0, {{kMost, kLeast, kMost, ACCOUNT_LOCAL}, {1, -1, 1, ACCOUNT_LOCAL}});
  lumo::BonusTotals totals = {};
  EXPECT_EQ(lumo::CountBonuses(card, &totals), 0);
  EXPECT_EQ(Totals(totals), (Entry{0, 0, kLeast, kMost, 0, 0, kLeast}));
}

TEST_F(OfflinePayment, CountingMoreGoodsThan65535Ends) {
  FillGoods(std::vector<int32_t>(65540, 10000));
  GiveBonuses(65539, {{0, 7, 0, ACCOUNT_GLOBAL}});
  lumo::BonusTotals totals = {};
  EXPECT_EQ(lumo::CountBonuses(card, &totals), 0);
  EXPECT_EQ(totals.earnedGlobal, 7);
}

TEST_F(OfflinePayment, CountingWithoutARecordLeavesTheTotals) {
  lumo::BonusTotals totals = {1, 2, 3, 4, 5, 6, 7};
  EXPECT_EQ(lumo::CountBonuses(nullptr, &totals), -100);
  EXPECT_EQ(Totals(totals), (Entry{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(folder.Trace(), "CountBonuses\nERROR: Pointer \"trans\" is null\n");
}

}  // namespace
