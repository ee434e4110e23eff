// A program that uses the library, however it is linked: some of each public header.
#if __has_include("korvan_relay.h") // the two files
#include "korvan_relay.h"
#else
#include "Common/Source/Core/BIX/BixBufUtil.h"
#include "protocol/Schema.h"
#include "protocol/Stream.h"
#include "protocol/Version.h"
#include "protocol/cs_relay_msg.h"
#endif

#include <cstdio>

namespace {

cs_relay_msg::CSRelayMsg message; // half a megabyte: not on the stack

bool use() {
    using namespace cs_relay_msg;
    if (!beginMessage(message, cmd::stRelayLoginReq)) {
        return false;
    }
    message.stHead.dwUserID = 1001;
    if (setText(message.stBody.stRelayLoginReq.szSigBuf, "ann") != BIX_OK) {
        return false;
    }
    char wire[64];
    size_t size = 0;
    if (message.pack(wire, sizeof(wire), &size) != BIX_OK || message.unpack(wire, size) != BIX_OK) {
        return false;
    }
    ScanState state;
    char text[256];
    Korvan::BixWriteBuf log(text, sizeof(text));
    return scan(state, wire, size).status == ScanStatus::Complete && schema::types().size == 26 &&
           Korvan::BixBufUtil::printVariable(log, 0, '\n', "[bytes]", "%lu", uint64_t{size}) == BIX_OK &&
           message.visualize(log) == BIX_OK && std::fputs(text, stdout) >= 0;
}

} // namespace

int main() {
    std::printf("korvan_relay %s\n", KORVAN_RELAY_VERSION_TEXT);
    return use() ? 0 : 1;
}
