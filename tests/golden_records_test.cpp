// The bytes of every record type at each of its versions, worked out by hand from the rules of the wire.
#include "protocol/cs_relay_msg.h"
#include "tests/golden.h"

#include <cstring>

using namespace cs_relay_msg;
using korvan_test::expectGolden;

TEST(GoldenRecord, Head) {
    expectGolden<CSRelayMsgHead>("00 00 03 e9  00 00 00 07  00  01 02  b8", 1, [](auto& r) {
        r.dwUserID = 1001;
        r.dwRoomID = 7;
        r.wAsyncID = 258;
        r.bCmdId = 184;
    });
}

TEST(GoldenRecord, MsgPack) {
    expectGolden<CSRelayMsgPack>("12 34  02  01  09  00 03  de ad 00", 1, [](auto& r) {
        r.wSeqId = 0x1234;
        r.bCount = 2;
        r.bIndex = 1;
        r.bDataType = 9;
        r.wLength = 3;
        r.szData[0] = 0xde;
        r.szData[1] = 0xad;
        r.szData[2] = 0;
    });
}

TEST(GoldenRecord, Data) {
    expectGolden<CSRelayData>("89 ab cd ef  00 02  0a ff  80  fe dc", 1, [](auto& r) {
        r.dwObjectId = 0x89abcdef;
        r.wRelayLen = 2;
        r.szRelayBuf[0] = 0x0a;
        r.szRelayBuf[1] = 0xff;
        r.bUserStatusFlag = 0x80;
        r.wSequance = 0xfedc;
    });
}

namespace {
void fillInput(CSRelayInput& r) {
    r.stRelayData.dwObjectId = 7;
    r.stRelayData.wRelayLen = 3;
    std::memcpy(r.stRelayData.szRelayBuf, "\x0a\x0b\x0c", 3);
    r.stRelayData.bUserStatusFlag = 1;
    r.stRelayData.wSequance = 258;
    r.bRepeatCount = 1;
}
void fillRepeatedInput(CSRelayInput& r) {
    fillInput(r);
    r.bRepeatCount = 200;
}
} // namespace

TEST(GoldenRecord, InputAtVersion2) {
    expectGolden<CSRelayInput>("00 00 00 07  00 03  0a 0b 0c  01  01 02  01", 2, fillInput);
    expectGolden<CSRelayInput>("00 00 00 07  00 03  0a 0b 0c  01  01 02  c8", 2, fillRepeatedInput);
}

TEST(GoldenRecord, InputAtVersion1HasNoRepeatCountAndReadsAsOne) {
    expectGolden<CSRelayInput>("00 00 00 07  00 03  0a 0b 0c  01  01 02", 1, fillInput);
    expectGolden<CSRelayInput>("00 00 00 07  00 03  0a 0b 0c  01  01 02", 1, fillRepeatedInput, fillInput);
}

TEST(GoldenRecord, InputMulty) {
    expectGolden<CSRelayInputMulty>("02"
                                    "00 00 00 01  00 01  41  00  00 05"
                                    "00 00 00 02  00 00      03  00 06",
                                    1, [](auto& r) {
                                        r.bFrameCount = 2;
                                        r.astRelayData[0].dwObjectId = 1;
                                        r.astRelayData[0].wRelayLen = 1;
                                        r.astRelayData[0].szRelayBuf[0] = 'A';
                                        r.astRelayData[0].wSequance = 5;
                                        r.astRelayData[1].dwObjectId = 2;
                                        r.astRelayData[1].bUserStatusFlag = 3;
                                        r.astRelayData[1].wSequance = 6;
                                    });
    expectGolden<CSRelayInputMulty>("00", 1, [](auto& r) { r.bFrameCount = 0; });
}

namespace {
void fillEmptyFrame(CSRelayFrame& r) {
    r.dwFrameId = 100;
    r.dwLastHasDataFrameId = 98;
}
void fillEmptyOldFrame(CSRelayFrame& r) {
    r.dwFrameId = 100;
}
void fillOldFrame(CSRelayFrame& r) {
    r.dwFrameId = 101;
    r.bCount = 2;
    r.astRelayData[0].dwObjectId = 11;
    r.astRelayData[0].wRelayLen = 2;
    std::memcpy(r.astRelayData[0].szRelayBuf, "hi", 2);
    r.astRelayData[0].bUserStatusFlag = 4;
    r.astRelayData[0].wSequance = 9;
    r.astRelayData[1].dwObjectId = 12;
    r.astRelayData[1].wSequance = 10;
}
void fillFrame(CSRelayFrame& r) {
    fillOldFrame(r);
    r.dwLastHasDataFrameId = 0x01000063;
}
} // namespace

TEST(GoldenRecord, FrameAtVersion3) {
    expectGolden<CSRelayFrame>("00 00 00 64  00  00 00 00 62", 3, fillEmptyFrame);
    expectGolden<CSRelayFrame>("00 00 00 65  02"
                               "00 00 00 0b  00 02  68 69  04  00 09"
                               "00 00 00 0c  00 00         00  00 0a"
                               "01 00 00 63",
                               3, fillFrame);
}

TEST(GoldenRecord, FrameAtVersions1And2HasNoLastDataFrameAndReadsAsZero) {
    for (const uint32_t version : {1u, 2u}) {
        expectGolden<CSRelayFrame>("00 00 00 64  00", version, fillEmptyFrame, fillEmptyOldFrame);
        expectGolden<CSRelayFrame>("00 00 00 65  02"
                                   "00 00 00 0b  00 02  68 69  04  00 09"
                                   "00 00 00 0c  00 00         00  00 0a",
                                   version, fillFrame, fillOldFrame);
    }
}

namespace {
void fillOldPack(CSRelayFramePack& r) {
    r.bCount = 2;
    r.astRelayData[0].dwFrameId = 1;
    r.astRelayData[1].dwFrameId = 2;
    r.astRelayData[1].bCount = 1;
    r.astRelayData[1].astRelayData[0].dwObjectId = 3;
    r.astRelayData[1].astRelayData[0].wRelayLen = 1;
    r.astRelayData[1].astRelayData[0].szRelayBuf[0] = 0x55;
    r.astRelayData[1].astRelayData[0].bUserStatusFlag = 6;
    r.astRelayData[1].astRelayData[0].wSequance = 7;
}
void fillPack(CSRelayFramePack& r) {
    fillOldPack(r);
    r.astRelayData[0].dwLastHasDataFrameId = 0x10;
    r.astRelayData[1].dwLastHasDataFrameId = 0x11;
}
} // namespace

TEST(GoldenRecord, FramePackAtVersion3) {
    expectGolden<CSRelayFramePack>("02"
                                   "00 00 00 01  00                                            00 00 00 10"
                                   "00 00 00 02  01  00 00 00 03  00 01  55  06  00 07         00 00 00 11",
                                   3, fillPack);
}

TEST(GoldenRecord, FramePackAtVersions1And2) {
    for (const uint32_t version : {1u, 2u}) {
        expectGolden<CSRelayFramePack>("02"
                                       "00 00 00 01  00"
                                       "00 00 00 02  01  00 00 00 03  00 01  55  06  00 07",
                                       version, fillPack, fillOldPack);
    }
}

TEST(GoldenRecord, LoginReq) {
    expectGolden<CSRelayMsgLoginReq>("00 00 00 04  61 62 63 00  00 00 00 05", 1, [](auto& r) {
        std::strcpy(r.szSigBuf, "abc");
        r.dwReserve = 5;
    });
    expectGolden<CSRelayMsgLoginReq>("00 00 00 01  00  00 00 00 00", 1, [](auto& r) { r.szSigBuf[0] = 0; });
}

TEST(GoldenRecord, LoginRes) {
    expectGolden<CSRelayMsgLoginRes>("0a 0b 0c 0d", 1, [](auto& r) { r.dwReserve = 0x0a0b0c0d; });
}

TEST(GoldenRecord, ReloginNotify) {
    expectGolden<CSRelayMsgReloginNotify>("00 00 00 01  01 23 45 67 89 ab cd ef", 1, [](auto& r) {
        r.dwReserve = 1;
        r.ullQuestion = 0x0123456789abcdef;
    });
    expectGolden<CSRelayMsgReloginNotify>("00 00 00 00  ff ff ff ff ff ff ff ff", 1,
                                          [](auto& r) { r.ullQuestion = 18446744073709551615u; });
}

TEST(GoldenRecord, HeartBeatReq) {
    expectGolden<CSRelayMsgHeartBeatReq>("00 00 01 00", 1, [](auto& r) { r.dwUnused = 256; });
}

TEST(GoldenRecord, HeartBeatRes) {
    expectGolden<CSRelayMsgHeartBeatRes>("00 00 13 88", 1, [](auto& r) { r.dwHeartBeatIntervalMs = 5000; });
}

TEST(GoldenRecord, StopReq) {
    expectGolden<CSRelayMsgStopReq>("ff ff ff fe", 1, [](auto& r) { r.dwReserve = 4294967294u; });
}

TEST(GoldenRecord, StopRes) {
    expectGolden<CSRelayMsgStopRes>("ff ff ff ff  00 00 00 02", 1, [](auto& r) {
        r.iResult = -1;
        r.dwReserve = 2;
    });
}

TEST(GoldenRecord, Error) {
    expectGolden<CSRelayError>("00 00 01 f4"
                               "00 00 00 03  6e 6f 00"
                               "00 00 00 02  75 00"
                               "a1  01",
                               1, [](auto& r) {
                                   r.dwError_code = 500;
                                   std::strcpy(r.szError_code_str, "no");
                                   std::strcpy(r.szError_svr_url, "u");
                                   r.bRequest_cmd_code = 161;
                                   r.bIsFatalError = 1;
                               });
}

TEST(GoldenRecord, StartReq) {
    expectGolden<CSRelayMsgStartReq>("00 00 00 01  00  00 01 e2 40", 1, [](auto& r) {
        r.dwReserve = 1;
        r.bNeedSeek = 0; // the frame travels all the same
        r.dwSeekFrameID = 123456;
    });
}

TEST(GoldenRecord, StartRes) {
    expectGolden<CSRelayMsgStartRes>("80 00 00 00  00 00 00 05 66 75 6c 6c 00  00 00 00 0c  01", 1,
                                     [](auto& r) {
                                         r.iResult = INT32_MIN;
                                         std::strcpy(r.szErrorDesc, "full");
                                         r.dwBeginFrameID = 12;
                                         r.bNeedToPlayFromFrame0 = 1;
                                     });
}

TEST(GoldenRecord, RoomUserInfo) {
    expectGolden<CreateRoomUserInfo>("00 00 00 03  75 31 00  00 00 00 08  31 30 2e 30 2e 30 2e 00", 1,
                                     [](auto& r) {
                                         std::strcpy(r.szUser_id, "u1");
                                         std::strcpy(r.szUser_ip, "10.0.0.");
                                     });
    expectGolden<CreateRoomUserInfo>("00 00 00 01 00  00 00 00 01 00", 1,
                                     [](auto& r) { r.szUser_id[0] = '\0'; });
}

TEST(GoldenRecord, SyncReq) {
    expectGolden<CSRelayMsgSyncReq>("00 00 00 14  00 00 00 0a", 1, [](auto& r) {
        r.dwFrameIdBegin = 20; // the codec does not compare the two
        r.dwFrameIdEnd = 10;
    });
}

namespace {
void fillOldSync(CSRelayMsgSyncRes& r) {
    r.iResult = -2;
    fillEmptyOldFrame(r.stSyncData);
}
void fillSync(CSRelayMsgSyncRes& r) {
    r.iResult = -2;
    fillEmptyFrame(r.stSyncData);
}
} // namespace

TEST(GoldenRecord, SyncResAtVersion3) {
    expectGolden<CSRelayMsgSyncRes>("ff ff ff fe  00 00 00 64  00  00 00 00 62", 3, fillSync);
}

TEST(GoldenRecord, SyncResAtVersions1And2) {
    expectGolden<CSRelayMsgSyncRes>("ff ff ff fe  00 00 00 64  00", 1, fillSync, fillOldSync);
    expectGolden<CSRelayMsgSyncRes>("ff ff ff fe  00 00 00 64  00", 2, fillSync, fillOldSync);
}

TEST(GoldenRecord, ReplayPiece) {
    expectGolden<ReplayPieceInof>("00 00 00 02  00 00 03 e8", 1, [](auto& r) {
        r.dwStartFrame = 2;
        r.dwFrameCount = 1000;
    });
}

TEST(GoldenRecord, SeekPlayReqAsConstructed) {
    expectGolden<CSRelaySeekPlayReq>("00 00 00 0a  00 00 00 00  00 00 03 e8  00 00 00 01"
                                     "00 00 00 00  00 00 03 e8",
                                     1, [](auto& r) {
                                         r.dwFrameIntervalMs = 10;
                                         r.dwFrameCount = 1000;
                                         r.dwReplayPieceInofCount = 1;
                                         r.astReplayPieceInof[0].dwFrameCount = 1000;
                                     });
}

TEST(GoldenRecord, SeekPlayReqWithTwoPieces) {
    expectGolden<CSRelaySeekPlayReq>("00 00 00 21  00 00 00 05  00 00 00 06  00 00 00 02"
                                     "00 00 00 01  00 00 00 02  00 00 00 03  00 00 00 04",
                                     1, [](auto& r) {
                                         r.dwFrameIntervalMs = 33;
                                         r.dwStartFrame = 5;
                                         r.dwFrameCount = 6;
                                         r.dwReplayPieceInofCount = 2;
                                         r.astReplayPieceInof[0].dwStartFrame = 1;
                                         r.astReplayPieceInof[0].dwFrameCount = 2;
                                         r.astReplayPieceInof[1].dwStartFrame = 3;
                                         r.astReplayPieceInof[1].dwFrameCount = 4;
                                     });
}

TEST(GoldenRecord, SeekPlayRes) {
    expectGolden<CSRelaySeekPlayRes>("00 00 00 00  00 00 00 01  00", 1, [](auto& r) { r.dwRetCode = 0; });
    expectGolden<CSRelaySeekPlayRes>("00 00 01 94  00 00 00 05  67 6f 6e 65 00", 1, [](auto& r) {
        r.dwRetCode = 404;
        std::strcpy(r.szRetStr, "gone");
    });
}

TEST(GoldenRecord, StatReq) {
    expectGolden<CSRelayStatReq>("ff ff ff ff", 1, [](auto& r) { r.dwRetCode = 4294967295u; });
}

TEST(GoldenRecord, StatRes) {
    expectGolden<CSRelayStatRes>("00 00 00 02  72 00  00 00 00 01  00  00 00 00 03  70 31 00", 1,
                                 [](auto& r) {
                                     std::strcpy(r.szRoomRetStr, "r");
                                     std::strcpy(r.szProcessRetStr, "p1");
                                 });
}
