#!/usr/bin/env python3
"""Shows that the tests bite: each of these mistakes in the dissector makes the test that is named with it fail."""

import os
import pathlib
import subprocess
import sys
import tempfile

DISSECTOR = pathlib.Path(__file__).resolve().parents[2] / "tools" / "wireshark" / "relaymsg.lua"

AGREEMENT = "test_agreement.Agreement."
REFUSALS = "test_refusals.Refusals."
DATAGRAMS = REFUSALS + "test_datagrams"
ONE = AGREEMENT + "test_one_message_in_a_datagram"
PORTS = "test_behaviour.Ports."
REASSEMBLY = "test_behaviour.Reassembly."

MISTAKES = [
    ("bound 5 -> 6", 'record = "CSRelayFrame", bound = 5', 'record = "CSRelayFrame", bound = 6', DATAGRAMS),
    ("text limit 128 -> 127", "bound = 128", "bound = 127", ONE),
    ("since 3 -> 2", '"dwLastHasDataFrameId", kind = "uint32", since = 3',
     '"dwLastHasDataFrameId", kind = "uint32", since = 2', ONE),
    ("a gated field in every message", "if field.since <= version then", "if true then", ONE),
    ("i32 unsigned", 'name = "iResult", kind = "int32"', 'name = "iResult", kind = "uint32"', ONE),
    ("fields exchanged", '            {name = "dwUserID", kind = "uint32", since = 1},\n'
     '            {name = "dwRoomID", kind = "uint32", since = 1},\n',
     '            {name = "dwRoomID", kind = "uint32", since = 1},\n'
     '            {name = "dwUserID", kind = "uint32", since = 1},\n', ONE),
    ("no bytes of a text that is not UTF-8", "if not is_utf8(bytes) then", "if false then", ONE),
    ("surrogates taken for UTF-8", "lead == 0xed and 0x9f", "lead == 0xed and 0xbf", "test_behaviour.Filters.test_texts"),
    ("text as ASCII", "range, ENC_UTF_8)", "range, 0)", ONE),
    ("-3 before -2", "    if too_long and walk.is_stream then", "    if too_long then", DATAGRAMS),
    ("an empty text accepted", "    if length == 0 then", "    if length == -1 then", DATAGRAMS),
    ("a NUL inside accepted", "    if nul ~= length then", "    if bytes:byte(-1) ~= 0 then", DATAGRAMS),
    ("a count above its limit accepted", "    if number <= field.bound then", "    if number then", DATAGRAMS),
    ("version 4 accepted", "newest = 3", "newest = 4", DATAGRAMS),
    ("the version looked at too late", "    if not self:has(protocol.version_at + 1) then",
     "    if not self:has(12) then", REFUSALS + "test_every_cut_of_a_message"),
    ("a bound that is not checked", "    if count <= self:left() then", "    if count <= self:left() + 1 then", DATAGRAMS),
    ("the path of the array, not of the count", "    walk:pop()\n    walk:push(field.count)\n", "", DATAGRAMS),
    ("one message a datagram", "at = good and walk.at or size", "at = size",
     AGREEMENT + "test_many_messages_in_a_datagram"),
    ("no reassembly", "            pinfo.desegment_offset = at\n", "", AGREEMENT + "test_segments_of_some_bytes"),
    ("a segment, not its message, is asked for again", "pinfo.desegment_offset = at\n", "pinfo.desegment_offset = 0\n",
     AGREEMENT + "test_segments_of_any_size"),
    ("a hopeless text is waited for", "    if too_long and walk.is_stream then", "    if false then",
     REASSEMBLY + "test_a_hopeless_text_is_not_waited_for"),
    ("a cut capture taken for damage", "        walk.is_cut_short = packet.is_cut and", "        walk.is_cut_short = false and",
     REASSEMBLY + "test_a_packet_that_the_capture_cut"),
    ("heuristics always on", "not relay.prefs.heuristic or ", "", PORTS + "test_no_port_is_taken_unless_it_is_given"),
    ("heuristics take an unknown command", "        if not walk.command then\n            return false\n", "        if false then\n",
     PORTS + "test_heuristics_take_whole_messages_of_known_commands_only"),
    ("no Decode As", ":add_for_decode_as(relay)", "", PORTS + "test_decode_as"),
    ("a port stays taken", "dissectors:remove(before, relay)", "dissectors:add(before, relay)",
     PORTS + "test_the_last_choice_counts"),
    ("a Lua error on what is random", "    local nul = bytes:find(", "    local nul = length < 3 and nil + 1 or bytes:find(",
     "test_mutations.Mutations.test_datagrams"),
    ("the info column of the last message only", '(told > 1 and " | " or "")', '""', "test_behaviour.InfoColumn"),
]


def main():
    right = DISSECTOR.read_text(encoding="utf-8")
    unseen = 0
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / "relaymsg.lua"
        environment = {**os.environ, "DISSECTOR": str(copy), "PYTHONDONTWRITEBYTECODE": "1"}
        for what, old, new, test in MISTAKES:
            if right.count(old) < 1:
                sys.exit(f"{what}: the dissector has no such code")
            copy.write_text(right.replace(old, new), encoding="utf-8")
            run = subprocess.run([sys.executable, "-m", "unittest", "-q", "-f", test], cwd=pathlib.Path(__file__).parent,
                                 env=environment, capture_output=True, text=True, check=False)
            # A dissector that does not load is no proof, nor is a test that does not run.
            seen = run.returncode == 1 and "FAILED" in run.stderr and "Lua: " not in run.stderr \
                and "Failed to import" not in run.stderr
            unseen += not seen
            print(f"{what}: {'seen' if seen else 'NOT SEEN ' + run.stderr[-2000:]}", flush=True)
    return 1 if unseen else 0


if __name__ == "__main__":
    sys.exit(main())
