#!/usr/bin/env python3
"""Takes the program out of a document: the ```c block of README.md, or "A SALE" of lumo.h.

snippet.py DOCUMENT OUTPUT"""
import re
import sys

document, output = sys.argv[1:]
text = open(document, encoding="utf-8").read()
if document.endswith(".md"):
    blocks = re.findall(r"^```c\n(.*?)^```$", text, re.M | re.S)
else:
    section = text.split("\n * A SALE\n")[1].split("\n * TALKING TO THE SERVER\n")[0]
    code = [line[len(" *     "):] for line in section.split("\n") if line.startswith(" *     ")]
    blocks = ["#include <string.h>\n#include \"lumo.h\"\n" + "\n".join(code) + "\n"]
if len(blocks) != 1:
    sys.exit(f"{document}: {len(blocks)} programs instead of one")
# The line numbers of the compiler's messages are those of this copy.
open(output, "w", encoding="utf-8").write(blocks[0])
