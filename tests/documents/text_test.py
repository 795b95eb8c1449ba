#!/usr/bin/env python3
"""The documents themselves: links lead somewhere, examples of JSON are valid by their schema."""
import json
import os
import re
import sys
import unittest

import bench
from schemas_test import VALIDATORS

# An example tells its schema behind the word json; these are no documents of lumo's.
OTHER_JSON = ("docs/loyalty_server.md", "docs/register.md", "docs/performance.md", "docs/platforms.md")


def documents():
    for folder, folders, files in os.walk(bench.SOURCE):
        folders[:] = [name for name in folders if not name.startswith(".") and name != "build"]
        for file in files:
            if file.endswith(".md"):
                path = os.path.join(folder, file)
                with open(path, encoding="utf-8") as opened:
                    yield os.path.relpath(path, bench.SOURCE), opened.read()


def anchors(text):
    """As they are made of headings."""
    for heading in re.findall(r"^#+ (.*)$", text, re.M):
        heading = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading).strip().lower()
        yield re.sub(r"[^\w\- ]", "", heading).replace(" ", "-")


class Text(unittest.TestCase):
    def test_every_link_leads_somewhere(self):
        texts = dict(documents())
        self.assertIn("README.md", texts)
        for name, text in texts.items():
            text = re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S)
            for target in re.findall(r"\]\(([^)\s]+)\)", text):
                if re.match(r"[a-z]+:", target):
                    continue
                path, _, anchor = target.partition("#")
                path = os.path.normpath(os.path.join(os.path.dirname(name), path)) if path else name
                with self.subTest(name, target=target):
                    self.assertTrue(os.path.exists(os.path.join(bench.SOURCE, path)))
                    if anchor:
                        self.assertIn(anchor, list(anchors(texts[path])))

    # The formatter joins the lines of a comment of which one is too long.
    def test_no_table_of_the_header_was_torn(self):
        with open(os.path.join(bench.SOURCE, "include", "lumo.h"), encoding="utf-8") as file:
            for line in file:
                self.assertNotRegex(line, r"^ \* {1,4}\S.*[.,a-z] [A-Z]\w+ {3,}\S")

    def test_the_picture_of_the_layers_is_the_list_that_is_held(self):
        with open(os.path.join(bench.SOURCE, "tests", "architecture", "layers_test.cpp"), encoding="utf-8") as file:
            rows = re.findall(r'^    \{"(\w+)", \{(.*?)\}\},$', file.read(), re.M)
        held = {(layer, below) for layer, list_ in rows for below in re.findall(r'"(\w+)"', list_)}
        inside = {layer for layer in os.listdir(os.path.join(bench.SOURCE, "src"))}
        held = {(layer, below) for layer, below in held if {layer, below} <= inside}
        picture = re.findall(r"^```mermaid\n(.*?)^```$", dict(documents())["src/README.md"], re.M | re.S)[0]
        self.assertEqual(set(re.findall(r"^ +(\w+) --> (\w+)$", picture, re.M)), held)

    def test_every_example_of_json_is_valid(self):
        tried = set()
        for name, text in documents():
            for schema, example in re.findall(r"^```json ?(\w*)\n(.*?)^```$", text, re.M | re.S):
                if name in OTHER_JSON:
                    continue
                with self.subTest(name, example=example[:60]):
                    self.assertIn(schema, sorted(VALIDATORS))
                    for document in example.split("\n") if schema == "record" else [example]:
                        if document:
                            errors = [error.message for error in VALIDATORS[schema].iter_errors(json.loads(document))]
                            self.assertEqual(errors, [])
                    tried.add(schema)
        self.assertEqual(tried, {"request", "answer", "record", "config", "state", "bill", "return_list"})

    def test_the_settings_of_the_packages_are_valid(self):
        with open(os.path.join(bench.SOURCE, "packaging", "CONFIG.JSN"), encoding="utf-8") as file:
            self.assertEqual([error.message for error in VALIDATORS["config"].iter_errors(json.load(file))], [])

    def test_the_protocol_tells_every_member_with_its_type(self):
        text = re.sub(r"^```.*?^```$", "", dict(documents())["docs/protocol.md"], flags=re.M | re.S)
        told = {}
        for line in text.split("\n"):
            if row := re.match(r"\| (`\w+`(?:(?:, |\.)`\w+`)*) \| (\w+) \|", line):
                told.update({member: row[2] for member in re.findall(r"\w+", row[1])})
            told.update(re.findall(r"one member, `(\w+)`(?: \(|: an )(\w+)", line))
        kinds = {"text": "string", "time": "string", "number": "integer", "amount": "integer", "boolean": "boolean",
                 "array": "array"}
        with open(os.path.join(bench.SOURCE, "docs", "schemas", "parts.json"), encoding="utf-8") as file:
            parts = json.load(file)["$defs"]

        def members(schema):
            for name, member in schema.get("properties", {}).items():
                while "$ref" in member:
                    member = parts[member["$ref"].rpartition("/")[2]]
                kind = member.get("type", "string" if "enum" in member else None)
                if kind != "object":
                    yield name, kind
                yield from members(member)
                yield from members(member.get("items", {}))

        found = {}
        for part in parts.values():
            found.update(members(part))
        self.assertGreater(len(found), 50)
        self.assertEqual({name: kinds.get(told.get(name)) for name in found}, found)

    def test_the_length_of_the_request_that_is_shown_is_its_own(self):
        text = dict(documents())["docs/protocol.md"]
        deposit = next(json.loads(example) for example in re.findall(r"^```json request\n(.*?)^```$", text, re.M | re.S)
                       if "putDepositRequest" in example)
        compact = json.dumps(deposit, ensure_ascii=False, separators=(",", ":")).encode()
        self.assertEqual(re.findall(r"^    Content-Length: (\d+)$", text, re.M), [str(len(compact))])

    def test_the_protocol_shows_every_request_and_answer(self):
        text = dict(documents())["docs/protocol.md"]
        for schema in ("request", "answer"):
            shown = {next(iter(json.loads(example)))
                     for example in re.findall(rf"^```json {schema}\n(.*?)^```$", text, re.M | re.S)}
            known = set(VALIDATORS[schema].schema["properties"])
            # Like those of the payment.
            self.assertEqual(known - shown, {f"putPaymentAndConfirm{'Request' if schema == 'request' else 'Response'}"})


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
