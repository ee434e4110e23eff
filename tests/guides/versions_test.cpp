// The code of docs/guides/versions.md.
#include "guide_versions.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(VersionsGuide, APeerIsAnsweredAtTheVersionItSpoke) {
    static CSRelayMsg message;
    message.construct();
    Peer peer;
    char wire[16];
    size_t size = 0;
    ASSERT_EQ(peer.pack(message, wire, sizeof(wire), size), 0);
    EXPECT_EQ(wire[8], 1);
    message.stHead.bVersion = 2;
    peer.heard(message);
    ASSERT_EQ(peer.pack(message, wire, sizeof(wire), size), 0);
    EXPECT_EQ(wire[8], 2);
}

TEST(VersionsGuide, RepeatCountIs1AtVersion1) {
    EXPECT_EQ(repeatCountSeenAt(1), 1u);
    EXPECT_EQ(repeatCountSeenAt(2), 5u);
    EXPECT_EQ(repeatCountSeenAt(3), 5u);
}

TEST(VersionsGuide, FrameComesThroughItsBytes) {
    static cs_relay_msg::CSRelayFrame from, to;
    from.construct();
    from.dwLastHasDataFrameId = 98;
    std::vector<char> bytes(64);
    ASSERT_EQ(copyFrame(from, to, bytes.data(), bytes.size()), 0);
    EXPECT_EQ(+to.dwLastHasDataFrameId, 98u);
    EXPECT_EQ(copyFrame(from, to, bytes.data(), 8), -1);
}

} // namespace
