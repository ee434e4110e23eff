// The code of docs/guides/receiving.md.
#include "guide_receiving.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

namespace {

class ReceivingGuide : public testing::Test {
protected:
    void add(uint8_t command, uint16_t asyncId) {
        message->stHead.construct();
        message->stHead.bCmdId = command;
        message->stHead.wAsyncID = asyncId;
        message->stHead.dwRoomID = 7;
        message->stBody.construct(command);
        char bytes[512];
        size_t size = 0;
        ASSERT_EQ(message->pack(bytes, sizeof(bytes), &size), 0);
        wire.append(bytes, size);
    }

    void SetUp() override {
        add(cmd::stRelayLoginReq, 1);
        add(cmd::stCSRelayMsgHeartBeatReq, 2);
        add(cmd::stRelayError, 3);
    }

    std::unique_ptr<CSRelayMsg> message = std::make_unique<CSRelayMsg>();
    std::string wire;
    std::vector<uint16_t> seen;
    const std::vector<uint16_t> all = {1, 2, 3};

    auto note() {
        return [this](const CSRelayMsg& each) {
            const uint16_t number = each.stHead.wAsyncID; // no reference to a packed field
            seen.push_back(number);
        };
    }
};

TEST_F(ReceivingGuide, DatagramOfThreeMessages) {
    EXPECT_TRUE(onDatagram(*message, wire.data(), wire.size(), note()));
    EXPECT_EQ(seen, all);
}

TEST_F(ReceivingGuide, DatagramCutShort) {
    EXPECT_FALSE(onDatagram(*message, wire.data(), wire.size() - 1, note()));
    EXPECT_EQ(seen, (std::vector<uint16_t>{1, 2}));
}

TEST_F(ReceivingGuide, DatagramWithAnUnknownCommand) {
    wire[11] = 0;
    EXPECT_FALSE(onDatagram(*message, wire.data(), wire.size(), note()));
    EXPECT_TRUE(seen.empty());
}

TEST_F(ReceivingGuide, StreamInPiecesOfEverySize) {
    for (size_t piece = 1; piece <= wire.size(); ++piece) {
        seen.clear();
        Connection connection(CSRelayMsg::maxWireSize);
        for (size_t at = 0; at < wire.size(); at += piece) {
            ASSERT_TRUE(connection.onBytes(*message, &wire[at], std::min(piece, wire.size() - at), note()));
        }
        ASSERT_EQ(seen, all) << "in pieces of " << piece;
    }
}

TEST_F(ReceivingGuide, StreamThatIsMalformedUnknownOrTooLongIsClosed) {
    Connection tight(20);
    EXPECT_FALSE(tight.onBytes(*message, wire.data(), wire.size(), note()));
    std::string other = wire;
    other[8] = 4;
    EXPECT_FALSE(Connection(CSRelayMsg::maxWireSize).onBytes(*message, other.data(), other.size(), note()));
    other = wire;
    other[11] = 0;
    EXPECT_FALSE(Connection(CSRelayMsg::maxWireSize).onBytes(*message, other.data(), other.size(), note()));
    EXPECT_TRUE(seen.empty());
}

TEST_F(ReceivingGuide, RoomOfAMessage) {
    EXPECT_EQ(roomOf(wire.data(), wire.size()), 7u);
    EXPECT_EQ(roomOf(wire.data(), 11), 0u);
}

// What the guide says of sizes.
static_assert(CSRelayMsgHead::maxWireSize + CSRelayInput::maxWireSize == 1046);
static_assert(CSRelayMsg::maxWireSize == 516558);

} // namespace
