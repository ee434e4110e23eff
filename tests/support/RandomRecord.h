/// @file
/// Random records of any type, made from the tables.
#ifndef KORVAN_TESTS_SUPPORT_RANDOM_RECORD_H
#define KORVAN_TESTS_SUPPORT_RANDOM_RECORD_H

#include "protocol/Schema.h"
#include "tests/support/Random.h"

#include <cstdint>
#include <vector>

namespace tests {

constexpr int ANY_COMMAND = -1;

/// How large a random record becomes.
struct Shape {
    uint32_t elements = 0;     ///< at most so many elements of a record array
    uint32_t bytes = 0;        ///< at most so many bytes of a byte array
    uint32_t text = 0;         ///< at most so many characters of a string
    bool full = false;         ///< take the most everywhere, not anything up to it
    unsigned unterminated = 0; ///< in so many of 100 cases a string has no NUL in its array
    int command = ANY_COMMAND; ///< of a message; a random assigned one, if not given

    Shape of(int commandId) const;
    Shape withUnterminated(unsigned percent) const;
};

constexpr Shape TINY{2, 5, 10};
constexpr Shape MODERATE{3, 40, 300};
constexpr Shape ANYTHING{UINT32_MAX, UINT32_MAX, UINT32_MAX};
constexpr Shape LARGEST{UINT32_MAX, UINT32_MAX, UINT32_MAX, true};
constexpr Shape SMALLEST{0, 0, 0, true};
/// Every record array full, so that a change of its count never uncovers noise.
constexpr Shape ALL_ELEMENTS{UINT32_MAX, 3, 20, true};

/// Makes the record at @p record valid and random. All that is not counted, and all behind a string's NUL, is
/// noise, so that whoever touches it is seen.
void fillRecord(const cs_relay_msg::schema::Type& type, char* record, Random& random, const Shape& shape);

/// The commands with which a record of this type is worth testing: all of them and an unassigned one for the
/// message, otherwise ANY_COMMAND alone.
std::vector<int> commandsFor(const cs_relay_msg::schema::Type& type);

} // namespace tests

#endif
