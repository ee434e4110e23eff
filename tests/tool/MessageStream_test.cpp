#include "tools/relaymsg/MessageStream.h"

#include "tests/tool/Sources.h"
#include "tests/tool/Wire.h"

#include <gtest/gtest.h>

namespace {

using namespace cs_relay_msg;
using namespace relaymsg;

/// Everything that a stream tells, a line for each message.
std::string report(std::string_view bytes, CutSource::NextSize cuts) {
    CutSource source(bytes, std::move(cuts));
    MessageStream stream(source);
    std::string text;
    MessageStream::Next next;
    while ((next = stream.next()) != MessageStream::Next::End) {
        const char* name = stream.command() != nullptr ? stream.command()->name : "?";
        text += std::to_string(stream.number()) + " @" + std::to_string(stream.offset()) + " " +
                std::to_string(stream.bytes().size()) + " " + name;
        if (next == MessageStream::Next::Failure) {
            return text + " " + Korvan::resultName(stream.stop().code) + " " + stream.stop().path + " @" +
                   std::to_string(stream.stop().offset);
        }
        text += "\n";
    }
    return text;
}

/// The report, which is the same however the bytes are cut into reads.
std::string report(const std::string& bytes) {
    const std::string text = report(bytes, whole());
    EXPECT_EQ(report(bytes, pieces(1)), text);
    for (unsigned seed = 0; seed < 20; ++seed) {
        EXPECT_EQ(report(bytes, randomPieces(seed)), text);
    }
    return text;
}

constexpr size_t WINDOW = CSRelayMsg::maxWireSize;

/// A login whose string claims this length, and as many bytes behind that claim.
std::string longString(uint64_t length, size_t bytes) {
    return wire::head(cmd::stRelayLoginReq) + wire::big(length, 4) + std::string(bytes, 'x');
}

constexpr char TOO_LONG[] =
    "1 @0 16 stRelayLoginReq BIX_ERR_STRING_TOO_LONG stBody.stRelayLoginReq.szSigBuf @12";
constexpr char MISSING[] =
    "1 @0 16 stRelayLoginReq BIX_ERR_READ_UNDERFLOW stBody.stRelayLoginReq.szSigBuf @12";

TEST(MessageStream, isEmpty) {
    EXPECT_EQ(report(""), "");
}

TEST(MessageStream, findsMessageAfterMessage) {
    EXPECT_EQ(report(wire::heartBeat() + wire::login("abc") + wire::heartBeat()),
              "1 @0 16 stCSRelayMsgHeartBeatReq\n"
              "2 @16 24 stRelayLoginReq\n"
              "3 @40 16 stCSRelayMsgHeartBeatReq\n");
}

TEST(MessageStream, findsTheSameHoweverTheSampleIsCut) {
    const std::string text = report(wire::session());
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 69);
}

TEST(MessageStream, holdsTheLargestMessage) {
    const std::string bytes = wire::heartBeat() + wire::largest() + wire::largest() + wire::heartBeat();
    EXPECT_EQ(report(bytes), "1 @0 16 stCSRelayMsgHeartBeatReq\n"
                             "2 @16 516558 stRelayLockStep\n"
                             "3 @516574 516558 stRelayLockStep\n"
                             "4 @1033132 16 stCSRelayMsgHeartBeatReq\n");
}

TEST(MessageStream, tellsEachMessageAsSoonAsItsLastByteIsThere) {
    const std::string bytes = wire::session();
    CutSource source(bytes, pieces(1));
    MessageStream stream(source);
    int messages = 0;
    while (stream.next() == MessageStream::Next::Message) {
        EXPECT_EQ(source.given(), stream.offset() + stream.bytes().size());
        ++messages;
    }
    EXPECT_EQ(messages, 69);
}

TEST(MessageStream, tellsAFailureAsSoonAsItIsCertain) {
    const std::string bytes = wire::head(cmd::stRelayLockStep) + wire::big(6, 1) + std::string(1000, 'x');
    CutSource source(bytes, pieces(1));
    MessageStream stream(source);
    EXPECT_EQ(stream.next(), MessageStream::Next::Failure);
    EXPECT_EQ(source.given(), 13u);
}

TEST(MessageStream, failsInATruncatedLastMessage) {
    const std::string login = wire::login("abc");
    EXPECT_EQ(report(wire::heartBeat() + login.substr(0, login.size() - 1)),
              "1 @0 16 stCSRelayMsgHeartBeatReq\n"
              "2 @16 20 stRelayLoginReq BIX_ERR_READ_UNDERFLOW stBody.stRelayLoginReq.dwReserve @20");
    EXPECT_EQ(report(wire::heartBeat() + login.substr(0, 5)),
              "1 @0 16 stCSRelayMsgHeartBeatReq\n"
              "2 @16 0 ? BIX_ERR_READ_UNDERFLOW stHead.bVersion @8");
    EXPECT_EQ(report(wire::heartBeat() + login.substr(0, 10)),
              "1 @0 16 stCSRelayMsgHeartBeatReq\n"
              "2 @16 9 ? BIX_ERR_READ_UNDERFLOW stHead.wAsyncID @9");
}

TEST(MessageStream, failsAtABadVersion) {
    EXPECT_EQ(report(wire::heartBeat() + wire::head(184, 4) + "1234"),
              "1 @0 16 stCSRelayMsgHeartBeatReq\n"
              "2 @16 0 ? BIX_ERR_VERSION_OUT_OF_RANGE stHead.bVersion @8");
}

TEST(MessageStream, goesOnBehindTheHeadOfAnUnknownCommand) {
    EXPECT_EQ(report(wire::head(166) + wire::heartBeat()), "1 @0 12 ?\n2 @12 16 stCSRelayMsgHeartBeatReq\n");
}

// A string may claim more bytes than the window holds: what counts is what the library would say of them.

TEST(MessageStream, callsALongStringTooLongWhenItsBytesAreThere) {
    EXPECT_EQ(report(longString(129, 129)), TOO_LONG);
    EXPECT_EQ(report(longString(129, 5000)), TOO_LONG);
    EXPECT_EQ(report(longString(WINDOW - 16, WINDOW - 16)), TOO_LONG);
    EXPECT_EQ(report(longString(WINDOW, WINDOW)), TOO_LONG);
}

TEST(MessageStream, callsBytesMissingWhenTheInputEndsInAString) {
    EXPECT_EQ(report(longString(4, 3)), MISSING);
    EXPECT_EQ(report(longString(129, 128)), MISSING);
    EXPECT_EQ(report(longString(4000000000, 100)), MISSING);
    EXPECT_EQ(report(longString(WINDOW - 16, WINDOW - 17)), MISSING);
    EXPECT_EQ(report(longString(4000000000, WINDOW - 16)), MISSING)
        << "the window is full, the input at its end";
}

TEST(MessageStream, callsAStringTooLongWhenMoreFollowsThanAnyMessageHas) {
    EXPECT_EQ(report(longString(4000000000, WINDOW - 15)), TOO_LONG);
    EXPECT_EQ(report(longString(4000000000, 2 * WINDOW)), TOO_LONG);
}

TEST(MessageStream, readsNoFurtherThanItMust) {
    const std::string bytes = longString(4000000000, 4 * WINDOW);
    CutSource source(bytes, pieces(1000));
    MessageStream stream(source);
    EXPECT_EQ(stream.next(), MessageStream::Next::Failure);
    EXPECT_LE(source.given(), WINDOW + 1000);
}

TEST(MessageStream, tellsTheSameOfDamagedBytesHoweverTheyAreCut) {
    const std::string sound = wire::session();
    std::mt19937 random(7);
    for (int i = 0; i < 300 && !testing::Test::HasFailure(); ++i) {
        std::string bytes = sound;
        bytes[random() % bytes.size()] = static_cast<char>(random());
        const std::string text = report(bytes, whole());
        EXPECT_EQ(report(bytes, pieces(1)), text);
        EXPECT_EQ(report(bytes, randomPieces(static_cast<unsigned>(random()))), text);
    }
}

} // namespace
