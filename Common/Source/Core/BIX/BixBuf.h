/// @file
/// Cursors over the caller's memory: `BixWriteBuf` writes, `BixReadBuf` reads, both bounds-checked and
/// big-endian.
///
/// Neither grows, allocates or throws. Every operation that can fail returns a result code (BixResult.h), 0
/// for success. On failure the cursor stays where it was and nothing is written or stored; only text output
/// may leave a truncated, terminated piece of text behind the cursor, as each operation says.
///
/// Both keep the invariant `position <= length`. Every bounds-checked operation asserts it on entry with the
/// platform's `assert`; with assertions compiled out (NDEBUG) a buffer whose cursor was corrupted has no
/// room.
#ifndef KORVAN_BIX_BUF_H
#define KORVAN_BIX_BUF_H

#include "Common/Source/Core/BIX/BixCompiler.h"
#include "Common/Source/Core/BIX/BixResult.h"

#include <cassert>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>

// A client and the library may be built with different settings of NDEBUG. So that the linker never has to
// choose between two bodies of one function, everything here that asserts is inlined, or is a template of
// this flag.
#ifdef NDEBUG
#define KORVAN_BIX_ASSERTS false
#else
#define KORVAN_BIX_ASSERTS true
#endif

// Each operation asserts for itself, since the report names the function in which the assertion stands.
#if defined(_WIN32) && !defined(NDEBUG)
#define KORVAN_BIX_ASSERT_CURSOR()                                                                           \
    do { /* the handler here reports no function */                                                          \
        if (position > length)                                                                               \
            std::fprintf(stderr, "%s: ", __func__);                                                          \
        assert(position <= length);                                                                          \
    } while (false)
#else
#define KORVAN_BIX_ASSERT_CURSOR() assert(position <= length)
#endif

namespace Korvan {

namespace detail {

/// The bytes between cursor and end; none when the cursor is corrupted.
KORVAN_ALWAYS_INLINE size_t room(size_t position, size_t length) noexcept {
    return position > length ? 0 : length - position;
}

template <class T, size_t... Byte>
KORVAN_ALWAYS_INLINE void storeBig(char* to, T value, std::index_sequence<Byte...>) noexcept {
    ((to[Byte] = static_cast<char>(static_cast<uint8_t>(value >> (8 * (sizeof(T) - 1 - Byte))))), ...);
}

/// Stores @p value, most significant byte first.
template <class T>
KORVAN_ALWAYS_INLINE void storeBig(char* to, T value) noexcept {
    storeBig(to, value, std::make_index_sequence<sizeof(T)>());
}

template <class T, size_t... Byte>
KORVAN_ALWAYS_INLINE T loadBig(const char* from, std::index_sequence<Byte...>) noexcept {
    return static_cast<T>(
        ((static_cast<T>(static_cast<uint8_t>(from[Byte])) << (8 * (sizeof(T) - 1 - Byte))) | ...));
}

/// Loads the value whose most significant byte stands first.
template <class T>
KORVAN_ALWAYS_INLINE T loadBig(const char* from) noexcept {
    return loadBig<T>(from, std::make_index_sequence<sizeof(T)>());
}

} // namespace detail

/// A cursor that writes into memory of the caller's.
///
/// The buffer owns nothing unless `ownsBuffer` is set, which nothing in this library does. The fields are
/// public so that a caller may inspect them; change them through the operations only.
class BixWriteBuf {
public:
    char* beginPtr;  ///< start of the memory, null for an empty buffer
    size_t position; ///< bytes written so far: the next byte goes to `beginPtr[position]`
    size_t length;   ///< bytes of room in all, 0 when `beginPtr` is null
    bool ownsBuffer; ///< whether the destructor releases `beginPtr` with `delete[]`

    /// A buffer over @p size bytes at @p buf, which stay the caller's. A null @p buf gives an empty buffer.
    KORVAN_ALWAYS_INLINE BixWriteBuf(char* buf, size_t size) noexcept : ownsBuffer(false) { _set(buf, size); }

    /// Releases the memory if, and only if, the buffer owns it.
    KORVAN_ALWAYS_INLINE ~BixWriteBuf() {
        if (ownsBuffer) {
            _free();
        }
    }

    // A copy of an owning buffer would release its block twice.
    BixWriteBuf(const BixWriteBuf&) = delete;
    BixWriteBuf& operator=(const BixWriteBuf&) = delete;

    /// Starts again over other memory. Releases nothing and leaves `ownsBuffer` as it is.
    KORVAN_ALWAYS_INLINE void _set(char* buf, size_t size) noexcept {
        beginPtr = buf;
        position = 0;
        length = buf != nullptr ? size : 0;
    }

    /// Releases the memory with `delete[]` unless it is null; the buffer then owns nothing and its `beginPtr`
    /// is null. `position` and `length` stay as they were: call `_set` before the next write.
    KORVAN_ALWAYS_INLINE void _free() noexcept {
        delete[] beginPtr; // which does nothing when it is null
        ownsBuffer = false;
        beginPtr = nullptr;
    }

    /// The start of the memory.
    KORVAN_ALWAYS_INLINE char* getBeginPtr() const noexcept { return beginPtr; }
    /// The bytes written so far.
    KORVAN_ALWAYS_INLINE size_t getUsedSize() const noexcept { return position; }
    /// The bytes of room in all, used ones included.
    KORVAN_ALWAYS_INLINE size_t getTotalSize() const noexcept { return length; }

    /// Appends one byte. -1 if no byte of room is left.
    KORVAN_ALWAYS_INLINE int32_t writeUInt8(uint8_t v) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return append(v);
    }

    /// The same as `writeUInt8`.
    KORVAN_ALWAYS_INLINE int32_t writeUChar(uint8_t v) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return writeUInt8(v);
    }

    /// Appends 2 bytes, most significant first. -1 if they do not fit.
    KORVAN_ALWAYS_INLINE int32_t writeUInt16(uint16_t v) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return append(v);
    }

    /// Appends 4 bytes, most significant first. -1 if they do not fit.
    KORVAN_ALWAYS_INLINE int32_t writeUInt32(uint32_t v) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return append(v);
    }

    /// Appends the two's complement bits of @p v as `writeUInt32` does.
    KORVAN_ALWAYS_INLINE int32_t writeInt32(int32_t v) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return writeUInt32(static_cast<uint32_t>(v));
    }

    /// Appends 8 bytes, most significant first. -1 if they do not fit.
    KORVAN_ALWAYS_INLINE int32_t writeUInt64(uint64_t v) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return append(v);
    }

    /// Appends @p n bytes as they are; @p src may overlap the buffer. -8 if @p src is null, even for 0 bytes;
    /// -1 if they do not fit.
    KORVAN_ALWAYS_INLINE int32_t writeBytes(const void* src, size_t n) noexcept {
        if (src == nullptr) {
            return BIX_ERR_NULL_POINTER;
        }
        KORVAN_BIX_ASSERT_CURSOR();
        if (room() < n) {
            return BIX_ERR_WRITE_OVERFLOW;
        }
        if (n != 0) { // a null buffer takes 0 bytes, but memmove takes no null pointer
            std::memmove(beginPtr + position, src, n);
        }
        position += n;
        return BIX_OK;
    }

    /// Skips @p n bytes, to be filled by a write at a position; they keep what the memory held. -1 if they do
    /// not fit.
    KORVAN_ALWAYS_INLINE int32_t reserve(size_t n) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        if (position > length) {
            return BIX_ERR_WRITE_OVERFLOW;
        }
        if (room() < n) {
            return BIX_ERR_WRITE_OVERFLOW;
        }
        position += n;
        return BIX_OK;
    }

    /// Appends the character @p c and leaves a NUL behind it that does not count as written: needs 2 bytes of
    /// room and advances by 1. -1 if there are fewer.
    KORVAN_ALWAYS_INLINE int32_t writeCharWithNull(char c) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        if (room() < 2) {
            return BIX_ERR_WRITE_OVERFLOW;
        }
        beginPtr[position] = c;
        beginPtr[position + 1] = '\0';
        position += 1;
        return BIX_OK;
    }

    /// Appends text as `printf` formats it and leaves a NUL behind it that does not count as written.
    ///
    /// -1 if text and NUL do not fit: the cursor then stays, and what room there is holds the truncated text
    /// and a NUL. Also -1 if the formatter refuses.
    template <bool Asserts = KORVAN_BIX_ASSERTS>
    KORVAN_PRINTF(2, 3)
    int32_t textize(const char* fmt, ...) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        va_list ap;
        va_start(ap, fmt);
        const int32_t result = format(fmt, ap);
        va_end(ap);
        return result;
    }

    /// The same as `textize`, with the arguments in a `va_list`.
    KORVAN_PRINTF(2, 0)
    KORVAN_ALWAYS_INLINE int32_t vtextize(const char* fmt, va_list ap) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return format(fmt, ap);
    }

    /// Writes 4 bytes, most significant first, at @p pos bytes from the start, anywhere below `length`; the
    /// cursor stays. -1 if they do not fit there.
    KORVAN_ALWAYS_INLINE int32_t writeUInt32(uint32_t v, size_t pos) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return patch(v, pos);
    }

    /// Writes one byte at @p pos bytes from the start, anywhere below `length`; the cursor stays. -1 if @p
    /// pos is not below `length`.
    KORVAN_ALWAYS_INLINE int32_t writeUInt8(uint8_t v, size_t pos) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return patch(v, pos);
    }

    /// The same as `writeUInt8` at a position, for a character.
    KORVAN_ALWAYS_INLINE int32_t writeChar(char c, size_t pos) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return writeUInt8(static_cast<uint8_t>(c), pos);
    }

private:
    KORVAN_ALWAYS_INLINE size_t room() const noexcept { return detail::room(position, length); }

    template <class T>
    KORVAN_ALWAYS_INLINE int32_t append(T v) noexcept {
        if (room() < sizeof(T)) {
            return BIX_ERR_WRITE_OVERFLOW;
        }
        detail::storeBig(beginPtr + position, v);
        position += sizeof(T);
        return BIX_OK;
    }

    template <class T>
    KORVAN_ALWAYS_INLINE int32_t patch(T v, size_t pos) noexcept {
        if (pos > length || length - pos < sizeof(T)) {
            return BIX_ERR_WRITE_OVERFLOW;
        }
        detail::storeBig(beginPtr + pos, v);
        return BIX_OK;
    }

    KORVAN_PRINTF(2, 0)
    KORVAN_ALWAYS_INLINE int32_t format(const char* fmt, va_list ap) noexcept {
        const size_t free = room();
        // No pointer past the memory is ever formed: without room the formatter gets none.
        const int count = std::vsnprintf(free != 0 ? beginPtr + position : nullptr, free, fmt, ap);
        if (count < 0 || static_cast<size_t>(count) >= free) {
            return BIX_ERR_WRITE_OVERFLOW;
        }
        position += static_cast<size_t>(count);
        return BIX_OK;
    }
};

/// A cursor that reads memory of the caller's, which it never changes and never releases.
class BixReadBuf {
public:
    const char* beginPtr; ///< start of the bytes, null for an empty buffer
    size_t position;      ///< bytes read so far: the next byte is `beginPtr[position]`
    size_t length;        ///< bytes there are in all, 0 when `beginPtr` is null

    /// A buffer over @p size bytes at @p buf, which must outlive it. A null @p buf gives an empty buffer.
    KORVAN_ALWAYS_INLINE BixReadBuf(const char* buf, size_t size) noexcept { set(buf, size); }

    /// Starts again over other bytes.
    KORVAN_ALWAYS_INLINE void set(const char* buf, size_t size) noexcept {
        beginPtr = buf;
        position = 0;
        length = buf != nullptr ? size : 0;
    }

    /// The bytes read so far.
    KORVAN_ALWAYS_INLINE size_t getUsedSize() const noexcept { return position; }

    /// The bytes not yet read.
    KORVAN_ALWAYS_INLINE size_t getLeftSize() const noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return room();
    }

    /// Reads one byte. -2 if none is left; @p v then stays as it was.
    KORVAN_ALWAYS_INLINE int32_t readUInt8(uint8_t& v) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return take(v);
    }

    /// The same as `readUInt8`.
    KORVAN_ALWAYS_INLINE int32_t readUChar(uint8_t& v) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return readUInt8(v);
    }

    /// Reads 2 bytes, most significant first. -2 if fewer are left; @p v then stays as it was.
    KORVAN_ALWAYS_INLINE int32_t readUInt16(uint16_t& v) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return take(v);
    }

    /// Reads 4 bytes, most significant first. -2 if fewer are left; @p v then stays as it was.
    KORVAN_ALWAYS_INLINE int32_t readUInt32(uint32_t& v) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return take(v);
    }

    /// Reads 4 bytes as `readUInt32` does and takes them as two's complement bits.
    KORVAN_ALWAYS_INLINE int32_t readInt32(int32_t& v) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        uint32_t bits = static_cast<uint32_t>(v);
        const int32_t result = readUInt32(bits);
        v = static_cast<int32_t>(bits);
        return result;
    }

    /// Reads 8 bytes, most significant first. -2 if fewer are left; @p v then stays as it was.
    KORVAN_ALWAYS_INLINE int32_t readUInt64(uint64_t& v) noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        return take(v);
    }

    /// Copies the next @p n bytes as they are; @p dst may overlap the buffer. -8 if @p dst is null, even for
    /// 0 bytes; -2 if fewer are left, and @p dst then stays as it was.
    KORVAN_ALWAYS_INLINE int32_t readBytes(void* dst, size_t n) noexcept {
        if (dst == nullptr) {
            return BIX_ERR_NULL_POINTER;
        }
        KORVAN_BIX_ASSERT_CURSOR();
        if (room() < n) {
            return BIX_ERR_READ_UNDERFLOW;
        }
        if (n != 0) { // a null buffer gives 0 bytes, but memmove takes no null pointer
            std::memmove(dst, beginPtr + position, n);
        }
        position += n;
        return BIX_OK;
    }

    /// Looks at the byte @p pos bytes from the start, before or behind the cursor, which stays. -2 if @p pos
    /// is not below `length`; @p v then stays as it was.
    KORVAN_ALWAYS_INLINE int32_t readUInt8(uint8_t& v, size_t pos) const noexcept {
        KORVAN_BIX_ASSERT_CURSOR();
        if (pos > length || length - pos < sizeof(v)) {
            return BIX_ERR_READ_UNDERFLOW;
        }
        v = detail::loadBig<uint8_t>(beginPtr + pos);
        return BIX_OK;
    }

private:
    KORVAN_ALWAYS_INLINE size_t room() const noexcept { return detail::room(position, length); }

    template <class T>
    KORVAN_ALWAYS_INLINE int32_t take(T& v) noexcept {
        if (room() < sizeof(T)) {
            return BIX_ERR_READ_UNDERFLOW;
        }
        v = detail::loadBig<T>(beginPtr + position);
        position += sizeof(T);
        return BIX_OK;
    }
};

} // namespace Korvan

#undef KORVAN_BIX_ASSERT_CURSOR
#undef KORVAN_BIX_ASSERTS

#endif
