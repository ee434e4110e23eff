// The functions of Stream.h take a record type as data, so they take one with a count of any width.
#include "protocol/Stream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace schema = cs_relay_msg::schema;

namespace {

template <class Count>
struct Counted {
    char before;
    char count[sizeof(Count)];
    uint8_t szBytes[3];
    char behind;

    void setCount(Count value) { std::memcpy(count, &value, sizeof(value)); }
    Count countValue() const {
        Count value;
        std::memcpy(&value, count, sizeof(value));
        return value;
    }
};

schema::Field scalarField(const char* name, uint32_t offset, uint32_t width) {
    return {name, name, schema::Kind::Scalar, false, 0, 1, -1, offset, width, 1, 0, nullptr};
}

template <class Count>
const schema::Type& countedType() {
    constexpr uint32_t width = sizeof(Count);
    static const schema::Field fields[] = {
        scalarField("bBefore", 0, 1),
        scalarField("Count", 1, width),
        {"szBytes", "[szBytes]", schema::Kind::Bytes, false, 9, 1, 1, 1 + width, 1, 3, 0, nullptr},
        scalarField("bBehind", 4 + width, 1)};
    static const schema::Type type{
        "Counted", sizeof(Counted<Count>), fields, 4, 1, true, nullptr, nullptr, nullptr, nullptr};
    return type;
}

template <class Count>
class Widths : public testing::Test {
protected:
    using Record = Counted<Count>;
    const schema::Type& type = countedType<Count>();
};

using Counts = testing::Types<uint8_t, uint16_t, uint32_t, uint64_t>;
TYPED_TEST_SUITE(Widths, Counts, );

} // namespace

template <>
const schema::Type& schema::typeOf<Counted<uint8_t>>() noexcept {
    return countedType<uint8_t>();
}
template <>
const schema::Type& schema::typeOf<Counted<uint16_t>>() noexcept {
    return countedType<uint16_t>();
}
template <>
const schema::Type& schema::typeOf<Counted<uint32_t>>() noexcept {
    return countedType<uint32_t>();
}
template <>
const schema::Type& schema::typeOf<Counted<uint64_t>>() noexcept {
    return countedType<uint64_t>();
}

TYPED_TEST(Widths, SetBytesStoresTheWholeCountAndNoMore) {
    using R = typename TestFixture::Record;
    R record;
    std::memset(&record, 0x5a, sizeof(record));
    ASSERT_EQ(cs_relay_msg::setBytes(record, &R::szBytes, "ab", 2), 0);
    EXPECT_EQ(record.countValue(), 2u);
    EXPECT_EQ(record.before, 0x5a);
    EXPECT_EQ(std::memcmp(record.szBytes, "ab\x5a", 3), 0);
    EXPECT_EQ(record.behind, 0x5a);
}

TYPED_TEST(Widths, EqualComparesAsManyBytesAsTheWholeCountSays) {
    using R = typename TestFixture::Record;
    R a{};
    a.setCount(2);
    R b = a;
    b.szBytes[2] = 1;
    EXPECT_TRUE(cs_relay_msg::equal(this->type, &a, &b)) << "behind the count";
    b.szBytes[1] = 1;
    EXPECT_FALSE(cs_relay_msg::equal(this->type, &a, &b));

    // A count whose highest byte alone is not 0, or its only one, is above the bound: the whole array.
    const auto large = static_cast<TypeParam>(std::numeric_limits<TypeParam>::max() / 2 + 1);
    a.setCount(large);
    b = a;
    EXPECT_TRUE(cs_relay_msg::equal(this->type, &a, &b));
    b.szBytes[2] = 1;
    EXPECT_FALSE(cs_relay_msg::equal(this->type, &a, &b));
    b = a;
    b.behind = 1;
    EXPECT_FALSE(cs_relay_msg::equal(this->type, &a, &b));
}
