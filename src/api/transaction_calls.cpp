#include <cstring>

#include "api/context.h"
#include "config/lumoconfig.h"
#include "config/lumostate.h"
#include "engine/bill_files.h"
#include "engine/card_operations.h"
#include "engine/offline_payment.h"
#include "engine/offline_replay.h"
#include "engine/payment_operations.h"
#include "engine/request.h"
#include "engine/slip.h"
#include "foundation/arithmetic.h"
#include "foundation/format.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "lumo.h"
#include "record/enumerations.h"
#include "record/receipt.h"
#include "record/transaction.h"

using lumo::current_transaction;
using lumo::Trace;

namespace {

// No text lies below this address, so a smaller "pointer" is a number.
constexpr uintptr_t kFirstTextAddress = 0x10000;

// Some registers pass the activation type as its number in place of a text; null is the number 0. A number
// of no type gives the empty text, which is no type either.
const char *ActivationTypeText(const char *activation_type) {
  const auto number = reinterpret_cast<uintptr_t>(activation_type);
  if (number < kFirstTextAddress) {
    return lumo::ActivationTypeToString(static_cast<lumo::ActivationType>(number));
  }
  return activation_type;
}

// All zero when there is nothing to count.
lumo::BonusTotals CurrentBonuses() {
  lumo::BonusTotals totals = {};
  if (lumo::CountBonuses(current_transaction, &totals) < 0) return {};
  return totals;
}

}  // namespace

int CreateTransaction(const char *card_num, const char *employee_id) {
  Trace("CreateTransaction [%s] [%s]\n", card_num, employee_id);
  if (lumo::Settings().shiftMode > 0 && lumo::GetShiftState() == 0) {
    lumo::TraceError("Shift mode is ON and shift not opened!\n");
    return ERR_SHIFT_NOT_OPEN;
  }
  if (current_transaction != nullptr) {
    lumo::TraceError("Transaction created already\n");
    return ERR_TRANSACTION_EXISTS;
  }
  current_transaction = lumo::TransactionCreate();
  if (current_transaction == nullptr) {  // GCOVR_EXCL_START: out of memory ends the process
    lumo::TraceError("new_transaction function failed\n");
    return ERR_NO_TRANSACTION;
  }  // GCOVR_EXCL_STOP
  return lumo::FillTransactionHeader(current_transaction, card_num, employee_id);
}

int CloseTransaction(void) {
  Trace("CloseTransaction()\n");
  lumo::TransactionFree(current_transaction);
  current_transaction = nullptr;
  return 0;
}

int ActivationProc(const char *activation_type, const char *bill_path, int amount, const char *account_type,
                   const char *refer_card_num) {
  const char *type_text = ActivationTypeText(activation_type);
  Trace("ActivationProc\n");
  Trace("  activation_type [%d]\n", lumo::FindActivationType(type_text));
  Trace("  amount [%d]\n", amount);
  Trace("  type [%s]\n", account_type);
  Trace("  refer_card_num [%s]\n", refer_card_num);
  return lumo::ActivationProcess(current_transaction, type_text, bill_path, amount, account_type,
                                 refer_card_num);
}

int GetActivationAmount(void) {
  return lumo::GetActivationAmountProcess(current_transaction);
}

int BalanceProc(void) {
  Trace("BalanceProc()\n");
  return lumo::BalanceProcess(current_transaction);
}

int GetBalance(void) {
  return lumo::SumBalanceAmounts(current_transaction);
}

int PaymentProc(int amount, const char *bill_path) {
  Trace("PaymentProc(%d, %s)\n", amount, bill_path);
  return lumo::PaymentProcess(current_transaction, amount, bill_path);
}

int PaymentAndConfirmProc(int amount, const char *bill_path) {
  Trace("PaymentAndConfirmProc(%d, %s)\n", amount, bill_path);
  return lumo::PaymentAndConfirmProcess(current_transaction, amount, bill_path);
}

int PaymentConfirmProc(const char *rrn) {
  Trace("PaymentConfirmProc(%s)\n", rrn);
  return lumo::PaymentConfirmProcess(current_transaction, true, rrn);
}

int PaymentCancelProc(const char *rrn) {
  Trace("PaymentCancelProc(%s)\n", rrn);
  return lumo::PaymentConfirmProcess(current_transaction, false, rrn);
}

int CashBackProc(const char *rrn, const char *return_list_path) {
  Trace("CashBackProc(%s, %s)\n", rrn, return_list_path);
  return lumo::CashBackProcess(current_transaction, rrn, return_list_path);
}

int GetCashBackResult(void) {
  return lumo::GetCashBackResultProcess(current_transaction);
}

int DepositProc(int amount) {
  Trace("DepositProc(%d)\n", amount);
  return lumo::DepositProcess(current_transaction, amount);
}

int ExchangeProc(const char *token) {
  Trace("ExchangeProc(%s)\n", token);
  return lumo::ExchangeProcess(current_transaction, token);
}

int LinkCardProc(const char *card_num) {
  Trace("LinkCardProc(%s)\n", card_num);
  return lumo::LinkCardProcess(current_transaction, card_num);
}

int CreateAmountBill(int total_sum, const char *bill_path) {
  return lumo::CreateAmountBill(total_sum, bill_path);
}

const char *getResponseState(void) {
  Trace("getResponseState()\n");
  if (current_transaction == nullptr) return "";
  return lumo::RequestStateToString(current_transaction->response.requestState);
}

const char *getResponseStateCode(void) {
  Trace("getResponseStateCode()\n");
  if (current_transaction == nullptr) return "";
  return lumo::TextOrEmpty(lumo::RequestStateCodeToString(current_transaction->response.requestStateCode));
}

// Note: always empty. The register takes its messages from GetErrorMessage and the receipts.
const char *getResponseMessage(void) {
  Trace("getResponseMessage()\n");
  return "";
}

const char *getRRN(void) {
  Trace("getRRN()\n");
  return lumo::CopyRequestId();
}

int GetEarnBonusAmount(void) {
  const lumo::BonusTotals totals = CurrentBonuses();
  return lumo::WrapAdd(totals.earnedGlobal, totals.earnedLocal);
}

int GetSpendBonusAmount(void) {
  const lumo::BonusTotals totals = CurrentBonuses();
  return lumo::WrapAdd(totals.spendGlobal, totals.spendLocal);
}

int GetDiscountAmount(void) {
  return CurrentBonuses().spendDiscount;
}

const char *getReceiptHeaderPtr(void) {
  return lumo::GetTransReceiptHeader(current_transaction);
}

const char *getReceiptBodyPtr(void) {
  return lumo::GetTransReceiptBody(current_transaction);
}

const char *getReceiptFooterPtr(void) {
  return lumo::GetTransReceiptFooter(current_transaction);
}

int getReceiptBody(char *buffer) {
  const int size = lumo::GetTransactionReceiptSize(current_transaction);
  if (buffer != nullptr && size > 0) {
    std::memcpy(buffer, lumo::ReceiptGetText(current_transaction->body), static_cast<size_t>(size));
  }
  return size;
}

int SendOfflinePayments(void) {
  Trace("SendOfflinePayments()\n");
  return lumo::OfflinePaymentsProcess();
}
