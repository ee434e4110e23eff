#include "Common/Source/Core/BIX/BixBufUtil.h"

#include "Common/Source/Core/BIX/BixLine.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace Korvan::detail {

namespace {

/// Appends one piece of text, which @p compose puts: all of it, or as much as one bounded print would leave.
template <class Compose>
int32_t piece(BixWriteBuf& buf, Compose compose) {
    const size_t free = room(buf.position, buf.length);
    if (free == 0) {
        return buf.textize("%s", ""); // fails, and asserts when the cursor is corrupted
    }
    Clipped text{buf.beginPtr + buf.position, free - 1};
    compose(text);
    *text.at = '\0';
    if (text.needed >= free) {
        return BIX_ERR_WRITE_OVERFLOW;
    }
    buf.position += static_cast<size_t>(text.needed);
    return BIX_OK;
}

} // namespace

int32_t headerLine(BixWriteBuf& buf, const Line& line, bool closed) noexcept {
    return piece(buf, [&](Clipped& text) { closed ? putHeader(text, line) : putLabel(text, line); });
}

int32_t elementLine(BixWriteBuf& buf, const Line& line, uint32_t index, bool closed) noexcept {
    return piece(buf, [&](Clipped& text) {
        putElement(text, line, index);
        if (closed) {
            text.put(line.sep);
        }
    });
}

int32_t byteLine(BixWriteBuf& buf, const Line& line, uint8_t value) noexcept {
    return piece(buf, [&](Clipped& text) {
        putOpening(text, line);
        putByte(text, value);
        text.put(line.sep);
    });
}

int32_t signedLine(BixWriteBuf& buf, const Line& line, int32_t value) noexcept {
    return piece(buf, [&](Clipped& text) {
        putOpening(text, line);
        putNumber(text, value);
        text.put(line.sep);
    });
}

int32_t unsignedLine(BixWriteBuf& buf, const Line& line, uint64_t value) noexcept {
    return piece(buf, [&](Clipped& text) {
        putOpening(text, line);
        putNumber(text, value);
        text.put(line.sep);
    });
}

int32_t textLine(BixWriteBuf& buf, const Line& line, const char* value, size_t length) noexcept {
    return piece(buf, [&](Clipped& text) {
        putOpening(text, line);
        text.put(value, length);
        text.put(line.sep);
    });
}

int32_t arrayOpening(BixWriteBuf& buf, const Line& line, int64_t count) noexcept {
    return piece(buf, [&](Clipped& text) { putArrayOpening(text, line, count); });
}

int32_t arrayLine(BixWriteBuf& buf, const Line& line, const uint8_t* bytes, size_t count) noexcept {
    if (const int32_t result = arrayOpening(buf, line, static_cast<int64_t>(count))) {
        return result;
    }
    for (size_t i = 0; i < count; ++i) {
        const char* const item = BYTE_ITEMS.text[bytes[i]];
        if (const int32_t result = piece(buf, [&](Clipped& text) { text.put(item, BYTE_ITEM); })) {
            return result;
        }
    }
    return buf.writeCharWithNull(line.sep);
}

} // namespace Korvan::detail

namespace Korvan::BixBufUtil {

namespace {

detail::Line makeLine(int indent, char sep, const char* label) {
    return {indent, sep, label, std::strlen(label)};
}

} // namespace

int32_t printVariable(BixWriteBuf& buf, int indent, char sep, const char* label, const char* format,
                      ...) noexcept {
    const detail::Line line = makeLine(indent, sep, label);
    int32_t result = BIX_ERR_WRITE_OVERFLOW;
    va_list ap;
    va_start(ap, format);
    if (std::strcmp(format, "%lu") == 0) { // the platform's own "%lu" may be 32 bits wide
        result = detail::unsignedLine(buf, line, va_arg(ap, uint64_t));
    } else {
        va_list measured;
        va_copy(measured, ap);
        const int length = std::vsnprintf(nullptr, 0, format, measured);
        va_end(measured);
        if (length >= 0) {
            result = detail::piece(buf, [&](detail::Clipped& text) {
                detail::putOpening(text, line);
                text.print(static_cast<size_t>(length), format, ap);
                text.put(line.sep);
            });
        }
    }
    va_end(ap);
    return result;
}

int32_t printVariable(BixWriteBuf& buf, int indent, char sep, const char* label, bool flag) noexcept {
    return detail::headerLine(buf, makeLine(indent, sep, label), flag);
}

int32_t printVariable(BixWriteBuf& buf, int indent, char sep, const char* label, uint32_t index,
                      bool flag) noexcept {
    return detail::elementLine(buf, makeLine(indent, sep, label), index, flag);
}

int32_t printString(BixWriteBuf& buf, int indent, char sep, const char* label, const char* value) noexcept {
    return detail::textLine(buf, makeLine(indent, sep, label), value, std::strlen(value));
}

int32_t printArray(BixWriteBuf& buf, int indent, char sep, const char* label, int64_t count) noexcept {
    return detail::arrayOpening(buf, makeLine(indent, sep, label), count);
}

} // namespace Korvan::BixBufUtil
