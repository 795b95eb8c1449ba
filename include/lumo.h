/* lumo: a retail loyalty programme for a cash register.
 *
 * WHAT HOLDS FOR EVERY CALL
 *
 *   Threads     One thread, one call at a time. There are no locks. The calls that talk to the server wait
 *               for it.
 *   Processes   One process in a folder at a time. Two registers in one folder use the same RRNs, and the
 *               server refuses the second with DUPLICATE_REQUEST_ID.
 *   Texts       Zero-terminated UTF-8, in and out. A null text never crashes: a null path cannot be opened,
 *               a null name is unknown, and a null field stays empty. An empty path cannot be opened either.
 *   Ownership   Every text handed out belongs to lumo: never free it, and copy what must outlive the moment
 *               stated beside the call. The one exception is stated at getPingAddress.
 *   Amounts     Signed 32-bit, in hundredths of the currency unit: 15000 is 150.00. Bonuses are counted the
 *               same way. Signs and sizes are not checked. Sums beyond 32 bits wrap.
 *   Paths       Relative to the folder of the library file, always. A leading separator changes nothing.
 *   Results     Unless stated otherwise a call returns 0 or a negative code of LumoResult, and
 *               GetErrorMessage has the cashier's text for it. TRACE.TXT tells what happened.
 *   Times       UTC, from the device's clock, on slips too.
 *   Files       CONFIG.JSN, CONFIG, STATE, LOG, OFFLINE and TRACE.TXT lie beside the library file. None is
 *               kept open between calls. docs/files.md describes them.
 *   In clear    Card numbers stand readable in TRACE.TXT, LOG and OFFLINE, and cross the network readable.
 *   Lengths     A path has at most 259 UTF-16 units. A line of a slip has at most 1023 bytes. An answer has
 *               at most 4 MiB. A date that lumo reads keeps 31 bytes, in STATE 29. Other texts may have any
 *               length. The server may set limits of its own.
 *   Fatal       Two things end the host process, with status -1 and after a line in the trace. Memory runs
 *               out. Or a text, such as a card number or the shop's name, makes a line of a slip or report
 *               1024 bytes or longer. GenerateReport names a third.
 *
 * A SALE
 *
 *   docs/programming.md explains it step by step. TakeMoney, Print and Show are the register's own.
 *
 *     enum Outcome { SOLD, NOT_SOLD, NOT_KNOWN };
 *
 *     // The server may have done it or not: every code under "Talking to the server" that says MAY.
 *     static int IsLost(int code) {
 *       const char *state = getResponseState();
 *       if (code == ERR_SERVER_ERROR) return strcmp(state, "ERROR") != 0 && strcmp(state, "CANCELED") != 0;
 *       return code <= ERR_JSON_SYNTAX && code >= ERR_REQUEST_SEND;
 *     }
 *
 *     // Confirms or cancels a payment. An answer that is lost is asked for again.
 *     static int Settle(int(LUMO_CALL *call)(const char *rrn), const char *rrn) {
 *       int code = call(rrn), tries;
 *       for (tries = 1; IsLost(code) && tries < 3; ++tries) code = call(rrn);
 *       return code;
 *     }
 *
 *     static int ServerSays(const char *state_code) {
 *       return strcmp(getResponseStateCode(), state_code) == 0;
 *     }
 *
 *     // Sells for `total` hundredths. wants_to_spend is a wish, yes or no: how many bonuses pay, the server
 *     // decides. NOT_KNOWN: keep the RRN, and cancel by it when the server answers again.
 *     enum Outcome Sell(const char *card, const char *cashier, int total, int wants_to_spend) {
 *       enum Outcome outcome = NOT_SOLD;
 *       const char *rrn;
 *       int code;
 *       if (CreateAmountBill(total, "BILL.JSN") != 0) return NOT_SOLD;
 *       if (CreateTransaction(card, cashier) != 0) return NOT_SOLD;
 *       code = PaymentProc(wants_to_spend, "BILL.JSN");
 *       rrn = getRRN();  // valid until the next getRRN
 *       if (code == 0 || code == ERR_BILL_OPEN) {
 *         // Paid: at the server, or (lumoIsOffline) here. Print before the confirmation adds its lines.
 *         outcome = SOLD;
 *         TakeMoney(total - GetSpendBonusAmount() - GetDiscountAmount());
 *         Print(getReceiptHeaderPtr(), getReceiptBodyPtr(), getReceiptFooterPtr());
 *         // Until now the bonuses were only reserved. If this fails: keep the RRN and confirm later.
 *         code = Settle(PaymentConfirmProc, rrn);
 *         if (code != 0 && !ServerSays("BILL_INCORRECT_STATE")) Show(GetErrorMessage(code), rrn);
 *       } else if (IsLost(code)) {
 *         // Paid or not? Undone, it can be sold again.
 *         code = Settle(PaymentCancelProc, rrn);
 *         if (code != 0 && !ServerSays("BILL_NOT_FOUND") && !ServerSays("BILL_INCORRECT_STATE"))
 *           outcome = NOT_KNOWN;
 *       } else {
 *         Show(GetErrorMessage(code), getResponseStateCode());
 *       }
 *       CloseTransaction();
 *       return outcome;
 *     }
 *
 *     // When the server is back: before the first sale of a day, or in a quiet moment.
 *     void SendWhatWaits(void) {
 *       int waiting = lumoOfflineCount();
 *       if (waiting > 0 && SendOfflinePayments() == waiting) lumoClearOffline(waiting);
 *     }
 *
 *     // LUMOInit() once, when the register starts. OpenShift("42") before the first sale, CloseShift() at
 *     // the end.
 *
 * TALKING TO THE SERVER
 *
 *   One operation is one exchange: connect to `serverAddr` of CONFIG, else to `serverAltAddr`, send, read
 *   the answer. Each single send and receive may take `timeout` seconds of CONFIG. A `timeout` that is
 *   missing or 0 waits for ever. How long a connection may take is the system's affair. When STATE holds no
 *   usable RRN, the first operation makes one more exchange before its own: it asks the server for the
 *   terminal's last RRN.
 *
 *   An operation that talks to the server may return these codes besides its own. MAY: the server may have
 *   carried it out or not; see "A lost answer".
 *
 *     ERR_CONNECT             Neither server can be reached, or neither address is dotted, with port and
 *                             path. Nothing was sent.
 *     ERR_REQUEST_SEND        MAY. The connection broke while sending.
 *     ERR_NO_RESPONSE         MAY. Nothing came: no byte in `timeout` seconds, or the connection ended or
 *                             broke first. Also an answer above 4 MiB.
 *     ERR_JSON_SYNTAX         MAY. What came is no JSON document, or two of them at once.
 *     ERR_RESPONSE_STRUCTURE  MAY. What came was cut off after a byte at least, or came in packets of less
 *                             than 500 bytes. Or it is JSON, and no answer.
 *     ERR_RESPONSE_TYPE       MAY. The answer has an unknown name.
 *     ERR_RESPONSE_CONTENT    MAY. The answer lacks a part.
 *     ERR_SERVER_ERROR        The server answered, and not with SUCCESS. With the state ERROR or CANCELED it
 *                             refused and carried nothing out; getResponseStateCode says why. With any other
 *                             state MAY.
 *     ERR_SERVER_REJECTED     MAY, and hardly ever: "HTTP Status 400" stands in what came. As a rule the
 *                             server could not read the request.
 *     ERR_SERVER_FAILURE      MAY. "HTTP Status 500" stands in what came: the server itself failed.
 *     -1                      The system's sockets do not start. Nothing was sent. No message of its own.
 *
 *   After each of them the operation has printed nothing on the slip and left no record in LOG. Its RRN is
 *   used up: the next operation takes the next one.
 *
 *   On Windows ERR_REQUEST_SEND ends one WSAStartup too many. A register with sockets of its own therefore
 *   calls WSAStartup twice when it starts, and once more after each ERR_REQUEST_SEND.
 *
 * A LOST ANSWER
 *
 *   Ask the server by the operation's RRN, which getRRN returns right after it:
 *
 *     PaymentProc             PaymentCancelProc(rrn). 0: it had been paid, and is cancelled now.
 *                             BILL_NOT_FOUND: it was never paid. Either way it can be sold again.
 *     PaymentAndConfirmProc   CashBackProc(rrn, NULL). 0: it had been paid, and is returned now.
 *                             BILL_NOT_FOUND: it was never paid.
 *     PaymentConfirmProc      The same call again. 0: done now. BILL_INCORRECT_STATE: it had been done.
 *     PaymentCancelProc       The same call again. 0: done now. BILL_INCORRECT_STATE: it had been done.
 *     CashBackProc            Everything: the same call again. BILL_INCORRECT_STATE: it had been done. With a
 *                             return list never again: it would return the same goods once more. See
 *                             BalanceProc.
 *     DepositProc             BalanceProc, and compare with the balance before.
 *     ActivationProc          The same call again. ALREADY_ACTIVATED: it had been done.
 *     ExchangeProc            The same call again. LOCKED_CARD: it had been done.
 *
 *   The names are state codes: the call returns ERR_SERVER_ERROR and getResponseStateCode the name.
 *
 * WITHOUT THE SERVER
 *
 *   With `offlineMode` 1 in CONFIG a payment that ends with ERR_CONNECT is completed by the terminal from
 *   the rates in CONFIG, and a confirmation or cancellation is only recorded. Both then return 0, and their
 *   records wait in OFFLINE for SendOfflinePayments. Every other operation except LinkCardProc
 *   fails with ERR_CONNECT.
 *
 *   lumoIsOffline tells that it happened. The slip says "ОФФЛАЙН", and no bonuses are spent.
 *
 *   From such a payment or confirmation on the transaction is an offline one. Close it before the next
 *   operation: until then each of its records goes to OFFLINE too, even that of an operation that the server
 *   took, and some operations ask the server no more, as each of them says.
 *
 *   A record that could not be written to OFFLINE is lost, and the payment returns 0 all the same. Compare
 *   lumoOfflineCount before and after an offline sale: it grows by one.
 *
 *   Two things make the RRN fail, and the sale has none: a terminal that has never reached its server, and a
 *   clock that is behind the day of the last RRN. The server refuses such an operation with
 *   REQUEST_ID_EMPTY, and its record in OFFLINE for ever. getRRN then returns null, or the number of an older
 *   sale. Let a new terminal reach the server once, with BalanceProc for example, before its first sale.
 */
#ifndef LUMO_H
#define LUMO_H

/* The version of this header; lumoVersion() tells that of the library file. A register built with this header
 * runs with every library file of the same major version that is not older. */
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
 * returns them. What cashier and engineer do about each of them: docs/terminal.md. */
enum LumoResult {
  /* The register's own order of calls and files. */
  ERR_NO_TRANSACTION = -100,        /* call CreateTransaction first */
  ERR_LAST_RRN = -101,              /* not returned */
  ERR_ACTIVATION_TYPE = -102,       /* unknown activation type; nothing was sent */
  ERR_ACCOUNT_TYPE = -103,          /* unknown account type; nothing was sent */
  ERR_ORG_FEE_EXCEEDS_BONUS = -104, /* orgFeeOffline of CONFIG exceeds the two bonus rates; not paid */
  ERR_BILL_OPEN = -105,             /* a bill cannot be written; after a payment: PAID all the same */
  ERR_BILL_FORMAT = -106,           /* the bill is missing or damaged; nothing was sent */
  ERR_CONFIG_OPEN = -107,           /* not returned */
  ERR_STATE_LOAD = -108,            /* STATE is no state, or cannot be opened, read or made */
  ERR_STATE_CREATE = -109,          /* STATE cannot be opened, or is missing or no JSON and cannot be made */
  ERR_STATE_OPEN = -110,            /* STATE cannot be written */
  ERR_CONFIG_LOAD = -111,           /* neither CONFIG.JSN nor CONFIG can be loaded */
  ERR_TRANSACTION_EXISTS = -112,    /* call CloseTransaction first */
  ERR_RETURN_LIST_FORMAT = -113,    /* the return list is missing or damaged; nothing was sent */

  /* The records of operations. */
  ERR_OFFLINE_SAVE = -201, /* the record is missing from LOG or OFFLINE; as a rule the operation is done */
  ERR_LOG_DELETE = -202,   /* lumoClearOffline: OFFLINE is left as it is */

  /* JSON files and answers. */
  ERR_JSON_DOM_INIT = -301,     /* not returned */
  ERR_JSON_PARSER_INIT = -302,  /* not returned */
  ERR_JSON_SYNTAX = -303,       /* a bill or the server's answer is no JSON document */
  ERR_JSON_INTERNAL = -304,     /* not returned */
  ERR_JSON_PRINTER_INIT = -305, /* not returned */
  ERR_JSON_MEMORY = -306,       /* not returned */
  ERR_JSON_FILE_OPEN = -307,    /* a bill, or OFFLINE when it is counted, cannot be opened */
  ERR_XML_FORMAT = -350,        /* not returned */

  /* The exchange with the server: see "Talking to the server". */
  ERR_NO_RESPONSE = -401,        /* nothing came */
  ERR_RESPONSE_STRUCTURE = -402, /* what came is cut off, or no answer; also: a bill is no bill */
  ERR_RESPONSE_TYPE = -403,      /* the answer has an unknown name */
  ERR_RESPONSE_CONTENT = -404,   /* the answer lacks a part */
  ERR_SERVER_ERROR = -405,       /* the server refused; getResponseStateCode says why */
  ERR_SERVER_REJECTED = -406,    /* "HTTP Status 400" */
  ERR_SERVER_FAILURE = -407,     /* "HTTP Status 500" */
  ERR_REQUEST_SEND = -410,       /* the connection broke while sending */
  ERR_REQUEST_BUILD = -411,      /* not returned */
  ERR_CONNECT = -501,            /* neither server can be reached */
  ERR_SERVER_ADDRESS = -504,     /* not returned: ERR_CONNECT stands for it */
  ERR_SSL_CONNECT = -505,        /* not returned */
  ERR_SSL_CONTEXT = -506,        /* not returned */

  /* Shifts and reports. */
  ERR_SHIFT_ALREADY_OPEN = -601,     /* call CloseShift first */
  ERR_SHIFT_NOT_OPEN = -602,         /* call OpenShift first */
  ERR_SHIFT_TRANSACTION_OPEN = -603, /* call CloseTransaction first */
  ERR_REPORT_RANGE = -701            /* the report's bounds are not in order */
};

/* ---- Life cycle ------------------------------------------------------------------------------------- */

/* Loads the settings and the state; call it before everything else. Called again it reads both anew.
 * The settings are those of CONFIG.JSN, which is then renamed to CONFIG. Without a good CONFIG.JSN they are
 * those of CONFIG. The rename never replaces: while a CONFIG exists, CONFIG.JSN stays and is read again at
 * every start.
 * A transaction still open is forgotten, not closed: its memory is lost, and its texts stay valid.
 * Returns 0, or
 *   ERR_CONFIG_LOAD  neither file can be loaded
 *   ERR_STATE_LOAD   STATE is empty, is cut short or holds JSON that is no object; it cannot be opened or
 *                    read, as when another program holds it; or it cannot be made
 * A STATE that is missing or is no JSON is replaced by an empty one, without an error: the shift then counts
 * as closed, and the terminal has no RRN.
 * After a failure run no operation: it would work with empty settings.
 * It also finishes what an earlier process left half done: a replay's OFFLINE_TMP, a trim's LOG.old. */
LUMO_API int LUMO_CALL LUMOInit(void);

/* LUMOInit with a trace file of the caller's name: "TRACE_" + name + ".TXT". A null or empty name, or one
 * of more than 258 characters, means TRACE.TXT; one that makes the path too long, no trace at all. The name
 * changes nothing else. A later LUMOInit keeps the name that was given last. */
LUMO_API int LUMO_CALL LUMOInitExt(const char *name);

/* Leaves a line in the trace and returns 0. It frees, closes and saves nothing: everything is saved
 * already, and the library stays usable. */
LUMO_API int LUMO_CALL LUMOClean(void);

/* The message for the cashier that belongs to a result code, in Russian. Never null. The message of a code
 * of LumoResult lives as long as the library. Any other code has "Неизвестная ошибка" and its number, and
 * that text lives until the next such code is asked for. Note: 0 has no message and counts as unknown. */
LUMO_API const char *LUMO_CALL GetErrorMessage(int code);

/* Finds the folder of the library file, where all files lie. The library calls it itself when it is loaded.
 *   module  the system's handle of the library file
 * Returns 1; 0 when the file's name has no folder; else the system's error number: 122 for a path of more
 * than 259 UTF-16 units, and then no folder is taken. On Linux the folder is that of the path by which the
 * library was loaded: a link there is not followed, so that several terminals may share one library file. */
LUMO_API int LUMO_CALL DllAttach(void *module);

/* ---- Settings --------------------------------------------------------------------------------------- */

/* `terminalId` of CONFIG; null when it has none. Lives as long as the library. */
LUMO_API const char *LUMO_CALL getTerminalId(void);

/* Host and port of `serverAddr` and of `serverAltAddr`, for a register that wants to test the connection
 * itself. An address that is not "http://host:port/path" gives the empty text and 0. There is no default
 * port, and the "/" is required. The host texts are the caller's for good: lumo never frees them and makes a
 * new one at each call. Ask once. */
LUMO_API char *LUMO_CALL getPingAddress(void);
LUMO_API int LUMO_CALL getPingPort(void);
LUMO_API char *LUMO_CALL getPingAltAddress(void);
LUMO_API int LUMO_CALL getPingAltPort(void);

/* ---- Shifts and state ------------------------------------------------------------------------------- */
/* STATE keeps the shift, the last RRN and two flags over restarts. It is read again before each use and
 * written at each change. Use the calls below only after LUMOInit: a change made before it overwrites STATE
 * with an empty state. */

/* Opens a shift, now.
 *   shift_id  goes into every request; null takes the time at which the previous shift was opened, empty
 *             when there was none
 * Returns 0, or ERR_SHIFT_ALREADY_OPEN, and the open shift stays as it is. A STATE that cannot be written
 * is not reported here: with `shiftMode` on, CreateTransaction then answers ERR_SHIFT_NOT_OPEN. */
LUMO_API int LUMO_CALL OpenShift(const char *shift_id);

/* Closes the shift, now. Returns 0, also when no shift is open, or ERR_SHIFT_TRANSACTION_OPEN. */
LUMO_API int LUMO_CALL CloseShift(void);

/* Reads STATE again. Returns 0, or
 *   ERR_STATE_LOAD    STATE is empty, is cut short, holds JSON that is no object or cannot be read
 *   ERR_STATE_CREATE  STATE cannot be opened, as when another program holds it; or it is missing or is no
 *                     JSON, and an empty one cannot be made */
LUMO_API int LUMO_CALL LoadState(void);

/* Empties the state in memory and returns 0. STATE stays as it is until something is saved: do not call
 * this between a load and a change. No register needs it. */
LUMO_API int LUMO_CALL InitState(void);

/* The offline flag: 1 when the last attempt to reach the server failed and `offlineMode` is 1, and 0 again
 * after the next exchange that succeeds. It tells of the server, not of the current transaction: for that
 * see lumoIsOffline. It keeps no operation from trying the server. The getter reads STATE again. The setter
 * stores the number as given and returns 0 or ERR_STATE_OPEN. */
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
 * come besides those named.
 * ERR_OFFLINE_SAVE means: DONE. Only the record is missing: from LOG, and so from the reports, or, in an
 * offline transaction, from OFFLINE. Do not repeat the operation. */

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
 *   amount     a wish, yes or no. 0: only earn bonuses. Anything else: spend bonuses as well. The request
 *              does not say how many: the server decides. GetSpendBonusAmount tells how many it spent.
 *   bill_path  the bill of goods, JSON; rewritten after success with the bonuses of each good
 * Returns 0, or
 *   ERR_BILL_FORMAT            the bill is missing or damaged; nothing was sent
 *   ERR_CONNECT                not paid
 *   ERR_ORG_FEE_EXCEEDS_BONUS  without the server, and the rates in CONFIG contradict each other; not paid
 *   ERR_BILL_OPEN              PAID; only the bill could not be rewritten. Do not pay again.
 * 0 also when the record is missing from LOG or from OFFLINE. Completed without the server (lumoIsOffline)
 * it spends NO bonuses, whatever `amount` says, and the slip says "ОФФЛАЙН". After 0: getRRN,
 * GetEarnBonusAmount, GetSpendBonusAmount, GetDiscountAmount. The customer pays the bill's total less what
 * the last two return. */
LUMO_API int LUMO_CALL PaymentProc(int amount, const char *bill_path);

/* PaymentProc that needs no confirmation. Instead of ERR_BILL_FORMAT it tells what is wrong with the bill:
 *   ERR_JSON_FILE_OPEN      the bill cannot be opened; nothing was sent
 *   ERR_JSON_SYNTAX         the bill is no JSON document, and nothing was sent. A damaged ANSWER has the same
 *                           code: look at the bill first.
 *   ERR_RESPONSE_STRUCTURE  the file is no bill, and nothing was sent. A damaged ANSWER has the same code:
 *                           look at the bill first. */
LUMO_API int LUMO_CALL PaymentAndConfirmProc(int amount, const char *bill_path);

/* Confirm or cancel a payment of PaymentProc, in the same transaction or a later one. Until then the server
 * only reserves: nothing is spent, and nothing earned.
 *   rrn  the payment's RRN
 * In an offline transaction they send nothing: the record waits in OFFLINE. Return 0, or
 *   ERR_CONNECT       not confirmed, not cancelled
 *   ERR_OFFLINE_SAVE  with the server: DONE. Without it: NOT done, no replay will tell the server; call it
 *                     again. Nothing is printed.
 * Note: both print the lines of a cancellation, "ОТМЕНА ПОКУПКИ". Print the slip before you confirm. They
 * have an RRN of their own, which getRRN then returns. */
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
 * Returns 0, or ERR_OFFLINE_SAVE: DEPOSITED, the record is missing. Note: the last line that it adds to the
 * slip has no line feed. */
LUMO_API int LUMO_CALL DepositProc(int amount);

/* Exchanges the transaction's card.
 *   token  as the customer received it
 * Returns 0, or ERR_OFFLINE_SAVE: EXCHANGED, the record is missing. */
LUMO_API int LUMO_CALL ExchangeProc(const char *token);

/* Links another card to the account of the transaction's card.
 *   card_num  the card to link
 * Note: it asks the server only in an offline transaction. In every other it sends NOTHING, records the
 * request in LOG, prints "Карта активирована и присоединена" and returns 0. Returns 0, ERR_OFFLINE_SAVE: the
 * record is missing, or in an offline transaction a code of "Talking to the server". */
LUMO_API int LUMO_CALL LinkCardProc(const char *card_num);

/* Writes a bill with one position for a plain amount, for a register without a list of goods. It needs no
 * transaction.
 *   total_sum  in hundredths
 *   bill_path  created or overwritten; the path to give to PaymentProc
 * Returns 0 or ERR_BILL_OPEN. A disk that is full is not told here: the payment finds the bill damaged. */
LUMO_API int LUMO_CALL CreateAmountBill(int total_sum, const char *bill_path);

/* ---- Results ---------------------------------------------------------------------------------------- */
/* They tell of the current transaction. They keep their values until an operation's answer brings new ones,
 * also after an operation that failed. Only the bonuses and the discount are 0 from the moment at which an
 * operation reads its bill or return list. */

/* What the server answered: its state, and its code. Never null. Both are "OK" before the first answer, and
 * the empty text without a transaction and for a state or code that lumo does not know. Valid for ever.
 *
 * States: "SUCCESS" is the one of an operation that returned 0. "ERROR" and "CANCELED" refuse. "OK",
 * "PROCESSED" and an unknown one come with ERR_SERVER_ERROR too, and say neither: see "A lost answer".
 *
 * Codes, and what they mean. What cashier and engineer do about each of them: docs/terminal.md.
 *   OK                            no refusal
 *   INTERNAL_ERROR                the server failed
 *   REQUEST_NOT_FOUND             the request that this one speaks of is unknown
 *   REQUEST_PARSING_ERROR         the request cannot be read
 *   UNSUPPORTED_PROTOCOL_VERSION  `protocolVersion` of CONFIG is not served
 *   INCORRECT_REQUEST_PARAM       a member of the request is missing or wrong
 *   UNKNOWN_TERMINAL              `terminalId` of CONFIG is not registered
 *   LOCKED_TERMINAL               the terminal is locked
 *   ACTIVATION_REQUIRED           the card is not active yet: ActivationProc
 *   LOCKED_CARD                   the card is locked
 *   CARD_NOT_FOUND                there is no such card
 *   CARD_NUMBER_INCORRECT         the card's number is none
 *   ALREADY_ACTIVATED             the card is active already
 *   ACTIVATION_SUM_TYPE_REQUIRED  a gift card needs an account type
 *   ACTIVATION_BLOCK_REQUIRED     the activation's own part is missing
 *   REFERRAL_NOT_FOUND            the card of the friend is unknown or not active
 *   REFERRAL_LIMIT_REACHED        the card of the friend has brought as many as it may
 *   INCORRECT_BILL                the bill contradicts itself
 *   UNPROCESSED_BILL              the payment is not confirmed yet
 *   BILL_NOT_FOUND                there is no payment of this RRN and card
 *   UNKNOWN_USER                  the cashier is not registered
 *   INCORRECT_SUM                 an amount is negative or too large
 *   UNKNOWN_CASH_BACK_TYPE        neither a full nor a partial return
 *   INCORRECT_TOKEN               the token of the exchange is not valid
 *   RETAIL_POINT_CONFIG_ERROR     the shop is set up wrongly at the server
 *   REQUEST_ID_EMPTY              the request has no RRN: see "Without the server"
 *   INCORRECT_REQUEST_ID          the request's RRN is none
 *   BILL_INCORRECT_STATE          the payment is confirmed, cancelled or returned already
 *   UPDATE_REQUIRED               the terminal must be updated first
 *   ZERO_ACTIVATION_ERROR         a gift card of 0
 *   INCORRECT_REQUEST             not the request that belongs to the operation
 *   DUPLICATE_REQUEST_ID          a request with this RRN was carried out before
 *   SMS_AUTH_FAILED               the customer did not confirm by the code of a text message */
LUMO_API const char *LUMO_CALL getResponseState(void);
LUMO_API const char *LUMO_CALL getResponseStateCode(void);

/* Note: always the empty text. The cashier's messages come from GetErrorMessage. */
LUMO_API const char *LUMO_CALL getResponseMessage(void);

/* The RRN of the last operation, 16 characters: the number to quote when a payment is confirmed, cancelled
 * or returned. Ask for it right after the operation. It is the terminal's last one, with or without a
 * transaction; null when there was none. It is saved before the operation's request goes out, and so survives
 * a restart in the middle of one. After SendOfflinePayments it may be another. After an operation that got no
 * RRN (see "Without the server") it is that of an older operation. Valid until the next getRRN. */
LUMO_API const char *LUMO_CALL getRRN(void);

/* The amount that the server granted for the last activation, by its type, in hundredths.
 * ERR_NO_TRANSACTION without a transaction. */
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
 * included. With a null buffer it only returns the size: ask first.
 * ERR_NO_TRANSACTION without a transaction. */
LUMO_API int LUMO_CALL getReceiptBody(char *buffer);

/* ---- Offline ---------------------------------------------------------------------------------------- */

/* Sends the records that wait in OFFLINE, each as it was recorded, with its own RRN. It needs no
 * transaction. Returns how many the server took, 0 or more; never a code. When some failed, OFFLINE holds
 * those afterwards, and a record that the server refuses stays there until somebody takes it out.
 * Note: when none failed OFFLINE stays as it is, and the next call sends its records again, with the same
 * RRNs. So ask lumoOfflineCount before the call. When it told the same number that this call returns, call
 * lumoClearOffline with it. */
LUMO_API int LUMO_CALL SendOfflinePayments(void);

/* ---- Reports ---------------------------------------------------------------------------------------- */

/* Print the operations in LOG that came after `from` and before `to`, both left out: the first as totals
 * for each kind of operation, the second one by one. LOG keeps fewer records than `logSize` of CONFIG says;
 * older ones are gone.
 *   from, to  UTC, as "2012-12-05T10:00:00Z"; compared as texts. Null is the empty text, before all others.
 * Return the report's length in bytes, 0 when there is nothing to report, or ERR_REPORT_RANGE when `from`
 * is not before `to`; the previous report then stays.
 * A return shows as 0.00: its record holds no sum. Exchanges and links are in neither report. Of simple and
 * gift-card activations the summary adds up the amounts sent, and the other report shows what was granted.
 * An activation of an unknown type in LOG, which lumo never writes, makes GenerateReport break into the
 * debugger. Without a debugger that ends the process. */
LUMO_API int LUMO_CALL GenerateSummaryReport(const char *from, const char *to);
LUMO_API int LUMO_CALL GenerateReport(const char *from, const char *to);

/* The last report's text, laid out for 24 columns. Valid until the next report. Null before the first. */
LUMO_API const char *LUMO_CALL GetReportPtr(void);

/* ---- Updates ---------------------------------------------------------------------------------------- */

/* Not part of this version. Both leave their name in the trace and return -1. That code has no message of
 * its own in GetErrorMessage. */
LUMO_API int LUMO_CALL RunUpdater(const char *package);
LUMO_API int LUMO_CALL CommitUpdates(void);

/* ---- Since version 1.1.0 ---------------------------------------------------------------------------- */
/* They change nothing in the calls above. */

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
 * number of records, or other ones, or cannot be read or removed, and is left as it was. Without an OFFLINE
 * only 0 is expected. */
LUMO_API int LUMO_CALL lumoClearOffline(int expected);

#ifdef __cplusplus
}
#endif

#endif
