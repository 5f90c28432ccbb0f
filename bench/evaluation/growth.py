"""What every operation takes when ever more is stored: kept in short, as a table, as a picture."""

import json

from evaluation.ratios import WALL, met, micros
from evaluation.render import render

AT_MOST = 1.2  # times what it takes among a tenth as many
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
    """µs a record at each size, and from each size to the next one by how much it grew at most."""
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


def draw(short, file):
    import matplotlib  # pylint: disable=import-outside-toplevel

    matplotlib.use("svg")
    from matplotlib import pyplot  # pylint: disable=import-outside-toplevel

    # The same kept results give the same file.
    pyplot.rcParams.update({"svg.hashsalt": "kelvrostorage", "svg.fonttype": "none", "font.size": 8,
                            "axes.spines.top": False, "axes.spines.right": False})
    names = list(dict.fromkeys(each["operation"] for each in short["operations"]))
    columns = 4
    figure, axes = pyplot.subplots(-(-len(names) // columns), columns, figsize=(12, 1.9 * -(
        -len(names) // columns)), layout="constrained", squeeze=False)
    for axis in axes.flat[len(names):]:
        axis.axis("off")
    colours = {1: "#d1603d", 100: "#4f7ca8", 10000: "#5a9367"}
    for name, axis in zip(names, axes.flat):
        for each in (each for each in short["operations"] if each["operation"] == name):
            sizes = sorted(map(int, each["us"]))
            for side, line in (("plug-in", "-"), ("raw", ":")):
                axis.plot(sizes, [each["us"][str(size)][side] for size in sizes], line, marker=".",
                          color=colours[each["devices"]],
                          label=f"{each['devices']:,} in a call, {side}")
        axis.set(xscale="log", yscale="log", title=name)
        axis.title.set_fontsize(8)
        bottom, top = axis.get_ylim()
        axis.set_ylim(min(bottom, top / 10), max(top, bottom * 10))  # noise looks like noise
    for axis in axes[:, 0]:
        axis.set_ylabel("µs a record")
    for axis in axes.flat[max(len(names) - columns, 0):len(names)]:
        axis.set_xlabel("stored")
    labels = {label: handle for axis in axes.flat
              for handle, label in zip(*axis.get_legend_handles_labels())}
    figure.legend(labels.values(), labels.keys(), loc="outside upper center", ncols=6,
                  frameon=False)
    figure.savefig(file, metadata={"Date": None, "Creator": None})
