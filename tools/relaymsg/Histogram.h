/// @file
/// How sizes are distributed, in memory that does not grow.
#ifndef KORVAN_TOOLS_RELAYMSG_HISTOGRAM_H
#define KORVAN_TOOLS_RELAYMSG_HISTOGRAM_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

namespace relaymsg {

/// Counts values of up to 32 bits. Values below 2 * STEPS are told apart; above, so are STEPS for each power
/// of two. So a quantile is exact up to there, and beyond at most one part in STEPS too large.
class Histogram {
public:
    void add(uint32_t value) {
        if (value < small_.size()) {
            ++small_[value];
        } else {
            addLarge(value);
        }
    }

    uint64_t count() const { return std::accumulate(small_.begin(), small_.end(), largeCount_); }
    uint32_t least() const {
        const uint64_t* const end = small_.data() + small_.size();
        const uint64_t* const first = std::find_if(small_.data(), end, isUsed);
        return first != end ? static_cast<uint32_t>(first - small_.data()) : std::min(least_, most_);
    }
    uint32_t most() const {
        const auto last = std::find_if(small_.rbegin(), small_.rend(), isUsed);
        return largeCount_ != 0 || last == small_.rend() ? most_
                                                         : static_cast<uint32_t>(small_.rend() - last - 1);
    }

    /// The smallest value that at least @p percent of all values do not exceed.
    uint32_t percentile(uint32_t percent) const {
        const uint64_t all = count();
        const uint64_t rank = std::max<uint64_t>(1, all / 100 * percent + (all % 100 * percent + 99) / 100);
        uint64_t seen = 0;
        for (size_t bucket = 0; bucket < small_.size() + large_.size(); ++bucket) {
            seen += bucket < small_.size() ? small_[bucket] : large_[bucket - small_.size()];
            if (seen >= rank) {
                return std::clamp(lastOf(bucket), least(), most());
            }
        }
        return most();
    }

private:
    static constexpr uint32_t BITS = 7;
    static constexpr uint32_t STEPS = 1u << BITS;

    static bool isUsed(uint64_t count) { return count != 0; }

    void addLarge(uint32_t value) {
        const size_t bucket = bucketOf(value) - small_.size();
        if (bucket >= large_.size()) {
            large_.resize(bucket + 1);
        }
        ++large_[bucket];
        ++largeCount_;
        least_ = std::min(least_, value);
        most_ = std::max(most_, value);
    }

    static size_t bucketOf(uint32_t value) {
        uint32_t shift = 0;
        while (value >> shift >= 2 * STEPS) {
            ++shift;
        }
        return shift * STEPS + (value >> shift);
    }

    /// The largest value in a bucket.
    static uint32_t lastOf(size_t bucket) {
        const size_t shift = bucket < 2 * STEPS ? 0 : bucket / STEPS - 1;
        return static_cast<uint32_t>(((bucket - shift * STEPS + 1) << shift) - 1);
    }

    std::array<uint64_t, 2 * STEPS> small_{}; // of values that are told apart; nearly all are
    std::vector<uint64_t> large_;             // of the buckets above
    uint64_t largeCount_ = 0;
    uint32_t least_ = UINT32_MAX; // of the values in large_
    uint32_t most_ = 0;
};

} // namespace relaymsg

#endif
