#include "tools/relaymsg/Payload.h"

#include <algorithm>
#include <cstring>

namespace relaymsg {

namespace {

// Link types, as libpcap numbers them on this side of its files.
enum Link {
    Null = 0,
    Ethernet = 1,
    Raw = 12,
    RawBsd = 14,
    RawFile = 101,
    Loop = 108,
    LinuxSll = 113,
    Ipv4 = 228,
    Ipv6 = 229,
    LinuxSll2 = 276
};

enum EtherType {
    EtherIpv4 = 0x0800,
    EtherVlan = 0x8100,
    EtherIpv6 = 0x86dd,
    EtherVlanOuter = 0x88a8,
    EtherVlanOld = 0x9100
};

enum Protocol {
    HopByHop = 0,
    Tcp = 6,
    Udp = 17,
    Routing = 43,
    FragmentHeader = 44,
    Authentication = 51,
    DestinationOptions = 60,
    Mobility = 135,
    HostIdentity = 139,
    Shim = 140
};

/// What is left of a packet: the bytes captured, and how many there were.
class Cursor {
public:
    Cursor(std::string_view bytes, size_t length) : bytes_(bytes), length_(std::max(length, bytes.size())) {}

    bool has(size_t size) const { return bytes_.size() >= size; }
    uint8_t byte(size_t at) const { return static_cast<uint8_t>(bytes_[at]); }
    uint16_t number16(size_t at) const { return static_cast<uint16_t>(byte(at) << 8 | byte(at + 1)); }
    uint32_t number32(size_t at) const {
        return static_cast<uint32_t>(number16(at)) << 16 | number16(at + 2);
    }
    void address(size_t at, size_t size, Endpoint& to) const {
        std::memcpy(to.address.data(), bytes_.data() + at, size);
    }

    void skip(size_t size) {
        bytes_.remove_prefix(size);
        length_ -= size;
    }
    /// Leaves out what lies behind the first @p size bytes, such as the padding of a short frame.
    void limit(size_t size) {
        length_ = std::min(length_, size);
        bytes_ = bytes_.substr(0, length_);
    }
    std::string_view bytes() const { return bytes_; }
    size_t length() const { return length_; }
    size_t missing() const { return length_ - bytes_.size(); }

private:
    std::string_view bytes_;
    size_t length_;
};

using Kind = Payload::Kind;

class Look {
public:
    Look(std::string_view bytes, size_t length) : rest_(bytes, length) {}

    Payload at(int linkType) {
        payload_.kind = link(linkType);
        if (payload_.kind == Kind::Udp || payload_.kind == Kind::Tcp) {
            payload_.bytes = rest_.bytes();
            payload_.missing = rest_.missing();
        }
        return payload_;
    }

private:
    Kind link(int type) {
        switch (type) {
        case Ethernet:
            return ether(14, 12);
        case LinuxSll:
            return ether(16, 14);
        case LinuxSll2:
            return ether(20, 0);
        case Null:
        case Loop:
            return rest_.has(4) ? (rest_.skip(4), ip()) : Kind::Cut; // the family is in either byte order
        default:
            return ip();
        }
    }

    /// A header of @p size bytes with the type of what follows at @p typeAt; behind it tags of virtual LANs.
    Kind ether(size_t size, size_t typeAt) {
        if (!rest_.has(size)) {
            return Kind::Cut;
        }
        uint16_t type = rest_.number16(typeAt);
        rest_.skip(size);
        while (type == EtherVlan || type == EtherVlanOuter || type == EtherVlanOld) {
            if (!rest_.has(4)) {
                return Kind::Cut;
            }
            type = rest_.number16(2);
            rest_.skip(4);
        }
        return type == EtherIpv4 || type == EtherIpv6 ? ip() : Kind::Other;
    }

    Kind ip() {
        if (!rest_.has(1)) {
            return Kind::Cut;
        }
        const int version = rest_.byte(0) >> 4;
        return version == 4 ? ipv4() : version == 6 ? ipv6() : Kind::Other;
    }

    Kind ipv4() {
        constexpr size_t SMALLEST = 20;
        constexpr uint16_t MORE_OR_OFFSET = 0x3fff;
        if (!rest_.has(SMALLEST)) {
            return Kind::Cut;
        }
        const size_t header = static_cast<size_t>(rest_.byte(0) & 0xf) * 4;
        const size_t total = rest_.number16(2); // 0 where the network card was to cut the packet up
        if (header < SMALLEST || (total != 0 && total < header)) {
            return Kind::Cut;
        }
        const uint8_t protocol = rest_.byte(9);
        const bool fragment = (rest_.number16(6) & MORE_OR_OFFSET) != 0;
        rest_.address(12, 4, payload_.flow.from);
        rest_.address(16, 4, payload_.flow.to);
        if (total != 0) {
            rest_.limit(total);
        }
        if (!rest_.has(header)) {
            return Kind::Cut;
        }
        rest_.skip(header);
        return fragment ? isTransport(protocol) ? Kind::Fragment : Kind::Other : transport(protocol);
    }

    Kind ipv6() {
        constexpr size_t HEADER = 40;
        constexpr uint16_t MORE_OR_OFFSET = 0xfff9;
        if (!rest_.has(HEADER)) {
            return Kind::Cut;
        }
        payload_.flow.v6 = true;
        rest_.address(8, 16, payload_.flow.from);
        rest_.address(24, 16, payload_.flow.to);
        const size_t length = rest_.number16(4); // 0 as above
        uint8_t next = rest_.byte(6);
        rest_.skip(HEADER);
        if (length != 0) {
            rest_.limit(length);
        }
        while (isExtension(next)) { // each has at least 8 bytes: this ends
            if (!rest_.has(8)) {
                return Kind::Cut;
            }
            if (next == FragmentHeader && (rest_.number16(2) & MORE_OR_OFFSET) != 0) {
                return Kind::Fragment;
            }
            const size_t size = next == FragmentHeader   ? 8
                                : next == Authentication ? (rest_.byte(1) + size_t{2}) * 4
                                                         : (rest_.byte(1) + size_t{1}) * 8;
            if (!rest_.has(size)) {
                return Kind::Cut;
            }
            next = rest_.byte(0);
            rest_.skip(size);
        }
        return transport(next);
    }

    static bool isExtension(uint8_t protocol) {
        constexpr uint8_t EXTENSIONS[] = {HopByHop,           Routing,  FragmentHeader, Authentication,
                                          DestinationOptions, Mobility, HostIdentity,   Shim};
        return std::find(std::begin(EXTENSIONS), std::end(EXTENSIONS), protocol) != std::end(EXTENSIONS);
    }

    static bool isTransport(uint8_t protocol) { return protocol == Udp || protocol == Tcp; }

    Kind transport(uint8_t protocol) {
        return protocol == Udp ? udp() : protocol == Tcp ? tcp() : Kind::Other;
    }

    void ports() {
        payload_.flow.from.port = rest_.number16(0);
        payload_.flow.to.port = rest_.number16(2);
    }

    Kind udp() {
        constexpr size_t HEADER = 8;
        if (!rest_.has(HEADER)) {
            return Kind::Cut;
        }
        ports();
        const size_t length = rest_.number16(4); // 0 as above
        if (length != 0 && (length < HEADER || length > rest_.length())) {
            return Kind::Cut;
        }
        if (length != 0) {
            rest_.limit(length);
        }
        rest_.skip(HEADER);
        return Kind::Udp;
    }

    Kind tcp() {
        constexpr size_t SMALLEST = 20;
        if (!rest_.has(SMALLEST)) {
            return Kind::Cut;
        }
        payload_.flow.tcp = true;
        ports();
        payload_.sequence = rest_.number32(4);
        const size_t header = static_cast<size_t>(rest_.byte(12) >> 4) * 4;
        const uint8_t flags = rest_.byte(13);
        payload_.fin = (flags & 0x01) != 0;
        payload_.syn = (flags & 0x02) != 0;
        payload_.rst = (flags & 0x04) != 0;
        if (header < SMALLEST || !rest_.has(header)) {
            return Kind::Cut;
        }
        rest_.skip(header);
        return Kind::Tcp;
    }

    Cursor rest_;
    Payload payload_;
};

} // namespace

bool isKnownLink(int linkType) {
    constexpr int LINKS[] = {Null, Ethernet, Raw, RawBsd, RawFile, Loop, LinuxSll, Ipv4, Ipv6, LinuxSll2};
    return std::find(std::begin(LINKS), std::end(LINKS), linkType) != std::end(LINKS);
}

Payload payloadOf(int linkType, std::string_view bytes, size_t length) {
    return Look(bytes, length).at(linkType);
}

} // namespace relaymsg
