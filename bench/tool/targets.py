"""What must be reached, judged from what was measured."""
import collections
import json

from . import gate, measure, results, sizes

Row = collections.namedtuple("Row", "number what build measured limit good")

CALL_COST_NS = 2.0       # the public call, the versions, the dispatch
TO_FLOOR = 1.10
D_PACK, D_UNPACK = 0.80, 0.95
PEERS_ON_D = 4.0
BEYOND_DOCUMENTED = {"msgpack.memory"}  # with code of ours and forced inlining: must be slower, but not by so much
PROTOBUF_TEXT = 8.0
FLOOR_TO_MEMCPY = 14.0
TEXT = {"A": 2.5, "C": 2.0, "D": 1.5}
CONSTRUCT = 1.1
RESIDUAL = 0.15          # of the largest value of a series,
RESIDUAL_NS = 5.0        # or this much, which the library's copies jump by from one size to another
PER_BYTE = 20            # instructions for each byte of input
PER_MESSAGE = 500        # and for the message, whatever its size: one that fails goes twice, the second time field by field
UNOPTIMISED = 3.0
TEXT_SECTION = 96 * 1024
CLIENT_SECONDS = 0.15
STACK = 1024


def judge():
    rows = []
    for preset in measure.SHIPPED:
        run = results.load(preset)
        if run is None:
            rows.append(Row(1, "all of 1 to 5", preset, "not measured", "", False))
        else:
            for part in (floors, peers, text, construct, linear):
                rows += [row._replace(build=run.build()) for row in part(run)]
    rows += [*hostile(), *unoptimised(), *size(), *counted()]
    return sorted(rows, key=lambda row: row.number)


def ratio(value):
    return f"{value:.2f} x"


def at_most(number, what, value, limit, show=ratio):
    return Row(number, what, "", show(value), "at most " + show(limit), value <= limit)


def at_least(number, what, value, limit, more=""):
    return Row(number, what, "", ratio(value) + more, "at least " + ratio(limit), value >= limit)


def floors(run):
    for action in ("pack", "unpack"):
        for work in results.WORKS:
            codec, floor = run.ns(action, work, "codec"), run.ns(action, work, "F1.call")
            what = f"{action} {work} against F1, called ({floor:.3g} ns)"
            if work in "ABC":
                yield Row(1, what, "", f"{ratio(codec / floor)} ({codec:.2f} ns)",
                          f"at most {ratio(TO_FLOOR)} + {CALL_COST_NS:g} ns = {TO_FLOOR * floor + CALL_COST_NS:.2f} ns",
                          codec <= TO_FLOOR * floor + CALL_COST_NS)
            else:
                limit = TO_FLOOR if work != "D" else D_PACK if action == "pack" else D_UNPACK
                yield at_most(1, what, codec / floor, limit)


def peers(run):
    for action in ("pack", "unpack"):
        for work in "ABCD":
            others = run.who(action, work, ("peer",))
            if not others:
                yield Row(2, f"{action} {work} ahead of every peer", "", "not measured", "", False)
                continue
            yield nearest(run, action, work, others, 1.0)
            if work == "D":
                yield nearest(run, action, work, [who for who in others if who not in BEYOND_DOCUMENTED], PEERS_ON_D)
    if run.has("text", "D", "protobuf"):
        yield at_least(2, "text D against protobuf's TextFormat",
                       run.ns("text", "D", "protobuf") / run.ns("text", "D", "codec"), PROTOBUF_TEXT)
    yield at_most(2, "the floor itself: F1 pack D against memcpy",
                  run.ns("pack", "D", "F1.call") / run.ns("pack", "D", "memcpy"), FLOOR_TO_MEMCPY)


def nearest(run, action, work, others, limit):
    who = min(others, key=lambda who: run.ns(action, work, who))
    how = "" if BEYOND_DOCUMENTED & set(others) else " as documented"
    return at_least(2, f"{action} {work} ahead of every peer{how}",
                    run.ns(action, work, who) / run.ns(action, work, "codec"), limit, f" ({results.title(who)})")


def text(run):
    for work, limit in TEXT.items():
        yield at_most(3, f"text {work} against the text floor, called",
                      run.ns("text", work, "codec") / run.ns("text", work, "floor.call"), limit)


def construct(run):
    yield at_most(4, "construct of a frame pack against memset",
                  run.ns("construct", "framepack", "codec") / run.ns("construct", "framepack", "memset"), CONSTRUCT)


SERIES = {"payload": "payload of 0 to 1,024 bytes", "data": "0 to 100 data", "frames": "0 to 5 frames"}


def linear(run):
    for action in ("pack", "unpack"):
        for name, title in SERIES.items():
            points = run.series(action, name)
            slope, _, residual, _ = results.line(points)
            largest = max(y for _, y in points)
            yield Row(5, f"{action}, {title}: straight line", "",
                      f"{slope * 1000:.1f} ns/KB, off by at most {residual:.1f} ns ({residual / largest:.0%} of the largest)",
                      f"{RESIDUAL:.0%} of the largest or {RESIDUAL_NS:g} ns", residual <= max(RESIDUAL * largest, RESIDUAL_NS))


def worst_input(entry):
    """The input that takes most instructions for each of its bytes, beyond what every message may take."""
    return max(entry["hostile"].items(),
               key=lambda item: max(0, item[1]["instructions"] - PER_MESSAGE) / item[1]["bytes"])


def hostile():
    for entry in gate.read():
        name, worst = worst_input(entry)
        yield Row(5, f"worst input for unpack: {name}", f"{entry['compiler']} {entry['flags']}",
                  f"{worst['instructions']:.0f} instructions for {worst['bytes']} bytes",
                  f"at most {PER_MESSAGE} + {PER_BYTE} for each byte",
                  worst["instructions"] <= PER_MESSAGE + PER_BYTE * worst["bytes"])


def unoptimised():
    for preset in measure.UNOPTIMISED:
        run = results.load(preset)
        if run is None:
            yield Row(6, "D without optimisation", preset, "not measured", "", False)
            continue
        for action in ("pack", "unpack"):
            yield at_most(6, f"{action} D against field by field, both at -O0",
                          run.ns(action, "D", "codec") / run.ns(action, "D", "by-field"),
                          UNOPTIMISED)._replace(build=run.build())


def size():
    if not sizes.FILE.exists():
        yield Row(7, "sizes", "", "not measured", "", False)
        return
    for found in json.loads(sizes.FILE.read_text()).values():
        def row(what, value, limit, good):
            return Row(7, what, found["compiler"], value, limit, good)
        yield row("text section at -O2", f"{found['text bytes']:,} bytes", f"below {TEXT_SECTION:,} bytes",
                  found["text bytes"] < TEXT_SECTION)
        yield row("compile time of a client beyond nothing", f"{found['seconds more for a client']:.3f} s",
                  f"below {CLIENT_SECONDS} s", found["seconds more for a client"] < CLIENT_SECONDS)
        yield row("deepest stack frame at -O2",
                  f"{found['deepest stack frame']} bytes ({found['deepest stack frame in']})",
                  f"at most {STACK} bytes",
                  found["deepest stack frame"] <= STACK and not found["stack frames of unknown size"])
        yield row("calls of the allocator but delete[]", ", ".join(found["allocator calls"]) or "none", "none",
                  not found["allocator calls"])


def counted():
    table = gate.read()
    yield Row(8, "instructions per operation are recorded", ", ".join(
        f"{entry['compiler']} {entry['flags']}" for entry in table), f"{len(table)} builds", "at least 1", bool(table))


def run():
    rows = judge()
    for row in rows:
        print(f"{'pass' if row.good else 'FAIL'}  {row.number}  {row.build:24} {row.what:52} {row.measured:>32}  {row.limit}")
    failed = sum(not row.good for row in rows)
    print(f"{len(rows) - failed} of {len(rows)} targets reached")
    return failed == 0
