/// Measuring sizes: how large a buffer must be, what a record costs in memory, and what a message takes on
/// the wire.
#include "protocol/Schema.h"
#include "protocol/Stream.h"

#include <cstdio>

using namespace cs_relay_msg;

namespace {

CSRelayMsg message;

// Known when compiling: a buffer in which every error message fits.
char buffer[CSRelayMsgHead::maxWireSize + CSRelayError::maxWireSize];

/// What one record takes, in memory and at a version of the protocol.
void show(const schema::Type& type, uint32_t version) {
    const schema::WireSize wire = schema::wireSize(type, version);
    std::printf("%-18s  %7zu in memory, %3zu to %6zu on the wire at version %u\n", type.name, type.size,
                wire.min, wire.max, version);
}

} // namespace

int main() {
    for (const uint32_t version : {1u, 2u, 3u}) {
        show(schema::typeOf<CSRelayInput>(), version);
        show(schema::typeOf<CSRelayFrame>(), version);
    }
    show(schema::typeOf<CSRelayMsg>(), 3);

    // One message, by packing it: into a buffer of the largest size this cannot fail.
    if (!beginMessage(message, cmd::stRelayError) ||
        setText(message.stBody.stRelayError.szError_code_str, "no such frame") != BIX_OK) {
        return 1;
    }
    size_t size = 0;
    const int32_t result = message.pack(buffer, sizeof(buffer), &size);
    std::printf("this error takes %zu of at most %zu bytes\n", size, sizeof(buffer));
    return result == BIX_OK ? 0 : 1;
}
