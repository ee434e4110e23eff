#include "tools/relaymsg/FieldWalk.h"

#include "tests/tool/Wire.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace {

using namespace cs_relay_msg;
using namespace relaymsg;

class FieldWalk : public testing::Test {
protected:
    /// Walks over @p bytes and expects what `unpack` says of them. Returns the code.
    int32_t compare(const std::string& bytes) {
        size_t used = 0;
        const int32_t code = message_->unpack(bytes.data(), bytes.size(), &used);
        const Stop stop = walkMessage(bytes);
        EXPECT_EQ(stop.code, code);
        EXPECT_EQ(stop.end, used);
        EXPECT_EQ(stop.path.empty(), code == BIX_OK);
        EXPECT_EQ(stop.needed > bytes.size(), code == BIX_ERR_READ_UNDERFLOW);
        return code;
    }

private:
    std::unique_ptr<CSRelayMsg> message_ = std::make_unique<CSRelayMsg>();
};

/// Notes every leaf as "path@offset+size".
struct Notes : FieldVisitor {
    std::vector<std::string> leaves;
    size_t end = 0;
    bool gap = false;
    std::vector<std::string> open_; // the paths of the groups around the field

    void open(const Group& group) override { open_.push_back(group.path.text()); }
    void close(const Group& group) override {
        EXPECT_EQ(open_.back(), group.path.text());
        open_.pop_back();
    }
    void leaf(const Leaf& leaf) override {
        gap = gap || leaf.offset != end;
        end = leaf.offset + leaf.size;
        leaves.push_back(leaf.path.text() + "@" + std::to_string(leaf.offset) + "+" +
                         std::to_string(leaf.size));
    }
};

TEST_F(FieldWalk, namesEveryFieldWithItsPlace) {
    Notes notes;
    const std::string frame = wire::big(5, 4) + wire::big(1, 1) + wire::data(3) + wire::big(4, 4);
    const Stop stop = walkMessage(wire::head(cmd::stRelayLockStep) + wire::big(1, 1) + frame, notes);
    EXPECT_EQ(stop.code, BIX_OK);
    const std::vector<std::string> expected = {
        "stHead.dwUserID@0+4",
        "stHead.dwRoomID@4+4",
        "stHead.bVersion@8+1",
        "stHead.wAsyncID@9+2",
        "stHead.bCmdId@11+1",
        "stBody.stRelayLockStep.bCount@12+1",
        "stBody.stRelayLockStep.astRelayData[0].dwFrameId@13+4",
        "stBody.stRelayLockStep.astRelayData[0].bCount@17+1",
        "stBody.stRelayLockStep.astRelayData[0].astRelayData[0].dwObjectId@18+4",
        "stBody.stRelayLockStep.astRelayData[0].astRelayData[0].wRelayLen@22+2",
        "stBody.stRelayLockStep.astRelayData[0].astRelayData[0].szRelayBuf@24+3",
        "stBody.stRelayLockStep.astRelayData[0].astRelayData[0].bUserStatusFlag@27+1",
        "stBody.stRelayLockStep.astRelayData[0].astRelayData[0].wSequance@28+2",
        "stBody.stRelayLockStep.astRelayData[0].dwLastHasDataFrameId@30+4",
    };
    EXPECT_EQ(notes.leaves, expected);
}

TEST_F(FieldWalk, coversEveryByteOfEveryCommand) {
    for (const std::string& message : wire::sessionMessages()) {
        Notes notes;
        EXPECT_EQ(walkMessage(message, notes).code, BIX_OK);
        EXPECT_FALSE(notes.gap);
        EXPECT_EQ(notes.end, message.size());
        EXPECT_TRUE(notes.open_.empty()) << "every group that was opened is closed";
    }
}

TEST_F(FieldWalk, givesAStringWithoutItsLengthAndNul) {
    struct : FieldVisitor {
        std::string text;
        void leaf(const Leaf& leaf) override {
            if (leaf.field.kind == schema::Kind::String) {
                text = std::string(leaf.bytes) + "@" + std::to_string(leaf.offset) + "+" +
                       std::to_string(leaf.size);
            }
        }
    } visitor;
    walkMessage(wire::login("abc"), visitor);
    EXPECT_EQ(visitor.text, "abc@12+8");
}

TEST_F(FieldWalk, givesTheBitsOfAScalar) {
    struct : FieldVisitor {
        std::map<std::string, uint64_t> values;
        void leaf(const Leaf& leaf) override { values[leaf.field.name] = leaf.value; }
    } visitor;
    walkMessage(wire::head(cmd::stRelayReloginNotify) + wire::big(5, 4) + wire::big(0x8182838485868788, 8),
                visitor);
    EXPECT_EQ(visitor.values["dwUserID"], 1001u);
    EXPECT_EQ(visitor.values["wAsyncID"], 258u);
    EXPECT_EQ(visitor.values["dwReserve"], 5u);
    EXPECT_EQ(visitor.values["ullQuestion"], 0x8182838485868788u);
}

TEST_F(FieldWalk, namesTheCountThatIsOutOfRange) {
    const std::string frame = wire::big(5, 4) + wire::big(1, 1) + wire::big(1, 4) + wire::big(1025, 2);
    const Stop stop = walkMessage(wire::head(cmd::stRelayLockStep) + wire::big(1, 1) + frame);
    EXPECT_EQ(stop.code, BIX_ERR_COUNT_OUT_OF_RANGE);
    EXPECT_EQ(stop.path, "stBody.stRelayLockStep.astRelayData[0].astRelayData[0].wRelayLen");
    EXPECT_EQ(stop.array, "szRelayBuf");
    EXPECT_EQ(stop.offset, 22u);
    EXPECT_EQ(stop.value, 1025u);
    EXPECT_EQ(stop.most, 1024u);
}

TEST_F(FieldWalk, namesTheElementInWhichTheBytesEnd) {
    const std::string frame = wire::big(5, 4) + wire::big(2, 1) + wire::data(3) + wire::big(1, 4) + "\x01";
    const Stop stop = walkMessage(wire::head(cmd::stRelayLockStep) + wire::big(1, 1) + frame);
    EXPECT_EQ(stop.code, BIX_ERR_READ_UNDERFLOW);
    EXPECT_EQ(stop.path, "stBody.stRelayLockStep.astRelayData[0].astRelayData[1].wRelayLen");
    EXPECT_EQ(stop.offset, 34u);
    EXPECT_EQ(stop.needed, 36u);
}

TEST_F(FieldWalk, asksForTheWholeStringThatIsMissing) {
    const std::string message = wire::head(cmd::stRelayLoginReq) + wire::big(4000000000, 4) + "abc";
    const Stop stop = walkMessage(message);
    EXPECT_EQ(stop.code, BIX_ERR_READ_UNDERFLOW);
    EXPECT_EQ(stop.needed, 4000000016u);
    EXPECT_EQ(stop.most, 128u);
}

TEST_F(FieldWalk, agreesWithUnpackOnEveryTruncation) {
    for (const std::string& message : wire::sessionMessages()) {
        for (size_t size = 0; size <= message.size(); ++size) {
            EXPECT_EQ(compare(message.substr(0, size)),
                      size < message.size() ? BIX_ERR_READ_UNDERFLOW : BIX_OK);
        }
    }
}

TEST_F(FieldWalk, agreesWithUnpackOnHostileBytes) {
    const std::vector<std::string> messages = wire::sessionMessages();
    std::mt19937 random(20261121);
    std::map<int32_t, int> codes;
    for (int i = 0; i < 60000 && !HasFailure(); ++i) {
        std::string message = messages[random() % messages.size()];
        for (size_t changes = 1 + random() % 3; changes > 0; --changes) {
            constexpr unsigned char VALUES[] = {0, 1, 2, 3, 4, 5, 10, 100, 101, 0x7f, 0x80, 0xff};
            const size_t place =
                random() % (random() % 2 ? message.size() : std::min<size_t>(40, message.size()));
            message[place] =
                static_cast<char>(random() % 2 ? VALUES[random() % std::size(VALUES)] : random());
        }
        if (random() % 4 == 0) {
            message.resize(random() % (2 * message.size()));
        } else if (random() % 4 == 0) {
            message += std::string(5000, 'z');
        }
        ++codes[compare(message)];
    }
    for (const int32_t code :
         {BIX_OK, BIX_ERR_READ_UNDERFLOW, BIX_ERR_STRING_TOO_LONG, BIX_ERR_STRING_EMPTY,
          BIX_ERR_STRING_MALFORMED, BIX_ERR_COUNT_OUT_OF_RANGE, BIX_ERR_VERSION_OUT_OF_RANGE}) {
        EXPECT_GT(codes[code], 10) << Korvan::resultName(code);
    }
}

TEST_F(FieldWalk, agreesWithUnpackOnTheLargestMessage) {
    const std::string message = wire::largest();
    EXPECT_EQ(message.size(), CSRelayMsg::maxWireSize);
    EXPECT_EQ(compare(message), BIX_OK);
    EXPECT_EQ(compare(message.substr(0, message.size() - 1)), BIX_ERR_READ_UNDERFLOW);
}

} // namespace
