#include "tests/memory/Oracle.h"

#include "protocol/cs_relay_msg.h"
#include "tests/plain/PlainCodec.h"
#include "tests/support/Memory.h"
#include "tests/support/Settings.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

namespace tests {

using cs_relay_msg::CSRelayMsgHead;
using cs_relay_msg::schema::Field;
using cs_relay_msg::schema::Kind;
using cs_relay_msg::schema::Type;

namespace {

constexpr size_t MODERATE_SIZE = 2048;
constexpr size_t PREFIX = 4; // of a string: its length
constexpr size_t VERSION_BYTE = offsetof(CSRelayMsgHead, bVersion);

/// Around each of the places, in ascending order.
std::vector<size_t> around(const std::vector<size_t>& places, size_t end) {
    std::vector<size_t> result;
    for (const size_t number : lengthsUpTo(places.size() - 1)) { // fewer at a lower volume
        const size_t place = places[number];
        for (const size_t near : {place - 1, place, place + 1}) {
            if (near <= end) { // 0 - 1 is above any end
                result.push_back(near);
            }
        }
    }
    std::sort(result.begin(), result.end());
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

} // namespace

Instance::Instance(const Type& ofType, uint32_t atVersion, const Shape& shape, Random& random)
    : Instance(ofType, atVersion, [&] {
          std::vector<char> filled(ofType.size);
          fillRecord(ofType, filled.data(), random, shape);
          return filled;
      }()) {}

Instance::Instance(const Type& ofType, uint32_t atVersion, std::vector<char> ofRecord)
    : type(ofType), version(atVersion), record(std::move(ofRecord)) {
    sites = sitesOf(type, record.data(), version);
    wire.resize(wireEnd(sites));
    Korvan::BixWriteBuf out(wire.data(), wire.size());
    EXPECT_EQ(cs_relay_msg::plain::pack(type, record.data(), out, version), 0);
    EXPECT_EQ(out.getUsedSize(), wire.size());
}

std::vector<size_t> Instance::cuts() const {
    if (wire.size() <= MODERATE_SIZE) {
        return lengthsUpTo(wire.size());
    }
    std::vector<size_t> ends{0};
    for (const Site& site : sites) {
        ends.push_back(site.wire + site.wireSize);
    }
    return around(ends, wire.size());
}

Outcome packedInto(const Instance& instance, size_t room, char filler, std::vector<char>& buffer) {
    const size_t used = lastStepWithin(instance.sites, room);
    const bool whole = used == instance.wire.size();
    std::copy_n(instance.wire.begin(), used, buffer.begin());
    std::fill(buffer.begin() + static_cast<std::ptrdiff_t>(used),
              buffer.begin() + static_cast<std::ptrdiff_t>(room), filler);
    if (!whole) {
        for (const Site& site : instance.sites) {
            if (site.field->kind == Kind::String && site.wire + PREFIX == used) {
                std::fill_n(buffer.begin() + static_cast<std::ptrdiff_t>(site.wire), PREFIX,
                            filler); // reserved
            }
        }
        if (isMessage(instance.type) && used > VERSION_BYTE) {
            buffer[VERSION_BYTE] = instance.record[VERSION_BYTE]; // the stamp is the last step
        }
    }
    return {whole ? 0 : Korvan::BIX_ERR_WRITE_OVERFLOW, used};
}

GrowingRecord::GrowingRecord(const Instance& instance, const std::vector<char>& before)
    : instance_(instance), record_(before) {}

Outcome GrowingRecord::growTo(size_t size) {
    const bool whole = size >= instance_.wire.size();
    if (isMessage(instance_.type) && size <= VERSION_BYTE) {
        return {Korvan::BIX_ERR_READ_UNDERFLOW, 0}; // not even the version can be looked at
    }
    for (; done_ < instance_.sites.size(); ++done_) {
        const Site& site = instance_.sites[done_];
        if (site.wire + site.wireSize > size) {
            break;
        }
        const char* const from = instance_.record.data() + site.memory;
        if (site.onWire) {
            std::copy_n(from, site.memorySize, record_.begin() + static_cast<std::ptrdiff_t>(site.memory));
        } else {
            storeScalar(*site.field, record_.data() + site.memory, site.field->defaultValue);
        }
        if (isMessage(instance_.type) && site.memory == VERSION_BYTE) {
            record_[VERSION_BYTE] = instance_.wire[VERSION_BYTE];
        }
        extent_ = std::max(extent_, site.memory + site.memorySize);
    }
    return {whole ? 0 : Korvan::BIX_ERR_READ_UNDERFLOW, lastStepWithin(instance_.sites, size)};
}

Text::Text(const Instance& instance) {
    std::vector<char> memory(64 + instance.type.fieldCount * 64);
    for (;; memory.resize(memory.size() * 2)) {
        Korvan::BixWriteBuf out(memory.data(), memory.size());
        const int32_t code =
            cs_relay_msg::plain::visualize(instance.type, instance.record.data(), out, 0, '\0');
        if (code == 0) {
            whole_.assign(memory.data(), out.getUsedSize());
            break;
        }
        if (code != Korvan::BIX_ERR_WRITE_OVERFLOW) {
            ADD_FAILURE() << "does not render: " << code;
            break;
        }
    }
    constexpr size_t BYTE_ITEM = 5; // " 0x00"
    stops_.push_back(0);
    lineEnds_.push_back(0);
    for (size_t line = 0; line < whole_.size();) {
        const size_t end = whole_.find('\0', line);
        const size_t labelEnd = whole_.find(']', line);
        if (labelEnd < end && whole_[labelEnd + 1] == '(') {
            for (size_t item = whole_.find(':', labelEnd) + 1; item <= end; item += BYTE_ITEM) {
                stops_.push_back(item);
            }
        }
        line = end + 1;
        stops_.push_back(line);
        lineEnds_.push_back(line);
    }
}

Outcome Text::into(size_t room) const {
    if (room == 0) {
        return {Korvan::BIX_ERR_WRITE_OVERFLOW, 0};
    }
    const auto behind = std::upper_bound(stops_.begin(), stops_.end(), room - 1);
    const size_t used = *(behind - 1);
    return {used == whole_.size() ? 0 : Korvan::BIX_ERR_WRITE_OVERFLOW, used};
}

std::vector<size_t> Text::rooms() const {
    const size_t most = whole_.size() + 2;
    return whole_.size() <= MODERATE_SIZE ? lengthsUpTo(most) : around(lineEnds_, most);
}

} // namespace tests
