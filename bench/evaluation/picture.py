"""The kept results as pictures."""

import math

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot  # pylint: disable=wrong-import-position

SIDES = {"raw": "#b8bcc4", "floor": "#7fa6c9", "plug-in": "#d1603d"}
DEVICES = {1: "#d1603d", 100: "#4f7ca8", 10000: "#5a9367"}
CLOCKS = {"wall": "wall clock", "cpu": "CPU of the client"}

# Operations of one order of magnitude stand together, for each group has its own scale.
GROUPS = {
    "reads of many records, MongoDB": (
        "uplink GetMessages", "downlink GetCommands", "downlink GetNotAckCommands",
        "values GetValues", "events GetEvents"),
    "saves and deletes of many records, MongoDB": (
        "values SaveValues", "events SaveEvents", "uplink DeleteMessages",
        "downlink DeleteMessages", "values DeleteValues", "events DeleteEvents"),
    "one record a call, MongoDB": (
        "uplink SaveMessage", "downlink SaveMessage", "downlink GetById", "downlink SetStatus",
        "values GetValues first_last", "state Push persist", "state Pull from copy",
        "queue Push persist", "queue Pull from copy"),
    "one device a call, Redis": (
        "state Push", "state Pull", "queue Push", "queue Pull", "clients GetDeviceClients",
        "clients GetDeviceInfo"),
    "all devices in a call, Redis": ("state GetAllStates",),
}


def prepare(font_size):
    # The same kept results give the same file.
    pyplot.rcParams.update({"svg.hashsalt": "kelvrostorage", "svg.fonttype": "none",
                            "font.size": font_size,
                            "axes.spines.top": False, "axes.spines.right": False})


def save(figure, file):
    figure.savefig(file, metadata={"Date": None, "Creator": None})


def draw(kept, file):
    """Those of 10,000 records, as bars."""
    measured = {name.split(" / ")[0]: ratios for name, ratios in kept["comparisons"].items()
                if name.split(" / ")[1].startswith("10000")}
    groups = {title: [name for name in names if name in measured]
              for title, names in GROUPS.items()}
    groups = {title: names for title, names in groups.items() if names}
    prepare(9)
    heights = [len(names) + 1.2 for names in groups.values()]
    figure, rows = pyplot.subplots(
        len(groups), len(CLOCKS), figsize=(11, 0.42 * sum(heights) + 1), squeeze=False,
        gridspec_kw={"height_ratios": heights}, layout="constrained")
    for (title, names), axes in zip(groups.items(), rows):
        for (clock, words), axis in zip(CLOCKS.items(), axes):
            draw_bars(axis, [measured[name][clock]["us"] for name in names])
            axis.set_title(f"{title}: {words}", loc="left", fontsize=9)
            axis.set_yticks(range(len(names)), names if clock == "wall" else [""] * len(names))
    rows[-1][0].set_xlabel("µs a record")
    rows[-1][1].set_xlabel("µs a record")
    handles, labels = rows[0][0].get_legend_handles_labels()
    figure.legend(handles, labels, loc="outside upper center", ncols=len(SIDES), frameon=False)
    save(figure, file)


def draw_bars(axis, costs):
    thickness = 0.8 / len(SIDES)
    for place, (side, colour) in enumerate(SIDES.items()):
        rows = [row for row, cost in enumerate(costs) if side in cost]
        bars = axis.barh([row + (place - 1) * thickness for row in rows],
                         [costs[row][side] for row in rows], thickness, color=colour, label=side)
        axis.bar_label(bars, fmt=lambda us: f"{us:.3g}", padding=2, fontsize=6.5)
    axis.invert_yaxis()
    axis.margins(x=0.12)


def draw_growth(short, file):
    """A panel for each operation, over what is stored."""
    prepare(8)
    names = list(dict.fromkeys(each["operation"] for each in short["operations"]))
    columns = 4
    rows = math.ceil(len(names) / columns)
    figure, axes = pyplot.subplots(rows, columns, figsize=(12, 1.9 * rows), layout="constrained",
                                   squeeze=False)
    for axis in axes.flat[len(names):]:
        axis.axis("off")
    for name, axis in zip(names, axes.flat):
        for each in (each for each in short["operations"] if each["operation"] == name):
            sizes = sorted(map(int, each["us"]))
            for side, line in (("plug-in", "-"), ("raw", ":")):
                axis.plot(sizes, [each["us"][str(size)][side] for size in sizes], line, marker=".",
                          color=DEVICES[each["devices"]],
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
    save(figure, file)
