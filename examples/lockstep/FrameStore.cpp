#include "examples/lockstep/FrameStore.h"

namespace lockstep {

using cs_relay_msg::CSRelayFrame;

bool FrameStore::put(const CSRelayFrame& frame) {
    bytes_.resize(CSRelayFrame::maxWireSize);
    size_t used = 0;
    const bool packed = frame.pack(bytes_.data(), bytes_.size(), &used) == Korvan::BIX_OK;
    if (packed) {
        frames_.emplace(+frame.dwFrameId, bytes_.substr(0, used));
    }
    return packed;
}

bool FrameStore::get(uint32_t id, CSRelayFrame& frame) const {
    const auto found = frames_.find(id);
    return found != frames_.end() &&
           frame.unpack(found->second.data(), found->second.size()) == Korvan::BIX_OK;
}

uint32_t FrameStore::firstBehind(uint32_t id) const {
    const auto found = frames_.upper_bound(id);
    return found == frames_.end() ? 0 : found->first;
}

} // namespace lockstep
