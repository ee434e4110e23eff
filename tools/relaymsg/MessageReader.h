/// @file
/// Message after message of an input, whatever the input is.
#ifndef KORVAN_TOOLS_RELAYMSG_MESSAGE_READER_H
#define KORVAN_TOOLS_RELAYMSG_MESSAGE_READER_H

#include "protocol/Schema.h"
#include "protocol/cs_relay_msg.h"
#include "tools/relaymsg/FieldWalk.h"
#include "tools/relaymsg/Origin.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace relaymsg {

/// The library's `unpack` decides what a message is. Where it says that bytes are missing, more are awaited,
/// but no more than the largest message has. So a string of a length that no message can hold is called too
/// long as soon as more bytes follow than any message has; only if the stream ends before, they are missing.
class MessageReader {
public:
    MessageReader() = default;
    virtual ~MessageReader() = default;
    MessageReader(const MessageReader&) = delete;
    MessageReader& operator=(const MessageReader&) = delete;

    enum class Next {
        Message, ///< the next message is there
        Failure, ///< what follows is no message, for the reason that `stop` gives
        Gap,     ///< bytes are missing: `missing` of them, at `offset`
        End,     ///< there is nothing more
    };
    virtual Next next() = 0;

    /// The number of the message, from 1.
    uint64_t number() const { return number_; }

    /// Where in its stream it begins.
    uint64_t offset() const { return offset_; }

    /// Its bytes; after a failure, those that were read of it.
    std::string_view bytes() const { return {begin_, length_}; }

    const cs_relay_msg::CSRelayMsg& message() const { return *message_; }

    /// Its command; null if that is unknown or, after a failure, was not read.
    const cs_relay_msg::schema::Command* command() const;

    /// Whether its head was read: always, unless after a failure.
    bool hasHead() const { return length_ >= cs_relay_msg::CSRelayMsgHead::maxWireSize; }

    /// Why and where decoding failed.
    const Stop& stop() const { return stop_; }

    /// After a failure: bytes from the start of the message on, as far as the stream was read.
    size_t available() const { return available_; }
    std::string_view availableBytes() const { return {begin_, available_}; }

    /// After the last failure: how many bytes follow these.
    virtual uint64_t countRest() { return 0; }

    /// How many bytes are missing in a gap.
    uint64_t missing() const { return missing_; }

    /// Bytes right before this message that were skipped in search of it.
    uint64_t skipped() const { return skipped_; }

    /// Whether it was searched for, or follows one that was: it may be none.
    bool guessed() const { return guessed_; }

    /// Where it was captured; always the same address, and null if the input is no capture.
    virtual const Origin* origin() const { return nullptr; }

    /// What else there is to say of a failure, a sentence; or nothing.
    virtual std::string hint() const { return ""; }

    /// What was left out so far, in sentences.
    virtual std::vector<std::string> leftOut() const { return {}; }

    /// Why there was no message, a sentence whose subject is the input.
    virtual std::string emptiness() const { return "is empty: there is no message in it."; }

    /// Why the input ended before its time; empty if it simply ended.
    virtual const std::string& error() const = 0;

    /// Takes from the message, as far as it was decoded, what must not be passed on.
    void redact();

protected:
    static constexpr size_t WINDOW = cs_relay_msg::CSRelayMsg::maxWireSize;

    enum class Look { Message, Failure, More };

    /// Whether a message stands at the start of @p bytes; if so, this stands at it.
    bool lookOnce(char* bytes, size_t size) {
        begin_ = bytes;
        available_ = size;
        if (unpack() != Korvan::BIX_OK) {
            return false;
        }
        ++number_;
        skipped_ = 0;
        return true;
    }

    /// Looks at the start of @p bytes for a message, of which the last look said `More` if @p again. @p over:
    /// no more bytes follow. `More`: not before `needed_` bytes are there.
    Look look(char* bytes, size_t size, bool over, bool again);

    char* begin_ = nullptr;
    size_t length_ = 0;
    size_t available_ = 0;
    size_t needed_ = 0;
    uint64_t number_ = 0;
    uint64_t offset_ = 0;
    uint64_t missing_ = 0;
    uint64_t skipped_ = 0;
    bool guessed_ = false;

private:
    int32_t unpack() { return message_->unpack(begin_, available_, &length_); }

    std::unique_ptr<cs_relay_msg::CSRelayMsg> message_ = std::make_unique<cs_relay_msg::CSRelayMsg>();
    Stop stop_;
};

} // namespace relaymsg

#endif
