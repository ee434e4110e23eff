/// @file
/// The form that the inputs of all targets share which work on records: 4 bytes, then a wire form.
///
///     byte 0      the record type, its number in the list of all types, modulo their count
///     byte 1      the cut-off version, modulo 5: each version, none, and one that does not exist
///     bytes 2, 3  a number that each target uses in its own way
#ifndef KORVAN_FUZZ_CASE_H
#define KORVAN_FUZZ_CASE_H

#include "protocol/Schema.h"

#include <cstddef>
#include <cstdint>

namespace fuzz {

struct Case {
    static constexpr size_t HEADER = 4;

    const cs_relay_msg::schema::Type& type;
    uint32_t cutVer;
    uint32_t number;
    const char* wire;
    size_t size;

    /// @p size is at least HEADER.
    Case(const uint8_t* data, size_t dataSize)
        : type(*cs_relay_msg::schema::types()[data[0] % cs_relay_msg::schema::types().size]),
          cutVer(data[1] % 5u), number(data[2] * 256u + data[3]),
          wire(reinterpret_cast<const char*>(data) + HEADER), size(dataSize - HEADER) {}
};

} // namespace fuzz

#endif
