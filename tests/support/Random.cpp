#include "tests/support/Random.h"

#include "tests/support/Settings.h"

#include <algorithm>
#include <cstring>

namespace tests {

namespace {

constexpr size_t POOL = size_t{1} << 18;

std::vector<char> makePool() {
    Random random(seed());
    std::vector<char> bytes(POOL);
    for (char& byte : bytes) {
        byte = random.byte();
    }
    return bytes;
}

} // namespace

void fillNoise(Random& random, char* to, size_t size) {
    static const std::vector<char> pool = makePool();
    while (size > 0) {
        const size_t from = static_cast<size_t>(random.below(POOL));
        const size_t part = std::min(size, POOL - from);
        std::memcpy(to, pool.data() + from, part);
        to += part;
        size -= part;
    }
}

} // namespace tests
