/// @file
/// Messages from JSON, as JsonText.h writes it.
#ifndef KORVAN_TOOLS_RELAYMSG_MESSAGE_JSON_H
#define KORVAN_TOOLS_RELAYMSG_MESSAGE_JSON_H

#include "protocol/cs_relay_msg.h"
#include "tools/relaymsg/JsonFault.h"

#include <string_view>

namespace relaymsg {

/// Fills @p message from the JSON object @p text.
///
/// Every field that the version in its head carries must be there, and nothing else. Only the count of an
/// array may be left out; if it is there, it must be right. Throws a JsonFault otherwise. Fields of later
/// versions get their defaults.
void readMessage(std::string_view text, cs_relay_msg::CSRelayMsg& message);

} // namespace relaymsg

#endif
