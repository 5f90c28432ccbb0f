"""Runs the host that README.md shows and looks for its message in the database.

usage: readme_host_mongotest.py HOST…, a command, with MONGODB_URL in the environment
"""

import os
import subprocess
import sys
import unittest

import bson
import pymongo

HOST = sys.argv[1:]
URL = os.environ["MONGODB_URL"]
DEVICE = 1_907_242_113  # no other test's
DATABASE = "kelvrostorage"


class ReadmeHost(unittest.TestCase):
    def setUp(self):
        self.client = pymongo.MongoClient(URL)
        self.addCleanup(self.client.close)
        self.messages = self.client[DATABASE]["ul_messages"]
        # A database that was not there before the test is not to be there after it.
        if DATABASE in self.client.list_database_names():
            self.addCleanup(self.messages.delete_many, {"modem_id": DEVICE})
        else:
            self.addCleanup(self.client.drop_database, DATABASE)

    def test_stores_a_message_and_reads_it_back(self):
        result = subprocess.run(
            [*HOST, str(DEVICE)], capture_output=True, encoding="utf-8", timeout=60
        )
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout, f"{DEVICE}: reading 2c0a\n")
        (stored,) = self.messages.find({"modem_id": DEVICE})
        self.assertEqual(stored["payload"], "2c0a")
        self.assertEqual(stored["tag"], "reading")
        self.assertIsInstance(stored["timestamp"], bson.Int64)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
