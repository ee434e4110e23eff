// The code of docs/guides/errors.md.
#include "guide_errors.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class ErrorsGuide : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(beginMessage(*message, cmd::stRelayInputing));
        message->stHead.dwUserID = 1001;
        ASSERT_EQ(message->pack(wire, sizeof(wire), &size), BIX_OK);
    }

    std::unique_ptr<CSRelayMsg> message = std::make_unique<CSRelayMsg>();
    char wire[64];
    size_t size = 0;
    char why[128] = "";
};

TEST_F(ErrorsGuide, NamesWhoseMessageWasDropped) {
    wire[16] = 0x05; // a length of 1280
    EXPECT_FALSE(unpackOrExplain(*message, wire, size, why, sizeof(why)));
    EXPECT_STREQ(why, "user 1001, stRelayInputing: BIX_ERR_COUNT_OUT_OF_RANGE at byte 18");
}

TEST_F(ErrorsGuide, NamesNobodyWithoutAHead) {
    EXPECT_FALSE(unpackOrExplain(*message, wire, 11, why, sizeof(why)));
    EXPECT_STREQ(why, "no message: BIX_ERR_READ_UNDERFLOW");
}

TEST_F(ErrorsGuide, SaysNothingOfAGoodMessage) {
    EXPECT_TRUE(unpackOrExplain(*message, wire, size, why, sizeof(why)));
    EXPECT_STREQ(why, "");
}

TEST_F(ErrorsGuide, NamesTheField) {
    explain(wire, size, why, sizeof(why));
    EXPECT_STREQ(why, "a whole message of 22 bytes");
    explain(wire, 9, why, sizeof(why));
    EXPECT_STREQ(why, "cut short: at least 3 more bytes");
    wire[16] = 0x05;
    explain(wire, size, why, sizeof(why));
    EXPECT_STREQ(why, "BIX_ERR_COUNT_OUT_OF_RANGE at byte 16: stBody.stRelayInputing.stRelayData.wRelayLen");
    wire[11] = 9;
    explain(wire, size, why, sizeof(why));
    EXPECT_STREQ(why, "unknown command 9");
}

} // namespace
