/// @file
/// Private: the line writer. It says once what each kind of line consists of; the text-dump helpers are its
/// faces.
///
/// A line goes into one of two sinks. `Straight` stores without looking, for a caller that knows that the
/// line and a NUL fit. `Clipped` keeps what fits and counts the rest, as one bounded print would; the
/// functions at the end use it, and what they leave after -1 is told in BixBufUtil.h.
#ifndef KORVAN_BIX_LINE_H
#define KORVAN_BIX_LINE_H

#include "Common/Source/Core/BIX/BixBuf.h"

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <type_traits>

namespace Korvan::detail {

constexpr size_t MAX_DIGITS = 20; ///< of a 64-bit value; a sign and 19 digits are as many
constexpr size_t BYTE_ITEM = 5;   ///< " 0x" and two digits
constexpr size_t BLANKS_AT_ONCE = 8;

/// The blanks of an indentation level: two for each, none for a negative one.
constexpr uint64_t blanksOf(int indent) {
    return indent > 0 ? static_cast<uint64_t>(indent) * 2 : 0;
}

/// "00" to "99", one behind the other.
struct DigitPairs {
    char text[200];
    constexpr DigitPairs() : text() {
        for (int i = 0; i < 100; ++i) {
            text[2 * i] = static_cast<char>('0' + i / 10);
            text[2 * i + 1] = static_cast<char>('0' + i % 10);
        }
    }
};
inline constexpr DigitPairs DIGIT_PAIRS;

/// " 0x00" to " 0xff", each with room to be moved by one 8-byte move.
struct ByteItems {
    char text[256][8];
    constexpr ByteItems() : text() {
        for (int i = 0; i < 256; ++i) {
            text[i][0] = ' ';
            text[i][1] = '0';
            text[i][2] = 'x';
            text[i][3] = "0123456789abcdef"[i / 16];
            text[i][4] = "0123456789abcdef"[i % 16];
        }
    }
};
inline constexpr ByteItems BYTE_ITEMS;

template <class T>
constexpr size_t digitsOf(T value) {
    size_t digits = 1;
    for (; value >= 100; value /= 100) {
        digits += 2;
    }
    return digits + (value >= 10);
}
static_assert(digitsOf(UINT64_MAX) == MAX_DIGITS, "MAX_DIGITS is not what the largest value has");

/// Stores text that is known to fit.
struct Straight {
    char* at;

    KORVAN_ALWAYS_INLINE void put(char c) { *at++ = c; }
    KORVAN_ALWAYS_INLINE void put(const char* text, size_t length) {
        std::memcpy(at, text, length);
        at += length;
    }
    /// Stores up to 7 blanks too many: at least as many characters must follow.
    KORVAN_ALWAYS_INLINE void blanks(uint64_t count) {
        for (uint64_t done = 0; done < count; done += BLANKS_AT_ONCE) {
            std::memcpy(at + done, "        ", BLANKS_AT_ONCE);
        }
        at += count;
    }
    /// Stores 8 characters for each item but the last, the next item over the 3 too many.
    KORVAN_ALWAYS_INLINE void byteItems(const uint8_t* bytes, size_t count) {
        for (size_t i = 1; i < count; ++i, at += BYTE_ITEM) {
            std::memcpy(at, BYTE_ITEMS.text[bytes[i - 1]], sizeof(BYTE_ITEMS.text[0]));
        }
        if (count != 0) {
            put(BYTE_ITEMS.text[bytes[count - 1]], BYTE_ITEM);
        }
    }
    template <class T>
    KORVAN_ALWAYS_INLINE void decimal(T value) {
        at += digitsOf(value);
        char* to = at;
        for (; value >= 100; value /= 100) {
            to -= 2;
            std::memcpy(to, DIGIT_PAIRS.text + value % 100 * 2, 2);
        }
        if (value >= 10) {
            std::memcpy(to - 2, DIGIT_PAIRS.text + value * 2, 2);
        } else {
            to[-1] = static_cast<char>('0' + value);
        }
    }
};

/// Keeps as much as there is room for, and counts all of it.
struct Clipped {
    char* at;
    size_t free; ///< room for text: one byte less than the room left, for the NUL
    uint64_t needed = 0;

    void put(char c) { put(&c, 1); }
    void put(const char* text, size_t length) {
        const size_t kept = length < free ? length : free;
        std::memcpy(at, text, kept);
        advance(kept, length);
    }
    void blanks(uint64_t count) {
        const size_t kept = count < free ? static_cast<size_t>(count) : free;
        std::memset(at, ' ', kept);
        advance(kept, count);
    }
    template <class T>
    void decimal(T value) {
        char digits[MAX_DIGITS];
        Straight straight{digits};
        straight.decimal(value);
        put(digits, static_cast<size_t>(straight.at - digits));
    }
    void print(size_t length, const char* format, va_list ap) {
        std::vsnprintf(at, free + 1, format, ap);
        advance(length < free ? length : free, length);
    }
    void advance(size_t kept, uint64_t length) {
        at += kept;
        free -= kept;
        needed += length;
    }
};

/// What every line needs: how it begins and ends.
struct Line {
    int indent;
    char sep;
    const char* label;
    size_t labelLength;
};

// ---- What the lines consist of ----

template <class Sink>
KORVAN_ALWAYS_INLINE void putLabel(Sink& sink, const Line& line) {
    sink.blanks(blanksOf(line.indent));
    sink.put(line.label, line.labelLength);
}

/// What stands before the value of a line that has one. The separator follows the value.
template <class Sink>
KORVAN_ALWAYS_INLINE void putOpening(Sink& sink, const Line& line) {
    putLabel(sink, line);
    sink.put(": ", 2);
}

template <class Sink>
KORVAN_ALWAYS_INLINE void putHeader(Sink& sink, const Line& line) {
    putLabel(sink, line);
    sink.put(line.sep);
}

template <class Sink>
KORVAN_ALWAYS_INLINE void putElement(Sink& sink, const Line& line, uint32_t index) {
    putLabel(sink, line);
    sink.put('[');
    sink.decimal(index);
    sink.put(']');
}

/// As "0x%02x" prints it.
template <class Sink>
KORVAN_ALWAYS_INLINE void putByte(Sink& sink, uint8_t value) {
    sink.put(BYTE_ITEMS.text[value] + 1, BYTE_ITEM - 1);
}

/// As "%d", "%u" or "%lu" print it.
template <class Sink, class T>
KORVAN_ALWAYS_INLINE void putNumber(Sink& sink, T value) {
    using Bits = std::make_unsigned_t<T>;
    Bits bits = static_cast<Bits>(value);
    if constexpr (std::is_signed_v<T>) {
        if (value < 0) {
            sink.put('-');
            bits = static_cast<Bits>(0 - bits);
        }
    }
    sink.decimal(bits);
}

template <class Sink>
KORVAN_ALWAYS_INLINE void putArrayOpening(Sink& sink, const Line& line, int64_t count) {
    putLabel(sink, line);
    sink.put('(');
    putNumber(sink, count);
    sink.put("):", 2);
}

// ---- The same, whether it fits or not ----

int32_t headerLine(BixWriteBuf& buf, const Line& line, bool closed) noexcept;
int32_t elementLine(BixWriteBuf& buf, const Line& line, uint32_t index, bool closed) noexcept;
int32_t byteLine(BixWriteBuf& buf, const Line& line, uint8_t value) noexcept;
int32_t signedLine(BixWriteBuf& buf, const Line& line, int32_t value) noexcept;
int32_t unsignedLine(BixWriteBuf& buf, const Line& line, uint64_t value) noexcept;
int32_t textLine(BixWriteBuf& buf, const Line& line, const char* text, size_t length) noexcept;
int32_t arrayOpening(BixWriteBuf& buf, const Line& line, int64_t count) noexcept;

/// The whole line of a byte array. Each item is a piece of text of its own: after -1 the cursor stands behind
/// the last byte that fitted.
int32_t arrayLine(BixWriteBuf& buf, const Line& line, const uint8_t* bytes, size_t count) noexcept;

} // namespace Korvan::detail

#endif
