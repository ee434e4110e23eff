/// @file
/// Reads a stream of messages to its end and says what is wrong with it.
#ifndef KORVAN_TOOLS_RELAYMSG_READING_H
#define KORVAN_TOOLS_RELAYMSG_READING_H

#include "tools/relaymsg/FailureReport.h"
#include "tools/relaymsg/Job.h"
#include "tools/relaymsg/MessageStream.h"
#include "tools/relaymsg/Selection.h"

#include <string>
#include <utility>

namespace relaymsg {

class Reading {
public:
    /// Reads messages from @p bytes, which come from @p name.
    Reading(Job& job, ByteSource& bytes, std::string name)
        : job_(job), bytes_(bytes), name_(std::move(name)), stream_(bytes) {}

    /// Reads messages from @p bytes, which come from the input of @p job.
    Reading(Job& job, ByteSource& bytes) : Reading(job, bytes, job.file().name()) {}

    /// Goes to the next message; false if there is none, or nobody reads the output.
    bool next();

    /// Calls @p take with the stream at each message that @p selection holds, until there are no more, or
    /// nobody reads the output.
    template <class Take>
    void each(const Selection& selection, Take take) {
        while (next()) {
            if (selection.holds(stream_)) {
                take(stream_);
            }
            noteUnknown();
            if (selection.endsAt(stream_)) {
                next_ = MessageStream::Next::End;
                break;
            }
        }
    }

    /// Whether there was a message, or something that failed to be one.
    bool any() const { return stream_.number() != 0; }

    /// Whether the stream ended with something that is no message; `stream` is there.
    bool failed() const { return next_ == MessageStream::Next::Failure; }
    MessageStream& stream() { return stream_; }

    /// Says why the stream ended, unless it simply did.
    ExitStatus end();

    /// Says once that the message's command is unknown, if it is.
    void noteUnknown();

private:
    void say(const std::string& text) { job_.say(name_ + ": " + text); }

    Job& job_;
    ByteSource& bytes_;
    std::string name_;
    MessageStream stream_;
    MessageStream::Next next_ = MessageStream::Next::End;
    UnknownCommand unknown_;
};

} // namespace relaymsg

#endif
