#include "tests/support/Match.h"

#include "tests/plain/PlainCodec.h"
#include "tests/support/Memory.h"
#include "tests/support/Sites.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace tests {

using cs_relay_msg::schema::Type;
using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;
namespace plain = cs_relay_msg::plain;

namespace {

constexpr size_t BEHIND = 16; // bytes watched behind the buffer's end

} // namespace

Match::Match(const Type& type) : type_(type), source_(type.size), hot_(type.size), plain_(type.size) {}

void Match::prepare(size_t capacity) {
    std::copy(source_.begin(), source_.end(), hot_.begin());
    std::copy(source_.begin(), source_.end(), plain_.begin());
    hotMemory_.assign(capacity + BEHIND, CANARY);
    plainMemory_.assign(capacity + BEHIND, CANARY);
}

void Match::compare(const Result& hot, const Result& plain) const {
    EXPECT_EQ(hot.code, plain.code);
    EXPECT_EQ(hot.used, plain.used);
    EXPECT_TRUE(sameBytes(hotMemory_.data(), plainMemory_.data(), hotMemory_.size())) << "in the buffer";
    EXPECT_TRUE(sameBytes(hot_.data(), plain_.data(), hot_.size())) << "in the record";
}

Match::Result Match::pack(size_t capacity, uint32_t cutVer, size_t start) {
    prepare(capacity);
    BixWriteBuf hotOut(hotMemory_.data(), capacity);
    BixWriteBuf plainOut(plainMemory_.data(), capacity);
    EXPECT_EQ(hotOut.reserve(start), 0);
    EXPECT_EQ(plainOut.reserve(start), 0);
    const int32_t hotCode = type_.pack(hot_.data(), hotOut, cutVer);
    const int32_t plainCode = plain::pack(type_, plain_.data(), plainOut, cutVer);
    const Result result{hotCode, hotOut.getUsedSize()};
    compare(result, {plainCode, plainOut.getUsedSize()});
    EXPECT_TRUE(allBytes(hotMemory_.data(), start, CANARY)) << "before the cursor";
    EXPECT_TRUE(allBytes(hotMemory_.data() + result.used, hotMemory_.size() - result.used, CANARY))
        << "behind the used size " << result.used;
    return result;
}

Match::Result Match::unpack(const std::vector<char>& bytes, uint32_t cutVer, size_t start) {
    prepare(0);
    // A block of exactly this size, so that a sanitizer sees a read behind it.
    const std::unique_ptr<char[]> input(new char[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), input.get());
    BixReadBuf hotIn(input.get(), bytes.size());
    BixReadBuf plainIn(input.get(), bytes.size());
    std::vector<char> skipped(start + 1);
    EXPECT_EQ(hotIn.readBytes(skipped.data(), start), 0);
    EXPECT_EQ(plainIn.readBytes(skipped.data(), start), 0);
    const int32_t hotCode = type_.unpack(hot_.data(), hotIn, cutVer);
    const int32_t plainCode = plain::unpack(type_, plain_.data(), plainIn, cutVer);
    const Result result{hotCode, hotIn.getUsedSize()};
    compare(result, {plainCode, plainIn.getUsedSize()});
    EXPECT_TRUE(sameBytes(input.get(), bytes.data(), bytes.size())) << "in the input";
    return result;
}

Match::Result Match::visualize(size_t capacity, int indent, char sep, size_t start) {
    prepare(capacity);
    BixWriteBuf hotOut(hotMemory_.data(), capacity);
    BixWriteBuf plainOut(plainMemory_.data(), capacity);
    EXPECT_EQ(hotOut.reserve(start), 0);
    EXPECT_EQ(plainOut.reserve(start), 0);
    const int32_t hotCode = type_.visualize(hot_.data(), hotOut, indent, sep);
    const int32_t plainCode = plain::visualize(type_, plain_.data(), plainOut, indent, sep);
    const Result result{hotCode, hotOut.getUsedSize()};
    compare(result, {plainCode, plainOut.getUsedSize()});
    EXPECT_TRUE(sameBytes(hot_.data(), source_.data(), source_.size())) << "in the record";
    EXPECT_TRUE(allBytes(hotMemory_.data(), start, CANARY)) << "before the cursor";
    EXPECT_TRUE(allBytes(hotMemory_.data() + capacity, BEHIND, CANARY)) << "behind the buffer";
    return result;
}

Match::Result Match::construct() {
    prepare(0);
    const int32_t hotCode = type_.construct(hot_.data());
    const int32_t plainCode = plain::construct(type_, plain_.data());
    const Result result{hotCode, 0};
    compare(result, {plainCode, 0});
    return result;
}

std::vector<char> Match::image(uint32_t cutVer) {
    const Result result = pack(wireEnd(sitesOf(type_, record(), cutVer)), cutVer);
    EXPECT_EQ(result.code, 0);
    return {hotMemory_.data(), hotMemory_.data() + result.used};
}

std::string Match::text(int indent, char sep) {
    constexpr size_t MOST = size_t{1} << 24; // far above the longest text
    for (size_t capacity = 4096; capacity < MOST && !::testing::Test::HasFailure(); capacity *= 4) {
        const Result result = visualize(capacity, indent, sep);
        if (result.code != Korvan::BIX_ERR_WRITE_OVERFLOW) {
            EXPECT_EQ(result.code, 0);
            return {hotMemory_.data(), result.used};
        }
    }
    ADD_FAILURE() << "the text does not fit";
    return {};
}

} // namespace tests
