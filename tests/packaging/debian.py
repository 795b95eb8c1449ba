#!/usr/bin/env python3
"""Installs the two Debian packages into a bare root, and sells there with the installed library as README.Debian says.

    debian.py LOYALTY_SERVER

The root holds the C library, a shell and ldconfig, which the packages' scripts call, and nothing else. Needs root's rights, for chroot and for the root's own /proc.
"""
import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(SOURCE, "tests", "bindings"))
import day  # noqa: E402


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


def main():
    with tempfile.TemporaryDirectory() as work:
        root = os.path.join(work, "root")
        make_root(root)
        needed = [install(root, package) for package in ("liblumo1", "liblumo-dev")]
        if not re.fullmatch(r"libc6 \(>= [\d.]+\)", needed[0]) or not re.fullmatch(r"liblumo1 \(= [\d.]+\)", needed[1]):
            sys.exit(f"the packages need {needed}")
        before = files_of(f"{root}/usr")
        with open(f"{root}/usr/share/doc/liblumo1/README.Debian", encoding="utf-8") as file:
            commands = re.findall(r"^    (.+)$", file.read(), re.M)
        pc, = glob.glob(f"{root}/usr/lib/**/pkgconfig", recursive=True)
        environment = dict(os.environ, PKG_CONFIG_PATH=pc)
        environment.pop("LD_LIBRARY_PATH", None)
        # The root has no shell and no compiler: the commands are carried out from outside. A link names what it will be inside.
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
    print("liblumo1, liblumo-dev: installed into a bare root, sold there with a link to the installed library")


if __name__ == "__main__":
    main()
