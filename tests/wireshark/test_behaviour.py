"""What a user of Wireshark can choose, name and see."""

import os
import re
import shutil
import unittest

import messages
import pcap
import sample
import shark

NO_PORTS = ()


def frame_pack(frames, version=3):
    """A message of the command stRelayLockStep."""
    body = {"bCount": len(frames), "astRelayData": [
        {"dwFrameId": frame, "bCount": 1, "astRelayData": [
            {"dwObjectId": 5, "wRelayLen": 3, "szRelayBuf": b"\x0a\x0b\x0c", "bUserStatusFlag": 1, "wSequance": 9}],
         "dwLastHasDataFrameId": frame - 1} for frame in frames]}
    return bytes(messages.head(167, version)) + packed("CSRelayFramePack", body, version)


def packed(record, fields, version=3):
    code, used, memory = messages.relay_wire.pack(record, fields, version, 1 << 20, 0)
    assert code == 0
    return bytes(memory[:used])


def login(signature, version=3):
    return bytes(messages.head(161, version)) + packed("CSRelayMsgLoginReq", {"szSigBuf": signature, "dwReserve": 1})


def datagrams(name, *payloads, **ends):
    path = shark.file(name)
    with pcap.Capture(path) as capture:
        for payload in payloads:
            capture.datagram(payload, **ends)
    return path


def stream(name, *segments, close=True):
    path = shark.file(name)
    with pcap.Capture(path) as capture:
        connection = capture.connection()
        for segment in segments:
            connection.send(segment)
        if close:
            connection.close()
    return path


def info(path, *options):
    """The info column of each packet of the protocol."""
    out = shark.tshark("-r", path, *shark.PORTS, *options, "-Y", "relaymsg", "-T", "fields", "-e", "_ws.col.Info")
    return out.splitlines()


class Ports(unittest.TestCase):
    def setUp(self):
        self.udp = datagrams("udp.pcap", messages.heart_beat(1))
        self.tcp = stream("tcp.pcap", messages.heart_beat(1))

    def count(self, path, *options, ports=NO_PORTS, **more):
        return len(shark.shown(path, *options, ports=ports, **more))

    def test_no_port_is_taken_unless_it_is_given(self):
        self.assertEqual((self.count(self.udp), self.count(self.tcp)), (0, 0))

    def test_ports_by_preference(self):
        udp = ("-o", "relaymsg.udp_ports:53,8990-9010")
        tcp = ("-o", "relaymsg.tcp_ports:9000")
        self.assertEqual((self.count(self.udp, ports=udp), self.count(self.tcp, ports=udp)), (1, 0))
        self.assertEqual((self.count(self.udp, ports=tcp), self.count(self.tcp, ports=tcp)), (0, 1))
        self.assertEqual(self.count(self.udp, ports=("-o", "relaymsg.udp_ports:9001")), 0)

    def test_the_last_choice_counts(self):
        home = shark.file("home of choices")  # the preferences are written there
        os.makedirs(os.path.join(home, ".config", "wireshark"))
        script = shark.file("choose.lua")
        for last, count in ("9001-9003", 0), ("", 0), ("8000,9000-9003", 1):
            with self.subTest(last=last):
                with open(script, "w", encoding="utf-8") as choose:
                    for ports in "9000", last:
                        print(f'set_preference("relaymsg.udp_ports", "{ports}") apply_preferences()', file=choose)
                self.assertEqual(self.count(self.udp, "-X", "lua_script:" + shark.DISSECTOR, "-X", "lua_script:" + script,
                                            dissector=None, home=home), count)

    def test_decode_as(self):
        self.assertEqual(self.count(self.udp, "-d", "udp.port==9000,relaymsg"), 1)
        self.assertEqual(self.count(self.tcp, "-d", "tcp.port==9000,relaymsg"), 1)

    def test_heuristics_only_when_switched_on(self):
        on = ("-o", "relaymsg.heuristic:TRUE")
        self.assertEqual((self.count(self.udp, ports=on), self.count(self.tcp, ports=on)), (1, 1))

    def test_heuristics_take_whole_messages_of_known_commands_only(self):
        on = ("-o", "relaymsg.heuristic:TRUE")
        beat = messages.heart_beat(1)
        unknown = bytes(messages.head(166, 3))
        for payload in beat[:-1], beat + b"\0", b"\0" * 40, unknown, beat + unknown, b"GET / HTTP/1.1\r\n\r\n":
            with self.subTest(payload=payload):
                self.assertEqual(self.count(datagrams("other.pcap", payload), ports=on), 0)
        self.assertEqual(self.count(datagrams("other.pcap", beat + beat), ports=on), 2)
        self.assertEqual(self.count(stream("other.pcap", beat + beat[:5], beat[5:]), ports=on), 2)
        self.assertEqual(self.count(stream("other.pcap", beat[:5], beat[5:]), ports=on), 0)

    def test_installed_as_a_plugin(self):
        home = shark.file("home")
        plugins = os.path.join(home, ".local", "lib", "wireshark", "plugins")
        os.makedirs(plugins)
        shutil.copy(shark.DISSECTOR, os.path.join(plugins, "relaymsg.lua"))
        out = shark.tshark("-r", self.udp, *shark.PORTS, "-Y", "relaymsg.head.dwUserID == 1001", "-T", "fields", "-e",
                           "relaymsg.heartBeatReq.dwUnused", dissector=None, home=home)
        self.assertEqual(out, "1\n")


class Reassembly(unittest.TestCase):
    def test_can_be_switched_off(self):
        beat = messages.heart_beat(1)
        path = stream("off.pcap", beat + beat[:5], beat[5:])
        off = shark.shown(path, "-o", "relaymsg.desegment:FALSE")
        self.assertEqual([message.refusal() for message in off[:2]], [None, ("BIX_ERR_READ_UNDERFLOW", "stHead.bVersion")])
        off = shark.shown(path, "-o", "tcp.desegment_tcp_streams:FALSE")
        self.assertEqual(off[1].refusal()[0], "BIX_ERR_READ_UNDERFLOW")

    def test_a_new_start_behind_damage(self):
        beat = messages.heart_beat(1)
        bad = beat[:8] + b"\x07" + beat[9:]
        shown = shark.shown(stream("damage.pcap", beat + bad + beat, beat + beat))
        self.assertEqual([message.refusal() and message.refusal()[0] for message in shown],
                         [None, "BIX_ERR_VERSION_OUT_OF_RANGE", None, None])
        self.assertEqual(shown[1].undecoded, bad + beat)

    def test_a_hopeless_text_is_not_waited_for(self):
        bad = bytes(messages.head(161, 3)) + (129).to_bytes(4, "big")
        shown = shark.shown(stream("hopeless.pcap", bad))
        self.assertEqual(shown[0].refusal(), ("BIX_ERR_STRING_TOO_LONG", "stBody.stRelayLoginReq.szSigBuf"))
        just_inside = bad[:-1] + b"\x80"
        self.assertEqual(shark.shown(stream("hopeful.pcap", just_inside)), [])

    def test_a_packet_that_the_capture_cut(self):
        path = shark.file("snap.pcap")
        beat = messages.heart_beat(1)
        with pcap.Capture(path, 28 + 20) as capture:
            capture.datagram(beat + beat)  # of the second, 4 bytes are there
            capture.datagram(beat + beat[:4])
        cut, whole = shark.packets(path)
        self.assertEqual([name for name, _ in cut[1].notes], ["cut_short"])
        self.assertEqual([name for name, _ in whole[1].notes], ["BIX_ERR_READ_UNDERFLOW"])


class Filters(unittest.TestCase):
    def test_each_field_has_a_name_of_its_own(self):
        out = shark.tshark("-G", "fields")
        names = [line.split("\t")[2] for line in out.splitlines() if line.startswith("F\t") and "\trelaymsg." in line]
        self.assertEqual(len(names), len(set(names)))
        wire = messages.relay_wire
        fields = {field.name for record, fields in wire.RECORDS.items() if record != "CreateRoomUserInfo" for field in fields}
        self.assertEqual(fields - {name.split(".")[2] for name in names if name.count(".") > 1}, set())
        records = {name.split(".")[1] for name in names if name.count(".") > 1}
        self.assertEqual(len(records), len(wire.RECORDS) - 1)
        for command, _ in wire.COMMANDS.values():
            self.assertIn("relaymsg." + command, names)

    def matches(self, path, filter_text):
        return shark.tshark("-r", path, *shark.PORTS, "-Y", filter_text, "-T", "fields", "-e", "frame.number").split()

    def test_values(self):
        path = datagrams("filters.pcap", messages.heart_beat(7), login("grün".encode()), login(b"\xff"),
                         frame_pack([20, 21], 3), frame_pack([20], 2), frame_pack([22])[:-1],
                         bytes(messages.head(193, 1)) + bytes(4) + b"\xff" * 8,
                         bytes(messages.head(175, 1)) + b"\xff" * 4 + bytes(4),
                         bytes(messages.head(199, 1)))
        for filter_text, packets in {
            "relaymsg.head.dwUserID == 1001": "123456789",
            "relaymsg.head.bVersion == 2": "5",
            "relaymsg.head.bCmdId == 184": "1",
            "relaymsg.stRelayLoginReq": "23",
            'relaymsg.loginReq.szSigBuf == "grün"': "2",
            "relaymsg.loginReq.szSigBuf.hex == 0xff": "3",
            "relaymsg.loginReq.szSigBuf.length == 2": "3",
            "relaymsg.frame.dwFrameId == 21": "4",
            "relaymsg.data.szRelayBuf == 0a:0b:0c": "456",
            "relaymsg.frame.dwLastHasDataFrameId": "4",
            "relaymsg.BIX_ERR_READ_UNDERFLOW": "6",
            "_ws.expert.group == \"Malformed\"": "6",
            "relaymsg.reloginNotify.ullQuestion == 18446744073709551615": "7",
            "relaymsg.stopRes.iResult == -1": "8",
            "relaymsg.stopRes.iResult < 0": "8",
            "relaymsg.unknown_command": "9",
            "relaymsg.length > 20 && relaymsg.length < 30": "237",
        }.items():
            with self.subTest(filter=filter_text):
                self.assertEqual("".join(self.matches(path, filter_text)), packets)

    def test_those_of_the_page(self):
        page = (messages.ROOT / "docs" / "wireshark.md").read_text(encoding="utf-8")
        filters = re.findall(r"^\| `([^`]*(?:relaymsg)[^`]*)` \| (?!`)", page, re.MULTILINE)
        self.assertGreater(len(filters), 10)
        path = shark.file("session.pcap")
        sample.main(path)
        # Each finds something in the sample; but that has no text that is not UTF-8, and no long message.
        for filter_text in filters:
            with self.subTest(filter=filter_text):
                found = self.matches(path, filter_text)
                self.assertEqual(found == [], ".hex" in filter_text or ".length" in filter_text)

    def test_texts(self):
        texts = [b"", b'a"b\\c', b"tab\tnewline\nreturn\r bell\x07 delete\x7f", b"%s%n<&>", "äöü€𝄞".encode(), b"  blanks  ",
                 "\u0085\u202e\u2028\ufffd\ufeff\U0010ffff".encode(), b"\xff\x80x", b"\xc3", b"\xc0\x80", b"\xc1\xbf",
                 b"\xe0\x9f\xbf", b"\xe0\xa0\x80", b"\xed\x9f\xbf", b"\xed\xa0\x80", b"\xee\x80\x80", b"\xf0\x8f\xbf\xbf",
                 b"\xf0\x90\x80\x80", b"\xf4\x8f\xbf\xbf", b"\xf4\x90\x80\x80", b"\xf5\x80\x80\x80", b"\xe2\x82", b"ab\xf0\x9d\x84"]
        for text, message in zip(texts, shark.shown(datagrams("texts.pcap", *map(login, texts)))):
            with self.subTest(text=text):
                try:
                    expected = text.decode("utf-8")
                except UnicodeDecodeError:
                    expected = {"hex": text.hex()}
                self.assertEqual(message.fields["stRelayLoginReq"]["szSigBuf"], expected)

    def test_every_byte_of_a_good_message_belongs_to_a_field(self):
        for data in login(b"abc"), frame_pack([1, 2]), messages.heart_beat(1):
            path = datagrams("bytes.pcap", data)
            out = shark.tshark("-r", path, *shark.PORTS, "-T", "pdml")
            leaves = re.findall(r'<field name="relaymsg\.\w+\.\w+(?:\.length)?"[^>]* size="(\d+)" pos="(\d+)"[^>]*/>', out)
            covered = sorted(at for size, start in leaves for at in range(int(start), int(start) + int(size)))
            self.assertEqual(covered, list(range(28, 28 + len(data))))


class InfoColumn(unittest.TestCase):
    def test_command_and_key_facts(self):
        path = datagrams("info.pcap", messages.heart_beat(7), frame_pack([20, 21, 22]), messages.heart_beat(1) * 2)
        self.assertEqual(info(path), [
            "stCSRelayMsgHeartBeatReq v3 UserID=1001 RoomID=7 AsyncID=258 Unused=7",
            "stRelayLockStep v3 UserID=1001 RoomID=7 AsyncID=258 RelayData=3 FrameId=20..22 LastHasDataFrameId=19..21",
            "stCSRelayMsgHeartBeatReq v3 UserID=1001 RoomID=7 AsyncID=258 Unused=1 | "
            "stCSRelayMsgHeartBeatReq v3 UserID=1001 RoomID=7 AsyncID=258 Unused=1",
        ])

    def test_refusals_and_unknown_commands(self):
        beat = messages.heart_beat(1)
        path = datagrams("info.pcap", beat[:-1], beat[:8] + b"\x04", bytes(messages.head(199, 1)))
        self.assertEqual(info(path), [
            "stCSRelayMsgHeartBeatReq v3 UserID=1001 RoomID=7 AsyncID=258 [BIX_ERR_READ_UNDERFLOW]",
            "message [BIX_ERR_VERSION_OUT_OF_RANGE]",
            "unknown command 199 v1 UserID=1001 RoomID=7 AsyncID=258",
        ])

    def test_several_messages_that_end_in_one_segment(self):
        beat = messages.heart_beat(1)
        path = stream("info.pcap", beat[:7], beat[7:] + beat + beat[:3], beat[3:], close=False)
        told = [line.count("stCSRelayMsgHeartBeatReq") for line in info(path)]
        self.assertEqual(told, [2, 1])
        self.assertIn(" | ", info(path)[0])

    def test_it_stays_short(self):
        line, = info(datagrams("info.pcap", messages.heart_beat(1) * 500))
        self.assertEqual(line.count(" | "), 12)
        self.assertTrue(line.endswith(" | ..."))


if __name__ == "__main__":
    unittest.main()
