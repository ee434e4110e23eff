// What stays after a failure, byte for byte, where a fast way could easily leave something else.
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

namespace {

/// Packs into @p room of @p memory.
template <class T>
int32_t packInto(std::string& memory, size_t room, const T& record, size_t& used) {
    return record.pack(memory.data(), room, &used);
}

} // namespace

TEST(PartialOutput, VersionIsStampedOnlyAfterTheBodySucceeded) {
    auto message = constructed<CSRelayMsg>();
    message->stHead.bVersion = 0x77;
    message->stHead.bCmdId = cmd::stRelayStopRes;
    for (size_t room = 9; room < 20; ++room) {
        std::string memory(32, '#');
        size_t used = 0;
        EXPECT_EQ(packInto(memory, room, *message, used), -1);
        EXPECT_EQ(memory[8], 0x77) << "the record's own version, with " << room << " bytes of room";
    }
    std::string memory(32, '#');
    size_t used = 0;
    EXPECT_EQ(packInto(memory, 20, *message, used), 0);
    EXPECT_EQ(memory[8], 3);

    message->stHead.bCmdId = cmd::stRelayInputMulty;
    message->stBody.stRelayInputMulty.bFrameCount = 11;
    EXPECT_EQ(packInto(memory, 32, *message, used), -7);
    EXPECT_EQ(used, 13u);
    EXPECT_EQ(memory[8], 0x77);
}

TEST(PartialOutput, FailedReservationOfAStringsLengthLeavesTheRecordAlone) {
    for (size_t room = 0; room < 4; ++room) {
        auto login = filled<CSRelayMsgLoginReq>('x');
        std::string memory(16, '#');
        size_t used = 99;
        EXPECT_EQ(packInto(memory, room, *login, used), -1);
        EXPECT_EQ(used, 0u);
        EXPECT_EQ(login->szSigBuf[127], 'x') << "no NUL was stored";
        EXPECT_EQ(memory, std::string(16, '#'));
    }
}

TEST(PartialOutput, FailedTextLeavesItsLengthAsMemoryHeldItAndStoresTheNul) {
    for (size_t room = 4; room < 4 + 128; ++room) {
        auto login = filled<CSRelayMsgLoginReq>('x');
        std::string memory(160, '#');
        size_t used = 99;
        EXPECT_EQ(packInto(memory, room, *login, used), -1);
        EXPECT_EQ(used, 4u) << "the four bytes are reserved";
        EXPECT_EQ(memory, std::string(160, '#')) << "with " << room << " bytes of room";
        EXPECT_EQ(login->szSigBuf[127], '\0');
    }
}

TEST(PartialOutput, SecondStringFailsBehindTheFirst) {
    auto user = constructed<CreateRoomUserInfo>();
    std::strcpy(user->szUser_id, "me");
    std::memset(user->szUser_ip, '1', sizeof(user->szUser_ip));
    std::string memory(32, '#');
    size_t used = 0;
    EXPECT_EQ(packInto(memory, 13, *user, used), -1);
    EXPECT_EQ(used, 11u);
    EXPECT_EQ(Bytes(memory.substr(0, 14)), hex("00 00 00 03 6d 65 00 23 23 23 23 23 23 23"));
    EXPECT_EQ(user->szUser_ip[63], '\0');
    std::memset(user->szUser_ip, '1', sizeof(user->szUser_ip));
    EXPECT_EQ(packInto(memory, 10, *user, used), -1);
    EXPECT_EQ(used, 7u);
    EXPECT_EQ(user->szUser_ip[63], '1');
}

namespace {

/// Packs with ample and with exact room and looks behind the used size.
template <class T>
void expectNothingBehind(const T& record, size_t expectedSize) {
    std::string memory(256, '#');
    size_t used = 0;
    ASSERT_EQ(packInto(memory, memory.size(), record, used), 0);
    EXPECT_EQ(used, expectedSize);
    EXPECT_EQ(memory.find_first_not_of('#', used), std::string::npos);

    std::string exact(256, '#');
    ASSERT_EQ(packInto(exact, used, record, used), 0);
    EXPECT_EQ(Bytes(exact), Bytes(memory));
}

} // namespace

TEST(PartialOutput, NothingAtOrBehindTheUsedSizeIsWritten) {
    for (uint16_t length = 0; length <= 80; ++length) {
        SCOPED_TRACE(length);
        auto pack = filled<CSRelayMsgPack>('p'); // its bytes come last
        pack->wLength = length;
        expectNothingBehind(*pack, 7u + length);
        auto input = filled<CSRelayInput>('i');
        input->stRelayData.wRelayLen = length;
        expectNothingBehind(*input, 10u + length);
        auto seek = filled<CSRelaySeekPlayRes>('s'); // its text comes last
        seek->szRetStr[length] = '\0';
        expectNothingBehind(*seek, 9u + length);
        auto login = filled<CSRelayMsgLoginReq>('l');
        login->szSigBuf[length] = '\0';
        expectNothingBehind(*login, 9u + length);
    }
}

TEST(PartialOutput, NothingBeyondTheCountOrTheNulIsReadIntoTheRecord) {
    const std::string wire(256, 'w');
    for (uint16_t length = 0; length <= 80; ++length) {
        SCOPED_TRACE(length);
        std::string bytes = hex("00 00 01 00 00") + std::string(1, '\0') + static_cast<char>(length) + wire;
        auto pack = filled<CSRelayMsgPack>('#');
        ASSERT_EQ(korvan_test::unpacked(*pack, bytes), 0);
        EXPECT_EQ(image(*pack).find_first_not_of('#', 7u + length), std::string::npos);
        bytes = hex("00 00 00 00 00 00 00") + static_cast<char>(length + 1) + wire.substr(0, length) + '\0' +
                wire;
        auto seek = filled<CSRelaySeekPlayRes>('#');
        ASSERT_EQ(korvan_test::unpacked(*seek, bytes), 0);
        EXPECT_EQ(image(*seek).find_first_not_of('#', 4u + length + 1), std::string::npos);
    }
}

TEST(PartialOutput, FailedPayloadWritesNothingOfItself) {
    for (size_t room = 6; room < 6 + 24; ++room) {
        auto data = filled<CSRelayData>('d');
        data->wRelayLen = 24;
        std::string memory(64, '#');
        size_t used = 0;
        EXPECT_EQ(packInto(memory, room, *data, used), -1);
        EXPECT_EQ(used, 6u);
        EXPECT_EQ(memory.find_first_not_of('#', 6), std::string::npos) << room;
    }
}

TEST(PartialOutput, CursorOfTheCallersBufferIsMovedOnEveryFailure) {
    auto frame = constructed<CSRelayFrame>();
    frame->bCount = 2;
    frame->astRelayData[0].wRelayLen = 4;
    std::string memory(64, '#');
    // Where the cursor stands for each room: behind the last field that fitted.
    const size_t ends[] = {0, 4, 5, 9, 11, 15, 16, 18, 22, 24, 25, 27, 31};
    for (size_t room = 0; room <= 31; ++room) {
        size_t expected = 0;
        for (const size_t end : ends) {
            expected = end <= room ? end : expected;
        }
        Korvan::BixWriteBuf out(memory.data(), 3 + room);
        ASSERT_EQ(out.reserve(3), 0);
        EXPECT_EQ(frame->pack(out), room == 31 ? 0 : -1);
        EXPECT_EQ(out.getUsedSize(), 3 + expected) << room;
    }
    size_t used = 0;
    ASSERT_EQ(packInto(memory, memory.size(), *frame, used), 0);
    for (size_t length = 0; length <= 31; ++length) {
        size_t expected = 0;
        for (const size_t end : ends) {
            expected = end <= length ? end : expected;
        }
        auto read = constructed<CSRelayFrame>();
        Korvan::BixReadBuf in(memory.data(), length);
        EXPECT_EQ(read->unpack(in), length == 31 ? 0 : -2);
        EXPECT_EQ(in.getUsedSize(), expected) << length;
    }
}

TEST(PartialOutput, CursorIsMovedWhenACountOrAStringFails) {
    std::string memory(64, '#');
    Korvan::BixWriteBuf out(memory.data(), memory.size());
    auto frame = constructed<CSRelayFrame>();
    frame->bCount = 101;
    EXPECT_EQ(frame->pack(out), -7);
    EXPECT_EQ(out.getUsedSize(), 5u);
    Korvan::BixReadBuf in(memory.data(), memory.size());
    EXPECT_EQ(frame->unpack(in), -7);
    EXPECT_EQ(in.getUsedSize(), 5u);
    const Bytes wire = hex("00 00 00 02 41 41 00");
    Korvan::BixReadBuf text(wire.data(), wire.size());
    auto login = constructed<CSRelayMsgLoginReq>();
    EXPECT_EQ(login->unpack(text), -5);
    EXPECT_EQ(text.getUsedSize(), 6u);
}

TEST(PartialOutput, FieldsReadBeforeAFailureStayAndLaterOnesKeepTheirs) {
    auto data = filled<CSRelayData>('#');
    size_t used = 0;
    EXPECT_EQ(korvan_test::unpacked(*data, hex("00 00 00 01 00 02 aa bb cc 11"), 0, &used), -2);
    EXPECT_EQ(used, 9u);
    EXPECT_EQ(+data->dwObjectId, 1u);
    EXPECT_EQ(data->szRelayBuf[1], 0xbb);
    EXPECT_EQ(+data->bUserStatusFlag, 0xcc);
    EXPECT_EQ(+data->wSequance, 0x2323);
    // A payload that is cut short is not copied at all.
    data = filled<CSRelayData>('#');
    EXPECT_EQ(korvan_test::unpacked(*data, hex("00 00 00 01 00 03 aa bb"), 0, &used), -2);
    EXPECT_EQ(used, 6u);
    EXPECT_EQ(data->szRelayBuf[0], '#');
}
