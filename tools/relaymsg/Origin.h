/// @file
/// Where in a capture something was found.
#ifndef KORVAN_TOOLS_RELAYMSG_ORIGIN_H
#define KORVAN_TOOLS_RELAYMSG_ORIGIN_H

#include <array>
#include <cstdint>
#include <string>
#include <tuple>

namespace relaymsg {

struct Endpoint {
    std::array<uint8_t, 16> address{}; ///< an IPv4 address takes the first four bytes
    uint16_t port = 0;

    bool operator<(const Endpoint& other) const {
        return std::tie(address, port) < std::tie(other.address, other.port);
    }
    bool operator==(const Endpoint& other) const { return address == other.address && port == other.port; }
};

/// One direction between two endpoints.
struct Flow {
    bool tcp = false;
    bool v6 = false;
    Endpoint from;
    Endpoint to;

    bool operator<(const Flow& other) const {
        return std::tie(tcp, v6, from, to) < std::tie(other.tcp, other.v6, other.from, other.to);
    }
    bool operator==(const Flow& other) const {
        return tcp == other.tcp && v6 == other.v6 && from == other.from && to == other.to;
    }
    Flow reversed() const { return {tcp, v6, to, from}; }
    const char* protocol() const { return tcp ? "tcp" : "udp"; }
};

/// A packet of a capture.
struct Origin {
    uint64_t packet = 0;     ///< its number, from 1
    int64_t nanoseconds = 0; ///< since 1970
    Flow flow;
};

/// An address and a port, such as "10.0.0.2:9000" or "[fe80::1]:9000".
std::string endpointText(const Flow& flow, const Endpoint& endpoint);

/// A flow, such as "udp 10.0.0.2:50000 > 10.0.0.1:9000".
std::string flowText(const Flow& flow);

/// A time in seconds since 1970, such as "1795276189.123456".
std::string secondsText(int64_t nanoseconds);

/// A time, such as "2026-11-21T15:49:49.123456Z".
std::string timeText(int64_t nanoseconds);

} // namespace relaymsg

#endif
