// What succeeds goes the straight way to its end: this program has no other. (With both ways the bytes and
// the codes are the same, so that only the time would tell that the straight one gives up too soon.)
#include "tests/straight/NoPlainWay.h"
#include "tests/stream/Samples.h"

#include <gtest/gtest.h>

using namespace cs_relay_msg;
using tests::LEFT_STRAIGHT_WAY;

namespace {

constexpr size_t TEXT_ROOM = size_t{8} << 20;
const uint32_t SIZES[] = {0, 1, 2, 5, 12, 30, 40, 5000};

class Straight : public testing::TestWithParam<const schema::Type*> {
protected:
    const schema::Type& type = *GetParam();
    samples::Random random{1};
    std::vector<char> record = std::vector<char>(type.size);
    std::vector<char> received = std::vector<char>(type.size);
    std::vector<char> wire = std::vector<char>(schema::wireSize(type, 0).max);
    std::vector<char> again = std::vector<char>(schema::wireSize(type, 0).max);

    bool isMessage() const { return &type == &schema::typeOf<CSRelayMsg>(); }

    /// Fills the record with content whose sizes are at most @p largest.
    void fill(uint32_t largest, uint8_t command) {
        if (isMessage()) {
            samples::fillMessage(*reinterpret_cast<CSRelayMsg*>(record.data()), command, largest, random);
        } else {
            samples::fill(type, record.data(), largest, random);
        }
    }

    /// Calls `f(cutVer)` for records of many sizes, of a message's every command.
    template <class F>
    void forManyRecords(F f) {
        for (const uint32_t largest : SIZES) {
            for (const uint8_t command : isMessage() ? samples::commandIds() : std::vector<uint8_t>{0}) {
                fill(largest, command);
                for (uint32_t cutVer = 0; cutVer <= 3; ++cutVer) {
                    SCOPED_TRACE(testing::Message() << "sizes up to " << largest << ", command " << +command
                                                    << ", version " << cutVer);
                    f(cutVer);
                }
            }
        }
    }
};

std::string nameOf(const testing::TestParamInfo<const schema::Type*>& info) {
    return info.param->name;
}

INSTANTIATE_TEST_SUITE_P(Every, Straight, testing::ValuesIn(schema::types().begin(), schema::types().end()),
                         nameOf);

} // namespace

TEST_P(Straight, PacksIntoExactlyTheRoomItTakes) {
    forManyRecords([&](uint32_t cutVer) {
        Korvan::BixWriteBuf roomy(wire.data(), wire.size());
        ASSERT_EQ(type.pack(record.data(), roomy, cutVer), 0);
        Korvan::BixWriteBuf exact(again.data(), roomy.getUsedSize());
        ASSERT_EQ(type.pack(record.data(), exact, cutVer), 0);
        ASSERT_EQ(exact.getUsedSize(), roomy.getUsedSize());
        ASSERT_EQ(std::memcmp(wire.data(), again.data(), exact.getUsedSize()), 0);
    });
}

TEST_P(Straight, UnpacksFromExactlyTheBytesOfTheRecord) {
    forManyRecords([&](uint32_t cutVer) {
        Korvan::BixWriteBuf out(wire.data(), wire.size());
        ASSERT_EQ(type.pack(record.data(), out, cutVer), 0);
        Korvan::BixReadBuf in(wire.data(), out.getUsedSize());
        ASSERT_EQ(type.unpack(received.data(), in, cutVer), 0);
        ASSERT_EQ(in.getLeftSize(), 0u);
        Korvan::BixWriteBuf repacked(again.data(), again.size());
        ASSERT_EQ(type.pack(received.data(), repacked, cutVer), 0);
        ASSERT_EQ(repacked.getUsedSize(), out.getUsedSize());
        ASSERT_EQ(std::memcmp(wire.data(), again.data(), out.getUsedSize()), 0);
    });
}

TEST_P(Straight, RendersWhereThereIsRoom) {
    static std::vector<char> text(TEXT_ROOM);
    for (const uint32_t largest : SIZES) {
        fill(largest, cmd::stRelayLockStep);
        for (const int indent : {-1, 0, 3, 20}) {
            Korvan::BixWriteBuf out(text.data(), text.size());
            ASSERT_EQ(type.visualize(record.data(), out, indent), 0) << largest;
        }
    }
}

TEST_P(Straight, IsLeftWhereItDoesNotFit) {
    fill(1, cmd::stRelayLoginReq);
    Korvan::BixWriteBuf out(wire.data(), 0);
    Korvan::BixReadBuf in(wire.data(), 0);
    Korvan::BixWriteBuf text(wire.data(), 0);
    EXPECT_EQ(type.pack(record.data(), out, 0), LEFT_STRAIGHT_WAY);
    EXPECT_EQ(type.visualize(record.data(), text, 0), LEFT_STRAIGHT_WAY);
    if (!isMessage()) { // which looks for its version first
        EXPECT_EQ(type.unpack(received.data(), in, 0), LEFT_STRAIGHT_WAY);
    }
}

TEST(StraightText, IsPackedAlsoWithoutItsNul) {
    CSRelayMsgLoginReq login;
    std::memset(static_cast<void*>(&login), 'x', sizeof(login));
    char wire[CSRelayMsgLoginReq::maxWireSize];
    EXPECT_EQ(login.pack(wire, sizeof(wire)), 0);
    EXPECT_EQ(wire[4 + 126], 'x');
    EXPECT_EQ(wire[4 + 127], '\0');
}
