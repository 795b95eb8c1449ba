// library.h: the library file, loaded while the register runs, its calls found by name.
#pragma once

#include <filesystem>

#include "lumo.h"

namespace reg {

// The formatter moves these at every run.
// clang-format off
#define REGISTER_LUMO_CALLS(CALL)                                                                   \
  CALL(LUMOInit) CALL(LUMOInitExt) CALL(LUMOClean) CALL(GetErrorMessage) CALL(getTerminalId)        \
  CALL(getPingAddress) CALL(getPingPort) CALL(getPingAltAddress) CALL(getPingAltPort)               \
  CALL(OpenShift) CALL(CloseShift) CALL(LoadState) CALL(getOfflineState) CALL(setOfflineState)      \
  CALL(getNeedUpdate) CALL(setNeedUpdate) CALL(CreateTransaction) CALL(CloseTransaction)            \
  CALL(ActivationProc) CALL(GetActivationAmount) CALL(BalanceProc) CALL(GetBalance)                 \
  CALL(PaymentProc) CALL(PaymentAndConfirmProc) CALL(PaymentConfirmProc)                            \
  CALL(PaymentCancelProc) CALL(CashBackProc) CALL(GetCashBackResult) CALL(DepositProc)              \
  CALL(ExchangeProc) CALL(LinkCardProc) CALL(CreateAmountBill) CALL(getResponseState)               \
  CALL(getResponseStateCode) CALL(getRRN) CALL(GetEarnBonusAmount) CALL(GetSpendBonusAmount)        \
  CALL(GetDiscountAmount) CALL(getReceiptHeaderPtr) CALL(getReceiptBodyPtr)                         \
  CALL(getReceiptFooterPtr) CALL(SendOfflinePayments) CALL(GenerateSummaryReport)                   \
  CALL(GenerateReport) CALL(GetReportPtr) CALL(RunUpdater) CALL(CommitUpdates)
// clang-format on

class Library {
 public:
  // Throws std::runtime_error when the file cannot be loaded or lacks a call.
  explicit Library(const std::filesystem::path &file);

  const std::filesystem::path &file() const { return file_; }
  std::filesystem::path folder() const { return file_.parent_path(); }

#define REGISTER_DECLARE(name) decltype(&::name) name;
  REGISTER_LUMO_CALLS(REGISTER_DECLARE)
#undef REGISTER_DECLARE

 private:
  std::filesystem::path file_;
};

}  // namespace reg
