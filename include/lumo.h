/* lumo: a retail loyalty programme for a cash register. */
#ifndef LUMO_H
#define LUMO_H

#if defined(_WIN32) || defined(UNDER_CE)
#define LUMO_API
#else
#define LUMO_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

enum LumoResult {
  ERR_NO_TRANSACTION = -100,
  ERR_LAST_RRN = -101,
  ERR_ACTIVATION_TYPE = -102,
  ERR_ACCOUNT_TYPE = -103,
  ERR_ORG_FEE_EXCEEDS_BONUS = -104,
  ERR_BILL_OPEN = -105,
  ERR_BILL_FORMAT = -106,
  ERR_CONFIG_OPEN = -107,
  ERR_STATE_LOAD = -108,
  ERR_STATE_CREATE = -109,
  ERR_STATE_OPEN = -110,
  ERR_CONFIG_LOAD = -111,
  ERR_TRANSACTION_EXISTS = -112,
  ERR_RETURN_LIST_FORMAT = -113,
  ERR_OFFLINE_SAVE = -201,
  ERR_LOG_DELETE = -202,
  ERR_JSON_DOM_INIT = -301,
  ERR_JSON_PARSER_INIT = -302,
  ERR_JSON_SYNTAX = -303,
  ERR_JSON_INTERNAL = -304,
  ERR_JSON_PRINTER_INIT = -305,
  ERR_JSON_MEMORY = -306,
  ERR_JSON_FILE_OPEN = -307,
  ERR_XML_FORMAT = -350,
  ERR_NO_RESPONSE = -401,
  ERR_RESPONSE_STRUCTURE = -402,
  ERR_RESPONSE_TYPE = -403,
  ERR_RESPONSE_CONTENT = -404,
  ERR_SERVER_ERROR = -405,
  ERR_SERVER_REJECTED = -406,
  ERR_SERVER_FAILURE = -407,
  ERR_REQUEST_SEND = -410,
  ERR_REQUEST_BUILD = -411,
  ERR_CONNECT = -501,
  ERR_SERVER_ADDRESS = -504,
  ERR_SSL_CONNECT = -505,
  ERR_SSL_CONTEXT = -506,
  ERR_SHIFT_ALREADY_OPEN = -601,
  ERR_SHIFT_NOT_OPEN = -602,
  ERR_SHIFT_TRANSACTION_OPEN = -603,
  ERR_REPORT_RANGE = -701
};

LUMO_API int LUMOInit(void);
LUMO_API int LUMOInitExt(const char *name);
LUMO_API int LUMOClean(void);
LUMO_API const char *GetErrorMessage(int code);
LUMO_API int DllAttach(void *module);

LUMO_API const char *getTerminalId(void);
LUMO_API char *getPingAddress(void);
LUMO_API int getPingPort(void);
LUMO_API char *getPingAltAddress(void);
LUMO_API int getPingAltPort(void);

LUMO_API int OpenShift(const char *shift_id);
LUMO_API int CloseShift(void);
LUMO_API int LoadState(void);
LUMO_API int InitState(void);
LUMO_API int getOfflineState(void);
LUMO_API int setOfflineState(int offline);
LUMO_API int getNeedUpdate(void);
LUMO_API int setNeedUpdate(int need_update);

LUMO_API int CreateTransaction(const char *card_num, const char *employee_id);
LUMO_API int CloseTransaction(void);
LUMO_API int ActivationProc(const char *activation_type, const char *bill_path, int amount,
                            const char *account_type, const char *refer_card_num);
LUMO_API int GetActivationAmount(void);
LUMO_API int BalanceProc(void);
LUMO_API int GetBalance(void);
LUMO_API int PaymentProc(int amount, const char *bill_path);
LUMO_API int PaymentAndConfirmProc(int amount, const char *bill_path);
LUMO_API int PaymentConfirmProc(const char *rrn);
LUMO_API int PaymentCancelProc(const char *rrn);
LUMO_API int CashBackProc(const char *rrn, const char *return_list_path);
LUMO_API int GetCashBackResult(void);
LUMO_API int DepositProc(int amount);
LUMO_API int ExchangeProc(const char *token);
LUMO_API int LinkCardProc(const char *card_num);
LUMO_API int CreateAmountBill(int total_sum, const char *bill_path);
LUMO_API const char *getResponseState(void);
LUMO_API const char *getResponseStateCode(void);
LUMO_API const char *getResponseMessage(void);
LUMO_API const char *getRRN(void);
LUMO_API int GetEarnBonusAmount(void);
LUMO_API int GetSpendBonusAmount(void);
LUMO_API int GetDiscountAmount(void);
LUMO_API const char *getReceiptHeaderPtr(void);
LUMO_API const char *getReceiptBodyPtr(void);
LUMO_API const char *getReceiptFooterPtr(void);
LUMO_API int getReceiptBody(char *buffer);

LUMO_API int SendOfflinePayments(void);

LUMO_API int GenerateSummaryReport(const char *from, const char *to);
LUMO_API int GenerateReport(const char *from, const char *to);
LUMO_API const char *GetReportPtr(void);

LUMO_API int RunUpdater(const char *package);
LUMO_API int CommitUpdates(void);

#ifdef __cplusplus
}
#endif

#endif
