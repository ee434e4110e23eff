/// @file
/// Memory for the targets: blocks of exactly the size asked for, so that a sanitizer sees the first byte
/// outside, and what MemorySanitizer is told about them.
#ifndef KORVAN_FUZZ_MEMORY_H
#define KORVAN_FUZZ_MEMORY_H

#include "fuzz/Case.h"
#include "protocol/Schema.h"

#include <cstddef>
#include <cstring>
#include <memory>

#if defined(__has_feature)
#if __has_feature(memory_sanitizer)
#include <sanitizer/msan_interface.h>
#define KORVAN_FUZZ_MSAN
#endif
#endif

namespace fuzz {

/// A block of the heap, of exactly this size.
class Block {
public:
    explicit Block(size_t size) : size_(size), bytes_(new char[size]) {}
    Block(const void* bytes, size_t size) : Block(size) { copy(bytes); }

    char* data() { return bytes_.get(); }
    const char* data() const { return bytes_.get(); }
    size_t size() const { return size_; }

    void copy(const void* bytes) {
        if (size_ != 0) {
            std::memcpy(bytes_.get(), bytes, size_);
        }
    }
    void fill(char value) { std::memset(bytes_.get(), value, size_); }

private:
    size_t size_;
    std::unique_ptr<char[]> bytes_;
};

inline bool same(const void* a, const void* b, size_t size) {
    return size == 0 || std::memcmp(a, b, size) == 0;
}

/// From here on the bytes count as never set, where that is watched.
inline void forget([[maybe_unused]] void* bytes, [[maybe_unused]] size_t size) {
#ifdef KORVAN_FUZZ_MSAN
    __msan_allocated_memory(bytes, size);
#endif
}

/// The bytes count as set, whatever they hold.
inline void accept([[maybe_unused]] const void* bytes, [[maybe_unused]] size_t size) {
#ifdef KORVAN_FUZZ_MSAN
    __msan_unpoison(bytes, size);
#endif
}

/// Stops if one of the bytes was made from bytes that were never set, where that is watched.
inline void requireSet([[maybe_unused]] const void* bytes, [[maybe_unused]] size_t size) {
#ifdef KORVAN_FUZZ_MSAN
    __msan_check_mem_is_initialized(bytes, size);
#endif
}

/// A record of the type, the same memory each time: number 0 to 2. Nothing is known of what it holds.
char* recordOf(const cs_relay_msg::schema::Type& type, size_t number = 0);

/// The bytes of the record's memory that the case can concern, from its start: of a message not the whole
/// body, which is half a megabyte, but the member that is selected before unpack or after.
size_t extentOf(const Case& input);

/// What the record's memory holds before an operation, as far as the case can concern it: noise, the same for
/// each run, in which a NUL is rare.
void fillWithNoise(const Case& input, char* record);

} // namespace fuzz

#endif
