"""Runs the benchmarks, prints their tables and draws their plots: see script/bench."""

import csv
import datetime
import io
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt

BIN = pathlib.Path("build/bench/bin")
SMALL = pathlib.Path("build/bench-small/bin")
DOCUMENT = pathlib.Path("docs/performance.md")
IMAGES = pathlib.Path("docs/images")

DOCUMENTS = ("answer", "bill", "bills")
TASKS = ("events", "pieces", "tree", "text")
LIBRARIES = ("lumo", "RapidJSON", "RapidJSON, SSE2", "RapidJSON, SSE4.2", "RapidJSON, in place",
             "RapidJSON, SSE4.2, in place", "RapidJSON, its numbers", "simdjson", "yajl")

TILLS = {
    "lumo": "lumo",
    "posix": "by hand, trace by `open`",
    "stdio": "by hand, trace by `fopen`",
    "waiting": "by hand, `fopen`, SQLite as it comes",
    "trace": "the trace alone, by `open`",
}
GOODS = (1, 10, 100)
PAYMENTS = {1: 300, 10: 150, 100: 60}
COLOURS = ("#1b6ca8", "#e08e45", "#5a9367", "#b23a48", "#7d5ba6", "#bdbdbd", "#c9b458")

# The same drawing has the same bytes, wherever and whenever it is drawn.
plt.rcParams.update({
    "svg.hashsalt": "lumo", "svg.fonttype": "none", "font.family": "sans-serif", "font.size": 9,
    "axes.spines.top": False, "axes.spines.right": False, "figure.constrained_layout.use": True,
})


def run(*words, **environment):
    done = subprocess.run([str(word) for word in words], capture_output=True, text=True,
                          env={**os.environ, **environment})
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, words))}: {done.stdout}{done.stderr}")
    return done


def ahead(*words):
    """Runs before whatever else wants a processor, where the system allows it: then no time is one of waiting for one."""
    allowed = shutil.which("chrt") and subprocess.run(("chrt", "--fifo", "1", "true"), capture_output=True).returncode == 0
    if not allowed:
        print("without chrt's leave the times of a payment hold what else the machine does", file=sys.stderr)
    return run(*(("chrt", "--fifo", "1") if allowed else ()), *words)


def rows(text):
    return list(csv.reader(io.StringIO(text)))


def instructions(*words):
    done = run("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", "--toggle-collect=Measured", *words)
    return int(re.search(r"Collected : (\d+)", done.stderr).group(1))


def save(figure, name):
    IMAGES.mkdir(exist_ok=True)
    figure.savefig(IMAGES / name, metadata={"Date": None})
    plt.close(figure)


class Report:
    """Tables by name, printed and, on request, put between their marks in the document."""

    def __init__(self):
        self.tables = {}

    def table(self, name, head, lines):
        align = ["---" if column[0] != ">" else "--:" for column in head]
        text = ["| " + " | ".join(column.lstrip(">") for column in head) + " |", "| " + " | ".join(align) + " |"]
        text += ["| " + " | ".join(str(cell) for cell in line) + " |" for line in lines]
        self.tables[name] = "\n".join(text)
        print(f"\n{name}\n\n{self.tables[name]}", flush=True)

    def write(self):
        text = DOCUMENT.read_text()
        for name, table in self.tables.items():
            mark = re.compile(rf"<!-- {name}:[^>]*-->\n.*?(<!-- end -->)", re.S)
            machine = re.search("Model name: *(.*)", run("lscpu", LC_ALL="C").stdout).group(1)
            compiler = run("g++", "--version").stdout.splitlines()[0]
            made = f"<!-- {name}: {datetime.date.today()}, {machine}, {compiler} -->\n"
            text, found = mark.subn(lambda match: f"{made}\n{table}\n\n{match.group(1)}", text)
            if found != 1:
                sys.exit(f"{DOCUMENT}: no place for {name}")
        DOCUMENT.write_text(text)


def payment(report):
    disk = tempfile.mkdtemp(prefix="lumo-bench-", dir="build")
    memory = tempfile.mkdtemp(prefix="lumo-bench-", dir="/dev/shm")
    try:
        for goods in GOODS:
            run(BIN / "payment", "check", goods, memory)
        payment_costs(report, memory)
        payment_times(report, {"memory": memory, "disk": disk})
        payment_parts(report, {"memory": memory, "disk": disk})
    finally:
        shutil.rmtree(disk)
        shutil.rmtree(memory)


def payment_costs(report, folder):
    lines = []
    for goods in GOODS:
        for till in ("lumo", "posix", "stdio", "trace"):
            system, heap = rows(run(BIN / "payment_watched", "count", till, goods, folder).stdout)[0]
            count = instructions(BIN / "payment", "once", till, goods, folder)
            lines.append((goods, TILLS[till], f"{count:,}", system, heap))
    report.table("payment costs", ("goods", "register", ">instructions", ">system calls", ">heap calls"), lines)


def payment_times(report, folders):
    lines = []
    for goods in GOODS:
        for where, folder in folders.items():
            race = rows(ahead(BIN / "payment", "race", goods, folder, PAYMENTS[goods]).stdout)
            ours = [float(time) for time in race[0][1:]]
            for till, *times in race:
                processor, wall = map(float, times)
                lines.append((goods, where, TILLS[till], f"{processor:,.0f}", f"{ours[0] / processor:.2f}",
                              f"{wall:,.0f}", f"{ours[1] / wall:.2f}"))
    report.table("payment times", ("goods", "files in", "register", ">processor, µs", ">lumo's share", ">time, µs",
                                   ">lumo's share"), lines)


def payment_parts(report, folders):
    parts, bars = {}, []
    for where, folder in folders.items():
        for till in ("lumo", "posix"):
            bars.append(f"{till.replace('posix', 'by hand')}, {where}")
            for part, time in rows(ahead(BIN / "payment_watched", "parts", till, 10, folder, 150).stdout):
                parts.setdefault(part, []).append(float(time))
    parts = {part: times for part, times in parts.items() if max(times) >= 1}
    report.table("payment parts", ("µs in calls for", *(">" + bar for bar in bars)),
                 [(part, *(f"{time:,.0f}" for time in times)) for part, times in parts.items()])
    figure, axes = plt.subplots(figsize=(7, 2.6))
    left = [0.0] * len(bars)
    for (part, times), colour in zip(parts.items(), COLOURS):
        axes.barh(bars, times, left=left, label=part, color=colour)
        left = [a + b for a, b in zip(left, times)]
    axes.invert_yaxis()
    axes.set_xlabel("µs, one payment of 10 goods")
    axes.legend(ncol=len(parts), frameon=False, loc="lower center", bbox_to_anchor=(0.45, 1.0), fontsize=8)
    save(figure, "payment.svg")


def json_rates(program, expression):
    """(document, task, library) to MB/s and heap calls."""
    text = run(program, "--benchmark_format=csv", "--benchmark_min_time=0.05", "--benchmark_repetitions=9",
               "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true",
               f"--benchmark_filter={expression}").stdout
    table = rows(text[text.index("name,"):])
    rates = {}
    for row in table[1:]:
        if not row[0].endswith("_median"):
            continue
        values = dict(zip(table[0], row))
        key = tuple(row[0][:-len("_median")].split("/"))
        rates[key] = (float(values["MB_per_s"]), float(values["heap_calls"]))
    # They ran in any order.
    return {key: rates[key] for key in sorted(rates, key=lambda key: (
        DOCUMENTS.index(key[0]), TASKS.index(key[1]), LIBRARIES.index(key[2])))}


def json(report):
    rates = json_rates(BIN / "json_bench", ".")
    lines = []
    for (document, task, library), (rate, heap) in rates.items():
        per_byte = ""
        # The 10 MB document repeats the bill.
        if document != "bills" and library != "simdjson":
            size = int(run(BIN / "json_once", document, task, library).stdout)
            per_byte = f"{instructions(BIN / 'json_once', document, task, library) / size:.1f}"
        lines.append((document, task, library, f"{rate:,.0f}", per_byte, f"{heap:.0f}"))
    report.table("json", ("document", "task", "library", ">MB/s", ">instructions/byte", ">heap calls"), lines)
    small = json_rates(SMALL / "json_bench", "^(answer|bill)/.*/(lumo|RapidJSON)$")
    report.table("json small", ("document", "task", "library", ">MB/s", ">heap calls"),
                 [(*key, f"{rate:,.0f}", f"{heap:.0f}") for key, (rate, heap) in small.items()])
    first = []
    for library in ("lumo", "RapidJSON", "RapidJSON, in place", "simdjson", "yajl"):
        times = [statistics.median(float(run(BIN / "json_once", document, "tree", library, "first").stdout)
                                   for _ in range(41)) for document in ("answer", "bill")]
        first.append((library, *(f"{time:.0f}" for time in times)))
    report.table("json first", ("the first tree of a process", ">answer, µs", ">bill, µs"), first)
    plot_rates(rates)


def plot_rates(rates):
    figure, axes = plt.subplots(1, len(TASKS), figsize=(9, 3.2), sharex=True)
    for task, axis in zip(TASKS, axes):
        bars = [(library, rate) for (document, of, library), (rate, _) in rates.items()
                if document == "bill" and of == task]
        for number, (library, rate) in enumerate(bars):
            axis.barh(number, rate, color=COLOURS[0] if library == "lumo" else COLOURS[5])
            axis.text(0, number, " " + library, va="center", fontsize=7)
        axis.set_yticks([])
        axis.invert_yaxis()
        axis.set_title(task, fontsize=9)
        axis.set_xlabel("MB/s")
    save(figure, "json.svg")


def growth(report):
    text = run(BIN / "growth_bench", "--benchmark_format=csv", TMPDIR="/dev/shm").stdout
    table = rows(text[text.index("name,"):])
    curves, lines = {}, []
    for row in table[1:]:
        values = dict(zip(table[0], row))
        name, size = row[0].split("/")[:2]
        time = float(values["cpu_time"]) * {"ns": 1, "us": 1e3, "ms": 1e6}[values["time_unit"]]
        each = float(values["per_item"]) * 1e9 if values["per_item"] else None
        curves.setdefault(name, []).append((int(size), time))
        lines.append((name, f"{int(size):,}", f"{time / 1e3:,.1f}", "" if each is None else f"{each:,.1f}",
                      f"{float(values['peak_KB']):,.0f}"))
    report.table("growth", ("what", ">bytes, goods or records", ">µs", ">ns for each", ">heap at most, KB"), lines)
    figure, axis = plt.subplots(figsize=(7, 3.4))
    for (name, points), colour in zip(curves.items(), COLOURS):
        axis.plot(*zip(*((max(size, 1), time / 1e6) for size, time in points)), "o-", label=name, color=colour,
                  markersize=3)
    axis.set_xscale("log")
    axis.set_yscale("log")
    axis.set_xlabel("bytes, goods or records")
    axis.set_ylabel("ms")
    axis.legend(frameon=False, fontsize=8)
    save(figure, "growth.svg")


def main():
    words = sys.argv[1:]
    names = {"payment": payment, "json": json, "growth": growth}
    chosen = [word for word in words if word != "--docs"] or list(names)
    report = Report()
    for name in chosen:
        if name not in names:
            sys.exit(f"script/bench: no such part: {name}")
        names[name](report)
    if "--docs" in words:
        report.write()


main()
