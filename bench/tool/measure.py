"""Runs the benchmarks and keeps what they measured."""
import collections
import json
import platform
import statistics
import subprocess
import tempfile

from . import project

SHIPPED = ["bench", "bench-O2", "bench-clang", "bench-clang-O2"]
UNOPTIMISED = ["bench-O0", "bench-clang-O0"]
PRESETS = SHIPPED + UNOPTIMISED
SECONDS_PER_REPETITION = 0.02
UNOPTIMISED_FILTER = r"^(pack|unpack)/D/(codec|by-field|F1)"


def run(options):
    partial = options.filter != "." or options.floors_only
    for preset in options.preset or PRESETS:
        peers = preset in SHIPPED and not options.floors_only
        if not options.no_install:
            project.install(project.BASE + (project.CLANG if "clang" in preset else [])
                            + (sum(project.PEERS.values(), []) if peers else []))
        print(f"{preset}: building", flush=True)
        directory = project.build(preset, peers, ["bench_relay_msg"])
        print(f"{preset}: measuring", flush=True)
        wanted = UNOPTIMISED_FILTER if preset in UNOPTIMISED and options.filter == "." else options.filter
        results = execute(directory / "bench" / "bench_relay_msg", wanted, options.repetitions)
        if partial:
            show(results)
        else:
            save(preset, results)
    return True


def execute(program, wanted, repetitions):
    """One run of everything that is wanted; the repetitions of all contenders are mixed at random."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        subprocess.run([program, f"--benchmark_filter={wanted}", f"--benchmark_repetitions={repetitions}",
                        f"--benchmark_min_time={SECONDS_PER_REPETITION}",
                        "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=false",
                        f"--benchmark_out={out.name}", "--benchmark_out_format=json"],
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        found = open(out.name).read()
    if not found:
        raise SystemExit(f"scripts/bench: no benchmark is named like {wanted!r}")
    raw = json.loads(found)
    times = collections.defaultdict(list)
    sizes = {}
    for entry in raw["benchmarks"]:
        if entry.get("run_type") == "aggregate":
            continue
        assert entry["time_unit"] == "ns"
        times[entry["run_name"]].append(float(f"{entry['cpu_time']:.4g}"))
        sizes[entry["run_name"]] = int(entry["bytes"])
    context = raw["context"]
    return {
        "machine": machine(context),
        "date": context["date"][:10],
        "compiler": context["compiler"],
        "flags": context["flags"],
        "repetitions": repetitions,
        "seconds per repetition": SECONDS_PER_REPETITION,
        "libraries": {name: project.version(packages[0]) for name, packages in project.PEERS.items()},
        "measured": {name: {"bytes": sizes[name], "ns": times[name]} for name in sorted(times)},
    }


def machine(context):
    processor = next((line.split(":", 1)[1].strip() for line in open("/proc/cpuinfo")
                      if line.startswith("model name")), platform.machine())
    release = dict(line.rstrip().split("=", 1) for line in open("/etc/os-release") if "=" in line)
    return {
        "processor": processor,
        "processors": context["num_cpus"],
        "MHz": context["mhz_per_cpu"],
        "caches": [f"{cache['type']} L{cache['level']} {cache['size'] // 1024} KiB" for cache in context["caches"]],
        "load before": round(context["load_avg"][0], 2) if context.get("load_avg") else None,
        "system": release.get("PRETTY_NAME", "").strip('"'),
        "kernel": platform.release(),
        "libc": " ".join(platform.libc_ver()),
    }


def save(preset, results):
    project.RESULTS.mkdir(exist_ok=True)
    path = project.RESULTS / f"{preset}.json"
    head = {key: value for key, value in results.items() if key != "measured"}
    lines = [f"    {json.dumps(name)}: {json.dumps(value)}" for name, value in results["measured"].items()]
    text = json.dumps(head, indent=2)[:-2] + ',\n  "measured": {\n' + ",\n".join(lines) + "\n  }\n}\n"
    path.write_text(text)
    print("wrote", path.relative_to(project.ROOT))


def show(results):
    for name, value in results["measured"].items():
        print(f"{name:40} {statistics.median(value['ns']):12.2f} ns  {value['bytes']:8} bytes")
