// Cut-offs, fields that an older version does not have, and the version byte of the message.

#include "tests/support/EveryType.h"
#include "tests/support/Match.h"
#include "tests/support/Memory.h"
#include "tests/support/Settings.h"
#include "tests/support/Sites.h"

namespace {

using namespace Korvan;
using namespace tests;

KORVAN_EVERY_TYPE(Version);
KORVAN_TYPES_WHERE(LaterFields, hasLaterFields);
KORVAN_TYPES_WHERE(VersionByte, isMessage);

constexpr uint32_t CUT_OFFS[] = {0, 1, 2, 3, 4, 0xFFFFFFFF};
constexpr size_t VERSION_BYTE = 8;

TEST_P(Version, ZeroAndAllAboveTheCurrentVersionPackAsTheCurrentOne) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        match.fill(random, MODERATE.of(command));
        const std::vector<char> current = match.image(type().currentVersion);
        for (const uint32_t cutVer : CUT_OFFS) {
            SCOPED_TRACE(::testing::Message() << "cut-off " << cutVer << ", command " << command);
            const bool isOlder = cutVer != 0 && cutVer < type().currentVersion;
            const std::vector<char> image = match.image(cutVer);
            EXPECT_EQ(image.size(), wireEnd(sitesOf(type(), match.record(), cutVer)));
            if (!isOlder) {
                EXPECT_EQ(image, current);
            }
            if (isMessage(type())) {
                EXPECT_EQ(static_cast<uint32_t>(image[VERSION_BYTE]),
                          isOlder ? cutVer : type().currentVersion);
            }
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(Version, UnpackTakesTheCutOffThatItIsGiven) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        for (const uint32_t packedFor : CUT_OFFS) {
            match.fill(random, MODERATE.of(command));
            const std::vector<char> image = match.image(packedFor);
            match.fillWithNoise(random);
            for (const uint32_t cutVer : CUT_OFFS) {
                SCOPED_TRACE(::testing::Message() << "packed for " << packedFor << ", cut-off " << cutVer);
                const Match::Result result = match.unpack(image, cutVer);
                if (isMessage(type()) ||
                    type().effectiveVersion(cutVer) == type().effectiveVersion(packedFor)) {
                    EXPECT_EQ(result.code, BIX_OK);
                    EXPECT_EQ(result.used, image.size());
                }
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

TEST_P(LaterFields, GetTheirDefaultFromAnOlderImage) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        for (uint32_t version = 1; version < type().currentVersion; ++version) {
            SCOPED_TRACE(::testing::Message() << "command " << command << ", version " << version);
            match.fill(random, ALL_ELEMENTS.of(command));
            const std::vector<char> image = match.image(version);
            const std::vector<Site> sites = sitesOf(type(), match.record(), version);
            match.fillWithNoise(random);
            EXPECT_EQ(match.unpack(image, version).code, BIX_OK);
            size_t absent = 0;
            for (const Site& site : sites) {
                if (!site.onWire) {
                    ++absent;
                    EXPECT_EQ(loadScalar(*site.field, match.after().data() + site.memory),
                              site.field->defaultValue)
                        << site.field->name;
                }
            }
            if (!isMessage(type())) {
                EXPECT_GT(absent, 0u);
            }
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(VersionByte, OneToThreeOnlyIsTaken) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        match.fill(random, MODERATE.of(command));
        std::vector<char> image = match.image(0);
        match.fillWithNoise(random);
        std::vector<size_t> versions = lengthsUpTo(255);
        versions.insert(versions.end(), {1, 2, 3, 4}); // at any volume
        for (const size_t version : versions) {
            SCOPED_TRACE(::testing::Message() << "version byte " << version << ", command " << command);
            image[VERSION_BYTE] = static_cast<char>(version);
            const Match::Result result = match.unpack(image, static_cast<uint32_t>(version % 5));
            if (version < 1 || version > 3) {
                EXPECT_EQ(result.code, BIX_ERR_VERSION_OUT_OF_RANGE);
                EXPECT_EQ(result.used, 0u);
                EXPECT_TRUE(sameBytes(match.after().data(), match.record(), type().size));
            } else {
                EXPECT_NE(result.code, BIX_ERR_VERSION_OUT_OF_RANGE);
                EXPECT_EQ(static_cast<unsigned char>(match.after()[VERSION_BYTE]), version);
            }
            ASSERT_FALSE(HasFailure());
        }
    }
}

} // namespace
