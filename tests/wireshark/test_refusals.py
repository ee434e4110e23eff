"""Messages that are refused: the expert item bears the code, and the field, that the library gives."""

import unittest

import messages
import pcap
import shark


class Refusals(unittest.TestCase):
    maxDiff = 2000

    @classmethod
    def setUpClass(cls):
        cls.refused = [(data, code, shark.Failure(data)) for data, code in messages.refused()
                       if len(data) <= pcap.MAX_DATAGRAM]
        assert len(cls.refused) > 400

    def check(self, message, failure):
        self.assertEqual(message.refusal(), (failure.code, failure.path))
        self.assertEqual(len(message.notes), 1)

    def test_vectors_and_relaymsg_name_the_same_code(self):
        names = {-2: "READ_UNDERFLOW", -3: "STRING_TOO_LONG", -4: "STRING_EMPTY", -5: "STRING_MALFORMED",
                 -7: "COUNT_OUT_OF_RANGE", -20: "VERSION_OUT_OF_RANGE"}
        self.assertEqual({code for _, code, _ in self.refused}, set(names))
        for _, code, failure in self.refused:
            self.assertEqual(failure.code, "BIX_ERR_" + names[code])

    def test_datagrams(self):
        path = shark.file("refused.pcap")
        with pcap.Capture(path) as capture:
            for data, _, _ in self.refused:
                capture.datagram(data)
        packets = shark.packets(path)
        self.assertEqual(len(packets), len(self.refused))
        for packet, (data, code, failure) in zip(packets, self.refused):
            with self.subTest(data=data[:64].hex(), code=code):
                self.assertEqual(len(packet), 1)
                self.check(packet[0], failure)
                # What was read before stays on show; nothing of the rest is.
                self.assertEqual("stHead" in packet[0].fields, packet[0].length > 0)

    def test_behind_a_good_message(self):
        path = shark.file("behind.pcap")
        with pcap.Capture(path) as capture:
            for number, (data, _, _) in enumerate(self.refused):
                capture.datagram(messages.heart_beat(number) + data[:60000])
        packets = shark.packets(path)
        for number, (packet, (data, code, failure)) in enumerate(zip(packets, self.refused)):
            if len(data) <= 60000:
                with self.subTest(data=data[:64].hex(), code=code):
                    self.assertEqual(len(packet), 2)
                    self.assertEqual(packet[0].fields["stCSRelayMsgHeartBeatReq"], {"dwUnused": number})
                    self.assertIsNone(packet[0].refusal())
                    self.check(packet[1], failure)

    def test_connections(self):
        """A message that might only be incomplete is waited for; the others are refused wherever they are cut."""
        path = shark.file("refused-tcp.pcap")
        expected, ends = [], []
        longest = 516558
        with pcap.Capture(path) as capture:
            for data, _, failure in self.refused:
                connection = capture.connection()
                tail = b"" if failure.code == "BIX_ERR_READ_UNDERFLOW" else messages.heart_beat(7)
                whole = data + tail
                for at in range(0, len(whole), 6):
                    connection.send(whole[at:at + 6])
                connection.close()
                ends.append(capture.packets)
                if failure.too_long and failure.code != "BIX_ERR_STRING_MALFORMED":
                    length_at = whole.index(failure.too_long.to_bytes(4, "big"), 12)
                    fits = length_at + 4 + failure.too_long <= longest
                    expected.append("BIX_ERR_STRING_TOO_LONG" if fits else "BIX_ERR_READ_UNDERFLOW")
                elif failure.code != "BIX_ERR_READ_UNDERFLOW":
                    expected.append(failure.code)
                else:
                    expected.append(None)
        packets = shark.packets(path)
        for kind in None, "BIX_ERR_READ_UNDERFLOW", "BIX_ERR_STRING_TOO_LONG":
            self.assertIn(kind, expected)
        for start, end, code, (data, _, failure) in zip([0] + ends, ends, expected, self.refused):
            with self.subTest(data=data[:64].hex()):
                shown = [message for packet in packets[start:end] for message in packet]
                if code is None:
                    self.assertEqual(shown, [])
                else:
                    self.assertEqual(shown[0].refusal(), (code, failure.path))

    def test_every_cut_of_a_message(self):
        """The beginning of a good message, and nothing more, is an underflow in a datagram."""
        whole = [data for data in messages.good() if data[11] in (161, 165, 169, 182, 195) and len(data) < 120][::3]
        cuts = [(data, length) for data in whole for length in range(1, len(data))]
        path = shark.file("cuts.pcap")
        with pcap.Capture(path) as capture:
            for data, length in cuts:
                capture.datagram(data[:length])
        for packet, (data, length) in zip(shark.packets(path), cuts):
            with self.subTest(data=data.hex(), length=length):
                self.assertEqual(len(packet), 1)
                self.assertEqual(packet[0].refusal()[0], "BIX_ERR_READ_UNDERFLOW")
                self.assertEqual(packet[0].length, messages.relay_wire.unpack("CSRelayMsg", data[:length])[1])
                self.assertEqual(packet[0].undecoded or b"", data[packet[0].length:length])


if __name__ == "__main__":
    unittest.main()
