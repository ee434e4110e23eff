/// @file
/// Random numbers that are the same on every platform, which those of the standard distributions are not.
#ifndef KORVAN_TESTS_SUPPORT_RANDOM_H
#define KORVAN_TESTS_SUPPORT_RANDOM_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tests {

/// A generator: SplitMix64.
class Random {
public:
    explicit Random(uint64_t seed) : state_(seed) {}

    uint64_t next() {
        state_ += 0x9E3779B97F4A7C15u;
        uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }

    /// From 0 to @p limit - 1.
    uint64_t below(uint64_t limit) { return next() % limit; }

    /// True in @p percent of 100 cases.
    bool chance(unsigned percent) { return below(100) < percent; }

    char byte() { return static_cast<char>(next() & 0xFF); }

    /// One of the entries of a container.
    template <class Container>
    const auto& pick(const Container& from) {
        return *(from.begin() + static_cast<std::ptrdiff_t>(below(from.size())));
    }

private:
    uint64_t state_;
};

/// Fills @p size bytes with noise, each time with another part of one long stretch of it.
void fillNoise(Random& random, char* to, size_t size);

/// @p size bytes of noise.
inline std::vector<char> noise(Random& random, size_t size) {
    std::vector<char> bytes(size);
    fillNoise(random, bytes.data(), size);
    return bytes;
}

} // namespace tests

#endif
