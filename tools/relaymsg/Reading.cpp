#include "tools/relaymsg/Reading.h"

namespace relaymsg {

bool Reading::next() {
    if (job_.out().error() != 0) {
        return false;
    }
    next_ = stream_.next();
    return next_ == MessageStream::Next::Message;
}

void Reading::noteUnknown() {
    if (stream_.command() != nullptr) {
        return;
    }
    const bool first = unknown_.number == 0;
    unknown_ = {stream_.number(), stream_.offset() + stream_.bytes().size(), stream_.message().stHead.bCmdId};
    if (first) {
        say(messageText(stream_) + " has the unknown command " + std::to_string(unknown_.id) +
            ".\n"
            "  The length of its body cannot be known. Decoding goes on behind its head;\n"
            "  what follows may be that body.\n");
    }
}

ExitStatus Reading::end() {
    if (job_.out().error() != 0) {
        return ExitStatus::Output;
    }
    if (!bytes_.error().empty()) {
        say(bytes_.error() + "\n");
        return ExitStatus::Input;
    }
    if (failed()) {
        say(failureText(stream_, unknown_));
        return ExitStatus::Decode;
    }
    if (!any()) {
        say("is empty: there is no message in it.\n");
        return ExitStatus::Input;
    }
    return unknown_.number != 0 ? ExitStatus::UnknownCommand : ExitStatus::Ok;
}

} // namespace relaymsg
