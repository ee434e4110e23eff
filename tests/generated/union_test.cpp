// The body union: every selector, in all eight operations.

#include "tests/plain/PlainCodec.h"
#include "tests/support/EveryType.h"
#include "tests/support/Match.h"
#include "tests/support/Memory.h"

#include "protocol/cs_relay_msg.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <string>

namespace {

using cs_relay_msg::CSRelayMsgBody;
using cs_relay_msg::schema::Command;
using namespace Korvan;
using namespace tests;
namespace plain = cs_relay_msg::plain;

constexpr size_t UNSET = 0x7777;
constexpr uint32_t CUT_OFFS[] = {0, 1, 2, 3, 4, 0xFFFFFFFF};

class Union : public SeededTest {
protected:
    Union() : body(new CSRelayMsgBody), before(sizeof(CSRelayMsgBody)), scratch(sizeof(CSRelayMsgBody)) {}

    void fillWithNoise() {
        fillNoise(random, before.data(), before.size());
        load(before);
    }
    void fill(const Command& command, const Shape& shape) {
        fillNoise(random, before.data(), before.size());
        fillRecord(*command.type, before.data(), random, shape);
        load(before);
    }
    void load(const std::vector<char>& from) {
        std::memcpy(static_cast<void*>(body.get()), from.data(), from.size());
    }
    const char* bytes() const { return reinterpret_cast<const char*>(body.get()); }
    ::testing::AssertionResult isUntouched() const {
        return sameBytes(bytes(), before.data(), before.size());
    }
    ::testing::AssertionResult isScratch() const {
        return sameBytes(bytes(), scratch.data(), scratch.size());
    }

    std::unique_ptr<CSRelayMsgBody> body;
    std::vector<char> before, scratch;
};

std::vector<long long> unknownSelectors() {
    std::vector<long long> selectors{-1, -91, LLONG_MIN, LLONG_MIN + 161, LLONG_MAX, 256, 100000};
    for (long long id = 0; id < 256; ++id) {
        bool known = false;
        for (const Command& command : cs_relay_msg::schema::commands()) {
            known = known || command.id == id;
        }
        if (known) { // what is equal only in its low bits is another selector
            for (const long long other : {id + 256, id - 256, id + 65536, id + (1LL << 32), id - (1LL << 32),
                                          id + (1LL << 40), id | LLONG_MIN}) {
                selectors.push_back(other);
            }
        } else {
            selectors.push_back(id);
        }
    }
    return selectors;
}

TEST_F(Union, HasTwentyFiveMembers) {
    EXPECT_EQ(cs_relay_msg::schema::commands().size, 25u);
    EXPECT_EQ(unknownSelectors().size(), 7u + 25u * 7u + 231u);
}

TEST_F(Union, UnknownSelectorTouchesNothing) {
    std::vector<char> memory(64, CANARY);
    const std::vector<char> untouched = memory;
    for (const long long selector : unknownSelectors()) {
        SCOPED_TRACE(selector);
        fillWithNoise();
        BixWriteBuf out(memory.data(), memory.size());
        ASSERT_EQ(out.reserve(5), BIX_OK);
        BixReadBuf in(memory.data(), memory.size());
        uint32_t skipped = 0;
        ASSERT_EQ(in.readUInt32(skipped), BIX_OK);
        EXPECT_EQ(body->construct(selector), BIX_OK);
        EXPECT_EQ(body->pack(selector, out), BIX_OK);
        EXPECT_EQ(body->unpack(selector, in), BIX_OK);
        EXPECT_EQ(body->visualize(selector, out), BIX_OK);
        EXPECT_EQ(out.getUsedSize(), 5u);
        EXPECT_EQ(in.getUsedSize(), 4u);
        size_t used = UNSET;
        EXPECT_EQ(body->pack(selector, memory.data(), memory.size(), &used), BIX_OK);
        EXPECT_EQ(used, 0u);
        used = UNSET;
        EXPECT_EQ(body->unpack(selector, memory.data(), memory.size(), &used), BIX_OK);
        EXPECT_EQ(used, 0u);
        used = UNSET;
        EXPECT_EQ(body->visualize(selector, memory.data(), memory.size(), &used), BIX_OK);
        EXPECT_EQ(used, 0u);
        // Not even room is needed.
        EXPECT_EQ(body->pack(selector, memory.data(), 0), BIX_OK);
        EXPECT_EQ(body->unpack(selector, memory.data(), 0), BIX_OK);
        EXPECT_EQ(body->visualize(selector, memory.data(), 0), BIX_OK);
        EXPECT_EQ(memory, untouched);
        EXPECT_TRUE(isUntouched());
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(Union, NullBufferIsRefusedWhateverTheSelector) {
    fillWithNoise();
    for (const long long selector : {0LL, 161LL, 167LL, 194LL, -1LL, LLONG_MAX}) {
        size_t used = UNSET;
        EXPECT_EQ(body->pack(selector, nullptr, 10, &used), BIX_ERR_NULL_ARGUMENT);
        EXPECT_EQ(body->unpack(selector, nullptr, 10, &used), BIX_ERR_NULL_ARGUMENT);
        EXPECT_EQ(body->visualize(selector, nullptr, 10, &used), BIX_ERR_NULL_ARGUMENT);
        EXPECT_EQ(body->pack(selector, nullptr, 0, nullptr), BIX_ERR_NULL_ARGUMENT);
        EXPECT_EQ(body->unpack(selector, nullptr, 0, nullptr), BIX_ERR_NULL_ARGUMENT);
        EXPECT_EQ(body->visualize(selector, nullptr, 0, nullptr), BIX_ERR_NULL_ARGUMENT);
        EXPECT_EQ(used, UNSET);
    }
    EXPECT_TRUE(isUntouched());
}

TEST_F(Union, ConstructWithoutSelectorClearsAllOfTheStorage) {
    fillWithNoise();
    EXPECT_EQ(body->construct(), BIX_OK);
    EXPECT_TRUE(allBytes(bytes(), sizeof(CSRelayMsgBody), '\0'));
}

TEST_F(Union, ConstructSetsTheMemberAlone) {
    for (const Command& command : cs_relay_msg::schema::commands()) {
        SCOPED_TRACE(command.name);
        fillWithNoise();
        scratch = before;
        EXPECT_EQ(plain::construct(*command.type, scratch.data()), BIX_OK);
        EXPECT_EQ(body->construct(command.id), BIX_OK);
        EXPECT_TRUE(isScratch());
    }
}

TEST_F(Union, PackIsTheMembersOwn) {
    for (const Command& command : cs_relay_msg::schema::commands()) {
        for (const uint32_t cutVer : CUT_OFFS) {
            SCOPED_TRACE(::testing::Message() << command.name << ", cut-off " << cutVer);
            fill(command, MODERATE.withUnterminated(20));
            std::vector<char> expected(16384, CANARY);
            std::vector<char> byUnion(expected.size(), CANARY);
            scratch = before;
            BixWriteBuf expectedOut(expected.data(), expected.size());
            ASSERT_EQ(command.type->pack(scratch.data(), expectedOut, cutVer), BIX_OK);
            BixWriteBuf out(byUnion.data(), byUnion.size());
            EXPECT_EQ(body->pack(command.id, out, cutVer), BIX_OK);
            EXPECT_EQ(out.getUsedSize(), expectedOut.getUsedSize());
            EXPECT_EQ(byUnion, expected);
            EXPECT_TRUE(isScratch());

            const size_t size = static_cast<size_t>(random.below(expectedOut.getUsedSize() + 2));
            std::vector<char> shorter(expected.size(), CANARY);
            std::fill(byUnion.begin(), byUnion.end(), CANARY);
            load(before);
            scratch = before;
            BixWriteBuf shorterOut(shorter.data(), size);
            const int32_t code = plain::packBody(command.id, scratch.data(), shorterOut, cutVer);
            size_t used = UNSET;
            EXPECT_EQ(body->pack(command.id, byUnion.data(), size, &used, cutVer), code);
            EXPECT_EQ(used, shorterOut.getUsedSize());
            EXPECT_EQ(byUnion, shorter);
            EXPECT_TRUE(isScratch());
            BixWriteBuf again(byUnion.data(), size);
            EXPECT_EQ(body->pack(command.id, again, cutVer), code);
            EXPECT_EQ(again.getUsedSize(), used);
            EXPECT_EQ(byUnion, shorter);
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_F(Union, UnpackIsTheMembersOwn) {
    for (const Command& command : cs_relay_msg::schema::commands()) {
        for (const uint32_t cutVer : CUT_OFFS) {
            SCOPED_TRACE(::testing::Message() << command.name << ", cut-off " << cutVer);
            fill(command, MODERATE);
            std::vector<char> image(16384);
            BixWriteBuf out(image.data(), image.size());
            ASSERT_EQ(body->pack(command.id, out, cutVer), BIX_OK);

            fillWithNoise();
            scratch = before;
            BixReadBuf expectedIn(image.data(), out.getUsedSize());
            ASSERT_EQ(command.type->unpack(scratch.data(), expectedIn, cutVer), BIX_OK);
            BixReadBuf in(image.data(), out.getUsedSize());
            EXPECT_EQ(body->unpack(command.id, in, cutVer), BIX_OK);
            EXPECT_EQ(in.getUsedSize(), expectedIn.getUsedSize());
            EXPECT_TRUE(isScratch());

            const size_t size = static_cast<size_t>(random.below(out.getUsedSize()));
            load(before);
            scratch = before;
            BixReadBuf shorterIn(image.data(), size);
            EXPECT_EQ(plain::unpackBody(command.id, scratch.data(), shorterIn, cutVer),
                      BIX_ERR_READ_UNDERFLOW);
            size_t used = UNSET;
            EXPECT_EQ(body->unpack(command.id, image.data(), size, &used, cutVer), BIX_ERR_READ_UNDERFLOW);
            EXPECT_EQ(used, shorterIn.getUsedSize());
            EXPECT_TRUE(isScratch());
            load(before);
            BixReadBuf again(image.data(), size);
            EXPECT_EQ(body->unpack(command.id, again, cutVer), BIX_ERR_READ_UNDERFLOW);
            EXPECT_EQ(again.getUsedSize(), used);
            EXPECT_TRUE(isScratch());
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_F(Union, VisualizeIsAHeaderAndTheMembersOwnOneLevelDeeper) {
    for (const Command& command : cs_relay_msg::schema::commands()) {
        for (const int indent : {INT_MIN, -1, 0, 2}) {
            SCOPED_TRACE(::testing::Message() << command.name << ", indent " << indent);
            fill(command, TINY);
            std::vector<char> expected(16384, CANARY);
            std::vector<char> byUnion(expected.size(), CANARY);
            const std::string header =
                std::string(indent > 0 ? 2 * static_cast<size_t>(indent) : 0, ' ') + command.label + ";";
            BixWriteBuf expectedOut(expected.data(), expected.size());
            ASSERT_EQ(expectedOut.writeBytes(header.data(), header.size()), BIX_OK);
            ASSERT_EQ(
                command.type->visualize(before.data(), expectedOut, indent < 0 ? indent : indent + 1, ';'),
                BIX_OK);
            size_t used = UNSET;
            EXPECT_EQ(body->visualize(command.id, byUnion.data(), byUnion.size(), &used, indent, ';'),
                      BIX_OK);
            EXPECT_EQ(used, expectedOut.getUsedSize());
            EXPECT_EQ(byUnion, expected);

            for (size_t size = 0; size <= used + 1; size += 1 + static_cast<size_t>(random.below(20))) {
                std::fill(expected.begin(), expected.end(), CANARY);
                std::fill(byUnion.begin(), byUnion.end(), CANARY);
                BixWriteBuf shorterOut(expected.data(), size);
                BixWriteBuf out(byUnion.data(), size);
                EXPECT_EQ(body->visualize(command.id, out, indent, ';'),
                          plain::visualizeBody(command.id, before.data(), shorterOut, indent, ';'));
                EXPECT_EQ(out.getUsedSize(), shorterOut.getUsedSize());
                EXPECT_EQ(byUnion, expected);
            }
            EXPECT_TRUE(isUntouched());
            ASSERT_FALSE(HasFailure());
        }
    }
}

} // namespace
