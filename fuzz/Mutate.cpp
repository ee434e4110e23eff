// How the inputs of the targets that work on records change: most often the wire form is decoded, one field
// is given another value that is likely to matter, and the whole is encoded again. What comes of it is valid
// but for that field, so it gets past the checks before it, which changed bytes alone seldom do.
//
// Decoding and encoding are the plain codec's: a fault of the library does not keep its inputs from it.
#include "fuzz/Case.h"
#include "fuzz/Memory.h"
#include "protocol/cs_relay_msg.h"
#include "tests/plain/PlainCodec.h"
#include "tests/support/Memory.h"
#include "tests/support/Random.h"
#include "tests/support/RandomRecord.h"
#include "tests/support/Sites.h"

#include <algorithm>
#include <array>
#include <vector>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t most);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed);

namespace {

using cs_relay_msg::schema::Field;
using cs_relay_msg::schema::Kind;
using cs_relay_msg::schema::Type;
using fuzz::Case;
using tests::Random;
using tests::Site;
namespace plain = cs_relay_msg::plain;

constexpr size_t PREFIX = 4; // of a string: its length

/// A record of the type in which every element of every array is valid, counted or not: a count that grows
/// uncovers something that can be encoded.
const char* wellFilled(const Type& type) {
    static std::vector<const Type*> done;
    char* const record = fuzz::recordOf(type, 2);
    if (std::find(done.begin(), done.end(), &type) == done.end()) {
        Random random(done.size());
        tests::fillRecord(type, record, random, tests::ALL_ELEMENTS);
        done.push_back(&type);
    }
    return record;
}

uint64_t likelyValue(Random& random, uint64_t near) {
    switch (random.below(5)) {
    case 0:
        return 0;
    case 1:
        return near + random.below(3) - 1; // one less, itself, one more
    case 2:
        return UINT64_MAX;
    case 3:
        return near != 0 ? random.below(near) : 1;
    default:
        return random.next();
    }
}

/// Another text: empty, of one character, as long as it can be, without a NUL, or any length.
void changeText(const Field& field, char* text, Random& random) {
    const std::array<uint64_t, 5> lengths{0, 1, field.bound - 1, field.bound, random.below(field.bound)};
    const auto length = static_cast<size_t>(random.pick(lengths));
    std::replace(text, text + length, '\0', 'x');
    if (length < field.bound) {
        text[length] = '\0';
    }
}

void changeField(const Type& type, char* record, uint32_t cutVer, Random& random) {
    const std::vector<Site> sites = tests::sitesOf(type, record, cutVer);
    if (sites.empty()) {
        return;
    }
    const Site& site = random.pick(sites);
    char* const at = record + site.memory;
    if (site.field->kind == Kind::Scalar) {
        const uint64_t had = tests::loadScalar(*site.field, at);
        const uint64_t near = site.counted != nullptr && random.chance(60) ? site.counted->bound : had;
        tests::storeScalar(*site.field, at, likelyValue(random, near));
    } else if (site.field->kind == Kind::String) {
        changeText(*site.field, at, random);
    } else if (site.memorySize != 0) {
        at[random.below(site.memorySize)] = random.byte();
    }
}

/// What a record cannot say: a wrong length of a text, an end too early, bytes too many.
size_t spoil(const Type& type, const char* record, uint32_t cutVer, char* wire, size_t size, size_t most,
             Random& random) {
    if (random.chance(40)) {
        for (const Site& site : tests::sitesOf(type, record, cutVer)) {
            if (site.field->kind == Kind::String && site.wire + PREFIX <= size && random.chance(50)) {
                const uint64_t near = random.chance(50) ? site.field->bound : site.memorySize;
                tests::storeBigEndian(wire + site.wire, likelyValue(random, near), PREFIX);
                return size;
            }
        }
    }
    if (random.chance(50)) {
        return size - std::min<size_t>(size, random.below(6));
    }
    const size_t tail = std::min<size_t>(most - size, random.below(40));
    tests::fillNoise(random, wire + size, tail);
    return size + tail;
}

size_t reencode(uint8_t* data, size_t size, size_t most, Random& random) {
    const Case input(data, size);
    static std::vector<char> record(sizeof(cs_relay_msg::CSRelayMsg)); // no record is larger
    std::memcpy(record.data(), wellFilled(input.type), fuzz::extentOf(input));
    Korvan::BixReadBuf in(input.wire, input.size);
    if (plain::unpack(input.type, record.data(), in, input.cutVer) != 0) {
        static constexpr std::array<tests::Shape, 4> SHAPES{tests::SMALLEST, tests::TINY, tests::TINY,
                                                            tests::MODERATE};
        tests::fillRecord(input.type, record.data(), random, random.pick(SHAPES));
    }
    for (uint64_t changes = 1 + random.below(3); changes > 0; --changes) {
        // Only a valid record has sites: after the first change there may be none.
        static std::vector<char> scratch(cs_relay_msg::CSRelayMsg::maxWireSize);
        Korvan::BixWriteBuf whole(scratch.data(), scratch.size());
        if (plain::pack(input.type, record.data(), whole, input.cutVer) != 0) {
            break;
        }
        changeField(input.type, record.data(), input.cutVer, random);
    }
    char* const wire = reinterpret_cast<char*>(data) + Case::HEADER;
    Korvan::BixWriteBuf out(wire, most - Case::HEADER);
    const int32_t code = plain::pack(input.type, record.data(), out, input.cutVer);
    const size_t used = out.getUsedSize();
    if (random.chance(25)) {
        return Case::HEADER + (code == 0 ? spoil(input.type, record.data(), input.cutVer, wire, used,
                                                 most - Case::HEADER, random)
                                         : used);
    }
    return Case::HEADER + used;
}

} // namespace

size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
    Random random(seed);
    if (size < Case::HEADER || most <= Case::HEADER || random.chance(35)) {
        return LLVMFuzzerMutate(data, size, most);
    }
    if (random.chance(15)) {
        data[random.below(Case::HEADER)] = static_cast<uint8_t>(random.byte());
    }
    return reencode(data, size, most, random);
}
