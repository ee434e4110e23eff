/// @file
/// Private: the straight way to pack and to unpack, unrolled from the tables at compile time.
///
/// Integers of one version, and the bytes that their last one counts, and the integers behind those, are one
/// check of the room and straight moves. Whatever does not fit or is malformed makes it give up: the plain
/// way finds out what to do about it. Until then nothing was stored that the plain way would not have stored.
#ifndef KORVAN_PROTOCOL_STRAIGHT_H
#define KORVAN_PROTOCOL_STRAIGHT_H

#include "protocol/Codec.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace cs_relay_msg::straight {

using codec::copyBytes;
using codec::load;
using codec::loadCount;
using codec::runEnd;
using codec::store;
using schema::Field;
using schema::Kind;
using schema::Type;

/// What is left of a buffer: where the next byte goes or stands, and the bytes from there on.
template <class Char>
struct Rest {
    Char* at;
    size_t size;

    KORVAN_ALWAYS_INLINE bool has(uint64_t count) const { return KORVAN_LIKELY(size >= count); }
    KORVAN_ALWAYS_INLINE void skip(size_t count) {
        at += count;
        size -= count;
    }
};
using Out = Rest<char>;
using In = Rest<const char>;

// ---- Runs of integers ----

template <const Type& R, size_t First, size_t... I>
constexpr size_t widthOf(std::index_sequence<I...>) {
    return (R.fields[First + I].size() + ... + 0);
}

/// The integers from field @p First to before field @p End.
template <const Type& R, size_t First, size_t End>
struct Run {
    static constexpr std::make_index_sequence<End - First> EACH{};
    static constexpr size_t WIDTH = widthOf<R, First>(EACH);

    static KORVAN_ALWAYS_INLINE void pack(const char* record, char* to) { pack(record, to, EACH); }
    static KORVAN_ALWAYS_INLINE void unpack(char* record, const char* from) { unpack(record, from, EACH); }
    static KORVAN_ALWAYS_INLINE void construct(char* record) { construct(record, EACH); }

private:
    /// In memory they lie as they travel, but for the order of their bytes.
    template <size_t I>
    static constexpr size_t PLACE = R.fields[First + I].offset - R.fields[First].offset;

    template <size_t... I>
    static KORVAN_ALWAYS_INLINE void pack([[maybe_unused]] const char* record, [[maybe_unused]] char* to,
                                          std::index_sequence<I...>) {
        (Korvan::detail::storeBig(to + PLACE<I>, load<R, First + I>(record)), ...);
    }
    template <size_t... I>
    static KORVAN_ALWAYS_INLINE void unpack([[maybe_unused]] char* record, [[maybe_unused]] const char* from,
                                            std::index_sequence<I...>) {
        (store<R, First + I>(record, Korvan::detail::loadBig<codec::Bits<R, First + I>>(from + PLACE<I>)),
         ...);
    }
    template <size_t... I>
    static KORVAN_ALWAYS_INLINE void construct(char* record, std::index_sequence<I...>) {
        (codec::constructField<R, First + I>(record), ...);
    }
};

/// What goes by one check: the integers of one version from field @p First on; then, if they count bytes,
/// those and the integers of the same version behind them.
template <const Type& R, size_t First>
struct Stretch {
    static constexpr size_t BYTES = runEnd(R, First);
    static constexpr bool HAS_BYTES = BYTES < R.fieldCount && R.fields[BYTES].kind == Kind::Bytes &&
                                      R.fields[BYTES].since == R.fields[First].since;
    static constexpr size_t TAIL = HAS_BYTES ? BYTES + 1 : BYTES;
    static constexpr bool HAS_TAIL = HAS_BYTES && TAIL < R.fieldCount &&
                                     R.fields[TAIL].kind == Kind::Scalar &&
                                     R.fields[TAIL].since == R.fields[First].since;
    static constexpr size_t END = HAS_TAIL ? runEnd(R, TAIL) : TAIL;

    using Head = Run<R, First, BYTES>;
    using Tail = Run<R, TAIL, END>;
    static constexpr size_t FIXED = Head::WIDTH + Tail::WIDTH;
};

/// The field behind what goes together with field @p I.
template <const Type& R, size_t I>
constexpr size_t after() {
    if constexpr (R.fields[I].kind == Kind::Scalar) {
        return Stretch<R, I>::END;
    } else {
        return I + 1;
    }
}

/// The same where texts are packed, which go together if they stand together.
template <const Type& R, size_t I>
constexpr size_t afterPacked() {
    if constexpr (R.fields[I].kind == Kind::String) {
        return codec::kindEnd(R, I);
    } else {
        return after<R, I>();
    }
}

// ---- Pack ----

/// What `textSize` is where the array does not end in NUL: seldom, and so out of the way.
inline KORVAN_COLD size_t cutSize(const char* text, size_t capacity) {
    const void* const nul = std::memchr(text, '\0', capacity - 1);
    return nul != nullptr ? static_cast<size_t>(static_cast<const char*>(nul) - text) + 1 : capacity;
}

/// The bytes of a text and its NUL, as far as there is room for both in the array.
KORVAN_ALWAYS_INLINE size_t textSize(const char* text, size_t capacity) {
    return KORVAN_LIKELY(text[capacity - 1] == '\0') ? std::strlen(text) + 1 : cutSize(text, capacity);
}

template <const Type& R, size_t First>
KORVAN_ALWAYS_INLINE bool packStretch(const char* record, Out& out) {
    using S = Stretch<R, First>;
    if constexpr (S::HAS_BYTES) {
        constexpr const Field& bytes = R.fields[S::BYTES];
        const size_t count = loadCount<R, S::BYTES>(record);
        if (!KORVAN_LIKELY(count <= bytes.bound) || !out.has(S::FIXED + count)) {
            return false;
        }
        S::Head::pack(record, out.at);
        copyBytes(out.at + S::Head::WIDTH, record + bytes.offset, count);
        S::Tail::pack(record, out.at + S::Head::WIDTH + count);
        out.skip(S::FIXED + count);
    } else {
        if (!out.has(S::FIXED)) {
            return false;
        }
        S::Head::pack(record, out.at);
        out.skip(S::FIXED);
    }
    return true;
}

/// Packs the texts from field @p First on. Their sizes are found before anything is stored: that is quicker
/// than to look for the end of a text while the one before is being copied.
template <const Type& R, size_t First, size_t... I>
KORVAN_ALWAYS_INLINE bool packTexts(const char* record, Out& out, std::index_sequence<I...>) {
    constexpr size_t prefix = sizeof(uint32_t);
    const size_t sizes[] = {textSize(record + R.fields[First + I].offset, R.fields[First + I].bound)...};
    if (!out.has(((prefix + sizes[I]) + ...))) {
        return false;
    }
    ((codec::terminate(record + R.fields[First + I].offset, R.fields[First + I].bound),
      // before its length, should the record lie in the buffer
      std::memmove(out.at + prefix, record + R.fields[First + I].offset, sizes[I]),
      Korvan::detail::storeBig(out.at, static_cast<uint32_t>(sizes[I])), out.skip(prefix + sizes[I])),
     ...);
    return true;
}

template <const Type& R, size_t I = 0>
KORVAN_ALWAYS_INLINE bool pack(const char* record, Out& out, uint32_t version);

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE bool packField(const char* record, Out& out, uint32_t version) {
    constexpr const Field& field = R.fields[I];
    if constexpr (field.kind == Kind::Scalar) {
        return packStretch<R, I>(record, out);
    } else if constexpr (field.kind == Kind::String) {
        return packTexts<R, I>(record, out, std::make_index_sequence<afterPacked<R, I>() - I>());
    } else if constexpr (field.kind == Kind::Record) {
        return pack<*field.type>(record + field.offset, out, version);
    } else {
        static_assert(field.kind == Kind::RecordArray, "bytes go with their count");
        const size_t count = loadCount<R, I>(record);
        if (!KORVAN_LIKELY(count <= field.bound)) {
            return false;
        }
        const char* element = record + field.offset;
        for (size_t i = 0; i < count; ++i, element += field.width) {
            if (!pack<*field.type>(element, out, version)) {
                return false;
            }
        }
        return true;
    }
}

/// Packs the fields from @p I on, at an effective version.
template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE bool pack(const char* record, Out& out, uint32_t version) {
    if constexpr (I < R.fieldCount) {
        constexpr bool always = R.fields[I].since <= schema::BASE_VERSION;
        return ((!always && version < R.fields[I].since) || packField<R, I>(record, out, version)) &&
               pack<R, afterPacked<R, I>()>(record, out, version);
    } else {
        return true;
    }
}

// ---- Unpack ----

template <const Type& R, size_t First>
KORVAN_ALWAYS_INLINE bool unpackStretch(char* record, In& in) {
    using S = Stretch<R, First>;
    if (!in.has(S::FIXED)) {
        return false;
    }
    if constexpr (S::HAS_BYTES) {
        constexpr const Field& bytes = R.fields[S::BYTES];
        constexpr const Field& counter = R.fields[static_cast<size_t>(bytes.countField)];
        const size_t count = Korvan::detail::loadBig<codec::Bits<R, static_cast<size_t>(bytes.countField)>>(
            in.at + (counter.offset - R.fields[First].offset));
        if (!KORVAN_LIKELY(count <= bytes.bound) || !in.has(S::FIXED + count)) {
            return false;
        }
        S::Head::unpack(record, in.at);
        copyBytes(record + bytes.offset, in.at + S::Head::WIDTH, count);
        S::Tail::unpack(record, in.at + S::Head::WIDTH + count);
        in.skip(S::FIXED + count);
    } else {
        S::Head::unpack(record, in.at);
        in.skip(S::FIXED);
    }
    return true;
}

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE bool unpackString(char* record, In& in) {
    constexpr const Field& field = R.fields[I];
    constexpr size_t prefix = sizeof(uint32_t);
    if (!in.has(prefix)) {
        return false;
    }
    const size_t length = Korvan::detail::loadBig<uint32_t>(in.at);
    const char* const text = in.at + prefix;
    // strlen only once the last byte is known to be NUL.
    if (length - 1 >= field.bound || in.size - prefix < length || text[length - 1] != '\0' ||
        std::strlen(text) + 1 != length) {
        return false;
    }
    std::memmove(record + field.offset, text, length);
    in.skip(prefix + length);
    return true;
}

template <const Type& R, size_t I = 0>
KORVAN_ALWAYS_INLINE bool unpack(char* record, In& in, uint32_t version);

template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE bool unpackField(char* record, In& in, uint32_t version) {
    constexpr const Field& field = R.fields[I];
    if constexpr (field.kind == Kind::Scalar) {
        return unpackStretch<R, I>(record, in);
    } else if constexpr (field.kind == Kind::String) {
        return unpackString<R, I>(record, in);
    } else if constexpr (field.kind == Kind::Record) {
        return unpack<*field.type>(record + field.offset, in, version);
    } else {
        static_assert(field.kind == Kind::RecordArray, "bytes go with their count");
        const size_t count = loadCount<R, I>(record);
        if (!KORVAN_LIKELY(count <= field.bound)) {
            return false;
        }
        char* element = record + field.offset;
        for (size_t i = 0; i < count; ++i, element += field.width) {
            if (!unpack<*field.type>(element, in, version)) {
                return false;
            }
        }
        return true;
    }
}

/// Unpacks the fields from @p I on, at an effective version.
template <const Type& R, size_t I>
KORVAN_ALWAYS_INLINE bool unpack(char* record, In& in, uint32_t version) {
    if constexpr (I < R.fieldCount) {
        if (R.fields[I].since <= schema::BASE_VERSION || version >= R.fields[I].since) {
            if (!unpackField<R, I>(record, in, version)) {
                return false;
            }
        } else if constexpr (R.fields[I].kind == Kind::Scalar) {
            Run<R, I, runEnd(R, I)>::construct(record);
        }
        return unpack<R, after<R, I>()>(record, in, version);
    } else {
        return true;
    }
}

} // namespace cs_relay_msg::straight

#endif
