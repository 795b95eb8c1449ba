#!/usr/bin/env python3
"""Lets a sample register work through a day against the bundled loyalty server, and compares every line that it prints.

    day.py DAY LOYALTY_SERVER... -- FILE... -- PROGRAM ARGUMENT...

The FILEs, the library's among them, are copied into a shop's folder of its own; "{shop}" in PROGRAM and its arguments is
that folder. LOYALTY_SERVER and PROGRAM may have what starts them before them.

In the text of the DAY
    > LINE    is typed by the cashier; what follows is the answer
    ! LINE    is typed at the loyalty server; what follows, if anything does, is its answer
    <N>       is an RRN, the N-th that this day shows
    <time>    is the time of a slip
    <port>    is the server's port
    = FILE N TEXT    says that in the end the shop's FILE holds this text N times
    - FILE           takes FILE out of the shop before the day begins
    ? N              says that the program ends with N, not with 0
and what follows the line "> end" is printed after the end of the input. A program that reads nothing prints what stands first.
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


class Server:
    def __init__(self, program, folder=None):
        self.process = subprocess.Popen([*program, "--quiet"], cwd=folder, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        encoding="utf-8")
        self.address = self.process.stdout.readline().split()[-1]

    def tell(self, command):
        """Gives the server a command and returns its answer, which ends where that of a question without an answer begins."""
        self.process.stdin.write(f"{command}\ncard none\n")
        self.process.stdin.flush()
        answer = []
        while (line := self.process.stdout.readline()) not in ("no such card\n", ""):
            answer.append(line.rstrip("\n"))
        return answer

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()


def read_steps(path):
    """The text of a day: where something is typed, what, and what is expected then; the files and what they hold; the files that
    are missing; what the program ends with."""
    with open(path, encoding="utf-8") as file:
        text = file.read().splitlines()
    steps, files, missing, status = [("start", "", [])], [], [], 0
    for line in text:
        if line[:2] in ("> ", "! "):
            steps.append((line[0], line[2:], []))
        elif line.startswith("= "):
            files.append(line[2:].split(" ", 2))
        elif line.startswith("- "):
            missing.append(line[2:])
        elif line.startswith("? "):
            status = int(line[2:])
        elif not line.startswith("# "):
            steps[-1][2].append(line)
    return steps, files, missing, status


class Names:
    """Gives each RRN its number, so that a day's text holds whenever the day is."""

    def __init__(self, server):
        self.port = server.address.split(":")[1]
        self.known = {}

    def replace(self, line):
        line = re.sub(rf"\b{self.port}\b", "<port>", line)
        line = re.sub(r"\d{4}/\d\d/\d\d +\d\d:\d\d:\d\d", "<time>", line)
        return re.sub(r"\b12345\d{11}\b", lambda rrn: f"<{self.known.setdefault(rrn[0], len(self.known) + 1)}>", line)


def read_answer(program):
    answer = []
    while (line := program.stdout.readline()) not in ("ready\n", ""):
        answer.append(line.rstrip("\n"))
    return answer, line == ""


def configure(shop, server):
    """Gives a terminal the server's address and no other."""
    path = os.path.join(shop, "CONFIG.JSN")
    with open(path, encoding="utf-8", newline="") as file:
        config = file.read()
    config = config.replace("10.0.0.5:8080", server.address).replace("http://10.0.0.6:8080/loyalty", "")
    with open(path, "w", encoding="utf-8", newline="") as file:
        file.write(config)


def run(day, server, shop, command, folder, environment):
    """Lets the program work through the day; says whether all was as expected, and prints what was not."""
    steps, files, missing, expected_status = read_steps(day)
    for name in missing:
        os.remove(os.path.join(shop, name))
    program = subprocess.Popen(command, cwd=folder, env=environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, encoding="utf-8", errors="backslashreplace")
    names, good, has_ended = Names(server), True, False
    for kind, line, expected in steps:
        if has_ended and kind == ">":
            print(f"the program ended before: {line}")
            good = False
            break
        if kind == "!":
            answer = server.tell(line)
            if not expected:
                continue
        else:
            if kind == ">" and line == "end":
                program.stdin.close()
            elif kind == ">":
                program.stdin.write(line + "\n")
                program.stdin.flush()
            answer, has_ended = read_answer(program)
        answer = [names.replace(text) for text in answer]
        if answer != expected:
            good = False
            print(f"{kind} {line}", *(f"  expected  {text}" for text in expected), sep="\n")
            print(*(f"  found     {text}" for text in answer), sep="\n")
    if not has_ended:
        print("the program did not end")
        program.kill()
    status = program.wait()
    if status != expected_status:
        print(f"the program ended with {status}")
    for name, times, expected in files:
        try:
            with open(os.path.join(shop, name), encoding="utf-8", errors="backslashreplace") as file:
                found = file.read().count(expected)
        except OSError as error:
            found = error
        if found != int(times):
            good = False
            print(f"{name}: expected {times} times {expected}, found {found}")
    return good and has_ended and status == expected_status


def main():
    first = sys.argv.index("--")
    second = sys.argv.index("--", first + 1)
    with tempfile.TemporaryDirectory() as shop, Server(sys.argv[2:first]) as server:
        for file in [*sys.argv[first + 1:second], os.path.join(SOURCE, "packaging", "CONFIG.JSN")]:
            shutil.copy(file, shop)
        configure(shop, server)
        command = [word.replace("{shop}", shop) for word in sys.argv[second + 1:]]
        good = run(sys.argv[1], server, shop, command, shop, dict(os.environ, LD_LIBRARY_PATH=shop))
        left = sorted(name for name in ("OFFLINE", "OFFLINE_TMP", "LOG.old") if os.path.exists(os.path.join(shop, name)))
    if left:
        good = False
        print("left behind:", *left)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
