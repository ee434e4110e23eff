/// @file
/// Private: the engine that renders records as text, unrolled from the tables at compile time.
///
/// As in Codec.h there is a straight way, taken only where the longest text possible fits, and a plain way
/// with the same result for every room. Both put the lines together by the line writer of BixLine.h.
#ifndef KORVAN_PROTOCOL_VISUALIZE_H
#define KORVAN_PROTOCOL_VISUALIZE_H

#include "Common/Source/Core/BIX/BixLine.h"
#include "protocol/Codec.h"

#include <climits>
#include <cstdint>
#include <cstring>

namespace cs_relay_msg::codec {

using Korvan::detail::Line;
using Korvan::detail::Straight;

/// The indentation of what a record at @p indent contains.
KORVAN_ALWAYS_INLINE int deeper(int indent) {
    return indent < 0 || indent == INT_MAX ? indent : indent + 1;
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE Line lineOf(int indent, char sep) {
    static_assert(R.fields[I].labelLength >= Korvan::detail::BLANKS_AT_ONCE - 1, "see Straight::blanks");
    return {indent, sep, R.fields[I].label, R.fields[I].labelLength};
}

/// More than any line of field @p I has behind its indentation, a value of any length left out, and its NUL.
template <const Type& R, size_t I>
constexpr uint64_t LINE_MOST = R.fields[I].labelLength + Korvan::detail::MAX_DIGITS + 8;

/// Puts pieces of text at the cursor if @p most characters, the NUL among them, fit.
template <class Put>
KORVAN_ALWAYS_INLINE bool straight(Out& out, uint64_t most, Put put) {
    if (out.end - out.position < most) {
        return false;
    }
    Straight text{out.at()};
    put(text);
    *text.at = '\0';
    out.position = static_cast<size_t>(text.at - out.begin);
    return true;
}

KORVAN_ALWAYS_INLINE int32_t visualizeHeader(const Line& line, Out& out) {
    const uint64_t most = Korvan::detail::blanksOf(line.indent) + line.labelLength + 2;
    if (straight(out, most, [&](Straight& text) { putHeader(text, line); })) {
        return Korvan::BIX_OK;
    }
    return out.plainly([&](BixWriteBuf& buffer) { return headerLine(buffer, line, true); });
}

// ---- One field ----

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE void putScalar(Straight& text, const char* record, const Line& line) {
    const auto value = load<R, I>(record);
    putLine(text, line, [&] {
        if constexpr (sizeof(value) == 1) {
            putByte(text, value);
        } else if constexpr (R.fields[I].isSigned) {
            putNumber(text, static_cast<int32_t>(value));
        } else {
            putNumber(text, value);
        }
    });
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t scalarLine(BixWriteBuf& buffer, const char* record, const Line& line) {
    const auto value = load<R, I>(record);
    if constexpr (sizeof(value) == 1) {
        return byteLine(buffer, line, value);
    } else if constexpr (R.fields[I].isSigned) {
        return signedLine(buffer, line, static_cast<int32_t>(value));
    } else {
        return unsignedLine(buffer, line, value);
    }
}

template <const Type& R, size_t First, size_t... I>
KORVAN_ALWAYS_INLINE int32_t visualizeRun(const char* record, Out& out, int indent, char sep,
                                          std::index_sequence<I...>) {
    const uint64_t most = sizeof...(I) * Korvan::detail::blanksOf(indent) + (LINE_MOST<R, First + I> + ...);
    if (straight(out, most, [&](Straight& text) {
            (putScalar<R, First + I>(text, record, lineOf<R, First + I>(indent, sep)), ...);
        })) {
        return Korvan::BIX_OK;
    }
    return out.plainly([&](BixWriteBuf& buffer) {
        int32_t result = Korvan::BIX_OK;
        (void)(((result = scalarLine<R, First + I>(buffer, record, lineOf<R, First + I>(indent, sep))) ==
                Korvan::BIX_OK) &&
               ...);
        return result;
    });
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t visualizeString(const char* record, Out& out, const Line& line) {
    constexpr const Field& field = R.fields[I];
    const char* const value = record + field.offset;
    const void* const nul = std::memchr(value, '\0', field.bound); // none: the whole array is text
    const size_t length =
        nul != nullptr ? static_cast<size_t>(static_cast<const char*>(nul) - value) : field.bound;
    const uint64_t most = Korvan::detail::blanksOf(line.indent) + LINE_MOST<R, I> + length;
    if (straight(out, most, [&](Straight& text) { putLine(text, line, [&] { text.put(value, length); }); })) {
        return Korvan::BIX_OK;
    }
    return out.plainly([&](BixWriteBuf& buffer) { return textLine(buffer, line, value, length); });
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t visualizeBytes(const char* record, Out& out, const Line& line, size_t count) {
    const auto* const bytes = reinterpret_cast<const uint8_t*>(record + R.fields[I].offset);
    const uint64_t most =
        Korvan::detail::blanksOf(line.indent) + LINE_MOST<R, I> + count * Korvan::detail::BYTE_ITEM;
    if (straight(out, most, [&](Straight& text) {
            putArrayOpening(text, line, static_cast<int64_t>(count));
            text.byteItems(bytes, count);
            text.put(line.sep);
        })) {
        return Korvan::BIX_OK;
    }
    return out.plainly([&](BixWriteBuf& buffer) { return arrayLine(buffer, line, bytes, count); });
}

template <const Type& R, size_t I = 0>
KORVAN_ALWAYS_INLINE int32_t visualizeFields(const char* record, Out& out, int indent, char sep);

/// Renders a record that is contained in another, behind its header.
template <const Type& R>
KORVAN_ALWAYS_INLINE int32_t visualizeContained(const char* record, Out& out, int indent, char sep) {
    if constexpr (isInlined(R)) {
        return visualizeFields<R>(record, out, indent, sep);
    } else {
        return out.plainly([&](BixWriteBuf& buffer) { return R.visualize(record, buffer, indent, sep); });
    }
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t visualizeElements(const char* record, Out& out, const Line& line, size_t count) {
    constexpr const Field& field = R.fields[I];
    const uint64_t most = Korvan::detail::blanksOf(line.indent) + LINE_MOST<R, I>;
    const char* element = record + field.offset;
    for (uint32_t i = 0; i < count; ++i, element += field.width) {
        if (!straight(out, most, [&](Straight& text) {
                putElement(text, line, i);
                text.put(line.sep);
            })) {
            if (const int32_t result =
                    out.plainly([&](BixWriteBuf& buffer) { return elementLine(buffer, line, i, true); })) {
                return result;
            }
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
        if (const int32_t result = visualizeHeader(line, out)) {
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
template <const Type& R, size_t I>
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
KORVAN_ALWAYS_INLINE int32_t visualize(const char* record, BixWriteBuf& buffer, int indent, char sep) {
    Out out(buffer);
    const int32_t result = visualizeFields<R>(record, out, indent, sep);
    out.giveBack();
    return result;
}

} // namespace cs_relay_msg::codec

#endif
