"""The markdown table."""

from statistics import median

FORMATS = {
    "us": lambda v: f"{v:,.1f} us" if v < 1000 else f"{v / 1000:,.1f} ms",
    "1/s": lambda v: f"{v:,.0f} /s",
    "MiB": lambda v: f"{v:,.1f} MiB",
    "count": lambda v: f"{v:,.0f}",
    "x": lambda v: f"{v:.2f} x",
}
HEAD = ("| # | work | ours | floor | peers | ratio | target | verdict |\n"
        "|---|---|--:|--:|---|---|---|---|")
PEERS = ("redis", "Node", "asyncio", "ls", "cat")


def value_text(figure, name):
    return FORMATS[figure.unit](median(figure.values[name]))


def limit_text(figure, check):
    sign = ">=" if check.at_least else "<="
    better = "" if check.better is None else f" (better {check.better:.2f})"
    if check.rivals:
        return f"{sign} {check.limit:.2f}{better} x {' and '.join(check.rivals)}"
    return f"{sign} {FORMATS[figure.unit](check.limit)}{better}"


def verdict(check, values):
    return "met" if check.met(values) else "**missed**"


def line(figure):
    floors = [n for n in figure.values if n != "ours" and n not in PEERS]
    peers = [n for n in figure.values if n in PEERS]

    def named(names):
        return ", ".join(f"{name} {value_text(figure, name)}" for name in names) or "-"

    ratios = [f"{c.ratio(figure.values):.2f}" if c.rivals else "-" for c in figure.checks]
    cells = [
        figure.row, figure.work, value_text(figure, "ours"),
        value_text(figure, "floor") if floors == ["floor"] else named(floors), named(peers),
        "; ".join(ratios), "; ".join(limit_text(figure, c) for c in figure.checks),
        "; ".join(verdict(c, figure.values) for c in figure.checks),
    ]
    return "| " + " | ".join(cells) + " |"


def missed(figures):
    return sum(not check.met(figure.values) for figure in figures for check in figure.checks)


def closing(figures):
    total = sum(len(figure.checks) for figure in figures)
    return f"Targets missed: {missed(figures)} of {total}"
