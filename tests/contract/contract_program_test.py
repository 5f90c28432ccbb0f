"""What kelvro-contract tells of itself, and where it looks if it is not told where.

usage: contract_program_test.py KELVRO-CONTRACT VERSION
"""

import re
import subprocess
import sys
import tempfile
import unittest

KIT, VERSION = sys.argv[1:3]


def run(*command, **options):
    return subprocess.run(command, capture_output=True, encoding="utf-8", timeout=60, **options)


class ContractProgram(unittest.TestCase):
    def printed(self, *arguments):
        result = run(KIT, *arguments)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout

    def options(self):
        """As --help has them."""
        found = re.findall(r"^ .*?(--[a-z-]+)\b", self.printed("--help"), re.MULTILINE)
        self.assertGreater(len(found), 10)
        return found

    def test_tells_its_version(self):
        self.assertEqual(self.printed("--version"), VERSION + "\n")

    def test_has_a_manual_page_that_a_lint_accepts(self):
        findings = run("mandoc", "-T", "lint", "-W", "warning", input=self.printed("--manual"))
        for finding in (findings.stdout + findings.stderr).splitlines():
            # A date would change with every build.
            self.assertIn("missing date", finding)

    def test_tells_of_its_options_in_the_manual_page(self):
        page = run("mandoc", "-T", "ascii", input=self.printed("--manual")).stdout
        text = re.sub(".\b", "", page)
        listed = text[text.index("\nOPTIONS\n"):text.index("\nEXIT STATUS\n")]
        found = re.findall(r"^       (?:-h, )?(--[a-z-]+)\b", listed, re.MULTILINE)
        self.assertEqual(found, self.options())
        for line in (f"kelvro-contract {VERSION}", "       KELVRO_SETTINGS\n",
                     "       kelvro-contract --plugin libmydriver.so --settings settings.json\n"):
            self.assertIn(line, text)

    def offered(self, *words):
        """What a shell offers after these words, of which the last one may not be complete."""
        script = self.printed("--completion") + (
            'COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kelvro_contract; '
            "printf '%s\\n' \"${COMPREPLY[@]}\""
        )
        with tempfile.TemporaryDirectory() as folder:
            open(f"{folder}/driver.so", "wb").close()
            result = run("bash", "-c", script, "bash", "kelvro-contract", *words, cwd=folder)
        self.assertEqual(result.stderr, "")
        return result.stdout.split()

    def test_completes_its_words(self):
        self.assertEqual(self.offered("--"), ["--help", *self.options()[1:]])
        self.assertEqual(self.offered("--plugin", "dri"), ["driver.so"])
        self.assertEqual(self.offered("--settings", "dri"), ["driver.so"])
        self.assertEqual(self.offered("--only", ""), [])

    def test_says_that_the_output_could_not_be_written(self):
        for option in ("--list", "--manual", "--completion", "--help", "--version"):
            with open("/dev/full", "wb") as full:
                result = subprocess.run(
                    [KIT, option], stdout=full, stderr=subprocess.PIPE, encoding="utf-8", timeout=60
                )
            self.assertEqual(result.returncode, 1, option)
            self.assertIn("cannot write the output", result.stderr)

    def test_says_that_nothing_names_a_server(self):
        with tempfile.TemporaryDirectory() as home:
            result = run(KIT, env={"HOME": home})
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertIn(f"nor a file {home}/.config/kelvrostorage/settings.json", result.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
