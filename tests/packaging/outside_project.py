#!/usr/bin/env python3
"""Installs the built tree into a folder of its own, builds the samples against that as outside projects would, and lets them work
through a day.

    outside_project.py cmake|pkg-config|deep BUILD LOYALTY_SERVER CMAKE CC CXX
"""
import glob
import os
import shlex
import shutil
import subprocess
import sys
import tempfile

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]


def run(*command, **more):
    # The generator that the machine has, being the project's own.
    environment = dict(os.environ, CMAKE_GENERATOR="Ninja", **more.pop("environment", {}))
    done = subprocess.run(command, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **more)
    if done.returncode != 0:
        sys.exit(f"{shlex.join(command)}\n{done.stdout}")
    return done.stdout.strip()


def build(way, project, installed, cmake, compilers):
    """The sample in the folder, built: C with CMake's and pkg-config's words for what is installed, and C++ likewise."""
    source, = glob.glob(os.path.join(project, "sale.c*"))
    language = "CXX" if source.endswith("cpp") else "C"
    if way == "cmake":
        run(cmake, "-S", project, "-B", f"{project}/build", f"-DCMAKE_PREFIX_PATH={installed}", "-DCMAKE_BUILD_TYPE=Release",
            f"-DCMAKE_{language}_COMPILER={compilers[language]}")
        run(cmake, "--build", f"{project}/build")
        return f"{project}/build/sale"
    pc, = glob.glob(f"{installed}/**/lumo.pc", recursive=True)
    flags = run("pkg-config", "--cflags", "--libs", "lumo", environment={"PKG_CONFIG_PATH": os.path.dirname(pc)})
    standard = "-std=c++17" if language == "CXX" else "-std=c99"
    run(compilers[language], standard, *WARNINGS, source, *shlex.split(flags), "-Wl,-rpath,$ORIGIN", "-o", f"{project}/sale")
    return f"{project}/sale"


def check_deep(work, cmake):
    """A distribution's folder of libraries may lie deeper: the header is still found."""
    run(cmake, "-S", SOURCE, "-B", f"{work}/deep", "-DCMAKE_INSTALL_LIBDIR=lib/some/where", "-DLUMO_TESTS=OFF", "-DLUMO_TOOLS=OFF")
    os.makedirs(f"{work}/usr/lib/some/where/pkgconfig")
    os.makedirs(f"{work}/usr/include")
    shutil.copy(f"{work}/deep/packaging/lumo.pc", f"{work}/usr/lib/some/where/pkgconfig/")
    found = run("pkg-config", "--variable=includedir", "lumo", environment={"PKG_CONFIG_PATH": f"{work}/usr/lib/some/where/pkgconfig"})
    if not os.path.samefile(found, f"{work}/usr/include"):
        sys.exit(f"lumo.h is looked for in {found}")


def main():
    way, tree, server, cmake, c_compiler, cxx_compiler = sys.argv[1:]
    with tempfile.TemporaryDirectory() as work:
        if way == "deep":
            check_deep(work, cmake)
            return
        run(cmake, "--install", tree, "--prefix", f"{work}/first")
        # An installed folder may be moved.
        os.rename(f"{work}/first", f"{work}/installed")
        library, = glob.glob(f"{work}/installed/**/liblumo.so.1", recursive=True)
        for sample in ("c", "cpp"):
            shutil.copytree(f"{work}/installed/share/doc/liblumo-dev/examples/{sample}", f"{work}/{sample}")
            program = build(way, f"{work}/{sample}", f"{work}/installed", cmake, {"C": c_compiler, "CXX": cxx_compiler})
            print(run(sys.executable, os.path.join(SOURCE, "tests", "bindings", "day.py"),
                      os.path.join(SOURCE, "tests", "bindings", "day.txt"), server, "--", library, program,
                      "--", "{shop}/sale", "{shop}/BILL.JSN"))


if __name__ == "__main__":
    main()
