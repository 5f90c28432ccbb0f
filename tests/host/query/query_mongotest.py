"""Asks for records with kelvro-host: uplinks, values, events, commands. See ../host_program.py.

usage: query_mongotest.py KELVRO-HOST PLUGIN
"""

import csv
import io
import json
import os
import pathlib
import re
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent))
from host_program import DEVICE, OTHER, START, THIRD, HostTest, later, main, unreachable_url  # noqa: E402
from bson import Int64  # noqa: E402


def time_of(secs):
    return time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(secs))


class QueryTest(HostTest):
    def put_uplink(self, secs, device=DEVICE, detected=None, **members):
        number = device * 1000 + secs
        self.database["ul_messages"].insert_one({
            "_id": f"{number:x}", "modem_id": device, "station_id": 7, "phy": "c1", "rssi": -90,
            "snr": 12, "ttl": later(), "timestamp": Int64(START + secs),
            "time_detected": Int64(START + (secs if detected is None else detected)),
            "bs_timezone_offset": 3600, "tag": "hourly", "hw_type": "kamstrup", "protocol": "wmbus",
            "extended_data": {}, "data": {"volume_m3": 2.5}, "payload": "2c0a", "parse_status": "ok",
            **members,
        })

    def put_value(self, secs, value, device=DEVICE, obis_code="1-0:1.8.0", **members):
        self.database["eav_values"].insert_one({
            "modem_id": device, "message_id": "m1", "timestamp": Int64(START + secs), "tag": "main",
            "obis_code": obis_code, "val_type": Int64(6), "extended_data": {"unit": "kWh"},
            "ttl": later(), "value": value, **members,
        })

    def put_event(self, secs, message, device=DEVICE, **members):
        self.database["eav_events"].insert_one({
            "modem_id": device, "timestamp": Int64(START + secs), "message_id": "m1",
            "event_code": 3, "message": message, "parameter": 5, "extended_data": {},
            "ttl": later(), **members,
        })

    def put_command(self, secs, device=DEVICE, status=0, **members):
        inserted = self.database["dl_messages"].insert_one({
            "modem_id": device, "api_key": "key", "data": {"request": "read"}, "status": status,
            "timeout": 60, "f_ack": 1, "payload": "0aff", "ttl": later(),
            "timestamp": Int64(START + secs), **members,
        })
        return str(inserted.inserted_id)

    def seconds(self, *words):
        """Device and time, since START, of the records that are shown."""
        times = {time_of(START + secs): secs for secs in range(-10, 1000)}
        return [
            (record["modem_id"], times[record["timestamp"]]) for record in self.records(*words)
        ]

    def columns(self, *words):
        """The records as CSV has them."""
        return list(csv.DictReader(io.StringIO(self.done(*words, "--csv").stdout, newline="")))


class Uplinks(QueryTest):
    def test_shows_the_newest_of_all_devices_first(self):
        for secs, device in ((1, DEVICE), (4, DEVICE), (2, OTHER), (3, OTHER)):
            self.put_uplink(secs, device)
        self.assertEqual(
            self.seconds("uplinks", "-d", f"{DEVICE},{OTHER}"),
            [(DEVICE, 4), (OTHER, 3), (OTHER, 2), (DEVICE, 1)],
        )

    def test_shows_every_stored_member_in_json(self):
        self.put_uplink(1, detected=-2, extended_data={"a": [1]}, data={"text": "ä,\"b\""})
        record, = self.records("uplinks", "-d", DEVICE)
        self.assertRegex(record.pop("ttl"), r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(\.\d{3})?Z$")
        self.assertEqual(record, {
            "timestamp": time_of(START + 1), "time_detected": time_of(START - 2),
            "modem_id": DEVICE, "station_id": 7, "bs_timezone_offset": 3600, "phy": "c1", "snr": 12,
            "rssi": -90, "tag": "hourly", "unique_id": DEVICE * 1000 + 1, "hw_type": "kamstrup",
            "protocol": "wmbus", "parse_status": "ok", "payload": "2c0a",
            "data": {"text": "ä,\"b\""}, "extended_data": {"a": [1]},
        })

    def test_shows_every_stored_member_in_csv(self):
        self.put_uplink(1, data={"text": "ä,\"b\"\n"})
        as_json, = self.records("uplinks", "-d", DEVICE)
        as_csv, = self.columns("uplinks", "-d", DEVICE)
        self.assertEqual(set(as_csv), set(as_json))
        for name, value in as_json.items():
            shown = json.loads(as_csv[name]) if isinstance(value, dict) else as_csv[name]
            self.assertEqual(shown, value if isinstance(value, dict) else str(value), name)

    def test_shortens_payload_and_data_in_a_table(self):
        self.put_uplink(1, payload="ab" * 100, data={"text": "x" * 100})
        table = self.done("uplinks", "-d", DEVICE).stdout
        self.assertIn(time_of(START + 1), table)
        self.assertIn("ab" * 11 + "a…", table)
        self.assertRegex(table, r'\{"text":"x{40,60}…\n')

    def test_shows_times_of_the_zone_that_is_asked_for(self):
        self.put_uplink(1)
        shown = self.done("uplinks", "-d", DEVICE, "--json", "--local", TZ="Asia/Kolkata").stdout
        self.assertEqual(json.loads(shown)["timestamp"], "2026-01-01T05:30:01+05:30")

    def test_shows_a_number_that_readers_of_json_would_spoil_as_a_text(self):
        for number, shown in ((2**53, 2**53), (2**53 + 1, str(2**53 + 1)),
                              (2**64 - 1, str(2**64 - 1))):
            self.put_uplink(1, _id=f"{number:x}")
            self.assertEqual(self.records("uplinks", "-d", DEVICE)[0]["unique_id"], shown)
            self.forget()

    def test_says_when_the_limit_cuts_the_answer_off(self):
        for secs in range(3):
            self.put_uplink(secs, OTHER if secs == 1 else DEVICE)
        query = ("uplinks", "-d", DEVICE, "-d", OTHER)
        result = self.done(*query, "--limit", 2, "--json")
        self.assertEqual(len(result.stdout.splitlines()), 2)
        self.assertIn("only the newest 2 are shown", result.stderr)
        self.assertEqual(self.seconds(*query, "--limit", 2), [(DEVICE, 2), (OTHER, 1)])
        for limit in (3, 0):
            result = self.done(*query, "--limit", limit, "--json")
            self.assertEqual(len(result.stdout.splitlines()), 3)
            self.assertEqual(result.stderr, "")

    def test_shows_a_hundred_unless_told_otherwise(self):
        for secs in range(101):
            self.put_uplink(secs)
        for form in ((), ("--json",), ("--csv",)):
            result = self.done("uplinks", "-d", DEVICE, *form)
            self.assertEqual(result.stdout.count("hourly"), 100, form)
            self.assertIn("only the newest 100 are shown", result.stderr)

    def test_shows_both_ends_of_the_period(self):
        for secs in range(5):
            self.put_uplink(secs)
        self.assertEqual(
            self.seconds("uplinks", "-d", DEVICE, "--from", time_of(START + 1), "--to",
                         "2026-01-01T01:00:03+01:00"),
            [(DEVICE, 3), (DEVICE, 2), (DEVICE, 1)],
        )

    def test_shows_what_is_younger_than_a_length_of_time(self):
        age = int(time.time()) - START
        self.put_uplink(age - 7000)
        self.put_uplink(age - 7400)
        self.assertEqual(len(self.records("uplinks", "-d", DEVICE, "--since", "2h")), 1)

    def test_selects_tags(self):
        for secs, tag in enumerate(("a", "b", "c,d")):
            self.put_uplink(secs, tag=tag)
        self.assertEqual(
            self.seconds("uplinks", "-d", DEVICE, "--tag", "a", "--tag", "c,d"),
            [(DEVICE, 2), (DEVICE, 0)],
        )

    def test_goes_by_the_time_of_detection_when_asked(self):
        self.put_uplink(100, detected=1)
        self.put_uplink(50, detected=2)
        self.put_uplink(2, detected=60)
        self.assertEqual(
            self.seconds("uplinks", "-d", DEVICE, "--detected", "--to", time_of(START + 2)),
            [(DEVICE, 50), (DEVICE, 100)],
        )

    def test_refuses_tags_where_the_store_does_not_read_them(self):
        self.fails(2, "uplinks", "-d", DEVICE, "--detected", "--tag", "a")

    def test_shows_a_device_once_that_is_named_twice(self):
        self.put_command(1)
        self.put_uplink(1)
        self.assertEqual(len(self.records("uplinks", "-d", f"{DEVICE},{DEVICE}")), 1)
        self.assertEqual(len(self.records("commands", "-d", f"{DEVICE},{DEVICE}")), 1)


class Values(QueryTest):
    def test_shows_numbers_as_numbers_and_every_member(self):
        self.put_value(1, 3432.827)
        self.put_value(2, 17)
        self.put_value(3, "190324150521W", obis_code="0-0:1.0.0", extended_data={})
        self.put_value(4, True)
        record, = self.records("values", "-d", DEVICE, "--to", time_of(START + 1))
        self.assertIn("ttl", record)
        del record["ttl"]
        self.assertEqual(record, {
            "timestamp": time_of(START + 1), "modem_id": DEVICE, "obis_code": "1-0:1.8.0",
            "value": 3432.827, "unit": "kWh", "tag": "main", "message_id": "m1",
            "extended_data": {"unit": "kWh"},
        })
        self.assertEqual(
            [(each["value"], each["unit"]) for each in self.records("values", "-d", DEVICE)],
            [(True, "kWh"), ("190324150521W", None), (17, "kWh"), (3432.827, "kWh")],
        )

    def test_selects_codes_and_tags(self):
        self.put_value(1, 1)
        self.put_value(2, 2, obis_code="1-0:2.8.0")
        self.put_value(3, 3, obis_code="own:leak", tag="spare")
        query = ("values", "-d", DEVICE)
        codes = "1-0:2.8.0,own:leak"
        self.assertEqual(self.seconds(*query, "--obis", codes), [(DEVICE, 3), (DEVICE, 2)])
        self.assertEqual(
            self.seconds(*query, "--obis", "1-0:1.8.0", "--obis", "own:leak"),
            [(DEVICE, 3), (DEVICE, 1)],
        )
        self.assertEqual(
            self.seconds(*query, "--obis", codes, "--tag", "main"), [(DEVICE, 2)]
        )

    def test_shows_the_newest_and_the_oldest_number_of_each_code(self):
        for secs, value in ((1, 10), (2, 20), (3, 30), (4, "text")):
            self.put_value(secs, value)
        self.put_value(2, 7, OTHER)
        query = ("values", "-d", f"{DEVICE},{OTHER}", "--first-last")
        # The only one of a device is both.
        self.assertEqual(
            self.seconds(*query, "--obis", "1-0:1.8.0"),
            [(DEVICE, 3), (DEVICE, 1), (OTHER, 2), (OTHER, 2)],
        )
        self.fails(2, *query)
        self.fails(2, *query, "--obis", "1-0:1.8.0", "--limit", 5)

    def test_shows_the_latest_value_of_each_device_and_code(self):
        self.put_value(1, 10)
        self.put_value(2, 20)
        self.put_value(3, "off", obis_code="0-0:96.3.10")
        self.put_value(1, 5, OTHER)
        self.put_value(9, 6, OTHER, tag="spare")
        self.put_value(9, 1, THIRD)
        latest = ("values", "-d", f"{DEVICE},{OTHER}", "--latest")
        for codes in ((), ("--obis", "0-0:96.3.10,1-0:1.8.0")):
            self.assertEqual(
                [(each["modem_id"], each["obis_code"], each["value"])
                 for each in self.records(*latest, *codes)],
                [(DEVICE, "0-0:96.3.10", "off"), (DEVICE, "1-0:1.8.0", 20), (OTHER, "1-0:1.8.0", 6)],
            )
            self.assertEqual(
                [each["value"] for each in self.records(*latest, *codes, "--tag", "main")],
                ["off", 20, 5],
            )

    def test_says_how_far_it_looked_for_codes(self):
        self.put_value(1, 10, obis_code="1-0:2.8.0")
        for secs in (2, 3):
            self.put_value(secs, secs)
        latest = ("values", "-d", DEVICE, "--latest", "--csv")
        result = self.done(*latest, "--depth", 2)
        self.assertNotIn("1-0:2.8.0", result.stdout)
        self.assertIn(f"Device {DEVICE} has more than 2 values", result.stderr)
        for depth in (3, 0):
            result = self.done(*latest, "--depth", depth)
            self.assertIn("1-0:2.8.0", result.stdout)
            self.assertEqual(result.stderr, "")


class Events(QueryTest):
    def test_shows_every_member(self):
        self.put_event(1, "cover opened", extended_data={"by": "hand"})
        record, = self.records("events", "-d", DEVICE)
        del record["ttl"]
        self.assertEqual(record, {
            "timestamp": time_of(START + 1), "modem_id": DEVICE, "event_code": 3,
            "message": "cover opened", "parameter": 5, "message_id": "m1",
            "extended_data": {"by": "hand"},
        })

    def test_selects_texts(self):
        self.put_event(1, "leak")
        self.put_event(2, "cover opened")
        self.put_event(3, "leak", OTHER)
        self.assertEqual(
            self.seconds("events", "-d", f"{DEVICE},{OTHER}", "--text", "leak"),
            [(OTHER, 3), (DEVICE, 1)],
        )

    def test_says_when_the_limit_cuts_the_answer_off(self):
        for secs in range(3):
            self.put_event(secs, "leak")
        result = self.done("events", "-d", DEVICE, "--limit", 2, "--csv")
        self.assertEqual(result.stdout.count("leak"), 2)
        self.assertIn("only the newest 2 are shown", result.stderr)


class Commands(QueryTest):
    def test_shows_every_member_and_the_status_by_name(self):
        ids = [self.put_command(secs, status=secs) for secs in range(5)]
        records = self.records("commands", "-d", DEVICE)
        self.assertEqual([record["db_id"] for record in records], ids[::-1])
        self.assertEqual(
            [record["status"] for record in records],
            [4, "TIMEOUT", "EXECUTED", "WAIT_DATA", "PENDING"],
        )
        del records[-1]["ttl"]
        self.assertEqual(records[-1], {
            "timestamp": time_of(START), "modem_id": DEVICE, "db_id": ids[0], "status": "PENDING",
            "f_ack": 1, "timeout": 60, "api_key": "key", "payload": "0aff",
            "data": {"request": "read"},
        })

    def test_shows_the_pending_ones(self):
        for secs in range(4):
            self.put_command(secs, status=secs)
        self.assertEqual(
            self.seconds("commands", "-d", DEVICE, "--pending"), [(DEVICE, 1), (DEVICE, 0)]
        )

    def test_counts_the_limit_over_all_devices(self):
        for secs, device in ((1, DEVICE), (2, OTHER), (3, OTHER), (4, DEVICE)):
            self.put_command(secs, device)
        query = ("command", "list", "-d", f"{DEVICE},{OTHER}", "--limit")
        self.assertEqual(self.seconds(*query, 3), [(DEVICE, 4), (OTHER, 3), (OTHER, 2)])
        self.assertIn("only the newest 3 are shown", self.done(*query, 3).stderr)
        self.assertEqual(self.done(*query, 4).stderr, "")


class Circumstances(QueryTest):
    def test_shows_nothing_where_there_is_nothing(self):
        for command in ("uplinks", "values", "events", "commands"):
            for form, expected in (((), ""), (("--json",), "")):
                result = self.done(command, "-d", DEVICE, *form)
                self.assertEqual(result.stdout, expected)
                self.assertEqual(result.stderr, f"No {command} found.\n")
            self.assertEqual(self.columns(command, "-d", DEVICE), [])

    def test_fits_a_terminal_of_80_columns(self):
        self.put_uplink(1, payload="ab" * 100, data={"text": "x" * 100})
        self.put_command(1, data={"text": "x" * 100})
        for command in ("uplinks", "commands"):
            status, text = self.on_terminal(80, command, "-d", DEVICE)
            self.assertEqual(status, 0)
            self.assertIn("│", text)
            plain = re.sub("\x1b\\[[0-9;]*m", "", text)
            self.assertLessEqual(max(map(len, plain.splitlines())), 80, plain)

    def test_shows_blocks_on_a_terminal_of_40_columns(self):
        self.put_uplink(1)
        status, text = self.on_terminal(40, "uplinks", "-d", DEVICE)
        self.assertEqual(status, 0)
        self.assertIn(f"Device   {DEVICE}\n", text)
        self.assertLessEqual(max(map(len, text.splitlines())), 40, text)

    def test_ends_quietly_when_nobody_reads_on(self):
        self.database["eav_values"].insert_many([{
            "modem_id": DEVICE, "message_id": "m1", "timestamp": Int64(START + secs), "tag": "main",
            "obis_code": "1-0:1.8.0", "val_type": Int64(6), "extended_data": {}, "ttl": later(),
            "value": float(secs),
        } for secs in range(3000)])
        program = subprocess.Popen(
            self.arguments("values", "-d", DEVICE, "--limit", 0, "--json"),
            stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        )
        self.assertIn(b'"value":2999', program.stdout.readline())
        program.stdout.close()
        self.assertNotIn(b"kelvro-host:", program.stderr.read())
        program.stderr.close()
        # As every filter does that the shell runs before `head`.
        self.assertEqual(program.wait(timeout=60), -13)

    def test_says_that_the_output_could_not_be_written(self):
        self.put_uplink(1)
        for form in ((), ("--json",), ("--csv",)):
            with open("/dev/full", "wb") as full:
                result = subprocess.run(
                    self.arguments("uplinks", "-d", DEVICE, *form), stdout=full,
                    stderr=subprocess.PIPE, encoding="utf-8", timeout=60,
                )
            self.assertEqual(result.returncode, 1)
            self.assertIn("cannot write the output: No space left on device", result.stderr)

    def test_names_a_server_that_is_not_there(self):
        for command, store in (("uplinks", "message"), ("commands", "message"),
                               ("values", "value"), ("events", "value")):
            begun = time.monotonic()
            errors = self.fails(1, command, "-d", DEVICE, MONGODB_URL=unreachable_url())
            # The time-out, and what a busy machine needs to start a program.
            self.assertLess(time.monotonic() - begun, 20)
            self.assertIn(f"opening the {store} store at mongodb://127.0.0.1:1/", errors)
            self.assertNotIn("secret", errors)

    def test_refuses_what_is_no_device_code_or_time(self):
        for command in ("uplinks", "values", "events", "commands"):
            for wrong in (("-d", "x"), ("-d", "99999999999"), (), ("-d", 1, "--limit", -1),
                          ("-d", 1, "--from", "yesterday"), ("-d", 1, "--to", "2026-13-01"),
                          ("-d", 1, "--since", "2"),
                          ("-d", 1, "--since", "2h", "--from", "2026-01-01")):
                self.assertNotEqual(self.fails(2, command, *wrong), "")
        self.assertIn("no OBIS code", self.fails(2, "values", "-d", 1, "--obis", "1-0 1.8.0"))


if __name__ == "__main__":
    os.environ.setdefault("TZ", "UTC")
    main()
