/// @file
/// Captures as a user meets them.
#include "tests/tool/Packets.h"
#include "tests/tool/Program.h"

#include <gtest/gtest.h>

namespace {

using namespace packets;

constexpr Side CLIENT{1, 50000};
constexpr Side RELAY{9, 9000};
const std::string SAMPLE = CAPTURES "/session.pcap";
const std::string BEAT = wire::heartBeat();

TEST(Capture, holdsTheSampleSession) {
    const Outcome same = runTool({"diff", SAMPLE, CAPTURES "/session.bin"});
    EXPECT_EQ(same.status, 0);
    EXPECT_EQ(same.out + same.err, "");
    const Outcome piped = runTool({"decode", "--summary"}, wire::file(SAMPLE));
    EXPECT_EQ(piped.status, 0);
    EXPECT_EQ(piped.out, runTool({"decode", "--summary", "--format", "pcap", SAMPLE}).out);
    EXPECT_NE(piped.out.find("\ntotal                              69             2144\n"),
              std::string::npos);
}

TEST(Capture, tellsWhereAMessageWas) {
    const std::string file = pcap({{ethernet(datagram(CLIENT, RELAY, BEAT)), 1250000, 0}});
    const Outcome text = runTool({"decode"}, file);
    EXPECT_EQ(
        text.out.substr(0, text.out.find('\n')),
        "#1      @0              16 B  v3  stCSRelayMsgHeartBeatReq  user 1001  room 7  async 258  packet 1  "
        "2026-11-21T12:00:01.250000Z  udp 10.0.0.1:50000 > 10.0.0.9:9000");
    const Outcome json = runTool({"decode", "--json"}, file);
    EXPECT_NE(json.out.find(R"(}},"packet":{"number":1,"time":1795262401.250000,"protocol":"udp",)"
                            R"("from":"10.0.0.1:50000","to":"10.0.0.9:9000"}})"
                            "\n"),
              std::string::npos)
        << json.out;
}

TEST(Capture, saysEveryFailureAndGoesOn) {
    const std::string file = pcap({{ethernet(datagram(CLIENT, RELAY, BEAT + "rest"))},
                                   {ethernet(segment(CLIENT, RELAY, 0, "", SYN))},
                                   {ethernet(segment(CLIENT, RELAY, 1, BEAT))},
                                   {ethernet(segment(CLIENT, RELAY, 33, BEAT))},
                                   {ethernet(datagram(CLIENT, RELAY, BEAT))}});
    const Outcome outcome = runTool({"decode", "--summary", "--port", "9000"}, file);
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(
        outcome.err,
        "relaymsg: standard input: message 2 at offset 16 (0x10) of udp 10.0.0.1:50000 > 10.0.0.9:9000 in "
        "packet 1 cannot be decoded.\n"
        "  field stHead.bVersion at offset 24 (0x18)\n"
        "  BIX_ERR_READ_UNDERFLOW: The input ends before the field that was being read.\n"
        "  The field ends at offset 25 (0x19), the input at offset 20 (0x14).\n"
        "relaymsg: standard input: the capture lacks 16 bytes at offset 16 (0x10) of tcp 10.0.0.1:50000 > "
        "10.0.0.9:9000 in packet 4.\n"
        "relaymsg: standard input: 16 bytes of TCP were not decoded.\n");
    EXPECT_NE(outcome.out.find("\ngap     @16             16 B missing  packet 4"), std::string::npos);
    EXPECT_NE(outcome.out.find("\ntotal                               3               48\n"),
              std::string::npos);
    for (const char* view : {"--text", "--annotate", "--json"}) {
        EXPECT_EQ(runTool({"decode", view, "--port", "9000"}, file).status, 3);
    }
    EXPECT_EQ(runTool({"stats", "--port", "9000"}, file).status, 3);
}

TEST(Capture, countsMessagesASecond) {
    std::vector<Packet> packets;
    for (uint64_t i = 0; i <= 8; ++i) {
        packets.push_back({ethernet(datagram(CLIENT, RELAY, i < 4 ? BEAT : BEAT + BEAT)), i * 500000, 0});
    }
    const Outcome table = runTool({"stats"}, pcap(packets));
    EXPECT_EQ(table.out.substr(0, table.out.find("\n\nuser")),
              "command                      messages            bytes    share      min   median      p99    "
              "  max  "
              " a second\n"
              "stCSRelayMsgHeartBeatReq           14              224  100.00%       16       16       16    "
              "   16  "
              "     3.50\n"
              "total                              14              224\n"
              "\n"
              "from 2026-11-21T12:00:00.000000Z to 2026-11-21T12:00:04.000000Z: 3.50 messages a second, at "
              "most 4 in "
              "one");
    const Outcome json = runTool({"stats", "--json"}, pcap(packets));
    EXPECT_NE(json.out.find(R"("max":16,"perSecond":3.50}])"), std::string::npos) << json.out;
    EXPECT_NE(
        json.out.find(
            R"(,"first":1795262400.000000,"last":1795262404.000000,"perSecond":3.50,"mostInASecond":4})"),
        std::string::npos)
        << json.out;
    EXPECT_NE(runTool({"stats"}, pcap({packets[0]})).out.find(" 0.00 messages a second, at most 1 in one\n"),
              std::string::npos);
}

TEST(Capture, refusesWhatMakesNoSense) {
    const Outcome filter = runTool({"decode", "--filter", "port port", SAMPLE});
    EXPECT_EQ(filter.status, 1);
    EXPECT_NE(filter.err.find("--filter"), std::string::npos);
    EXPECT_EQ(runTool({"decode", "--port", "65536", SAMPLE}).status, 1);
    EXPECT_EQ(runTool({"decode", "--hold", "-1", SAMPLE}).status, 1);
    const Outcome raw = runTool({"decode", "--port", "1", CAPTURES "/session.bin"});
    EXPECT_EQ(raw.status, 2);
    EXPECT_EQ(raw.err, "relaymsg: " CAPTURES
                       "/session.bin: is no capture: it has no packets for --port or --filter.\n");
    const Outcome none = runTool({"decode", "--port", "1", SAMPLE});
    EXPECT_EQ(none.status, 2);
    EXPECT_EQ(
        none.err,
        "relaymsg: " + SAMPLE +
            ": holds no message: of its 86 packets, 0 carry bytes over UDP or TCP and are asked for.\n");
}

TEST(Capture, showsAMessageOfALiveCaptureBeforeTheNextPacket) {
    const std::string all =
        pcap({{ethernet(datagram(CLIENT, RELAY, BEAT))}, {ethernet(datagram(CLIENT, RELAY, BEAT))}});
    const size_t half = 24 + (all.size() - 24) / 2;
    const ScratchFile first(all.substr(0, half));
    const ScratchFile second(all.substr(half));
    const ScratchFile out;
    const Outcome outcome =
        shell("{ cat " + first.path() + "; for i in $(seq 500); do [ -s " + out.path() + " ] && { cat " +
              second.path() + "; exit; }; sleep 0.01; done; } | relaymsg decode --summary > " + out.path());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(out.content().find("\n#2 "), std::string::npos);
}

TEST(Capture, comparesWithRedaction) {
    const Outcome outcome = [] {
        const ScratchFile a(wire::login("secret"));
        const ScratchFile b(wire::login("SECRET"));
        return runTool({"diff", "--redact", a.path(), b.path()});
    }();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "! #1 @0  #1 @0  stRelayLoginReq  user 1001\n"
                           "    - stBody.stRelayLoginReq.szSigBuf  \"******\"\n"
                           "    + stBody.stRelayLoginReq.szSigBuf  \"******\"\n");
}

} // namespace
