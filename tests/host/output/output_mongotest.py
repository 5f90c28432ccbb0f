"""Runs the commands of kelvro-host where their output goes nowhere, or on a narrow terminal.

usage: output_mongotest.py KELVRO-HOST PLUGIN, with MONGODB_URL in the environment
"""

import json
import os
import pathlib
import re
import signal
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent))
from host_program import (  # noqa: E402
    HOST, PATIENCE, PLUGIN, START, Terminal, later, main,
)
from own_servers import HostTest  # noqa: E402
from bson import Int64, ObjectId  # noqa: E402

DEVICE = 17
COMMAND_ID = "0123456789abcdef01234567"
QUEUES = {"dl": {"q": {"repeat": 0, "start_from": 0, "status": "WAIT", "timeout": 60, "e": {
    "data": {}, "db_id": "65a1", "repeat": 3, "status": "FAIL", "type": "command"}}},
    "lock": True, "status": "DONE"}
# The demo wants the meter to say its number.
READINGS = ({"time": START, "obis": "1-0:1.8.0", "value": 5, "unit": "kWh"},
            {"time": START, "obis": "0-0:96.1.1", "value": "3030303030303138"})

# Those that show records, and those that account for their work.
QUERIES = (
    ("uplinks", "-d", DEVICE), ("values", "-d", DEVICE), ("values", "-d", DEVICE, "--latest"),
    ("values", "-d", DEVICE, "--first-last", "--obis", "1-0:1.7.0"), ("events", "-d", DEVICE),
    ("commands", "-d", DEVICE), ("command", "list", "-d", DEVICE), ("command", "show", COMMAND_ID),
    ("state", "show", DEVICE, "--prefix", "drv:x"), ("state", "list", "--prefix", "drv:x"),
    ("queue", "show", DEVICE), ("clients", DEVICE), ("plot", "-d", DEVICE, "--ascii"), ("doctor",),
)
WORK = (
    ("command", "issue", DEVICE, "--data", "{}"), ("plot", "-d", DEVICE, "--output", "curve"),
    ("ingest", "--device", 18, "readings"), ("export", "export"), ("import", "--merge", "export"),
    ("bench", "--yes", "--secs", 1), ("demo", "--decoder=shipped", "--readings", "readings"),
)
OF_ITSELF = (("manual",), ("completion",), ("--help",), ("--version",), ("plot", "--help"))


class Output(HostTest):
    def setUp(self):
        super().setUp()
        self.lay_out()
        device = {"modem_id": DEVICE, "timestamp": Int64(START), "extended_data": {}, "ttl": later()}
        message = {**device, "message_id": "m1"}
        self.database["ul_messages"].insert_one({
            **device, "_id": "1", "station_id": 7, "phy": "c1", "rssi": -90, "snr": 12,
            "time_detected": Int64(START), "bs_timezone_offset": 0, "tag": "hourly",
            "hw_type": "make", "protocol": "wmbus", "data": {"v": 2.5}, "payload": "2c",
            "parse_status": "ok",
        })
        self.database["eav_values"].insert_many([{
            **message, "timestamp": Int64(START + minute * 60), "tag": "main", "val_type": Int64(6),
            "obis_code": "1-0:1.7.0", "value": minute / 4,
        } for minute in range(10)])
        self.database["eav_events"].insert_one(
            {**message, "event_code": 3, "message": "leak", "parameter": 5})
        self.database["dl_messages"].insert_one({
            **device, "_id": ObjectId(COMMAND_ID), "api_key": "key", "data": {"request": "read"},
            "status": 0, "timeout": 60, "f_ack": 1, "payload": "0a",
        })
        self.redis("SET", f"drv:x:{DEVICE}", '{"interval":900}')
        self.redis("SET", DEVICE, json.dumps(QUEUES), db=7)
        self.redis("SADD", f"dev:clients:{DEVICE}", "a", db=2)
        self.write("readings", "".join(json.dumps(line) + "\n" for line in READINGS))

    def words(self, command):
        if command in OF_ITSELF:
            return [HOST, *command]
        return [HOST, *map(str, command), "--plugin", PLUGIN, "--settings", str(self.settings)]

    def run_into(self, command, stdout, prefix=()):
        return subprocess.run(
            [*prefix, *self.words(command)], stdout=stdout, stderr=subprocess.PIPE,
            stdin=subprocess.DEVNULL, encoding="utf-8", timeout=PATIENCE, cwd=self.folder,
            check=False,
        )

    def expect_done(self, command):
        """What the command does has been done, whatever became of its account."""
        words = " ".join(map(str, command))
        if command[0] == "command" and command[1] == "issue":
            self.assertEqual(self.database["dl_messages"].count_documents({}), 2, words)
        if command[0] == "ingest":
            self.assertEqual(self.database["eav_values"].count_documents({"modem_id": 18}), 2)
        if command[0] == "export":
            manifest = json.loads((self.folder / "export" / "manifest.json").read_text())
            self.assertIn("finished", manifest)
        if command[0] == "bench":
            for name in ("ul_messages", "eav_values", "eav_events", "dl_messages"):
                self.assertEqual(
                    self.database[name].count_documents({"modem_id": {"$gte": 2_147_480_001}}), 0)

    def test_that_a_full_disk_does_not_take_makes_the_command_fail(self):
        for command in (*QUERIES, *WORK, *OF_ITSELF):
            with self.subTest(command), open("/dev/full", "wb") as full:
                result = self.run_into(command, full)
                self.assertEqual(result.returncode, 1, result.stderr)
                self.assertIn("cannot write the output: No space left on device", result.stderr)
                self.expect_done(command)
                self.database["dl_messages"].delete_many({"api_key": ""})

    def test_that_nobody_reads_ends_the_program_as_it_does_a_filter(self):
        for command in (*QUERIES, *WORK, *OF_ITSELF):
            with self.subTest(command):
                reader, writer = os.pipe()
                os.close(reader)
                result = self.run_into(command, writer)
                os.close(writer)
                self.assertNotIn("kelvro-host:", result.stderr)
                self.assertEqual(result.returncode, -signal.SIGPIPE, result.stderr)
                self.expect_done(command)
                self.database["dl_messages"].delete_many({"api_key": ""})

    def test_into_a_file_that_cannot_grow_makes_the_command_fail(self):
        # As on a full disk, but with other words of the system's.
        self.write("bad", "x" * 2000)
        for command, file, most in (
            (("plot", "-d", DEVICE, "--output", "curve.svg"), "curve.svg", 1000),
            (("plot", "-d", DEVICE, "--output", "curve.png"), "curve.png", 1000),
            (("export", "none"), "none/manifest.json", 100),
            (("export", "export"), "export/mongodb/eav_values.jsonl", 2500),
            (("ingest", "--rejects", "rejects", "bad"), "rejects", 1000),
        ):
            full = ("env", "--ignore-signal=XFSZ", "prlimit", f"--fsize={most}", "--")
            with self.subTest(command):
                result = self.run_into(command, subprocess.PIPE, full)
                self.assertEqual(result.returncode, 1, result.stderr)
                self.assertRegex(result.stderr, f"cannot write .*{re.escape(file)}.*: File too large")
                self.assertNotIn("drawn", result.stdout)
        self.assertEqual(list(self.folder.glob("none/manifest.json*")), [])

    def test_that_is_closed_is_missed_by_nobody(self):
        closed = ("sh", "-c", 'exec "$@" >&- <&-', "sh")
        for command in (*QUERIES, *WORK, *OF_ITSELF):
            with self.subTest(command):
                result = self.run_into(command, subprocess.DEVNULL, closed)
                self.assertEqual(result.returncode, 0, result.stderr)
                self.expect_done(command)
                self.database["dl_messages"].delete_many({"api_key": ""})

    def test_fits_a_terminal_of_40_columns(self):
        for command in (*QUERIES, *WORK):
            with self.subTest(command):
                terminal = Terminal(40)
                process = subprocess.Popen(
                    self.words(command), stdin=terminal.its_side, stdout=terminal.its_side,
                    stderr=terminal.its_side, cwd=self.folder,
                )
                shown = re.sub(r"\x1b\[[0-9;?]*[A-Za-z]", "", terminal.end())
                self.assertEqual(process.wait(timeout=PATIENCE), 0, shown)
                lines = re.split("[\r\n]", shown)
                if command[0] in ("doctor", "demo"):
                    # What is said in sentences the terminal may break.
                    lines = [line for line in lines if re.search("[│█▏▎▍▌▋▊▉]", line)]
                    self.assertEqual(bool(lines), command[0] == "demo")
                for line in lines:
                    # A name of a file is not cut.
                    self.assertLessEqual(len(line), 43 if line.startswith("File ") else 40, shown)


if __name__ == "__main__":
    main()
