#include "tools/relaymsg/Base64Text.h"

#include "tools/relaymsg/TextEscape.h"

#include <algorithm>

namespace relaymsg {

namespace {

constexpr size_t CHUNK = 64 * 1024;

/// The six bits of a character; negative if it has none.
int valueOf(char c) {
    return c >= 'A' && c <= 'Z'   ? c - 'A'
           : c >= 'a' && c <= 'z' ? c - 'a' + 26
           : c >= '0' && c <= '9' ? c - '0' + 52
           : c == '+' || c == '-' ? 62
           : c == '/' || c == '_' ? 63
                                  : -1;
}

bool isLineEnd(char c) {
    return c == '\n' || c == '\r';
}

} // namespace

bool Base64Text::canBegin(std::string_view start) {
    return !start.empty() && std::all_of(start.begin(), start.end(),
                                         [](char c) { return valueOf(c) >= 0 || isLineEnd(c) || c == '='; });
}

const std::string& Base64Text::error() const {
    return text_.error().empty() ? ByteSource::error() : text_.error();
}

void Base64Text::refuse(const std::string& reason) {
    fail("line " + std::to_string(line_) + ", column " + std::to_string(column_) + ": " + reason);
}

/// Gets more text; false at its end.
bool Base64Text::fill() {
    ahead_.resize(CHUNK);
    ahead_.resize(text_.read(ahead_.data(), CHUNK));
    next_ = 0;
    if (ahead_.empty() && characters_ != 0 && text_.error().empty()) {
        refuse("the text ends inside a group of four characters.");
    }
    return !ahead_.empty();
}

void Base64Text::accept(char c) {
    ++column_;
    if (isLineEnd(c)) {
        line_ += c == '\n' ? 1 : 0;
        column_ = 0;
        return;
    }
    const int value = valueOf(c);
    const bool pads = c == '=' && characters_ >= 2;
    if ((value < 0 && !pads) || (value >= 0 && padding_ != 0)) {
        refuse("'" + escaped({&c, 1}) + "' is no base64, or not at this place.");
        return;
    }
    padding_ += pads ? 1 : 0;
    bits_ = bits_ << 6 | (pads ? 0 : static_cast<uint32_t>(value));
    if (++characters_ == 4) {
        for (int i = 0; i < 3 - padding_; ++i) {
            bytes_ += static_cast<char>(static_cast<unsigned char>(bits_ >> (16 - 8 * i)));
        }
        bits_ = 0;
        characters_ = 0;
        padding_ = 0;
    }
}

size_t Base64Text::read(char* to, size_t size) {
    size_t count = 0;
    while (count < size) {
        if (given_ < bytes_.size()) {
            to[count++] = bytes_[given_++];
            continue;
        }
        bytes_.clear();
        given_ = 0;
        // Where text is missing, what is there goes first: the next may take long.
        if (!ByteSource::error().empty() || (next_ == ahead_.size() && (count != 0 || !fill()))) {
            break;
        }
        accept(ahead_[next_++]);
    }
    return count;
}

} // namespace relaymsg
