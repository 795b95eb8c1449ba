#include "engine/card_operations.h"

#include <cstring>

#include "config/lumoconfig.h"
#include "engine/bill_files.h"
#include "engine/dispatcher.h"
#include "engine/request.h"
#include "foundation/arithmetic.h"
#include "foundation/format.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "protocol/transaction_json.h"
#include "record/enumerations.h"
#include "record/receipt.h"
#include "record/transaction.h"

namespace lumo {

namespace {

// Journals the operation and marks it done, whatever the journal answers. Returns the journal's result.
int CompleteOperation(Transaction *transaction, CompletedOperation operation) {
  const int result = WriteTransactionRecord(transaction);
  transaction->completedOperations |= operation;
  return result;
}

void PrintTitle(Transaction *transaction, const char *title) {
  ReceiptPrintf(transaction->body, "%s\n", title);
}

// 0, -102 or -103.
int FillActivation(Transaction *transaction, const char *activation_type, int32_t amount,
                   const char *account_type, const char *refer_card_num) {
  ActivationBlock &activation = transaction->activation;
  activation.activationType = ActivationTypeFromString(activation_type);
  if (activation.activationType == ACTIVATION_UNKNOWN) {
    return ERR_ACTIVATION_TYPE;
  }
  activation.amount = amount;
  if (activation.activationType == ACTIVATION_GIFT_CARD) {
    activation.type = AccountTypeFromString(account_type);
    if (activation.type == ACCOUNT_UNKNOWN) {
      return ERR_ACCOUNT_TYPE;
    }
  }
  if (activation.activationType == ACTIVATION_REFER_A_FRIEND) {
    trans_strcpy(transaction, &activation.referParentCardNum, refer_card_num);
  }
  return 0;
}

void PrintActivation(Transaction *transaction, const char *activation_type) {
  ReceiptBuffer *body = transaction->body;
  if (strcmp(activation_type, "GIFT_CARD") == 0) {
    PrintTitle(transaction, "*** ПОДАРОЧНАЯ КАРТА ***");
    PrintRrn(transaction);
    ReceiptPrintf(body, "Начислено (бнс.):\n");
    ReceiptPrintf(body, "%24s\n", FormatAmount(transaction->activation.amount));
  } else if (strcmp(activation_type, "REFER_A_FRIEND") == 0) {
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

struct BalanceTotals {
  int32_t earnedGlobal;
  int32_t earnedLocal;
  int32_t availableGlobal;
  int32_t availableLocal;
  int32_t availableDiscount;
};

void AddTo(int32_t *total, int32_t amount) {
  *total = WrapAdd(*total, amount);
}

BalanceTotals SumBalance(const BalanceBlock &balance) {
  BalanceTotals totals = {};
  for (int32_t i = 0; i < balance.count; ++i) {
    const BalanceAccount &account = balance.accounts[i];
    Trace("Amount [%d] Available [%d]\n", account.amount, account.availableAmount);
    switch (account.accountType) {
      case ACCOUNT_GLOBAL:
        AddTo(&totals.earnedGlobal, account.amount);
        AddTo(&totals.availableGlobal, account.availableAmount);
        break;
      case ACCOUNT_LOCAL:
        AddTo(&totals.earnedLocal, account.amount);
        AddTo(&totals.availableLocal, account.availableAmount);
        break;
      case ACCOUNT_DISCOUNT:
        // Deliberate: a discount account's amount counts as available local bonuses; the slip's earned
        // discount line shows that total.
        AddTo(&totals.availableLocal, account.amount);
        AddTo(&totals.availableDiscount, account.availableAmount);
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

void PrintBalance(ReceiptBuffer *body, const BalanceTotals &totals) {
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
  ReceiptPrintf(body, "************************\n");
  ReceiptPrintf(body, "Доступно всего:\n");
  PrintBonuses(body, totals.availableGlobal);
  ReceiptPrintf(body, "Доступно всего\n");
  ReceiptPrintf(body, "%s:\n", network);
  PrintBonuses(body, WrapAdd(totals.availableGlobal, totals.availableLocal));
  ReceiptPrintf(body, "Доступно скид бон \n");
  ReceiptPrintf(body, "%s:\n", network);
  ReceiptPrintf(body, "%19s ски.\n", FormatAmount(totals.availableDiscount));
}

}  // namespace

void PrintRrn(Transaction *transaction) {
  if (transaction->request.requestId != nullptr) {
    ReceiptPrintf(transaction->body, "RRN: %16s\n", transaction->request.requestId);
  }
}

int ActivationProcess(Transaction *transaction, const char *activation_type, const char *bill_path,
                      int32_t amount, const char *account_type, const char *refer_card_num) {
  Trace("ActivationProcess\n");
  int result = StartOperation(transaction, REQUEST_ACTIVATION);
  if (result != 0) {
    return result;
  }
  if (bill_path != nullptr) {
    result = BillParse(transaction, bill_path, 0);
    if (result != 0) {
      TraceError("BillParse res [%d] %s\n", result, ErrorMessage(result));
      return ERR_BILL_FORMAT;
    }
    amount = transaction->bill.totalSum;
  }
  result = FillActivation(transaction, activation_type, amount, account_type, refer_card_num);
  if (result != 0) {
    return result;
  }
  result = TransactionProcess(transaction);
  if (result != 0) {
    return result;
  }
  result = CompleteOperation(transaction, COMPLETED_ACTIVATION);
  PrintActivation(transaction, activation_type);
  return result;
}

int GetActivationAmountProcess(const Transaction *transaction) {
  Trace("GetActivationAmountProcess\n");
  if (TraceIfNull(transaction)) {
    return ERR_NO_TRANSACTION;
  }
  switch (transaction->activation.activationType) {
    case ACTIVATION_SIMPLE:
      return transaction->activationResult.activationSum;
    case ACTIVATION_GIFT_CARD:
      return transaction->activationResult.giftSum;
    case ACTIVATION_REFER_A_FRIEND:
      return transaction->activationResult.referralSum;
    default:
      TraceError("Not supported activation type\n");
      return 0;
  }
}

int BalanceProcess(Transaction *transaction) {
  Trace("BalanceProcess\n");
  int result = StartOperation(transaction, REQUEST_BALANCE);
  if (result != 0) {
    return result;
  }
  if (isOffline(transaction) != 0) {
    return 0;
  }
  result = TransactionProcess(transaction);
  if (result != 0) {
    return result;
  }
  transaction->completedOperations |= COMPLETED_BALANCE;
  Trace("Balance has %d accounts\n", transaction->balance.count);
  PrintBalance(transaction->body, SumBalance(transaction->balance));
  return 0;
}

int SumBalanceAmounts(const Transaction *transaction) {
  if (TraceIfNull(transaction)) {
    return 0;
  }
  int32_t sum = 0;
  for (int32_t i = 0; i < transaction->balance.count; ++i) {
    const BalanceAccount &account = transaction->balance.accounts[i];
    switch (account.accountType) {
      case ACCOUNT_GLOBAL:
      case ACCOUNT_LOCAL:
        AddTo(&sum, account.availableAmount);
        break;
      case ACCOUNT_DISCOUNT:
        Trace("Ignore DISCOUNT %d\n", account.availableAmount);
        break;
      default:
        TraceError("Unknown account type %d\n", account.accountType);
        break;
    }
  }
  return sum;
}

int GetCashBackResultProcess(const Transaction *transaction) {
  Trace("GetCashBackResultProcess\n");
  return TraceIfNull(transaction) ? ERR_NO_TRANSACTION : transaction->returnedSum;
}

int LinkCardProcess(Transaction *transaction, const char *card_num) {
  Trace("LinkCardProcess card [%s]\n", card_num);
  int result = StartOperation(transaction, REQUEST_LINK);
  if (result != 0) {
    return result;
  }
  trans_strcpy(transaction, &transaction->linkedCardNum, card_num);
  // Deliberate: the server is asked for a record completed offline and not for an ordinary one.
  if (isOffline(transaction) != 0) {
    result = TransactionProcess(transaction);
    if (result != 0) {
      return result;
    }
  }
  result = CompleteOperation(transaction, COMPLETED_LINK);
  PrintTitle(transaction, "**** ПРИСОЕДИНЕНИЕ *****");
  PrintRrn(transaction);
  ReceiptPrintf(transaction->body, "Карта  активирована   и\n");
  ReceiptPrintf(transaction->body, "присоединена  к  счету\n");
  ReceiptPrintf(transaction->body, "карты:\n");
  ReceiptPrintf(transaction->body, "    %s\n", TextOrEmpty(transaction->linkedCardNum));
  return result;
}

int DepositProcess(Transaction *transaction, int32_t amount) {
  Trace("DepositProcess amount [%d]\n", amount);
  int result = StartOperation(transaction, REQUEST_DEPOSIT);
  if (result != 0) {
    return result;
  }
  transaction->depositAmount = amount;
  result = TransactionProcess(transaction);
  if (result != 0) {
    return result;
  }
  result = CompleteOperation(transaction, COMPLETED_DEPOSIT);
  PrintTitle(transaction, "******* ДЕПОЗИТ *******");
  PrintRrn(transaction);
  if (amount != 0) {
    ReceiptPrintf(transaction->body, "Зачислено (бнс.):\n");
    // Deliberate: no line end.
    ReceiptPrintf(transaction->body, "%24s", FormatAmount(amount));
  }
  return result;
}

int ExchangeProcess(Transaction *transaction, const char *token) {
  Trace("ExchangeProcess token [%s]\n", token);
  int result = StartOperation(transaction, REQUEST_EXCHANGE);
  if (result != 0) {
    return result;
  }
  trans_strcpy(transaction, &transaction->exchangeToken, token);
  result = TransactionProcess(transaction);
  if (result != 0) {
    return result;
  }
  result = CompleteOperation(transaction, COMPLETED_EXCHANGE);
  PrintTitle(transaction, "******** ЗАМЕНА ********");
  PrintRrn(transaction);
  return result;
}

int GetAdProcess(Transaction *transaction) {
  Trace("GetAdProcess\n");
  const int result = StartOperation(transaction, REQUEST_AD);
  return result != 0 ? result : TransactionProcess(transaction);
}

}  // namespace lumo
