// The text of every kind of field, typed by hand.
#include "protocol/cs_relay_msg.h"
#include "tests/Bytes.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace cs_relay_msg;
using korvan_test::constructed;
using korvan_test::text;

TEST(GoldenText, HeartbeatMessage) {
    auto message = constructed<CSRelayMsg>();
    message->stHead.dwUserID = 1001;
    message->stHead.dwRoomID = 7;
    message->stHead.bVersion = 3;
    message->stHead.wAsyncID = 258;
    message->stHead.bCmdId = 184;
    EXPECT_EQ(text(*message), "[stHead]\n"
                              "  [dwUserID]: 1001\n"
                              "  [dwRoomID]: 7\n"
                              "  [bVersion]: 0x03\n"
                              "  [wAsyncID]: 258\n"
                              "  [bCmdId]: 0xb8\n"
                              "[stBody]\n"
                              "  [stCSRelayMsgHeartBeatReq]\n"
                              "    [dwUnused]: 0\n");
    EXPECT_EQ(text(*message, -1, ' '),
              "[stHead] [dwUserID]: 1001 [dwRoomID]: 7 [bVersion]: 0x03 [wAsyncID]: 258 [bCmdId]: 0xb8 "
              "[stBody] [stCSRelayMsgHeartBeatReq] [dwUnused]: 0 ");
}

TEST(GoldenText, MessageWithAnUnassignedCommandEndsAfterTheBodyLabel) {
    auto message = constructed<CSRelayMsg>();
    message->stHead.bCmdId = 166;
    EXPECT_EQ(text(*message, 1), "  [stHead]\n"
                                 "    [dwUserID]: 0\n"
                                 "    [dwRoomID]: 0\n"
                                 "    [bVersion]: 0x00\n"
                                 "    [wAsyncID]: 0\n"
                                 "    [bCmdId]: 0xa6\n"
                                 "  [stBody]\n");
}

TEST(GoldenText, Integers) {
    auto head = constructed<CSRelayMsgHead>();
    head->dwUserID = 4294967295u;
    head->dwRoomID = 0;
    head->bVersion = 3;
    head->wAsyncID = 65535; // never negative
    head->bCmdId = 184;
    EXPECT_EQ(text(*head), "[dwUserID]: 4294967295\n"
                           "[dwRoomID]: 0\n"
                           "[bVersion]: 0x03\n"
                           "[wAsyncID]: 65535\n"
                           "[bCmdId]: 0xb8\n");
}

TEST(GoldenText, SignedIntegers) {
    auto stop = constructed<CSRelayMsgStopRes>();
    stop->iResult = -1;
    EXPECT_EQ(text(*stop), "[iResult]: -1\n[dwReserve]: 0\n");
    stop->iResult = INT32_MIN;
    EXPECT_EQ(text(*stop), "[iResult]: -2147483648\n[dwReserve]: 0\n");
    stop->iResult = INT32_MAX;
    EXPECT_EQ(text(*stop), "[iResult]: 2147483647\n[dwReserve]: 0\n");
}

TEST(GoldenText, LongInteger) {
    auto notify = constructed<CSRelayMsgReloginNotify>();
    notify->ullQuestion = 18446744073709551615u;
    EXPECT_EQ(text(*notify), "[dwReserve]: 0\n[ullQuestion]: 18446744073709551615\n");
}

TEST(GoldenText, Strings) {
    auto error = constructed<CSRelayError>();
    std::strcpy(error->szError_code_str, "room is full");
    EXPECT_EQ(text(*error), "[dwError_code]: 1\n"
                            "[szError_code_str]: room is full\n"
                            "[szError_svr_url]: \n"
                            "[bRequest_cmd_code]: 0x01\n"
                            "[bIsFatalError]: 0x00\n");
}

TEST(GoldenText, ByteArrays) {
    auto data = constructed<CSRelayData>();
    data->wRelayLen = 2;
    data->szRelayBuf[0] = 0x0A;
    data->szRelayBuf[1] = 0xFF;
    EXPECT_EQ(text(*data), "[dwObjectId]: 0\n"
                           "[wRelayLen]: 2\n"
                           "[szRelayBuf](2): 0x0a 0xff\n"
                           "[bUserStatusFlag]: 0x00\n"
                           "[wSequance]: 0\n");
    data->wRelayLen = 0;
    EXPECT_EQ(text(*data, 2, ';'),
              "    [dwObjectId]: 0;    [wRelayLen]: 0;    [szRelayBuf](0):;    [bUserStatusFlag]: 0x00;"
              "    [wSequance]: 0;");
}

TEST(GoldenText, MsgPackAsConstructed) {
    EXPECT_EQ(text(*constructed<CSRelayMsgPack>()), "[wSeqId]: 0\n"
                                                    "[bCount]: 0x01\n"
                                                    "[bIndex]: 0x00\n"
                                                    "[bDataType]: 0x00\n"
                                                    "[wLength]: 0\n"
                                                    "[szData](0):\n");
}

TEST(GoldenText, NestedRecord) {
    EXPECT_EQ(text(*constructed<CSRelayInput>()), "[stRelayData]\n"
                                                  "  [dwObjectId]: 0\n"
                                                  "  [wRelayLen]: 0\n"
                                                  "  [szRelayBuf](0):\n"
                                                  "  [bUserStatusFlag]: 0x00\n"
                                                  "  [wSequance]: 0\n"
                                                  "[bRepeatCount]: 0x01\n");
}

TEST(GoldenText, FrameWithTwoElements) {
    auto frame = constructed<CSRelayFrame>();
    frame->dwFrameId = 100;
    frame->bCount = 2;
    frame->astRelayData[0].dwObjectId = 11;
    frame->astRelayData[0].wRelayLen = 1;
    frame->astRelayData[0].szRelayBuf[0] = 0xab;
    frame->astRelayData[1].dwObjectId = 12;
    frame->astRelayData[1].wSequance = 9;
    frame->dwLastHasDataFrameId = 98;
    EXPECT_EQ(text(*frame), "[dwFrameId]: 100\n"
                            "[bCount]: 0x02\n"
                            "[astRelayData][0]\n"
                            "  [dwObjectId]: 11\n"
                            "  [wRelayLen]: 1\n"
                            "  [szRelayBuf](1): 0xab\n"
                            "  [bUserStatusFlag]: 0x00\n"
                            "  [wSequance]: 0\n"
                            "[astRelayData][1]\n"
                            "  [dwObjectId]: 12\n"
                            "  [wRelayLen]: 0\n"
                            "  [szRelayBuf](0):\n"
                            "  [bUserStatusFlag]: 0x00\n"
                            "  [wSequance]: 9\n"
                            "[dwLastHasDataFrameId]: 98\n");
}

TEST(GoldenText, FramePackIsThreeLevelsDeep) {
    auto pack = constructed<CSRelayFramePack>();
    pack->bCount = 1;
    pack->astRelayData[0].bCount = 1;
    EXPECT_EQ(text(*pack), "[bCount]: 0x01\n"
                           "[astRelayData][0]\n"
                           "  [dwFrameId]: 0\n"
                           "  [bCount]: 0x01\n"
                           "  [astRelayData][0]\n"
                           "    [dwObjectId]: 0\n"
                           "    [wRelayLen]: 0\n"
                           "    [szRelayBuf](0):\n"
                           "    [bUserStatusFlag]: 0x00\n"
                           "    [wSequance]: 0\n"
                           "  [dwLastHasDataFrameId]: 0\n");
}

TEST(GoldenText, SeekPlayReqAsConstructedShowsItsOnePiece) {
    EXPECT_EQ(text(*constructed<CSRelaySeekPlayReq>()), "[dwFrameIntervalMs]: 10\n"
                                                        "[dwStartFrame]: 0\n"
                                                        "[dwFrameCount]: 1000\n"
                                                        "[dwReplayPieceInofCount]: 1\n"
                                                        "[astReplayPieceInof][0]\n"
                                                        "  [dwStartFrame]: 0\n"
                                                        "  [dwFrameCount]: 1000\n");
}

TEST(GoldenText, SyncRes) {
    auto sync = constructed<CSRelayMsgSyncRes>();
    sync->iResult = -1;
    EXPECT_EQ(text(*sync, 0, '|'), "[iResult]: -1|[stSyncData]|  [dwFrameId]: 0|  [bCount]: 0x00|"
                                   "  [dwLastHasDataFrameId]: 0|");
}

TEST(GoldenText, LargestUnsignedCodes) {
    auto seek = constructed<CSRelaySeekPlayRes>();
    seek->dwRetCode = 4294967295u;
    EXPECT_EQ(text(*seek), "[dwRetCode]: 4294967295\n[szRetStr]: \n");
    auto stat = constructed<CSRelayStatReq>();
    stat->dwRetCode = 4294967295u;
    EXPECT_EQ(text(*stat), "[dwRetCode]: 4294967295\n");
}
