/// @file
/// What each target defines; the fuzzer, or the replay program, calls it with one input after the other.
#ifndef KORVAN_FUZZ_TARGET_H
#define KORVAN_FUZZ_TARGET_H

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

#endif
