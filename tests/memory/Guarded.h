/// @file
/// Memory between two pages that cannot be touched: a read or write outside stops the program.
#ifndef KORVAN_TESTS_MEMORY_GUARDED_H
#define KORVAN_TESTS_MEMORY_GUARDED_H

#include <cstddef>
#include <vector>

namespace tests {

/// Where a block lies in guarded memory: so many bytes behind the page before it, or before the page behind
/// it. The bytes between are watched.
struct Place {
    enum Side { Before, Behind };
    Side side;
    size_t gap;
};

constexpr size_t MOST_GAP = 7;

/// Flush against the page behind, then against the one before, then 1 to 7 bytes away from each.
std::vector<Place> allPlaces();
/// The two that are flush.
std::vector<Place> flushPlaces();

class Guarded {
public:
    /// Holds blocks of up to @p most bytes.
    explicit Guarded(size_t most);
    ~Guarded();
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    /// A block of @p size bytes at that place; what it holds is unknown. The one before is gone.
    char* place(size_t size, Place place);

    /// Whether the bytes around the block are as they were.
    bool aroundIsIntact() const;

private:
    static constexpr size_t WATCHED = 64;

    size_t watchedBefore() const;
    size_t watchedBehind() const;

    char* mapped_;
    size_t mappedSize_;
    char* first_; // between the two pages
    char* end_;
    char* block_;
    size_t blockSize_ = 0;
};

} // namespace tests

#endif
