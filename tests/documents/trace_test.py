#!/usr/bin/env python3
"""What docs/terminal.md says of the trace: the shape of an exchange, the lines that look like trouble and are none, its growth."""
import json
import os
import re
import sys
import unittest

import bench

with open(os.path.join(bench.SOURCE, "docs", "terminal.md"), encoding="utf-8") as opened:
    SECTION = opened.read().split("\n## The trace\n")[1].split("\n## ")[0]


def bill(goods):
    return json.dumps({
        "totalSum": 100 * goods, "orderLen": goods, "billNum": "1", "billDate": "2012-12-05T09:59:00Z", "partnerFee": 0,
        "goodList": {"good": [{"title": "Молоко 3,2%", "productCode": "002", "positionCost": 100, "orderNum": n, "cnt": 1}
                              for n in range(1, goods + 1)]}}, ensure_ascii=False)


class Trace(unittest.TestCase):
    def setUp(self):
        self.server = bench.Server()
        self.addCleanup(self.server.stop)
        self.shop = bench.Shop(self.server.address, shiftMode=0)
        self.addCleanup(self.shop.remove)
        self.lumo = bench.Library(self.shop)

    def start(self):
        self.assertEqual(self.lumo.LUMOInit(), 0)
        self.assertEqual(self.lumo.CreateTransaction("1000000001", bench.CASHIER), 0)

    def grown(self, call, *arguments):
        before = os.path.getsize(self.shop.path("TRACE.TXT"))
        self.assertEqual(call(*arguments), 0)
        return os.path.getsize(self.shop.path("TRACE.TXT")) - before

    def test_a_deposit_leaves_the_lines_that_the_document_shows(self):
        self.start()
        self.assertEqual(self.lumo.BalanceProc(), 0)
        os.remove(self.shop.path("TRACE.TXT"))
        self.assertEqual(self.lumo.DepositProc(100), 0)
        number = re.compile(r"\d+")
        found = [number.sub("9", line) for line in self.shop.read("TRACE.TXT").split("\n")]
        shown = [line[4:] for line in SECTION.split("\n") if line.startswith("    ")]
        self.assertGreater(len(shown), 20)
        at = 0
        for line in shown:
            if "…" in line:
                continue
            line = re.sub(r"\d+\.\d+\.\d+\.\d+:\d+", self.server.address, line)
            with self.subTest(line):
                self.assertIn(number.sub("9", line), found[at:])
            at = found.index(number.sub("9", line), at) + 1

    def test_a_day_without_trouble_has_only_errors_that_are_none(self):
        known = re.findall(r"`(ERROR: [^`]*)`", SECTION.split("look like trouble and are none")[1])
        self.assertGreater(len(known), 7)
        met = set()
        os.rename(self.shop.path("CONFIG"), self.shop.path("CONFIG.JSN"))
        self.start()
        for goods in (1, 40):
            self.shop.write("BILL.JSN", bill(goods))
            self.assertEqual(self.lumo.PaymentProc(1, "BILL.JSN"), 0)
            self.assertEqual(self.lumo.PaymentConfirmProc(self.lumo.getRRN()), 0)
        self.server.tell("fault refuse")
        self.assertEqual(self.lumo.PaymentProc(1, "BILL.JSN"), 0)
        self.server.tell("fault off")
        self.lumo.CloseTransaction()
        self.assertEqual(self.lumo.SendOfflinePayments(), 1)
        self.assertEqual(self.lumo.lumoClearOffline(1), 0)
        for _ in range(2):
            self.assertGreater(self.lumo.GenerateSummaryReport("2000", "3000"), 0)
        # A new delivery beside the settings in force, and a register that gives no cashier.
        self.shop.write("CONFIG.JSN", self.shop.read("CONFIG"))
        self.assertEqual(self.lumo.LUMOInit(), 0)
        self.assertEqual(self.lumo.CreateTransaction("1000000001", None), 0)
        os.remove(self.shop.path("CONFIG.JSN"))
        self.assertEqual(self.lumo.LUMOInit(), 0)
        for line in self.shop.read("TRACE.TXT").split("\n"):
            if not line.startswith("ERROR: ") or line.startswith("ERROR: Connection Failed "):
                continue
            with self.subTest(line):
                self.assertIn(line, known)
            met.add(line)
        # That takes an answer of a multiple of 500 bytes.
        self.assertEqual(set(known) - met, {"ERROR: LUMO_Receive res 0"})

    def test_it_grows_as_the_document_says(self):
        self.start()
        self.assertEqual(self.lumo.DepositProc(1), 0)
        for call, arguments in ((self.lumo.BalanceProc, ()), (self.lumo.DepositProc, (100,))):
            self.assertIn(self.grown(call, *arguments), range(1300, 2200))
        self.assertEqual(self.lumo.CreateAmountBill(10000, "BILL.JSN"), 0)
        self.assertIn(self.grown(self.lumo.PaymentProc, 1, "BILL.JSN"), range(3900, 4700))
        self.assertIn(self.grown(self.lumo.PaymentConfirmProc, self.lumo.getRRN()), range(1300, 2200))
        sizes = []
        for goods in (10, 20):
            self.shop.write("BILL.JSN", bill(goods))
            sizes.append(self.grown(self.lumo.PaymentProc, 0, "BILL.JSN"))
        self.assertIn((sizes[1] - sizes[0]) // 10, range(600, 1000))

    def test_it_may_be_removed_at_any_time(self):
        self.start()
        os.remove(self.shop.path("TRACE.TXT"))
        self.assertEqual(self.lumo.DepositProc(100), 0)
        self.assertTrue(self.shop.read("TRACE.TXT").startswith("DepositProc(100)\n"))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
