#include "engine/slip.h"

#include "config/lumoconfig.h"
#include "engine/offline_payment.h"
#include "foundation/arithmetic.h"
#include "foundation/dates.h"
#include "foundation/format.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "record/receipt.h"
#include "record/transaction.h"

namespace lumo {
namespace {

constexpr const char *kSeparator = "************************\n";

void PrintTitle(Transaction *transaction, const char *title) {
  ReceiptPrintf(transaction->body, "%s\n", title);
}

struct BalanceTotals {
  int32_t earnedGlobal;
  int32_t earnedLocal;
  int32_t availableGlobal;
  int32_t availableLocal;
  int32_t availableDiscount;
};

void AddAmount(int32_t *total, int32_t amount) {
  *total = WrapAdd(*total, amount);
}

BalanceTotals SumBalance(const BalanceBlock &balance) {
  BalanceTotals totals = {};
  for (int32_t i = 0; i < balance.count; ++i) {
    const BalanceAccount &account = balance.accounts[i];
    Trace("Amount [%d] Available [%d]\n", account.amount, account.availableAmount);
    switch (account.accountType) {
      case ACCOUNT_GLOBAL:
        AddAmount(&totals.earnedGlobal, account.amount);
        AddAmount(&totals.availableGlobal, account.availableAmount);
        break;
      case ACCOUNT_LOCAL:
        AddAmount(&totals.earnedLocal, account.amount);
        AddAmount(&totals.availableLocal, account.availableAmount);
        break;
      case ACCOUNT_DISCOUNT:
        // Note: a discount account's amount counts as available local bonuses; the slip's earned
        // discount line shows that total.
        AddAmount(&totals.availableLocal, account.amount);
        AddAmount(&totals.availableDiscount, account.availableAmount);
        break;
      default:
        break;
    }
  }
  return totals;
}

void PrintBonuses(ReceiptBuffer *body, int32_t amount) {
  ReceiptPrintf(body, "%19s бнс.\n", FormatAmount(amount));
}

// "Сумма ..." and the amount over the slip's whole width; nothing for 0.
void PrintSum(ReceiptBuffer *body, const char *title, int32_t amount) {
  if (amount != 0) {
    ReceiptPrintf(body, "%s\n", title);
    ReceiptPrintf(body, "%24s\n", FormatAmount(amount));
  }
}

void PrintEarned(ReceiptBuffer *body, const BonusTotals &totals) {
  const char *network = TextOrEmpty(Settings().retailNetworkName);
  if (totals.earnedGlobal != 0) {
    ReceiptPrintf(body, "Начислено всего:\n");
    PrintBonuses(body, totals.earnedGlobal);
  }
  const int32_t earned = WrapAdd(totals.earnedGlobal, totals.earnedLocal);
  if (earned != 0) {
    ReceiptPrintf(body, "Начислено всего\n");
    ReceiptPrintf(body, "%s:\n", network);
    PrintBonuses(body, earned);
  }
  if (totals.earnedDiscount != 0) {
    ReceiptPrintf(body, "Начислено скид бон в\n");
    ReceiptPrintf(body, "%s:\n", network);
    ReceiptPrintf(body, "%19s ски.\n", FormatAmount(totals.earnedDiscount));
  }
  if (totals.organizerFee != 0) {
    ReceiptPrintf(body, "Вознаграждение \n");
    ReceiptPrintf(body, "организатора:\n");
    PrintBonuses(body, totals.organizerFee);
  }
}

BonusTotals CountAndTraceBonuses(const Transaction *transaction) {
  BonusTotals totals = {};
  CountBonuses(transaction, &totals);
  Trace("earnedLocal = %d\n", totals.earnedLocal);
  Trace("earnedGlobal = %d\n", totals.earnedGlobal);
  Trace("earnedDiscount = %d\n", totals.earnedDiscount);
  Trace("spendLocal = %d\n", totals.spendLocal);
  Trace("spendGlobal = %d\n", totals.spendGlobal);
  Trace("spendDiscount = %d\n", totals.spendDiscount);
  return totals;
}

}  // namespace

void PrintSlipHeader(Transaction *transaction, const char *card_num) {
  ReceiptBuffer *header = transaction->header;
  ReceiptPrintf(header, "%s\n", TextOrEmpty(Settings().receiptHeader));
  ReceiptPrintf(header, "%s\n", ReceiptTimestamp());
  ReceiptPrintf(header, "Терминал %14s\n", TextOrEmpty(Settings().terminalId));
  ReceiptPrintf(header, "     *** КАРТА ***\n");
  ReceiptPrintf(header, "    %s\n", TextOrEmpty(card_num));
}

void PrintSlipFooter(Transaction *transaction) {
  ReceiptPrintf(transaction->footer, "%s\n", TextOrEmpty(Settings().receiptFooter));
}

void PrintRrn(Transaction *transaction) {
  if (transaction->request.requestId != nullptr) {
    ReceiptPrintf(transaction->body, "RRN: %16s\n", transaction->request.requestId);
  }
}

void PrintActivation(Transaction *transaction, ActivationType type, int32_t amount) {
  ReceiptBuffer *body = transaction->body;
  if (type == ACTIVATION_GIFT_CARD) {
    PrintTitle(transaction, "*** ПОДАРОЧНАЯ КАРТА ***");
    PrintRrn(transaction);
    ReceiptPrintf(body, "Начислено (бнс.):\n");
    ReceiptPrintf(body, "%24s\n", FormatAmount(amount));
  } else if (type == ACTIVATION_REFER_A_FRIEND) {
    PrintTitle(transaction, "**** ПРИВЕДИ ДРУГА *****");
    PrintRrn(transaction);
    ReceiptPrintf(body, "        Успешно!        \n");
    ReceiptPrintf(body, "***  КАРТА РЕФЕРЕНТА ***\n");
    ReceiptPrintf(body, "    %s\n", TextOrEmpty(transaction->activation.referParentCardNum));
  } else {
    PrintTitle(transaction, "****** АКТИВАЦИЯ *******");
    PrintRrn(transaction);
    ReceiptPrintf(body, "        Успешно!        \n");
  }
}

void PrintBalance(Transaction *transaction) {
  Trace("Balance has %d accounts\n", transaction->balance.count);
  const BalanceTotals totals = SumBalance(transaction->balance);
  ReceiptBuffer *body = transaction->body;
  const char *network = TextOrEmpty(Settings().retailNetworkName);
  ReceiptPrintf(body, "**** ИНФО ПО КАРТЕ ****\n");
  ReceiptPrintf(body, "Начислено всего:\n");
  PrintBonuses(body, totals.earnedGlobal);
  ReceiptPrintf(body, "Начислено всего\n");
  ReceiptPrintf(body, "%s:\n", network);
  PrintBonuses(body, WrapAdd(totals.earnedGlobal, totals.earnedLocal));
  ReceiptPrintf(body, "Начислено скид бон \n");
  ReceiptPrintf(body, "%s:\n", network);
  PrintBonuses(body, totals.availableLocal);
  ReceiptPrintf(body, "%s", kSeparator);
  ReceiptPrintf(body, "Доступно всего:\n");
  PrintBonuses(body, totals.availableGlobal);
  ReceiptPrintf(body, "Доступно всего\n");
  ReceiptPrintf(body, "%s:\n", network);
  PrintBonuses(body, WrapAdd(totals.availableGlobal, totals.availableLocal));
  ReceiptPrintf(body, "Доступно скид бон \n");
  ReceiptPrintf(body, "%s:\n", network);
  ReceiptPrintf(body, "%19s ски.\n", FormatAmount(totals.availableDiscount));
}

void PrintLink(Transaction *transaction) {
  PrintTitle(transaction, "**** ПРИСОЕДИНЕНИЕ *****");
  PrintRrn(transaction);
  ReceiptPrintf(transaction->body, "Карта  активирована   и\n");
  ReceiptPrintf(transaction->body, "присоединена  к  счету\n");
  ReceiptPrintf(transaction->body, "карты:\n");
  ReceiptPrintf(transaction->body, "    %s\n", TextOrEmpty(transaction->linkedCardNum));
}

void PrintDeposit(Transaction *transaction, int32_t amount) {
  PrintTitle(transaction, "******* ДЕПОЗИТ *******");
  PrintRrn(transaction);
  if (amount != 0) {
    ReceiptPrintf(transaction->body, "Зачислено (бнс.):\n");
    // Note: no line end.
    ReceiptPrintf(transaction->body, "%24s", FormatAmount(amount));
  }
}

void PrintExchange(Transaction *transaction) {
  PrintTitle(transaction, "******** ЗАМЕНА ********");
  PrintRrn(transaction);
}

void PrintPayment(Transaction *transaction) {
  ReceiptBuffer *body = transaction->body;
  ReceiptPrintf(body, "******* ПОКУПКА ********\n");
  ReceiptPrintf(body, "  Полагающиеся бонусы   \n");
  ReceiptPrintf(body, "  будут перечислены в   \n");
  ReceiptPrintf(body, "      Клуб Тавиро       \n");
  ReceiptPrintf(body, "%s", kSeparator);
  if (IsOffline(transaction)) {
    ReceiptPrintf(body, "        ОФФЛАЙН\n");
    ReceiptPrintf(body, "%s", kSeparator);
  }
  PrintRrn(transaction);
  const BonusTotals totals = CountAndTraceBonuses(transaction);
  const int32_t spent = WrapAdd(totals.spendLocal, totals.spendGlobal);
  const int32_t cash = WrapSubtract(WrapSubtract(transaction->bill.totalSum, spent), totals.spendDiscount);
  PrintSum(body, "Сумма (нал.):", cash);
  PrintSum(body, "Сумма (бнс.):", spent);
  PrintSum(body, "Скидка (бнс.):", totals.spendDiscount);
  ReceiptPrintf(body, "%s", kSeparator);
  PrintEarned(body, totals);
}

void PrintConfirm(Transaction *transaction) {
  // Note: a confirmation prints the slip of a cancellation.
  ReceiptPrintf(transaction->body, "**** ОТМЕНА ПОКУПКИ ****\n");
  PrintRrn(transaction);
  ReceiptPrintf(transaction->body, "    ПОКУПКА ОТМЕНЕНА    \n");
  if (IsOffline(transaction)) ReceiptPrintf(transaction->body, "    В РЕЖИМЕ ОФФЛАЙН!   \n");
}

void PrintCashBack(Transaction *transaction) {
  ReceiptBuffer *body = transaction->body;
  ReceiptPrintf(body, "**** ВОЗВРАТ ТОВАРА ****\n");
  PrintRrn(transaction);
  if (transaction->cashBack.cashBackType == CASHBACK_FULL) {
    ReceiptPrintf(body, "     ПОЛНЫЙ ВОЗВРАТ     \n");
  } else if (transaction->cashBack.cashBackType == CASHBACK_SEQ) {
    ReceiptPrintf(body, "   ЧАСТИЧНЫЙ ВОЗВРАТ    \n");
  }
  PrintSum(body, "Возвращено (бнс.):", transaction->returnedSum);
}

const char *GetTransReceiptHeader(const Transaction *transaction) {
  Trace("GetTransReceiptHeader\n");
  return TraceIfNull(transaction) ? nullptr : ReceiptGetText(transaction->header);
}

const char *GetTransReceiptFooter(const Transaction *transaction) {
  Trace("GetTransReceiptFooter\n");
  return TraceIfNull(transaction) ? nullptr : ReceiptGetText(transaction->footer);
}

const char *GetTransReceiptBody(const Transaction *transaction) {
  Trace("GetTransReceiptBody\n");
  return TraceIfNull(transaction) ? nullptr : ReceiptGetText(transaction->body);
}

int GetTransactionReceiptSize(const Transaction *transaction) {
  Trace("GetTransactionReceiptSize\n");
  return TraceIfNull(transaction) ? ERR_NO_TRANSACTION
                                  : static_cast<int>(ReceiptGetLength(transaction->body)) + 1;
}

}  // namespace lumo
