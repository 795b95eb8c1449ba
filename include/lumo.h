/* lumo: a retail loyalty programme for a cash register.
 *
 * WHAT HOLDS FOR EVERY CALL
 *
 *   Threads     One thread, one call at a time. There are no locks. The calls that talk to the server wait
 *               for it.
 *   Texts       Zero-terminated UTF-8, in and out. A null text never crashes: a null path cannot be opened,
 *               a null name is unknown, and a null field stays empty. An empty path is a path that cannot
 *               be opened.
 *   Ownership   Every text handed out belongs to lumo: never free it, and copy what must outlive the moment
 *               stated beside the call. The one exception is stated at getPingAddress.
 *   Amounts     Signed 32-bit, in hundredths of the currency unit: 15000 is 150.00. Bonuses are counted the
 *               same way. Signs and sizes are not checked; sums beyond 32 bits wrap.
 *   Paths       Relative to the folder of the library file, always; a leading separator changes nothing.
 *   Results     Unless stated otherwise a call returns 0 or a negative code of LumoResult, and
 *               GetErrorMessage has the cashier's text for it. TRACE.TXT tells what happened.
 *   Times       UTC, from the device's clock, on slips too.
 *   Files       CONFIG.JSN, CONFIG, STATE, LOG, OFFLINE and TRACE.TXT lie beside the library file. None is
 *               kept open between calls.
 *   Fatal       Memory that runs out, a text that makes a line of the slip 1024 bytes or longer (a card
 *               number, the shop's name), and a record to be written or sent whose type of operation is
 *               unknown (from an answer or from OFFLINE) end the host process with status -1 after a line in
 *               the trace.
 *
 * A SALE
 *
 *   LUMOInit();                                 once, when the register starts
 *   OpenShift("42");
 *   CreateTransaction(card, cashier);
 *   code = PaymentProc(0, "BILL.JSN");          any number of operations on the one transaction
 *   if (code == 0) print(getReceiptHeaderPtr(), getReceiptBodyPtr(), getReceiptFooterPtr());
 *   CloseTransaction();
 *   CloseShift();
 *
 * TALKING TO THE SERVER
 *
 *   One operation is one exchange: connect to `serverAddr` of CONFIG, else to `serverAltAddr`, send, read
 *   the answer. Each single send and receive may take `timeout` seconds of CONFIG (0: for ever); how long a
 *   connection may take is the system's affair. The first operation of a terminal whose STATE holds no
 *   usable request id makes one more exchange before its own, to ask for the last one.
 *
 *   An operation that talks to the server may return any of these besides its own codes:
 *
 *     ERR_CONNECT             neither server can be reached, or neither address is a dotted one with port
 *                             and path. Nothing was sent.
 *     ERR_REQUEST_SEND        the connection broke while sending. The server may have it or not.
 *     ERR_NO_RESPONSE         sent, but no answer in time. THE SERVER MAY HAVE CARRIED IT OUT.
 *     ERR_JSON_SYNTAX         the answer is no JSON document. The server may have carried it out; so too
 *                             for the next three.
 *     ERR_RESPONSE_STRUCTURE  the answer is JSON, but not an answer.
 *     ERR_RESPONSE_TYPE       the answer has an unknown name.
 *     ERR_RESPONSE_CONTENT    the answer lacks a part; getResponseState may tell more.
 *     ERR_SERVER_ERROR        the server refused. getResponseState and getResponseStateCode say why.
 *     ERR_SERVER_REJECTED     the server could not read the request (its "HTTP Status 400").
 *     ERR_SERVER_FAILURE      the server itself failed (its "HTTP Status 500").
 *     ERR_REQUEST_BUILD       the request could not be written. Nothing was sent.
 *     -1                      the system's sockets do not start. Nothing was sent. It has no message of its
 *                             own.
 *
 *   On Windows each ERR_REQUEST_SEND takes one WSAStartup of the process back too many. A register that has
 *   sockets of its own calls WSAStartup twice when it starts, and once more after each.
 *
 *   After each of them the operation has printed nothing on the slip and left no record in LOG. Its RRN is
 *   used up: the next operation takes the next one.
 *
 * WITHOUT THE SERVER
 *
 *   With `offlineMode` 1 in CONFIG a payment that ends with ERR_CONNECT is completed by the terminal from
 *   the rates in CONFIG, and a confirmation or cancellation is only recorded. Both then return 0, and their
 *   records wait in OFFLINE for SendOfflinePayments. Every other operation fails with ERR_CONNECT.
 *
 *   From such a payment or confirmation on the transaction is an offline one: close it before the next
 *   operation. Until then each of its records goes to OFFLINE as well, even that of an operation the server
 *   took, which is then sent a second time; and some operations ask the server no more, as each of them says.
 */
#ifndef LUMO_H
#define LUMO_H

/* The version of this header; lumoVersion() tells that of the library file. */
#define LUMO_VERSION_MAJOR 1
#define LUMO_VERSION_MINOR 1
#define LUMO_VERSION_PATCH 0

/* LUMO_CALL: the C calling convention, whatever the register's compiler takes by default. */
#if defined(_WIN32) || defined(UNDER_CE)
#define LUMO_API
#define LUMO_CALL __cdecl
#else
#define LUMO_API __attribute__((visibility("default")))
#define LUMO_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Result codes. 0 is success and has no message. Codes marked "not returned" have a message, and no call
 * returns them. */
enum LumoResult {
  /* The register's own order of calls and files. */
  ERR_NO_TRANSACTION = -100,        /* call CreateTransaction first */
  ERR_LAST_RRN = -101,              /* not returned */
  ERR_ACTIVATION_TYPE = -102,       /* unknown activation type */
  ERR_ACCOUNT_TYPE = -103,          /* unknown account type */
  ERR_ORG_FEE_EXCEEDS_BONUS = -104, /* orgFeeOffline of CONFIG exceeds the two bonus rates; not paid */
  ERR_BILL_OPEN = -105,             /* a bill cannot be written; after a payment: PAID all the same */
  ERR_BILL_FORMAT = -106,           /* the bill is missing or damaged; nothing was sent */
  ERR_CONFIG_OPEN = -107,           /* not returned */
  ERR_STATE_LOAD = -108,            /* STATE is no state, or cannot be made */
  ERR_STATE_CREATE = -109,          /* STATE is missing or no JSON and cannot be made */
  ERR_STATE_OPEN = -110,            /* STATE cannot be written */
  ERR_CONFIG_LOAD = -111,           /* neither CONFIG.JSN nor CONFIG can be loaded */
  ERR_TRANSACTION_EXISTS = -112,    /* call CloseTransaction first */
  ERR_RETURN_LIST_FORMAT = -113,    /* the return list is missing or damaged; nothing was sent */

  /* The records of operations. */
  ERR_OFFLINE_SAVE = -201, /* done, but the record could not be added to LOG or OFFLINE */
  ERR_LOG_DELETE = -202,   /* not returned */

  /* JSON files and answers. */
  ERR_JSON_DOM_INIT = -301,     /* not returned */
  ERR_JSON_PARSER_INIT = -302,  /* not returned */
  ERR_JSON_SYNTAX = -303,       /* a bill or the server's answer is no JSON document */
  ERR_JSON_INTERNAL = -304,     /* not returned */
  ERR_JSON_PRINTER_INIT = -305, /* not returned */
  ERR_JSON_MEMORY = -306,       /* not returned */
  ERR_JSON_FILE_OPEN = -307,    /* a bill cannot be opened */
  ERR_XML_FORMAT = -350,        /* not returned */

  /* The exchange with the server: see "Talking to the server". */
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
  ERR_SERVER_ADDRESS = -504, /* not returned: ERR_CONNECT stands for it */
  ERR_SSL_CONNECT = -505,    /* not returned */
  ERR_SSL_CONTEXT = -506,    /* not returned */

  /* Shifts and reports. */
  ERR_SHIFT_ALREADY_OPEN = -601,     /* call CloseShift first */
  ERR_SHIFT_NOT_OPEN = -602,         /* call OpenShift first */
  ERR_SHIFT_TRANSACTION_OPEN = -603, /* call CloseTransaction first */
  ERR_REPORT_RANGE = -701            /* the report's bounds are not in order */
};

/* ---- Life cycle ------------------------------------------------------------------------------------- */

/* Loads the settings and the state; call it before everything else. Called again it reads both anew. The
 * settings are those of CONFIG.JSN, which is then renamed to CONFIG; without a good CONFIG.JSN, those of
 * CONFIG. The rename never replaces: while a CONFIG exists, CONFIG.JSN stays and is read again at every
 * start. A transaction still open is forgotten, not closed: its memory is lost, and its texts stay valid.
 * Returns 0, or
 *   ERR_CONFIG_LOAD  neither file can be loaded
 *   ERR_STATE_LOAD   STATE is empty, is cut short or holds JSON that is no object, or it cannot be made. One
 *                    that is missing or is no JSON is replaced by an empty one without an error: the shift
 *                    then counts as closed.
 * After a failure run no operation: it would work with empty settings. */
LUMO_API int LUMO_CALL LUMOInit(void);

/* LUMOInit with a trace file of the caller's name: "TRACE_" + name + ".TXT". A null or empty name, or one
 * of more than 258 characters, means TRACE.TXT. The name changes nothing else. LUMOInit keeps the name
 * given last. */
LUMO_API int LUMO_CALL LUMOInitExt(const char *name);

/* Leaves a line in the trace and returns 0. It frees, closes and saves nothing: everything is saved
 * already, and the library stays usable. */
LUMO_API int LUMO_CALL LUMOClean(void);

/* The message for the cashier that belongs to a result code, in Russian. Never null. A message of the table
 * lives as long as the library; the text for any other code ("Неизвестная ошибка" and the number) only
 * until the next such code is asked for. Deliberate: 0 has no message and counts as unknown. */
LUMO_API const char *LUMO_CALL GetErrorMessage(int code);

/* Finds the folder of the library file, where all files lie. The library calls it itself when it is loaded.
 *   module  the system's handle of the library file
 * Returns 1; 0 when the file's name has no folder; else the system's error number. */
LUMO_API int LUMO_CALL DllAttach(void *module);

/* ---- Settings --------------------------------------------------------------------------------------- */

/* `terminalId` of CONFIG; null when it has none. Lives as long as the library. */
LUMO_API const char *LUMO_CALL getTerminalId(void);

/* Host and port of `serverAddr` and of `serverAltAddr`, for a register that wants to test the connection
 * itself. An address that is not "http://host:port/path" (there is no default port, and the "/" is
 * required) gives the empty text and 0. The host texts are the caller's for good: lumo never frees them and
 * makes a new one at each call. Ask once. */
LUMO_API char *LUMO_CALL getPingAddress(void);
LUMO_API int LUMO_CALL getPingPort(void);
LUMO_API char *LUMO_CALL getPingAltAddress(void);
LUMO_API int LUMO_CALL getPingAltPort(void);

/* ---- Shifts and state ------------------------------------------------------------------------------- */
/* STATE keeps the shift, the last RRN and two flags over restarts. It is read again before each use and
 * written at each change, so use the calls below only after LUMOInit: a change made before it overwrites
 * STATE with an empty state. */

/* Opens a shift, now.
 *   shift_id  goes into every request; null takes the time at which the previous shift was opened, empty
 *             when there was none
 * Returns 0, or ERR_SHIFT_ALREADY_OPEN, and the open shift stays as it is. A STATE that cannot be written
 * is not reported here: with `shiftMode` on, CreateTransaction then answers ERR_SHIFT_NOT_OPEN. */
LUMO_API int LUMO_CALL OpenShift(const char *shift_id);

/* Closes the shift, now. Returns 0, also when no shift is open, or ERR_SHIFT_TRANSACTION_OPEN. */
LUMO_API int LUMO_CALL CloseShift(void);

/* Reads STATE again. Returns 0, or
 *   ERR_STATE_LOAD    STATE is empty, is cut short or holds JSON that is no object
 *   ERR_STATE_CREATE  STATE is missing or is no JSON, and an empty one cannot be written */
LUMO_API int LUMO_CALL LoadState(void);

/* Empties the state in memory and returns 0. STATE stays as it is until something is saved: do not call
 * this between a load and a change. No register needs it. */
LUMO_API int LUMO_CALL InitState(void);

/* The offline flag: 1 when the last attempt to reach the server failed and `offlineMode` is 1, and 0 again
 * after the next exchange that succeeds. The getter reads STATE again. The setter stores the number as
 * given and returns 0 or ERR_STATE_OPEN. The flag is information: it does not keep an operation from trying
 * the server. */
LUMO_API int LUMO_CALL getOfflineState(void);
LUMO_API int LUMO_CALL setOfflineState(int offline);

/* 1 when the server's last answer asked the terminal to update. The getter returns the flag as held in
 * memory. The setter returns 0 or ERR_STATE_OPEN. */
LUMO_API int LUMO_CALL getNeedUpdate(void);
LUMO_API int LUMO_CALL setNeedUpdate(int need_update);

/* ---- The transaction -------------------------------------------------------------------------------- */

/* Starts the one current transaction and prints the head and the foot of its slip.
 *   card_num     the customer's card
 *   employee_id  the cashier
 * Returns 0, or
 *   ERR_SHIFT_NOT_OPEN      `shiftMode` of CONFIG is on and no shift is open
 *   ERR_TRANSACTION_EXISTS  the earlier transaction goes on as it was */
LUMO_API int LUMO_CALL CreateTransaction(const char *card_num, const char *employee_id);

/* Ends the transaction and frees its receipt texts. Returns 0, also when there is none. */
LUMO_API int LUMO_CALL CloseTransaction(void);

/* ---- Operations ------------------------------------------------------------------------------------- */
/* Each works on the current transaction and returns ERR_NO_TRANSACTION without one. A transaction takes any
 * number of operations; each adds its lines to the slip's body. The codes of "Talking to the server" may
 * come besides those named. ERR_OFFLINE_SAVE means: DONE, only the record is missing from LOG (and from the
 * reports), or, in an offline transaction, from OFFLINE. Do not repeat the operation. */

/* Activates the card.
 *   activation_type  "SIMPLE_ACTIVATION", "GIFT_CARD" or "REFER_A_FRIEND"; or that type's number 0, 1 or 2,
 *                    cast to a pointer. Null is 0, a simple activation.
 *   bill_path        a bill whose total replaces `amount`; null for none
 *   amount           in hundredths
 *   account_type     for a gift card: "GLOBAL", "LOCAL" or "DISCOUNT"; not looked at otherwise
 *   refer_card_num   for refer-a-friend: the card of the friend; not looked at otherwise
 * Returns 0, or
 *   ERR_BILL_FORMAT      the bill is missing or damaged; nothing was sent
 *   ERR_ACTIVATION_TYPE  unknown type; nothing was sent
 *   ERR_ACCOUNT_TYPE     unknown account of a gift card; nothing was sent
 *   ERR_OFFLINE_SAVE     ACTIVATED; the record is missing
 * After 0: GetActivationAmount. The slip of a gift card shows the amount that was sent. */
LUMO_API int LUMO_CALL ActivationProc(const char *activation_type, const char *bill_path, int amount,
                                      const char *account_type, const char *refer_card_num);

/* Asks for the card's accounts and prints them. Leaves no record in LOG. In an offline transaction it asks
 * nobody, prints nothing and returns 0. After 0: GetBalance. */
LUMO_API int LUMO_CALL BalanceProc(void);

/* Pays a bill with the card. It must still be confirmed, or cancelled: keep its RRN.
 *   amount     0: only earn bonuses. Anything else asks to spend bonuses as well: the request says that,
 *              not how many, and the server decides. See GetSpendBonusAmount for what it spent.
 *   bill_path  the bill of goods, JSON; rewritten after success with the bonuses of each good
 * Returns 0, or
 *   ERR_BILL_FORMAT            the bill is missing or damaged; nothing was sent
 *   ERR_CONNECT                not paid
 *   ERR_ORG_FEE_EXCEEDS_BONUS  without the server, and the rates in CONFIG contradict each other; not paid
 *   ERR_BILL_OPEN              PAID; only the bill could not be rewritten. Do not pay again.
 * 0 also when the record is missing from LOG. Completed without the server it spends NO bonuses, whatever
 * `amount` says, and the slip says "ОФФЛАЙН". After 0: getRRN, GetEarnBonusAmount, GetSpendBonusAmount,
 * GetDiscountAmount. */
LUMO_API int LUMO_CALL PaymentProc(int amount, const char *bill_path);

/* PaymentProc that needs no confirmation. Instead of ERR_BILL_FORMAT it tells what is wrong with the bill:
 *   ERR_JSON_FILE_OPEN      it cannot be opened; nothing was sent
 *   ERR_JSON_SYNTAX         it is no JSON document; nothing was sent. A damaged ANSWER has the same code:
 *                           look at the bill first.
 *   ERR_RESPONSE_STRUCTURE  it is no bill; nothing was sent. The same holds. */
LUMO_API int LUMO_CALL PaymentAndConfirmProc(int amount, const char *bill_path);

/* Confirm or cancel a payment of PaymentProc, in the same transaction or a later one.
 *   rrn  the payment's RRN
 * In an offline transaction they send nothing: the record waits in OFFLINE. Return 0, or
 *   ERR_CONNECT       not confirmed, not cancelled
 *   ERR_OFFLINE_SAVE  DONE at the server, or, without the server, not kept anywhere; nothing printed
 * Deliberate: both print the same lines, "ОТМЕНА ПОКУПКИ", that is: a cancellation. Do not print the slip
 * of a confirmation. They have an RRN of their own, which getRRN then returns. */
LUMO_API int LUMO_CALL PaymentConfirmProc(const char *rrn);
LUMO_API int LUMO_CALL PaymentCancelProc(const char *rrn);

/* Returns goods of a payment.
 *   rrn               the payment's RRN
 *   return_list_path  the positions that come back, JSON; null returns everything
 * In an offline transaction nothing is sent: the record waits in OFFLINE. Returns 0, or
 *   ERR_RETURN_LIST_FORMAT  the list is missing or damaged; nothing was sent
 *   ERR_OFFLINE_SAVE        RETURNED; the record is missing
 * After 0: GetCashBackResult. A return list empties the bill that GetEarnBonusAmount and its kin count. */
LUMO_API int LUMO_CALL CashBackProc(const char *rrn, const char *return_list_path);

/* Puts money on the card.
 *   amount  in hundredths
 * Returns 0, or ERR_OFFLINE_SAVE: DEPOSITED, the record is missing. The last line of its slip has no line
 * feed. */
LUMO_API int LUMO_CALL DepositProc(int amount);

/* Exchanges the transaction's card.
 *   token  as the customer received it
 * Returns 0, or ERR_OFFLINE_SAVE: EXCHANGED, the record is missing. */
LUMO_API int LUMO_CALL ExchangeProc(const char *token);

/* Links another card to the account of the transaction's card.
 *   card_num  the card to link
 * Deliberate: it asks the server only in an offline transaction. In every other it sends NOTHING, records
 * the request in LOG, prints "Карта активирована и присоединена" and returns 0. Returns 0 or
 * ERR_OFFLINE_SAVE: the record is missing. */
LUMO_API int LUMO_CALL LinkCardProc(const char *card_num);

/* Writes a bill with one position for a plain amount, for a register without a list of goods. It needs no
 * transaction.
 *   total_sum  in hundredths
 *   bill_path  created or overwritten; the path to give to PaymentProc
 * Returns 0 or ERR_BILL_OPEN. */
LUMO_API int LUMO_CALL CreateAmountBill(int total_sum, const char *bill_path);

/* ---- Results ---------------------------------------------------------------------------------------- */
/* They tell of the current transaction and keep their values until an operation's answer brings new ones,
 * also after an operation that failed. */

/* What the server answered: the state "OK", "SUCCESS", "PROCESSED", "ERROR" or "CANCELED", and the code,
 * "OK" or the reason, such as "LOCKED_CARD". Never null: the empty text without a transaction and for a
 * state or code that lumo does not know. Both are "OK" before the first answer. Valid for ever. */
LUMO_API const char *LUMO_CALL getResponseState(void);
LUMO_API const char *LUMO_CALL getResponseStateCode(void);

/* Deliberate: always the empty text. The cashier's messages come from GetErrorMessage. */
LUMO_API const char *LUMO_CALL getResponseMessage(void);

/* The RRN of the last operation, 16 characters: the number to quote when a payment is confirmed, cancelled
 * or returned. It is the terminal's last one, with or without a transaction, and survives a restart; null
 * when there was none. Valid until the next getRRN. */
LUMO_API const char *LUMO_CALL getRRN(void);

/* The amount that the server granted for the last activation, by its type, in hundredths. Without a
 * transaction ERR_NO_TRANSACTION. */
LUMO_API int LUMO_CALL GetActivationAmount(void);

/* What the customer can spend: the sum of the available amounts of the GLOBAL and LOCAL accounts, as of the
 * last BalanceProc, in hundredths. DISCOUNT accounts are not counted. 0 without a transaction. */
LUMO_API int LUMO_CALL GetBalance(void);

/* What the last CashBackProc gave back, in hundredths. Without a transaction ERR_NO_TRANSACTION. */
LUMO_API int LUMO_CALL GetCashBackResult(void);

/* The bonuses of the last paid bill, in hundredths: earned and spent on the GLOBAL and LOCAL accounts
 * together, and the discount taken. 0 without a transaction. */
LUMO_API int LUMO_CALL GetEarnBonusAmount(void);
LUMO_API int LUMO_CALL GetSpendBonusAmount(void);
LUMO_API int LUMO_CALL GetDiscountAmount(void);

/* ---- Receipts --------------------------------------------------------------------------------------- */

/* The three pieces of the slip, laid out for 24 columns, each line ended by a line feed. Print head, body
 * and foot one after another. Head and foot are there from CreateTransaction on; the body grows with each
 * operation that succeeds. Valid until the next operation of this transaction or CloseTransaction. Null
 * without a transaction. */
LUMO_API const char *LUMO_CALL getReceiptHeaderPtr(void);
LUMO_API const char *LUMO_CALL getReceiptBodyPtr(void);
LUMO_API const char *LUMO_CALL getReceiptFooterPtr(void);

/* Copies the slip's body, with its terminating zero, to `buffer`, and returns its size in bytes, the zero
 * included. With a null buffer it only returns the size: ask first. Without a transaction
 * ERR_NO_TRANSACTION. */
LUMO_API int LUMO_CALL getReceiptBody(char *buffer);

/* ---- Offline ---------------------------------------------------------------------------------------- */

/* Sends the records that wait in OFFLINE, each as it was recorded, with its own RRN. It needs no
 * transaction. Returns how many the server took, 0 or more; never a code. Afterwards OFFLINE holds the
 * records that failed. Deliberate: when none failed OFFLINE stays as it is, and the next call sends its
 * records again, with the same RRNs. getRRN may return another number afterwards: ask for a sale's RRN before
 * the call. */
LUMO_API int LUMO_CALL SendOfflinePayments(void);

/* ---- Reports ---------------------------------------------------------------------------------------- */

/* Print the operations in LOG that came after `from` and before `to`, both left out: the first as totals
 * for each kind of operation, the second one by one. LOG keeps fewer records than `logSize` of CONFIG
 * says; older ones are gone.
 *   from, to  UTC, as "2012-12-05T10:00:00Z"; compared as texts. Null is the empty text, before all others.
 * Return the report's length in bytes, 0 when there is nothing to report, or ERR_REPORT_RANGE when `from`
 * is not before `to`; the previous report then stays.
 * An activation in LOG of a type unknown to lumo, which writes none, makes GenerateReport break into the
 * debugger; without one that ends the process. */
LUMO_API int LUMO_CALL GenerateSummaryReport(const char *from, const char *to);
LUMO_API int LUMO_CALL GenerateReport(const char *from, const char *to);

/* The last report's text, laid out for 24 columns. Valid until the next report. Null before the first. */
LUMO_API const char *LUMO_CALL GetReportPtr(void);

/* ---- Updates ---------------------------------------------------------------------------------------- */

/* Not part of this version: both leave their name in the trace and return -1, which has no message of its
 * own. */
LUMO_API int LUMO_CALL RunUpdater(const char *package);
LUMO_API int LUMO_CALL CommitUpdates(void);

/* ---- Beyond the published calls --------------------------------------------------------------------- */
/* Calls that other libraries of this interface lack. They change nothing in those above. */

/* The version of the library file, such as "1.1.0". Valid for ever. */
LUMO_API const char *LUMO_CALL lumoVersion(void);

/* 1 when the current transaction is an offline one: its payment or confirmation was completed without the
 * server and waits in OFFLINE. 0 otherwise, and without a transaction. */
LUMO_API int LUMO_CALL lumoIsOffline(void);

/* How many records OFFLINE holds, 0 or more; 0 too when there is no OFFLINE. A record that the server has
 * taken counts until OFFLINE is cleared. ERR_JSON_FILE_OPEN when OFFLINE cannot be opened or read. */
LUMO_API int LUMO_CALL lumoOfflineCount(void);

/* Removes OFFLINE when it holds exactly `expected` records: the number that SendOfflinePayments returned,
 * when it equals what lumoOfflineCount told before. Returns 0, or ERR_LOG_DELETE: OFFLINE holds another
 * number of records, or cannot be read or removed, and is left as it was. Without an OFFLINE only 0 is
 * expected. */
LUMO_API int LUMO_CALL lumoClearOffline(int expected);

#ifdef __cplusplus
}
#endif

#endif
