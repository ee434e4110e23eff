/// @file
/// What every operation returns that leaves the straight way, in a program without another.
#ifndef KORVAN_TESTS_STRAIGHT_NO_PLAIN_WAY_H
#define KORVAN_TESTS_STRAIGHT_NO_PLAIN_WAY_H

#include <cstdint>

namespace tests {
constexpr int32_t LEFT_STRAIGHT_WAY = -99;
}

#endif
