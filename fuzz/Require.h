/// @file
/// How a target says that something does not hold: it tells what and stops, so that the fuzzer keeps the
/// input.
#ifndef KORVAN_FUZZ_REQUIRE_H
#define KORVAN_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>

#define KORVAN_REQUIRE(condition)                                                                            \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition);              \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

#endif
