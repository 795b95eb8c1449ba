// lumo.hpp: the calls of lumo.h for C++17. A header only; link the library as for C.
//
// Every call has the name and the meaning that lumo.h gives it, in the namespace lumo. What differs:
//
//   Results    A call that returns a code of LumoResult returns a Result here, and the compiler does not
//              let you ignore it.
//              A call that returns a number, and a negative code when something is wrong, returns an int.
//              Result(number).message() has the text of such a code.
//   Texts in   A Text is made of a std::string, of a literal, or of nullptr where lumo.h gives null a
//              meaning. Texts are UTF-8.
//   Texts out  A std::string of your own, whatever lumo.h says of the text's life. Null becomes
//              the empty text.
//   Scopes     ShiftScope and TransactionScope close what they have opened.
//
// Nothing here throws but std::string, when memory runs out; it compiles without exceptions and RTTI.
#ifndef LUMO_HPP
#define LUMO_HPP

#include <string>
#include <tuple>

#include "lumo.h"

namespace lumo {

/// A text for the library, valid while the call lasts that it is given to.
class Text {
 public:
  Text(const char *text) noexcept : text_(text) {}
  Text(const std::string &text) noexcept : text_(text.c_str()) {}
  const char *get() const noexcept { return text_; }

 private:
  const char *text_;
};

/// What came of a call: 0 or a code of LumoResult.
class [[nodiscard]] Result {
 public:
  constexpr Result(int code) noexcept : code_(code) {}
  constexpr bool ok() const noexcept { return code_ == 0; }
  constexpr int code() const noexcept { return code_; }
  /// The cashier's text, in Russian; empty for 0.
  std::string message() const { return ok() ? std::string() : std::string(::GetErrorMessage(code_)); }

  friend constexpr bool operator==(Result a, Result b) noexcept { return a.code_ == b.code_; }
  friend constexpr bool operator!=(Result a, Result b) noexcept { return a.code_ != b.code_; }

 private:
  int code_;
};

namespace detail {

inline std::string Copy(const char *text) {
  return text != nullptr ? std::string(text) : std::string();
}

// The host of a server. The library makes a new text at each call and never frees it, so it is asked once
// after each start.
struct Host {
  std::string text;
  bool is_known = false;

  const std::string &Get(char *(LUMO_CALL *call)()) {
    if (!is_known) text = Copy(call());
    is_known = true;
    return text;
  }
};
inline Host host;
inline Host alt_host;

inline Result Started(int code) {
  host.is_known = alt_host.is_known = false;
  return code;
}

}  // namespace detail

// ---- Life cycle ----

/// Loads the settings and the state; call it before everything else.
/// @return 0, ERR_CONFIG_LOAD or ERR_STATE_LOAD. After a failure run no operation.
inline Result LUMOInit() {
  return detail::Started(::LUMOInit());
}

/// LUMOInit with a trace file of your own.
/// @param name  the trace is then TRACE_name.TXT; nullptr: TRACE.TXT
/// @return as LUMOInit.
inline Result LUMOInitExt(Text name) {
  return detail::Started(::LUMOInitExt(name.get()));
}

/// Leaves a line in the trace. Everything is saved already, and the library stays usable.
/// @return 0.
inline Result LUMOClean() {
  return ::LUMOClean();
}

/// The cashier's text for a code, in Russian. 0 has none and counts as unknown.
/// @param code  a code of LumoResult
inline std::string GetErrorMessage(int code) {
  return detail::Copy(::GetErrorMessage(code));
}

/// Finds the folder of the library file. The library does so itself when it is loaded.
/// @param module  the system's handle of the library file
/// @return 1; 0 when the file's name has no folder; else the system's error number.
[[nodiscard]] inline int DllAttach(void *module) {
  return ::DllAttach(module);
}

// ---- Settings ----

/// The terminal's number in CONFIG; empty when it has none.
inline std::string getTerminalId() {
  return detail::Copy(::getTerminalId());
}

/// The host of serverAddr, for a register that tests the connection itself; the empty text when the address
/// is not http://host:port/path.
inline std::string getPingAddress() {
  return detail::host.Get(::getPingAddress);
}

/// The port of serverAddr; 0 when the address is not http://host:port/path.
[[nodiscard]] inline int getPingPort() {
  return ::getPingPort();
}

/// The host of serverAltAddr, as getPingAddress.
inline std::string getPingAltAddress() {
  return detail::alt_host.Get(::getPingAltAddress);
}

/// The port of serverAltAddr, as getPingPort.
[[nodiscard]] inline int getPingAltPort() {
  return ::getPingAltPort();
}

// ---- Shifts and state ----

/// Opens a shift, now.
/// @param shift_id  goes into every request; nullptr: the time at which the previous shift was opened
/// @return 0, or ERR_SHIFT_ALREADY_OPEN, and the open shift stays as it is.
inline Result OpenShift(Text shift_id) {
  return ::OpenShift(shift_id.get());
}

/// Closes the shift, now.
/// @return 0, also when no shift is open, or ERR_SHIFT_TRANSACTION_OPEN.
inline Result CloseShift() {
  return ::CloseShift();
}

/// Reads STATE again.
/// @return 0, ERR_STATE_LOAD or ERR_STATE_CREATE.
inline Result LoadState() {
  return ::LoadState();
}

/// Empties the state in memory. No register needs it.
/// @return 0.
inline Result InitState() {
  return ::InitState();
}

/// The offline flag: 1 after the server could not be reached, with offlineMode 1 in CONFIG; 0 again after
/// the next exchange that succeeds.
[[nodiscard]] inline int getOfflineState() {
  return ::getOfflineState();
}

/// Sets the offline flag.
/// @param offline  the flag
/// @return 0 or ERR_STATE_OPEN.
inline Result setOfflineState(int offline) {
  return ::setOfflineState(offline);
}

/// 1 when the server's last answer asked the terminal to update.
[[nodiscard]] inline int getNeedUpdate() {
  return ::getNeedUpdate();
}

/// Sets the update flag.
/// @param need_update  the flag
/// @return 0 or ERR_STATE_OPEN.
inline Result setNeedUpdate(int need_update) {
  return ::setNeedUpdate(need_update);
}

// ---- The transaction ----

/// Starts the one current transaction and prints the head and the foot of its slip.
/// @param card_num  the customer's card
/// @param employee_id  the cashier
/// @return 0, ERR_SHIFT_NOT_OPEN or ERR_TRANSACTION_EXISTS.
inline Result CreateTransaction(Text card_num, Text employee_id) {
  return ::CreateTransaction(card_num.get(), employee_id.get());
}

/// Ends the transaction.
/// @return 0, also when there is none.
inline Result CloseTransaction() {
  return ::CloseTransaction();
}

// ---- Operations ----

/// Activates the card. See GetActivationAmount.
/// @param activation_type  "SIMPLE_ACTIVATION", "GIFT_CARD" or "REFER_A_FRIEND"
/// @param bill_path  a bill whose total replaces the amount; nullptr: none
/// @param amount  in hundredths
/// @param account_type  for a gift card: "GLOBAL", "LOCAL" or "DISCOUNT"
/// @param refer_card_num  for refer-a-friend: the friend's card
/// @return 0, ERR_BILL_FORMAT, ERR_ACTIVATION_TYPE, ERR_ACCOUNT_TYPE, ERR_OFFLINE_SAVE (activated, the
/// record is missing) or a code of the exchange.
inline Result ActivationProc(Text activation_type, Text bill_path, int amount, Text account_type,
                             Text refer_card_num) {
  return ::ActivationProc(activation_type.get(), bill_path.get(), amount, account_type.get(),
                          refer_card_num.get());
}

/// Asks for the card's accounts and prints them. See GetBalance.
/// @return 0 or a code of the exchange.
inline Result BalanceProc() {
  return ::BalanceProc();
}

/// Pays a bill with the card. Keep its RRN: the payment must still be confirmed, or cancelled.
/// @param amount  0: only earn bonuses; anything else: spend some too, and the server decides how many
/// @param bill_path  the bill of goods; rewritten with the bonuses of each good
/// @return 0, ERR_BILL_FORMAT, ERR_ORG_FEE_EXCEEDS_BONUS, ERR_BILL_OPEN (PAID, the bill could not be
/// rewritten) or a code of the exchange.
inline Result PaymentProc(int amount, Text bill_path) {
  return ::PaymentProc(amount, bill_path.get());
}

/// PaymentProc that needs no confirmation.
/// @param amount  as for PaymentProc
/// @param bill_path  as for PaymentProc
/// @return as PaymentProc, but for a bad bill ERR_JSON_FILE_OPEN, ERR_JSON_SYNTAX or ERR_RESPONSE_STRUCTURE.
inline Result PaymentAndConfirmProc(int amount, Text bill_path) {
  return ::PaymentAndConfirmProc(amount, bill_path.get());
}

/// Confirms a payment of PaymentProc. Do not print its slip.
/// @param rrn  the payment's RRN
/// @return 0, ERR_OFFLINE_SAVE (confirmed, or without the server not kept) or a code of the exchange.
inline Result PaymentConfirmProc(Text rrn) {
  return ::PaymentConfirmProc(rrn.get());
}

/// Cancels a payment of PaymentProc. After a lost answer it tells what became of the payment: 0, it had
/// been paid and is now cancelled; BILL_NOT_FOUND, it was never paid.
/// @param rrn  the payment's RRN
/// @return as PaymentConfirmProc.
inline Result PaymentCancelProc(Text rrn) {
  return ::PaymentCancelProc(rrn.get());
}

/// Returns goods of a payment. See GetCashBackResult.
/// @param rrn  the payment's RRN
/// @param return_list_path  the positions that come back; nullptr: everything
/// @return 0, ERR_RETURN_LIST_FORMAT, ERR_OFFLINE_SAVE (returned, no record kept) or a code of the exchange.
inline Result CashBackProc(Text rrn, Text return_list_path) {
  return ::CashBackProc(rrn.get(), return_list_path.get());
}

/// Puts money on the card.
/// @param amount  in hundredths
/// @return 0, ERR_OFFLINE_SAVE (deposited, the record is missing) or a code of the exchange.
inline Result DepositProc(int amount) {
  return ::DepositProc(amount);
}

/// Exchanges the transaction's card.
/// @param token  as the customer received it
/// @return 0, ERR_OFFLINE_SAVE (exchanged, the record is missing) or a code of the exchange.
inline Result ExchangeProc(Text token) {
  return ::ExchangeProc(token.get());
}

/// Links another card to the account of the transaction's card. It asks the server only in an offline
/// transaction.
/// @param card_num  the card to link
/// @return 0, ERR_OFFLINE_SAVE or, in an offline transaction, a code of the exchange.
inline Result LinkCardProc(Text card_num) {
  return ::LinkCardProc(card_num.get());
}

/// Writes a bill with one position for a plain amount, for a register without a list of goods.
/// @param total_sum  in hundredths
/// @param bill_path  the path to give to PaymentProc
/// @return 0 or ERR_BILL_OPEN.
inline Result CreateAmountBill(int total_sum, Text bill_path) {
  return ::CreateAmountBill(total_sum, bill_path.get());
}

// ---- Results ----

/// The state that the server answered: "OK", "SUCCESS", "PROCESSED", "ERROR" or "CANCELED".
inline std::string getResponseState() {
  return detail::Copy(::getResponseState());
}

/// The state code that the server answered: "OK", or the reason, such as "LOCKED_CARD".
inline std::string getResponseStateCode() {
  return detail::Copy(::getResponseStateCode());
}

/// Always the empty text.
inline std::string getResponseMessage() {
  return detail::Copy(::getResponseMessage());
}

/// The RRN of the last operation, 16 characters, with or without a transaction; empty when there was none.
inline std::string getRRN() {
  return detail::Copy(::getRRN());
}

/// What the server granted for the last activation, in hundredths. Without a transaction ERR_NO_TRANSACTION.
[[nodiscard]] inline int GetActivationAmount() {
  return ::GetActivationAmount();
}

/// What the customer can spend as of the last BalanceProc, in hundredths; 0 without a transaction.
[[nodiscard]] inline int GetBalance() {
  return ::GetBalance();
}

/// What the last CashBackProc gave back, in hundredths; ERR_NO_TRANSACTION without a transaction.
[[nodiscard]] inline int GetCashBackResult() {
  return ::GetCashBackResult();
}

/// The bonuses that the last paid bill earns, in hundredths.
[[nodiscard]] inline int GetEarnBonusAmount() {
  return ::GetEarnBonusAmount();
}

/// The bonuses that the last paid bill spends, in hundredths.
[[nodiscard]] inline int GetSpendBonusAmount() {
  return ::GetSpendBonusAmount();
}

/// The discount of the last paid bill, in hundredths.
[[nodiscard]] inline int GetDiscountAmount() {
  return ::GetDiscountAmount();
}

// ---- Receipts ----

/// The head of the slip, in lines of 24 columns; empty without a transaction.
inline std::string getReceiptHeaderPtr() {
  return detail::Copy(::getReceiptHeaderPtr());
}

/// The body of the slip, which grows with each operation that succeeds; empty without a transaction.
inline std::string getReceiptBodyPtr() {
  return detail::Copy(::getReceiptBodyPtr());
}

/// The foot of the slip; empty without a transaction.
inline std::string getReceiptFooterPtr() {
  return detail::Copy(::getReceiptFooterPtr());
}

/// The body of the slip, as getReceiptBodyPtr; empty without a transaction.
inline std::string getReceiptBody() {
  const int size = ::getReceiptBody(nullptr);
  if (size <= 0) return std::string();
  std::string body(static_cast<std::string::size_type>(size), '\0');
  ::getReceiptBody(&body[0]);
  body.pop_back();  // the terminating zero
  return body;
}

// ---- Offline ----

/// Sends the records that wait in OFFLINE. When the number is what lumoOfflineCount told before, clear
/// OFFLINE with lumoClearOffline.
/// @return how many the server took; never a code.
[[nodiscard]] inline int SendOfflinePayments() {
  return ::SendOfflinePayments();
}

// ---- Reports ----

/// Prints the operations in LOG between two times as totals. See GetReportPtr.
/// @param from  UTC, as "2012-12-05T10:00:00Z"; left out itself
/// @param to  the same
/// @return the report's length in bytes, 0 when there is nothing to report, or ERR_REPORT_RANGE.
[[nodiscard]] inline int GenerateSummaryReport(Text from, Text to) {
  return ::GenerateSummaryReport(from.get(), to.get());
}

/// Prints the operations in LOG between two times one by one. See GetReportPtr.
/// @param from  as for GenerateSummaryReport
/// @param to  the same
/// @return as GenerateSummaryReport.
[[nodiscard]] inline int GenerateReport(Text from, Text to) {
  return ::GenerateReport(from.get(), to.get());
}

/// The last report, in lines of 24 columns; empty before the first.
inline std::string GetReportPtr() {
  return detail::Copy(::GetReportPtr());
}

// ---- Updates ----

/// Not part of this version.
/// @param package  the package
/// @return -1, which has no message of its own.
inline Result RunUpdater(Text package) {
  return ::RunUpdater(package.get());
}

/// Not part of this version.
/// @return -1, which has no message of its own.
inline Result CommitUpdates() {
  return ::CommitUpdates();
}

// ---- Since version 1.1.0 ----

/// The version of the library file, such as "1.1.0".
inline std::string lumoVersion() {
  return detail::Copy(::lumoVersion());
}

/// 1 when the current transaction was completed without the server and waits in OFFLINE; 0 otherwise.
[[nodiscard]] inline int lumoIsOffline() {
  return ::lumoIsOffline();
}

/// How many records OFFLINE holds, or ERR_JSON_FILE_OPEN.
[[nodiscard]] inline int lumoOfflineCount() {
  return ::lumoOfflineCount();
}

/// Removes OFFLINE when it holds exactly so many records.
/// @param expected  the number that SendOfflinePayments returned
/// @return 0, or ERR_LOG_DELETE, and OFFLINE is as it was.
inline Result lumoClearOffline(int expected) {
  return ::lumoClearOffline(expected);
}

// ---- Scopes ----

/// A shift that is closed with its scope.
class ShiftScope {
 public:
  ShiftScope() = default;
  ~ShiftScope() { std::ignore = Close(); }
  ShiftScope(const ShiftScope &) = delete;
  ShiftScope &operator=(const ShiftScope &) = delete;

  /// OpenShift. After ERR_SHIFT_ALREADY_OPEN, as after a restart, that shift goes on. This scope closes it.
  Result Open(Text shift_id) {
    const Result result = OpenShift(shift_id);
    if (result.ok() || result == ERR_SHIFT_ALREADY_OPEN) is_open_ = true;
    return result;
  }
  /// CloseShift, before the scope ends; 0 when there is nothing to close.
  Result Close() {
    if (!is_open_) return 0;
    const Result result = CloseShift();
    if (result.ok()) is_open_ = false;
    return result;
  }
  /// Leaves the shift open when the scope ends.
  void Keep() noexcept { is_open_ = false; }

 private:
  bool is_open_ = false;
};

/// A transaction that is closed with its scope, if this scope created it.
class TransactionScope {
 public:
  TransactionScope() = default;
  ~TransactionScope() { Close(); }
  TransactionScope(const TransactionScope &) = delete;
  TransactionScope &operator=(const TransactionScope &) = delete;

  /// CreateTransaction. After ERR_TRANSACTION_EXISTS the transaction is not this scope's and goes on.
  Result Create(Text card_num, Text employee_id) {
    const Result result = CreateTransaction(card_num, employee_id);
    if (result.ok()) is_open_ = true;
    return result;
  }
  /// CloseTransaction, before the scope ends.
  void Close() {
    if (is_open_) std::ignore = CloseTransaction();
    is_open_ = false;
  }

 private:
  bool is_open_ = false;
};

}  // namespace lumo

#endif
