/// @file
/// The messages of a stream, one behind the other, in constant memory.
#ifndef KORVAN_TOOLS_RELAYMSG_MESSAGE_STREAM_H
#define KORVAN_TOOLS_RELAYMSG_MESSAGE_STREAM_H

#include "protocol/Schema.h"
#include "protocol/cs_relay_msg.h"
#include "tools/relaymsg/ByteSource.h"
#include "tools/relaymsg/FieldWalk.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace relaymsg {

/// Finds message after message. What it finds depends on the bytes alone, not on how they are cut into reads;
/// each message is there as soon as its last byte is.
///
/// The library's `unpack` decides what a message is. Where it says that bytes are missing, more are awaited,
/// but no more than the largest message has. So a string of a length that no message can hold is called too
/// long as soon as more bytes follow than any message has; only if the stream ends before, they are missing.
class MessageStream {
public:
    /// Reads from @p source, which must outlive this.
    explicit MessageStream(ByteSource& source);

    enum class Next {
        Message, ///< the next message is there
        Failure, ///< what follows is no message, for the reason that `stop` gives; the last step
        End,     ///< there are no more bytes
    };
    Next next();

    /// The number of the message, from 1.
    uint64_t number() const { return number_; }

    /// Where in the stream it begins.
    uint64_t offset() const { return offset_; }

    /// Its bytes; after a failure, those that were read of it.
    std::string_view bytes() const { return {at(begin_), length_}; }

    const cs_relay_msg::CSRelayMsg& message() const { return *message_; }

    /// Its command; null if that is unknown or, after a failure, was not read.
    const cs_relay_msg::schema::Command* command() const;

    /// Whether its head was read: always, unless after a failure.
    bool hasHead() const { return length_ >= cs_relay_msg::CSRelayMsgHead::maxWireSize; }

    /// Why and where decoding failed.
    const Stop& stop() const { return stop_; }

    /// After a failure: bytes from the start of the message on, as far as the stream was read.
    size_t available() const { return end_ - begin_; }
    std::string_view availableBytes() const { return {at(begin_), available()}; }

    /// Takes from the message, as far as it was decoded, what must not be passed on.
    void redact();

private:
    static constexpr size_t WINDOW = cs_relay_msg::CSRelayMsg::maxWireSize;
    static constexpr size_t READ_SIZE = 256 * 1024;
    static constexpr size_t CAPACITY = WINDOW + 1 + READ_SIZE;

    const char* at(size_t position) const { return buffer_.get() + position; }
    int32_t unpack();
    void awaitMessage();
    void await(size_t size);
    void fill();

    ByteSource& source_;
    bool over_ = false;
    std::unique_ptr<char[]> buffer_;
    size_t begin_ = 0; // of the message
    size_t end_ = 0;   // of the bytes read
    size_t length_ = 0;
    uint64_t number_ = 0;
    uint64_t offset_ = 0;
    std::unique_ptr<cs_relay_msg::CSRelayMsg> message_;
    Stop stop_;
};

} // namespace relaymsg

#endif
