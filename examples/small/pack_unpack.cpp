/// Packing and unpacking: a login goes into bytes and comes back, and bytes that are no message are refused.
#include "protocol/Stream.h"

#include <cstdio>

using namespace cs_relay_msg;

namespace {

// Half a megabyte each, whatever they hold: static, and used again for each message.
CSRelayMsg sent;
CSRelayMsg received;

void tell(const char* what, int32_t result, size_t used) {
    std::printf("%s: %s, %zu bytes\n", what, Korvan::resultName(result), used);
}

} // namespace

int main() {
    // The head and that command's member at their defaults; then what this message is to say.
    if (!beginMessage(sent, cmd::stRelayLoginReq)) {
        return 1;
    }
    sent.stHead.dwUserID = 1001;
    sent.stHead.dwRoomID = 7;
    if (setText(sent.stBody.stRelayLoginReq.szSigBuf, "ticket 5f1d9a") != BIX_OK) {
        return 1; // too long for the field: `pack` would have cut it
    }

    char wire[256];
    size_t size = 0;
    int32_t result = sent.pack(wire, sizeof(wire), &size);
    tell("pack", result, size);

    size_t used = 0;
    result = received.unpack(wire, size, &used);
    tell("unpack", result, used);
    std::printf("user %u, \"%s\"\n", +received.stHead.dwUserID, received.stBody.stRelayLoginReq.szSigBuf);

    sent.stHead.bVersion =
        received.stHead.bVersion; // `pack` puts the version on the wire, not into the record
    std::printf("the same: %s\n", equal(sent, received) ? "yes" : "no");

    result = received.unpack(wire, size - 1, &used);
    tell("the last byte is missing", result, used);
    wire[8] = 9;
    result = received.unpack(wire, size, &used);
    tell("version 9", result, used);
    return 0;
}
