// Count fields at the bound of their array and above it, nested ones too.

#include "tests/support/EveryType.h"
#include "tests/support/Match.h"
#include "tests/support/Memory.h"
#include "tests/support/Sites.h"

#include <cinttypes>
#include <cstdio>
#include <map>
#include <set>

namespace {

using cs_relay_msg::schema::Field;
using namespace Korvan;
using namespace tests;

KORVAN_TYPES_WHERE(Count, hasCounts);

constexpr size_t VERSION_BYTE = 8;

/// The first and the last count field of each array of the record: those of its other elements are alike.
std::vector<Site> countSites(const std::vector<Site>& sites) {
    std::map<const Field*, std::pair<size_t, size_t>> ends;
    for (size_t i = 0; i < sites.size(); ++i) {
        if (sites[i].counted != nullptr) {
            ends.insert({sites[i].counted, {i, i}}).first->second.second = i;
        }
    }
    std::set<size_t> places;
    for (const auto& [array, end] : ends) {
        places.insert(end.first);
        places.insert(end.second);
    }
    std::vector<Site> found;
    for (const size_t place : places) {
        found.push_back(sites[place]);
    }
    return found;
}

std::vector<uint64_t> countsAbove(const Site& site) {
    const uint64_t bound = site.counted->bound;
    return {bound + 1, largestValue(*site.field)};
}

TEST_P(Count, AtTheBoundIsAccepted) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        match.fill(random, ALL_ELEMENTS.of(command));
        for (const Site& site : countSites(sitesOf(type(), match.record(), 0))) {
            SCOPED_TRACE(::testing::Message() << site.counted->name << ", command " << command);
            match.fill(random, ALL_ELEMENTS.of(command));
            storeScalar(*site.field, match.record() + site.memory, site.counted->bound);
            const std::vector<char> image = match.image(0);
            (void)match.text();
            match.fillWithNoise(random);
            EXPECT_EQ(match.unpack(image, 0).code, BIX_OK);
            EXPECT_EQ(loadScalar(*site.field, match.after().data() + site.memory), site.counted->bound);
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(Count, AboveTheBoundFailsInPackBehindTheCount) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        match.fill(random, ALL_ELEMENTS.of(command));
        const std::vector<Site> sites = sitesOf(type(), match.record(), 0);
        std::vector<char> image = match.image(0);
        if (isMessage(type())) {
            image[VERSION_BYTE] = match.record()[VERSION_BYTE]; // the version is put there after success only
        }
        for (const Site& site : countSites(sites)) {
            const uint64_t valid = loadScalar(*site.field, match.record() + site.memory);
            for (const uint64_t count : countsAbove(site)) {
                SCOPED_TRACE(::testing::Message()
                             << site.counted->name << " " << count << ", command " << command);
                storeScalar(*site.field, match.record() + site.memory, count);
                const Match::Result result = match.pack(image.size(), 0);
                EXPECT_EQ(result.code, BIX_ERR_COUNT_OUT_OF_RANGE);
                EXPECT_EQ(result.used, site.wire + site.wireSize);
                std::vector<char> expected = image;
                storeBigEndian(expected.data() + site.wire, count, site.wireSize);
                EXPECT_TRUE(sameBytes(match.memory().data(), expected.data(), result.used));
                ASSERT_FALSE(HasFailure());
            }
            storeScalar(*site.field, match.record() + site.memory, valid);
        }
    }
}

TEST_P(Count, AboveTheBoundFailsInUnpackBehindTheCount) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        match.fill(random, ALL_ELEMENTS.of(command));
        const std::vector<Site> sites = sitesOf(type(), match.record(), 0);
        const std::vector<char> image = match.image(0);
        match.fillWithNoise(random);
        for (const Site& site : countSites(sites)) {
            for (const uint64_t count : countsAbove(site)) {
                SCOPED_TRACE(::testing::Message()
                             << site.counted->name << " " << count << ", command " << command);
                std::vector<char> bytes = image;
                storeBigEndian(bytes.data() + site.wire, count, site.wireSize);
                const Match::Result result = match.unpack(bytes, 0);
                EXPECT_EQ(result.code, BIX_ERR_COUNT_OUT_OF_RANGE);
                EXPECT_EQ(result.used, site.wire + site.wireSize);
                EXPECT_EQ(loadScalar(*site.field, match.after().data() + site.memory), count);
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

TEST_P(Count, AboveTheBoundFailsInVisualizeBehindTheCountsLine) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        match.fill(random, ALL_ELEMENTS.of(command));
        const size_t room = match.text().size() + 64; // a larger count can be a longer text
        for (const Site& site : countSites(sitesOf(type(), match.record(), 0))) {
            const uint64_t valid = loadScalar(*site.field, match.record() + site.memory);
            for (const uint64_t count : countsAbove(site)) {
                SCOPED_TRACE(::testing::Message()
                             << site.counted->name << " " << count << ", command " << command);
                storeScalar(*site.field, match.record() + site.memory, count);
                const Match::Result result = match.visualize(room, -1, '\n');
                EXPECT_EQ(result.code, BIX_ERR_COUNT_OUT_OF_RANGE);
                char line[64];
                const int length =
                    std::snprintf(line, sizeof(line),
                                  site.field->width == 1 ? "%s: 0x%02" PRIx64 "\n" : "%s: %" PRIu64 "\n",
                                  site.field->label, count);
                const size_t size = static_cast<size_t>(length);
                ASSERT_GE(result.used, size);
                EXPECT_TRUE(sameBytes(match.memory().data() + result.used - size, line, size + 1));
                ASSERT_FALSE(HasFailure());
            }
            storeScalar(*site.field, match.record() + site.memory, valid);
        }
    }
}

} // namespace
