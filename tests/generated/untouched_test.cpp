// What an operation has no business with stays as it was.

#include "tests/support/EveryType.h"
#include "tests/support/Match.h"
#include "tests/support/Memory.h"
#include "tests/support/Sites.h"

#include <algorithm>

namespace {

using namespace Korvan;
using namespace tests;

KORVAN_EVERY_TYPE(Untouched);

TEST_P(Untouched, UnpackLeavesAllThatIsNotCounted) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        for (uint32_t version = 1; version <= type().currentVersion; ++version) {
            SCOPED_TRACE(::testing::Message() << "command " << command << ", version " << version);
            match.fill(random, MODERATE.of(command));
            const std::vector<char> image = match.image(version);
            const std::vector<Site> sites = sitesOf(type(), match.record(), version);
            const std::vector<char> sent(match.record(), match.record() + type().size);
            match.fillWithNoise(random);
            std::vector<char> expected(match.record(), match.record() + type().size);
            for (const Site& site : sites) {
                if (site.onWire) {
                    std::copy_n(sent.data() + site.memory, site.memorySize, expected.data() + site.memory);
                } else {
                    storeScalar(*site.field, expected.data() + site.memory, site.field->defaultValue);
                }
            }
            if (isMessage(type())) {
                expected[8] = static_cast<char>(version);
            }
            EXPECT_EQ(match.unpack(image, version).code, BIX_OK);
            EXPECT_TRUE(sameBytes(match.after().data(), expected.data(), expected.size()));
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(Untouched, UnpackLeavesWhatFollowsTheRecord) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        match.fill(random, MODERATE.of(command));
        std::vector<char> image = match.image(0);
        const size_t size = image.size();
        image.insert(image.end(), 40, '\0');
        match.fillWithNoise(random);
        const Match::Result result = match.unpack(image, 0);
        EXPECT_EQ(result.code, BIX_OK);
        EXPECT_EQ(result.used, size);
        ASSERT_FALSE(HasFailure());
    }
}

} // namespace
