"""Log-log line charts side by side in one SVG file."""

import math
from dataclasses import dataclass
from xml.sax.saxutils import escape

WIDTH, HEIGHT = 380, 320          # of a panel
LEFT, RIGHT, TOP, BOTTOM = 62, 18, 44, 74
COLOURS = {"ours": "#c2410c", "floor": "#6b7280", "redis": "#7c3aed", "Node": "#15803d",
           "asyncio": "#1d4ed8"}
STYLE = """text { font: 12px system-ui, sans-serif; fill: #374151 }
.title { font-size: 14px; font-weight: 600; fill: #111827 }
.grid { stroke: #e5e7eb } .axis { stroke: #9ca3af; fill: none }
.curve { fill: none; stroke-width: 2; stroke-linejoin: round }"""


@dataclass
class Panel:
    title: str
    x_label: str
    y_label: str
    curves: dict    # name: [(x, microseconds)]


class Axis:
    """Maps a range of values onto pixels by their logarithm, from power of ten to power of ten."""

    def __init__(self, values, first_pixel, last_pixel):
        self.low = math.floor(math.log10(min(values)) + 1e-9)
        self.high = max(self.low + 1, math.ceil(math.log10(max(values)) - 1e-9))
        self.first, self.last = first_pixel, last_pixel

    def pixel(self, value):
        share = (math.log10(value) - self.low) / (self.high - self.low)
        return self.first + share * (self.last - self.first)

    def ticks(self):
        step = 2 if self.high - self.low > 5 else 1
        return [10.0 ** power for power in range(self.low, self.high + 1, step)]


def short(value):
    for unit, size in (("G", 1e9), ("M", 1e6), ("k", 1e3)):
        if value >= size:
            return f"{value / size:g}{unit}"
    return f"{value:g}"


def duration(micros):
    for unit, size in (("s", 1e6), ("ms", 1e3)):
        if micros >= size:
            return f"{micros / size:g} {unit}"
    return f"{micros:g} \N{MICRO SIGN}s"


def write_svg(file, panels):
    width = WIDTH * len(panels)
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {HEIGHT}" '
             f'width="{width}" height="{HEIGHT}" role="img">',
             f"<title>Cost against size</title><style>{STYLE}</style>",
             f'<rect width="{width}" height="{HEIGHT}" fill="#ffffff"/>']
    for index, panel in enumerate(panels):
        parts.append(f'<g transform="translate({index * WIDTH} 0)">')
        parts += draw_panel(panel)
        parts.append("</g>")
    parts.append("</svg>")
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text("\n".join(parts) + "\n")


def draw_panel(panel):
    points = [point for curve in panel.curves.values() for point in curve]
    x_axis = Axis([x for x, _ in points], LEFT, WIDTH - RIGHT)
    y_axis = Axis([y for _, y in points], HEIGHT - BOTTOM, TOP)
    yield text(LEFT, 20, panel.title, "start", "title")
    yield text(LEFT, 36, panel.y_label, "start")
    yield from grid(x_axis, y_axis)
    yield text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - BOTTOM + 36, panel.x_label)
    for name, curve in panel.curves.items():
        yield draw_curve(name, curve, x_axis, y_axis)
    yield from legend(panel.curves)


def grid(x_axis, y_axis):
    for value in x_axis.ticks():
        x = x_axis.pixel(value)
        yield f'<path class="grid" d="M{x:.1f} {TOP}V{HEIGHT - BOTTOM}"/>'
        yield text(x, HEIGHT - BOTTOM + 17, short(value))
    for value in y_axis.ticks():
        y = y_axis.pixel(value)
        yield f'<path class="grid" d="M{LEFT} {y:.1f}H{WIDTH - RIGHT}"/>'
        yield text(LEFT - 7, y + 4, duration(value), "end")
    yield f'<path class="axis" d="M{LEFT} {TOP}V{HEIGHT - BOTTOM}H{WIDTH - RIGHT}"/>'


def draw_curve(name, curve, x_axis, y_axis):
    colour = COLOURS[name]
    places = [(x_axis.pixel(x), y_axis.pixel(y)) for x, y in curve]
    line = "L".join(f"{x:.1f} {y:.1f}" for x, y in places)
    dots = "".join(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="2.8" fill="{colour}"/>'
                   for x, y in places)
    return f'<path class="curve" stroke="{colour}" d="M{line}"/>{dots}'


def legend(names):
    x, y = LEFT, HEIGHT - 16
    for name in names:
        yield f'<path d="M{x} {y - 4}h16" stroke="{COLOURS[name]}" stroke-width="3"/>'
        yield text(x + 21, y, name, "start")
        x += 42 + 7 * len(name)


def text(x, y, content, anchor="middle", kind=None):
    kind = f' class="{kind}"' if kind else ""
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}"{kind}>{escape(content)}</text>'
