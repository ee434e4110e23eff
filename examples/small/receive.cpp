/// Receiving from a stream. Messages lie back to back and carry no length: `scan` tells where each one ends.
#include "protocol/Stream.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

using namespace cs_relay_msg;

namespace {

CSRelayMsg message;  // half a megabyte, used again
std::string pending; // the bytes of one unfinished message
ScanState state;     // how far it is known

/// Takes what the socket gave. False: the stream is broken and must be closed, for nothing marks where the
/// next message begins.
bool take(std::string_view bytes) {
    while (!bytes.empty()) {
        const ScanResult found = scan(state, bytes.data(), bytes.size());
        pending += bytes.substr(0, found.used);
        bytes.remove_prefix(found.used);
        if (found.status == ScanStatus::Complete) {
            if (message.unpack(pending.data(), pending.size()) != BIX_OK) {
                return false;
            }
            std::printf("%s, %zu bytes\n", commandName(message.stHead.bCmdId), pending.size());
            pending.clear();
        } else if (found.status != ScanStatus::Need) { // malformed, or of an unknown command
            char path[100];
            std::printf("broken at byte %zu, %s\n", found.offset, scanPath(state, path, sizeof(path)));
            return false;
        }
    }
    return true;
}

} // namespace

int main() {
    char wire[256];
    Korvan::BixWriteBuf out(wire, sizeof(wire)); // packs one behind the other
    for (const uint8_t command : {cmd::stRelayLoginRes, cmd::stCSRelayMsgHeartBeatRes, cmd::stRelayError}) {
        if (!beginMessage(message, command) || message.pack(out) != BIX_OK) {
            return 1;
        }
    }
    constexpr size_t PIECE = 7; // a stream keeps no borders: any cut must do
    for (size_t at = 0; at < out.getUsedSize(); at += PIECE) {
        if (!take({wire + at, std::min(PIECE, out.getUsedSize() - at)})) {
            return 1;
        }
    }
    const char wrongVersion[] = "\0\0\0\1\0\0\0\7\5"; // what follows can make no message of this
    return take({wrongVersion, sizeof(wrongVersion) - 1}) ? 1 : 0;
}
