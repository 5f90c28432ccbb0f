"""Runs kelvro-host bench with the real plug-in and real servers, and looks into the databases.

usage: bench_mongotest.py KELVRO-HOST PLUGIN, with MONGODB_URL and REDIS_URL in the environment
"""

import csv
import io
import json
import pathlib
import signal
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent))
from host_program import HOST, PLUGIN, ProgramTest, eventually, main, redis  # noqa: E402

DEVICES = list(range(2_147_480_001, 2_147_480_011))
COLLECTIONS = ("ul_messages", "dl_messages", "eav_values", "eav_events")
OPERATIONS = 27


class Bench(ProgramTest):
    def setUp(self):
        super().setUp()
        self.clear()
        self.addCleanup(self.clear)

    def clear(self):
        for name in COLLECTIONS:
            self.database[name].delete_many({"modem_id": {"$in": DEVICES}})
        for name in ("states", "dl_queues"):
            self.database[name].delete_many({"_id": {"$in": DEVICES}})

    def stored(self):
        count = {name: self.database[name].count_documents({"modem_id": {"$in": DEVICES}})
                 for name in COLLECTIONS}
        for name in ("states", "dl_queues"):
            count[name] = self.database[name].count_documents({"_id": {"$in": DEVICES}})
        return {name: number for name, number in count.items() if number}

    def redis_keys(self):
        return [
            key for database, pattern in ((0, "kelvro-host-bench:*"), (7, "21474800*"))
            for key in redis(database, "--scan", "--pattern", pattern).split()
        ]

    def command(self, *arguments):
        return [HOST, "bench", "--plugin", PLUGIN, *arguments]

    def bench(self, *arguments, **environment):
        return self.run_program(self.command(*arguments), **environment)

    def expect_nothing_left(self):
        self.assertEqual(self.stored(), {})
        self.assertEqual(self.redis_keys(), [])

    def test_measures_every_operation_and_leaves_nothing(self):
        result = self.bench("--yes", "--secs", 3, "--json")
        self.assertEqual(result.returncode, 0, result.stderr)
        rows = [json.loads(line) for line in result.stdout.splitlines()]
        self.assertEqual(len(rows), OPERATIONS)
        self.assertEqual({row["store"] for row in rows},
                         {"uplinks", "commands", "values", "events", "states", "queues", "clients"})
        for row in rows:
            self.assertGreater(row["calls"], 0)
            self.assertGreater(row["records"], 0, row)
            self.assertGreater(row["median_ms"], 0)
            self.assertGreaterEqual(row["p99_ms"], row["median_ms"])
        self.expect_nothing_left()

    def test_gives_a_table_and_csv(self):
        table = self.bench("--yes", "--secs", 1)
        self.assertEqual(table.returncode, 0, table.stderr)
        self.assertIn("SaveMessage", table.stdout)
        self.assertIn("Median ms", table.stdout)
        rows = list(csv.DictReader(io.StringIO(self.bench("--yes", "--secs", 1, "--csv").stdout)))
        self.assertEqual(len(rows), OPERATIONS)
        self.assertEqual(rows[0]["operation"], "SaveMessage")

    def test_wants_to_be_allowed_to(self):
        result = self.bench()
        self.assertEqual(result.returncode, 2)
        for text in ("kelvrostorage", "2147480001 to 2147480010", "--yes"):
            self.assertIn(text, result.stderr)
        self.assertEqual(result.stdout, "")

    def test_leaves_records_of_others_alone(self):
        for name, record in (
            ("eav_events", {"modem_id": DEVICES[0], "timestamp": 5, "message_id": "", "event_code": 1,
                            "message": "m", "parameter": 0, "extended_data": {}}),
            ("states", {"_id": DEVICES[9], "state": {"a": 1}}),
        ):
            with self.subTest(name):
                self.clear()
                self.database[name].insert_one(record)
                result = self.bench("--yes", "--secs", 1)
                self.assertEqual(result.returncode, 1)
                self.assertIn(f"{name.removeprefix('eav_')} of the devices", result.stderr)
                self.assertEqual(self.stored(), {name: 1})

    def test_leaves_nothing_when_it_is_interrupted(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            process = self.start_program(self.command("--yes", "--secs", 6000, "--json"))
            eventually(self.stored, "records")
            process.send_signal(number)
            output, errors = process.communicate(timeout=60)
            self.assertEqual(process.returncode, 1, errors)
            self.assertEqual(json.loads(output.splitlines()[0])["operation"], "SaveMessage")
            self.expect_nothing_left()

    def test_removes_what_one_that_was_killed_has_left(self):
        process = self.start_program(self.command("--yes", "--secs", 600))
        eventually(self.stored, "records")
        process.kill()
        process.wait(timeout=60)
        self.assertNotEqual(self.stored(), {})
        self.assertEqual(self.bench("--yes", "--secs", 1).returncode, 0)
        self.expect_nothing_left()

    def test_names_the_server_that_is_missing(self):
        result = self.bench("--yes", REDIS_URL="redis://:secret@127.0.0.1:1")
        self.assertEqual(result.returncode, 1)
        self.assertIn("127.0.0.1:1", result.stderr)
        self.assertNotIn("secret", result.stderr)


if __name__ == "__main__":
    main()
