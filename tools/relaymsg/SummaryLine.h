/// @file
/// One line about one message.
#ifndef KORVAN_TOOLS_RELAYMSG_SUMMARY_LINE_H
#define KORVAN_TOOLS_RELAYMSG_SUMMARY_LINE_H

#include "tools/relaymsg/MessageReader.h"
#include "tools/relaymsg/Output.h"

#include <cstdint>
#include <string_view>

namespace relaymsg {

/// The name of a command, or unknown(ID), in memory that holds as many characters as any needs.
class CommandName {
public:
    explicit CommandName(uint8_t id);
    operator std::string_view() const { return name_; }

    static constexpr size_t WIDTH = 24; ///< characters in the longest

private:
    char unknown_[16];
    std::string_view name_;
};

/// Number, offset, length, version, command, user, room and asynchronous id of the message, each one word.
/// Behind the length of an unknown command, which is that of its head, stands a plus. From a capture, the
/// packet follows, with its time, and the flow. What was searched for is said to be a guess, and so are, in a
/// line of their own, the bytes skipped before it.
void printSummary(const MessageReader& stream, Output& out);

/// Where a capture lacks bytes, and how many.
void printGap(const MessageReader& stream, Output& out);

/// Number and offset of the message that failed, and where and why.
void printFailedSummary(const MessageReader& stream, Output& out);

} // namespace relaymsg

#endif
