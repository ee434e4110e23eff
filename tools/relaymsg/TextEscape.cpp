#include "tools/relaymsg/TextEscape.h"

#include <cstddef>
#include <cstring>

namespace relaymsg {

namespace {

constexpr uint8_t byteAt(std::string_view text, size_t i) {
    return static_cast<uint8_t>(text[i]);
}

/// Whether a terminal or a reader could take the character for something else than a character.
constexpr bool deceives(uint32_t character) {
    return character < 0xa0       // a control character
           || character == 0x061c // marks and overrides of the direction of writing
           || (character >= 0x200e && character <= 0x200f) ||
           (character >= 0x2028 && character <= 0x202e) // the first two of these break a line
           || (character >= 0x2066 && character <= 0x2069);
}

/// The length of the UTF-8 sequence of two or more bytes at the start of @p text that may be shown as it is;
/// 0 if there is none.
size_t sequenceLength(std::string_view text) {
    const uint8_t lead = byteAt(text, 0);
    const size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc2 || lead > 0xf4 || text.size() < length) {
        return 0;
    }
    uint32_t character = lead & (0x7fu >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byteAt(text, i) & 0xc0) != 0x80) {
            return 0;
        }
        character = character << 6 | (byteAt(text, i) & 0x3fu);
    }
    const bool overlong = character < (length == 4 ? 0x10000u : length == 3 ? 0x800u : 0x80u);
    const bool surrogate = character >= 0xd800 && character <= 0xdfff;
    return overlong || surrogate || character > 0x10ffff || deceives(character) ? 0 : length;
}

template <class Sink>
void escapeByte(uint8_t byte, Sink& to) {
    constexpr char DIGITS[] = "0123456789abcdef";
    const char text[] = {'\\', 'x', DIGITS[byte >> 4], DIGITS[byte & 15]};
    switch (byte) {
    case '\\':
        return static_cast<void>(to.append(std::string_view("\\\\")));
    case '\n':
        return static_cast<void>(to.append(std::string_view("\\n")));
    case '\t':
        return static_cast<void>(to.append(std::string_view("\\t")));
    case '\r':
        return static_cast<void>(to.append(std::string_view("\\r")));
    default:
        to.append(std::string_view(text, sizeof(text)));
    }
}

/// Whether labels, numbers and what joins them are made of it.
bool occursInLines(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           (c != '\0' && std::strchr("[]():_- ", c) != nullptr);
}

Cares basicCares() {
    Cares cares{};
    for (size_t byte = 0; byte < cares.size(); ++byte) {
        cares[byte] = byte >= 0x80                                 ? Care::Sequence
                      : byte < ' ' || byte == 0x7f || byte == '\\' ? Care::Escape
                                                                   : Care::None;
    }
    return cares;
}

template <class Sink>
void copy(std::string_view text, const Cares& cares, char separator, Sink& to) {
    while (!text.empty()) {
        size_t length = 0;
        while (length < text.size() && cares[byteAt(text, length)] == Care::None) {
            ++length;
        }
        if (length == 0 && cares[byteAt(text, 0)] == Care::Sequence) {
            length = sequenceLength(text);
        }
        if (length != 0) {
            to.append(text.substr(0, length));
        } else {
            if (cares[byteAt(text, 0)] == Care::LineEnd) {
                to.append(std::string_view(&separator, 1));
            } else {
                escapeByte(byteAt(text, 0), to);
            }
            length = 1;
        }
        text.remove_prefix(length);
    }
}

} // namespace

TextEscape::TextEscape(char separator) : separator_(separator), cares_(basicCares()) {
    if (!occursInLines(separator)) {
        cares_[static_cast<uint8_t>(separator)] = Care::Escape;
    }
    cares_['\0'] = Care::LineEnd;
}

void TextEscape::write(std::string_view lines, Output& out) const {
    copy(lines, cares_, separator_, out);
}

std::string escaped(std::string_view text) {
    static const Cares CARES = basicCares();
    std::string to;
    copy(text, CARES, '\0', to);
    return to;
}

} // namespace relaymsg
