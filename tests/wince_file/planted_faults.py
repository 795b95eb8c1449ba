#!/usr/bin/env python3
"""Plants faults into copies of the library files and programs of Windows and Windows CE; script/windows-check has to name each.

    planted_faults.py FLAVOUR...      the files are those of build/FLAVOUR
"""
import concurrent.futures
import os
import struct
import subprocess
import sys
import tempfile

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
WORD, HALF = "<I", "<H"
# Of the optional header of a 32-bit file: where the tables of the file begin, and which is which.
TABLES, EXPORTS, IMPORTS, RELOCATIONS, THREAD_DATA = 96, 0, 1, 5, 9


class File:
    """A program file, and the ELF image that it was made of when it is for Windows CE."""

    def __init__(self, path):
        with open(path, "rb") as file:
            self.bytes = bytearray(file.read())
        self.elf = None
        if os.path.exists(path + ".elf"):
            with open(path + ".elf", "rb") as file:
                self.elf = bytearray(file.read())
        self.header = self.get(0x3C)
        self.optional = self.header + 24
        wide = self.get(self.optional, HALF) == 0x20B
        self.tables = self.optional + TABLES + (16 if wide else 0)
        table = self.optional + self.get(self.header + 20, HALF)
        count = self.get(self.header + 6, HALF)
        self.sections = [struct.unpack_from("<IIII", self.bytes, table + 40 * i + 8) for i in range(count)]
        self.last_section = table + 40 * (count - 1)

    def get(self, at, kind=WORD):
        return struct.unpack_from(kind, self.bytes, at)[0]

    def put(self, at, number, kind=WORD):
        struct.pack_into(kind, self.bytes, at, number)

    def add(self, at, number, kind=WORD):
        self.put(at, self.get(at, kind) + number, kind)

    def place(self, address):
        """Where an address of the loaded file lies in the file."""
        for _, start, size, offset in self.sections:
            if start <= address < start + size:
                return offset + address - start
        raise ValueError(hex(address))

    def table(self, which):
        return self.place(self.get(self.tables + 8 * which))

    def move(self, at, size):
        """What an address at this place of the file leads to goes behind everything else, off its word."""
        start = self.place(self.get(at))
        _, address, _, offset = struct.unpack_from("<IIII", self.bytes, self.last_section + 8)
        self.put(at, address + len(self.bytes) + 2 - offset)
        self.bytes += bytes(2) + self.bytes[start:start + size]
        self.bytes += bytes(-len(self.bytes) % 0x200)
        for field in (8, 16):
            self.put(self.last_section + field, len(self.bytes) - offset)

    def replace(self, old, new):
        at = self.bytes.find(old)
        if at < 0 or len(old) != len(new):
            raise ValueError(old)
        self.bytes[at:at + len(old)] = new

    def put_code(self, name, code):
        """In place of a function's first instructions, in the file and in its image."""
        symbols = subprocess.run(["llvm-nm-14", "-"], input=bytes(self.elf), stdout=subprocess.PIPE, check=True).stdout
        address = next(int(line.split()[0], 16) for line in symbols.decode().splitlines() if line.split()[-1] == name)
        at = self.place(address - self.get(self.optional + 28))
        old = bytes(self.bytes[at:at + 64])
        if self.elf.count(old) != 1:
            raise ValueError(name)
        where = self.elf.find(old)
        self.bytes[at:at + len(code)] = code
        self.elf[where:where + len(code)] = code

    def add_section(self, name):
        """To the image, as a linker would that places whatever it meets."""
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "image")
            with open(path, "wb") as file:
                file.write(self.elf)
            subprocess.run(["llvm-objcopy-14", f"--add-section={name}=/dev/stdin", path], input=bytes(4), check=True)
            with open(path, "rb") as file:
                self.elf = bytearray(file.read())


def header_faults():
    """What every file may have."""
    yield "another machine", "machine 0x166, not", lambda f: f.put(f.header + 4, 0x166, HALF)
    yield "another subsystem", "subsystem 2, not", lambda f: f.put(f.optional + 68, 2, HALF)
    yield "another version of the system", "for version 10.0 of the system", lambda f: f.put(f.optional + 48, 10)
    yield "no entry point", "has no entry point", lambda f: f.put(f.optional + 16, 0)
    yield "relocations gone", "its relocations are gone", lambda f: f.put(
        f.header + 22, f.get(f.header + 22, HALF) | 1, HALF)
    yield "no relocations", "it has no relocations", lambda f: f.put(f.tables + 8 * RELOCATIONS + 4, 0)
    yield "too large", "bytes, more than", lambda f: f.bytes.extend(bytes(130000 - len(f.bytes)))


def library_faults():
    yield "a program", "is no DLL", lambda f: f.put(f.header + 22, f.get(f.header + 22, HALF) & ~0x2000, HALF)
    yield "another export", "exports (expected <, found >)", lambda f: f.replace(b"\0lumoVersion\0", b"\0lumoVersiom\0")


def windows_faults():
    yield "another version", "has no version resource", lambda f: f.replace(
        "FileVersion".encode("utf-16-le"), "FileVersiom".encode("utf-16-le"))
    yield "an import", "imports what no list names: kernel32.dll SetFilePoimter", lambda f: f.replace(
        b"SetFilePointer\0", b"SetFilePoimter\0")
    yield "a library", "imported libraries", lambda f: f.replace(b"msvcrt.dll\0", b"msvcrx.dll\0")


def first_import(f):
    """Where the first import's name lies."""
    return f.place(f.get(f.place(f.get(f.table(IMPORTS))))) + 2


def wince_faults():
    yield "an import", "imports what no list names: coredll.dll X", lambda f: f.put(first_import(f), ord("X"), "<B")
    yield "a library", "imported libraries", lambda f: f.replace(b"coredll.dll\0", b"coredlx.dll\0")
    yield "thread-local data", "has thread-local data", lambda f: f.put(f.tables + 8 * THREAD_DATA + 4, 24)
    yield "a relocation of another kind", "has relocations of kinds", lambda f: f.put(
        f.table(RELOCATIONS) + 8, f.get(f.table(RELOCATIONS) + 8, HALF) & 0xFFF | 1 << 12, HALF)
    yield "a relocation missing", "is not what wince_file makes of", lambda f: f.put(f.table(RELOCATIONS) + 8, 0, HALF)
    yield "a relocation of another place", "is not what wince_file makes of", lambda f: f.add(
        f.table(RELOCATIONS) + 8, 4, HALF)
    yield "imports off their words", "does not lie on a word", lambda f: f.move(
        f.tables + 8 * IMPORTS, f.get(f.tables + 8 * IMPORTS + 4))
    yield "names of imports off their words", "does not lie on a word", lambda f: f.move(f.table(IMPORTS), 256)
    yield "slots of imports off their words", "does not lie on a word", lambda f: f.move(f.table(IMPORTS) + 16, 256)
    yield "relocations off their words", "does not lie on a word", lambda f: f.move(
        f.tables + 8 * RELOCATIONS, f.get(f.tables + 8 * RELOCATIONS + 4))
    yield "a constructor", "needs start-up code, or has what no terminal knows: .init_array", lambda f: f.add_section(
        ".init_array")
    yield "thread-local sections", "needs start-up code, or has what no terminal knows: .tdata", lambda f: f.add_section(
        ".tdata")


def wince_library_faults():
    yield "exports off their words", "does not lie on a word", lambda f: f.move(f.tables + 8 * EXPORTS, 40)
    yield "functions off their words", "does not lie on a word", lambda f: f.move(f.table(EXPORTS) + 28, 256)
    yield "names of exports off their words", "does not lie on a word", lambda f: f.move(f.table(EXPORTS) + 32, 256)
    yield "numbers of exports off their half words", "do not lie on half words", lambda f: f.add(f.table(EXPORTS) + 36, 1)


# Instructions that the oldest processor of a flavour does not know, and a stack frame of 8192 bytes.
CODE = {
    "wince-x86": {"cmove %ecx, %eax": "0f44c1", "fcomi %st(1), %st": "dbf1", "movups %xmm0, (%eax)": "0f1100"},
    "wince-armv4": {"uxtb r0, r1": "7100efe6", "clz r0, r1": "110f6fe1", "movw r0, #1": "010000e3"},
    "wince-armv7": {"sdiv r0, r1, r2": "91fbf2f0", "vadd.f32 s0, s0, s1": "30ee200a", "lda r0, [r1]": "d1e8af0f"},
}
FRAME = {"wince-x86": "81ec00200000", "wince-armv4": "02da4de2", "wince-armv7": "adf5005d"}


def code_faults(flavour, function):
    for name, code in CODE[flavour].items():
        yield name, "has instructions that not every processor knows", lambda f, code=code: f.put_code(
            function, bytes.fromhex(code))
    yield "a large frame", "has a stack frame of 8", lambda f: f.put_code(function, bytes.fromhex(FRAME[flavour]))


def library(flavour):
    yield from header_faults()
    yield from library_faults()
    if flavour.startswith("windows-"):
        yield from windows_faults()
    else:
        yield from wince_faults()
        yield from wince_library_faults()
        yield from code_faults(flavour, "getRRN")


def program(flavour):
    yield "a library", "is no program", lambda f: f.put(f.header + 22, f.get(f.header + 22, HALF) | 0x2000, HALF)
    if flavour.startswith("wince-"):
        faults = {fault[0]: fault for fault in wince_faults()}
        for name in ("an import", "a relocation missing", "imports off their words", "a constructor"):
            yield faults[name]
        yield next(code_faults(flavour, "LumoCheckEntry"))


def check(flavour, name, file):
    """What script/windows-check says of a file, and its status."""
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, name)
        with open(path, "wb") as out:
            out.write(file.bytes)
        if file.elf is not None:
            with open(path + ".elf", "wb") as out:
                out.write(file.elf)
        done = subprocess.run([os.path.join(SOURCE, "script", "windows-check"), flavour, path],
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False)
        return done.returncode, done.stderr.decode()


def plant(flavour, name, fault):
    """None when the fault is found."""
    what, expected, change = fault
    file = File(os.path.join(SOURCE, "build", flavour, "bin", name))
    change(file)
    status, said = check(flavour, name, file)
    if status != 0 and expected in said:
        return None
    return f"{flavour}, {name}: {what}: status {status}, not \"{expected}\": {said}"


def main():
    tasks = []
    for flavour in sys.argv[1:]:
        for name, faults in (("lumo.dll", library(flavour)), ("lumo_check.exe", program(flavour))):
            status, said = check(flavour, name, File(os.path.join(SOURCE, "build", flavour, "bin", name)))
            if status != 0:
                sys.exit(f"{flavour}, {name}: refused without a fault: {said}")
            tasks += [(flavour, name, fault) for fault in faults]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        missed = [answer for answer in pool.map(lambda task: plant(*task), tasks) if answer]
    for answer in missed:
        print(answer, file=sys.stderr)
    print(f"{len(tasks) - len(missed)} of {len(tasks)} planted faults are found")
    sys.exit(1 if missed or not tasks else 0)


if __name__ == "__main__":
    main()
