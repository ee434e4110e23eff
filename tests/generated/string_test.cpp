// Strings: every length edge and malformation on the wire, every length of text in the record.

#include "tests/support/EveryType.h"
#include "tests/support/Match.h"
#include "tests/support/Memory.h"
#include "tests/support/Settings.h"
#include "tests/support/Sites.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

using cs_relay_msg::schema::Kind;
using namespace Korvan;
using namespace tests;

KORVAN_TYPES_WHERE(String, hasStrings);

constexpr size_t PREFIX = 4;

std::vector<Site> stringSites(const std::vector<Site>& sites) {
    std::vector<Site> found;
    std::copy_if(sites.begin(), sites.end(), std::back_inserter(found),
                 [](const Site& site) { return site.field->kind == Kind::String; });
    return found;
}

/// How the bytes behind the length are made.
enum class Text { WellFormed, NoNulAtTheEnd, NulInside, NulFirst, OnlyNul };
constexpr Text ALL_TEXTS[] = {Text::WellFormed, Text::NoNulAtTheEnd, Text::NulInside, Text::NulFirst,
                              Text::OnlyNul};

void makeText(std::vector<char>& bytes, size_t from, size_t length, Text text) {
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.end(),
              text == Text::OnlyNul ? '\0' : 'x');
    if (length == 0 || from + length > bytes.size()) {
        return;
    }
    if (text != Text::NoNulAtTheEnd) {
        bytes[from + length - 1] = '\0';
    }
    if (text == Text::NulInside) {
        bytes[from + length / 2] = '\0';
    }
    if (text == Text::NulFirst) {
        bytes[from] = '\0';
    }
}

/// What the checks give, in their order, for a string of the length @p claimed with @p left bytes behind it.
int32_t expectedCode(const char* text, uint64_t claimed, size_t left, size_t capacity) {
    if (claimed > left) {
        return BIX_ERR_READ_UNDERFLOW;
    }
    if (claimed > capacity) {
        return BIX_ERR_STRING_TOO_LONG;
    }
    if (claimed == 0) {
        return BIX_ERR_STRING_EMPTY;
    }
    const void* const nul = std::memchr(text, '\0', static_cast<size_t>(claimed));
    return nul == text + claimed - 1 ? BIX_OK : BIX_ERR_STRING_MALFORMED;
}

TEST_P(String, ReceivedLengthsAndMalformationsInTheOrderOfTheChecks) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        match.fill(random, MODERATE.of(command));
        const std::vector<char> image = match.image(0);
        const std::vector<Site> sites = stringSites(sitesOf(type(), match.record(), 0));
        match.fillWithNoise(random);
        for (const Site& site : sites) {
            const uint64_t capacity = site.field->bound;
            const size_t head = site.wire + PREFIX;
            for (const uint64_t claimed :
                 {uint64_t{0}, uint64_t{1}, uint64_t{2}, uint64_t{3}, capacity - 1, capacity, capacity + 1,
                  uint64_t{200}, uint64_t{0x7FFFFFFF}, uint64_t{0x80000000}, uint64_t{0xFFFFFFFF}}) {
                for (const uint64_t left : {uint64_t{0}, uint64_t{1}, uint64_t{10}, claimed - 1, claimed,
                                            claimed + 1, capacity + 100}) {
                    if (left > 2 * capacity + 300) {
                        continue;
                    }
                    for (const Text text : ALL_TEXTS) {
                        SCOPED_TRACE(::testing::Message()
                                     << site.field->name << ", length " << claimed << ", left " << left
                                     << ", text " << static_cast<int>(text));
                        std::vector<char> bytes(image.data(), image.data() + site.wire);
                        bytes.resize(head + static_cast<size_t>(left));
                        storeBigEndian(bytes.data() + site.wire, claimed, PREFIX);
                        makeText(bytes, head, static_cast<size_t>(std::min(claimed, left)), text);
                        const int32_t expected = expectedCode(bytes.data() + head, claimed,
                                                              static_cast<size_t>(left), site.field->bound);
                        const Match::Result result = match.unpack(bytes, 0);
                        const char* const field = match.after().data() + site.memory;
                        if (expected == BIX_OK || expected == BIX_ERR_STRING_MALFORMED) {
                            const size_t length = static_cast<size_t>(claimed);
                            EXPECT_TRUE(sameBytes(field, bytes.data() + head, length));
                            EXPECT_TRUE(sameBytes(field + length, match.record() + site.memory + length,
                                                  site.field->bound - length))
                                << "behind the text";
                        } else {
                            EXPECT_TRUE(sameBytes(field, match.record() + site.memory, site.field->bound));
                        }
                        if (expected != BIX_OK) { // else it goes on with the next field
                            EXPECT_EQ(result.code, expected);
                            EXPECT_EQ(result.used, expected == BIX_ERR_STRING_MALFORMED
                                                       ? head + static_cast<size_t>(claimed)
                                                       : head);
                        } else {
                            EXPECT_GE(result.used, head + static_cast<size_t>(claimed));
                        }
                        ASSERT_FALSE(HasFailure());
                    }
                }
            }
        }
    }
}

TEST_P(String, WellFormedTextOfEveryLengthComesThrough) {
    Match match(type());
    Match back(type());
    for (const int command : commandsFor(type())) {
        match.fill(random, MODERATE.of(command));
        back.fillWithNoise(random);
        for (const Site& site : stringSites(sitesOf(type(), match.record(), 0))) {
            char* const field = match.record() + site.memory;
            const std::vector<char> original(field, field + site.field->bound);
            std::fill_n(field, site.field->bound, 'x');
            const std::vector<size_t> lengths = lengthsUpTo(site.field->bound - 1);
            const size_t step = isMessage(type()) ? 61 : 1; // its members are tested by themselves
            for (size_t i = 0; i < lengths.size(); i += step) {
                const size_t length = lengths[i];
                SCOPED_TRACE(::testing::Message() << site.field->name << ", " << length << " characters");
                field[length] = '\0';
                const std::vector<char> image = match.image(0);
                const std::vector<Site> sites = sitesOf(type(), match.record(), 0);
                ASSERT_EQ(image.size(), wireEnd(sites));
                EXPECT_EQ(image[site.wire + PREFIX + length], '\0');
                EXPECT_EQ(back.unpack(image, 0).code, BIX_OK);
                EXPECT_TRUE(sameBytes(back.after().data() + site.memory, field, length + 1));
                field[length] = 'x';
                ASSERT_FALSE(HasFailure());
            }
            std::copy(original.begin(), original.end(), field); // it decides where the next one lies
        }
    }
}

TEST_P(String, PackChangesTheLastCharacterOfTheArrayAndNothingElse) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        for (const unsigned unterminated : {0u, 50u, 100u}) {
            match.fill(random, MODERATE.of(command).withUnterminated(unterminated));
            const std::vector<Site> sites = stringSites(sitesOf(type(), match.record(), 0));
            std::vector<char> expected(match.record(), match.record() + type().size);
            for (const Site& site : sites) {
                expected[site.memory + site.field->bound - 1] = '\0';
            }
            (void)match.image(0);
            EXPECT_TRUE(sameBytes(match.after().data(), expected.data(), expected.size()));
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(String, PackStoresTheNulOnceTheLengthHasItsRoom) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        match.fill(random, MODERATE.of(command).withUnterminated(100));
        for (const Site& site : stringSites(sitesOf(type(), match.record(), 0))) {
            SCOPED_TRACE(site.field->name);
            const size_t last = site.memory + site.field->bound - 1;
            ASSERT_NE(match.record()[last], '\0');
            EXPECT_EQ(match.pack(site.wire + PREFIX - 1, 0).code, BIX_ERR_WRITE_OVERFLOW);
            EXPECT_EQ(match.after()[last], match.record()[last]);
            const Match::Result result = match.pack(site.wire + PREFIX, 0);
            EXPECT_EQ(result.code, BIX_ERR_WRITE_OVERFLOW);
            EXPECT_EQ(result.used, site.wire + PREFIX);
            EXPECT_EQ(match.after()[last], '\0');
            EXPECT_TRUE(allBytes(match.memory().data() + site.wire, PREFIX, CANARY))
                << "the length, only reserved";
            ASSERT_FALSE(HasFailure());
        }
    }
}

} // namespace
