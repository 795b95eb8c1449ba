#!/usr/bin/env python3
"""The page of the loyalty server in a real browser, which is driven over HTTP as the WebDriver protocol says.

    browser_test.py LOYALTY_SERVER CHROMEDRIVER CHROMIUM

With LUMO_PICTURE in the environment it leaves a picture of the page in this file.
"""
import base64
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import urllib.error
import urllib.request

SECONDS = 30
# The browser and the server are on this machine, whatever proxy the environment names.
DIRECT = urllib.request.build_opener(urllib.request.ProxyHandler({}))
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"


def http(method, url, body=None):
    data = None if body is None else json.dumps(body).encode()
    request = urllib.request.Request(url, data, {"Content-Type": "application/json"}, method=method)
    try:
        with DIRECT.open(request, timeout=2 * SECONDS) as answer:
            return json.load(answer)
    except urllib.error.HTTPError as error:
        raise AssertionError(f"{method} {url} {body}: {error.read().decode()}") from None


def check(is_true, what):
    if not is_true:
        raise AssertionError(what)


class Server:
    """The loyalty server with its page."""

    def __init__(self, program, port="0", page="0"):
        self.process = subprocess.Popen([program, "--port", port, "--page", page, "--quiet"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True)
        self.host, self.port = re.fullmatch(r"listening on (.*):(\d+)\n", self.process.stdout.readline()).groups()
        self.page = re.fullmatch(r"page at (.*)\n", self.process.stdout.readline()).group(1)
        self.requests = 0

    def await_call(self, path, is_right):
        """Waits until a call of the page's interface gives what is right, asking at every change of the server."""
        revision = 0
        while True:
            given = http("GET", self.page + "api/" + path)
            if is_right(given):
                return
            before, revision = revision, http("GET", f"{self.page}api/state?after={revision}&wait={SECONDS}")["revision"]
            check(revision != before, f"{path} stays {given}")

    def command(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
        return self.process.stdout.readline()

    def ask(self, method, name, kind, part="", card="1000000001"):
        """Asks as a terminal does; gives what comes before the end of the connection."""
        self.requests += 1
        head = {"ver": "1.0", "type": kind, "requestId": f"1234526112100{self.requests:03}", "terminalId": "12345",
                "requestDate": "2026-11-21T10:00:00Z", "employeeId": "7", "cardNum": card, "isOffline": False, "shiftId": "1"}
        body = ('{"%s":{"request":%s%s}}' % (name, json.dumps(head), part)).encode()
        with socket.create_connection((self.host, int(self.port)), timeout=SECONDS) as connection:
            connection.sendall(b"POST /ws/%s\nContent-Length: %d\n\n%s\n" % (method.encode(), len(body), body))
            answer = b""
            while piece := connection.recv(500):
                answer += piece
        return answer.decode()

    def balance(self):
        return self.ask("balance", "getBalanceRequest", "BALANCE")

    def pay(self):
        """A payment of 480.00 that spends bonuses: 240.00 at most, LOCAL ones first."""
        return self.ask("payment", "putPaymentRequest", "PAYMENT", ',"bill":{"totalSum":48000,"spendBonus":true,"orderLen":1,'
                        '"billNum":"77","billDate":"2026-11-21T09:59:00Z","partnerFee":0,"goodList":{"good":[{"title":"Чай <b>",'
                        '"productCode":"1","positionCost":48000,"orderNum":1,"cnt":1}]}}')

    def kill(self):
        self.process.kill()
        self.process.wait()


class Browser:
    def __init__(self, driver, browser, folder):
        self.process = subprocess.Popen([driver, "--port=0"], stdout=subprocess.PIPE, text=True)
        for line in self.process.stdout:
            started = re.search(r"started successfully on port (\d+)", line)
            if started:
                break
        options = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-sync",
                   "--disable-background-networking", "--disable-component-update", "--disable-dev-shm-usage",
                   "--window-size=1280,1120", "--user-data-dir=" + folder]
        self.session = f"http://127.0.0.1:{started.group(1)}/session"
        made = http("POST", self.session, {"capabilities": {"alwaysMatch": {
            "goog:chromeOptions": {"binary": browser, "args": options}, "goog:loggingPrefs": {"browser": "ALL"},
            "timeouts": {"script": SECONDS * 1000, "pageLoad": SECONDS * 1000}}}})
        self.session += "/" + made["value"]["sessionId"]

    def do(self, what, **arguments):
        return http("POST", f"{self.session}/{what}", arguments)["value"]

    def run(self, script):
        return self.do("execute/sync", script="return " + script, args=[])

    def await_true(self, condition):
        """Waits until a condition holds, looking at every change of the page."""
        try:
            self.do("execute/async", args=[], script="const done = arguments[0], test = () => " + condition + """;
                if (test()) return done(true);
                const observer = new MutationObserver(() => { if (test()) { observer.disconnect(); done(true); } });
                observer.observe(document, {subtree: true, childList: true, attributes: true, characterData: true});""")
        except AssertionError:
            raise AssertionError(f"never came true: {condition}\non the page:\n{self.run('document.body.innerText')}") from None

    def await_text(self, selector, text):
        self.await_true(f"(document.querySelector({json.dumps(selector)})?.innerText ?? '').includes({json.dumps(text)})")

    def find(self, selector):
        found = self.do("element", using="css selector", value=selector)
        return f"element/{found[ELEMENT]}"

    def click(self, selector):
        self.do(self.find(selector) + "/click")

    def type(self, selector, text):
        field = self.find(selector)
        self.do(field + "/clear")
        self.do(field + "/value", text=text)

    def choose(self, selector, option):
        self.click(f"{selector} option[value={json.dumps(option)}]")

    def complaints(self):
        return [entry for entry in self.do("se/log", type="browser") if entry["level"] in ("SEVERE", "WARNING")]

    def screenshot(self, name):
        with open(name, "wb") as file:
            file.write(base64.b64decode(http("GET", self.session + "/screenshot")["value"]))

    def end(self):
        http("DELETE", self.session)
        self.process.terminate()
        self.process.wait(SECONDS)


def test_payment_appears(server, browser):
    browser.await_text("#live", "live")
    browser.await_text("#address", f"http://{server.host}:{server.port}/ws")
    browser.await_text("#no-payment", "None yet")
    browser.await_text("#cards tr:first-child", "500.00")

    check("SUCCESS" in server.pay(), "the payment was refused")
    browser.await_text("#exchanges .exchange", "payment")
    browser.await_text("#exchanges .exchange", "sum 480.00, spent 240.00, earned 12.00")
    browser.await_text("#exchanges .exchange .badge", "OK")
    browser.await_text("#payments tr", "1234526112100001")
    browser.await_text("#payments tr", "held")
    browser.await_text("#cards tr:first-child", "200.00 reserved")
    browser.await_text("#terminals tr", "1234526112100001")

    browser.click("#exchanges .exchange summary")
    browser.await_text("#exchanges pre", '"title": "Чай <b>"')
    browser.await_text("#exchanges .both > :last-child pre", '"requestStateCode": "OK"')
    check(browser.run("document.querySelectorAll('#exchanges b').length") == 0, "a client's text became part of the page")
    browser.click("#exchanges .exchange summary")


def test_faults_take_effect(server, browser):
    check(not browser.run("document.querySelector('#in-force').checkVisibility()"), "a fault is shown that is not there")
    browser.choose("#fault-kind", "refusal")
    browser.type("#fault-arguments", "LOCKED_CARD")
    browser.choose("#fault-operation", "balance")
    browser.type("#fault-times", "1")
    browser.click("#fault-set")
    browser.await_text("#in-force", "refusal LOCKED_CARD on balance times 1")
    check("LOCKED_CARD" in server.balance(), "the fault that was set on the page did not strike")
    browser.await_text("#exchanges .exchange .badge.warn", "refusal LOCKED_CARD")
    browser.await_true("document.querySelector('#in-force').hidden")
    check("SUCCESS" in server.balance(), "the fault did not end after its time")

    browser.click("#quick button[value='cut 0']")
    browser.await_text("#in-force", "cut 0")
    check(server.balance() == "", "an answer came that should be lost")
    browser.click("#fault-off")
    browser.await_true("document.querySelector('#in-force').hidden")
    check("SUCCESS" in server.balance(), "the fault was not switched off")

    check(server.command("fault delay 1") == "fault delay 1\n", "the command was not done")
    browser.await_text("#in-force", "delay 1")

    browser.click("aside details summary")
    browser.type("#script", "http 500\noff")
    browser.click("#script-set")
    browser.await_text("#in-force", "step 1 of 2")
    check("HTTP Status 500" in server.balance(), "the first line of the script did not strike")
    browser.await_text("#in-force", "step 2 of 2")
    check("SUCCESS" in server.balance(), "the second line of the script lets a request pass")
    browser.await_true("document.querySelector('#in-force').hidden")
    browser.click("aside details summary")

    browser.type("#fault-arguments", "")
    browser.choose("#fault-kind", "refusal")
    browser.click("#fault-set")
    browser.await_text("#problem", "refusal")
    check("SUCCESS" in server.balance(), "a fault that makes no sense struck")


def test_terminals_are_told(server, browser):
    browser.click("#update input[value=offered]")
    browser.type("#ad", "Чай дешевле")
    browser.click("#ad-set")
    server.await_call("ad", lambda given: given["ad"] == "Чай дешевле")
    answer = server.ask("ad", "getAdRequest", "AD")
    check('"isNeedUpdate":true' in answer and "Чай дешевле" in answer, "the terminal was told otherwise: " + answer)


def test_cards_and_terminals_are_locked(server, browser):
    browser.choose("#cards tr:nth-child(2) select", "locked")
    server.await_call("cards/1000000002", lambda given: given["state"] == "locked")
    check("LOCKED_CARD" in server.ask("balance", "getBalanceRequest", "BALANCE", card="1000000002"), "the card is not locked")
    browser.click("#terminals tr:first-child button")
    browser.await_text("#terminals tr:first-child button", "Unlock")
    check("LOCKED_TERMINAL" in server.balance(), "the terminal is not locked")
    browser.click("#terminals tr:first-child button")
    browser.await_true("document.querySelector('#terminals tr:first-child button').innerText === 'Lock'")


def test_nothing_comes_from_elsewhere(server, browser):
    page = server.page
    loaded = browser.run("performance.getEntriesByType('resource').map(entry => entry.name)")
    check(any(name == page + "page.js" for name in loaded), f"what was loaded is not known: {loaded}")
    check(all(name.startswith(page) for name in loaded), f"something came from elsewhere: {loaded}")
    # The one refusal that a test above has provoked.
    complaints = [entry for entry in browser.complaints() if "/api/fault - Failed" not in entry["message"]]
    check(not complaints, f"the browser complains: {complaints}")


def test_page_sees_the_server_go_and_come(server, browser):
    server.kill()
    browser.await_text("#live", "the server is gone")
    again = Server(shutil.which(sys.argv[1]), server.port, re.search(r":(\d+)/", server.page).group(1))
    try:
        browser.await_text("#live", "live")
        browser.await_text("#no-exchange", "Nothing yet")
        check("SUCCESS" in again.balance(), "the balance was refused")
        browser.await_text("#exchanges .exchange", "balance")
    finally:
        again.kill()


def leave_picture(server, browser, name):
    """A register's minute: what it did, a fault that has struck and is still in force, one exchange opened."""
    server.command("fault off")
    server.ask("balance", "getBalanceRequest", "BALANCE")
    server.command("fault cut 0 on confirm times 2")
    server.pay()
    paid = f"1234526112100{server.requests:03}"
    server.ask("confirm", "putPaymentConfirmRequest", "PAYMENT_CONFIRM",
               ',"paymentConfirm":{"requestId":"%s","isConfirm":true}' % paid)
    browser.await_text("#exchanges .exchange", "confirm")
    browser.click("#exchanges .exchange:nth-child(2) summary")
    browser.await_text("#exchanges pre", paid)
    browser.run("document.querySelectorAll('.new').forEach(row => row.classList.remove('new'))")
    browser.screenshot(name)


def main():
    program, driver, chromium = (shutil.which(program) or sys.exit(f"there is no {program}") for program in sys.argv[1:4])
    server = Server(program)
    with tempfile.TemporaryDirectory() as folder:
        browser = Browser(driver, chromium, folder)
        try:
            browser.do("url", url=server.page)
            test_payment_appears(server, browser)
            test_faults_take_effect(server, browser)
            test_terminals_are_told(server, browser)
            test_cards_and_terminals_are_locked(server, browser)
            test_nothing_comes_from_elsewhere(server, browser)
            if os.environ.get("LUMO_PICTURE"):
                leave_picture(server, browser, os.environ["LUMO_PICTURE"])
            test_page_sees_the_server_go_and_come(server, browser)
        finally:
            browser.end()
            server.kill()
    print("the page: everything as it should be")


main()
