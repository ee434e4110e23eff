// Not a byte outside the field. A sanitizer does not see an array run into the next field of its own record,
// so here every byte of the record is told in advance: at a bound, one above it, and at each way in which a
// text can be malformed. Record and bytes end beside a page that cannot be touched.
#include "tests/memory/Guarded.h"
#include "tests/memory/Oracle.h"
#include "tests/support/EveryType.h"
#include "tests/support/Memory.h"

#include <algorithm>
#include <cstring>

namespace tests {

using cs_relay_msg::schema::Field;
using cs_relay_msg::schema::Kind;
using cs_relay_msg::schema::Type;
using Korvan::BixReadBuf;
using Korvan::BixWriteBuf;

KORVAN_EVERY_TYPE(OnlyItsOwnField);

namespace {

constexpr size_t PREFIX = 4; // of a string: its length
constexpr size_t SPARE = 16; // bytes behind a field at its bound, for what must not be read as part of it

/// One record and one wire form, each beside a page that cannot be touched, before and behind.
class Bench {
public:
    Bench(const Type& type, uint32_t version, const std::vector<char>& before)
        : type_(type), version_(version), before_(before), records_(type.size) {}

    /// Unpacks @p wire into a record that holds noise; expects the result and every byte of the record.
    void unpack(const std::vector<char>& wire, Outcome outcome, const std::vector<char>& expected) {
        Guarded buffers(wire.size());
        for (const Place place : flushPlaces()) {
            char* const record = records_.place(type_.size, place);
            std::memcpy(record, before_.data(), type_.size);
            char* const memory = buffers.place(wire.size(), place);
            std::memcpy(memory, wire.data(), wire.size());
            BixReadBuf in(memory, wire.size());
            ASSERT_EQ(type_.unpack(record, in, version_), outcome.code);
            ASSERT_EQ(in.getUsedSize(), outcome.used);
            ASSERT_TRUE(sameBytes(record, expected.data(), type_.size));
            ASSERT_TRUE(records_.aroundIsIntact());
        }
    }

    /// Packs and renders a record whose count at @p site is too large: all in front of the array is there.
    void refuse(const std::vector<char>& record, const Site& site, const std::vector<char>& wire) {
        for (const Place place : flushPlaces()) {
            char* const at = records_.place(type_.size, place);
            std::memcpy(at, record.data(), type_.size);
            std::vector<char> out(wire.size() + SPARE, '\xA5');
            BixWriteBuf packed(out.data(), out.size());
            ASSERT_EQ(type_.pack(at, packed, version_), Korvan::BIX_ERR_COUNT_OUT_OF_RANGE);
            ASSERT_GE(packed.getUsedSize(), site.wire + site.wireSize);
            ASSERT_TRUE(
                allBytes(out.data() + packed.getUsedSize(), out.size() - packed.getUsedSize(), '\xA5'));
            std::vector<char> text(64 * wire.size() + 4096);
            BixWriteBuf rendered(text.data(), text.size());
            ASSERT_EQ(type_.visualize(at, rendered, 0, '\n'), Korvan::BIX_ERR_COUNT_OUT_OF_RANGE);
            ASSERT_TRUE(sameBytes(at, record.data(), type_.size));
        }
    }

private:
    const Type& type_;
    uint32_t version_;
    const std::vector<char>& before_;
    Guarded records_;
};

/// The record as it is once everything in front of @p site is read, and what lies between @p site and @p end.
std::vector<char> recordBefore(const Instance& instance, const std::vector<char>& before, size_t end) {
    GrowingRecord record(instance, before);
    record.growTo(end);
    return record.record();
}

/// Where the array that @p count counts begins on the wire: behind the integers that follow the count.
size_t arrayStart(const Instance& instance, const Site& count) {
    for (const Site& site : instance.sites) {
        if (site.memory > count.memory &&
            site.memory >= count.memory + count.counted->offset - count.field->offset) {
            return site.wire;
        }
    }
    return instance.wire.size();
}

std::vector<char> withNumber(std::vector<char> wire, size_t at, uint64_t number, size_t width) {
    storeBigEndian(wire.data() + at, number, width);
    return wire;
}

} // namespace

// The array is full, and the bytes end with it: what lies behind it in the record stays.
TEST_P(OnlyItsOwnField, AtTheBound) {
    const std::vector<char> before = noise(random, type().size);
    for (const int command : commandsFor(type())) {
        const uint32_t version = type().currentVersion;
        const Instance instance(type(), version, LARGEST.of(command), random);
        Bench bench(type(), version, before);
        GrowingRecord expected(instance, before);
        size_t arrays = 0;
        for (const Site& site : instance.sites) {
            const bool isArray = site.field->kind == Kind::Bytes || site.field->kind == Kind::String;
            if (!isArray || arrays++ % 50 != 0) { // of the many alike in the largest records, some
                continue;
            }
            const size_t end = site.wire + site.wireSize;
            const Outcome outcome = expected.growTo(end);
            const std::vector<char> wire(instance.wire.begin(),
                                         instance.wire.begin() + static_cast<std::ptrdiff_t>(end));
            ASSERT_NO_FATAL_FAILURE(bench.unpack(wire, outcome, expected.record())) << site.field->name;
        }
    }
}

// The count is stored, as far as it fits its field; nothing of the array is touched, by no operation.
TEST_P(OnlyItsOwnField, CountAboveTheBound) {
    const std::vector<char> before = noise(random, type().size);
    for (const int command : commandsFor(type())) {
        const uint32_t version = type().currentVersion;
        const Instance instance(type(), version, TINY.of(command), random);
        Bench bench(type(), version, before);
        for (const Site& site : instance.sites) {
            if (site.counted == nullptr) {
                continue;
            }
            const size_t start = arrayStart(instance, site);
            for (const uint64_t count : {uint64_t{site.counted->bound} + 1, largestValue(*site.field)}) {
                std::vector<char> wire = withNumber(instance.wire, site.wire, count, site.wireSize);
                wire.resize(start + site.counted->size() + SPARE, 'x');
                std::vector<char> expected = recordBefore(instance, before, start);
                storeScalar(*site.field, expected.data() + site.memory, count);
                ASSERT_NO_FATAL_FAILURE(
                    bench.unpack(wire, {Korvan::BIX_ERR_COUNT_OUT_OF_RANGE, start}, expected))
                    << site.field->name << " " << count;
                std::vector<char> record = instance.record;
                storeScalar(*site.field, record.data() + site.memory, count);
                ASSERT_NO_FATAL_FAILURE(bench.refuse(record, site, instance.wire)) << site.field->name;
            }
        }
    }
}

// A text of the whole capacity fits; a longer one, and one of no length, leaves the field alone; a malformed
// one is in the field, and in no other.
TEST_P(OnlyItsOwnField, Text) {
    const std::vector<char> before = noise(random, type().size);
    for (const int command : commandsFor(type())) {
        const uint32_t version = type().currentVersion;
        const Instance instance(type(), version, TINY.of(command), random);
        Bench bench(type(), version, before);
        for (const Site& site : instance.sites) {
            if (site.field->kind != Kind::String) {
                continue;
            }
            SCOPED_TRACE(site.field->name);
            const size_t capacity = site.field->bound;
            const size_t start = site.wire + PREFIX;
            const std::vector<char> untouched = recordBefore(instance, before, site.wire);
            const auto wireOf = [&](size_t told, std::string text) {
                std::vector<char> wire(instance.wire.begin(),
                                       instance.wire.begin() + static_cast<std::ptrdiff_t>(start));
                wire.insert(wire.end(), text.begin(), text.end());
                return withNumber(std::move(wire), site.wire, told, PREFIX);
            };
            const auto expect = [&](size_t told, std::string text, int32_t code, bool stored) {
                std::vector<char> expected = untouched;
                if (stored) {
                    std::copy_n(text.begin(), told,
                                expected.begin() + static_cast<std::ptrdiff_t>(site.memory));
                }
                bench.unpack(wireOf(told, std::move(text)), {code, start + (stored ? told : 0)}, expected);
            };
            const std::string full(capacity - 1, 'y');
            const std::string nul(1, '\0');
            ASSERT_NO_FATAL_FAILURE(
                expect(capacity + 1, full + 'y' + nul, Korvan::BIX_ERR_STRING_TOO_LONG, false));
            ASSERT_NO_FATAL_FAILURE(expect(UINT32_MAX, full + nul, Korvan::BIX_ERR_READ_UNDERFLOW, false));
            ASSERT_NO_FATAL_FAILURE(expect(0, full + nul, Korvan::BIX_ERR_STRING_EMPTY, false));
            ASSERT_NO_FATAL_FAILURE(expect(capacity, full + 'y', Korvan::BIX_ERR_STRING_MALFORMED, true));
            ASSERT_NO_FATAL_FAILURE(
                expect(capacity, nul + full.substr(1) + nul, Korvan::BIX_ERR_STRING_MALFORMED, true));
            ASSERT_NO_FATAL_FAILURE(expect(1, "y", Korvan::BIX_ERR_STRING_MALFORMED, true));
        }
    }
}

// A text that fills its array has no NUL: what is rendered ends with the array, beside the page as well as
// beside the next field; and pack puts its NUL into the last byte of the array alone.
TEST_P(OnlyItsOwnField, TextWithoutEnd) {
    for (const int command : commandsFor(type())) {
        Instance instance(type(), type().currentVersion, TINY.of(command), random);
        std::vector<char> record = instance.record;
        std::vector<char> packed = instance.record;
        bool any = false;
        for (const Site& site : instance.sites) {
            if (site.field->kind == Kind::String) {
                const auto at = static_cast<std::ptrdiff_t>(site.memory);
                std::fill_n(record.begin() + at, site.field->bound, 'z');
                std::fill_n(packed.begin() + at, site.field->bound, 'z');
                packed[site.memory + site.field->bound - 1] = '\0';
                any = true;
            }
        }
        if (!any) {
            continue;
        }
        Guarded records(type().size);
        for (const Place place : flushPlaces()) {
            char* const at = records.place(type().size, place);
            std::memcpy(at, record.data(), type().size);
            std::vector<char> memory(4 * type().size + 4096);
            BixWriteBuf text(memory.data(), memory.size());
            ASSERT_EQ(type().visualize(at, text, 0, '\n'), 0);
            ASSERT_TRUE(sameBytes(at, record.data(), type().size));
            const std::string rendered(memory.data(), text.getUsedSize());
            for (const Site& site : instance.sites) {
                if (site.field->kind == Kind::String) {
                    const std::string line =
                        site.field->label + (": " + std::string(site.field->bound, 'z')) + "\n";
                    ASSERT_NE(rendered.find(line), std::string::npos) << site.field->name;
                }
            }
            BixWriteBuf out(memory.data(), memory.size());
            ASSERT_EQ(type().pack(at, out, 0), 0);
            ASSERT_TRUE(sameBytes(at, packed.data(), type().size));
        }
    }
}

} // namespace tests
