"""A shop of a test's own: a folder with a copy of the library file and its settings, and the bench's server.

The tests are given what was built in the environment: LUMO_LIBRARY, LUMO_SERVER, LUMO_SOURCE."""
import ctypes
import json
import os
import shutil
import socket
import subprocess
import tempfile
import threading

SOURCE = os.environ["LUMO_SOURCE"]
CASHIER = "7"


class Server:
    """A loyalty_server; its commands are those of its console."""

    def __init__(self, *options):
        self.process = subprocess.Popen(
            [os.environ["LUMO_SERVER"], "--quiet", *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
            bufsize=1)
        self.address = self.process.stdout.readline().split()[-1]
        self.host, port = self.address.split(":")
        self.port = int(port)

    def tell(self, command):
        """The first line of the answer."""
        self.process.stdin.write(command + "\n")
        return self.process.stdout.readline().rstrip("\n")

    def payments(self):
        """{request id: state}"""
        # The list has no end of its own: a command of one line follows it.
        self.process.stdin.write("payments\nfault\n")
        payments = {}
        for line in self.process.stdout:
            words = line.split()
            if len(words) < 2 or "card" not in words:
                if payments or line.startswith("no payments"):
                    break
                continue
            payments[words[0]] = words[-1]
        if not payments:
            self.process.stdout.readline()
        return payments

    def stop(self):
        self.process.kill()
        self.process.wait()
        self.process.stdin.close()
        self.process.stdout.close()


class Shop:
    SETTINGS = {
        "terminalId": "12345", "protocolVersion": "1.0", "serverAltAddr": "", "retailNetworkName": "Сеть",
        "timeout": 5, "offlineMode": 1, "shiftMode": 1, "localBonusOffline": 3, "globalBonusOffline": 2,
        "orgFeeOffline": 1, "logSize": 1000, "receiptHeader": "Магазин", "receiptFooter": "Спасибо",
    }

    def __init__(self, address, **more):
        self.folder = tempfile.mkdtemp(prefix="lumo-documents-")
        # By the name to link with and by the name that a linked program asks for.
        for name in ("liblumo.so", "liblumo.so.1"):
            shutil.copy(os.environ["LUMO_LIBRARY"], self.path(name))
        self.configure(serverAddr=f"http://{address}/ws", **more)

    def configure(self, **more):
        self.settings = {**self.SETTINGS, **getattr(self, "settings", {}), **more}
        self.write("CONFIG", json.dumps(self.settings, ensure_ascii=False))

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)

    def read(self, name):
        if not os.path.exists(self.path(name)):
            return ""
        with open(self.path(name), encoding="utf-8", newline="") as file:
            return file.read()

    def records(self, name):
        return [json.loads(line) for line in self.read(name).splitlines()]

    def remove(self):
        shutil.rmtree(self.folder)


class Library:
    """The calls of a shop's library file. Its state is the process's: one shop in a test program."""

    TEXTS = ("GetErrorMessage", "getTerminalId", "getPingAddress", "getPingAltAddress", "getResponseState",
             "getResponseStateCode", "getResponseMessage", "getRRN", "getReceiptHeaderPtr", "getReceiptBodyPtr",
             "getReceiptFooterPtr", "GetReportPtr", "lumoVersion")

    def __init__(self, shop):
        self.calls = ctypes.CDLL(shop.path("liblumo.so"))

    def __getattr__(self, name):
        call = getattr(self.calls, name)
        call.restype = ctypes.c_char_p if name in self.TEXTS else ctypes.c_int

        def with_texts(*arguments):
            result = call(*(a.encode() if isinstance(a, str) else a for a in arguments))
            return result.decode() if isinstance(result, bytes) else result

        return with_texts


class Wire:
    """Stands between terminal and server and keeps what goes by: (request, answer) as bytes."""

    def __init__(self, server):
        self.server = server
        self.exchanges = []
        self.port = 0
        self.listener = None
        self.refuse()
        self.resume()

    @property
    def address(self):
        return f"127.0.0.1:{self.port}"

    def refuse(self):
        """From now on nobody listens at the address, which stays taken."""
        if self.listener is not None:
            self.listener.shutdown(socket.SHUT_RDWR)
            self.thread.join()
            self.listener.close()
        self.listener = socket.socket()
        self.listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.listener.bind(("127.0.0.1", self.port))
        self.port = self.listener.getsockname()[1]

    def resume(self):
        self.listener.listen()
        self.thread = threading.Thread(target=self.run, args=(self.listener,), daemon=True)
        self.thread.start()

    def run(self, listener):
        while True:
            try:
                terminal, _ = listener.accept()
            except OSError:
                return
            with terminal:
                request = b""
                while not self.is_whole(request):
                    request += terminal.recv(65536)
                answer = self.exchange(request)
                self.exchanges.append((request, answer))
                terminal.sendall(answer)

    def exchange(self, request):
        answer = b""
        with socket.create_connection((self.server.host, self.server.port)) as onward:
            onward.sendall(request)
            while piece := onward.recv(65536):
                answer += piece
        return answer

    @staticmethod
    def is_whole(request):
        head, blank, rest = request.partition(b"\n\n")
        return bool(blank) and len(rest) == int(head.split(b"Content-Length: ")[1]) + 1

    def stop(self):
        self.refuse()
        self.listener.close()
