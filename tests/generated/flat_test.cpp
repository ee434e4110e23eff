// The operations over plain memory do what those over a buffer do, and report how far they got.

#include "tests/support/EveryType.h"
#include "tests/support/Match.h"
#include "tests/support/Memory.h"
#include "tests/support/RecordTypes.h"
#include "tests/support/Settings.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>
#include <string>

namespace {

using cs_relay_msg::schema::Type;
using namespace Korvan;
using namespace tests;

constexpr size_t UNSET = 0x7777;

template <class T>
class Flat : public SeededTest {
protected:
    Flat() : match(*schemaOf<T>()), record(new T) {}

    /// Copies the match's record into the typed one.
    void load() { std::memcpy(static_cast<void*>(record.get()), match.record(), sizeof(T)); }
    const char* bytes() const { return reinterpret_cast<const char*>(record.get()); }
    /// A few commands stand for all: the wrappers never look into a record.
    std::vector<int> commands() const {
        return isMessage(match.type()) ? std::vector<int>{161, 165, 167, 166} : std::vector<int>{ANY_COMMAND};
    }

    Match match;
    std::unique_ptr<T> record;
};

TYPED_TEST_SUITE(Flat, RecordTypes, ); // the comma is for clang, which wants the variadic argument

TYPED_TEST(Flat, TypeIsThatOfItsTable) {
    EXPECT_EQ(this->match.type().size, sizeof(TypeParam));
}

TYPED_TEST(Flat, PackIsThatOverABuffer) {
    for (const int command : this->commands()) {
        for (const uint32_t cutVer : {0u, 1u, 2u, 3u, 4u}) {
            this->match.fill(this->random, TINY.of(command).withUnterminated(20));
            const size_t full = this->match.image(cutVer).size();
            for (const size_t size : lengthsUpTo(full + 1)) {
                SCOPED_TRACE(::testing::Message() << "cut-off " << cutVer << ", size " << size);
                const Match::Result expected = this->match.pack(size, cutVer);
                this->load();
                std::vector<char> memory(this->match.memory().size(), CANARY);
                size_t used = UNSET;
                EXPECT_EQ(this->record->pack(memory.data(), size, &used, cutVer), expected.code);
                EXPECT_EQ(used, expected.used);
                EXPECT_EQ(memory, this->match.memory());
                EXPECT_EQ(this->record->pack(memory.data(), size, nullptr, cutVer), expected.code);
                EXPECT_EQ(memory, this->match.memory());
                EXPECT_TRUE(sameBytes(this->bytes(), this->match.after().data(), sizeof(TypeParam)));
                ASSERT_FALSE(this->HasFailure());
            }
        }
    }
}

TYPED_TEST(Flat, UnpackIsThatOverABuffer) {
    for (const int command : this->commands()) {
        for (const uint32_t cutVer : {0u, 1u, 2u, 3u, 4u}) {
            this->match.fill(this->random, TINY.of(command));
            const std::vector<char> image = this->match.image(cutVer);
            this->match.fillWithNoise(this->random);
            for (const size_t size : lengthsUpTo(image.size())) {
                SCOPED_TRACE(::testing::Message() << "cut-off " << cutVer << ", size " << size);
                const Match::Result expected =
                    this->match.unpack({image.data(), image.data() + size}, cutVer);
                this->load();
                size_t used = UNSET;
                EXPECT_EQ(this->record->unpack(image.data(), size, &used, cutVer), expected.code);
                EXPECT_EQ(used, expected.used);
                EXPECT_TRUE(sameBytes(this->bytes(), this->match.after().data(), sizeof(TypeParam)));
                EXPECT_EQ(this->record->unpack(image.data(), size, nullptr, cutVer), expected.code);
                ASSERT_FALSE(this->HasFailure());
            }
        }
    }
}

TYPED_TEST(Flat, VisualizeIsThatOverABuffer) {
    for (const int command : this->commands()) {
        this->match.fill(this->random, TINY.of(command));
        this->load();
        const size_t full = this->match.text(1, ';').size();
        for (const size_t size : lengthsUpTo(full + 2)) {
            SCOPED_TRACE(size);
            const Match::Result expected = this->match.visualize(size, 1, ';');
            std::vector<char> memory(this->match.memory().size(), CANARY);
            size_t used = UNSET;
            EXPECT_EQ(this->record->visualize(memory.data(), size, &used, 1, ';'), expected.code);
            EXPECT_EQ(used, expected.used);
            EXPECT_EQ(memory, this->match.memory());
            EXPECT_EQ(this->record->visualize(memory.data(), size, nullptr, 1, ';'), expected.code);
            ASSERT_FALSE(this->HasFailure());
        }
        EXPECT_TRUE(sameBytes(this->bytes(), this->match.record(), sizeof(TypeParam)));
    }
}

TYPED_TEST(Flat, VisualizeExTerminatesTheTextAtEverySize) {
    for (const int command : this->commands()) {
        this->match.fill(this->random, TINY.of(command));
        this->load();
        const size_t full = this->match.text(0, '\n').size();
        for (const size_t size : lengthsUpTo(full + 2)) {
            SCOPED_TRACE(size);
            const Match::Result rendered = this->match.visualize(size, 0, '\n');
            std::vector<char> expected = this->match.memory();
            std::vector<char> memory(expected.size(), CANARY);
            size_t used = UNSET;
            const char* const text = this->record->visualize_ex(memory.data(), size, &used, 0, '\n');
            if (size == 0) {
                EXPECT_STREQ(text, "");
                EXPECT_NE(text, memory.data());
                EXPECT_EQ(used, UNSET);
            } else {
                expected[std::min(rendered.used, size - 1)] = '\0';
                EXPECT_EQ(static_cast<const void*>(text), memory.data());
                EXPECT_EQ(used, rendered.used);
                EXPECT_EQ(std::string(text).size(), std::min(rendered.used, size - 1));
            }
            EXPECT_EQ(memory, expected);
            (void)this->record->visualize_ex(memory.data(), size, nullptr, 0, '\n');
            EXPECT_EQ(memory, expected);
            ASSERT_FALSE(this->HasFailure());
        }
        EXPECT_TRUE(sameBytes(this->bytes(), this->match.record(), sizeof(TypeParam)));
    }
}

TYPED_TEST(Flat, VisualizeExOverABufferReturnsWhatStoodThereBefore) {
    const std::string before = "before ";
    for (const int command : this->commands()) {
        this->match.fill(this->random, TINY.of(command));
        this->load();
        const size_t full = this->match.text(0, '\n').size();
        for (const size_t room : lengthsUpTo(full + 2)) {
            SCOPED_TRACE(room);
            const size_t size = before.size() + room;
            const Match::Result rendered = this->match.visualize(size, 0, '\n', before.size());
            std::vector<char> expected = this->match.memory();
            std::copy(before.begin(), before.end(), expected.begin());
            expected[std::min(rendered.used, size - 1)] = '\0';
            std::vector<char> memory(expected.size(), CANARY);
            BixWriteBuf out(memory.data(), size);
            ASSERT_EQ(out.writeBytes(before.data(), before.size()), BIX_OK);
            EXPECT_EQ(static_cast<const void*>(this->record->visualize_ex(out, 0, '\n')), memory.data());
            EXPECT_EQ(out.getUsedSize(), rendered.used);
            EXPECT_EQ(memory, expected);
            ASSERT_FALSE(this->HasFailure());
        }
    }
    BixWriteBuf none(nullptr, 100);
    EXPECT_STREQ(this->record->visualize_ex(none, 0, '\n'), "");
    char one = CANARY;
    BixWriteBuf empty(&one, 0);
    EXPECT_STREQ(this->record->visualize_ex(empty, 0, '\n'), "");
    EXPECT_EQ(one, CANARY);
}

TYPED_TEST(Flat, NullBufferIsRefusedAndNothingIsTouched) {
    this->match.fillWithNoise(this->random);
    this->load();
    TypeParam& target = *this->record;
    size_t used = UNSET;
    EXPECT_EQ(target.pack(static_cast<char*>(nullptr), 100, &used), BIX_ERR_NULL_ARGUMENT);
    EXPECT_EQ(target.unpack(static_cast<const char*>(nullptr), 100, &used), BIX_ERR_NULL_ARGUMENT);
    EXPECT_EQ(target.visualize(static_cast<char*>(nullptr), 100, &used), BIX_ERR_NULL_ARGUMENT);
    EXPECT_EQ(target.pack(static_cast<char*>(nullptr), 0, nullptr), BIX_ERR_NULL_ARGUMENT);
    EXPECT_EQ(target.unpack(static_cast<const char*>(nullptr), 0, nullptr), BIX_ERR_NULL_ARGUMENT);
    EXPECT_EQ(target.visualize(static_cast<char*>(nullptr), 0, nullptr), BIX_ERR_NULL_ARGUMENT);
    EXPECT_STREQ(target.visualize_ex(static_cast<char*>(nullptr), 100, &used), "");
    EXPECT_EQ(used, UNSET);
    EXPECT_TRUE(sameBytes(this->bytes(), this->match.record(), sizeof(TypeParam)));
}

TEST(RecordTypesOfTheTests, AreThoseOfTheTables) {
    std::set<std::string> names;
    for (const Type* type : cs_relay_msg::schema::types()) {
        names.insert(type->name);
    }
    EXPECT_EQ(names.size(), cs_relay_msg::schema::types().size);
    EXPECT_EQ(names.size(), 26u);
}

} // namespace
