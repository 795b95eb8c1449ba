#!/usr/bin/env python3
"""TLS in front of the server, as SECURITY.md sets it up: its two files for stunnel, a terminal on one side, the server on the
other."""
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import bench

CARD = "1000000001"


class Listener:
    """Passes bytes on and keeps those from the terminal's side; or answers with what it is given."""

    def __init__(self, onward=None, answer=None):
        self.onward, self.answer, self.seen = onward, answer, b""
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.run, daemon=True).start()

    def run(self):
        while True:
            client, _ = self.listener.accept()
            threading.Thread(target=self.serve, args=(client,), daemon=True).start()

    def serve(self, client):
        if self.onward is None:
            request = b""
            while not bench.Wire.is_whole(request) and (piece := client.recv(65536)):
                request += piece
            if request:
                client.sendall(self.answer)
            client.close()
            return
        server = socket.create_connection(("127.0.0.1", self.onward))
        threading.Thread(target=self.pass_on, args=(server, client, False), daemon=True).start()
        self.pass_on(client, server, True)

    def pass_on(self, source, target, is_kept):
        try:
            while piece := source.recv(65536):
                if is_kept:
                    self.seen += piece
                target.sendall(piece)
        except OSError:
            pass
        try:
            target.shutdown(socket.SHUT_WR)
        except OSError:
            pass


class Tunnel(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="lumo-tunnel-")
        self.addCleanup(shutil.rmtree, self.folder)
        self.make_certificate("loyalty")

    def make_certificate(self, name):
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2",
             "-subj", "/CN=loyalty.example", "-addext", "subjectAltName=DNS:loyalty.example",
             "-keyout", os.path.join(self.folder, name + ".key"), "-out", os.path.join(self.folder, name + ".pem")],
            check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def stunnel(self, which, **replaced):
        """Starts stunnel with a file of SECURITY.md, its addresses and paths replaced."""
        with open(os.path.join(bench.SOURCE, "SECURITY.md"), encoding="utf-8") as file:
            text = re.findall(r"^```ini " + which + r"\n(.*?)^```$", file.read(), re.M | re.S)[0]
        for key, value in replaced.items():
            text, count = re.subn(rf"^{key} *= *.*$", f"{key} = {value}", text, flags=re.M)
            self.assertEqual(count, 1, key)
        path = os.path.join(self.folder, which + ".conf")
        with open(path, "w", encoding="utf-8") as file:
            file.write("foreground = yes\npid =\n" + text)
        log = open(path + ".log", "w", encoding="utf-8")
        process = subprocess.Popen(["stunnel4", path], stdout=log, stderr=log)
        log.close()
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        port = int(replaced["accept"].split(":")[1])
        while process.poll() is None:
            try:
                socket.create_connection(("127.0.0.1", port)).close()
                return
            except OSError:
                time.sleep(0.05)
        with open(path + ".log", encoding="utf-8") as file:
            self.fail(file.read())

    def port(self):
        """A port for stunnel. It is bound here too, where nobody listens, so that nobody else is given it."""
        bound = socket.socket()
        self.addCleanup(bound.close)
        bound.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        bound.bind(("127.0.0.1", 0))
        return bound.getsockname()[1]

    def tunnel(self, server_port, trusted="loyalty"):
        """The port for the terminal, and the bytes between the two ends."""
        far, near = self.port(), self.port()
        self.stunnel("server", accept=f"127.0.0.1:{far}", connect=f"127.0.0.1:{server_port}",
                     cert=self.folder + "/loyalty.pem", key=self.folder + "/loyalty.key")
        between = Listener(onward=far)
        self.stunnel("shop", accept=f"127.0.0.1:{near}", connect=f"127.0.0.1:{between.port}",
                     CAfile=f"{self.folder}/{trusted}.pem")
        between.seen = b""
        return near, between

    def shop(self, port):
        shop = bench.Shop(f"127.0.0.1:{port}", shiftMode=0, timeout=10)
        self.addCleanup(shop.remove)
        lumo = bench.Library(shop)
        self.assertEqual(lumo.LUMOInit(), 0)
        self.assertEqual(lumo.CreateTransaction(CARD, bench.CASHIER), 0)
        return shop, lumo

    def server(self):
        server = bench.Server()
        self.addCleanup(server.stop)
        return server

    # TLS hands on up to 16 KB at a time: what is not longer arrives in one piece.
    def test_a_terminal_sells_through_it_and_nothing_is_readable(self):
        near, between = self.tunnel(self.server().port)
        shop, lumo = self.shop(near)
        goods = [{"title": "Молоко 3,2%", "productCode": "1", "positionCost": 100, "orderNum": n, "cnt": 1}
                 for n in range(1, 51)]
        shop.write("BILL.JSN", json.dumps({"totalSum": 5000, "orderLen": 50, "billNum": "1", "billDate": "d", "partnerFee": 0,
                                           "goodList": {"good": goods}}))
        self.assertEqual(lumo.PaymentProc(1, "BILL.JSN"), 0, shop.read("TRACE.TXT")[-2000:])
        self.assertEqual(lumo.PaymentConfirmProc(lumo.getRRN()), 0)
        self.assertGreater(len(between.seen), 5000)
        self.assertNotIn(CARD.encode(), between.seen)
        self.assertNotIn(b"POST", between.seen)

    def test_the_end_of_the_connection_comes_through(self):
        for size in (999, 1000, 1001):
            head, end = b'{"putDepositResponse":{"response":{"requestState":"SUCCESS","message":"', b'"}}}'
            near, _ = self.tunnel(Listener(answer=head + b"m" * (size - len(head) - len(end)) + end).port)
            _, lumo = self.shop(near)
            with self.subTest(size):
                self.assertEqual(lumo.DepositProc(1), 0)
            lumo.CloseTransaction()

    def test_another_servers_certificate_is_refused(self):
        self.make_certificate("another")
        near, _ = self.tunnel(self.server().port, trusted="another")
        _, lumo = self.shop(near)
        self.assertEqual(lumo.DepositProc(1), -401)

    # The terminal reaches the tunnel: nothing tells it that there is no server behind.
    def test_a_server_that_is_away_is_a_lost_answer_and_nothing_is_sold_offline(self):
        server = self.server()
        near, _ = self.tunnel(server.port)
        server.tell("fault refuse")
        shop, lumo = self.shop(near)
        self.assertEqual(lumo.CreateAmountBill(100, "BILL.JSN"), 0)
        self.assertEqual(lumo.PaymentProc(0, "BILL.JSN"), -401)
        self.assertEqual(lumo.lumoIsOffline(), 0)
        self.assertEqual(shop.read("OFFLINE"), "")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
