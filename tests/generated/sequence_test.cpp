// Records one behind the other in one buffer: each begins at the cursor.

#include "tests/plain/PlainCodec.h"
#include "tests/support/EveryType.h"
#include "tests/support/Match.h"
#include "tests/support/Memory.h"
#include "tests/support/Settings.h"

#include "protocol/cs_relay_msg.h"

#include <memory>

namespace {

using cs_relay_msg::CSRelayMsg;
using namespace Korvan;
using namespace tests;

KORVAN_EVERY_TYPE(Sequence);

TEST_P(Sequence, PackUnpackAndVisualizeBeginAtTheCursor) {
    Match match(type());
    Match back(type());
    back.fillWithNoise(random);
    for (const int command : commandsFor(type())) {
        for (const size_t start : {size_t{1}, size_t{8}, size_t{9}, size_t{57}}) {
            SCOPED_TRACE(::testing::Message() << "start " << start << ", command " << command);
            match.fill(random, TINY.of(command));
            const std::vector<char> image = match.image(0);
            const Match::Result packed = match.pack(start + image.size(), 0, start);
            EXPECT_EQ(packed.code, BIX_OK);
            EXPECT_EQ(packed.used, start + image.size());
            EXPECT_TRUE(sameBytes(match.memory().data() + start, image.data(), image.size()));
            EXPECT_EQ(match.pack(start + image.size() - 1, 0, start).code, BIX_ERR_WRITE_OVERFLOW);

            std::vector<char> bytes = noise(random, start);
            bytes.insert(bytes.end(), image.begin(), image.end());
            const Match::Result unpacked = back.unpack(bytes, 0, start);
            EXPECT_EQ(unpacked.code, BIX_OK);
            EXPECT_EQ(unpacked.used, bytes.size());
            bytes.pop_back();
            EXPECT_EQ(back.unpack(bytes, 0, start).code, BIX_ERR_READ_UNDERFLOW);

            const std::string text = match.text();
            EXPECT_EQ(match.visualize(start + text.size(), 0, '\n', start).code, BIX_ERR_WRITE_OVERFLOW);
            EXPECT_EQ(match.visualize(start + text.size() + 1, 0, '\n', start).code, BIX_OK);
            EXPECT_TRUE(sameBytes(match.memory().data() + start, text.c_str(), text.size() + 1));
            ASSERT_FALSE(HasFailure());
        }
    }
}

class Messages : public SeededTest {};

TEST_F(Messages, BackToBackEachAtItsOwnVersion) {
    const auto& type = *(cs_relay_msg::schema::types().end() - 1);
    ASSERT_TRUE(isMessage(*type));
    const auto message = std::make_unique<CSRelayMsg>();
    Match match(*type);
    for (size_t round = 0; round < scaled(20); ++round) {
        constexpr size_t COUNT = 30;
        std::vector<char> stream(size_t{1} << 17);
        std::vector<size_t> ends;
        std::vector<std::vector<char>> images;
        BixWriteBuf out(stream.data(), stream.size());
        for (size_t i = 0; i < COUNT; ++i) {
            const uint32_t version = static_cast<uint32_t>(random.below(5));
            match.fill(random, MODERATE);
            images.push_back(match.image(version));
            ASSERT_EQ(type->pack(match.record(), out, version), BIX_OK);
            ends.push_back(out.getUsedSize());
        }
        BixReadBuf in(stream.data(), out.getUsedSize());
        size_t begin = 0;
        for (size_t i = 0; i < COUNT; ++i) {
            SCOPED_TRACE(i);
            ASSERT_EQ(ends[i] - begin, images[i].size());
            EXPECT_TRUE(sameBytes(stream.data() + begin, images[i].data(), images[i].size()));
            ASSERT_EQ(message->unpack(in, static_cast<uint32_t>(random.below(5))), BIX_OK);
            ASSERT_EQ(in.getUsedSize(), ends[i]);
            std::vector<char> again(images[i].size());
            EXPECT_EQ(message->pack(again.data(), again.size(), nullptr, message->stHead.bVersion), BIX_OK);
            EXPECT_EQ(again, images[i]);
            begin = ends[i];
        }
        EXPECT_EQ(in.getLeftSize(), 0u);
        ASSERT_FALSE(HasFailure());
    }
}

} // namespace
