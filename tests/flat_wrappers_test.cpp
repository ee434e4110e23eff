// The operations over a plain buffer: null, size 0, and the used size on success and on failure.
#include "protocol/cs_relay_msg.h"
#include "tests/Bytes.h"
#include "tests/support/RecordTypes.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace cs_relay_msg;
using korvan_test::Bytes;
using korvan_test::constructed;
using korvan_test::hex;
using korvan_test::Outcome;
using korvan_test::packed;

template <class T>
class FlatWrappers : public testing::Test {
protected:
    std::unique_ptr<T> record = constructed<T>();
    std::string small = std::string(64, '#');
    size_t used = 99;
};

TYPED_TEST_SUITE(FlatWrappers, tests::RecordTypes, tests::RecordNames);

TYPED_TEST(FlatWrappers, NullBufferIsRefusedAndUsedSizeLeftAlone) {
    for (const size_t size : {size_t{0}, size_t{64}}) {
        EXPECT_EQ(this->record->pack(nullptr, size, &this->used), -19);
        EXPECT_EQ(this->record->unpack(nullptr, size, &this->used), -19);
        EXPECT_EQ(this->record->visualize(nullptr, size, &this->used), -19);
        EXPECT_STREQ(this->record->visualize_ex(nullptr, size, &this->used), "");
        EXPECT_EQ(this->used, 99u);
        EXPECT_EQ(this->record->pack(nullptr, size), -19);
        EXPECT_EQ(this->record->unpack(nullptr, size), -19);
        EXPECT_EQ(this->record->visualize(nullptr, size), -19);
    }
}

TYPED_TEST(FlatWrappers, SizeZeroFailsAtTheFirstField) {
    EXPECT_EQ(this->record->pack(this->small.data(), 0, &this->used), -1);
    EXPECT_EQ(this->used, 0u);
    this->used = 99;
    EXPECT_EQ(this->record->unpack(this->small.data(), 0, &this->used), -2);
    EXPECT_EQ(this->used, 0u);
    this->used = 99;
    EXPECT_EQ(this->record->visualize(this->small.data(), 0, &this->used), -1);
    EXPECT_EQ(this->used, 0u);
    this->used = 99;
    EXPECT_STREQ(this->record->visualize_ex(this->small.data(), 0, &this->used), "");
    EXPECT_EQ(this->used, 99u) << "left alone";
    EXPECT_EQ(this->small, std::string(64, '#'));
}

TYPED_TEST(FlatWrappers, UsedSizeIsOptional) {
    std::string memory(4096, '#');
    EXPECT_EQ(this->record->pack(memory.data(), memory.size()), 0);
    EXPECT_EQ(this->record->unpack(memory.data(), memory.size()), 0);
    EXPECT_EQ(this->record->visualize(memory.data(), memory.size()), 0);
    EXPECT_EQ(this->record->visualize_ex(memory.data(), memory.size()), memory.data());
}

TYPED_TEST(FlatWrappers, BufferFormsDoTheSameAtTheCursor) {
    std::string flat(4096, '#');
    size_t flatUsed = 0;
    ASSERT_EQ(this->record->pack(flat.data(), flat.size(), &flatUsed), 0);
    std::string memory(4096, '#');
    Korvan::BixWriteBuf out(memory.data(), memory.size());
    ASSERT_EQ(out.reserve(5), 0);
    EXPECT_EQ(this->record->pack(out), 0);
    EXPECT_EQ(out.getUsedSize(), 5 + flatUsed);
    EXPECT_EQ(Bytes(memory.substr(5, flatUsed)), Bytes(flat.substr(0, flatUsed)));
    EXPECT_EQ(memory.substr(0, 5), "#####");
    EXPECT_EQ(memory.substr(5 + flatUsed, 16), std::string(16, '#')) << "written behind the used size";

    Korvan::BixReadBuf in(memory.data(), memory.size());
    in.position = 5;
    EXPECT_EQ(this->record->unpack(in), 0);
    EXPECT_EQ(in.getUsedSize(), 5 + flatUsed);

    ASSERT_EQ(this->record->visualize(flat.data(), flat.size(), &flatUsed), 0);
    out._set(memory.data(), memory.size());
    ASSERT_EQ(out.reserve(5), 0);
    EXPECT_EQ(this->record->visualize(out), 0);
    EXPECT_EQ(memory.substr(5, out.getUsedSize() - 5), flat.substr(0, flatUsed));
}

TEST(FlatWrappersOnFailure, UsedSizeTellsHowFarItGot) {
    auto login = constructed<CSRelayMsgLoginRes>();
    EXPECT_EQ(packed(*login, 0, 3), (Outcome{-1, ""}));
    auto stop = constructed<CSRelayMsgStopRes>();
    EXPECT_EQ(packed(*stop, 0, 7), (Outcome{-1, hex("00 00 00 00")}));
    size_t used = 99;
    EXPECT_EQ(korvan_test::unpacked(*stop, std::string(7, '\0'), 0, &used), -2);
    EXPECT_EQ(used, 4u);
    auto start = constructed<CSRelayMsgStartReq>();
    for (const auto& [room, expected] : {std::pair<size_t, size_t>{4, 4}, {5, 5}, {8, 5}, {3, 0}}) {
        EXPECT_EQ(packed(*start, 0, room), (Outcome{-1, Bytes(std::string(expected, '\0'))}));
    }
    EXPECT_EQ(packed(*start, 0, 9).result, 0);
}
