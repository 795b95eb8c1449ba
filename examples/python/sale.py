"""A cash register with the loyalty programme: sales, a server that goes away and comes back, answers that are lost, a
shift's report.

    sale.py LIBRARY      the library file; the bills lie in its folder

It reads what the cashier does, a line each, and ends its answer to each with the line "ready":
    CARD          sells what is on the counter to the customer with this card
    CARD spend    the same; the customer wants to pay with bonuses, as far as the programme lets her
    send          sends what waits for the server
The end of the input closes the shift.
"""

import json
import os
import sys
import time

import lumo
from lumo import Result

# The server may have carried out what it was sent, and only its answer did not arrive.
LOST = (Result.ERR_REQUEST_SEND, Result.ERR_NO_RESPONSE, Result.ERR_JSON_SYNTAX, Result.ERR_RESPONSE_STRUCTURE,
        Result.ERR_RESPONSE_TYPE, Result.ERR_RESPONSE_CONTENT, Result.ERR_SERVER_FAILURE)


def now():
    return time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime())


def say(step, code):
    print(f"{step}: {code} {register.GetErrorMessage(code)}")
    if code == Result.ERR_SERVER_ERROR:
        print("the server says", register.getResponseStateCode())


def write_bill():
    """The goods on the counter."""
    goods = [{"title": "Хлеб", "productCode": "001", "positionCost": 5000, "orderNum": 1, "cnt": 1},
             {"title": "Чай", "productCode": "002", "positionCost": 10000, "orderNum": 2, "cnt": 2}]
    bill = {"totalSum": 15000, "orderLen": 2, "billNum": "1", "billDate": now(), "partnerFee": 0,
            "goodList": {"good": goods}}
    with open(os.path.join(folder, "BILL.JSN"), "w", encoding="utf-8") as file:
        json.dump(bill, file, ensure_ascii=False)


def is_refused(code, reason):
    return code == Result.ERR_SERVER_ERROR and register.getResponseStateCode() == reason


def settle_lost(rrn):
    """Finds out whether a payment was made whose answer was lost. Whatever it was, afterwards it is not."""
    code = register.PaymentCancelProc(rrn)
    if code == 0 and register.lumoIsOffline():
        print(f"{rrn}: its cancellation waits for the server; sell again")
    elif code == 0:
        print(f"{rrn} had been paid and is cancelled; sell again")
    elif is_refused(code, "BILL_NOT_FOUND"):
        print(f"{rrn} was never paid; sell again")
    else:
        say("cancellation", code)
        print(f"{rrn} may be paid: cancel it later; sell without the card")


def confirm(rrn):
    """Without it the bonuses are neither spent nor earned."""
    code = register.PaymentConfirmProc(rrn)
    if code in LOST:
        code = register.PaymentConfirmProc(rrn)  # one that has arrived is refused the second time
    if code == 0 or is_refused(code, "BILL_INCORRECT_STATE"):
        print(rrn, "waits for the server" if register.lumoIsOffline() else "is confirmed")
    else:
        say("confirmation", code)
        print(f"{rrn} is not confirmed: confirm it later")


def sell(spend):
    """One sale in the current transaction. Goods can always be sold without the card."""
    before = register.getRRN()
    if register.BalanceProc() == 0:  # good to know, and no reason to stop
        print(f"on the card: {register.GetBalance() // 100}.{register.GetBalance() % 100:02}")
    if register.getRRN() in (None, before):
        print("sell without the card: the server was never met or the clock is behind,",
              "and would refuse the sale for ever")
        return
    try:
        write_bill()
    except OSError:
        print("sell without the card: the bill cannot be written")
        return
    code = register.PaymentProc(int(spend), "BILL.JSN")  # it says whether; how much is the server's to decide
    rrn = register.getRRN()
    if code in LOST:
        settle_lost(rrn)
    elif code in (0, Result.ERR_BILL_OPEN):  # paid; at worst the bill could not be written back
        print(register.getReceiptHeaderPtr() + register.getReceiptBodyPtr() + register.getReceiptFooterPtr(), end="")
        confirm(rrn)
    else:
        say("payment", code)
        print("sell without the card")


def send_waiting():
    waiting = register.lumoOfflineCount()
    sent = register.SendOfflinePayments()
    print(f"sent {sent} of {waiting}")
    # OFFLINE keeps the records that failed. When none did, it keeps them all, until it is cleared.
    if sent == waiting and register.lumoClearOffline(sent) != 0:
        print("OFFLINE could not be cleared")


if len(sys.argv) != 2:
    sys.exit("usage: sale.py LIBRARY")
register = lumo.Library(sys.argv[1])
folder = os.path.dirname(os.path.abspath(sys.argv[1]))
sys.stdout.reconfigure(encoding="utf-8", line_buffering=True)

code = register.LUMOInit()
if code != 0:
    say("start", code)
    sys.exit(1)
opened = now()
code = register.OpenShift("1")
if code not in (0, Result.ERR_SHIFT_ALREADY_OPEN):
    say("shift", code)
    sys.exit(1)

print("ready")
for line in sys.stdin:
    words = line.split()
    if words == ["send"]:
        send_waiting()
    elif words:
        code = register.CreateTransaction(words[0], "7")
        if code == 0:
            sell(words[1:] == ["spend"])
            register.CloseTransaction()
        else:
            say("transaction", code)
    print("ready")

# Report bounds are texts: the minute stands before each of its seconds, "9" behind all dates.
if register.GenerateSummaryReport(opened[:16], "9") > 0:
    print(register.GetReportPtr(), end="")
code = register.CloseShift()
if code != 0:
    say("shift", code)
register.LUMOClean()
