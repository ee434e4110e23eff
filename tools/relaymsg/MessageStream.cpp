#include "tools/relaymsg/MessageStream.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace relaymsg {

MessageStream::MessageStream(ByteSource& source, bool resync)
    : source_(source), resync_(resync), buffer_(new char[CAPACITY]) {}

MessageStream::Next MessageStream::nextSlowly() {
    skipped_ = 0;
    length_ = 0;
    if (failed_) {
        failed_ = false;
        if (!resync_ || !search()) {
            return Next::End;
        }
    }
    await(1);
    if (unread() == 0) {
        return Next::End;
    }
    Look found = look(at(), unread(), over_, false);
    while (found == Look::More) {
        await(needed_);
        found = look(at(), unread(), over_, true);
    }
    failed_ = found == Look::Failure;
    return failed_ ? Next::Failure : Next::Message;
}

uint64_t MessageStream::countRest() {
    if (resync_) {
        return 0; // they are not over yet
    }
    std::vector<char> bytes(READ_SIZE);
    uint64_t count = 0;
    while (const size_t read = source_.read(bytes.data(), bytes.size())) {
        count += read;
    }
    return count;
}

/// Goes on to the next place behind a failure where messages follow each other. False if there is none.
bool MessageStream::search() {
    const uint64_t from = offset_;
    pass(1);
    for (;;) {
        const Place place = findMessages({at(), unread()}, over_);
        pass(place.at);
        if (place.found) {
            break;
        }
        if (over_) {
            return false;
        }
        await(place.needed);
    }
    skipped_ = offset_ - from;
    guessed_ = true;
    return true;
}

void MessageStream::await(size_t size) {
    while (unread() < size && !over_) {
        fill();
    }
}

void MessageStream::fill() {
    // A little is moved at once: the same memory again is still in the processor's cache.
    if (CAPACITY - at_ <= LOOKAHEAD || unread() <= READ_SIZE / 16) {
        std::memmove(buffer_.get(), at(), unread());
        end_ -= at_;
        at_ = 0;
    }
    const size_t count = source_.read(buffer_.get() + end_, std::min(CAPACITY - end_, READ_SIZE));
    over_ = count == 0;
    end_ += count;
}

} // namespace relaymsg
