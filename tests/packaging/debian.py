#!/usr/bin/env python3
"""Installs the Debian packages into a bare root, and sells there as their README.Debian say: with the installed library, and with the
till and the bench's server.

    debian.py LOYALTY_SERVER

The root holds the C library, a shell and ldconfig, which the packages' scripts call, and nothing else;
for the till and the server the libraries that their package needs come in too. Needs root's rights, for chroot and for the root's own /proc.
"""
import contextlib
import glob
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import urllib.request

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(SOURCE, "tests", "bindings"))
import day  # noqa: E402
from package import Wrong, check_links  # noqa: E402


def files_of(folder):
    return sorted(os.path.join(place, name) for place, _, names in os.walk(folder) for name in names)


def make_root(root):
    """The least that packages are installed into, as this machine has it, and what dpkg keeps its records in."""
    for folder in ("usr/lib/x86_64-linux-gnu", "usr/lib64", "usr/bin", "usr/sbin", "etc", "proc", "var/lib/dpkg/info",
                   "var/lib/dpkg/updates"):
        os.makedirs(f"{root}/{folder}")
    for link in ("lib", "lib64", "bin", "sbin"):
        os.symlink(f"usr/{link}", f"{root}/{link}")
    for file in ("/lib64/ld-linux-x86-64.so.2", "/lib/x86_64-linux-gnu/libc.so.6", "/bin/sh", "/sbin/ldconfig",
                 "/sbin/ldconfig.real"):
        if os.path.exists(file):
            shutil.copy(file, root + file)
    with open(f"{root}/var/lib/dpkg/status", "w", encoding="ascii"):
        pass


def install(root, package):
    """The package's dependence on libc6, which no package has brought into this root, is all that is left aside."""
    archive, = glob.glob(os.path.join(SOURCE, "build", "packages", f"{package}_*.deb"))
    done = subprocess.run(["dpkg", f"--root={root}", "--force-depends", "--install", archive], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{package} cannot be installed:\n{done.stdout}")
    asked = subprocess.run(["dpkg-query", f"--admindir={root}/var/lib/dpkg", "-W", "-f", "${Status} ${Depends}", package],
                           check=True, stdout=subprocess.PIPE, text=True).stdout
    if not asked.startswith("install ok installed "):
        sys.exit(f"{package}: {asked}")
    return asked[len("install ok installed "):]


def bring_libraries(root, programs):
    """What the packages that the programs need would install."""
    for program in programs:
        listed = subprocess.run(["ldd", program], check=True, stdout=subprocess.PIPE, text=True).stdout
        for library in re.findall(r"(/\S+) \(0x", listed):
            if not os.path.exists(root + library):
                shutil.copy(library, root + library)


def free_port():
    with socket.socket() as chosen:
        chosen.bind(("127.0.0.1", 0))
        return str(chosen.getsockname()[1])


def check_tools(root, commands_of_library):
    """A terminal made as liblumo1 says; then what lumo-tools says, word by word, inside the root."""
    shutil.rmtree(f"{root}/shop")
    for command in commands_of_library:
        if command.startswith(("mkdir ", "cp ", "ln ")):
            words = command if command.startswith("ln ") else command.replace("/usr/", f"{root}/usr/")
            subprocess.run(words, shell=True, cwd=root, check=True)
    with open(f"{root}/usr/share/doc/lumo-tools/README.Debian", encoding="utf-8") as file:
        commands = re.findall(r"^    (.+)$", file.read(), re.M)
    ports = {"8080": free_port(), "8081": free_port()}  # the README's own may be taken here
    server, *rest = [re.sub("808[01]", lambda port: ports[port[0]], command) for command in commands]
    inside = ["unshare", "--mount", "sh", "-c", f'mount --bind /proc {root}/proc && exec chroot {root} /bin/sh -ec "$1"', "-"]
    started = subprocess.Popen([*inside, "exec " + server.removesuffix(" &")], stdin=subprocess.PIPE)
    try:
        said, wanted = "", f"listening on 127.0.0.1:{ports['8080']}\npage at http://127.0.0.1:{ports['8081']}/\n"
        for _ in range(500):
            with contextlib.suppress(OSError), open(f"{root}/shop/server", encoding="utf-8") as file:
                said = file.read()
            if said == wanted or started.poll() is not None:
                break
            time.sleep(0.02)
        if said != wanted or started.poll() is not None:
            sys.exit(f"loyalty_server says {said!r}")
        with urllib.request.urlopen(f"http://127.0.0.1:{ports['8081']}/api/state", timeout=10) as answer:
            if json.load(answer)["exchanges"] != 0:
                sys.exit("the server's page knows of exchanges before there are any")
        done = subprocess.run([*inside, "\n".join(rest)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        with urllib.request.urlopen(f"http://127.0.0.1:{ports['8081']}/api/payments", timeout=10) as answer:
            states = [payment["state"] for payment in json.load(answer)["payments"]]
    finally:
        started.terminate()
        started.wait()
    for sentence in ("This terminal is fit to sell", "balance 700.00", "earned ", "  folder      /shop\n", "  shift closed"):
        if sentence not in done.stdout:
            sys.exit(f"the till does not say {sentence!r}, but:\n{done.stdout}")
    if done.returncode != 0 or states != ["confirmed"]:
        sys.exit(f"the till ended with {done.returncode}, the payments are {states}:\n{done.stdout}")
    # From anywhere, with the link named; every command is in the page and in the completion, and the page's exit statuses are the help's.
    subprocess.run([*inside, "cd / && register --library /shop/liblumo.so.1 status"], check=True, stdout=subprocess.PIPE)
    asked = [*inside, "register --help"]
    told = subprocess.run(asked, check=True, stdout=subprocess.PIPE, text=True).stdout
    with open(f"{root}/usr/share/man/man1/register.1", encoding="utf-8") as file:
        page = file.read()
    with open(f"{root}/usr/share/bash-completion/completions/register", encoding="utf-8") as file:
        completed = re.search(r"^    ''\) words='(.*)' ;;$", file.read(), re.M)[1].split()
    for command in re.findall(r"^  ([a-z][a-z-]*)  +[A-Z]", told, re.M):
        if command not in completed or not re.search(rf"\b{command}\b", page.replace("\\-", "-")):
            sys.exit(f"register {command} is not in the page or not completed")
    if missing := [status for status in re.findall(r"^  (\d+) ", told, re.M) if not re.search(rf"^\.BR? .*\b{status}\b", page, re.M)]:
        sys.exit(f"register(1) has no exit status {missing}")


def main():
    with tempfile.TemporaryDirectory() as work:
        root = os.path.join(work, "root")
        make_root(root)
        packages = {
            "liblumo1": r"libc6 \(>= [\d.]+\)",
            "liblumo-dev": r"liblumo1 \(= [\d.]+\)",
            "lumo-tools": r"liblumo1 \(= [\d.]+\), libc6 \(>= [\d.]+\), libcpp-httplib0\.11 \(.+\), libgcc-s1 \(.+\), libstdc\+\+6 \(.+\)",
        }
        for package, expected in packages.items():
            if not re.fullmatch(expected, needed := install(root, package)):
                sys.exit(f"{package} needs {needed}")
        for package in packages:
            try:
                check_links(f"{root}/usr/share/doc/{package}")
            except Wrong as wrong:
                sys.exit(f"{package}: {wrong}")
        before = files_of(f"{root}/usr")
        with open(f"{root}/usr/share/doc/liblumo1/README.Debian", encoding="utf-8") as file:
            commands = re.findall(r"^    (.+)$", file.read(), re.M)
        pc, = glob.glob(f"{root}/usr/lib/**/pkgconfig", recursive=True)
        environment = dict(os.environ, PKG_CONFIG_PATH=pc)
        environment.pop("LD_LIBRARY_PATH", None)
        # The root has a shell and no other program: the commands are carried out from outside. A link names what it will be inside.
        os.symlink(f"{root}/usr/share/doc/liblumo-dev/examples/c/sale.c", f"{root}/register.c")
        for command in commands:
            words = command if command.startswith("ln ") else command.replace("/usr/", f"{root}/usr/")
            subprocess.run(words, shell=True, cwd=root, env=environment, check=True)
        with day.Server([os.path.abspath(sys.argv[1])]) as server:
            day.configure(f"{root}/shop", server)
            inside = ["unshare", "--mount", "sh", "-c",
                      f"mount --bind /proc {root}/proc && exec chroot {root} /shop/register /shop/BILL.JSN"]
            good = day.run(os.path.join(SOURCE, "tests", "bindings", "day.txt"), server, f"{root}/shop", inside, work, environment)
        here = {os.path.basename(path) for path in files_of(f"{root}/shop")}
        if not {"CONFIG", "STATE", "LOG", "TRACE.TXT", "BILL.JSN"} <= here:
            sys.exit(f"the terminal's folder holds only {sorted(here)}")
        if files_of(f"{root}/usr") != before:
            sys.exit(f"the terminal wrote beside the installed library: {sorted(set(files_of(f'{root}/usr')) - set(before))}")
        if not good:
            sys.exit("another day than expected")
        # Without /proc the file is not found by the link, and its own folder is no terminal's: README.Debian says what is seen then.
        done = subprocess.run(["chroot", root, "/shop/register", "/shop/BILL.JSN"], stdout=subprocess.PIPE, text=True, check=False)
        left = sorted(set(files_of(f"{root}/usr")) - set(before))
        if not done.stdout.startswith("sale BILL cannot start: -111 ") or left != [f"{os.path.dirname(pc)}/TRACE.TXT"]:
            sys.exit(f"without /proc the register says {done.stdout!r} and leaves {left}")
        bring_libraries(root, [f"{root}/usr/bin/register", *glob.glob(f"{root}/usr/lib/*/lumo/*")])
        check_tools(root, commands)
    print("liblumo1, liblumo-dev, lumo-tools: installed into a bare root, sold there with a link to the installed library and by hand")


if __name__ == "__main__":
    main()
