"""Where things are, and how they are installed and built."""
import os
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
RESULTS = ROOT / "bench" / "results"

BASE = ["g++", "cmake", "ninja-build", "libbenchmark-dev"]
CLANG = ["clang"]
COUNTING = ["valgrind"]
PEERS = {
    "protobuf": ["libprotobuf-dev", "protobuf-compiler"],
    "flatbuffers": ["libflatbuffers-dev", "flatbuffers-compiler"],
    "capnproto": ["libcapnp-dev", "capnproto", "pkg-config"],
    "msgpack": ["libmsgpack-cxx-dev"],
    "nanopb": ["libnanopb-dev", "nanopb"],
    "cereal": ["libcereal-dev"],
    "boost": ["libboost-serialization-dev"],
    "nlohmann-json": ["nlohmann-json3-dev"],
}


def version(package):
    """The installed version of a package, or None."""
    asked = subprocess.run(["dpkg-query", "-W", "-f", "${db:Status-Status} ${Version}", package],
                           capture_output=True, text=True)
    status, _, number = asked.stdout.partition(" ")
    return number if status == "installed" else None


def install(packages):
    missing = [package for package in packages if version(package) is None]
    if missing:
        print("installing", *missing, flush=True)
        root = [] if os.geteuid() == 0 else ["sudo"]
        subprocess.run(root + ["apt-get", "install", "-y", "-q", "--no-install-recommends"] + missing, check=True)


def build(preset, peers=False, targets=()):
    """Builds a preset and returns its build directory."""
    subprocess.run(["cmake", "--preset", preset, f"-DKORVAN_RELAY_BENCH_PEERS={'ON' if peers else 'OFF'}"],
                   cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", "--preset", preset, "-j", str(os.cpu_count())]
                   + (["--target", *targets] if targets else []), cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    return ROOT / "build" / preset
