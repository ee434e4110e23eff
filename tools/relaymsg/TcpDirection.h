/// @file
/// The bytes that one side of a TCP connection sends, put in order.
#ifndef KORVAN_TOOLS_RELAYMSG_TCP_DIRECTION_H
#define KORVAN_TOOLS_RELAYMSG_TCP_DIRECTION_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace relaymsg {

/// Places are counted from the first byte, and do not wrap as sequence numbers do.
class TcpDirection {
public:
    /// @param sequence the number of the first byte
    explicit TcpDirection(uint32_t sequence) : sequence_(sequence) {}

    /// Takes a segment, which may lie before, behind or across what is there. Bytes that were there before
    /// stay as they are.
    void add(uint32_t sequence, std::string_view bytes);

    /// Passes over a segment. Returns how many of its bytes were not there before.
    size_t pass(uint32_t sequence, size_t size);

    /// Says that nothing follows the byte before @p sequence.
    void endAt(uint32_t sequence);

    /// Bytes in order, so far as nothing is missing, that were not taken yet.
    char* bytes() { return ready_.data() + taken_; }
    size_t size() const { return ready_.size() - taken_; }

    /// The place of the first of them.
    uint64_t place() const { return place_; }

    /// Takes the first @p size of them.
    void take(size_t size);

    /// Bytes that lie behind missing ones.
    size_t ahead() const { return ahead_; }

    /// How many bytes are missing before those; call only if there are some.
    uint64_t missing() const { return segments_.begin()->first - next(); }

    /// Goes on behind the missing bytes.
    void passGap();

    /// Drops all that is there, and what is missing. Returns how many bytes that were.
    size_t dropAll();

    /// Whether all bytes up to the end are there.
    bool complete() const { return end_ && next() >= *end_; }

    /// Memory that the bytes take.
    size_t held() const { return ready_.size() + ahead_ + segments_.size() * SEGMENT_COST; }

private:
    static constexpr size_t SEGMENT_COST = 128;

    uint64_t next() const { return place_ + size(); }
    /// From the first byte that is not there to the one with this number; negative if that was there.
    int64_t distanceTo(uint32_t sequence) const;
    void keep(uint64_t place, std::string_view bytes);
    void join();

    uint32_t sequence_; // of the byte at place 0
    std::string ready_;
    size_t taken_ = 0;
    uint64_t place_ = 0;
    std::map<uint64_t, std::string> segments_; // by place, behind a gap; they do not overlap
    size_t ahead_ = 0;
    std::optional<uint64_t> end_;
};

} // namespace relaymsg

#endif
