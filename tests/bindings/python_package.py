#!/usr/bin/env python3
"""Packs the Python binding as pip does, and looks at what would be installed.

    python_package.py FOLDER_OF_THE_BINDING VERSION
"""
import base64
import csv
import hashlib
import importlib.util
import io
import os
import sys
import tarfile
import tempfile
import unittest
import zipfile

FOLDER, VERSION = sys.argv[1:]


def load(name):
    spec = importlib.util.spec_from_file_location(name, os.path.join(FOLDER, f"{name}.py"))
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        sys.dont_write_bytecode = True
        # pip makes its calls from the folder that it packs.
        os.chdir(FOLDER)
        cls.backend = load("backend")

    def wheel(self):
        with tempfile.TemporaryDirectory() as folder:
            name = self.backend.build_wheel(folder)
            self.assertEqual(os.listdir(folder), [name])
            with open(os.path.join(folder, name), "rb") as file:
                return name, file.read()

    def files(self):
        with zipfile.ZipFile(io.BytesIO(self.wheel()[1])) as wheel:
            return {name: wheel.read(name) for name in wheel.namelist()}

    def test_the_name_says_version_and_any_python(self):
        self.assertEqual(self.wheel()[0], f"lumo-{VERSION}-py3-none-any.whl")

    def test_it_holds_the_module_and_what_pip_needs(self):
        self.assertEqual(sorted(self.files()), sorted(["lumo.py", *(f"lumo-{VERSION}.dist-info/{name}"
                                                                    for name in ("METADATA", "WHEEL", "RECORD"))]))
        with open("lumo.py", "rb") as file:
            self.assertEqual(self.files()["lumo.py"], file.read())

    def test_it_tells_what_it_is(self):
        self.assertEqual(self.files()[f"lumo-{VERSION}.dist-info/METADATA"].decode(),
                         f"Metadata-Version: 2.1\nName: lumo\nVersion: {VERSION}\n"
                         "Summary: The lumo library for Python: a retail loyalty programme for a cash register\n"
                         "License: MIT\nRequires-Python: >=3.7\n")
        self.assertEqual(self.files()[f"lumo-{VERSION}.dist-info/WHEEL"].decode().split("\n")[0], "Wheel-Version: 1.0")
        self.assertEqual(load("lumo").__version__, VERSION)

    def test_the_record_lists_every_file_with_its_sum(self):
        files = self.files()
        record = files[f"lumo-{VERSION}.dist-info/RECORD"].decode()
        listed = {path: (digest, size) for path, digest, size in csv.reader(io.StringIO(record))}
        expected = {path: ("sha256=" + base64.urlsafe_b64encode(hashlib.sha256(content).digest()).decode().strip("="),
                           str(len(content))) for path, content in files.items()}
        expected[f"lumo-{VERSION}.dist-info/RECORD"] = ("", "")
        self.assertEqual(listed, expected)

    def test_twice_is_the_same(self):
        self.assertEqual(self.wheel(), self.wheel())

    def test_the_sources_are_all_that_it_is_packed_from(self):
        with tempfile.TemporaryDirectory() as folder:
            name = self.backend.build_sdist(folder)
            self.assertEqual(name, f"lumo-{VERSION}.tar.gz")
            with tarfile.open(os.path.join(folder, name)) as archive:
                names = archive.getnames()
        ours = [name for name in os.listdir(".") if not name.startswith("__")]
        self.assertEqual(sorted(names), sorted(f"lumo-{VERSION}/{name}" for name in ["PKG-INFO", *ours]))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
