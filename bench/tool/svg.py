"""Charts as SVG, readable on a light and on a dark page."""
import html
import math

STYLE = """
    svg { --page: #ffffff; --ink: #1f2328; --soft: #59636e; --grid: #d8dee4;
          --codec: #0969da; --floor: #4d8f5c; --plain: #9a7b2f; --peer: #8c959f; }
    @media (prefers-color-scheme: dark) {
      svg { --page: #0d1117; --ink: #e6edf3; --soft: #9198a1; --grid: #30363d;
            --codec: #4493f8; --floor: #57ab6a; --plain: #c9a227; --peer: #6e7681; }
    }
    text { font: 12px system-ui, sans-serif; fill: var(--ink); stroke: var(--page); stroke-width: 3px;
           paint-order: stroke; }
    .title { font-size: 15px; font-weight: 600; }
    .panel { font-weight: 600; }
    .soft { fill: var(--soft); font-size: 11px; }
    .page { fill: var(--page); }
    .grid { stroke: var(--grid); stroke-width: 1; }
    .codec { fill: var(--codec); } .floor { fill: var(--floor); } .plain { fill: var(--plain); }
    .peer { fill: var(--peer); }
    .fit { stroke: var(--codec); stroke-width: 1.5; fill: none; }
    .ours { font-weight: 600; }
"""

KINDS = {"codec": "this codec", "floor": "hand-written floor", "plain": "plain path", "peer": "other library"}


class Svg:
    def __init__(self, width, height, title):
        self.width, self.height = width, height
        self.parts = [f'<rect class="page" width="{width}" height="{height}"/>']
        self.title = title
        self.text(16, 26, title, "title")

    def text(self, x, y, text, style="", anchor="start"):
        self.parts.append(f'<text class="{style}" x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}">{html.escape(text)}</text>')

    def rect(self, x, y, width, height, style):
        self.parts.append(f'<rect class="{style}" x="{x:.1f}" y="{y:.1f}" width="{width:.1f}" height="{height:.1f}" rx="1.5"/>')

    def line(self, x1, y1, x2, y2, style="grid"):
        self.parts.append(f'<line class="{style}" x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}"/>')

    def dot(self, x, y, style):
        self.parts.append(f'<circle class="{style}" cx="{x:.1f}" cy="{y:.1f}" r="3.5"/>')

    def legend(self, x, y, kinds):
        for kind in kinds:
            self.rect(x, y - 9, 10, 10, kind)
            self.text(x + 15, y, KINDS[kind], "soft")
            x += 35 + 7 * len(KINDS[kind])

    def made(self):
        body = "\n  ".join(self.parts)
        return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {self.width} {self.height}" '
                f'width="{self.width}" height="{self.height}" role="img">\n  <title>{html.escape(self.title)}</title>\n'
                f"  <style>{STYLE}  </style>\n  {body}\n</svg>\n")


def duration(ns):
    """Three figures and a unit."""
    for unit, factor in (("ns", 1), ("µs", 1e3), ("ms", 1e6)):
        value = ns / factor
        if value < 999.5 or unit == "ms":
            digits = max(0, 2 - int(math.floor(math.log10(value)))) if value > 0 else 0
            return f"{value:.{digits}f} {unit}"
    raise AssertionError


def power(decade):
    """10 to the power of @p decade in nanoseconds, in words."""
    unit = min(decade // 3, 2)
    return f"{10 ** (decade - 3 * unit):,g} {('ns', 'µs', 'ms')[unit]}"


def bars(title, panels):
    """@p panels: (heading, [(label, kind, ns)]). Bars on a logarithmic scale, one scale for each panel."""
    columns, width, row, label_width, value_width = 2, 490, 17, 158, 62
    tops, heights = [], []
    top = 64
    for start in range(0, len(panels), columns):
        height = 52 + row * max(len(bars_) for _, bars_ in panels[start:start + columns])
        tops.append(top)
        heights.append(height)
        top += height
    svg = Svg(width * columns, top + 6, title)
    kinds = [kind for kind in KINDS if any(kind == bar[1] for _, bars_ in panels for bar in bars_)]
    svg.legend(16, 46, kinds)
    svg.text(width * columns - 16, 46, "logarithmic scale, shorter is faster", "soft", "end")
    for i, (heading, rows) in enumerate(panels):
        left, y = (i % columns) * width + 16, tops[i // columns]
        svg.text(left, y + 14, heading, "panel")
        low = math.floor(math.log10(min(ns for _, _, ns in rows)))
        high = max(low + 1, math.ceil(math.log10(max(ns for _, _, ns in rows))))
        origin, length = left + label_width, width - label_width - value_width - 24
        scale = length / (high - low)
        bottom = y + 24 + row * len(rows)
        for decade in range(low, high + 1):
            x = origin + (decade - low) * scale
            svg.line(x, y + 22, x, bottom)
            svg.text(x, bottom + 13, power(decade), "soft", "middle")
        for k, (label, kind, ns) in enumerate(rows):
            middle = y + 24 + k * row
            bar = max(1.5, (math.log10(ns) - low) * scale)
            ours = "ours" if kind == "codec" else ""
            svg.text(origin - 6, middle + 12, label, ours, "end")
            svg.rect(origin, middle + 2, bar, row - 5, kind)
            svg.text(origin + bar + 5, middle + 12, duration(ns), ours or "soft")
    return svg.made()


def steps(most):
    """Round numbers from 0 to at least @p most, some five of them."""
    raw = most / 4
    unit = 10 ** math.floor(math.log10(raw))
    step = next(f * unit for f in (1, 2, 2.5, 5, 10) if f * unit >= raw)
    return [i * step for i in range(math.ceil(most / step - 1e-9) + 1)]


def lines(title, panels):
    """@p panels: (heading, [(bytes, ns)], slope, intercept, remark). Points and the straight line through them."""
    columns, width, height = 3, 330, 270
    rows = math.ceil(len(panels) / columns)
    svg = Svg(width * columns, 56 + rows * height, title)
    svg.text(16, 46, "time against bytes on the wire; points are medians, the line is their least-squares fit", "soft")
    for i, (heading, points, slope, intercept, remark) in enumerate(panels):
        left, top = (i % columns) * width + 16, 60 + (i // columns) * height
        svg.text(left, top + 14, heading, "panel")
        svg.text(left, top + 30, remark, "soft")
        x0, y0, w, h = left + 48, top + 222, width - 100, 176
        smallest, largest = min(x for x, _ in points), max(x for x, _ in points)
        ticks_x = steps(largest)
        ticks_y = steps(max(intercept + slope * largest, *(y for _, y in points)))

        def place(x, y, ticks_x=ticks_x, ticks_y=ticks_y, x0=x0, y0=y0, w=w, h=h):
            return x0 + x / ticks_x[-1] * w, y0 - y / ticks_y[-1] * h

        for tick in ticks_y:
            _, y = place(0, tick)
            svg.line(x0, y, x0 + w, y)
            svg.text(x0 - 5, y + 4, f"{tick:g} ns" if tick == ticks_y[-1] else f"{tick:g}", "soft", "end")
        for tick in ticks_x:
            x, _ = place(tick, 0)
            svg.line(x, y0, x, y0 + 4)
            svg.text(x, y0 + 17, f"{tick:,g} bytes" if tick == ticks_x[-1] else f"{tick:,g}", "soft", "middle")
        svg.line(*place(smallest, max(0, intercept + slope * smallest)), *place(largest, intercept + slope * largest), "fit")
        for x, y in points:
            svg.dot(*place(x, y), "codec")
    return svg.made()
