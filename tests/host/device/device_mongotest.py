"""Works on single devices with kelvro-host: commands, state, queue, clients. See ../host_program.py.

usage: device_mongotest.py KELVRO-HOST PLUGIN
"""

import csv
import datetime
import io
import json
import os
import pathlib
import socket
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent))
from host_program import DEVICE, OTHER, HostTest, main, redis  # noqa: E402
from bson import ObjectId  # noqa: E402

STATE_DB, CLIENT_DB, QUEUE_DB = 0, 2, 7
PREFIX = "kelvro-test:device"
KEY = f"{PREFIX}:{DEVICE}"


class CommandTest(HostTest):
    def stored(self, identity):
        return self.database["dl_messages"].find_one({"_id": ObjectId(identity)})

    def issue(self, *words):
        return self.done("command", "issue", DEVICE, *words).stdout.rstrip("\n")

    def test_issues_a_command_and_prints_its_id(self):
        begun = int(time.time())
        document = self.stored(self.issue(
            "--data", '{"request": "read", "codes": [1, 2.5]}', "--payload", "0aFF", "--api-key",
            "ops", "--timeout", 30, "--ttl", "2h",
        ))
        self.assertTrue(begun <= document["timestamp"] <= time.time())
        kept = document["ttl"] - datetime.datetime.fromtimestamp(
            document["timestamp"], datetime.timezone.utc).replace(tzinfo=None)
        self.assertLess(abs(kept - datetime.timedelta(hours=2)), datetime.timedelta(seconds=2))
        for member in ("_id", "timestamp", "ttl"):
            del document[member]
        self.assertEqual(document, {
            "modem_id": DEVICE, "api_key": "ops", "data": {"request": "read", "codes": [1, 2.5]},
            "status": 0, "timeout": 30, "f_ack": 0, "payload": "0aff",
        })

    def test_keeps_a_command_for_a_week_unless_told_otherwise(self):
        document = self.stored(self.issue("--data", "{}"))
        kept = document["ttl"].replace(tzinfo=datetime.timezone.utc).timestamp()
        self.assertAlmostEqual(kept - document["timestamp"], 7 * 86400, delta=2)

    def test_refuses_a_command_that_is_none(self):
        for wrong in ((), ("--data", "[1]"), ("--data", "{"), ("--data", "{}", "--payload", "abc"),
                      ("--data", "{}", "--payload", "xx"), ("--data", "{}", "--ttl", "soon"),
                      ("--data", "{}", "--timeout", "x")):
            self.fails(2, "command", "issue", DEVICE, *wrong)
        self.assertEqual(self.database["dl_messages"].count_documents({"modem_id": DEVICE}), 0)

    def test_acknowledges_a_command(self):
        first, second = self.issue("--data", "{}"), self.issue("--data", "{}")
        self.assertEqual(self.done("command", "ack", first).stdout, "")
        self.assertEqual(self.stored(first)["status"], 2)
        self.assertEqual(self.stored(second)["status"], 0)

    def test_shows_a_command(self):
        identity = self.issue("--data", '{"request": "read"}', "--payload", "0a")
        record, = self.records("command", "show", identity)
        self.assertEqual(
            (record["db_id"], record["modem_id"], record["status"], record["data"],
             record["payload"]),
            (identity, DEVICE, "PENDING", {"request": "read"}, "0a"),
        )
        table = self.done("command", "show", identity).stdout
        self.assertRegex(table, r"\n db_id +│ " + identity)
        for member in record:
            self.assertIn(f"\n {member} ", table)
        row, = csv.DictReader(
            io.StringIO(self.done("command", "show", identity, "--csv").stdout, newline=""))
        self.assertEqual(set(row), set(record))

    def test_names_the_id_of_a_command_that_is_not_there(self):
        for action in ("ack", "show"):
            self.assertIn(
                '"123" is no id of a command', self.fails(1, "command", action, "123"))
            self.assertIn(
                "no command with the id 0123456789abcdef01234567",
                self.fails(1, "command", action, "0123456789abcdef01234567"),
            )
        self.fails(2, "command", "show")

    def test_lists_what_was_issued(self):
        identity = self.issue("--data", "{}")
        record, = self.records("command", "list", "-d", DEVICE, "--pending", "--since", "1h")
        self.assertEqual(record["db_id"], identity)


class StateTest(HostTest):
    def forget(self):
        super().forget()
        redis(STATE_DB, "DEL", KEY, f"{PREFIX}:{OTHER}", f":{DEVICE}")

    def in_redis(self):
        text = redis(STATE_DB, "GET", KEY)
        return json.loads(text) if text else None

    def copy(self):
        document = self.database["states"].find_one({"_id": DEVICE})
        return document and document["state"]

    def set(self, name, value, *words):
        return self.done("state", "set", DEVICE, name, value, "--prefix", PREFIX, *words)

    def test_sets_a_number_a_text_and_an_object(self):
        redis(STATE_DB, "SET", KEY, '{"kept":true,"interval":60}')
        for name, value in (("interval", "900"), ("filling", "-0.25"), ("big", "5000000000"),
                            ("mode", "slow ä"), ("fifteen", '"15"'), ("radio", '{"power":[14]}')):
            self.set(name, value)
        self.assertEqual(self.in_redis(), {
            "kept": True, "interval": 900, "filling": -0.25, "big": 5000000000, "mode": "slow ä",
            "fifteen": "15", "radio": {"power": [14]},
        })
        self.assertIsNone(self.copy())

    def test_stores_the_durable_copy_when_asked(self):
        self.set("interval", "900", "--persist")
        self.assertEqual(self.copy(), {"interval": 900})

    def test_goes_on_from_the_durable_copy_where_redis_has_none(self):
        self.set("interval", "900", "--persist")
        redis(STATE_DB, "DEL", KEY)
        self.set("mode", "slow")
        self.assertEqual(self.in_redis(), {"interval": 900, "mode": "slow"})

    def test_refuses_what_a_state_cannot_hold(self):
        for value in ("true", "null", "[1]", "{", '"open'):
            self.assertIn(
                'put a text in "quotes"',
                self.fails(2, "state", "set", DEVICE, "name", value, "--prefix", PREFIX),
            )
        self.assertIsNone(self.in_redis())

    def test_wants_to_know_the_prefix(self):
        for words in (("show", DEVICE), ("set", DEVICE, "a", 1), ("delete", DEVICE, "--yes"),
                      ("list",)):
            self.assertIn("--prefix", self.fails(2, "state", *words))

    def test_shows_the_values_by_name(self):
        redis(STATE_DB, "SET", KEY, '{"b":{"c":[1]},"a":2.5,"text":"x"}')
        self.assertEqual(self.records("state", "show", DEVICE, "--prefix", PREFIX), [
            {"modem_id": DEVICE, "name": "a", "value": 2.5},
            {"modem_id": DEVICE, "name": "b", "value": {"c": [1]}},
            {"modem_id": DEVICE, "name": "text", "value": "x"},
        ])
        self.assertRegex(
            self.done("state", "show", DEVICE, "--prefix", PREFIX).stdout, r"\n a +│ 2.5\n")

    def test_shows_the_state_of_an_empty_prefix(self):
        redis(STATE_DB, "SET", f":{DEVICE}", '{"a":1}')
        self.assertEqual(len(self.records("state", "show", DEVICE, "--prefix", "")), 1)

    def test_says_that_there_is_no_state(self):
        result = self.done("state", "show", DEVICE, "--prefix", PREFIX)
        self.assertEqual(result.stdout, "")
        self.assertIn(f"Device {DEVICE} has no state", result.stderr)

    def test_lists_the_states_by_device(self):
        redis(STATE_DB, "SET", f"{PREFIX}:{OTHER}", '{"b":2}')
        redis(STATE_DB, "SET", KEY, '{"a":1}')
        self.assertEqual(self.records("state", "list", "--prefix", PREFIX), [
            {"modem_id": DEVICE, "state": {"a": 1}}, {"modem_id": OTHER, "state": {"b": 2}},
        ])
        result = self.done("state", "list", "--prefix", "kelvro-test:nothing")
        self.assertEqual((result.stdout, result.stderr),
                         ("", "No states found under the prefix kelvro-test:nothing.\n"))
        self.assertIn("has no colon", self.fails(2, "state", "list", "--prefix", "kelvro"))

    def test_deletes_both_copies_when_told_yes(self):
        self.set("interval", "900", "--persist")
        self.done("state", "delete", DEVICE, "--prefix", PREFIX, "--yes")
        self.assertIsNone(self.in_redis())
        self.assertIsNone(self.copy())

    def test_deletes_nothing_where_nobody_can_be_asked(self):
        self.set("interval", "900", "--persist")
        self.assertIn("--yes", self.fails(2, "state", "delete", DEVICE, "--prefix", PREFIX))
        self.assertEqual(self.in_redis(), {"interval": 900})
        self.assertEqual(self.copy(), {"interval": 900})

    def test_asks_on_a_terminal_before_it_deletes(self):
        self.set("interval", "900")
        delete = ("state", "delete", DEVICE, "--prefix", PREFIX)
        for answer in ("n\n", "\n", "\x04"):
            status, text = self.on_terminal(80, *delete, typed=answer)
            self.assertEqual(status, 1)
            self.assertIn(f"Delete the state {KEY} and its durable copy? [y/N]", text)
            self.assertEqual(self.in_redis(), {"interval": 900})
        status, _ = self.on_terminal(80, *delete, typed="y\n")
        self.assertEqual(status, 0)
        self.assertIsNone(self.in_redis())

    def test_names_a_redis_server_that_is_not_there(self):
        for words in (("state", "show", DEVICE, "--prefix", PREFIX), ("queue", "show", DEVICE)):
            errors = self.fails(1, *words, REDIS_URL="redis://:secret@127.0.0.1:1")
            self.assertIn("127.0.0.1:1", errors)
            self.assertNotIn("secret", errors)


class ReadOnlyTest(HostTest):
    """A Redis that refuses to write, of which the store says nothing."""

    def setUp(self):
        super().setUp()
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            port = free.getsockname()[1]
        self.url = f"redis://127.0.0.1:{port}"
        server = subprocess.Popen(
            ["redis-server", "--port", str(port), "--bind", "127.0.0.1", "--dir", self.folder,
             "--save", "", "--replicaof", "127.0.0.1 1"],
            stdout=subprocess.PIPE, encoding="utf-8",
        )
        self.addCleanup(server.stdout.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        for line in server.stdout:
            if "Ready to accept connections" in line:
                break

    def test_says_that_a_state_was_not_stored(self):
        self.assertIn("does not read back", self.fails(
            1, "state", "set", DEVICE, "a", "1", "--prefix", PREFIX, REDIS_URL=self.url))


class QueueTest(HostTest):
    QUEUES = {
        "dl": {
            "empty": {"repeat": 0, "start_from": 0, "status": "NONE", "timeout": 0},
            "q1": {"repeat": 2, "start_from": 4, "status": "WAIT", "timeout": 60,
                   "e7": {"data": {"a": 1}, "db_id": "65a1", "repeat": 3, "status": "FAIL",
                          "type": "command"}},
        },
        "lock": True, "status": "DONE",
    }

    def forget(self):
        super().forget()
        redis(QUEUE_DB, "DEL", DEVICE)

    def put(self, queues):
        redis(QUEUE_DB, "SET", DEVICE, json.dumps(queues))
        self.database["dl_queues"].insert_one({"_id": DEVICE, "state": queues})

    def test_shows_each_element_with_its_queue(self):
        self.put(self.QUEUES)
        empty, full = self.records("queue", "show", DEVICE)
        self.assertEqual(full, {
            "modem_id": DEVICE, "lock": True, "status": "DONE", "queue": "q1",
            "queue_status": "WAIT", "queue_repeat": 2, "queue_timeout": 60, "queue_start_from": 4,
            "element": "e7", "element_status": "FAIL", "element_type": "command",
            "element_repeat": 3, "element_db_id": "65a1", "element_data": {"a": 1},
        })
        self.assertEqual((empty["queue"], empty["element"], empty["element_data"]),
                         ("empty", None, None))
        self.assertIn("e7", self.done("queue", "show", DEVICE).stdout)

    def test_shows_a_lock_without_queues(self):
        self.put({"dl": {}, "lock": True, "status": "NONE"})
        record, = self.records("queue", "show", DEVICE)
        self.assertEqual((record["lock"], record["queue"]), (True, None))

    def test_says_that_there_are_no_queues(self):
        result = self.done("queue", "show", DEVICE)
        self.assertEqual((result.stdout, result.stderr),
                         ("", f"Device {DEVICE} has no downlink queues.\n"))

    def test_clears_both_copies_when_told_yes(self):
        self.put(self.QUEUES)
        self.fails(2, "queue", "clear", DEVICE)
        self.assertNotEqual(redis(QUEUE_DB, "GET", DEVICE), "")
        self.done("queue", "clear", DEVICE, "--yes")
        self.assertEqual(redis(QUEUE_DB, "GET", DEVICE), "")
        self.assertIsNone(self.database["dl_queues"].find_one({"_id": DEVICE}))


class ClientsTest(HostTest):
    def forget(self):
        super().forget()
        redis(CLIENT_DB, "DEL", f"dev:clients:{DEVICE}", f"dev:properties:{DEVICE}")

    def test_shows_clients_protocol_and_hardware(self):
        redis(CLIENT_DB, "SADD", f"dev:clients:{DEVICE}", "utility", "lab, hall 2")
        redis(CLIENT_DB, "HSET", f"dev:properties:{DEVICE}", "protocol", "wmbus", "hw_type", "k2")
        self.assertEqual(self.records("clients", DEVICE), [{
            "modem_id": DEVICE, "protocol": "wmbus", "hw_type": "k2",
            "clients": ["lab, hall 2", "utility"],
        }])
        row, = csv.DictReader(io.StringIO(self.done("clients", DEVICE, "--csv").stdout, newline=""))
        self.assertEqual(json.loads(row["clients"]), ["lab, hall 2", "utility"])

    def test_says_that_the_registry_knows_nothing(self):
        result = self.done("clients", DEVICE)
        self.assertEqual((result.stdout, result.stderr),
                         ("", f"The registry knows nothing of device {DEVICE}.\n"))

    def test_refuses_what_is_no_device(self):
        for words in (("clients", "x"), ("clients",), ("queue", "show", "1.5"),
                      ("state", "show", "x", "--prefix", "a")):
            self.fails(2, *words)


if __name__ == "__main__":
    os.environ.setdefault("TZ", "UTC")
    main()
