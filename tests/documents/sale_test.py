#!/usr/bin/env python3
"""The sale that README.md and lumo.h show, compiled as it stands there, in a shop of its own: online, offline, answers lost."""
import os
import subprocess
import sys
import unittest

import bench

PROGRAM = os.environ["LUMO_SALE"]
CARD = "1000000001"  # 500.00 GLOBAL, 200.00 LOCAL, 50.00 DISCOUNT; bonuses pay half of a bill at most


class Sale(unittest.TestCase):
    def setUp(self):
        self.server = bench.Server()
        self.addCleanup(self.server.stop)
        self.shop = bench.Shop(self.server.address, timeout=2)
        self.addCleanup(self.shop.remove)

    def run_register(self, *actions):
        done = subprocess.run(
            [PROGRAM, "card:" + CARD, *actions], env={**os.environ, "LD_LIBRARY_PATH": self.shop.folder},
            stdout=subprocess.PIPE, text=True, encoding="utf-8", timeout=60, check=False)
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout

    def test_sells_prints_and_confirms(self):
        output = self.run_register("sell:10000:0")
        self.assertIn("outcome SOLD\n", output)
        self.assertIn("money 10000\n", output)
        self.assertIn("slip\nМагазин\n", output)
        self.assertIn("******* ПОКУПКА ********\n", output)
        self.assertNotIn("ОТМЕНА", output)
        self.assertNotIn("message", output)
        self.assertEqual(list(self.server.payments().values()), ["confirmed"])

    def test_a_wish_to_spend_is_met_as_far_as_the_server_lets_it(self):
        # Whatever number stands for the wish: half of 100.00.
        for wish in (1, 5000, 9999):
            output = self.run_register(f"sell:10000:{wish}")
            self.assertIn("money 5000\n", output)
            self.assertIn("outcome SOLD\n", output)
        # Of 700.00, and 50.00 of discount, 150.00 are gone: a bill of 1,500.00 takes the rest and not its half.
        output = self.run_register("sell:150000:1")
        self.assertIn("money %d\n" % (150000 - (75000 - 15000) - self.earned()), output)

    def earned(self):
        """Bonuses of the three sales, in hundredths: 2 and 3 percent of 50.00 each."""
        return 3 * (100 + 150)

    def test_sells_without_the_server_and_sends_it_later(self):
        self.shop.write("STATE", '{"reqId":"1234512120500007"}')
        self.server.tell("fault refuse")
        output = self.run_register("sell:10000:1", "sell:2000:0", "send")
        self.assertEqual(output.count("outcome SOLD\n"), 2)
        self.assertIn("money 10000\n", output)
        self.assertIn("money 2000\n", output)
        self.assertEqual(output.count("        ОФФЛАЙН\n"), 2)
        self.assertIn("waiting 4\n", output)
        self.assertEqual(self.server.payments(), {})
        self.server.tell("fault off")
        output = self.run_register("send", "sell:500:0")
        self.assertIn("waiting 0\n", output)
        self.assertEqual(self.shop.read("OFFLINE"), "")
        self.assertNotIn("ОФФЛАЙН", output)
        self.assertEqual(list(self.server.payments().values()), ["confirmed"] * 3)

    def test_what_the_server_refuses_goes_on_waiting(self):
        self.shop.write("STATE", '{"reqId":"1234512120500007"}')
        self.server.tell("fault refuse")
        self.run_register("sell:10000:0")
        self.server.tell("fault refusal INTERNAL_ERROR on confirm")
        self.assertIn("waiting 1\n", self.run_register("send"))

    def test_a_lost_answer_of_a_payment_that_was_done_is_undone(self):
        self.server.tell("fault cut 0 on payment times 1")
        output = self.run_register("sell:10000:1")
        self.assertIn("outcome NOT_SOLD\n", output)
        self.assertNotIn("money", output)
        self.assertNotIn("slip", output)
        self.assertEqual(list(self.server.payments().values()), ["canceled"])
        # It can be sold again, with all the bonuses.
        self.assertIn("money 5000\n", self.run_register("sell:10000:1"))
        self.assertEqual(list(self.server.payments().values()), ["canceled", "confirmed"])

    def test_a_lost_request_is_no_payment(self):
        self.server.tell("fault silence on payment times 1")
        self.assertIn("outcome NOT_SOLD\n", self.run_register("sell:10000:1"))
        self.assertEqual(self.server.payments(), {})
        self.assertIn("outcome SOLD\n", self.run_register("sell:10000:1"))

    def test_every_spoilt_answer_is_undone(self):
        spoilt = ("cut", "pieces 100 10000", "duplicate", "name x", "without bill",
                  'extra response/requestState "PROCESSED"', 'extra response/requestState "DONE"')
        for fault in spoilt:
            with self.subTest(fault):
                self.server.tell(f"fault {fault} on payment times 1")
                self.assertIn("outcome NOT_SOLD\n", self.run_register("sell:10000:1"))
        self.assertEqual(list(self.server.payments().values()), ["canceled"] * len(spoilt))

    def test_what_cannot_be_asked_is_not_known(self):
        self.shop.configure(timeout=1)  # nothing is answered, so nobody can be too slow
        self.server.tell("fault silence")
        self.assertIn("outcome NOT_KNOWN\n", self.run_register("sell:10000:1"))

    def test_a_refusal_is_told(self):
        self.server.tell(f"card {CARD} locked")
        output = self.run_register("sell:10000:0")
        self.assertIn("outcome NOT_SOLD\n", output)
        self.assertIn("message Ошибка с сервера [LOCKED_CARD]\n", output)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
