// Text: indentation, separators, every size of the buffer, and strings without an end.

#include "tests/support/EveryType.h"
#include "tests/support/Match.h"
#include "tests/support/Memory.h"
#include "tests/support/Settings.h"
#include "tests/support/Sites.h"

#include <climits>
#include <string>

namespace {

using cs_relay_msg::schema::Kind;
using namespace Korvan;
using namespace tests;

KORVAN_EVERY_TYPE(Visualize);

constexpr int INDENTS[] = {INT_MIN, -1, 0, 1, 3};
constexpr char SEPARATORS[] = {'\n', ' ', ';', '\0', '%', '\xFF'};

TEST_P(Visualize, EveryIndentAndSeparator) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        for (const int indent : INDENTS) {
            for (const char sep : SEPARATORS) {
                SCOPED_TRACE(::testing::Message() << "command " << command << ", indent " << indent
                                                  << ", separator " << static_cast<int>(sep));
                match.fill(random, TINY.of(command).withUnterminated(10));
                const std::string text = match.text(indent, sep);
                ASSERT_FALSE(text.empty());
                EXPECT_EQ(text.back(), sep);
                EXPECT_EQ(match.memory()[text.size()], '\0');
                EXPECT_EQ(text.find_first_not_of(' '), indent > 0 ? 2 * static_cast<size_t>(indent) : 0);
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

TEST_P(Visualize, NegativeIndentsAreAllAlike) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        match.fill(random, MODERATE.of(command));
        const std::string text = match.text(-1);
        EXPECT_EQ(match.text(INT_MIN), text);
        EXPECT_EQ(match.text(-2), text);
    }
}

TEST_P(Visualize, AnIndentWiderThanTheBufferDoesNotFit) {
    Match match(type());
    for (const int indent : {INT_MAX, INT_MAX - 1, INT_MAX / 2 + 1, 1 << 30, 512}) {
        SCOPED_TRACE(indent);
        constexpr size_t CAPACITY = 1000;
        match.fill(random, TINY);
        const Match::Result result = match.visualize(CAPACITY, indent, '\n');
        EXPECT_EQ(result.code, BIX_ERR_WRITE_OVERFLOW);
        EXPECT_EQ(result.used, 0u);
        EXPECT_TRUE(allBytes(match.memory().data(), CAPACITY - 1, ' '));
        EXPECT_EQ(match.memory()[CAPACITY - 1], '\0');
    }
}

TEST_P(Visualize, EverySizeOfTheBuffer) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        const char sep = random.pick(std::vector<char>{'\n', '\0', '%'});
        const int indent = static_cast<int>(random.below(3)) - 1;
        match.fill(random, TINY.of(command).withUnterminated(type().size > 4000 ? 0 : 10));
        const std::string text = match.text(indent, sep);
        for (const size_t capacity : lengthsUpTo(text.size() + 2)) {
            SCOPED_TRACE(::testing::Message() << "command " << command << ", capacity " << capacity << " for "
                                              << text.size() << " characters");
            const Match::Result result = match.visualize(capacity, indent, sep);
            if (capacity > text.size()) {
                EXPECT_EQ(result.code, BIX_OK);
                EXPECT_EQ(result.used, text.size());
                EXPECT_TRUE(sameBytes(match.memory().data(), text.c_str(), text.size() + 1));
            } else {
                EXPECT_EQ(result.code, BIX_ERR_WRITE_OVERFLOW);
                // The line that did not fit stands there as far as it went, and a NUL behind it.
                if (capacity > 0) {
                    EXPECT_LT(result.used, capacity);
                    EXPECT_TRUE(sameBytes(match.memory().data(), text.data(), capacity - 1));
                    EXPECT_EQ(match.memory()[capacity - 1], '\0');
                }
            }
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(Visualize, StringWithoutNulEndsWithItsArray) {
    Match match(type());
    for (const int command : commandsFor(type())) {
        match.fill(random, MODERATE.of(command).withUnterminated(100));
        const std::string text = match.text(-1);
        for (const Site& site : sitesOf(type(), match.record(), 0)) {
            if (site.field->kind == Kind::String) {
                const std::string line = std::string(site.field->label) + ": " +
                                         std::string(match.record() + site.memory, site.field->bound) + "\n";
                EXPECT_NE(text.find(line), std::string::npos) << site.field->name;
            }
        }
        // What lies behind the record never shows.
        std::vector<char> longer(match.record(), match.record() + type().size);
        longer.insert(longer.end(), 64, 'Z');
        std::vector<char> memory(text.size() + 200, CANARY);
        BixWriteBuf out(memory.data(), memory.size());
        EXPECT_EQ(type().visualize(longer.data(), out, -1, '\n'), BIX_OK);
        EXPECT_EQ(std::string(memory.data(), out.getUsedSize()), text);
        ASSERT_FALSE(HasFailure());
    }
}

TEST_P(Visualize, LargestRecord) {
    Match match(type());
    match.fill(random, LARGEST.of(type().size > 100000 ? 169 : ANY_COMMAND));
    const std::string text = match.text(1);
    EXPECT_EQ(match.visualize(text.size(), 1, '\n').code, BIX_ERR_WRITE_OVERFLOW);
    EXPECT_EQ(match.visualize(text.size() + 1, 1, '\n').code, BIX_OK);
}

} // namespace
