"""Kept results: a run in short, to compare later ones with.

Ratios to what is measured in the same run are compared, never times: machines differ.
"""

import json

from evaluation.ratios import CLOCKS, micros, name_of, pairs_of, quartiles
from evaluation.render import render
from evaluation.tables import comparisons_of, with_quartiles

LEAST_CHANGE = 1.05  # what two runs of the same may differ by


def shorten(results):
    """By the comparisons' names: µs a record and quartiles of each ratio, both by clock."""
    comparisons = {}
    for part in ("store", "codec"):
        for each in comparisons_of(results, part):
            comparisons[name_of(each)] = {
                clock: {
                    "us": {side: round(micros(each, side, index), 3) for side in each["sides"]},
                    **{"/".join(pair): [round(ratio, 4) for ratio in quartiles(each, pair, index)]
                       for pair in pairs_of(each)},
                } for clock, index in CLOCKS.items()
            }
    about = {key: results[key] for key in ("date", "machine")}
    for part in ("codec", "store"):
        for kind in ("build", "servers"):
            about.setdefault(kind, {}).update(results.get(part, {}).get(kind, {}))
    return {"about": about, "comparisons": comparisons,
            "memory": {f"{each['operation']} / {each['records']}": each["peak_bytes"]
                       for each in results.get("memory", {}).get("queries", [])}}


def save(short, file):
    """A line for each comparison, so that a difference of two files reads well."""
    lines = [f"  {json.dumps(name)}: {json.dumps(ratios)}"
             for name, ratios in short["comparisons"].items()]
    body = ",\n".join(lines)
    file.write_text(f'{{\n "about": {json.dumps(short["about"])},\n'
                    f' "memory": {json.dumps(short["memory"])},\n'
                    f' "comparisons": {{\n{body}\n }}\n}}\n')


def load(file):
    return json.loads(file.read_text())


def differences(was, now):
    """Of the machine, the build and the servers."""
    pairs = [("processor", was["machine"]["cpu"], now["machine"]["cpu"])]
    pairs += [(name, version, now[kind].get(name)) for kind in ("build", "servers")
              for name, version in was[kind].items()]
    return [f"{name} {before}, now {after}" for name, before, after in pairs
            if after and before != after]


def check(before, now):
    """Table of all that both have, and the names of what got slower or larger."""
    rows = [("operation / input", "ratio", "wall: kept", "now", "CPU: kept", "now",
             "CPU now / kept", "")]
    worse = []
    for name, was in before["comparisons"].items():
        if name not in now["comparisons"]:
            continue
        for pair in ours(was["wall"]):
            rows.append(check_row(name, pair, was, now["comparisons"][name]))
            if "slower" in rows[-1][-1]:
                worse.append(f"{name}, {pair}: {rows[-1][-1]}")
    for query, peak in before["memory"].items():
        if now["memory"].get(query, 0) > LEAST_CHANGE * peak:
            worse.append(f"{query}: needs more memory")
    missing = [name for name in before["comparisons"] if name not in now["comparisons"]]
    return render(rows), worse, missing


def ours(ratios):
    return [pair for pair in ratios if pair in ("plug-in/raw", "direct/text", "alone/text")]


def check_row(name, pair, was, now):
    changes = {clock: change(was[clock][pair], now[clock][pair]) for clock in CLOCKS}
    (kept_first, kept_median, kept_third), (first, median, third) = was["cpu"][pair], now["cpu"][pair]
    return (name, pair,
            *(with_quartiles(run[clock][pair]) for clock in CLOCKS for run in (was, now)),
            with_quartiles((first / kept_third, median / kept_median, third / kept_first)),
            ", ".join(f"{clock} {word}" for clock, word in changes.items() if word))


def change(was, now):
    """Slower or faster only where the medians differ and the quartiles lie apart."""
    if now[1] > LEAST_CHANGE * was[1] and now[0] > was[2]:
        return "slower"
    if was[1] > LEAST_CHANGE * now[1] and was[0] > now[2]:
        return "faster"
    return ""
