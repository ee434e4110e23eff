#!/usr/bin/env python3
"""Draws which fields travel at which version, from the protocol as `relaymsg schema` tells it:

  versions_picture.py SCHEMA PICTURE           writes the picture
  versions_picture.py --check SCHEMA PICTURE   fails if the picture is not the one that would be written
"""
import html
import json
import pathlib
import sys

STYLE = """
    svg { --page: #ffffff; --ink: #1c2128; --soft: #59636e; --line: #d5dbe1; --on: #0b5cad; --new: #20774a; }
    @media (prefers-color-scheme: dark) {
      svg { --page: #14181d; --ink: #dfe5ec; --soft: #98a3b0; --line: #3d4752; --on: #2f6fb5; --new: #2f8557; }
    }
    text { font: 13px system-ui, -apple-system, "Segoe UI", "Noto Sans", "DejaVu Sans", sans-serif; fill: var(--ink); }
    .mono { font-family: ui-monospace, "Liberation Mono", "DejaVu Sans Mono", monospace; font-size: 12.5px; }
    .record { font-weight: 650; font-size: 14px; }
    .soft { fill: var(--soft); font-size: 12px; }
    .in { fill: #ffffff; font-size: 12px; }
    .page { fill: var(--page); } .on { fill: var(--on); } .new { fill: var(--new); }
    .off { fill: none; stroke: var(--line); stroke-width: 1.5; stroke-dasharray: 4 4; }
    .rule { stroke: var(--line); }
"""
LEFT, COLUMN, WIDTH, ROW = 16, 280, 132, 30


class Picture:
    def __init__(self, schema):
        self.types = {each["name"]: each for each in schema["types"]}
        self.commands = schema["commands"]
        self.message = schema["message"]
        self.versions = range(schema["baseVersion"], schema["currentVersion"] + 1)
        self.width = COLUMN + WIDTH * len(self.versions) + 8
        self.parts = []
        self.y = 0

    def text(self, x, text, style, anchor="start"):
        self.parts.append(f'<text class="{style}" x="{x}" y="{self.y}" text-anchor="{anchor}">{html.escape(text)}</text>')

    def contained(self, name):
        return [field["type"] for field in self.types[name]["fields"] if "type" in field]

    def carriers(self, name):
        """The commands whose member is this record or holds it."""
        def holds(record):
            return record == name or any(holds(inner) for inner in self.contained(record))
        return [command["name"] for command in self.commands if holds(command["type"])]

    def row(self, field, base):
        self.y += ROW
        self.text(LEFT + 12, field["name"], "mono")
        for column, version in enumerate(self.versions):
            x = COLUMN + column * WIDTH
            travels = version >= field["since"]
            style = "off" if not travels else "new" if field["since"] > base else "on"
            self.parts.append(f'<rect class="{style}" x="{x}" y="{self.y - 17}" width="{WIDTH - 10}" height="24" rx="5"/>')
            word = "travels" if travels else f'absent: reads as {field["default"]}'
            self.text(x + (WIDTH - 10) / 2, word, "in" if travels else "soft", "middle")

    def lines_of(self, words, most):
        line = ""
        for word in words:
            if line and len(line) + len(word) + 2 > most:
                yield line + ","
                line = ""
            line += (", " if line else "") + word
        yield line

    def drawn(self):
        self.y = 30
        for column, version in enumerate(self.versions):
            self.text(COLUMN + column * WIDTH + (WIDTH - 10) / 2, f"version {version}", "record", "middle")
        base = self.versions[0]
        gated = [each for each in self.types.values() if any(field["since"] > base for field in each["fields"])]
        for record in gated:
            self.y += 18
            self.parts.append(f'<line class="rule" x1="{LEFT}" x2="{self.width - LEFT}" y1="{self.y}" y2="{self.y}"/>')
            self.y += 26
            self.text(LEFT, record["name"], "record")
            for field in record["fields"]:
                self.row(field, base)
            self.y += 8
            for line in self.lines_of(self.carriers(record["name"]), 84):
                self.y += 18
                self.text(LEFT + 12, line, "soft")
        touched = {name for name in self.types for record in gated if self.holds(name, record["name"])}
        same = len(self.types) - len(touched | {self.message})
        self.y += 18
        self.parts.append(f'<line class="rule" x1="{LEFT}" x2="{self.width - LEFT}" y1="{self.y}" y2="{self.y}"/>')
        self.y += 26
        self.text(LEFT, f"The {same} record types without any of these look the same at every version.", "soft")
        height = self.y + 16
        title = "Which fields travel at which version"
        body = "\n  ".join([f'<rect class="page" width="{self.width}" height="{height}"/>', *self.parts])
        return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {self.width} {height}" width="{self.width}" '
                f'height="{height}" role="img">\n  <title>{title}</title>\n  <style>{STYLE}  </style>\n  {body}\n</svg>\n')

    def holds(self, outer, inner):
        return outer == inner or any(self.holds(each, inner) for each in self.contained(outer))


def main():
    check = sys.argv[1] == "--check"
    schema, picture = (pathlib.Path(argument) for argument in sys.argv[1 + check:])
    drawn = Picture(json.loads(schema.read_text(encoding="utf-8"))).drawn()
    if not check:
        picture.write_text(drawn, encoding="utf-8")
    elif picture.read_text(encoding="utf-8") != drawn:
        sys.exit(f"{picture} is not what {schema} says: run {sys.argv[0]} {schema} {picture}")


if __name__ == "__main__":
    main()
