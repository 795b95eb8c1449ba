"""A cash register:   sale.py LIBRARY   with the library file, in the terminal's folder. What is on the counter is sold by a
line "1000000001", a customer's card, or "1000000001 spend", when bonuses shall pay too. A line "send" sends what waits for
the server, and the end of the input closes the shift.
"""
import json
import os
import sys
import time

import lumo
from lumo import Result


def now():
    return time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime())


def write_bill(path):
    goods = [{"title": "Хлеб", "productCode": "001", "positionCost": 5000, "orderNum": 1, "cnt": 1},
             {"title": "Чай", "productCode": "002", "positionCost": 10000, "orderNum": 2, "cnt": 2}]
    bill = {"totalSum": 15000, "orderLen": 2, "billNum": "1", "billDate": now(), "partnerFee": 0, "goodList": {"good": goods}}
    try:
        with open(path, "w", encoding="utf-8") as file:
            json.dump(bill, file, ensure_ascii=False)
    except OSError:
        return Result.ERR_BILL_OPEN
    return Result.SUCCESS


def say(what, outcome, code):
    why = register.getResponseStateCode() if code == Result.ERR_SERVER_ERROR else register.GetErrorMessage(code)
    print(f"{what} {outcome}: {code} {why}" if code else f"{what} {outcome}")


def sell(wants_to_spend):
    """A sale in the current transaction. Goods can always be sold without the card."""
    before = register.getRRN()
    if register.BalanceProc() == 0:
        print(f"on the card: {register.GetBalance() / 100:.2f}")
    if register.getRRN() in (None, before):  # the server would refuse the sale for ever
        print("no number: the server was never met, or the clock is behind; sell without the card")
        return
    code = register.PaymentProc(wants_to_spend, "BILL.JSN")  # how many bonuses pay, the server decides
    rrn = register.getRRN()
    refused = code == Result.ERR_SERVER_ERROR and register.getResponseState() == "ERROR"
    outcome = "is not paid"
    if code in (0, Result.ERR_BILL_OPEN):  # paid; at worst the bill could not be rewritten
        print(register.getReceiptHeaderPtr() + register.getReceiptBodyPtr() + register.getReceiptFooterPtr(), end="")
        code = register.PaymentConfirmProc(rrn)  # until now the bonuses were only reserved
        if code != 0:
            code = register.PaymentConfirmProc(rrn)
        if register.getResponseStateCode() == "BILL_INCORRECT_STATE":  # the first had arrived
            code = 0
        outcome = "waits for the server" if register.lumoIsOffline() else "is confirmed"
        if code != 0:
            outcome = "is paid, confirm it later"
    elif Result.ERR_REQUEST_SEND <= code <= Result.ERR_JSON_SYNTAX and not refused:
        code = register.PaymentCancelProc(rrn)  # the answer is lost: paid or not? Undone, it can be sold again
        outcome = "is cancelled, sell again" if code == 0 else "may be paid, cancel it later"
        if register.getResponseStateCode() == "BILL_NOT_FOUND":
            outcome = "was never paid, sell again"
    say(rrn, outcome, code)


library, = sys.argv[1:]
bill_path = os.path.join(os.path.dirname(library), "BILL.JSN")
sys.stdin.reconfigure(encoding="utf-8", errors="replace")  # what is no text has no card
sys.stdout.reconfigure(encoding="utf-8", line_buffering=True)
register = lumo.Library(library)
code = register.LUMOInit()
if code != 0:
    sys.exit(register.GetErrorMessage(code))
print("lumo", register.lumoVersion())
register.OpenShift("1")  # one that is open since before a restart goes on
opened = now()[:16]  # the report's bounds are texts: before any second of this minute
print("ready")
for words in map(str.split, sys.stdin):
    if words == ["send"]:
        waiting, sent = register.lumoOfflineCount(), register.SendOfflinePayments()
        print(f"sent {sent} of {waiting}")
        if sent == waiting:  # else OFFLINE holds those that failed
            register.lumoClearOffline(sent)
    elif words:
        code = write_bill(bill_path) or register.CreateTransaction(words[0], "7")
        if code == 0:
            sell(words[1:] == ["spend"])
            register.CloseTransaction()
        else:
            say(words[0], "is not sold to", code)
    print("ready")
if register.GenerateSummaryReport(opened, "9") > 0:  # "9": behind all dates
    print(register.GetReportPtr(), end="")
register.CloseShift()
