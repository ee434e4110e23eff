/// Receiving from a stream. Messages lie back to back and carry no length: try to unpack what is here, and
/// when it ends too early, wait for more.
#include "protocol/cs_relay_msg.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

using cs_relay_msg::CSRelayMsg;

namespace {

class Receiver {
public:
    /// Takes what the socket gave and calls @p handle for each message that is now whole.
    ///
    /// Returns 0 while more may come. Any other code means that the stream is broken and cannot be picked up
    /// again, since nothing marks where the next message begins: close it.
    template <class Handle>
    int32_t take(const char* bytes, size_t size, Handle handle) {
        pending.insert(pending.end(), bytes, bytes + size);
        size_t begin = 0;
        int32_t result = Korvan::BIX_OK;
        while (begin < pending.size() && result == Korvan::BIX_OK) {
            size_t used = 0;
            result = message->unpack(pending.data() + begin, pending.size() - begin, &used);
            if (result == Korvan::BIX_OK) {
                begin += used;
                handle(*message);
            }
        }
        pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(begin));

        // No message is longer than this: what does not fit in it is no unfinished message.
        const bool unfinished =
            result == Korvan::BIX_ERR_READ_UNDERFLOW && pending.size() < CSRelayMsg::maxWireSize;
        return unfinished ? Korvan::BIX_OK : result;
    }

private:
    std::vector<char> pending;                                           // from the start of a message
    std::unique_ptr<CSRelayMsg> message{std::make_unique<CSRelayMsg>()}; // half a megabyte, used again
};

void print(const CSRelayMsg& message) {
    const char* name = cs_relay_msg::commandName(message.stHead.bCmdId);
    std::printf("%s, async id %u\n", name != nullptr ? name : "unknown command",
                unsigned{message.stHead.wAsyncID});
}

/// Three messages as a sender would leave them on the wire.
std::vector<char> sample() {
    const auto message = std::make_unique<CSRelayMsg>();
    std::vector<char> wire(256);
    Korvan::BixWriteBuf out(wire.data(), wire.size());
    for (const uint8_t command :
         {cs_relay_msg::cmd::stRelayLoginRes, cs_relay_msg::cmd::stCSRelayMsgHeartBeatRes,
          cs_relay_msg::cmd::stRelayReloginNotify}) {
        message->stHead.construct();
        message->stHead.wAsyncID = command;
        message->stHead.bCmdId = command;
        message->stBody.construct(command);
        if (message->pack(out) != Korvan::BIX_OK) {
            return {};
        }
    }
    wire.resize(out.getUsedSize());
    return wire;
}

} // namespace

int main() {
    constexpr size_t PIECE = 7; // a stream keeps no borders: any cut must do
    const std::vector<char> wire = sample();
    Receiver receiver;
    for (size_t at = 0; at < wire.size(); at += PIECE) {
        const int32_t result = receiver.take(&wire[at], std::min(PIECE, wire.size() - at), print);
        if (result != Korvan::BIX_OK) {
            std::printf("broken: %s\n", Korvan::resultSentence(result));
            return 1;
        }
    }
    return 0;
}
