/// @file
/// Private: the fields of a record in memory, and `construct`, unrolled from the tables at compile time.
///
/// There are two ways to pack and to unpack. The straight way (Straight.h) is quick and either succeeds or
/// gives up. What it gave up goes once more, from the start, the plain way (Plain.h), which goes field by
/// field through the buffer's own operations: result, cursor and what is left after a failure come from there
/// alone. That is allowed since the straight way, as far as it gets, stores what the plain way stores as
/// well.
#ifndef KORVAN_PROTOCOL_CODEC_H
#define KORVAN_PROTOCOL_CODEC_H

#include "protocol/Schema.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace cs_relay_msg::codec {

using schema::Field;
using schema::Kind;
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

/// The end of the fields of one kind and version that begin at @p first.
constexpr size_t kindEnd(const Type& type, size_t first) {
    size_t end = first + 1;
    while (end < type.fieldCount && type.fields[end].kind == type.fields[first].kind &&
           type.fields[end].since == type.fields[first].since) {
        ++end;
    }
    return end;
}

/// The end of the run that begins at @p first: integers of one version, or the field at @p first alone.
constexpr size_t runEnd(const Type& type, size_t first) {
    return type.fields[first].kind == Kind::Scalar ? kindEnd(type, first) : first + 1;
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

// ---- Bytes and texts ----

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

/// The same for twice as many bytes, by four moves. All are read before the first is written.
KORVAN_ALWAYS_INLINE void copyByFour(char* to, const char* from, size_t count) {
    constexpr size_t size = sizeof(KORVAN_BLOCK16);
    const char* const fromEnd = from + count;
    char* const toEnd = to + count;
    KORVAN_BLOCK16 a;
    KORVAN_BLOCK16 b;
    KORVAN_BLOCK16 c;
    KORVAN_BLOCK16 d;
    std::memcpy(&a, from, size);
    std::memcpy(&b, from + size, size);
    std::memcpy(&c, fromEnd - 2 * size, size);
    std::memcpy(&d, fromEnd - size, size);
    std::memcpy(to, &a, size);
    std::memcpy(to + size, &b, size);
    std::memcpy(toEnd - 2 * size, &c, size);
    std::memcpy(toEnd - size, &d, size);
}

/// Copies @p count bytes, and no byte more; the two places may overlap.
KORVAN_ALWAYS_INLINE void copyBytes(char* to, const char* from, size_t count) {
    if (!KORVAN_LIKELY(count <= 64)) {
        std::memmove(to, from, count);
    } else if (count > 32) {
        copyByFour(to, from, count);
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

/// The last character of the array becomes NUL, but is stored to only where it is not, so that a record in
/// read-only memory or shared by threads is left alone.
KORVAN_ALWAYS_INLINE void terminate(const char* text, size_t capacity) {
    if (text[capacity - 1] != '\0') {
        const_cast<char*>(text)[capacity - 1] = '\0';
    }
}

} // namespace cs_relay_msg::codec

#endif
