#include "tools/relaymsg/Separator.h"

#include <charconv>

namespace relaymsg {

std::optional<char> parseSeparator(std::string_view text) {
    constexpr unsigned char ASCII = 0x7f;
    if (text.size() == 1 && static_cast<unsigned char>(text[0]) <= ASCII) {
        return text[0];
    }
    if (text == "\\n") {
        return '\n';
    }
    if (text == "\\t") {
        return '\t';
    }
    if (text == "\\r") {
        return '\r';
    }
    if (text == "\\0") {
        return '\0';
    }
    if (text == "\\\\") {
        return '\\';
    }
    unsigned char code = 0;
    if (text.size() == 4 && text.substr(0, 2) == "\\x") {
        const auto parsed = std::from_chars(text.data() + 2, text.data() + 4, code, 16);
        if (parsed.ptr == text.data() + 4 && code <= ASCII) {
            return static_cast<char>(code);
        }
    }
    return std::nullopt;
}

} // namespace relaymsg
