// Many random records and much hostile input: the library and the plain codec never differ.

#include "tests/support/EveryType.h"
#include "tests/support/Match.h"
#include "tests/support/Memory.h"
#include "tests/support/Settings.h"
#include "tests/support/Sites.h"

#include <algorithm>
#include <iterator>

namespace {

using cs_relay_msg::schema::Kind;
using namespace Korvan;
using namespace tests;

KORVAN_EVERY_TYPE(Hostile);

constexpr size_t VERSION_BYTE = 8;
constexpr size_t COMMAND_BYTE = 11;
constexpr size_t TEXT_ROOM = 6000; // most texts fit, and what does not is a case as well

Shape randomShape(Random& random) {
    static const std::vector<Shape> shapes{TINY, MODERATE, MODERATE, SMALLEST};
    return (random.chance(3) ? ANYTHING : random.pick(shapes)).withUnterminated(10);
}

uint32_t randomCutOff(Random& random) {
    return static_cast<uint32_t>(random.chance(5) ? random.next() : random.below(5));
}

/// A value at an edge of @p width bytes, or anything.
uint64_t randomValue(Random& random, uint64_t bound) {
    static const std::vector<uint64_t> edges{0, 1, 2, 0x7F, 0x80, 0xFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    return random.chance(40)   ? bound + random.below(3) - 1
           : random.chance(50) ? random.pick(edges)
                               : random.next();
}

/// Spoils one count or length of the wire form.
void spoilSize(Random& random, std::vector<char>& bytes, const std::vector<Site>& sites) {
    std::vector<Site> sizes;
    std::copy_if(sites.begin(), sites.end(), std::back_inserter(sizes), [&](const Site& site) {
        return site.wire + 4 <= bytes.size() && (site.counted != nullptr || site.field->kind == Kind::String);
    });
    if (sizes.empty()) {
        return;
    }
    const Site& site = random.pick(sizes);
    const bool isText = site.field->kind == Kind::String;
    storeBigEndian(bytes.data() + site.wire,
                   randomValue(random, isText ? site.field->bound : site.counted->bound),
                   isText ? 4 : site.wireSize);
}

void spoil(Random& random, std::vector<char>& bytes, const std::vector<Site>& sites) {
    for (uint64_t times = random.below(3) + 1; times > 0 && !bytes.empty(); --times) {
        const size_t place = static_cast<size_t>(random.below(bytes.size()));
        switch (random.below(6)) {
        case 0:
            bytes[place] = random.byte();
            break;
        case 1:
            bytes[place] = static_cast<char>(bytes[place] ^ (1 << random.below(8)));
            break;
        case 2:
            bytes.resize(place);
            break;
        case 3:
            bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(place), random.byte());
            break;
        default:
            spoilSize(random, bytes, sites);
        }
    }
}

void makePlausible(Random& random, std::vector<char>& message) {
    if (message.size() > COMMAND_BYTE) {
        message[VERSION_BYTE] = static_cast<char>(random.below(5));
        message[COMMAND_BYTE] = static_cast<char>(158 + random.below(40));
    }
}

/// Packs and renders whatever an unpack left, with room enough or not.
void useRecord(Random& random, Match& match) {
    (void)match.pack(static_cast<size_t>(random.below(3000)), randomCutOff(random));
    (void)match.visualize(static_cast<size_t>(random.below(TEXT_ROOM)), static_cast<int>(random.below(6)) - 1,
                          random.byte());
}

TEST_P(Hostile, RandomRecordsAreThereAndBack) {
    Match match(type());
    for (size_t round = 0; round < scaled(3000); ++round) {
        SCOPED_TRACE(round);
        const uint32_t version = randomCutOff(random);
        match.fill(random, randomShape(random));
        (void)match.visualize(static_cast<size_t>(random.below(TEXT_ROOM)),
                              static_cast<int>(random.below(6)) - 1, random.byte());
        const std::vector<char> image = match.image(version);
        (void)match.pack(static_cast<size_t>(random.below(image.size() + 1)), version);
        match.fillWithNoise(random);
        const Match::Result result = match.unpack(image, version);
        ASSERT_EQ(result.code, BIX_OK);
        ASSERT_EQ(result.used, image.size());
        std::copy(match.after().begin(), match.after().end(), match.record());
        ASSERT_EQ(match.image(version), image);
        ASSERT_FALSE(HasFailure());
    }
}

TEST_P(Hostile, SpoiledInput) {
    Match match(type());
    for (size_t round = 0; round < scaled(6000); ++round) {
        SCOPED_TRACE(round);
        const uint32_t version = randomCutOff(random);
        match.fill(random, randomShape(random));
        std::vector<char> bytes = match.image(version);
        spoil(random, bytes, sitesOf(type(), match.record(), version));
        match.fillWithNoise(random);
        (void)match.unpack(bytes, random.chance(80) ? version : randomCutOff(random));
        std::copy(match.after().begin(), match.after().end(), match.record());
        useRecord(random, match);
        ASSERT_FALSE(HasFailure());
    }
}

TEST_P(Hostile, RandomInput) {
    Match match(type());
    for (size_t round = 0; round < scaled(6000); ++round) {
        SCOPED_TRACE(round);
        std::vector<char> bytes =
            noise(random, static_cast<size_t>(random.below(random.chance(10) ? 5000 : 80)));
        // Few values make counts and lengths that are small enough to go on.
        if (random.chance(70)) {
            for (char& byte : bytes) {
                byte = static_cast<char>(random.chance(70) ? 0 : random.below(6));
            }
        }
        if (isMessage(type())) {
            makePlausible(random, bytes);
        }
        match.fillWithNoise(random);
        (void)match.unpack(bytes, randomCutOff(random));
        std::copy(match.after().begin(), match.after().end(), match.record());
        useRecord(random, match);
        ASSERT_FALSE(HasFailure());
    }
}

TEST_P(Hostile, NoiseAsARecord) {
    Match match(type());
    for (size_t round = 0; round < scaled(3000); ++round) {
        SCOPED_TRACE(round);
        match.fillWithNoise(random);
        if (isMessage(type())) {
            match.record()[COMMAND_BYTE] = static_cast<char>(158 + random.below(40));
        }
        useRecord(random, match);
        ASSERT_FALSE(HasFailure());
    }
}

} // namespace
