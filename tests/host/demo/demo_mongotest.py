"""Runs kelvro-host with the real plug-in and real servers: its exit status and what it prints.

usage: demo_mongotest.py KELVRO-HOST PLUGIN SPOILING-PLUGIN DATA,
with MONGODB_URL and REDIS_URL in the environment
"""

import json
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent))
from host_program import HOST, PLUGIN, ProgramTest, main, unreachable_url  # noqa: E402

SPOILING_PLUGIN, DATA = sys.argv[3:5]
EQUAL = "51 stored, 51 read back equal, 0 lost"


class Demo(ProgramTest):
    def setUp(self):
        super().setUp()
        # Two seconds of the meter's readings, for the tests that are not about them.
        readings = pathlib.Path(DATA, "meter_readings.ndjson").read_text(encoding="utf-8")
        self.few_readings = self.write(
            "readings.ndjson", "".join(readings.splitlines(keepends=True)[:64])
        )

    def run_host(self, *arguments, **environment):
        return self.run_program([HOST, *arguments], **environment)

    def demo(self, *arguments, plugin=PLUGIN, few=True, **environment):
        readings = ("--readings", self.few_readings) if few else ()
        decoder = () if any("--decoder" in str(each) for each in arguments) else (
            "--decoder=shipped",
        )
        return self.run_host(
            "demo", "--plugin", plugin, *decoder, *readings, *arguments, **environment
        )

    def storing_demo(self, *arguments, **options):
        """A demo that gets as far as storing: what it stores is deleted, however the test ends."""
        self.addCleanup(self.clear, *arguments)
        return self.demo(*arguments, **options)

    def clear(self, *arguments):
        result = self.demo(*arguments, "--clear")
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return result

    def expect_lines(self, result, *lines, status=0):
        self.assertEqual(result.returncode, status, result.stdout + result.stderr)
        for line in lines:
            self.assertIn(line, result.stdout.splitlines())

    def expect_failure(self, result, *texts):
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        for text in texts:
            self.assertIn(text, result.stderr)

    def test_accounts_for_every_record(self):
        self.expect_lines(
            self.storing_demo(few=False),
            f"uplink messages: 51 read, {EQUAL}",
            "meter readings: 8960 read, 8960 stored, 8960 read back equal, 0 lost",
            # The shipped readings have so many words of status; another decoder may find others.
            "events: 11 found, 11 stored, 11 read back equal, 0 lost",
            f"downlink commands: 51 issued, {EQUAL}",
            f"driver states: 51 kept, {EQUAL}",
            f"downlink queues: 51 made, {EQUAL}",
            f"registry entries: 51 made, {EQUAL}",
        )

    def test_accounts_for_every_event_that_the_installed_decoder_finds(self):
        result = self.storing_demo("--decoder=auto")
        self.expect_lines(result, f"uplink messages: 51 read, {EQUAL}")
        self.assertRegex(
            result.stdout, r"\nevents: (\d+) found, \1 stored, \1 read back equal, 0 lost\n"
        )

    def test_tells_a_store_that_spoils_a_message_from_a_good_one(self):
        for how, account in (
            ("lose", "51 read, 51 stored, 50 read back equal, 1 lost"),
            ("alter", "51 read, 51 stored, 50 read back equal, 0 lost, 1 different"),
            ("repeat", "51 read, 51 stored, 51 read back equal, 0 lost, 2 unexpected"),
        ):
            with self.subTest(how):
                result = self.storing_demo(
                    plugin=SPOILING_PLUGIN, KELVRO_REAL_PLUGIN=PLUGIN, KELVRO_SPOIL=how
                )
                self.expect_lines(result, f"uplink messages: {account}", status=1)

    def test_deletes_what_it_stored_when_asked(self):
        self.expect_lines(self.storing_demo())
        deleted = self.clear().stdout
        for kind in ("51 uplink messages", "64 meter readings", "11 events",
                     "51 downlink commands"):
            self.assertIn(f"Deleted {kind} of an earlier demo.\n", deleted)
        self.assertNotIn("Deleted", self.clear().stdout)

    def test_draws_the_power_curve(self):
        self.expect_lines(self.storing_demo(few=False))
        result = self.run_host(
            "plot", "--plugin", PLUGIN, "--output", self.folder / "power"
        )
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("280 values of 1-0:1.7.0 of device 31650618", result.stdout)
        svg = (self.folder / "power.svg").read_text(encoding="utf-8")
        for text in ("1-0:1.7.0 (kW)", "Time (UTC), 2019-03-24", "14:06:00"):
            self.assertIn(text, svg)
        self.assertTrue((self.folder / "power.png").read_bytes().startswith(b"\x89PNG"))

    def test_says_what_it_cannot_draw(self):
        result = self.run_host(
            "plot", "--plugin", PLUGIN, "--obis", "9-9:9.9.9"
        )
        self.expect_failure(result, "no values of 9-9:9.9.9 of device 31650618")

    def test_can_be_repeated_on_the_same_server(self):
        self.expect_lines(self.storing_demo())
        self.expect_lines(
            self.demo(), "Deleted 51 uplink messages of an earlier demo.",
            f"uplink messages: 51 read, {EQUAL}",
        )

    def test_prints_no_control_characters_into_a_file(self):
        self.assertNotRegex(self.storing_demo().stdout, "[\x00-\x09\x0b-\x1f]")

    def test_shows_the_plugins_log_lines_only_when_asked(self):
        self.assertEqual(self.storing_demo().stderr, "")
        self.assertIn("Save UL message", self.demo("--verbose").stderr)

    def test_reports_bad_lines_and_stores_the_rest(self):
        good = {"id": "91919191", "meter": "unknownmake", "media": "water", "total_m3": 0.1}
        lines = [
            json.dumps({"telegram": "0aff", "decoded": good}),
            "no JSON",
            json.dumps({"telegram": "0af", "decoded": good}),
            json.dumps({"telegram": "0aff", "decoded": {**good, "id": None}}),
        ]
        file = self.write("telegrams.ndjson", "\n".join(lines))
        result = self.storing_demo("--input", file)
        self.expect_lines(
            result, "uplink messages: 4 read, 3 rejected, 1 stored, 1 read back equal, 0 lost"
        )
        for number in (2, 3, 4):
            self.assertIn(f"{file}, line {number} rejected: ", result.stdout)

    def test_fails_without_any_telegram(self):
        file = self.write("telegrams.ndjson", "no JSON\n")
        self.expect_failure(self.demo("--input", file), f"{file} holds no record")

    def test_names_a_plugin_file_that_is_missing(self):
        self.expect_failure(self.demo(plugin="/nonexistent.so"), "/nonexistent.so")

    def test_names_a_file_that_is_no_plugin(self):
        self.expect_failure(self.demo(plugin=self.few_readings), str(self.few_readings))

    def test_names_a_settings_file_that_is_missing(self):
        self.expect_failure(
            self.demo("--settings", "/nonexistent"), "/nonexistent", "No such file"
        )

    def test_takes_the_settings_file_rather_than_the_environment(self):
        file = self.write("unreachable.json", json.dumps({"url": unreachable_url()}))
        self.expect_failure(
            self.demo("--settings", file), "opening the message store at mongodb://127.0.0.1:1/"
        )

    def test_says_that_it_was_not_told_of_any_server(self):
        self.expect_failure(self.demo(MONGODB_URL=""), "MONGODB_URL")

    def test_names_a_server_that_cannot_be_reached(self):
        result = self.demo(MONGODB_URL=unreachable_url())
        self.expect_failure(result, "opening the message store at mongodb://127.0.0.1:1/")
        self.assertNotIn("secret", result.stdout + result.stderr)

    def test_names_a_redis_server_that_cannot_be_reached(self):
        result = self.demo(REDIS_URL="redis://:secret@127.0.0.1:1")
        self.expect_failure(result, "opening the client registry at 127.0.0.1:1")
        self.assertNotIn("secret", result.stdout + result.stderr)

    def test_tells_wrong_usage_from_failure(self):
        self.assertEqual(self.run_host().returncode, 2)
        self.assertEqual(self.run_host("demo", "--nothing").returncode, 2)
        self.assertEqual(self.demo("--decoder=nothing").returncode, 2)

    def test_helps(self):
        result = self.run_host("demo", "--help")
        self.assertEqual(result.returncode, 0)
        self.assertIn("--plugin", result.stdout)


if __name__ == "__main__":
    main(4)
