#!/usr/bin/env python3
"""Shows that the vectors bite: each of these mistakes in the Python reader makes one of them fail."""

import pathlib
import shutil
import subprocess
import sys
import tempfile

MISTAKES = [
    ("bound 1024 -> 1025", 'F("szRelayBuf", "bytes", 1024', 'F("szRelayBuf", "bytes", 1025'),
    ("bound 5 -> 4", '"list of CSRelayFrame", 5', '"list of CSRelayFrame", 4'),
    ("text limit 64 -> 63", 'F("szUser_ip", "text", 64)', 'F("szUser_ip", "text", 63)'),
    ("default 1000 -> 0 in a piece", 'F("dwFrameCount", "u32", default=1000)],', 'F("dwFrameCount", "u32")],'),
    ("default bRepeatCount 0", "since=2, default=1", "since=2"),
    ("since 3 -> 2", "since=3", "since=2"),
    ("fields exchanged", 'F("dwUserID", "u32"), F("dwRoomID", "u32")', 'F("dwRoomID", "u32"), F("dwUserID", "u32")'),
    ("little endian read",
     'int.from_bytes(self.take(WIDTHS[kind]), "big"',
     'int.from_bytes(self.take(WIDTHS[kind]), "little"'),
    ("i32 unsigned", 'signed=kind == "i32"', "signed=False"),
    ("-3 before -2",
     "        if length > self.left():\n"
     "            raise Refused(READ_UNDERFLOW)\n"
     "        if length > limit:\n"
     "            raise Refused(STRING_TOO_LONG)",
     "        if length > limit:\n"
     "            raise Refused(STRING_TOO_LONG)\n"
     "        if length > self.left():\n"
     "            raise Refused(READ_UNDERFLOW)"),
    ("NUL inside accepted", "raw[-1] != 0 or 0 in raw[:-1]", "raw[-1] != 0"),
    ("empty text not refused", "if length == 0:", "if length == -1:"),
    ("version 4 accepted", "version not in VERSIONS:", "version not in VERSIONS + (4,):"),
    ("version not stamped",
     "    output.memory[start + VERSION_AT] = version\n",
     '    output.memory[start + VERSION_AT] = fields["stHead"]["bVersion"]\n'),
    ("stamped before the body",
     "    start = output.at\n"
     '    write_record("CSRelayMsgHead", fields["stHead"], version, output)',
     "    start = output.at\n"
     '    write_record("CSRelayMsgHead", fields["stHead"], version, output)\n'
     "    output.memory[start + VERSION_AT] = version"),
    ("command 166 added",
     "    165: (",
     '    166: ("stRelayInputing", "CSRelayInput"),\n'
     "    165: ("),
    ("text cut one later", "[:limit - 1]", "[:limit]"),
    ("length written before the text",
     "        self.put(raw)\n"
     "        self.memory[length_at",
     '        self.memory[length_at:length_at + 4] = len(raw).to_bytes(4, "big")\n'
     "        self.put(raw)\n"
     "        self.memory[length_at"),
    ("peek counted as read",
     "raise Refused(VERSION_OUT_OF_RANGE)",
     "reader.at += 9; raise Refused(VERSION_OUT_OF_RANGE)"),
    ("text: one blank a level", 'b"  " * max', 'b" " * max'),
]


def main():
    vectors = pathlib.Path(__file__).resolve().parents[2] / "vectors"
    unseen = 0
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / "vectors"
        shutil.copytree(vectors, copy)
        reader = copy / "reference" / "relay_wire.py"
        right = reader.read_text(encoding="utf-8")
        for what, old, new in MISTAKES:
            if old not in right:
                sys.exit(f"{what}: the reader has no such code")
            reader.write_text(right.replace(old, new), encoding="utf-8")
            run = subprocess.run([sys.executable, "-B", str(copy / "reference" / "run_vectors.py"), "--stop"],
                                 capture_output=True, text=True, check=False)
            # A run that could not start is no proof: it must name a vector.
            seen = run.returncode == 1 and ".jsonl:" in run.stdout
            unseen += not seen
            print(f"{what}: {run.stdout.split(': ')[1] if seen else 'NOT SEEN ' + run.stderr}")
    return 1 if unseen else 0


if __name__ == "__main__":
    sys.exit(main())
