// end_to_end/purchase_test.cpp: every slip that a purchase, its confirmation, its cancellation or a return
// can print, and what they leave behind.
#include "end_to_end/register.h"

namespace {

using test::kFirstRrn;
using test::kSecondRrn;
using test::kThirdRrn;
using test::Record;
using test::Refusal;
using test::Request;
using test::State;
using test::Success;
using testing::ElementsAre;

constexpr char kTitle[] =
    "******* ПОКУПКА ********\n"
    "  Полагающиеся бонусы   \n"
    "  будут перечислены в   \n"
    "      Клуб Тавиро       \n"
    "************************\n";

constexpr char kOfflineTitle[] =
    "******* ПОКУПКА ********\n"
    "  Полагающиеся бонусы   \n"
    "  будут перечислены в   \n"
    "      Клуб Тавиро       \n"
    "************************\n"
    "        ОФФЛАЙН\n"
    "************************\n";

constexpr char kRrnLine[] = "RRN: 1234512120500008\n";
constexpr char kSeparator[] = "************************\n";

// A bill with one good, as the register writes it, as it is sent and as it is kept.
std::string Bill(const std::string &total, const std::string &bonuses = "", const std::string &spend = "") {
  return R"({"totalSum":)" + total + (spend.empty() ? "" : R"(,"spendBonus":)" + spend) +
         R"(,"orderLen":1,"billNum":"5","billDate":"2012-12-05T09:59:00Z","partnerFee":1000,"goodList":{"good":[)" +
         R"({"title":"ЧАЙ","productCode":"008","positionCost":)" + total + R"(,"orderNum":1,"cnt":1)" +
         (bonuses.empty() ? "" : R"(,"bonus":[)" + bonuses + "]") + "}]}}";
}

std::string Bonus(const std::string &account, int spend, int earned, int fee) {
  return R"({"earned":)" + std::to_string(earned) + R"(,"spend":)" + std::to_string(spend) +
         R"(,"organizerFee":)" + std::to_string(fee) + R"(,"accountType":")" + account + "\"}";
}

class Purchase : public test::Register {};

// What a payment prints for the bonuses that the server granted: each line of its own condition.
struct Slip {
  const char *name;
  const char *total;
  std::string bonuses;
  const char *lines;  // behind the title and the RRN
  int earned, spent, discount;
};

void PrintTo(const Slip &slip, std::ostream *out) {
  *out << slip.name;
}

const Slip kSlips[] = {
    {"NothingToPayAndNothingEarned", "0", "", "************************\n", 0, 0, 0},
    {"CashOnly", "15000", "", "Сумма (нал.):\n                  150.00\n************************\n", 0, 0, 0},
    {"BonusesOnly", "15000", Bonus("GLOBAL", 15000, 0, 0),
     "Сумма (бнс.):\n                  150.00\n************************\n", 0, 15000, 0},
    {"BonusesOfBothAccounts", "10000", Bonus("LOCAL", 1500, 0, 0) + "," + Bonus("GLOBAL", 500, 0, 0),
     "Сумма (нал.):\n                   80.00\n"
     "Сумма (бнс.):\n                   20.00\n"
     "************************\n",
     0, 2000, 0},
    {"DiscountOnly", "10000", Bonus("DISCOUNT", 250, 0, 0),
     "Сумма (нал.):\n                   97.50\n"
     "Скидка (бнс.):\n                    2.50\n"
     "************************\n",
     0, 0, 250},
    {"MoreThanTheTotal", "100", Bonus("GLOBAL", 105, 0, 0),
     "Сумма (нал.):\n                    0.-5\n"
     "Сумма (бнс.):\n                    1.05\n"
     "************************\n",
     0, 105, 0},
    {"EarnedGlobally", "10000", Bonus("GLOBAL", 0, 80, 0),
     "Сумма (нал.):\n                  100.00\n"
     "************************\n"
     "Начислено всего:\n               0.80 бнс.\n"
     "Начислено всего\nСеть:\n               0.80 бнс.\n",
     80, 0, 0},
    {"EarnedLocally", "10000", Bonus("LOCAL", 0, 120, 0),
     "Сумма (нал.):\n                  100.00\n"
     "************************\n"
     "Начислено всего\nСеть:\n               1.20 бнс.\n",
     120, 0, 0},
    {"EarnedAsDiscount", "10000", Bonus("DISCOUNT", 0, 30, 0),
     "Сумма (нал.):\n                  100.00\n"
     "************************\n"
     "Начислено скид бон в\nСеть:\n               0.30 ски.\n",
     0, 0, 0},
    {"FeeOnly", "10000", Bonus("GLOBAL", 0, 0, 9),
     "Сумма (нал.):\n                  100.00\n"
     "************************\n"
     "Вознаграждение \nорганизатора:\n               0.09 бнс.\n",
     0, 0, 0},
    {"EarningsThatCancelOut", "10000", Bonus("GLOBAL", 0, 50, 0) + "," + Bonus("LOCAL", 0, -50, 0),
     "Сумма (нал.):\n                  100.00\n"
     "************************\n"
     "Начислено всего:\n               0.50 бнс.\n",
     0, 0, 0},
    {"Everything", "10000",
     Bonus("LOCAL", 1500, 120, 11) + "," + Bonus("GLOBAL", 500, 80, 9) + "," + Bonus("DISCOUNT", 700, 30, 1),
     "Сумма (нал.):\n                   73.00\n"
     "Сумма (бнс.):\n                   20.00\n"
     "Скидка (бнс.):\n                    7.00\n"
     "************************\n"
     "Начислено всего:\n               0.80 бнс.\n"
     "Начислено всего\nСеть:\n               2.00 бнс.\n"
     "Начислено скид бон в\nСеть:\n               0.30 ски.\n"
     "Вознаграждение \nорганизатора:\n               0.21 бнс.\n",
     200, 2000, 700},
    {"BonusesOfAnUnknownAccount", "10000", Bonus("FOREIGN", 700, 80, 4),
     "Сумма (нал.):\n                  100.00\n"
     "************************\n"
     "Вознаграждение \nорганизатора:\n               0.04 бнс.\n",
     0, 0, 0},
};

class PurchaseSlip : public test::Register, public testing::WithParamInterface<Slip> {
 protected:
  void ExpectSlip(const std::string &type) {
    const Slip &slip = GetParam();
    EXPECT_EQ(Body(), std::string(kTitle) + kRrnLine + slip.lines) << type;
    EXPECT_EQ(shop.GetEarnBonusAmount(), slip.earned);
    EXPECT_EQ(shop.GetSpendBonusAmount(), slip.spent);
    EXPECT_EQ(shop.GetDiscountAmount(), slip.discount);
  }
};

TEST_P(PurchaseSlip, OfAPayment) {
  Open({Success("putPaymentResponse", "\"bill\":" + Bill(GetParam().total, GetParam().bonuses))});
  shop.Write("BILL.JSN", Bill(GetParam().total));
  EXPECT_EQ(shop.PaymentProc(1, "BILL.JSN"), 0);
  ExpectSlip("PAYMENT");
}

TEST_P(PurchaseSlip, OfAPaymentAndConfirmation) {
  Open({Success("putPaymentAndConfirmResponse", "\"bill\":" + Bill(GetParam().total, GetParam().bonuses))});
  shop.Write("BILL.JSN", Bill(GetParam().total));
  EXPECT_EQ(shop.PaymentAndConfirmProc(1, "BILL.JSN"), 0);
  ExpectSlip("PAYMENT_AND_CONFIRM");
}

INSTANTIATE_TEST_SUITE_P(Every, PurchaseSlip, testing::ValuesIn(kSlips),
                         [](const auto &slip) { return std::string(slip.param.name); });

TEST_F(Purchase, AndConfirmationIsOneExchange) {
  Open({Success("putPaymentAndConfirmResponse", "\"bill\":" + Bill("10000", Bonus("GLOBAL", 0, 80, 0)))});
  shop.Write("BILL.JSN", Bill("10000"));
  EXPECT_EQ(shop.PaymentAndConfirmProc(0, "BILL.JSN"), 0);
  EXPECT_THAT(
      server->requests(),
      ElementsAre(Post("paymentAndConfirm", Request("putPaymentAndConfirmRequest", "PAYMENT_AND_CONFIRM",
                                                    "\"bill\":" + Bill("10000", "", "false")))));
  const std::string paid = Bill("10000", Bonus("GLOBAL", 0, 80, 0), "false");
  EXPECT_EQ(shop.Read("BILL.JSN"), paid);
  EXPECT_EQ(shop.Read("LOG"), Record("PAYMENT_AND_CONFIRM", "\"bill\":" + paid));
  EXPECT_FALSE(shop.Exists("OFFLINE"));
  EXPECT_EQ(shop.Read("STATE"), State());
  EXPECT_EQ(shop.CloseTransaction(), 0);
}

TEST_F(Purchase, OfAnAmountWithoutAListOfGoods) {
  Open({Success("putPaymentResponse", R"("bill":{"totalSum":15000})")});
  EXPECT_EQ(shop.CreateAmountBill(15000, "BILL.JSN"), 0);
  EXPECT_EQ(
      shop.Read("BILL.JSN"),
      R"({"totalSum":15000,"orderLen":1,"billNum":"1","billDate":"2012-12-05T10:00:00Z","partnerFee":1000,)"
      R"("goodList":{"good":[{"title":"TOTAL_AMOUNT","productCode":"008","positionCost":15000,)"
      R"("orderNum":1,"cnt":1}]}})");
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), 0);
  EXPECT_THAT(
      server->requests(),
      ElementsAre(Post("payment",
                       Request("putPaymentRequest", "PAYMENT",
                               R"("bill":{"totalSum":15000,"spendBonus":false,"orderLen":1,"billNum":"1",)"
                               R"("billDate":"2012-12-05T10:00:00Z","partnerFee":1000,"goodList":{"good":[)"
                               R"({"title":"TOTAL_AMOUNT","productCode":"008","positionCost":15000,)"
                               R"("orderNum":1,"cnt":1}]}})"))));
}

TEST_F(Purchase, WithoutAnRrnHasASlipWithoutTheLine) {
  Open({Success("putPaymentResponse", "\"bill\":" + Bill("0")), Success("putPaymentConfirmResponse"),
        Success("putCashBackResponse", R"("cashBackResult":{"returnedSum":0})")});
  test::SetClock(2012, 12, 4, 10, 0, 0);
  shop.Write("BILL.JSN", Bill("0"));
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), 0);
  EXPECT_EQ(shop.PaymentCancelProc("1234512120500003"), 0);
  EXPECT_EQ(shop.CashBackProc("1234512120500003", nullptr), 0);
  EXPECT_EQ(Body(), std::string(kTitle) + kSeparator +
                        "**** ОТМЕНА ПОКУПКИ ****\n"
                        "    ПОКУПКА ОТМЕНЕНА    \n"
                        "**** ВОЗВРАТ ТОВАРА ****\n"
                        "     ПОЛНЫЙ ВОЗВРАТ     \n");
}

constexpr char kCancelSlip[] =
    "**** ОТМЕНА ПОКУПКИ ****\n"
    "RRN: 1234512120500008\n"
    "    ПОКУПКА ОТМЕНЕНА    \n";

TEST_F(Purchase, IsConfirmed) {
  Open({Success("putPaymentConfirmResponse")});
  EXPECT_EQ(shop.PaymentConfirmProc("1234512120500003"), 0);
  EXPECT_EQ(Body(), kCancelSlip);
  const std::string part = R"("paymentConfirm":{"requestId":"1234512120500003","isConfirm":true})";
  EXPECT_THAT(server->requests(),
              ElementsAre(Post("confirm", Request("putPaymentConfirmRequest", "PAYMENT_CONFIRM", part))));
  EXPECT_EQ(shop.Read("LOG"), Record("PAYMENT_CONFIRM", part));
  EXPECT_FALSE(shop.Exists("OFFLINE"));
  EXPECT_EQ(shop.Read("STATE"), State());
}

TEST_F(Purchase, IsCanceled) {
  Open({Success("putPaymentConfirmResponse")});
  EXPECT_EQ(shop.PaymentCancelProc("1234512120500003"), 0);
  EXPECT_EQ(Body(), kCancelSlip);
  const std::string part = R"("paymentConfirm":{"requestId":"1234512120500003","isConfirm":false})";
  EXPECT_THAT(server->requests(),
              ElementsAre(Post("confirm", Request("putPaymentConfirmRequest", "PAYMENT_CONFIRM", part))));
  EXPECT_EQ(shop.Read("LOG"), Record("PAYMENT_CONFIRM", part));
  EXPECT_FALSE(shop.Exists("OFFLINE"));
  EXPECT_EQ(shop.Read("STATE"), State());
}

// The register passes on what getRRN gave it.
TEST_F(Purchase, IsConfirmedByTheTextThatGetRrnReturned) {
  Open({Success("putPaymentResponse", "\"bill\":" + Bill("0")),
        Success("putPaymentConfirmResponse", "", kSecondRrn)});
  shop.Write("BILL.JSN", Bill("0"));
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), 0);
  EXPECT_EQ(shop.PaymentConfirmProc(shop.getRRN()), 0);
  EXPECT_EQ(server->requests().at(1),
            Post("confirm", Request("putPaymentConfirmRequest", "PAYMENT_CONFIRM",
                                    R"("paymentConfirm":{"requestId":"1234512120500008","isConfirm":true})",
                                    kSecondRrn)));
}

TEST_F(Purchase, IsReturnedWhole) {
  Open({Success("putCashBackResponse", R"("cashBackResult":{"returnedSum":2050})")});
  EXPECT_EQ(shop.CashBackProc("1234512120500003", nullptr), 0);
  EXPECT_EQ(shop.GetCashBackResult(), 2050);
  EXPECT_EQ(Body(),
            "**** ВОЗВРАТ ТОВАРА ****\n"
            "RRN: 1234512120500008\n"
            "     ПОЛНЫЙ ВОЗВРАТ     \n"
            "Возвращено (бнс.):\n"
            "                   20.50\n");
  EXPECT_THAT(
      server->requests(),
      ElementsAre(
          Post("cashBack", Request("putCashBackRequest", "CASHBACK",
                                   R"("cashBack":{"requestId":"1234512120500003","cashBackType":"FULL"})"))));
  EXPECT_EQ(shop.Read("LOG"), Record("CASHBACK", ""));
  EXPECT_FALSE(shop.Exists("OFFLINE"));
  EXPECT_EQ(shop.Read("STATE"), State());
}

TEST_F(Purchase, IsReturnedInPart) {
  Open({Success("putCashBackResponse", R"("cashBackResult":{"returnedSum":0})")});
  shop.Write("RETURN.JSN", R"({"cashBackGood":[{"pos":1,"sum":2000,"cnt":1},{"pos":2,"sum":300,"cnt":2}]})");
  EXPECT_EQ(shop.CashBackProc("1234512120500003", "RETURN.JSN"), 0);
  EXPECT_EQ(shop.GetCashBackResult(), 0);
  EXPECT_EQ(Body(),
            "**** ВОЗВРАТ ТОВАРА ****\n"
            "RRN: 1234512120500008\n"
            "   ЧАСТИЧНЫЙ ВОЗВРАТ    \n");
  EXPECT_THAT(server->requests(),
              ElementsAre(Post("cashBack",
                               Request("putCashBackRequest", "CASHBACK",
                                       R"("cashBack":{"requestId":"1234512120500003","cashBackType":"SEQ",)"
                                       R"("cashBackGood":[{"pos":1,"sum":2000,"cnt":1},)"
                                       R"({"pos":2,"sum":300,"cnt":2}]})"))));
  EXPECT_EQ(shop.Read("RETURN.JSN"),
            R"({"cashBackGood":[{"pos":1,"sum":2000,"cnt":1},{"pos":2,"sum":300,"cnt":2}]})");
}

TEST_F(Purchase, IsReturnedAsTheListSays) {
  Open({Success("putCashBackResponse", R"("cashBackResult":{"returnedSum":5})"),
        Success("putCashBackResponse", R"("cashBackResult":{"returnedSum":0})", kSecondRrn)});
  shop.Write("FULL.JSN", R"({"cashBackType":"FULL","requestId":"1234512120500001"})");
  shop.Write("NEITHER.JSN", R"({"cashBackType":"HALF"})");
  EXPECT_EQ(shop.CashBackProc("1234512120500003", "FULL.JSN"), 0);
  EXPECT_EQ(shop.CashBackProc("1234512120500003", "NEITHER.JSN"), 0);
  EXPECT_EQ(Body(),
            "**** ВОЗВРАТ ТОВАРА ****\n"
            "RRN: 1234512120500008\n"
            "     ПОЛНЫЙ ВОЗВРАТ     \n"
            "Возвращено (бнс.):\n"
            "                    0.05\n"
            "**** ВОЗВРАТ ТОВАРА ****\n"
            "RRN: 1234512120500009\n");
  EXPECT_EQ(
      server->requests().at(0),
      Post("cashBack", Request("putCashBackRequest", "CASHBACK",
                               R"("cashBack":{"requestId":"1234512120500001","cashBackType":"FULL"})")));
}

// The same shop with its server gone and the rates of its settings.
class OfflinePurchase : public test::Register {
 protected:
  void Open() {
    OpenAlone(R"("offlineMode":1,"localBonusOffline":3,"globalBonusOffline":2,"orgFeeOffline":4)");
    shop.Write("BILL.JSN", Bill("10000"));
  }
};

const std::string kOfflineBonuses = Bonus("LOCAL", 0, 300, 300) + "," + Bonus("GLOBAL", 0, 200, 100);

constexpr char kOfflineLines[] =
    "Сумма (нал.):\n"
    "                  100.00\n"
    "************************\n"
    "Начислено всего:\n"
    "               2.00 бнс.\n"
    "Начислено всего\n"
    "Сеть:\n"
    "               5.00 бнс.\n"
    "Вознаграждение \n"
    "организатора:\n"
    "               4.00 бнс.\n";

TEST_F(OfflinePurchase, IsCompletedByTheTerminal) {
  Open();
  EXPECT_EQ(shop.PaymentProc(2000, "BILL.JSN"), 0);
  EXPECT_EQ(Body(), std::string(kOfflineTitle) + kRrnLine + kOfflineLines);
  const std::string paid = Bill("10000", kOfflineBonuses, "false");
  EXPECT_EQ(shop.Read("BILL.JSN"), paid);
  const std::string record = Record("PAYMENT", "\"bill\":" + paid, kFirstRrn, true);
  EXPECT_EQ(shop.Read("LOG"), record);
  EXPECT_EQ(shop.Read("OFFLINE"), record);
  EXPECT_EQ(shop.Read("STATE"), State(kFirstRrn, 1));
  EXPECT_EQ(shop.getOfflineState(), 1);
  EXPECT_EQ(shop.GetEarnBonusAmount(), 500);
  EXPECT_EQ(shop.GetSpendBonusAmount(), 0);
  EXPECT_EQ(shop.GetDiscountAmount(), 0);
}

TEST_F(OfflinePurchase, AndConfirmationIsCompletedByTheTerminal) {
  Open();
  EXPECT_EQ(shop.PaymentAndConfirmProc(2000, "BILL.JSN"), 0);
  EXPECT_EQ(Body(), std::string(kOfflineTitle) + kRrnLine + kOfflineLines);
  const std::string record =
      Record("PAYMENT_AND_CONFIRM", "\"bill\":" + Bill("10000", kOfflineBonuses, "false"), kFirstRrn, true);
  EXPECT_EQ(shop.Read("LOG"), record);
  EXPECT_EQ(shop.Read("OFFLINE"), record);
}

TEST_F(OfflinePurchase, IsConfirmedAndCanceledInTheJournal) {
  Open();
  EXPECT_EQ(shop.PaymentConfirmProc("1234512120500003"), 0);
  EXPECT_EQ(shop.PaymentCancelProc("1234512120500004"), 0);
  EXPECT_EQ(Body(),
            "**** ОТМЕНА ПОКУПКИ ****\n"
            "RRN: 1234512120500008\n"
            "    ПОКУПКА ОТМЕНЕНА    \n"
            "    В РЕЖИМЕ ОФФЛАЙН!   \n"
            "**** ОТМЕНА ПОКУПКИ ****\n"
            "RRN: 1234512120500009\n"
            "    ПОКУПКА ОТМЕНЕНА    \n"
            "    В РЕЖИМЕ ОФФЛАЙН!   \n");
  const std::string records =
      Record("PAYMENT_CONFIRM", R"("paymentConfirm":{"requestId":"1234512120500003","isConfirm":true})",
             kFirstRrn, true) +
      Record("PAYMENT_CONFIRM", R"("paymentConfirm":{"requestId":"1234512120500004","isConfirm":false})",
             kSecondRrn, true);
  EXPECT_EQ(shop.Read("LOG"), records);
  EXPECT_EQ(shop.Read("OFFLINE"), records);
  EXPECT_EQ(shop.Read("STATE"), State(kSecondRrn, 1));
}

// After a payment without the server the transaction asks it no more, except to link a card.
TEST_F(OfflinePurchase, MakesTheTransactionAnOfflineOne) {
  Open();
  ASSERT_EQ(shop.PaymentProc(0, "BILL.JSN"), 0);
  const std::string slip = Body();
  EXPECT_EQ(shop.BalanceProc(), 0);
  EXPECT_EQ(Body(), slip);
  EXPECT_EQ(shop.CashBackProc("1234512120500003", nullptr), 0);
  EXPECT_EQ(Body(), slip +
                        "**** ВОЗВРАТ ТОВАРА ****\n"
                        "RRN: 1234512120500010\n"
                        "     ПОЛНЫЙ ВОЗВРАТ     \n");
  EXPECT_EQ(shop.LinkCardProc("9000000002"), -501);
  const std::string records =
      Record("PAYMENT", "\"bill\":" + Bill("10000", kOfflineBonuses, "false"), kFirstRrn, true) +
      Record("CASHBACK", "", kThirdRrn, true);
  EXPECT_EQ(shop.Read("LOG"), records);
  EXPECT_EQ(shop.Read("OFFLINE"), records);
}

TEST_F(OfflinePurchase, IsRefusedWhenTheFeeExceedsTheBonuses) {
  OpenAlone(R"("offlineMode":1,"localBonusOffline":3,"globalBonusOffline":2,"orgFeeOffline":6)");
  shop.Write("BILL.JSN", Bill("10000"));
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), -104);
  EXPECT_EQ(shop.PaymentAndConfirmProc(0, "BILL.JSN"), -104);
  EXPECT_EQ(Body(), "");
  EXPECT_EQ(shop.Read("BILL.JSN"), Bill("10000"));
  EXPECT_FALSE(shop.Exists("LOG"));
  EXPECT_FALSE(shop.Exists("OFFLINE"));
}

TEST_F(OfflinePurchase, IsRefusedWhenTheSettingsDoNotAllowIt) {
  OpenAlone(R"("offlineMode":2,"localBonusOffline":3)");
  shop.Write("BILL.JSN", Bill("10000"));
  EXPECT_EQ(shop.PaymentProc(0, "BILL.JSN"), -501);
  EXPECT_EQ(shop.PaymentAndConfirmProc(0, "BILL.JSN"), -501);
  EXPECT_EQ(shop.PaymentConfirmProc("1"), -501);
  EXPECT_EQ(shop.CashBackProc("1", nullptr), -501);
  EXPECT_EQ(Body(), "");
  EXPECT_EQ(shop.Read("STATE"), State("1234512120500011", 0));
}

// Nothing is done offline but payments and their confirmations.
TEST_F(OfflinePurchase, IsTheOnlyThingDoneOffline) {
  Open();
  EXPECT_EQ(shop.ActivationProc("SIMPLE_ACTIVATION", nullptr, 1, nullptr, nullptr), -501);
  EXPECT_EQ(shop.BalanceProc(), -501);
  EXPECT_EQ(shop.DepositProc(1), -501);
  EXPECT_EQ(shop.ExchangeProc("t"), -501);
  EXPECT_EQ(shop.CashBackProc("1", nullptr), -501);
  EXPECT_EQ(Body(), "");
  EXPECT_FALSE(shop.Exists("LOG"));
  EXPECT_FALSE(shop.Exists("OFFLINE"));
  EXPECT_EQ(shop.Read("STATE"), State("1234512120500012", 1));
}

}  // namespace
