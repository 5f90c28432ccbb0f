"""Draws stored values with kelvro-host. See ../host_program.py.

usage: plot_mongotest.py KELVRO-HOST PLUGIN
"""

import os
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent))
from host_program import DEVICE, OTHER, START, HostTest, later, main  # noqa: E402
from bson import Int64  # noqa: E402

HOUR = 3600
DAY = 24 * HOUR


class PlotTest(HostTest):
    def setUp(self):
        super().setUp()
        self.base = self.folder / "it's"

    def put(self, code, unit, values, device=DEVICE):
        """Values by the seconds since START."""
        self.database["eav_values"].insert_many([{
            "modem_id": device, "message_id": "m1", "timestamp": Int64(START + secs), "tag": "main",
            "obis_code": code, "val_type": Int64(6), "extended_data": {"unit": unit} if unit else {},
            "ttl": later(), "value": value,
        } for secs, value in values.items()])

    def put_register(self, hours, device=DEVICE):
        """A register that counts 0.25 kWh in a quarter of each of the hours."""
        self.put("1-0:1.8.0", "kWh", {
            900 * quarter: 100 + 0.25 * quarter for quarter in range(4 * hours + 1)
        }, device)

    def plot(self, *words):
        return self.done("plot", "--output", self.base, *words).stdout

    def svg(self):
        return self.base.with_name("it's.svg").read_text(encoding="utf-8")

    def test_draws_several_curves_with_an_axis_for_each_unit(self):
        self.put("1-0:1.7.0", "kW", {60 * i: i % 7 for i in range(60)})
        self.put("1-0:2.7.0", "kW", {60 * i: i % 5 for i in range(60)})
        self.put("1-0:32.7.0", "V", {60 * i: 230 + i % 3 for i in range(60)})
        output = self.plot("-d", DEVICE, "--obis", "1-0:1.7.0,1-0:2.7.0,1-0:32.7.0")
        self.assertIn(f"60 values of 1-0:1.7.0 of device {DEVICE}\n", output)
        self.assertIn(f"drawn into {self.base}.svg and {self.base}.png\n", output)
        for text in (f">device {DEVICE}<", ">kW<", ">1-0:32.7.0 (V)<", ">1-0:2.7.0 (kW)<",
                     "Time (UTC), 2026-01-01", ">00:30<"):
            self.assertIn(text, self.svg())
        self.assertTrue(self.base.with_name("it's.png").read_bytes().startswith(b"\x89PNG"))

    def test_says_what_to_do_about_three_units(self):
        for code, unit in (("1-0:1.7.0", "kW"), ("1-0:32.7.0", "V"), ("1-0:31.7.0", "A")):
            self.put(code, unit, {0: 1, 60: 2})
        errors = self.fails(
            1, "plot", "-d", DEVICE, "--obis", "1-0:1.7.0,1-0:32.7.0,1-0:31.7.0", "--output",
            self.base)
        self.assertIn("3 units (A of 1-0:31.7.0; V of 1-0:32.7.0; kW of 1-0:1.7.0)", errors)
        self.assertIn("--obis", errors)
        self.assertFalse(self.base.with_name("it's.svg").exists())

    def test_draws_only_the_file_whose_kind_is_named(self):
        self.put("1-0:1.7.0", "kW", {0: 1, 60: 2})
        file = self.base.with_name("curve.png")
        self.done("plot", "-d", DEVICE, "--output", file)
        self.assertEqual([each.name for each in self.base.parent.iterdir()], ["curve.png"])

    def test_draws_the_period_that_is_asked_for(self):
        self.put("1-0:1.7.0", "kW", {60 * i: i for i in range(10)})
        period = ("--from", "2026-01-01T00:02Z", "--to", "2026-01-01T00:04Z")
        self.assertIn("3 values of", self.plot("-d", DEVICE, *period))

    def test_says_how_many_of_the_values_it_draws(self):
        self.put("1-0:1.7.0", "kW", {60 * i: i for i in range(10)})
        result = self.done("plot", "-d", DEVICE, "--output", self.base, "--limit", 4)
        self.assertIn("4 values of", result.stdout)
        self.assertIn("only the newest 4 are drawn", result.stderr)

    def test_draws_the_consumption_per_hour(self):
        self.put_register(3)
        self.put_register(2, OTHER)
        output = self.plot("-d", f"{DEVICE},{OTHER}", "--obis", "1-0:1.8.0", "--per", "hour")
        self.assertIn(f"consumption of 1-0:1.8.0 of device {DEVICE}: 3 hours\n", output)
        self.assertIn(f"consumption of 1-0:1.8.0 of device {OTHER}: 2 hours\n", output)
        for text in ("1-0:1.8.0 (kWh per hour)", f"device {OTHER}", "Time (UTC), 2026-01-01"):
            self.assertIn(text, self.svg())

    def test_draws_whole_days_of_a_period_also_at_its_ends(self):
        self.put("1-0:1.8.0", "kWh", {HOUR * i + 600: i for i in range(-30, 100)})
        output = self.plot("-d", DEVICE, "--obis", "1-0:1.8.0", "--per", "day", "--from",
                           "2026-01-01", "--to", "2026-01-03")
        self.assertIn("3 days\n", output)

    def test_counts_the_days_of_the_zone_that_is_asked_for(self):
        # From 00:30 to 00:30 in UTC, which is 06:00 in the zone: one whole day less.
        self.put("1-0:1.8.0", "kWh", {HOUR // 2 * i: i for i in range(-1, 2 * 48 + 2)})
        per_day = ("plot", "-d", DEVICE, "--obis", "1-0:1.8.0", "--per", "day", "--output",
                   self.base)
        self.assertIn("2 days\n", self.done(*per_day).stdout)
        self.assertIn("1 day\n", self.done(*per_day, "--local", TZ="Asia/Kolkata").stdout)
        self.assertIn("Time (Asia/Kolkata, UTC+05:30)", self.svg())

    def test_shows_where_the_consumption_is_not_known(self):
        self.put("1-0:1.8.0", "kWh", {
            **{HOUR * i: i for i in range(4)}, **{HOUR * i: i for i in range(8, 10)},
            **{HOUR * i: i - 10 for i in range(10, 13)},
        })
        output = self.plot("-d", DEVICE, "--obis", "1-0:1.8.0", "--per", "hour")
        self.assertIn(
            "12 hours, 5 without readings, 1 in which the register went back\n", output)
        for text in ("no readings", "register went back"):
            self.assertIn(f">{text}<", self.svg())

    def test_draws_on_the_terminal(self):
        self.put("1-0:1.7.0", "m³", {60 * i: i % 7 for i in range(60)})
        for columns in (40, 100):
            status, text = self.on_terminal(columns, "plot", "-d", DEVICE, "--ascii")
            self.assertEqual(status, 0)
            *lines, account = text.splitlines()
            self.assertLess(len(lines), 24)
            self.assertEqual(lines[0].strip(), f"1-0:1.7.0 of device {DEVICE} (m³)")
            self.assertTrue(columns - 12 <= max(map(len, lines)) <= columns, text)
            self.assertIn("*", text)
            self.assertEqual(account, f"60 values of 1-0:1.7.0 of device {DEVICE}")
        self.fails(2, "plot", "-d", DEVICE, "--ascii", "--output", self.base)

    def test_says_what_it_cannot_draw(self):
        self.put("1-0:1.8.0", "kWh", {0: 1, 60: 2})
        self.put("0-0:1.0.0", None, {0: "text", 60: "text"})
        plot = ("plot", "-d", DEVICE, "--output", self.base)
        for words, text in (
            (("--obis", "9-9:9.9.9"), f"no values of 9-9:9.9.9 of device {DEVICE}"),
            (("--obis", "0-0:1.0.0"), f"2 values of 0-0:1.0.0 of device {DEVICE} are no numbers"),
            (("--obis", "1-0:1.8.0", "--per", "day"), "not a whole day"),
        ):
            self.assertIn(text, self.fails(1, *plot, *words))
        # What there is, is drawn.
        result = self.done(*plot, "--obis", "9-9:9.9.9,1-0:1.8.0")
        self.assertIn("no values of 9-9:9.9.9", result.stderr)

    def test_says_which_file_it_cannot_write(self):
        self.put("1-0:1.7.0", "kW", {0: 1, 60: 2})
        self.assertIn(
            "/nonexistent/power", self.fails(1, "plot", "-d", DEVICE, "--output",
                                             "/nonexistent/power"))

    def test_says_that_gnuplot_is_not_installed(self):
        self.put("1-0:1.7.0", "kW", {0: 1, 60: 2})
        self.assertIn("gnuplot, which is not installed", self.fails(
            1, "plot", "-d", DEVICE, "--output", self.base, PATH="/nonexistent"))

    def test_refuses_what_is_no_portion_code_or_device(self):
        for wrong in (("--per", "week"), ("--obis", ""), ("-d", "x"), ("--limit", "-1")):
            self.fails(2, "plot", "--output", self.base, *wrong)


if __name__ == "__main__":
    os.environ.setdefault("TZ", "UTC")
    main()
