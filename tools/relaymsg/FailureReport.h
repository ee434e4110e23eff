/// @file
/// What is said of a message that cannot be decoded.
#ifndef KORVAN_TOOLS_RELAYMSG_FAILURE_REPORT_H
#define KORVAN_TOOLS_RELAYMSG_FAILURE_REPORT_H

#include "tools/relaymsg/MessageReader.h"

#include <string>

namespace relaymsg {

/// The last message whose command was unknown.
struct UnknownCommand {
    uint64_t number = 0; ///< of the message; 0 if there was none
    uint64_t end = 0;    ///< where in the stream its head ends
    uint8_t id = 0;
};

/// An offset as people and hexadecimal dumps write it, such as "132 (0x84)".
std::string offsetText(uint64_t offset);

/// Which message it is, such as "message 3 (stRelayLoginReq) at offset 132 (0x84)".
std::string messageText(const MessageReader& stream);

/// Where and why @p stream failed, in sentences, one a line.
std::string failureText(const MessageReader& stream, const UnknownCommand& unknown);

/// What is missing in the gap that @p stream stands at.
std::string gapText(const MessageReader& stream);

} // namespace relaymsg

#endif
