// With assertions compiled out, in this program and in its own copy of the library: ordinary failures give
// their codes, and a buffer whose cursor was corrupted has no room.
#include "Common/Source/Core/BIX/BixBufUtil.h"
#include "protocol/Schema.h"
#include "protocol/cs_relay_msg.h"
#include "tests/buffer_operations.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#ifndef NDEBUG
#error "this program is built without assertions"
#endif

namespace schema = cs_relay_msg::schema;

TEST(NoAssertions, FullBufferRefusesWithItsCode) {
    for (const WriteOperation& operation : WRITE_OPERATIONS) {
        char memory[16];
        BixWriteBuf full(memory, 0);
        EXPECT_EQ(operation.run(full), -1) << operation.name;
        BixWriteBuf roomy(memory, sizeof(memory));
        EXPECT_EQ(operation.run(roomy), 0) << operation.name;
    }
    for (const ReadOperation& operation : READ_OPERATIONS) {
        const char memory[16] = {};
        BixReadBuf empty(memory, 0);
        EXPECT_EQ(operation.run(empty), -2) << operation.name;
        BixReadBuf filled(memory, sizeof(memory));
        EXPECT_EQ(operation.run(filled), 0) << operation.name;
    }
}

TEST(NoAssertions, CorruptedCursorHasNoRoom) {
    for (const size_t position : {size_t{17}, std::numeric_limits<size_t>::max()}) {
        for (const WriteOperation& operation : WRITE_OPERATIONS) {
            std::string memory(16, '#');
            BixWriteBuf buf(memory.data(), memory.size());
            buf.position = position;
            // A write at a position does not use the cursor.
            EXPECT_EQ(operation.run(buf), operation.appends ? -1 : 0) << operation.name;
            EXPECT_EQ(buf.position, position) << operation.name;
            if (operation.appends) {
                EXPECT_EQ(memory, std::string(16, '#')) << operation.name;
            }
        }
        for (const ReadOperation& operation : READ_OPERATIONS) {
            const char memory[16] = {};
            BixReadBuf buf(memory, sizeof(memory));
            buf.position = position;
            EXPECT_EQ(operation.run(buf), operation.consumes ? -2 : 0) << operation.name;
            EXPECT_EQ(buf.position, position) << operation.name;
            EXPECT_EQ(buf.getLeftSize(), 0u);
        }
    }
}

TEST(NoAssertions, CorruptedCursorRefusesToReserveEvenNothing) {
    char memory[4];
    BixWriteBuf buf(memory, sizeof(memory));
    buf.position = 5;
    EXPECT_EQ(buf.reserve(0), -1);
}

TEST(NoAssertions, RecordsRefuseACorruptedCursor) {
    // The last ones would come round to the start if something were added to them.
    for (const size_t position : {size_t{65}, SIZE_MAX - 8, SIZE_MAX - 4, SIZE_MAX}) {
        for (const schema::Type* type : schema::types()) {
            SCOPED_TRACE(type->name);
            std::vector<char> record(type->size);
            std::string memory(64, '\x01');
            BixWriteBuf out(memory.data(), memory.size());
            out.position = position;
            EXPECT_EQ(type->pack(record.data(), out, 0), -1);
            EXPECT_EQ(type->visualize(record.data(), out, 0, '\n'), -1);
            EXPECT_EQ(out.position, position);
            EXPECT_EQ(memory, std::string(64, '\x01'));
            BixReadBuf in(memory.data(), memory.size());
            in.position = position;
            EXPECT_EQ(type->unpack(record.data(), in, 0), -2);
            EXPECT_EQ(in.position, position);
            EXPECT_EQ(record, std::vector<char>(type->size));
        }
    }
}

TEST(NoAssertions, MessageThatEndsTooSoonIsReadAsFarAsItGoes) {
    const auto message = std::make_unique<cs_relay_msg::CSRelayMsg>();
    std::string memory(12, '\0'); // a head, without the 8 bytes of its member
    memory[8] = '\x02';
    memory[11] = static_cast<char>(cs_relay_msg::cmd::stRelayStopRes);
    BixReadBuf in(memory.data(), memory.size());
    EXPECT_EQ(message->unpack(in), -2);
    EXPECT_EQ(in.position, 12u);
    EXPECT_EQ(message->stHead.bVersion, 2);
    EXPECT_EQ(message->stHead.bCmdId, cs_relay_msg::cmd::stRelayStopRes);
}

TEST(NoAssertions, TextHelpersRefuseACorruptedCursor) {
    namespace util = Korvan::BixBufUtil;
    std::string memory(64, '#');
    BixWriteBuf buf(memory.data(), memory.size());
    buf.position = 65;
    EXPECT_EQ(util::printVariable(buf, 0, '\n', "[a]", "%d", 1), -1);
    EXPECT_EQ(util::printVariable(buf, 0, '\n', "[a]", true), -1);
    EXPECT_EQ(util::printVariable(buf, 0, '\n', "[a]", 0u, true), -1);
    EXPECT_EQ(util::printString(buf, 0, '\n', "[a]", "b"), -1);
    EXPECT_EQ(util::printArray(buf, 0, '\n', "[a]", 1), -1);
    EXPECT_EQ(memory, std::string(64, '#'));
}

TEST(NoAssertions, VisualizeExOverACorruptedCursorEndsTheTextInTheLastByte) {
    auto stop = std::make_unique<cs_relay_msg::CSRelayMsgStopReq>();
    stop->construct();
    std::string memory(8, '#');
    BixWriteBuf buf(memory.data(), memory.size());
    buf.position = 9;
    EXPECT_STREQ(stop->visualize_ex(buf), "#######");
}
