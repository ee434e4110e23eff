#include "tests/support/Settings.h"

#include <algorithm>
#include <cstdlib>

namespace tests {

namespace {

uint64_t setting(const char* name, uint64_t otherwise) {
    const char* const text = std::getenv(name);
    return text != nullptr && *text != '\0' ? std::strtoull(text, nullptr, 0) : otherwise;
}

uint64_t volume() {
    static const uint64_t percent = std::max<uint64_t>(setting("KORVAN_TEST_VOLUME", 100), 1);
    return percent;
}

} // namespace

uint64_t seed() {
    static const uint64_t value = setting("KORVAN_TEST_SEED", 20261121);
    return value;
}

size_t scaled(size_t count) {
    return static_cast<size_t>(std::max<uint64_t>(count * volume() / 100, 1));
}

std::vector<size_t> lengthsUpTo(size_t full) {
    const size_t step = static_cast<size_t>(std::max<uint64_t>(100 / volume(), 1));
    std::vector<size_t> lengths;
    for (size_t length = 0; length + 1 < full; length += step) {
        lengths.push_back(length);
    }
    if (full > 0) {
        lengths.push_back(full - 1);
    }
    lengths.push_back(full);
    return lengths;
}

} // namespace tests
