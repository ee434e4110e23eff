/// @file
/// Captures, put together by hand.
#ifndef KORVAN_TESTS_TOOL_PACKETS_H
#define KORVAN_TESTS_TOOL_PACKETS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace packets {

inline std::string big(uint64_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i) {
        text += static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
    }
    return text;
}

inline std::string little(uint64_t value, int bytes) {
    const std::string text = big(value, bytes);
    return {text.rbegin(), text.rend()};
}

// ---- Inside out: transport, IP, link ----

/// One side: an address whose last byte is @p host, in both versions of IP, and a port.
struct Side {
    uint8_t host;
    uint16_t port;

    std::string address(bool v6) const {
        return v6 ? "\xfd" + std::string(14, '\0') + big(host, 1) : std::string("\x0a\0\0", 3) + big(host, 1);
    }
};

/// The sum of 16-bit numbers that IP, UDP and TCP use.
inline uint16_t checksum(std::string bytes) {
    bytes.resize(bytes.size() + bytes.size() % 2);
    uint32_t sum = 0;
    for (size_t i = 0; i < bytes.size(); i += 2) {
        sum +=
            static_cast<uint32_t>(static_cast<uint8_t>(bytes[i]) << 8 | static_cast<uint8_t>(bytes[i + 1]));
    }
    sum = (sum & 0xffff) + (sum >> 16);
    return static_cast<uint16_t>(~(sum + (sum >> 16)));
}

/// What stands before the transport's header in its checksum.
inline std::string pseudoHeader(const Side& from, const Side& to, uint8_t protocol, size_t size, bool v6) {
    return from.address(v6) + to.address(v6) + big(protocol, 4) + big(size, 4);
}

constexpr uint8_t TCP = 6;
constexpr uint8_t UDP = 17;

inline std::string udp(const Side& from, const Side& to, const std::string& payload, bool v6 = false) {
    const std::string start = big(from.port, 2) + big(to.port, 2) + big(8 + payload.size(), 2);
    const uint16_t sum = checksum(pseudoHeader(from, to, UDP, 8 + payload.size(), v6) + start +
                                  std::string(2, '\0') + payload);
    return start + big(sum == 0 ? 0xffff : sum, 2) + payload;
}

enum Flags { FIN = 1, SYN = 2, RST = 4, ACK = 16 };

inline std::string tcp(const Side& from, const Side& to, uint32_t sequence, const std::string& payload,
                       int flags = ACK, uint32_t acknowledged = 1, bool v6 = false) {
    const std::string start = big(from.port, 2) + big(to.port, 2) + big(sequence, 4) + big(acknowledged, 4) +
                              big(0x50, 1) + big(static_cast<uint64_t>(flags), 1) + big(0xffff, 2);
    const std::string end = std::string(2, '\0') + payload;
    const std::string zero(2, '\0');
    const uint16_t sum =
        checksum(pseudoHeader(from, to, TCP, start.size() + 2 + end.size(), v6) + start + zero + end);
    return start + big(sum, 2) + end;
}

/// @param fragment the field of the same name: flags and offset
inline std::string ipv4(const Side& from, const Side& to, uint8_t protocol, const std::string& payload,
                        uint16_t fragment = 0x4000) {
    const std::string start = big(0x4500, 2) + big(20 + payload.size(), 2) + big(0, 2) + big(fragment, 2) +
                              big(64, 1) + big(protocol, 1);
    const std::string end = from.address(false) + to.address(false);
    return start + big(checksum(start + std::string(2, '\0') + end), 2) + end + payload;
}

inline std::string ipv6(const Side& from, const Side& to, uint8_t next, const std::string& payload) {
    return big(0x60000000, 4) + big(payload.size(), 2) + big(next, 1) + big(64, 1) + from.address(true) +
           to.address(true) + payload;
}

/// A datagram in IPv4.
inline std::string datagram(const Side& from, const Side& to, const std::string& payload) {
    return ipv4(from, to, UDP, udp(from, to, payload));
}

/// A segment in IPv4.
inline std::string segment(const Side& from, const Side& to, uint32_t sequence, const std::string& payload,
                           int flags = ACK, uint32_t acknowledged = 1) {
    return ipv4(from, to, TCP, tcp(from, to, sequence, payload, flags, acknowledged));
}

inline std::string ethernet(const std::string& ip) {
    const bool v6 = !ip.empty() && static_cast<uint8_t>(ip[0]) >> 4 == 6;
    return std::string("\x02\0\0\0\0\x01\x02\0\0\0\0\x02", 12) +
           (v6 ? "\x86\xdd" : std::string("\x08\0", 2)) + ip;
}

// ---- Files ----

/// Link types as files give them.
constexpr uint32_t LINK_NULL = 0;
constexpr uint32_t LINK_ETHERNET = 1;
constexpr uint32_t LINK_RAW = 101;
constexpr uint32_t LINK_SLL = 113;
constexpr uint32_t LINK_SLL2 = 276;

constexpr uint64_t NOON = 1795262400; ///< 2026-11-21T12:00:00Z

struct Packet {
    std::string bytes;
    uint64_t microseconds = 0; ///< since noon
    size_t missing = 0;        ///< bytes at the end that were not captured
};

inline std::string pcap(const std::vector<Packet>& packets, uint32_t link = LINK_ETHERNET) {
    std::string file = little(0xa1b2c3d4, 4) + little(2, 2) + little(4, 2) + little(0, 8) +
                       little(262144, 4) + little(link, 4);
    for (const Packet& packet : packets) {
        file += little(NOON + packet.microseconds / 1000000, 4) + little(packet.microseconds % 1000000, 4) +
                little(packet.bytes.size(), 4) + little(packet.bytes.size() + packet.missing, 4) +
                packet.bytes;
    }
    return file;
}

/// The same in the newer form, most significant bytes first.
inline std::string pcapng(const std::vector<Packet>& packets, uint32_t link = LINK_ETHERNET) {
    const auto block = [](uint32_t type, std::string body) {
        body.resize((body.size() + 3) / 4 * 4);
        return big(type, 4) + big(body.size() + 12, 4) + body + big(body.size() + 12, 4);
    };
    std::string file = block(0x0a0d0d0a, big(0x1a2b3c4d, 4) + big(1, 2) + big(0, 2) + big(UINT64_MAX, 8)) +
                       block(1, big(link, 2) + big(0, 2) + big(262144, 4));
    for (const Packet& packet : packets) {
        const uint64_t time = NOON * 1000000 + packet.microseconds;
        file += block(6, big(0, 4) + big(time >> 32, 4) + big(time, 4) + big(packet.bytes.size(), 4) +
                             big(packet.bytes.size() + packet.missing, 4) + packet.bytes);
    }
    return file;
}

} // namespace packets

#endif
