/// @file
/// What a run of the tests can be told through the environment.
#ifndef KORVAN_TESTS_SUPPORT_SETTINGS_H
#define KORVAN_TESTS_SUPPORT_SETTINGS_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tests {

/// Where all random data comes from: KORVAN_TEST_SEED, or a fixed number.
uint64_t seed();

/// @p count repetitions at the volume KORVAN_TEST_VOLUME, in percent and 100 unless set; at least one.
size_t scaled(size_t count);

/// Every length from 0 to @p full at full volume, fewer below it; the last two are always among them.
std::vector<size_t> lengthsUpTo(size_t full);

} // namespace tests

#endif
