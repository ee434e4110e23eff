// The body union: eight operations that a selector sends to one member, or nowhere.
#include "protocol/cs_relay_msg.h"
#include "tests/Bytes.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>

using namespace cs_relay_msg;
using korvan_test::Bytes;
using korvan_test::constructed;
using korvan_test::filled;
using korvan_test::hex;
using korvan_test::image;
using korvan_test::packed;

namespace {

const long long UNASSIGNED[] = {
    LLONG_MIN, -184, -1,  0,   1,   160, 166, 171,       172,         173,       176,
    177,       178,  179, 180, 181, 196, 255, 256 + 184, 65536 + 184, LLONG_MAX, (1LL << 32) + 184};

} // namespace

TEST(Union, SelectorPacksItsMember) {
    auto body = filled<CSRelayMsgBody>('\0');
    body->stCSRelayMsgHeartBeatRes.dwHeartBeatIntervalMs = 5000;
    char memory[16];
    size_t used = 0;
    EXPECT_EQ(body->pack(185, memory, sizeof(memory), &used), 0);
    EXPECT_EQ(Bytes(std::string(memory, used)), hex("00 00 13 88"));
    Korvan::BixWriteBuf buffer(memory, sizeof(memory));
    EXPECT_EQ(body->pack(185, buffer), 0);
    EXPECT_EQ(body->pack(185, buffer), 0);
    EXPECT_EQ(buffer.getUsedSize(), 8u);
}

TEST(Union, SelectorUnpacksItsMember) {
    auto body = filled<CSRelayMsgBody>('#');
    const Bytes wire = hex("00 00 13 88 00");
    size_t used = 0;
    EXPECT_EQ(body->unpack(185, wire.data(), wire.size(), &used), 0);
    EXPECT_EQ(used, 4u);
    EXPECT_EQ(+body->stCSRelayMsgHeartBeatRes.dwHeartBeatIntervalMs, 5000u);
    EXPECT_EQ(image(*body).find_first_not_of('#', 4), std::string::npos);
    Korvan::BixReadBuf buffer(wire.data(), wire.size());
    EXPECT_EQ(body->unpack(185, buffer), 0);
    EXPECT_EQ(buffer.getUsedSize(), 4u);
}

TEST(Union, TextIsTheMembersLabelAndTheMemberOneLevelDeeper) {
    auto body = filled<CSRelayMsgBody>('\0');
    char memory[128];
    size_t used = 0;
    EXPECT_EQ(body->visualize(185, memory, sizeof(memory), &used, 1, ';'), 0);
    EXPECT_EQ(std::string(memory, used), "  [stCSRelayMsgHeartBeatRes];    [dwHeartBeatIntervalMs]: 0;");
    EXPECT_EQ(body->visualize(185, memory, sizeof(memory), &used, -3), 0);
    EXPECT_EQ(std::string(memory, used), "[stCSRelayMsgHeartBeatRes]\n[dwHeartBeatIntervalMs]: 0\n");
    Korvan::BixWriteBuf buffer(memory, sizeof(memory));
    EXPECT_EQ(body->visualize(191, buffer), 0);
    EXPECT_STREQ(memory, "[stCSRelayMsgStatUserReq]\n  [dwRetCode]: 0\n");
}

TEST(Union, MemberClampsTheVersionAgain) {
    auto body = filled<CSRelayMsgBody>('\0');
    body->construct(cmd::stRelayInputing);
    char memory[32];
    size_t used = 0;
    const std::pair<uint32_t, size_t> sizes[] = {{0, 10}, {1, 9},  {2, 10},
                                                 {3, 10}, {4, 10}, {UINT32_MAX, 10}};
    for (const auto& [cutVer, size] : sizes) {
        EXPECT_EQ(body->pack(165, memory, sizeof(memory), &used, cutVer), 0);
        EXPECT_EQ(used, size);
        EXPECT_EQ(body->unpack(165, memory, sizeof(memory), &used, cutVer), 0);
        EXPECT_EQ(used, size);
    }
}

TEST(Union, UnassignedSelectorDoesNothingAndSucceeds) {
    for (const long long selector : UNASSIGNED) {
        SCOPED_TRACE(selector);
        static auto body = filled<CSRelayMsgBody>('#');
        char memory[16];
        std::memset(memory, '#', sizeof(memory));
        size_t used = 99;
        EXPECT_EQ(body->construct(selector), 0);
        EXPECT_EQ(body->pack(selector, memory, sizeof(memory), &used), 0);
        EXPECT_EQ(used, 0u);
        used = 99;
        EXPECT_EQ(body->unpack(selector, memory, sizeof(memory), &used), 0);
        EXPECT_EQ(used, 0u);
        used = 99;
        EXPECT_EQ(body->visualize(selector, memory, sizeof(memory), &used), 0);
        EXPECT_EQ(used, 0u);
        EXPECT_EQ(body->pack(selector, memory, 0, &used), 0) << "no room is needed for nothing";
        EXPECT_EQ(std::string(memory, sizeof(memory)), std::string(sizeof(memory), '#'));
        EXPECT_EQ(image(*body).find_first_not_of('#'), std::string::npos);
    }
}

TEST(Union, NullBufferIsRefusedForEverySelector) {
    auto body = filled<CSRelayMsgBody>('\0');
    for (const long long selector : {184LL, 166LL, -1LL}) {
        size_t used = 99;
        EXPECT_EQ(body->pack(selector, nullptr, 16, &used), -19);
        EXPECT_EQ(body->unpack(selector, nullptr, 16, &used), -19);
        EXPECT_EQ(body->visualize(selector, nullptr, 16, &used), -19);
        EXPECT_EQ(used, 99u);
    }
}

TEST(Union, FailureIsTheMembersAndUsedSizeIsReported) {
    auto body = filled<CSRelayMsgBody>('\0');
    char memory[32] = {};
    size_t used = 99;
    EXPECT_EQ(body->pack(168, memory, 7, &used), -1);
    EXPECT_EQ(used, 4u);
    EXPECT_EQ(body->unpack(168, memory, 7, &used), -2);
    EXPECT_EQ(used, 4u);
    EXPECT_EQ(body->visualize(168, memory, 20, &used), -1);
    EXPECT_EQ(used, 17u) << "the label line fits";
    EXPECT_STREQ(memory, "[stRelaySyncReq]\n  ");
    EXPECT_EQ(body->visualize(168, memory, 17, &used), -1);
    EXPECT_EQ(used, 0u);
    EXPECT_STREQ(memory, "[stRelaySyncReq]");
}

TEST(Union, StorageIsTheLargestMember) {
    EXPECT_EQ(sizeof(CSRelayMsgBody), sizeof(CSRelayFramePack));
}
