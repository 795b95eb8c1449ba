/* The header in plain C: every call with the type that a register binds, written out by hand: a call that
 * changes breaks registers. */
#include "lumo.h"

typedef struct Calls {
  int (*init)(void);
  int (*init_ext)(const char *);
  int (*clean)(void);
  const char *(*get_error_message)(int);
  int (*attach)(void *);
  const char *(*get_terminal_id)(void);
  char *(*get_ping_address)(void);
  int (*get_ping_port)(void);
  char *(*get_ping_alt_address)(void);
  int (*get_ping_alt_port)(void);
  int (*open_shift)(const char *);
  int (*close_shift)(void);
  int (*load_state)(void);
  int (*init_state)(void);
  int (*get_offline_state)(void);
  int (*set_offline_state)(int);
  int (*get_need_update)(void);
  int (*set_need_update)(int);
  int (*create_transaction)(const char *, const char *);
  int (*close_transaction)(void);
  int (*activation)(const char *, const char *, int, const char *, const char *);
  int (*get_activation_amount)(void);
  int (*balance)(void);
  int (*get_balance)(void);
  int (*payment)(int, const char *);
  int (*payment_and_confirm)(int, const char *);
  int (*payment_confirm)(const char *);
  int (*payment_cancel)(const char *);
  int (*cash_back)(const char *, const char *);
  int (*get_cash_back_result)(void);
  int (*deposit)(int);
  int (*exchange)(const char *);
  int (*link_card)(const char *);
  int (*create_amount_bill)(int, const char *);
  const char *(*get_response_state)(void);
  const char *(*get_response_state_code)(void);
  const char *(*get_response_message)(void);
  const char *(*get_rrn)(void);
  int (*get_earn)(void);
  int (*get_spend)(void);
  int (*get_discount)(void);
  const char *(*get_receipt_header)(void);
  const char *(*get_receipt_body_ptr)(void);
  const char *(*get_receipt_footer)(void);
  int (*get_receipt_body)(char *);
  int (*send_offline_payments)(void);
  int (*generate_summary_report)(const char *, const char *);
  int (*generate_report)(const char *, const char *);
  const char *(*get_report_ptr)(void);
  int (*run_updater)(const char *);
  int (*commit_updates)(void);
  const char *(*version)(void);
  int (*is_offline)(void);
  int (*offline_count)(void);
  int (*clear_offline)(int);
} Calls;

static const Calls kCalls = {
    LUMOInit,
    LUMOInitExt,
    LUMOClean,
    GetErrorMessage,
    DllAttach,
    getTerminalId,
    getPingAddress,
    getPingPort,
    getPingAltAddress,
    getPingAltPort,
    OpenShift,
    CloseShift,
    LoadState,
    InitState,
    getOfflineState,
    setOfflineState,
    getNeedUpdate,
    setNeedUpdate,
    CreateTransaction,
    CloseTransaction,
    ActivationProc,
    GetActivationAmount,
    BalanceProc,
    GetBalance,
    PaymentProc,
    PaymentAndConfirmProc,
    PaymentConfirmProc,
    PaymentCancelProc,
    CashBackProc,
    GetCashBackResult,
    DepositProc,
    ExchangeProc,
    LinkCardProc,
    CreateAmountBill,
    getResponseState,
    getResponseStateCode,
    getResponseMessage,
    getRRN,
    GetEarnBonusAmount,
    GetSpendBonusAmount,
    GetDiscountAmount,
    getReceiptHeaderPtr,
    getReceiptBodyPtr,
    getReceiptFooterPtr,
    getReceiptBody,
    SendOfflinePayments,
    GenerateSummaryReport,
    GenerateReport,
    GetReportPtr,
    RunUpdater,
    CommitUpdates,
    lumoVersion,
    lumoIsOffline,
    lumoOfflineCount,
    lumoClearOffline,
};

/* The number of calls, and what one of them returns when C calls it. */
int CountCallsInC(void);
int CleanInC(void);

int CountCallsInC(void) {
  return (int)(sizeof(kCalls) / sizeof(kCalls.init));
}

int CleanInC(void) {
  return kCalls.clean();
}
