"""Good messages: the dissector shows field by field what relaymsg prints."""

import random
import unittest

import messages
import pcap
import shark


class Agreement(unittest.TestCase):
    maxDiff = 2000

    @classmethod
    def setUpClass(cls):
        cls.good = messages.good()
        cls.decoded = shark.decoded(b"".join(cls.good))
        assert len(cls.decoded) == len(cls.good) > 700

    def check(self, shown, numbers):
        self.assertEqual(len(shown), len(numbers))
        for number, message in zip(numbers, shown):
            with self.subTest(message=self.good[number][:64].hex()):
                expected = self.decoded[number]
                self.assertEqual(message.message(), expected)
                self.assertEqual(list(message.message()["stHead"]), list(expected["stHead"]))
                self.assertEqual(message.length, len(self.good[number]))
                self.assertIsNone(message.refusal())
                self.assertIsNone(message.undecoded)
                known = "stBody" in expected
                self.assertEqual([name for name, _ in message.notes], [] if known else ["unknown_command"])

    def that_fit(self, most):
        return [number for number, data in enumerate(self.good) if len(data) <= most]

    def test_one_message_in_a_datagram(self):
        numbers = self.that_fit(pcap.MAX_DATAGRAM)
        path = shark.file("one.pcap")
        with pcap.Capture(path) as capture:
            for number in numbers:
                capture.datagram(self.good[number])
        packets = shark.packets(path)
        self.assertTrue(all(len(packet) == 1 for packet in packets))
        self.check([packet[0] for packet in packets], numbers)

    def test_many_messages_in_a_datagram(self):
        numbers = self.that_fit(4000)
        path = shark.file("many.pcap")
        counts = []
        with pcap.Capture(path) as capture:
            at = 0
            while at < len(numbers):
                count = min(1 + len(counts) % 14, len(numbers) - at)
                counts.append(count)
                capture.datagram(b"".join(self.good[number] for number in numbers[at:at + count]), len(counts) % 2 == 0)
                at += count
        packets = shark.packets(path)
        self.assertEqual([len(packet) for packet in packets], counts)
        self.check([message for packet in packets for message in packet], numbers)

    def in_segments(self, numbers, cut, *options):
        """One connection; cut(data) yields its segments."""
        path = shark.file("segments.pcap")
        with pcap.Capture(path) as capture:
            connection = capture.connection()
            for segment in cut(b"".join(self.good[number] for number in numbers)):
                connection.send(segment)
            connection.close()
        self.check(shark.shown(path, *options), numbers)

    def test_segments_of_one_byte(self):
        self.in_segments(self.that_fit(100)[::4], lambda data: (data[at:at + 1] for at in range(len(data))))

    def test_segments_of_some_bytes(self):
        for size in 5, 13, 16, 100:
            with self.subTest(size=size):
                self.in_segments(self.that_fit(1200), lambda data: (data[at:at + size] for at in range(0, len(data), size)))

    def test_long_messages_in_segments(self):
        numbers = range(len(self.good))
        self.in_segments(numbers, lambda data: (data[at:at + 1460] for at in range(0, len(data), 1460)))
        self.in_segments(numbers, lambda data: [data])

    def test_segments_of_any_size(self):
        chance = random.Random(1)

        def cut(data):
            at = 0
            while at < len(data):
                size = chance.choice((1, 2, 3, 11, 12, 13, 40, 200, 1460))
                yield data[at:at + size]
                at += size

        self.in_segments(self.that_fit(2000), cut)
        self.in_segments(self.that_fit(2000), cut, "-2")  # reads the file twice, as the window does

    def test_segments_late_and_twice(self):
        numbers = self.that_fit(200)[:60]
        path = shark.file("late.pcap")
        data = b"".join(self.good[number] for number in numbers)
        with pcap.Capture(path) as capture:
            connection = capture.connection()
            flags = pcap.PUSH | pcap.ACK
            first = connection.next[0]
            for at in range(0, len(data), 90):
                early, late = data[at:at + 30], data[at + 30:at + 90]
                connection.segment(flags, late, at=first + at + 30)
                connection.segment(flags, early, at=first + at)
                connection.segment(flags, early, at=first + at)
            connection.next[0] += len(data)
            connection.close()
        self.check(shark.shown(path, "-o", "tcp.reassemble_out_of_order:TRUE"), numbers)

    def test_connections_and_directions_side_by_side(self):
        numbers = self.that_fit(300)
        path = shark.file("mixed.pcap")
        with pcap.Capture(path) as capture:
            ways = [(capture.connection(), to_server) for _ in range(3) for to_server in (True, False)]
            queues = [[self.good[number] for number in numbers[i::len(ways)]] for i in range(len(ways))]
            streams = [b"".join(queue) for queue in queues]
            for at in range(0, max(map(len, streams)), 7):
                for (connection, to_server), stream in zip(ways, streams):
                    if at < len(stream):
                        connection.send(stream[at:at + 7], to_server)
        shown = [message.message() for message in shark.shown(path)]
        self.assertEqual(sorted(map(str, shown)), sorted(str(self.decoded[number]) for number in numbers))


if __name__ == "__main__":
    unittest.main()
