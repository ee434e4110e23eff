/// @file
/// The command `new`: a message to begin with.
#ifndef KORVAN_TOOLS_RELAYMSG_NEW_MESSAGE_H
#define KORVAN_TOOLS_RELAYMSG_NEW_MESSAGE_H

#include "protocol/Schema.h"
#include "tools/relaymsg/ExitStatus.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace relaymsg {

/// The command that @p text names or whose id it is; null if there is none.
const cs_relay_msg::schema::Command* parseCommand(std::string_view text);

/// The wire form of a message of this command with all its defaults, packed for @p cutVersion.
std::string constructedMessage(const cs_relay_msg::schema::Command& command, uint32_t cutVersion);

/// Prints that message as JSON.
ExitStatus printNew(const cs_relay_msg::schema::Command& command, uint32_t cutVersion);

} // namespace relaymsg

#endif
