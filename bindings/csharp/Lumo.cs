// The calls of lumo.h for C#: .NET, Mono and the .NET Compact Framework (there define WindowsCE, PocketPC or
// Smartphone, as its project templates do). C# 2.0, no unsafe code, no package.
//
// The library file is lumo.dll, on Linux liblumo.so, beside the program or where else the system looks: see
// docs/languages.md.

using System;
using System.Runtime.InteropServices;
using System.Text;

/// <summary>
/// A retail loyalty programme for a cash register. Every call has the name and the meaning that lumo.h gives it.
/// One thread, one call at a time. Texts are copies: they may be kept. null stands for the null of lumo.h.
/// Amounts are hundredths: 15000 is 150.00. Paths are relative to the folder of the library file.
/// </summary>
public static class Lumo
{
    /// <summary>What a call returns: Success or what went wrong. GetErrorMessage has the cashier's text.</summary>
    public enum Result
    {
        /// <summary>Done.</summary>
        Success = 0,

        // The register's own order of calls and files.
        /// <summary>Call CreateTransaction first.</summary>
        ERR_NO_TRANSACTION = -100,
        /// <summary>Not returned.</summary>
        ERR_LAST_RRN = -101,
        /// <summary>Unknown activation type.</summary>
        ERR_ACTIVATION_TYPE = -102,
        /// <summary>Unknown account type.</summary>
        ERR_ACCOUNT_TYPE = -103,
        /// <summary>orgFeeOffline of CONFIG exceeds the two bonus rates; not paid.</summary>
        ERR_ORG_FEE_EXCEEDS_BONUS = -104,
        /// <summary>A bill cannot be written; after a payment: PAID all the same.</summary>
        ERR_BILL_OPEN = -105,
        /// <summary>The bill is missing or damaged; nothing was sent.</summary>
        ERR_BILL_FORMAT = -106,
        /// <summary>Not returned.</summary>
        ERR_CONFIG_OPEN = -107,
        /// <summary>STATE is no state, or cannot be made.</summary>
        ERR_STATE_LOAD = -108,
        /// <summary>STATE is missing or no JSON and cannot be made.</summary>
        ERR_STATE_CREATE = -109,
        /// <summary>STATE cannot be written.</summary>
        ERR_STATE_OPEN = -110,
        /// <summary>Neither CONFIG.JSN nor CONFIG can be loaded.</summary>
        ERR_CONFIG_LOAD = -111,
        /// <summary>Call CloseTransaction first.</summary>
        ERR_TRANSACTION_EXISTS = -112,
        /// <summary>The return list is missing or damaged; nothing was sent.</summary>
        ERR_RETURN_LIST_FORMAT = -113,

        // The records of operations.
        /// <summary>Done, but the record could not be added to LOG or OFFLINE.</summary>
        ERR_OFFLINE_SAVE = -201,
        /// <summary>OFFLINE does not hold the expected records, or cannot be removed.</summary>
        ERR_LOG_DELETE = -202,

        // JSON files and answers.
        /// <summary>Not returned.</summary>
        ERR_JSON_DOM_INIT = -301,
        /// <summary>Not returned.</summary>
        ERR_JSON_PARSER_INIT = -302,
        /// <summary>A bill or the server's answer is no JSON document.</summary>
        ERR_JSON_SYNTAX = -303,
        /// <summary>Not returned.</summary>
        ERR_JSON_INTERNAL = -304,
        /// <summary>Not returned.</summary>
        ERR_JSON_PRINTER_INIT = -305,
        /// <summary>Not returned.</summary>
        ERR_JSON_MEMORY = -306,
        /// <summary>A bill, or OFFLINE when it is counted, cannot be opened.</summary>
        ERR_JSON_FILE_OPEN = -307,
        /// <summary>Not returned.</summary>
        ERR_XML_FORMAT = -350,

        // The exchange with the server: see "Talking to the server".
        /// <summary>Nothing came: THE SERVER MAY HAVE CARRIED IT OUT.</summary>
        ERR_NO_RESPONSE = -401,
        /// <summary>What came is cut off, or no answer; it may have been carried out. Also: a bill is no bill.</summary>
        ERR_RESPONSE_STRUCTURE = -402,
        /// <summary>The answer has an unknown name; it may have been carried out.</summary>
        ERR_RESPONSE_TYPE = -403,
        /// <summary>The answer lacks a part; it may have been carried out.</summary>
        ERR_RESPONSE_CONTENT = -404,
        /// <summary>The server refused: see getResponseStateCode.</summary>
        ERR_SERVER_ERROR = -405,
        /// <summary>"HTTP Status 400": as a rule the server could not read the request.</summary>
        ERR_SERVER_REJECTED = -406,
        /// <summary>"HTTP Status 500": the server itself failed; it may have been carried out.</summary>
        ERR_SERVER_FAILURE = -407,
        /// <summary>The connection broke while sending; it may have been carried out.</summary>
        ERR_REQUEST_SEND = -410,
        /// <summary>Not returned.</summary>
        ERR_REQUEST_BUILD = -411,
        /// <summary>Neither server can be reached; nothing was sent.</summary>
        ERR_CONNECT = -501,
        /// <summary>Not returned: ERR_CONNECT stands for it.</summary>
        ERR_SERVER_ADDRESS = -504,
        /// <summary>Not returned.</summary>
        ERR_SSL_CONNECT = -505,
        /// <summary>Not returned.</summary>
        ERR_SSL_CONTEXT = -506,

        // Shifts and reports.
        /// <summary>Call CloseShift first.</summary>
        ERR_SHIFT_ALREADY_OPEN = -601,
        /// <summary>Call OpenShift first.</summary>
        ERR_SHIFT_NOT_OPEN = -602,
        /// <summary>Call CloseTransaction first.</summary>
        ERR_SHIFT_TRANSACTION_OPEN = -603,
        /// <summary>The report's bounds are not in order.</summary>
        ERR_REPORT_RANGE = -701
    }

    // ---- Life cycle ----

    /// <summary>Loads the settings and the state; call it before everything else.</summary>
    /// <returns>0, ERR_CONFIG_LOAD or ERR_STATE_LOAD. After a failure run no operation.</returns>
    public static Result LUMOInit() { return Started(Native.LUMOInit()); }

    /// <summary>LUMOInit with a trace file of your own.</summary>
    /// <param name="name">The trace is then TRACE_name.TXT; null: TRACE.TXT.</param>
    /// <returns>As LUMOInit.</returns>
    public static Result LUMOInitExt(string name) { return Started(Native.LUMOInitExt(Bytes(name))); }

    /// <summary>Leaves a line in the trace. Everything is saved already, and the library stays usable.</summary>
    /// <returns>0.</returns>
    public static Result LUMOClean() { return (Result)Native.LUMOClean(); }

    /// <summary>The cashier's text for a code, in Russian. 0 has none and counts as unknown.</summary>
    /// <param name="code">A code of LumoResult.</param>
    public static string GetErrorMessage(int code) { return Text(Native.GetErrorMessage(code)); }

    /// <summary>Finds the folder of the library file. The library does so itself when it is loaded.</summary>
    /// <param name="module">The system's handle of the library file.</param>
    /// <returns>1; 0 when the file's name has no folder; else the system's error number.</returns>
    public static int DllAttach(IntPtr module) { return Native.DllAttach(module); }

    // ---- Settings ----

    /// <summary>The terminal's number in CONFIG; null when it has none.</summary>
    public static string getTerminalId() { return Text(Native.getTerminalId()); }

    /// <summary>The host of serverAddr, for a register that tests the connection itself; the empty text when the
    /// address is not http://host:port/path.</summary>
    public static string getPingAddress()
    {
        if (pingAddress == null) pingAddress = Text(Native.getPingAddress());
        return pingAddress;
    }

    /// <summary>The port of serverAddr; 0 when the address is not http://host:port/path.</summary>
    public static int getPingPort() { return Native.getPingPort(); }

    /// <summary>The host of serverAltAddr, as getPingAddress.</summary>
    public static string getPingAltAddress()
    {
        if (pingAltAddress == null) pingAltAddress = Text(Native.getPingAltAddress());
        return pingAltAddress;
    }

    /// <summary>The port of serverAltAddr, as getPingPort.</summary>
    public static int getPingAltPort() { return Native.getPingAltPort(); }

    // ---- Shifts and state ----

    /// <summary>Opens a shift, now.</summary>
    /// <param name="shiftId">Goes into every request; null: the time at which the previous shift was
    /// opened.</param>
    /// <returns>0, or ERR_SHIFT_ALREADY_OPEN, and the open shift stays as it is.</returns>
    public static Result OpenShift(string shiftId) { return (Result)Native.OpenShift(Bytes(shiftId)); }

    /// <summary>Closes the shift, now.</summary>
    /// <returns>0, also when no shift is open, or ERR_SHIFT_TRANSACTION_OPEN.</returns>
    public static Result CloseShift() { return (Result)Native.CloseShift(); }

    /// <summary>Reads STATE again.</summary>
    /// <returns>0, ERR_STATE_LOAD or ERR_STATE_CREATE.</returns>
    public static Result LoadState() { return (Result)Native.LoadState(); }

    /// <summary>Empties the state in memory. No register needs it.</summary>
    /// <returns>0.</returns>
    public static Result InitState() { return (Result)Native.InitState(); }

    /// <summary>The offline flag: 1 after the server could not be reached, with offlineMode 1 in CONFIG; 0 again
    /// after the next exchange that succeeds.</summary>
    public static int getOfflineState() { return Native.getOfflineState(); }

    /// <summary>Sets the offline flag.</summary>
    /// <param name="offline">The flag.</param>
    /// <returns>0 or ERR_STATE_OPEN.</returns>
    public static Result setOfflineState(int offline) { return (Result)Native.setOfflineState(offline); }

    /// <summary>1 when the server's last answer asked the terminal to update.</summary>
    public static int getNeedUpdate() { return Native.getNeedUpdate(); }

    /// <summary>Sets the update flag.</summary>
    /// <param name="needUpdate">The flag.</param>
    /// <returns>0 or ERR_STATE_OPEN.</returns>
    public static Result setNeedUpdate(int needUpdate) { return (Result)Native.setNeedUpdate(needUpdate); }

    // ---- The transaction ----

    /// <summary>Starts the one current transaction and prints the head and the foot of its slip.</summary>
    /// <param name="cardNum">The customer's card.</param>
    /// <param name="employeeId">The cashier.</param>
    /// <returns>0, ERR_SHIFT_NOT_OPEN or ERR_TRANSACTION_EXISTS.</returns>
    public static Result CreateTransaction(string cardNum, string employeeId)
    {
        return (Result)Native.CreateTransaction(Bytes(cardNum), Bytes(employeeId));
    }

    /// <summary>Ends the transaction.</summary>
    /// <returns>0, also when there is none.</returns>
    public static Result CloseTransaction() { return (Result)Native.CloseTransaction(); }

    // ---- Operations ----

    /// <summary>Activates the card. See GetActivationAmount.</summary>
    /// <param name="activationType">"SIMPLE_ACTIVATION", "GIFT_CARD" or "REFER_A_FRIEND".</param>
    /// <param name="billPath">A bill whose total replaces the amount; null: none.</param>
    /// <param name="amount">In hundredths.</param>
    /// <param name="accountType">For a gift card: "GLOBAL", "LOCAL" or "DISCOUNT".</param>
    /// <param name="referCardNum">For refer-a-friend: the friend's card.</param>
    /// <returns>0, ERR_BILL_FORMAT, ERR_ACTIVATION_TYPE, ERR_ACCOUNT_TYPE, ERR_OFFLINE_SAVE (activated, the
    /// record is missing) or a code of the exchange.</returns>
    public static Result ActivationProc(string activationType, string billPath, int amount,
        string accountType, string referCardNum)
    {
        return (Result)Native.ActivationProc(
            Bytes(activationType), Bytes(billPath), amount, Bytes(accountType), Bytes(referCardNum));
    }

    /// <summary>Asks for the card's accounts and prints them. See GetBalance.</summary>
    /// <returns>0 or a code of the exchange.</returns>
    public static Result BalanceProc() { return (Result)Native.BalanceProc(); }

    /// <summary>Pays a bill with the card. Keep its RRN: the payment must still be confirmed, or
    /// cancelled.</summary>
    /// <param name="amount">0: only earn bonuses; anything else: spend some too, and the server decides how
    /// many.</param>
    /// <param name="billPath">The bill of goods; rewritten with the bonuses of each good.</param>
    /// <returns>0, ERR_BILL_FORMAT, ERR_ORG_FEE_EXCEEDS_BONUS, ERR_BILL_OPEN (PAID, the bill could not be
    /// rewritten) or a code of the exchange.</returns>
    public static Result PaymentProc(int amount, string billPath)
    {
        return (Result)Native.PaymentProc(amount, Bytes(billPath));
    }

    /// <summary>PaymentProc that needs no confirmation.</summary>
    /// <param name="amount">As for PaymentProc.</param>
    /// <param name="billPath">As for PaymentProc.</param>
    /// <returns>As PaymentProc, but for a bad bill ERR_JSON_FILE_OPEN, ERR_JSON_SYNTAX or
    /// ERR_RESPONSE_STRUCTURE.</returns>
    public static Result PaymentAndConfirmProc(int amount, string billPath)
    {
        return (Result)Native.PaymentAndConfirmProc(amount, Bytes(billPath));
    }

    /// <summary>Confirms a payment of PaymentProc. Do not print its slip.</summary>
    /// <param name="rrn">The payment's RRN.</param>
    /// <returns>0, ERR_OFFLINE_SAVE (confirmed, or without the server not kept) or a code of the
    /// exchange.</returns>
    public static Result PaymentConfirmProc(string rrn) { return (Result)Native.PaymentConfirmProc(Bytes(rrn)); }

    /// <summary>Cancels a payment of PaymentProc. After a lost answer it tells what became of the payment: 0, it
    /// had been paid and is now cancelled; BILL_NOT_FOUND, it was never paid.</summary>
    /// <param name="rrn">The payment's RRN.</param>
    /// <returns>As PaymentConfirmProc.</returns>
    public static Result PaymentCancelProc(string rrn) { return (Result)Native.PaymentCancelProc(Bytes(rrn)); }

    /// <summary>Returns goods of a payment. See GetCashBackResult.</summary>
    /// <param name="rrn">The payment's RRN.</param>
    /// <param name="returnListPath">The positions that come back; null: everything.</param>
    /// <returns>0, ERR_RETURN_LIST_FORMAT, ERR_OFFLINE_SAVE (returned, the record is missing) or a code of the
    /// exchange.</returns>
    public static Result CashBackProc(string rrn, string returnListPath)
    {
        return (Result)Native.CashBackProc(Bytes(rrn), Bytes(returnListPath));
    }

    /// <summary>Puts money on the card.</summary>
    /// <param name="amount">In hundredths.</param>
    /// <returns>0, ERR_OFFLINE_SAVE (deposited, the record is missing) or a code of the exchange.</returns>
    public static Result DepositProc(int amount) { return (Result)Native.DepositProc(amount); }

    /// <summary>Exchanges the transaction's card.</summary>
    /// <param name="token">As the customer received it.</param>
    /// <returns>0, ERR_OFFLINE_SAVE (exchanged, the record is missing) or a code of the exchange.</returns>
    public static Result ExchangeProc(string token) { return (Result)Native.ExchangeProc(Bytes(token)); }

    /// <summary>Links another card to the account of the transaction's card. It asks the server only in an
    /// offline transaction.</summary>
    /// <param name="cardNum">The card to link.</param>
    /// <returns>0, ERR_OFFLINE_SAVE or, in an offline transaction, a code of the exchange.</returns>
    public static Result LinkCardProc(string cardNum) { return (Result)Native.LinkCardProc(Bytes(cardNum)); }

    /// <summary>Writes a bill with one position for a plain amount, for a register without a list of
    /// goods.</summary>
    /// <param name="totalSum">In hundredths.</param>
    /// <param name="billPath">The path to give to PaymentProc.</param>
    /// <returns>0 or ERR_BILL_OPEN.</returns>
    public static Result CreateAmountBill(int totalSum, string billPath)
    {
        return (Result)Native.CreateAmountBill(totalSum, Bytes(billPath));
    }

    // ---- Results ----

    /// <summary>The state that the server answered: "OK", "SUCCESS", "PROCESSED", "ERROR" or
    /// "CANCELED".</summary>
    public static string getResponseState() { return Text(Native.getResponseState()); }

    /// <summary>The state code that the server answered: "OK", or the reason, such as "LOCKED_CARD".</summary>
    public static string getResponseStateCode() { return Text(Native.getResponseStateCode()); }

    /// <summary>Always the empty text.</summary>
    public static string getResponseMessage() { return Text(Native.getResponseMessage()); }

    /// <summary>The RRN of the last operation, 16 characters, with or without a transaction; null when there was
    /// none.</summary>
    public static string getRRN() { return Text(Native.getRRN()); }

    /// <summary>What the server granted for the last activation, in hundredths; ERR_NO_TRANSACTION without a
    /// transaction.</summary>
    public static int GetActivationAmount() { return Native.GetActivationAmount(); }

    /// <summary>What the customer can spend as of the last BalanceProc, in hundredths; 0 without a
    /// transaction.</summary>
    public static int GetBalance() { return Native.GetBalance(); }

    /// <summary>What the last CashBackProc gave back, in hundredths; ERR_NO_TRANSACTION without a
    /// transaction.</summary>
    public static int GetCashBackResult() { return Native.GetCashBackResult(); }

    /// <summary>The bonuses that the last paid bill earns, in hundredths.</summary>
    public static int GetEarnBonusAmount() { return Native.GetEarnBonusAmount(); }

    /// <summary>The bonuses that the last paid bill spends, in hundredths.</summary>
    public static int GetSpendBonusAmount() { return Native.GetSpendBonusAmount(); }

    /// <summary>The discount of the last paid bill, in hundredths.</summary>
    public static int GetDiscountAmount() { return Native.GetDiscountAmount(); }

    // ---- Receipts ----

    /// <summary>The head of the slip, in lines of 24 columns; null without a transaction.</summary>
    public static string getReceiptHeaderPtr() { return Text(Native.getReceiptHeaderPtr()); }

    /// <summary>The body of the slip, which grows with each operation that succeeds; null without a
    /// transaction.</summary>
    public static string getReceiptBodyPtr() { return Text(Native.getReceiptBodyPtr()); }

    /// <summary>The foot of the slip; null without a transaction.</summary>
    public static string getReceiptFooterPtr() { return Text(Native.getReceiptFooterPtr()); }

    /// <summary>The body of the slip, as getReceiptBodyPtr; null without a transaction.</summary>
    public static string getReceiptBody()
    {
        int size = Native.getReceiptBody(null);
        if (size <= 0) return null;
        byte[] body = new byte[size];
        Native.getReceiptBody(body);
        return Encoding.UTF8.GetString(body, 0, size - 1);
    }

    // ---- Offline ----

    /// <summary>Sends the records that wait in OFFLINE. When the number is what lumoOfflineCount told before,
    /// clear OFFLINE with lumoClearOffline.</summary>
    /// <returns>How many the server took; never a code.</returns>
    public static int SendOfflinePayments() { return Native.SendOfflinePayments(); }

    // ---- Reports ----

    /// <summary>Prints the operations in LOG between two times as totals. See GetReportPtr.</summary>
    /// <param name="since">UTC, as "2012-12-05T10:00:00Z"; left out itself.</param>
    /// <param name="until">The same.</param>
    /// <returns>The report's length in bytes, 0 when there is nothing to report, or ERR_REPORT_RANGE.</returns>
    public static int GenerateSummaryReport(string since, string until)
    {
        return Native.GenerateSummaryReport(Bytes(since), Bytes(until));
    }

    /// <summary>Prints the operations in LOG between two times one by one. See GetReportPtr.</summary>
    /// <param name="since">As for GenerateSummaryReport.</param>
    /// <param name="until">The same.</param>
    /// <returns>As GenerateSummaryReport.</returns>
    public static int GenerateReport(string since, string until)
    {
        return Native.GenerateReport(Bytes(since), Bytes(until));
    }

    /// <summary>The last report, in lines of 24 columns; null before the first.</summary>
    public static string GetReportPtr() { return Text(Native.GetReportPtr()); }

    // ---- Updates ----

    /// <summary>Not part of this version.</summary>
    /// <param name="package">The package.</param>
    /// <returns>-1, which has no message of its own.</returns>
    public static Result RunUpdater(string package) { return (Result)Native.RunUpdater(Bytes(package)); }

    /// <summary>Not part of this version.</summary>
    /// <returns>-1, which has no message of its own.</returns>
    public static Result CommitUpdates() { return (Result)Native.CommitUpdates(); }

    // ---- Since version 1.1.0 ----

    /// <summary>The version of the library file, such as "1.1.0".</summary>
    public static string lumoVersion() { return Text(Native.lumoVersion()); }

    /// <summary>1 when the current transaction was completed without the server and waits in OFFLINE; 0
    /// otherwise.</summary>
    public static int lumoIsOffline() { return Native.lumoIsOffline(); }

    /// <summary>How many records OFFLINE holds, or ERR_JSON_FILE_OPEN.</summary>
    public static int lumoOfflineCount() { return Native.lumoOfflineCount(); }

    /// <summary>Removes OFFLINE when it holds exactly so many records.</summary>
    /// <param name="expected">The number that SendOfflinePayments returned.</param>
    /// <returns>0, or ERR_LOG_DELETE, and OFFLINE is as it was.</returns>
    public static Result lumoClearOffline(int expected) { return (Result)Native.lumoClearOffline(expected); }

    // ---- What stands between the two sides ----

    private static string pingAddress, pingAltAddress;

    // The library makes a new text of a host at each call and never frees it: each is asked for once after a start.
    private static Result Started(int code)
    {
        pingAddress = pingAltAddress = null;
        return (Result)code;
    }

    // A text as the library reads it: UTF-8 with a zero behind it.
    private static byte[] Bytes(string text)
    {
        if (text == null) return null;
        byte[] bytes = new byte[Encoding.UTF8.GetByteCount(text) + 1];
        Encoding.UTF8.GetBytes(text, 0, text.Length, bytes, 0);
        return bytes;
    }

    // A copy of a text that belongs to the library.
    private static string Text(IntPtr text)
    {
        if (text == IntPtr.Zero) return null;
        int length = 0;
        while (Marshal.ReadByte(text, length) != 0) ++length;
        byte[] bytes = new byte[length];
        Marshal.Copy(text, bytes, 0, length);
        return Encoding.UTF8.GetString(bytes, 0, length);
    }

    private static class Native
    {
#if WindowsCE || PocketPC || Smartphone
        private const string File = "lumo.dll";
        private const CallingConvention Convention = CallingConvention.Winapi;  // the only one there is
#else
        private const string File = "lumo";
        private const CallingConvention Convention = CallingConvention.Cdecl;
#endif

        [DllImport(File, CallingConvention = Convention)] internal static extern int LUMOInit();
        [DllImport(File, CallingConvention = Convention)] internal static extern int LUMOInitExt(byte[] name);
        [DllImport(File, CallingConvention = Convention)] internal static extern int LUMOClean();
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr GetErrorMessage(int code);
        [DllImport(File, CallingConvention = Convention)] internal static extern int DllAttach(IntPtr module);
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr getTerminalId();
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr getPingAddress();
        [DllImport(File, CallingConvention = Convention)] internal static extern int getPingPort();
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr getPingAltAddress();
        [DllImport(File, CallingConvention = Convention)] internal static extern int getPingAltPort();
        [DllImport(File, CallingConvention = Convention)] internal static extern int OpenShift(byte[] shiftId);
        [DllImport(File, CallingConvention = Convention)] internal static extern int CloseShift();
        [DllImport(File, CallingConvention = Convention)] internal static extern int LoadState();
        [DllImport(File, CallingConvention = Convention)] internal static extern int InitState();
        [DllImport(File, CallingConvention = Convention)] internal static extern int getOfflineState();
        [DllImport(File, CallingConvention = Convention)] internal static extern int setOfflineState(int offline);
        [DllImport(File, CallingConvention = Convention)] internal static extern int getNeedUpdate();
        [DllImport(File, CallingConvention = Convention)] internal static extern int setNeedUpdate(int needUpdate);
        [DllImport(File, CallingConvention = Convention)]
        internal static extern int CreateTransaction(byte[] cardNum, byte[] employeeId);
        [DllImport(File, CallingConvention = Convention)] internal static extern int CloseTransaction();
        [DllImport(File, CallingConvention = Convention)]
        internal static extern int ActivationProc(byte[] activationType, byte[] billPath,
            int amount, byte[] accountType, byte[] referCardNum);
        [DllImport(File, CallingConvention = Convention)] internal static extern int BalanceProc();
        [DllImport(File, CallingConvention = Convention)]
        internal static extern int PaymentProc(int amount, byte[] billPath);
        [DllImport(File, CallingConvention = Convention)]
        internal static extern int PaymentAndConfirmProc(int amount, byte[] billPath);
        [DllImport(File, CallingConvention = Convention)] internal static extern int PaymentConfirmProc(byte[] rrn);
        [DllImport(File, CallingConvention = Convention)] internal static extern int PaymentCancelProc(byte[] rrn);
        [DllImport(File, CallingConvention = Convention)]
        internal static extern int CashBackProc(byte[] rrn, byte[] returnListPath);
        [DllImport(File, CallingConvention = Convention)] internal static extern int DepositProc(int amount);
        [DllImport(File, CallingConvention = Convention)] internal static extern int ExchangeProc(byte[] token);
        [DllImport(File, CallingConvention = Convention)] internal static extern int LinkCardProc(byte[] cardNum);
        [DllImport(File, CallingConvention = Convention)]
        internal static extern int CreateAmountBill(int totalSum, byte[] billPath);
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr getResponseState();
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr getResponseStateCode();
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr getResponseMessage();
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr getRRN();
        [DllImport(File, CallingConvention = Convention)] internal static extern int GetActivationAmount();
        [DllImport(File, CallingConvention = Convention)] internal static extern int GetBalance();
        [DllImport(File, CallingConvention = Convention)] internal static extern int GetCashBackResult();
        [DllImport(File, CallingConvention = Convention)] internal static extern int GetEarnBonusAmount();
        [DllImport(File, CallingConvention = Convention)] internal static extern int GetSpendBonusAmount();
        [DllImport(File, CallingConvention = Convention)] internal static extern int GetDiscountAmount();
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr getReceiptHeaderPtr();
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr getReceiptBodyPtr();
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr getReceiptFooterPtr();
        [DllImport(File, CallingConvention = Convention)] internal static extern int getReceiptBody(byte[] buffer);
        [DllImport(File, CallingConvention = Convention)] internal static extern int SendOfflinePayments();
        [DllImport(File, CallingConvention = Convention)]
        internal static extern int GenerateSummaryReport(byte[] since, byte[] until);
        [DllImport(File, CallingConvention = Convention)]
        internal static extern int GenerateReport(byte[] since, byte[] until);
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr GetReportPtr();
        [DllImport(File, CallingConvention = Convention)] internal static extern int RunUpdater(byte[] package);
        [DllImport(File, CallingConvention = Convention)] internal static extern int CommitUpdates();
        [DllImport(File, CallingConvention = Convention)] internal static extern IntPtr lumoVersion();
        [DllImport(File, CallingConvention = Convention)] internal static extern int lumoIsOffline();
        [DllImport(File, CallingConvention = Convention)] internal static extern int lumoOfflineCount();
        [DllImport(File, CallingConvention = Convention)] internal static extern int lumoClearOffline(int expected);
    }
}
