/// Keeps frames.
#pragma once

#include "protocol/cs_relay_msg.h"

#include <map>
#include <string>

namespace lockstep {

/// Frames by their number, as packed bytes: a record of a frame is 103 KB, its bytes here are about 50.
class FrameStore {
public:
    /// A frame that is here already stays as it is. False if the record is not one that can be packed.
    bool put(const cs_relay_msg::CSRelayFrame& frame);

    bool has(uint32_t id) const { return frames_.count(id) != 0; }
    bool get(uint32_t id, cs_relay_msg::CSRelayFrame& frame) const;

    /// The first frame that is here behind @p id, or 0.
    uint32_t firstBehind(uint32_t id) const;

private:
    std::map<uint32_t, std::string> frames_;
    std::string bytes_; // to pack into
};

} // namespace lockstep
