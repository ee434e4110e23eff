/// @file
/// Two streams beside each other.
#include "tests/tool/Program.h"

#include <gtest/gtest.h>

namespace {

Outcome compare(const std::string& a, const std::string& b, std::vector<std::string> options = {}) {
    const ScratchFile fileA(a);
    const ScratchFile fileB(b);
    options.insert(options.begin(), {"diff", fileA.path(), fileB.path()});
    return runTool(options);
}

const std::string BEAT = wire::heartBeat();

std::string logins(int from, int to) {
    std::string bytes;
    for (int i = from; i < to; ++i) {
        bytes += wire::login("s" + std::to_string(1000 + i));
    }
    return bytes;
}

TEST(Diff, saysNothingOfTheSame) {
    const std::string session = wire::session();
    const Outcome outcome = compare(session, session);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    EXPECT_EQ(runTool({"diff", CAPTURES "/session.bin", CAPTURES "/session.hex"}).status, 0);
    EXPECT_EQ(runTool({"diff", CAPTURES "/session.bin", "-"}, session).status, 0);
}

TEST(Diff, showsTheFieldsOfAMessageThatChanged) {
    const Outcome outcome = compare(BEAT + wire::login("abc") + BEAT, BEAT + wire::login("abcd\x1b") + BEAT);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "! #2 @16  #2 @16  stRelayLoginReq  user 1001\n"
                           "    - stBody.stRelayLoginReq.szSigBuf  \"abc\"\n"
                           "    + stBody.stRelayLoginReq.szSigBuf  \"abcd\\u001b\"\n");
}

TEST(Diff, showsFieldsThatOnlyOneHas) {
    const std::string head = wire::head(cs_relay_msg::cmd::stRelayInputMulty);
    const Outcome outcome = compare(head + wire::big(1, 1) + wire::data(1), head + wire::big(0, 1));
    EXPECT_EQ(outcome.out, "! #1 @0  #1 @0  stRelayInputMulty  user 1001\n"
                           "    - stBody.stRelayInputMulty.bFrameCount  1\n"
                           "    + stBody.stRelayInputMulty.bFrameCount  0\n"
                           "    - stBody.stRelayInputMulty.astRelayData[0].dwObjectId  1\n"
                           "    - stBody.stRelayInputMulty.astRelayData[0].wRelayLen  1\n"
                           "    - stBody.stRelayInputMulty.astRelayData[0].szRelayBuf  \"78\"\n"
                           "    - stBody.stRelayInputMulty.astRelayData[0].bUserStatusFlag  1\n"
                           "    - stBody.stRelayInputMulty.astRelayData[0].wSequance  2\n");
}

TEST(Diff, alignsMessages) {
    const std::string extra = wire::head(0xa2) + wire::big(7, 4);
    EXPECT_EQ(compare(logins(0, 9), logins(0, 4) + extra + extra + logins(4, 9)).out,
              "+ #5 @104  stRelayLoginRes  user 1001\n+ #6 @120  stRelayLoginRes  user 1001\n");
    EXPECT_EQ(compare(logins(0, 4) + extra + logins(4, 9), logins(0, 9)).out,
              "- #5 @104  stRelayLoginRes  user 1001\n");
    EXPECT_EQ(compare(logins(0, 9), logins(0, 9) + extra).out, "+ #10 @234  stRelayLoginRes  user 1001\n");
    EXPECT_EQ(compare(logins(0, 9) + extra, logins(0, 9)).out, "- #10 @234  stRelayLoginRes  user 1001\n");
    EXPECT_EQ(compare(BEAT, extra).out,
              "- #1 @0  stCSRelayMsgHeartBeatReq  user 1001\n+ #1 @0  stRelayLoginRes  user 1001\n");
    EXPECT_EQ(compare(logins(0, 1) + BEAT, extra + logins(1, 2) + BEAT).out,
              "+ #1 @0  stRelayLoginRes  user 1001\n"
              "! #1 @0  #2 @16  stRelayLoginReq  user 1001\n"
              "    - stBody.stRelayLoginReq.szSigBuf  \"s1000\"\n"
              "    + stBody.stRelayLoginReq.szSigBuf  \"s1001\"\n");
}

TEST(Diff, looksNoFurtherThanItsWindow) {
    const std::string beats = [] {
        std::string bytes;
        for (int i = 0; i < 40; ++i) {
            bytes += BEAT;
        }
        return bytes;
    }();
    const auto lines = [](const Outcome& outcome) {
        return std::count(outcome.out.begin(), outcome.out.end(), '\n');
    };
    EXPECT_EQ(lines(compare(logins(0, 100), beats + logins(0, 100), {"--window", "41"})), 40);
    EXPECT_GT(lines(compare(logins(0, 100), beats + logins(0, 100), {"--window", "10"})), 100);
}

TEST(Diff, tellsTroubleFromDifference) {
    const Outcome damaged = compare(BEAT + "damage", BEAT + BEAT);
    EXPECT_EQ(damaged.status, 2);
    EXPECT_NE(damaged.err.find("message 2 at offset 16"), std::string::npos);
    EXPECT_EQ(compare(BEAT, BEAT + "damage").status, 2);
    EXPECT_EQ(compare(BEAT, "").status, 2);
    EXPECT_EQ(runTool({"diff", "/nowhere/at/all", CAPTURES "/session.bin"}).status, 2);
    EXPECT_EQ(runTool({"diff", "-", "-"}).status, 2);
    EXPECT_EQ(runTool({"diff", "-"}).status, 2);
    EXPECT_EQ(runTool({"diff", "--nonsense"}).status, 2);
    EXPECT_EQ(runTool({"diff", "--help"}).status, 0);
}

} // namespace
