"""Packs lumo.py for pip, with Python alone: the machine of a shop reaches no index to fetch a builder of packages from.

pip makes the two calls below (PEP 517). What they pack is told by pyproject.toml.
"""
import base64
import hashlib
import io
import os
import re
import tarfile
import zipfile

SOURCES = ("pyproject.toml", "backend.py", "lumo.py")


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    """Writes the package that is installed into the folder; returns its name."""
    stem, metadata = _project()
    information = f"{stem}.dist-info"
    files = {
        "lumo.py": _read("lumo.py"),
        f"{information}/METADATA": metadata,
        f"{information}/WHEEL": b"Wheel-Version: 1.0\nGenerator: lumo\nRoot-Is-Purelib: true\nTag: py3-none-any\n",
    }
    record = [f"{path},sha256={_digest(content)},{len(content)}\n" for path, content in files.items()]
    files[f"{information}/RECORD"] = "".join([*record, f"{information}/RECORD,,\n"]).encode()
    name = f"{stem}-py3-none-any.whl"
    with zipfile.ZipFile(os.path.join(wheel_directory, name), "w") as wheel:
        for path, content in files.items():
            wheel.writestr(zipfile.ZipInfo(path), content, zipfile.ZIP_DEFLATED)
    return name


def build_sdist(sdist_directory, config_settings=None):
    """Writes the sources, as they are handed on, into the folder; returns the archive's name."""
    stem, metadata = _project()
    name = f"{stem}.tar.gz"
    with tarfile.open(os.path.join(sdist_directory, name), "w:gz", format=tarfile.PAX_FORMAT) as archive:
        for path, content in [("PKG-INFO", metadata), *((path, _read(path)) for path in SOURCES)]:
            entry = tarfile.TarInfo(f"{stem}/{path}")
            entry.size = len(content)
            archive.addfile(entry, io.BytesIO(content))
    return name


def _project():
    """The names' common beginning, and what a package tells of itself."""
    told = dict(re.findall(r'^([\w-]+) = "(.*)"$', _read("pyproject.toml").decode(), re.M))
    metadata = (f"Metadata-Version: 2.1\nName: {told['name']}\nVersion: {told['version']}\nSummary: {told['description']}\n"
                f"License: MIT\nRequires-Python: {told['requires-python']}\n")
    return f"{told['name']}-{told['version']}", metadata.encode()


def _read(path):
    with open(path, "rb") as file:
        return file.read()


def _digest(content):
    return base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
