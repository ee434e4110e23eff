"""Runs tshark with the dissector, and `relaymsg`, and brings what they say into one form."""

import atexit
import json
import os
import re
import shutil
import subprocess
import tempfile

import messages

DISSECTOR = os.environ.get("DISSECTOR", str(messages.ROOT / "tools" / "wireshark" / "relaymsg.lua"))
RELAYMSG = os.environ.get("RELAYMSG", "relaymsg")
PORTS = ("-o", "relaymsg.udp_ports:9000", "-o", "relaymsg.tcp_ports:9000")

scratch = tempfile.mkdtemp(prefix="wireshark test ")
atexit.register(shutil.rmtree, scratch, ignore_errors=True)


def file(name):
    return os.path.join(scratch, name)


def tshark(*arguments, dissector=DISSECTOR, home=scratch):
    """What tshark prints. It has no settings and no plugins but what is given here."""
    environment = {**os.environ, "HOME": home, "XDG_CONFIG_HOME": os.path.join(home, ".config"), "LC_ALL": "C.UTF-8"}
    script = ["-X", "lua_script:" + dissector] if dissector else []
    done = subprocess.run(["tshark", *arguments, *script], env=environment, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, timeout=300, check=False)
    out, said = done.stdout.decode("utf-8"), done.stderr.decode("utf-8", "replace")
    for text in (out, said):
        error = re.search(r"(Lua Error|Lua): .{,300}", text, re.DOTALL)
        if error:
            raise AssertionError(error[0])
    if done.returncode != 0:
        raise AssertionError(f"tshark ends with {done.returncode}: {said}")
    return out


class Shown:
    """A message as the dissector shows it."""

    def __init__(self, pairs):
        self.length = None
        self.notes = []  # expert items: name and words
        self.undecoded = None
        self.fields = self.record(pairs)

    def record(self, pairs):
        """The fields; an item without any has "" instead."""
        fields = {}
        text_length = None
        for key, value in pairs:
            parts = key.split(".")
            name = parts[-1]
            if key == "_ws.expert":
                self.notes.append((value[0][0].split(".")[1], dict(value)["_ws.expert.message"]))
            elif key == "_ws.malformed":
                pass
            elif key.endswith("_tree"):
                name = name[:-len("_tree")]
                for inner, inside in value:
                    if inner.endswith(".hex"):
                        fields[name] = {"hex": unpunctuated(inside)}
                    else:
                        self.record([(inner, inside)])
            elif key == "relaymsg.length":
                self.length = int(value)
            elif key == "relaymsg.undecoded":
                self.undecoded = bytes.fromhex(unpunctuated(value))
            elif name == "length":
                text_length = int(value)
            elif name == "hex":
                fields[parts[-2]] = {"malformed": unpunctuated(value)}
            elif name.startswith("ast"):
                fields.setdefault(name, []).append(self.record(value))
            elif name.startswith("st"):
                fields[name] = self.record(value)
            elif name.startswith("sz"):
                fields[name] = unpunctuated(value) if text_length is None else value
                text_length = None
            elif name.startswith("ull"):
                fields[name] = value
            else:
                fields[name] = int(value)
        return fields

    def message(self):
        """The JSON that relaymsg prints."""
        body = {name: value for name, value in self.fields.items() if name != "stHead"}
        return {"stHead": self.fields.get("stHead", {}), **({"stBody": body} if body else {})}

    def refusal(self):
        """The code and the path of the field, or nothing."""
        for name, words in self.notes:
            if name.startswith("BIX_ERR"):
                said = re.fullmatch(r"(\w+) at ([\w.\[\]]+): .+", words)
                if not said or said[1] != name:
                    raise AssertionError(f"{name} says: {words}")
                return name, said[2]
        return None


def unpunctuated(text):
    return text.replace(":", "")


def packets(capture, *options, ports=PORTS, **more):
    """Of each packet, its messages."""
    out = tshark("-r", capture, *ports, *options, "-T", "json", "-J", "relaymsg", **more)
    frames = json.loads(out, object_pairs_hook=list)
    result = []
    for frame in frames:
        layers = dict(dict(frame)["_source"])["layers"]
        result.append([Shown(value) for key, value in layers if key == "relaymsg" and isinstance(value, list)])
    return result


def shown(capture, *options, **more):
    """The messages of a capture, in order."""
    return [message for packet in packets(capture, *options, **more) for message in packet]


def decoded(data):
    """The messages of a stream as relaymsg prints them, without lists that are empty: the dissector has no item
    for what is not there."""
    done = subprocess.run([RELAYMSG, "decode", "--json", "--format", "raw"], input=data, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False)
    unknown_command = 4
    if done.returncode not in (0, unknown_command):
        raise AssertionError(f"relaymsg decode ends with {done.returncode}")
    return [without_empty_lists(json.loads(line)) for line in done.stdout.splitlines()]


def without_empty_lists(value):
    if isinstance(value, dict):
        return {name: without_empty_lists(member) for name, member in value.items() if member != []}
    if isinstance(value, list):
        return [without_empty_lists(element) for element in value]
    return value


class Failure:
    """What relaymsg says of a message that it refuses."""

    def __init__(self, data):
        done = subprocess.run([RELAYMSG, "decode", "--format", "raw"], input=data, stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE, check=False)
        said = done.stderr.decode()
        self.path = re.search(r"field (\S+) at offset", said)[1]
        self.code = re.search(r"^  (BIX_ERR\w+):", said, re.MULTILINE)[1]
        length = re.search(r"length is given as (\d+)(?:, but it|; it) holds at most (\d+)", said)
        self.too_long = int(length[1]) if length else None
