#!/usr/bin/env python3
"""The tables of codes: each code of a call and of the server has its row, with the text that the cashier reads."""
import json
import os
import re
import sys
import unittest

import bench

# The server's, in the order of their values. This is the test's own expectation, written out by hand: the documents, the header
# and the library are held against it.
STATE_CODES = """OK INTERNAL_ERROR REQUEST_NOT_FOUND REQUEST_PARSING_ERROR UNSUPPORTED_PROTOCOL_VERSION INCORRECT_REQUEST_PARAM
    UNKNOWN_TERMINAL LOCKED_TERMINAL ACTIVATION_REQUIRED LOCKED_CARD CARD_NOT_FOUND CARD_NUMBER_INCORRECT ALREADY_ACTIVATED
    ACTIVATION_SUM_TYPE_REQUIRED ACTIVATION_BLOCK_REQUIRED REFERRAL_NOT_FOUND REFERRAL_LIMIT_REACHED INCORRECT_BILL
    UNPROCESSED_BILL BILL_NOT_FOUND UNKNOWN_USER INCORRECT_SUM UNKNOWN_CASH_BACK_TYPE INCORRECT_TOKEN
    RETAIL_POINT_CONFIG_ERROR REQUEST_ID_EMPTY INCORRECT_REQUEST_ID BILL_INCORRECT_STATE UPDATE_REQUIRED ZERO_ACTIVATION_ERROR
    INCORRECT_REQUEST DUPLICATE_REQUEST_ID SMS_AUTH_FAILED""".split()


def read(name):
    with open(os.path.join(bench.SOURCE, name), encoding="utf-8") as file:
        return file.read()


def table(text, heading, columns):
    """{first cell: the other cells} of the table below a heading."""
    section = re.split(r"^#+ ", text.split(f"# {heading}\n")[1], maxsplit=1, flags=re.M)[0]
    rows = [[cell.strip() for cell in line.strip("|").split("|")] for line in section.split("\n") if line.startswith("|")]
    rows = rows[2:]
    assert all(len(row) == columns for row in rows), [row for row in rows if len(row) != columns]
    assert all(all(row) for row in rows), [row for row in rows if not all(row)]
    assert len({row[0] for row in rows}) == len(rows)
    return {row[0].strip("`"): row[1:] for row in rows}


class Codes(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.header = read("include/lumo.h")
        cls.terminal = read("docs/terminal.md")
        cls.constants = {
            name: (int(code), comment) for name, code, comment in
            re.findall(r"^  (ERR_\w+) = (-\d+),? +/\* (.*?) \*/$", cls.header, re.M)}

    def setUp(self):
        self.server = bench.Server()
        self.addCleanup(self.server.stop)
        self.shop = bench.Shop(self.server.address, shiftMode=0)
        self.addCleanup(self.shop.remove)

    def returned(self):
        return {code for code, comment in self.constants.values() if not comment.startswith("not returned")}

    def test_the_header_has_41_codes_each_with_a_word_on_it(self):
        self.assertEqual(len(self.constants), 41)
        self.assertEqual(len({code for code, _ in self.constants.values()}), 41)

    def test_every_code_that_a_call_returns_has_its_row(self):
        rows = table(self.terminal, "Results of the calls", 5)
        self.assertEqual({int(code) for code in rows}, self.returned() | {-1})

    def test_the_cashier_reads_what_the_library_says(self):
        lumo = bench.Library(self.shop)
        for code, cells in table(self.terminal, "Results of the calls", 5).items():
            with self.subTest(code):
                self.assertEqual(cells[0], lumo.GetErrorMessage(int(code)))
        for code, _ in self.constants.values():
            self.assertNotIn("Неизвестная ошибка", lumo.GetErrorMessage(code))

    def test_every_state_code_has_its_row_here_and_in_the_header(self):
        self.assertEqual(len(STATE_CODES), 33)
        rows = table(self.terminal, "State codes of the server", 4)
        self.assertEqual(list(rows), STATE_CODES)
        listed = re.findall(r"^ \*   ([A-Z_]{2,}) {2,}\S", self.header.split("Codes, and what they mean.")[1].split("*/")[0], re.M)
        self.assertEqual(listed, STATE_CODES)
        self.assertEqual(json.loads(read("docs/schemas/parts.json"))["$defs"]["stateCode"]["enum"], STATE_CODES)

    # The library knows each: one that it does not know is the empty text.
    def test_each_state_code_arrives_and_the_cashier_reads_what_the_server_says(self):
        lumo = bench.Library(self.shop)
        self.assertEqual(lumo.LUMOInit(), 0)
        self.assertEqual(lumo.CreateTransaction("1000000001", bench.CASHIER), 0)
        rows = table(self.terminal, "State codes of the server", 4)
        self.assertEqual(lumo.DepositProc(1), 0)
        for code in STATE_CODES:
            with self.subTest(code):
                if code != "OK":
                    self.server.tell(f"fault refusal {code} times 1")
                    self.assertEqual(lumo.DepositProc(1), -405)
                self.assertEqual(lumo.getResponseStateCode(), code)
                message = re.findall(r"^response\.message = (.*)$", self.shop.read("TRACE.TXT"), re.M)[-1]
                self.assertEqual(rows[code][0], message)

    def test_the_codes_of_talking_to_the_server_are_those_of_the_exchange(self):
        section = self.header.split(" * TALKING TO THE SERVER\n")[1].split(" * A LOST ANSWER\n")[0]
        listed = re.findall(r"^ \*     (ERR_\w+) {2,}\S", section, re.M)
        exchange = {name for name, (code, comment) in self.constants.items()
                    if -511 < code <= -401 and not comment.startswith("not returned")}
        self.assertEqual(set(listed), exchange | {"ERR_JSON_SYNTAX"})


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
