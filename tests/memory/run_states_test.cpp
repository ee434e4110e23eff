// The engine's fused runs in every small state: every record type at each of its versions, and every length
// of bytes and text up to one that each way of copying covers, from every position, into every room. Bytes
// and record end beside a page that cannot be touched.
#include "tests/memory/Guarded.h"
#include "tests/memory/Oracle.h"
#include "tests/support/EveryType.h"
#include "tests/support/Memory.h"
#include "tests/support/Settings.h"

#include <algorithm>
#include <cstring>

namespace tests {

using cs_relay_msg::schema::Field;
using cs_relay_msg::schema::Kind;
using cs_relay_msg::schema::Type;
using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;

KORVAN_EVERY_TYPE(RunStates);

namespace {

constexpr char FILLER = '\xA5';
constexpr size_t POSITIONS = 9;     // more than the widest integer
constexpr size_t LONGEST_COPY = 70; // more than two of the longest move of a fixed size
constexpr size_t SMALL_RECORD = 16 * 1024;

/// All states of one record: each position of the cursor, each room behind it.
class States {
public:
    States(const Instance& instance, const std::vector<char>& before)
        : instance_(instance), before_(before), buffers_(POSITIONS + instance.wire.size() + 2),
          records_(instance.type.size) {}

    void pack(size_t position) {
        const size_t whole = instance_.wire.size();
        char* const record = records_.place(instance_.type.size, {Place::Behind, 0});
        std::memcpy(record, instance_.record.data(), instance_.type.size);
        std::vector<char> expected(whole + 2);
        for (const size_t room : lengthsUpTo(whole + 2)) {
            const Outcome outcome = packedInto(instance_, room, FILLER, expected);
            char* const memory = buffers_.place(position + room, {Place::Behind, 0});
            std::memset(memory, FILLER, position + room);
            BixWriteBuf out(memory, position + room);
            out.position = position;
            ASSERT_EQ(instance_.type.pack(record, out, instance_.version), outcome.code) << room;
            ASSERT_EQ(out.position, position + outcome.used) << room;
            ASSERT_TRUE(allBytes(memory, position, FILLER)) << room;
            ASSERT_TRUE(sameBytes(memory + position, expected.data(), room)) << room;
        }
        ASSERT_TRUE(sameBytes(record, instance_.record.data(), instance_.type.size));
    }

    void unpack(size_t position) {
        char* const record = records_.place(instance_.type.size, {Place::Behind, 0});
        std::memcpy(record, before_.data(), instance_.type.size);
        GrowingRecord expected(instance_, before_);
        for (const size_t size : lengthsUpTo(instance_.wire.size())) {
            const Outcome outcome = expected.growTo(size);
            char* const memory = buffers_.place(position + size, {Place::Behind, 0});
            std::memset(memory, FILLER, position);
            std::memcpy(memory + position, instance_.wire.data(), size);
            BixReadBuf in(memory, position + size);
            in.position = position;
            ASSERT_EQ(instance_.type.unpack(record, in, instance_.version), outcome.code) << size;
            ASSERT_EQ(in.position, position + outcome.used) << size;
            ASSERT_TRUE(sameBytes(record, expected.record().data(), expected.extent())) << size;
            std::memcpy(record, before_.data(), expected.extent());
        }
        ASSERT_TRUE(sameBytes(record, before_.data(), instance_.type.size));
    }

    void visualize(size_t position) {
        const Text text(instance_);
        Guarded buffers(position + text.whole().size() + 2);
        for (const size_t room : lengthsUpTo(text.whole().size() + 2)) {
            const Outcome outcome = text.into(room);
            char* const memory = buffers.place(position + room, {Place::Behind, 0});
            std::memset(memory, FILLER, position + room);
            BixWriteBuf out(memory, position + room);
            out.position = position;
            ASSERT_EQ(instance_.type.visualize(instance_.record.data(), out, 0, '\0'), outcome.code) << room;
            ASSERT_EQ(out.position, position + outcome.used) << room;
            ASSERT_TRUE(allBytes(memory, position, FILLER)) << room;
            const size_t end = outcome.code == 0 ? outcome.used : room - std::min<size_t>(room, 1);
            ASSERT_TRUE(sameBytes(memory + position, text.whole().data(), end)) << room;
            ASSERT_TRUE(room == 0 || memory[position + end] == '\0') << room;
        }
    }

private:
    const Instance& instance_;
    const std::vector<char>& before_;
    Guarded buffers_;
    Guarded records_;
};

/// Gives the first array or string of the record that length; false if there is none.
bool setLength(const Type& type, std::vector<char>& record, size_t length) {
    for (const Field& field : type) {
        if (field.kind == Kind::Bytes && length <= field.bound) {
            const Field& count = type.fields[field.countField];
            storeScalar(count, record.data() + count.offset, length);
            return true;
        }
        if (field.kind == Kind::String && length < field.bound) {
            char* const text = record.data() + field.offset;
            std::replace(text, text + length, '\0', 's');
            text[length] = '\0';
            return true;
        }
    }
    return false;
}

} // namespace

TEST_P(RunStates, EveryPositionAndRoom) {
    const std::vector<char> before = noise(random, type().size);
    for (const int command : commandsFor(type())) {
        for (uint32_t version = 1; version <= type().currentVersion; ++version) {
            for (const Shape& shape : {SMALLEST, TINY}) {
                const Instance instance(type(), version, shape.of(command), random);
                States states(instance, before);
                const size_t positions = type().size <= SMALL_RECORD ? POSITIONS : 2;
                for (size_t position = 0; position < positions; ++position) {
                    ASSERT_NO_FATAL_FAILURE(states.pack(position)) << position;
                    ASSERT_NO_FATAL_FAILURE(states.unpack(position)) << position;
                }
                ASSERT_NO_FATAL_FAILURE(states.visualize(version));
            }
        }
    }
}

TEST_P(RunStates, EveryLengthOfBytesAndText) {
    const std::vector<char> before = noise(random, type().size);
    if (type().size > SMALL_RECORD) {
        return; // their bytes and texts are those of the records in them
    }
    for (const size_t length : lengthsUpTo(LONGEST_COPY)) {
        std::vector<char> record = Instance(type(), type().currentVersion, SMALLEST, random).record;
        if (!setLength(type(), record, length)) {
            break;
        }
        const Instance instance(type(), type().currentVersion, record);
        States states(instance, before);
        for (const size_t position : {size_t{0}, size_t{1}}) {
            ASSERT_NO_FATAL_FAILURE(states.pack(position)) << length;
            ASSERT_NO_FATAL_FAILURE(states.unpack(position)) << length;
        }
        ASSERT_NO_FATAL_FAILURE(states.visualize(0)) << length;
    }
}

// Numbers of every length of digits: each power of ten, and one less, into every room.
TEST_P(RunStates, EveryLengthOfNumber) {
    const std::vector<char> before = noise(random, type().size);
    if (type().size > SMALL_RECORD) {
        return;
    }
    const std::vector<char> smallest = Instance(type(), type().currentVersion, SMALLEST, random).record;
    for (uint64_t power = 1;; power *= 10) {
        for (const uint64_t value : {power - 1, power, 0 - power}) {
            std::vector<char> record = smallest;
            for (const Site& site : sitesOf(type(), smallest.data(), 0)) {
                if (site.field->kind == Kind::Scalar && site.counted == nullptr) {
                    storeScalar(*site.field, record.data() + site.memory, value);
                }
            }
            const Instance instance(type(), type().currentVersion, record);
            ASSERT_NO_FATAL_FAILURE(States(instance, before).visualize(0)) << value;
        }
        if (power > UINT64_MAX / 10) {
            break;
        }
    }
}

} // namespace tests
