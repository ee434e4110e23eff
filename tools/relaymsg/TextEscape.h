/// @file
/// Makes text of unknown origin safe to show: no byte of it can move a terminal's cursor, end a line or pass
/// for something else.
///
/// A backslash becomes `\\`; a line break, tab or carriage return `\n`, `\t`, `\r`; every other control
/// character, every byte that is not part of valid UTF-8, and every character that breaks a line or turns the
/// direction of writing `\x` and two digits a byte. All else stays.
#ifndef KORVAN_TOOLS_RELAYMSG_TEXT_ESCAPE_H
#define KORVAN_TOOLS_RELAYMSG_TEXT_ESCAPE_H

#include "tools/relaymsg/Output.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace relaymsg {

/// What a byte of a text asks for.
enum class Care : uint8_t { None, Escape, Sequence, LineEnd };
using Cares = std::array<Care, 256>;

class TextEscape {
public:
    /// Lines end with @p separator, an ASCII character. Inside a line it is escaped too, unless it is a
    /// character of which labels and numbers are made.
    explicit TextEscape(char separator);

    /// Appends @p lines, each of which ends with NUL, the one byte that no text holds.
    void write(std::string_view lines, Output& out) const;

private:
    char separator_;
    Cares cares_;
};

/// @p text as part of a line.
std::string escaped(std::string_view text);

} // namespace relaymsg

#endif
