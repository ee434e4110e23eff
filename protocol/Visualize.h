/// @file
/// Private: the engine that renders records as text, unrolled from the tables at compile time.
///
/// As for `pack` there is a straight way, taken only where the longest text possible fits, and a plain way
/// with the same result for every room. Both put the lines together by the line writer of BixLine.h.
#ifndef KORVAN_PROTOCOL_VISUALIZE_H
#define KORVAN_PROTOCOL_VISUALIZE_H

#include "Common/Source/Core/BIX/BixLine.h"
#include "protocol/Codec.h"
#include "protocol/Scalar.h"

#include <climits>
#include <cstdint>
#include <cstring>

namespace cs_relay_msg::codec {

using Korvan::BixWriteBuf;
using schema::Progress;
using namespace Korvan::detail;

/// A buffer's fields, held in registers. Only the plain way makes a buffer of them.
struct Out {
    char* begin;
    size_t position;
    size_t length;
    size_t end; ///< `length`, or `position` if that is corrupted: there is no room then, and all goes the
                ///< plain way

    KORVAN_ALWAYS_INLINE Out(char* buf, size_t used, size_t size)
        : begin(buf), position(used), length(size), end(used + room(used, size)) {}

    KORVAN_ALWAYS_INLINE bool has(uint64_t count) const { return KORVAN_LIKELY(end - position >= count); }
    KORVAN_ALWAYS_INLINE char* at() const { return begin + position; }

    /// Goes on from where an operation on these fields got.
    KORVAN_ALWAYS_INLINE int32_t follow(Progress progress) {
        position = progress.position;
        return progress.result;
    }

    /// Does @p operation on a buffer, which may assert.
    template <class Operation>
    KORVAN_ALWAYS_INLINE int32_t plainly(Operation operation) {
        BixWriteBuf buffer(begin, length);
        buffer.position = position;
        const int32_t result = operation(buffer);
        position = buffer.position;
        return result;
    }
};

/// The indentation of what a record at @p indent contains.
KORVAN_ALWAYS_INLINE int deeper(int indent) {
    return indent < 0 || indent == INT_MAX ? indent : indent + 1;
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE Line lineOf(int indent, char sep) {
    static_assert(R.fields[I].labelLength >= BLANKS_AT_ONCE - 1, "see Straight::blanks");
    return {indent, sep, R.fields[I].label, R.fields[I].labelLength};
}

/// More than any line of field @p I has behind its indentation, a value of any length left out, and its NUL.
template <const Type& R, size_t I>
constexpr uint64_t LINE_MOST = R.fields[I].labelLength + MAX_DIGITS + 8;

/// The straight way's text at the cursor.
KORVAN_ALWAYS_INLINE Straight textAt(const Out& out) {
    return {out.at()};
}

/// Ends text of the straight way: a NUL behind it, and the cursor there.
KORVAN_ALWAYS_INLINE int32_t endText(Out& out, const Straight& text) {
    *text.at = '\0';
    out.position = static_cast<size_t>(text.at - out.begin);
    return Korvan::BIX_OK;
}

KORVAN_ALWAYS_INLINE int32_t visualizeHeader(Out& out, const Line& line) {
    if (out.has(blanksOf(line.indent) + line.labelLength + 2)) {
        Straight text = textAt(out);
        putHeader(text, line);
        return endText(out, text);
    }
    return out.plainly([=](BixWriteBuf& buffer) { return headerLine(buffer, line, true); });
}

// ---- One field ----

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE void putScalar(Straight& text, const char* record, const Line& line) {
    const auto value = load<R, I>(record);
    putOpening(text, line);
    if constexpr (sizeof(value) == 1) {
        putByte(text, value);
    } else if constexpr (R.fields[I].isSigned) {
        putNumber(text, static_cast<int32_t>(value));
    } else {
        putNumber(text, value);
    }
    text.put(line.sep);
}

inline int32_t scalarLine(BixWriteBuf& buffer, const Field& field, const char* record, const Line& line) {
    const uint64_t bits = scalar::load(field, record);
    return field.width == 1 ? byteLine(buffer, line, static_cast<uint8_t>(bits))
           : field.isSigned ? signedLine(buffer, line, static_cast<int32_t>(bits))
                            : unsignedLine(buffer, line, bits);
}

/// Renders the integers from field @p first to before field @p end, the plain way.
inline KORVAN_COLD Progress scalarLines(const Type& type, size_t first, size_t end, const char* record,
                                        Out out, int indent, char sep) {
    const int32_t result = out.plainly([&](BixWriteBuf& buffer) {
        for (size_t i = first; i < end; ++i) {
            const Field& field = type.fields[i];
            const Line line{indent, sep, field.label, field.labelLength};
            if (const int32_t failed = scalarLine(buffer, field, record, line)) {
                return failed;
            }
        }
        return Korvan::BIX_OK;
    });
    return {out.position, result};
}

template <const Type& R, size_t First, size_t... I>
KORVAN_ALWAYS_INLINE int32_t visualizeRun(const char* record, Out& out, int indent, char sep,
                                          std::index_sequence<I...>) {
    if (out.has(sizeof...(I) * blanksOf(indent) + (LINE_MOST<R, First + I> + ...))) {
        Straight text = textAt(out);
        (putScalar<R, First + I>(text, record, lineOf<R, First + I>(indent, sep)), ...);
        return endText(out, text);
    }
    return out.follow(scalarLines(R, First, First + sizeof...(I), record, out, indent, sep));
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t visualizeString(const char* record, Out& out, const Line& line) {
    constexpr const Field& field = R.fields[I];
    const char* const value = record + field.offset;
    const void* const nul = std::memchr(value, '\0', field.bound); // none: the whole array is text
    const size_t length =
        nul != nullptr ? static_cast<size_t>(static_cast<const char*>(nul) - value) : field.bound;
    if (out.has(blanksOf(line.indent) + LINE_MOST<R, I> + length)) {
        Straight text = textAt(out);
        putOpening(text, line);
        text.put(value, length);
        text.put(line.sep);
        return endText(out, text);
    }
    return out.plainly([=](BixWriteBuf& buffer) { return textLine(buffer, line, value, length); });
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t visualizeBytes(const char* record, Out& out, const Line& line, size_t count) {
    const auto* const bytes = reinterpret_cast<const uint8_t*>(record + R.fields[I].offset);
    if (out.has(blanksOf(line.indent) + LINE_MOST<R, I> + count * BYTE_ITEM)) {
        Straight text = textAt(out);
        putArrayOpening(text, line, static_cast<int64_t>(count));
        text.byteItems(bytes, count);
        text.put(line.sep);
        return endText(out, text);
    }
    return out.plainly([=](BixWriteBuf& buffer) { return arrayLine(buffer, line, bytes, count); });
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t visualizeElementHeader(Out& out, const Line& line, uint32_t index) {
    if (out.has(blanksOf(line.indent) + LINE_MOST<R, I>)) {
        Straight text = textAt(out);
        putElement(text, line, index);
        text.put(line.sep);
        return endText(out, text);
    }
    return out.plainly([=](BixWriteBuf& buffer) { return elementLine(buffer, line, index, true); });
}

template <const Type& R>
KORVAN_ALWAYS_INLINE int32_t visualize(const void* record, Out& out, int indent, char sep);

/// Whether a contained record is unrolled into its container; one with elements of its own is called.
constexpr bool isInlined(const Type& type) {
    for (const Field& field : type) {
        if (field.kind == Kind::RecordArray) {
            return false;
        }
    }
    return true;
}

/// Renders a record that is contained in another, behind its header.
template <const Type& R>
KORVAN_ALWAYS_INLINE int32_t visualizeContained(const char* record, Out& out, int indent, char sep) {
    if constexpr (isInlined(R)) {
        return visualize<R>(record, out, indent, sep);
    } else {
        return out.follow(R.visualizeAt(record, out.begin, out.position, out.length, indent, sep));
    }
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t visualizeElements(const char* record, Out& out, const Line& line, size_t count) {
    constexpr const Field& field = R.fields[I];
    const char* element = record + field.offset;
    for (uint32_t i = 0; i < count; ++i, element += field.width) {
        if (const int32_t result = visualizeElementHeader<R, I>(out, line, i)) {
            return result;
        }
        if (const int32_t result =
                visualizeContained<*field.type>(element, out, deeper(line.indent), line.sep)) {
            return result;
        }
    }
    return Korvan::BIX_OK;
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t visualizeField(const char* record, Out& out, int indent, char sep) {
    constexpr const Field& field = R.fields[I];
    const Line line = lineOf<R, I>(indent, sep);
    if constexpr (field.kind == Kind::Scalar) {
        return visualizeRun<R, I>(record, out, indent, sep, std::make_index_sequence<runEnd(R, I) - I>());
    } else if constexpr (field.kind == Kind::String) {
        return visualizeString<R, I>(record, out, line);
    } else if constexpr (field.kind == Kind::Record) {
        if (const int32_t result = visualizeHeader(out, line)) {
            return result;
        }
        return visualizeContained<*field.type>(record + field.offset, out, deeper(indent), sep);
    } else {
        const size_t count = loadCount<R, I>(record);
        if (count > field.bound) {
            return Korvan::BIX_ERR_COUNT_OUT_OF_RANGE;
        }
        if constexpr (field.kind == Kind::Bytes) {
            return visualizeBytes<R, I>(record, out, line, count);
        } else {
            return visualizeElements<R, I>(record, out, line, count);
        }
    }
}

/// Renders the fields from @p I on.
template <const Type& R, size_t I = 0>
KORVAN_ALWAYS_INLINE int32_t visualizeFields(const char* record, Out& out, int indent, char sep) {
    if constexpr (I < R.fieldCount) {
        if (const int32_t result = visualizeField<R, I>(record, out, indent, sep)) {
            return result;
        }
        return visualizeFields<R, runEnd(R, I)>(record, out, indent, sep);
    } else {
        return Korvan::BIX_OK;
    }
}

/// Renders a record.
template <const Type& R>
KORVAN_ALWAYS_INLINE int32_t visualize(const void* record, Out& out, int indent, char sep) {
    return visualizeFields<R>(static_cast<const char*>(record), out, indent, sep);
}

} // namespace cs_relay_msg::codec

#endif
