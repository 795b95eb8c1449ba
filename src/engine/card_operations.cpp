#include "engine/card_operations.h"

#include "engine/bill_files.h"
#include "engine/completion.h"
#include "engine/dispatcher.h"
#include "engine/request.h"
#include "engine/slip.h"
#include "foundation/arithmetic.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "record/enumerations.h"
#include "record/transaction.h"

namespace lumo {
namespace {

// 0, ERR_ACTIVATION_TYPE or ERR_ACCOUNT_TYPE.
int FillActivation(Transaction *transaction, const char *activation_type, int32_t amount,
                   const char *account_type, const char *refer_card_num) {
  ActivationBlock &activation = transaction->activation;
  activation.activationType = ActivationTypeFromString(activation_type);
  if (activation.activationType == ACTIVATION_UNKNOWN) return ERR_ACTIVATION_TYPE;
  activation.amount = amount;
  if (activation.activationType == ACTIVATION_GIFT_CARD) {
    activation.type = AccountTypeFromString(account_type);
    if (activation.type == ACCOUNT_UNKNOWN) return ERR_ACCOUNT_TYPE;
  }
  if (activation.activationType == ACTIVATION_REFER_A_FRIEND) {
    TransactionCopyText(transaction, &activation.referParentCardNum, refer_card_num);
  }
  return 0;
}

}  // namespace

int ActivationProcess(Transaction *transaction, const char *activation_type, const char *bill_path,
                      int32_t amount, const char *account_type, const char *refer_card_num) {
  Trace("ActivationProcess\n");
  int result = StartOperation(transaction, REQUEST_ACTIVATION);
  if (result != 0) return result;
  if (bill_path != nullptr) {
    result = BillParse(transaction, bill_path, GoodBonuses::kPassOver);
    if (result != 0) {
      TraceError("BillParse res [%d] %s\n", result, ErrorMessage(result));
      return ERR_BILL_FORMAT;
    }
    amount = transaction->bill.totalSum;
  }
  result = FillActivation(transaction, activation_type, amount, account_type, refer_card_num);
  if (result != 0) return result;
  // The answer may say otherwise; the slip shows what was asked for.
  const ActivationType type = transaction->activation.activationType;
  result = TransactionProcess(transaction);
  if (result != 0) return result;
  result = CompleteOperation(transaction, COMPLETED_ACTIVATION);
  PrintActivation(transaction, type, amount);
  return result;
}

int GetActivationAmountProcess(const Transaction *transaction) {
  Trace("GetActivationAmountProcess\n");
  if (TraceIfNull(transaction)) return ERR_NO_TRANSACTION;
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
  if (result != 0) return result;
  if (IsOffline(transaction)) return 0;
  result = TransactionProcess(transaction);
  if (result != 0) return result;
  transaction->completedOperations |= COMPLETED_BALANCE;
  PrintBalance(transaction);
  return 0;
}

int SumBalanceAmounts(const Transaction *transaction) {
  if (TraceIfNull(transaction)) return 0;
  int32_t sum = 0;
  for (int32_t i = 0; i < transaction->balance.count; ++i) {
    const BalanceAccount &account = transaction->balance.accounts[i];
    switch (account.accountType) {
      case ACCOUNT_GLOBAL:
      case ACCOUNT_LOCAL:
        sum = WrapAdd(sum, account.availableAmount);
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
  if (result != 0) return result;
  TransactionCopyText(transaction, &transaction->linkedCardNum, card_num);
  // Note: the server is asked for a record completed offline and not for an ordinary one.
  if (IsOffline(transaction)) {
    result = TransactionProcess(transaction);
    if (result != 0) return result;
  }
  result = CompleteOperation(transaction, COMPLETED_LINK);
  PrintLink(transaction);
  return result;
}

int DepositProcess(Transaction *transaction, int32_t amount) {
  Trace("DepositProcess amount [%d]\n", amount);
  int result = StartOperation(transaction, REQUEST_DEPOSIT);
  if (result != 0) return result;
  transaction->depositAmount = amount;
  result = TransactionProcess(transaction);
  if (result != 0) return result;
  result = CompleteOperation(transaction, COMPLETED_DEPOSIT);
  PrintDeposit(transaction, amount);
  return result;
}

int ExchangeProcess(Transaction *transaction, const char *token) {
  Trace("ExchangeProcess token [%s]\n", token);
  int result = StartOperation(transaction, REQUEST_EXCHANGE);
  if (result != 0) return result;
  TransactionCopyText(transaction, &transaction->exchangeToken, token);
  result = TransactionProcess(transaction);
  if (result != 0) return result;
  result = CompleteOperation(transaction, COMPLETED_EXCHANGE);
  PrintExchange(transaction);
  return result;
}

int GetAdProcess(Transaction *transaction) {
  Trace("GetAdProcess\n");
  const int result = StartOperation(transaction, REQUEST_AD);
  return result != 0 ? result : TransactionProcess(transaction);
}

}  // namespace lumo
