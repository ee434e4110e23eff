/// @file
/// Which messages of a stream are wanted.
#ifndef KORVAN_TOOLS_RELAYMSG_SELECTION_H
#define KORVAN_TOOLS_RELAYMSG_SELECTION_H

#include "tools/relaymsg/MessageReader.h"

#include <bitset>
#include <cstdint>
#include <limits>
#include <optional>

namespace relaymsg {

struct Selection {
    std::bitset<256> commands; ///< by id; none stands for all
    std::optional<uint32_t> user;
    std::optional<uint32_t> room;
    uint64_t from = 1;                                  ///< the number of the first message
    uint64_t to = std::numeric_limits<uint64_t>::max(); ///< and of the last

    bool holds(const MessageReader& stream) const {
        const auto& head = stream.message().stHead;
        return stream.number() >= from && stream.number() <= to &&
               (commands.none() || commands[head.bCmdId]) && (!user || *user == head.dwUserID) &&
               (!room || *room == head.dwRoomID);
    }

    /// Whether every message is wanted.
    bool all() const {
        return commands.none() && !user && !room && from <= 1 && to == std::numeric_limits<uint64_t>::max();
    }

    /// Whether no later message can be wanted.
    bool endsAt(const MessageReader& stream) const { return stream.number() >= to; }
};

} // namespace relaymsg

#endif
