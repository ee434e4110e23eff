/// @file
/// decode --resync.
#include "tests/tool/Program.h"
#include "tests/tool/Sources.h"
#include "tools/relaymsg/MessageStream.h"

#include <gtest/gtest.h>

namespace {

using relaymsg::MessageStream;
using Next = MessageStream::Next;

const std::string BEAT = wire::heartBeat();

std::string report(const std::string& bytes, CutSource::NextSize cuts) {
    CutSource source(bytes, std::move(cuts));
    MessageStream stream(source, true);
    std::string text;
    for (Next next; (next = stream.next()) != Next::End;) {
        text += (next == Next::Failure ? "failure@"
                 : stream.guessed()    ? "?@"
                                       : "@") +
                std::to_string(stream.offset()) +
                (stream.skipped() != 0 ? "+" + std::to_string(stream.skipped()) : "") + ' ';
    }
    return text;
}

std::string report(const std::string& bytes) {
    const std::string text = report(bytes, whole());
    EXPECT_EQ(report(bytes, pieces(1)), text);
    for (unsigned seed = 0; seed < 10; ++seed) {
        EXPECT_EQ(report(bytes, randomPieces(seed)), text);
    }
    return text;
}

TEST(Resync, goesOnWhereMessagesFollowEachOther) {
    EXPECT_EQ(report(BEAT + "damaged" + BEAT + BEAT + BEAT), "@0 failure@16 ?@23+7 ?@39 ?@55 ");
    EXPECT_EQ(report("damaged" + BEAT), "failure@0 ?@7+7 ");
    EXPECT_EQ(report(BEAT + BEAT.substr(3) + BEAT + BEAT + BEAT), "@0 failure@16 ?@29+13 ?@45 ?@61 ");
    EXPECT_EQ(report(BEAT), "@0 ");
    EXPECT_EQ(report(BEAT + "damage"), "@0 failure@16 ");
    EXPECT_EQ(report(""), "");
}

TEST(Resync, takesNoSingleMessageInTheMiddle) {
    EXPECT_EQ(report("damaged" + BEAT + "damage and no more than that"), "failure@0 ");
    EXPECT_EQ(report("damaged" + BEAT + BEAT + "damage and no more"), "failure@0 ");
    EXPECT_EQ(report("damaged" + BEAT + BEAT + BEAT + "damage and no more" + BEAT),
              "failure@0 ?@7+7 ?@23 ?@39 failure@55 ?@73+18 ");
    const std::string unknown = wire::head(166);
    EXPECT_EQ(report("damaged" + unknown + unknown + unknown), "failure@0 ") << "any bytes may be such heads";
}

TEST(Resync, findsTheLargestMessages) {
    const std::string largest = wire::largest();
    EXPECT_EQ(report("damaged" + largest + largest + largest + BEAT, whole()),
              "failure@0 ?@7+7 ?@516565 ?@1033123 ?@1549681 ");
}

TEST(Resync, findsTheRestOfADamagedSession) {
    const std::vector<std::string> messages = wire::sessionMessages();
    for (size_t broken = 0; broken + 3 < messages.size(); ++broken) {
        std::string bytes;
        for (size_t i = 0; i < messages.size(); ++i) {
            bytes += i == broken ? messages[i].substr(0, 8) + '\x7f' + messages[i].substr(9) : messages[i];
        }
        size_t found = 0;
        CutSource source(bytes, whole());
        MessageStream stream(source, true);
        for (Next next; (next = stream.next()) != Next::End;) {
            found += next == Next::Message ? 1u : 0u;
        }
        EXPECT_EQ(found, messages.size() - 1) << broken;
    }
}

TEST(Resync, saysThatItGuesses) {
    const std::string input = BEAT + "damaged" + BEAT + BEAT;
    const Outcome plain = runTool({"decode", "--summary"}, input);
    EXPECT_EQ(plain.status, 3);
    EXPECT_EQ(plain.out.find("guess"), std::string::npos) << "off unless asked for";
    const Outcome outcome = runTool({"decode", "--summary", "--resync"}, input);
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(
        outcome.out.substr(0, outcome.out.find("\n\n")),
        "#1      @0              16 B  v3  stCSRelayMsgHeartBeatReq  user 1001  room 7  async 258\n"
        "#2      @16         failed  BIX_ERR_VERSION_OUT_OF_RANGE at stHead.bVersion\n"
        "skipped @16              7 B  guess\n"
        "#3      @23             16 B  v3  stCSRelayMsgHeartBeatReq  user 1001  room 7  async 258  guess\n"
        "#4      @39             16 B  v3  stCSRelayMsgHeartBeatReq  user 1001  room 7  async 258  guess");
    EXPECT_NE(outcome.err.find("message 2 at offset 16"), std::string::npos);
    const std::string json = runTool({"decode", "--json", "--resync"}, input).out;
    EXPECT_GT(json.find(",\"guess\":true}\n"), json.find('\n')) << json;
}

TEST(Resync, saysManyFailuresOnce) {
    std::string input;
    for (int i = 0; i < 50; ++i) {
        input += std::string(20, '\x7f') + BEAT + BEAT + BEAT;
    }
    const Outcome outcome = runTool({"decode", "--summary", "--resync"}, input);
    EXPECT_EQ(outcome.status, 3);
    EXPECT_NE(outcome.err.find("40 failures more were not said"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.out.find("total                             150             2400\n"),
              std::string::npos);
}

} // namespace
