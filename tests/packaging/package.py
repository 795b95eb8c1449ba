#!/usr/bin/env python3
"""Unpacks a flavour's archive as a register programmer would, and sells with it, doing what its README.txt says and nothing else.

    package.py FLAVOUR [LANGUAGE...]      default: every language of the README for which this machine has the compiler

The README's commands are the lines that begin with "$" or ">"; what stands before them names the language. Windows programs run
under Wine. What cannot be run here, a package for Windows CE on ARM, is looked at only.
"""
import hashlib
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(SOURCE, "tests", "bindings"))
import day  # noqa: E402

PACKAGES = os.path.join(SOURCE, "build", "packages")
WINE = os.path.join(SOURCE, "script", "wine-run")
# What a command of the README is here.
MINGW = {"windows-x86": "i686-w64-mingw32", "windows-x64": "x86_64-w64-mingw32", "wince-x86": "i686-w64-mingw32"}
PASCAL = {"windows-x86": "i386-win32", "windows-x64": "x86_64-win64"}
# What a register programmer gets: every file, and no other.
CONTENTS = """
    README.txt CHANGELOG.md LICENSE SECURITY.md include/lumo.h include/lumo.hpp terminal/CONFIG.JSN
    bindings/csharp/Lumo.cs bindings/pascal/lumo.pas
    bindings/python/backend.py bindings/python/lumo.py bindings/python/pyproject.toml
    examples/c/sale.c examples/cpp/sale.cpp examples/csharp/Sale.cs examples/pascal/sale.pas examples/python/sale.py
    docs/files.md docs/languages.md docs/loyalty_server.md docs/programming.md docs/protocol.md docs/register.md docs/ru.md
    docs/terminal.md docs/images/loyalty_server_page.png
    docs/schemas/answer.json docs/schemas/bill.json docs/schemas/config.json docs/schemas/parts.json docs/schemas/record.json
    docs/schemas/request.json docs/schemas/return_list.json docs/schemas/state.json
""".split()
OF_THE_SYSTEM = {
    "linux": "terminal/liblumo.so.1 terminal/liblumo.so terminal/register bin/loyalty_server bin/loyalty_server_page.so",
    "windows": "terminal/lumo.dll terminal/register.exe bin/loyalty_server.exe lib/lumo.lib lib/lumo.def",
    "wince": "terminal/lumo.dll terminal/lumo_check.exe lib/lumo.lib lib/lumo.def",
}


class Wrong(Exception):
    pass


def archive_of(flavour):
    found = [name for name in os.listdir(PACKAGES) if re.fullmatch(rf"lumo-[\d.]+-{flavour}\.(zip|tar\.gz)", name)]
    if len(found) != 1:
        raise Wrong(f"{len(found)} archives of {flavour} in {PACKAGES}")
    return found[0]


def check_sum(name):
    with open(os.path.join(PACKAGES, "SHA256SUMS"), encoding="ascii") as file:
        sums = dict(reversed(line.split()) for line in file)
    with open(os.path.join(PACKAGES, name), "rb") as file:
        if sums.get(name) != hashlib.sha256(file.read()).hexdigest():
            raise Wrong(f"SHA256SUMS has another sum for {name}")


def check_contents(folder, flavour):
    """The package holds what it should, and README.txt names no file that it lacks."""
    found = {os.path.relpath(os.path.join(place, name), folder).replace(os.sep, "/")
             for place, _, names in os.walk(folder) for name in names}
    expected = {*CONTENTS, *OF_THE_SYSTEM[flavour.split("-")[0]].split()}
    if found != expected:
        raise Wrong(f"the package lacks {sorted(expected - found)}, and should not hold {sorted(found - expected)}")
    with open(os.path.join(folder, "README.txt"), encoding="utf-8") as file:
        said = file.read().replace("\\", "/")
    for path in set(re.findall(r"\b(?:docs|examples|bindings|include|lib)/[\w./]*\w", said)):
        if not os.path.exists(os.path.join(folder, path)):
            raise Wrong(f"README.txt names {path}, which is not in the package")


def check_links(folder):
    """A document of the package refers to nothing that the package lacks."""
    for place, _, names in os.walk(folder):
        for name in names:
            if name.endswith(".md"):
                with open(os.path.join(place, name), encoding="utf-8") as file:
                    for link in re.findall(r"\]\((?!https?:|#)([^)#\s]+)\S*\)", file.read()):
                        if not os.path.exists(os.path.join(place, link)):
                            raise Wrong(f"{name} refers to {link}, which is not in the package")


def read_commands(readme):
    """Language: its commands. The first, before any language, starts the server."""
    commands, language = {}, "server"
    for line in readme.splitlines():
        if heading := re.fullmatch(r"   (C|C\+\+|Pascal|C#|Python)", line):
            language = heading[1]
        elif command := re.fullmatch(r"     [$>] (.*)", line):
            commands.setdefault(language, []).append(command[1])
    return commands


def words_of(command, flavour):
    """A command of the README as this machine runs it, and what it adds to the environment."""
    if flavour != "linux":
        command = command.replace("\\", "/")
    words = shlex.split(command)
    environment = dict(os.environ)
    while "=" in words[0]:
        name, value = words.pop(0).split("=", 1)
        environment[name] = value
    if flavour != "linux":
        if words[0] in ("gcc", "g++"):
            words[0] = f"{MINGW[flavour]}-{words[0]}-posix"
        elif words[0] == "fpc":
            words[0] = os.path.join(SOURCE, "build", "fpc", f"fpc-{PASCAL[flavour]}")
        elif words[0].endswith(".exe"):
            words.insert(0, WINE)
    return words, environment


def sell(folder, flavour, commands, server_command):
    words, environment = words_of(server_command, flavour)
    # The README's port may be taken here: any other does.
    with day.Server(words[:words.index("--port")], folder) as server:
        terminal = os.path.join(folder, "terminal")
        day.configure(terminal, server)
        for command in commands[:-1]:
            words, environment = words_of(command, flavour)
            done = subprocess.run(words, cwd=folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
            if done.returncode != 0:
                raise Wrong(f"{command}\n{done.stdout.decode(errors='replace')}")
        words, environment = words_of(commands[-1], flavour)
        if not day.run(os.path.join(SOURCE, "tests", "bindings", "day.txt"), server, terminal, words, folder, environment):
            raise Wrong(f"{commands[-1]}: another day than expected")


def sell_with_stand_ins(folder):
    """The Windows CE file under Wine: the sample is built as for Windows, and stand-ins take the place of the system's libraries."""
    for name in ("coredll.dll", "ws2.dll"):
        shutil.copy(os.path.join(SOURCE, "build", "windows-x86", "bin", name), os.path.join(folder, "terminal"))
    server = "build/release/bin/loyalty_server --port 8080"
    sell(folder, "wince-x86", [r"gcc examples\c\sale.c -Iinclude lib\lumo.lib -o terminal\sale.exe",
                               r"terminal\sale.exe terminal\BILL.JSN"], os.path.join(SOURCE, server))


def check_calls_of_windows_ce(folder):
    """For a terminal the sample in C calls the C library, lumo and what coredll.dll has, and nothing else."""
    subprocess.run([f"{MINGW['wince-x86']}-gcc-posix", "-DUNDER_CE", "-Iinclude", "-c", "examples/c/sale.c", "-o", "sale.o"],
                   cwd=folder, check=True)
    listed = subprocess.run([f"{MINGW['wince-x86']}-nm", "-u", "sale.o"], cwd=folder, check=True, stdout=subprocess.PIPE, text=True)
    called = set(re.findall(r"\s(?:__imp_)?_(\w+)@\d+", listed.stdout))
    if called != {"GetSystemTime"}:
        raise Wrong(f"sale.c calls of the system {called}")


def check_till(folder, flavour):
    """The till works where the package has put it, beside the library file."""
    till = "terminal/register" if flavour == "linux" else "terminal/register.exe"
    words, environment = words_of(f"{till} message -501", flavour)
    said = subprocess.run(words, cwd=folder, env=environment, stdout=subprocess.PIPE, encoding="utf-8", check=True).stdout
    if "Ошибка соединения с сервером" not in said:
        raise Wrong(f"{till} says {said}")


def check_needs(folder):
    """The files for Linux need what README.txt says, and no newer."""
    with open(os.path.join(folder, "README.txt"), encoding="utf-8") as file:
        said = file.read()
    runtime = {"libc.so.6", "ld-linux-x86-64.so.2"}
    programs = runtime | {"libstdc++.so.6", "libgcc_s.so.1", "libm.so.6"}
    newest = {"GLIBC": (0,), "GLIBCXX": (0,)}
    for name, allowed in {"terminal/liblumo.so.1": runtime, "terminal/register": programs, "bin/loyalty_server": programs,
                          "bin/loyalty_server_page.so": programs | {"libcpp-httplib.so.0.11"}}.items():
        listed = subprocess.run(["objdump", "-p", "-T", os.path.join(folder, name)], check=True, stdout=subprocess.PIPE, text=True)
        if more := set(re.findall(r"NEEDED +(\S+)", listed.stdout)) - allowed:
            raise Wrong(f"{name} needs {more}")
        for kind, version in re.findall(r"\b(GLIBC|GLIBCXX)_([\d.]+)", listed.stdout):
            newest[kind] = max(newest[kind], tuple(map(int, version.split("."))))
    for sentence, kind in (("The C library is GNU's, {} or later.", "GLIBC"), ("libstdc++.so.6 with GLIBCXX_{},", "GLIBCXX")):
        sentence = sentence.format(".".join(map(str, newest[kind])))
        if sentence not in said:
            raise Wrong(f"README.txt does not say: {sentence}")


def has(program):
    return shutil.which(program) is not None or os.path.exists(program)


def main():
    flavour, *languages = sys.argv[1:]
    name, tried = flavour, []
    try:
        name = archive_of(flavour)
        check_sum(name)
        with tempfile.TemporaryDirectory() as work:
            subprocess.run(["cmake", "-E", "tar", "xf", os.path.join(PACKAGES, name)], cwd=work, check=True)
            unpacked, = os.listdir(work)
            check_contents(os.path.join(work, unpacked), flavour)
            check_links(os.path.join(work, unpacked))
            with open(os.path.join(work, unpacked, "README.txt"), encoding="utf-8") as file:
                commands = read_commands(file.read())
            server = commands.pop("server", [None])[0]
            if flavour.startswith("wince"):
                check_calls_of_windows_ce(os.path.join(work, unpacked))
                if flavour == "wince-x86":
                    sell_with_stand_ins(os.path.join(work, unpacked))
                    tried.append("C")
            elif not {"C", "C++", "Pascal"} <= set(commands):
                raise Wrong(f"README.txt says nothing of C, C++ or Pascal, but of {list(commands)}")
            else:
                check_till(os.path.join(work, unpacked), flavour)
                if flavour == "linux":
                    check_needs(os.path.join(work, unpacked))
            for language in languages or commands:
                if not languages and not has(words_of(commands[language][0], flavour)[0][0]):
                    continue
                # Each as if it were the first.
                folder = os.path.join(work, "try")
                shutil.copytree(os.path.join(work, unpacked), folder, symlinks=True)
                sell(folder, flavour, commands[language], server)
                shutil.rmtree(folder)
                tried.append(language)
    except Wrong as wrong:
        print(f"{name}: {wrong}")
        return 1
    print(f"{name}: {'sold with ' + ', '.join(tried) if tried else 'looked at'}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
