"""Tables as Markdown has them."""


def render(rows):
    widths = [max(map(len, column)) for column in zip(*rows)]
    lines = ["| " + " | ".join(cell.ljust(width) for cell, width in zip(cells, widths)) + " |"
             for cells in rows]
    lines.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|")
    return lines + [""]
