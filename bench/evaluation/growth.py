"""What every operation takes when ever more is stored: kept in short, as a table."""

import json

from evaluation.ratios import WALL, met, micros
from evaluation.render import render

AT_MOST = 1.2  # times at the largest size what it takes at the smallest
KEY = ("operation", "devices", "records")


def shorten(results):
    """By operation, devices and records found: the index, and µs a record of each side by size."""
    part = results["growth"]
    operations = {}
    for each in part["operations"]:
        kept = operations.setdefault(tuple(each[key] for key in KEY), {"plans": [], "us": {}})
        if each["plan"] not in kept["plans"]:
            kept["plans"].append(each["plan"])
        kept["us"][str(each["stored"])] = {
            side: round(micros(each, side, WALL), 3) for side in each["sides"]}
    return {"about": {"date": results["date"], "machine": results["machine"],
                      "build": part["build"], "servers": part["servers"]},
            "operations": [dict(zip(KEY, key)) | kept for key, kept in operations.items()]}


def merge(kept, short):
    """What `short` has and `kept` has not, such as larger sizes, is added to it."""
    for new in short["operations"]:
        old = next((each for each in kept["operations"]
                    if all(each[key] == new[key] for key in KEY)), None)
        if old is None:
            kept["operations"].append(new)
        else:
            old["us"] = new["us"] | old["us"]
    return kept


def save(short, file):
    """A line for each operation, so that a difference of two files reads well."""
    lines = ",\n".join(f"  {json.dumps(each)}" for each in short["operations"])
    file.write_text(f'{{\n "about": {json.dumps(short["about"])},\n'
                    f' "operations": [\n{lines}\n ]\n}}\n')


def table(short):
    """µs a record at each size, and by how much that grows from the smallest to the largest."""
    sizes = sorted({int(size) for each in short["operations"] for size in each["us"]})
    heading = ("operation", "devices in the call", "records found",
               *(f"µs a record among {size:,}" for size in sizes), "grows: plug-in", "raw",
               "found by", "")
    rows = []
    for each in short["operations"]:
        plugin, raw = growth_of(each, "plug-in"), growth_of(each, "raw")
        rows.append((each["operation"], f"{each['devices']:,}", f"{each['records']:,}",
                     *(f"{each['us'][str(size)]['plug-in']:.1f}" if str(size) in each["us"] else ""
                       for size in sizes),
                     f"{plugin:.2f}", f"{raw:.2f}", ", then ".join(each["plans"]),
                     met(plugin <= AT_MOST)))
    return render([heading, *rows])


def growth_of(each, side):
    """From the smallest size to the largest."""
    costs = [each["us"][size][side] for size in sorted(each["us"], key=int)]
    return costs[-1] / costs[0]
