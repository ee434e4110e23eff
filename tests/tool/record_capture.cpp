/// @file
/// Writes the sample session as the network saw it, as a capture:
///
///     record_capture session.bin session.pcap
///
/// Ann and Ben speak UDP with the relay server, a datagram for what they get or send at a time; Cleo and Dan
/// speak TCP. Of Cleo's stream one segment comes twice, of Dan's two come in the wrong order. Nothing is
/// random: it always writes the same bytes.
#include "protocol/cs_relay_msg.h"
#include "tests/tool/Packets.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>

namespace {

using namespace packets;

constexpr Side RELAY{9, 9000};

/// Whether the server says it.
bool fromRelay(uint8_t command) {
    const std::string name = cs_relay_msg::commandName(command);
    const auto ends = [&](const std::string& end) {
        return name.size() >= end.size() && name.compare(name.size() - end.size(), end.size(), end) == 0;
    };
    return ends("Res") || ends("LockStep") || ends("Notify") || ends("Error");
}

class Capture {
public:
    void say(uint32_t user, bool toPlayer, const std::string& message) {
        const Side player{static_cast<uint8_t>(user % 10), static_cast<uint16_t>(50000 + user % 10)};
        const Side& from = toPlayer ? RELAY : player;
        const Side& to = toPlayer ? player : RELAY;
        if (user % 10 <= 2) {
            sayOverUdp(from, to, message);
        } else {
            sayOverTcp(user, toPlayer, from, to, message);
        }
    }

    std::string file() {
        flush();
        return pcap(packets_);
    }

private:
    struct Stream {
        uint32_t next[2];
        bool sentTwice = false;
        bool swapped = false;
    };

    void add(const std::string& ip) {
        time_ += 25000;
        std::string frame = ethernet(ip);
        frame.resize(std::max<size_t>(frame.size(), 60)); // the shortest that a card sends
        packets_.push_back({frame, time_, 0});
    }

    void sayOverUdp(const Side& from, const Side& to, const std::string& message) {
        if (from.host != from_.host || to.host != to_.host || datagram_.size() > 100) {
            flush();
            from_ = from;
            to_ = to;
        }
        datagram_ += message;
    }

    void flush() {
        if (!datagram_.empty()) {
            add(datagram(from_, to_, datagram_));
            datagram_.clear();
        }
    }

    void sayOverTcp(uint32_t user, bool toPlayer, const Side& from, const Side& to,
                    const std::string& message) {
        constexpr size_t LONGEST = 40;
        flush();
        Stream& stream = open(user, toPlayer ? to : from);
        uint32_t& next = stream.next[toPlayer ? 1 : 0];
        const uint32_t other = stream.next[toPlayer ? 0 : 1];
        std::vector<std::string> segments;
        for (size_t at = 0; at < message.size(); at += LONGEST) {
            const std::string piece = message.substr(at, LONGEST);
            segments.push_back(segment(from, to, next, piece, ACK, other));
            next += static_cast<uint32_t>(piece.size());
        }
        if (user == 1004 && segments.size() > 1 && !stream.swapped) {
            std::swap(segments[0], segments[1]);
            stream.swapped = true;
        }
        if (user == 1003 && !stream.sentTwice) {
            segments.push_back(segments[0]);
            stream.sentTwice = true;
        }
        for (const std::string& segment : segments) {
            add(segment);
        }
    }

    Stream& open(uint32_t user, const Side& player) {
        const auto known = streams_.find(user);
        if (known != streams_.end()) {
            return known->second;
        }
        const uint32_t first = user * 1000;
        add(segment(player, RELAY, first, "", SYN, 0));
        add(segment(RELAY, player, first + 500, "", SYN | ACK, first + 1));
        add(segment(player, RELAY, first + 1, "", ACK, first + 501));
        return streams_[user] = Stream{{first + 1, first + 501}, false, false};
    }

    std::vector<Packet> packets_;
    uint64_t time_ = 0;
    Side from_{};
    Side to_{};
    std::string datagram_;
    std::map<uint32_t, Stream> streams_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: record_capture session.bin session.pcap\n");
        return 1;
    }
    std::ifstream input(argv[1], std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(input), {}};
    const auto message = std::make_unique<cs_relay_msg::CSRelayMsg>();
    Capture capture;
    size_t used = 0;
    for (size_t at = 0; at < bytes.size(); at += used) {
        if (message->unpack(bytes.data() + at, bytes.size() - at, &used) != cs_relay_msg::BIX_OK) {
            std::fprintf(stderr, "record_capture: no message at offset %zu\n", at);
            return 1;
        }
        capture.say(message->stHead.dwUserID, fromRelay(message->stHead.bCmdId), bytes.substr(at, used));
    }
    std::ofstream output(argv[2], std::ios::binary);
    output << capture.file();
    return output.flush() ? 0 : 1;
}
