"""docs/performance.md and its charts, made from what was measured and from nothing else."""
import json

from . import gate, measure, project, results, sizes, svg, targets

PAGE = project.ROOT / "docs" / "performance.md"
CHARTS = project.ROOT / "docs" / "performance"
NOTES = project.ROOT / "bench" / "notes.md"
IN_CHARTS = ["codec", "memcpy", "F1.call", "F1+.call", "floor.call", "by-field", "plain", "protobuf", "protobuf.arena",
             "flatbuffers", "capnproto", "msgpack", "msgpack.memory", "nanopb", "cereal", "boost", "nlohmann-json"]
ACTIONS = {"pack": "Pack", "unpack": "Unpack", "text": "Text"}
FLOOR = {"pack": "F1.call", "unpack": "F1.call", "text": "floor.call"}


def run():
    runs = {preset: results.load(preset) for preset in measure.PRESETS}
    missing = [preset for preset, one in runs.items() if one is None]
    if missing or not sizes.FILE.exists() or not gate.TABLE.exists():
        print("not measured yet:", ", ".join(missing) or "sizes or instructions")
        return False
    main = runs["bench"]
    CHARTS.mkdir(parents=True, exist_ok=True)
    for old in CHARTS.glob("*.svg"):
        old.unlink()
    page = [head(main), judged()]
    page += [action(main, name) for name in ACTIONS]
    page += [construct(main), size_of_messages(main), builds(runs), linear(main), hostile(), unoptimised(runs),
             size(), instructions(), NOTES.read_text().strip(), how(main, runs)]
    PAGE.write_text("\n\n".join(page) + "\n")
    print("wrote", PAGE.relative_to(project.ROOT))
    return True


def table(heads, rows, numbers=1):
    """A table whose columns from @p numbers on are aligned to the right."""
    line = ["---" if i < numbers else "--:" for i in range(len(heads))]
    return "\n".join("| " + " | ".join(str(cell) for cell in row) + " |" for row in [heads, line, *rows])


def chart(name, text, alt):
    (CHARTS / f"{name}.svg").write_text(text)
    return f"![{alt}](performance/{name}.svg)"


def head(main):
    machine = main.data["machine"]
    works = "\n".join(f"- **{letter}**: {title}, {main.size('pack', letter, 'codec'):,} bytes on the wire"
                      for letter, title in results.WORKS.items())
    return f"""# Performance

<!-- Made by scripts/bench --report from bench/results/ and bench/notes.md. Do not edit. -->

How fast the codec is, beside what one would write by hand for this wire alone and beside other libraries with the
same content. All contenders of a table stand in one program and were measured in one run, their repetitions mixed at
random; so ratios can be trusted further than times. Before it is timed, each has shown that it makes or reads the same
content. A time is the median of {main.data['repetitions']} repetitions; behind it stands half the distance between the
quartiles.

Measured on {main.data['date']}: {machine['processor']}, {machine['processors']} processors at {machine['MHz']} MHz,
{machine['system']}, {machine['libc']}. Unless another build is named: {main.build()}, flags `{main.data['flags']}`.

The messages:

{works}"""


def judged():
    rows = targets.judge()
    good = sum(row.good for row in rows)
    lines = [(row.number, row.build, row.what, row.measured, row.limit, "yes" if row.good else "**no**") for row in rows]
    failed = [line for line in lines if line[-1] != "yes"]
    text = f"## What must be reached\n\n{good} of {len(rows)} targets are reached, over all builds."
    heads = ("", "build", "target", "measured", "limit", "reached")
    if failed:
        text += "\n\nNot reached:\n\n" + table(heads, failed, 9)
    return text + "\n\n<details><summary>All targets</summary>\n\n" + table(heads, lines, 9) + "\n\n</details>"


def works_with(main, name):
    return [work for work in results.WORKS if main.has(name, work, "codec") and len(main.who(name, work)) > 1]


def action(main, name):
    works = works_with(main, name)
    panels = []
    for work in works:
        rows = [(results.title(who), results.kind(who), main.ns(name, work, who)) for who in IN_CHARTS
                if main.has(name, work, who)]
        panels.append((f"{work}: {results.WORKS[work]}", rows))
    text = [f"## {ACTIONS[name]}",
            chart(name, svg.bars(f"{ACTIONS[name]}: time per message or stream", panels), f"{ACTIONS[name]}, bars")]
    for work in works:
        codec, floor = main.ns(name, work, "codec"), main.ns(name, work, FLOOR[name])
        rows = []
        for who in main.who(name, work):
            ns = main.ns(name, work, who)
            rows.append((f"**{results.title(who)}**" if who == "codec" else results.title(who), svg.duration(ns),
                         f"± {main.spread(name, work, who):.0%}", f"{ns / floor:.2f}" if floor else "",
                         f"{ns / codec:.2f}", f"{main.size(name, work, who):,}"))
        text.append(f"<details><summary>{work}: {results.WORKS[work]}</summary>\n\n"
                    + table(("", "median", "spread", "× floor", "× codec", "bytes"), rows) + "\n\n</details>")
    return "\n\n".join(text)


def construct(main):
    rows = [(title, svg.duration(main.ns("construct", what, "codec")), svg.duration(main.ns("construct", what, "memset")),
             f"{main.ns('construct', what, 'codec') / main.ns('construct', what, 'memset'):.2f}")
            for what, title in (("framepack", "frame pack"), ("union", "union"))]
    return "## Construct\n\n" + table(("", "construct", "memset of the same size", "ratio"), rows)


def size_of_messages(main):
    everyone = [who for who in results.CONTENDERS if results.kind(who) in ("codec", "peer")
                and main.has("unpack", "A", who) and who not in ("protobuf.arena", "msgpack.memory")]
    works = list(results.WORKS)
    rows = [(results.title(who), *(f"{main.size('pack', work, who):,}" if main.has("pack", work, who) else ""
                                   for work in works)) for who in everyone]
    return "## Bytes on the wire\n\n" + table(("", *works), rows)


def builds(runs):
    text = ["## Other builds", "The codec's time and, behind it, its ratio to the floor called out of line in the same "
            "build and run (F1 for pack and unpack, the text floor for text)."]
    shipped = [runs[preset] for preset in measure.SHIPPED]
    rows = []
    for name in ACTIONS:
        for work in works_with(shipped[0], name):
            cells = []
            for one in shipped:
                codec, floor = one.ns(name, work, "codec"), one.ns(name, work, FLOOR[name])
                cells.append(svg.duration(codec) + (f" ({codec / floor:.2f})" if floor else ""))
            rows.append((f"{name} {work}", *cells))
    text.append(table(("", *(one.build() for one in shipped)), rows))
    return "\n\n".join(text)


def linear(main):
    panels, rows = [], []
    for name in ("pack", "unpack"):
        for series, title in targets.SERIES.items():
            points = main.series(name, series)
            slope, intercept, residual, at = results.line(points)
            panels.append((f"{ACTIONS[name]}, {title}", points, slope, intercept,
                           f"{slope * 1000:.1f} ns/KB, off by at most {residual:.1f} ns"))
            rows.append((f"{name}, {title}", f"{slope * 1000:.2f} ns/KB", f"{intercept:.1f} ns", f"{residual:.1f} ns",
                         f"{at:,} bytes"))
    return "\n\n".join(["## Cost against size",
                        chart("size", svg.lines("Cost is linear in the bytes on the wire", panels), "cost against size"),
                        table(("", "slope", "at 0 bytes", "worst residual", "at"), rows)])


def hostile():
    text = ["## Hostile input", "Instructions that `unpack` takes for input made to be costly, counted by callgrind, "
            "the twelve worst by instructions for each byte. What every call takes, however short its input, is in them."]
    for entry in gate.read():
        worst = sorted(entry["hostile"].items(), key=lambda item: -item[1]["instructions"] / item[1]["bytes"])[:12]
        rows = [(name, f"{one['bytes']:,}", one["result"], f"{one['instructions']:,.0f}",
                 f"{one['instructions'] / one['bytes']:.1f}") for name, one in worst]
        text.append(f"{entry['compiler']} `{entry['flags']}`:\n\n"
                    + table(("input", "bytes", "result", "instructions", "for each byte"), rows))
    return "\n\n".join(text)


def unoptimised(runs):
    rows = []
    for preset in measure.UNOPTIMISED:
        one = runs[preset]
        for name in ("pack", "unpack"):
            codec, by_hand = one.ns(name, "D", "codec"), one.ns(name, "D", "by-field")
            rows.append((f"{name} D, {one.build()}", svg.duration(codec), svg.duration(by_hand), f"{codec / by_hand:.2f}"))
    return "## Without optimisation\n\n" + table(("", "codec", "field by field, by hand", "ratio"), rows)


def size():
    found = json.loads(sizes.FILE.read_text())
    keys = [key for key in next(iter(found.values())) if key != "compiler"]
    rows = [(key, *(show(one[key]) for one in found.values())) for key in keys]
    return "## Size\n\nThe library at -O2.\n\n" + table(("", *(one["compiler"] for one in found.values())), rows)


def show(value):
    return (", ".join(value) or "none") if isinstance(value, list) else f"{value:,}" if isinstance(value, int) else value


def instructions():
    entries = gate.read()
    names = sorted({name for entry in entries for name in entry["operations"]}, key=gate.order)
    rows = [(name, *(f"{entry['operations'].get(name, 0):,.0f}" for entry in entries)) for name in names]
    return ("## Instructions per operation\n\nCounted by callgrind; `scripts/bench --gate` holds every change against "
            "them.\n\n" + table(("", *(f"{entry['compiler']} `{entry['flags']}`" for entry in entries)), rows))


def how(main, runs):
    libraries = ", ".join(f"{name} {version}" for name, version in main.data["libraries"].items() if version)
    rows = [(preset, f"{one.data['compiler']}", f"`{one.data['flags']}`", one.data["date"],
             one.data["repetitions"], one.data["machine"]["load before"]) for preset, one in runs.items()]
    return f"""## How it was measured

Google Benchmark, processor time, {main.data['seconds per repetition']} s for each repetition. Other libraries as Debian
packages them: {libraries}.

{table(("preset", "compiler", "flags", "date", "repetitions", "load before"), rows, 4)}

`scripts/bench` measures, `scripts/bench --check` judges, `scripts/bench --report` writes this page."""
