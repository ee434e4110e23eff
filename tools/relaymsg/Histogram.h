/// @file
/// How sizes are distributed, in memory that does not grow.
#ifndef KORVAN_TOOLS_RELAYMSG_HISTOGRAM_H
#define KORVAN_TOOLS_RELAYMSG_HISTOGRAM_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace relaymsg {

/// Counts values of up to 32 bits. Values below 2 * STEPS are told apart; above, so are STEPS for each power
/// of two. So a quantile is exact up to there, and beyond at most one part in STEPS too large.
class Histogram {
public:
    void add(uint32_t value) {
        const size_t bucket = bucketOf(value);
        if (bucket >= counts_.size()) {
            counts_.resize(bucket + 1);
        }
        ++counts_[bucket];
        if (value < least_ || value > most_) { // seldom
            least_ = std::min(least_, value);
            most_ = std::max(most_, value);
        }
        ++count_;
    }

    uint64_t count() const { return count_; }
    uint32_t least() const { return std::min(least_, most_); }
    uint32_t most() const { return most_; }

    /// The smallest value that at least @p percent of all values do not exceed.
    uint32_t percentile(uint32_t percent) const {
        const uint64_t rank =
            std::max<uint64_t>(1, count_ / 100 * percent + (count_ % 100 * percent + 99) / 100);
        uint64_t seen = 0;
        for (size_t bucket = 0; bucket < counts_.size(); ++bucket) {
            seen += counts_[bucket];
            if (seen >= rank) {
                return std::clamp(lastOf(bucket), least(), most_);
            }
        }
        return most_;
    }

private:
    static constexpr uint32_t BITS = 7;
    static constexpr uint32_t STEPS = 1u << BITS;

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

    std::vector<uint64_t> counts_;
    uint64_t count_ = 0;
    uint32_t least_ = UINT32_MAX;
    uint32_t most_ = 0;
};

} // namespace relaymsg

#endif
