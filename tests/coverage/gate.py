#!/usr/bin/env python3
"""Is every line, branch and MC/DC pair of the library covered?

usage: gate.py --root DIRECTORY --exceptions FILE EXPORT...

Each EXPORT is the full JSON of `llvm-cov export` for one test program. A place in the source counts as covered if
any instantiation in any program covers it: llvm-cov's own summary takes the best single instantiation. What is not
covered must stand in the list of exceptions, and what stands there must not be covered; otherwise the status is 1.

What it looks at: code regions, of which every line is made; both ways of each branch; and each condition's pair,
two runs in which that condition alone decides. A branch whose condition is known to the compiler counts as none. A
function that was never entered is one miss, whatever is in it. What no program instantiates has no code to cover.
"""

import argparse
import collections
import functools
import json
import pathlib
import re
import sys
import tomllib

FOLDERS = ("Common", "protocol")
CODE = 0  # the kind of a region that is neither a gap, an expansion nor skipped
PLAIN_BRANCH = 4  # the kind of a branch that belongs to no decision of several conditions
Span = collections.namedtuple("Span", "line column end_line end_column")


def contains(outer, inner):
    return outer[:2] <= inner[:2] and inner[2:] <= outer[2:] and outer != inner


class Source:
    """One file: what its instantiations reach, joined, and its text."""

    def __init__(self, path):
        self.lines = path.read_text().splitlines()
        self.functions = collections.Counter()
        self.regions = collections.Counter()
        self.branches = collections.defaultdict(lambda: [0, 0])
        self.pairs = collections.defaultdict(list)
        self.pairless = set()

    def text(self, span):
        rows = self.lines[span.line - 1 : span.end_line]
        rows[-1] = rows[-1][: span.end_column - 1]
        rows[0] = rows[0][span.column - 1 :]
        text = " ".join(" ".join(rows).split())
        return text if len(text) <= 100 else text[:97] + "..."

    def declaration(self, body):
        """What stands before the body of a function, up to the line on which it begins."""
        first = body.line
        while first > 1 and not re.search(r"([;{}>:]|\*/|^|^\s*//.*)$", self.lines[first - 2]):
            first -= 1
        return self.text(Span(first, 1, body.line, body.column))

    def add_branch(self, span, true, false, kind):
        counts = self.branches[span]
        counts[0] += true
        counts[1] += false
        behind = self.lines[span.end_line - 1][span.end_column - 1 :] + " " + "".join(self.lines[span.end_line :][:1])
        if kind == PLAIN_BRANCH and re.match(r"[ )]*(&&|\|\|)", behind):
            self.pairless.add(span)  # too nested, or too many conditions, for the compiler

    def add_pairs(self, span, covered):
        known = self.pairs[span]
        known.extend([False] * (len(covered) - len(known)))  # a fold has as many conditions as its pack
        for i, one in enumerate(covered):
            known[i] |= one

    def line_count(self):
        return len({line for span in self.regions for line in range(span.line, span.end_line + 1)})

    def misses(self):
        """(line, what) of each, outermost only: what is in code that never ran is not told again."""
        idle = [span for span, count in self.regions.items() if count == 0]
        idle = [span for span in idle if not any(contains(other, span) for other in idle)]
        for span in idle:
            if span in self.functions:
                yield span.line, f"never called: {self.declaration(span)}"
            else:
                yield span.line, f"never run: {self.text(span)}"

        def ran(span):
            return not any(other == span or contains(other, span) for other in idle)

        for span, counts in self.branches.items():
            if ran(span) and any(counts):
                for count, name in zip(counts, ("true", "false")):
                    if count == 0:
                        yield span.line, f"never {name}: {self.text(span)}"
        for span in self.pairless:
            yield span.line, f"no pairs are recorded: {self.text(span)}"
        for span, pairs in self.pairs.items():
            for i, covered in enumerate(pairs):
                if ran(span) and not covered:
                    yield span.line, f"condition {i + 1} never decides: {self.text(span)}"


def read(exports, root):
    sources = {}

    @functools.cache
    def source(name):
        path = pathlib.Path(name).resolve()
        if not path.is_relative_to(root) or path.relative_to(root).parts[0] not in FOLDERS:
            return None
        key = path.relative_to(root).as_posix()
        if key not in sources:
            sources[key] = Source(path)
        return sources[key]

    for export in exports:
        data = json.loads(pathlib.Path(export).read_text())["data"][0]
        for function in data["functions"]:
            for number, region in enumerate(function["regions"]):
                file, kind = region[5], region[7]
                if kind == CODE and (known := source(function["filenames"][file])):
                    known.regions[Span(*region[:4])] += region[4]
                    if number == 0:
                        known.functions[Span(*region[:4])] += region[4]
        for file in data["files"]:
            if known := source(file["filename"]):
                expanded = [branch for expansion in file["expansions"] for branch in expansion["branches"]]
                for branch in file["branches"] + expanded:
                    known.add_branch(Span(*branch[:4]), branch[4], branch[5], branch[8])
                for pair in file["mcdc_records"]:
                    known.add_pairs(Span(*pair[:4]), pair[6])
    return sources


def read_exceptions(path):
    """Each miss of each entry, without its line number: it survives that lines move."""
    listed = collections.Counter()
    for entry in tomllib.loads(pathlib.Path(path).read_text()).get("exception", []):
        if not entry["why"].strip():
            raise SystemExit(f"{path}: an exception without a reason")
        listed.update((entry["file"], miss.strip()) for miss in entry["misses"].strip().splitlines())
    return listed


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--root", type=pathlib.Path, required=True)
    arguments.add_argument("--exceptions", required=True)
    arguments.add_argument("exports", nargs="+")
    arguments = arguments.parse_args()

    sources = read(arguments.exports, arguments.root.resolve())
    if not sources:
        raise SystemExit("The exports hold no file of the library.")
    listed = read_exceptions(arguments.exceptions)
    excepted = listed.total()
    unexpected = 0
    for name in sorted(sources):
        for line, what in sorted(sources[name].misses()):
            if listed[name, what] > 0:
                listed[name, what] -= 1
            else:
                unexpected += 1
                print(f"{name}:{line}: {what}")
    outdated = [place for place in listed.elements()]
    for name, what in outdated:
        print(f"{name}: an exception that no longer applies: {what}")

    values = sources.values()
    print(
        f"{len(sources)} files, {sum(s.line_count() for s in values)} lines, "
        f"{sum(len(s.regions) for s in values)} regions, "
        f"{2 * sum(any(b) for s in values for b in s.branches.values())} branches, "
        f"{sum(len(p) for s in values for p in s.pairs.values())} MC/DC pairs: "
        f"{excepted} excepted, {unexpected} missed, {len(outdated)} outdated exceptions"
    )
    return 1 if unexpected or outdated else 0


if __name__ == "__main__":
    sys.exit(main())
