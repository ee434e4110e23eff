/// Where a program turns records into bytes and bytes into records.
#pragma once

#include "protocol/cs_relay_msg.h"

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace lockstep {

/// One record for what goes out, one for what comes in, one buffer: used again for each message, so that
/// nothing is allocated while the game runs.
class Post {
public:
    /// Most bytes of a datagram: more may be cut into fragments on the way, of which none may be lost.
    static constexpr size_t DATAGRAM = 1200;

    /// Each message is shown in @p log and its bytes are added to @p capture; an empty path is none.
    Post(const std::string& log, const std::string& capture);

    /// Begins the next message to send, with all fields at their defaults. Fill in its body, then `pack`.
    cs_relay_msg::CSRelayMsg& begin(uint8_t command, uint32_t user, uint16_t asyncId = 0);

    /// The bytes of a message for a peer of that version; valid until the next call. Empty if it cannot be
    /// packed, which is a mistake in this program and is logged.
    std::string_view pack(const cs_relay_msg::CSRelayMsg& message, uint32_t peerVersion);

    /// The message that the bytes are, valid until the next call; null if they are none, which is logged.
    const cs_relay_msg::CSRelayMsg* unpack(std::string_view bytes);

    /// Adds a line to the log.
    void note(const std::string& line);

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, Close>;

    static File open(const std::string& path);
    void record(const char* direction, const cs_relay_msg::CSRelayMsg& message, std::string_view bytes);

    std::unique_ptr<cs_relay_msg::CSRelayMsg> out_; // half a megabyte each: on the heap
    std::unique_ptr<cs_relay_msg::CSRelayMsg> in_;
    std::string wire_;
    std::string text_;
    File log_;
    File capture_;
};

} // namespace lockstep
