/// Talking to an older peer: the sender says for which version it packs; the receiver need not be told.
#include "protocol/cs_relay_msg.h"

#include <cstdio>

using cs_relay_msg::CSRelayMsg;

namespace {

// Half a megabyte each, so not on the stack.
CSRelayMsg sent;
CSRelayMsg received;

/// Sends one input to a peer that knows the protocol up to @p peerVersion.
bool exchange(uint32_t peerVersion) {
    char wire[64];
    size_t size = 0;
    if (sent.pack(wire, sizeof(wire), &size, peerVersion) != Korvan::BIX_OK) {
        return false;
    }
    if (received.unpack(wire, size) != Korvan::BIX_OK) { // the version stands in the message
        return false;
    }
    std::printf("for version %u: %zu bytes, repeat count %u\n", unsigned{received.stHead.bVersion}, size,
                unsigned{received.stBody.stRelayInputing.bRepeatCount});
    return true;
}

} // namespace

int main() {
    sent.construct();
    sent.stHead.bCmdId = cs_relay_msg::cmd::stRelayInputing;
    sent.stBody.construct(sent.stHead.bCmdId);
    sent.stBody.stRelayInputing.bRepeatCount = 5; // a field of version 2: an older peer gets 1, its default

    return exchange(3) && exchange(2) && exchange(1) ? 0 : 1;
}
