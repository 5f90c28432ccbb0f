"""Holds docs/contract.md to what kelvro-contract tries and to the interfaces' headers.

usage: contract_page_test.py KELVRO-CONTRACT PROJECT
"""

import pathlib
import re
import subprocess
import sys
import unittest

KIT, PROJECT = sys.argv[1], pathlib.Path(sys.argv[2])


def rows(page, columns):
    """The cells of all table rows with so many columns, without the backquotes."""
    pattern = r"^\| " + r" \| ".join([r"([^|\n]*)"] * columns) + r" \|$"
    return [
        tuple(cell.strip().strip("`") for cell in row)
        for row in re.findall(pattern, page, re.MULTILINE)
    ]


class ContractPage(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.page = (PROJECT / "docs/contract.md").read_text(encoding="utf-8")

    def test_has_the_rules_that_the_program_lists(self):
        listed = subprocess.run(
            [KIT, "--list"], capture_output=True, encoding="utf-8", check=True
        ).stdout.splitlines()
        rules = [tuple(line.split(maxsplit=1)) for line in listed]
        self.assertGreater(len(rules), 100)
        documented = [row for row in rows(self.page, 2) if re.fullmatch(r"[a-z-]+\.[a-z0-9-]+", row[0])]
        self.assertEqual(documented, rules)

    def test_has_the_slots_of_the_headers(self):
        documented = {}
        for section in re.split(r"^### ", self.page, flags=re.MULTILINE)[1:]:
            name = section.split("`")[1]
            slots = [row for row in rows(section, 3) if row[0].isdigit()]
            if name.startswith("interfaces::"):
                documented[name.removeprefix("interfaces::")] = slots
        for file in sorted((PROJECT / "interfaces").glob("i*.h")):
            text = re.sub(r"///.*", "", file.read_text(encoding="utf-8"))
            interface, base, body = re.search(
                r"^class (\w+)(?: : public (\w+))? \{(.*?)^\};", text, re.DOTALL | re.MULTILINE
            ).groups()
            operations = re.findall(r"virtual [^;]*?(\w+)\([^;]*= 0;", body)
            # The two entries of a virtual destructor, then the base's slots.
            entries = 2 if base or f"virtual ~{interface}" in body else 0
            first = 5 if base else 1
            expected = [
                (str(slot), str(entries + slot - 1), operation)
                for slot, operation in enumerate(operations, first)
            ]
            with self.subTest(interface):
                self.assertEqual(documented[interface], expected)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
