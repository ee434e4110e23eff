// The read buffer: what each operation reads, needs and leaves behind.
#include "Common/Source/Core/BIX/BixBuf.h"
#include "tests/Bytes.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <limits>
#include <type_traits>
#include <vector>

using Korvan::BixReadBuf;
using korvan_test::Bytes;
using korvan_test::hex;

namespace {

constexpr int32_t UNDERFLOW_ = Korvan::BIX_ERR_READ_UNDERFLOW;
constexpr uint64_t UNTOUCHED = 0x5a5a5a5a5a5a5a5a;

struct Read {
    const char* name;
    size_t needs;
    uint64_t value; ///< of the bytes 81 02 03 04 05 06 07 08
    std::function<int32_t(BixReadBuf&, uint64_t&)> run;
};

/// Reads into a variable of the operation's own type that starts as the low bits of @p value.
template <class T, class Operation>
int32_t into(uint64_t& value, Operation operation) {
    T v = static_cast<T>(value);
    const int32_t result = operation(v);
    value = v == static_cast<T>(UNTOUCHED) ? UNTOUCHED : static_cast<uint64_t>(v);
    return result;
}

/// Every consuming operation, with the value that it reads.
const std::vector<Read>& reads() {
    static const std::vector<Read> all = {
        {"readUInt8", 1, 0x81,
         [](BixReadBuf& b, uint64_t& to) {
             return into<uint8_t>(to, [&](uint8_t& v) { return b.readUInt8(v); });
         }},
        {"readUChar", 1, 0x81,
         [](BixReadBuf& b, uint64_t& to) {
             return into<uint8_t>(to, [&](uint8_t& v) { return b.readUChar(v); });
         }},
        {"readUInt16", 2, 0x8102,
         [](BixReadBuf& b, uint64_t& to) {
             return into<uint16_t>(to, [&](uint16_t& v) { return b.readUInt16(v); });
         }},
        {"readUInt32", 4, 0x81020304,
         [](BixReadBuf& b, uint64_t& to) {
             return into<uint32_t>(to, [&](uint32_t& v) { return b.readUInt32(v); });
         }},
        {"readInt32", 4, 0xffffffff81020304,
         [](BixReadBuf& b, uint64_t& to) {
             return into<int32_t>(to, [&](int32_t& v) { return b.readInt32(v); });
         }},
        {"readUInt64", 8, 0x8102030405060708,
         [](BixReadBuf& b, uint64_t& to) {
             return into<uint64_t>(to, [&](uint64_t& v) { return b.readUInt64(v); });
         }},
    };
    return all;
}

const Bytes WIRE = hex("81 02 03 04 05 06 07 08");

} // namespace

TEST(ReadBuf, HasItsFieldsInOrder) {
    static_assert(std::is_same_v<decltype(BixReadBuf::beginPtr), const char*>);
    static_assert(std::is_same_v<decltype(BixReadBuf::position), size_t>);
    static_assert(std::is_same_v<decltype(BixReadBuf::length), size_t>);
    static_assert(std::is_trivially_destructible_v<BixReadBuf>);
    EXPECT_LT(offsetof(BixReadBuf, beginPtr), offsetof(BixReadBuf, position));
    EXPECT_LT(offsetof(BixReadBuf, position), offsetof(BixReadBuf, length));
}

TEST(ReadBuf, EveryReadFitsExactly) {
    for (const Read& read : reads()) {
        SCOPED_TRACE(read.name);
        BixReadBuf buf(WIRE.data(), read.needs);
        uint64_t value = UNTOUCHED;
        EXPECT_EQ(read.run(buf, value), 0);
        EXPECT_EQ(value, read.value);
        EXPECT_EQ(buf.getUsedSize(), read.needs);
        EXPECT_EQ(buf.getLeftSize(), 0u);
    }
}

TEST(ReadBuf, EveryReadRefusesOneByteLessAndTouchesNothing) {
    for (const Read& read : reads()) {
        SCOPED_TRACE(read.name);
        const Bytes wire = hex("77 77") + WIRE;
        BixReadBuf buf(wire.data(), 2 + read.needs - 1);
        uint16_t skipped = 0;
        ASSERT_EQ(buf.readUInt16(skipped), 0);
        uint64_t value = UNTOUCHED;
        EXPECT_EQ(read.run(buf, value), UNDERFLOW_);
        EXPECT_EQ(value, UNTOUCHED);
        EXPECT_EQ(buf.getUsedSize(), 2u);
        EXPECT_EQ(buf.getLeftSize(), read.needs - 1);
    }
}

TEST(ReadBuf, FourBytesAreOneIntegerOrTwo) {
    const Bytes wire = hex("01 02 03 04");
    BixReadBuf one(wire.data(), 4);
    uint32_t whole = 0;
    EXPECT_EQ(one.readUInt32(whole), 0);
    EXPECT_EQ(whole, 0x01020304u);
    BixReadBuf two(wire.data(), 4);
    uint16_t first = 0;
    uint16_t second = 0;
    EXPECT_EQ(two.readUInt16(first), 0);
    EXPECT_EQ(two.readUInt16(second), 0);
    EXPECT_EQ(first, 0x0102);
    EXPECT_EQ(second, 0x0304);
}

TEST(ReadBuf, SignedValuesAreTakenAsTheirBits) {
    const Bytes wire = hex("ff ff ff ff  80 00 00 00  7f ff ff ff");
    BixReadBuf buf(wire.data(), wire.size());
    int32_t value = 0;
    EXPECT_EQ(buf.readInt32(value), 0);
    EXPECT_EQ(value, -1);
    EXPECT_EQ(buf.readInt32(value), 0);
    EXPECT_EQ(value, std::numeric_limits<int32_t>::min());
    EXPECT_EQ(buf.readInt32(value), 0);
    EXPECT_EQ(value, std::numeric_limits<int32_t>::max());
    EXPECT_EQ(buf.readInt32(value), UNDERFLOW_);
    EXPECT_EQ(value, std::numeric_limits<int32_t>::max());
}

TEST(ReadBuf, BytesAreCopiedUpToTheExactRest) {
    BixReadBuf buf("abcdef", 6);
    char to[8] = "#######";
    EXPECT_EQ(buf.readBytes(to, 2), 0);
    EXPECT_STREQ(to, "ab#####");
    EXPECT_EQ(buf.readBytes(to, 5), UNDERFLOW_);
    EXPECT_STREQ(to, "ab#####");
    EXPECT_EQ(buf.getUsedSize(), 2u);
    EXPECT_EQ(buf.readBytes(to, 4), 0);
    EXPECT_STREQ(to, "cdef###");
    EXPECT_EQ(buf.getLeftSize(), 0u);
}

TEST(ReadBuf, BytesMayOverlapTheBuffer) {
    char memory[] = "abcdef";
    BixReadBuf buf(memory, 6);
    EXPECT_EQ(buf.readBytes(memory + 2, 4), 0);
    EXPECT_STREQ(memory, "ababcd");
}

TEST(ReadBuf, NullDestinationIsRefusedBeforeAnythingElse) {
    BixReadBuf null(nullptr, 0);
    EXPECT_EQ(null.readBytes(nullptr, 0), Korvan::BIX_ERR_NULL_POINTER);
    BixReadBuf buf("ab", 2);
    EXPECT_EQ(buf.readBytes(nullptr, 0), Korvan::BIX_ERR_NULL_POINTER);
    EXPECT_EQ(buf.readBytes(nullptr, 2), Korvan::BIX_ERR_NULL_POINTER);
    EXPECT_EQ(buf.readBytes(nullptr, 3), Korvan::BIX_ERR_NULL_POINTER); // not -2
    EXPECT_EQ(buf.getUsedSize(), 0u);
}

TEST(ReadBuf, NoBytesAlwaysSucceedAndMoveNothing) {
    char to = '#';
    BixReadBuf buf("ab", 2);
    EXPECT_EQ(buf.readBytes(&to, 0), 0);
    EXPECT_EQ(buf.getUsedSize(), 0u);
    BixReadBuf null(nullptr, 5);
    EXPECT_EQ(null.readBytes(&to, 0), 0);
    EXPECT_EQ(to, '#');
}

TEST(ReadBuf, SizeThatWouldWrapAroundIsRefused) {
    BixReadBuf buf("abcd", 4);
    uint16_t skipped = 0;
    ASSERT_EQ(buf.readUInt16(skipped), 0);
    char to = '#';
    uint8_t v = 7;
    EXPECT_EQ(buf.readBytes(&to, std::numeric_limits<size_t>::max()), UNDERFLOW_);
    EXPECT_EQ(buf.readBytes(&to, std::numeric_limits<size_t>::max() - 1), UNDERFLOW_); // 2 + this is 0
    EXPECT_EQ(buf.readUInt8(v, std::numeric_limits<size_t>::max()), UNDERFLOW_);
    EXPECT_EQ(v, 7);
    EXPECT_EQ(buf.getUsedSize(), 2u);
}

TEST(ReadBuf, NullBufferHasNothingToReadWhateverSizeIsGiven) {
    BixReadBuf buf(nullptr, 100);
    EXPECT_EQ(buf.getLeftSize(), 0u);
    for (const Read& read : reads()) {
        SCOPED_TRACE(read.name);
        uint64_t value = UNTOUCHED;
        EXPECT_EQ(read.run(buf, value), UNDERFLOW_);
        EXPECT_EQ(value, UNTOUCHED);
    }
    char to = 0;
    uint8_t peeked = 7;
    EXPECT_EQ(buf.readBytes(&to, 1), UNDERFLOW_);
    EXPECT_EQ(buf.readUInt8(peeked, 0), UNDERFLOW_);
    EXPECT_EQ(peeked, 7);
    EXPECT_EQ(buf.getUsedSize(), 0u);
}

TEST(ReadBuf, PeekSeesEveryByteAndNeverMovesTheCursor) {
    BixReadBuf buf(WIRE.data(), WIRE.size());
    uint16_t skipped = 0;
    ASSERT_EQ(buf.readUInt16(skipped), 0);
    uint8_t v = 0;
    EXPECT_EQ(buf.readUInt8(v, 0), 0); // before the cursor
    EXPECT_EQ(v, 0x81);
    EXPECT_EQ(buf.readUInt8(v, 7), 0); // the last one
    EXPECT_EQ(v, 0x08);
    EXPECT_EQ(buf.readUInt8(v, 8), UNDERFLOW_);
    EXPECT_EQ(buf.readUInt8(v, 9), UNDERFLOW_);
    EXPECT_EQ(v, 0x08);
    EXPECT_EQ(buf.getUsedSize(), 2u);
}

TEST(ReadBuf, SetStartsAgainOverOtherBytes) {
    BixReadBuf buf("ab", 2);
    uint8_t v = 0;
    ASSERT_EQ(buf.readUInt8(v), 0);
    buf.set("xyz", 3);
    EXPECT_EQ(buf.getUsedSize(), 0u);
    EXPECT_EQ(buf.getLeftSize(), 3u);
    buf.set(nullptr, 3);
    EXPECT_EQ(buf.getLeftSize(), 0u);
}
