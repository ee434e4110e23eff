// `construct`: the default of every field, over the whole capacity of arrays, and what it leaves alone.
#include "protocol/cs_relay_msg.h"
#include "tests/Bytes.h"

#include <gtest/gtest.h>

using namespace cs_relay_msg;
using korvan_test::Bytes;
using korvan_test::filled;
using korvan_test::image;

namespace {

/// A record that held other values everywhere before it was constructed.
template <class T>
std::unique_ptr<T> reconstructed() {
    auto record = filled<T>('#');
    EXPECT_EQ(record->construct(), 0);
    return record;
}

template <class T>
void expectAllZero() {
    EXPECT_TRUE(image(*reconstructed<T>()) == Bytes(std::string(sizeof(T), '\0')));
}

/// Whether an array holds an empty text with the rest as it was.
template <size_t Capacity>
void expectEmptied(const char (&text)[Capacity]) {
    EXPECT_EQ(std::string(text, Capacity), '\0' + std::string(Capacity - 1, '#'));
}

} // namespace

TEST(Construct, RecordsWithoutOtherDefaultsBecomeAllZero) {
    expectAllZero<CSRelayMsgHead>();
    expectAllZero<CSRelayData>();
    expectAllZero<CSRelayInputMulty>();
    expectAllZero<CSRelayFrame>();
    expectAllZero<CSRelayFramePack>();
    expectAllZero<CSRelayMsgLoginRes>();
    expectAllZero<CSRelayMsgReloginNotify>();
    expectAllZero<CSRelayMsgHeartBeatReq>();
    expectAllZero<CSRelayMsgHeartBeatRes>();
    expectAllZero<CSRelayMsgStopReq>();
    expectAllZero<CSRelayMsgStopRes>();
    expectAllZero<CSRelayMsgStartReq>();
    expectAllZero<CSRelayMsgSyncReq>();
    expectAllZero<CSRelayMsgSyncRes>();
    expectAllZero<CSRelayStatReq>();
}

TEST(Construct, MsgPackCountsOnePiece) {
    const auto pack = reconstructed<CSRelayMsgPack>();
    Bytes expected(std::string(sizeof(CSRelayMsgPack), '\0'));
    expected[2] = 1; // bCount
    EXPECT_TRUE(image(*pack) == expected);
    EXPECT_EQ(+pack->bCount, 1);
}

TEST(Construct, InputCountsOnce) {
    const auto input = reconstructed<CSRelayInput>();
    EXPECT_EQ(+input->bRepeatCount, 1);
    Bytes expected(std::string(sizeof(CSRelayInput), '\0'));
    expected.back() = 1;
    EXPECT_TRUE(image(*input) == expected) << "all of the nested record is 0";
}

TEST(Construct, ErrorStartsWithTwoOnes) {
    const auto error = reconstructed<CSRelayError>();
    EXPECT_EQ(+error->dwError_code, 1u);
    EXPECT_EQ(+error->bRequest_cmd_code, 1);
    EXPECT_EQ(+error->bIsFatalError, 0);
    expectEmptied(error->szError_code_str);
    expectEmptied(error->szError_svr_url);
}

TEST(Construct, ReplayPieceIs1000FramesLong) {
    const auto piece = reconstructed<ReplayPieceInof>();
    EXPECT_EQ(+piece->dwStartFrame, 0u);
    EXPECT_EQ(+piece->dwFrameCount, 1000u);
}

TEST(Construct, SeekPlayReqHoldsOnePieceAndTenAreSet) {
    const auto seek = reconstructed<CSRelaySeekPlayReq>();
    EXPECT_EQ(+seek->dwFrameIntervalMs, 10u);
    EXPECT_EQ(+seek->dwStartFrame, 0u);
    EXPECT_EQ(+seek->dwFrameCount, 1000u);
    EXPECT_EQ(+seek->dwReplayPieceInofCount, 1u);
    for (const ReplayPieceInof& piece : seek->astReplayPieceInof) {
        EXPECT_EQ(+piece.dwStartFrame, 0u);
        EXPECT_EQ(+piece.dwFrameCount, 1000u);
    }
}

TEST(Construct, StringsBecomeEmptyAndKeepTheirOtherCharacters) {
    const auto login = reconstructed<CSRelayMsgLoginReq>();
    expectEmptied(login->szSigBuf);
    EXPECT_EQ(+login->dwReserve, 0u);
    const auto start = reconstructed<CSRelayMsgStartRes>();
    EXPECT_EQ(+start->iResult, 0);
    expectEmptied(start->szErrorDesc);
    EXPECT_EQ(+start->dwBeginFrameID, 0u);
    EXPECT_EQ(+start->bNeedToPlayFromFrame0, 0);
    const auto user = reconstructed<CreateRoomUserInfo>();
    expectEmptied(user->szUser_id);
    expectEmptied(user->szUser_ip);
    const auto seek = reconstructed<CSRelaySeekPlayRes>();
    EXPECT_EQ(+seek->dwRetCode, 0u);
    expectEmptied(seek->szRetStr);
    const auto stat = reconstructed<CSRelayStatRes>();
    expectEmptied(stat->szRoomRetStr);
    expectEmptied(stat->szUserRetStr);
    expectEmptied(stat->szProcessRetStr);
}

TEST(Construct, MessageSetsItsHeadAndLeavesTheBodyAlone) {
    const auto message = reconstructed<CSRelayMsg>();
    const Bytes memory = image(*message);
    EXPECT_EQ(memory.substr(0, 12), std::string(12, '\0'));
    EXPECT_TRUE(memory.substr(12) == std::string(sizeof(CSRelayMsgBody), '#'));
}

TEST(Construct, UnionWithoutSelectorZeroesItsStorage) {
    EXPECT_TRUE(image(*reconstructed<CSRelayMsgBody>()) == Bytes(std::string(sizeof(CSRelayMsgBody), '\0')));
}

TEST(Construct, UnionWithSelectorSetsThatMemberOnly) {
    auto body = filled<CSRelayMsgBody>('#');
    EXPECT_EQ(body->construct(cmd::stCSRelaySeekPlayReq), 0);
    EXPECT_EQ(+body->stCSRelaySeekPlayReq.dwFrameIntervalMs, 10u);
    EXPECT_EQ(image(*body).find_first_not_of('#', sizeof(CSRelaySeekPlayReq)), std::string::npos);
}

TEST(Construct, UnionWithAnUnassignedSelectorDoesNothing) {
    for (const long long selector : {0LL, 166LL, -1LL, 256LL + 184}) {
        auto body = filled<CSRelayMsgBody>('#');
        EXPECT_EQ(body->construct(selector), 0);
        EXPECT_EQ(image(*body).find_first_not_of('#'), std::string::npos);
    }
}
