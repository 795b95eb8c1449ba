{ The calls of lumo.h for Free Pascal and Delphi, Windows CE included.

  Every call has the name and the meaning that lumo.h gives it. One thread, one call at a time.
  Texts are UTF-8, in and out: UTF8String, whatever the compiler's own strings are. Those that come back are copies:
  they may be kept. An empty text stands for the null of lumo.h: going in where a call says so, coming back always.
  Amounts are hundredths: 15000 is 150.00. Paths are relative to the folder of the library file.

  The library file is lumo.dll, on Linux liblumo.so: see docs/languages.md. }
unit lumo;

{$IFDEF FPC}
{$MODE DELPHI}
{$ENDIF}

interface

const
{$IF DEFINED(MSWINDOWS) OR DEFINED(WINCE)}
  LumoFile = 'lumo.dll';
{$ELSE}
  LumoFile = 'lumo';
{$IFEND}

  { What a call returns beside 0, which is success. GetErrorMessage has the cashier's text. }

  { The register's own order of calls and files. }
  ERR_NO_TRANSACTION           = -100; { call CreateTransaction first }
  ERR_LAST_RRN                 = -101; { not returned }
  ERR_ACTIVATION_TYPE          = -102; { unknown activation type }
  ERR_ACCOUNT_TYPE             = -103; { unknown account type }
  ERR_ORG_FEE_EXCEEDS_BONUS    = -104; { orgFeeOffline of CONFIG exceeds the two bonus rates; not paid }
  ERR_BILL_OPEN                = -105; { a bill cannot be written; after a payment: PAID all the same }
  ERR_BILL_FORMAT              = -106; { the bill is missing or damaged; nothing was sent }
  ERR_CONFIG_OPEN              = -107; { not returned }
  ERR_STATE_LOAD               = -108; { STATE is no state, or cannot be made }
  ERR_STATE_CREATE             = -109; { STATE is missing or no JSON and cannot be made }
  ERR_STATE_OPEN               = -110; { STATE cannot be written }
  ERR_CONFIG_LOAD              = -111; { neither CONFIG.JSN nor CONFIG can be loaded }
  ERR_TRANSACTION_EXISTS       = -112; { call CloseTransaction first }
  ERR_RETURN_LIST_FORMAT       = -113; { the return list is missing or damaged; nothing was sent }

  { The records of operations. }
  ERR_OFFLINE_SAVE             = -201; { done, but the record could not be added to LOG or OFFLINE }
  ERR_LOG_DELETE               = -202; { OFFLINE does not hold the expected records, or cannot be removed }

  { JSON files and answers. }
  ERR_JSON_DOM_INIT            = -301; { not returned }
  ERR_JSON_PARSER_INIT         = -302; { not returned }
  ERR_JSON_SYNTAX              = -303; { a bill or the server's answer is no JSON document }
  ERR_JSON_INTERNAL            = -304; { not returned }
  ERR_JSON_PRINTER_INIT        = -305; { not returned }
  ERR_JSON_MEMORY              = -306; { not returned }
  ERR_JSON_FILE_OPEN           = -307; { a bill, or OFFLINE when it is counted, cannot be opened }
  ERR_XML_FORMAT               = -350; { not returned }

  { The exchange with the server: see "Talking to the server". }
  ERR_NO_RESPONSE              = -401; { nothing came: THE SERVER MAY HAVE CARRIED IT OUT }
  ERR_RESPONSE_STRUCTURE       = -402; { what came is cut off, or no answer; it may have been carried out. Also: a bill is no bill }
  ERR_RESPONSE_TYPE            = -403; { the answer has an unknown name; it may have been carried out }
  ERR_RESPONSE_CONTENT         = -404; { the answer lacks a part; it may have been carried out }
  ERR_SERVER_ERROR             = -405; { the server refused: see getResponseStateCode }
  ERR_SERVER_REJECTED          = -406; { "HTTP Status 400": as a rule the server could not read the request }
  ERR_SERVER_FAILURE           = -407; { "HTTP Status 500": the server itself failed; it may have been carried out }
  ERR_REQUEST_SEND             = -410; { the connection broke while sending; it may have been carried out }
  ERR_REQUEST_BUILD            = -411; { not returned }
  ERR_CONNECT                  = -501; { neither server can be reached; nothing was sent }
  ERR_SERVER_ADDRESS           = -504; { not returned: ERR_CONNECT stands for it }
  ERR_SSL_CONNECT              = -505; { not returned }
  ERR_SSL_CONTEXT              = -506; { not returned }

  { Shifts and reports. }
  ERR_SHIFT_ALREADY_OPEN       = -601; { call CloseShift first }
  ERR_SHIFT_NOT_OPEN           = -602; { call OpenShift first }
  ERR_SHIFT_TRANSACTION_OPEN   = -603; { call CloseTransaction first }
  ERR_REPORT_RANGE             = -701; { the report's bounds are not in order }

{ ---- Life cycle ---- }

/// <summary>Loads the settings and the state; call it before everything else.</summary>
/// <returns>0, ERR_CONFIG_LOAD or ERR_STATE_LOAD. After a failure run no operation.</returns>
function LUMOInit: LongInt;

/// <summary>LUMOInit with a trace file of your own.</summary>
/// <param name="Name">The trace is then TRACE_name.TXT; '': TRACE.TXT.</param>
/// <returns>As LUMOInit.</returns>
function LUMOInitExt(const Name: UTF8String): LongInt;

/// <summary>Leaves a line in the trace. Everything is saved already, and the library stays usable.</summary>
/// <returns>0.</returns>
function LUMOClean: LongInt; cdecl; external LumoFile;

/// <summary>The cashier's text for a code, in Russian. 0 has none and counts as unknown.</summary>
/// <param name="Code">A code of LumoResult.</param>
function GetErrorMessage(Code: LongInt): UTF8String;

/// <summary>Finds the folder of the library file. The library does so itself when it is loaded.</summary>
/// <param name="Module">The system's handle of the library file.</param>
/// <returns>1; 0 when the file's name has no folder; else the system's error number.</returns>
function DllAttach(Module: Pointer): LongInt; cdecl; external LumoFile;

{ ---- Settings ---- }

/// <summary>The terminal's number in CONFIG; '' when it has none.</summary>
function getTerminalId: UTF8String;

/// <summary>The host of serverAddr, for a register that tests the connection itself; the empty text when the address
/// is not http://host:port/path.</summary>
function getPingAddress: UTF8String;

/// <summary>The port of serverAddr; 0 when the address is not http://host:port/path.</summary>
function getPingPort: LongInt; cdecl; external LumoFile;

/// <summary>The host of serverAltAddr, as getPingAddress.</summary>
function getPingAltAddress: UTF8String;

/// <summary>The port of serverAltAddr, as getPingPort.</summary>
function getPingAltPort: LongInt; cdecl; external LumoFile;

{ ---- Shifts and state ---- }

/// <summary>Opens a shift, now.</summary>
/// <param name="ShiftId">Goes into every request; '': the time at which the previous shift was opened.</param>
/// <returns>0, or ERR_SHIFT_ALREADY_OPEN, and the open shift stays as it is.</returns>
function OpenShift(const ShiftId: UTF8String): LongInt;

/// <summary>Closes the shift, now.</summary>
/// <returns>0, also when no shift is open, or ERR_SHIFT_TRANSACTION_OPEN.</returns>
function CloseShift: LongInt; cdecl; external LumoFile;

/// <summary>Reads STATE again.</summary>
/// <returns>0, ERR_STATE_LOAD or ERR_STATE_CREATE.</returns>
function LoadState: LongInt; cdecl; external LumoFile;

/// <summary>Empties the state in memory. No register needs it.</summary>
/// <returns>0.</returns>
function InitState: LongInt; cdecl; external LumoFile;

/// <summary>The offline flag: 1 after the server could not be reached, with offlineMode 1 in CONFIG; 0 again after
/// the next exchange that succeeds.</summary>
function getOfflineState: LongInt; cdecl; external LumoFile;

/// <summary>Sets the offline flag.</summary>
/// <param name="Offline">The flag.</param>
/// <returns>0 or ERR_STATE_OPEN.</returns>
function setOfflineState(Offline: LongInt): LongInt; cdecl; external LumoFile;

/// <summary>1 when the server's last answer asked the terminal to update.</summary>
function getNeedUpdate: LongInt; cdecl; external LumoFile;

/// <summary>Sets the update flag.</summary>
/// <param name="NeedUpdate">The flag.</param>
/// <returns>0 or ERR_STATE_OPEN.</returns>
function setNeedUpdate(NeedUpdate: LongInt): LongInt; cdecl; external LumoFile;

{ ---- The transaction ---- }

/// <summary>Starts the one current transaction and prints the head and the foot of its slip.</summary>
/// <param name="CardNum">The customer's card.</param>
/// <param name="EmployeeId">The cashier.</param>
/// <returns>0, ERR_SHIFT_NOT_OPEN or ERR_TRANSACTION_EXISTS.</returns>
function CreateTransaction(const CardNum, EmployeeId: UTF8String): LongInt;

/// <summary>Ends the transaction.</summary>
/// <returns>0, also when there is none.</returns>
function CloseTransaction: LongInt; cdecl; external LumoFile;

{ ---- Operations ---- }

/// <summary>Activates the card. See GetActivationAmount.</summary>
/// <param name="ActivationType">"SIMPLE_ACTIVATION", "GIFT_CARD" or "REFER_A_FRIEND".</param>
/// <param name="BillPath">A bill whose total replaces the amount; '': none.</param>
/// <param name="Amount">In hundredths.</param>
/// <param name="AccountType">For a gift card: "GLOBAL", "LOCAL" or "DISCOUNT".</param>
/// <param name="ReferCardNum">For refer-a-friend: the friend's card.</param>
/// <returns>0, ERR_BILL_FORMAT, ERR_ACTIVATION_TYPE, ERR_ACCOUNT_TYPE, ERR_OFFLINE_SAVE (activated, the record is
/// missing) or a code of the exchange.</returns>
function ActivationProc(const ActivationType, BillPath: UTF8String; Amount: LongInt;
  const AccountType, ReferCardNum: UTF8String): LongInt;

/// <summary>Asks for the card's accounts and prints them. See GetBalance.</summary>
/// <returns>0 or a code of the exchange.</returns>
function BalanceProc: LongInt; cdecl; external LumoFile;

/// <summary>Pays a bill with the card. Keep its RRN: the payment must still be confirmed, or cancelled.</summary>
/// <param name="Amount">0: only earn bonuses; anything else: spend some too, and the server decides how many.</param>
/// <param name="BillPath">The bill of goods; rewritten with the bonuses of each good.</param>
/// <returns>0, ERR_BILL_FORMAT, ERR_ORG_FEE_EXCEEDS_BONUS, ERR_BILL_OPEN (PAID, the bill could not be rewritten) or a
/// code of the exchange.</returns>
function PaymentProc(Amount: LongInt; const BillPath: UTF8String): LongInt;

/// <summary>PaymentProc that needs no confirmation.</summary>
/// <param name="Amount">As for PaymentProc.</param>
/// <param name="BillPath">As for PaymentProc.</param>
/// <returns>As PaymentProc, but for a bad bill ERR_JSON_FILE_OPEN, ERR_JSON_SYNTAX or
/// ERR_RESPONSE_STRUCTURE.</returns>
function PaymentAndConfirmProc(Amount: LongInt; const BillPath: UTF8String): LongInt;

/// <summary>Confirms a payment of PaymentProc. Do not print its slip.</summary>
/// <param name="Rrn">The payment's RRN.</param>
/// <returns>0, ERR_OFFLINE_SAVE (confirmed, or without the server not kept) or a code of the exchange.</returns>
function PaymentConfirmProc(const Rrn: UTF8String): LongInt;

/// <summary>Cancels a payment of PaymentProc. After a lost answer it tells what became of the payment: 0, it had been
/// paid and is now cancelled; BILL_NOT_FOUND, it was never paid.</summary>
/// <param name="Rrn">The payment's RRN.</param>
/// <returns>As PaymentConfirmProc.</returns>
function PaymentCancelProc(const Rrn: UTF8String): LongInt;

/// <summary>Returns goods of a payment. See GetCashBackResult.</summary>
/// <param name="Rrn">The payment's RRN.</param>
/// <param name="ReturnListPath">The positions that come back; '': everything.</param>
/// <returns>0, ERR_RETURN_LIST_FORMAT, ERR_OFFLINE_SAVE (returned, the record is missing) or a code of the
/// exchange.</returns>
function CashBackProc(const Rrn, ReturnListPath: UTF8String): LongInt;

/// <summary>Puts money on the card.</summary>
/// <param name="Amount">In hundredths.</param>
/// <returns>0, ERR_OFFLINE_SAVE (deposited, the record is missing) or a code of the exchange.</returns>
function DepositProc(Amount: LongInt): LongInt; cdecl; external LumoFile;

/// <summary>Exchanges the transaction's card.</summary>
/// <param name="Token">As the customer received it.</param>
/// <returns>0, ERR_OFFLINE_SAVE (exchanged, the record is missing) or a code of the exchange.</returns>
function ExchangeProc(const Token: UTF8String): LongInt;

/// <summary>Links another card to the account of the transaction's card. It asks the server only in an offline
/// transaction.</summary>
/// <param name="CardNum">The card to link.</param>
/// <returns>0, ERR_OFFLINE_SAVE or, in an offline transaction, a code of the exchange.</returns>
function LinkCardProc(const CardNum: UTF8String): LongInt;

/// <summary>Writes a bill with one position for a plain amount, for a register without a list of goods.</summary>
/// <param name="TotalSum">In hundredths.</param>
/// <param name="BillPath">The path to give to PaymentProc.</param>
/// <returns>0 or ERR_BILL_OPEN.</returns>
function CreateAmountBill(TotalSum: LongInt; const BillPath: UTF8String): LongInt;

{ ---- Results ---- }

/// <summary>The state that the server answered: "OK", "SUCCESS", "PROCESSED", "ERROR" or "CANCELED".</summary>
function getResponseState: UTF8String;

/// <summary>The state code that the server answered: "OK", or the reason, such as "LOCKED_CARD".</summary>
function getResponseStateCode: UTF8String;

/// <summary>Always the empty text.</summary>
function getResponseMessage: UTF8String;

/// <summary>The RRN of the last operation, 16 characters, with or without a transaction; '' when there was
/// none.</summary>
function getRRN: UTF8String;

/// <summary>What the server granted for the last activation, in hundredths; ERR_NO_TRANSACTION without a
/// transaction.</summary>
function GetActivationAmount: LongInt; cdecl; external LumoFile;

/// <summary>What the customer can spend as of the last BalanceProc, in hundredths; 0 without a transaction.</summary>
function GetBalance: LongInt; cdecl; external LumoFile;

/// <summary>What the last CashBackProc gave back, in hundredths; ERR_NO_TRANSACTION without a transaction.</summary>
function GetCashBackResult: LongInt; cdecl; external LumoFile;

/// <summary>The bonuses that the last paid bill earns, in hundredths.</summary>
function GetEarnBonusAmount: LongInt; cdecl; external LumoFile;

/// <summary>The bonuses that the last paid bill spends, in hundredths.</summary>
function GetSpendBonusAmount: LongInt; cdecl; external LumoFile;

/// <summary>The discount of the last paid bill, in hundredths.</summary>
function GetDiscountAmount: LongInt; cdecl; external LumoFile;

{ ---- Receipts ---- }

/// <summary>The head of the slip, in lines of 24 columns; '' without a transaction.</summary>
function getReceiptHeaderPtr: UTF8String;

/// <summary>The body of the slip, which grows with each operation that succeeds; '' without a transaction.</summary>
function getReceiptBodyPtr: UTF8String;

/// <summary>The foot of the slip; '' without a transaction.</summary>
function getReceiptFooterPtr: UTF8String;

/// <summary>The body of the slip, as getReceiptBodyPtr; '' without a transaction.</summary>
function getReceiptBody: UTF8String;

{ ---- Offline ---- }

/// <summary>Sends the records that wait in OFFLINE. When the number is what lumoOfflineCount told before, clear
/// OFFLINE with lumoClearOffline.</summary>
/// <returns>How many the server took; never a code.</returns>
function SendOfflinePayments: LongInt; cdecl; external LumoFile;

{ ---- Reports ---- }

/// <summary>Prints the operations in LOG between two times as totals. See GetReportPtr.</summary>
/// <param name="SinceTime">UTC, as "2012-12-05T10:00:00Z"; left out itself.</param>
/// <param name="UntilTime">The same.</param>
/// <returns>The report's length in bytes, 0 when there is nothing to report, or ERR_REPORT_RANGE.</returns>
function GenerateSummaryReport(const SinceTime, UntilTime: UTF8String): LongInt;

/// <summary>Prints the operations in LOG between two times one by one. See GetReportPtr.</summary>
/// <param name="SinceTime">As for GenerateSummaryReport.</param>
/// <param name="UntilTime">The same.</param>
/// <returns>As GenerateSummaryReport.</returns>
function GenerateReport(const SinceTime, UntilTime: UTF8String): LongInt;

/// <summary>The last report, in lines of 24 columns; '' before the first.</summary>
function GetReportPtr: UTF8String;

{ ---- Updates ---- }

/// <summary>Not part of this version.</summary>
/// <param name="Package">The package.</param>
/// <returns>-1, which has no message of its own.</returns>
function RunUpdater(const Package: UTF8String): LongInt;

/// <summary>Not part of this version.</summary>
/// <returns>-1, which has no message of its own.</returns>
function CommitUpdates: LongInt; cdecl; external LumoFile;

{ ---- Since version 1.1.0 ---- }

/// <summary>The version of the library file, such as "1.1.0".</summary>
function lumoVersion: UTF8String;

/// <summary>1 when the current transaction was completed without the server and waits in OFFLINE; 0
/// otherwise.</summary>
function lumoIsOffline: LongInt; cdecl; external LumoFile;

/// <summary>How many records OFFLINE holds, or ERR_JSON_FILE_OPEN.</summary>
function lumoOfflineCount: LongInt; cdecl; external LumoFile;

/// <summary>Removes OFFLINE when it holds exactly so many records.</summary>
/// <param name="Expected">The number that SendOfflinePayments returned.</param>
/// <returns>0, or ERR_LOG_DELETE, and OFFLINE is as it was.</returns>
function lumoClearOffline(Expected: LongInt): LongInt; cdecl; external LumoFile;

implementation

function lumo_LUMOInit: LongInt; cdecl; external LumoFile name 'LUMOInit';
function lumo_LUMOInitExt(Name: PAnsiChar): LongInt; cdecl; external LumoFile name 'LUMOInitExt';
function lumo_GetErrorMessage(Code: LongInt): PAnsiChar; cdecl; external LumoFile name 'GetErrorMessage';
function lumo_getTerminalId: PAnsiChar; cdecl; external LumoFile name 'getTerminalId';
function lumo_getPingAddress: PAnsiChar; cdecl; external LumoFile name 'getPingAddress';
function lumo_getPingAltAddress: PAnsiChar; cdecl; external LumoFile name 'getPingAltAddress';
function lumo_OpenShift(ShiftId: PAnsiChar): LongInt; cdecl; external LumoFile name 'OpenShift';
function lumo_CreateTransaction(CardNum, EmployeeId: PAnsiChar): LongInt;
  cdecl; external LumoFile name 'CreateTransaction';
function lumo_ActivationProc(ActivationType, BillPath: PAnsiChar; Amount: LongInt;
  AccountType, ReferCardNum: PAnsiChar): LongInt;
  cdecl; external LumoFile name 'ActivationProc';
function lumo_PaymentProc(Amount: LongInt; BillPath: PAnsiChar): LongInt; cdecl; external LumoFile name 'PaymentProc';
function lumo_PaymentAndConfirmProc(Amount: LongInt; BillPath: PAnsiChar): LongInt;
  cdecl; external LumoFile name 'PaymentAndConfirmProc';
function lumo_PaymentConfirmProc(Rrn: PAnsiChar): LongInt; cdecl; external LumoFile name 'PaymentConfirmProc';
function lumo_PaymentCancelProc(Rrn: PAnsiChar): LongInt; cdecl; external LumoFile name 'PaymentCancelProc';
function lumo_CashBackProc(Rrn, ReturnListPath: PAnsiChar): LongInt; cdecl; external LumoFile name 'CashBackProc';
function lumo_ExchangeProc(Token: PAnsiChar): LongInt; cdecl; external LumoFile name 'ExchangeProc';
function lumo_LinkCardProc(CardNum: PAnsiChar): LongInt; cdecl; external LumoFile name 'LinkCardProc';
function lumo_CreateAmountBill(TotalSum: LongInt; BillPath: PAnsiChar): LongInt;
  cdecl; external LumoFile name 'CreateAmountBill';
function lumo_getResponseState: PAnsiChar; cdecl; external LumoFile name 'getResponseState';
function lumo_getResponseStateCode: PAnsiChar; cdecl; external LumoFile name 'getResponseStateCode';
function lumo_getResponseMessage: PAnsiChar; cdecl; external LumoFile name 'getResponseMessage';
function lumo_getRRN: PAnsiChar; cdecl; external LumoFile name 'getRRN';
function lumo_getReceiptHeaderPtr: PAnsiChar; cdecl; external LumoFile name 'getReceiptHeaderPtr';
function lumo_getReceiptBodyPtr: PAnsiChar; cdecl; external LumoFile name 'getReceiptBodyPtr';
function lumo_getReceiptFooterPtr: PAnsiChar; cdecl; external LumoFile name 'getReceiptFooterPtr';
function lumo_getReceiptBody(Buffer: PAnsiChar): LongInt; cdecl; external LumoFile name 'getReceiptBody';
function lumo_GenerateSummaryReport(SinceTime, UntilTime: PAnsiChar): LongInt;
  cdecl; external LumoFile name 'GenerateSummaryReport';
function lumo_GenerateReport(SinceTime, UntilTime: PAnsiChar): LongInt;
  cdecl; external LumoFile name 'GenerateReport';
function lumo_GetReportPtr: PAnsiChar; cdecl; external LumoFile name 'GetReportPtr';
function lumo_RunUpdater(Package: PAnsiChar): LongInt; cdecl; external LumoFile name 'RunUpdater';
function lumo_lumoVersion: PAnsiChar; cdecl; external LumoFile name 'lumoVersion';

var
  { The library makes a new text of a host at each call and never frees it: each is asked for once after a start. }
  Host, AltHost: UTF8String;
  HostKnown, AltHostKnown: Boolean;

function Copied(Text: PAnsiChar): UTF8String;
var
  Size: LongInt;
begin
  Result := '';
  if Text = nil then Exit;
  Size := 0;
  while Text[Size] <> #0 do Inc(Size);
  if Size = 0 then Exit;
  SetLength(Result, Size);
  Move(Text^, Pointer(Result)^, Size);
end;

function OrNil(const Text: UTF8String): PAnsiChar;
begin
  if Text = '' then Result := nil else Result := PAnsiChar(Text);
end;

function LUMOInit: LongInt;
begin
  HostKnown := False;
  AltHostKnown := False;
  Result := lumo_LUMOInit;
end;

function LUMOInitExt(const Name: UTF8String): LongInt;
begin
  HostKnown := False;
  AltHostKnown := False;
  Result := lumo_LUMOInitExt(OrNil(Name));
end;

function GetErrorMessage(Code: LongInt): UTF8String;
begin
  Result := Copied(lumo_GetErrorMessage(Code));
end;

function getTerminalId: UTF8String;
begin
  Result := Copied(lumo_getTerminalId);
end;

function getPingAddress: UTF8String;
begin
  if not HostKnown then Host := Copied(lumo_getPingAddress);
  HostKnown := True;
  Result := Host;
end;

function getPingAltAddress: UTF8String;
begin
  if not AltHostKnown then AltHost := Copied(lumo_getPingAltAddress);
  AltHostKnown := True;
  Result := AltHost;
end;

function OpenShift(const ShiftId: UTF8String): LongInt;
begin
  Result := lumo_OpenShift(OrNil(ShiftId));
end;

function CreateTransaction(const CardNum, EmployeeId: UTF8String): LongInt;
begin
  Result := lumo_CreateTransaction(PAnsiChar(CardNum), PAnsiChar(EmployeeId));
end;

function ActivationProc(const ActivationType, BillPath: UTF8String; Amount: LongInt;
  const AccountType, ReferCardNum: UTF8String): LongInt;
begin
  Result := lumo_ActivationProc(PAnsiChar(ActivationType), OrNil(BillPath), Amount, OrNil(AccountType),
    OrNil(ReferCardNum));
end;

function PaymentProc(Amount: LongInt; const BillPath: UTF8String): LongInt;
begin
  Result := lumo_PaymentProc(Amount, PAnsiChar(BillPath));
end;

function PaymentAndConfirmProc(Amount: LongInt; const BillPath: UTF8String): LongInt;
begin
  Result := lumo_PaymentAndConfirmProc(Amount, PAnsiChar(BillPath));
end;

function PaymentConfirmProc(const Rrn: UTF8String): LongInt;
begin
  Result := lumo_PaymentConfirmProc(PAnsiChar(Rrn));
end;

function PaymentCancelProc(const Rrn: UTF8String): LongInt;
begin
  Result := lumo_PaymentCancelProc(PAnsiChar(Rrn));
end;

function CashBackProc(const Rrn, ReturnListPath: UTF8String): LongInt;
begin
  Result := lumo_CashBackProc(PAnsiChar(Rrn), OrNil(ReturnListPath));
end;

function ExchangeProc(const Token: UTF8String): LongInt;
begin
  Result := lumo_ExchangeProc(PAnsiChar(Token));
end;

function LinkCardProc(const CardNum: UTF8String): LongInt;
begin
  Result := lumo_LinkCardProc(PAnsiChar(CardNum));
end;

function CreateAmountBill(TotalSum: LongInt; const BillPath: UTF8String): LongInt;
begin
  Result := lumo_CreateAmountBill(TotalSum, PAnsiChar(BillPath));
end;

function getResponseState: UTF8String;
begin
  Result := Copied(lumo_getResponseState);
end;

function getResponseStateCode: UTF8String;
begin
  Result := Copied(lumo_getResponseStateCode);
end;

function getResponseMessage: UTF8String;
begin
  Result := Copied(lumo_getResponseMessage);
end;

function getRRN: UTF8String;
begin
  Result := Copied(lumo_getRRN);
end;

function getReceiptHeaderPtr: UTF8String;
begin
  Result := Copied(lumo_getReceiptHeaderPtr);
end;

function getReceiptBodyPtr: UTF8String;
begin
  Result := Copied(lumo_getReceiptBodyPtr);
end;

function getReceiptFooterPtr: UTF8String;
begin
  Result := Copied(lumo_getReceiptFooterPtr);
end;

function getReceiptBody: UTF8String;
var
  Size: LongInt;
begin
  Result := '';
  Size := lumo_getReceiptBody(nil);
  if Size <= 1 then Exit;
  SetLength(Result, Size - 1);  { the zero behind the text is there already }
  lumo_getReceiptBody(PAnsiChar(Result));
end;

function GenerateSummaryReport(const SinceTime, UntilTime: UTF8String): LongInt;
begin
  Result := lumo_GenerateSummaryReport(PAnsiChar(SinceTime), PAnsiChar(UntilTime));
end;

function GenerateReport(const SinceTime, UntilTime: UTF8String): LongInt;
begin
  Result := lumo_GenerateReport(PAnsiChar(SinceTime), PAnsiChar(UntilTime));
end;

function GetReportPtr: UTF8String;
begin
  Result := Copied(lumo_GetReportPtr);
end;

function RunUpdater(const Package: UTF8String): LongInt;
begin
  Result := lumo_RunUpdater(PAnsiChar(Package));
end;

function lumoVersion: UTF8String;
begin
  Result := Copied(lumo_lumoVersion);
end;

end.
