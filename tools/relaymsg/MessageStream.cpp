#include "tools/relaymsg/MessageStream.h"

#include "tools/relaymsg/Redaction.h"

#include <algorithm>
#include <cstring>

namespace relaymsg {

using namespace cs_relay_msg;

MessageStream::MessageStream(ByteSource& source)
    : source_(source), buffer_(new char[CAPACITY]), message_(std::make_unique<CSRelayMsg>()) {}

MessageStream::Next MessageStream::next() {
    begin_ += length_;
    offset_ += length_;
    length_ = 0;
    await(1);
    if (available() == 0) {
        return Next::End;
    }
    ++number_;
    int32_t result = unpack();
    if (result == BIX_ERR_READ_UNDERFLOW) {
        awaitMessage();
        result = unpack();
    }
    if (result == BIX_OK) {
        return Next::Message;
    }
    stop_ = walkMessage({at(begin_), available()});
    stop_.code = result;
    if (result == BIX_ERR_READ_UNDERFLOW && available() > WINDOW) {
        stop_.code = BIX_ERR_STRING_TOO_LONG; // nothing else asks for more bytes than any message has
    }
    return Next::Failure;
}

const schema::Command* MessageStream::command() const {
    return hasHead() ? schema::findCommand(message_->stHead.bCmdId) : nullptr;
}

void MessageStream::redact() {
    if (relaymsg::redact(buffer_.get() + begin_, length_)) {
        unpack();
    }
}

int32_t MessageStream::unpack() {
    return message_->unpack(at(begin_), available(), &length_);
}

/// Reads on until the message is complete or cannot be. Walks for this, since that copies nothing, and only
/// when the field that was cut off has arrived.
void MessageStream::awaitMessage() {
    while (!over_ && available() <= WINDOW) {
        const Stop stop = walkMessage({at(begin_), available()});
        if (stop.code != BIX_ERR_READ_UNDERFLOW) {
            return;
        }
        await(static_cast<size_t>(std::min<uint64_t>(stop.needed, WINDOW + 1)));
    }
}

void MessageStream::await(size_t size) {
    while (available() < size && !over_) {
        fill();
    }
}

void MessageStream::fill() {
    if (CAPACITY - begin_ <= WINDOW) {
        std::memmove(buffer_.get(), at(begin_), available());
        end_ -= begin_;
        begin_ = 0;
    }
    const size_t count = source_.read(buffer_.get() + end_, std::min(CAPACITY - end_, READ_SIZE));
    over_ = count == 0;
    end_ += count;
}

} // namespace relaymsg
