/// @file
/// What a stream is made of.
#ifndef KORVAN_TOOLS_RELAYMSG_STATISTICS_H
#define KORVAN_TOOLS_RELAYMSG_STATISTICS_H

#include "tools/relaymsg/Histogram.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

namespace relaymsg {

/// Messages and the bytes of them.
struct Total {
    uint64_t messages = 0;
    uint64_t bytes = 0;

    void add(size_t size) {
        ++messages;
        bytes += size;
    }
};

class Statistics {
public:
    /// @param mostUsers how many users are told apart: the first so many that occur
    explicit Statistics(size_t mostUsers) : mostUsers_(mostUsers) {}

    void add(uint8_t command, uint32_t user, size_t size) {
        commands_[command].bytes += size;
        commands_[command].sizes.add(static_cast<uint32_t>(size));
        Recent& recent = recent_[user % recent_.size()];
        if (recent.total == nullptr || recent.user != user) {
            recent = {user, &totalOf(user)};
        }
        recent.total->add(size);
    }

    /// Takes the time of a message, in nanoseconds since 1970.
    void addTime(int64_t nanoseconds);

    /// A table for people.
    std::string table() const;

    /// One JSON object, on one line.
    std::string json() const;

private:
    struct Command {
        uint64_t bytes = 0;
        Histogram sizes;

        Total total() const { return {sizes.count(), bytes}; }
    };

    /// The total of a user that was looked up before: a look-up costs more than all the rest.
    struct Recent {
        uint32_t user = 0;
        Total* total = nullptr;
    };

    /// When the messages were captured.
    struct Times {
        uint64_t count = 0; ///< of messages that have one
        int64_t first = 0;
        int64_t last = 0;
        int64_t second = 0; ///< the one under way
        uint64_t inSecond = 0;
        uint64_t mostInSecond = 0;

        /// Thousandths of a message in a second, if @p messages are distributed over all the time.
        uint64_t rate(uint64_t messages) const;
    };

    Total all() const;
    Total& totalOf(uint32_t user);

    size_t mostUsers_;
    std::array<Command, 256> commands_; // by id
    std::unordered_map<uint32_t, Total> users_;
    std::array<Recent, 64> recent_; // by the last bits of the user
    Total others_;                  // of users that are not told apart
    Times times_;
};

} // namespace relaymsg

#endif
