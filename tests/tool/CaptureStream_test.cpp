/// @file
/// Messages in captures, part by part and in bulk.
#include "tests/tool/Packets.h"
#include "tests/tool/Sources.h"
#include "tests/tool/Wire.h"
#include "tools/relaymsg/Input.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace packets;
using relaymsg::Input;
using relaymsg::InputOptions;
using Next = relaymsg::MessageReader::Next;

constexpr Side CLIENT{1, 50000};
constexpr Side RELAY{9, 9000};

/// What is in a capture: a word for each message, failure and gap, then what was left out and the error.
std::string report(const std::string& file, const InputOptions& options = {},
                   CutSource::NextSize cuts = whole()) {
    CutSource source(file, std::move(cuts));
    Input input(source, options);
    relaymsg::MessageReader& messages = input.messages();
    std::string text;
    for (Next next; (next = messages.next()) != Next::End;) {
        const std::string at =
            "@" + std::to_string(messages.offset()) +
            (messages.origin() != nullptr ? "/" + std::to_string(messages.origin()->packet) + " " : " ");
        if (next == Next::Gap) {
            text += "gap" + std::to_string(messages.missing()) + at;
        } else if (next == Next::Failure) {
            text += "failure" + at;
        } else {
            const std::string guess = messages.guessed() ? "?" : "";
            const auto* command = messages.command();
            text += guess + (command != nullptr ? std::to_string(command->id) : "unknown") + at;
        }
    }
    for (const std::string& sentence : messages.leftOut()) {
        text += "| " + sentence;
    }
    return messages.error().empty() ? text : text + "| error: " + messages.error();
}

/// The bytes of all messages in a capture.
std::string bytesOf(const std::string& file, const InputOptions& options = {}) {
    CutSource source(file, whole());
    Input input(source, options);
    std::string bytes;
    for (Next next; (next = input.messages().next()) != Next::End;) {
        bytes += next == Next::Message ? input.messages().bytes() : "!";
    }
    return bytes;
}

std::string oneBeat(const std::string& frame, uint32_t link) {
    return report(pcap({{frame}}, link));
}

const std::string BEAT = wire::heartBeat();
const std::string BEAT_DATAGRAM = datagram(CLIENT, RELAY, BEAT);

TEST(CaptureStream, looksIntoEveryLink) {
    const std::string v6 = ipv6(CLIENT, RELAY, UDP, udp(CLIENT, RELAY, BEAT, true));
    const std::string cooked = big(0, 2) + big(1, 2) + big(6, 2) + std::string(8, '\x02');
    for (const auto& [ip, type] : {std::pair(BEAT_DATAGRAM, 0x0800), std::pair(v6, 0x86dd)}) {
        const std::string ether = big(static_cast<uint64_t>(type), 2);
        EXPECT_EQ(oneBeat(ethernet(ip), LINK_ETHERNET), "184@0/1 ");
        const std::string addresses(12, '\x02');
        EXPECT_EQ(oneBeat(addresses + big(0x8100, 2) + big(5, 2) + ether + ip, LINK_ETHERNET), "184@0/1 ");
        EXPECT_EQ(oneBeat(addresses + big(0x88a8, 2) + big(5, 2) + big(0x8100, 2) + big(6, 2) + ether + ip,
                          LINK_ETHERNET),
                  "184@0/1 ");
        EXPECT_EQ(oneBeat(cooked + ether + ip, LINK_SLL), "184@0/1 ");
        EXPECT_EQ(oneBeat(ether + std::string(18, '\0') + ip, LINK_SLL2), "184@0/1 ");
        EXPECT_EQ(oneBeat(ip, LINK_RAW), "184@0/1 ");
        EXPECT_EQ(oneBeat(little(2, 4) + ip, LINK_NULL), "184@0/1 ");
        EXPECT_EQ(oneBeat(big(2, 4) + ip, 108), "184@0/1 ");
    }
    EXPECT_EQ(oneBeat(BEAT_DATAGRAM, 105), "| error: holds packets of the kind IEEE802_11, which cannot be "
                                           "looked into.");
    EXPECT_EQ(oneBeat(std::string(12, '\x02') + big(0x0806, 2) + std::string(28, '\0'), LINK_ETHERNET), "");
}

TEST(CaptureStream, readsEveryFormOfFile) {
    const std::vector<Packet> packets{{ethernet(BEAT_DATAGRAM)}, {ethernet(BEAT_DATAGRAM), 5, 0}};
    const std::string both = "184@0/1 184@0/2 ";
    std::string nanoseconds = pcap(packets);
    nanoseconds.replace(0, 4, little(0xa1b23c4d, 4));
    for (const std::string& file : {pcap(packets), pcapng(packets), nanoseconds}) {
        EXPECT_EQ(report(file), both);
        EXPECT_EQ(report(file, {}, pieces(1)), both);
        for (unsigned seed = 0; seed < 5; ++seed) {
            EXPECT_EQ(report(file, {}, randomPieces(seed)), both);
        }
    }
}

TEST(CaptureStream, takesNoMessageForACapture) {
    for (const uint32_t user : {0xa1b2c3d4u, 0xd4c3b2a1u, 0x0a0d0d0au}) {
        EXPECT_EQ(report(big(user, 4) + BEAT.substr(4)), "184@0 ");
    }
}

TEST(CaptureStream, readsSeveralMessagesOfADatagramAndPaddingIsNone) {
    const std::string frame = ethernet(datagram(CLIENT, RELAY, BEAT + wire::login("a") + BEAT));
    EXPECT_EQ(oneBeat(frame + std::string(20, '\x55'), LINK_ETHERNET), "184@0/1 161@16/1 184@38/1 ");
}

TEST(CaptureStream, goesOnBehindABadDatagram) {
    EXPECT_EQ(report(pcap({{datagram(CLIENT, RELAY, BEAT + "leftover")},
                           {datagram(CLIENT, RELAY, "")},
                           {datagram(CLIENT, RELAY, BEAT.substr(0, 9))},
                           {BEAT_DATAGRAM}},
                          LINK_RAW)),
              "184@0/1 failure@16/1 failure@0/3 184@0/4 "
              "| All of UDP and TCP was taken for messages; --port and --filter choose.");
}

TEST(CaptureStream, countsFragmentsAndTruncatedPackets) {
    const std::string fragment = ipv4(CLIENT, RELAY, UDP, udp(CLIENT, RELAY, BEAT), 0x2000);
    const std::string later = ipv4(CLIENT, RELAY, UDP, BEAT, 5);
    const std::string v6 = ipv6(CLIENT, RELAY, 44, big(UDP, 1) + big(0, 1) + big(1, 2) + big(7, 4) + BEAT);
    const std::string two = datagram(CLIENT, RELAY, BEAT + BEAT);
    InputOptions options;
    options.capture.ports = {9000};
    EXPECT_EQ(report(pcap({{fragment}, {later}, {v6}}, LINK_RAW), options),
              "| 3 packets are fragments of larger ones and were left out.");
    EXPECT_EQ(report(pcap({{two.substr(0, two.size() - 3), 0, 3}, {BEAT_DATAGRAM}}, LINK_RAW), options),
              "184@0/1 failure@16/1 184@0/2 | 1 packet was not captured to its end.");
    EXPECT_EQ(report(pcap({{two.substr(0, 25), 0, two.size() - 25}}, LINK_RAW), options),
              "| 1 packet was left out: its headers are cut off or wrong.");
    // A whole packet may come through IPv6 with the header of a fragment.
    const std::string atomic =
        ipv6(CLIENT, RELAY, 44, big(UDP, 1) + big(0, 3) + big(7, 4) + udp(CLIENT, RELAY, BEAT, true));
    EXPECT_EQ(oneBeat(atomic, LINK_RAW), "184@0/1 ");
}

// ---- TCP ----

/// A TCP direction from the client, its first byte being number @p first.
struct Talk {
    std::vector<Packet> packets;
    uint32_t first = 1000;

    Talk& syn() { return add(0, "", SYN, first - 1); }
    Talk& add(size_t place, const std::string& bytes, int flags = ACK) {
        return add(place, bytes, flags, first + static_cast<uint32_t>(place));
    }
    Talk& add(size_t, const std::string& bytes, int flags, uint32_t sequence) {
        packets.push_back({segment(CLIENT, RELAY, sequence, bytes, flags)});
        return *this;
    }
    std::string file() const { return pcap(packets, LINK_RAW); }
};

TEST(CaptureStream, putsSegmentsInOrder) {
    const std::string bytes = BEAT + wire::login("abc") + BEAT; // 16, 24, 16
    const auto piece = [&](size_t from, size_t to) { return bytes.substr(from, to - from); };
    EXPECT_EQ(report(Talk().syn().add(0, bytes).file()), "184@0/2 161@16/2 184@40/2 ");
    EXPECT_EQ(report(Talk().syn().add(0, piece(0, 20)).add(20, piece(20, 56)).file()),
              "184@0/2 161@16/3 184@40/3 ");
    EXPECT_EQ(report(Talk().syn().add(20, piece(20, 56)).add(0, piece(0, 20)).file()),
              "184@0/3 161@16/3 184@40/3 ");
    EXPECT_EQ(report(Talk().syn().add(0, piece(0, 20)).add(0, piece(0, 20)).add(10, piece(10, 56)).file()),
              "184@0/2 161@16/4 184@40/4 ");
    EXPECT_EQ(report(Talk().syn().syn().add(0, bytes).add(0, bytes).file()), "184@0/3 161@16/3 184@40/3 ");
    // The bytes that came first stay.
    EXPECT_EQ(report(Talk().syn().add(4, piece(4, 56)).add(0, piece(0, 4) + std::string(52, 'x')).file()),
              "184@0/3 161@16/3 184@40/3 ");
}

TEST(CaptureStream, putsAnythingInOrder) {
    const std::string session = wire::session();
    for (unsigned seed = 0; seed < 60; ++seed) {
        std::mt19937 random(seed);
        Talk talk;
        talk.first = seed % 2 == 0 ? 1000 : 0xffffff00u; // the numbers wrap
        talk.syn();
        std::vector<Packet> segments;
        for (size_t at = 0; at < session.size();) {
            const size_t size = 1 + random() % 90;
            const size_t back = std::min<size_t>(at, random() % 3 == 0 ? random() % 50 : 0);
            Talk one;
            one.first = talk.first;
            segments.push_back(one.add(at - back, session.substr(at - back, back + size)).packets[0]);
            if (random() % 5 == 0) {
                segments.push_back(segments[random() % segments.size()]);
            }
            at += size;
        }
        for (size_t i = 0; i + 1 < segments.size(); ++i) {
            std::swap(segments[i], segments[std::min(segments.size() - 1, i + random() % 6)]);
        }
        talk.packets.insert(talk.packets.end(), segments.begin(), segments.end());
        ASSERT_TRUE(bytesOf(talk.file()) == session) << seed;
    }
}

TEST(CaptureStream, followsBothDirectionsAndManyConnections) {
    std::vector<Packet> packets;
    std::string expected;
    for (int round = 0; round < 4; ++round) {
        for (uint16_t port = 1; port <= 20; ++port) {
            const Side side{2, port};
            const bool back = port % 2 == 0;
            packets.push_back(
                {segment(back ? RELAY : side, back ? side : RELAY, 5 + 8 * static_cast<uint32_t>(round),
                         BEAT.substr(static_cast<size_t>(round % 2 * 8), 8))});
            expected += round % 2 == 1 ? BEAT : "";
        }
    }
    EXPECT_EQ(bytesOf(pcap(packets, LINK_RAW)), expected);
}

TEST(CaptureStream, saysAGapAndDoesNotGuess) {
    const std::string bytes = BEAT + BEAT + BEAT + BEAT;
    const Talk talk = Talk().syn().add(0, bytes.substr(0, 20)).add(30, bytes.substr(30));
    EXPECT_EQ(report(talk.file()), "184@0/2 gap10@20/3 | 38 bytes of TCP were not decoded.");
    const Talk aligned = Talk().syn().add(0, BEAT).add(32, BEAT + BEAT);
    EXPECT_EQ(report(aligned.file()), "184@0/2 gap16@16/3 | 32 bytes of TCP were not decoded.");
    // What was cut off in capturing is a gap, too.
    Talk cut = Talk().syn().add(0, BEAT + BEAT).add(32, BEAT);
    cut.packets[1].bytes.resize(cut.packets[1].bytes.size() - 4);
    cut.packets[1].missing = 4;
    EXPECT_EQ(report(cut.file()),
              "184@0/2 gap4@28/3 | 1 packet was not captured to its end.| 28 bytes of TCP were not decoded.");
}

TEST(CaptureStream, searchesBehindAGapIfAsked) {
    const std::string bytes = BEAT + BEAT + BEAT + BEAT + BEAT + BEAT;
    InputOptions options;
    options.resync = true;
    const Talk talk = Talk().syn().add(0, bytes.substr(0, 20)).add(30, bytes.substr(30)).add(96, BEAT);
    EXPECT_EQ(report(talk.file(), options), "184@0/2 gap10@20/4 ?184@32/4 ?184@48/4 ?184@64/4 ?184@80/4 "
                                            "?184@96/4 | 6 bytes of TCP were not decoded.");
    const Talk damaged = Talk().syn().add(0, BEAT + "damaged").add(23, BEAT + BEAT).add(55, BEAT + BEAT);
    EXPECT_EQ(
        report(damaged.file(), options),
        "184@0/2 failure@16/3 ?184@23/4 ?184@39/4 ?184@55/4 ?184@71/4 | 7 bytes of TCP were not decoded."
        "| All of UDP and TCP was taken for messages; --port and --filter choose.");
    const Talk hopeless = Talk().syn().add(0, BEAT + std::string(30, '\x7f'));
    EXPECT_EQ(report(hopeless.file(), options).substr(0, 57),
              "184@0/2 failure@16/2 | 30 bytes of TCP were not decoded.|");
    EXPECT_EQ(report(damaged.file()),
              "184@0/2 failure@16/3 | 71 bytes of TCP were not decoded."
              "| All of UDP and TCP was taken for messages; --port and --filter choose.");
}

TEST(CaptureStream, endsAConnectionWhereItEnds) {
    const std::string cut = BEAT + BEAT.substr(0, 10);
    EXPECT_EQ(report(Talk().syn().add(0, cut).add(26, "", FIN | ACK).add(0, "", SYN, 70000).file()),
              "184@0/2 failure@16/3 | 10 bytes of TCP were not decoded."
              "| All of UDP and TCP was taken for messages; --port and --filter choose.");
    EXPECT_EQ(report(Talk().syn().add(0, cut).add(26, "", RST).file()).substr(0, 22),
              "184@0/2 failure@16/3 |");
    // The same endpoints begin anew.
    Talk again = Talk().syn().add(0, cut).add(0, "", SYN, 70000).add(0, BEAT, ACK, 70001);
    EXPECT_EQ(report(again.file()).substr(0, 30), "184@0/2 failure@16/2 184@0/4 |");
    // An end that overtakes the bytes before it.
    EXPECT_EQ(report(Talk().syn().add(16, BEAT, FIN | ACK).add(0, BEAT).file()), "184@0/3 184@16/3 ");
    // Bytes behind the end belong to nothing.
    EXPECT_EQ(report(Talk().syn().add(0, BEAT, FIN | ACK).add(16, BEAT).file()),
              "184@0/2 | 16 bytes of TCP were not decoded.");
}

TEST(CaptureStream, saysThatAConnectionWasOpenBefore) {
    EXPECT_EQ(report(Talk().add(0, "", ACK).add(0, BEAT).file()),
              "184@0/2 | 1 TCP stream began before the capture did.");
}

TEST(CaptureStream, followsSoManyConnections) {
    std::vector<Packet> packets;
    for (uint16_t port = 1; port <= 10; ++port) {
        packets.push_back({segment({1, port}, RELAY, 1, BEAT.substr(0, 8))});
    }
    for (uint16_t port = 1; port <= 10; ++port) {
        packets.push_back({segment({1, port}, RELAY, 9, BEAT.substr(8))});
    }
    InputOptions options;
    options.capture.connections = 3;
    EXPECT_EQ(
        report(pcap(packets, LINK_RAW), options),
        "184@0/11 184@0/12 184@0/13 | 14 packets of further TCP connections were left out; --connections "
        "allows for more.| 3 TCP streams began before the capture did.");
    // One that ended makes room.
    std::vector<Packet> closing;
    for (uint16_t port = 1; port <= 100; ++port) {
        closing.push_back({segment({1, port}, RELAY, 0, "", SYN)});
        closing.push_back({segment({1, port}, RELAY, 1, BEAT, FIN | ACK)});
    }
    EXPECT_EQ(bytesOf(pcap(closing, LINK_RAW), options).size(), 100 * BEAT.size());
}

TEST(CaptureStream, holdsSoManyBytes) {
    InputOptions options;
    options.capture.held = 1;
    Talk talk = Talk().syn().add(0, BEAT);
    for (size_t i = 0; i < 2000; ++i) {
        talk.add(1000 + i * 1000, std::string(1000, 'x'));
    }
    const std::string text = report(talk.file(), options);
    EXPECT_EQ(text.substr(0, 19), "184@0/2 gap984@16/9"); // some hundred packets on, not at the end
    EXPECT_NE(text.find("| 2000000 bytes of TCP were not decoded."), std::string::npos) << text;
    // A message that is begun is held as well, and the others go on.
    options.capture.held = 0;
    EXPECT_EQ(report(pcap({{segment(CLIENT, RELAY, 0, "", SYN)},
                           {segment(CLIENT, RELAY, 1, BEAT + BEAT.substr(0, 3))},
                           {segment(CLIENT, RELAY, 20, BEAT.substr(3))},
                           {segment(RELAY, CLIENT, 0, "", SYN)},
                           {segment(RELAY, CLIENT, 1, BEAT)}},
                          LINK_RAW),
                     options),
              "184@0/2 184@0/5 | 16 bytes of TCP were not decoded.");
}

TEST(CaptureStream, readsTheLargestMessageInPieces) {
    const std::string largest = wire::largest();
    Talk talk = Talk().syn();
    for (size_t at = 0; at < largest.size(); at += 1400) {
        talk.add(at, largest.substr(at, 1400));
    }
    EXPECT_TRUE(bytesOf(talk.file()) == largest);
}

// ---- Choice ----

TEST(CaptureStream, choosesPackets) {
    const std::string file =
        pcap({{BEAT_DATAGRAM}, {datagram({1, 53}, {2, 53}, "no message")}, {datagram(RELAY, CLIENT, BEAT)}},
             LINK_RAW);
    InputOptions options;
    options.capture.ports = {50000};
    EXPECT_EQ(report(file, options), "184@0/1 184@0/3 ");
    options.capture.ports = {1, 53};
    EXPECT_EQ(report(file, options), "failure@0/2 ");
    options.capture.ports.clear();
    options.capture.filter = "src port 9000";
    EXPECT_EQ(report(file, options), "184@0/3 ");
    options.capture.filter = "ether broadcast";
    EXPECT_EQ(report(file, options).substr(0, 30), "| error: cannot be filtered so");
}

// ---- Hostile files ----

TEST(CaptureStream, endsWithEveryFileThatIsCut) {
    const std::vector<Packet> packets{{ethernet(BEAT_DATAGRAM)}, {ethernet(segment(CLIENT, RELAY, 1, BEAT))}};
    for (const std::string& file : {pcap(packets), pcapng(packets)}) {
        for (size_t size = 0; size < file.size(); ++size) {
            InputOptions options;
            options.form = relaymsg::InputForm::Capture;
            const std::string text = report(file.substr(0, size), options);
            EXPECT_TRUE(text.find("error: ") != std::string::npos || text.find("184@0/1") == 0 ||
                        text.empty())
                << size << text;
        }
    }
}

TEST(CaptureStream, saysWhatIsNoCapture) {
    InputOptions options;
    options.form = relaymsg::InputForm::Capture;
    EXPECT_EQ(report(BEAT + BEAT, options), "| error: is no capture that can be read: unknown file format.");
    std::string huge = pcap({{BEAT_DATAGRAM}}, LINK_RAW);
    huge.replace(24 + 8, 4, little(0x7fffffff, 4)); // the length of the first packet
    const std::string text = report(huge, options);
    EXPECT_EQ(text.substr(0, 42), "| error: cannot be read behind packet 0: i") << text;
}

TEST(CaptureStream, believesNoLengthInAHeader) {
    std::vector<std::string> frames;
    const auto with = [&](std::string bytes, size_t at, const std::string& value) {
        bytes.replace(at, value.size(), value);
        frames.push_back(bytes);
    };
    for (const uint64_t length : {0u, 1u, 7u, 8u, 19u, 27u, 28u, 60u, 0xffffu}) {
        with(BEAT_DATAGRAM, 2, big(length, 2));  // of the IPv4 packet
        with(BEAT_DATAGRAM, 24, big(length, 2)); // of the datagram
        with(ipv6(CLIENT, RELAY, UDP, udp(CLIENT, RELAY, BEAT, true)), 4, big(length, 2));
    }
    for (uint64_t header = 0; header < 16; ++header) {
        with(BEAT_DATAGRAM, 0, big(0x40 + header, 1));
        with(segment(CLIENT, RELAY, 1, BEAT), 32, big(header << 4, 1));
    }
    for (const int next : {0, 43, 44, 51, 60, 135, 139, 140, 59, 50}) { // chains of extension headers
        std::string chain;
        for (int i = 0; i < 30; ++i) {
            chain += big(static_cast<uint64_t>(next), 1) + std::string(7, '\0');
        }
        frames.push_back(ipv6(CLIENT, RELAY, static_cast<uint8_t>(next), chain));
        frames.push_back(ipv6(CLIENT, RELAY, static_cast<uint8_t>(next), "\x11\xff" + chain));
        frames.push_back(ipv6(CLIENT, RELAY, static_cast<uint8_t>(next),
                              big(UDP, 1) + std::string(7, '\0') + udp(CLIENT, RELAY, BEAT, true)));
    }
    for (const std::string& frame : frames) {
        for (size_t size = 0; size <= frame.size(); ++size) {
            report(pcap({{frame.substr(0, size), 0, frame.size() - size}}, LINK_RAW)); // a sanitizer watches
        }
    }
    EXPECT_EQ(oneBeat(frames[0], LINK_RAW), "184@0/1 ") << "no length: the card was to fill it in";
    EXPECT_EQ(oneBeat(frames.back(), LINK_RAW), "") << "behind ESP nothing can be read";
    const std::string options = big(60, 1) + std::string(7, '\0') + big(UDP, 1) + std::string(7, '\0');
    EXPECT_EQ(oneBeat(ipv6(CLIENT, RELAY, 0, options + udp(CLIENT, RELAY, BEAT, true)), LINK_RAW),
              "184@0/1 ");
}

TEST(CaptureStream, endsWithEveryDamage) {
    const std::string sample = wire::file(CAPTURES "/session.pcap");
    std::mt19937 random(7);
    for (int i = 0; i < 1500; ++i) {
        std::string file = sample;
        for (size_t bytes = 1 + random() % 8; bytes > 0; --bytes) {
            file[24 + random() % (file.size() - 24)] =
                static_cast<char>(static_cast<unsigned char>(random()));
        }
        InputOptions options;
        options.resync = i % 2 == 0;
        options.capture.connections = 1 + random() % 4;
        options.capture.held = random() % 2;
        const std::string text = report(file, options);
        EXPECT_EQ(report(file, options, randomPieces(static_cast<unsigned>(i))), text);
    }
}

} // namespace
