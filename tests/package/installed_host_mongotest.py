"""Runs the installed kelvro-host, which was moved after its installation, with what lies beside it.

usage: installed_host_mongotest.py PREFIX, with MONGODB_URL and REDIS_URL in the environment
"""

import pathlib
import subprocess
import sys
import unittest

PREFIX = pathlib.Path(sys.argv[1])
TELEGRAMS = 3


class InstalledHost(unittest.TestCase):
    def demo(self, *arguments):
        result = subprocess.run(
            [PREFIX / "bin/kelvro-host", "demo", "--decoder=shipped", *arguments],
            capture_output=True, encoding="utf-8", timeout=120,
        )
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return result.stdout

    def test_finds_the_plugin_and_the_data_that_are_installed_beside_it(self):
        # Fewer than where they come from has.
        (telegrams,) = PREFIX.rglob("radio_telegrams.ndjson")
        lines = telegrams.read_text(encoding="utf-8").splitlines(keepends=True)
        telegrams.write_text("".join(lines[:TELEGRAMS]), encoding="utf-8")
        self.addCleanup(self.demo, "--clear")
        self.assertIn(f"uplink messages: {TELEGRAMS} read, {TELEGRAMS} stored", self.demo())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
