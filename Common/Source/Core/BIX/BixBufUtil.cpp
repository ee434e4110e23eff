#include "Common/Source/Core/BIX/BixBufUtil.h"

#include "Common/Source/Core/BIX/BixLine.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace Korvan::detail {

namespace {

constexpr int BLANKS_PER_LEVEL = 2;
constexpr size_t MAX_NUMBER = 20; // the digits of the largest 64-bit value, or a sign and 19 digits

/// Takes text that is known to fit.
struct Fitting {
    char* at;

    void put(char c) { *at++ = c; }
    void put(const char* text, size_t length) {
        std::memcpy(at, text, length);
        at += length;
    }
    void fill(char c, uint64_t count) {
        std::memset(at, c, static_cast<size_t>(count));
        at += count;
    }
    void print(size_t length, const char* format, va_list ap) {
        std::vsnprintf(at, length + 1, format, ap); // its NUL stands where the separator will
        at += length;
    }
};

/// Takes text of any length, keeps as much as there is room for, and counts all of it.
struct Clipped {
    char* at;
    size_t free; // room for text: one byte less than the room left, for the NUL
    uint64_t needed = 0;

    void put(char c) { put(&c, 1); }
    void put(const char* text, size_t length) {
        const size_t kept = std::min(length, free);
        std::memcpy(at, text, kept);
        advance(kept, length);
    }
    void fill(char c, uint64_t count) {
        const size_t kept = static_cast<size_t>(std::min<uint64_t>(count, free));
        std::memset(at, c, kept);
        advance(kept, count);
    }
    void print(size_t length, const char* format, va_list ap) {
        std::vsnprintf(at, free + 1, format, ap);
        advance(std::min(length, free), length);
    }
    void advance(size_t kept, uint64_t length) {
        at += kept;
        free -= kept;
        needed += length;
    }
};

uint64_t blanks(int indent) {
    return indent > 0 ? static_cast<uint64_t>(indent) * BLANKS_PER_LEVEL : 0;
}

/// Appends one piece of text: @p compose puts it into whichever sink it is given. @p most is at least its
/// length.
template <class Compose>
int32_t piece(BixWriteBuf& buf, uint64_t most, Compose compose) {
    const size_t room = detail::room(buf.position, buf.length);
    if (room == 0) {
        return buf.textize("%s", ""); // fails, and asserts when the cursor is corrupted
    }
    char* const start = buf.beginPtr + buf.position;
    if (most < room) {
        Fitting text{start};
        compose(text);
        *text.at = '\0';
        buf.position += static_cast<size_t>(text.at - start);
        return BIX_OK;
    }
    Clipped text{start, room - 1};
    compose(text);
    *text.at = '\0';
    if (text.needed >= room) {
        return BIX_ERR_WRITE_OVERFLOW;
    }
    buf.position += static_cast<size_t>(text.needed);
    return BIX_OK;
}

/// Appends a line: indentation, label and what @p compose puts behind them, at most @p most characters.
template <class Compose>
int32_t labelled(const Line& line, uint64_t most, Compose compose) {
    const uint64_t indentation = blanks(line.indent);
    return piece(line.buf, indentation + line.labelLength + most, [&](auto& text) {
        text.fill(' ', indentation);
        text.put(line.label, line.labelLength);
        compose(text);
    });
}

/// Appends a line with a value: @p compose puts the value, at most @p most characters.
template <class Compose>
int32_t valued(const Line& line, uint64_t most, Compose compose) {
    return labelled(line, most + 3, [&](auto& text) {
        text.put(": ", 2);
        compose(text);
        text.put(line.sep);
    });
}

constexpr char HEX_DIGITS[] = "0123456789abcdef";

template <class Text>
void putHex(Text& text, uint32_t value) {
    char digits[8];
    size_t first = sizeof(digits);
    do {
        digits[--first] = HEX_DIGITS[value % 16];
        value /= 16;
    } while (value != 0 || sizeof(digits) - first < 2);
    text.put("0x", 2);
    text.put(digits + first, sizeof(digits) - first);
}

template <class Text>
void putDecimal(Text& text, uint64_t value) {
    char digits[MAX_NUMBER];
    size_t first = sizeof(digits);
    do {
        digits[--first] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    text.put(digits + first, sizeof(digits) - first);
}

template <class Text>
void putSigned(Text& text, int64_t value) {
    const uint64_t bits = static_cast<uint64_t>(value);
    if (value < 0) {
        text.put('-');
    }
    putDecimal(text, value < 0 ? 0 - bits : bits);
}

} // namespace

int32_t headerLine(const Line& line, bool closed) noexcept {
    return labelled(line, 1, [&](auto& text) {
        if (closed) {
            text.put(line.sep);
        }
    });
}

int32_t elementLine(const Line& line, uint32_t index, bool closed) noexcept {
    return labelled(line, MAX_NUMBER + 3, [&](auto& text) {
        text.put('[');
        putDecimal(text, index);
        text.put(']');
        if (closed) {
            text.put(line.sep);
        }
    });
}

int32_t hexLine(const Line& line, uint32_t value) noexcept {
    return valued(line, MAX_NUMBER, [&](auto& text) { putHex(text, value); });
}

int32_t signedLine(const Line& line, int64_t value) noexcept {
    return valued(line, MAX_NUMBER, [&](auto& text) { putSigned(text, value); });
}

int32_t unsignedLine(const Line& line, uint64_t value) noexcept {
    return valued(line, MAX_NUMBER, [&](auto& text) { putDecimal(text, value); });
}

int32_t textLine(const Line& line, const char* value, size_t length) noexcept {
    return valued(line, length, [&](auto& text) { text.put(value, length); });
}

int32_t arrayOpening(const Line& line, int64_t count) noexcept {
    return labelled(line, MAX_NUMBER + 3, [&](auto& text) {
        text.put('(');
        putSigned(text, count);
        text.put("):", 2);
    });
}

int32_t byteItems(BixWriteBuf& buf, const uint8_t* bytes, size_t count) noexcept {
    constexpr size_t ITEM = 5; // " 0x" and two digits
    for (size_t i = 0; i < count; ++i) {
        const int32_t result = piece(buf, ITEM, [&](auto& text) {
            text.put(' ');
            putHex(text, bytes[i]);
        });
        if (result != BIX_OK) {
            return result;
        }
    }
    return BIX_OK;
}

} // namespace Korvan::detail

namespace Korvan::BixBufUtil {

namespace {

detail::Line makeLine(BixWriteBuf& buf, int indent, char sep, const char* label) {
    return {buf, indent, sep, label, std::strlen(label)};
}

} // namespace

int32_t printVariable(BixWriteBuf& buf, int indent, char sep, const char* label, const char* format,
                      ...) noexcept {
    const detail::Line line = makeLine(buf, indent, sep, label);
    int32_t result = BIX_ERR_WRITE_OVERFLOW;
    va_list ap;
    va_start(ap, format);
    if (std::strcmp(format, "%lu") == 0) { // the platform's own "%lu" may be 32 bits wide
        result = detail::unsignedLine(line, va_arg(ap, uint64_t));
    } else {
        va_list measured;
        va_copy(measured, ap);
        const int length = std::vsnprintf(nullptr, 0, format, measured);
        va_end(measured);
        if (length >= 0) {
            result = detail::valued(line, static_cast<size_t>(length),
                                    [&](auto& text) { text.print(static_cast<size_t>(length), format, ap); });
        }
    }
    va_end(ap);
    return result;
}

int32_t printVariable(BixWriteBuf& buf, int indent, char sep, const char* label, bool flag) noexcept {
    return detail::headerLine(makeLine(buf, indent, sep, label), flag);
}

int32_t printVariable(BixWriteBuf& buf, int indent, char sep, const char* label, uint32_t index,
                      bool flag) noexcept {
    return detail::elementLine(makeLine(buf, indent, sep, label), index, flag);
}

int32_t printString(BixWriteBuf& buf, int indent, char sep, const char* label, const char* value) noexcept {
    return detail::textLine(makeLine(buf, indent, sep, label), value, std::strlen(value));
}

int32_t printArray(BixWriteBuf& buf, int indent, char sep, const char* label, int64_t count) noexcept {
    return detail::arrayOpening(makeLine(buf, indent, sep, label), count);
}

} // namespace Korvan::BixBufUtil
