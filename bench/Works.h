/// @file
/// The messages that are measured. Every contender packs and unpacks the same content.
///
/// - A: a heartbeat request, 16 bytes.
/// - B: a login with a text of 64 characters.
/// - C: an input with 24 bytes of payload.
/// - D: a frame pack of 5 frames with 10 data each, each of 24 bytes.
/// - E: a statistics answer with three texts of 2,000 characters.
/// - F: a stream of 1,000 messages as a running game of four players sends them.
/// - G: a full frame pack: 5 frames of 100 data of 1,024 bytes.
#ifndef KORVAN_BENCH_WORKS_H
#define KORVAN_BENCH_WORKS_H

#include "protocol/cs_relay_msg.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace works {

using Message = cs_relay_msg::CSRelayMsg;
using MessagePtr = std::unique_ptr<Message>;

/// One message.
struct Work {
    char letter;
    MessagePtr record;
    std::vector<char> wire; ///< what `pack` makes of the record
    std::string text;       ///< what `visualize` makes of it
};

/// A stream: messages taken from a small pool, in a fixed order.
struct Stream {
    std::vector<MessagePtr> pool;
    std::vector<const Message*> order;
    std::vector<char> wire; ///< the messages one behind the other
    std::string text;
};

/// The works A to E and G, in that order.
const std::vector<Work>& all();

/// Work F.
const Stream& stream();

/// Packs and renders @p record.
Work make(char letter, MessagePtr record);

/// An input with @p length bytes of payload.
MessagePtr makeInput(uint16_t length);

/// A frame pack of @p frames frames with @p count data each, each of @p length bytes.
MessagePtr makeFramePack(uint8_t frames, uint8_t count, uint16_t length);

} // namespace works

#endif
