#include "tools/relaymsg/FieldText.h"

#include "tests/tool/Wire.h"
#include "tools/relaymsg/TextBuffer.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

using namespace cs_relay_msg;
using namespace relaymsg;

std::string fields(const std::string& bytes, int indent = 0, char separator = '\n') {
    TextBuffer buffer;
    return std::string(
        buffer.fit([&](Korvan::BixWriteBuf& out) { return printFields(bytes, out, indent, separator); }));
}

/// What the library prints, without the fields that are not on the wire at the message's version.
std::string visualized(const std::string& bytes, int indent) {
    const auto message = std::make_unique<CSRelayMsg>();
    message->unpack(bytes.data(), bytes.size());
    std::vector<char> room(100000);
    std::string text = message->visualize_ex(room.data(), room.size(), nullptr, indent);
    if (message->stHead.bVersion < 3) {
        text = std::regex_replace(text, std::regex(" *\\[dwLastHasDataFrameId\\]: 0\n"), "");
    }
    if (message->stHead.bVersion < 2) {
        text = std::regex_replace(text, std::regex(" *\\[bRepeatCount\\]: 0x01\n"), "");
    }
    return text;
}

TEST(FieldText, isThatOfTheLibraryForEveryCommand) {
    const std::vector<std::string> messages = wire::sessionMessages();
    ASSERT_GT(messages.size(), 25u);
    for (const std::string& message : messages) {
        EXPECT_EQ(fields(message), visualized(message, 0));
        EXPECT_EQ(fields(message, 3), visualized(message, 3));
        EXPECT_EQ(fields(message, -1), visualized(message, -1));
    }
}

TEST(FieldText, isThatOfTheLibraryForTheLargestMessage) {
    const auto message = std::make_unique<CSRelayMsg>();
    const std::string bytes = wire::largest();
    ASSERT_EQ(message->unpack(bytes.data(), bytes.size()), BIX_OK);
    TextBuffer buffer;
    EXPECT_EQ(fields(bytes, 1, '\0'),
              buffer.fit([&](Korvan::BixWriteBuf& out) { return message->visualize(out, 1, '\0'); }));
}

TEST(FieldText, endsBeforeTheFieldThatFails) {
    EXPECT_EQ(fields(wire::login("abc").substr(0, 22)), "[stHead]\n"
                                                        "  [dwUserID]: 1001\n"
                                                        "  [dwRoomID]: 7\n"
                                                        "  [bVersion]: 0x03\n"
                                                        "  [wAsyncID]: 258\n"
                                                        "  [bCmdId]: 0xa1\n"
                                                        "[stBody]\n"
                                                        "  [stRelayLoginReq]\n"
                                                        "    [szSigBuf]: abc\n");
}

TEST(FieldText, isEmptyWhereNothingWasRead) {
    EXPECT_EQ(fields(wire::heartBeat().substr(0, 8)), "");
    EXPECT_EQ(fields(wire::head(184, 4) + wire::big(0, 4)), "");
}

TEST(FieldText, printsSignedAndLargeNumbers) {
    EXPECT_NE(fields(wire::head(cmd::stRelayStopRes) + wire::big(0xffffffff, 4) + wire::big(0xffffffff, 4))
                  .find("[iResult]: -1\n    [dwReserve]: 4294967295\n"),
              std::string::npos);
    EXPECT_NE(fields(wire::head(cmd::stRelayReloginNotify) + wire::big(0, 4) + wire::big(~uint64_t{0}, 8))
                  .find("[ullQuestion]: 18446744073709551615\n"),
              std::string::npos);
}

} // namespace
