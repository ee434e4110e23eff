"""What was measured, read from bench/results/."""
import json
import statistics

from . import project

WORKS = {
    "A": "heartbeat request",
    "B": "login, text of 64 characters",
    "C": "input, 24 bytes of payload",
    "D": "5 frames of 10 data of 24 bytes",
    "E": "three texts of 2,000 characters",
    "F": "stream of 1,000 messages",
    "G": "full frame pack",
}

# Who takes part, in the order of tables and charts: name, how it is called, and its kind.
CONTENDERS = {
    "codec": ("this codec", "codec"),
    "memcpy": ("memcpy of the wire", "floor"),
    "F1.call": ("floor F1, called", "floor"),
    "F1+.call": ("floor F1+, called", "floor"),
    "F1w.call": ("floor F1w, called", "floor"),
    "F1": ("floor F1, inlined", "floor"),
    "F1+": ("floor F1+, inlined", "floor"),
    "F1w": ("floor F1w, inlined", "floor"),
    "floor.call": ("text floor, called", "floor"),
    "floor": ("text floor, inlined", "floor"),
    "fixed.call": ("text floor, fixed layout, called", "floor"),
    "fixed": ("text floor, fixed layout, inlined", "floor"),
    "by-field": ("field by field, by hand", "plain"),
    "plain": ("plain codec of the tests", "plain"),
    "protobuf": ("protobuf", "peer"),
    "protobuf.arena": ("protobuf, arena", "peer"),
    "flatbuffers": ("FlatBuffers, verified", "peer"),
    "capnproto": ("Cap'n Proto", "peer"),
    "msgpack": ("msgpack-cxx", "peer"),
    "msgpack.memory": ("msgpack-cxx, own buffer", "peer"),
    "nanopb": ("nanopb", "peer"),
    "cereal": ("cereal", "peer"),
    "boost": ("Boost.Serialization", "peer"),
    "nlohmann-json": ("nlohmann-json", "peer"),
}


def title(who):
    return CONTENDERS[who][0]


def kind(who):
    return CONTENDERS[who][1]


class Run:
    """One build, one run."""

    def __init__(self, preset):
        self.preset = preset
        self.data = json.loads((project.RESULTS / f"{preset}.json").read_text())
        self.measured = self.data["measured"]

    def build(self):
        return f"{self.data['compiler'].replace('GNU', 'g++').replace('Clang', 'clang')} {optimisation(self.data['flags'])}"

    def has(self, action, work, who):
        return f"{action}/{work}/{who}" in self.measured

    def ns(self, action, work, who):
        """The median, or None."""
        entry = self.measured.get(f"{action}/{work}/{who}")
        return statistics.median(entry["ns"]) if entry else None

    def spread(self, action, work, who):
        """Half of the distance between the quartiles, as a part of the median."""
        times = self.measured[f"{action}/{work}/{who}"]["ns"]
        if len(times) < 2:
            return 0.0
        low, middle, high = statistics.quantiles(times, n=4)
        return (high - low) / 2 / middle

    def size(self, action, work, who):
        return self.measured[f"{action}/{work}/{who}"]["bytes"]

    def who(self, action, work, kinds=("codec", "floor", "plain", "peer")):
        return [who for who in CONTENDERS if kind(who) in kinds and self.has(action, work, who)]

    def series(self, action, name):
        """Points (bytes on the wire, median) of a series, in the order of the size."""
        prefix = f"series.{action}/{name}/"
        return sorted((value["bytes"], statistics.median(value["ns"]))
                      for key, value in self.measured.items() if key.startswith(prefix))


def optimisation(flags):
    return next((flag for flag in flags.split() if flag.startswith("-O")), "-O0")


def load(preset):
    """The run of a preset, or None if it was not measured."""
    return Run(preset) if (project.RESULTS / f"{preset}.json").exists() else None


def line(points):
    """Least squares: slope, intercept, and the worst residual with its place."""
    n = len(points)
    mean_x = sum(x for x, _ in points) / n
    mean_y = sum(y for _, y in points) / n
    slope = (sum((x - mean_x) * (y - mean_y) for x, y in points) / sum((x - mean_x) ** 2 for x, _ in points))
    intercept = mean_y - slope * mean_x
    residual, at = max((abs(y - slope * x - intercept), x) for x, y in points)
    return slope, intercept, residual, at
