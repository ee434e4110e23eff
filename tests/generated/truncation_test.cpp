// Every capacity for pack and every truncation for unpack: what does not fit fails with the right code and
// leaves exactly the part that fitted.

#include "tests/support/EveryType.h"
#include "tests/support/Match.h"
#include "tests/support/Memory.h"
#include "tests/support/Settings.h"
#include "tests/support/Sites.h"

namespace {

using cs_relay_msg::schema::wireSize;
using namespace Korvan;
using namespace tests;

KORVAN_EVERY_TYPE(Truncation);

constexpr size_t VERSION_BYTE_END = 9; // a message is not looked at before its version byte is there

TEST_P(Truncation, PackIntoEveryCapacity) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        for (uint32_t version = 1; version <= type().currentVersion; ++version) {
            match.fill(random, MODERATE.of(command).withUnterminated(20));
            const std::vector<Site> sites = sitesOf(type(), match.record(), version);
            const size_t full = wireEnd(sites);
            for (const size_t capacity : lengthsUpTo(full)) {
                SCOPED_TRACE(::testing::Message() << "command " << command << ", version " << version
                                                  << ", capacity " << capacity);
                const Match::Result result = match.pack(capacity, version);
                ASSERT_EQ(result.code, capacity < full ? BIX_ERR_WRITE_OVERFLOW : BIX_OK);
                ASSERT_EQ(result.used, lastStepWithin(sites, capacity));
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

TEST_P(Truncation, UnpackFromEveryLength) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        for (uint32_t version = 1; version <= type().currentVersion; ++version) {
            match.fill(random, MODERATE.of(command));
            const std::vector<char> image = match.image(version);
            const std::vector<Site> sites = sitesOf(type(), match.record(), version);
            match.fillWithNoise(random);
            for (const size_t length : lengthsUpTo(image.size())) {
                SCOPED_TRACE(::testing::Message()
                             << "command " << command << ", version " << version << ", length " << length);
                const Match::Result result = match.unpack({image.data(), image.data() + length}, version);
                const bool looksAtIt = !isMessage(type()) || length >= VERSION_BYTE_END;
                ASSERT_EQ(result.code, length < image.size() ? BIX_ERR_READ_UNDERFLOW : BIX_OK);
                ASSERT_EQ(result.used, looksAtIt ? lastStepWithin(sites, length) : 0);
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

TEST_P(Truncation, LargestFitsExactly) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        SCOPED_TRACE(command);
        for (uint32_t version = 1; version <= type().currentVersion; ++version) {
            match.fill(random, LARGEST.of(command));
            const std::vector<Site> sites = sitesOf(type(), match.record(), version);
            const size_t full = wireEnd(sites);
            if (!isMessage(type())) {
                EXPECT_EQ(full, wireSize(type(), version).max);
            }
            EXPECT_EQ(match.pack(full - 1, version).code, BIX_ERR_WRITE_OVERFLOW);
            const Match::Result packed = match.pack(full, version);
            EXPECT_EQ(packed.code, BIX_OK);
            EXPECT_EQ(packed.used, full);

            std::vector<char> image(match.memory().data(), match.memory().data() + full);
            match.fillWithNoise(random);
            const Match::Result unpacked = match.unpack(image, version);
            EXPECT_EQ(unpacked.code, BIX_OK);
            EXPECT_EQ(unpacked.used, full);
            image.pop_back();
            const Match::Result cut = match.unpack(image, version);
            EXPECT_EQ(cut.code, BIX_ERR_READ_UNDERFLOW);
            EXPECT_EQ(cut.used, lastStepWithin(sites, full - 1));
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(Truncation, SmallestFitsExactly) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        SCOPED_TRACE(command);
        for (uint32_t version = 1; version <= type().currentVersion; ++version) {
            match.fill(random, SMALLEST.of(command));
            const std::vector<char> image = match.image(version);
            if (!isMessage(type())) {
                EXPECT_EQ(image.size(), wireSize(type(), version).min);
            }
            EXPECT_EQ(match.pack(image.size() - 1, version).code, BIX_ERR_WRITE_OVERFLOW);
            match.fillWithNoise(random);
            EXPECT_EQ(match.unpack(image, version).code, BIX_OK);
            ASSERT_FALSE(HasFailure());
        }
    }
}

} // namespace
