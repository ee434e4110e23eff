#!/usr/bin/env python3
"""Changes one thing in the library at a time and looks whether a test notices. scripts/mutate runs it."""

import argparse
import collections
import concurrent.futures
import hashlib
import os
import pathlib
import queue
import random
import re
import resource
import shutil
import subprocess
import sys
import time
import tomllib

sys.dont_write_bytecode = True
from mutants import mutants  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parents[2]
COMPILER = "clang++-19"
FLAGS = ["-std=c++17", "-I.", "-w", "-ftrivial-auto-var-init=pattern"]


def expand(patterns):
    return [path.relative_to(ROOT).as_posix() for pattern in patterns for path in sorted(ROOT.glob(pattern))]


LIBRARY = expand(["Common/**/*.cpp", "protocol/*.cpp"])
STREAM = ["protocol/Equal.cpp", "protocol/Stream.cpp"]
SCAN = ["protocol/Scan.cpp"]
CORE = [source for source in LIBRARY if source not in STREAM + SCAN]
SETTINGS = "tests/support/Settings.cpp"
SUPPORT = ["tests/plain/*.cpp", "tests/support/*.cpp"]
WRONG_TABLES = "tests/wrong_tables.cpp"
FOLDERS = ("Common", "protocol", "tests")


class Program:
    def __init__(self, name, own, others=(), flags=()):
        self.name = name
        self.sources = expand([*others, *own])  # the library first: it is where most mutants do not compile
        self.flags = tuple(flags)


# The test programs, the fastest first: a mutant ends at the first that fails. Each is built of its own sources and
# of what else it names, all with its flags.
PROGRAMS = [
    Program("buffers", ["tests/write_buf_test.cpp", "tests/read_buf_test.cpp", "tests/result_test.cpp"]),
    Program("facts", ["tests/protocol_facts_test.cpp", "tests/header_facts_test.cpp"], CORE),
    Program("quick", [f"tests/{name}_test.cpp" for name in (
        "construct", "counts", "envelope", "flat_wrappers", "golden_messages", "golden_records", "golden_text",
        "partial_output", "readonly_record", "strings", "text_helpers", "union", "versions", "visualize")], CORE),
    Program("straight", ["tests/straight/*.cpp"], ["protocol/cs_relay_msg.cpp"]),
    Program("silent", ["tests/ndebug_test.cpp"], CORE, ["-DNDEBUG"]),
    Program("asserting", ["tests/assertion_test.cpp"], CORE),
    Program("stream", ["tests/stream/[!S]*Test.cpp", SETTINGS], CORE + STREAM),
    Program("generated", ["tests/generated/*.cpp"], CORE + SUPPORT),
    Program("memory", ["tests/memory/Guarded.cpp", "tests/memory/Oracle.cpp", "tests/memory/*_test.cpp"],
            CORE + SUPPORT),
    Program("scan", ["tests/stream/ScanTest.cpp", SETTINGS], CORE + SCAN),
    Program("indent", ["tests/indent_test.cpp"], CORE),
]  # fmt: skip
HEADER = "tests/mutation/precompiled.h"


class Failure(Exception):
    """Something is wrong, but not with the tests of a mutant."""


def limits(seconds, gibibytes=1):
    def apply():
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))  # the same on a busy machine
        resource.setrlimit(resource.RLIMIT_DATA, (gibibytes << 30, gibibytes << 30))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    return apply


class Tree:
    """A copy of the sources in which one file at a time is changed, with the objects of that."""

    def __init__(self, place, base=None):
        self.place = place
        self.objects = place / ".objects"
        self.base = base  # the tree with the unchanged objects
        self.objects.mkdir(parents=True, exist_ok=True)
        wanted = {path.relative_to(ROOT) for folder in FOLDERS for path in (ROOT / folder).rglob("*")}
        for path in sorted(place.rglob("*.*")):
            name = path.relative_to(place)
            if name not in wanted and name.parts[0] in FOLDERS:
                path.unlink()
        for name in sorted(wanted):
            source, copy = ROOT / name, place / name
            if source.is_file() and not (copy.is_file() and copy.read_bytes() == source.read_bytes()):
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(source, copy)

    def is_current(self, source, flags):
        """Whether the object of an earlier run will do."""
        target = self.object(source, flags)
        if not target.exists():
            return False
        time = target.stat().st_mtime
        return all((self.place / used).exists() and (self.place / used).stat().st_mtime < time
                   for used in self.files_of(source, flags))  # fmt: skip

    def files_of(self, source, flags):
        """The files of which the object was made."""
        text = pathlib.Path(f"{self.object(source, flags)}.d").read_text()
        return {os.path.normpath(word) for word in text.replace("\\\n", " ").split()[1:]}

    def object(self, source, flags):
        name = hashlib.sha1(" ".join([source, *flags]).encode()).hexdigest()[:16]
        return self.objects / f"{name}.o"

    def compile(self, source, flags):
        """Whether it compiles."""
        target = self.object(source, flags)
        command = [COMPILER, *FLAGS, *flags, "-c", source, "-o", str(target), "-MMD", "-MF", f"{target}.d"]
        command.append(f'-DPROTOCOL_HEADER="{self.place}/protocol/cs_relay_msg.h"')
        if source in LIBRARY:
            command += ["-O0", "-fno-exceptions", "-fno-rtti"]
        elif source.startswith(("tests/plain", "tests/support")):
            command += ["-O1"]  # it runs much, and few mutants have it compiled again
        else:
            command += ["-O0"]
            if not flags:
                command += ["-include-pch", str((self.base or self).place / "precompiled.pch")]
        # Some mutants keep the compiler busy without an end.
        return subprocess.run(
            command, cwd=self.place, capture_output=True, preexec_fn=limits(100, gibibytes=3), check=False
        )

    def link(self, program, changed):
        objects = []
        for source in program.sources:
            tree = self if source in changed else self.base or self
            objects.append(str(tree.object(source, program.flags)))
        target = self.objects / program.name
        done = subprocess.run(
            [COMPILER, "-fuse-ld=lld", *objects, "-lgtest_main", "-lgtest", "-lpthread", "-o", str(target)],
            capture_output=True, check=False,
        )  # fmt: skip
        return target, done

    def run(self, program, binary, seconds):
        """Why it fails, or an empty string."""
        environment = {**os.environ, "KORVAN_TEST_VOLUME": "5"}
        try:
            done = subprocess.run(
                [binary, "--gtest_brief=1", "--gtest_fail_fast"],
                cwd=self.place, env=environment, preexec_fn=limits(seconds), timeout=30 * seconds,
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
            )  # fmt: skip
        except subprocess.TimeoutExpired:
            return "no end"
        if done.returncode == 0:
            return ""
        failed = re.search(rb"\[  FAILED  \] (\S+)", done.stdout)
        return f"{program.name}: {failed.group(1).decode() if failed else done.returncode}"


def failed_assertions(errors):
    """What the static assertions say that clang reports."""
    reported = r"static assertion failed(?: due to requirement '[^\n]*')?: ([^\n]*)"
    return sorted(set(re.findall(reported, errors)))


def wrong_tables(tree, pool=None):
    """What the compiler says of each table that is wrong on purpose."""
    words = sorted(set(re.findall(r"\bWRONG_\w+", (tree.place / WRONG_TABLES).read_text())))

    def said(word):
        done = subprocess.run(
            [COMPILER, *FLAGS, "-fsyntax-only", f"-D{word}", WRONG_TABLES],
            cwd=tree.place, capture_output=True, text=True, check=False,
        )  # fmt: skip
        return word, failed_assertions(done.stderr)

    return (pool.map if pool else map)(said, words)


class Bench:
    """The unchanged programs, and what is needed to hold a mutant against them."""

    def __init__(self, folder, workers):
        self.folder = folder
        self.base = Tree(folder / "base")
        base = self.base
        header = base.place / "precompiled.pch"
        if not header.exists() or header.stat().st_mtime < (base.place / HEADER).stat().st_mtime:
            subprocess.run(
                [COMPILER, *FLAGS, "-O0", "-x", "c++-header", HEADER, "-o", str(header)], cwd=base.place, check=True
            )
        jobs = {(source, program.flags) for program in PROGRAMS for source in program.sources}
        with concurrent.futures.ThreadPoolExecutor(workers) as pool:
            stale = [job for job in sorted(jobs) if not base.is_current(*job)]
            for done in pool.map(lambda job: base.compile(*job), stale):
                if done.returncode:
                    raise Failure(done.stderr.decode())
            self.tables = dict(wrong_tables(base, pool))
        self.uses = {job: base.files_of(*job) for job in jobs}
        self.seconds = {}
        for program in PROGRAMS:
            binary, done = base.link(program, [])
            if done.returncode:
                raise Failure(done.stderr.decode())
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            if why := base.run(program, binary, 600):
                raise Failure(f"The tests fail without any change: {why}")
            after = resource.getrusage(resource.RUSAGE_CHILDREN)
            used = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
            self.seconds[program.name] = int(5 * used) + 3
            print(f"  {program.name}: {used:.1f} s", file=sys.stderr)
        self.trees = queue.SimpleQueue()
        for number in range(workers):
            self.trees.put(Tree(folder / f"worker{number}", base))

    def judge(self, mutant):
        """(mutant, "uncompiled" | "killed" | "survived", by what)"""
        tree = self.trees.get()
        place = tree.place / mutant.file
        source = place.read_text()
        try:
            place.write_text(source[: mutant.start] + mutant.new + source[mutant.end :])
            return (mutant, *self.outcome(tree, mutant.file))
        finally:
            place.write_text(source)
            self.trees.put(tree)

    def outcome(self, tree, file):
        built = set()
        for program in PROGRAMS:
            flags = program.flags
            changed = [source for source in program.sources if file in self.uses[source, flags]]
            if not changed:
                continue
            for source in changed:
                if (source, flags) not in built:
                    if tree.compile(source, program.flags).returncode:
                        return "uncompiled", source
                    built.add((source, flags))
            binary, done = tree.link(program, changed)
            if done.returncode:
                return "uncompiled", program.name
            if why := tree.run(program, binary, self.seconds[program.name]):
                return "killed", why
            if program.name == "asserting" and file == "protocol/Table.h":
                for word, said in wrong_tables(tree):
                    if said != self.tables[word]:
                        return "killed", word
        return "survived", ""


def find_mutants(files):
    found = []
    for folder in ("Common", "protocol"):
        for path in sorted((ROOT / folder).rglob("*")):
            name = path.relative_to(ROOT).as_posix()
            if path.suffix in (".h", ".cpp") and (not files or any(name.endswith(file) for file in files)):
                found += mutants(name, path.read_text())
    return found


def listed(path):
    """(file, name) of each mutant that is known to change nothing."""
    known = set()
    for entry in tomllib.loads(path.read_text()).get("equivalent", []):
        if not entry["why"].strip():
            raise Failure(f"{path}: a mutant without a reason")
        for line in entry["mutants"].strip().splitlines():
            known.add((entry["file"], line))
    return known


def main():
    arguments = argparse.ArgumentParser(prog="scripts/mutate", description=__doc__)
    arguments.add_argument("seconds", nargs="?", type=int, default=0, help="stop after so long; 0: when all are done")
    arguments.add_argument("--seed", type=int, default=20261121, help="which mutants come first")
    arguments.add_argument("--file", action="append", default=[], help="only these files, by the end of their path")
    arguments.add_argument("--listed", action="store_true", help="only those of which it is known that they change nothing")
    arguments.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments.add_argument("--log", type=pathlib.Path, help="write the outcome of every mutant to this file")
    arguments.add_argument("--folder", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    arguments = arguments.parse_args()

    known = listed(ROOT / "tests/mutation/equivalent.toml")
    everything = find_mutants([])
    missing = known - {(m.file, m.name) for m in everything}
    for file, name in sorted(missing):
        print(f"{file}: listed, but there is no such mutant: {name}")
    chosen = [m for m in find_mutants(arguments.file) if not arguments.listed or (m.file, m.name) in known]
    random.Random(arguments.seed).shuffle(chosen)

    print(f"{len(chosen)} mutants, of {len(everything)} in all; building the tests", file=sys.stderr)
    bench = Bench(arguments.folder.resolve(), arguments.jobs)
    end = time.monotonic() + (arguments.seconds or 1e9)
    counts = collections.Counter()
    log = arguments.log.open("w") if arguments.log else None
    survivors, wrong = [], []

    def judge(mutant):
        return bench.judge(mutant) if time.monotonic() < end else None

    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        for future in concurrent.futures.as_completed([pool.submit(judge, mutant) for mutant in chosen]):
            if (done := future.result()) is None:
                continue
            mutant, verdict, by = done
            shown = f"{mutant.file}:{mutant.line}: {mutant.name}"
            if log:
                print(f"{verdict}\t{by}\t{shown}", file=log, flush=True)
            counts["tried"] += 1
            if (mutant.file, mutant.name) in known:
                if verdict == "survived":
                    verdict = "listed"
                else:
                    wrong.append(f"{shown} (listed, but {verdict} by {by})")
            counts[verdict] += 1
            if verdict == "survived":
                survivors.append(shown)
                print(shown, flush=True)
    for line in wrong:
        print(line)
    rest = counts["killed"] + counts["survived"]
    share = 100 * counts["killed"] / rest if rest else 100.0
    print(
        f"{counts['tried']} of {len(chosen)} mutants tried, seed {arguments.seed}: "
        f"{counts['uncompiled']} do not compile, {counts['listed']} listed as changing nothing; "
        f"of the other {rest}, {counts['killed']} killed, {counts['survived']} survived ({share:.1f}% killed)"
    )
    return 1 if missing or wrong or share < 97 or not counts["tried"] else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Failure as failure:
        sys.exit(str(failure))
