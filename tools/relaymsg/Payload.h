/// @file
/// What a captured packet carries.
#ifndef KORVAN_TOOLS_RELAYMSG_PAYLOAD_H
#define KORVAN_TOOLS_RELAYMSG_PAYLOAD_H

#include "tools/relaymsg/Origin.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace relaymsg {

struct Payload {
    enum class Kind {
        Other,    ///< neither UDP nor TCP over IP
        Fragment, ///< a part of an IP packet
        Cut,      ///< headers that were not captured whole, or contradict themselves
        Udp,
        Tcp,
    };
    Kind kind = Kind::Other;
    Flow flow;
    std::string_view bytes; ///< as far as they were captured
    size_t missing = 0;     ///< bytes behind them that were not
    uint32_t sequence = 0;  ///< Tcp: of the first byte, or of the SYN
    bool syn = false;
    bool fin = false;
    bool rst = false;
};

/// Whether packets of this link type (DLT_... of libpcap) can be looked into.
bool isKnownLink(int linkType);

/// Looks into a packet. @param length the bytes that it had on the wire, of which @p bytes were captured
Payload payloadOf(int linkType, std::string_view bytes, size_t length);

} // namespace relaymsg

#endif
