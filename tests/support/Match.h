/// @file
/// Runs an operation of the library and the same of the plain codec on equal records and equal buffers, and
/// expects no difference: result, cursor, every byte of the buffer, every byte of the record.
#ifndef KORVAN_TESTS_SUPPORT_MATCH_H
#define KORVAN_TESTS_SUPPORT_MATCH_H

#include "protocol/Schema.h"
#include "tests/support/Random.h"
#include "tests/support/RandomRecord.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tests {

/// What memory holds before anything is written to it.
constexpr char CANARY = '\xA5';

class Match {
public:
    struct Result {
        int32_t code;
        size_t used;
    };

    explicit Match(const cs_relay_msg::schema::Type& type);

    /// The record that each operation starts from. It stays as it is: the operations work on copies.
    char* record() { return source_.data(); }
    const cs_relay_msg::schema::Type& type() const { return type_; }
    void fill(Random& random, const Shape& shape) { fillRecord(type_, record(), random, shape); }
    void fillWithNoise(Random& random) { fillNoise(random, record(), type_.size); }

    /// Over a buffer of @p capacity bytes, of which @p start are already used.
    Result pack(size_t capacity, uint32_t cutVer, size_t start = 0);
    /// @p bytes holds @p start bytes of something else first.
    Result unpack(const std::vector<char>& bytes, uint32_t cutVer, size_t start = 0);
    Result visualize(size_t capacity, int indent, char sep, size_t start = 0);
    Result construct();

    /// What the library left: its record, and the buffer's memory with a few bytes behind it.
    const std::vector<char>& after() const { return hot_; }
    const std::vector<char>& memory() const { return hotMemory_; }

    /// The wire form of the record; expects that it packs.
    std::vector<char> image(uint32_t cutVer);
    /// The text of the record, up to the cursor; expects that it renders.
    std::string text(int indent = 0, char sep = '\n');

private:
    void prepare(size_t capacity);
    void compare(const Result& hot, const Result& plain) const;

    const cs_relay_msg::schema::Type& type_;
    std::vector<char> source_, hot_, plain_;
    std::vector<char> hotMemory_, plainMemory_;
};

} // namespace tests

#endif
