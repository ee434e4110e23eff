// Cut-off versions: what is on the wire at which version, and what a missing field reads as.
#include "protocol/Schema.h"
#include "protocol/cs_relay_msg.h"
#include "tests/Bytes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using namespace cs_relay_msg;
using korvan_test::Bytes;
using korvan_test::constructed;
using korvan_test::filled;
using korvan_test::hex;
using korvan_test::image;
using korvan_test::Outcome;
using korvan_test::packed;
using korvan_test::unpacked;

namespace {

/// Whether every one of @p cutVers packs and unpacks as @p version does.
template <class T>
void expectSameAs(uint32_t version, const std::vector<uint32_t>& cutVers) {
    auto record = constructed<T>();
    const Outcome expected = packed(*record, version);
    ASSERT_EQ(expected.result, 0);
    auto expectedRecord = filled<T>('\x5a');
    ASSERT_EQ(unpacked(*expectedRecord, expected.bytes, version), 0);
    for (const uint32_t cutVer : cutVers) {
        SCOPED_TRACE(cutVer);
        EXPECT_EQ(packed(*record, cutVer), expected);
        auto read = filled<T>('\x5a');
        size_t used = 0;
        EXPECT_EQ(unpacked(*read, expected.bytes, cutVer, &used), 0);
        EXPECT_EQ(used, expected.bytes.size());
        EXPECT_TRUE(image(*read) == image(*expectedRecord));
    }
}

} // namespace

TEST(Versions, ZeroAndAnythingAboveTheCurrentStandForTheCurrent) {
    EXPECT_EQ(schema::effectiveVersion(0, 2), 2u);
    EXPECT_EQ(schema::effectiveVersion(1, 2), 1u);
    EXPECT_EQ(schema::effectiveVersion(2, 2), 2u);
    EXPECT_EQ(schema::effectiveVersion(3, 2), 2u);
    EXPECT_EQ(schema::effectiveVersion(UINT32_MAX, 2), 2u);
}

TEST(Versions, TypesAtVersion1PackAlikeAtEveryCutOff) {
    const std::vector<uint32_t> all = {0, 1, 2, 3, 5, 7, 9, 256, 257, UINT32_MAX};
    expectSameAs<CSRelayMsgHead>(1, all);
    expectSameAs<CSRelayMsgPack>(1, all);
    expectSameAs<CSRelayData>(1, all);
    expectSameAs<CSRelayInputMulty>(1, all);
    expectSameAs<CSRelayMsgLoginReq>(1, all);
    expectSameAs<CSRelayMsgLoginRes>(1, all);
    expectSameAs<CSRelayMsgReloginNotify>(1, all);
    expectSameAs<CSRelayMsgHeartBeatReq>(1, all);
    expectSameAs<CSRelayMsgHeartBeatRes>(1, all);
    expectSameAs<CSRelayMsgStopReq>(1, all);
    expectSameAs<CSRelayMsgStopRes>(1, all);
    expectSameAs<CSRelayError>(1, all);
    expectSameAs<CSRelayMsgStartReq>(1, all);
    expectSameAs<CSRelayMsgStartRes>(1, all);
    expectSameAs<CreateRoomUserInfo>(1, all);
    expectSameAs<CSRelayMsgSyncReq>(1, all);
    expectSameAs<ReplayPieceInof>(1, all);
    expectSameAs<CSRelaySeekPlayReq>(1, all);
    expectSameAs<CSRelaySeekPlayRes>(1, all);
    expectSameAs<CSRelayStatReq>(1, all);
    expectSameAs<CSRelayStatRes>(1, all);
}

TEST(Versions, LaterTypesTakeZeroAndLargeCutOffsAsTheirCurrentVersion) {
    expectSameAs<CSRelayInput>(2, {0, 2, 3, 5, 257, UINT32_MAX});
    expectSameAs<CSRelayFrame>(3, {0, 3, 4, 9, 257, UINT32_MAX});
    expectSameAs<CSRelayFramePack>(3, {0, 3, 4, 9, 257, UINT32_MAX});
    expectSameAs<CSRelayMsgSyncRes>(3, {0, 3, 4, 9, 257, UINT32_MAX});
    expectSameAs<CSRelayMsg>(3, {0, 3, 4, 9, 257, UINT32_MAX});
}

TEST(Versions, InputAtCutOff1LeavesTheRepeatCountOut) {
    auto input = constructed<CSRelayInput>();
    input->bRepeatCount = 9;
    EXPECT_EQ(packed(*input, 1).bytes.size(), 9u);
    EXPECT_EQ(packed(*input, 0).bytes.size(), 10u);
    EXPECT_EQ(packed(*input, 5).bytes.size(), 10u);
    EXPECT_EQ(packed(*input, 5).bytes.back(), 9);
}

TEST(Versions, WithoutACutOffTheCurrentVersionIsMeant) {
    auto body = filled<CSRelayMsgBody>('\0');
    body->construct(cmd::stRelayInputing);
    CSRelayInput& input = body->stRelayInputing;
    const schema::Type& type = schema::typeOf<CSRelayInput>();
    char memory[30];
    size_t used = 0;
    EXPECT_EQ(input.pack(memory, sizeof(memory), &used), 0);
    EXPECT_EQ(used, 10u);
    EXPECT_EQ(body->pack(cmd::stRelayInputing, memory, sizeof(memory), &used), 0);
    EXPECT_EQ(used, 10u);
    Korvan::BixWriteBuf out(memory, sizeof(memory));
    EXPECT_EQ(input.pack(out), 0);
    EXPECT_EQ(out.getUsedSize(), 10u);
    EXPECT_EQ(body->pack(cmd::stRelayInputing, out), 0);
    EXPECT_EQ(out.getUsedSize(), 20u);
    EXPECT_EQ(type.pack(&input, out), 0);
    EXPECT_EQ(out.getUsedSize(), 30u);

    EXPECT_EQ(input.unpack(memory, sizeof(memory), &used), 0);
    EXPECT_EQ(used, 10u);
    EXPECT_EQ(body->unpack(cmd::stRelayInputing, memory, sizeof(memory), &used), 0);
    EXPECT_EQ(used, 10u);
    Korvan::BixReadBuf in(memory, sizeof(memory));
    EXPECT_EQ(input.unpack(in), 0);
    EXPECT_EQ(in.getUsedSize(), 10u);
    EXPECT_EQ(body->unpack(cmd::stRelayInputing, in), 0);
    EXPECT_EQ(in.getUsedSize(), 20u);
    EXPECT_EQ(type.unpack(&input, in), 0);
    EXPECT_EQ(in.getUsedSize(), 30u);
}

TEST(Versions, InputReadAtVersion1HasRepeatCount1WhateverItHeld) {
    auto input = constructed<CSRelayInput>();
    input->bRepeatCount = 9;
    size_t used = 0;
    EXPECT_EQ(unpacked(*input, hex("00 00 00 07 00 00 00 00 00 ee"), 1, &used), 0);
    EXPECT_EQ(used, 9u);
    EXPECT_EQ(+input->bRepeatCount, 1);
}

TEST(Versions, RepeatCountOfZeroTravels) {
    auto input = constructed<CSRelayInput>();
    input->bRepeatCount = 0;
    const Outcome wire = packed(*input);
    input->bRepeatCount = 9;
    EXPECT_EQ(unpacked(*input, wire.bytes), 0);
    EXPECT_EQ(+input->bRepeatCount, 0);
}

TEST(Versions, AbsentFieldIsNotSetWhenAnEarlierFieldFails) {
    auto input = constructed<CSRelayInput>();
    input->bRepeatCount = 9;
    EXPECT_EQ(unpacked(*input, hex("00 00 00 07 00 00 00 00"), 1), -2);
    EXPECT_EQ(+input->bRepeatCount, 9);
}

TEST(Versions, FrameReadAtVersion2HasNoLastDataFrameWhateverItHeld) {
    for (const uint32_t version : {1u, 2u}) {
        auto frame = constructed<CSRelayFrame>();
        frame->dwFrameId = 100;
        frame->dwLastHasDataFrameId = 98;
        EXPECT_EQ(packed(*frame, version), (Outcome{0, hex("00 00 00 64 00")}));
        EXPECT_EQ(unpacked(*frame, hex("00 00 00 65 00 11 22 33 44"), version), 0);
        EXPECT_EQ(+frame->dwFrameId, 101u);
        EXPECT_EQ(+frame->dwLastHasDataFrameId, 0u);
    }
}

TEST(Versions, FramePackHandsItsVersionDownToEachFrame) {
    auto pack = constructed<CSRelayFramePack>();
    pack->bCount = 3;
    for (uint32_t i = 0; i < 3; ++i) {
        pack->astRelayData[i].dwFrameId = i + 1;
        pack->astRelayData[i].dwLastHasDataFrameId = 0xd0 + i;
    }
    EXPECT_EQ(packed(*pack, 3), (Outcome{0, hex("03  00000001 00 000000d0  00000002 00 000000d1"
                                                "    00000003 00 000000d2")}));
    const Outcome old{0, hex("03  00000001 00  00000002 00  00000003 00")};
    EXPECT_EQ(packed(*pack, 1), old);
    EXPECT_EQ(packed(*pack, 2), old);
    EXPECT_EQ(unpacked(*pack, old.bytes, 2), 0);
    for (const CSRelayFrame& frame : pack->astRelayData) {
        EXPECT_EQ(+frame.dwLastHasDataFrameId, 0u);
    }
}

TEST(Versions, SyncResHandsItsVersionDownToItsFrame) {
    auto sync = constructed<CSRelayMsgSyncRes>();
    sync->stSyncData.dwLastHasDataFrameId = 98;
    EXPECT_EQ(packed(*sync, 0).bytes.size(), 13u);
    EXPECT_EQ(packed(*sync, 3).bytes.size(), 13u);
    EXPECT_EQ(packed(*sync, 1).bytes.size(), 9u);
    EXPECT_EQ(packed(*sync, 2).bytes.size(), 9u);
    EXPECT_EQ(unpacked(*sync, packed(*sync, 2).bytes, 2), 0);
    EXPECT_EQ(+sync->stSyncData.dwLastHasDataFrameId, 0u);
}

TEST(Versions, TextShowsGatedFieldsWhateverTheVersion) {
    auto frame = constructed<CSRelayFrame>();
    ASSERT_EQ(unpacked(*frame, hex("00 00 00 65 00"), 1), 0);
    EXPECT_EQ(korvan_test::text(*frame), "[dwFrameId]: 101\n[bCount]: 0x00\n[dwLastHasDataFrameId]: 0\n");
}
