"""Runs kelvro-contract with the plug-in, which keeps all rules, and with drivers that have a fault.

usage: contract_kit_mongotest.py KELVRO-CONTRACT PLUGIN BROKEN-PLUGIN MISLABELLED-PLUGIN,
with MONGODB_URL and REDIS_URL in the environment
"""

import concurrent.futures
import json
import os
import pathlib
import random
import re
import socket
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

import pymongo

KIT, PLUGIN, BROKEN_PLUGIN, MISLABELLED_PLUGIN = sys.argv[1:5]
MONGO = os.environ["MONGODB_URL"]
REDIS = urllib.parse.urlsplit(os.environ["REDIS_URL"])
COUNTS = re.compile(r"(\d+) passed, (\d+) failed, (\d+) not applicable")

# What only a driver that stores elsewhere, or the caller, could make applicable.
NOT_APPLICABLE = {"clients.registered", "queues.durable-copy", "states.durable-copy"}

# What the drivers do wrong (broken_plugin.cpp) and the rules that say so.
FAULTS = {
    "adopts the parent": {"objects.parent"},
    "changes a member": {"events.equal", "events.texts", "events.json"},
    "crashes": {"uplinks.protocol", "uplinks.slots"},
    "deletes other tags": {"values.delete"},
    "excludes the end of a period": {"downlinks.period"},
    "gives a null pointer": {"events.empty", "events.log"},
    "gives a state's numbers as ints": {"states.numbers"},
    "gives no object": {"objects.settings"},
    "gives numbers as ints": {"values.narrowed", "values.numbers"},
    "gives the oldest first": {"events.newest-first"},
    "keeps an object": {"objects.owner"},
    "logs nothing": {"downlinks.log", "events.log", "uplinks.log", "values.log"},
    "loses a record": {"values.no-limit"},
    "moves a repository": {"objects.repositories", "objects.slots"},
    "none": set(),
    "persists nothing": {
        "queues.states", "states.delete-devices", "states.json", "states.push-durably",
    },
    "swallows an exception": {"uplinks.once"},
    "talks": set(),
    "throws something else": {
        "downlinks.invalid-id", "downlinks.not-exist", "downlinks.status-unknown",
    },
}


def redis(*words):
    """Sends one command of plain words to the database of the client registry."""
    with socket.create_connection((REDIS.hostname, REDIS.port or 6379)) as connection:
        login = [("AUTH", urllib.parse.unquote(REDIS.password))] if REDIS.password else []
        for command in (*login, ("SELECT", "2"), words):
            connection.sendall(" ".join(command).encode() + b"\r\n")
            assert not connection.recv(4096).startswith(b"-"), command


class ContractKit(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        client = pymongo.MongoClient(MONGO)
        self.addCleanup(client.close)
        self.database = client["kelvrostorage"]
        server = {"host": REDIS.hostname, "port": REDIS.port or 6379}
        if REDIS.password:
            server["auth"] = urllib.parse.unquote(REDIS.password)
        self.settings = self.write(url=MONGO, redis=server)
        # Of nobody else, also if an earlier run was killed.
        self.first_device = random.randrange(1_000_000_000, 2_000_000_000)

    def write(self, **settings):
        file = self.folder / f"settings{len(list(self.folder.iterdir()))}.json"
        file.write_text(json.dumps(settings), encoding="utf-8")
        return file

    def run_kit(self, *arguments, **environment):
        return subprocess.run(
            [KIT, *map(str, arguments)], capture_output=True, encoding="utf-8", timeout=300,
            env={**os.environ, "KELVRO_REAL_PLUGIN": PLUGIN, **environment},
        )

    def kit(self, *arguments, plugin=PLUGIN, settings=None, devices=None, **environment):
        return self.run_kit(
            "--plugin", plugin, "--settings", settings or self.settings,
            "--devices", devices or self.first_device, *arguments, **environment,
        )

    def results(self, *arguments, **options):
        """The rules by what became of them, and their lines."""
        result = self.kit("--json", *arguments, **options)
        *rules, counts = map(json.loads, result.stdout.splitlines())
        by_result = {"passed": set(), "failed": set(), "not applicable": set()}
        for rule in rules:
            by_result[rule["result"]].add(rule["rule"])
        self.assertEqual(counts, {name: len(names) for name, names in by_result.items()})
        self.assertEqual(result.returncode, 1 if by_result["failed"] else 0, result.stderr)
        return by_result, {rule["rule"]: rule for rule in rules}

    def expect_failure(self, result, *texts):
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        for text in texts:
            self.assertIn(text, result.stderr)

    def stored(self):
        """How many documents there are of the devices that the program works with."""
        devices = {"$gte": self.first_device, "$lt": self.first_device + 1000}
        records = ("ul_messages", "dl_messages", "eav_values", "eav_events")
        return sum(
            [self.database[name].count_documents({"modem_id": devices}) for name in records]
            + [self.database[name].count_documents({"_id": devices}) for name in ("states", "dl_queues")]
        )

    def test_passes_the_plugin_and_leaves_nothing(self):
        result = self.kit()
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        *lines, counts = result.stdout.splitlines()
        self.assertEqual({line.split()[2] for line in lines if not line.startswith("passed ")},
                         NOT_APPLICABLE)
        passed = len(lines) - len(NOT_APPLICABLE)
        self.assertEqual(counts, f"{passed} passed, 0 failed, 3 not applicable")
        self.assertGreater(passed, 100)
        self.assertEqual(result.stderr, "")
        self.assertEqual(self.stored(), 0)
        # What is left in Redis would be refused now.
        self.assertEqual(self.kit("--only", r"^(states|queues)\.empty").returncode, 0)

    def test_finds_each_fault_and_no_other(self):
        def try_with(place, fault):
            # All rules of the interfaces that have the fault.
            groups = {rule.split(".")[0] for rule in FAULTS[fault]} or {"plugin", "uplinks"}
            # Devices of its own, so that two can run at a time.
            found, _ = self.results(
                "--only", f"^({'|'.join(groups)})[.]", plugin=BROKEN_PLUGIN,
                devices=self.first_device + place * 1000, KELVRO_FAULT=fault,
            )
            return fault, found["failed"]

        with concurrent.futures.ThreadPoolExecutor(max_workers=2) as runs:
            found = dict(runs.map(try_with, range(len(FAULTS)), FAULTS))
        self.assertEqual(found, FAULTS)

    def test_says_what_was_expected_and_what_was_seen(self):
        _, rules = self.results(
            "--only", "newest-first", plugin=BROKEN_PLUGIN, KELVRO_FAULT="gives the oldest first"
        )
        rule = rules["events.newest-first"]
        self.assertRegex(rule["expected"], r"^the answer is records 4 3 2 1 of device \d+$")
        self.assertRegex(rule["seen"], r"^records 1 2 3 4 of device \d+$")
        line = next(
            line
            for line in self.kit(
                "--only", "newest-first", plugin=BROKEN_PLUGIN, KELVRO_FAULT="gives the oldest first"
            ).stdout.splitlines()
            if line.startswith("failed ")
        )
        self.assertIn(f"| expected: {rule['expected']} | seen: {rule['seen']}", line)

    def test_goes_on_after_a_crash(self):
        found, rules = self.results(
            "--only", "^uplinks", plugin=BROKEN_PLUGIN, KELVRO_FAULT="crashes"
        )
        self.assertEqual(found["failed"], FAULTS["crashes"])
        self.assertIn("signal 6", rules["uplinks.protocol"]["seen"])
        self.assertIn("uplinks.log", found["passed"])

    def test_goes_on_after_a_rule_that_hangs(self):
        found, rules = self.results(
            "--only", "^values.first-last", "--time-limit", 5,
            plugin=BROKEN_PLUGIN, KELVRO_FAULT="hangs",
        )
        self.assertEqual(found["failed"], {"values.first-last-codes"})
        self.assertEqual(rules["values.first-last-codes"]["seen"], "none: it hangs")
        self.assertEqual(len(found["passed"]), 4)

    def test_names_what_a_driver_throws_when_it_is_loaded(self):
        found, rules = self.results(plugin=BROKEN_PLUGIN, KELVRO_FAULT="throws when it is loaded")
        self.assertEqual(found["passed"], {"plugin.metadata", "plugin.symbols"})
        for rule in found["failed"]:
            self.assertIn("this driver does not feel well", rules[rule]["seen"])

    def test_tells_a_driver_of_another_interface(self):
        found, rules = self.results("--only", "^plugin", plugin=MISLABELLED_PLUGIN)
        self.assertIn("plugin.metadata", found["failed"])
        self.assertEqual(rules["plugin.metadata"]["seen"], '"org.example.storage"')

    def test_fails_every_rule_with_a_file_that_is_no_plugin(self):
        found, _ = self.results("--only", "^(plugin|uplinks)", plugin=self.settings)
        self.assertEqual(found["passed"], set())

    def test_names_a_plugin_file_that_is_missing(self):
        self.expect_failure(self.kit(plugin="/nonexistent.so"), "/nonexistent.so")

    def test_stores_nothing_where_a_server_cannot_be_reached(self):
        settings = self.write(
            url="mongodb://127.0.0.1:1/?serverSelectionTimeoutMS=300", redis={"port": 1}
        )
        found, rules = self.results(settings=settings)
        self.assertFalse(any(name.startswith("uplinks") for name in found["passed"]))
        self.assertIn("No suitable servers", rules["uplinks.equal"]["seen"])
        self.assertIn("127.0.0.1:1", rules["clients.unknown"]["seen"])
        self.assertIn("plugin.factory", found["passed"])

    def test_knows_a_registered_device_when_it_is_named(self):
        device = str(self.first_device)
        redis("SADD", "dev:clients:" + device, "supplier")
        self.addCleanup(redis, "DEL", "dev:clients:" + device)
        found, _ = self.results("--only", "^clients", "--registered", device)
        self.assertIn("clients.registered", found["passed"] | found["failed"])
        found, _ = self.results("--only", "^clients", "--registered", self.first_device + 999)
        self.assertEqual(found["failed"], {"clients.registered"})

    def test_does_not_touch_devices_that_have_records(self):
        device = self.first_device + 999
        places = [rule.split()[0] for rule in self.run_kit("--list").stdout.splitlines()]
        first = device - 4 * places.index("downlinks.equal")
        self.database["dl_messages"].insert_one(
            {"modem_id": device, "timestamp": 1_700_000_000, "api_key": "somebody's"}
        )
        self.addCleanup(self.database["dl_messages"].delete_many, {"modem_id": device})
        result = self.kit("--only", "^(up|down)links", devices=first)
        self.expect_failure(result, f"device {device} ", "--devices", "--yes")
        self.assertEqual(result.stdout, "")
        self.assertEqual(self.database["dl_messages"].count_documents({"modem_id": device}), 1)
        # Those that are not worked with may have whatever they have.
        self.results("--only", "downlinks.period", devices=first)
        self.assertEqual(self.database["dl_messages"].count_documents({"modem_id": device}), 1)

        found, _ = self.results("--only", "downlinks.equal", "--yes", devices=first)
        self.assertEqual(found["passed"], {"downlinks.equal"})
        self.assertEqual(self.database["dl_messages"].count_documents({"modem_id": device}), 0)

    def test_finds_the_installed_plugin_and_the_settings_where_the_host_finds_them(self):
        home = self.folder / "home"
        (home / "kelvrostorage").mkdir(parents=True)
        (home / "kelvrostorage" / "settings.json").write_bytes(self.settings.read_bytes())
        for environment in (
            {"KELVRO_SETTINGS": str(self.settings), "MONGODB_URL": ""}, {"KELVRO_SETTINGS": ""},
            {"KELVRO_SETTINGS": "", "MONGODB_URL": "", "XDG_CONFIG_HOME": str(home)},
        ):
            result = self.run_kit(
                "--only", "^(plugin|uplinks)[.]", "--devices", self.first_device, **environment
            )
            self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
            self.assertIn("passed          uplinks.newest-first", result.stdout)
        self.expect_failure(self.run_kit(KELVRO_SETTINGS="/nonexistent"), "/nonexistent")

    def test_names_settings_that_it_cannot_read(self):
        self.expect_failure(self.kit(settings="/nonexistent"), "/nonexistent", "No such file")
        self.expect_failure(self.kit(settings=PLUGIN), PLUGIN, "not JSON")

    def test_tells_wrong_usage_from_failure(self):
        for arguments in (
            ("--nonsense",), ("--list", "--only", "no such rule"), ("--list", "--only", "("),
            ("--list", "--devices", "0"), ("--list", "--devices", "2147483647"),
            ("--list", "--time-limit", "0"),
        ):
            with self.subTest(arguments):
                self.assertEqual(self.run_kit(*arguments).returncode, 2)

    def test_helps_and_lists(self):
        for arguments, text in (("--help", "--plugin"), ("--version", "."),
                                ("--list", "uplinks.newest-first ")):
            result = self.run_kit(arguments)
            self.assertEqual(result.returncode, 0)
            self.assertIn(text, result.stdout)
        listed = [json.loads(line) for line in self.run_kit("--list", "--json").stdout.splitlines()]
        self.assertIn("uplinks.newest-first", [rule["rule"] for rule in listed])
        self.assertNotIn("--task", self.run_kit("--help").stdout)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
