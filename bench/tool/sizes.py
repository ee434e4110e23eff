"""Sizes that a user pays for: code, compile time of a client, stack, and calls of the allocator."""
import json
import pathlib
import re
import resource
import statistics
import subprocess
import tempfile

from . import project

FILE = project.RESULTS / "sizes.json"
COMPILERS = ["g++", "clang++"]
REPETITIONS = 15
EMPTY = "int main() { return 0; }\n"
CLIENT = '#include "protocol/cs_relay_msg.h"\n' + EMPTY
# `delete[]` stands in a buffer's `_free`; everything else that allocates or frees would be a fault.
ALLOCATOR = re.compile(r"\b(operator new|operator delete(?!\[\])|malloc|calloc|realloc|free|strdup)\b")


def run(may_install):
    if may_install:
        project.install(project.BASE + project.CLANG)
    found = {compiler: measure(compiler) for compiler in COMPILERS}
    project.RESULTS.mkdir(exist_ok=True)
    FILE.write_text(json.dumps(found, indent=2) + "\n")
    print(json.dumps(found, indent=2))
    return True


def sources():
    """The library's sources, as the build names them."""
    listed = re.search(r"add_library\(relay_msg\s+([^)]*)\)", (project.ROOT / "CMakeLists.txt").read_text())[1].split()
    return listed


def measure(compiler):
    flags = ["-std=c++17", "-O2", "-DNDEBUG", "-fPIC", "-fvisibility=hidden", "-fvisibility-inlines-hidden",
             "-fno-exceptions", "-fno-rtti", "-fstack-usage", "-I", str(project.ROOT)]
    with tempfile.TemporaryDirectory() as place:
        directory = pathlib.Path(place)
        objects = []
        for source in sources():
            objects.append(directory / (pathlib.Path(source).stem + ".o"))
            subprocess.run([compiler, *flags, "-c", project.ROOT / source, "-o", objects[-1]], check=True, cwd=directory)
        sections = subprocess.run(["size", "-A", *objects], check=True, capture_output=True, text=True).stdout
        named = [line.split() for line in sections.splitlines() if line.startswith(".")]
        read_only = (".text", ".rodata", ".eh_frame", ".data.rel.ro")
        symbols = subprocess.run(["nm", "-C", "--undefined-only", *objects], check=True, capture_output=True,
                                 text=True).stdout
        frames = [(int(parts[1]), ":".join(parts[0].rsplit("/", 1)[-1].split(":")[:2]), parts[2])
                  for path in directory.glob("*.su")
                  for parts in (line.split("\t") for line in path.read_text().splitlines())]
        deepest, function, _ = max(frames)
        return {
            "compiler": subprocess.run([compiler, "--version"], check=True, capture_output=True,
                                       text=True).stdout.splitlines()[0],
            "text bytes": sum(int(size) for name, size, *_ in named if name.startswith(".text")),
            "text, constants and tables": sum(int(size) for name, size, *_ in named if name.startswith(read_only)),
            "deepest stack frame": deepest,
            "deepest stack frame in": function,
            "stack frames of unknown size": sum(1 for frame in frames if frame[2] not in ("static", "dynamic,bounded")),
            "allocator calls": sorted(set(ALLOCATOR.findall(symbols))),
            **compile_time(compiler, directory),
        }


def processor_time():
    """Of the processes that have ended, which other work on the machine hardly changes."""
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def compile_time(compiler, directory):
    """Seconds that a client takes beyond an empty program, the two compiled in turns."""
    times = {"empty": [], "client": []}
    for name, text in (("empty", EMPTY), ("client", CLIENT)):
        (directory / f"{name}.cpp").write_text(text)
    for _ in range(REPETITIONS):
        for name, taken in times.items():
            before = processor_time()
            subprocess.run([compiler, "-std=c++17", "-O2", "-I", project.ROOT, "-c", directory / f"{name}.cpp",
                            "-o", directory / f"{name}.o"], check=True)
            taken.append(processor_time() - before)
    empty, client = (statistics.median(times[name]) for name in ("empty", "client"))
    return {"seconds to compile nothing": round(empty, 4), "seconds more for a client": round(client - empty, 4)}
