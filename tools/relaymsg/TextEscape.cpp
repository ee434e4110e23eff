#include "tools/relaymsg/TextEscape.h"

#include "tools/relaymsg/Utf8.h"

#include <cstddef>
#include <cstring>

namespace relaymsg {

namespace {

constexpr uint8_t byteAt(std::string_view text, size_t i) {
    return static_cast<uint8_t>(text[i]);
}

/// The length of the UTF-8 character at the start of @p text if it may be shown as it is; otherwise 0.
size_t sequenceLength(std::string_view text) {
    const Utf8Character character = firstCharacter(text);
    return deceives(character.code) ? 0 : character.length;
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
