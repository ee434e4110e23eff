// The whole message: its version byte, its head, the member that the head selects.
#include "protocol/cs_relay_msg.h"
#include "tests/Bytes.h"

#include <gtest/gtest.h>

#include <cstring>

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

std::unique_ptr<CSRelayMsg> makeMessage(uint8_t command) {
    auto message = constructed<CSRelayMsg>();
    message->stHead.bCmdId = command;
    message->stBody.construct(command);
    return message;
}

} // namespace

TEST(Head, EveryCutOffGivesTheSame12Bytes) {
    auto head = constructed<CSRelayMsgHead>();
    head->dwUserID = 1;
    head->bVersion = 9;
    for (const uint32_t cutVer : {0u, 1u, 2u, 3u, UINT32_MAX}) {
        const Outcome wire = packed(*head, cutVer);
        EXPECT_EQ(wire, (Outcome{0, hex("00 00 00 01 00 00 00 00 09 00 00 00")}));
        auto read = filled<CSRelayMsgHead>('#');
        EXPECT_EQ(unpacked(*read, wire.bytes, cutVer), 0);
        EXPECT_TRUE(image(*read) == image(*head));
    }
}

TEST(Head, PackedAloneCarriesItsOwnVersionByte) {
    EXPECT_EQ(packed(*constructed<CSRelayMsgHead>()), (Outcome{0, Bytes(std::string(12, '\0'))}));
}

TEST(Head, PackStopsBeforeTheFieldThatDoesNotFit) {
    auto head = filled<CSRelayMsgHead>('#');
    const std::pair<size_t, size_t> usedByRoom[] = {{0, 0}, {3, 0},  {4, 4},   {7, 4},  {8, 8},
                                                    {9, 9}, {10, 9}, {11, 11}, {12, 12}};
    for (const auto& [room, used] : usedByRoom) {
        SCOPED_TRACE(room);
        EXPECT_EQ(packed(*head, 0, room), (Outcome{room == 12 ? 0 : -1, Bytes(std::string(used, '#'))}));
    }
}

TEST(Head, UnpackKeepsTheFieldsBeforeTheOneThatIsMissing) {
    const Bytes wire = hex("01 02 03 04 05 06 07 08 09 0a 0b");
    auto head = filled<CSRelayMsgHead>('#');
    size_t used = 0;
    EXPECT_EQ(unpacked(*head, wire, 0, &used), -2);
    EXPECT_EQ(used, 11u);
    EXPECT_EQ(+head->dwUserID, 0x01020304u);
    EXPECT_EQ(+head->dwRoomID, 0x05060708u);
    EXPECT_EQ(+head->bVersion, 9);
    EXPECT_EQ(+head->wAsyncID, 0x0a0b);
    EXPECT_EQ(+head->bCmdId, '#') << "keeps its old value";
}

TEST(Envelope, UnassignedCommandIsAHeadAlone) {
    for (const uint8_t command :
         {uint8_t{0}, uint8_t{160}, uint8_t{166}, uint8_t{171}, uint8_t{196}, uint8_t{255}}) {
        auto message = makeMessage(command);
        const Outcome wire = packed(*message);
        EXPECT_EQ(wire.result, 0);
        EXPECT_EQ(wire.bytes.size(), 12u);
        auto read = filled<CSRelayMsg>('#');
        size_t used = 0;
        EXPECT_EQ(unpacked(*read, wire.bytes + "more", 0, &used), 0);
        EXPECT_EQ(used, 12u);
        EXPECT_EQ(+read->stHead.bCmdId, +command);
        EXPECT_EQ(image(*read).find_first_not_of('#', 12), std::string::npos) << "the body was touched";
    }
}

TEST(Envelope, ConstructedMessagePacksAsAnEmptyHeadAtVersion3) {
    EXPECT_EQ(packed(*constructed<CSRelayMsg>()), (Outcome{0, hex("00 00 00 00 00 00 00 00 03 00 00 00")}));
}

TEST(Envelope, PackLeavesTheRecordAlone) {
    auto message = makeMessage(184);
    message->stHead.bVersion = 77;
    const Bytes before = image(*message);
    EXPECT_EQ(packed(*message).bytes[8], 3);
    EXPECT_TRUE(image(*message) == before);
}

TEST(Envelope, VersionByteOutside1To3IsRefusedWithNothingRead) {
    Bytes wire = packed(*makeMessage(184)).bytes;
    for (int version = 0; version < 256; ++version) {
        SCOPED_TRACE(version);
        wire[8] = static_cast<char>(version);
        const bool accepted = version >= 1 && version <= 3;
        static auto message = filled<CSRelayMsg>('#');
        std::memset(static_cast<void*>(message.get()), '#', 20);
        size_t used = 99;
        EXPECT_EQ(unpacked(*message, wire, 0, &used), accepted ? 0 : -20);
        EXPECT_EQ(used, accepted ? 16u : 0u);
        if (accepted) {
            EXPECT_EQ(+message->stHead.bVersion, version);
        } else {
            EXPECT_EQ(image(*message).find_first_not_of('#'), std::string::npos) << "the record was touched";
        }
    }
}

TEST(Envelope, SendersVersionDecidesNotTheReceivers) {
    auto message = makeMessage(167);
    message->stBody.stRelayLockStep.bCount = 1;
    message->stBody.stRelayLockStep.astRelayData[0].dwLastHasDataFrameId = 98;
    for (const uint32_t version : {1u, 2u, 3u}) {
        const Outcome wire = packed(*message, version);
        for (const uint32_t cutVer : {0u, 1u, 2u, 3u, 4u, UINT32_MAX}) {
            auto read = filled<CSRelayMsg>('#');
            size_t used = 0;
            EXPECT_EQ(unpacked(*read, wire.bytes, cutVer, &used), 0);
            EXPECT_EQ(used, wire.bytes.size());
            EXPECT_EQ(+read->stHead.bVersion, static_cast<int>(version));
            EXPECT_EQ(+read->stBody.stRelayLockStep.astRelayData[0].dwLastHasDataFrameId,
                      version == 3 ? 98u : 0u);
        }
    }
}

TEST(Envelope, InputIsDecodedWithTheFieldsOfItsVersion) {
    auto message = makeMessage(165);
    message->stBody.stRelayInputing.bRepeatCount = 9;
    auto read = filled<CSRelayMsg>('#');
    EXPECT_EQ(unpacked(*read, packed(*message, 1).bytes), 0);
    EXPECT_EQ(+read->stBody.stRelayInputing.bRepeatCount, 1);
    EXPECT_EQ(unpacked(*read, packed(*message, 2).bytes), 0);
    EXPECT_EQ(+read->stBody.stRelayInputing.bRepeatCount, 9);
    EXPECT_EQ(unpacked(*read, packed(*message, 3).bytes), 0);
    EXPECT_EQ(+read->stBody.stRelayInputing.bRepeatCount, 9);
}

TEST(Envelope, FewerThan9BytesAreRefusedWithNothingRead) {
    const Bytes wire = packed(*makeMessage(184)).bytes;
    for (size_t length = 0; length <= 8; ++length) {
        auto message = filled<CSRelayMsg>('#');
        size_t used = 99;
        EXPECT_EQ(unpacked(*message, wire.substr(0, length), 0, &used), -2);
        EXPECT_EQ(used, 0u);
        EXPECT_EQ(image(*message).find_first_not_of('#'), std::string::npos);
    }
}

TEST(Envelope, NineToElevenBytesEndInsideTheHead) {
    const Bytes wire = packed(*makeMessage(184)).bytes;
    const std::pair<size_t, size_t> usedByLength[] = {{9, 9}, {10, 9}, {11, 11}};
    for (const auto& [length, expected] : usedByLength) {
        auto message = filled<CSRelayMsg>('#');
        size_t used = 99;
        EXPECT_EQ(unpacked(*message, wire.substr(0, length), 0, &used), -2);
        EXPECT_EQ(used, expected);
        EXPECT_EQ(+message->stHead.bVersion, 3) << "fields read so far stay";
        EXPECT_EQ(+message->stHead.bCmdId, '#');
    }
}

TEST(Envelope, InputThatEndsInsideTheMemberKeepsWhatWasRead) {
    const Bytes wire = packed(*makeMessage(169)).bytes;
    auto message = filled<CSRelayMsg>('#');
    size_t used = 0;
    EXPECT_EQ(unpacked(*message, wire.substr(0, wire.size() - 1), 0, &used), -2);
    EXPECT_EQ(used, wire.size() - 4);
    EXPECT_EQ(+message->stBody.stRelaySyncRes.iResult, 0);
    EXPECT_EQ(+message->stBody.stRelaySyncRes.stSyncData.dwLastHasDataFrameId, 0x23232323u);
}

TEST(Envelope, MembersCodeIsReturned) {
    auto message = makeMessage(162);
    EXPECT_EQ(packed(*message, 0, 15), (Outcome{-1, hex("00 00 00 00 00 00 00 00 00 00 00 a2")}));
    message = makeMessage(195);
    message->stBody.stRelayInputMulty.bFrameCount = 11;
    EXPECT_EQ(packed(*message).result, -7);
    EXPECT_EQ(unpacked(*message, hex("00 00 00 00 00 00 00 00 03 00 00 c3 0b")), -7);
    EXPECT_EQ(unpacked(*message, hex("00 00 00 00 00 00 00 00 03 00 00 a1 00 00 00 00")), -4);
    EXPECT_EQ(unpacked(*message, hex("00 00 00 00 00 00 00 00 03 00 00 a1 00 00 00 01 41")), -5);
    EXPECT_EQ(
        unpacked(*message, hex("00 00 00 00 00 00 00 00 03 00 00 a1 00 00 00 81") + std::string(129, 'x')),
        -3);
}

TEST(Envelope, MessagesPackedOneBehindTheOtherGetTheirOwnStamps) {
    char memory[64];
    Korvan::BixWriteBuf buffer(memory, sizeof(memory));
    auto first = makeMessage(184);
    auto second = makeMessage(165);
    second->stHead.bVersion = 9;
    EXPECT_EQ(first->pack(buffer, 0), 0);
    EXPECT_EQ(buffer.getUsedSize(), 16u);
    EXPECT_EQ(second->pack(buffer, 1), 0);
    EXPECT_EQ(buffer.getUsedSize(), 37u);
    EXPECT_EQ(Bytes(std::string(memory, 37)), hex("00 00 00 00 00 00 00 00 03 00 00 b8 00 00 00 00"
                                                  "00 00 00 00 00 00 00 00 01 00 00 a5"
                                                  "00 00 00 00 00 00 00 00 00"));
}

TEST(Envelope, MessagesReadOneBehindTheOtherPeekAtTheirOwnVersions) {
    const Bytes wire = hex("00 00 00 01 00 00 00 00 01 00 00 a5 00 00 00 07 00 00 00 00 00"
                           "00 00 00 02 00 00 00 00 03 00 00 b8 00 00 00 08"
                           "00 00 00 03 00 00 00 00 02 00 00 a5 00 00 00 09 00 00 00 00 00 05");
    Korvan::BixReadBuf buffer(wire.data(), wire.size());
    auto message = constructed<CSRelayMsg>();
    EXPECT_EQ(message->unpack(buffer), 0);
    EXPECT_EQ(buffer.getUsedSize(), 21u);
    EXPECT_EQ(+message->stHead.bVersion, 1);
    EXPECT_EQ(+message->stBody.stRelayInputing.bRepeatCount, 1);
    EXPECT_EQ(message->unpack(buffer), 0);
    EXPECT_EQ(buffer.getUsedSize(), 37u);
    EXPECT_EQ(+message->stHead.dwUserID, 2u);
    EXPECT_EQ(+message->stBody.stCSRelayMsgHeartBeatReq.dwUnused, 8u);
    EXPECT_EQ(message->unpack(buffer), 0);
    EXPECT_EQ(buffer.getLeftSize(), 0u);
    EXPECT_EQ(+message->stBody.stRelayInputing.bRepeatCount, 5);
    EXPECT_EQ(message->unpack(buffer), -2);
    EXPECT_EQ(buffer.getUsedSize(), wire.size());
}

TEST(Envelope, InputCommandsDifferInByte11Only) {
    Outcome first = {0, ""};
    for (const uint8_t command : {uint8_t{165}, uint8_t{186}, uint8_t{188}, uint8_t{189}, uint8_t{190}}) {
        auto message = constructed<CSRelayMsg>();
        message->stHead.bCmdId = command;
        message->stBody.stRelayInputing.construct();
        message->stBody.stRelayInputing.stRelayData.dwObjectId = 0x01020304;
        Outcome wire = packed(*message);
        EXPECT_EQ(static_cast<uint8_t>(wire.bytes[11]), command);
        wire.bytes[11] = 0;
        if (first.bytes.empty()) {
            first = wire;
        }
        EXPECT_EQ(wire, first);
        EXPECT_EQ(wire.bytes.size(), 22u);
    }
}

TEST(Envelope, TextFailureInTheMemberKeepsTheTextBeforeIt) {
    auto message = makeMessage(195);
    message->stBody.stRelayInputMulty.bFrameCount = 11;
    std::string buffer(512, '#');
    size_t used = 0;
    EXPECT_EQ(message->visualize(buffer.data(), buffer.size(), &used), -7);
    EXPECT_EQ(buffer.substr(0, used), "[stHead]\n  [dwUserID]: 0\n  [dwRoomID]: 0\n  [bVersion]: 0x00\n"
                                      "  [wAsyncID]: 0\n  [bCmdId]: 0xc3\n[stBody]\n"
                                      "  [stRelayInputMulty]\n    [bFrameCount]: 0x0b\n");
}
