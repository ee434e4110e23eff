#include "tools/relaymsg/TcpDirection.h"

#include <algorithm>
#include <iterator>

namespace relaymsg {

void TcpDirection::add(uint32_t sequence, std::string_view bytes) {
    const int64_t distance = distanceTo(sequence);
    if (distance > 0) {
        keep(next() + static_cast<uint64_t>(distance), bytes);
        return;
    }
    const auto known = static_cast<uint64_t>(-distance); // sent again
    uint64_t place = next();
    bytes.remove_prefix(static_cast<size_t>(std::min<uint64_t>(known, bytes.size())));
    while (!bytes.empty()) {
        const uint64_t room = segments_.empty() ? bytes.size() : segments_.begin()->first - place;
        ready_.append(bytes.substr(0, static_cast<size_t>(room)));
        join(); // what came first stays
        const uint64_t passed = std::min<uint64_t>(std::max(room, next() - place), bytes.size());
        bytes.remove_prefix(static_cast<size_t>(passed));
        place = next();
    }
}

size_t TcpDirection::pass(uint32_t sequence, size_t size) {
    const int64_t fresh = distanceTo(sequence) + static_cast<int64_t>(size);
    if (fresh <= 0) {
        return 0;
    }
    place_ += static_cast<uint64_t>(fresh);
    return std::min(size, static_cast<size_t>(fresh));
}

void TcpDirection::endAt(uint32_t sequence) {
    end_ = next() + static_cast<uint64_t>(std::max<int64_t>(distanceTo(sequence), 0));
}

void TcpDirection::take(size_t size) {
    constexpr size_t WORTH_MOVING = 64 * 1024;
    taken_ += size;
    place_ += size;
    if (taken_ == ready_.size() || (taken_ >= WORTH_MOVING && taken_ * 2 >= ready_.size())) {
        ready_.erase(0, taken_);
        taken_ = 0;
    }
    if (ready_.empty() && ready_.capacity() > WORTH_MOVING) {
        ready_.shrink_to_fit();
    }
}

void TcpDirection::passGap() {
    place_ = segments_.begin()->first;
    ready_.clear();
    taken_ = 0;
    join();
}

size_t TcpDirection::dropAll() {
    const size_t count = size() + ahead_;
    place_ = segments_.empty() ? next() : segments_.rbegin()->first + segments_.rbegin()->second.size();
    ready_.clear();
    ready_.shrink_to_fit();
    taken_ = 0;
    segments_.clear();
    ahead_ = 0;
    return count;
}

int64_t TcpDirection::distanceTo(uint32_t sequence) const {
    return static_cast<int32_t>(sequence - (sequence_ + static_cast<uint32_t>(next())));
}

void TcpDirection::keep(uint64_t place, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto behind = segments_.upper_bound(place);
        if (behind != segments_.begin()) {
            const auto& [start, known] = *std::prev(behind);
            if (start + known.size() > place) {
                const size_t common =
                    static_cast<size_t>(std::min<uint64_t>(start + known.size() - place, bytes.size()));
                place += common;
                bytes.remove_prefix(common);
                continue;
            }
        }
        const size_t room =
            behind == segments_.end()
                ? bytes.size()
                : static_cast<size_t>(std::min<uint64_t>(behind->first - place, bytes.size()));
        segments_.emplace(place, bytes.substr(0, room));
        ahead_ += room;
        place += room;
        bytes.remove_prefix(room);
    }
}

/// Moves to the bytes in order what follows them now.
void TcpDirection::join() {
    while (!segments_.empty() && segments_.begin()->first <= next()) {
        const auto first = segments_.begin();
        const uint64_t known = next() - first->first;
        if (known < first->second.size()) {
            ready_.append(first->second, static_cast<size_t>(known), std::string::npos);
        }
        ahead_ -= first->second.size();
        segments_.erase(first);
    }
}

} // namespace relaymsg
