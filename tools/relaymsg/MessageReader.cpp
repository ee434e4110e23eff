#include "tools/relaymsg/MessageReader.h"

#include "tools/relaymsg/Redaction.h"

#include <algorithm>
#include <array>

namespace relaymsg {

using namespace cs_relay_msg;

namespace {

using CommandsById = std::array<const schema::Command*, 256>;

CommandsById commandsById() {
    CommandsById commands{};
    for (const schema::Command& command : schema::commands()) {
        commands[command.id] = &command;
    }
    return commands;
}

} // namespace

const schema::Command* MessageReader::command() const {
    static const CommandsById COMMANDS = commandsById(); // asked for each message
    return hasHead() ? COMMANDS[message_->stHead.bCmdId] : nullptr;
}

void MessageReader::redact() {
    if (relaymsg::redact(begin_, length_)) {
        unpack();
    }
}

MessageReader::Look MessageReader::look(char* bytes, size_t size, bool over, bool again) {
    begin_ = bytes;
    available_ = size;
    int32_t result = again ? BIX_ERR_READ_UNDERFLOW : unpack(); // walks again, since that copies nothing
    if (result == BIX_ERR_READ_UNDERFLOW && !over && size <= WINDOW) {
        stop_ = walkMessage({bytes, size});
        if (stop_.code == BIX_ERR_READ_UNDERFLOW) {
            needed_ = static_cast<size_t>(std::min<uint64_t>(stop_.needed, WINDOW + 1));
            return Look::More;
        }
    }
    if (again) {
        result = unpack();
    }
    ++number_;
    if (result == BIX_OK) {
        return Look::Message;
    }
    stop_ = walkMessage({bytes, size});
    stop_.code = result;
    if (result == BIX_ERR_READ_UNDERFLOW && size > WINDOW) {
        stop_.code = BIX_ERR_STRING_TOO_LONG; // nothing else asks for more bytes than any message has
    }
    return Look::Failure;
}

} // namespace relaymsg
