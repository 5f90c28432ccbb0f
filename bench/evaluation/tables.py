"""The results of a run as text: where it was measured and one table for each of its parts."""

from evaluation import growth, machine
from evaluation.ratios import (CPU, WALL, is_settled, met, micros, name_of, pairs_of, quartiles,
                               verdict)
from evaluation.render import render

MIB = 2**20


def report(results):
    lines = surroundings(results)
    lines += store_table(comparisons_of(results, "store"))
    lines += codec_table(comparisons_of(results, "codec"))
    lines += memory_table(results.get("memory", {}).get("queries", []))
    lines += growth_table(results)
    return "\n".join(lines)


def comparisons_of(results, part):
    return results.get(part, {}).get("comparisons", [])


def surroundings(results):
    info = results["machine"]
    lines = [f"Measured {results['date'][:10]} on {info['cores']} cores of {info['cpu']}"
             f"{' (virtual)' if info['virtual'] else ''}, {info['memory_gib']} GiB, "
             f"{info['system']}, Linux {info['kernel']}, TZ {info['TZ']}."]
    states = [(when, info[when]) for when in ("before", "after") if when in info]
    lines.append("The rest of the machine: " + "; ".join(
        f"{when} the run {active['busy']:.0%} busy, load {active['load']:.1f}"
        for when, active in states) + f"; {info['stolen']:.1%} of the time stolen during it.")
    if any(machine.is_busy(active) for _, active in states):
        lines.append("**The machine was busy with other work: its ratios are not to be trusted.**")
    for kind in ("build", "servers"):
        versions = {name: version for part in ("codec", "store", "growth")
                    for name, version in results.get(part, {}).get(kind, {}).items()}
        if versions:
            pairs = ", ".join(f"{name} {version}" for name, version in versions.items())
            lines.append(f"{kind.capitalize()}: {pairs}.")
    if results["quick"]:
        lines.append("A quick run: its ratios mean nothing.")
    elif "growth" not in results:
        lines += not_settled(results)
    return lines + [""]


def not_settled(results):
    names = [f"{name_of(each)} ({len(each['rounds'])} rounds)" for part in ("store", "codec")
             for each in comparisons_of(results, part) if not is_settled(each)]
    if not names:
        return ["All wall ratios have settled: their quartiles are within 3 % of the median."]
    return [f"Wall ratios that have not settled to quartiles within 3 %: {'; '.join(names)}."]


def store_table(comparisons):
    return comparison_table(
        comparisons, ("operation", "records"), ("raw", "floor", "plug-in"),
        (("wall: plug-in / raw", ("plug-in", "raw"), WALL),
         ("plug-in / floor", ("plug-in", "floor"), WALL),
         ("floor / raw", ("floor", "raw"), WALL),
         ("CPU: plug-in / raw", ("plug-in", "raw"), CPU),
         ("plug-in / floor", ("plug-in", "floor"), CPU),
         ("floor / raw", ("floor", "raw"), CPU)))


def codec_table(comparisons):
    return comparison_table(
        comparisons, ("codec", "input"), ("text", "direct", "alone"),
        (("wall: text / direct", ("direct", "text"), WALL),
         ("text / alone", ("alone", "text"), WALL),
         ("CPU: text / direct", ("direct", "text"), CPU),
         ("text / alone", ("alone", "text"), CPU)), faster=True)


def comparison_table(comparisons, what, sides, ratios, faster=False):
    if not comparisons:
        return []
    names = " / ".join(sides)
    heading = (*what, f"wall, µs a record: {names}", f"CPU, µs a record: {names}",
               *(title for title, _, _ in ratios), "goal", "")
    rows = [(each["operation"], each["input"],
             *(" / ".join(f"{micros(each, side, clock):.2f}" if side in each["sides"] else "–"
                          for side in sides) for clock in (WALL, CPU)),
             *(ratio_cell(each, pair, clock, faster) for _, pair, clock in ratios),
             *verdict(each)) for each in comparisons]
    return render([heading, *rows])


def ratio_cell(comparison, pair, clock, faster):
    if pair not in pairs_of(comparison):
        return "–"
    return with_quartiles(quartiles(comparison, pair, clock), faster)


def with_quartiles(of_costs, faster=False):
    """Median and quartiles; of the speeds rather than the costs if `faster`."""
    first, median, third = (1 / ratio for ratio in reversed(of_costs)) if faster else of_costs
    return f"{median:.2f} ({first:.2f} to {third:.2f})"


def memory_table(queries):
    if not queries:
        return []
    heading = ("memory of a query", "records", "they hold, MiB", "peak during the query, MiB",
               "raw peak, MiB", "goal, MiB", "")
    rows = [(each["operation"], str(each["records"]), f"{each['held_bytes'] / MIB:.1f}",
             f"{each['peak_bytes'] / MIB:.1f}", f"{each['raw_peak_bytes'] / MIB:.1f}",
             f"≤ {each['goal_bytes'] / MIB:.1f}",
             met(each["peak_bytes"] <= each["goal_bytes"])) for each in queries]
    return render([heading, *rows])


def growth_table(results):
    return growth.table(growth.shorten(results)) if "growth" in results else []
