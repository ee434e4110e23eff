// A client and a library built with different settings of assertions: each keeps its own.
// LIBRARY_ASSERTS says how the library was built, NDEBUG how this client is built.
#include "Common/Source/Core/BIX/BixBufUtil.h"
#include "protocol/cs_relay_msg.h"
#include "tests/buffer_operations.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

using namespace cs_relay_msg;

#ifdef NDEBUG
constexpr bool CLIENT_ASSERTS = false;
#else
constexpr bool CLIENT_ASSERTS = true;
#endif

TEST(MixedSettings, MessagesTravelAsEver) {
    auto message = std::make_unique<CSRelayMsg>();
    message->construct();
    message->stHead.bCmdId = cmd::stRelayLoginReq;
    std::strcpy(message->stBody.stRelayLoginReq.szSigBuf, "abc");
    char memory[64];
    size_t used = 0;
    ASSERT_EQ(message->pack(memory, sizeof(memory), &used), 0);
    EXPECT_EQ(used, 24u);
    EXPECT_EQ(message->unpack(memory, used), 0);
    EXPECT_EQ(message->unpack(memory, used - 1), -2);
    EXPECT_EQ(message->pack(memory, used - 1), -1);
    BixWriteBuf buf(memory, sizeof(memory));
    EXPECT_EQ(buf.textize("%s", "client "), 0);
    EXPECT_EQ(Korvan::BixBufUtil::printString(buf, 0, ';', "[library]", "text"), 0);
    EXPECT_STREQ(memory, "client [library]: text;");
}

TEST(MixedSettingsDeathTest, ClientsOperationsAssertAsTheClientWasBuilt) {
    for (const WriteOperation& operation : WRITE_OPERATIONS) {
        char memory[8];
        BixWriteBuf buf(memory, sizeof(memory));
        buf.position = 9;
        if (CLIENT_ASSERTS) {
            EXPECT_DEATH(operation.run(buf), operation.name);
        } else if (operation.appends) {
            EXPECT_EQ(operation.run(buf), -1) << operation.name;
        }
    }
}

TEST(MixedSettingsDeathTest, LibrarysOperationsAssertAsTheLibraryWasBuilt) {
    CSRelayMsgStopReq stop;
    stop.construct();
    char memory[8];
    BixWriteBuf out(memory, sizeof(memory));
    out.position = 9;
    BixReadBuf in(memory, sizeof(memory));
    in.position = 9;
    if (LIBRARY_ASSERTS) {
        EXPECT_DEATH((void)stop.pack(out), "writeUInt32");
        EXPECT_DEATH((void)stop.unpack(in), "readUInt32");
        EXPECT_DEATH((void)stop.visualize(out), "textize");
    } else {
        EXPECT_EQ(stop.pack(out), -1);
        EXPECT_EQ(stop.unpack(in), -2);
        EXPECT_EQ(stop.visualize(out), -1);
    }
}
