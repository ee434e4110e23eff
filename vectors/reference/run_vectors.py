#!/usr/bin/env python3
"""Runs vector files against relay_wire.py, by default all of the folder above."""

import argparse
import json
import pathlib
import sys

import relay_wire as wire

HELD = 0xEE  # what an output buffer holds before
CUT_EVERYWHERE = 2 << 10  # bytes: longer wire forms are cut near the stops only
CUT_SELDOM = 64 << 10  # bytes: and yet longer ones only at some of the stops


# ---- The JSON of the vectors ----

def expand(text):
    if isinstance(text, str):
        return text
    return "".join(part if isinstance(part, str) else part["repeat"] * part["times"] for part in text)


def from_hex(text):
    return bytes.fromhex(expand(text))


def from_text(value):
    return from_hex(value["hex"]) if isinstance(value, dict) else expand(value).encode()


def from_string(value):
    if isinstance(value, dict) and "raw" in value:
        return wire.Malformed(from_hex(value["raw"]))
    return from_text(value)


def from_json(record, fields):
    """The JSON of a record as the dict that relay_wire.py uses; fields that are left out stay out."""
    if record == "CSRelayMsg":
        bodies = dict(wire.COMMANDS.values())
        result = {}
        if "stHead" in fields:
            result["stHead"] = from_json("CSRelayMsgHead", fields["stHead"])
        if "stBody" in fields:
            result["stBody"] = {name: from_json(bodies[name], body) for name, body in fields["stBody"].items()}
        return result
    by_name = {field.name: field for field in wire.RECORDS[record]}
    return {name: value_from_json(by_name[name], value) for name, value in fields.items()}


def value_from_json(field, value):
    if field.kind == "u64":
        return int(value)
    if field.kind in wire.WIDTHS:
        return value
    if field.kind == "bytes":
        return from_hex(value)
    if field.kind == "text":
        return from_string(value)
    if field.element:
        return [from_json(field.element, element) for element in value]
    return from_json(field.kind, value)


def pruned(value):
    """Without empty lists and dicts, as the vectors show what a refused message left behind."""
    if isinstance(value, dict):
        items = {name: pruned(member) for name, member in value.items()}
        return {name: member for name, member in items.items() if member != {} and member != []}
    if isinstance(value, list):
        return [member for member in map(pruned, value) if member != {}]
    return value


# ---- Checks ----

class Failed(Exception):
    pass


def same(what, got, expected):
    # A malformed text is not the text that holds the same bytes.
    if got != expected or kinds(got) != kinds(expected):
        raise Failed(f"{what}: got {short(got)}, expected {short(expected)}")


def kinds(value):
    if isinstance(value, dict):
        return {name: kinds(member) for name, member in value.items()}
    if isinstance(value, list):
        return [kinds(member) for member in value]
    return isinstance(value, wire.Malformed)


def short(value):
    text = repr(value)
    return text if len(text) < 400 else text[:400] + "..."


def check_unpack(record, data, cut, code, used, expected, what="unpack"):
    got_code, got_used, fields = wire.unpack(record, data, cut)
    same(what + " code", got_code, code)
    same(what + " used", got_used, used)
    if expected is not None:
        same(what + " fields", fields if code == 0 else pruned(fields), expected)


def check_pack(record, fields, cut, code, used, data, room=None):
    got_code, got_used, memory = wire.pack(record, fields, cut, room or len(data) + 64, HELD)
    same("pack code", got_code, code)
    same("pack used", got_used, used)
    same("packed bytes", bytes(memory[:used]), data)
    same("bytes behind", bytes(memory[used:]).strip(bytes([HELD])), b"")


def lengths(stops, size):
    """Lengths below size, each with the stop that counts there."""
    ends = stops[1:] + [size]
    for stop, end in list(zip(stops, ends))[::97 if size > CUT_SELDOM else 1]:
        near = sorted({stop, min(stop + 1, end - 1), end - 1})
        for length in range(stop, end) if size <= CUT_EVERYWHERE else near:
            yield length, stop


def check_written(memory, used, data, own_version=None):
    """What a writer that ran out of room leaves: all fields so far, the length of a text that did not fit as it was."""
    expected = bytearray(data[:used])
    if own_version is not None and used > wire.VERSION_AT:
        expected[wire.VERSION_AT] = own_version
    unset = bytes([HELD]) * 4
    if bytes(memory[:used]).endswith(unset):
        expected[-4:] = unset
    same("written", bytes(memory[:used]), bytes(expected))
    same("bytes behind", bytes(memory[used:]).strip(bytes([HELD])), b"")


def check_cuts(vector, fields, data, received):
    record, cut, cuts = vector["record"], vector["cut"], vector["cuts"]
    for length, stop in lengths(cuts["unpack"]["stops"], len(data)):
        code, used, got = wire.unpack(record, data[:length], cut)
        same(f"unpack of {length} bytes", (code, used), (cuts["unpack"]["code"], stop))
        if not is_part(got, received):
            raise Failed(f"unpack of {length} bytes left {short(got)}")
    own_version = fields["stHead"]["bVersion"] if record == "CSRelayMsg" else None
    for length, stop in lengths(cuts["pack"]["stops"], len(data)):
        code, used, memory = wire.pack(record, fields, cut, length, HELD)
        same(f"pack into {length} bytes", (code, used), (cuts["pack"]["code"], stop))
        check_written(memory, used, data, own_version)


def is_part(part, whole):
    """Whether all that is in one value is in the other, which has more."""
    if isinstance(part, dict):
        return all(name in whole and is_part(member, whole[name]) for name, member in part.items())
    if isinstance(part, list):
        return len(part) <= len(whole) and all(is_part(a, b) for a, b in zip(part, whole))
    return part == whole


def run_both(vector):
    record, cut = vector["record"], vector["cut"]
    fields = from_json(record, vector["fields"])
    received = from_json(record, vector.get("received", vector["fields"]))
    data = from_hex(vector["wire"])
    check_pack(record, fields, cut, vector["code"], vector["used"], data)
    check_unpack(record, data, cut, vector["code"], vector["used"], received)
    if "text" in vector:
        same("text", wire.render(record, fields), (wire.OK, from_text(vector["text"])))
    if "cuts" in vector:
        check_cuts(vector, fields, data, received)


def run_pack(vector):
    fields = from_json(vector["record"], vector["fields"])
    check_pack(vector["record"], fields, vector["cut"], vector["code"], vector["used"], from_hex(vector["wire"]),
               vector.get("room"))


def run_unpack(vector):
    received = from_json(vector["record"], vector["received"])
    check_unpack(vector["record"], from_hex(vector["wire"]), vector["cut"], vector["code"], vector["used"], received)


def run_text(vector):
    fields = from_json(vector["record"], vector["fields"])
    got = wire.render(vector["record"], fields, vector["indent"], vector["sep"].encode())
    same("text", got, (vector["code"], from_text(vector["text"])))
    same("used", len(got[1]), vector["used"])


def run_fresh(vector):
    same("fresh record", wire.fresh(vector["record"]), from_json(vector["record"], vector["fields"]))


def run_stream(vector):
    record, data, start = vector["record"], from_hex(vector["wire"]), 0
    for message in vector["messages"]:
        used = message["used"]
        fields = from_json(record, message["fields"])
        received = from_json(record, message.get("received", message["fields"]))
        check_pack(record, fields, message["cut"], wire.OK, used, data[start:start + used])
        same("message", wire.unpack(record, data, 0, start), (wire.OK, used, received))
        start += used
    same("length of the stream", start, len(data))


RUN = {"both": run_both, "pack": run_pack, "unpack": run_unpack, "text": run_text, "fresh": run_fresh,
       "stream": run_stream}


def complaint(vector):
    """What is wrong, or None."""
    try:
        RUN[vector["test"]](vector)
        return None
    except (Failed, ArithmeticError, LookupError, TypeError, ValueError) as error:
        return str(error) or type(error).__name__


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--stop", action="store_true", help="stop at the first failure")
    parser.add_argument("files", nargs="*", type=pathlib.Path)
    arguments = parser.parse_args()
    here = pathlib.Path(__file__).resolve().parent
    total = failures = 0
    for path in arguments.files or sorted(here.parent.glob("*.jsonl")):
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            vector = json.loads(line)
            total += 1
            wrong = complaint(vector)
            if wrong is not None:
                failures += 1
                print(f"{path.name}:{number}: {vector['id']}: {wrong}")
                if arguments.stop:
                    return 1
    print(f"{total} vectors, {failures} failed")
    return 1 if failures or not total else 0


if __name__ == "__main__":
    sys.exit(main())
