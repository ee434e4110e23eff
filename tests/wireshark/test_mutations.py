"""Damaged and random bytes: no Lua error, and the same as the reader that was made from docs/wire.md, in what is
read, in what is refused, and in how far it got."""

import os
import random
import unittest

import messages
import pcap
import shark
from messages import relay_wire

COUNT = int(os.environ.get("MUTATIONS", "3000"))
NAMES = {-2: "BIX_ERR_READ_UNDERFLOW", -3: "BIX_ERR_STRING_TOO_LONG", -4: "BIX_ERR_STRING_EMPTY",
         -5: "BIX_ERR_STRING_MALFORMED", -7: "BIX_ERR_COUNT_OUT_OF_RANGE", -20: "BIX_ERR_VERSION_OUT_OF_RANGE"}
INTERESTING = (0, 1, 2, 3, 4, 5, 6, 10, 11, 100, 101, 127, 128, 161, 167, 184, 195, 254, 255)


def mutated(chance, pool):
    kind = chance.random()
    if kind < 0.1:
        data = chance.randbytes(chance.randrange(1, 200))
        return data
    if kind < 0.3:  # the rest is random behind a head
        return bytes(messages.head(chance.choice(list(relay_wire.COMMANDS)), chance.choice((1, 2, 3)))) + bytes(
            chance.choice(INTERESTING) if chance.random() < 0.7 else chance.randrange(256)
            for _ in range(chance.randrange(120)))
    data = bytearray(b"".join(chance.choice(pool) for _ in range(chance.choice((1, 1, 1, 2, 3)))))
    for _ in range(chance.randrange(4)):
        at = chance.randrange(len(data))
        how = chance.randrange(6)
        if how == 0:
            data[at] = chance.choice(INTERESTING)
        elif how == 1:
            data[at] ^= 1 << chance.randrange(8)
        elif how == 2:
            del data[at:at + chance.choice((1, 1, 2, 4, 30))]
        elif how == 3:
            data[at:at] = chance.randbytes(chance.choice((1, 1, 2, 4, 30)))
        elif how == 4:
            del data[at:]
        else:
            data[at:at + 4] = chance.randrange(1 << 32).to_bytes(4, "big")
        if not data:
            return b"\0"
    return bytes(data)


def in_json(record, fields, version):
    """The fields as shark.Shown has them, those that are on the wire."""
    result = {}
    for field in relay_wire.RECORDS[record]:
        if field.name not in fields or field.since > version:
            continue
        value = fields[field.name]
        if field.kind == "u64":
            value = str(value)
        elif field.kind == "bytes":
            value = value.hex()
        elif field.kind == "text":
            value = in_text(value)
        elif field.element:
            value = [in_json(field.element, element, version) for element in value]
        elif relay_wire.is_record(field.kind):
            value = in_json(field.kind, value, version)
        result[field.name] = value
    return result


def in_text(value):
    if isinstance(value, relay_wire.Malformed):
        return {"malformed": value.hex()}
    try:
        return value.decode("utf-8")
    except UnicodeDecodeError:
        return {"hex": value.hex()}


def without_groups_that_hold_nothing(value):
    if isinstance(value, dict):
        members = {name: without_groups_that_hold_nothing(member) for name, member in value.items()}
        return {name: member for name, member in members.items() if member not in ({}, [])}
    if isinstance(value, list):
        return [element for element in map(without_groups_that_hold_nothing, value) if element != {}]
    return value


def read(data):
    """What there is to see in a datagram: of each message its code, its length as far as it was read, its fields."""
    at, seen = 0, []
    while at < len(data):
        code, used, fields = relay_wire.unpack("CSRelayMsg", data, 0, at)
        version = data[at + 8] if at + 8 < len(data) else 0
        message = {"stHead": in_json("CSRelayMsgHead", fields.get("stHead", {}), version)}
        for name, body in fields.get("stBody", {}).items():
            record = dict(relay_wire.COMMANDS.values())[name]
            message["stBody"] = {name: in_json(record, body, version)}
        seen.append((NAMES.get(code), used, without_groups_that_hold_nothing(message)))
        if code != 0:
            break
        at += used
    return seen


class Mutations(unittest.TestCase):
    maxDiff = 2000

    @classmethod
    def setUpClass(cls):
        chance = random.Random(int(os.environ.get("SEED", "20")))
        pool = [data for data in messages.good() if len(data) < 600]
        pool += [data for data, _ in messages.refused() if len(data) < 1500]
        cls.payloads = [mutated(chance, pool) for _ in range(COUNT)]
        cls.chance = chance

    def test_datagrams(self):
        path = shark.file("mutated.pcap")
        with pcap.Capture(path) as capture:
            for payload in self.payloads:
                capture.datagram(payload)
        packets = shark.packets(path)
        self.assertEqual(len(packets), len(self.payloads))
        codes = set()
        for packet, payload in zip(packets, self.payloads):
            with self.subTest(payload=payload.hex()):
                seen = []
                for message in packet:
                    code, _ = message.refusal() or (None, None)
                    codes.add(code)
                    fields = message.message()
                    if code == "BIX_ERR_VERSION_OUT_OF_RANGE":
                        fields = {}  # the version byte alone is on show, though nothing was read
                        self.assertEqual(list(message.fields), ["bVersion"])
                    seen.append((code, message.length, without_groups_that_hold_nothing(fields)))
                self.assertEqual(seen, read(payload))
        self.assertEqual(codes, {None, *NAMES.values()})

    def test_connections(self):
        path = shark.file("mutated-tcp.pcap")
        starts = []
        with pcap.Capture(path) as capture:
            for payload in self.payloads[::3]:
                starts.append(capture.packets)
                connection = capture.connection()
                at = 0
                while at < len(payload):
                    size = self.chance.choice((1, 3, 10, 100, 1000))
                    connection.send(payload[at:at + size])
                    at += size
                if self.chance.random() < 0.5:
                    connection.close()
        packets = shark.packets(path)
        for start, end, payload in zip(starts, starts[1:] + [len(packets)], self.payloads[::3]):
            with self.subTest(payload=payload.hex()):
                good = [fields for code, _, fields in read(payload) if code is None]
                shown = [message for packet in packets[start:end] for message in packet]
                self.assertEqual([without_groups_that_hold_nothing(message.message()) for message in shown[:len(good)]],
                                 good)

    def test_short_captures(self):
        """Packets of which the capture has only the first bytes."""
        for length in 29, 40, 60, 90:
            path = shark.file("short.pcap")
            with pcap.Capture(path, length) as capture:
                for payload in self.payloads[:500]:
                    capture.datagram(payload)
                for payload in self.payloads[:200]:
                    connection = capture.connection()
                    connection.send(payload)
                    connection.send(payload)
            shark.packets(path)


if __name__ == "__main__":
    unittest.main()
