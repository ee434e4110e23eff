// Rendering: indentation of nested records, separators, truncation, unterminated strings, and visualize_ex.
#include "protocol/Schema.h"
#include "protocol/cs_relay_msg.h"
#include "tests/Bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <vector>

using namespace cs_relay_msg;
using korvan_test::Bytes;
using korvan_test::constructed;
using korvan_test::filled;
using korvan_test::text;

namespace {

std::unique_ptr<CSRelayMsg> makeFrames() {
    auto message = constructed<CSRelayMsg>();
    message->stHead.bCmdId = cmd::stRelayLockStep;
    message->stBody.stRelayLockStep.construct();
    message->stBody.stRelayLockStep.bCount = 2;
    CSRelayFrame& frame = message->stBody.stRelayLockStep.astRelayData[1];
    frame.bCount = 1;
    frame.astRelayData[0].wRelayLen = 3;
    std::memcpy(frame.astRelayData[0].szRelayBuf, "\x01\xab\xff", 3);
    return message;
}

std::vector<std::string> lines(const std::string& all) {
    std::vector<std::string> result;
    for (size_t at = 0; at < all.size();) {
        const size_t end = all.find('\n', at);
        result.push_back(all.substr(at, end - at));
        at = end + 1;
    }
    return result;
}

/// The pieces of text that are written one by one: each line, but every byte of a byte array and the
/// separator behind them by itself.
std::vector<std::string> pieces(const std::string& all) {
    std::vector<std::string> result;
    for (const std::string& whole : lines(all)) {
        const size_t colon = whole.find("):");
        if (colon == std::string::npos) {
            result.push_back(whole + "\n");
            continue;
        }
        result.push_back(whole.substr(0, colon + 2));
        for (size_t at = colon + 2; at < whole.size(); at += 5) {
            result.push_back(whole.substr(at, 5));
        }
        result.push_back("\n");
    }
    return result;
}

} // namespace

TEST(Visualize, NegativeIndentStaysNegativeAllTheWayDown) {
    for (const int indent : {-1, -2, INT_MIN}) {
        for (const std::string& whole : lines(text(*makeFrames(), indent))) {
            EXPECT_EQ(whole.front(), '[');
        }
    }
    EXPECT_EQ(text(*makeFrames(), -1), text(*makeFrames(), INT_MIN));
}

TEST(Visualize, EachIndentShiftsEveryLineByTwoBlanks) {
    const std::vector<std::string> base = lines(text(*makeFrames(), 0));
    for (const int indent : {1, 2, 7}) {
        const std::vector<std::string> shifted = lines(text(*makeFrames(), indent));
        ASSERT_EQ(shifted.size(), base.size());
        for (size_t i = 0; i < base.size(); ++i) {
            EXPECT_EQ(shifted[i], std::string(static_cast<size_t>(indent) * 2, ' ') + base[i]);
        }
    }
}

TEST(Visualize, WithIndent0AMembersFieldsAreTwoLevelsDeep) {
    const std::string all = text(*makeFrames());
    EXPECT_NE(all.find("\n[stBody]\n  [stRelayLockStep]\n    [bCount]: 0x02\n"), std::string::npos);
    EXPECT_NE(all.find("\n        [szRelayBuf](3): 0x01 0xab 0xff\n"), std::string::npos);
}

TEST(Visualize, SeparatorEndsEveryLineAndStandsNowhereElse) {
    const std::string base = text(*makeFrames());
    for (const char sep : {'\0', '%', '~', '\t'}) {
        std::string expected = base;
        std::replace(expected.begin(), expected.end(), '\n', sep);
        EXPECT_EQ(text(*makeFrames(), 0, sep), expected);
    }
}

TEST(Visualize, LargestIndentStaysAndDoesNotFit) {
    std::string memory(64, '#');
    size_t used = 99;
    EXPECT_EQ(makeFrames()->visualize(memory.data(), memory.size(), &used, INT_MAX), -1);
    EXPECT_EQ(used, 0u);
    EXPECT_EQ(memory, std::string(63, ' ') + '\0');
}

TEST(Visualize, TruncatedAtEveryRoomItLeavesWholePiecesAndOneCutPiece) {
    const auto message = makeFrames();
    const std::string whole = text(*message);
    const std::vector<std::string> all = pieces(whole);
    for (size_t room = 0; room <= whole.size() + 1; ++room) {
        size_t kept = 0; // whole pieces, each with room for a NUL behind it
        size_t next = 0;
        while (next < all.size() && kept + all[next].size() < room) {
            kept += all[next++].size();
        }
        const bool fits = next == all.size();
        std::string expected(whole.size() + 8, '#');
        // The separator of a byte array comes with its NUL or not at all; other pieces are cut to fit.
        const bool isClosing = !fits && all[next] == "\n";
        const size_t shown = fits || isClosing ? kept : room - 1;
        if (room != 0) {
            expected.replace(0, shown, whole, 0, shown);
            expected[shown] = '\0';
        }
        std::string memory(whole.size() + 8, '#');
        size_t used = 99;
        EXPECT_EQ(message->visualize(memory.data(), room, &used), fits ? 0 : -1) << room;
        EXPECT_EQ(used, kept) << room;
        EXPECT_EQ(Bytes(memory), Bytes(expected)) << room;
    }
}

TEST(Visualize, RecordStaysAsItWas) {
    auto login = filled<CSRelayMsgLoginReq>('x');
    const Bytes before = korvan_test::image(*login);
    text(*login);
    EXPECT_TRUE(korvan_test::image(*login) == before) << "rendering stores no NUL";
}

TEST(Visualize, StringWithoutANulIsRenderedToItsCapacity) {
    auto login = filled<CSRelayMsgLoginReq>('x');
    EXPECT_EQ(text(*login), "[szSigBuf]: " + std::string(128, 'x') + "\n[dwReserve]: 2021161080\n");
    auto user = filled<CreateRoomUserInfo>('y'); // its last string ends with the record
    EXPECT_EQ(text(*user),
              "[szUser_id]: " + std::string(256, 'y') + "\n[szUser_ip]: " + std::string(64, 'y') + "\n");
}

TEST(Visualize, StringIsRenderedUpToItsFirstNul) {
    auto login = filled<CSRelayMsgLoginReq>('x');
    login->szSigBuf[2] = '\0';
    login->dwReserve = 0;
    EXPECT_EQ(text(*login), "[szSigBuf]: xx\n[dwReserve]: 0\n");
}

TEST(Visualize, LineThatDoesNotFitEndsTheOperationAtOnce) {
    auto sync = constructed<CSRelayMsgSyncReq>();
    std::string memory(64, '#');
    size_t used = 0;
    EXPECT_EQ(sync->visualize(memory.data(), 25, &used), -1);
    EXPECT_EQ(used, 20u);
    EXPECT_EQ(Bytes(memory.substr(0, 26)), Bytes(std::string("[dwFrameIdBegin]: 0\n[dwF\0#", 26)));
}

TEST(Visualize, NeedsNoIndentationAndNoSeparator) {
    auto stop = constructed<CSRelayMsgStopReq>();
    char memory[16];
    EXPECT_EQ(stop->visualize(memory, sizeof(memory)), 0);
    EXPECT_STREQ(memory, "[dwReserve]: 0\n");
    memory[0] = '\0';
    Korvan::BixWriteBuf byMember(memory, sizeof(memory));
    EXPECT_EQ(stop->visualize(byMember), 0);
    EXPECT_STREQ(memory, "[dwReserve]: 0\n");
    memory[0] = '\0';
    Korvan::BixWriteBuf byType(memory, sizeof(memory));
    EXPECT_EQ(schema::typeOf<CSRelayMsgStopReq>().visualize(stop.get(), byType), 0);
    EXPECT_STREQ(memory, "[dwReserve]: 0\n");
}

// ---- visualize_ex ----

TEST(VisualizeEx, ReturnsTheTerminatedTextAtTheBuffersStart) {
    auto stop = constructed<CSRelayMsgStopReq>();
    std::string memory(64, '#');
    size_t used = 0;
    const char* result = stop->visualize_ex(memory.data(), memory.size(), &used);
    EXPECT_EQ(result, memory.data());
    EXPECT_STREQ(result, "[dwReserve]: 0\n");
    EXPECT_EQ(used, 15u);
    EXPECT_STREQ(stop->visualize_ex(memory.data(), memory.size(), nullptr, 1, ';'), "  [dwReserve]: 0;");
}

TEST(VisualizeEx, TextThatDoesNotFitEndsBeforeTheLineThatFailed) {
    auto sync = constructed<CSRelayMsgSyncReq>();
    std::string memory(64, '#');
    size_t used = 0;
    EXPECT_STREQ(sync->visualize_ex(memory.data(), 25, &used), "[dwFrameIdBegin]: 0\n");
    EXPECT_EQ(used, 20u);
    EXPECT_EQ(Bytes(memory.substr(0, 26)), Bytes(std::string("[dwFrameIdBegin]: 0\n\0dwF\0#", 26)))
        << "the NUL stands at the used size";
}

TEST(VisualizeEx, TextOfWhichNothingFitsIsEmpty) {
    auto stop = constructed<CSRelayMsgStopReq>();
    std::string memory(8, '#');
    size_t used = 99;
    EXPECT_STREQ(stop->visualize_ex(memory.data(), 5, &used), "");
    EXPECT_EQ(used, 0u);
    EXPECT_EQ(memory.substr(5), "###");
}

TEST(VisualizeEx, FailedCountIsNotReportedAndTheTextSoFarIsReturned) {
    auto multy = constructed<CSRelayInputMulty>();
    multy->bFrameCount = 11;
    std::string memory(64, '#');
    EXPECT_STREQ(multy->visualize_ex(memory.data(), memory.size()), "[bFrameCount]: 0x0b\n");
}

TEST(VisualizeEx, OverAWriteBufferTheTextStartsAtTheBuffersStart) {
    auto stop = constructed<CSRelayMsgStopReq>();
    std::string memory(64, '#');
    Korvan::BixWriteBuf buffer(memory.data(), memory.size());
    ASSERT_EQ(buffer.textize("%s", "stop: "), 0);
    EXPECT_EQ(stop->visualize_ex(buffer, 0, ';'), memory.data());
    EXPECT_STREQ(memory.c_str(), "stop: [dwReserve]: 0;");
    EXPECT_EQ(buffer.getUsedSize(), 21u);
    stop->visualize_ex(buffer);
    EXPECT_STREQ(memory.c_str(), "stop: [dwReserve]: 0;[dwReserve]: 0\n");
}

TEST(VisualizeEx, OverAFullWriteBufferTheLastByteBecomesTheNul) {
    auto stop = constructed<CSRelayMsgStopReq>();
    std::string memory(8, '#');
    Korvan::BixWriteBuf buffer(memory.data(), 4);
    ASSERT_EQ(buffer.writeBytes("abcd", 4), 0);
    EXPECT_STREQ(stop->visualize_ex(buffer), "abc");
    EXPECT_EQ(buffer.getUsedSize(), 4u);
    EXPECT_EQ(memory.substr(4), "####");
}

TEST(VisualizeEx, WithoutABufferTheTextIsEmptyAndNotInTheBuffer) {
    auto stop = constructed<CSRelayMsgStopReq>();
    Korvan::BixWriteBuf null(nullptr, 16);
    EXPECT_STREQ(stop->visualize_ex(null), "");
    char memory[1] = {'#'};
    Korvan::BixWriteBuf empty(memory, 0);
    const char* const result = stop->visualize_ex(empty);
    EXPECT_STREQ(result, "");
    EXPECT_NE(result, memory);
    EXPECT_EQ(memory[0], '#');
}

TEST(Visualize, EveryKindOfNumberInEveryRoom) {
    auto stop = std::make_unique<CSRelayMsgStopRes>(); // a signed and an unsigned line
    stop->iResult = INT32_MIN;
    stop->dwReserve = UINT32_MAX;
    auto relogin = std::make_unique<CSRelayMsgReloginNotify>(); // one of 64 bits
    relogin->dwReserve = 10;
    relogin->ullQuestion = UINT64_MAX;
    struct {
        std::string first;
        std::string second;
        std::function<int32_t(char*, size_t, size_t*)> visualize;
    } const cases[] = {
        {"[iResult]: -2147483648\n", "[dwReserve]: 4294967295\n",
         [&](char* to, size_t room, size_t* used) { return stop->visualize(to, room, used); }},
        {"[dwReserve]: 10\n", "[ullQuestion]: 18446744073709551615\n",
         [&](char* to, size_t room, size_t* used) { return relogin->visualize(to, room, used); }},
    };
    for (const auto& one : cases) {
        const std::string text = one.first + one.second;
        for (size_t room = 1; room <= text.size() + 1; ++room) {
            std::string memory(room, '#');
            size_t used = 99;
            EXPECT_EQ(one.visualize(memory.data(), room, &used), room > text.size() ? 0 : -1);
            EXPECT_EQ(used, room > text.size()        ? text.size()
                            : room > one.first.size() ? one.first.size()
                                                      : 0);
            EXPECT_EQ(memory, text.substr(0, room - 1) + '\0') << "the text, truncated, and a NUL";
        }
    }
}

TEST(VisualizeEx, OverAFullBufferEndsTheTextInTheLastByte) {
    auto stop = constructed<CSRelayMsgStopReq>();
    std::string memory(8, '#');
    Korvan::BixWriteBuf buf(memory.data(), memory.size());
    ASSERT_EQ(buf.reserve(8), 0);
    EXPECT_STREQ(stop->visualize_ex(buf), "#######");
}
