/// @file
/// A separator as it is written on a command line.
#ifndef KORVAN_TOOLS_RELAYMSG_SEPARATOR_H
#define KORVAN_TOOLS_RELAYMSG_SEPARATOR_H

#include <optional>
#include <string_view>

namespace relaymsg {

/// The character that @p text means: itself, or one of `\n`, `\t`, `\r`, `\0`, `\\` and `\x` with two digits.
/// Nothing if it means no single ASCII character.
std::optional<char> parseSeparator(std::string_view text);

} // namespace relaymsg

#endif
