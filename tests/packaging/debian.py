#!/usr/bin/env python3
"""Unpacks the two Debian packages into a root of their own, and sells with an installed library as README.Debian says.

    debian.py LOYALTY_SERVER
"""
import glob
import os
import re
import subprocess
import sys
import tempfile

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(SOURCE, "tests", "bindings"))
import day  # noqa: E402


def files_of(folder):
    return sorted(os.path.join(place, name) for place, _, names in os.walk(folder) for name in names)


def main():
    with tempfile.TemporaryDirectory() as work:
        root = os.path.join(work, "root")
        for package in ("liblumo1", "liblumo-dev"):
            archive, = glob.glob(os.path.join(SOURCE, "build", "packages", f"{package}_*.deb"))
            subprocess.run(["dpkg-deb", "-x", archive, root], check=True)
        before = files_of(root)
        with open(f"{root}/usr/share/doc/liblumo1/README.Debian", encoding="utf-8") as file:
            commands = re.findall(r"^    (.+)$", file.read(), re.M)
        pc, = glob.glob(f"{root}/usr/lib/**/pkgconfig", recursive=True)
        environment = dict(os.environ, PKG_CONFIG_PATH=pc)
        environment.pop("LD_LIBRARY_PATH", None)
        os.symlink(f"{root}/usr/share/doc/liblumo-dev/examples/c/sale.c", f"{work}/register.c")
        for command in commands:
            subprocess.run(command.replace("/usr/", f"{root}/usr/"), shell=True, cwd=work, env=environment, check=True)
        with day.Server([os.path.abspath(sys.argv[1])]) as server:
            day.configure(f"{work}/shop", server)
            good = day.run(os.path.join(SOURCE, "tests", "bindings", "day.txt"), server, f"{work}/shop",
                           ["shop/register", "shop/BILL.JSN"], work, environment)
        here = {os.path.basename(path) for path in files_of(f"{work}/shop")}
        if not {"CONFIG", "STATE", "LOG", "TRACE.TXT", "BILL.JSN"} <= here:
            sys.exit(f"the terminal's folder holds only {sorted(here)}")
        if files_of(root) != before:
            sys.exit(f"the terminal wrote beside the installed library: {sorted(set(files_of(root)) - set(before))}")
        if not good:
            sys.exit("another day than expected")
    print("liblumo1, liblumo-dev: sold with a link to the installed library")


if __name__ == "__main__":
    main()
