/// @file
/// Where the integers, byte arrays and strings of one record lie, in its memory and on the wire.
#ifndef KORVAN_TESTS_SUPPORT_SITES_H
#define KORVAN_TESTS_SUPPORT_SITES_H

#include "protocol/Schema.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tests {

/// One integer, byte array or string.
struct Site {
    const cs_relay_msg::schema::Field* field;
    const cs_relay_msg::schema::Field* counted; ///< the array of which this integer is the count, or null
    size_t memory;                              ///< its place in the record
    size_t memorySize;                          ///< its counted part; of a string, text and NUL
    size_t wire;                                ///< its place in the wire form
    size_t wireSize;                            ///< 0 if it is not on the wire at this version
    bool onWire;
};

/// The sites of a valid record in wire order, at the version that @p cutVer stands for.
std::vector<Site> sitesOf(const cs_relay_msg::schema::Type& type, const char* record, uint32_t cutVer);

/// The size of the wire form.
size_t wireEnd(const std::vector<Site>& sites);

/// Where a cursor stops that has @p room bytes before it: behind the last step that fits. A string has two
/// steps, its length and its text.
size_t lastStepWithin(const std::vector<Site>& sites, size_t room);

} // namespace tests

#endif
