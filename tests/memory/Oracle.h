/// @file
/// What an operation must leave after having come any part of the way, told from a whole record, its wire
/// form and its text alone.
#ifndef KORVAN_TESTS_MEMORY_ORACLE_H
#define KORVAN_TESTS_MEMORY_ORACLE_H

#include "protocol/Schema.h"
#include "tests/support/Random.h"
#include "tests/support/RandomRecord.h"
#include "tests/support/Sites.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tests {

struct Outcome {
    int32_t code;
    size_t used;
};

/// A valid record with its wire form.
struct Instance {
    const cs_relay_msg::schema::Type& type;
    uint32_t version;
    std::vector<char> record;
    std::vector<Site> sites;
    std::vector<char> wire;

    Instance(const cs_relay_msg::schema::Type& type, uint32_t version, const Shape& shape, Random& random);
    Instance(const cs_relay_msg::schema::Type& type, uint32_t version, std::vector<char> record);

    /// The places that are worth cutting the wire form at: all of them up to 2 KiB, above that the ends of
    /// fields and one byte to either side.
    std::vector<size_t> cuts() const;
};

/// What pack must make of the instance in a buffer of @p room bytes that held @p filler: the buffer.
Outcome packedInto(const Instance& instance, size_t room, char filler, std::vector<char>& buffer);

/// What unpack must make of a record as ever more of the wire form is there.
class GrowingRecord {
public:
    /// The record holds @p before, which must outlive this.
    GrowingRecord(const Instance& instance, const std::vector<char>& before);

    /// Adds what is read if the first @p size bytes are there; @p size never shrinks.
    Outcome growTo(size_t size);

    /// The record, of which only the bytes in front of `extent` can differ from what it held before.
    const std::vector<char>& record() const { return record_; }
    size_t extent() const { return extent_; }

private:
    const Instance& instance_;
    std::vector<char> record_;
    size_t extent_ = 0;
    size_t done_ = 0;
};

/// The text of a record with the separator NUL, and the places at which a cursor can stop in it.
class Text {
public:
    explicit Text(const Instance& instance);

    const std::string& whole() const { return whole_; }
    /// What visualize must make in a buffer of @p room bytes: the text in front of the room's end, then a
    /// NUL.
    Outcome into(size_t room) const;
    /// The sizes of buffer that are worth trying: all of them up to 2 KiB of text, above that the ends of
    /// lines and one byte to either side.
    std::vector<size_t> rooms() const;

private:
    std::string whole_;
    std::vector<size_t> stops_;
    std::vector<size_t> lineEnds_;
};

} // namespace tests

#endif
