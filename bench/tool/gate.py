"""Instructions per operation, which do not depend on time: counted by callgrind and held against a table."""
import json
import pathlib
import re
import subprocess
import tempfile

from . import project

PRESETS = ["bench"]
TABLE = project.ROOT / "bench" / "instructions.json"
TOLERANCE = 0.03
HOSTILE = "hostile/"


def count(preset):
    """Counts one build: what it was built with, instructions per operation, and the hostile inputs."""
    program = project.build(preset, targets=["bench_steps"]) / "bench" / "bench_steps"
    with tempfile.TemporaryDirectory() as directory:
        out = subprocess.run(["valgrind", "-q", "--tool=callgrind", f"--callgrind-out-file={directory}/dump", program],
                             check=True, capture_output=True, text=True).stdout
        runs = {}
        for path in pathlib.Path(directory).iterdir():
            text = path.read_text()
            name = re.search(r"^desc: Trigger: Client Request: (.*)#(\d+)$", text, re.M)
            if name:
                runs.setdefault(name[1], {})[int(name[2])] = int(re.search(r"^(?:totals|summary): (\d+)", text, re.M)[1])
    operations = {}
    for name, totals in runs.items():
        short, long = sorted(totals)
        operations[name] = (totals[long] - totals[short]) / (long - short)
    lines = [line.split("\t") for line in out.splitlines()]
    built = {line[0]: line[1] for line in lines if len(line) == 2}
    inputs = {line[1]: {"bytes": int(line[2]), "result": int(line[3]), "instructions": operations[HOSTILE + line[1]]}
              for line in lines if line[0] == "hostile"}
    return built, {name: n for name, n in operations.items() if not name.startswith(HOSTILE)}, inputs


def read():
    return json.loads(TABLE.read_text()) if TABLE.exists() else []


def same(entry, built):
    return all(entry[key] == built[key] for key in ("compiler", "flags"))


def write(table):
    def entry(one):
        head = "".join(f"    {json.dumps(key)}: {json.dumps(one[key])},\n" for key in ("compiler", "flags", "libc"))
        parts = []
        for key in ("operations", "hostile"):
            lines = [f"      {json.dumps(name)}: {json.dumps(one[key][name])}" for name in one[key]]
            parts.append(f"    {json.dumps(key)}: {{\n" + ",\n".join(lines) + "\n    }")
        return "  {\n" + head + ",\n".join(parts) + "\n  }"

    TABLE.write_text("[\n" + ",\n".join(entry(one) for one in table) + "\n]\n")


def order(name):
    action, _, work = name.partition("/")
    return ["pack", "unpack", "text"].index(action), work


def run(presets, update, may_install):
    if may_install:
        project.install(project.BASE + project.COUNTING
                        + (project.CLANG if any("clang" in preset for preset in presets) else []))
    good = True
    for preset in presets:
        built, operations, inputs = count(preset)
        operations = {name: operations[name] for name in sorted(operations, key=order)}
        table = read()
        if update:
            table = [entry for entry in table if not same(entry, built)]
            table.append({**built, "operations": operations, "hostile": inputs})
            write(sorted(table, key=lambda entry: (entry["compiler"], entry["flags"])))
            print(f"wrote {TABLE.relative_to(project.ROOT)} for {built['compiler']} {built['flags']}")
        else:
            good = compare(built, operations, table) and good
    return good


def compare(built, operations, table):
    title = f"{built['compiler']} {built['flags']}, libc {built['libc']}"
    entry = next((entry for entry in table if same(entry, built)), None)
    if entry is None:
        known = ", ".join(f"{entry['compiler']} {entry['flags']}" for entry in table) or "none"
        print(f"NOT COMPARED: the table has no counts for {title} (it has: {known}).\n"
              "Counts of different compilers say nothing about each other; record these with --gate --update.")
        return True
    if entry["libc"] != built["libc"]:
        print(f"Note: the table was counted with libc {entry['libc']}, whose copies count too.")
    print(f"Instructions per operation, {title}")
    good = True
    for name in sorted(set(entry["operations"]) | set(operations), key=order):
        was, now = entry["operations"].get(name), operations.get(name)
        if was is None or now is None:
            verdict = "FAIL: only " + ("in the table" if now is None else "measured")
        elif now > was * (1 + TOLERANCE):
            verdict = "FAIL"
        elif now < was * (1 - TOLERANCE):
            verdict = "better: record it with --gate --update"
        else:
            verdict = "ok"
        good = good and not verdict.startswith("FAIL")
        change = f"{(now / was - 1) * 100:+6.1f} %" if was and now else ""
        print(f"  {name:10} {was or 0:12.1f} {now or 0:12.1f}  {change:>9}  {verdict}")
    return good
