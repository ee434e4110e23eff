#include "tools/relaymsg/NewMessage.h"

#include "protocol/cs_relay_msg.h"
#include "tools/relaymsg/Job.h"
#include "tools/relaymsg/JsonText.h"

#include <charconv>
#include <memory>

namespace relaymsg {

using namespace cs_relay_msg;

const schema::Command* parseCommand(std::string_view text) {
    for (const schema::Command& command : schema::commands()) {
        if (text == command.name) {
            return &command;
        }
    }
    uint8_t id = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, id);
    return read.ec == std::errc() && read.ptr == end ? schema::findCommand(id) : nullptr;
}

std::string constructedMessage(const schema::Command& command, uint32_t cutVersion) {
    const auto message = std::make_unique<CSRelayMsg>();
    message->construct();
    message->stHead.bCmdId = command.id;
    message->stBody.construct(command.id);
    std::string bytes(CSRelayMsg::maxWireSize, '\0');
    size_t size = 0;
    message->pack(bytes.data(), bytes.size(), &size, cutVersion);
    bytes.resize(size);
    return bytes;
}

ExitStatus printNew(const schema::Command& command, uint32_t cutVersion) {
    std::string line;
    appendJson(line, constructedMessage(command, cutVersion));
    return print(line + '\n');
}

} // namespace relaymsg
