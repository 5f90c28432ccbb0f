#!/usr/bin/env python3
"""Tests of bench/evaluation."""

import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True

from evaluation import growth, kept, ratios, tables  # pylint: disable=wrong-import-position


def comparison(plugin, raw=(1.0, 1.0, 1.0, 1.0), at_most=1.1, operation="values GetValues"):
    """With a floor of twice the raw side; the same on both clocks."""
    rounds = [[[cost * 1e-6] * 2 for cost in (ours, theirs, 2 * theirs)]
              for ours, theirs in zip(plugin, raw)]
    return {"operation": operation, "input": "10000", "sides": ["plug-in", "raw", "floor"],
            "goal": {"against": "raw", "cost_at_most": at_most, "speedup_at_least": 0},
            "rounds": rounds}


def results(*comparisons):
    return {"date": "2000-01-01", "machine": {"cpu": "one"}, "store": {
        "build": {"Qt": "5"}, "servers": {}, "comparisons": list(comparisons)}}


def checked(before, now):
    _, worse, missing = kept.check(kept.shorten(results(before)), kept.shorten(results(now)))
    return worse, missing


class Ratios(unittest.TestCase):
    def test_are_those_of_each_round(self):
        slow_second_half = comparison((1.1, 1.2, 2.6, 2.8), raw=(1.0, 1.0, 2.0, 2.0))
        median = ratios.quartiles(slow_second_half, ("plug-in", "raw"), ratios.WALL)[1]
        self.assertAlmostEqual(median, 1.25)
        floor = ratios.quartiles(slow_second_half, ("plug-in", "floor"), ratios.WALL)[1]
        self.assertAlmostEqual(floor, 0.625)

    def test_are_settled_when_both_quartiles_are_near_the_median(self):
        self.assertTrue(ratios.is_settled(comparison((1.0, 1.01, 1.02, 1.03))))
        self.assertFalse(ratios.is_settled(comparison((1.0, 1.0, 1.0, 1.3))))

    def test_meet_their_goal_up_to_it(self):
        self.assertEqual(ratios.verdict(comparison((1.1,) * 4)), ("≤ 1.1 of raw", "met"))
        self.assertEqual(ratios.verdict(comparison((1.11,) * 4)), ("≤ 1.1 of raw", "missed"))

    def test_are_given_the_other_way_round_for_a_speedup(self):
        self.assertEqual(tables.with_quartiles((0.2, 0.25, 0.5), faster=True),
                         "4.00 (2.00 to 5.00)")


class Check(unittest.TestCase):
    def test_names_what_got_slower_by_more_than_its_noise(self):
        worse, _ = checked(comparison((1.0, 1.0, 1.1, 1.1)), comparison((1.2, 1.2, 1.3, 1.3)))
        self.assertEqual(worse, ["values GetValues / 10000, plug-in/raw: wall slower, cpu slower"])

    def test_passes_over_noise_and_small_changes(self):
        self.assertEqual(checked(comparison((1.0, 1.0, 1.4, 1.4)),
                                 comparison((1.3, 1.3, 1.5, 1.5))), ([], []))
        self.assertEqual(checked(comparison((1.0,) * 4), comparison((1.04,) * 4)), ([], []))

    def test_says_what_was_not_measured(self):
        other = comparison((1.0,) * 4, operation="events GetEvents")
        self.assertEqual(checked(other, comparison((1.0,) * 4)),
                         ([], ["events GetEvents / 10000"]))

    def test_names_other_versions(self):
        now = results(comparison((1.0,) * 4))
        now["store"]["build"]["Qt"] = "6"
        about = kept.shorten(results(comparison((1.0,) * 4)))["about"]
        self.assertEqual(kept.differences(about, kept.shorten(now)["about"]), ["Qt 5, now 6"])

    def test_reads_what_was_kept(self):
        short = kept.shorten(results(comparison((1.0,) * 4), comparison((2.0,) * 4)))
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "kept.json"
            kept.save(short, file)
            self.assertEqual(kept.load(file), short)


def grown(stored, plugin, raw=1.0, devices=1, plan="by time"):
    return {"operation": "values GetValues", "devices": devices, "records": 100, "stored": stored,
            "plan": plan, "sides": ["plug-in", "raw"],
            "rounds": [[[plugin * 1e-6] * 2, [raw * 1e-6] * 2]]}


def shortened(*operations):
    return growth.shorten({"date": "2000-01-01", "machine": {}, "growth": {
        "build": {}, "servers": {}, "operations": list(operations)}})


class Growth(unittest.TestCase):
    def test_is_from_the_smallest_size_to_the_largest(self):
        row = growth.table(shortened(grown(10_000, 2.0), grown(1_000_000, 2.6, 1.1),
                                     grown(100_000, 9.0)))[2]
        self.assertEqual([cell.strip() for cell in row.split("|")[1:-1]],
                         ["values GetValues", "1", "100", "2.0", "9.0", "2.6", "1.30", "1.10",
                          "by time", "missed"])

    def test_names_each_index_once(self):
        short = shortened(grown(10_000, 1.0), grown(100_000, 1.0, plan="by scan"),
                          grown(1_000_000, 1.0))
        self.assertEqual(short["operations"][0]["plans"], ["by time", "by scan"])

    def test_keeps_what_a_huge_run_does_not_measure(self):
        before = shortened(grown(10_000, 1.0), grown(10_000, 3.0, devices=100))
        both = growth.merge(before, shortened(grown(10_000, 7.0), grown(10_000_000, 8.0)))
        self.assertEqual([each["us"] for each in both["operations"]],
                         [{"10000": {"plug-in": 1.0, "raw": 1.0},
                           "10000000": {"plug-in": 8.0, "raw": 1.0}},
                          {"10000": {"plug-in": 3.0, "raw": 1.0}}])

    def test_reads_what_was_kept(self):
        short = shortened(grown(10_000, 1.0))
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "kept.json"
            growth.save(short, file)
            self.assertEqual(kept.load(file), short)


unittest.main()
