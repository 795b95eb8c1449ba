"""The calls of lumo.h for Python: a retail loyalty programme for a cash register.

    import lumo

    register = lumo.Library("/shop/liblumo.so.1")
    code = register.LUMOInit()
    if code != 0:
        print(register.GetErrorMessage(code))

Every call has the name and the meaning that lumo.h gives it. One thread, one call at a time. Texts are str; those that come
back are copies, so they may be kept; None stands for the null of lumo.h. Amounts are hundredths: 15000 is 150.00. A
number that does not fit into 32 bits is refused with ctypes.ArgumentError, like one that is no int. Paths are relative to
the folder of the library file.
"""

import ctypes
import enum
import os
from typing import Optional

__version__ = "1.1.0"
__all__ = ["Library", "Result"]


class Result(enum.IntEnum):
    """What a call returns: SUCCESS, or what went wrong. GetErrorMessage has the cashier's text."""

    SUCCESS = 0

    # The register's own order of calls and files.
    ERR_NO_TRANSACTION = -100  # call CreateTransaction first
    ERR_LAST_RRN = -101  # not returned
    ERR_ACTIVATION_TYPE = -102  # unknown activation type
    ERR_ACCOUNT_TYPE = -103  # unknown account type
    ERR_ORG_FEE_EXCEEDS_BONUS = -104  # orgFeeOffline of CONFIG exceeds the two bonus rates; not paid
    ERR_BILL_OPEN = -105  # a bill cannot be written; after a payment: PAID all the same
    ERR_BILL_FORMAT = -106  # the bill is missing or damaged; nothing was sent
    ERR_CONFIG_OPEN = -107  # not returned
    ERR_STATE_LOAD = -108  # STATE is no state, or cannot be made
    ERR_STATE_CREATE = -109  # STATE is missing or no JSON and cannot be made
    ERR_STATE_OPEN = -110  # STATE cannot be written
    ERR_CONFIG_LOAD = -111  # neither CONFIG.JSN nor CONFIG can be loaded
    ERR_TRANSACTION_EXISTS = -112  # call CloseTransaction first
    ERR_RETURN_LIST_FORMAT = -113  # the return list is missing or damaged; nothing was sent

    # The records of operations.
    ERR_OFFLINE_SAVE = -201  # done, but the record could not be added to LOG or OFFLINE
    ERR_LOG_DELETE = -202  # OFFLINE does not hold the expected records, or cannot be removed

    # JSON files and answers.
    ERR_JSON_DOM_INIT = -301  # not returned
    ERR_JSON_PARSER_INIT = -302  # not returned
    ERR_JSON_SYNTAX = -303  # a bill or the server's answer is no JSON document
    ERR_JSON_INTERNAL = -304  # not returned
    ERR_JSON_PRINTER_INIT = -305  # not returned
    ERR_JSON_MEMORY = -306  # not returned
    ERR_JSON_FILE_OPEN = -307  # a bill, or OFFLINE when it is counted, cannot be opened
    ERR_XML_FORMAT = -350  # not returned

    # The exchange with the server: see "Talking to the server".
    ERR_NO_RESPONSE = -401  # nothing came: THE SERVER MAY HAVE CARRIED IT OUT
    ERR_RESPONSE_STRUCTURE = -402  # what came is cut off, or no answer; it may have been carried out. Also: a bill is no bill
    ERR_RESPONSE_TYPE = -403  # the answer has an unknown name; it may have been carried out
    ERR_RESPONSE_CONTENT = -404  # the answer lacks a part; it may have been carried out
    ERR_SERVER_ERROR = -405  # the server refused: see getResponseStateCode
    ERR_SERVER_REJECTED = -406  # "HTTP Status 400": as a rule the server could not read the request
    ERR_SERVER_FAILURE = -407  # "HTTP Status 500": the server itself failed; it may have been carried out
    ERR_REQUEST_SEND = -410  # the connection broke while sending; it may have been carried out
    ERR_REQUEST_BUILD = -411  # not returned
    ERR_CONNECT = -501  # neither server can be reached; nothing was sent
    ERR_SERVER_ADDRESS = -504  # not returned: ERR_CONNECT stands for it
    ERR_SSL_CONNECT = -505  # not returned
    ERR_SSL_CONTEXT = -506  # not returned

    # Shifts and reports.
    ERR_SHIFT_ALREADY_OPEN = -601  # call CloseShift first
    ERR_SHIFT_NOT_OPEN = -602  # call OpenShift first
    ERR_SHIFT_TRANSACTION_OPEN = -603  # call CloseTransaction first
    ERR_REPORT_RANGE = -701  # the report's bounds are not in order


class Library:
    """The library file, and its calls."""

    def __init__(self, path: str):
        """Loads the library file. Its folder, a link not followed, holds all of its files."""
        self._dll = ctypes.CDLL(os.path.abspath(path))
        for name, (result, arguments) in _CALLS.items():
            call = getattr(self._dll, name)
            call.restype = result
            call.argtypes = [_Number if kind is _int else kind for kind in arguments]
        # The library makes a new text of a host at each call and never frees it: each is asked for once after a start.
        self._host: Optional[str] = None
        self._alt_host: Optional[str] = None

    # ---- Life cycle ----

    def LUMOInit(self) -> int:
        """Loads the settings and the state; call it before everything else.

        Returns 0, ERR_CONFIG_LOAD or ERR_STATE_LOAD. After a failure run no operation.
        """
        self._host = self._alt_host = None
        return self._dll.LUMOInit()

    def LUMOInitExt(self, name: Optional[str] = None) -> int:
        """LUMOInit with a trace file of your own.

        name: the trace is then TRACE_name.TXT; None: TRACE.TXT
        Returns as LUMOInit.
        """
        self._host = self._alt_host = None
        return self._dll.LUMOInitExt(_utf8(name))

    def LUMOClean(self) -> int:
        """Leaves a line in the trace. Everything is saved already, and the library stays usable.

        Returns 0.
        """
        return self._dll.LUMOClean()

    def GetErrorMessage(self, code: int) -> Optional[str]:
        """The cashier's text for a code, in Russian. 0 has none and counts as unknown.

        code: a code of LumoResult
        """
        return _text(self._dll.GetErrorMessage(code))

    def DllAttach(self, module: Optional[int]) -> int:
        """Finds the folder of the library file. The library does so itself when it is loaded.

        module: the system's handle of the library file
        Returns 1; 0 when the file's name has no folder; else the system's error number.
        """
        return self._dll.DllAttach(module)

    # ---- Settings ----

    def getTerminalId(self) -> Optional[str]:
        """The terminal's number in CONFIG; None when it has none."""
        return _text(self._dll.getTerminalId())

    def getPingAddress(self) -> Optional[str]:
        """The host of serverAddr, for a register that tests the connection itself; the empty text when the address is
        not http://host:port/path."""
        if self._host is None:
            self._host = _text(self._dll.getPingAddress())
        return self._host

    def getPingPort(self) -> int:
        """The port of serverAddr; 0 when the address is not http://host:port/path."""
        return self._dll.getPingPort()

    def getPingAltAddress(self) -> Optional[str]:
        """The host of serverAltAddr, as getPingAddress."""
        if self._alt_host is None:
            self._alt_host = _text(self._dll.getPingAltAddress())
        return self._alt_host

    def getPingAltPort(self) -> int:
        """The port of serverAltAddr, as getPingPort."""
        return self._dll.getPingAltPort()

    # ---- Shifts and state ----

    def OpenShift(self, shift_id: Optional[str] = None) -> int:
        """Opens a shift, now.

        shift_id: goes into every request; None: the time at which the previous shift was opened
        Returns 0, or ERR_SHIFT_ALREADY_OPEN, and the open shift stays as it is.
        """
        return self._dll.OpenShift(_utf8(shift_id))

    def CloseShift(self) -> int:
        """Closes the shift, now.

        Returns 0, also when no shift is open, or ERR_SHIFT_TRANSACTION_OPEN.
        """
        return self._dll.CloseShift()

    def LoadState(self) -> int:
        """Reads STATE again.

        Returns 0, ERR_STATE_LOAD or ERR_STATE_CREATE.
        """
        return self._dll.LoadState()

    def InitState(self) -> int:
        """Empties the state in memory. No register needs it.

        Returns 0.
        """
        return self._dll.InitState()

    def getOfflineState(self) -> int:
        """The offline flag: 1 after the server could not be reached, with offlineMode 1 in CONFIG; 0 again after the
        next exchange that succeeds."""
        return self._dll.getOfflineState()

    def setOfflineState(self, offline: int) -> int:
        """Sets the offline flag.

        offline: the flag
        Returns 0 or ERR_STATE_OPEN.
        """
        return self._dll.setOfflineState(offline)

    def getNeedUpdate(self) -> int:
        """1 when the server's last answer asked the terminal to update."""
        return self._dll.getNeedUpdate()

    def setNeedUpdate(self, need_update: int) -> int:
        """Sets the update flag.

        need_update: the flag
        Returns 0 or ERR_STATE_OPEN.
        """
        return self._dll.setNeedUpdate(need_update)

    # ---- The transaction ----

    def CreateTransaction(self, card_num: str, employee_id: str) -> int:
        """Starts the one current transaction and prints the head and the foot of its slip.

        card_num: the customer's card
        employee_id: the cashier
        Returns 0, ERR_SHIFT_NOT_OPEN or ERR_TRANSACTION_EXISTS.
        """
        return self._dll.CreateTransaction(_utf8(card_num), _utf8(employee_id))

    def CloseTransaction(self) -> int:
        """Ends the transaction.

        Returns 0, also when there is none.
        """
        return self._dll.CloseTransaction()

    # ---- Operations ----

    def ActivationProc(self, activation_type: str, bill_path: Optional[str], amount: int,
                       account_type: Optional[str] = None, refer_card_num: Optional[str] = None) -> int:
        """Activates the card. See GetActivationAmount.

        activation_type: "SIMPLE_ACTIVATION", "GIFT_CARD" or "REFER_A_FRIEND"
        bill_path: a bill whose total replaces the amount; None: none
        amount: in hundredths
        account_type: for a gift card: "GLOBAL", "LOCAL" or "DISCOUNT"
        refer_card_num: for refer-a-friend: the friend's card
        Returns 0, ERR_BILL_FORMAT, ERR_ACTIVATION_TYPE, ERR_ACCOUNT_TYPE, ERR_OFFLINE_SAVE (activated, the record is
            missing) or a code of the exchange.
        """
        return self._dll.ActivationProc(_utf8(activation_type), _utf8(bill_path), amount, _utf8(account_type), _utf8(refer_card_num))

    def BalanceProc(self) -> int:
        """Asks for the card's accounts and prints them. See GetBalance.

        Returns 0 or a code of the exchange.
        """
        return self._dll.BalanceProc()

    def PaymentProc(self, amount: int, bill_path: str) -> int:
        """Pays a bill with the card. Keep its RRN: the payment must still be confirmed, or cancelled.

        amount: 0: only earn bonuses; anything else: spend some too, and the server decides how many
        bill_path: the bill of goods; rewritten with the bonuses of each good
        Returns 0, ERR_BILL_FORMAT, ERR_ORG_FEE_EXCEEDS_BONUS, ERR_BILL_OPEN (PAID, the bill could not be rewritten)
            or a code of the exchange.
        """
        return self._dll.PaymentProc(amount, _utf8(bill_path))

    def PaymentAndConfirmProc(self, amount: int, bill_path: str) -> int:
        """PaymentProc that needs no confirmation.

        amount: as for PaymentProc
        bill_path: as for PaymentProc
        Returns as PaymentProc, but for a bad bill ERR_JSON_FILE_OPEN, ERR_JSON_SYNTAX or ERR_RESPONSE_STRUCTURE.
        """
        return self._dll.PaymentAndConfirmProc(amount, _utf8(bill_path))

    def PaymentConfirmProc(self, rrn: str) -> int:
        """Confirms a payment of PaymentProc. Do not print its slip.

        rrn: the payment's RRN
        Returns 0, ERR_OFFLINE_SAVE (confirmed, or without the server not kept) or a code of the exchange.
        """
        return self._dll.PaymentConfirmProc(_utf8(rrn))

    def PaymentCancelProc(self, rrn: str) -> int:
        """Cancels a payment of PaymentProc. After a lost answer it tells what became of the payment: 0, it had been
        paid and is now cancelled; BILL_NOT_FOUND, it was never paid.

        rrn: the payment's RRN
        Returns as PaymentConfirmProc.
        """
        return self._dll.PaymentCancelProc(_utf8(rrn))

    def CashBackProc(self, rrn: str, return_list_path: Optional[str] = None) -> int:
        """Returns goods of a payment. See GetCashBackResult.

        rrn: the payment's RRN
        return_list_path: the positions that come back; None: everything
        Returns 0, ERR_RETURN_LIST_FORMAT, ERR_OFFLINE_SAVE (returned, the record is missing) or a code of the
            exchange.
        """
        return self._dll.CashBackProc(_utf8(rrn), _utf8(return_list_path))

    def DepositProc(self, amount: int) -> int:
        """Puts money on the card.

        amount: in hundredths
        Returns 0, ERR_OFFLINE_SAVE (deposited, the record is missing) or a code of the exchange.
        """
        return self._dll.DepositProc(amount)

    def ExchangeProc(self, token: str) -> int:
        """Exchanges the transaction's card.

        token: as the customer received it
        Returns 0, ERR_OFFLINE_SAVE (exchanged, the record is missing) or a code of the exchange.
        """
        return self._dll.ExchangeProc(_utf8(token))

    def LinkCardProc(self, card_num: str) -> int:
        """Links another card to the account of the transaction's card. It asks the server only in an offline
        transaction.

        card_num: the card to link
        Returns 0, ERR_OFFLINE_SAVE or, in an offline transaction, a code of the exchange.
        """
        return self._dll.LinkCardProc(_utf8(card_num))

    def CreateAmountBill(self, total_sum: int, bill_path: str) -> int:
        """Writes a bill with one position for a plain amount, for a register without a list of goods.

        total_sum: in hundredths
        bill_path: the path to give to PaymentProc
        Returns 0 or ERR_BILL_OPEN.
        """
        return self._dll.CreateAmountBill(total_sum, _utf8(bill_path))

    # ---- Results ----

    def getResponseState(self) -> Optional[str]:
        """The state that the server answered: "OK", "SUCCESS", "PROCESSED", "ERROR" or "CANCELED"."""
        return _text(self._dll.getResponseState())

    def getResponseStateCode(self) -> Optional[str]:
        """The state code that the server answered: "OK", or the reason, such as "LOCKED_CARD"."""
        return _text(self._dll.getResponseStateCode())

    def getResponseMessage(self) -> Optional[str]:
        """Always the empty text."""
        return _text(self._dll.getResponseMessage())

    def getRRN(self) -> Optional[str]:
        """The RRN of the last operation, 16 characters, with or without a transaction; None when there was none."""
        return _text(self._dll.getRRN())

    def GetActivationAmount(self) -> int:
        """What the server granted for the last activation, in hundredths; ERR_NO_TRANSACTION without a transaction."""
        return self._dll.GetActivationAmount()

    def GetBalance(self) -> int:
        """What the customer can spend as of the last BalanceProc, in hundredths; 0 without a transaction."""
        return self._dll.GetBalance()

    def GetCashBackResult(self) -> int:
        """What the last CashBackProc gave back, in hundredths; ERR_NO_TRANSACTION without a transaction."""
        return self._dll.GetCashBackResult()

    def GetEarnBonusAmount(self) -> int:
        """The bonuses that the last paid bill earns, in hundredths."""
        return self._dll.GetEarnBonusAmount()

    def GetSpendBonusAmount(self) -> int:
        """The bonuses that the last paid bill spends, in hundredths."""
        return self._dll.GetSpendBonusAmount()

    def GetDiscountAmount(self) -> int:
        """The discount of the last paid bill, in hundredths."""
        return self._dll.GetDiscountAmount()

    # ---- Receipts ----

    def getReceiptHeaderPtr(self) -> Optional[str]:
        """The head of the slip, in lines of 24 columns; None without a transaction."""
        return _text(self._dll.getReceiptHeaderPtr())

    def getReceiptBodyPtr(self) -> Optional[str]:
        """The body of the slip, which grows with each operation that succeeds; None without a transaction."""
        return _text(self._dll.getReceiptBodyPtr())

    def getReceiptFooterPtr(self) -> Optional[str]:
        """The foot of the slip; None without a transaction."""
        return _text(self._dll.getReceiptFooterPtr())

    def getReceiptBody(self) -> Optional[str]:
        """The body of the slip, as getReceiptBodyPtr; None without a transaction."""
        size = self._dll.getReceiptBody(None)
        if size <= 0:
            return None
        body = ctypes.create_string_buffer(size)
        self._dll.getReceiptBody(body)
        return _text(body.value)

    # ---- Offline ----

    def SendOfflinePayments(self) -> int:
        """Sends the records that wait in OFFLINE. When the number is what lumoOfflineCount told before, clear OFFLINE
        with lumoClearOffline.

        Returns how many the server took; never a code.
        """
        return self._dll.SendOfflinePayments()

    # ---- Reports ----

    def GenerateSummaryReport(self, since: str, until: str) -> int:
        """Prints the operations in LOG between two times as totals. See GetReportPtr.

        since: UTC, as "2012-12-05T10:00:00Z"; left out itself
        until: the same
        Returns the report's length in bytes, 0 when there is nothing to report, or ERR_REPORT_RANGE.
        """
        return self._dll.GenerateSummaryReport(_utf8(since), _utf8(until))

    def GenerateReport(self, since: str, until: str) -> int:
        """Prints the operations in LOG between two times one by one. See GetReportPtr.

        since: as for GenerateSummaryReport
        until: the same
        Returns as GenerateSummaryReport.
        """
        return self._dll.GenerateReport(_utf8(since), _utf8(until))

    def GetReportPtr(self) -> Optional[str]:
        """The last report, in lines of 24 columns; None before the first."""
        return _text(self._dll.GetReportPtr())

    # ---- Updates ----

    def RunUpdater(self, package: str) -> int:
        """Not part of this version.

        package: the package
        Returns -1, which has no message of its own.
        """
        return self._dll.RunUpdater(_utf8(package))

    def CommitUpdates(self) -> int:
        """Not part of this version.

        Returns -1, which has no message of its own.
        """
        return self._dll.CommitUpdates()

    # ---- Since version 1.1.0 ----

    def lumoVersion(self) -> Optional[str]:
        """The version of the library file, such as "1.1.0"."""
        return _text(self._dll.lumoVersion())

    def lumoIsOffline(self) -> int:
        """1 when the current transaction was completed without the server and waits in OFFLINE; 0 otherwise."""
        return self._dll.lumoIsOffline()

    def lumoOfflineCount(self) -> int:
        """How many records OFFLINE holds, or ERR_JSON_FILE_OPEN."""
        return self._dll.lumoOfflineCount()

    def lumoClearOffline(self, expected: int) -> int:
        """Removes OFFLINE when it holds exactly so many records.

        expected: the number that SendOfflinePayments returned
        Returns 0, or ERR_LOG_DELETE, and OFFLINE is as it was.
        """
        return self._dll.lumoClearOffline(expected)


class _Number(ctypes.c_int):
    """A number as an argument. ctypes would cut one that is too long, and pay another amount."""

    @classmethod
    def from_param(cls, value):
        if isinstance(value, int) and not -2**31 <= value < 2**31:
            raise OverflowError(f"{value} does not fit into 32 bits")
        return ctypes.c_int.from_param(value)


_int = ctypes.c_int
_text_p = ctypes.c_char_p

# What each call returns and takes, as lumo.h declares it.
_CALLS = {
    "LUMOInit": (_int, []),
    "LUMOInitExt": (_int, [_text_p]),
    "LUMOClean": (_int, []),
    "GetErrorMessage": (_text_p, [_int]),
    "DllAttach": (_int, [ctypes.c_void_p]),
    "getTerminalId": (_text_p, []),
    "getPingAddress": (_text_p, []),
    "getPingPort": (_int, []),
    "getPingAltAddress": (_text_p, []),
    "getPingAltPort": (_int, []),
    "OpenShift": (_int, [_text_p]),
    "CloseShift": (_int, []),
    "LoadState": (_int, []),
    "InitState": (_int, []),
    "getOfflineState": (_int, []),
    "setOfflineState": (_int, [_int]),
    "getNeedUpdate": (_int, []),
    "setNeedUpdate": (_int, [_int]),
    "CreateTransaction": (_int, [_text_p, _text_p]),
    "CloseTransaction": (_int, []),
    "ActivationProc": (_int, [_text_p, _text_p, _int, _text_p, _text_p]),
    "BalanceProc": (_int, []),
    "PaymentProc": (_int, [_int, _text_p]),
    "PaymentAndConfirmProc": (_int, [_int, _text_p]),
    "PaymentConfirmProc": (_int, [_text_p]),
    "PaymentCancelProc": (_int, [_text_p]),
    "CashBackProc": (_int, [_text_p, _text_p]),
    "DepositProc": (_int, [_int]),
    "ExchangeProc": (_int, [_text_p]),
    "LinkCardProc": (_int, [_text_p]),
    "CreateAmountBill": (_int, [_int, _text_p]),
    "getResponseState": (_text_p, []),
    "getResponseStateCode": (_text_p, []),
    "getResponseMessage": (_text_p, []),
    "getRRN": (_text_p, []),
    "GetActivationAmount": (_int, []),
    "GetBalance": (_int, []),
    "GetCashBackResult": (_int, []),
    "GetEarnBonusAmount": (_int, []),
    "GetSpendBonusAmount": (_int, []),
    "GetDiscountAmount": (_int, []),
    "getReceiptHeaderPtr": (_text_p, []),
    "getReceiptBodyPtr": (_text_p, []),
    "getReceiptFooterPtr": (_text_p, []),
    "getReceiptBody": (_int, [_text_p]),
    "SendOfflinePayments": (_int, []),
    "GenerateSummaryReport": (_int, [_text_p, _text_p]),
    "GenerateReport": (_int, [_text_p, _text_p]),
    "GetReportPtr": (_text_p, []),
    "RunUpdater": (_int, [_text_p]),
    "CommitUpdates": (_int, []),
    "lumoVersion": (_text_p, []),
    "lumoIsOffline": (_int, []),
    "lumoOfflineCount": (_int, []),
    "lumoClearOffline": (_int, [_int]),
}


def _utf8(text: Optional[str]) -> Optional[bytes]:
    return None if text is None else text.encode("utf-8")


def _text(utf8: Optional[bytes]) -> Optional[str]:
    return None if utf8 is None else utf8.decode("utf-8", "replace")
