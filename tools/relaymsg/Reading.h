/// @file
/// Reads messages to the end of their input and says what is wrong with it.
#ifndef KORVAN_TOOLS_RELAYMSG_READING_H
#define KORVAN_TOOLS_RELAYMSG_READING_H

#include "tools/relaymsg/FailureReport.h"
#include "tools/relaymsg/Input.h"
#include "tools/relaymsg/Job.h"
#include "tools/relaymsg/Selection.h"

#include <array>
#include <string>

namespace relaymsg {

class Reading {
public:
    /// Reads messages from @p file. What is to be said, @p job says.
    Reading(Job& job, FileSource& file, const InputOptions& options)
        : job_(job), name_(file.name()), input_(file, options), messages_(input_.messages()) {
        for (const auto& command : cs_relay_msg::schema::commands()) {
            known_[command.id] = true;
        }
    }

    /// Reads messages from the input of @p job.
    Reading(Job& job, const InputOptions& options) : Reading(job, job.file(), options) {}

    using Next = MessageReader::Next;

    /// Goes on to the next message or what is in its place; the end also if nobody reads the output.
    Next next() {
        const Next found = job_.out().error() != 0 ? Next::End : messages_.next();
        if (found != Next::Message || !failure_.empty()) {
            noteFailure(found);
        }
        return found;
    }

    /// Goes to the next message, past what is none; false if there is none.
    bool nextMessage();

    /// Calls @p take with the reader at each message that @p selection holds, and @p fail at each failure and
    /// each gap, until there are no more, or nobody reads the output.
    template <class Take, class Fail>
    void each(const Selection& selection, Take take, Fail fail) {
        const bool all = selection.all();
        for (Next found; (found = next()) != Next::End;) {
            if (found != Next::Message) {
                fail(messages_, found);
                continue;
            }
            if (all || selection.holds(messages_)) {
                take(messages_);
            }
            noteUnknown();
            if (!all && selection.endsAt(messages_)) {
                return;
            }
        }
    }

    /// Whether there was a message, or something that failed to be one.
    bool any() const { return messages_.number() != 0 || failures_ != 0; }

    MessageReader& messages() { return messages_; }

    /// Says why the input ended, unless it simply did, and what was left out.
    ExitStatus end();

    /// Says once that the message's command is unknown, if it is.
    void noteUnknown() {
        if (!known_[messages_.message().stHead.bCmdId]) {
            sayUnknown();
        }
    }

private:
    static constexpr uint64_t FAILURES_SAID = 10; ///< in full; beyond them they are counted

    void say(const std::string& text) { job_.say(name_ + ": " + text); }
    void sayUnknown();
    void sayFailure();
    void noteFailure(Next found);

    Job& job_;
    std::string name_;
    Input input_;
    MessageReader& messages_;
    uint64_t failures_ = 0;
    std::string failure_; ///< the last one, if it is still to be said
    UnknownCommand unknown_;
    std::array<bool, 256> known_{}; ///< the commands, by id
};

} // namespace relaymsg

#endif
