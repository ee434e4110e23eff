// One whole message of each command, worked out by hand: a head of user 1001, room 7, asynchronous id 258,
// packed at version 3, and the body of the command.
#include "protocol/cs_relay_msg.h"
#include "tests/golden.h"

#include <cstring>

using namespace cs_relay_msg;
using korvan_test::Bytes;
using korvan_test::constructed;
using korvan_test::hex;
using korvan_test::image;
using korvan_test::Outcome;
using korvan_test::packed;
using korvan_test::unpacked;

namespace {

struct Golden {
    const char* member;
    uint8_t command;
    const char* commandByte;
    void (*fill)(CSRelayMsgBody&); ///< sets what differs from 0
    const char* body;
};

template <CSRelayInput CSRelayMsgBody::*Member>
void fillInput(CSRelayMsgBody& body) {
    (body.*Member).stRelayData.dwObjectId = 7;
    (body.*Member).stRelayData.wRelayLen = 3;
    std::memcpy((body.*Member).stRelayData.szRelayBuf, "\x0a\x0b\x0c", 3);
    (body.*Member).stRelayData.bUserStatusFlag = 1;
    (body.*Member).stRelayData.wSequance = 258;
    (body.*Member).bRepeatCount = 1;
}
constexpr const char* INPUT = "00 00 00 07  00 03  0a 0b 0c  01  01 02  01";

template <CSRelayFramePack CSRelayMsgBody::*Member>
void fillFrames(CSRelayMsgBody& body) {
    (body.*Member).bCount = 1;
    (body.*Member).astRelayData[0].dwFrameId = 100;
    (body.*Member).astRelayData[0].bCount = 1;
    (body.*Member).astRelayData[0].astRelayData[0].dwObjectId = 8;
    (body.*Member).astRelayData[0].astRelayData[0].wRelayLen = 2;
    std::memcpy((body.*Member).astRelayData[0].astRelayData[0].szRelayBuf, "up", 2);
    (body.*Member).astRelayData[0].astRelayData[0].wSequance = 3;
    (body.*Member).astRelayData[0].dwLastHasDataFrameId = 98;
}
constexpr const char* FRAMES = "01  00 00 00 64  01  00 00 00 08  00 02  75 70  00  00 03  00 00 00 62";

const Golden GOLDEN[] = {
    {"stRelayLoginReq", 161, "a1",
     [](CSRelayMsgBody& b) {
         std::strcpy(b.stRelayLoginReq.szSigBuf, "abc");
         b.stRelayLoginReq.dwReserve = 1;
     },
     "00 00 00 04  61 62 63 00  00 00 00 01"},
    {"stRelayLoginRes", 162, "a2", [](CSRelayMsgBody& b) { b.stRelayLoginRes.dwReserve = 2; }, "00 00 00 02"},
    {"stRelayStartReq", 163, "a3",
     [](CSRelayMsgBody& b) {
         b.stRelayStartReq.dwReserve = 3;
         b.stRelayStartReq.bNeedSeek = 1;
         b.stRelayStartReq.dwSeekFrameID = 4;
     },
     "00 00 00 03  01  00 00 00 04"},
    {"stRelayStartRes", 164, "a4",
     [](CSRelayMsgBody& b) {
         b.stRelayStartRes.iResult = -5;
         std::strcpy(b.stRelayStartRes.szErrorDesc, "no");
         b.stRelayStartRes.dwBeginFrameID = 6;
         b.stRelayStartRes.bNeedToPlayFromFrame0 = 1;
     },
     "ff ff ff fb  00 00 00 03  6e 6f 00  00 00 00 06  01"},
    {"stRelayInputing", 165, "a5", fillInput<&CSRelayMsgBody::stRelayInputing>, INPUT},
    {"stRelayLockStep", 167, "a7", fillFrames<&CSRelayMsgBody::stRelayLockStep>, FRAMES},
    {"stRelaySyncReq", 168, "a8",
     [](CSRelayMsgBody& b) {
         b.stRelaySyncReq.dwFrameIdBegin = 7;
         b.stRelaySyncReq.dwFrameIdEnd = 8;
     },
     "00 00 00 07  00 00 00 08"},
    {"stRelaySyncRes", 169, "a9",
     [](CSRelayMsgBody& b) {
         b.stRelaySyncRes.iResult = 9;
         b.stRelaySyncRes.stSyncData.dwFrameId = 100;
         b.stRelaySyncRes.stSyncData.dwLastHasDataFrameId = 98;
     },
     "00 00 00 09  00 00 00 64  00  00 00 00 62"},
    {"stRelayMsgPack", 170, "aa",
     [](CSRelayMsgBody& b) {
         b.stRelayMsgPack.wSeqId = 10;
         b.stRelayMsgPack.bCount = 1;
         b.stRelayMsgPack.bDataType = 11;
         b.stRelayMsgPack.wLength = 1;
         b.stRelayMsgPack.szData[0] = 0xcc;
     },
     "00 0a  01  00  0b  00 01  cc"},
    {"stRelayStopReq", 174, "ae", [](CSRelayMsgBody& b) { b.stRelayStopReq.dwReserve = 12; }, "00 00 00 0c"},
    {"stRelayStopRes", 175, "af",
     [](CSRelayMsgBody& b) {
         b.stRelayStopRes.iResult = -1;
         b.stRelayStopRes.dwReserve = 13;
     },
     "ff ff ff ff  00 00 00 0d"},
    {"stCSRelaySeekPlayReq", 182, "b6",
     [](CSRelayMsgBody& b) {
         b.stCSRelaySeekPlayReq.dwFrameIntervalMs = 10;
         b.stCSRelaySeekPlayReq.dwFrameCount = 1000;
         b.stCSRelaySeekPlayReq.dwReplayPieceInofCount = 1;
         b.stCSRelaySeekPlayReq.astReplayPieceInof[0].dwFrameCount = 1000;
     },
     "00 00 00 0a  00 00 00 00  00 00 03 e8  00 00 00 01  00 00 00 00  00 00 03 e8"},
    {"stCSRelaySeekPlayRes", 183, "b7",
     [](CSRelayMsgBody& b) {
         b.stCSRelaySeekPlayRes.dwRetCode = 14;
         std::strcpy(b.stCSRelaySeekPlayRes.szRetStr, "x");
     },
     "00 00 00 0e  00 00 00 02  78 00"},
    {"stCSRelayMsgHeartBeatReq", 184, "b8", [](CSRelayMsgBody&) {}, "00 00 00 00"},
    {"stCSRelayMsgHeartBeatRes", 185, "b9",
     [](CSRelayMsgBody& b) { b.stCSRelayMsgHeartBeatRes.dwHeartBeatIntervalMs = 5000; }, "00 00 13 88"},
    {"stRelayBroadCastReq", 186, "ba", fillInput<&CSRelayMsgBody::stRelayBroadCastReq>, INPUT},
    {"stRelayBroadCastRes", 187, "bb", fillFrames<&CSRelayMsgBody::stRelayBroadCastRes>, FRAMES},
    {"stRelayInputCheckReq", 188, "bc", fillInput<&CSRelayMsgBody::stRelayInputCheckReq>, INPUT},
    {"stRelayBroadCastCheckReq", 189, "bd", fillInput<&CSRelayMsgBody::stRelayBroadCastCheckReq>, INPUT},
    {"stRelayCheckReq", 190, "be", fillInput<&CSRelayMsgBody::stRelayCheckReq>, INPUT},
    {"stCSRelayMsgStatUserReq", 191, "bf",
     [](CSRelayMsgBody& b) { b.stCSRelayMsgStatUserReq.dwRetCode = 15; }, "00 00 00 0f"},
    {"stCSRelayMsgStatUserRes", 192, "c0",
     [](CSRelayMsgBody& b) { std::strcpy(b.stCSRelayMsgStatUserRes.szUserRetStr, "u"); },
     "00 00 00 01  00  00 00 00 02  75 00  00 00 00 01  00"},
    {"stRelayReloginNotify", 193, "c1",
     [](CSRelayMsgBody& b) { b.stRelayReloginNotify.ullQuestion = 0x0102030405060708; },
     "00 00 00 00  01 02 03 04 05 06 07 08"},
    {"stRelayError", 194, "c2",
     [](CSRelayMsgBody& b) {
         b.stRelayError.dwError_code = 16;
         std::strcpy(b.stRelayError.szError_code_str, "e");
         b.stRelayError.bRequest_cmd_code = 0xa1;
     },
     "00 00 00 10  00 00 00 02  65 00  00 00 00 01  00  a1  00"},
    {"stRelayInputMulty", 195, "c3",
     [](CSRelayMsgBody& b) {
         b.stRelayInputMulty.bFrameCount = 1;
         b.stRelayInputMulty.astRelayData[0].dwObjectId = 17;
         b.stRelayInputMulty.astRelayData[0].wSequance = 18;
     },
     "01  00 00 00 11  00 00  00  00 12"},
};

class GoldenMessage : public testing::TestWithParam<Golden> {
protected:
    std::unique_ptr<CSRelayMsg> make(uint8_t version) const {
        auto message = constructed<CSRelayMsg>();
        message->stHead.dwUserID = 1001;
        message->stHead.dwRoomID = 7;
        message->stHead.bVersion = version;
        message->stHead.wAsyncID = 258;
        message->stHead.bCmdId = GetParam().command;
        GetParam().fill(message->stBody);
        return message;
    }
    Bytes wire() const {
        return hex(std::string("00 00 03 e9  00 00 00 07  03  01 02 ") + GetParam().commandByte +
                   GetParam().body);
    }
};

} // namespace

TEST_P(GoldenMessage, Packs) {
    EXPECT_EQ(packed(*make(0)), (Outcome{0, wire()}));
}

TEST_P(GoldenMessage, Unpacks) {
    auto message = std::make_unique<CSRelayMsg>();
    size_t used = 0;
    EXPECT_EQ(unpacked(*message, wire() + "next", 0, &used), 0);
    EXPECT_EQ(used, wire().size());
    EXPECT_TRUE(image(*message) == image(*make(3))) << "another record than the one expected";
}

INSTANTIATE_TEST_SUITE_P(Command, GoldenMessage, testing::ValuesIn(GOLDEN),
                         [](const auto& golden) { return std::string(golden.param.member); });

TEST(GoldenMessages, NoCommandIsMissing) {
    EXPECT_EQ(std::size(GOLDEN), 25u);
    uint8_t previous = 0;
    for (const Golden& golden : GOLDEN) {
        EXPECT_GT(+golden.command, +previous);
        EXPECT_STREQ(commandName(golden.command), golden.member);
        previous = golden.command;
    }
}

TEST(GoldenMessages, HeartbeatAtEachCutOff) {
    auto message = constructed<CSRelayMsg>();
    message->stHead.dwUserID = 1001;
    message->stHead.dwRoomID = 7;
    message->stHead.wAsyncID = 258;
    message->stHead.bCmdId = 184;
    const std::pair<uint32_t, const char*> stamps[] = {{0, "03"}, {1, "01"}, {2, "02"},
                                                       {3, "03"}, {4, "03"}, {UINT32_MAX, "03"}};
    for (const auto& [cutVer, stamp] : stamps) {
        const Bytes wire = hex(std::string("00 00 03 e9 00 00 00 07 ") + stamp + " 01 02 b8 00 00 00 00");
        EXPECT_EQ(packed(*message, cutVer, 64), (Outcome{0, wire}));
        EXPECT_EQ(+message->stHead.bVersion, 0) << "the record keeps its own version";
    }
}

TEST(GoldenMessages, InputAtVersion1HasNoRepeatCount) {
    auto message = constructed<CSRelayMsg>();
    message->stHead.bCmdId = 165;
    fillInput<&CSRelayMsgBody::stRelayInputing>(message->stBody);
    EXPECT_EQ(packed(*message, 1),
              (Outcome{0, hex("00 00 00 00 00 00 00 00 01 00 00 a5  00 00 00 07 00 03 0a 0b 0c 01 01 02")}));
}

TEST(GoldenMessages, FramesAtVersion2HaveNoLastDataFrame) {
    auto message = constructed<CSRelayMsg>();
    message->stHead.bCmdId = 167;
    fillFrames<&CSRelayMsgBody::stRelayLockStep>(message->stBody);
    EXPECT_EQ(packed(*message, 2), (Outcome{0, hex("00 00 00 00 00 00 00 00 02 00 00 a7"
                                                   "01 00 00 00 64 01 00 00 00 08 00 02 75 70 00 00 03")}));
}
