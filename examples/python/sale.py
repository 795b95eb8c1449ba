"""A cash register with the loyalty programme:   sale.py LIBRARY   with the library file, in the terminal's folder.

It reads what the cashier does, a line each, and ends each answer with the line "ready":
    CARD          sells what is on the counter to the customer with this card
    CARD spend    the same; the customer wants to pay with bonuses
    send          sends what waits for the server
The end of the input closes the shift.
"""
import json
import os
import sys
import time

import lumo
from lumo import Result


def now():
    return time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime())


def say(what, outcome, code):
    refused = code == Result.ERR_SERVER_ERROR
    print(f"{what} {outcome}: {code} {register.getResponseStateCode() if refused else register.GetErrorMessage(code)}")


def write_bill(path):
    """The goods on the counter."""
    goods = [{"title": "Хлеб", "productCode": "001", "positionCost": 5000, "orderNum": 1, "cnt": 1},
             {"title": "Чай", "productCode": "002", "positionCost": 10000, "orderNum": 2, "cnt": 2}]
    bill = {"totalSum": 15000, "orderLen": 2, "billNum": "1", "billDate": now(), "partnerFee": 0, "goodList": {"good": goods}}
    try:
        with open(path, "w", encoding="utf-8") as file:
            json.dump(bill, file, ensure_ascii=False)
    except OSError:
        return Result.ERR_BILL_OPEN
    return 0


def is_lost(code):
    """The server may have carried it out: only its answer is missing."""
    return Result.ERR_REQUEST_SEND <= code <= Result.ERR_JSON_SYNTAX and code != Result.ERR_SERVER_ERROR


def sell(spend):
    """A sale in the current transaction. Goods can always be sold without the card."""
    before = register.getRRN()
    if register.BalanceProc() == 0:
        print(f"on the card: {register.GetBalance() / 100:.2f}")
    if register.getRRN() in (None, before):  # the server would refuse the sale for ever
        print("no number: the server was never met, or the clock is behind; sell without the card")
        return
    code = register.PaymentProc(spend, "BILL.JSN")  # how many bonuses pay, the server decides
    rrn = register.getRRN()
    if code in (0, Result.ERR_BILL_OPEN):  # paid; at worst the bill could not be rewritten
        print(register.getReceiptHeaderPtr() + register.getReceiptBodyPtr() + register.getReceiptFooterPtr(), end="")
        code = register.PaymentConfirmProc(rrn)  # until now the bonuses were only reserved
        if is_lost(code):
            code = register.PaymentConfirmProc(rrn)
        if code == 0 or register.getResponseStateCode() == "BILL_INCORRECT_STATE":  # it had arrived
            print(rrn, "waits for the server" if register.lumoIsOffline() else "is confirmed")
        else:
            say(rrn, "is paid, confirm it later", code)
    elif is_lost(code):  # paid or not? Undone, it can be sold again
        code = register.PaymentCancelProc(rrn)
        if code == 0 or register.getResponseStateCode() == "BILL_NOT_FOUND":
            print(rrn, "is cancelled: sell again" if code == 0 else "was never paid: sell again")
        else:
            say(rrn, "may be paid, cancel it later", code)
    else:
        say(rrn, "is not paid", code)


library, = sys.argv[1:]
sys.stdout.reconfigure(encoding="utf-8", line_buffering=True)
register = lumo.Library(library)
started = register.LUMOInit() or register.OpenShift("1")
if started not in (0, Result.ERR_SHIFT_ALREADY_OPEN):
    sys.exit(f"the register cannot start: {started} {register.GetErrorMessage(started)}")
opened = now()[:16]  # the report's bounds are texts: before any second of this minute
print("ready")
for words in map(str.split, sys.stdin):
    if words == ["send"]:
        waiting, sent = register.lumoOfflineCount(), register.SendOfflinePayments()
        print(f"sent {sent} of {waiting}")
        if sent == waiting:  # else OFFLINE holds those that failed
            register.lumoClearOffline(sent)
    elif words:
        code = write_bill(os.path.join(os.path.dirname(library), "BILL.JSN")) or register.CreateTransaction(words[0], "7")
        if code == 0:
            sell(words[1:] == ["spend"])
            register.CloseTransaction()
        else:
            say(words[0], "is not sold to", code)
    print("ready")
if register.GenerateSummaryReport(opened, "9") > 0:  # "9": behind all dates
    print(register.GetReportPtr(), end="")
register.CloseShift()
register.LUMOClean()
