/// @file
/// The messages of a stream, one behind the other, in constant memory.
#ifndef KORVAN_TOOLS_RELAYMSG_MESSAGE_STREAM_H
#define KORVAN_TOOLS_RELAYMSG_MESSAGE_STREAM_H

#include "tools/relaymsg/ByteSource.h"
#include "tools/relaymsg/MessageReader.h"
#include "tools/relaymsg/Resync.h"

namespace relaymsg {

/// Finds message after message. What it finds depends on the bytes alone, not on how they are cut into reads;
/// each message is there as soon as its last byte is.
class MessageStream final : public MessageReader {
public:
    /// Reads from @p source, which must outlive this. @param resync whether to go on behind a failure, where
    /// messages seem to follow each other again
    explicit MessageStream(ByteSource& source, bool resync = false);

    /// As a rule the next message is there already.
    Next next() override {
        if (!failed_) {
            pass(length_);
            if (lookOnce(at(), unread())) {
                return Next::Message;
            }
        }
        return nextSlowly();
    }
    uint64_t countRest() override;
    const std::string& error() const override { return source_.error(); }

private:
    static constexpr size_t READ_SIZE = 256 * 1024;
    static constexpr size_t LOOKAHEAD = RESYNC_MESSAGES * WINDOW;
    static constexpr size_t CAPACITY = LOOKAHEAD + 1 + READ_SIZE;

    size_t unread() const { return end_ - at_; }
    char* at() { return buffer_.get() + at_; }
    Next nextSlowly();
    void pass(size_t bytes) {
        at_ += bytes;
        offset_ += bytes;
    }
    void await(size_t size);
    void fill();
    bool search();

    ByteSource& source_;
    bool resync_;
    bool over_ = false;
    bool failed_ = false;
    std::unique_ptr<char[]> buffer_;
    size_t at_ = 0;  // of the message
    size_t end_ = 0; // of the bytes read
};

} // namespace relaymsg

#endif
