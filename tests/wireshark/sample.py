#!/usr/bin/env python3
"""Writes a capture to look at in Wireshark: the recorded session of examples/captures, Ann, Ben and Cleo by UDP, Dan
by TCP, and at the end a damaged message.  sample.py FILE.pcap"""

import itertools
import sys

import messages
import pcap
from messages import relay_wire

DAN = 1004
FROM_SERVER = ("Res", "LockStep", "ReloginNotify", "Error")


def session():
    """Of each message its user, whether it goes to the server, and its bytes."""
    data = (messages.ROOT / "examples" / "captures" / "session.bin").read_bytes()
    at = 0
    while at < len(data):
        code, used, fields = relay_wire.unpack("CSRelayMsg", data, 0, at)
        assert code == 0
        head = fields["stHead"]
        name = relay_wire.COMMANDS[head["bCmdId"]][0]
        yield head["dwUserID"], not name.endswith(FROM_SERVER), data[at:at + used]
        at += used


def main(path):
    with pcap.Capture(path) as capture:
        dan = capture.connection()
        for (user, to_server), group in itertools.groupby(session(), lambda message: message[:2]):
            payload = b"".join(data for _, _, data in group)
            if user == DAN:
                dan.send(payload[:10], to_server)
                dan.send(payload[10:], to_server)
            else:
                capture.datagram(payload, to_server, pcap.FIRST_CLIENT_PORT + user)
        frames = bytes(messages.head(167, 3, 1001, 7, 0)) + b"\x06" + bytes(40)
        capture.datagram(frames, False, pcap.FIRST_CLIENT_PORT + 1001)
        dan.close()


if __name__ == "__main__":
    main(sys.argv[1])
