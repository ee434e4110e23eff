/// @file
/// Characters in texts of unknown origin.
#ifndef KORVAN_TOOLS_RELAYMSG_UTF8_H
#define KORVAN_TOOLS_RELAYMSG_UTF8_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace relaymsg {

/// One character, and the bytes that it takes: 0 if there is no valid one.
struct Utf8Character {
    uint32_t code;
    size_t length;
};

/// The UTF-8 character at the start of @p text, which is not empty.
inline Utf8Character firstCharacter(std::string_view text) {
    const auto byteAt = [=](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byteAt(0);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc2 || lead > 0xf4 || text.size() < length) {
        return {0, 0};
    }
    uint32_t code = lead & (0x7fu >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xc0) != 0x80) {
            return {0, 0};
        }
        code = code << 6 | (byteAt(i) & 0x3fu);
    }
    const bool overlong = code < (length == 4 ? 0x10000u : length == 3 ? 0x800u : 0x80u);
    const bool surrogate = code >= 0xd800 && code <= 0xdfff;
    return overlong || surrogate || code > 0x10ffff ? Utf8Character{0, 0} : Utf8Character{code, length};
}

/// Whether a terminal or a reader could take the character for something else than a character.
constexpr bool deceives(uint32_t code) {
    return code < ' ' || (code >= 0x7f && code < 0xa0) // a control character
           || code == 0x061c                           // marks and overrides of the direction of writing
           || (code >= 0x200e && code <= 0x200f) ||
           (code >= 0x2028 && code <= 0x202e) // the first two of these break a line
           || (code >= 0x2066 && code <= 0x2069);
}

} // namespace relaymsg

#endif
