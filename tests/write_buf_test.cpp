// The write buffer: what each operation writes, needs and leaves behind.
#include "Common/Source/Core/BIX/BixBuf.h"
#include "tests/Bytes.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>
#include <type_traits>
#include <vector>

using Korvan::BixWriteBuf;
using korvan_test::Bytes;
using korvan_test::hex;

namespace {

constexpr int32_t OVERFLOW_ = Korvan::BIX_ERR_WRITE_OVERFLOW;

/// Memory with a pattern, and a buffer over its first bytes.
struct Target {
    std::string memory = std::string(16, '#');
    BixWriteBuf buf;

    explicit Target(size_t room) : buf(memory.data(), room) {}
    Bytes all() const { return Bytes(memory); }
};

struct Write {
    const char* name;
    size_t needs;
    size_t advances;
    std::string bytes;
    std::function<int32_t(BixWriteBuf&)> run;
};

/// Every appending operation, with the bytes that it writes.
const std::vector<Write>& writes() {
    static const std::vector<Write> all = {
        {"writeUInt8", 1, 1, hex("fe"), [](BixWriteBuf& b) { return b.writeUInt8(0xfe); }},
        {"writeUChar", 1, 1, hex("80"), [](BixWriteBuf& b) { return b.writeUChar(0x80); }},
        {"writeUInt16", 2, 2, hex("ab cd"), [](BixWriteBuf& b) { return b.writeUInt16(0xABCD); }},
        {"writeUInt32", 4, 4, hex("01 02 03 04"), [](BixWriteBuf& b) { return b.writeUInt32(0x01020304); }},
        {"writeInt32", 4, 4, hex("ff ff ff fe"), [](BixWriteBuf& b) { return b.writeInt32(-2); }},
        {"writeUInt64", 8, 8, hex("01 02 03 04 05 06 07 08"),
         [](BixWriteBuf& b) { return b.writeUInt64(0x0102030405060708); }},
        {"writeBytes", 3, 3, "xyz", [](BixWriteBuf& b) { return b.writeBytes("xyz", 3); }},
        {"reserve", 5, 5, "#####", [](BixWriteBuf& b) { return b.reserve(5); }},
        {"writeCharWithNull", 2, 1, std::string("c\0", 2),
         [](BixWriteBuf& b) { return b.writeCharWithNull('c'); }},
        {"textize", 4, 3, std::string("a=7\0", 4), [](BixWriteBuf& b) { return b.textize("a=%d", 7); }},
    };
    return all;
}

} // namespace

TEST(WriteBuf, HasItsFieldsInOrder) {
    static_assert(std::is_same_v<decltype(BixWriteBuf::beginPtr), char*>);
    static_assert(std::is_same_v<decltype(BixWriteBuf::position), size_t>);
    static_assert(std::is_same_v<decltype(BixWriteBuf::length), size_t>);
    static_assert(std::is_same_v<decltype(BixWriteBuf::ownsBuffer), bool>);
    EXPECT_LT(offsetof(BixWriteBuf, beginPtr), offsetof(BixWriteBuf, position));
    EXPECT_LT(offsetof(BixWriteBuf, position), offsetof(BixWriteBuf, length));
    EXPECT_LT(offsetof(BixWriteBuf, length), offsetof(BixWriteBuf, ownsBuffer));
}

TEST(WriteBuf, StartsEmptyOverTheCallersMemory) {
    char memory[8];
    const BixWriteBuf buf(memory, sizeof(memory));
    EXPECT_EQ(buf.getBeginPtr(), memory);
    EXPECT_EQ(buf.getUsedSize(), 0u);
    EXPECT_EQ(buf.getTotalSize(), 8u);
    EXPECT_FALSE(buf.ownsBuffer);
}

TEST(WriteBuf, EveryWriteGivesItsBytesAndMovesTheCursor) {
    for (const Write& write : writes()) {
        SCOPED_TRACE(write.name);
        Target target(16);
        EXPECT_EQ(write.run(target.buf), 0);
        EXPECT_EQ(target.buf.getUsedSize(), write.advances);
        Bytes expected(std::string(16, '#'));
        expected.replace(0, write.bytes.size(), write.bytes);
        EXPECT_EQ(target.all(), expected);
    }
}

TEST(WriteBuf, EveryWriteFitsExactly) {
    for (const Write& write : writes()) {
        SCOPED_TRACE(write.name);
        Target target(3 + write.needs);
        ASSERT_EQ(target.buf.reserve(3), 0);
        EXPECT_EQ(write.run(target.buf), 0);
        EXPECT_EQ(target.buf.getUsedSize(), 3 + write.advances);
        Bytes expected(std::string(16, '#'));
        expected.replace(3, write.bytes.size(), write.bytes);
        EXPECT_EQ(target.all(), expected);
    }
}

TEST(WriteBuf, EveryWriteRefusesOneByteLess) {
    for (const Write& write : writes()) {
        SCOPED_TRACE(write.name);
        Target target(3 + write.needs - 1);
        ASSERT_EQ(target.buf.reserve(3), 0);
        EXPECT_EQ(write.run(target.buf), OVERFLOW_);
        EXPECT_EQ(target.buf.getUsedSize(), 3u);
        Bytes expected(std::string(16, '#'));
        if (std::string(write.name) == "textize") {
            expected.replace(3, 3, std::string("a=\0", 3)); // what bounded formatting leaves
        }
        EXPECT_EQ(target.all(), expected);
    }
}

TEST(WriteBuf, IntegersGoOutMostSignificantByteFirst) {
    Target target(16);
    EXPECT_EQ(target.buf.writeUInt64(1), 0);
    EXPECT_EQ(target.buf.writeInt32(std::numeric_limits<int32_t>::min()), 0);
    EXPECT_EQ(target.buf.writeInt32(-1), 0);
    EXPECT_EQ(target.all(), hex("00 00 00 00 00 00 00 01  80 00 00 00  ff ff ff ff"));
}

TEST(WriteBuf, ThreeBytesOfRoomRefuseFourAndFourTakeThem) {
    Target three(3);
    EXPECT_EQ(three.buf.writeUInt32(0x01020304), OVERFLOW_);
    EXPECT_EQ(three.buf.getUsedSize(), 0u);
    EXPECT_EQ(three.all(), Bytes(std::string(16, '#')));
    Target four(4);
    EXPECT_EQ(four.buf.writeUInt32(0x01020304), 0);
    EXPECT_EQ(four.buf.getUsedSize(), 4u);
}

TEST(WriteBuf, NullBufferHasNoRoomWhateverSizeIsGiven) {
    BixWriteBuf buf(nullptr, 100);
    EXPECT_EQ(buf.getTotalSize(), 0u);
    for (const Write& write : writes()) {
        SCOPED_TRACE(write.name);
        EXPECT_EQ(write.run(buf), OVERFLOW_);
        EXPECT_EQ(buf.getUsedSize(), 0u);
    }
    EXPECT_EQ(buf.textize("%s", ""), OVERFLOW_);
    EXPECT_EQ(buf.writeUInt32(1, 0), OVERFLOW_);
    EXPECT_EQ(buf.writeUInt8(1, 0), OVERFLOW_);
    EXPECT_EQ(buf.writeChar('c', 0), OVERFLOW_);
}

TEST(WriteBuf, NoBytesOverANullBufferSucceed) {
    BixWriteBuf buf(nullptr, 100);
    EXPECT_EQ(buf.writeBytes("x", 0), 0);
    EXPECT_EQ(buf.reserve(0), 0);
    EXPECT_EQ(buf.getUsedSize(), 0u);
}

TEST(WriteBuf, NoBytesIntoAFullBufferSucceed) {
    Target target(2);
    ASSERT_EQ(target.buf.reserve(2), 0);
    EXPECT_EQ(target.buf.writeBytes("x", 0), 0);
    EXPECT_EQ(target.buf.reserve(0), 0);
    EXPECT_EQ(target.buf.getUsedSize(), 2u);
}

TEST(WriteBuf, NullSourceIsRefusedBeforeAnythingElse) {
    BixWriteBuf null(nullptr, 0);
    EXPECT_EQ(null.writeBytes(nullptr, 0), Korvan::BIX_ERR_NULL_POINTER);
    Target target(4);
    EXPECT_EQ(target.buf.writeBytes(nullptr, 0), Korvan::BIX_ERR_NULL_POINTER);
    EXPECT_EQ(target.buf.writeBytes(nullptr, 4), Korvan::BIX_ERR_NULL_POINTER);
    EXPECT_EQ(target.buf.writeBytes(nullptr, 5), Korvan::BIX_ERR_NULL_POINTER); // not -1
    EXPECT_EQ(target.buf.getUsedSize(), 0u);
}

TEST(WriteBuf, SizesThatWouldWrapAroundAreRefused) {
    static volatile size_t wraps = std::numeric_limits<size_t>::max(); // not foreseen by the compiler
    const size_t HUGE_SIZE = wraps;
    Target target(8);
    ASSERT_EQ(target.buf.reserve(4), 0);
    EXPECT_EQ(target.buf.writeBytes("x", HUGE_SIZE), OVERFLOW_);
    EXPECT_EQ(target.buf.reserve(HUGE_SIZE), OVERFLOW_);
    EXPECT_EQ(target.buf.reserve(HUGE_SIZE - 3), OVERFLOW_); // 4 + this is 0
    EXPECT_EQ(target.buf.writeUInt32(1, HUGE_SIZE), OVERFLOW_);
    EXPECT_EQ(target.buf.writeUInt32(1, HUGE_SIZE - 3), OVERFLOW_);
    EXPECT_EQ(target.buf.writeUInt8(1, HUGE_SIZE), OVERFLOW_);
    EXPECT_EQ(target.buf.getUsedSize(), 4u);
    EXPECT_EQ(target.all(), Bytes(std::string(16, '#')));
}

TEST(WriteBuf, BytesMayOverlapTheBuffer) {
    char memory[] = "abcdef";
    BixWriteBuf buf(memory, 6);
    ASSERT_EQ(buf.reserve(2), 0);
    EXPECT_EQ(buf.writeBytes(memory, 4), 0);
    EXPECT_STREQ(memory, "ababcd");
    BixWriteBuf back(memory, 6);
    EXPECT_EQ(back.writeBytes(memory + 1, 5), 0);
    EXPECT_STREQ(memory, "babcdd");
}

TEST(WriteBuf, ReservedBytesAreFilledLaterWithoutMovingTheCursor) {
    Target target(8);
    ASSERT_EQ(target.buf.writeUInt8(0x11), 0);
    const size_t at = target.buf.getUsedSize();
    ASSERT_EQ(target.buf.reserve(4), 0);
    ASSERT_EQ(target.buf.writeUInt8(0x22), 0);
    EXPECT_EQ(target.buf.writeUInt32(0xA1B2C3D4, at), 0);
    EXPECT_EQ(target.buf.getUsedSize(), 6u);
    EXPECT_EQ(Bytes(target.memory.substr(0, 6)), hex("11 a1 b2 c3 d4 22"));
}

TEST(WriteBuf, WritesAtAPositionReachTheLastByteAndNoFurther) {
    Target target(8);
    ASSERT_EQ(target.buf.reserve(2), 0);
    EXPECT_EQ(target.buf.writeUInt32(0x01020304, 4), 0); // beyond the cursor, still below the length
    EXPECT_EQ(target.buf.writeUInt32(0x05060708, 5), OVERFLOW_);
    EXPECT_EQ(target.buf.writeUInt32(0x05060708, 8), OVERFLOW_);
    EXPECT_EQ(target.buf.writeUInt32(0x05060708, 9), OVERFLOW_);
    EXPECT_EQ(target.buf.writeUInt8(0xaa, 8), OVERFLOW_);
    EXPECT_EQ(target.buf.writeUInt8(0xaa, 9), OVERFLOW_);
    EXPECT_EQ(target.buf.writeChar('z', 8), OVERFLOW_);
    EXPECT_EQ(target.all(), hex("23 23 23 23 01 02 03 04 23 23 23 23 23 23 23 23"));
    EXPECT_EQ(target.buf.writeUInt8(0xaa, 7), 0);
    EXPECT_EQ(target.buf.writeChar('z', 6), 0);
    EXPECT_EQ(target.buf.writeChar(static_cast<char>(0x80), 0), 0);
    EXPECT_EQ(target.all(), hex("80 23 23 23 01 02 7a aa 23 23 23 23 23 23 23 23"));
    EXPECT_EQ(target.buf.getUsedSize(), 2u);
}

TEST(WriteBuf, CharacterIsFollowedByANulThatTheNextWriteReplaces) {
    Target target(8);
    EXPECT_EQ(target.buf.writeCharWithNull('a'), 0);
    EXPECT_EQ(target.buf.writeCharWithNull('b'), 0);
    EXPECT_STREQ(target.memory.c_str(), "ab");
    EXPECT_EQ(target.buf.getUsedSize(), 2u);
}

TEST(WriteBuf, TextThatFillsTheRoomWithoutItsNulIsRefusedAndLeftTruncated) {
    Target target(6);
    ASSERT_EQ(target.buf.writeUInt8('>'), 0);
    EXPECT_EQ(target.buf.textize("%s", "12345"), OVERFLOW_);
    EXPECT_EQ(target.buf.getUsedSize(), 1u);
    EXPECT_EQ(target.all(), Bytes(std::string(">1234\0##########", 16)));
}

TEST(WriteBuf, TextIsTruncatedAsOneBoundedPrintTruncatesIt) {
    for (size_t room = 0; room <= 12; ++room) {
        SCOPED_TRACE(room);
        Target target(room);
        std::string expected(16, '#');
        const int needed = std::snprintf(expected.data(), room, "%s=%u;", "abc", 12345u);
        const bool fits = static_cast<size_t>(needed) < room;
        EXPECT_EQ(target.buf.textize("%s=%u;", "abc", 12345u), fits ? 0 : OVERFLOW_);
        EXPECT_EQ(target.buf.getUsedSize(), fits ? static_cast<size_t>(needed) : 0u);
        EXPECT_EQ(target.all(), Bytes(expected));
    }
}

TEST(WriteBuf, EmptyTextNeedsRoomForItsNul) {
    Target target(3);
    ASSERT_EQ(target.buf.reserve(2), 0);
    EXPECT_EQ(target.buf.textize("%s", ""), 0);
    EXPECT_EQ(target.memory[2], '\0');
    EXPECT_EQ(target.buf.getUsedSize(), 2u);
    ASSERT_EQ(target.buf.reserve(1), 0);
    EXPECT_EQ(target.buf.textize("%s", ""), OVERFLOW_);
}

TEST(WriteBuf, FormatterErrorIsAFailure) {
    char memory[32];
    BixWriteBuf buf(memory, sizeof(memory));
    const auto inexpressible = static_cast<wint_t>(0x10ffff); // in the "C" locale
    if (std::snprintf(memory, sizeof(memory), "%lc", inexpressible) >= 0) {
        GTEST_SKIP() << "Windows refuses no format";
    }
    EXPECT_EQ(buf.textize("%lc", inexpressible), OVERFLOW_);
    EXPECT_EQ(buf.getUsedSize(), 0u);
}

namespace {
KORVAN_PRINTF(2, 3)
int32_t throughVaList(BixWriteBuf& buf, const char* format, ...) {
    va_list ap;
    va_start(ap, format);
    const int32_t result = buf.vtextize(format, ap);
    va_end(ap);
    return result;
}
} // namespace

TEST(WriteBuf, VtextizeDoesWhatTextizeDoes) {
    Target target(8);
    EXPECT_EQ(throughVaList(target.buf, "%d-%s", 42, "ab"), 0);
    EXPECT_EQ(target.buf.getUsedSize(), 5u);
    EXPECT_STREQ(target.memory.c_str(), "42-ab");
    EXPECT_EQ(throughVaList(target.buf, "%s", "xyz"), OVERFLOW_);
    EXPECT_EQ(target.buf.getUsedSize(), 5u);
    EXPECT_EQ(target.all(), Bytes(std::string("42-abxy\0########", 16)));
}

TEST(WriteBuf, SetStartsAgainOverOtherMemory) {
    char first[4];
    char second[6];
    BixWriteBuf buf(first, sizeof(first));
    ASSERT_EQ(buf.reserve(3), 0);
    buf.ownsBuffer = true;
    buf._set(second, sizeof(second));
    const bool owns = buf.ownsBuffer;
    buf.ownsBuffer = false;
    EXPECT_TRUE(owns) << "_set leaves the ownership as it is";
    EXPECT_EQ(buf.getBeginPtr(), second);
    EXPECT_EQ(buf.getUsedSize(), 0u);
    EXPECT_EQ(buf.getTotalSize(), 6u);
    buf._set(nullptr, 6);
    EXPECT_EQ(buf.getTotalSize(), 0u);
}

// ---- Ownership: blocks released with delete[] are counted ----

namespace {
int releasedBlocks = 0;
}

// Not inlined, so that the compiler sees no malloc where it expects new.
KORVAN_NOINLINE void* operator new[](size_t size) {
    return std::malloc(size);
}
KORVAN_NOINLINE void operator delete[](void* block) noexcept {
    releasedBlocks += block != nullptr;
    std::free(block);
}
KORVAN_NOINLINE void operator delete[](void* block, size_t) noexcept {
    operator delete[](block);
}

namespace {
/// A block that the compiler cannot prove unused and leave out.
char* makeBlock() {
    static char* volatile block = nullptr;
    block = new char[4];
    return block;
}
} // namespace

TEST(WriteBufOwnership, CallersMemoryIsNeverReleased) {
    char* const memory = makeBlock();
    releasedBlocks = 0;
    { BixWriteBuf buf(memory, 4); }
    EXPECT_EQ(releasedBlocks, 0);
    delete[] memory;
}

TEST(WriteBufOwnership, OwnedBlockIsReleasedOnDestruction) {
    releasedBlocks = 0;
    {
        BixWriteBuf buf(makeBlock(), 4);
        buf.ownsBuffer = true;
    }
    EXPECT_EQ(releasedBlocks, 1);
}

TEST(WriteBufOwnership, FreeReleasesOnceAndKeepsPositionAndLength) {
    releasedBlocks = 0;
    {
        BixWriteBuf buf(makeBlock(), 4);
        buf.ownsBuffer = true;
        ASSERT_EQ(buf.reserve(3), 0);
        buf._free();
        EXPECT_EQ(releasedBlocks, 1);
        EXPECT_FALSE(buf.ownsBuffer);
        EXPECT_EQ(buf.getBeginPtr(), nullptr);
        EXPECT_EQ(buf.getUsedSize(), 3u);
        EXPECT_EQ(buf.getTotalSize(), 4u);
        buf._free();
    }
    EXPECT_EQ(releasedBlocks, 1);
}

TEST(WriteBufOwnership, FreeReleasesWhateverTheFlagSays) {
    releasedBlocks = 0;
    BixWriteBuf buf(makeBlock(), 4);
    buf._free();
    EXPECT_EQ(releasedBlocks, 1);
}

TEST(WriteBufOwnership, BufferIsNotCopyable) {
    static_assert(!std::is_copy_constructible_v<BixWriteBuf> && !std::is_copy_assignable_v<BixWriteBuf>);
}
