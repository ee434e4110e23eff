// Strings: length prefix, terminating NUL, capacity, and the order of the checks.
#include "protocol/cs_relay_msg.h"
#include "tests/Bytes.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace cs_relay_msg;
using korvan_test::Bytes;
using korvan_test::constructed;
using korvan_test::filled;
using korvan_test::hex;
using korvan_test::Outcome;
using korvan_test::packed;
using korvan_test::unpacked;

namespace {

/// A string's wire form with the length @p length in front of @p text, whatever @p text holds.
Bytes prefixed(uint32_t length, const std::string& text) {
    Bytes wire(std::string(4, '\0'));
    for (size_t i = 0; i < 4; ++i) {
        wire[i] = static_cast<char>(length >> (24 - 8 * i));
    }
    return Bytes(wire + text);
}

/// A string's wire form as a correct peer sends it.
Bytes wireText(const std::string& text) {
    return prefixed(static_cast<uint32_t>(text.size() + 1), text + std::string(1, '\0'));
}

/// Checks that a text filling the array of @p field is cut by one character, in the record and on the wire.
template <class T, size_t Capacity>
void expectCut(char (T::*field)[Capacity], size_t wireSize, size_t at) {
    auto record = constructed<T>();
    std::memset((*record).*field, 'x', Capacity);
    const Outcome wire = packed(*record);
    EXPECT_EQ(wire.result, 0);
    EXPECT_EQ(wire.bytes.size(), wireSize);
    EXPECT_EQ(Bytes(wire.bytes.substr(at, 4 + Capacity)), wireText(std::string(Capacity - 1, 'x')));
    EXPECT_EQ(std::string((*record).*field, Capacity), std::string(Capacity - 1, 'x') + '\0');
}

} // namespace

TEST(Strings, TextTravelsWithItsLengthAndItsNul) {
    auto login = constructed<CSRelayMsgLoginReq>();
    std::strcpy(login->szSigBuf, "abc");
    EXPECT_EQ(packed(*login), (Outcome{0, hex("00 00 00 04 61 62 63 00  00 00 00 00")}));
}

TEST(Strings, EmptyTextTravelsAsItsNul) {
    auto login = constructed<CSRelayMsgLoginReq>();
    EXPECT_EQ(packed(*login), (Outcome{0, hex("00 00 00 01 00  00 00 00 00")}));
    EXPECT_EQ(packed(*constructed<CSRelayStatRes>()),
              (Outcome{0, hex("00 00 00 01 00  00 00 00 01 00  00 00 00 01 00")}));
    EXPECT_EQ(packed(*constructed<CSRelayMsgStartRes>()).bytes.size(), 14u);
}

TEST(Strings, TextThatFillsItsArrayIsCutInTheRecordAndOnTheWire) {
    expectCut(&CSRelayMsgLoginReq::szSigBuf, 136, 0);
    expectCut(&CSRelayMsgStartRes::szErrorDesc, 269, 4);
    expectCut(&CSRelayError::szError_code_str, 16 + 1023, 4);
    expectCut(&CSRelayError::szError_svr_url, 16 + 1023, 4 + 5);
    expectCut(&CreateRoomUserInfo::szUser_id, 10 + 255, 0);
    expectCut(&CreateRoomUserInfo::szUser_ip, 10 + 63, 5);
    expectCut(&CSRelaySeekPlayRes::szRetStr, 1032, 4);
    expectCut(&CSRelayStatRes::szRoomRetStr, 15 + 4095, 0);
    expectCut(&CSRelayStatRes::szUserRetStr, 15 + 4095, 5);
    expectCut(&CSRelayStatRes::szProcessRetStr, 15 + 4095, 10);
}

TEST(Strings, LongestTextTravelsWhole) {
    auto start = constructed<CSRelayMsgStartRes>();
    std::memset(start->szErrorDesc, 'e', 255);
    start->szErrorDesc[255] = '\0';
    const Outcome wire = packed(*start);
    EXPECT_EQ(wire.bytes.size(), 269u);
    auto read = constructed<CSRelayMsgStartRes>();
    EXPECT_EQ(unpacked(*read, wire.bytes), 0);
    EXPECT_EQ(std::string(read->szErrorDesc), std::string(255, 'e'));
}

TEST(Strings, ThreeLongestTextsAre12300Bytes) {
    auto stat = constructed<CSRelayStatRes>();
    std::memset(stat->szRoomRetStr, 'a', 4095);
    std::memset(stat->szUserRetStr, 'b', 4095);
    std::memset(stat->szProcessRetStr, 'c', 4095);
    const Outcome wire = packed(*stat);
    EXPECT_EQ(wire.bytes.size(), 12300u);
    auto read = constructed<CSRelayStatRes>();
    EXPECT_EQ(unpacked(*read, wire.bytes), 0);
    EXPECT_TRUE(korvan_test::image(*read) == korvan_test::image(*stat));
}

TEST(Strings, OnlyTheTextUpToItsFirstNulTravels) {
    auto login = filled<CSRelayMsgLoginReq>('z');
    std::strcpy(login->szSigBuf, "ab"); // the rest of the array holds z
    login->dwReserve = 0;
    EXPECT_EQ(packed(*login), (Outcome{0, hex("00 00 00 03 61 62 00  00 00 00 00")}));
    EXPECT_EQ(login->szSigBuf[3], 'z');
    EXPECT_EQ(login->szSigBuf[126], 'z');
    EXPECT_EQ(login->szSigBuf[127], '\0') << "packing stores a NUL in the last byte, even so";
}

TEST(StringsReceived, LengthAboveTheBytesLeftIsAnUnderflow) {
    auto login = constructed<CSRelayMsgLoginReq>();
    EXPECT_EQ(unpacked(*login, prefixed(200, std::string(10, 'x'))), -2) << "not -3";
    EXPECT_EQ(unpacked(*login, prefixed(129, std::string(128, 'x'))), -2) << "not -3";
    EXPECT_EQ(unpacked(*login, prefixed(UINT32_MAX, "x")), -2);
    EXPECT_EQ(unpacked(*login, prefixed(1, "")), -2);
    auto seek = constructed<CSRelaySeekPlayRes>();
    EXPECT_EQ(unpacked(*seek, hex("00 00 00 00") + prefixed(1025, std::string(1024, 'x'))), -2);
    auto stat = constructed<CSRelayStatRes>();
    EXPECT_EQ(unpacked(*stat, wireText("room") + prefixed(4097, std::string(4096, 'x'))), -2);
}

TEST(StringsReceived, LengthAboveTheCapacityIsTooLong) {
    auto login = constructed<CSRelayMsgLoginReq>();
    size_t used = 0;
    EXPECT_EQ(unpacked(*login, prefixed(129, std::string(129, 'x')), 0, &used), -3);
    EXPECT_EQ(used, 4u);
    EXPECT_EQ(login->szSigBuf[0], '\0') << "nothing was copied";
    auto start = constructed<CSRelayMsgStartRes>();
    EXPECT_EQ(unpacked(*start, hex("00 00 00 2a") + prefixed(257, std::string(257, 'x'))), -3);
    EXPECT_EQ(+start->iResult, 42) << "fields before it stay";
    auto seek = constructed<CSRelaySeekPlayRes>();
    EXPECT_EQ(unpacked(*seek, hex("00 00 00 07") + prefixed(1025, std::string(1025, 'x'))), -3);
    EXPECT_EQ(+seek->dwRetCode, 7u);
    auto error = constructed<CSRelayError>();
    EXPECT_EQ(unpacked(*error, hex("00 00 00 07") + prefixed(1025, std::string(1025, 'x'))), -3);
    EXPECT_EQ(unpacked(*error, hex("00 00 00 07") + wireText("e") + prefixed(1025, std::string(1025, 'x'))),
              -3);
    EXPECT_STREQ(error->szError_code_str, "e");
    auto stat = constructed<CSRelayStatRes>();
    EXPECT_EQ(unpacked(*stat, wireText("room") + prefixed(4097, std::string(4097, 'x'))), -3);
    EXPECT_STREQ(stat->szRoomRetStr, "room");
    auto user = constructed<CreateRoomUserInfo>();
    EXPECT_EQ(unpacked(*user, wireText("me") + prefixed(65, std::string(64, '1') + '\0')), -3);
    EXPECT_STREQ(user->szUser_id, "me");
    EXPECT_EQ(unpacked(*user, wireText("me") + wireText(std::string(63, '1'))), 0);
    EXPECT_EQ(std::string(user->szUser_ip), std::string(63, '1'));
}

TEST(StringsReceived, LengthZeroIsRefused) {
    auto login = constructed<CSRelayMsgLoginReq>();
    size_t used = 0;
    EXPECT_EQ(unpacked(*login, prefixed(0, "x"), 0, &used), -4);
    EXPECT_EQ(used, 4u);
    EXPECT_EQ(unpacked(*login, prefixed(0, "")), -4) << "also where the input ends";
    auto seek = constructed<CSRelaySeekPlayRes>();
    EXPECT_EQ(unpacked(*seek, hex("00 00 00 00") + prefixed(0, "x")), -4);
    auto stat = constructed<CSRelayStatRes>();
    EXPECT_EQ(unpacked(*stat, wireText("a") + wireText("b") + prefixed(0, "x")), -4);
    EXPECT_STREQ(stat->szUserRetStr, "b");
}

TEST(StringsReceived, TextWithoutItsNulIsMalformedAndCopiedAllTheSame) {
    auto login = filled<CSRelayMsgLoginReq>('#');
    size_t used = 0;
    EXPECT_EQ(unpacked(*login, prefixed(3, "abc"), 0, &used), -5);
    EXPECT_EQ(used, 7u);
    EXPECT_EQ(std::string(login->szSigBuf, 5), "abc##");
    // A NUL behind the text does not help.
    EXPECT_EQ(unpacked(*login, prefixed(3, std::string("abc\0", 4))), -5);
}

TEST(StringsReceived, NulInsideTheTextIsMalformedAndCopiedAllTheSame) {
    auto login = filled<CSRelayMsgLoginReq>('#');
    size_t used = 0;
    EXPECT_EQ(unpacked(*login, hex("00 00 00 05 61 62 00 63 00"), 0, &used), -5);
    EXPECT_EQ(used, 9u);
    EXPECT_EQ(std::string(login->szSigBuf, 6), std::string("ab\0c\0#", 6));
    EXPECT_EQ(unpacked(*login, hex("00 00 00 04 61 62 00 00")), -5);
    EXPECT_EQ(unpacked(*login, hex("00 00 00 02 00 00")), -5);
}

TEST(StringsReceived, FullCapacityWithoutANulIsMalformedAndFillsTheArray) {
    auto login = constructed<CSRelayMsgLoginReq>();
    EXPECT_EQ(unpacked(*login, prefixed(128, std::string(128, 'x')) + hex("00 00 00 09")), -5);
    EXPECT_EQ(std::string(login->szSigBuf, 128), std::string(128, 'x'));
    EXPECT_EQ(+login->dwReserve, 0u) << "not reached";
}

TEST(StringsReceived, FullCapacityWithItsNulIsAccepted) {
    auto login = constructed<CSRelayMsgLoginReq>();
    EXPECT_EQ(unpacked(*login, wireText(std::string(127, 'x')) + hex("00 00 00 09")), 0);
    EXPECT_EQ(std::string(login->szSigBuf), std::string(127, 'x'));
    EXPECT_EQ(+login->dwReserve, 9u);
}

TEST(StringsReceived, CharactersBehindTheNulStay) {
    auto login = filled<CSRelayMsgLoginReq>('#');
    EXPECT_EQ(unpacked(*login, wireText("ab") + hex("00 00 00 00")), 0);
    EXPECT_EQ(std::string(login->szSigBuf, 6), std::string("ab\0###", 6));
    EXPECT_EQ(login->szSigBuf[127], '#');
}
