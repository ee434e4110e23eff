/// @file
/// Private: the engine that constructs, packs and unpacks, unrolled from the tables at compile time.
///
/// A run of integers of one version is one check of the room and straight stores: in memory they lie as they
/// travel, but for the order of their bytes. If the run does not fit, the same integers go one by one through
/// the buffer's own operations, so that result, cursor and partial output are those of the plain way.
#ifndef KORVAN_PROTOCOL_CODEC_H
#define KORVAN_PROTOCOL_CODEC_H

#include "protocol/Schema.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace cs_relay_msg::codec {

using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;
using schema::Field;
using schema::Kind;
using schema::Progress;
using schema::Type;

// ---- Fields in memory ----

template <size_t Width>
struct Unsigned;
template <>
struct Unsigned<1> {
    using type = uint8_t;
};
template <>
struct Unsigned<2> {
    using type = uint16_t;
};
template <>
struct Unsigned<4> {
    using type = uint32_t;
};
template <>
struct Unsigned<8> {
    using type = uint64_t;
};

/// The type of the bits of field @p I.
template <const Type& R, size_t I>
using Bits = typename Unsigned<R.fields[I].width>::type;

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE Bits<R, I> load(const char* record) {
    Bits<R, I> value;
    std::memcpy(&value, record + R.fields[I].offset, sizeof(value));
    return value;
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE void store(char* record, Bits<R, I> value) {
    std::memcpy(record + R.fields[I].offset, &value, sizeof(value));
}

/// The count of the array that is field @p I.
template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE size_t loadCount(const char* record) {
    return load<R, static_cast<size_t>(R.fields[I].countField)>(record);
}

// ---- What is known at compile time ----

/// The end of the run that begins at @p first: integers of one version, or the field at @p first alone.
constexpr size_t runEnd(const Type& type, size_t first) {
    size_t end = first + 1;
    if (type.fields[first].kind == Kind::Scalar) {
        while (end < type.fieldCount && type.fields[end].kind == Kind::Scalar &&
               type.fields[end].since == type.fields[first].since) {
            ++end;
        }
    }
    return end;
}

// ---- Construct ----

template <const Type& R, size_t... I>
KORVAN_ALWAYS_INLINE void constructFields(char* record, std::index_sequence<I...>);

/// Sets every field to its default.
template <const Type& R>
KORVAN_ALWAYS_INLINE void construct(char* record) {
    if constexpr (R.zeroDefault) {
        std::memset(record, 0, R.size);
    } else {
        constructFields<R>(record, std::make_index_sequence<R.fieldCount>());
    }
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE void constructField(char* record) {
    constexpr const Field& field = R.fields[I];
    char* const member = record + field.offset;
    if constexpr (field.kind == Kind::Scalar) {
        store<R, I>(record, static_cast<Bits<R, I>>(field.defaultValue));
    } else if constexpr (field.kind == Kind::String) {
        *member = '\0';
    } else if constexpr (field.kind == Kind::Bytes) {
        std::memset(member, 0, field.size());
    } else {
        for (size_t i = 0; i < field.bound; ++i) {
            construct<*field.type>(member + i * field.width);
        }
    }
}

template <const Type& R, size_t... I>
KORVAN_ALWAYS_INLINE void constructFields(char* record, std::index_sequence<I...>) {
    (constructField<R, I>(record), ...);
}

// ---- Cursors ----

/// Copies @p count bytes, and no byte more, by two moves of a @p Block that overlap.
template <class Block>
KORVAN_ALWAYS_INLINE void copyByTwo(char* to, const char* from, size_t count) {
    Block first;
    Block last;
    std::memcpy(&first, from, sizeof(Block));
    std::memcpy(&last, from + count - sizeof(Block), sizeof(Block));
    std::memcpy(to, &first, sizeof(Block));
    std::memcpy(to + count - sizeof(Block), &last, sizeof(Block));
}

/// Copies @p count bytes, and no byte more; the two places may overlap.
KORVAN_ALWAYS_INLINE void copyBytes(char* to, const char* from, size_t count) {
    if (count > 32) {
        std::memmove(to, from, count);
    } else if (count >= 16) {
        copyByTwo<KORVAN_BLOCK16>(to, from, count);
    } else if (count >= 8) {
        copyByTwo<uint64_t>(to, from, count);
    } else if (count >= 4) {
        copyByTwo<uint32_t>(to, from, count);
    } else if (count >= 2) {
        copyByTwo<uint16_t>(to, from, count);
    } else if (count == 1) {
        *to = *from;
    }
}

/// A buffer's fields, held in registers. Only the plain way makes a buffer of them.
template <class Buffer, class Char>
struct Cursor {
    Char* begin;
    size_t position;
    size_t length;
    size_t end; ///< `length`, or `position` if that is corrupted: there is no room then, and all goes the
                ///< plain way

    KORVAN_ALWAYS_INLINE Cursor(Char* buf, size_t used, size_t size)
        : begin(buf), position(used), length(size), end(used + Korvan::detail::room(used, size)) {}

    KORVAN_ALWAYS_INLINE bool has(uint64_t count) const { return KORVAN_LIKELY(end - position >= count); }
    KORVAN_ALWAYS_INLINE Char* at() const { return begin + position; }

    /// Goes on from where an operation on these fields got.
    KORVAN_ALWAYS_INLINE int32_t follow(Progress progress) {
        position = progress.position;
        return progress.result;
    }

    /// Does @p operation on a buffer, which may assert.
    template <class Operation>
    KORVAN_ALWAYS_INLINE int32_t plainly(Operation operation) {
        Buffer buffer(begin, length);
        buffer.position = position;
        const int32_t result = operation(buffer);
        position = buffer.position;
        return result;
    }
};

/// The code with which the plain way ends where the straight one did not fit: there it always fails. That the
/// compiler sees this spares it the way back.
KORVAN_ALWAYS_INLINE int32_t failure(int32_t result, int32_t otherwise) {
    return result != Korvan::BIX_OK ? result : otherwise;
}

using Out = Cursor<BixWriteBuf, char>;
using In = Cursor<BixReadBuf, const char>;

// ---- Pack ----

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t packScalar(const char* record, BixWriteBuf& out) {
    const auto value = load<R, I>(record);
    if constexpr (R.fields[I].isSigned) {
        return out.writeInt32(static_cast<int32_t>(value));
    } else if constexpr (sizeof(value) == 1) {
        return out.writeUInt8(value);
    } else if constexpr (sizeof(value) == 2) {
        return out.writeUInt16(value);
    } else if constexpr (sizeof(value) == 4) {
        return out.writeUInt32(value);
    } else {
        return out.writeUInt64(value);
    }
}

template <const Type& R, size_t First, size_t... I>
KORVAN_ALWAYS_INLINE int32_t packRun(const char* record, Out& out, std::index_sequence<I...>) {
    constexpr size_t width = (R.fields[First + I].size() + ...);
    if (out.has(width)) {
        (Korvan::detail::storeBig(out.at() + (R.fields[First + I].offset - R.fields[First].offset),
                                  load<R, First + I>(record)),
         ...);
        out.position += width;
        return Korvan::BIX_OK;
    }
    return failure(out.plainly([=](BixWriteBuf& buffer) {
        int32_t result = Korvan::BIX_OK;
        (void)(((result = packScalar<R, First + I>(record, buffer)) == Korvan::BIX_OK) && ...);
        return result;
    }),
                   Korvan::BIX_ERR_WRITE_OVERFLOW);
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t packBytes(const char* record, Out& out, size_t count) {
    const char* const bytes = record + R.fields[I].offset;
    if (out.has(count)) {
        copyBytes(out.at(), bytes, count);
        out.position += count;
        return Korvan::BIX_OK;
    }
    return failure(out.plainly([=](BixWriteBuf& buffer) { return buffer.writeBytes(bytes, count); }),
                   Korvan::BIX_ERR_WRITE_OVERFLOW);
}

/// The bytes of a text and its NUL. The last character of the array becomes NUL, but is stored to only where
/// it is not, so that a record in read-only memory or shared by threads is left alone.
KORVAN_ALWAYS_INLINE size_t terminatedSize(const char* text, size_t capacity) {
    if (text[capacity - 1] != '\0') {
        const_cast<char*>(text)[capacity - 1] = '\0';
    }
    return std::strlen(text) + 1;
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t packString(const char* record, Out& out) {
    constexpr const Field& field = R.fields[I];
    constexpr size_t prefix = sizeof(uint32_t);
    const char* const text = record + field.offset;
    if (out.has(prefix)) {
        const size_t count = terminatedSize(text, field.bound);
        if (out.has(prefix + count)) {
            copyBytes(out.at() + prefix, text, count);
            Korvan::detail::storeBig(out.at(), static_cast<uint32_t>(count));
            out.position += prefix + count;
            return Korvan::BIX_OK;
        }
    }
    return failure(out.plainly([=](BixWriteBuf& buffer) {
        const size_t start = buffer.getUsedSize();
        if (const int32_t result = buffer.reserve(prefix)) {
            return result;
        }
        const size_t count = terminatedSize(text, field.bound);
        if (const int32_t result = buffer.writeBytes(text, count)) {
            return result;
        }
        return buffer.writeUInt32(static_cast<uint32_t>(count), start);
    }),
                   Korvan::BIX_ERR_WRITE_OVERFLOW);
}

template <const Type& R>
KORVAN_ALWAYS_INLINE int32_t pack(const void* record, Out& out, uint32_t cutVer);

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t packField(const char* record, Out& out, uint32_t version) {
    constexpr const Field& field = R.fields[I];
    if constexpr (field.kind == Kind::Scalar) {
        return packRun<R, I>(record, out, std::make_index_sequence<runEnd(R, I) - I>());
    } else if constexpr (field.kind == Kind::String) {
        return packString<R, I>(record, out);
    } else if constexpr (field.kind == Kind::Record) {
        return pack<*field.type>(record + field.offset, out, version);
    } else {
        const size_t count = loadCount<R, I>(record);
        if (count > field.bound) {
            return Korvan::BIX_ERR_COUNT_OUT_OF_RANGE;
        }
        if constexpr (field.kind == Kind::Bytes) {
            return packBytes<R, I>(record, out, count);
        } else {
            const char* element = record + field.offset;
            for (size_t i = 0; i < count; ++i, element += field.width) {
                if (const int32_t result = pack<*field.type>(element, out, version)) {
                    return result;
                }
            }
            return Korvan::BIX_OK;
        }
    }
}

/// Packs the fields from @p I on.
template <const Type& R, size_t I = 0>
KORVAN_ALWAYS_INLINE int32_t packFields(const char* record, Out& out, uint32_t version) {
    if constexpr (I < R.fieldCount) {
        if (version >= R.fields[I].since) {
            if (const int32_t result = packField<R, I>(record, out, version)) {
                return result;
            }
        }
        return packFields<R, runEnd(R, I)>(record, out, version);
    } else {
        return Korvan::BIX_OK;
    }
}

/// Packs a record.
template <const Type& R>
KORVAN_ALWAYS_INLINE int32_t pack(const void* record, Out& out, uint32_t cutVer) {
    const uint32_t version = R.effectiveVersion(cutVer);
    if (version < schema::BASE_VERSION) {
        return Korvan::BIX_ERR_VERSION_TOO_OLD;
    }
    return packFields<R>(static_cast<const char*>(record), out, version);
}

// ---- Unpack ----

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t unpackScalar(char* record, BixReadBuf& in) {
    auto value = load<R, I>(record);
    int32_t result = Korvan::BIX_OK;
    if constexpr (R.fields[I].isSigned) {
        int32_t number = static_cast<int32_t>(value);
        result = in.readInt32(number);
        value = static_cast<uint32_t>(number);
    } else if constexpr (sizeof(value) == 1) {
        result = in.readUInt8(value);
    } else if constexpr (sizeof(value) == 2) {
        result = in.readUInt16(value);
    } else if constexpr (sizeof(value) == 4) {
        result = in.readUInt32(value);
    } else {
        result = in.readUInt64(value);
    }
    store<R, I>(record, value);
    return result;
}

template <const Type& R, size_t First, size_t... I>
KORVAN_ALWAYS_INLINE int32_t unpackRun(char* record, In& in, std::index_sequence<I...>) {
    constexpr size_t width = (R.fields[First + I].size() + ...);
    if (in.has(width)) {
        (store<R, First + I>(record, Korvan::detail::loadBig<Bits<R, First + I>>(
                                         in.at() + (R.fields[First + I].offset - R.fields[First].offset))),
         ...);
        in.position += width;
        return Korvan::BIX_OK;
    }
    return failure(in.plainly([=](BixReadBuf& buffer) {
        int32_t result = Korvan::BIX_OK;
        (void)(((result = unpackScalar<R, First + I>(record, buffer)) == Korvan::BIX_OK) && ...);
        return result;
    }),
                   Korvan::BIX_ERR_READ_UNDERFLOW);
}

template <const Type& R, size_t First, size_t... I>
KORVAN_ALWAYS_INLINE void defaultRun(char* record, std::index_sequence<I...>) {
    (store<R, First + I>(record, static_cast<Bits<R, First + I>>(R.fields[First + I].defaultValue)), ...);
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t unpackBytes(char* record, In& in, size_t count) {
    char* const bytes = record + R.fields[I].offset;
    if (in.has(count)) {
        copyBytes(bytes, in.at(), count);
        in.position += count;
        return Korvan::BIX_OK;
    }
    return failure(in.plainly([=](BixReadBuf& buffer) { return buffer.readBytes(bytes, count); }),
                   Korvan::BIX_ERR_READ_UNDERFLOW);
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t unpackString(char* record, In& in) {
    constexpr const Field& field = R.fields[I];
    uint32_t length = 0;
    if (!in.has(sizeof(length))) {
        return failure(in.plainly([](BixReadBuf& buffer) {
            uint32_t missing = 0;
            return buffer.readUInt32(missing);
        }),
                       Korvan::BIX_ERR_READ_UNDERFLOW);
    }
    length = Korvan::detail::loadBig<uint32_t>(in.at());
    in.position += sizeof(length);
    if (!in.has(length)) {
        return Korvan::BIX_ERR_READ_UNDERFLOW;
    }
    if (length > field.bound) {
        return Korvan::BIX_ERR_STRING_TOO_LONG;
    }
    if (length == 0) {
        return Korvan::BIX_ERR_STRING_EMPTY;
    }
    // strlen only once the last byte is known to be NUL.
    const bool wellFormed = in.at()[length - 1] == '\0' && std::strlen(in.at()) + 1 == length;
    copyBytes(record + field.offset, in.at(), length);
    in.position += length;
    return wellFormed ? Korvan::BIX_OK : Korvan::BIX_ERR_STRING_MALFORMED;
}

template <const Type& R>
KORVAN_ALWAYS_INLINE int32_t unpack(void* record, In& in, uint32_t cutVer);

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE int32_t unpackField(char* record, In& in, uint32_t version) {
    constexpr const Field& field = R.fields[I];
    if constexpr (field.kind == Kind::Scalar) {
        return unpackRun<R, I>(record, in, std::make_index_sequence<runEnd(R, I) - I>());
    } else if constexpr (field.kind == Kind::String) {
        return unpackString<R, I>(record, in);
    } else if constexpr (field.kind == Kind::Record) {
        return unpack<*field.type>(record + field.offset, in, version);
    } else {
        const size_t count = loadCount<R, I>(record);
        if (count > field.bound) {
            return Korvan::BIX_ERR_COUNT_OUT_OF_RANGE;
        }
        if constexpr (field.kind == Kind::Bytes) {
            return unpackBytes<R, I>(record, in, count);
        } else {
            char* element = record + field.offset;
            for (size_t i = 0; i < count; ++i, element += field.width) {
                if (const int32_t result = unpack<*field.type>(element, in, version)) {
                    return result;
                }
            }
            return Korvan::BIX_OK;
        }
    }
}

/// Unpacks the fields from @p I on.
template <const Type& R, size_t I = 0>
KORVAN_ALWAYS_INLINE int32_t unpackFields(char* record, In& in, uint32_t version) {
    if constexpr (I < R.fieldCount) {
        if (version >= R.fields[I].since) {
            if (const int32_t result = unpackField<R, I>(record, in, version)) {
                return result;
            }
        } else if constexpr (R.fields[I].kind == Kind::Scalar) {
            defaultRun<R, I>(record, std::make_index_sequence<runEnd(R, I) - I>());
        }
        return unpackFields<R, runEnd(R, I)>(record, in, version);
    } else {
        return Korvan::BIX_OK;
    }
}

/// Unpacks a record.
template <const Type& R>
KORVAN_ALWAYS_INLINE int32_t unpack(void* record, In& in, uint32_t cutVer) {
    const uint32_t version = R.effectiveVersion(cutVer);
    if (version < schema::BASE_VERSION) {
        return Korvan::BIX_ERR_VERSION_TOO_OLD;
    }
    return unpackFields<R>(static_cast<char*>(record), in, version);
}

} // namespace cs_relay_msg::codec

#endif
