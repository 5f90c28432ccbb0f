"""Holds the table in docs/operations.md of what the plug-in throws and logs to its sources.

usage: operations_page_test.py PROJECT
"""

import pathlib
import re
import sys
import unittest

PROJECT = pathlib.Path(sys.argv[1])
FOLDERS = ("model", "mongo", "redis", "redisclient", "plugin")
# What a text of ours is given to: thrown, logged, or handed to what throws it.
STATEMENT = re.compile(r"(?:\bthrow\b|\brefuse\(|\breturn refuse\(|ReplyError\(|\bwaitFor\(|"
                       r"\bqWarning\(|\bqDebug\(|\blog\.write\(|\breturn \")[^;]*;")
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')


def words(text):
    """The parts of a text that are always the same, without what stands at their ends."""
    parts = (" ".join(part.split()).strip(' :"') for part in re.split(r"…|: |%[1s]m?s?|\bNm?s?\b", text))
    return {part for part in parts if re.search("[a-z]{4}", part) and "." not in part}


def texts_of_sources():
    texts = set()
    for file in sorted(file for folder in FOLDERS for file in (PROJECT / folder).rglob("*.[ch]*")):
        source = re.sub(r"^\s*(//|#include).*", "", file.read_text(encoding="utf-8"),
                        flags=re.MULTILINE)
        for statement in STATEMENT.findall(source):
            for literal in LITERAL.findall(re.sub(r'"\s+"', "", statement)):
                texts |= words(literal.replace('\\"', '"'))
    return texts


def texts_of_page():
    page = (PROJECT / "docs/operations.md").read_text(encoding="utf-8")
    section = page.split("### Of the plug-in itself")[1].split("\n#")[0]
    cells = re.findall(r"^\| (`.*?) \|", section, re.MULTILINE)
    return {text for cell in cells for code in re.findall(r"`([^`]*)`", cell)
            for text in words(code)}


class OperationsPage(unittest.TestCase):
    def test_has_every_text_of_the_sources(self):
        texts = texts_of_sources()
        self.assertGreater(len(texts), 40)
        self.assertEqual(sorted(texts - texts_of_page()), [])

    def test_has_no_text_that_the_sources_lack(self):
        self.assertEqual(sorted(texts_of_page() - texts_of_sources()), [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
