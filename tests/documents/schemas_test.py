#!/usr/bin/env python3
"""docs/schemas against a day of every operation: each request and answer on the wire, each record, each file."""
import copy
import json
import os
import sys
import unittest

import jsonschema

import bench

SCHEMAS = os.path.join(bench.SOURCE, "docs", "schemas")
CARD = "1000000001"
BILL = {"totalSum": 10000, "orderLen": 2, "billNum": "77", "billDate": "2012-12-05T09:59:00Z", "partnerFee": 500,
        "goodList": {"good": [
            {"title": "Хлеб «Бородинский»", "productCode": "001", "positionCost": 4000, "orderNum": 1, "cnt": 2},
            {"title": "Молоко", "productCode": "002", "positionCost": 6000, "orderNum": 2, "cnt": 3}]}}
RETURN_LIST = {"cashBackGood": [{"pos": 2, "sum": 2000, "cnt": 1}]}

REQUESTS = {
    "activate": "cardActivationRequest", "payment": "putPaymentRequest", "paymentAndConfirm": "putPaymentAndConfirmRequest",
    "confirm": "putPaymentConfirmRequest", "balance": "getBalanceRequest", "cashBack": "putCashBackRequest",
    "linkCard": "linkedCardRequest", "cardExchange": "cardExchangeRequest", "deposit": "putDepositRequest",
    "rrn": "getLastRrnRequest",
}
ANSWERS = {
    "cardActivationResponse", "putPaymentResponse", "putPaymentAndConfirmResponse", "putPaymentConfirmResponse",
    "getBalanceResponse", "putCashBackResponse", "linkedCardResponse", "cardExchangeResponse", "putDepositResponse",
    "getAdResponse", "getLastRrnResponse",
}
RECORDS = {"ACTIVATION", "PAYMENT", "PAYMENT_AND_CONFIRM", "PAYMENT_CONFIRM", "CASHBACK", "LINK", "EXCHANGE", "DEPOSIT"}


def load(name):
    with open(os.path.join(SCHEMAS, name), encoding="utf-8") as file:
        return json.load(file)


BASE = "file://" + SCHEMAS + "/"
STORE = {BASE + name: load(name) for name in os.listdir(SCHEMAS)}


def validator(name):
    schema = STORE[BASE + name + ".json"]
    jsonschema.Draft202012Validator.check_schema(schema)
    return jsonschema.Draft202012Validator(schema, resolver=jsonschema.RefResolver(BASE + name + ".json", schema, STORE))


CODES = [code for code in load("parts.json")["$defs"]["stateCode"]["enum"] if code != "OK"]
VALIDATORS = {name[:-len(".json")]: validator(name[:-len(".json")]) for name in os.listdir(SCHEMAS)}


class Day:
    """A day of every operation, and the documents that it leaves by the name of their schema."""

    def __init__(self):
        self.documents = {name: [] for name in ("request", "answer", "record", "config", "state", "bill", "return_list")}
        self.heads = []
        self.refusals = []  # by the programme's own judgement
        self.server = bench.Server()
        self.wire = bench.Wire(self.server)
        self.shop = bench.Shop(self.wire.address, timeout=10)
        try:
            self.lumo = bench.Library(self.shop)
            self.spend()
            for request, answer in self.wire.exchanges:
                head, _, body = request.partition(b"\n\n")
                self.heads.append((head.decode(), body))
                self.keep("request", body)
                if not answer.startswith(b"<"):  # a page of status 500
                    self.keep("answer", answer)
        finally:
            self.wire.stop()
            self.server.stop()
            self.shop.remove()

    def keep(self, name, text):
        self.documents[name].append(json.loads(text))

    def expect(self, code, expected=0):
        """What a call answered, and the state as it is now."""
        assert code == expected, (code, expected, self.shop.read("TRACE.TXT")[-3000:])
        self.keep("state", self.shop.read("STATE"))

    def keep_records(self, name):
        self.documents["record"] += self.shop.records(name)

    def transaction(self, card):
        self.expect(self.lumo.CloseTransaction())
        self.expect(self.lumo.CreateTransaction(card, bench.CASHIER))

    def pay(self, call, wish, document=None):
        if document is None:
            self.expect(self.lumo.CreateAmountBill(10000, "BILL.JSN"))
        else:
            self.shop.write("BILL.JSN", json.dumps(document, ensure_ascii=False))
        self.keep("bill", self.shop.read("BILL.JSN"))
        self.expect(call(wish, "BILL.JSN"))
        self.keep("bill", self.shop.read("BILL.JSN"))
        return self.lumo.getRRN()

    def spend(self):
        lumo, shop, expect = self.lumo, self.shop, self.expect
        # A new terminal: the settings have just been delivered, there is no state.
        os.rename(shop.path("CONFIG"), shop.path("CONFIG.JSN"))
        expect(lumo.LUMOInit())
        self.keep("config", shop.read("CONFIG"))
        expect(lumo.OpenShift(None))
        expect(lumo.CloseShift())
        expect(lumo.OpenShift("42"))

        # Cards.
        self.transaction("1000000003")
        # What account was asked for is remembered, even one that there is not.
        expect(lumo.ActivationProc("GIFT_CARD", None, 1, "NONE", None), -103)
        expect(lumo.ActivationProc("SIMPLE_ACTIVATION", None, 0, None, None))
        self.transaction("1000000004")
        expect(lumo.ActivationProc("GIFT_CARD", None, 5000, "LOCAL", None))
        self.transaction("1000000005")
        expect(lumo.ActivationProc("REFER_A_FRIEND", None, 0, None, CARD))
        self.transaction(CARD)
        expect(lumo.BalanceProc())
        expect(lumo.DepositProc(5000))
        self.transaction("1000000002")
        expect(lumo.ExchangeProc("TOKEN7"))

        # Sales and returns.
        self.transaction(CARD)
        bought = self.pay(lumo.PaymentProc, 1, BILL)
        expect(lumo.PaymentConfirmProc(bought))
        expect(lumo.PaymentCancelProc(self.pay(lumo.PaymentProc, 0)))
        whole = self.pay(lumo.PaymentAndConfirmProc, 1, BILL)
        self.pay(lumo.PaymentProc, 0, {key: BILL[key] for key in BILL if key != "goodList"})
        shop.write("RETURN.JSN", json.dumps(RETURN_LIST))
        self.keep("return_list", shop.read("RETURN.JSN"))
        expect(lumo.CashBackProc(bought, "RETURN.JSN"))
        expect(lumo.CashBackProc(whole, None))
        expect(lumo.LinkCardProc("1000000004"))

        # Without the server. A link is sent by an offline transaction alone.
        self.wire.refuse()
        self.transaction(CARD)
        self.pay(lumo.PaymentAndConfirmProc, 1)
        self.transaction("1000000008")
        expect(lumo.PaymentConfirmProc(self.pay(lumo.PaymentProc, 1, BILL)))
        self.wire.resume()
        expect(lumo.LinkCardProc(CARD))
        self.keep_records("OFFLINE")
        # The link is not done a second time; the others are.
        expect(lumo.SendOfflinePayments(), 3)

        # An update is offered. Everything can be refused, with every code.
        self.server.tell("update offered")
        self.transaction(CARD)
        expect(lumo.BalanceProc())
        self.server.tell("update none")
        for code in CODES:
            self.server.tell(f"fault refusal {code} on deposit times 1")
            expect(lumo.DepositProc(1), -405)
            assert lumo.getResponseStateCode() == code, (code, lumo.getResponseStateCode())

        # A terminal that has no number, and cannot learn one.
        expect(lumo.CloseTransaction())
        shop.write("STATE", "{}")
        expect(lumo.LoadState())
        expect(lumo.OpenShift("43"))
        self.transaction(CARD)
        self.server.tell("fault http 500 on rrn times 1")
        expect(lumo.BalanceProc(), -405)
        assert lumo.getResponseStateCode() == "REQUEST_ID_EMPTY"
        expect(lumo.CloseTransaction())
        expect(lumo.CloseShift())
        self.keep_records("LOG")

        # No call asks for the advertisement.
        request = {"ver": "1.0", "type": "AD", "requestId": "0000000000000000", "terminalId": "12345",
                   "requestDate": "2012-12-05T10:00:00Z", "employeeId": "7", "cardNum": CARD, "isOffline": False,
                   "shiftId": ""}
        document = json.dumps({"getAdRequest": {"request": request}})
        self.keep("request", document)
        self.keep("answer", self.ask("ad", document))

        # What no terminal sends, each operation refuses.
        for method, name in {**REQUESTS, "ad": "getAdRequest"}.items():
            for document in ("{", "[]", "{}", '{"x":{}}', f'{{"{name}":1}}', f'{{"{name}":{{}}}}',
                             f'{{"{name}":{{"request":{{}}}}}}', json.dumps({name: {"request": {**request, "type": "NONE"}}}),
                             json.dumps({name: {"request": {**request, "requestId": ""}}}),
                             json.dumps({name: {"request": {**request, "requestId": 5}}})):
                answer = self.ask(method, document)
                self.refusals.append(next(iter(json.loads(answer).values()))["response"])
                self.keep("answer", answer)

    def ask(self, method, document):
        return self.wire.exchange(f"POST /ws/{method}\nContent-Length: {len(document)}\n\n{document}\n".encode())


def names(documents):
    return {next(iter(document)) for document in documents}


def places(document, place=()):
    """Every member of every object in the document."""
    items = document.items() if isinstance(document, dict) else enumerate(document) if isinstance(document, list) else ()
    for key, value in items:
        if isinstance(document, dict):
            yield place + (key,)
        yield from places(value, place + (key,))


def parent_of(document, place):
    for key in place[:-1]:
        document = document[key]
    return document


class Schemas(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.day = Day()

    def test_everything_of_the_day_is_valid(self):
        for name, documents in self.day.documents.items():
            for document in documents:
                with self.subTest(name, document=document):
                    errors = [error.message for error in VALIDATORS[name].iter_errors(document)]
                    self.assertEqual(errors, [])

    def test_the_day_had_everything(self):
        documents = self.day.documents
        self.assertEqual(names(documents["request"]), set(REQUESTS.values()) | {"getAdRequest"})
        self.assertEqual(names(documents["answer"]), ANSWERS)
        self.assertEqual({record["request"]["type"] for record in documents["record"]}, RECORDS)
        self.assertEqual({record["request"]["isOffline"] for record in documents["record"]}, {True, False})
        self.assertIn({}, documents["state"])
        codes = {next(iter(answer.values()))["response"]["requestStateCode"] for answer in documents["answer"]}
        self.assertEqual(codes, {"OK"} | set(CODES))
        self.assertEqual(len(CODES), 32)

    def test_the_answers_to_what_cannot_be_taken_are_refusals(self):
        self.assertEqual(len(self.day.refusals), 11 * 10)
        self.assertEqual({response["requestState"] for response in self.day.refusals}, {"ERROR"})
        self.assertEqual({response["requestStateCode"] for response in self.day.refusals}, {
            "REQUEST_PARSING_ERROR", "INCORRECT_REQUEST", "INCORRECT_REQUEST_PARAM", "REQUEST_ID_EMPTY"})
        self.assertEqual({"requestId" in response for response in self.day.refusals}, {True, False})

    def test_each_request_goes_to_its_method(self):
        for head, body in self.day.heads:
            lines = head.split("\n")
            method = lines[0].split("/")[-1]
            self.assertEqual(lines, [
                f"POST /ws/{method}", f"Host: {self.day.wire.address}", "Content-Type: application/json-soap;charset=UTF-8",
                f"Content-Length: {len(body) - 1}"])
            self.assertEqual(body[-1:], b"\n")
            self.assertEqual(next(iter(json.loads(body))), REQUESTS[method])

    # The schemas would be of no use if they took everything.

    def of_each_kind(self):
        """One document of each kind: as much as there is of it."""
        kinds = {}
        for name, documents in self.day.documents.items():
            for document in documents:
                kind = (name, next(iter(document), "") if name in ("request", "answer") else
                        document["request"]["type"] if name == "record" else "")
                kinds[kind] = max(kinds.get(kind, {}), document, key=lambda one: len(json.dumps(one)))
        return kinds

    def test_a_member_of_the_wrong_kind_is_refused(self):
        for (name, kind), document in self.of_each_kind().items():
            for place in places(document):
                changed = copy.deepcopy(document)
                parent = parent_of(changed, place)
                parent[place[-1]] = None
                with self.subTest(name, kind=kind, place=place):
                    self.assertFalse(VALIDATORS[name].is_valid(changed))

    def test_a_member_too_many_is_refused(self):
        for (name, kind), document in self.of_each_kind().items():
            for place in list(places(document)) + [("x",)]:
                changed = copy.deepcopy(document)
                parent_of(changed, place)["colour"] = 1
                with self.subTest(name, kind=kind, place=place):
                    self.assertFalse(VALIDATORS[name].is_valid(changed))

    def test_a_member_too_few_is_refused_but_for_these(self):
        optional = {}
        for (name, kind), document in self.of_each_kind().items():
            for place in places(document):
                changed = copy.deepcopy(document)
                del parent_of(changed, place)[place[-1]]
                if VALIDATORS[name].is_valid(changed):
                    optional.setdefault(name, set()).add(place[-1])
        self.assertEqual(optional, {
            "request": {"goodList", "bonus", "referParentCardNum", "cashBackGood"},
            "answer": {"ver", "requestId", "responseId", "responseDate", "message", "goodList", "bonus"},
            "record": {"goodList", "referParentCardNum", "bonus"},
            "config": {"serverAltAddr", "retailNetworkName", "offlineMode", "shiftMode", "localBonusOffline",
                       "globalBonusOffline", "orgFeeOffline", "receiptHeader", "receiptFooter"},
            "state": {"reqId", "shiftId", "shiftOpenDate", "shiftCloseDate"},
            "bill": {"spendBonus", "goodList", "bonus"},
        })

    def test_what_a_terminal_would_not_take_is_refused(self):
        answer = next(a for a in self.day.documents["answer"] if "bill" in a.get("putPaymentResponse", {}))
        for change in (
                {"requestState": "success"}, {"requestState": "DONE"}, {"requestStateCode": "NO"}, {"isNeedUpdate": 1},
                {"requestId": "12"}, {"message": "HTTP Status 500"}):
            changed = copy.deepcopy(answer)
            changed["putPaymentResponse"]["response"].update(change)
            with self.subTest(change):
                self.assertFalse(VALIDATORS["answer"].is_valid(changed))
        for amount in (2 ** 31, 1.5, "1"):
            changed = copy.deepcopy(answer)
            changed["putPaymentResponse"]["bill"]["totalSum"] = amount
            with self.subTest(amount):
                self.assertFalse(VALIDATORS["answer"].is_valid(changed))
        changed = copy.deepcopy(answer)
        del changed["putPaymentResponse"]["bill"]
        self.assertFalse(VALIDATORS["answer"].is_valid(changed))
        changed["putPaymentResponse"]["response"]["requestState"] = "ERROR"
        self.assertTrue(VALIDATORS["answer"].is_valid(changed))

    def test_settings_that_are_dangerous_are_refused(self):
        for change in ({"timeout": 0}, {"timeout": "30s"}, {"logSize": 0}, {"offlineMode": True}, {"serverAddr": "10.0.0.5"},
                       {"serverAddr": "https://10.0.0.5:80/"}, {"serverAddr": "http://server:80/"}, {"terminalID": "1"},
                       {"terminalId": "1 345"}):
            with self.subTest(change):
                self.assertFalse(VALIDATORS["config"].is_valid({**self.day.documents["config"][0], **change}))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
