// The code of docs/guides/logging.md.
#include "guide_logging.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

class LoggingGuide : public testing::Test {
protected:
    void begin(uint8_t command) {
        ASSERT_TRUE(beginMessage(*message, command));
        message->stHead.dwUserID = 1001;
    }

    std::unique_ptr<CSRelayMsg> message = std::make_unique<CSRelayMsg>();
    char text[512];
};

TEST_F(LoggingGuide, HeartbeatInOneLineOfLessThan200Characters) {
    begin(cmd::stCSRelayMsgHeartBeatReq);
    const std::string line = inOneLine(*message, text, sizeof(text));
    EXPECT_EQ(
        line,
        "[stHead] [dwUserID]: 1001 [dwRoomID]: 0 [bVersion]: 0x00 [wAsyncID]: 0 [bCmdId]: 0xb8 [stBody] "
        "[stCSRelayMsgHeartBeatReq] [dwUnused]: 0 ");
    EXPECT_LT(line.size(), 200u);
    EXPECT_EQ(forTheLog(*message, text, sizeof(text)), line);
}

TEST_F(LoggingGuide, SignatureIsNotShown) {
    begin(cmd::stRelayLoginReq);
    ASSERT_EQ(setText(message->stBody.stRelayLoginReq.szSigBuf, "secret"), BIX_OK);
    EXPECT_EQ(std::string(forTheLog(*message, text, sizeof(text))),
              "[dwUserID]: 1001 [dwRoomID]: 0 [bVersion]: 0x00 [wAsyncID]: 0 [bCmdId]: 0xa1 [szSigBuf]: *** "
              "[dwReserve]: 0 ");
    EXPECT_STREQ(message->stBody.stRelayLoginReq.szSigBuf, "secret");
    EXPECT_STREQ(forTheLog(*message, text, 20), "");
}

TEST_F(LoggingGuide, ControlCharactersAreReplaced) {
    char line[] = "a\nb\x1b[31m\x7f\x1f c~";
    makeHarmless(line);
    EXPECT_STREQ(line, "a?b?[31m?? c~");
}

} // namespace
