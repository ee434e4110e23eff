// Every operation of every record type beside pages that cannot be touched, before and behind, record and
// buffer alike, through every capacity and every truncation. And not a byte of the record is touched that
// does not belong to the fields that were reached.
#include "tests/memory/Guarded.h"
#include "tests/memory/Oracle.h"
#include "tests/plain/PlainCodec.h"
#include "tests/support/EveryType.h"
#include "tests/support/Memory.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace tests {

using cs_relay_msg::schema::Type;
using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;

KORVAN_EVERY_TYPE(BesideUnreadablePages);

namespace {

constexpr char FILLER = '\xA5';
constexpr size_t LARGE_RECORD = 64 * 1024;

using Work = std::function<void(const Instance&, const std::vector<Place>&)>;

/// Calls @p work with instances of all sizes; only flush places for the largest ones.
void forInstances(const Type& type, Random& random, const Work& work) {
    for (const int command : commandsFor(type)) {
        for (uint32_t version = 1; version <= type.currentVersion; ++version) {
            work(Instance(type, version, SMALLEST.of(command), random), allPlaces());
            work(Instance(type, version, TINY.of(command), random), allPlaces());
            if (type.size <= LARGE_RECORD) {
                work(Instance(type, version, MODERATE.of(command), random), allPlaces());
                work(Instance(type, version, LARGEST.of(command), random), flushPlaces());
            }
        }
    }
    if (type.size > LARGE_RECORD && !isMessage(type)) {
        work(Instance(type, type.currentVersion, LARGEST, random), {flushPlaces()[0]});
    }
}

/// Of a very long text only the end is compared each time, and the whole of it now and then.
size_t comparedFrom(size_t room) {
    constexpr size_t LONG = 16 * 1024;
    return room <= LONG || room % 61 == 0 ? 0 : room - LONG / 4;
}

} // namespace

TEST_P(BesideUnreadablePages, Pack) {
    Guarded records(type().size);
    forInstances(type(), random, [&](const Instance& instance, const std::vector<Place>& places) {
        Guarded buffers(instance.wire.size() + 1);
        std::vector<char> expected(instance.wire.size() + 1);
        for (const Place place : places) {
            char* const record = records.place(type().size, place);
            std::memcpy(record, instance.record.data(), type().size);
            for (const size_t room : instance.cuts()) {
                const Outcome outcome = packedInto(instance, room, FILLER, expected);
                char* const memory = buffers.place(room, place);
                std::memset(memory, FILLER, room);
                BixWriteBuf out(memory, room);
                ASSERT_EQ(type().pack(record, out, instance.version), outcome.code) << room;
                ASSERT_EQ(out.getUsedSize(), outcome.used) << room;
                ASSERT_TRUE(sameBytes(memory, expected.data(), room)) << room;
                ASSERT_TRUE(buffers.aroundIsIntact()) << room;
            }
            ASSERT_TRUE(sameBytes(record, instance.record.data(), type().size)) << "the record was only read";
            ASSERT_TRUE(records.aroundIsIntact());
        }
    });
}

TEST_P(BesideUnreadablePages, Unpack) {
    Guarded records(type().size);
    const std::vector<char> before = noise(random, type().size);
    forInstances(type(), random, [&](const Instance& instance, const std::vector<Place>& places) {
        Guarded buffers(instance.wire.size());
        for (const Place place : places) {
            GrowingRecord expected(instance, before);
            char* const record = records.place(type().size, place);
            std::memcpy(record, before.data(), type().size);
            for (const size_t size : instance.cuts()) {
                const Outcome outcome = expected.growTo(size);
                char* const memory = buffers.place(size, place);
                std::memcpy(memory, instance.wire.data(), size);
                BixReadBuf in(memory, size);
                ASSERT_EQ(type().unpack(record, in, instance.version), outcome.code) << size;
                ASSERT_EQ(in.getUsedSize(), outcome.used) << size;
                ASSERT_TRUE(sameBytes(record, expected.record().data(), expected.extent())) << size;
                ASSERT_TRUE(sameBytes(memory, instance.wire.data(), size)) << size;
                ASSERT_TRUE(buffers.aroundIsIntact()) << size;
                std::memcpy(record, before.data(), expected.extent());
            }
            ASSERT_TRUE(sameBytes(record, before.data(), type().size)) << "outside of what was reached";
            ASSERT_TRUE(records.aroundIsIntact());
        }
    });
}

TEST_P(BesideUnreadablePages, Visualize) {
    Guarded records(type().size);
    forInstances(type(), random, [&](const Instance& instance, const std::vector<Place>& places) {
        const Text text(instance);
        Guarded buffers(text.whole().size() + 2);
        for (const Place place : places) {
            char* const record = records.place(type().size, place);
            std::memcpy(record, instance.record.data(), type().size);
            for (const size_t room : text.rooms()) {
                const Outcome outcome = text.into(room);
                char* const memory = buffers.place(room, place);
                const size_t from = comparedFrom(room);
                std::memset(memory + from, FILLER, room - from);
                BixWriteBuf out(memory, room);
                ASSERT_EQ(type().visualize(record, out, 0, '\0'), outcome.code) << room;
                ASSERT_EQ(out.getUsedSize(), outcome.used) << room;
                ASSERT_TRUE(buffers.aroundIsIntact()) << room;
                const size_t end = outcome.code == 0 ? outcome.used : room - std::min<size_t>(room, 1);
                ASSERT_TRUE(sameBytes(memory + from, text.whole().data() + from, end - std::min(end, from)))
                    << room;
                ASSERT_TRUE(room == 0 || memory[end] == '\0') << room;
            }
            ASSERT_TRUE(sameBytes(record, instance.record.data(), type().size)) << "the record was only read";
        }
    });
}

TEST_P(BesideUnreadablePages, Construct) {
    Guarded records(type().size);
    const std::vector<char> before = noise(random, type().size);
    std::vector<char> expected = before;
    cs_relay_msg::plain::construct(type(), expected.data());
    for (const Place place : allPlaces()) {
        char* const record = records.place(type().size, place);
        std::memcpy(record, before.data(), type().size);
        ASSERT_EQ(type().construct(record), 0);
        ASSERT_TRUE(sameBytes(record, expected.data(), type().size));
        ASSERT_TRUE(records.aroundIsIntact());
    }
}

} // namespace tests
