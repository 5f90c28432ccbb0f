"""What the rounds of a comparison say: costs a record and ratios of costs."""

import statistics

WALL, CPU = 0, 1  # of the costs of a side in a round
CLOCKS = {"wall": WALL, "cpu": CPU}
SETTLED_WITHIN = 0.03

# Which sides' costs are divided by which, by the sides' first name. What is ours comes first, and
# first of all what the goals and the check against kept results look at.
PAIRS = {
    "plug-in": (("plug-in", "raw"), ("plug-in", "floor"), ("floor", "raw")),
    "direct": (("direct", "text"), ("alone", "text")),
}


def name_of(comparison):
    return f"{comparison['operation']} / {comparison['input']}"


def pairs_of(comparison):
    """Those whose sides the comparison has."""
    sides = comparison["sides"]
    return [pair for pair in PAIRS[sides[0]] if set(pair) <= set(sides)]


def micros(comparison, side, clock):
    """Median of what a record takes."""
    index = comparison["sides"].index(side)
    return statistics.median(costs[index][clock] for costs in comparison["rounds"]) * 1e6


def quartiles(comparison, pair, clock):
    """First, median and third of the ratios in each round."""
    above, below = (comparison["sides"].index(side) for side in pair)
    ratios = [costs[above][clock] / costs[below][clock] for costs in comparison["rounds"]]
    if len(ratios) == 1:
        ratios *= 2
    return statistics.quantiles(ratios, method="inclusive")


def is_settled(comparison):
    first, median, third = quartiles(comparison, pairs_of(comparison)[0], WALL)
    return max(median - first, third - median) <= SETTLED_WITHIN * median


def verdict(comparison):
    """The goal and whether it is met; empty texts if there is none."""
    goal = comparison["goal"]
    pair = (comparison["sides"][0], goal["against"])
    if not (goal["cost_at_most"] or goal["speedup_at_least"]) or pair[1] not in comparison["sides"]:
        return "", ""
    median = quartiles(comparison, pair, WALL)[1]
    if goal["cost_at_most"]:
        return (f"≤ {goal['cost_at_most']:g} of {pair[1]}", met(median <= goal["cost_at_most"]))
    return (f"≥ {goal['speedup_at_least']:g} times", met(1 / median >= goal["speedup_at_least"]))


def met(is_met):
    return "met" if is_met else "missed"
