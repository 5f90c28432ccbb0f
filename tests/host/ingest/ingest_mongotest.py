"""Runs kelvro-host ingest with the real plug-in and real servers, and looks into the database.

usage: ingest_mongotest.py KELVRO-HOST PLUGIN FAULTY-PLUGIN DATA,
with MONGODB_URL and REDIS_URL in the environment
"""

import fcntl
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import termios
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent))
from host_program import (  # noqa: E402
    HOST, PLUGIN, ProgramTest, Terminal, eventually, main, unreachable_url,
)

FAULTY_PLUGIN, DATA = sys.argv[3:5]
TELEGRAMS = pathlib.Path(DATA, "radio_telegrams.ndjson")
REAL_TELEGRAMS = [json.loads(line) for line in TELEGRAMS.read_text(encoding="utf-8").splitlines()]
READINGS = pathlib.Path(DATA, "meter_readings.ndjson")
READINGS_DEVICE = 31650618
FIRST_DEVICE = 91_000_000
SECS = 1_700_000_000
NOTHING = dict.fromkeys(
    ("lines", "uplinks", "uplinks_there", "values", "values_there", "events", "events_there",
     "rejected", "unfinished"), 0,
)


def telegram(number, secs=SECS, device=FIRST_DEVICE, **readings):
    """A telegram with two values and two events."""
    line = {
        "telegram": f"{number:08x}",
        "decoded": {
            "id": f"{device:08}", "meter": "testmake", "media": "water", "total_m3": number / 8,
            "battery_v": 3.5, "status": "LEAK BURST", **readings,
        },
    }
    return line if secs is None else {**line, "time": secs + number}


def lines(records):
    return "".join(each if isinstance(each, str) else json.dumps(each) + "\n" for each in records)


class IngestCase(ProgramTest):
    def setUp(self):
        super().setUp()
        self.rejects = self.folder / "rejects.ndjson"
        ids = [each["decoded"]["id"] for each in REAL_TELEGRAMS]
        self.devices = {"$or": [
            {"modem_id": {"$gte": FIRST_DEVICE, "$lt": FIRST_DEVICE + 1000}},
            {"modem_id": {"$in": [READINGS_DEVICE, *map(int, ids)]}},
        ]}
        self.clear()
        self.addCleanup(self.clear)

    def clear(self):
        for name in ("ul_messages", "eav_values", "eav_events"):
            self.database[name].delete_many(self.devices)

    def stored(self, collection, **query):
        return list(self.database[collection].find({**self.devices, **query}))

    def write(self, name, records):
        return super().write(name, lines(records))

    def command(self, *arguments, plugin=PLUGIN):
        return [HOST, "ingest", "--json", "--plugin", plugin, *map(str, arguments)]

    def ingest(self, *arguments, plugin=PLUGIN, text="", **environment):
        return self.run_program(self.command(*arguments, plugin=plugin), text, **environment)

    def start(self, *arguments):
        return self.start_program(self.command(*arguments))

    def expect(self, result, status=0, **account):
        self.assertEqual(result.returncode, status, result.stderr)
        self.assertEqual(json.loads(result.stdout), {**NOTHING, **account}, result.stderr)

    def expect_once(self, count):
        """There are so many uplinks, each with its two values and two events, and nothing twice."""
        uplinks = sorted(each["_id"] for each in self.stored("ul_messages"))
        self.assertEqual(len(uplinks), count)
        times = {each["_id"]: each["timestamp"] for each in self.stored("ul_messages")}
        for collection, name in (("eav_values", "obis_code"), ("eav_events", "message")):
            records = self.stored(collection)
            self.assertEqual(
                sorted((each["message_id"], each[name]) for each in records),
                sorted((uplink, each) for uplink in uplinks for each in (
                    ("8-0:1.0.0", "field:battery_v") if name == "obis_code" else ("BURST", "LEAK")
                )),
            )
            for each in records:
                self.assertEqual(each["timestamp"], times[each["message_id"]])

    def rejected(self):
        return [json.loads(line) for line in self.rejects.read_text(encoding="utf-8").splitlines()]


class Records(IngestCase):
    def test_are_an_uplink_its_values_and_its_events(self):
        self.expect(
            self.ingest(self.write("t", [telegram(1)])), lines=1, uplinks=1, values=2, events=2
        )
        (uplink,) = self.stored("ul_messages")
        self.assertEqual(uplink["modem_id"], FIRST_DEVICE)
        self.assertEqual(uplink["payload"], "00000001")
        self.assertEqual(uplink["timestamp"], SECS + 1)
        self.assertEqual(uplink["time_detected"], SECS + 1)
        self.assertEqual(uplink["tag"], "water")
        self.assertEqual(uplink["hw_type"], "testmake")
        self.assertEqual(uplink["data"], telegram(1)["decoded"])
        (value,) = self.stored("eav_values", obis_code="8-0:1.0.0")
        self.assertEqual(value["value"], 0.125)
        self.assertEqual(value["extended_data"], {"field": "total_m3", "unit": "m³"})
        self.assertEqual(value["tag"], "water")
        (event,) = self.stored("eav_events", message="BURST")
        self.assertEqual((event["event_code"], event["parameter"]), (1, 1))

    def test_expire_when_asked(self):
        self.ingest("--keep", "2d", self.write("t", [telegram(1)]))
        for collection in ("ul_messages", "eav_values", "eav_events"):
            for each in self.stored(collection):
                days = (each["ttl"].timestamp() - time.time()) / 86400
                self.assertAlmostEqual(days, 2, delta=0.1)

    def test_of_the_real_telegrams_are_all_stored(self):
        result = self.ingest(TELEGRAMS)
        account = json.loads(result.stdout)
        self.assertEqual((result.returncode, account["uplinks"]), (0, 51), result.stderr)
        self.assertEqual(len(self.stored("ul_messages")), 51)
        self.assertEqual(len(self.stored("eav_values")), account["values"])
        numbers = sum(
            isinstance(reading, (int, float)) for each in REAL_TELEGRAMS
            for reading in each["decoded"].values()
        )
        self.assertEqual(account["values"], numbers)

    def test_of_meter_readings_are_values_of_the_meter_that_says_its_number(self):
        self.expect(self.ingest(READINGS), lines=8960, values=8960)
        self.expect(self.ingest(READINGS), lines=8960, values_there=8960)
        values = self.stored("eav_values", modem_id=READINGS_DEVICE)
        self.assertEqual(len(values), 8960)
        power = next(each for each in values if each["obis_code"] == "1-0:1.7.0")
        self.assertEqual(power["extended_data"], {"unit": "kW"})


class WmbusmetersOutput(IngestCase):
    """What the real program prints of real telegrams."""

    def setUp(self):
        super().setUp()
        if shutil.which("wmbusmeters") is None:
            self.fail("wmbusmeters is not installed")
        self.telegrams = [each["telegram"] for each in REAL_TELEGRAMS]

    def print_readings(self, *arguments, text=""):
        return subprocess.run(
            ["wmbusmeters", "--silent", "--format=json", *map(str, arguments), "Meter", "auto",
             "*", "NOKEY"],
            input=text, capture_output=True, encoding="utf-8", timeout=60, check=True,
        ).stdout

    def test_from_a_file_is_understood(self):
        file = self.folder / "simulation_telegrams.txt"
        file.write_text(
            "".join(f"telegram=|{each}|\n" for each in self.telegrams), encoding="utf-8"
        )
        printed = self.write("printed", [self.print_readings(file)])
        count = len(printed.read_text(encoding="utf-8").splitlines())
        self.assertGreater(count, 40)
        result = self.ingest(printed)
        account = json.loads(result.stdout)
        self.assertEqual((result.returncode, account["uplinks"]), (0, count), result.stderr)
        self.assertEqual({each["payload"] for each in self.stored("ul_messages")}, {""})
        self.assertGreater(len(self.stored("eav_values", obis_code="8-0:1.0.0")), 5)

    def test_from_a_pipe_brings_its_payloads_if_it_is_told_to_log_them(self):
        receiver = "".join(
            f"T1;1;1;2019-02-09 08:05:{second:02}.000;117;102;00000000;0x{each}\n"
            for second, each in enumerate(self.telegrams[:40])
        )
        printed = self.print_readings(
            "--logtelegrams", "--usestdoutforlogging", "stdin:rtlwmbus", text=receiver
        )
        result = self.ingest(text=printed)
        self.assertEqual(result.returncode, 0, result.stderr)
        uplinks = self.stored("ul_messages")
        self.assertGreater(len(uplinks), 20)
        for uplink in uplinks:
            second = uplink["timestamp"] - 1549699500  # 2019-02-09T08:05:00Z
            # The program mends the length, and takes check sums out.
            self.assertEqual(uplink["payload"][2:20], self.telegrams[second][2:20])
        again = json.loads(self.ingest(text=printed).stdout)
        self.assertEqual((again["uplinks"], again["values"], again["events"]), (0, 0, 0))

    def test_has_the_payload_that_was_logged_right_before_it_only(self):
        readings = {"id": "91000001", "meter": "a", "media": "water", "timestamp": "2019-02-09T08:05:11Z"}
        self.ingest(text=lines([
            "telegram=|0102_03|+0\n", readings, {**readings, "id": "91000002"}, telegram(1),
            {**readings, "id": "91000003"},
        ]))
        payloads = {each["modem_id"]: each["payload"] for each in self.stored("ul_messages")}
        self.assertEqual(payloads, {
            91000001: "010203", 91000002: "010203", FIRST_DEVICE: "00000001", 91000003: "",
        })

    def test_from_a_stream_of_digits_is_stored_while_the_program_runs(self):
        reader = subprocess.Popen(
            ["wmbusmeters", "--silent", "--format=json", "stdin:hex", "Meter", "auto", "*", "NOKEY"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE,
        )
        ingest = subprocess.Popen(
            self.command(), stdin=reader.stdout, stdout=subprocess.PIPE, encoding="utf-8"
        )
        self.addCleanup(self.end, ingest)
        self.addCleanup(self.end, reader)
        reader.stdout.close()
        reader.stdin.write(f"{self.telegrams[0]}\n".encode())
        reader.stdin.close()
        output, _ = ingest.communicate(timeout=60)
        self.assertEqual(json.loads(output)["uplinks"], 1)


class SecondRun(IngestCase):
    def test_stores_nothing_twice(self):
        file = self.write("t", [telegram(number) for number in range(20)])
        self.expect(self.ingest(file), lines=20, uplinks=20, values=40, events=40)
        self.expect(
            self.ingest(file), lines=20, uplinks_there=20, values_there=40, events_there=40
        )
        self.expect_once(20)

    def test_stores_nothing_twice_of_telegrams_without_a_time(self):
        file = self.write("t", [telegram(number, secs=None) for number in range(3)])
        self.expect(self.ingest(file), lines=3, uplinks=3, values=6, events=6)
        # As if it had been yesterday.
        for name in ("ul_messages", "eav_values", "eav_events"):
            self.database[name].update_many(self.devices, {"$inc": {"timestamp": -86400}})
        self.expect(self.ingest(file), lines=3, uplinks_there=3, values_there=6, events_there=6)
        self.expect_once(3)

    def test_finds_the_time_of_a_telegram_behind_hundreds_of_others(self):
        file = self.write("t", [telegram(1, secs=None)])
        self.ingest(file)
        for name in ("ul_messages", "eav_values", "eav_events"):
            self.database[name].update_many(self.devices, {"$inc": {"timestamp": -864000}})
        self.ingest(self.write("later", [telegram(number) for number in range(2, 300)] + [
            {**telegram(number), "time": SECS} for number in range(300, 900)
        ]))
        self.database["ul_messages"].update_many(
            {**self.devices, "timestamp": {"$lte": SECS + 300}}, {"$inc": {"timestamp": 4 * 10**8}}
        )
        self.expect(self.ingest(file), lines=1, uplinks_there=1, values_there=2, events_there=2)

    def test_adds_the_values_and_events_that_are_missing(self):
        file = self.write("t", [telegram(number) for number in range(3)])
        self.ingest(file)
        self.database["eav_values"].delete_many({**self.devices, "obis_code": "8-0:1.0.0"})
        self.database["eav_events"].delete_many({**self.devices, "message": "LEAK"})
        self.expect(
            self.ingest(file), lines=3, uplinks_there=3, values=3, values_there=3, events=3,
            events_there=3,
        )
        self.expect_once(3)

    def test_looks_past_the_values_of_others_at_the_same_time(self):
        file = self.write("t", [telegram(0), telegram(1, secs=SECS + 10_000)])
        self.ingest(file)
        self.insert_strangers()
        self.expect(self.ingest(file), lines=2, uplinks_there=2, values_there=4, events_there=4)

    def insert_strangers(self):
        model = self.stored("eav_values")[0]
        del model["_id"]
        self.database["eav_values"].insert_many(
            [{**model, "message_id": "another", "timestamp": SECS + number}
             for number in range(1, 2000)]
        )

    def test_takes_the_same_line_twice_for_one(self):
        self.expect(
            self.ingest(self.write("t", [telegram(1), telegram(1)])),
            lines=2, uplinks=1, uplinks_there=1, values=2, events=2,
        )
        self.expect_once(1)

    def test_keeps_telegrams_of_another_time_device_or_payload_apart(self):
        self.expect(
            self.ingest(self.write("t", [
                telegram(1), telegram(1, secs=SECS + 1), telegram(1, device=FIRST_DEVICE + 1),
                {**telegram(2), "time": SECS + 1}, telegram(1, secs=None),
            ])), lines=5, uplinks=5, values=10, events=10,
        )

    def test_rejects_a_reading_that_contradicts_the_stored_one(self):
        reading = {"time": SECS, "obis": "1-0:1.8.0", "value": 5, "unit": "kWh"}
        options = ("--device", FIRST_DEVICE, "--rejects", self.rejects)
        self.expect(self.ingest(*options, self.write("a", [reading])), lines=1, values=1)
        self.expect(
            self.ingest(*options, self.write("b", [reading, {**reading, "value": 6}])), 1,
            lines=2, values_there=1, rejected=1,
        )
        self.assertIn("another value, 5", self.rejected()[0]["reason"])
        self.assertEqual(len(self.stored("eav_values")), 1)


class Ended(IngestCase):
    """By a kill at each call to the stores, or by a call that throws."""

    def expect_complete_after(self, fault, records, file_lines):
        file = self.write("t", file_lines)
        counts = 0
        for step in range(1, 100):
            with self.subTest(fault, step=step):
                self.clear()
                ended = self.ingest(
                    "--batch", 2, file, plugin=FAULTY_PLUGIN, KELVRO_REAL_PLUGIN=PLUGIN,
                    KELVRO_FAULT=f"{step} {fault}",
                )
                if fault.startswith("kill"):
                    if ended.returncode == 0:
                        break
                    self.assertEqual(ended.returncode, -signal.SIGKILL)
                    self.assertEqual(self.ingest(file).returncode, 0)
                else:
                    self.assertEqual(ended.returncode, 0, ended.stderr)
                    if step > 7:
                        break
                self.expect_once(records)
                counts = step
        self.assertEqual(counts, 7)  # Of three uplinks in two batches, with values and events.

    def test_by_a_kill_at_any_step_loses_nothing_and_stores_nothing_twice(self):
        for fault in ("kill-before", "kill-within", "kill-after"):
            self.expect_complete_after(fault, 3, [telegram(number) for number in range(3)])

    def test_by_a_kill_at_any_step_of_telegrams_without_a_time(self):
        self.expect_complete_after(
            "kill-within", 3, [telegram(number, secs=None) for number in range(3)]
        )

    def test_calls_are_made_again_without_storing_anything_twice(self):
        for fault in ("throw-before", "throw-within", "throw-after"):
            self.expect_complete_after(fault, 3, [telegram(number) for number in range(3)])

    def test_by_a_kill_within_readings_loses_none_and_stores_none_twice(self):
        file = self.write("r", [
            {"time": SECS, "obis": f"1-0:{number}.7.0", "value": number} for number in range(9)
        ])
        for step in (1, 2, 3):
            for fault in ("kill-before", "kill-within", "kill-after", "throw-within"):
                self.clear()
                self.ingest(
                    "--batch", 3, "--device", FIRST_DEVICE, file, plugin=FAULTY_PLUGIN,
                    KELVRO_REAL_PLUGIN=PLUGIN, KELVRO_FAULT=f"{step} {fault}",
                )
                self.ingest("--device", FIRST_DEVICE, file)
                self.assertEqual(
                    sorted(each["obis_code"] for each in self.stored("eav_values")),
                    [f"1-0:{number}.7.0" for number in range(9)],
                )


class Rejected(IngestCase):
    def test_lines_are_kept_with_the_reason_and_the_rest_is_stored(self):
        bad = ["no JSON\n", "[1]\n", '{"some": "thing"}\n',
               json.dumps({**telegram(2), "telegram": "0g"}) + "\n",
               json.dumps({**telegram(2), "time": 2**31}) + "\n"]
        file = self.write("t", [telegram(1), *bad, "\n", telegram(3)])
        result = self.ingest("--rejects", self.rejects, file)
        self.expect(result, 1, lines=7, uplinks=2, values=4, events=4, rejected=5)
        rejected = self.rejected()
        self.assertEqual([each["line"] + "\n" for each in rejected], bad)
        self.assertEqual([each["line_number"] for each in rejected], [2, 3, 4, 5, 6])
        for each, reason in zip(rejected, (
            "not JSON", "not a JSON object", "neither a telegram", "hexadecimal", "after 2038"
        )):
            self.assertIn(reason, each["reason"])
            self.assertEqual(each["file"], str(file))
        self.assertIn(f"{file}, line 2 rejected: not JSON", result.stderr)

    def test_lines_are_added_to_the_file(self):
        self.rejects.write_text('{"earlier": 1}\n', encoding="utf-8")
        self.ingest("--rejects", self.rejects, text="no JSON\n")
        self.assertEqual(len(self.rejected()), 2)

    def test_lines_are_named_up_to_twenty_and_then_counted(self):
        result = self.ingest(text="no JSON\n" * 100)
        self.expect(result, 1, lines=100, rejected=100)
        self.assertEqual(result.stderr.count("rejected: not JSON"), 20)

    def test_readings_say_that_nobody_said_the_device(self):
        result = self.ingest(text=lines([{"time": SECS, "obis": "1-0:1.8.0", "value": 5}]))
        self.expect(result, 1, lines=1, rejected=1)
        self.assertIn("--device", result.stderr)

    def test_lines_longer_than_a_megabyte_take_no_more_memory(self):
        process = self.start("--rejects", self.rejects)
        process.stdin.write(lines([telegram(1)]))
        for _ in range(1200):
            process.stdin.write("x" * 2**20)
        process.stdin.write("\n" + lines([telegram(2)]))
        process.stdin.flush()
        status = pathlib.Path(f"/proc/{process.pid}/status").read_text(encoding="utf-8")
        output, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, 1, errors)
        (peak,) = re.findall(r"VmHWM:\s+(\d+) kB", status)
        self.assertLess(int(peak), 2**20)
        self.assertEqual(json.loads(output)["rejected"], 1)
        (reject,) = self.rejected()
        self.assertIn("longer than", reject["reason"])
        self.assertEqual(reject["line"], "x" * 2**20)
        self.expect_once(2)

    def refused(self, **environment):
        file = self.write("t", [telegram(1), telegram(2, meter="other", battery_v=2), telegram(3)])
        return self.ingest(
            "--rejects", self.rejects, file, plugin=FAULTY_PLUGIN, KELVRO_REAL_PLUGIN=PLUGIN,
            KELVRO_FAULT="0", **environment,
        )

    def test_uplinks_that_the_store_refuses_are_kept_with_its_words(self):
        self.expect(
            self.refused(KELVRO_REFUSED_METER="other"), 1, lines=3, uplinks=2, values=4, events=4,
            rejected=1,
        )
        self.assertIn("no such meters here", self.rejected()[0]["reason"])
        self.assertEqual(self.rejected()[0]["line_number"], 2)
        self.expect_once(2)

    def test_values_that_the_store_refuses_do_not_keep_others_out(self):
        file = self.write("t", [telegram(1), telegram(2, tariff_nr=2), telegram(3)])
        result = self.ingest(
            "--rejects", self.rejects, file, plugin=FAULTY_PLUGIN, KELVRO_REAL_PLUGIN=PLUGIN,
            KELVRO_FAULT="0", KELVRO_REFUSED_CODE="field:tariff_nr",
        )
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertEqual([each["line_number"] for each in self.rejected()], [2])
        self.assertIn("no such values here", self.rejected()[0]["reason"])
        spoilt = {**self.devices, "payload": "00000002"}
        (uplink,) = self.database["ul_messages"].find(spoilt)
        for collection in ("eav_values", "eav_events"):
            self.database[collection].delete_many({"message_id": uplink["_id"]})
        self.database["ul_messages"].delete_one(spoilt)
        self.expect_once(2)

    def test_lines_end_the_work_when_their_file_is_full(self):
        result = self.ingest("--rejects", "/dev/full", text=lines([telegram(1), "no JSON\n"]))
        self.assertEqual(result.returncode, 1)
        self.assertIn("/dev/full", result.stderr)
        self.assertIn("No space left", result.stderr)
        self.assertEqual(json.loads(result.stdout), {
            **NOTHING, "lines": 2, "rejected": 1, "unfinished": 1,
        })


class Input(IngestCase):
    def test_may_be_two_files(self):
        a = self.write("a", [telegram(1)])
        b = self.write("b", [telegram(2), "no JSON\n"])
        result = self.ingest(a, b)
        self.expect(result, 1, lines=3, uplinks=2, values=4, events=4, rejected=1)
        self.assertIn(f"{b}, line 2 rejected", result.stderr)

    def test_may_be_the_standard_input_without_an_end_of_its_last_line(self):
        self.expect(
            self.ingest("-", text=lines([telegram(1)]).rstrip("\n")), lines=1, uplinks=1, values=2,
            events=2,
        )

    def test_is_stored_after_a_second_though_more_may_come(self):
        process = self.start()
        process.stdin.write(lines([telegram(1)]))
        process.stdin.flush()
        eventually(lambda: len(self.stored("eav_events")) == 2)
        self.assertIsNone(process.poll())
        process.stdin.close()
        self.assertEqual(process.wait(timeout=60), 0)

    def test_is_followed_where_the_file_grows_is_cut_and_is_made_anew(self):
        file = self.write("t", [telegram(1)])
        process = self.start("--follow", file)
        eventually(lambda: len(self.stored("eav_events")) == 2)
        with file.open("a", encoding="utf-8") as growing:
            text = lines([telegram(2)])
            growing.write(text[:30])
            growing.flush()
            growing.write(text[30:])
        eventually(lambda: len(self.stored("eav_events")) == 4)
        file.write_text(lines([telegram(3)]), encoding="utf-8")
        eventually(lambda: len(self.stored("eav_events")) == 6)
        file.rename(self.folder / "old")
        self.write("t", [telegram(4)])
        eventually(lambda: len(self.stored("eav_events")) == 8)
        process.send_signal(signal.SIGTERM)
        output, errors = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0, errors)
        self.assertEqual(json.loads(output)["uplinks"], 4)
        self.expect_once(4)

    def test_that_is_followed_ends_well_by_an_interrupt_unless_lines_were_rejected(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            for bad, status in (([], 0), (["no JSON\n"], 1)):
                self.clear()
                file = self.write("t", [telegram(1), *bad])
                process = self.start("--follow", file)
                eventually(lambda: len(self.stored("eav_events")) == 2)
                process.send_signal(number)
                output, errors = process.communicate(timeout=60)
                self.assertEqual(process.returncode, status, errors)
                self.assertEqual(json.loads(output), {
                    **NOTHING, "lines": 1 + len(bad), "uplinks": 1, "values": 2, "events": 2,
                    "rejected": len(bad),
                })

    def test_that_is_broken_off_is_stored_as_far_as_it_came_and_accounted_for(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            self.clear()
            process = self.start("--flush-after", "1h")
            process.stdin.write(lines([telegram(1)]))
            process.stdin.flush()
            eventually(lambda: self.has_read_all(process))
            process.send_signal(number)
            output, errors = process.communicate(timeout=60)
            self.assertEqual(process.returncode, 1, errors)
            self.assertEqual(json.loads(output), {
                **NOTHING, "lines": 1, "uplinks": 1, "values": 2, "events": 2,
            })

    @staticmethod
    def has_read_all(process):
        """Whether it waits for more with nothing left in the pipe."""
        waiting = bytearray(4)
        fcntl.ioctl(process.stdin, termios.FIONREAD, waiting)
        state = pathlib.Path(f"/proc/{process.pid}/wchan").read_text(encoding="utf-8")
        return int.from_bytes(waiting, sys.byteorder) == 0 and "poll" in state

    def test_that_cannot_be_read_is_named(self):
        for file, reason in (("/nonexistent", "No such file"), (self.folder, "Is a directory")):
            result = self.ingest(file)
            self.assertEqual(result.returncode, 1)
            self.assertIn(f"cannot read {file}: {reason}", result.stderr)

    def test_is_not_followed_where_there_are_two(self):
        self.assertEqual(self.ingest("--follow", "a", "b").returncode, 2)

    def test_is_not_lost_where_nobody_looks_at_the_output(self):
        # There is something to be said before anything is stored.
        file = self.write("t", ["no JSON\n", *(telegram(number) for number in range(5))])
        reader, writer = os.pipe()
        os.close(reader)
        subprocess.run(
            self.command(file), stdout=writer, stderr=writer, timeout=60, check=False
        )
        os.close(writer)
        self.expect_once(5)

    def test_is_not_lost_where_the_output_is_closed(self):
        file = self.write("t", [telegram(number) for number in range(5)])
        subprocess.run(
            ["sh", "-c", 'exec "$@" >&- 2>&- <&-', "sh", *self.command("--batch", 1, file)],
            timeout=60, check=True,
        )
        self.expect_once(5)

    def test_shows_its_progress_on_a_narrow_terminal(self):
        file = self.write("t", [telegram(number) for number in range(300)])
        terminal = Terminal(40)
        process = subprocess.Popen(
            self.command("--batch", 1, file), stderr=terminal.its_side, stdout=subprocess.DEVNULL
        )
        shown = terminal.end()
        self.assertEqual(process.wait(timeout=60), 0)
        parts = re.split("\r|\n", re.sub(r"\x1b\[[0-9;]*[A-Za-z]", "", shown))
        *passing, last, _ = [part for part in parts if part] + [""]
        self.assertTrue(passing, parts)
        self.assertLessEqual(max(map(len, passing)), 39, parts)
        self.assertIn("300 lines in", last)

    def test_needs_a_server_at_the_beginning(self):
        result = self.ingest(text=lines([telegram(1)]), MONGODB_URL=unreachable_url())
        self.assertEqual(result.returncode, 1)
        self.assertIn("opening the message store at mongodb://127.0.0.1:1/", result.stderr)
        self.assertNotIn("secret", result.stderr)


if __name__ == "__main__":
    main(4)
