#include "tools/relaymsg/Reading.h"

namespace relaymsg {

void Reading::noteFailure(Next found) {
    if (found != Next::End && !failure_.empty()) {
        sayFailure();
    }
    if (found == Next::Failure || found == Next::Gap) {
        ++failures_;
        if (failures_ <= FAILURES_SAID) {
            failure_ = found == Next::Gap ? gapText(messages_) : failureText(messages_, unknown_);
        }
    }
}

bool Reading::nextMessage() {
    Next found = next();
    while (found == Next::Failure || found == Next::Gap) {
        found = next();
    }
    return found == Next::Message;
}

/// The last failure is said when it is known whether more follows, behind what is printed of it.
void Reading::sayFailure() {
    say(failure_);
    failure_.clear();
}

void Reading::sayUnknown() {
    const bool first = unknown_.number == 0;
    unknown_ = {messages_.number(), messages_.offset() + messages_.bytes().size(),
                messages_.message().stHead.bCmdId};
    if (first) {
        say(messageText(messages_) + " has the unknown command " + std::to_string(unknown_.id) +
            ".\n"
            "  The length of its body cannot be known. Decoding goes on behind its head;\n"
            "  what follows may be that body.\n");
    }
}

ExitStatus Reading::end() {
    if (job_.out().error() != 0) {
        return ExitStatus::Output;
    }
    if (!failure_.empty() && (messages_.error().empty() || messages_.origin() != nullptr)) {
        sayFailure();
    }
    if (failures_ > FAILURES_SAID) {
        say(std::to_string(failures_ - FAILURES_SAID) + " failures more were not said.\n");
    }
    for (const std::string& sentence : messages_.leftOut()) {
        say(sentence + "\n");
    }
    if (!messages_.error().empty()) {
        say(messages_.error() + "\n");
        return ExitStatus::Input;
    }
    if (failures_ != 0) {
        return ExitStatus::Decode;
    }
    if (!any()) {
        say(messages_.emptiness() + "\n");
        return ExitStatus::Input;
    }
    return unknown_.number != 0 ? ExitStatus::UnknownCommand : ExitStatus::Ok;
}

} // namespace relaymsg
