"""The kept results of 10,000 records as bars."""

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot  # pylint: disable=wrong-import-position

SIDES = {"raw": "#b8bcc4", "floor": "#7fa6c9", "plug-in": "#d1603d"}
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


def draw(kept, file):
    measured = {name.split(" / ")[0]: ratios for name, ratios in kept["comparisons"].items()
                if name.split(" / ")[1].startswith("10000")}
    groups = {title: [name for name in names if name in measured]
              for title, names in GROUPS.items()}
    groups = {title: names for title, names in groups.items() if names}
    # The same kept results give the same file.
    pyplot.rcParams.update({"svg.hashsalt": "kelvrostorage", "svg.fonttype": "none", "font.size": 9,
                            "axes.spines.top": False, "axes.spines.right": False})
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
    figure.savefig(file, metadata={"Date": None, "Creator": None})


def draw_bars(axis, costs):
    thickness = 0.8 / len(SIDES)
    for place, (side, colour) in enumerate(SIDES.items()):
        rows = [row for row, cost in enumerate(costs) if side in cost]
        bars = axis.barh([row + (place - 1) * thickness for row in rows],
                         [costs[row][side] for row in rows], thickness, color=colour, label=side)
        axis.bar_label(bars, fmt=lambda us: f"{us:.3g}", padding=2, fontsize=6.5)
    axis.invert_yaxis()
    axis.margins(x=0.12)
