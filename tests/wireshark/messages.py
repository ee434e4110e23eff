"""The messages of the vectors: those that are good, and those that a receiver refuses."""

import functools
import json
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "vectors" / "reference"))

import relay_wire  # noqa: E402
import run_vectors  # noqa: E402

NEWEST = 3


def head(command, version, user=1001, room=7, async_id=258):
    return relay_wire.pack("CSRelayMsgHead", {
        "dwUserID": user, "dwRoomID": room, "bVersion": version, "wAsyncID": async_id, "bCmdId": command,
    }, 0, 12, 0)[2][:12]


def heart_beat(number):
    return bytes(head(184, NEWEST)) + number.to_bytes(4, "big")


@functools.lru_cache(maxsize=None)
def _all():
    """Each message of the vectors once, with the code that unpacking it gives."""
    carriers = {}  # of each record, a command
    for command, (_, record) in relay_wire.COMMANDS.items():
        carriers.setdefault(record, command)
    found = {}
    for path in sorted((ROOT / "vectors").glob("*.jsonl")):
        for line in path.read_text(encoding="utf-8").splitlines():
            vector = json.loads(line)
            if vector["test"] not in ("both", "unpack"):
                continue
            data = run_vectors.from_hex(vector["wire"])
            if vector["record"] != "CSRelayMsg":
                if vector["record"] not in carriers:
                    continue
                version = vector["cut"] if vector["cut"] in (1, 2) else NEWEST
                data = bytes(head(carriers[vector["record"]], version)) + data
                code, used = relay_wire.unpack("CSRelayMsg", data, 0)[:2]
                if code != vector["code"]:  # the record's own cut-off cannot travel in a message
                    continue
            else:
                code, used = vector["code"], vector["used"]
            found[data[:used] if code == 0 else data] = code
    return found


def good():
    """The bytes of good messages."""
    return [data for data, code in _all().items() if code == 0]


def refused():
    """Bytes that are refused, each with the code."""
    return [(data, code) for data, code in _all().items() if data and code != 0]
