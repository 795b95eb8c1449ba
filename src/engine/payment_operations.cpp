#include "engine/payment_operations.h"

#include "config/lumoconfig.h"
#include "engine/bill_files.h"
#include "engine/completion.h"
#include "engine/dispatcher.h"
#include "engine/offline_payment.h"
#include "engine/request.h"
#include "engine/slip.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "record/enumerations.h"
#include "record/receipt.h"
#include "record/transaction.h"

namespace lumo {
namespace {

// The shop goes on selling when neither server can be reached and the settings allow it.
bool FallsBackOffline(int result) {
  return result == ERR_CONNECT && Settings().offlineMode == 1;
}

// Fills the bill from the register's file. What the customer asks to spend is stored even when that fails.
int TakeBill(Transaction *transaction, int32_t spend, const char *bill_path) {
  const int result = BillParse(transaction, bill_path, GoodBonuses::kPassOver);
  transaction->bill.spendAmount = spend;
  return result;
}

// What both kinds of payment do once the bill is read.
int Pay(Transaction *transaction, const char *bill_path) {
  int result = TransactionProcess(transaction);
  if (FallsBackOffline(result)) {
    const SettingsRecord &settings = Settings();
    result = PaymentProcessOffline(transaction, settings.globalBonusOffline, settings.localBonusOffline,
                                   settings.orgFeeOffline);
  }
  if (result != 0) return result;
  // Note: whether the record could be kept does not matter to the register; the bill's file does.
  WriteTransactionRecord(transaction);
  result = BillModify(transaction, bill_path);
  transaction->completedOperations |= COMPLETED_PAYMENT;
  PrintPayment(transaction);
  Trace("Bill:\n%s\n", ReceiptGetText(transaction->body));
  return result;
}

// Names the goods that come back: those of the list, or all without one.
int TakeReturnList(Transaction *transaction, const char *return_list_path) {
  if (return_list_path == nullptr) {
    transaction->cashBack.cashBackType = CASHBACK_FULL;
    return 0;
  }
  // The list's own type, when it has one, replaces this.
  transaction->cashBack.cashBackType = CASHBACK_SEQ;
  return CashbackParse(transaction, return_list_path) != 0 ? ERR_RETURN_LIST_FORMAT : 0;
}

}  // namespace

int PaymentProcess(Transaction *transaction, int32_t spend, const char *bill_path) {
  Trace("PaymentProcess\n");
  int result = StartOperation(transaction, REQUEST_PAYMENT);
  if (result != 0) return result;
  result = TakeBill(transaction, spend, bill_path);
  if (result != 0) {
    TraceError("BillParse res [%d] \"%s\"\n", result, ErrorMessage(result));
    return ERR_BILL_FORMAT;
  }
  return Pay(transaction, bill_path);
}

int PaymentAndConfirmProcess(Transaction *transaction, int32_t spend, const char *bill_path) {
  Trace("PaymentAndConfirmProcess spend [%d] bill [%s]\n", spend, bill_path);
  int result = StartOperation(transaction, REQUEST_PAYMENT_AND_CONFIRM);
  if (result != 0) return result;
  result = TakeBill(transaction, spend, bill_path);
  if (result != 0) {
    // Note: unlike the plain payment, the bill's own code goes to the register.
    TraceError("BillParse res [%d]\n", result);
    return result;
  }
  return Pay(transaction, bill_path);
}

int PaymentConfirmProcess(Transaction *transaction, bool is_confirm, const char *rrn) {
  Trace("PaymentConfirmProcess confirm [%d] rrn [%s]\n", is_confirm ? 1 : 0, rrn);
  int result = StartOperation(transaction, REQUEST_PAYMENT_CONFIRM);
  if (result != 0) return result;
  transaction->paymentConfirm.isConfirm = is_confirm;
  TransactionCopyText(transaction, &transaction->paymentConfirm.requestId, rrn);
  if (!IsOffline(transaction)) {
    result = TransactionProcess(transaction);
    if (FallsBackOffline(result)) {
      transaction->request.isOffline = true;
      result = 0;
    }
  }
  if (result != 0) return result;
  result = WriteTransactionRecord(transaction);
  if (result != 0) return result;
  transaction->completedOperations |= COMPLETED_CONFIRM;
  PrintConfirm(transaction);
  return 0;
}

int CashBackProcess(Transaction *transaction, const char *rrn, const char *return_list_path) {
  Trace("PaymentConfirmProcess rrn [%s] cashback file [%s]\n", rrn, return_list_path);
  int result = StartOperation(transaction, REQUEST_CASHBACK);
  if (result != 0) return result;
  TransactionCopyText(transaction, &transaction->cashBack.requestId, rrn);
  result = TakeReturnList(transaction, return_list_path);
  if (result != 0) return result;
  if (!IsOffline(transaction)) {
    result = TransactionProcess(transaction);
    if (result != 0) return result;
  }
  result = CompleteOperation(transaction, COMPLETED_CASHBACK);
  PrintCashBack(transaction);
  return result;
}

}  // namespace lumo
