/// @file
/// What two messages have in different fields.
#ifndef KORVAN_TOOLS_RELAYMSG_FIELD_DIFF_H
#define KORVAN_TOOLS_RELAYMSG_FIELD_DIFF_H

#include <string>
#include <string_view>

namespace relaymsg {

/// A line for each field that is not the same in the messages @p a and @p b: "-" and "+", its path and its
/// value, before and after. @param redact whether signatures and addresses are shown as asterisks
std::string fieldDifferences(std::string_view a, std::string_view b, bool redact);

} // namespace relaymsg

#endif
