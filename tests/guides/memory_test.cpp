// The code of docs/guides/memory.md.
#include "guide_memory.h"

#include <gtest/gtest.h>

namespace {

TEST(MemoryGuide, InputIsSentWithoutAWholeMessage) {
    InputSender sender(1001);
    size_t size = 0;
    ASSERT_EQ(sender.pack("abc", 3, size), BIX_OK);
    const auto message = std::make_unique<CSRelayMsg>();
    ASSERT_EQ(message->unpack(sender.wire, size), BIX_OK);
    EXPECT_EQ(+message->stHead.dwUserID, 1001u);
    const CSRelayData& input = message->stBody.stRelayInputing.stRelayData;
    ASSERT_EQ(+input.wRelayLen, 3u);
    EXPECT_EQ(std::memcmp(input.szRelayBuf, "abc", 3), 0);
    EXPECT_EQ(sender.pack("abc", 1025, size), BIX_ERR_COUNT_OUT_OF_RANGE);
}

TEST(MemoryGuide, LatestOfTwoFrames) {
    static CSRelayFrame a, b;
    a.dwFrameId = 4;
    b.dwFrameId = 9;
    EXPECT_EQ(latest(a, b), 9u);
    EXPECT_EQ(latest(b, a), 9u);
}

TEST(MemoryGuide, SharedRecordIsNotWrittenByPack) {
    const auto message = makeShared(cmd::stRelayLoginReq);
    std::strcpy(message->stBody.stRelayLoginReq.szSigBuf, "ann");
    const auto before = std::make_unique<CSRelayMsg>(*message);
    char wire[256];
    ASSERT_EQ(message->pack(wire, sizeof(wire)), BIX_OK);
    EXPECT_EQ(std::memcmp(message.get(), before.get(), sizeof(CSRelayMsg)), 0);
    EXPECT_EQ(message->stBody.stRelayLoginReq.szSigBuf[127], '\0');
}

// What the guide says of sizes.
static_assert(sizeof(CSRelayMsg) == 516558);
static_assert(sizeof(CSRelayFrame) == 103309);
static_assert(sizeof(CSRelayInput) + sizeof(CSRelayMsgHead) == 1046);
static_assert(sizeof(CSRelayMsgHeartBeatReq) + sizeof(CSRelayMsgHead) == 16);
static_assert(sizeof(ScanState) <= 128);

} // namespace
